#include "Proc/StandardHost/StandardHost.h"

#include <iostream>

int main() {
    Velnor::Proc::StandardHost host;
    host.LoadInstalledPlugins();
    for (Velnor::Proc::RegisteredEffect const& effect : host.GetEffects())
        std::cout << effect.classId << " " << effect.implName << " from " << effect.origin << "\n";
}
