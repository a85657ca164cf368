#pragma once

#include <vips/vips.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Velnor::Proc::Files {

struct Unreference {
    template <class Object>
    void operator()(Object* object) const {
        g_object_unref(object);
    }
};

/// Owns one reference to an object of the file library.
template <class Object>
using Owned = std::unique_ptr<Object, Unreference>;
using OwnedImage = Owned<VipsImage>;

/// Makes the file library ready, once: no cache of operations, which would keep whole pictures; no loader but those of
/// the kinds that are read; nothing printed; what would end the process goes to the host's FatalErrorHandler first.
/// Throws FileException.
void StartVips();

/// Makes the rarer kinds of file known, once, which takes longer than all of StartVips.
void LoadRarerKinds();

/// Whether the file library has warned on this thread since this was last asked: a decoder that is told to accept
/// damage goes on with a warning.
bool TakeWarned();

/// Work on the file library under way, of one thread among others or alone.
class LibraryTurn {
public:
    LibraryTurn(); ///< Waits while a thread is alone.
    ~LibraryTurn();
    LibraryTurn(LibraryTurn const&) = delete;
    LibraryTurn& operator=(LibraryTurn const&) = delete;

    bool HadCompany() const; ///< Whether another thread's work was under way at any time during this.
    void GoAlone();          ///< Waits for the others' work and keeps more from beginning.

private:
    bool hasMet = false; ///< Others were there at the beginning.
    bool isAlone = false;
    std::uint64_t number = 0;
};

/// Runs work that may fail. The library keeps its complaints for all threads together: what fails while others are at
/// work is done anew alone, so that the reason is its own.
template <class Work>
auto WithOwnComplaints(Work const& work) {
    LibraryTurn turn;
    try {
        return work();
    } catch (...) {
        if (!turn.HadCompany()) throw;
    }
    turn.GoAlone();
    vips_error_clear();
    return work();
}

/// The file library's latest complaint as part of a sentence: one line, without the name of its inner part and without
/// a full stop. Empties the list of complaints, which the library keeps for all threads together (see
/// WithOwnComplaints).
std::string TakeError();

/// A copy of a field's bytes, since the loaders of HEIC and AVIF hand out some that go with their image; empty where
/// there is no such field.
std::string GetBlob(VipsImage* image, char const* name);

/// What the library takes beside the pictures: its threads with their stacks, buffers, the heap's steps.
inline constexpr std::uint64_t WORKING_ROOM = 64 << 20;

} // namespace Velnor::Proc::Files
