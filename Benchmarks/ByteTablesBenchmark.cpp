// 24 megapixels of RGB through three tables, for every instruction set of the processor, against cv::LUT and memcpy.
#include "Benchmarks/Ratios.h"
#include "Proc/Effects/Kit/ByteTables.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include <cstring>

namespace Velnor::Benchmarks {
namespace {

using namespace Proc;
using namespace Proc::Kernels;

constexpr int WIDTH = 6000;
constexpr int HEIGHT = 4000;

struct Pictures {
    // In parentheses: braces would be a matrix of these numbers.
    cv::Mat source = cv::Mat(HEIGHT, WIDTH, CV_8UC3);
    cv::Mat target =
        cv::Mat(HEIGHT, WIDTH, CV_8UC3, cv::Scalar::all(1)); // every page is there before the first measurement
    cv::Mat lut = cv::Mat(1, 256, CV_8UC3);
    std::array<Table, 3> tables;

    Pictures() {
        cv::randu(source, 0, 256);
        cv::randu(lut, 0, 256);
        for (int i = 0; i < 256; ++i)
            for (int k = 0; k < 3; ++k)
                tables[static_cast<std::size_t>(k)][static_cast<std::size_t>(i)] = lut.at<cv::Vec3b>(0, i)[k];
    }

    static MutablePlane GetPlane(cv::Mat& picture) {
        return {picture.data, static_cast<std::int64_t>(picture.step[0]), WIDTH * 3U, HEIGHT};
    }
};

Pictures& ThePictures() {
    static Pictures pictures;
    return pictures;
}

void Copy(benchmark::State& state) {
    Pictures& pictures = ThePictures();
    for (auto _ : state) {
        std::memcpy(pictures.target.data, pictures.source.data, WIDTH * HEIGHT * 3UL);
        benchmark::ClobberMemory();
    }
}

void OpenCvLut(benchmark::State& state) {
    Pictures& pictures = ThePictures();
    for (auto _ : state) cv::LUT(pictures.source, pictures.lut, pictures.target);
}

void Map(benchmark::State& state, Target target, bool inPlace) {
    Pictures& pictures = ThePictures();
    MutablePlane const source = Pictures::GetPlane(pictures.source);
    MutablePlane const result = inPlace ? source : Pictures::GetPlane(pictures.target);
    for (auto _ : state) MapBytesWith(target, source, result, pictures.tables, 3);
}

bool Register() {
    auto const add = [](std::string const& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    add("memcpy", Copy);
    add("cv::LUT", OpenCvLut);
    for (Target const target : SupportedTargets()) {
        bool const hasBytePermutes = target == Target::Avx512Vbmi;
        std::string const name = "tables/" + std::string(GetTargetName(target));
        for (bool const inPlace : {true, false}) {
            std::string const whole = name + (inPlace ? "/in-place" : "/new-picture");
            add(whole, Map, target, inPlace);
            Compare({whole, "memcpy", hasBytePermutes ? (inPlace ? 0.6 : 1.0) : 0.0});
            Compare({whole, "cv::LUT", target == Target::Scalar ? 0.0 : 0.5});
        }
    }
    return true;
}

bool const REGISTERED = Register();

} // namespace
} // namespace Velnor::Benchmarks
