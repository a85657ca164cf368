#include "Core/Progress.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace Velnor::Core {
namespace {

using StopFlag = std::shared_ptr<std::atomic<bool>>;

class Controller : public IProgressController {
public:
    Controller() : stop(std::make_shared<std::atomic<bool>>(false)) {}
    Controller(intrusive_ptr<Controller> owner, std::uint64_t units)
        : parent(std::move(owner)), unitsInParent(units), stop(parent->stop) {}

    void SetRange(std::uint64_t units) override {
        Change([&] {
            range = units;
            position = 0;
        });
    }
    void SetPosition(std::uint64_t units) override {
        Change([&] { position = std::min(units, range); });
    }
    void Advance(std::uint64_t units) override {
        Change([&] { position += std::min(units, range - position); });
    }
    std::uint64_t GetRange() const override {
        std::scoped_lock const lock(mutex);
        return range;
    }
    std::uint64_t GetPosition() const override {
        std::scoped_lock const lock(mutex);
        return position;
    }
    double GetFraction() const override {
        std::scoped_lock const lock(mutex);
        return FractionLocked();
    }
    intrusive_ptr<IProgressController> CreateChild(std::uint64_t units) override;
    void RequestStop() override { stop->store(true, std::memory_order_relaxed); }
    bool IsStopRequested() const override { return stop->load(std::memory_order_relaxed); }

private:
    double FractionLocked() const {
        if (range == 0) return 0.0;
        return std::min(1.0, (static_cast<double>(position) + childUnits) / static_cast<double>(range));
    }

    /// Applies a change under the lock, then tells the observers and the parent outside it.
    void Change(std::function<void()> const& apply) {
        double before = 0.0;
        double after = 0.0;
        {
            std::scoped_lock const lock(mutex);
            before = FractionLocked();
            apply();
            after = FractionLocked();
        }
        if (after == before) return;
        Publish([after](IProgressObserver& observer) { observer.OnProgress(after); });
        if (parent) {
            double const moved = (after - before) * static_cast<double>(unitsInParent);
            parent->Change([&] { parent->childUnits += moved; });
        }
    }

    intrusive_ptr<Controller> const parent;
    std::uint64_t const unitsInParent = 0;
    StopFlag const stop;
    mutable std::mutex mutex;
    std::uint64_t range = 0;
    std::uint64_t position = 0;
    double childUnits = 0.0; ///< Units of this controller that its children have done.
};

intrusive_ptr<IProgressController> Controller::CreateChild(std::uint64_t units) {
    return MakeShared<Controller>(intrusive_ptr<Controller>(this), units);
}

class Stub : public IProgressController {
public:
    explicit Stub(StopFlag flag = std::make_shared<std::atomic<bool>>(false)) : stop(std::move(flag)) {}
    void SetRange(std::uint64_t) override {}
    void SetPosition(std::uint64_t) override {}
    void Advance(std::uint64_t) override {}
    std::uint64_t GetRange() const override { return 0; }
    std::uint64_t GetPosition() const override { return 0; }
    double GetFraction() const override { return 0.0; }
    intrusive_ptr<IProgressController> CreateChild(std::uint64_t) override { return MakeShared<Stub>(stop); }
    void RequestStop() override { stop->store(true, std::memory_order_relaxed); }
    bool IsStopRequested() const override { return stop->load(std::memory_order_relaxed); }

private:
    StopFlag const stop;
};

} // namespace

intrusive_ptr<IProgressController> ProgressController::Create() { return MakeShared<Controller>(); }
intrusive_ptr<IProgressController> ProgressControllerStub::Create() { return MakeShared<Stub>(); }

} // namespace Velnor::Core
