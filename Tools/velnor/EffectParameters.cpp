#include "Tools/velnor/EffectParameters.h"

#include "Proc/Interfaces/SettingsText.h"
#include "Proc/Settings/SettingsGuide.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/PickedColor.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

Proc::SettingsField MakeInputParameter(Proc::SettingsType const& type, Proc::EffectKind kind) {
    Proc::SettingsGuide const& guide = Proc::FindGuide(type.classId);
    bool const isOne = kind == Proc::EffectKind::TwoInput;
    Proc::SettingsField field;
    field.name = INPUT_PARAMETER;
    field.type = "file";
    field.help = guide.furtherPictures;
    if (field.help.empty()) field.help = isOne ? "the second picture" : "a further picture, after the photograph";
    if (!isOne) field.help += "; may be repeated";
    field.example = guide.furtherExample;
    if (isOne && field.example.empty()) field.example = "second.png";
    return field;
}

/// Checked like any other, but no part of the settings: the photograph must be there to give it a meaning.
Proc::SettingsField MakePlaceParameter() {
    Proc::SettingsField field;
    field.name = PLACE_PARAMETER;
    field.type = "place";
    field.help = "place in the photograph, from the left and the top, whose mean colour in a small disc is the "
                 "reference; also in percent: 30%,50%";
    field.unit = "pixels";
    field.parse = [](Proc::Settings&, std::string_view text) { ParsePickedPlace(text); };
    field.parseAny = field.parse;
    field.print = [](Proc::Settings const&) { return std::string(); };
    return field;
}

Proc::SettingsField MakeBypassParameter() {
    using Form = Proc::TextForm<bool>;
    Proc::SettingsField field;
    field.name = "bypass";
    field.type = Form::TYPE;
    field.help = "whether the effect is switched off, its other parameters kept";
    field.choices = Form::Choices();
    field.defaultText = Form::Print(false);
    field.example = field.defaultText;
    field.parse = [](Proc::Settings& settings, std::string_view text) { settings.SetBypassed(Form::Parse(text)); };
    field.print = [](Proc::Settings const& settings) { return Form::Print(settings.IsBypassed()); };
    return field;
}

/// What the field accepts, as far as the reason does not say it already.
std::string DescribeAccepted(Proc::SettingsField const& field, std::string const& value, std::string const& reason) {
    std::string text;
    if (field.range && reason.find(" range ") == std::string::npos) text += "; the range is " + GetRangeText(field);
    if (field.range && !field.unit.empty()) text += " " + field.unit;
    if (!FindNearest(value, field.choices).empty()) text += SuggestNearest(value, field.choices);
    return text;
}

} // namespace

bool TakesPlace(Proc::SettingsType const& type) {
    bool takes = false;
    for (Proc::SettingsField const& field : type.describe()) {
        if (field.name == PLACE_PARAMETER) return false; // Its own.
        takes = takes || (field.name == REFERENCE_FIELD && field.type == Proc::TextForm<Proc::Color>::TYPE);
    }
    return takes;
}

std::vector<Proc::SettingsField> DescribeParameters(Proc::SettingsType const& type, Proc::EffectKind kind) {
    std::vector<Proc::SettingsField> fields = type.describe();
    if (kind != Proc::EffectKind::OneInput && type.pictures.size() != 1)
        fields.push_back(MakeInputParameter(type, kind));
    if (TakesPlace(type)) fields.push_back(MakePlaceParameter());
    fields.push_back(MakeBypassParameter());
    return fields;
}

void SetParameter(Proc::Settings& settings, std::string const& effectName,
                  std::vector<Proc::SettingsField> const& fields, EffectArgument::Parameter const& parameter) {
    auto const field = std::ranges::find(fields, parameter.key, &Proc::SettingsField::name);
    if (field == fields.end()) {
        std::vector<std::string> names;
        for (Proc::SettingsField const& one : fields)
            if (!one.isOutput) names.push_back(one.name);
        throw WrongCall(effectName + " has no parameter \"" + parameter.key + "\"" +
                        SuggestNearest(parameter.key, names, "`velnor describe " + effectName + "` shows them"));
    }
    std::string const place = effectName + ": " + parameter.key;
    if (field->isOutput) throw WrongCall(place + " is a result of the effect and cannot be set");
    try {
        field->parse(settings, parameter.value);
    } catch (Proc::SettingsTextException const& error) {
        std::string const reason = DescribeException(error);
        throw WrongCall(place + ": " + reason + DescribeAccepted(*field, parameter.value, reason));
    }
}

std::string GetRangeText(Proc::SettingsField const& field) {
    using Form = Proc::TextForm<double>;
    return field.range ? Form::Print(field.range->low) + " to " + Form::Print(field.range->high) : std::string();
}

} // namespace Velnor::Tool
