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
    int lowest = 255;
    int highest = 0;
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        auto const [low, high] = std::minmax_element(luma.GetRow(y), luma.GetRow(y) + luma.GetWidth());
        lowest = std::min<int>(lowest, *low);
        highest = std::max<int>(highest, *high);
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

void WriteMeans(ConstPlane const& rgba, ConstPlane const& classes, MutablePlane const& palette) {
    std::array<ClassSum, 256> all{};
    for (std::uint64_t y = 0; y < classes.GetHeight(); ++y) {
        unsigned char const* const colours = rgba.GetRow(y);
        unsigned char const* const numbers = classes.GetRow(y);
        for (std::uint64_t x = 0; x < classes.GetWidth(); ++x) {
            ClassSum& one = all[numbers[x]];
            for (std::size_t k = 0; k < 4; ++k) one.sums[k] += colours[x * 4 + k];
            ++one.pixels;
        }
    }
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
        WriteMeans(AsVideo(ConstDataHandle(rgba)).GetPlane(0), numbers, result->GetMutablePlane(1));
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
