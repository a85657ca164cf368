#pragma once

#include "Proc/Host/MemoryPool.h"
#include "Proc/Interfaces/IEffectRegistry.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// One registration, as a listing shows it.
struct RegisteredEffect {
    std::string classId;
    std::string implName;
    EffectKind kind = EffectKind::OneInput;
    std::string origin; ///< "host", a plug-in's file name where it came with the host, or the path of another.
};

/// The reference host: the registry, plug-ins, the factory and the pictures' allocator. It knows no effect: whoever
/// makes it says which are its own. StandardHost is the one with those that come with it.
///
///     Host host([](IEffectRegistry& registry) { RegisterGeneralEffects(registry); });
///     host.LoadPlugin("libLumetta.so");
///     auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectPixelate::CLASS_ID,
///                                                                 ImplNames::DEFAULT);
///     effect->SetSettings(SettingsEffectPixelate());
///     DataHandle data = ReadPicture("photo.jpg", *host.GetContext()).picture;
///     effect->ProcessData(data);
///
/// Effects, pictures and handles may outlive the host object; a plug-in's library is never unloaded, since objects of
/// its classes may live on.
class VELNOR_API Host {
public:
    /// @param registerEffects  registers the host's own effects, of which others are made; what it throws is passed on
    explicit Host(std::function<void(IEffectRegistry&)> const& registerEffects,
                  MemoryLimits const& pictures = MemoryLimits());
    virtual ~Host();
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

    /// Loads a plug-in and has it register its effects. Throws ProcException, the registry as it was, when the file is
    /// missing, is no library, was built against another version of the contract, has no Registrator, or throws or
    /// finds nothing while registering.
    void LoadPlugin(std::filesystem::path const& file);

    /// Loads the plug-ins that came with the host, from the folder "velnor/plugins" beside its library.
    void LoadInstalledPlugins();

    /// Loads the plug-ins that the user has put somewhere (see FindUserPlugins), but for those that are loaded already.
    /// Returns what was left out and why, a sentence each: one that fails does not hinder the others.
    std::vector<std::string> LoadUserPlugins();

    bool HasPlugin(std::filesystem::path const& file) const; ///< Whether this file has been loaded.

    FactoryHandle const& GetFactory() const;
    ContextHandle const& GetContext() const;
    IEffectRegistry& GetRegistry();
    std::vector<RegisteredEffect> GetEffects() const; ///< In order of registration.

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace Velnor::Proc
