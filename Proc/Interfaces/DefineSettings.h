#pragma once

// What stands once for each settings class, in one source: its CLASS_ID and its description at run time. Apart from the
// declarations, since it is much to compile for the many sources that only use the class.

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {
namespace Details {

/// The run-time descriptions of one field: none when it has no text form, several for a nested settings object.
template <class FieldType>
std::vector<SettingsField> DescribeField(FieldType field) {
    using Owner = typename FieldType::Owner;
    using Value = typename FieldType::Value;
    std::string const name = ToKebabCase(field.name);
    std::vector<SettingsField> described;
    if constexpr (std::is_base_of_v<Settings, Value>) {
        for (SettingsField inner : Value::StaticType().describe()) {
            bool const hasExample = inner.example != inner.defaultText;
            inner.name = name + "." + inner.name;
            for (auto* parse : {&inner.parse, &inner.parseAny})
                *parse = [field, inside = *parse](Settings& settings, std::string_view text) {
                    inside(static_cast<Owner&>(settings).*field.member, text);
                };
            inner.print = [field, print = inner.print](Settings const& settings) {
                return print(static_cast<Owner const&>(settings).*field.member);
            };
            // The class that holds the object may default it otherwise than the object's own class does.
            inner.defaultText = inner.print(Owner());
            if (!hasExample) inner.example = inner.defaultText;
            described.push_back(std::move(inner));
        }
    } else if constexpr (requires { TextForm<Value>::TYPE; }) {
        SettingsField one;
        one.name = name;
        one.type = TextForm<Value>::TYPE;
        one.help = field.help;
        one.unit = field.unit;
        one.range = field.range;
        one.isOutput = field.isOutput;
        if constexpr (requires { TextForm<Value>::Choices(); }) one.choices = TextForm<Value>::Choices();
        one.defaultText = TextForm<Value>::Print(Owner().*field.member);
        one.example = field.example.empty() ? one.defaultText : std::string(field.example);
        one.parseAny = [field](Settings& settings, std::string_view text) {
            static_cast<Owner&>(settings).*field.member = TextForm<Value>::Parse(text);
        };
        one.parse = one.parseAny;
        // Before the type's own limits, so that the message names the range that a person may use.
        if constexpr (std::is_arithmetic_v<Value>)
            if (field.range)
                one.parse = [range = *field.range, take = one.parseAny](Settings& settings, std::string_view text) {
                    CheckRange(text, range);
                    take(settings, text);
                };
        one.print = [field](Settings const& settings) {
            return TextForm<Value>::Print(static_cast<Owner const&>(settings).*field.member);
        };
        described.push_back(std::move(one));
    }
    return described;
}

template <class Class>
SettingsType MakeSettingsType() {
    return {Class::CLASS_ID, std::string(Class::SUMMARY),
            []() -> std::unique_ptr<Settings> { return std::make_unique<Class>(); },
            [] {
                std::vector<SettingsField> all;
                ForEachField<Class>([&](auto field) {
                    for (SettingsField& one : DescribeField(field)) all.push_back(std::move(one));
                });
                return all;
            }};
}

} // namespace Details
} // namespace Velnor::Proc

/// Stands in namespace Velnor::Proc or in a namespace around the class.
#define VELNOR_DEFINE_SETTINGS(Class)                                                                                  \
    std::string const Class::CLASS_ID = #Class;                                                                        \
    ::Velnor::Proc::SettingsType const& Class::StaticType() {                                                          \
        static ::Velnor::Proc::SettingsType const type = ::Velnor::Proc::Details::MakeSettingsType<Class>();           \
        return type;                                                                                                   \
    }
