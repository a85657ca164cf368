// Mid equaliser: midway image equalisation (J. Delon, "Midway Image Equalization", JMIV 21, 2004). The luma of the
// picture goes through the table
//
//     level -> level + strength / 2 * (level of the second picture with the same rank - level)
//
// so that at full strength both pictures, each equalised with the other, have the same distribution of levels. Chroma
// and alpha stay.
#include "Proc/Effects/General/RegisterGeneralEffects.h"
#include "Proc/Effects/Lumetta/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/ByteTables.h"
#include "Proc/Effects/Lumetta/Kernels/Histogram.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

/// Share of the samples up to each level, from 0 to 1.
std::array<double, 256> MakeRanks(ConstPlane const& luma) {
    Kernels::Histogram const counts = Kernels::CountGrey(luma);
    double const all = static_cast<double>(luma.GetWidth() * luma.GetHeight());
    std::array<double, 256> ranks{};
    std::uint64_t below = 0;
    for (std::size_t i = 0; i < ranks.size(); ++i) ranks[i] = static_cast<double>(below += counts[i]) / all;
    return ranks;
}

Kernels::Table MakeTable(ConstPlane const& luma, ConstPlane const& other, double strength) {
    std::array<double, 256> const own = MakeRanks(luma);
    std::array<double, 256> const others = MakeRanks(other);
    Kernels::Table table{};
    for (std::size_t level = 0; level < table.size(); ++level) {
        // The first level of the other picture whose rank is as high: the pseudo-inverse of its distribution.
        auto const same = std::ranges::lower_bound(others, own[level]) - others.begin();
        double const target = static_cast<double>(std::min<std::ptrdiff_t>(same, 255));
        auto const from = static_cast<double>(level);
        table[level] = static_cast<unsigned char>(std::lround(from + strength / 2 * (target - from)));
    }
    return table;
}

} // namespace

class MidEqualizer : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectMidEqualizer> {
public:
    MidEqualizer(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplNames::DEFAULT),
          lumaConverter(MakeOneInput(SettingsColorspaceConverter(
              std::vector<PixFmt>{PixFmt::GRAY8, PixFmt::YUV444P, PixFmt::YUVA444P, PixFmt::YUV420P, PixFmt::YUV422P,
                                  PixFmt::YUVA420P, PixFmt::YUVA422P},
              true))),
          greyConverter(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))),
          backConverter(MakeOneInput<SettingsColorspaceConverter>()) {}

    void ProcessInternal(intrusive_ptr<IData>& first, intrusive_ptr<IData const> const& second) override {
        double const strength = settings.GetStrength() / 100;
        if (!(strength >= 0 && strength <= 1))
            VELNOR_THROW(EffectException, "The strength of the mid equaliser is " +
                                              std::to_string(settings.GetStrength()) + " %; 0 to 100 are possible.");
        PixFmt const format = first->GetPixFmt();
        intrusive_ptr<IData> grey = AsVideo(second).MakeCopy(CopyMode::Share);
        greyConverter->ProcessData(grey);
        intrusive_ptr<IData> picture = AsVideo(first).MakeCopy(CopyMode::Share);
        lumaConverter->ProcessData(picture);
        MutablePlane const luma = AsVideo(picture).GetMutablePlane(0);
        Kernels::Table const table = MakeTable(luma, std::as_const(AsVideo(grey)).GetPlane(0), strength);
        Kernels::MapBytes(luma, luma, {&table, 1}, 1);
        if (picture->GetPixFmt() != format) {
            backConverter->SetSettings(SettingsColorspaceConverter(format, true));
            backConverter->ProcessData(picture);
        }
        picture->CopyAttributes(*first);
        first = picture;
    }

private:
    intrusive_ptr<IOneInputEffectVideo> lumaConverter;
    intrusive_ptr<IOneInputEffectVideo> greyConverter;
    intrusive_ptr<IOneInputEffectVideo> backConverter;
};

intrusive_ptr<IEffect> CreateMidEqualizer(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<MidEqualizer>(factory, context);
}

} // namespace Velnor::Proc
