// NoiseVideo: adds noise, such as the grain of film: the same bytes for the same seed, on every run and machine.
//
//     level = level + strength * noise(x, y), to the nearest, clamped      noise of deviation 1, see GrainField
//
// Grey noise adds the same to red, green and blue, so it changes the brightness alone; colour noise adds its own to
// each.
#include "Proc/Effects/General/Kernels/GrainField.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Settings/SettingsEffectNoiseVideo.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

void AddNoise(unsigned char* row, std::size_t pixels, unsigned int pixelBytes, std::array<float const*, 3> const& noise,
              float strength) {
    for (std::size_t x = 0; x < pixels; ++x)
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned char& level = row[x * pixelBytes + k];
            float const value = static_cast<float>(level) + strength * noise[k][x] + 0.5F;
            level = static_cast<unsigned char>(std::clamp(value, 0.0F, 255.0F));
        }
}

} // namespace

class NoiseVideo : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectNoiseVideo> {
public:
    NoiseVideo(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        Kernels::PackedRgb const format(data->GetPixFmt());
        FrameFormat const frame = data->GetFrameFormat();
        // A channel is a colour, wherever the format has its byte.
        std::vector<Kernels::GrainField> fields;
        for (std::uint32_t channel = 0; channel < (settings.IsMonochrome() ? 1U : 3U); ++channel)
            fields.emplace_back(settings.GetSeed(), channel, static_cast<float>(settings.GetGrainSize()),
                                settings.GetDistribution() == SettingsEffectNoiseVideo::UNIFORM, frame.width);
        MutablePlane const plane = OwnPicture(data).GetMutablePlane(0);
        for (std::uint32_t y = 0; y < frame.height; ++y) {
            std::array<float const*, 3> noise;
            noise.fill(fields[0].GetRow(y));
            for (std::size_t k = 1; k < fields.size(); ++k) noise[k] = fields[k].GetRow(y);
            if (format.isBlueFirst) std::swap(noise[0], noise[2]);
            AddNoise(plane.GetRow(y), frame.width, format.pixelBytes, noise,
                     static_cast<float>(settings.GetStrength()));
        }
    }
};

VELNOR_EFFECT(SettingsEffectNoiseVideo, OneInput, NoiseVideo)

} // namespace Velnor::Proc
