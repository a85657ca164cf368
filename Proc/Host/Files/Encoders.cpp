#include "Proc/Host/Files/EncodersModule.h"

#include "Core/Export.h"

extern "C" VELNOR_API Velnor::Proc::Files::EncodersModule const* GetVelnorEncoders() {
    using namespace Velnor::Proc::Files;
    static constexpr EncodersModule MODULE{&EncodeHeif, &EncodeJxl, &SalvageJxl};
    return &MODULE;
}
