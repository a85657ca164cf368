#pragma once

#include "Core/Export.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <atomic>
#include <utility>

namespace Velnor {

using boost::intrusive_ptr;

/// Root of every shared object of the framework. An object is born with a count of zero; the first handle makes it one,
/// and the release that brings it back to zero destroys it. All three operations may be called from any thread.
class VELNOR_API IRefCountable {
public:
    virtual ~IRefCountable() = default;
    virtual unsigned int AddRef() const = 0;      ///< Returns the count after adding.
    virtual unsigned int Release() const = 0;     ///< Returns the count after the release; 0 means destroyed.
    virtual unsigned int GetRefCount() const = 0; ///< A snapshot: other threads may change it at once.

protected:
    IRefCountable() = default;
    IRefCountable(IRefCountable const&) = default;
    IRefCountable& operator=(IRefCountable const&) = default;
};

inline void intrusive_ptr_add_ref(IRefCountable const* object) { object->AddRef(); }
inline void intrusive_ptr_release(IRefCountable const* object) { object->Release(); }

/// The counter that a concrete shared object holds and forwards to. Copying an object does not copy its owners.
class RefCountImpl {
public:
    RefCountImpl() = default;
    RefCountImpl(RefCountImpl const&) noexcept {}
    RefCountImpl& operator=(RefCountImpl const&) noexcept { return *this; }

    unsigned int AddRefImpl() const noexcept { return count.fetch_add(1, std::memory_order_relaxed) + 1; }

    /// The release order publishes what this owner wrote; the last owner acquires what all the others wrote.
    unsigned int ReleaseImpl() const noexcept { return count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    unsigned int GetRefCountImpl() const noexcept { return count.load(std::memory_order_acquire); }

private:
    mutable std::atomic<unsigned int> count{0};
};

/// Makes a shared class concrete: `RefCounted<Vignette>` is a Vignette with a counter. Writing the three forwarding
/// operations here, once, keeps them out of every effect and every host object.
template <class Base>
class RefCounted final : public Base {
public:
    using Base::Base;

    unsigned int AddRef() const override { return refCount.AddRefImpl(); }
    unsigned int Release() const override {
        unsigned int const left = refCount.ReleaseImpl();
        if (left == 0) delete this;
        return left;
    }
    unsigned int GetRefCount() const override { return refCount.GetRefCountImpl(); }

private:
    RefCountImpl refCount;
};

/// Constructs a shared object and returns its only handle.
template <class Class, class... Arguments>
intrusive_ptr<Class> MakeShared(Arguments&&... arguments) {
    return intrusive_ptr<Class>(new RefCounted<Class>(std::forward<Arguments>(arguments)...));
}

} // namespace Velnor
