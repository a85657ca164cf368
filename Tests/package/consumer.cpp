#include "Proc/Host/Host.h"

#include <iostream>

int main() {
    Velnor::Proc::Host host;
    host.LoadInstalledPlugins();
    for (Velnor::Proc::RegisteredEffect const& effect : host.GetEffects())
        std::cout << effect.classId << " " << effect.implName << " from " << effect.origin << "\n";
}
