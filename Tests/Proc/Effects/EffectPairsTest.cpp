// Every effect after every effect: what one makes of a picture, in any format, the next one takes.

#include "Proc/Host/Host.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/PluginHost.h"
#include "Tests/Support/RegisteredEffects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <map>
#include <string_view>

namespace Velnor::Proc {
namespace {

using namespace Testing;

constexpr std::uint32_t WIDTH = 24;
constexpr std::uint32_t HEIGHT = 18;

IEffectContext& Context() { return *PluginHost().GetContext(); }

/// What the next effect can see of a picture but its samples; a picture of each will do.
struct Kind {
    PixFmt format;
    bool isOddWide, isOddHigh, hasExtraAlpha, hasChromaAlpha;
    friend auto operator<=>(Kind const&, Kind const&) = default;

    explicit Kind(IDataVideo const& picture)
        : format(picture.GetPixFmt()),
          isOddWide(picture.GetFrameFormat().width % 2 != 0),
          isOddHigh(picture.GetFrameFormat().height % 2 != 0),
          hasExtraAlpha(!picture.GetExtraAlpha(0).IsEmpty()),
          hasChromaAlpha(!picture.GetExtraAlpha(1).IsEmpty()) {}
};

struct Example {
    VideoHandle picture;
    std::string origin;
};

class Link {
public:
    explicit Link(RegisteredEffect const& registered)
        : name(registered), effect(PluginHost().GetFactory()->CreateEffect(name.classId, name.implName)) {
        effect->SetSettings(*TypicalSettings(effect->GetSettingsBase().GetType()));
    }

    std::string const& GetName() const { return name.classId; }

    /// Null where the effect only looks at pictures.
    DataHandle Run(IDataVideo const& picture) const {
        std::vector<DataHandle> inputs{picture.MakeCopy(CopyMode::Value)};
        if (name.kind != EffectKind::OneInput) inputs.push_back(MakePartner(picture));
        return effect->ProcessData(inputs);
    }

    /// Whether the refusal is one that this effect is known by, on any picture of that format.
    bool MayRefuse(PixFmtDescription const& format, std::string_view reason) const {
        bool const isFixedText = reason.find("Pixel format is not supported!") != reason.npos;
        if (Is("BlendPalette") || Is("ColoredGlass")) return isFixedText && !IsPackedRgb(format);
        if (Is("ExtraAlphaExtractor")) return format.format != PixFmt::GRAY8; // It takes a mask.
        if (Is("Crop")) return reason.find("leave nothing of a picture") != reason.npos;
        return Is("Panorama") || Is("Stitcher"); // Noise has nothing that it could be joined by.
    }

private:
    bool Is(std::string_view effectName) const { return name.classId == "SettingsEffect" + std::string(effectName); }

    static bool IsPackedRgb(PixFmtDescription const& format) {
        return format.model == ColorModel::Rgb && format.planesCount == 1 && format.components[1].offset == 1;
    }

    /// The picture itself for effects on two of a kind; for the others a mask with strokes.
    DataHandle MakePartner(IDataVideo const& picture) const {
        if (Is("ImageBlender") || Is("BlendPalette")) return picture.MakeCopy(CopyMode::Value);
        FrameFormat const frame = picture.GetFrameFormat();
        VideoHandle const mask = MakeFlat(Context(), PixFmt::GRAY8, frame.width, frame.height, {0});
        Check::PaintStrokes(mask->GetMutablePlane(0));
        return mask;
    }

    RegisteredEffect name;
    intrusive_ptr<IEffect> effect;
};

/// Runs an effect and counts a refusal that is none of its known ones as a failure.
DataHandle Try(Link const& link, Example const& example) {
    try {
        return link.Run(*example.picture);
    } catch (std::exception const& refusal) {
        auto const* const described = dynamic_cast<ProcException const*>(&refusal);
        std::string const reason = described != nullptr ? DescribeException(*described) : refusal.what();
        EXPECT_TRUE(link.MayRefuse(example.picture->GetDescription(), reason))
            << link.GetName() << " after " << example.origin << ": " << reason;
        return nullptr;
    }
}

TEST(EffectPairs, EachTakesWhatEachMakes) {
    std::vector<Link> links;
    for (RegisteredEffect const& each : PluginHost().GetEffects()) links.emplace_back(each);
    std::map<Kind, Example> made;
    for (Link const& link : links)
        for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
            Example const fresh{MakeNoise(Context(), format.format, WIDTH, HEIGHT), std::string(format.name)};
            DataHandle const result = Try(link, fresh);
            if (!result) continue;
            VideoHandle const picture(&AsVideo(result));
            FrameFormat const frame = picture->GetFrameFormat();
            if (frame.width > 2 * WIDTH || frame.height > 2 * HEIGHT) picture->SetRectangle(0, 0, WIDTH, HEIGHT);
            made.insert({Kind(*picture), {picture, link.GetName() + " on " + fresh.origin}});
        }
    EXPECT_GE(made.size(), PixFmtDescription::GetAll().size());
    for (auto const& [kind, example] : made)
        for (Link const& link : links) Try(link, example);
}

} // namespace
} // namespace Velnor::Proc
