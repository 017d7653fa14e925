#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <utility>

#include "orv/Array.h"
#include "orv/String.h"

using orv::CString;
using orv::TArray;

namespace {

// Counts the live instances and constructions of an element type, so that
// growth, insert and remove can be checked for leaks and double destruction.
template <int Tag>
struct TCounted {
    static inline int live = 0;
    static inline int constructed = 0;
    static inline int destroyed = 0;
    int value = 0;

    TCounted(int v = 0) : value(v) { ++live, ++constructed; }
    TCounted(const TCounted& o) : value(o.value) { ++live, ++constructed; }
    TCounted& operator=(const TCounted& o) = default;
    ~TCounted() { --live, ++destroyed; }
    bool operator==(const TCounted& o) const { return value == o.value; }
    static void Reset() { constructed = destroyed = 0; }
};

using CCopied = TCounted<0>;  // grows by Alloc + copy + Free
using CBitwise = TCounted<1>; // declared bitwise-movable: grows by Realloc

template <class F>
std::string ThrownMessage(F f)
{
    try {
        f();
    } catch (const std::out_of_range& e) {
        return e.what();
    }
    return "(nothing thrown)";
}

} // namespace

template <>
struct orv::TIsBitwiseMovable<CBitwise> : std::true_type {};

TEST(TArray, LayoutAndGrowth)
{
    // Virtual destructor, then data, capacity and size, all 64-bit.
    EXPECT_EQ(sizeof(TArray<int>), 4 * sizeof(void*));

    TArray<int> a;
    EXPECT_EQ(a.capacity(), 0u);
    const size_t expected[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
    for (int i = 0; i < 9; ++i) {
        a.add(i * 10);
        EXPECT_EQ(a.capacity(), expected[i]) << "after add number " << i + 1;
        EXPECT_EQ(a.size(), static_cast<size_t>(i + 1));
    }
    for (int i = 0; i < 9; ++i) EXPECT_EQ(a[i], i * 10);

    // Capacity never shrinks: not by remove, not by emptying.
    a.remove(0);
    EXPECT_EQ(a.capacity(), 16u);
    a.clear();
    EXPECT_EQ(a.size(), 0u);
    EXPECT_EQ(a.capacity(), 16u);
    EXPECT_NE(a.data(), nullptr);
    a.add(7);
    EXPECT_EQ(a.capacity(), 16u);
    // Destroy frees the buffer.
    a.Destroy();
    EXPECT_EQ(a.capacity(), 0u);
    EXPECT_EQ(a.data(), nullptr);

    // Growth starts at the present capacity and doubles until it covers.
    TArray<int> b;
    b.reserve(3);
    for (int i = 0; i < 3; ++i) b.add(i);
    EXPECT_EQ(b.capacity(), 3u);
    b.add(3);
    EXPECT_EQ(b.capacity(), 6u);
}

TEST(TArray, CheckedAccessAndRangeMessages)
{
    TArray<int> a{1, 2, 3}, empty;
    const TArray<int>& c = a;
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { (void)a[3]; }, "TArray: index out of range."},
        {[&] { (void)c[100]; }, "TArray: index out of range."},
        {[&] { (void)empty[0]; }, "TArray: index out of range."},
        {[&] { a.remove(3); }, "TArray::remove: index out of range."},
        {[&] { a.insert(4, 9); }, "TArray::insert: index out of range."}};
    for (const auto& [call, message] : cases) EXPECT_EQ(ThrownMessage(call), message);
    // A refused operation changes nothing.
    ASSERT_EQ(a.size(), 3u);
    EXPECT_EQ(a[0] + a[1] + a[2], 6);
    // The exception is the base layer's own type.
    EXPECT_THROW(a[5], orv::COutOfRangeException);
}

TEST(TArray, InsertAndRemoveShift)
{
    TArray<int> a;
    a.insert(0, 2);    // [2]
    a.insert(0, 0);    // [0 2]
    a.insert(1, 1);    // [0 1 2]
    a.insert(3, 3);    // at the size: appends
    a.insert(2, 100);  // [0 1 100 2 3]
    ASSERT_EQ(a.size(), 5u);
    const int afterInsert[] = {0, 1, 100, 2, 3};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(a[i], afterInsert[i]);
    a.remove(2);
    a.remove(0);
    a.remove(2); // the last
    ASSERT_EQ(a.size(), 2u);
    EXPECT_EQ(std::tuple(a[0], a[1]), std::tuple(1, 2));
    EXPECT_EQ(a.find(2), 1);
    EXPECT_EQ(a.find(42), -1);
}

TEST(TArray, ElementsAreConstructedAndDestroyedExactlyOnce)
{
    {
        TArray<CCopied> a;
        for (int i = 0; i < 37; ++i) a.add(CCopied(i));
        EXPECT_EQ(CCopied::live, 37);
        a.insert(5, CCopied(-1));
        a.insert(0, a[10]); // a value that lives inside the array itself
        a.remove(3);
        EXPECT_EQ(CCopied::live, 38);
        EXPECT_EQ(std::tuple(a[0].value, a[5].value, a[6].value), std::tuple(9, -1, 5));
        EXPECT_THROW(a.insert(100, CCopied(1)), std::out_of_range);
        EXPECT_EQ(CCopied::live, 38);
        a.clear();
        EXPECT_EQ(CCopied::live, 0);
        for (int i = 0; i < 5; ++i) a.add(CCopied(i));
        TArray<CCopied> copy(a);
        TArray<CCopied> moved(std::move(copy));
        EXPECT_EQ(copy.size(), 0u);
        EXPECT_EQ(CCopied::live, 10);
        a = moved;
        EXPECT_EQ(CCopied::live, 10);
        a.resize(2);
        EXPECT_EQ(CCopied::live, 7);
    }
    EXPECT_EQ(CCopied::live, 0);
}

TEST(TArray, BitwiseMovableGrowsByReallocWithoutCopies)
{
    // Fill both arrays to a full capacity of 4, then add the fifth element:
    // the copied type constructs the four old elements anew in the new block
    // and destroys the old ones; the bitwise type is moved by Realloc.
    TArray<CCopied> copied;
    TArray<CBitwise> bitwise;
    for (int i = 0; i < 4; ++i) {
        copied.add(CCopied(i));
        bitwise.add(CBitwise(i));
    }
    ASSERT_EQ(std::tuple(copied.capacity(), bitwise.capacity()), std::tuple(4u, 4u));
    CCopied::Reset();
    CBitwise::Reset();
    copied.add(CCopied(4));
    bitwise.add(CBitwise(4));
    EXPECT_EQ(std::tuple(copied.capacity(), bitwise.capacity()), std::tuple(8u, 8u));
    EXPECT_EQ(CCopied::constructed - CBitwise::constructed, 4);
    EXPECT_EQ(CCopied::destroyed - CBitwise::destroyed, 4);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(copied[i].value == i && bitwise[i].value == i) << i;
    // Insert and remove shift bitwise elements without constructing any.
    CBitwise::Reset();
    bitwise.remove(0);
    EXPECT_EQ(std::tuple(CBitwise::constructed, CBitwise::destroyed, bitwise[0].value, bitwise[3].value),
              std::tuple(0, 1, 1, 4));

    // Plain numbers take the same path over many growths.
    TArray<double> d;
    for (int i = 0; i < 100000; ++i) d.add(i * 0.5);
    EXPECT_EQ(d.capacity(), 131072u);
    bool same = true;
    for (int i = 0; i < 100000; ++i) same = same && d.get(i) == i * 0.5;
    EXPECT_TRUE(same);
}

TEST(TArray, StringsSurviveGrowthAndSelfReference)
{
    TArray<CString> a;
    a.add(CString("seed"));
    // Each add of an element of the array itself happens while it is full
    // at sizes 1, 2, 4, ...: the value must be copied before the buffer moves.
    for (int i = 0; i < 10; ++i) a.add(a[a.size() - 1] + "x");
    a.insert(0, a[a.size() - 1]);
    ASSERT_EQ(a.size(), 12u);
    EXPECT_TRUE(a[1].Equals("seed"));
    EXPECT_TRUE(a[11].Equals("seedxxxxxxxxxx"));
    EXPECT_TRUE(a[0].Equals("seedxxxxxxxxxx"));
    for (int i = 0; i < 1000; ++i) a.add(CString::FromFormat("s%d", i));
    EXPECT_TRUE(a[12].Equals("s0"));
    EXPECT_TRUE(a[1011].Equals("s999"));
}
