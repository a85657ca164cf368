#include "Proc/Effects/General/WeightedScale.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc {
namespace {

constexpr unsigned int WHOLE = 255 * 255; ///< An opaque sample's weight.

/// A picture of numbers of 16 bits.
class Words {
public:
    Words(IEffectContext& context, std::uint64_t width, std::uint64_t height)
        : picture(context.CreateImage(PixFmt::YA8, FrameFormat::Square(static_cast<std::uint32_t>(width),
                                                                       static_cast<std::uint32_t>(height)))) {}

    /// @param wordAt  gives the number of sample (x, y)
    template <class WordAt>
    void Fill(WordAt const& wordAt) {
        MutablePlane const plane = picture->GetMutablePlane(0);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < plane.GetWidth() / 2; ++x) {
                auto const word = static_cast<std::uint16_t>(wordAt(x, y));
                std::memcpy(plane.GetRow(y) + 2 * x, &word, sizeof word);
            }
    }

    unsigned int Get(std::uint64_t x, std::uint64_t y) const {
        std::uint16_t word = 0;
        std::memcpy(&word, picture->GetPlane(0).GetRow(y) + 2 * x, sizeof word);
        return word;
    }

    void ScaleTo(Words& target, Scaler& scaler, SettingsResizer::ResizeMethods method) const {
        FrameFormat const from = picture->GetFrameFormat();
        FrameFormat const to = target.picture->GetFrameFormat();
        scaler.Scale({PixFmt::YA8, from.width, from.height, {picture->GetPlane(0)}, true},
                     {PixFmt::YA8, to.width, to.height, {target.picture->GetMutablePlane(0)}, true}, method);
    }

private:
    VideoHandle picture;
};

} // namespace

void ScaleByAlpha(IEffectContext& pictures, Scaler& scaler, WeightedSamples const& source, MutablePlane const& target,
                  SettingsResizer::ResizeMethods method) {
    unsigned int const bytes = source.sampleBytes;
    std::uint64_t const width = target.GetWidth() / bytes;
    Words fine(pictures, source.samples.GetWidth() / bytes, source.samples.GetHeight());
    Words weights(pictures, width, target.GetHeight());
    Words products(pictures, width, target.GetHeight());
    auto const alphaAt = [&](std::uint64_t x, std::uint64_t y) -> unsigned int {
        return *source.alpha.GetOffsetPtr(x, y);
    };
    fine.Fill([&](std::uint64_t x, std::uint64_t y) { return alphaAt(x, y) * 255; });
    fine.ScaleTo(weights, scaler, method);
    for (unsigned int k = 0; k < bytes; ++k) {
        if (static_cast<int>(k) == source.alphaByte) continue;
        fine.Fill(
            [&](std::uint64_t x, std::uint64_t y) { return alphaAt(x, y) * source.samples.GetRow(y)[x * bytes + k]; });
        fine.ScaleTo(products, scaler, method);
        for (std::uint64_t y = 0; y < target.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < width; ++x) {
                unsigned int const weight = weights.Get(x, y);
                if (weight == 0 || weight == WHOLE) continue;
                unsigned int const level = (products.Get(x, y) * 255 + weight / 2) / weight;
                target.GetRow(y)[x * bytes + k] = static_cast<unsigned char>(std::min(level, 255U));
            }
    }
}

} // namespace Velnor::Proc
