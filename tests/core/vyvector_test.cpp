#include "vyvector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "counted.h"

TEST(VyVectorDataTest, GrowFollowsTheAllocationRule)
{
    // An int vector: 16-byte header plus 4-byte elements.
    const int cases[][4] = {
        {20, 1, 4, 2},       // 20 bytes -> 24
        {20, 11, 4, 12},     // 60 -> 64
        {20, 12, 4, 12},     // 64 -> 64
        {20, 13, 4, 28},     // 68 -> 128
        {20, 1020, 4, 1020}, // 4096 exactly
        {20, 1021, 4, 2044}, // 4100 -> 8192
        {16, 0, 16, 0},      // zero header, zero count
        {17, 3, 1, 8},       // 19 bytes -> 24
        {20, 0x10000000, 4, 0x7fffffff / 4},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VyVectorData::grow(c[0], c[1], c[2], false), c[3]) << c[1];
    EXPECT_EQ(VyVectorData::grow(20, 10, 4, true), 15);
    for (int elementSize : {1, 2, 4, 8, 12, 20}) {
        int previous = 0;
        for (int n = 0; n < 5000; ++n) {
            const int cap = VyVectorData::grow(16 + elementSize, n, elementSize, false);
            ASSERT_GE(cap, std::max(n, previous)) << elementSize;
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

TEST(VyVectorTest, SharedNullAndCapacities)
{
    VyVector<int> a, b;
    EXPECT_EQ(a.d, &VyVectorData::shared_null);
    EXPECT_TRUE(a.isSharedWith(b));
    EXPECT_EQ(VyVectorData::shared_null.alloc + VyVectorData::shared_null.size, 0);
    EXPECT_EQ(VyVectorData::shared_null.canShare, 1u);
    // Appending grows by the allocation rule; pointers take the 32-bit target's capacities.
    VyVector<const void*> p;
    std::vector<int> caps, pointerCaps;
    for (int i = 0; i < 40; ++i) {
        a.append(i);
        p.append(&p);
        if (caps.empty() || caps.back() != a.capacity())
            caps.push_back(a.capacity());
        if (pointerCaps.empty() || pointerCaps.back() != p.capacity())
            pointerCaps.push_back(p.capacity());
    }
    EXPECT_EQ(caps, (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60}));
    EXPECT_EQ(pointerCaps, caps);
    EXPECT_EQ(int(a.d->canShare + a.d->fixedCapacity + a.d->reserved), 1);
    VyVectorData* x = VyVectorData::malloc(20, 3, 4, a.d); // header and leading elements
    EXPECT_EQ(x->size, 40);
    EXPECT_EQ(x->alloc, 60);
    EXPECT_EQ(reinterpret_cast<const int*>(reinterpret_cast<char*>(x) + 16)[2], 2);
    ::free(x);
    a.clear();
    EXPECT_EQ(a.d, &VyVectorData::shared_null);
}

TEST(VyVectorTest, ResizeShrinksOnlyBelowHalfUnlessReserved)
{
    VyVector<int> v;
    v.resize(100);
    EXPECT_EQ(v.capacity(), 124); // 416 bytes -> 512
    v.resize(61);
    EXPECT_EQ(v.capacity(), 124); // 61 is not below half the capacity
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

// Elements aligned to 16 bytes stay aligned and in place through every growth, also where
// malloc aligns to 8 only (32-bit ARM), so a moved block may start at another offset.
TEST(VyVectorTest, OverAlignedElementsSurviveGrowth)
{
    struct alignas(16) Wide {
        int value;
    };
    VyVector<Wide> v;
    // A small block taken before each growth keeps realloc from extending in place.
    std::vector<std::vector<char>> fillers;
    const auto intact = [&v](int n) {
        bool ok = v.size() == n && reinterpret_cast<uintptr_t>(v.constData()) % 16 == 0;
        for (int i = 0; ok && i < n; ++i)
            ok = v.constData()[i].value == i;
        return ok;
    };
    for (int i = 0; i < 3000; ++i) {
        const int capacity = v.capacity();
        if (v.size() == capacity)
            fillers.emplace_back(20);
        v.append(Wide{i});
        if (v.capacity() != capacity) {
            ASSERT_TRUE(intact(i + 1)) << "append " << i;
        }
    }
    for (int n = 4000; n < 100000; n += n / 2) {
        fillers.emplace_back(20);
        v.reserve(n);
        ASSERT_TRUE(intact(3000)) << "reserve " << n;
    }
    v.squeeze();
    EXPECT_TRUE(intact(3000));
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

// Every mutator, often right after a copy was taken: the copy keeps its contents.
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
            const int n = int(model.size());
            const int value = int(rng() % 50); // small, so searches find repeats
            const int i = n ? int(rng() % unsigned(n)) : 0;
            const bool own = n && rng() % 2;
            switch (n ? rng() % 12 : rng() % 4) {
            case 0:
                v.append(T(value));
                model.push_back(value);
                break;
            case 1:
                v.prepend(T(value));
                model.insert(model.begin(), value);
                break;
            case 2: { // sometimes an element of its own, perhaps across a reallocation
                const int at = int(rng() % unsigned(n + 1));
                const int count = int(rng() % 3);
                if (own)
                    v.insert(at, count, v.at(i));
                else
                    v.insert(at, count, T(value));
                model.insert(model.begin() + at, count, own ? model[size_t(i)] : value);
                break;
            }
            case 3: {
                const int size = int(rng() % 40);
                v.resize(size);
                model.resize(size_t(size), 0);
                break;
            }
            case 4:
                snapshot = v;
                snapshotModel = model;
                break;
            case 5:
                v.remove(i);
                model.erase(model.begin() + i);
                break;
            case 6: {
                const int at = int(rng() % unsigned(n + 2)) - 1;
                const int count = int(rng() % 5);
                v.remove(at, count);
                const int to = std::min(at + count, n);
                if (std::max(at, 0) < to)
                    model.erase(model.begin() + std::max(at, 0), model.begin() + to);
                break;
            }
            case 7: { // the ways to write one element
                const unsigned how = rng() % 6;
                const int at = how == 3 ? 0 : how == 4 ? n - 1 : i;
                if (how == 5) {
                    v.replace(at, T(value));
                } else {
                    (how == 0   ? v[at]
                     : how == 1 ? v.data()[at]
                     : how == 2 ? v.begin()[at]
                     : how == 3 ? v.first()
                                : v.last()) = T(value);
                }
                model[size_t(at)] = value;
                break;
            }
            case 8:
                v.append(v.at(i));
                model.push_back(model[size_t(i)]);
                break;
            case 9:
                v.removeLast();
                model.pop_back();
                break;
            case 10:
                v += snapshot;
                model.insert(model.end(), snapshotModel.begin(), snapshotModel.end());
                break;
            case 11: {
                const unsigned how = rng() % 8;
                if (how == 0) {
                    v.clear();
                    model.clear();
                } else if (how == 1) {
                    v.fill(v.at(i));
                    model.assign(model.size(), model[size_t(i)]);
                } else if (how == 2) {
                    v.squeeze();
                } else {
                    v.reserve(int(rng() % 64));
                }
                break;
            }
            }
            ASSERT_EQ(v.size(), int(model.size()));
            ASSERT_LE(v.size(), v.capacity());
            for (int i = 0; i < v.size(); ++i)
                ASSERT_EQ(valueOf(v.at(i)), model[i]) << "step " << step;
            ASSERT_EQ(snapshot.size(), int(snapshotModel.size()));
            for (int i = 0; i < snapshot.size(); ++i)
                ASSERT_EQ(valueOf(snapshot.at(i)), snapshotModel[i]);
            ASSERT_EQ(v == snapshot, model == snapshotModel);
            // Searches from a random start, negative ones counting from the end.
            const int size = int(model.size());
            const int from = int(rng() % unsigned(2 * size + 3)) - size - 1;
            int first = from < 0 ? std::max(from + size, 0) : from;
            while (first < size && model[size_t(first)] != value)
                ++first;
            int last = from < 0 ? from + size : std::min(from, size - 1);
            while (last >= 0 && model[size_t(last)] != value)
                --last;
            ASSERT_EQ(v.indexOf(T(value), from), first < size ? first : -1);
            ASSERT_EQ(v.lastIndexOf(T(value), from), last);
            ASSERT_EQ(v.count(T(value)), int(std::count(model.begin(), model.end(), value)));
            ASSERT_EQ(v.contains(T(value)), std::count(model.begin(), model.end(), value) > 0);
        }
    }
}

// A copy that throws half way leaves the shared original intact and leaks nothing; shrinking
// within the capacity destroys from the back.
TEST(VyVectorCountedTest, ThrowingCopiesAndShrinkingLeakNothing)
{
    Counted::reset();
    {
        VyVector<Counted> original = makeVector<Counted>(6);
        VyVector<Counted> copy = original;
        Counted::copiesUntilThrow = 4;
        EXPECT_THROW(copy.append(Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 3;
        EXPECT_THROW(VyVector<Counted>(6, Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_TRUE(copy.isSharedWith(original));
        ASSERT_EQ(original.size(), 6);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(original.at(i).value, i * 10);
        VyVector<Counted> a(5), b(3, Counted(7));
        EXPECT_EQ(a.capacity(), 5);
        EXPECT_EQ(a.at(4).value + b.at(2).value, 7);
        EXPECT_EQ(VyVector<Counted>(0).d, &VyVectorData::shared_null);
        copy = makeVector<Counted>(5);
        const int destroyedBefore = Counted::destroyed;
        copy.resize(4);
        EXPECT_EQ(Counted::destroyed - destroyedBefore, 1);
        EXPECT_EQ(copy.at(3).value, 30);
    }
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
