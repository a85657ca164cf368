// Posterize: a few colours, by classes of brightness.
//
//     class = (luma - lowest) * N / (highest - lowest + 1)       classes of equal width over the picture's own range
//
// The palette holds the mean colour and opacity of each class, of the samples that the picture has: luma and chroma, or
// red, green and blue. An entry without pixels is opaque black, and no pixel names it. The result is the palette
// picture of class numbers, or, unless that is asked for, the same colours in the format of the input.
#include "Proc/Effects/Kit/Bands.h"
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/Converter.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectPosterize.h"

#include <algorithm>
#include <array>
#include <vector>

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

/// The samples of a row of pixels: three components and opacity.
using SampleRow = std::array<unsigned char const*, 4>;

struct ClassSum {
    std::array<std::uint64_t, 4> sums{}; ///< As in SampleRow.
    std::uint64_t pixels = 0;
};
using ClassSums = std::array<ClassSum, 256>;

/// Sums of few enough pixels for 32 bits, two of them in a word.
struct PairedSum {
    std::uint64_t even = 0; ///< Components 0 and 2.
    std::uint64_t odd = 0;  ///< Components 1 and 3.
    std::uint64_t pixels = 0;
};
using PairedSums = std::array<PairedSum, 256>;

template <std::size_t Step>
void Add(SampleRow const& row, std::uint64_t x, PairedSum& sum) {
    sum.even += row[0][x * Step] | std::uint64_t{row[2][x * Step]} << 32;
    sum.odd += row[1][x * Step] | std::uint64_t{row[3][x * Step]} << 32;
    ++sum.pixels;
}

void Flush(PairedSums& from, ClassSums& to) {
    for (std::size_t i = 0; i < to.size(); ++i) {
        PairedSum const& sum = from[i];
        std::uint64_t const parts[] = {sum.even & 0xffffffffU, sum.odd & 0xffffffffU, sum.even >> 32, sum.odd >> 32};
        for (std::size_t k = 0; k < 4; ++k) to[i].sums[k] += parts[k];
        to[i].pixels += sum.pixels;
    }
    from.fill({});
}

/// @tparam Step  bytes from a pixel's sample to the next one's
/// @param getRow  gives the SampleRow of row y
template <std::size_t Step, class GetRow>
void SumRows(ConstPlane const& classes, Band const& rows, GetRow const& getRow, ClassSums& all) {
    constexpr std::uint64_t BLOCK = 1 << 20;
    constexpr std::uint64_t MOST = 0xffffffffU / 255; // Pixels that a 32-bit sum takes.
    static_assert(BLOCK <= MOST);
    // Neighbours are of one class mostly: two sums in turn do not wait for each other.
    std::array<PairedSums, 2> sums{};
    std::uint64_t summed = 0;
    for (std::uint32_t y = rows.first; y < rows.first + rows.count; ++y) {
        SampleRow const row = getRow(y);
        unsigned char const* const numbers = classes.GetRow(y);
        for (std::uint64_t from = 0; from < classes.GetWidth(); from += BLOCK) {
            std::uint64_t const to = std::min(from + BLOCK, classes.GetWidth());
            summed += to - from;
            if (summed > MOST) {
                for (PairedSums& each : sums) Flush(each, all);
                summed = to - from;
            }
            std::uint64_t x = from;
            for (; x + 2 <= to; x += 2) {
                Add<Step>(row, x, sums[0][numbers[x]]);
                Add<Step>(row, x + 1, sums[1][numbers[x + 1]]);
            }
            if (x < to) Add<Step>(row, x, sums[0][numbers[x]]);
        }
    }
    for (PairedSums& each : sums) Flush(each, all);
}

/// As SumRows of the whole picture, on all processors.
template <std::size_t Step, class GetRow>
ClassSums SumClasses(ConstPlane const& classes, GetRow const& getRow) {
    std::vector<Band> const bands =
        CutIntoBands(static_cast<std::uint32_t>(classes.GetWidth()), static_cast<std::uint32_t>(classes.GetHeight()));
    std::vector<ClassSums> parts(CountWorkers(bands));
    RunBands(bands, [&](Band const& band, std::size_t worker) { SumRows<Step>(classes, band, getRow, parts[worker]); });
    for (std::size_t worker = 1; worker < parts.size(); ++worker)
        for (std::size_t i = 0; i < parts[0].size(); ++i) {
            for (std::size_t k = 0; k < 4; ++k) parts[0][i].sums[k] += parts[worker][i].sums[k];
            parts[0][i].pixels += parts[worker][i].pixels;
        }
    return parts[0];
}

unsigned char GetMean(ClassSum const& sum, std::size_t component) {
    return static_cast<unsigned char>((sum.sums[component] + sum.pixels / 2) / sum.pixels);
}

bool IsPlanarLuma(PixFmtDescription const& format) {
    return format.model == ColorModel::Luma && format.planesCount >= 3 && format.chromaShiftX == 0 &&
           format.chromaShiftY == 0;
}

} // namespace

class Posterize : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectPosterize> {
public:
    Posterize(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& data) override {
        int const classes = settings.GetColorsNumber();
        PixFmt const format = data->GetPixFmt();
        bool const isPlanarLuma = IsPlanarLuma(AsVideo(data).GetDescription());
        DataHandle const colours =
            CopyCovered(AsVideo(isPlanarLuma ? data : converter.Convert(AsVideo(data), PixFmt::RGBA)));
        // The luma of a palette picture is that of its colours.
        DataHandle const grey = GetGrey(data, colours);
        ConstPlane const luma = AsVideo(grey).GetPlane(0);

        VideoHandle const result = context->CreateImage(PixFmt::PAL8, data->GetFrameFormat());
        Kernels::Table const table = ClassTable(luma, classes);
        MutablePlane const numbers = result->GetMutablePlane(0);
        Kernels::MapBytes(luma, numbers, {&table, 1}, 1);
        WritePalette(AsVideo(ConstDataHandle(colours)), *result);
        data = settings.IsPal() ? DataHandle(result) : converter.Convert(*result, format);
    }

private:
    /// Of the picture itself where it holds it: the way by red, green and blue rounds.
    DataHandle GetGrey(DataHandle const& data, DataHandle const& colours) {
        if (colours->GetPixFmt() != PixFmt::RGBA) return colours;
        return converter.Convert(AsVideo(data->GetDescription().hasAlpha ? colours : data), PixFmt::GRAY8);
    }

    /// Gives the palette picture, which holds the class numbers, its palette.
    void WritePalette(IDataVideo const& colours, IDataVideo& result) {
        ConstPlane const numbers = result.GetPlane(0);
        MutablePlane const palette = result.GetMutablePlane(1);
        std::fill_n(palette.GetRow(0), palette.GetWidth(), static_cast<unsigned char>(0));
        for (std::size_t i = 0; i < 256; ++i) palette.GetRow(0)[i * 4 + 3] = 255;
        if (colours.GetPixFmt() == PixFmt::RGBA) {
            ConstPlane const plane = colours.GetPlane(0);
            ClassSums const sums = SumClasses<4>(numbers, [&](std::uint64_t y) {
                unsigned char const* const row = plane.GetRow(y);
                return SampleRow{row, row + 1, row + 2, row + 3};
            });
            for (std::size_t i = 0; i < sums.size(); ++i)
                for (std::size_t k = 0; k < 4 && sums[i].pixels > 0; ++k)
                    palette.GetRow(0)[i * 4 + k] = GetMean(sums[i], k);
            return;
        }
        std::vector<unsigned char> const opaque(numbers.GetWidth(), 255);
        bool const hasAlpha = colours.GetDescription().hasAlpha;
        ClassSums const sums = SumClasses<1>(numbers, [&](std::uint64_t y) {
            return SampleRow{colours.GetPlane(0).GetRow(y), colours.GetPlane(1).GetRow(y),
                             colours.GetPlane(2).GetRow(y), hasAlpha ? colours.GetPlane(3).GetRow(y) : opaque.data()};
        });
        VideoHandle const entries = context->CreateImage(PixFmt::YUVA444P, FrameFormat::Square(256, 1));
        entries->Fill(Color(0, 0, 0, 255));
        for (std::size_t i = 0; i < sums.size(); ++i)
            for (unsigned char k = 0; k < 4 && sums[i].pixels > 0; ++k)
                entries->GetMutablePlane(k).GetRow(0)[i] = GetMean(sums[i], k);
        DataHandle const converted = converter.Convert(*entries, PixFmt::RGBA);
        CopyPlane(AsVideo(converted).GetPlane(0), palette);
    }

    Converter converter{factory};
};

VELNOR_EFFECT(SettingsEffectPosterize, OneInput, Posterize)

} // namespace Velnor::Proc
