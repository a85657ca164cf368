// BlurRadial: the mean over a turn or a zoom about a centre, of total length t. It is made by halving: the mean of the
// picture moved by +t/4 and -t/4, of that the mean moved by +t/8 and -t/8, and so on, is the mean over 2^n places along
// the movement after n passes. The cost grows with the logarithm of the length. Short steps come first, so that long
// ones find a picture that is already smooth along the way. Colours count by their alpha.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/TurnedMean.h"
#include "Proc/Settings/SettingsEffectBlurRadial.h"

#include <cmath>
#include <numbers>

namespace Velnor::Proc {

class BlurRadial : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectBlurRadial> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return true; }

    /// Formats whose planes all have the picture's size.
    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::RGB24, PixFmt::BGR24,   PixFmt::RGBA,    PixFmt::BGRA,
                                                 PixFmt::GRAY8, PixFmt::YUV444P, PixFmt::YUVA444P};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle picture = AsVideo(data).MakeCopy(CopyMode::Share);
        VideoHandle spare;
        double const total = GetTotal();
        for (int pass = CountPasses(picture->GetFrameFormat(), total); pass > 0; --pass) {
            VideoHandle next = spare ? spare : context->CreateImage(picture->GetPixFmt(), picture->GetFrameFormat());
            double const step = std::ldexp(total, -pass - 1);
            Blend(*picture, *next, MakeMove(picture->GetFrameFormat(), step),
                  MakeMove(picture->GetFrameFormat(), -step));
            spare = pass > 1 && picture->GetId() != data->GetId() && !picture->IsShared() ? picture : nullptr;
            picture = next;
        }
        data = picture;
    }

private:
    /// Of the turn in radians, or of the zoom as a logarithm.
    double GetTotal() const {
        constexpr double LARGEST_TURN = std::numbers::pi / 4;
        constexpr double LARGEST_ZOOM = 5.0 / 3;
        double const share = settings.GetStrength() / 100;
        return settings.GetMode() == SettingsEffectBlurRadial::SPIN ? share * LARGEST_TURN
                                                                    : std::log1p(share * (LARGEST_ZOOM - 1));
    }

    double CenterOf(double percent, std::uint32_t side) const { return percent / 100 * side - 0.5; }

    /// So many that the places at the farthest corner are at most a pixel apart.
    int CountPasses(FrameFormat const& frame, double total) const {
        double const x = CenterOf(settings.GetCenterX(), frame.width);
        double const y = CenterOf(settings.GetCenterY(), frame.height);
        double const farX = std::max(std::abs(x), std::abs(frame.width - x));
        double const farY = std::max(std::abs(y), std::abs(frame.height - y));
        double const path = total * std::hypot(farX, farY);
        return std::max(1, static_cast<int>(std::ceil(std::log2(std::max(path, 1.0)))));
    }

    Kernels::Similarity MakeMove(FrameFormat const& frame, double step) const {
        double const x = CenterOf(settings.GetCenterX(), frame.width);
        double const y = CenterOf(settings.GetCenterY(), frame.height);
        if (settings.GetMode() == SettingsEffectBlurRadial::SPIN) return {std::cos(step), std::sin(step), x, y};
        return {std::exp(step), 0, x, y};
    }

    static void Blend(IDataVideo const& source, IDataVideo& target, Kernels::Similarity const& first,
                      Kernels::Similarity const& second) {
        PixFmtDescription const& format = source.GetDescription();
        ConstPlane const alpha = FindClearAlpha(source);
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            ConstPlane const from = source.GetPlane(i);
            MutablePlane const to = target.GetMutablePlane(i);
            unsigned int const pixelBytes = format.planes[i].bytes;
            Kernels::MeanOfTwo(from, to, pixelBytes, first, second);
            bool const holdsAlpha = i == format.alpha.plane;
            if (alpha.IsEmpty() || (holdsAlpha && pixelBytes == 1)) continue;
            Kernels::WeighMeanOfTwo(from, to, pixelBytes, alpha, holdsAlpha ? format.alpha.offset : -1, first, second);
        }
    }
};

VELNOR_EFFECT(SettingsEffectBlurRadial, OneInput, BlurRadial)

} // namespace Velnor::Proc
