#include "vyvector.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "counted.h"

TEST(VyVectorDataTest, GrowFollowsTheAllocationRule)
{
    // An int vector: 16-byte header plus 4-byte elements.
    EXPECT_EQ(VyVectorData::grow(20, 1, 4, false), 2);       // 20 bytes -> 24
    EXPECT_EQ(VyVectorData::grow(20, 2, 4, false), 4);       // 24 -> 32
    EXPECT_EQ(VyVectorData::grow(20, 11, 4, false), 12);     // 60 -> 64
    EXPECT_EQ(VyVectorData::grow(20, 12, 4, false), 12);     // 64 -> 64
    EXPECT_EQ(VyVectorData::grow(20, 13, 4, false), 28);     // 68 -> 128
    EXPECT_EQ(VyVectorData::grow(20, 1020, 4, false), 1020); // 4096 exactly
    EXPECT_EQ(VyVectorData::grow(20, 1021, 4, false), 2044); // 4100 -> 8192
    EXPECT_EQ(VyVectorData::grow(20, 10, 4, true), 15);
    EXPECT_EQ(VyVectorData::grow(16, 0, 16, false), 0); // zero header, zero count
    EXPECT_EQ(VyVectorData::grow(20, 0x10000000, 4, false), 0x7fffffff / 4);
    EXPECT_EQ(VyVectorData::grow(17, 3, 1, false), 8); // 19 bytes -> 24
}

TEST(VyVectorDataTest, GrowNeverReturnsLessThanAsked)
{
    for (int elementSize : {1, 2, 4, 8, 12, 20}) {
        int previous = 0;
        for (int n = 0; n < 5000; ++n) {
            const int cap = VyVectorData::grow(16 + elementSize, n, elementSize, false);
            ASSERT_GE(cap, n) << elementSize;
            ASSERT_GE(cap, previous) << elementSize;
            previous = cap;
        }
    }
}

TEST(VyVectorDataTest, AlignedAllocationKeepsRawPointerBeforeBlock)
{
    for (int alignment : {16, 32, 64}) {
        VyVectorData* x = VyVectorData::allocate(100, alignment);
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(x) % alignment, 0u);
        char* raw = static_cast<char*>(reinterpret_cast<void**>(x)[-1]);
        EXPECT_GT(reinterpret_cast<char*>(x), raw);
        EXPECT_LE(reinterpret_cast<char*>(x), raw + alignment);
        memset(static_cast<void*>(x), 0x5a, 100);
        x = VyVectorData::reallocate(x, 4000, 100, alignment);
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(x) % alignment, 0u);
        memset(static_cast<void*>(x), 0x5a, 4000);
        VyVectorData::freeData(x, alignment);
    }
    VyVectorData::freeData(nullptr, 32);
}

TEST(VyVectorDataTest, MallocCopiesHeaderAndLeadingElements)
{
    VyVector<int> v;
    for (int i = 0; i < 5; ++i)
        v.append(i * 11);
    VyVectorData* x = VyVectorData::malloc(20, 3, 4, v.d);
    EXPECT_EQ(x->size, 5);
    EXPECT_EQ(x->alloc, v.capacity());
    const int* e = reinterpret_cast<const int*>(reinterpret_cast<char*>(x) + 16);
    EXPECT_EQ(e[0], 0);
    EXPECT_EQ(e[2], 22);
    ::free(x);
}

TEST(VyVectorTest, SharedNullIsTheEmptyBlock)
{
    VyVector<int> a, b;
    EXPECT_EQ(a.d, &VyVectorData::shared_null);
    EXPECT_TRUE(a.isSharedWith(b));
    EXPECT_EQ(VyVectorData::shared_null.size, 0);
    EXPECT_EQ(VyVectorData::shared_null.alloc, 0);
    EXPECT_EQ(VyVectorData::shared_null.canShare, 1u);
    EXPECT_EQ(VyVectorData::shared_null.fixedCapacity, 0u);
    const int before = VyVectorData::shared_null.ref.load();
    {
        VyVector<int> c(a);
        EXPECT_EQ(VyVectorData::shared_null.ref.load(), before + 1);
    }
    EXPECT_EQ(VyVectorData::shared_null.ref.load(), before);
    a.append(1);
    a.clear();
    EXPECT_EQ(a.d, &VyVectorData::shared_null);
}

TEST(VyVectorTest, AppendGrowsByTheRuleAndSetsFlags)
{
    VyVector<int> v;
    std::vector<int> caps;
    for (int i = 0; i < 40; ++i) {
        v.append(i);
        if (caps.empty() || caps.back() != v.capacity())
            caps.push_back(v.capacity());
    }
    EXPECT_EQ(caps, (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60}));
    EXPECT_EQ(v.d->canShare, 1u);
    EXPECT_EQ(v.d->fixedCapacity, 0u);
    EXPECT_EQ(v.d->reserved, 0u);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(v.at(i), i);
}

TEST(VyVectorTest, PointerVectorsUseTargetCapacities)
{
    // The same capacities on a 64-bit host as on the 32-bit target.
    VyVector<const void*> v;
    for (int i = 0; i < 13; ++i)
        v.append(&v);
    EXPECT_EQ(v.capacity(), 28);
}

TEST(VyVectorTest, ResizeShrinksOnlyBelowHalfUnlessReserved)
{
    VyVector<int> v;
    v.resize(100);
    EXPECT_EQ(v.capacity(), 124); // 416 bytes -> 512
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(v[i], 0);
    v.resize(70);
    EXPECT_EQ(v.capacity(), 124); // 70 is not below half the capacity
    v.resize(61);
    EXPECT_EQ(v.capacity(), 124);
    v.resize(50);
    EXPECT_EQ(v.capacity(), 60); // 216 bytes -> 256
    v.reserve(200);
    EXPECT_EQ(v.capacity(), 200);
    EXPECT_EQ(v.d->fixedCapacity, 1u);
    v.resize(3);
    EXPECT_EQ(v.capacity(), 200);
    // A detached copy keeps the reservation.
    VyVector<int> w = v;
    w.append(1);
    EXPECT_EQ(w.d->fixedCapacity, 1u);
    w.squeeze();
    EXPECT_EQ(w.capacity(), 4);
    EXPECT_EQ(w.d->fixedCapacity, 0u);
}

TEST(VyVectorTest, ResizeValueInitialisesNewElements)
{
    VyVector<int> v(3, 7);
    v.resize(1);
    v.resize(5);
    EXPECT_EQ(v[0], 7);
    for (int i = 1; i < 5; ++i)
        EXPECT_EQ(v[i], 0);
}

TEST(VyVectorTest, SelfReferencingMutatorsAreSafe)
{
    VyVector<int> v;
    v.append(5);
    for (int i = 0; i < 100; ++i)
        v.append(v.at(v.size() - 1) + 1); // reallocates while reading its own element
    for (int i = 0; i < 101; ++i)
        ASSERT_EQ(v.at(i), 5 + i);
    v.insert(0, 3, v.at(100));
    EXPECT_EQ(v[0], 105);
    EXPECT_EQ(v[2], 105);
    EXPECT_EQ(v[3], 5);
    v += v;
    EXPECT_EQ(v.size(), 208);
    EXPECT_EQ(v[104], 105);
    v.fill(v.at(3));
    EXPECT_EQ(v.count(5), 208);
}

TEST(VyVectorTest, SearchAndCompare)
{
    VyVector<int> v;
    v << 1 << 2 << 3 << 2 << 1;
    EXPECT_EQ(v.indexOf(2), 1);
    EXPECT_EQ(v.indexOf(2, 2), 3);
    EXPECT_EQ(v.indexOf(1, -1), 4);
    EXPECT_EQ(v.lastIndexOf(2), 3);
    EXPECT_EQ(v.lastIndexOf(2, 2), 1);
    EXPECT_EQ(v.lastIndexOf(9), -1);
    EXPECT_TRUE(v.contains(3));
    EXPECT_FALSE(v.contains(4));
    EXPECT_EQ(v.count(1), 2);
    VyVector<int> w;
    w << 1 << 2 << 3 << 2 << 1;
    EXPECT_TRUE(v == w);
    w[4] = 0;
    EXPECT_TRUE(v != w);
    EXPECT_EQ(v.value(9), 0);
    EXPECT_EQ(v.value(-1, 42), 42);
}

// ---- typed tests: every mutator leaves a shared original alone and leaks nothing ----

template <typename T> class VyVectorTypedTest : public CountedTest
{
};
using ElementTypes = ::testing::Types<int, Counted>;
TYPED_TEST_SUITE(VyVectorTypedTest, ElementTypes);

template <typename T> static VyVector<T> makeVector(int n)
{
    VyVector<T> v;
    for (int i = 0; i < n; ++i)
        v.append(T(i * 10));
    return v;
}

TYPED_TEST(VyVectorTypedTest, EveryMutatorDetachesFromACopy)
{
    using T = TypeParam;
    using Mutator = void (*)(VyVector<T>&);
    const Mutator mutators[] = {
        [](VyVector<T>& v) { v.append(T(99)); },
        [](VyVector<T>& v) { v.prepend(T(99)); },
        [](VyVector<T>& v) { v.insert(2, 3, T(99)); },
        [](VyVector<T>& v) { v.replace(1, T(99)); },
        [](VyVector<T>& v) { v[2] = T(99); },
        [](VyVector<T>& v) { v.last() = T(99); },
        [](VyVector<T>& v) { v.first() = T(99); },
        [](VyVector<T>& v) { v.remove(1); },
        [](VyVector<T>& v) { v.remove(1, 3); },
        [](VyVector<T>& v) { v.removeLast(); },
        [](VyVector<T>& v) { v.resize(2); },
        [](VyVector<T>& v) { v.resize(9); },
        [](VyVector<T>& v) { v.reserve(50); },
        [](VyVector<T>& v) { v.squeeze(); },
        [](VyVector<T>& v) { v.fill(T(99)); },
        [](VyVector<T>& v) { v += makeVector<T>(2); },
        [](VyVector<T>& v) { *v.begin() = T(99); },
        [](VyVector<T>& v) { v.data()[0] = T(99); },
        [](VyVector<T>& v) { v.clear(); },
        [](VyVector<T>& v) { v.detach(); },
    };
    for (Mutator mutate : mutators) {
        VyVector<T> original = makeVector<T>(5);
        VyVector<T> copy = original;
        ASSERT_TRUE(copy.isSharedWith(original));
        mutate(copy);
        EXPECT_FALSE(copy.isSharedWith(original));
        ASSERT_EQ(original.size(), 5);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(valueOf(original.at(i)), i * 10);
        EXPECT_EQ(original.d->ref.load(), 1);
    }
}

TYPED_TEST(VyVectorTypedTest, RandomOperationsMatchStdVector)
{
    using T = TypeParam;
    std::mt19937 rng(1234);
    for (int round = 0; round < 20; ++round) {
        VyVector<T> v;
        std::vector<int> model;
        VyVector<T> snapshot;
        std::vector<int> snapshotModel;
        for (int step = 0; step < 400; ++step) {
            const int op = int(rng() % 10);
            const int n = int(model.size());
            const int value = int(rng() % 1000);
            switch (op) {
            case 0:
            case 1:
                v.append(T(value));
                model.push_back(value);
                break;
            case 2: {
                const int i = n ? int(rng() % (n + 1)) : 0;
                const int count = int(rng() % 3);
                v.insert(i, count, T(value));
                model.insert(model.begin() + i, count, value);
                break;
            }
            case 3:
                if (n) {
                    const int i = int(rng() % n);
                    v.remove(i);
                    model.erase(model.begin() + i);
                }
                break;
            case 4: {
                const int i = int(rng() % (n + 2)) - 1;
                const int count = int(rng() % 5);
                v.remove(i, count);
                int from = i < 0 ? 0 : i;
                int to = i + count > n ? n : i + count;
                if (from < to)
                    model.erase(model.begin() + from, model.begin() + to);
                break;
            }
            case 5: {
                const int size = int(rng() % 40);
                v.resize(size);
                model.resize(size, 0);
                break;
            }
            case 6:
                if (n) {
                    const int i = int(rng() % n);
                    v[i] = T(value);
                    model[i] = value;
                }
                break;
            case 7:
                snapshot = v;
                snapshotModel = model;
                break;
            case 8:
                if (rng() % 8 == 0) {
                    v.squeeze();
                } else if (n) {
                    const int i = int(rng() % n);
                    v.append(v.at(i));
                    model.push_back(model[i]);
                }
                break;
            case 9:
                if (rng() % 10 == 0) {
                    v.clear();
                    model.clear();
                } else {
                    v.reserve(int(rng() % 64));
                }
                break;
            }
            ASSERT_EQ(v.size(), int(model.size()));
            ASSERT_LE(v.size(), v.capacity());
            for (int i = 0; i < v.size(); ++i)
                ASSERT_EQ(valueOf(v.at(i)), model[i]) << "step " << step;
            ASSERT_EQ(snapshot.size(), int(snapshotModel.size()));
            for (int i = 0; i < snapshot.size(); ++i)
                ASSERT_EQ(valueOf(snapshot.at(i)), snapshotModel[i]);
        }
    }
}

TEST(VyVectorCountedTest, ThrowingCopyLeavesSharedOriginalIntact)
{
    Counted::reset();
    {
        VyVector<Counted> original = makeVector<Counted>(6);
        VyVector<Counted> copy = original;
        Counted::copiesUntilThrow = 4;
        EXPECT_THROW(copy.append(Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_TRUE(copy.isSharedWith(original));
        ASSERT_EQ(original.size(), 6);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(original.at(i).value, i * 10);
    }
    EXPECT_EQ(Counted::living(), 0);
}

TEST(VyVectorCountedTest, SizedConstructorsFillAndCleanUpOnThrow)
{
    Counted::reset();
    {
        VyVector<Counted> a(5), b(3, Counted(7)), none(0);
        EXPECT_EQ(a.size(), 5);
        EXPECT_EQ(a.capacity(), 5);
        EXPECT_EQ(a.at(4).value, 0);
        EXPECT_EQ(b.at(2).value, 7);
        EXPECT_EQ(none.d, &VyVectorData::shared_null);
        Counted::copiesUntilThrow = 3;
        EXPECT_THROW(VyVector<Counted>(6, Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
    }
    EXPECT_EQ(Counted::living(), 0);
}

TEST(VyVectorCountedTest, DestroysExcessFromTheBack)
{
    Counted::reset();
    VyVector<Counted> v = makeVector<Counted>(5);
    const int destroyedBefore = Counted::destroyed;
    v.resize(4); // within the capacity: only the last element goes
    EXPECT_EQ(Counted::destroyed - destroyedBefore, 1);
    ASSERT_EQ(v.size(), 4);
    EXPECT_EQ(v.at(3).value, 30);
    v.clear();
    EXPECT_EQ(Counted::living(), 0);
}

using VyVectorDeathTest = ::testing::Test;

TEST(VyVectorDeathTest, AssertionTexts)
{
    VyVector<int> v;
    v.append(1);
    const VyVector<int>& cv = v;
    EXPECT_DEATH(v[1] = 0,
                 "\\./\\.\\./include/pub/vyvector:906: T& VyVector<T>::operator\\[\\]\\(int\\) "
                 "\\[with T = int\\]: Assertion `i >= 0 && i < d->size' failed");
    EXPECT_DEATH((void)cv[-1], "\\./\\.\\./include/pub/vyvector:902: const T& "
                               "VyVector<T>::operator\\[\\]\\(int\\) const \\[with T = int\\]: "
                               "Assertion `i >= 0 && i < d->size' failed");
    EXPECT_DEATH(v.remove(3),
                 "\\./\\.\\./include/pub/vyvector:922: void VyVector<T>::remove\\(int\\) "
                 "\\[with T = int\\]: Assertion `i >= 0 && i < d->size' failed");
    EXPECT_DEATH(v.realloc(3, 2), "\\./\\.\\./include/pub/vyvector:1004: void "
                                  "VyVector<T>::realloc\\(int, int\\) \\[with T = int\\]: "
                                  "Assertion `asize <= aalloc' failed");
    VyVector<double> empty;
    EXPECT_DEATH(empty.last(), "\\./\\.\\./include/pub/vyvector:724: T& VyVector<T>::last\\(\\) "
                               "\\[with T = double\\]: Assertion `!isEmpty\\(\\)' failed");
}
