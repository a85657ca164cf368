#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace Velnor::Proc {
namespace {

class SettingsEffectSpot final : public SettingsOf<SettingsEffectSpot> {
    VELNOR_SETTINGS(SettingsEffectSpot, "A spot.")
    VELNOR_FIELD(double, Radius, 12.5, "half the spot's width", Unit("pixels"), Range(0, 100), Accepts(0, 200))
    VELNOR_FIELD(int, Blades, 6, "corners", Range(3, 12), Example("8"), AcceptsRange())
    VELNOR_FLAG(Hollow, false, "whether the middle stays")
    VELNOR_SETTINGS_END

    explicit SettingsEffectSpot(int blades) : valueBlades(blades) {}
};

class SettingsEffectStage final : public SettingsOf<SettingsEffectStage> {
    using Values = std::vector<int>;
    VELNOR_SETTINGS(SettingsEffectStage, "A stage with a spot on it.")
    VELNOR_FIELD(Color, BackColour, Color(1, 2, 3, 255), "colour behind")
    VELNOR_FIELD(SettingsEffectSpot, MainSpot, SettingsEffectSpot(9), "the spot")
    VELNOR_FIELD(Values, Result, {}, "what was found", Output())
    VELNOR_FIELD(SettingsEffectCustom::Function, Hook, nullptr, "cannot be typed")
    VELNOR_SETTINGS_END
};

class SettingsEffectTheatre final : public SettingsOf<SettingsEffectTheatre> {
    VELNOR_SETTINGS(SettingsEffectTheatre, "Holds settings that hold settings.")
    VELNOR_FIELD(SettingsEffectStage, Stage, {}, "the stage")
    VELNOR_SETTINGS_END
};

VELNOR_DEFINE_SETTINGS(SettingsEffectSpot)
VELNOR_DEFINE_SETTINGS(SettingsEffectStage)
VELNOR_DEFINE_SETTINGS(SettingsEffectTheatre)

SettingsField Field(SettingsType const& type, std::string_view name) {
    for (SettingsField& field : type.describe())
        if (field.name == name) return field;
    ADD_FAILURE() << name;
    return {};
}

std::vector<std::string> Names(SettingsType const& type) {
    std::vector<std::string> names;
    for (SettingsField const& field : type.describe()) names.push_back(field.name);
    return names;
}

std::string Refusal(SettingsField const& field, Settings& settings, std::string_view text) {
    try {
        field.parse(settings, text);
    } catch (SettingsTextException const& error) {
        return DescribeException(error);
    }
    return "taken";
}

TEST(SettingsFields, EqualityAndCopiesHeedEveryFieldAndTheBypass) {
    SettingsEffectSpot const plain;
    EXPECT_EQ(plain.GetRadius(), 12.5);
    EXPECT_EQ(plain.GetBlades(), 6);
    EXPECT_FALSE(plain.IsHollow());
    EXPECT_EQ(plain, SettingsEffectSpot());
    auto const changed = [&](auto change) {
        SettingsEffectSpot other;
        change(other);
        EXPECT_FALSE(other == plain);
        EXPECT_TRUE(SettingsEffectSpot(other) == other);
        auto const clone = other.Clone();
        EXPECT_TRUE(dynamic_cast<SettingsEffectSpot const&>(*clone) == other);
        SettingsEffectSpot assigned;
        assigned = other;
        EXPECT_TRUE(assigned == other);
    };
    changed([](auto& s) { s.SetRadius(12.25); });
    changed([](auto& s) { s.SetBlades(7); });
    changed([](auto& s) { s.SetHollow(true); });
    changed([](auto& s) { s.SetBypassed(true); });
    SettingsEffectSpot bypassed;
    bypassed.SetBypassed(true);
    EXPECT_TRUE(bypassed.IsEmpty());
    EXPECT_FALSE(plain.IsEmpty());
}

template <class Class>
concept Comparable = requires(Class const& a) {
    a == a;
};

TEST(SettingsFields, AClassWithAFunctionInItHasNoEqualityAndStillCompiles) {
    static_assert(Comparable<SettingsEffectSpot> && Comparable<SettingsEffectWhiteBalance>);
    static_assert(!Comparable<SettingsEffectCustom> && !Comparable<SettingsEffectStage>);
    static_assert(!Comparable<SettingsEffectTheatre>, "nor does one that holds such a class");
    int calls = 0;
    SettingsEffectCustom const custom([&](VideoHandle&) { ++calls; });
    auto const clone = custom.Clone();
    VideoHandle none;
    dynamic_cast<SettingsEffectCustom const&>(*clone).GetFunctor()(none);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(custom.IsEmpty());
    EXPECT_TRUE(SettingsEffectCustom().IsEmpty());
    EXPECT_TRUE(SettingsEffectCustom::StaticType().describe().empty());
}

TEST(SettingsFields, FieldsAreDescribedInOrderAndNestedOnesByDots) {
    EXPECT_EQ(Names(SettingsEffectStage::StaticType()),
              (std::vector<std::string>{"back-colour", "main-spot.radius", "main-spot.blades", "main-spot.hollow",
                                        "result"}));
    EXPECT_EQ(Names(SettingsEffectTheatre::StaticType())[1], "stage.main-spot.radius");
    SettingsField const radius = Field(SettingsEffectSpot::StaticType(), "radius");
    EXPECT_EQ(radius.type, "number");
    EXPECT_EQ(radius.unit, "pixels");
    EXPECT_EQ(radius.help, "half the spot's width");
    EXPECT_EQ(radius.range->high, 100.0);
    EXPECT_EQ(radius.defaultText, "12.5");
    EXPECT_EQ(radius.example, "12.5");
    EXPECT_EQ(Field(SettingsEffectSpot::StaticType(), "hollow").choices, (std::vector<std::string>{"true", "false"}));
    EXPECT_TRUE(Field(SettingsEffectStage::StaticType(), "result").isOutput);
    EXPECT_FALSE(radius.isOutput);
}

TEST(SettingsFields, TheHolderOfNestedSettingsDecidesTheirDefault) {
    SettingsField const blades = Field(SettingsEffectStage::StaticType(), "main-spot.blades");
    EXPECT_EQ(blades.defaultText, "9");
    EXPECT_EQ(blades.print(SettingsEffectStage()), "9");
    EXPECT_EQ(blades.example, "8");
    EXPECT_EQ(Field(SettingsEffectSpot::StaticType(), "blades").defaultText, "6");
}

TEST(SettingsFields, TextReachesTheNestedFieldAndOnlyIt) {
    SettingsEffectTheatre theatre;
    SettingsField const blades = Field(SettingsEffectTheatre::StaticType(), "stage.main-spot.blades");
    blades.parse(theatre, "12");
    EXPECT_EQ(theatre.GetStage().GetMainSpot().GetBlades(), 12);
    EXPECT_EQ(blades.print(theatre), "12");
    EXPECT_EQ(theatre.GetStage().GetMainSpot().GetRadius(), 12.5);
    EXPECT_EQ(theatre.GetStage().GetBackColour(), Color(1, 2, 3, 255));
}

TEST(SettingsFields, RefusedTextNamesTheRangeAndChangesNothing) {
    SettingsEffectSpot spot;
    SettingsField const radius = Field(SettingsEffectSpot::StaticType(), "radius");
    SettingsField const blades = Field(SettingsEffectSpot::StaticType(), "blades");
    EXPECT_EQ(Refusal(radius, spot, "100.5"), "100.5 is outside the range 0 to 100");
    EXPECT_EQ(Refusal(radius, spot, "-1e-9"), "-1e-9 is outside the range 0 to 100");
    EXPECT_EQ(Refusal(radius, spot, "wide"), "\"wide\" is no number");
    EXPECT_EQ(Refusal(blades, spot, "2"), "2 is outside the range 3 to 12");
    EXPECT_EQ(Refusal(blades, spot, "99999999999"), "99999999999 is outside the range 3 to 12");
    EXPECT_EQ(Refusal(blades, spot, "3.5"), "\"3.5\" is no whole number");
    EXPECT_EQ(spot, SettingsEffectSpot());
    EXPECT_EQ(Refusal(radius, spot, "100"), "taken");
    EXPECT_EQ(Refusal(blades, spot, "3"), "taken");
    EXPECT_EQ(spot.GetRadius(), 100.0);
    EXPECT_EQ(spot.GetBlades(), 3);
}

TEST(SettingsFields, WhatIsNotAcceptedIsRefusedByTheNameThatIsTyped) {
    SettingsEffectTheatre theatre;
    EXPECT_EQ(theatre.FindRefusal(), "");
    theatre.SetStage(SettingsEffectStage().SetMainSpot(SettingsEffectSpot().SetRadius(200.5)));
    EXPECT_EQ(theatre.FindRefusal(), "The setting stage.main-spot.radius is 200.5 pixels; 0 to 200 are accepted.");
    theatre.SetStage(SettingsEffectStage().SetMainSpot(SettingsEffectSpot(2).SetRadius(200)));
    EXPECT_EQ(theatre.FindRefusal(), "The setting stage.main-spot.blades is 2; 3 to 12 are accepted.");
    EXPECT_EQ(Field(SettingsEffectTheatre::StaticType(), "stage.main-spot.radius").GetAcceptedText(), "0 to 200");
    EXPECT_EQ(Field(SettingsEffectSpot::StaticType(), "blades").GetAcceptedText(), "") << "the range says it";
}

TEST(SettingsFields, NamesInKebabCase) {
    EXPECT_EQ(ToKebabCase("MethodDownscale"), "method-downscale");
    EXPECT_EQ(ToKebabCase("SettingsEffectCLAHE"), "settings-effect-clahe");
    EXPECT_EQ(ToKebabCase("CLAHELimit"), "clahe-limit");
    EXPECT_EQ(ToKebabCase("FormatRGB24"), "format-rgb24");
    EXPECT_EQ(ToKebabCase("X"), "x");
    EXPECT_EQ(ToKebabCase("Color1Name"), "color1-name");
    EXPECT_EQ(ToKebabCase(""), "");
    EXPECT_EQ(SettingsEffectWhiteBalance::StaticType().GetEffectName(), "white-balance");
}

} // namespace
} // namespace Velnor::Proc
