// Blending with a mask, whole effect call, against the same arithmetic in OpenCV.
#include "Benchmarks/Ratios.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/StandardHost/StandardHost.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <vector>

namespace Velnor::Benchmarks {
namespace {

using namespace Proc;

constexpr int WIDTH = 4000;
constexpr int HEIGHT = 3000;

cv::Mat MakeSlopes(int type, int seed) {
    cv::Mat picture(HEIGHT, WIDTH, type);
    std::size_t const bytes = picture.total() * picture.elemSize();
    for (std::size_t i = 0; i < bytes; ++i)
        picture.data[i] = static_cast<unsigned char>(i * static_cast<std::size_t>(seed) / 61 + (i >> 13));
    return picture;
}

ConstPlane ToPlane(cv::Mat const& picture) {
    return {picture.data, static_cast<std::int64_t>(picture.step[0]),
            static_cast<std::size_t>(picture.cols) * picture.elemSize(), HEIGHT, picture.elemSize()};
}

VideoHandle ToPicture(IEffectContext& context, cv::Mat const& picture) {
    VideoHandle const result = context.CreateImage(PixFmt::RGB24, FrameFormat::Square(WIDTH, HEIGHT));
    CopyPlane(ToPlane(picture), result->GetMutablePlane(0));
    return result;
}

void BlendCall(benchmark::State& state) {
    StandardHost host;
    auto const effect =
        host.GetFactory()->CreateTwoInputEffect(SettingsEffectImageBlender::CLASS_ID, ImplNames::DEFAULT);
    effect->SetSettings(SettingsEffectImageBlender());
    DataHandle first = ToPicture(*host.GetContext(), MakeSlopes(CV_8UC3, 7));
    VideoHandle const second = ToPicture(*host.GetContext(), MakeSlopes(CV_8UC3, 13));
    second->SetPlane(0, ToPlane(MakeSlopes(CV_8UC1, 3)));
    for (auto _ : state) effect->ProcessData(first, second);
}

/// The mask for three channels and its complement are there already: only the arithmetic is timed.
void BlendOpenCv(benchmark::State& state) {
    cv::Mat const first = MakeSlopes(CV_8UC3, 7);
    cv::Mat const second = MakeSlopes(CV_8UC3, 13);
    cv::Mat const one = MakeSlopes(CV_8UC1, 3);
    cv::Mat mask;
    cv::Mat complement;
    cv::merge(std::vector<cv::Mat>{one, one, one}, mask);
    cv::bitwise_not(mask, complement);
    cv::Mat over;
    cv::Mat under;
    cv::Mat result;
    for (auto _ : state) {
        cv::multiply(second, mask, over, 1 / 255.0);
        cv::multiply(first, complement, under, 1 / 255.0);
        cv::add(over, under, result);
    }
}

/// Its own blending function, whose weights are of single precision.
void BlendLinearOpenCv(benchmark::State& state) {
    cv::Mat const first = MakeSlopes(CV_8UC3, 7);
    cv::Mat const second = MakeSlopes(CV_8UC3, 13);
    cv::Mat weight;
    MakeSlopes(CV_8UC1, 3).convertTo(weight, CV_32F, 1 / 255.0);
    cv::Mat const rest = 1 - weight;
    cv::Mat result;
    for (auto _ : state) cv::blendLinear(first, second, rest, weight, result);
}

bool Register() {
    auto const add = [](char const* name, auto function) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("blend/call", BlendCall);
    add("blend/OpenCV", BlendOpenCv);
    add("blend/OpenCV blendLinear", BlendLinearOpenCv);
    return Compare({"blend/call", "blend/OpenCV", 1.5}) && Compare({"blend/call", "blend/OpenCV blendLinear", 1.5});
}

bool const REGISTERED = Register();

} // namespace
} // namespace Velnor::Benchmarks
