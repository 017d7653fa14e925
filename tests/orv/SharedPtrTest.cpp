#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "orv/SharedPtr.h"

using orv::TSharedPtr;

namespace {

struct SBase {
    explicit SBase(int* deaths) : m_deaths(deaths) {}
    virtual ~SBase() { ++*m_deaths; }
    int* m_deaths;
};

struct SDerived : SBase {
    using SBase::SBase;
    int extra = 42;
};

struct SOther : SBase {
    using SBase::SBase;
};

std::atomic<int> gDestroyCalls{0};
SBase* gDestroyedObject = nullptr;

void CountingDestroy(SBase* p)
{
    ++gDestroyCalls;
    gDestroyedObject = p;
    delete p;
}

void CountingDestroyDerived(SDerived* p) { CountingDestroy(p); }

} // namespace

TEST(TSharedPtr, LayoutAndDestroyWord)
{
    // Object, counter, destroy word.
    EXPECT_EQ(sizeof(TSharedPtr<SBase>), 3 * sizeof(void*));

    int deaths = 0;
    TSharedPtr<SBase> empty;
    EXPECT_EQ(empty.counter(), nullptr);
    EXPECT_EQ(TSharedPtr<SBase>(static_cast<SBase*>(nullptr)).counter(), nullptr);

    // Destroy word 0: delete through the virtual destructor, on the last
    // release only.
    {
        TSharedPtr<SBase> a(new SDerived(&deaths));
        EXPECT_EQ(a.destroyWord(), 0u);
        EXPECT_EQ(a.useCount(), 1);
        {
            TSharedPtr<SBase> b = a;
            TSharedPtr<SBase> c;
            c = b;
            c = c; // self-assignment keeps the reference
            EXPECT_EQ(a.useCount(), 3);
        }
        EXPECT_EQ(deaths, 0);
        TSharedPtr<SBase> moved(std::move(a));
        EXPECT_TRUE(a.isNull());
        EXPECT_EQ(moved.useCount(), 1);
    }
    EXPECT_EQ(deaths, 1);

    // Destroy word all ones: the last release leaves the object alone.
    {
        SDerived onStack(&deaths);
        TSharedPtr<SBase> p(&onStack, orv::noDestroy);
        EXPECT_EQ(p.destroyWord(), ~uintptr_t(0));
        TSharedPtr<SBase> q = p;
        p.reset();
        q.reset();
        EXPECT_EQ(deaths, 1);
    }
    EXPECT_EQ(deaths, 2); // onStack's own end

    // Any other word is a function, called exactly once, with the object.
    gDestroyCalls = 0;
    SBase* raw = new SBase(&deaths);
    {
        TSharedPtr<SBase> p(raw, &CountingDestroy);
        TSharedPtr<SBase> q = p;
        p = nullptr;
        EXPECT_EQ(gDestroyCalls, 0);
    }
    EXPECT_EQ(gDestroyCalls, 1);
    EXPECT_EQ(gDestroyedObject, raw);
    EXPECT_EQ(deaths, 3);
}

TEST(TSharedPtr, CastsShareCounterAndDestroyWord)
{
    int deaths = 0;
    gDestroyCalls = 0;
    {
        TSharedPtr<SDerived> derived(new SDerived(&deaths), &CountingDestroyDerived);
        TSharedPtr<SBase> base = derived; // implicit up-cast; one shared count
        EXPECT_EQ(derived.useCount(), 2);

        TSharedPtr<SDerived> back = base.DynamicCast<SDerived>();
        ASSERT_FALSE(back.isNull());
        EXPECT_EQ(back->extra, 42);
        EXPECT_EQ(derived.useCount(), 3);

        // A failed cast is null and takes no reference.
        TSharedPtr<SOther> wrong = base.DynamicCast<SOther>();
        EXPECT_TRUE(wrong.isNull());
        EXPECT_EQ(wrong.counter(), nullptr);
        EXPECT_EQ(derived.useCount(), 3);

        TSharedPtr<SDerived> fast = base.StaticCast<SDerived>();
        EXPECT_EQ(fast.get(), derived.get());
        EXPECT_EQ(derived.useCount(), 4);

        // Dropping all but the cast copy keeps the object alive; its last
        // release calls the destroy function the casts carried along.
        derived.reset();
        base.reset();
        fast.reset();
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(back.useCount(), 1);
    }
    EXPECT_EQ(gDestroyCalls, 1);
    EXPECT_EQ(deaths, 1);
}

TEST(TSharedPtr, CountingIsThreadSafe)
{
    // Several threads copy and drop references to one object at once; then
    // they all drop their last copies together. The object dies once, at the
    // very end.
    constexpr int kThreads = 4;
    constexpr int kRounds = 20;
    for (int round = 0; round < kRounds; ++round) {
        std::atomic<int> deaths{0};
        struct SCounted {
            explicit SCounted(std::atomic<int>* d) : deaths(d) {}
            virtual ~SCounted() { ++*deaths; }
            std::atomic<int>* deaths;
        };
        auto* object = new SCounted(&deaths);
        std::vector<TSharedPtr<SCounted>> held;
        {
            TSharedPtr<SCounted> origin(object);
            for (int i = 0; i < kThreads; ++i) held.push_back(origin);
        }
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                while (!go) std::this_thread::yield();
                TSharedPtr<SCounted> mine = std::move(held[t]);
                for (int i = 0; i < 20000; ++i) {
                    TSharedPtr<SCounted> copy = mine;
                    TSharedPtr<SCounted> again(copy);
                }
                EXPECT_EQ(deaths.load(), 0);
            });
        }
        go = true;
        for (auto& th : threads) th.join();
        EXPECT_EQ(deaths.load(), 1) << "round " << round;
    }
}
