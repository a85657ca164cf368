#pragma once

#include "Proc/Host/Files/VipsSupport.h"
#include "Proc/Host/OutputFile.h"

#include <exception>

namespace Velnor::Proc::Files {

/// Lets the file library write to an output file. Exceptions cannot pass through the library, so the first one waits
/// here.
class Target {
public:
    explicit Target(OutputFile& output); ///< The file outlives this object.
    ~Target();
    Target(Target const&) = delete;
    Target& operator=(Target const&) = delete;

    VipsTarget* Get() const;
    void Rethrow() const; ///< Throws what writing threw, if anything.

private:
    static gint64 Write(VipsTargetCustom* custom, void const* data, gint64 bytes, Target* self);
    static gint64 Read(VipsTargetCustom* custom, void* data, gint64 bytes, Target* self);
    static gint64 Seek(VipsTargetCustom* custom, gint64 offset, int whence, Target* self);

    OutputFile& file;
    Owned<VipsTargetCustom> const target;
    std::exception_ptr error;
};

} // namespace Velnor::Proc::Files
