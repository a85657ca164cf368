#include "Proc/Interfaces/Settings.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectColoredGlass.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectVignette.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/Settings/SettingsResizer.h"

#include <gtest/gtest.h>

#include <boost/core/demangle.hpp>

#include <charconv>
#include <limits>
#include <set>
#include <typeinfo>

namespace Velnor::Proc {
namespace {

TEST(SettingsTypes, IdentifiersAndNamesAreUniqueAndBelongToTheClass) {
    std::set<std::string> ids;
    std::set<std::string> names;
    for (SettingsType const* type : SettingsType::GetAll()) {
        EXPECT_TRUE(ids.insert(type->classId).second) << type->classId;
        EXPECT_TRUE(names.insert(type->GetEffectName()).second) << type->GetEffectName();
        EXPECT_FALSE(type->summary.empty()) << type->classId;
        EXPECT_EQ(SettingsType::Find(type->classId), type);
        std::unique_ptr<Settings> const settings = type->create();
        Settings const& made = *settings;
        EXPECT_EQ(boost::core::demangle(typeid(made).name()), "Velnor::Proc::" + type->classId);
        EXPECT_EQ(made.GetType().classId, type->classId);
        EXPECT_EQ(made.Clone()->GetType().classId, type->classId);
    }
    EXPECT_GE(ids.size(), 6U);
    EXPECT_EQ(SettingsType::Find("SettingsEffectNone"), nullptr);
    EXPECT_EQ(SettingsType::Find("white-balance"), nullptr);
}

TEST(SettingsTypes, EveryFieldExplainsItselfAndTakesItsOwnTexts) {
    for (SettingsType const* type : SettingsType::GetAll()) {
        std::set<std::string> names;
        for (SettingsField const& field : type->describe()) {
            SCOPED_TRACE(type->classId + ", " + field.name);
            EXPECT_TRUE(names.insert(field.name).second);
            EXPECT_FALSE(field.help.empty());
            EXPECT_FALSE(field.type.empty());
            std::unique_ptr<Settings> const settings = type->create();
            EXPECT_EQ(field.print(*settings), field.defaultText);
            if (field.isOutput) continue;
            EXPECT_NO_THROW(field.parse(*settings, field.defaultText)); // also says that it lies within the range
            EXPECT_EQ(field.print(*settings), field.defaultText);
            EXPECT_NO_THROW(field.parse(*settings, field.example));
            for (std::string const& choice : field.choices) {
                EXPECT_NO_THROW(field.parse(*settings, choice));
                EXPECT_EQ(field.print(*settings), choice);
            }
            if (field.range) {
                EXPECT_LT(field.range->low, field.range->high);
                for (double end : {field.range->low, field.range->high}) {
                    EXPECT_TRUE(!field.accepts || field.accepts->IsMet(end)) << "what is offered is accepted";
                    char text[32];
                    auto const last = std::to_chars(text, text + sizeof text, end, std::chars_format::fixed).ptr;
                    EXPECT_NO_THROW(field.parse(*settings, std::string_view(text, last)));
                }
            }
        }
    }
}

TEST(SettingsTypes, RefusalsSayTheNameTheValueAndWhatIsAccepted) {
    constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
    constexpr double ENDLESS = std::numeric_limits<double>::infinity();
    EXPECT_EQ(SettingsEffectColoredGlass().SetCellSize(0.05).FindRefusal(),
              "The setting cell-size is 0.05 % of the shorter side; 0.1 to 100 are accepted.");
    EXPECT_EQ(SettingsEffectColoredGlass().SetCellSize(0.1).FindRefusal(), "");
    EXPECT_EQ(SettingsEffectColoredGlass().SetCellSize(NOT_A_NUMBER).FindRefusal().substr(0, 28),
              "The setting cell-size is nan");
    EXPECT_EQ(SettingsEffectMorphology().SetIterations(-1).FindRefusal(),
              "The setting iterations is -1; 0 or more are accepted.");
    EXPECT_EQ(SettingsEffectRotate().SetAngle(ENDLESS).FindRefusal(),
              "The setting angle is inf degrees; finite numbers are accepted.");
    EXPECT_EQ(SettingsResizer().SetFactor(NOT_A_NUMBER).FindRefusal(),
              "The setting factor is nan; finite numbers from 0 on are accepted.");
    EXPECT_EQ(SettingsEffectBlur().SetAlgorithm(static_cast<SettingsEffectBlur::Algorithm>(3)).FindRefusal(),
              "The setting algorithm is 3; box, gaussian and stack are accepted.");
    EXPECT_EQ(SettingsEffectExtraAlphaExtractor(static_cast<PixFmt>(999)).FindRefusal(),
              "The setting pixel-format is 999; known formats and -1 are accepted.");
    EXPECT_EQ(SettingsEffectGradient().SetStops({}).FindRefusal(),
              "The setting stops is empty; one or more are accepted.");
    SettingsEffectShapeMask const square =
        SettingsEffectShapeMask().SetShape(static_cast<SettingsEffectShapeMask::Shape>(4));
    EXPECT_EQ(SettingsEffectVignette().SetShapeMask(square).FindRefusal(),
              "The setting shape-mask.shape is 4; ellipse, rectangle, band and polygon are accepted.");
    auto const network = [](auto change) {
        SettingsEffectNeuralBase base;
        change(base);
        return SettingsEffectHorizonDetector().SetNeural(base).FindRefusal();
    };
    EXPECT_EQ(network([](auto& base) { base.SetScale(0); }),
              "The setting neural.scale is 0 levels; finite numbers but 0 are accepted.");
    EXPECT_EQ(network([](auto& base) { base.SetInputSize(FrameFormat::Square(8193, 8)); }),
              "The setting neural.input-size is 8193x8 pixels; 1 to 8192 a side are accepted.");
    EXPECT_EQ(network([](auto&) {}), "");
}

// Whose meaning is told for every number, a named one or not, or whose sub-effect refuses it.
TEST(SettingsTypes, SomeEnumerationsTakeValuesWithoutAName) {
    EXPECT_EQ(SettingsEffectImplode().SetMode(static_cast<SettingsEffectImplode::Mode>(2)).FindRefusal(), "");
    EXPECT_EQ(SettingsEffectCutter().SetPadMode(static_cast<SettingsEffectCutter::PadMode>(2)).FindRefusal(), "");
    EXPECT_EQ(SettingsEffectGrabCut().SetAlgorithm(static_cast<SettingsEffectGrabCut::Algorithm>(2)).FindRefusal(), "");
    EXPECT_EQ(SettingsEffectPixelate().SetMethodUpscale(static_cast<SettingsResizer::ResizeMethods>(11)).FindRefusal(),
              "");
    EXPECT_EQ(SettingsEffectPixelate().SetStrength(-500).FindRefusal(), "");
}

TEST(SettingsTypes, ConverterFormatsAndEmptySettings) {
    SettingsColorspaceConverter listed({PixFmt::RGB24, PixFmt::GRAY8}, true);
    SettingsColorspaceConverter added;
    EXPECT_TRUE(added.IsEmpty());
    added.AddPixFmt(PixFmt::RGB24);
    EXPECT_EQ(added, SettingsColorspaceConverter(PixFmt::RGB24, true));
    EXPECT_FALSE(added == SettingsColorspaceConverter(PixFmt::RGB24, false));
    added.AddPixFmt(PixFmt::GRAY8);
    EXPECT_EQ(added, listed);
    EXPECT_FALSE(added.IsEmpty());
    EXPECT_TRUE(SettingsResizer().IsEmpty());
    EXPECT_TRUE(SettingsEffectWhiteBalance(Color(7, 7, 7, 0)).IsEmpty());
    EXPECT_FALSE(SettingsEffectWhiteBalance(Color(7, 7, 8, 255)).IsEmpty());
}

TEST(SettingsTypes, NumbersOfTheResizerAreTheContracts) {
    std::vector<std::string> const methods{"fast-bilinear", "bilinear", "bicubic", "experimental", "point", "area",
                                           "bicublin",      "gauss",    "sinc",    "lanczos",      "spline"};
    for (int i = 0; i <= 10; ++i)
        EXPECT_EQ(TextForm<SettingsResizer::ResizeMethods>::Parse(methods[static_cast<std::size_t>(i)]), i);
    EXPECT_EQ(TextForm<SettingsResizer::ResizeMode>::Parse("by-factor"), 3);
    EXPECT_EQ(TextForm<SettingsResizer::ResizeMode>::Parse("to-frame"), 4);
    EXPECT_EQ(TextForm<SettingsResizer::Fit>::Parse("stretch"), 1);
    EXPECT_EQ(TextForm<SettingsResizer::Fit>::Parse("inside"), 5);
}

} // namespace
} // namespace Velnor::Proc
