#pragma once

#include "Core/PixFmt.h"
#include "Proc/Interfaces/Color.h"
#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/Settings.h"

#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Velnor::Proc {

/// One name of an enumeration's value, as people type it.
template <class Enum>
struct EnumName {
    Enum value;
    std::string_view name;
};

/// Specialised beside each enumeration that settings hold: `static constexpr std::array<EnumName<E>, n> VALUES{...}`.
template <class Enum>
struct EnumNames {};

/// How a type of field is written as text. A type without it cannot be typed and is left out of descriptions.
/// `Parse` throws SettingsTextException.
template <class Value>
struct TextForm {};

namespace Details {

[[noreturn]] VELNOR_API void ThrowText(std::string const& description);
VELNOR_API float ParseFloat(std::string_view text);
VELNOR_API double ParseNumber(std::string_view text);
VELNOR_API std::int64_t ParseInteger(std::string_view text, std::int64_t low, std::int64_t high);
VELNOR_API void CheckRange(std::string_view text, Range const& range);           ///< Throws for a number outside it.
VELNOR_API std::string JoinWords(std::vector<std::string> const& words);         ///< "a, b and c"
VELNOR_API std::string DescribeAccepted(Accepts const& accepts, bool isInteger); ///< "0 to 10", "1 or more", ...
/// "The setting NAME is VALUE UNIT; ACCEPTED are accepted."
VELNOR_API std::string DescribeRefusal(std::string const& name, std::string const& value, std::string_view unit,
                                       std::string const& accepted);
VELNOR_API std::string PrintNumber(float value);
VELNOR_API std::string PrintNumber(double value); ///< The shortest text that reads back as the same number.
/// The parts between separators, empty ones included; an empty text has no part.
VELNOR_API std::vector<std::string_view> SplitList(std::string_view text, char separator);
[[noreturn]] VELNOR_API void ThrowChoice(std::string_view text, std::vector<std::string> const& choices);

} // namespace Details

template <>
struct VELNOR_API TextForm<bool> {
    static constexpr std::string_view TYPE = "switch";
    static std::vector<std::string> Choices() { return {"true", "false"}; }
    static bool Parse(std::string_view text);
    static std::string Print(bool value) { return value ? "true" : "false"; }
};

template <class Integer>
requires(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>) struct TextForm<Integer> {
    static constexpr std::string_view TYPE = "integer";
    static Integer Parse(std::string_view text) {
        using Limits = std::numeric_limits<Integer>;
        constexpr auto high =
            static_cast<std::int64_t>(std::min<std::uint64_t>(Limits::max(), std::numeric_limits<std::int64_t>::max()));
        return static_cast<Integer>(Details::ParseInteger(text, static_cast<std::int64_t>(Limits::min()), high));
    }
    static std::string Print(Integer value) { return std::to_string(value); }
};

template <class Real>
requires std::is_floating_point_v<Real>
struct TextForm<Real> {
    static constexpr std::string_view TYPE = "number";
    static Real Parse(std::string_view text) {
        if constexpr (std::is_same_v<Real, float>) return Details::ParseFloat(text);
        return static_cast<Real>(Details::ParseNumber(text));
    }
    static std::string Print(Real value) { return Details::PrintNumber(value); }
};

template <>
struct VELNOR_API TextForm<std::string> {
    static constexpr std::string_view TYPE = "text";
    static std::string Parse(std::string_view text) { return std::string(text); }
    static std::string Print(std::string const& value) { return value; }
};

/// #rrggbb, #rrggbbaa, #rgb, or one of the sixteen basic colour names of CSS and "transparent".
template <>
struct VELNOR_API TextForm<Color> {
    static constexpr std::string_view TYPE = "colour";
    static Color Parse(std::string_view text);
    static std::string Print(Color const& value);
};

/// The format's name, or "none".
template <>
struct VELNOR_API TextForm<PixFmt> {
    static constexpr std::string_view TYPE = "pixel format";
    static PixFmt Parse(std::string_view text);
    static std::string Print(PixFmt value);
};

/// WIDTHxHEIGHT, square pixels; or WIDTHxHEIGHTxNUMERATOR:DENOMINATOR. 0x0 is no size at all: four words of 0.
template <>
struct VELNOR_API TextForm<FrameFormat> {
    static constexpr std::string_view TYPE = "size";
    static FrameFormat Parse(std::string_view text);
    static std::string Print(FrameFormat const& value);
};

/// LEFT,TOP,RIGHT,BOTTOM.
template <>
struct VELNOR_API TextForm<CropInfo> {
    static constexpr std::string_view TYPE = "margins";
    static CropInfo Parse(std::string_view text);
    static std::string Print(CropInfo const& value);
};

template <class Enum>
requires(std::is_enum_v<Enum>&& requires { EnumNames<Enum>::VALUES; }) struct TextForm<Enum> {
    static constexpr std::string_view TYPE = "choice";
    static std::vector<std::string> Choices() {
        std::vector<std::string> names;
        for (auto const& entry : EnumNames<Enum>::VALUES) names.emplace_back(entry.name);
        return names;
    }
    static Enum Parse(std::string_view text) {
        for (auto const& entry : EnumNames<Enum>::VALUES)
            if (entry.name == text) return entry.value;
        Details::ThrowChoice(text, Choices());
    }
    static std::string Print(Enum value) {
        for (auto const& entry : EnumNames<Enum>::VALUES)
            if (entry.value == value) return std::string(entry.name);
        return std::to_string(static_cast<std::underlying_type_t<Enum>>(value));
    }
};

/// A list, its elements separated by commas. Empty text is the empty list.
template <class Element>
requires requires { TextForm<Element>::TYPE; }
struct TextForm<std::vector<Element>> {
    static constexpr std::string_view TYPE = "list";
    static std::vector<Element> Parse(std::string_view text) {
        std::vector<Element> list;
        for (std::string_view part : Details::SplitList(text, ',')) list.push_back(TextForm<Element>::Parse(part));
        return list;
    }
    static std::string Print(std::vector<Element> const& list) {
        std::string text;
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i > 0) text += ',';
            text += TextForm<Element>::Print(list[i]);
        }
        return text;
    }
};

} // namespace Velnor::Proc
