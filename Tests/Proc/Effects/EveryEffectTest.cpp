// What holds for every effect in the registry, the plug-in's and the host's alike.

#include "Proc/Host/Host.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RegisteredEffects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <ostream>

namespace Velnor::Proc {

namespace {

using namespace Testing;

IEffectContext& Context() { return *PluginHost().GetContext(); }

class EveryEffect : public ::testing::TestWithParam<RegisteredEffect> {
protected:
    intrusive_ptr<IEffect> Make() const {
        return PluginHost().GetFactory()->CreateEffect(GetParam().classId, GetParam().implName);
    }
    SettingsType const& Type() const { return Make()->GetSettingsBase().GetType(); }
    std::size_t InputsCount() const { return GetParam().kind == EffectKind::TwoInput ? 2 : 1; }

    std::vector<DataHandle> Inputs(PixFmt format, std::uint32_t width, std::uint32_t height) const {
        std::vector<DataHandle> inputs;
        for (std::uint32_t i = 0; i < InputsCount(); ++i)
            inputs.push_back(MakeNoise(Context(), format, width, height, i + 1));
        if (GetParam().classId == SettingsEffectGrabCutSegmentation::CLASS_ID && format == PixFmt::GRAY8)
            PaintStrokes(AsVideo(inputs[1]).GetMutablePlane(0));
        return inputs;
    }

    /// What the effect makes of pictures that are always the same: one picture, or several in the inputs' place.
    std::vector<DataHandle> Results(IEffect& effect) const {
        std::vector<DataHandle> inputs = Inputs(PixFmt::RGB24, 33, 21);
        if (DataHandle const result = effect.ProcessData(inputs)) return {result};
        return GetParam().kind == EffectKind::VarInput ? inputs : std::vector<DataHandle>();
    }

    /// Runs the effect; false when it refused with one of the framework's exceptions, which must say why.
    static bool Accepts(std::function<void()> const& run) {
        try {
            run();
            return true;
        } catch (ProcException const& refusal) {
            EXPECT_GT(DescribeException(refusal).size(), 10U);
            return false;
        }
    }
};

TEST_P(EveryEffect, StartsWithDefaultSettingsOfItsClass) {
    auto const effect = Make();
    EXPECT_EQ(effect->GetRefCount(), 1U);
    EXPECT_EQ(effect->GetSettingsBase().GetType().classId, Type().classId);
    EXPECT_EQ(effect->GetStatistic().FindChild("Count")->GetValue(), "0");
}

TEST_P(EveryEffect, DoesNothingWithEmptySettings) {
    auto const effect = Make();
    auto const settings = TypicalSettings(Type());
    settings->SetBypassed(true);
    effect->SetSettings(*settings);
    std::vector<DataHandle> inputs = Inputs(PixFmt::RGB24, 9, 7);
    std::vector<unsigned char> const before = Samples(AsVideo(inputs[0]));
    DataHandle const result = effect->ProcessData(inputs);
    EXPECT_EQ(result, GetParam().kind == EffectKind::VarInput ? nullptr : inputs[0]);
    EXPECT_EQ(Samples(AsVideo(inputs[0])), before);
}

TEST_P(EveryEffect, TakesEveryFormatOrSaysWhyNot) {
    auto const settings = TypicalSettings(Type());
    auto const effect = Make();
    effect->SetSettings(*settings);
    int accepted = 0;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (auto const& [width, height] : {std::pair{1U, 1U}, {3U, 5U}, {16U, 9U}}) {
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width) + " x " + std::to_string(height));
            std::vector<DataHandle> inputs = Inputs(format.format, width, height);
            std::vector<std::vector<unsigned char>> before;
            std::vector<VideoHandle> twins; // that share the samples
            for (DataHandle const& input : inputs) {
                before.push_back(Samples(AsVideo(input)));
                twins.push_back(AsVideo(input).MakeCopy(CopyMode::Share));
            }
            inputs[0]->SetTimeStamp(1234);
            DataHandle result;
            if (Accepts([&] { result = effect->ProcessData(inputs); })) ++accepted;
            for (std::size_t i = 0; i < inputs.size(); ++i) EXPECT_EQ(Samples(*twins[i]), before[i]);
            if (result && GetParam().kind == EffectKind::OneInput) {
                EXPECT_EQ(result->GetTimeStamp(), 1234);
            }
        }
    // Noise has nothing that a panorama could be joined by.
    EXPECT_EQ(accepted > 0, GetParam().classId != SettingsEffectPanorama::CLASS_ID);
}

TEST_P(EveryEffect, GivesTheSameOutputForTheSameInputAndInstancesAreIndependent) {
    auto const settings = TypicalSettings(Type());
    auto const first = Make();
    auto const second = Make();
    first->SetSettings(*settings);
    std::vector<DataHandle> once;
    if (!Accepts([&] { once = Results(*first); })) return;
    second->SetSettings(*settings);
    std::vector<DataHandle> const again = Results(*first);
    std::vector<DataHandle> const elsewhere = Results(*second);
    ASSERT_EQ(once.size(), again.size());
    ASSERT_EQ(once.size(), elsewhere.size());
    for (std::size_t i = 0; i < once.size(); ++i) {
        EXPECT_EQ(once[i]->GetFrameFormat(), again[i]->GetFrameFormat());
        EXPECT_EQ(Samples(AsVideo(once[i])), Samples(AsVideo(again[i])));
        EXPECT_EQ(Samples(AsVideo(once[i])), Samples(AsVideo(elsewhere[i])));
    }
}

TEST_P(EveryEffect, WritesNothingOutsideTheRowsItIsGiven) {
    constexpr std::uint32_t width = 13;
    constexpr std::uint32_t height = 6;
    constexpr std::int64_t stride = 64;
    auto const effect = Make();
    effect->SetSettings(*TypicalSettings(Type()));
    // The caller's memory is shared with the caller, so no byte of it may change, guard or sample.
    std::vector<unsigned char> memory(stride * (height + 2), 0x5a);
    ConstPlane const plane(memory.data() + stride + 7, stride, width * 3, height, 3);
    std::vector<DataHandle> inputs;
    for (std::size_t i = 0; i < InputsCount(); ++i) {
        VideoHandle wrapped;
        Context().WrapImage(&wrapped, PixFmt::BGR24, FrameFormat::Square(width, height), {plane}, nullptr);
        inputs.push_back(wrapped);
    }
    Accepts([&] { effect->ProcessData(inputs); });
    EXPECT_EQ(memory, std::vector<unsigned char>(memory.size(), 0x5a));
}

/// Blocks that are clear, seen through and opaque; what is hidden in the clear ones is told by `hidden`.
VideoHandle MakeBlocks(PixFmt format, std::function<Colour4(std::uint32_t x, std::uint32_t y)> const& hidden) {
    constexpr std::array<double, 7> OPACITIES{0, 255, 120, 255, 255, 0, 255};
    std::uint32_t const block = format == PixFmt::PAL8 ? 4 : 1; // Few enough colours for a palette.
    return Paint(Context(), format, 48, 36, [&](std::uint32_t x, std::uint32_t y) {
        double const opacity = OPACITIES[(x / 4 * 5 + y / 4 * 3 + x / 16) % OPACITIES.size()];
        x = x / block * block;
        y = y / block * block;
        Colour4 colour{40.0 + 3 * x + 7 * (y % 3), 30.0 + 5 * y + 9 * (x % 3), 200.0 - 3 * x + 11 * ((x + y) % 2), 0};
        if (opacity == 0) colour = hidden(x, y);
        colour.alpha = opacity;
        return colour;
    });
}

/// Whose arithmetic over all pixels, the hidden ones too, is fixed, or that only measures.
bool CountsHiddenPixels(RegisteredEffect const& effect) {
    constexpr std::array<std::string_view, 7> NAMES{"AutoEnhance",       "BlackWhite", "BlurBokeh", "ColorBalanceAuto",
                                                    "GradientPosterize", "GrabCut",    "Histogram"};
    bool const isOwnCut = effect.classId == SettingsEffectGrabCutSegmentation::CLASS_ID && effect.implName == "Velnor";
    return isOwnCut || std::ranges::any_of(NAMES, [&](std::string_view name) {
               return effect.classId == "SettingsEffect" + std::string(name);
           });
}

TEST_P(EveryEffect, ShowsNothingOfWhatIsHidden) {
    if (CountsHiddenPixels(GetParam())) return;
    auto const run = [&](Settings const& settings, VideoHandle const& picture) -> VideoHandle {
        std::vector<DataHandle> inputs{picture->MakeCopy(CopyMode::Value)};
        VideoHandle const mask = MakeFlat(Context(), PixFmt::GRAY8, 48, 36, {100});
        PaintStrokes(mask->GetMutablePlane(0));
        bool const isPair = GetParam().classId.find("Blend") != std::string::npos;
        if (InputsCount() == 2) inputs.push_back(isPair ? picture : mask);
        auto const effect = Make();
        effect->SetSettings(settings);
        DataHandle result;
        Accepts([&] { result = effect->ProcessData(inputs); });
        return VideoHandle(result ? &AsVideo(result) : nullptr);
    };
    auto const isClear = [](IDataVideo const& picture, std::uint32_t x, std::uint32_t y) {
        return picture.GetDescription().hasAlpha && ReadColour(picture, x, y).alpha == 0;
    };
    for (auto const& settings : {Type().create(), TypicalSettings(Type())})
        for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
            if (!format.hasAlpha) continue;
            SCOPED_TRACE(format.name);
            VideoHandle const source = MakeBlocks(format.format, [](auto, auto) { return Colour4{90, 110, 130, 0}; });
            VideoHandle const twin = MakeBlocks(format.format, [](std::uint32_t x, std::uint32_t y) {
                return Colour4{(x + y) % 3 * 127.0, 255, (x ^ y) % 4 * 85.0, 0};
            });
            VideoHandle const one = run(*settings, source);
            VideoHandle const other = run(*settings, twin);
            ASSERT_EQ(one == nullptr, other == nullptr);
            if (!one) continue;
            FrameFormat const frame = one->GetFrameFormat();
            ASSERT_EQ(frame, other->GetFrameFormat());
            bool const isInPlace = frame == source->GetFrameFormat();
            for (std::uint32_t y = 0; y < frame.height; ++y)
                for (std::uint32_t x = 0; x < frame.width; ++x) {
                    if ((isInPlace && isClear(*source, x, y)) || (isClear(*one, x, y) && isClear(*other, x, y)))
                        continue;
                    ASSERT_EQ(ReadColour(*one, x, y), ReadColour(*other, x, y)) << x << ", " << y;
                }
        }
}

TEST_P(EveryEffect, WorksAtBothEndsOfEachRange) {
    std::vector<DataHandle> const inputs = Inputs(PixFmt::BGR24, 24, 18);
    std::vector<unsigned char> const before = Samples(AsVideo(inputs[0]));
    for (SettingsField const& field : Type().describe()) {
        if (field.isOutput || !field.range) continue;
        for (double const end : {field.range->low, field.range->high}) {
            SCOPED_TRACE(field.name + " = " + std::to_string(end));
            auto const settings = TypicalSettings(Type());
            // In full, since 1e+05 is no integer.
            char text[32];
            auto const last = std::to_chars(text, text + sizeof text, end, std::chars_format::fixed).ptr;
            field.parse(*settings, std::string_view(text, last));
            auto const effect = Make();
            effect->SetSettings(*settings);
            std::vector<DataHandle> copies;
            for (DataHandle const& input : inputs) copies.push_back(AsVideo(input).MakeCopy(CopyMode::Value));
            DataHandle result;
            if (Accepts([&] { result = effect->ProcessData(copies); }) && result) {
                EXPECT_GT(result->GetFrameFormat().width, 0U);
            }
            EXPECT_EQ(Samples(AsVideo(inputs[0])), before);
        }
    }
}

TEST_P(EveryEffect, RefusesANullPicture) {
    if (GetParam().classId == "SettingsEffectVideoGenerator") return; // which needs none
    auto const effect = Make();
    effect->SetSettings(*TypicalSettings(Type()));
    if (effect->GetSettingsBase().IsEmpty()) return;
    std::vector<DataHandle> const none(InputsCount());
    EXPECT_THROW(effect->ProcessData(none), ProcException);
}

INSTANTIATE_TEST_SUITE_P(Registry, EveryEffect, ::testing::ValuesIn(PluginHost().GetEffects()), TestName);

} // namespace
} // namespace Velnor::Proc
