// Whole effect calls against the work at their core, and pixelation against the libraries that do the like.
#include "Benchmarks/Ratios.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ScaleCurve.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/BalanceTable.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/LevelTables.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/StandardHost/StandardHost.h"

#include <benchmark/benchmark.h>
#include <glog/logging.h>
#include <opencv2/imgproc.hpp>

#include <cmath>

extern "C" {
#include <libswscale/swscale.h>
}

namespace Velnor::Benchmarks {
namespace {

using namespace Proc;

/// The host with the plug-in, logging nothing.
Host& TheHost() {
    static StandardHost host;
    [[maybe_unused]] static bool const loaded = [] {
        FLAGS_minloglevel = google::GLOG_ERROR;
        host.LoadPlugin(LUMETTA_FILE);
        return true;
    }();
    return host;
}

/// A picture with slopes and grain, as photographs have.
VideoHandle MakePicture(PixFmt format, std::uint32_t width, std::uint32_t height) {
    VideoHandle const picture = TheHost().GetContext()->CreateImage(format, FrameFormat::Square(width, height));
    MutablePlane const plane = picture->GetMutablePlane(0);
    std::uint32_t noise = 1;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < plane.GetWidth(); ++x) {
            noise = noise * 1664525U + 1013904223U;
            plane.GetRow(y)[x] = static_cast<unsigned char>((x / 40 + y / 17 + (noise >> 28)) & 255U);
        }
    return picture;
}

intrusive_ptr<IOneInputEffectVideo> MakeEffect(Settings const& settings, std::string const& classId) {
    auto const effect = TheHost().GetFactory()->CreateOneInputEffect(classId, ImplNames::VELNOR);
    effect->SetSettings(settings);
    return effect;
}

void BalanceCall(benchmark::State& state) {
    SettingsEffectWhiteBalance settings;
    settings.SetReference(Color(150, 180, 200, 255));
    auto const effect = MakeEffect(settings, SettingsEffectWhiteBalance::CLASS_ID);
    DataHandle data = MakePicture(PixFmt::BGR24, 6000, 4000);
    for (auto _ : state) effect->ProcessData(data);
}

void BalancePass(benchmark::State& state) {
    VideoHandle const picture = MakePicture(PixFmt::BGR24, 6000, 4000);
    std::array<Kernels::Table, 3> const tables{Kernels::BalanceTable(150, 176), Kernels::BalanceTable(180, 176),
                                               Kernels::BalanceTable(200, 176)};
    MutablePlane const plane = picture->GetMutablePlane(0);
    for (auto _ : state) Kernels::MapBytes(plane, plane, tables, 3);
}

/// Balances and exposure of 24 megapixels, each time of the same picture, which nobody else holds. Red first, as the
/// effect takes pictures without reordering them.
void AutoBalance(benchmark::State& state, SettingsEffectColorBalanceAuto const& settings) {
    auto const effect = MakeEffect(settings, SettingsEffectColorBalanceAuto::CLASS_ID);
    VideoHandle const picture = MakePicture(PixFmt::RGB24, 6000, 4000);
    DataHandle data;
    for (auto _ : state) {
        state.PauseTiming();
        data.reset();
        data = picture->MakeCopy(CopyMode::Independent);
        AsVideo(data).Detach();
        state.ResumeTiming();
        effect->ProcessData(data);
    }
}

SettingsEffectColorBalanceAuto BothBalances() {
    SettingsEffectColorBalanceAuto settings;
    settings.SetWhiteBalance(true);
    settings.SetLightBalance(true);
    return settings;
}

SettingsEffectColorBalanceAuto ExposureAlone() {
    SettingsEffectColorBalanceAuto settings;
    settings.SetExposure(10);
    return settings;
}

void ExposurePass(benchmark::State& state) {
    VideoHandle const picture = MakePicture(PixFmt::RGB24, 6000, 4000);
    std::array<Kernels::Table, 3> tables;
    tables.fill(Kernels::ExposureTable(10));
    MutablePlane const plane = picture->GetMutablePlane(0);
    for (auto _ : state) Kernels::MapBytes(plane, plane, tables, 3);
}

/// What OpenCV offers for the same: histograms of the three components, then a table each.
void AutoBalanceOpenCv(benchmark::State& state) {
    VideoHandle const picture = MakePicture(PixFmt::RGB24, 6000, 4000);
    MutablePlane const plane = picture->GetMutablePlane(0);
    cv::Mat const source(4000, 6000, CV_8UC3, plane.GetData(), static_cast<std::size_t>(plane.GetStride()));
    cv::Mat result = source.clone();
    cv::Mat const table(1, 256, CV_8UC3, cv::Scalar(1, 2, 3));
    int const levels = 256;
    float const range[] = {0, 256};
    float const* ranges = range;
    std::array<cv::Mat, 3> histograms;
    for (auto _ : state) {
        for (int channel = 0; channel < 3; ++channel)
            cv::calcHist(&source, 1, &channel, cv::Mat(), histograms[static_cast<std::size_t>(channel)], 1, &levels,
                         &ranges);
        cv::LUT(source, table, result);
    }
}

constexpr int WIDTH = 4000;
constexpr int HEIGHT = 3000;
constexpr double STRENGTH = 80;

cv::Size SmallSize() {
    double const factor = Kernels::PixelateScale(STRENGTH, WIDTH, HEIGHT);
    return {static_cast<int>(std::lround(WIDTH * factor)), static_cast<int>(std::lround(HEIGHT * factor))};
}

void PixelateCall(benchmark::State& state) {
    SettingsEffectPixelate settings;
    settings.SetStrength(STRENGTH);
    auto const effect = MakeEffect(settings, SettingsEffectPixelate::CLASS_ID);
    DataHandle const picture = MakePicture(PixFmt::RGB24, WIDTH, HEIGHT);
    for (auto _ : state) {
        DataHandle data = picture;
        effect->ProcessData(data);
    }
}

/// Contexts made once and pictures that are there: what the two calls alone cost.
void PixelateSwscale(benchmark::State& state) {
    VideoHandle const picture = MakePicture(PixFmt::RGB24, WIDTH, HEIGHT);
    cv::Size const size = SmallSize();
    VideoHandle const small =
        MakePicture(PixFmt::RGB24, static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
    VideoHandle const result = MakePicture(PixFmt::RGB24, WIDTH, HEIGHT);
    auto const prepare = [](cv::Size from, cv::Size to, int method) {
        return sws_getContext(from.width, from.height, AV_PIX_FMT_RGB24, to.width, to.height, AV_PIX_FMT_RGB24, method,
                              nullptr, nullptr, nullptr);
    };
    SwsContext* const down = prepare({WIDTH, HEIGHT}, size, SWS_AREA);
    SwsContext* const up = prepare(size, {WIDTH, HEIGHT}, SWS_POINT);
    auto const scale = [](SwsContext* context, VideoHandle const& from, VideoHandle const& to) {
        ConstPlane const source = from->GetPlane(0);
        MutablePlane const target = to->GetMutablePlane(0);
        unsigned char const* const sourceRows[] = {source.GetData(), nullptr, nullptr, nullptr};
        unsigned char* const targetRows[] = {target.GetData(), nullptr, nullptr, nullptr};
        int const sourceStrides[] = {static_cast<int>(source.GetStride()), 0, 0, 0};
        int const targetStrides[] = {static_cast<int>(target.GetStride()), 0, 0, 0};
        sws_scale(context, sourceRows, sourceStrides, 0, static_cast<int>(source.GetHeight()), targetRows,
                  targetStrides);
    };
    for (auto _ : state) {
        scale(down, picture, small);
        scale(up, small, result);
    }
    sws_freeContext(down);
    sws_freeContext(up);
}

void PixelateOpenCv(benchmark::State& state) {
    VideoHandle const picture = MakePicture(PixFmt::RGB24, WIDTH, HEIGHT);
    MutablePlane const plane = picture->GetMutablePlane(0);
    cv::Mat const source(HEIGHT, WIDTH, CV_8UC3, plane.GetData(), static_cast<std::size_t>(plane.GetStride()));
    cv::Mat small;
    cv::Mat result;
    for (auto _ : state) {
        cv::resize(source, small, SmallSize(), 0, 0, cv::INTER_AREA);
        cv::resize(small, result, source.size(), 0, 0, cv::INTER_NEAREST);
    }
}

bool Register() {
    auto const add = [](char const* name, auto function) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("white-balance/call", BalanceCall);
    add("white-balance/pass", BalancePass);
    add("color-balance-auto/both", [](benchmark::State& state) { AutoBalance(state, BothBalances()); });
    add("color-balance-auto/OpenCV", AutoBalanceOpenCv);
    add("color-balance-auto/exposure", [](benchmark::State& state) { AutoBalance(state, ExposureAlone()); });
    add("color-balance-auto/exposure-pass", ExposurePass);
    add("pixelate/call", PixelateCall);
    add("pixelate/swscale", PixelateSwscale);
    add("pixelate/OpenCV", PixelateOpenCv);
    return Compare({"white-balance/call", "white-balance/pass", 1.2}) &&
           Compare({"color-balance-auto/both", "memcpy", 4}) &&
           Compare({"color-balance-auto/both", "color-balance-auto/OpenCV", 1}) &&
           Compare({"color-balance-auto/exposure", "color-balance-auto/exposure-pass", 1.2}) &&
           Compare({"pixelate/call", "pixelate/swscale", 1.05}) && Compare({"pixelate/call", "pixelate/OpenCV", 0});
}

bool const REGISTERED = Register();

} // namespace
} // namespace Velnor::Benchmarks
