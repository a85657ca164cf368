// The bokeh's convolution against its plain loops and cv::filter2D, on 512 x 384 pixels; and on 12 megapixels a
// vignette of a second picture against its conversion and one blend, and oil paint against ImageMagick's on the halved
// picture and the two resizes.
#include "Benchmarks/Ratios.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsEffectVignette.h"
#include "Proc/Settings/SettingsResizer.h"
#include "Proc/StandardHost/StandardHost.h"

#include <Magick++.h>
#include <benchmark/benchmark.h>
#include <glog/logging.h>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <cstring>
#include <vector>

namespace Velnor::Benchmarks {
namespace {

using namespace Proc;
using namespace Proc::Kernels;

constexpr int WIDTH = 512;
constexpr int HEIGHT = 384;
constexpr int CHANNELS = 3;

/// A disc of `size` pixels and the picture it goes over.
struct Bokeh {
    BokehKernel kernel;
    PaddedPicture picture;

    explicit Bokeh(int size) {
        auto const side = static_cast<std::size_t>(size);
        std::vector<unsigned char> shape(side * side);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                if (std::hypot(x - (size - 1) / 2.0, y - (size - 1) / 2.0) < size / 2.0)
                    shape[static_cast<std::size_t>(y * size + x)] = 255;
        kernel = MakeBokehKernel(ConstPlane(shape.data(), size, side, side), 0.9, 1);

        std::vector<unsigned char> samples(static_cast<std::size_t>(WIDTH * HEIGHT * CHANNELS));
        std::uint32_t noise = 1;
        for (unsigned char& sample : samples) {
            noise = noise * 1664525U + 1013904223U;
            sample = static_cast<unsigned char>(noise >> 24);
        }
        ConstPlane const plane(samples.data(), WIDTH * CHANNELS, WIDTH * CHANNELS, HEIGHT);
        picture = PadPicture(plane, kernel, 0.85, 1.5);
    }
};

void BokehOurs(benchmark::State& state, int size) {
    Bokeh const bokeh(size);
    for (auto _ : state) benchmark::DoNotOptimize(Convolve(bokeh.picture, bokeh.kernel));
}

void BokehPlain(benchmark::State& state, int size) {
    Bokeh const bokeh(size);
    for (auto _ : state) benchmark::DoNotOptimize(ConvolvePlain(bokeh.picture, bokeh.kernel));
}

void BokehOpenCv(benchmark::State& state, int size) {
    Bokeh bokeh(size);
    cv::setNumThreads(1);
    cv::Mat source(HEIGHT, WIDTH, CV_32FC3);
    for (int y = 0; y < HEIGHT; ++y)
        std::memcpy(source.ptr(y),
                    bokeh.picture.values.data() + bokeh.picture.origin +
                        static_cast<std::size_t>(y) * bokeh.picture.stride,
                    WIDTH * CHANNELS * sizeof(float));
    cv::Mat const kernel(size, size, CV_32F, bokeh.kernel.weights.data());
    cv::Mat result;
    for (auto _ : state) cv::filter2D(source, result, CV_32F, kernel, {-1, -1}, 0, cv::BORDER_REFLECT_101);
}

Host& TheHost() {
    static StandardHost host;
    [[maybe_unused]] static bool const loaded = [] {
        FLAGS_minloglevel = google::GLOG_ERROR;
        host.LoadPlugin(LUMETTA_FILE);
        return true;
    }();
    return host;
}

VideoHandle MakePhoto(PixFmt format) {
    VideoHandle const picture = TheHost().GetContext()->CreateImage(format, FrameFormat::Square(4000, 3000));
    MutablePlane const plane = picture->GetMutablePlane(0);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < plane.GetWidth(); ++x)
            plane.GetRow(y)[x] = static_cast<unsigned char>((x / 40 + y / 17) & 255U);
    return picture;
}

void VignetteCall(benchmark::State& state) {
    auto const effect =
        TheHost().GetFactory()->CreateOneInputEffect(SettingsEffectVignette::CLASS_ID, ImplNames::VELNOR);
    VideoHandle const photo = MakePhoto(PixFmt::RGB24);
    effect->SetSettings(SettingsEffectVignette());
    auto const process = [&] {
        DataHandle data = photo;
        effect->ProcessData(data);
    };
    process(); // makes the mask and the layer
    for (auto _ : state) process();
}

void VignetteParts(benchmark::State& state) {
    auto const& factory = TheHost().GetFactory();
    auto const make = [&](std::string const& classId) {
        return factory->CreateOneInputEffect(classId, ImplNames::DEFAULT);
    };
    auto const converter = make(SettingsColorspaceConverter::CLASS_ID);
    converter->SetSettings(SettingsColorspaceConverter(PixFmt::RGBA, true));
    auto const shapeMask = make(SettingsEffectShapeMask::CLASS_ID);
    shapeMask->SetSettings(SettingsEffectVignette::DefaultMask());
    auto const inserter = factory->CreateTwoInputEffect(SettingsEffectAlphaInserter::CLASS_ID, ImplNames::DEFAULT);
    auto const blender = factory->CreateTwoInputEffect(SettingsEffectImageBlender::CLASS_ID, ImplNames::DEFAULT);

    VideoHandle const photo = MakePhoto(PixFmt::RGB24);
    DataHandle mask = photo;
    shapeMask->ProcessData(mask);
    DataHandle layer = TheHost().GetContext()->CreateImage(PixFmt::RGBA, photo->GetFrameFormat());
    AsVideo(layer).Fill(Color(0, 0, 0, 255));
    inserter->ProcessData(layer, mask);
    for (auto _ : state) {
        DataHandle data = photo;
        converter->ProcessData(data);
        blender->ProcessData(data, layer);
    }
}

void OilPaintCall(benchmark::State& state) {
    auto const effect =
        TheHost().GetFactory()->CreateOneInputEffect(SettingsEffectOilPaint::CLASS_ID, ImplNames::VELNOR);
    VideoHandle const photo = MakePhoto(PixFmt::RGB24);
    for (auto _ : state) {
        DataHandle data = photo;
        effect->ProcessData(data);
    }
}

/// The painting by the library itself on half of each side, and the two resizes around it.
void OilPaintParts(benchmark::State& state) {
    auto const makeResizer = [](FrameFormat const& target, SettingsResizer::ResizeMethods method) {
        SettingsResizer resize;
        resize.SetMode(SettingsResizer::TO_FRAME);
        resize.SetFitting(SettingsResizer::STRETCH);
        resize.SetMethod(method);
        resize.SetTarget(target);
        auto const resizer =
            TheHost().GetFactory()->CreateOneInputEffect(SettingsResizer::CLASS_ID, ImplNames::DEFAULT);
        resizer->SetSettings(resize);
        return resizer;
    };
    auto const down = makeResizer(FrameFormat::Square(2000, 1500), SettingsResizer::FAST_BILINEAR);
    auto const up = makeResizer(FrameFormat::Square(4000, 3000), SettingsResizer::BICUBIC);
    VideoHandle const photo = MakePhoto(PixFmt::RGB24);
    for (auto _ : state) {
        DataHandle data = photo;
        down->ProcessData(data);
        ConstPlane const half = AsVideo(data).GetPlane(0);
        std::vector<unsigned char> pixels;
        for (std::uint64_t y = 0; y < half.GetHeight(); ++y)
            pixels.insert(pixels.end(), half.GetRow(y), half.GetRow(y) + half.GetWidth());
        Magick::Image image(2000, 1500, "RGB", Magick::CharPixel, pixels.data());
        image.oilPaint(SettingsEffectOilPaint().GetRadius());
        image.write(0, 0, 2000, 1500, "RGB", Magick::CharPixel, pixels.data());
        up->ProcessData(data);
    }
}

bool Register() {
    auto const add = [](std::string const& name, auto function) {
        benchmark::RegisterBenchmark(name.c_str(), function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    for (int const size : {25, 41}) {
        std::string const suffix = "/" + std::to_string(size);
        add("bokeh" + suffix, [=](benchmark::State& state) { BokehOurs(state, size); });
        add("bokeh-plain" + suffix, [=](benchmark::State& state) { BokehPlain(state, size); });
        add("bokeh-OpenCV" + suffix, [=](benchmark::State& state) { BokehOpenCv(state, size); });
    }
    add("oil-paint/call", OilPaintCall);
    add("oil-paint/parts", OilPaintParts);
    add("vignette/call", VignetteCall);
    add("vignette/parts", VignetteParts);
    return Compare({"bokeh/41", "bokeh-plain/41", 1 / 4.5}) && Compare({"bokeh/41", "bokeh-OpenCV/41", 1.1}) &&
           Compare({"bokeh/25", "bokeh-plain/25", 0}) && Compare({"bokeh/25", "bokeh-OpenCV/25", 0.5}) &&
           Compare({"oil-paint/call", "oil-paint/parts", 1.1}) && Compare({"vignette/call", "vignette/parts", 1.3});
}

bool const REGISTERED = Register();

} // namespace
} // namespace Velnor::Benchmarks
