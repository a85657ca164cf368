#include "Proc/Host/Files/FilesModule.h"
#include "Proc/Host/Files/Reader.h"
#include "Proc/Host/Files/VipsSupport.h"
#include "Proc/Host/Files/Writer.h"

extern "C" VELNOR_API Velnor::Proc::Files::FilesModule const* GetVelnorFiles() {
    using namespace Velnor::Proc::Files;
    StartVips();
    static constexpr FilesModule MODULE{&ReadVipsPicture, &WriteVipsPicture};
    return &MODULE;
}
