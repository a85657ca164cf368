// Whether an effect is what it is registered as, and whether its settings hold together.

#include "Tools/check/Promises.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <set>
#include <string_view>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

bool IsKind(IEffect& effect, EffectKind kind) {
    if (kind == EffectKind::OneInput) return dynamic_cast<IOneInputEffect*>(&effect) != nullptr;
    if (kind == EffectKind::TwoInput) return dynamic_cast<ITwoInputEffect*>(&effect) != nullptr;
    return dynamic_cast<IVarInputEffect*>(&effect) != nullptr;
}

/// Small letters and digits in words, with hyphens between them; a nested object's fields after a dot.
bool IsKebabCase(std::string_view name) {
    auto const isLetter = [](char c) {
        return std::islower(static_cast<unsigned char>(c)) != 0 || std::isdigit(static_cast<unsigned char>(c)) != 0;
    };
    bool wasLetter = false;
    for (char const c : name) {
        if (!isLetter(c) && (!wasLetter || (c != '-' && c != '.'))) return false;
        wasLetter = isLetter(c);
    }
    return wasLetter;
}

/// In full, since 1e+05 is no integer.
std::string PrintInFull(double number) {
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::fixed).ptr};
}

bool Parses(SettingsField const& field, Settings& settings, std::string_view text) {
    try {
        field.parse(settings, text);
        return true;
    } catch (SettingsTextException const&) {
        return false;
    }
}

/// Whether the text is a value of the field that reads back as the same text.
bool IsValue(SettingsField const& field, SettingsType const& type, std::string const& text) {
    auto const settings = type.create();
    return Parses(field, *settings, text) && field.print(*settings) == text;
}

void CheckNames(SettingsType const& type, Journal& journal) {
    journal.Begin("class " + type.classId);
    journal.Require(IsKebabCase(type.GetEffectName()), "its name is not in kebab case");
    journal.Require(!type.summary.empty() && type.summary.find('\n') == std::string::npos,
                    "its summary is not one line");
    std::set<std::string> names;
    for (SettingsField const& field : type.describe()) {
        journal.Begin(field.name);
        journal.Require(IsKebabCase(field.name), "the name is not in kebab case");
        journal.Require(names.insert(field.name).second, "two parameters have this name");
        journal.Require(!field.help.empty(), "the parameter has no help");
    }
}

void CheckRangeOf(SettingsField const& field, SettingsType const& type, Journal& journal) {
    if (!field.range) return;
    auto const [low, high] = *field.range;
    auto const settings = type.create();
    journal.Require(low < high, "the range is empty");
    for (double const end : {low, high})
        journal.Require(Parses(field, *settings, PrintInFull(end)), "an end of the range is refused");
    for (double const outside : {low - 1, high + 1})
        journal.Require(!Parses(field, *settings, PrintInFull(outside)), "a value outside the range is accepted");
}

void CheckTexts(SettingsField const& field, SettingsType const& type, Journal& journal) {
    journal.Begin(field.name);
    auto const settings = type.create();
    journal.Require(field.print(*settings) == field.defaultText, "the default is not the one that is told");
    if (field.isOutput) return;
    if (!field.defaultText.empty())
        journal.Require(IsValue(field, type, field.defaultText), "the default is no value of the parameter");
    journal.Require(Parses(field, *settings, field.example), "the example is no value of the parameter");
    for (std::string const& choice : field.choices)
        journal.Require(IsValue(field, type, choice), "a choice is no value of the parameter");
    CheckRangeOf(field, type, journal);
}

/// Settings whose one field is not the default; null where no other value is known.
std::unique_ptr<Settings> MakeChanged(SettingsField const& field, SettingsType const& type) {
    std::vector<std::string> values = field.choices;
    values.push_back(field.example);
    if (field.range)
        for (double const end : {field.range->high, field.range->low}) values.push_back(PrintInFull(end));
    for (std::string const& value : values) {
        auto settings = type.create();
        if (Parses(field, *settings, value) && field.print(*settings) != field.defaultText) return settings;
    }
    return nullptr;
}

/// One effect is told each change by itself: one whose settings take different values for equal stays as it was.
void CheckThatAllAreTaken(Subject const& subject, Journal& journal) {
    SettingsType const& type = subject.GetType();
    for (SettingsField const& field : type.describe()) {
        if (field.isOutput) continue;
        journal.Begin(field.name);
        auto const changed = MakeChanged(field, type);
        if (!changed) continue;
        auto const effect = subject.Make();
        auto const isTaken = [&](Settings const& expected) {
            return field.print(effect->GetSettingsBase()) == field.print(expected);
        };
        effect->SetSettings(*changed);
        journal.Require(isTaken(*changed), "the effect does not take another value");
        journal.Require(field.print(*changed->Clone()) == field.print(*changed), "a copy of the settings differs");
        effect->ResetSettings();
        journal.Require(isTaken(*type.create()), "the default is not back after ResetSettings");
    }
}

void CheckForeignSettings(Subject const& subject, Journal& journal) {
    journal.Begin("settings of another class");
    auto const& all = SettingsType::GetAll();
    auto const other =
        std::ranges::find_if(all, [&](SettingsType const* type) { return type->classId != subject.GetType().classId; });
    auto const effect = subject.Make();
    try {
        effect->SetSettings(*(*other)->create());
        journal.Break("the effect takes them");
    } catch (std::bad_cast const&) {
    }
}

} // namespace

void CheckRegistration(Subject const& subject, Journal& journal) {
    RegisteredEffect const& registered = subject.GetEffect();
    journal.Begin("class " + registered.classId + ", implementation " + registered.implName);
    journal.Require(!registered.implName.empty(), "the implementation has no name");
    auto const effect = subject.Make();
    journal.Require(IsKind(*effect, registered.kind), "it is of another kind than it is registered as");
    journal.Require(effect->GetRefCount() == 1, "somebody else holds the new effect");
    journal.Require(effect->GetSettingsBase().GetType().classId == registered.classId,
                    "its settings are of another class than it is registered for");
    Core::Property const statistics = effect->GetStatistic();
    Core::Property const* const count = statistics.FindChild("Count");
    journal.Require(count == nullptr || count->GetValue() == "0", "a new effect has counted pictures");
}

void CheckSettings(Subject const& subject, Journal& journal) {
    SettingsType const& type = subject.GetType();
    CheckNames(type, journal);
    for (SettingsField const& field : type.describe()) CheckTexts(field, type, journal);
    CheckThatAllAreTaken(subject, journal);
    CheckForeignSettings(subject, journal);
}

void CheckRanges(Subject const& subject, Journal& journal) {
    std::vector<DataHandle> const inputs = subject.MakeInputs(PixFmt::BGR24, 24, 18);
    Bytes const before = Samples(AsVideo(ConstDataHandle(inputs[0])));
    for (SettingsField const& field : subject.GetType().describe()) {
        if (field.isOutput || !field.range) continue;
        for (double const end : {field.range->low, field.range->high}) {
            journal.Begin(field.name + "=" + PrintInFull(end));
            auto const settings = subject.MakeTypicalSettings();
            field.parse(*settings, PrintInFull(end));
            std::vector<DataHandle> copies;
            for (DataHandle const& input : inputs) copies.push_back(AsVideo(input).MakeCopy(CopyMode::Value));
            Try(*subject.Make(*settings), std::move(copies), journal);
            journal.Require(Samples(AsVideo(ConstDataHandle(inputs[0]))) == before,
                            "the samples that the caller shares have changed");
        }
    }
}

} // namespace Velnor::Proc::Check
