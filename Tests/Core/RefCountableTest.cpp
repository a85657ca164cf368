#include "Core/RefCountable.h"

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>
#include <vector>

namespace Velnor {
namespace {

class Counted : public virtual IRefCountable {
public:
    explicit Counted(int& ends, int start = 0) : destroyed(ends), value(start) {}
    ~Counted() override { ++destroyed; }
    int& destroyed;
    int value;
};

class Plain : public IRefCountable {
public:
    int value = 7;
};

TEST(RefCountable, HandlesCountAndTheLastOneDestroys) {
    int destroyed = 0;
    intrusive_ptr<Counted> first = MakeShared<Counted>(destroyed, 3);
    EXPECT_EQ(first->GetRefCount(), 1U);
    EXPECT_EQ(first->AddRef(), 2U);
    EXPECT_EQ(first->Release(), 1U);
    intrusive_ptr<IRefCountable const> second = first;
    EXPECT_EQ(second->GetRefCount(), 2U);
    first.reset();
    EXPECT_EQ(destroyed, 0);
    second.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(RefCountable, OwnersAreNotCopiedWithTheObject) {
    intrusive_ptr<Plain> const first = MakeShared<Plain>();
    intrusive_ptr<Plain> const again = first;
    intrusive_ptr<Plain> const copy(new RefCounted<Plain>(static_cast<RefCounted<Plain> const&>(*first)));
    EXPECT_EQ(copy->GetRefCount(), 1U);
    auto const& source = static_cast<RefCounted<Plain> const&>(*first);
    static_cast<RefCounted<Plain>&>(*copy) = source;
    EXPECT_EQ(copy->GetRefCount(), 1U);
    EXPECT_EQ(first->GetRefCount(), 2U);
}

TEST(RefCountable, ManyThreadsEndOneObjectOnceAndSeeEachOthersWrites) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 2000;
    for (int repeat = 0; repeat < 20; ++repeat) {
        int destroyed =
            0; // written by whichever thread lets go last: a missing acquire shows under the thread sanitizer
        std::vector<std::thread> threads;
        {
            intrusive_ptr<Counted> const object = MakeShared<Counted>(destroyed);
            for (int i = 0; i < THREADS; ++i)
                threads.emplace_back([own = object] {
                    for (int round = 0; round < ROUNDS; ++round) intrusive_ptr<Counted const> const handle = own;
                });
        }
        for (std::thread& thread : threads) thread.join();
        threads.clear();
        EXPECT_EQ(destroyed, 1);
    }
}

} // namespace
} // namespace Velnor
