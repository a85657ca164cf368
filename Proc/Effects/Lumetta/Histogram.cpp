// Histogram: counts the levels of red, green, blue and luma, writes what it found into its settings and, if asked,
// draws the curves on the picture.
//
//     picture -> a format that is counted (a copy; the picture itself stays)   counts -> settings
//     draw:      packed colour, curves in the lower right corner, back to the picture's format
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/HistogramReport.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectHistogram.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

using FrameInfo = std::array<Kernels::Histogram, 4>; ///< Red, green, blue, luma.

SettingsHistogramChannel Report(Kernels::Histogram const& counts) {
    Kernels::LevelStatistics const found = Kernels::Summarise(counts);
    return SettingsHistogramChannel()
        .SetMean(found.mean)
        .SetDeviation(found.deviation)
        .SetLow(found.low)
        .SetPercentile1(found.percentiles[0])
        .SetPercentile25(found.percentiles[1])
        .SetMedian(found.percentiles[2])
        .SetPercentile75(found.percentiles[3])
        .SetPercentile99(found.percentiles[4])
        .SetHigh(found.high)
        .SetClippedLow(found.clippedLow)
        .SetClippedHigh(found.clippedHigh)
        .SetCounts({counts.begin(), counts.end()});
}

/// Lower right, `percent` of the width wide and 5 : 3 in shape, a margin away from the edges where there is room.
Rectangle PlacePanel(FrameFormat const& frame, double percent) {
    double const share = std::isfinite(percent) ? std::clamp(percent, 0.0, 100.0) / 100.0 : 0;
    auto const width = std::max(1U, static_cast<std::uint32_t>(share * frame.width));
    std::uint32_t const height = std::clamp(width / 5 * 3, 1U, frame.height);
    std::uint32_t const margin = std::min({width / 16, frame.width - width, frame.height - height});
    return {frame.width - width - margin, frame.height - height - margin, width, height};
}

} // namespace

class Histogram : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectHistogram> {
public:
    Histogram(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          countConverter(MakeOneInput(
              SettingsColorspaceConverter(std::vector<PixFmt>{PixFmt::RGB24, PixFmt::YUV444P, PixFmt::YUV420P}, true))),
          drawConverter(MakeOneInput(SettingsColorspaceConverter(Kernels::PackedRgbFormats(), true))),
          backConverter(MakeOneInput(SettingsColorspaceConverter())) {}

    void ProcessInternal(DataHandle& data) override {
        DataHandle counted = AsVideo(data).MakeCopy(CopyMode::Share);
        countConverter->ProcessData(counted);
        FrameInfo const info = GetFrameInfo(AsVideo(counted));
        counted.reset(); // so that drawing need not duplicate the samples
        SettingsEffectHistogram found = settings;
        FrameFormat const& frame = data->GetFrameFormat();
        found.SetPixels(std::uint64_t{frame.width} * frame.height);
        found.SetRed(Report(info[0]));
        found.SetGreen(Report(info[1]));
        found.SetBlue(Report(info[2]));
        found.SetLuma(Report(info[3]));
        if (settings.GetDraw()) Draw(data, info);
        settings = std::move(found);
    }

private:
    static FrameInfo GetFrameInfo(IDataVideo const& picture) {
        switch (picture.GetPixFmt()) {
        case PixFmt::RGB24:
            return Kernels::CountBytesAndLuma(picture.GetPlane(0), 3, Kernels::WeightsByByte(false));
        case PixFmt::YUV420P:
        case PixFmt::YUV444P: {
            PixFmtDescription const& format = picture.GetDescription();
            return Kernels::CountPlanar({picture.GetPlane(0), picture.GetPlane(1), picture.GetPlane(2)},
                                        format.chromaShiftX, format.chromaShiftY);
        }
        default:
            VELNOR_THROW(EffectException, "Unsupported pixel format");
        }
    }

    void Draw(DataHandle& data, FrameInfo const& info) {
        PixFmt const format = data->GetPixFmt();
        backConverter->SetSettings(SettingsColorspaceConverter(format, true));
        drawConverter->ProcessData(data);
        Kernels::DrawCurves(AsVideo(data).GetMutablePlane(0), Kernels::PackedRgb(data->GetPixFmt()),
                            {info[0], info[1], info[2]}, PlacePanel(data->GetFrameFormat(), settings.GetSize()));
        if (data->GetPixFmt() != format) backConverter->ProcessData(data);
    }

    intrusive_ptr<IOneInputEffectVideo> countConverter;
    intrusive_ptr<IOneInputEffectVideo> drawConverter;
    intrusive_ptr<IOneInputEffectVideo> backConverter;
};

VELNOR_EFFECT(SettingsEffectHistogram, OneInput, Histogram)

} // namespace Velnor::Proc
