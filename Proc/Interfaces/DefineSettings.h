#pragma once

// What stands once for each settings class, in one source: its CLASS_ID and its description at run time. Apart from the
// declarations, since it is much to compile for the many sources that only use the class.

#include "Proc/Interfaces/SettingsFields.h"

#include <algorithm>

namespace Velnor::Proc {
namespace Details {

/// A field of any settings class: what follows is compiled for each type of value, not for each class as well.
template <class Value>
using AnyField = Field<Settings, Value>;

template <class Owner, class Value>
AnyField<Value> ForgetOwner(Field<Owner, Value> const& field) {
    AnyField<Value> any(field.name, static_cast<Value Settings::*>(field.member), field.help);
    any.unit = field.unit;
    any.example = field.example;
    any.range = field.range;
    any.accepts = field.accepts;
    any.needsName = field.needsName;
    any.needsElement = field.needsElement;
    any.isOutput = field.isOutput;
    return any;
}

/// Appends a description for each field of a nested settings object.
template <class Value>
void DescribeNested(AnyField<Value> const& field, Settings const& owner, std::vector<SettingsField>& described) {
    for (SettingsField inner : Value::StaticType().describe()) {
        bool const hasExample = inner.example != inner.defaultText;
        inner.name = ToKebabCase(field.name) + "." + inner.name;
        for (auto* parse : {&inner.parse, &inner.parseAny})
            *parse = [member = field.member, inside = *parse](Settings& settings, std::string_view text) {
                inside(settings.*member, text);
            };
        inner.print = [member = field.member, print = inner.print](Settings const& settings) {
            return print(settings.*member);
        };
        // The class that holds the object may default it otherwise than the object's own class does.
        inner.defaultText = inner.print(owner);
        if (!hasExample) inner.example = inner.defaultText;
        described.push_back(std::move(inner));
    }
}

template <class Value>
SettingsField DescribeValue(AnyField<Value> const& field, Settings const& owner) {
    using Form = TextForm<Value>;
    SettingsField one;
    one.name = ToKebabCase(field.name);
    one.type = Form::TYPE;
    one.help = field.help;
    one.unit = field.unit;
    one.range = field.range;
    one.accepts = field.accepts;
    one.isOutput = field.isOutput;
    if constexpr (requires { Form::Choices(); }) one.choices = Form::Choices();
    one.defaultText = Form::Print(owner.*field.member);
    one.example = field.example.empty() ? one.defaultText : std::string(field.example);
    one.parseAny = [member = field.member](Settings& settings, std::string_view text) {
        settings.*member = Form::Parse(text);
    };
    one.parse = one.parseAny;
    // Before the type's own limits, so that the message names the range that a person may use.
    if constexpr (std::is_arithmetic_v<Value>)
        if (field.range)
            one.parse = [range = *field.range, take = one.parseAny](Settings& settings, std::string_view text) {
                CheckRange(text, range);
                take(settings, text);
            };
    one.print = [member = field.member](Settings const& settings) { return Form::Print(settings.*member); };
    return one;
}

/// Appends the run-time descriptions of one field: none when it has no text form, several for a nested settings object.
/// `owner` holds the defaults.
template <class Value>
void DescribeField(AnyField<Value> const& field, Settings const& owner, std::vector<SettingsField>& described) {
    if constexpr (std::is_base_of_v<Settings, Value>)
        DescribeNested(field, owner, described);
    else if constexpr (requires { TextForm<Value>::TYPE; })
        described.push_back(DescribeValue(field, owner));
}

/// What of a field's values is accepted, in words, when this one is not; else nothing.
template <class Value>
std::string FindMissed(AnyField<Value> const& field, Value const& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
        if (field.accepts && !field.accepts->IsMet(static_cast<double>(value)))
            return DescribeAccepted(*field.accepts, std::is_integral_v<Value>);
    } else if constexpr (std::is_same_v<Value, FrameFormat>) {
        if (field.accepts && !(field.accepts->IsMet(value.width) && field.accepts->IsMet(value.height)))
            return DescribeAccepted(*field.accepts, true) + " a side";
    } else if constexpr (std::is_same_v<Value, PixFmt>) {
        if (field.needsName && value != PixFmt::NONE && PixFmtDescription::Find(value) == nullptr)
            return "known formats and -1";
    } else if constexpr (requires { EnumNames<Value>::VALUES; }) {
        auto const isNamed = [&](auto const& entry) { return entry.value == value; };
        if (field.needsName && std::ranges::none_of(EnumNames<Value>::VALUES, isNamed))
            return JoinWords(TextForm<Value>::Choices());
    } else if constexpr (requires { value.empty(); }) {
        if (field.needsElement && value.empty()) return "one or more";
    }
    return "";
}

/// The value in a refusal: a number for what has no name.
template <class Value>
std::string PrintRefused(Value const& value) {
    if constexpr (std::is_same_v<Value, PixFmt>)
        return std::to_string(static_cast<int>(value));
    else if constexpr (requires { value.empty(); })
        return "empty";
    else
        return TextForm<Value>::Print(value);
}

template <class Value>
std::string FindRefusalOf(AnyField<Value> const& field, Settings const& settings, std::string const& owner) {
    Value const& value = settings.*field.member;
    if constexpr (std::is_base_of_v<Settings, Value>)
        return value.FindRefusal(owner + ToKebabCase(field.name) + ".");
    else if constexpr (requires { TextForm<Value>::TYPE; })
        if (std::string const accepted = FindMissed(field, value); !accepted.empty())
            return DescribeRefusal(owner + ToKebabCase(field.name), PrintRefused(value), field.unit, accepted);
    return "";
}

template <class Class>
std::string FindRefusal(Class const& settings, std::string const& owner) {
    std::string refusal;
    ForEachField<Class>([&](auto field) {
        if (refusal.empty() && !field.isOutput) refusal = FindRefusalOf(ForgetOwner(field), settings, owner);
    });
    return refusal;
}

template <class Class>
std::vector<PictureRole> ListPictures() {
    if constexpr (requires { Class::PICTURES; })
        return {Class::PICTURES.begin(), Class::PICTURES.end()};
    else
        return {};
}

template <class Class>
SettingsType MakeSettingsType() {
    return {Class::CLASS_ID, std::string(Class::SUMMARY),
            []() -> std::unique_ptr<Settings> { return std::make_unique<Class>(); },
            [] {
                Class const defaults;
                std::vector<SettingsField> described;
                ForEachField<Class>([&](auto field) { DescribeField(ForgetOwner(field), defaults, described); });
                return described;
            },
            ListPictures<Class>()};
}

} // namespace Details
} // namespace Velnor::Proc

/// Stands in namespace Velnor::Proc or in a namespace around the class.
#define VELNOR_DEFINE_SETTINGS(Class)                                                                                  \
    std::string const Class::CLASS_ID = #Class;                                                                        \
    ::Velnor::Proc::SettingsType const& Class::StaticType() {                                                          \
        static ::Velnor::Proc::SettingsType const type = ::Velnor::Proc::Details::MakeSettingsType<Class>();           \
        return type;                                                                                                   \
    }                                                                                                                  \
    std::string Class::FindRefusal(std::string const& owner) const {                                                   \
        return ::Velnor::Proc::Details::FindRefusal(*this, owner);                                                     \
    }
