#pragma once

#include "Proc/Host/Files/VipsSupport.h"
#include "Proc/Host/OutputFile.h"

#include <exception>
#include <string>

namespace Velnor::Proc::Files {

/// Lets the file library write to an output file. Exceptions cannot pass through the library, so the first one waits
/// here.
class Target {
public:
    /// The file outlives this object. What is inserted stands after so many bytes that the library writes, which writes
    /// the whole in sequence then.
    explicit Target(OutputFile& output, std::string inserted = {}, std::size_t insertedAfter = 0);
    ~Target();
    Target(Target const&) = delete;
    Target& operator=(Target const&) = delete;

    VipsTarget* Get() const;
    void Rethrow() const; ///< Throws what writing threw, if anything.

private:
    void Put(char const* data, std::size_t bytes);
    static gint64 Write(VipsTargetCustom* custom, void const* data, gint64 bytes, Target* self);
    static gint64 Read(VipsTargetCustom* custom, void* data, gint64 bytes, Target* self);
    static gint64 Seek(VipsTargetCustom* custom, gint64 offset, int whence, Target* self);

    OutputFile& file;
    std::string insertion; ///< Empty when it is written.
    std::size_t bytesBefore;
    Owned<VipsTargetCustom> const target;
    std::exception_ptr error;
};

} // namespace Velnor::Proc::Files
