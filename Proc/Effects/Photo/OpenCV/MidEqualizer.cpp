// MidEqualizer: brings the levels of the first picture half-way to those of the second, on OpenCV.
//
//     F, G    = the cumulative histograms of the two pictures
//     partner = smallest level u with G(u) >= F(level)                the second picture's level of the same rank
//     level   = level + strength / 100 * (partner - level) / 2        100 is the midway of the two
//
// Every component has histograms of its own; alpha stays. The pictures need not be of one size: only their levels are
// compared. The second is converted to the first's format.
//
// J. Delon, "Midway Image Equalization", Journal of Mathematical Imaging and Vision 21, 2004.
#include "Proc/Effects/Photo/Guarded.h"
#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Velnor::Proc {
namespace {

constexpr float SEEN = 0.01F; ///< Least weight of a sample of which anything is seen.

using Histogram = std::array<std::uint64_t, 256>;

/// How many samples of a component are at each level or below; of those in part of the picture that is seen, if any is.
Histogram CountUpTo(IDataVideo const& picture, ComponentPlace place) {
    cv::Mat const samples = ReadPlane(picture, place.plane);
    cv::Mat const weights = MakeAlphaWeights(picture, place.plane);
    Histogram counts{};
    int const step = samples.channels();
    for (int y = 0; y < samples.rows; ++y) {
        unsigned char const* const row = samples.ptr<unsigned char>(y);
        float const* const weight = weights.empty() ? nullptr : weights.ptr<float>(y);
        for (int x = 0; x < samples.cols; ++x)
            if (weight == nullptr || weight[x] >= SEEN) ++counts[row[x * step + place.offset]];
    }
    for (std::size_t i = 1; i < counts.size(); ++i) counts[i] += counts[i - 1];
    return counts;
}

/// The new level of each level of the first picture; they stay where one of the two has none.
std::array<unsigned char, 256> MidwayTable(Histogram const& first, Histogram const& second, double strength) {
    std::array<unsigned char, 256> table{};
    bool const isAlone = first.back() == 0 || second.back() == 0;
    std::size_t partner = 0;
    for (std::size_t level = 0; level < table.size(); ++level) {
        // Ranks as whole numbers: pictures that are equal stay equal. No picture has so many pixels that it overflows.
        while (second[partner] * first.back() < first[level] * second.back()) ++partner;
        double const distance = isAlone ? 0 : static_cast<double>(partner) - static_cast<double>(level);
        table[level] = static_cast<unsigned char>(
            std::clamp(std::lround(static_cast<double>(level) + distance * strength / 200.0), 0L, 255L));
    }
    return table;
}

} // namespace

class MidEqualizer : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectMidEqualizer>, public OnOpenCV {
public:
    MidEqualizer(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplNames::DEFAULT),
          converter(MakeOneInput(SettingsColorspaceConverter())) {}

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        PixFmt const given = first->GetPixFmt();
        converter->SetSettings(SettingsColorspaceConverter(PlaneFormats(), true));
        if (std::ranges::count(PlaneFormats(), given) == 0) converter->ProcessData(first);
        DataHandle partner = AsVideo(second).MakeCopy(CopyMode::Share);
        RunWith(*converter, SettingsColorspaceConverter(first->GetPixFmt(), true), partner);
        first = Equalise(AsVideo(first), AsVideo(partner));
        RunWith(*converter, SettingsColorspaceConverter(given, true), first);
    }

private:
    VideoHandle Equalise(IDataVideo const& first, IDataVideo const& second) const {
        PixFmtDescription const& format = first.GetDescription();
        VideoHandle const result = first.MakeCopy(CopyMode::Value);
        for (std::size_t k = 0; k < format.componentsCount; ++k) {
            ComponentPlace const place = format.components[k];
            auto const table = MidwayTable(CountUpTo(first, place), CountUpTo(second, place), settings.GetStrength());
            cv::Mat target = ViewOf(result->GetMutablePlane(place.plane), format.planes[place.plane]);
            cv::Mat channel;
            cv::extractChannel(target, channel, place.offset);
            cv::LUT(channel, cv::Mat(1, 256, CV_8U, const_cast<unsigned char*>(table.data())), channel);
            cv::insertChannel(channel, target, place.offset);
        }
        return result;
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
};

intrusive_ptr<IEffect> CreateMidEqualizer(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<MidEqualizer>(factory, context);
}

} // namespace Velnor::Proc
