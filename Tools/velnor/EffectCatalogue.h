#pragma once

#include "Proc/Host/Host.h"
#include "Proc/Interfaces/Settings.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// An effect under the name that people type, with its implementations in order of registration.
struct CatalogueEntry {
    std::string name;
    std::string classId;
    std::vector<Proc::RegisteredEffect> implementations;

    /// The one that is meant when none is named.
    Proc::RegisteredEffect const& GetDefault() const;
};

/// The effects of a host by name.
class EffectCatalogue {
public:
    /// Loads the plug-ins that came with the host and those of the user's folders, telling on stderr of one that fails,
    /// then those named. Throws Failure (wrong call) for a named one that cannot be loaded.
    explicit EffectCatalogue(std::vector<std::string> const& plugins,
                             Proc::MemoryLimits const& pictures = Proc::MemoryLimits());

    std::vector<CatalogueEntry> const& GetEntries() const { return entries; } ///< Ordered by name.
    Proc::Host& GetHost() const { return *host; }

    /// Throws Failure (wrong call), with the nearest names.
    CatalogueEntry const& Get(std::string const& name) const;

    /// What is known of the settings of an effect: from the library of settings, and for a class that is not there, as
    /// a plug-in may bring, from an effect made for the purpose.
    Proc::SettingsType const& GetSettingsType(CatalogueEntry const& entry) const;

private:
    std::unique_ptr<Proc::Host> host;
    std::vector<CatalogueEntry> entries;
};

/// Throws Failure (wrong call) naming what there is. Letters match in either case; empty text means the default.
Proc::RegisteredEffect const& GetImplementation(CatalogueEntry const& entry, std::string const& typed);

/// "one picture", "two pictures" or "any number of pictures": what an effect works on.
std::string GetKindText(Proc::EffectKind kind, Proc::SettingsType const& type);

} // namespace Velnor::Tool
