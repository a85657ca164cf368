#include "Proc/Host/Files/Target.h"

#include <algorithm>
#include <utility>

namespace Velnor::Proc::Files {

Target::Target(OutputFile& output, std::string inserted, std::size_t insertedAfter)
    : file(output), insertion(std::move(inserted)), bytesBefore(insertedAfter), target(vips_target_custom_new()) {
    g_signal_connect(target.get(), "write", G_CALLBACK(&Target::Write), this);
    g_signal_connect(target.get(), "read", G_CALLBACK(&Target::Read), this);
    g_signal_connect(target.get(), "seek", G_CALLBACK(&Target::Seek), this);
}

Target::~Target() { g_signal_handlers_disconnect_by_data(target.get(), this); }

VipsTarget* Target::Get() const { return VIPS_TARGET(target.get()); }

void Target::Rethrow() const {
    if (error) std::rethrow_exception(error);
}

void Target::Put(char const* data, std::size_t bytes) {
    std::size_t const before = std::min(bytes, insertion.empty() ? 0 : bytesBefore);
    file.Write(data, before);
    bytesBefore -= before;
    if (bytesBefore == 0 && !insertion.empty()) {
        file.Write(insertion.data(), insertion.size());
        insertion.clear();
    }
    file.Write(data + before, bytes - before);
}

gint64 Target::Write(VipsTargetCustom*, void const* data, gint64 bytes, Target* self) {
    if (self->error) return -1;
    try {
        self->Put(static_cast<char const*>(data), static_cast<std::size_t>(bytes));
        return bytes;
    } catch (...) {
        self->error = std::current_exception();
        return -1;
    }
}

gint64 Target::Read(VipsTargetCustom*, void* data, gint64 bytes, Target* self) {
    return self->file.Read(data, static_cast<std::size_t>(bytes));
}

gint64 Target::Seek(VipsTargetCustom*, gint64 offset, int whence, Target* self) {
    return self->file.Seek(offset, whence);
}

} // namespace Velnor::Proc::Files
