#pragma once

// Declares a settings class, each field once:
//
//     class VELNOR_API SettingsEffectPixelate final : public SettingsOf<SettingsEffectPixelate> {
//         VELNOR_SETTINGS(SettingsEffectPixelate, "Turns the picture into a mosaic of flat blocks.")
//         VELNOR_FIELD(double, Strength, 50.0, "coarseness of the blocks", Unit("%"), Range(0, 100))
//         VELNOR_FLAG(KeepAlpha, true, "whether ...")
//         VELNOR_SETTINGS_END
//     };
//
// A class whose effect takes masks, or not any number of pictures though it is one on any number, says what they are:
//
//         static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Mask};
//
// From a field come the getter (GetStrength, IsKeepAlpha), the setter, equality, copying, the parameter of the command
// line with its help and checks, the effect's refusals and the reference pages. What a person is offered is the Range.
// What the effect accepts is told beside it where it refuses anything: AcceptsRange() for the same, or one of the
// others below, such as Accepts(0, 1000). Enumerations accept the values that have names. Settings in settings are
// refused by names with dots, as they are typed.
//
// A default value or attribute that holds commas is written as a call: Color(0, 0, 0, 255). The class is added to the
// list in Proc/Settings/SettingsTypes.cpp; a class of another library is defined by VELNOR_DEFINE_SETTINGS(Class) in
// one of its sources (DefineSettings.h).

#include "Proc/Interfaces/SettingsText.h"

#include <limits>
#include <utility>

namespace Velnor::Proc {

struct Unit {
    explicit constexpr Unit(std::string_view name) : text(name) {}
    std::string_view text;
};
struct Example {
    explicit constexpr Example(std::string_view value) : text(value) {}
    std::string_view text;
};
struct Output {}; ///< The effect writes this field.

constexpr Accepts AcceptsFrom(double low) { return {low, std::numeric_limits<double>::max()}; } ///< And finite.
constexpr Accepts AcceptsFinite() { return AcceptsFrom(std::numeric_limits<double>::lowest()); }
constexpr Accepts AcceptsFiniteButZero() {
    Accepts all = AcceptsFinite();
    all.takesZero = false;
    return all;
}
struct AcceptsRange {};    ///< What is offered, by a Range before it.
struct AcceptsAnything {}; ///< Of an enumeration: values without a name have a meaning too.
struct AcceptsFilled {};   ///< Of a list: one element or more.

namespace Details {

template <int Index>
struct FieldSlot {};

/// The declaration of one field. `Owner{}.*member` is the default.
template <class OwnerClass, class ValueClass>
class Field {
public:
    using Owner = OwnerClass;
    using Value = ValueClass;

    template <class... Attributes>
    constexpr Field(std::string_view fieldName, Value Owner::*place, std::string_view text,
                    Attributes const&... attributes)
        : name(fieldName), member(place), help(text) {
        (Take(attributes), ...);
    }

    std::string_view name;
    Value Owner::*member;
    std::string_view help;
    std::string_view unit;
    std::string_view example;
    std::optional<Range> range;
    std::optional<Accepts> accepts;
    bool needsName = true;     ///< Of an enumeration.
    bool needsElement = false; ///< Of a list.
    bool isOutput = false;

private:
    constexpr void Take(Unit const& attribute) { unit = attribute.text; }
    constexpr void Take(Example const& attribute) { example = attribute.text; }
    constexpr void Take(Range const& attribute) { range = attribute; }
    constexpr void Take(Accepts const& attribute) { accepts = attribute; }
    constexpr void Take(AcceptsRange const&) { accepts = Accepts(range.value().low, range.value().high); }
    constexpr void Take(AcceptsAnything const&) { needsName = false; }
    constexpr void Take(AcceptsFilled const&) { needsElement = true; }
    constexpr void Take(Output const&) { isOutput = true; }
};
template <class Owner, class Value, class... Attributes>
Field(std::string_view, Value Owner::*, std::string_view, Attributes const&...) -> Field<Owner, Value>;

template <class Class, int Index = 0>
consteval int CountFields() {
    if constexpr (requires { Class::Describe(FieldSlot<Index>{}); })
        return CountFields<Class, Index + 1>();
    else
        return Index;
}

} // namespace Details

/// Calls `visit(Field)` for each field of a settings class, in order of declaration.
template <class Class, class Visitor>
constexpr void ForEachField(Visitor&& visit) {
    static_assert(Details::CountFields<Class>() == Class::FIELDS_COUNT,
                  "another macro took a value of __COUNTER__ between two fields");
    if constexpr (Class::FIELDS_COUNT > 0) [&]<int... Index>(std::integer_sequence<int, Index...>) {
            (visit(Class::Describe(Details::FieldSlot<Index>{})), ...);
        }
    (std::make_integer_sequence<int, Class::FIELDS_COUNT>{});
}

namespace Details {

template <class Class>
consteval bool AreFieldsComparable() {
    bool comparable = true;
    ForEachField<Class>([&](auto field) {
        comparable = comparable && requires(Class const& object) { object.*field.member == object.*field.member; };
    });
    return comparable;
}

} // namespace Details

/// Base of every settings class: what follows from its fields.
template <class Self>
class SettingsOf : public Settings {
public:
    SettingsType const& GetType() const override { return Self::StaticType(); }
    std::unique_ptr<Settings> Clone() const override { return std::make_unique<Self>(static_cast<Self const&>(*this)); }

    /// Equal in every field. A class with a field that cannot be compared has no equality.
    friend bool operator==(Self const& a, Self const& b) requires(Details::AreFieldsComparable<Self>()) {
        bool equal = a.IsBypassed() == b.IsBypassed();
        ForEachField<Self>([&](auto field) { equal = equal && a.*field.member == b.*field.member; });
        return equal;
    }

protected:
    SettingsOf() = default;
};

} // namespace Velnor::Proc

/// FindRefusal(owner): why an effect refuses these settings, by the first field with a value that it does not accept;
/// empty where it takes them. `owner` goes before the field's name: "shape-mask." for settings in settings.
#define VELNOR_SETTINGS(Class, Summary)                                                                                \
private:                                                                                                               \
    using FieldOwner = Class;                                                                                          \
    static constexpr int FIRST_FIELD = __COUNTER__ + 1;                                                                \
                                                                                                                       \
public:                                                                                                                \
    Class() = default;                                                                                                 \
    static std::string const CLASS_ID;                                                                                 \
    static ::Velnor::Proc::SettingsType const& StaticType();                                                           \
    std::string FindRefusal(std::string const& owner = "") const;                                                      \
    static constexpr std::string_view CLASS_NAME = #Class;                                                             \
    static constexpr std::string_view SUMMARY = Summary;

#define VELNOR_FIELD_AS(Getter, Type, Name, Default, ...)                                                              \
public:                                                                                                                \
    Type Getter() const { return value##Name; }                                                                        \
    FieldOwner& Set##Name(Type next) {                                                                                 \
        value##Name = std::move(next);                                                                                 \
        return *this;                                                                                                  \
    }                                                                                                                  \
    static constexpr auto Describe(::Velnor::Proc::Details::FieldSlot<__COUNTER__ - FIRST_FIELD>) {                    \
        return ::Velnor::Proc::Details::Field(#Name, &FieldOwner::value##Name, __VA_ARGS__);                           \
    }                                                                                                                  \
                                                                                                                       \
private:                                                                                                               \
    Type value##Name = Default;

/// Type, name, default, help, then any of Unit, Range, Example, Output and what is accepted.
#define VELNOR_FIELD(Type, Name, Default, ...) VELNOR_FIELD_AS(Get##Name, Type, Name, Default, __VA_ARGS__)
#define VELNOR_FLAG(Name, Default, ...) VELNOR_FIELD_AS(Is##Name, bool, Name, Default, __VA_ARGS__)

#define VELNOR_SETTINGS_END                                                                                            \
public:                                                                                                                \
    static constexpr int FIELDS_COUNT = __COUNTER__ - FIRST_FIELD;
