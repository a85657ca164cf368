#include "Core/Progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Velnor::Core {
namespace {

class Recorder : public IProgressObserver {
public:
    void OnProgress(double fraction) override {
        told.push_back(fraction);
        if (also) also();
    }
    std::vector<double> told;
    std::function<void()> also;
};

using Handle = intrusive_ptr<IProgressController>;

TEST(Progress, CountsAndClamps) {
    Handle const progress = ProgressController::Create();
    Recorder observer;
    progress->RegisterEventHandler(&observer);
    progress->RegisterEventHandler(&observer);
    progress->RegisterEventHandler(nullptr);
    EXPECT_EQ(progress->GetFraction(), 0.0);
    progress->Advance(5); // no range yet
    progress->SetRange(4);
    progress->Advance(1);
    progress->SetPosition(3);
    progress->SetPosition(2);
    EXPECT_EQ(progress->GetPosition(), 3U);
    progress->Advance(18446744073709551615U);
    EXPECT_EQ(progress->GetPosition(), 4U);
    progress->SetPosition(100);
    EXPECT_EQ(progress->GetRange(), 4U);
    progress->SetRange(2);
    progress->Advance(1);
    progress->SetRange(0);
    EXPECT_EQ(observer.told, (std::vector<double>{0.25, 0.75, 1.0, 0.0, 0.5, 1.0}));
}

TEST(Progress, ChildrenOfChildrenAddUpToExactlyOne) {
    // Thirds and sevenths have no exact sum: the end must be 1 all the same, whatever the order of the children.
    for (std::uint64_t parts : {1U, 3U, 7U, 10U, 49U}) {
        Handle const progress = ProgressController::Create();
        progress->SetRange(2 * parts + 1);
        std::vector<Handle> leaves;
        for (std::uint64_t i = 0; i < parts; ++i) {
            Handle const child = progress->CreateChild(2);
            child->SetRange(3);
            child->Advance(1);
            leaves.push_back(child->CreateChild(2));
            leaves.back()->SetRange(7);
        }
        double last = 0.0;
        for (int step = 0; step < 7; ++step)
            for (Handle const& leaf : leaves) {
                leaf->Advance(1);
                EXPECT_GE(progress->GetFraction(), last);
                last = progress->GetFraction();
                EXPECT_LT(last, 1.0);
            }
        progress->Advance(1);
        EXPECT_EQ(progress->GetFraction(), 1.0) << parts;
    }
}

TEST(Progress, ChildIsWorthItsUnitsAndNoMore) {
    Handle const progress = ProgressController::Create();
    Recorder observer;
    progress->RegisterEventHandler(&observer);
    progress->SetRange(8);
    Handle const child = progress->CreateChild(4);
    child->SetRange(2);
    child->Advance(1);
    EXPECT_EQ(progress->GetFraction(), 0.25);
    EXPECT_EQ(progress->GetPosition(), 0U);
    child->SetRange(4); // a second piece of work on the same child
    EXPECT_EQ(child->GetFraction(), 0.0);
    child->Advance(1);
    EXPECT_EQ(progress->GetFraction(), 0.25);
    child->Advance(3);
    child->SetRange(1);
    child->Advance(1);
    EXPECT_EQ(progress->GetFraction(), 0.5);
    progress->CreateChild(2)->SetRange(0); // nothing to do is done
    progress->CreateChild(100)->SetRange(0);
    EXPECT_EQ(progress->GetFraction(), 1.0);
    EXPECT_EQ(observer.told, (std::vector<double>{0.25, 0.5, 0.75, 1.0}));
}

TEST(Progress, ChildrenOfAnEarlierRangeCountNoMore) {
    Handle const progress = ProgressController::Create();
    progress->SetRange(2);
    Handle const old = progress->CreateChild(2);
    old->SetRange(2);
    old->Advance(1);
    progress->SetRange(4);
    EXPECT_EQ(progress->GetFraction(), 0.0);
    old->Advance(1);
    EXPECT_EQ(progress->GetFraction(), 0.0);
    progress->Advance(1);
    EXPECT_EQ(progress->GetFraction(), 0.25);
}

TEST(Progress, StopIsSharedByTheFamilyAndChildrenKeepTheirParent) {
    for (auto* const create : {&ProgressController::Create, &ProgressControllerStub::Create}) {
        Handle progress = create();
        Handle const child = progress->CreateChild(1);
        Handle const grandchild = child->CreateChild(1);
        Handle const stranger = create();
        EXPECT_FALSE(grandchild->IsStopRequested());
        progress.reset();
        child->RequestStop();
        EXPECT_TRUE(grandchild->IsStopRequested());
        EXPECT_FALSE(stranger->IsStopRequested());
        grandchild->SetRange(1);
        grandchild->Advance(1);
    }
    Handle const stub = ProgressControllerStub::Create();
    Handle const child = stub->CreateChild(1);
    stub->RequestStop();
    EXPECT_TRUE(child->IsStopRequested());
}

TEST(Progress, ObserversAreToldInOrderAndMayLeaveInTheMiddle) {
    Handle const progress = ProgressController::Create();
    progress->SetRange(4);
    std::vector<int> order;
    Recorder first;
    auto second = std::make_unique<Recorder>();
    Recorder third;
    first.also = [&] {
        order.push_back(1);
        if (!second) return;
        progress->UnregisterEventHandler(second.get());
        second.reset(); // must not be called any more, not even in this publication
        progress->RegisterEventHandler(&third);
        progress->UnregisterEventHandler(&first);
        progress->RegisterEventHandler(&first);
    };
    third.also = [&] { order.push_back(3); };
    progress->RegisterEventHandler(&first);
    progress->RegisterEventHandler(second.get());
    progress->Advance(1);
    progress->Advance(1);
    EXPECT_EQ(order, (std::vector<int>{1, 3, 1}));
    EXPECT_EQ(third.told, (std::vector<double>{0.5}));
}

TEST(Progress, HandlerMayAdvanceAndNobodySeesItFall) {
    Handle const progress = ProgressController::Create();
    progress->SetRange(4);
    Recorder eager;
    Recorder late;
    eager.also = [&] {
        if (progress->GetPosition() < 4) progress->Advance(1);
    };
    progress->RegisterEventHandler(&eager);
    progress->RegisterEventHandler(&late);
    progress->Advance(1);
    EXPECT_TRUE(std::is_sorted(late.told.begin(), late.told.end()));
    EXPECT_EQ(late.told.back(), 1.0);
    EXPECT_EQ(eager.told, (std::vector<double>{0.25, 0.5, 0.75, 1.0}));
}

TEST(Progress, ManyThreadsReachTheEndAndNeverFallBack) {
    constexpr std::uint64_t THREADS = 6;
    constexpr std::uint64_t STEPS = 300;
    for (bool shared : {false, true}) {
        Handle const progress = ProgressController::Create();
        Recorder observer;
        progress->RegisterEventHandler(&observer);
        progress->SetRange(shared ? STEPS * THREADS : THREADS);
        std::vector<std::thread> threads;
        for (std::uint64_t i = 0; i < THREADS; ++i)
            threads.emplace_back([&] {
                Handle const own = shared ? progress : progress->CreateChild(1);
                if (!shared) own->SetRange(STEPS);
                for (std::uint64_t step = 0; step < STEPS; ++step) {
                    own->Advance(1);
                    Recorder passing; // dies after it unregisters: nobody may still be calling it
                    progress->RegisterEventHandler(&passing);
                    progress->UnregisterEventHandler(&passing);
                }
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(progress->GetFraction(), 1.0);
        ASSERT_FALSE(observer.told.empty());
        EXPECT_EQ(observer.told.back(), 1.0);
        EXPECT_TRUE(std::is_sorted(observer.told.begin(), observer.told.end()));
    }
}

} // namespace
} // namespace Velnor::Core
