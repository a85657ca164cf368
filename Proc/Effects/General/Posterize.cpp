// Posterize: a few colours, by classes of brightness.
//
//     class = (luma - lowest) * N / (highest - lowest + 1)       classes of equal width over the picture's own range
//
// The palette holds the mean red, green, blue and opacity of each class; an entry without pixels is opaque black, and no
// pixel names it. The result is the palette picture of class numbers, or, unless that is asked for, the same colours in
// the format of the input.
#include "Proc/Effects/General/RegisterGeneralEffects.h"
#include "Proc/Effects/Lumetta/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/ByteTables.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectPosterize.h"

#include <algorithm>
#include <array>

namespace Velnor::Proc {
namespace {

/// The class of each level of luma.
Kernels::Table ClassTable(ConstPlane const& luma, int classes) {
    unsigned char lowest = 255;
    unsigned char highest = 0;
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* const row = luma.GetRow(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x) {
            lowest = std::min(lowest, row[x]);
            highest = std::max(highest, row[x]);
        }
    }
    Kernels::Table table{};
    for (int level = lowest; level <= highest; ++level)
        table[static_cast<std::size_t>(level)] =
            static_cast<unsigned char>((level - lowest) * classes / (highest - lowest + 1));
    return table;
}

struct ClassSum {
    std::array<std::uint64_t, 4> sums{}; ///< Red, green, blue, opacity.
    std::uint64_t pixels = 0;
};

/// Sums of few enough pixels for 32 bits, two of them in a word.
struct PairedSum {
    std::uint64_t redBlue = 0;
    std::uint64_t greenOpacity = 0;
    std::uint64_t pixels = 0;
};
using PairedSums = std::array<PairedSum, 256>;
constexpr std::uint64_t PAIRED_PIXELS = 0xffffffffU / 255;

void Add(unsigned char const* rgba, PairedSum& sum) {
    sum.redBlue += rgba[0] | std::uint64_t{rgba[2]} << 32;
    sum.greenOpacity += rgba[1] | std::uint64_t{rgba[3]} << 32;
    ++sum.pixels;
}

void Flush(PairedSums& from, std::array<ClassSum, 256>& to) {
    for (std::size_t i = 0; i < to.size(); ++i) {
        PairedSum const& sum = from[i];
        std::uint64_t const parts[] = {sum.redBlue & 0xffffffffU, sum.greenOpacity & 0xffffffffU, sum.redBlue >> 32,
                                       sum.greenOpacity >> 32};
        for (std::size_t k = 0; k < 4; ++k) to[i].sums[k] += parts[k];
        to[i].pixels += sum.pixels;
    }
    from.fill({});
}

std::array<ClassSum, 256> SumClasses(ConstPlane const& rgba, ConstPlane const& classes) {
    constexpr std::uint64_t BLOCK = 1 << 20;
    static_assert(BLOCK <= PAIRED_PIXELS);
    std::array<ClassSum, 256> all{};
    // Neighbours are of one class mostly: two sums in turn do not wait for each other.
    std::array<PairedSums, 2> sums{};
    std::uint64_t summed = 0;
    for (std::uint64_t y = 0; y < classes.GetHeight(); ++y) {
        unsigned char const* const colours = rgba.GetRow(y);
        unsigned char const* const numbers = classes.GetRow(y);
        for (std::uint64_t from = 0; from < classes.GetWidth(); from += BLOCK) {
            std::uint64_t const to = std::min(from + BLOCK, classes.GetWidth());
            summed += to - from;
            if (summed > PAIRED_PIXELS) {
                for (PairedSums& each : sums) Flush(each, all);
                summed = to - from;
            }
            std::uint64_t x = from;
            for (; x + 2 <= to; x += 2) {
                Add(colours + x * 4, sums[0][numbers[x]]);
                Add(colours + x * 4 + 4, sums[1][numbers[x + 1]]);
            }
            if (x < to) Add(colours + x * 4, sums[0][numbers[x]]);
        }
    }
    for (PairedSums& each : sums) Flush(each, all);
    return all;
}

void WriteMeans(std::array<ClassSum, 256> const& all, MutablePlane const& palette) {
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t k = 0; k < 4; ++k) {
            std::uint64_t const pixels = all[i].pixels;
            std::uint64_t const mean = pixels > 0 ? (all[i].sums[k] + pixels / 2) / pixels : (k == 3 ? 255 : 0);
            palette.GetRow(0)[i * 4 + k] = static_cast<unsigned char>(mean);
        }
}

} // namespace

class Posterize : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectPosterize> {
public:
    Posterize(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& data) override {
        int const classes = settings.GetColorsNumber();
        if (classes < 1 || classes > 256)
            VELNOR_THROW(EffectException, "The number of colours of the posterize effect is " +
                                              std::to_string(classes) + "; 1 to 256 are possible.");
        IDataVideo const& picture = AsVideo(data);
        DataHandle const rgba = Convert(data, PixFmt::RGBA);
        // The luma of a palette picture is that of its colours.
        DataHandle const grey = Convert(data, PixFmt::GRAY8);
        ConstPlane const luma = AsVideo(ConstDataHandle(grey)).GetPlane(0);

        VideoHandle const result = context->CreateImage(PixFmt::PAL8, picture.GetFrameFormat());
        Kernels::Table const table = ClassTable(luma, classes);
        MutablePlane const numbers = result->GetMutablePlane(0);
        Kernels::MapBytes(luma, numbers, {&table, 1}, 1);
        WriteMeans(SumClasses(AsVideo(ConstDataHandle(rgba)).GetPlane(0), numbers), result->GetMutablePlane(1));
        data = settings.IsPal() ? DataHandle(result) : Convert(result, picture.GetPixFmt());
    }

private:
    DataHandle Convert(DataHandle const& data, PixFmt format) {
        if (!converter) converter = MakeOneInput<SettingsColorspaceConverter>();
        converter->SetSettings(SettingsColorspaceConverter(format, true));
        DataHandle copy = AsVideo(data).MakeCopy(CopyMode::Value);
        converter->ProcessData(copy);
        return copy;
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
};

intrusive_ptr<IEffect> CreatePosterize(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<Posterize>(factory, context);
}

} // namespace Velnor::Proc
