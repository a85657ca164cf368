#pragma once

#include "Core/Events.h"
#include "Core/Export.h"
#include "Core/RefCountable.h"

#include <cstdint>

namespace Velnor::Core {

/// Is told, on the working thread, each time a controller's progress has moved.
class VELNOR_API IProgressObserver {
public:
    virtual ~IProgressObserver() = default;
    virtual void OnProgress(double fraction) = 0; ///< 0 to 1, never falling between two SetRange calls.
};

/// Progress of one piece of work, and the way to ask that it stop. Work is counted in units of the worker's choice:
/// `SetRange(rows)`, then `Advance(1)` per row. A part of the units can be handed to a child controller, whose whole
/// range then counts as that many units here. All operations may be called from any thread.
class VELNOR_API IProgressController : public IRefCountable, public EventPublisher<IProgressObserver> {
public:
    /// Starts anew: the position is 0, and children made before count no more. 0 units count as done. A child that
    /// starts anew takes nothing back from its parent, which counts it again from where it was.
    virtual void SetRange(std::uint64_t units) = 0;
    virtual void SetPosition(std::uint64_t units) = 0; ///< Clamped to the range; never goes back.
    virtual void Advance(std::uint64_t units) = 0;     ///< Clamped to the range.
    virtual std::uint64_t GetRange() const = 0;
    virtual std::uint64_t GetPosition() const = 0;
    virtual double GetFraction() const = 0; ///< 0 to 1; exactly 1 when all units are done, the children's included.

    /// A controller whose full range is worth `units` of this one, whose stop request it shares; it keeps it alive.
    virtual intrusive_ptr<IProgressController> CreateChild(std::uint64_t units) = 0;

    virtual void RequestStop() = 0; ///< Asks the work, that of the children included, to end early.
    virtual bool IsStopRequested() const = 0;
};

/// A controller that counts, publishes and can be stopped.
class VELNOR_API ProgressController {
public:
    static intrusive_ptr<IProgressController> Create();
};

/// A controller for work that nobody watches: positions are dropped, no observer is called, a stop is still obeyed.
class VELNOR_API ProgressControllerStub {
public:
    static intrusive_ptr<IProgressController> Create();
};

} // namespace Velnor::Core
