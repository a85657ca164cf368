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
    Controller(intrusive_ptr<Controller> owner, std::uint64_t units, std::uint64_t ownersRound)
        : parent(std::move(owner)), unitsInParent(units), roundOfParent(ownersRound), stop(parent->stop) {}

    void SetRange(std::uint64_t units) override {
        Change([&] {
            range = units;
            position = 0;
            unitsOfDone = 0;
            unitsOfBegun = 0.0;
            begunChildren = 0;
            fraction = 0.0;
            isRanged = true;
            ++round;
        });
    }
    void SetPosition(std::uint64_t units) override {
        Change([&] { position = std::max(position, std::min(units, range)); });
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
        return fraction;
    }
    intrusive_ptr<IProgressController> CreateChild(std::uint64_t units) override;
    void RequestStop() override { stop->store(true, std::memory_order_relaxed); }
    bool IsStopRequested() const override { return stop->load(std::memory_order_relaxed); }

private:
    /// Applies a change under the lock, then tells the observers and the parent outside it.
    void Change(std::function<void()> const& apply) {
        double now = 0.0;
        {
            std::scoped_lock const lock(mutex);
            double const before = fraction;
            apply();
            // The sum over begun children is rounded and may lose a last digit when one of them ends: never go back.
            fraction = std::max(fraction, Measure());
            if (fraction == before) return;
            now = fraction;
        }
        // Read anew at each call: of two threads that publish, the later one must not tell the older number.
        Publish([this](IProgressObserver& observer) { observer.OnProgress(GetFraction()); });
        if (parent) parent->Change([&] { parent->Count(*this, now); });
    }

    double Measure() const {
        if (range == 0) return isRanged ? 1.0 : 0.0;
        double const done = static_cast<double>(position) + static_cast<double>(unitsOfDone) + unitsOfBegun;
        return std::min(1.0, done / static_cast<double>(range));
    }

    /// Takes the child's fraction into account where it is more than was counted before. Units of children that are
    /// done are whole numbers, and nothing is left of the rounded sum once no child is under way: so the end is exact.
    void Count(Controller& child, double fractionOfChild) {
        double const counted = child.countedByParent;
        if (child.roundOfParent != round || fractionOfChild <= counted) return;
        double const units = static_cast<double>(child.unitsInParent);
        child.countedByParent = fractionOfChild;
        if (counted == 0.0) ++begunChildren;
        unitsOfBegun += (fractionOfChild - counted) * units;
        if (fractionOfChild < 1.0) return;
        unitsOfDone += std::min(child.unitsInParent, range - std::min(range, unitsOfDone));
        --begunChildren;
        unitsOfBegun = begunChildren == 0 ? 0.0 : unitsOfBegun - units;
    }

    intrusive_ptr<Controller> const parent;
    std::uint64_t const unitsInParent = 0;
    std::uint64_t const roundOfParent = 0;
    double countedByParent = 0.0; ///< Under the parent's lock.
    StopFlag const stop;

    mutable std::mutex mutex;
    std::uint64_t range = 0;
    std::uint64_t position = 0;
    std::uint64_t unitsOfDone = 0;   ///< Of the children that are done.
    double unitsOfBegun = 0.0;       ///< Of the children under way.
    std::uint64_t begunChildren = 0; ///< How many are under way.
    double fraction = 0.0;
    bool isRanged = false;
    std::uint64_t round = 0; ///< Counts SetRange calls: a child belongs to the one it was made after.
};

intrusive_ptr<IProgressController> Controller::CreateChild(std::uint64_t units) {
    std::scoped_lock const lock(mutex);
    return MakeShared<Controller>(intrusive_ptr<Controller>(this), units, round);
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
