#include "vylist.h"

#include "counted.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <stdint.h>
#include <string.h>
#include <tuple>
#include <vector>

TEST(ListCapacityTest, FollowsTheAllocationRule)
{
    // (slots wanted, capacity): 20 + 4n bytes, below 64 rounded down to 8 and 8 added, 4096
    // exactly, else the next power of two; the largest block holds 0x1fffffff slots.
    const int cases[][2] = {
        {0, 1}, {1, 3}, {11, 11}, {12, 27}, {1019, 1019}, {1020, 2043}, {0x10000000, 0x1fffffff}};
    for (const auto& c : cases)
        EXPECT_EQ(listCapacityFor(c[0]), c[1]) << c[0];
}

// The untyped block, its slots holding small integers. Each case fills a block of `alloc`
// slots with `n` elements from `begin`, applies one operation ('a'ppend, 'p'repend, 'i'nsert
// at x, 'r'emove at x, 'R'emove y from x, 'm'ove from x to y, 'A'ppend a block of y) and checks
// where the elements went.
TEST(VyListDataTest, OperationsMoveTheShorterSideAndGrowByTheRule)
{
    const struct {
        int alloc, begin, n;
        char op;
        int x, y, wantAlloc, wantBegin, wantEnd;
    } cases[] = {
        // Prepending to an empty block fills it from the back; a full front grows and leaves
        // one slot free in front; little use spreads the elements without growing.
        {0, 0, 0, 'p', 0, 0, 3, 2, 3},
        {3, 0, 3, 'p', 0, 0, 5, 1, 5},
        {27, 0, 4, 'p', 0, 0, 27, 18, 23},
        // Appending slides to the front when two thirds are free even after it, else grows.
        {27, 20, 7, 'a', 0, 0, 27, 0, 8},
        {27, 18, 9, 'a', 0, 0, 59, 18, 28},
        {27, 3, 4, 'A', 0, 30, 59, 3, 37},
        // Insertion moves the side nearer the slot; with one end full, the other side moves.
        {27, 10, 5, 'i', 4, 0, 27, 10, 16},
        {27, 10, 6, 'i', 1, 0, 27, 9, 16},
        {27, 9, 7, 'i', 0, 0, 27, 8, 16},
        {27, 10, 6, 'i', 3, 0, 27, 10, 17},
        {27, 0, 27, 'i', 3, 0, 59, 0, 28},
        {27, 5, 22, 'i', 20, 0, 27, 4, 27},
        // Removal moves the shorter side; a tie moves the tail.
        {27, 9, 7, 'r', 2, 0, 27, 10, 16},
        {27, 10, 6, 'r', 3, 0, 27, 10, 15},
        {27, 10, 5, 'R', 0, 2, 27, 12, 15},
        // A far move shifts the outer parts when there is room; a near one the slots between.
        {27, 5, 10, 'm', 9, 1, 27, 4, 14},
        {27, 4, 10, 'm', 0, 9, 27, 5, 15},
        {27, 5, 10, 'm', 3, 5, 27, 5, 15},
        {10, 0, 10, 'm', 9, 0, 10, 0, 10},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.op << c.x << " on " << c.begin << "+" << c.n);
        VyListData p, other;
        p.d = other.d = &VyListData::shared_null;
        p.detach(c.alloc);
        other.detach(c.y);
        std::deque<intptr_t> model;
        p.d->begin = p.d->end = c.begin;
        for (intptr_t k = 1; k <= c.n; ++k) {
            p.d->array[p.d->end++] = reinterpret_cast<void*>(k);
            model.push_back(k);
        }
        void* const v = reinterpret_cast<void*>(intptr_t(-1));
        if (c.op == 'a' || c.op == 'p' || c.op == 'i') {
            *(c.op == 'a' ? p.append() : c.op == 'p' ? p.prepend() : p.insert(c.x)) = v;
            const int at = c.op == 'a' ? c.n : c.op == 'p' ? 0 : std::min(std::max(c.x, 0), c.n);
            model.insert(model.begin() + at, -1);
        } else if (c.op == 'A') {
            for (other.d->end = 0; other.d->end < c.y; ++other.d->end)
                other.d->array[other.d->end] = v;
            p.append(other);
            model.insert(model.end(), size_t(c.y), -1);
        } else if (c.op == 'r' || c.op == 'R') {
            c.op == 'r' ? p.remove(c.x) : p.remove(c.x, c.y);
            model.erase(model.begin() + c.x, model.begin() + c.x + (c.op == 'r' ? 1 : c.y));
        } else {
            p.move(c.x, c.y);
            const intptr_t moved = model[size_t(c.x)];
            model.erase(model.begin() + c.x);
            model.insert(model.begin() + c.y, moved);
        }
        EXPECT_EQ(std::make_tuple(p.d->alloc, p.d->begin, p.d->end),
                  std::make_tuple(c.wantAlloc, c.wantBegin, c.wantEnd));
        EXPECT_TRUE(std::equal(model.begin(), model.end(), p.begin(), p.end(),
                               [](intptr_t m, void* slot) { return m == intptr_t(slot); }));
        ::free(p.d);
        ::free(other.d);
    }
}

TEST(VyListDetachTest, DetachGrowPlacesTheGap)
{
    // (wanted gap index, index given back, begin): 12 elements plus one slot make 27 slots;
    // the centred begin is (27 - 13) / 2 = 7, a gap in the back half starts at 0.
    const int cases[][3] = {{-5, 0, 7}, {100, 12, 0}, {12, 12, 0}, {6, 6, 0}, {5, 5, 7}, {0, 0, 7}};
    VyList<int*> l;
    for (int k = 0; k < 12; ++k)
        l.append(nullptr);
    for (const auto& c : cases) {
        VyListData p = l.p;
        int i = c[0];
        EXPECT_EQ(p.detach_grow(&i, 1), l.p.d);
        EXPECT_EQ(std::make_tuple(i, p.d->ref.load(), p.d->alloc, p.d->begin, p.d->end),
                  std::make_tuple(c[1], 1, 27, c[2], c[2] + 13))
            << c[0];
        ::free(p.d);
    }
    EXPECT_EQ(l.p.d->ref.load(), 1) << "the old count is not touched";
    // Appending to a shared list puts the gap at the end.
    VyList<int*> copy = l;
    copy.append(nullptr);
    EXPECT_EQ(std::make_tuple(copy.p.d->alloc, copy.p.d->begin, copy.p.d->end),
              std::make_tuple(27, 0, 13));
}

TEST(VyListDetachTest, Detach2CopiesTheWholeBlock)
{
    // Every slot and the header come along; only the count and canShare are set anew.
    VyListData p;
    p.d = &VyListData::shared_null;
    p.detach(11);
    for (intptr_t k = 0; k < 11; ++k)
        p.d->array[k] = reinterpret_cast<void*>(k + 1);
    p.d->begin = 3;
    p.d->end = 7;
    p.d->reserved = 5;
    p.d->canShare = 0;
    p.d->ref.store(2);
    VyListData::Data* const old = p.d;
    ASSERT_EQ(p.detach2(), old);
    EXPECT_TRUE(p.d != old && old->ref.load() == 2 && p.d->ref.load() == 1 && p.d->canShare);
    EXPECT_TRUE(p.d->alloc == 11 && p.d->begin == 3 && p.d->end == 7 && p.d->reserved == 5);
    EXPECT_EQ(memcmp(p.d->array, old->array, 11 * sizeof(void*)), 0);
    ::free(p.d);
    ::free(old);
}

// The typed list over int and over Counted, both stored as heap copies the slots point at;
// the fixture checks that every Counted is destroyed exactly once.
template <class T> using VyListTypedTest = CountedTest;
typedef ::testing::Types<int, Counted> ElementTypes;
TYPED_TEST_SUITE(VyListTypedTest, ElementTypes);

// Random operations against std::vector. A copy taken along the way must stay as it was while
// the list changes, so every mutator is also checked to detach; now and then a mutator is
// given an element of the list itself, or the list itself, which it must copy first.
TYPED_TEST(VyListTypedTest, RandomOperationsMatchModel)
{
    using T = TypeParam;
    std::mt19937 rng(4321);
    auto pick = [&rng](int n) { return int(rng() % unsigned(n)); };
    VyList<T> l, snapshot;
    std::vector<int> model, snapshotModel;
    for (int step = 0; step < 5000; ++step) {
        const int n = int(model.size()), value = pick(50), i = n ? pick(n) : 0;
        const bool own = n && pick(2);
        const int element = own ? model[size_t(i)] : value;
        // Now and then an element copy throws (Counted only), early or near the end of copying
        // the whole list: the list must stay as it was.
        const bool failing = pick(4) == 0;
        const std::vector<int> before = failing ? model : std::vector<int>();
        Counted::copiesUntilThrow = failing ? 1 + pick(3) + (pick(2) ? 0 : n) : 0;
        try {
            switch (pick(10)) {
            case 0:
                l.append(own ? l.at(i) : T(value));
                model.push_back(element);
                break;
            case 1:
                l.prepend(own ? l.at(i) : T(value));
                model.insert(model.begin(), element);
                break;
            case 2: {
                const int at = pick(n + 3) - 1;
                l.insert(at, own ? l.at(i) : T(value));
                model.insert(model.begin() + std::min(std::max(at, 0), n), element);
                break;
            }
            case 3:
                if (pick(40) == 0) {
                    l.clear();
                    model.clear();
                } else if (n) {
                    ASSERT_EQ(valueOf(l.takeAt(i)), model[size_t(i)]);
                    model.erase(model.begin() + i);
                }
                break;
            case 4: {
                const int to = pick(n + 1), moved = n ? model[size_t(i)] : 0;
                l.move(i, to);
                if (to < n) {
                    model.erase(model.begin() + i);
                    model.insert(model.begin() + to, moved);
                }
                break;
            }
            case 5: {
                const auto found = std::find(model.begin(), model.end(), element);
                const auto back = std::find(model.rbegin(), model.rend(), element);
                const int count = int(std::count(model.begin(), model.end(), element));
                ASSERT_EQ(l.indexOf(T(element)), found == model.end() ? -1 : found - model.begin());
                ASSERT_EQ(l.lastIndexOf(T(element)), int(model.rend() - back) - 1);
                ASSERT_EQ(l.count(T(element)), count);
                if (pick(2)) {
                    ASSERT_EQ(l.removeAll(own ? l.at(i) : T(value)), count);
                    model.erase(std::remove(model.begin(), model.end(), element), model.end());
                } else if (l.removeOne(T(element))) {
                    model.erase(found);
                }
                break;
            }
            case 6:
                snapshot = l;
                snapshotModel = model;
                break;
            case 7:
                if (2 * n + snapshot.size() < 300) {
                    const std::vector<int> added = own ? model : snapshotModel;
                    l.append(own ? l : snapshot);
                    model.insert(model.end(), added.begin(), added.end());
                }
                break;
            case 8: // through the element reference and through the iterator
                if (n) {
                    (own ? l[i] : *(l.begin() + i)) = T(value);
                    model[size_t(i)] = value;
                }
                break;
            case 9: {
                if (pick(3) == 0)
                    l.reserve(n + pick(40));
                const int pos = pick(n + 2) - 1, len = pick(6) - 1, from = std::max(pos, 0);
                const int count = std::min(len < 0 ? n - from : len + std::min(pos, 0), n - from);
                ASSERT_EQ(valuesOf(l.mid(pos, len)),
                          std::vector<int>(model.begin() + from,
                                           model.begin() + from + std::max(count, 0)));
                break;
            }
            }
        } catch (const std::bad_alloc&) {
            model = before;
        }
        Counted::copiesUntilThrow = 0;
        ASSERT_EQ(valuesOf(l), model) << "step " << step;
        ASSERT_EQ(valuesOf(snapshot), snapshotModel) << "step " << step;
        ASSERT_EQ(l == snapshot, model == snapshotModel);
    }
}

// VyStringList derives from VyList<VyString> and is deleted through it.
static_assert(std::has_virtual_destructor<VyList<int>>::value,
              "polymorphic through its destructor");

TEST(VyListDeathTest, AssertionTexts)
{
    VyList<int> l;
    l.append(1);
    const VyList<int>& cl = l;
    EXPECT_DEATH(cl.at(1),
                 "\\./\\.\\./include/pub/vylist:1513: const T& VyList<T>::at\\(int\\) const "
                 "\\[with T = int\\]: Assertion `i >= 0 && i < p.size\\(\\)' failed");
    EXPECT_DEATH(l[-1] = 0,
                 "\\./\\.\\./include/pub/vylist:1521: T& VyList<T>::operator\\[\\]\\(int\\) "
                 "\\[with T = int\\]: Assertion `i >= 0 && i < p.size\\(\\)' failed");
    VyList<int> empty;
    EXPECT_DEATH(empty.first(), "vylist:1233: T& VyList<T>::first\\(\\) \\[with T = int\\]: "
                                "Assertion `!isEmpty\\(\\)' failed");
    EXPECT_DEATH(empty.last(), "vylist:1245: T& VyList<T>::last\\(\\) \\[with T = int\\]: "
                               "Assertion `!isEmpty\\(\\)' failed");

    // The block's slot operations refuse a shared block.
    VyList<int*> shared;
    shared << nullptr << nullptr;
    VyList<int*> copy = shared;
    const struct {
        void (*op)(VyListData&);
        const char* where;
    } cases[] = {
        {[](VyListData& p) { p.realloc(9); }, "vylist:141: void VyListData::realloc\\(int\\)"},
        {[](VyListData& p) { p.append(1); }, "vylist:153: void\\*\\* VyListData::append\\(int\\)"},
        {[](VyListData& p) { p.append(p); },
         "vylist:179: void\\*\\* VyListData::append\\(const VyListData&\\)"},
        {[](VyListData& p) { p.prepend(); }, "vylist:199: void\\*\\* VyListData::prepend\\(\\)"},
        {[](VyListData& p) { p.insert(1); }, "vylist:217: void\\*\\* VyListData::insert\\(int\\)"},
        {[](VyListData& p) { p.remove(0); }, "vylist:256: void VyListData::remove\\(int\\)"},
        {[](VyListData& p) { p.remove(0, 1); },
         "vylist:271: void VyListData::remove\\(int, int\\)"},
        {[](VyListData& p) { p.move(0, 1); }, "vylist:287: void VyListData::move\\(int, int\\)"},
        {[](VyListData& p) { p.erase(p.begin()); },
         "vylist:327: void\\*\\* VyListData::erase\\(void\\*\\*\\)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.op(copy.p),
                     std::string("\\./src/") + c.where + ": Assertion `d->ref == 1' failed");
}
