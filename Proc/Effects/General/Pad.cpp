// Pad: adds margins around the picture: one colour, the edge repeated, or the picture mirrored.
//
// A picture can begin only at a whole chroma sample: the left and the upper margin are rounded up to that, the right
// and the lower one are exact. Mirroring repeats the sample at the edge (… 2 1 0 | 0 1 2 …), in each plane for itself,
// and goes to and fro in margins larger than the picture. Palette pictures are padded as red, green and blue and get a
// new palette.
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectPad.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc {
namespace {

/// The sample of the source, of `size` samples in a line, that stands at a place left or right of it or in it.
std::uint64_t SourceOf(std::int64_t place, std::uint64_t size, SettingsEffectPad::Mode mode) {
    auto const count = static_cast<std::int64_t>(size);
    if (mode == SettingsEffectPad::EDGE)
        return static_cast<std::uint64_t>(std::clamp<std::int64_t>(place, 0, count - 1));
    std::int64_t const period = 2 * count;
    std::int64_t const phase = ((place % period) + period) % period;
    return static_cast<std::uint64_t>(phase < count ? phase : period - 1 - phase);
}

/// The source of each sample of a line of `size` that begins `before` samples ahead of the source.
std::vector<std::uint64_t> SourcesOf(std::uint64_t size, std::uint64_t before, std::uint64_t sourceSize,
                                     SettingsEffectPad::Mode mode) {
    std::vector<std::uint64_t> sources(size);
    for (std::uint64_t i = 0; i < size; ++i)
        sources[i] = SourceOf(static_cast<std::int64_t>(i) - static_cast<std::int64_t>(before), sourceSize, mode);
    return sources;
}

void PadPlane(ConstPlane const& source, MutablePlane const& target, std::uint64_t bytes, std::uint64_t left,
              std::uint64_t top, SettingsEffectPad::Mode mode) {
    std::uint64_t const width = source.GetWidth() / bytes;
    std::vector<std::uint64_t> const columns = SourcesOf(target.GetWidth() / bytes, left, width, mode);
    std::vector<std::uint64_t> const rows = SourcesOf(target.GetHeight(), top, source.GetHeight(), mode);
    for (std::uint64_t y = 0; y < rows.size(); ++y) {
        unsigned char const* const from = source.GetRow(rows[y]);
        unsigned char* const to = target.GetRow(y);
        auto const copySample = [&](std::uint64_t x) { std::memcpy(to + x * bytes, from + columns[x] * bytes, bytes); };
        for (std::uint64_t x = 0; x < left; ++x) copySample(x);
        std::memcpy(to + left * bytes, from, source.GetWidth());
        for (std::uint64_t x = left + width; x < columns.size(); ++x) copySample(x);
    }
}

} // namespace

class Pad : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectPad> {
public:
    Pad(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return StandInFormats(); }

    void ProcessInternal(DataHandle& data) override {
        PixFmtDescription const& format = data->GetDescription();
        if (IsPackedLuma(format) || format.model == ColorModel::Palette)
            EffectBaseCSC::ProcessInternal(data);
        else
            ProcessInternalCSC(data);
    }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        CropInfo const& given = settings.GetMargins();
        CropInfo const margins =
            CropInfo(given.GetLeft(), given.GetTop(), 0, 0).Apart(1U << format.chromaShiftX, 1U << format.chromaShiftY);
        FrameFormat frame = picture.GetFrameFormat();
        frame.width = AddMargins("wide", margins.GetLeft(), frame.width, given.GetRight());
        frame.height = AddMargins("high", margins.GetTop(), frame.height, given.GetBottom());
        VideoHandle const result = context->CreateImage(format.format, frame);
        if (settings.GetPadMode() == SettingsEffectPad::COLOR) {
            result->Fill(settings.GetMarginColor());
            CopyDataVideo(ConstVideoHandle(&picture), result, static_cast<int>(margins.GetLeft()),
                          static_cast<int>(margins.GetTop()));
        } else
            for (unsigned char i = 0; i < format.planesCount; ++i) {
                PlaneLayout const& layout = format.planes[i];
                PadPlane(picture.GetPlane(i), result->GetMutablePlane(i), layout.bytes,
                         margins.GetLeft() >> layout.shiftX, margins.GetTop() >> layout.shiftY, settings.GetPadMode());
            }
        data = result;
    }

private:
    static std::uint32_t AddMargins(std::string const& what, std::uint64_t before, std::uint64_t size,
                                    std::uint64_t after) {
        std::uint64_t const sum = before + size + after;
        if (sum > LARGEST_PICTURE_SIDE)
            VELNOR_THROW(EffectException, "The margins make the picture " + std::to_string(before) + " + " +
                                              std::to_string(size) + " + " + std::to_string(after) + " pixels " + what +
                                              "; pictures have at most " + std::to_string(LARGEST_PICTURE_SIDE) + ".");
        return static_cast<std::uint32_t>(sum);
    }
};

VELNOR_EFFECT(SettingsEffectPad, OneInput, Pad)

} // namespace Velnor::Proc
