#pragma once

#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"

namespace Velnor::Proc::Testing {

/// The host of a whole test program, with the plug-in as its file has it.
inline Host& PluginHost() {
    static StandardHost host{GuardedPictures()};
    static bool const isLoaded = (host.LoadPlugin(Testing::LUMETTA_FILE), true);
    (void)isLoaded;
    return host;
}

} // namespace Velnor::Proc::Testing
