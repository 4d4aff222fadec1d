#include "vyvector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "counted.h"

TEST(VyVectorDataTest, GrowFollowsTheAllocationRule)
{
    // (typed header size, count, element size, capacity); an int vector has a 16-byte header
    // and 4-byte elements.
    const int cases[][4] = {
        {20, 1, 4, 2},       // 20 bytes -> 24
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
    // Appending follows the rule; pointers count as the 32-bit target's 4 bytes.
    VyVector<int> a;
    VyVector<const void*> p;
    for (int i = 0; i < 13; ++i) {
        a.append(i);
        p.append(&p);
    }
    EXPECT_EQ(p.capacity(), 28);
    VyVectorData* x = VyVectorData::malloc(20, 3, 4, a.d); // header and leading elements
    EXPECT_EQ(x->alloc, 28);
    EXPECT_EQ(reinterpret_cast<const int*>(reinterpret_cast<char*>(x) + 16)[2], 2);
    ::free(x);
}

TEST(VyVectorTest, ResizeShrinksOnlyBelowHalfUnlessReserved)
{
    VyVector<int> v;
    v.resize(100);
    EXPECT_EQ(v.capacity(), 124); // 416 bytes -> 512
    v.resize(50);
    EXPECT_EQ(v.capacity(), 60); // 216 bytes -> 256
    v.reserve(200);
    v.resize(3);
    EXPECT_EQ(v.capacity(), 200);
    // A detached copy keeps the reservation; squeeze lifts it.
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
    for (int i = 0; i < 3000; ++i) {
        if (v.size() == v.capacity())
            fillers.emplace_back(20);
        v.append(Wide{i});
        ASSERT_EQ(reinterpret_cast<uintptr_t>(v.constData()) % 16, 0u);
        ASSERT_EQ(v.size(), i + 1);
        ASSERT_EQ(v.constData()[i / 2].value, i / 2) << "append " << i;
    }
}

template <class T> using VyVectorTypedTest = CountedTest;
using ElementTypes = ::testing::Types<int, Counted>;
TYPED_TEST_SUITE(VyVectorTypedTest, ElementTypes);

// Random operations against std::vector, often right after a copy was taken: the copy keeps
// its contents, so every mutator is also checked to detach. Some calls are given an element
// of the vector itself, perhaps across a reallocation.
TYPED_TEST(VyVectorTypedTest, RandomOperationsMatchStdVector)
{
    using T = TypeParam;
    std::mt19937 rng(1234);
    for (int round = 0; round < 20; ++round) {
        VyVector<T> v, snapshot;
        std::vector<int> model, snapshotModel;
        for (int step = 0; step < 400; ++step) {
            const int n = int(model.size());
            const int value = int(rng() % 50); // small, so searches find repeats
            const int i = n ? int(rng() % unsigned(n)) : 0;
            const bool own = n && rng() % 2;
            const int element = own ? model[size_t(i)] : value;
            switch (n ? rng() % 8 : rng() % 4) {
            case 0:
                v.append(own ? v.at(i) : T(value));
                model.push_back(element);
                break;
            case 1: {
                const int at = int(rng() % unsigned(n + 1)), count = int(rng() % 3);
                v.insert(at, count, own ? v.at(i) : T(value));
                model.insert(model.begin() + at, count, element);
                break;
            }
            case 2:
                v.resize(int(rng() % 40));
                model.resize(size_t(v.size()), 0);
                break;
            case 3:
                snapshot = v;
                snapshotModel = model;
                break;
            case 4: {
                const int at = int(rng() % unsigned(n + 2)) - 1, count = int(rng() % 5);
                v.remove(at, count);
                if (std::max(at, 0) < std::min(at + count, n))
                    model.erase(model.begin() + std::max(at, 0),
                                model.begin() + std::min(at + count, n));
                break;
            }
            case 5: // through the element reference and through the iterator
                (own ? v[i] : v.begin()[i]) = T(value);
                model[size_t(i)] = value;
                break;
            case 6:
                v += snapshot;
                model.insert(model.end(), snapshotModel.begin(), snapshotModel.end());
                break;
            case 7:
                if (own) {
                    v.fill(v.at(i));
                    model.assign(model.size(), element);
                } else {
                    v.reserve(value);
                }
                break;
            }
            ASSERT_LE(v.size(), v.capacity());
            ASSERT_EQ(valuesOf(v), model) << "step " << step;
            ASSERT_EQ(valuesOf(snapshot), snapshotModel);
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
            const int count = int(std::count(model.begin(), model.end(), value));
            ASSERT_EQ(v.count(T(value)), count);
            ASSERT_EQ(v.contains(T(value)), count > 0);
        }
    }
}

// A copy that throws half way leaves the shared original intact and leaks nothing; shrinking
// within the capacity destroys from the back.
TEST(VyVectorCountedTest, ThrowingCopiesAndShrinkingLeakNothing)
{
    Counted::reset();
    {
        VyVector<Counted> original(6, Counted(7));
        VyVector<Counted> copy = original;
        Counted::copiesUntilThrow = 4;
        EXPECT_THROW(copy.append(Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 3;
        EXPECT_THROW(VyVector<Counted>(6, Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_TRUE(copy.isSharedWith(original));
        EXPECT_EQ(valuesOf(original), std::vector<int>(6, 7));
        copy.detach();
        const int destroyedBefore = Counted::destroyed;
        copy.resize(5);
        EXPECT_EQ(Counted::destroyed - destroyedBefore, 1);
    }
    EXPECT_EQ(Counted::living(), 0);
}

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
