// Remapping by a caller's function against OpenCV's, which needs the function's values as a map first.
#include "Benchmarks/Ratios.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ImplodeMap.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/StandardHost/StandardHost.h"

#include <benchmark/benchmark.h>
#include <glog/logging.h>
#include <opencv2/imgproc.hpp>

#include <cmath>

namespace Velnor::Benchmarks {
namespace {

using namespace Proc;
using Map = SettingsEffectRemapping::Map;

constexpr int WIDTH = 4000;
constexpr int HEIGHT = 3000;

/// A swirl: cheap enough that what is measured is the remapping.
Map Swirl() {
    return [](int x, int y) {
        float const dx = static_cast<float>(x) - WIDTH / 2;
        float const dy = static_cast<float>(y) - HEIGHT / 2;
        float const turn = 0.1F - 1e-8F * (dx * dx + dy * dy);
        return std::pair(static_cast<float>(x) + dy * turn, static_cast<float>(y) - dx * turn);
    };
}

/// Opaque, as photographs are: colours weighted by an alpha that varies take twice the time, and OpenCV has no such
/// thing.
VideoHandle MakePicture(Host& host, PixFmt format) {
    VideoHandle const picture = host.GetContext()->CreateImage(format, FrameFormat::Square(WIDTH, HEIGHT));
    for (unsigned char i = 0; i < GetPlanesCount(*picture); ++i) {
        MutablePlane const plane = picture->GetMutablePlane(i);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < plane.GetWidth(); ++x)
                plane.GetRow(y)[x] = format == PixFmt::RGBA && x % 4 == 3
                                         ? 255
                                         : static_cast<unsigned char>(x / 3 + y / 2 + (x * y) % 7);
    }
    return picture;
}

void Ours(benchmark::State& state, PixFmt format) {
    StandardHost host;
    auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectRemapping::CLASS_ID, ImplNames::DEFAULT);
    effect->SetSettings(SettingsEffectRemapping(Swirl()));
    VideoHandle const picture = MakePicture(host, format);
    for (auto _ : state) {
        DataHandle data = picture;
        effect->ProcessData(data);
    }
}

void Implode(benchmark::State& state) {
    FLAGS_minloglevel = google::GLOG_ERROR;
    StandardHost host;
    host.LoadPlugin(LUMETTA_FILE);
    auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectImplode::CLASS_ID, ImplNames::VELNOR);
    VideoHandle const picture = MakePicture(host, PixFmt::RGB24);
    for (auto _ : state) {
        DataHandle data = picture;
        effect->ProcessData(data);
    }
}

/// A stroke of 200 pixels on a picture whose field and source are there, as while a person paints.
void PushStroke(benchmark::State& state) {
    FLAGS_minloglevel = google::GLOG_ERROR;
    StandardHost host;
    host.LoadPlugin(LUMETTA_FILE);
    auto const effect =
        host.GetFactory()->CreateOneInputEffect(SettingsEffectDirectionalAreaDeformation::CLASS_ID, ImplNames::VELNOR);
    SettingsEffectDirectionalAreaDeformation settings;
    settings.SetFromX(1000);
    settings.SetFromY(1000);
    settings.SetToX(1160);
    settings.SetToY(1120);
    effect->SetSettings(settings);
    DataHandle data = MakePicture(host, PixFmt::RGB24);
    effect->ProcessData(data);
    for (auto _ : state) effect->ProcessData(data);
}

/// With the pictures and maps that are there: what the function and the call alone cost.
void OpenCv(benchmark::State& state, PixFmt format, int type, Map const& map) {
    StandardHost host;
    VideoHandle const picture = MakePicture(host, format);
    MutablePlane const plane = picture->GetMutablePlane(0);
    cv::Mat const source(HEIGHT, WIDTH, type, plane.GetData(), static_cast<std::size_t>(plane.GetStride()));
    cv::Mat result;
    cv::Mat positions(HEIGHT, WIDTH, CV_32FC2);
    for (auto _ : state) {
        for (int y = 0; y < HEIGHT; ++y) {
            auto* const row = positions.ptr<cv::Vec2f>(y);
            for (int x = 0; x < WIDTH; ++x) {
                auto const [atX, atY] = map(x, y);
                row[x] = {atX, atY};
            }
        }
        cv::remap(source, result, positions, cv::noArray(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    }
}

bool Register() {
    auto const add = [](std::string const& name, PixFmt format, int type) {
        benchmark::RegisterBenchmark((name + "/ours").c_str(), Ours, format)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        if (type < 0) return true;
        benchmark::RegisterBenchmark((name + "/OpenCV").c_str(), OpenCv, format, type, Swirl())
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        return Compare({name + "/ours", name + "/OpenCV", 1.5});
    };
    benchmark::RegisterBenchmark("implode/ours", Implode)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("implode/OpenCV", OpenCv, PixFmt::RGB24, CV_8UC3,
                                 Map(Kernels::ImplodeMap(WIDTH, HEIGHT, 0.5F)))
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("push/stroke", PushStroke)->Unit(benchmark::kMillisecond)->UseRealTime();
    return Compare({"implode/ours", "implode/OpenCV", 0.85}) && Compare({"push/stroke", "remap/rgb24/ours", 0.01}) &&
           add("remap/rgb24", PixFmt::RGB24, CV_8UC3) && add("remap/rgba", PixFmt::RGBA, CV_8UC4) &&
           add("remap/gray8", PixFmt::GRAY8, CV_8UC1) && add("remap/yuv420p", PixFmt::YUV420P, -1);
}

bool const REGISTERED = Register();

} // namespace
} // namespace Velnor::Benchmarks
