#pragma once

#include "Core/Export.h"
#include "Proc/Interfaces/ProcException.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Proc {

class Settings;

/// The closed interval that makes sense for a number: what a person is offered. It is shown, and checked where a person
/// types; setters take anything.
struct Range {
    constexpr Range(double from, double to) : low(from), high(to) {}
    double low;
    double high;
};

/// What the effect accepts in a number, or in each side of a size: a closed interval, often more than the range. An end
/// at the largest double is open, to finite numbers. Effects refuse other values before their work.
struct Accepts {
    constexpr Accepts(double from, double to) : low(from), high(to) {}
    constexpr bool IsMet(double value) const { return value >= low && value <= high && (value != 0 || takesZero); }
    double low;
    double high;
    bool takesZero = true;
};

/// A text that does not make a value. Its description reads on after the parameter's name: `"x" is no number`.
class VELNOR_API SettingsTextException : public ProcException {};

/// One parameter as its users see it, made from its one declaration in the settings class.
struct SettingsField {
    std::string name; ///< Kebab case; of a nested settings object with a dot: "shape-mask.feather".
    std::string type; ///< For a person: "number", "integer", "colour", "choice", ...
    std::string help;
    std::string unit; ///< Empty for plain numbers and everything that is none.
    std::optional<Range> range;
    std::optional<Accepts> accepts;   ///< None: the effect takes every value, or every one of the choices.
    std::vector<std::string> choices; ///< Of enumerations and switches.
    std::string defaultText;
    std::string example;   ///< A value worth trying.
    bool isOutput = false; ///< Written by the effect, for its caller to read.

    /// Sets the field from text. Throws SettingsTextException, changing nothing, for text that is not of the type or
    /// outside the range.
    std::function<void(Settings&, std::string_view)> parse;
    /// As `parse`, but takes numbers outside the range, as the setters do.
    std::function<void(Settings&, std::string_view)> parseAny;
    std::function<std::string(Settings const&)> print;

    /// What the effect accepts, in words, where that is told and is not just the range; else empty.
    VELNOR_API std::string GetAcceptedText() const;
};

/// What a picture is to the effect that takes it.
enum class PictureRole : std::uint8_t {
    Photograph,
    Mask, ///< GRAY8: opacity, or strokes.
};

/// What the users of a settings class can know of it at run time.
struct SettingsType {
    std::string classId;
    std::string summary; ///< One line: what the effect does.
    std::unique_ptr<Settings> (*create)() = nullptr;
    std::vector<SettingsField> (*describe)() = nullptr; ///< In order of declaration.

    /// What the effect's pictures are, in their order; it takes no more. Empty where the class does not say:
    /// photographs, as many as an effect of the kind takes.
    std::vector<PictureRole> pictures = {};

    /// The name that people type: the class identifier without "Settings" or "SettingsEffect", in kebab case.
    VELNOR_API std::string GetEffectName() const;

    /// All settings classes of this library, by class identifier.
    VELNOR_API static std::vector<SettingsType const*> const& GetAll();
    VELNOR_API static SettingsType const* Find(std::string_view classId); ///< Null when unknown.
};

/// Base class of all settings: values with equality and copying, no behaviour. A settings class declares each of its
/// fields once (SettingsFields.h).
class VELNOR_API Settings {
public:
    virtual ~Settings();
    virtual SettingsType const& GetType() const = 0;
    virtual std::unique_ptr<Settings> Clone() const = 0;

    /// Whether these settings leave the picture as it is. An effect with empty settings does nothing.
    virtual bool IsEmpty() const { return isBypassed; }

    /// Switches the effect off without losing its parameters.
    bool IsBypassed() const { return isBypassed; }
    void SetBypassed(bool bypassed) { isBypassed = bypassed; }

protected:
    Settings() = default;
    Settings(Settings const&) = default;
    Settings& operator=(Settings const&) = default;

private:
    bool isBypassed = false;
};

/// "MethodDownscale" is "method-downscale", "SettingsEffectCLAHE" would be "settings-effect-clahe".
VELNOR_API std::string ToKebabCase(std::string_view upperCamelCase);

} // namespace Velnor::Proc
