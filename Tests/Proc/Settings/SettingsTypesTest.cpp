#include "Proc/Interfaces/Settings.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/Settings/SettingsResizer.h"

#include <gtest/gtest.h>

#include <boost/core/demangle.hpp>

#include <charconv>
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
                    char text[32];
                    auto const last = std::to_chars(text, text + sizeof text, end, std::chars_format::fixed).ptr;
                    EXPECT_NO_THROW(field.parse(*settings, std::string_view(text, last)));
                }
            }
        }
    }
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
