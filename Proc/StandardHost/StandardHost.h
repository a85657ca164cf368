#pragma once

#include "Proc/Host/Host.h"

namespace Velnor::Proc {

/// Registers the effects that come with the host: the general ones, of which others are made, and those on heavy
/// libraries, each of which is loaded when its first effect is created. Throws what the registry throws.
VELNOR_API void RegisterStandardEffects(IEffectRegistry& registry);

/// The usual host: one that has the effects that come with it.
///
///     StandardHost host;
///     host.LoadInstalledPlugins();
///     auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectPixelate::CLASS_ID,
///                                                                 ImplNames::DEFAULT);
class StandardHost : public Host {
public:
    explicit StandardHost(MemoryLimits const& pictures = MemoryLimits()) : Host(&RegisterStandardEffects, pictures) {}
};

} // namespace Velnor::Proc
