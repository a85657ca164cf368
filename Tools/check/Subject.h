#pragma once

#include "Proc/Host/Host.h"
#include "Tools/check/Journal.h"
#include "Tools/check/Pictures.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Velnor::Proc::Check {

/// What an effect made of its pictures.
struct Outcome {
    std::string refusal;             ///< Empty when it did its work.
    std::vector<DataHandle> results; ///< Where an effect only looks at pictures, these.

    /// Format, size and samples of all results, or the refusal: equal where the outcomes are.
    Bytes GetBytes() const;
};

/// The name that people type.
std::string GetEffectName(RegisteredEffect const& effect);

/// An effect whose promises are checked.
class Subject {
public:
    /// @param checkLevel   1 to 3: how much is tried
    /// @param pluginFile   that brought the effect; empty for the host's own
    Subject(Host& effectHost, RegisteredEffect registered, int checkLevel, std::filesystem::path pluginFile = {});

    RegisteredEffect const& GetEffect() const { return effect; }
    SettingsType const& GetType() const { return type; }
    Host& GetHost() const { return host; }
    IEffectContext& GetContext() const { return *host.GetContext(); }
    std::filesystem::path const& GetFile() const { return file; }
    std::size_t CountInputs() const; ///< Pictures that it is given.
    int GetLevel() const { return level; }
    std::string GetName() const { return GetEffectName(effect); }

    intrusive_ptr<IEffect> Make() const;
    intrusive_ptr<IEffect> Make(Settings const& settings) const;
    /// With a factory and an allocator of the caller's.
    intrusive_ptr<IEffect> Make(FactoryHandle const& factory, ContextHandle const& context) const;

    /// The example of each field: settings with which most effects have work to do.
    std::unique_ptr<Settings> MakeTypicalSettings() const;

    /// Noise, one picture after the other, and strokes where the effect takes a mask.
    std::vector<DataHandle> MakeInputs(PixFmt format, std::uint32_t width, std::uint32_t height,
                                       std::uint32_t seed = 1) const;

private:
    bool IsMask(std::size_t input) const;

    Host& host;
    RegisteredEffect const effect;
    int const level;
    std::filesystem::path const file;
    SettingsType const& type;
};

/// Runs an effect through the entry of its kind, on handles that become its results. Errors pass through.
std::vector<DataHandle> Run(IEffect& effect, std::vector<DataHandle>& inputs);

/// As Run; a refusal is an outcome too, but it must be an exception of the framework that says why, or want of memory.
Outcome Try(IEffect& effect, std::vector<DataHandle> inputs, Journal& journal);

} // namespace Velnor::Proc::Check
