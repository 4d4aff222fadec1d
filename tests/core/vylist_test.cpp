#include "vylist.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <stdint.h>
#include <vector>

#include "counted.h"

TEST(ListCapacityTest, FollowsTheAllocationRule)
{
    EXPECT_EQ(listCapacityFor(0), 1);       // 20 bytes -> 24
    EXPECT_EQ(listCapacityFor(1), 3);       // 24 -> 32
    EXPECT_EQ(listCapacityFor(11), 11);     // 64
    EXPECT_EQ(listCapacityFor(12), 27);     // 68 -> 128
    EXPECT_EQ(listCapacityFor(1019), 1019); // 4096
    EXPECT_EQ(listCapacityFor(1020), 2043); // 4100 -> 8192
    EXPECT_EQ(listCapacityFor(0x10000000), 0x1fffffff);
    for (int n = 0; n < 3000; ++n)
        ASSERT_GE(listCapacityFor(n), n);
}

// ---- the untyped block: slots hold small integers ----

class VyListDataTest : public ::testing::Test
{
protected:
    VyListData p;
    std::deque<intptr_t> model;
    intptr_t next = 1;

    void SetUp() override
    {
        p.d = &VyListData::shared_null;
        p.detach(0); // an owned block with no slots
    }
    void TearDown() override { ::free(p.d); }

    void expectLayout(int alloc, int begin, int end)
    {
        EXPECT_EQ(p.d->alloc, alloc);
        EXPECT_EQ(p.d->begin, begin);
        EXPECT_EQ(p.d->end, end);
    }
    void expectContents()
    {
        ASSERT_EQ(p.size(), int(model.size()));
        for (int i = 0; i < p.size(); ++i)
            ASSERT_EQ(reinterpret_cast<intptr_t>(*p.at(i)), model[i]) << "slot " << i;
    }
    void append()
    {
        *p.append() = reinterpret_cast<void*>(next);
        model.push_back(next++);
    }
    void prepend()
    {
        *p.prepend() = reinterpret_cast<void*>(next);
        model.push_front(next++);
    }
    void insert(int i)
    {
        *p.insert(i) = reinterpret_cast<void*>(next);
        const int at = i < 1 ? 0 : (i > int(model.size()) ? int(model.size()) : i);
        model.insert(model.begin() + at, next++);
    }
    // An owned block of `alloc` slots holding `n` elements from `begin`.
    void fill(int alloc, int begin, int n)
    {
        p.realloc(alloc);
        p.d->begin = p.d->end = begin;
        model.clear();
        for (int k = 0; k < n; ++k) {
            p.d->array[p.d->end++] = reinterpret_cast<void*>(next);
            model.push_back(next++);
        }
    }
};

TEST_F(VyListDataTest, PrependToAnEmptyBlockFillsFromTheBack)
{
    expectLayout(0, 0, 0);
    prepend();
    expectLayout(3, 2, 3);
    prepend();
    prepend();
    expectLayout(3, 0, 3);
    prepend(); // full at the front: grows to 5 slots and leaves one free in front
    expectLayout(5, 1, 5);
    expectContents();
}

TEST_F(VyListDataTest, PrependWithLittleUseSpreadsWithoutGrowing)
{
    fill(27, 0, 4); // end 4 < 27 / 3
    prepend();
    expectLayout(27, 18, 23);
    expectContents();
}

TEST_F(VyListDataTest, AppendSlidesToTheFrontWhenTwoThirdsAreFree)
{
    fill(27, 20, 7);
    append();
    expectLayout(27, 0, 8);
    expectContents();
    fill(27, 17, 10); // 17 - 1 < 18: grows instead
    append();
    expectLayout(listCapacityFor(28), 17, 28);
    expectContents();
}

TEST_F(VyListDataTest, InsertMovesTheShorterSide)
{
    fill(27, 10, 5);
    insert(4); // nearer the back
    expectLayout(27, 10, 16);
    insert(1); // nearer the front
    expectLayout(27, 9, 16);
    insert(0);
    expectLayout(27, 8, 16);
    insert(100);
    expectLayout(27, 8, 17);
    expectContents();
    fill(27, 0, 27); // full both ways: grows, then the tail moves
    insert(3);
    expectLayout(listCapacityFor(28), 0, 28);
    expectContents();
    fill(27, 5, 22); // back full: the front moves even near the back
    insert(20);
    expectLayout(27, 4, 27);
    expectContents();
}

TEST_F(VyListDataTest, RemoveMovesTheShorterSide)
{
    fill(27, 9, 7);
    p.remove(2);
    model.erase(model.begin() + 2);
    expectLayout(27, 10, 16);
    p.remove(3); // 3 before, 3 from it: the tail moves
    model.erase(model.begin() + 3);
    expectLayout(27, 10, 15);
    expectContents();
    p.remove(0, 2); // middle 1 before, 4 after
    model.erase(model.begin(), model.begin() + 2);
    expectLayout(27, 12, 15);
    p.remove(1, 2);
    model.erase(model.begin() + 1, model.begin() + 3);
    expectLayout(27, 12, 13);
    expectContents();
    fill(27, 5, 6);
    void** next = p.erase(p.at(2));
    model.erase(model.begin() + 2);
    EXPECT_EQ(next, p.at(2));
    expectContents();
}

TEST_F(VyListDataTest, MoveShiftsTheOuterPartsWhenCheaper)
{
    fill(27, 5, 10);
    auto move = [&](int from, int to) {
        p.move(from, to);
        const intptr_t v = model[from];
        model.erase(model.begin() + from);
        model.insert(model.begin() + to, v);
    };
    move(9, 1); // far towards the front
    expectLayout(27, 4, 14);
    expectContents();
    move(0, 9); // far towards the back
    expectLayout(27, 5, 15);
    expectContents();
    move(3, 5); // near: the slots between move
    expectLayout(27, 5, 15);
    move(7, 2);
    expectLayout(27, 5, 15);
    expectContents();
    fill(10, 0, 10); // no room on either side
    move(9, 0);
    move(0, 9);
    expectLayout(10, 0, 10);
    expectContents();
}

TEST_F(VyListDataTest, AppendOfAnotherBlockCopiesSlots)
{
    fill(27, 3, 4);
    VyListData other;
    other.d = &VyListData::shared_null;
    other.detach(0);
    for (intptr_t k = 100; k < 130; ++k) {
        *other.append() = reinterpret_cast<void*>(k);
        model.push_back(k);
    }
    void** first = p.append(other);
    EXPECT_EQ(first, p.at(4));
    expectContents();
    EXPECT_EQ(p.d->alloc, listCapacityFor(37));
    ::free(other.d);
    void** reserved = p.append2(p);
    EXPECT_EQ(reserved, p.at(34));
    EXPECT_EQ(p.size(), 68);
}

TEST_F(VyListDataTest, RandomOperationsKeepContentsAndBounds)
{
    std::mt19937 rng(77);
    for (int step = 0; step < 20000; ++step) {
        const int n = p.size();
        switch (rng() % 7) {
        case 0:
        case 1:
            append();
            break;
        case 2:
            prepend();
            break;
        case 3:
            insert(int(rng() % (n + 3)) - 1);
            break;
        case 4:
            if (n) {
                const int i = int(rng() % n);
                p.remove(i);
                model.erase(model.begin() + i);
            }
            break;
        case 5:
            if (n) {
                const int i = int(rng() % n);
                const int k = 1 + int(rng() % (n - i));
                p.remove(i, k);
                model.erase(model.begin() + i, model.begin() + i + k);
            }
            break;
        case 6:
            if (n) {
                const int from = int(rng() % n), to = int(rng() % n);
                p.move(from, to);
                const intptr_t v = model[from];
                model.erase(model.begin() + from);
                model.insert(model.begin() + to, v);
            }
            break;
        }
        ASSERT_LE(0, p.d->begin);
        ASSERT_LE(p.d->begin, p.d->end);
        ASSERT_LE(p.d->end, p.d->alloc);
        if (step % 97 == 0)
            expectContents();
    }
    expectContents();
}

TEST(VyListDetachTest, DetachGrowPlacesTheGap)
{
    struct Case {
        int i, wantI, wantBegin;
    };
    // 12 elements plus one: 27 slots, centred begin (27 - 13) / 2 = 7.
    const Case cases[] = {{-5, 0, 7}, {100, 12, 0}, {12, 12, 0}, {6, 6, 0}, {5, 5, 7}, {0, 0, 7}};
    for (const Case& c : cases) {
        VyList<int*> l;
        for (int k = 0; k < 12; ++k)
            l.append(nullptr);
        VyListData p = l.p;
        int i = c.i;
        VyListData::Data* old = p.detach_grow(&i, 1);
        EXPECT_EQ(old, l.p.d);
        EXPECT_EQ(i, c.wantI);
        EXPECT_EQ(p.d->alloc, 27);
        EXPECT_EQ(p.d->begin, c.wantBegin);
        EXPECT_EQ(p.d->end, c.wantBegin + 13);
        EXPECT_EQ(p.d->ref.load(), 1);
        EXPECT_EQ(old->ref.load(), 1); // not touched
        ::free(p.d);
    }
}

TEST(VyListDetachTest, DetachFormsCopyOrShareTheHeader)
{
    VyList<int*> l;
    int a = 0, b = 0;
    l << &a << &b;
    VyList<int*> shared = l;
    VyListData p = l.p;
    VyListData::Data* old = p.detach2();
    EXPECT_EQ(p.d->begin, old->begin);
    EXPECT_EQ(p.d->end, old->end);
    EXPECT_EQ(p.d->array[p.d->begin], &a); // detach2 copies the slots too
    EXPECT_EQ(p.d->ref.load(), 1);
    EXPECT_EQ(p.d->canShare, 1u);
    ::free(p.d);
    p.d = l.p.d;
    EXPECT_EQ(p.detach(), nullptr); // still referenced by `shared`
    EXPECT_EQ(l.p.d->ref.load(), 1);
    EXPECT_EQ(p.d->alloc, l.p.d->alloc);
    ::free(p.d);
    l.p.d->ref.fetch_add(1); // give back the reference the detach above dropped
}

// ---- the typed list ----

template <typename T> class VyListTypedTest : public CountedTest
{
};
using ElementTypes = ::testing::Types<int, Counted>;
TYPED_TEST_SUITE(VyListTypedTest, ElementTypes);

template <typename T> static VyList<T> makeList(int n)
{
    VyList<T> l;
    for (int i = 0; i < n; ++i)
        l.append(T(i * 10));
    return l;
}

TYPED_TEST(VyListTypedTest, EveryMutatorDetachesFromACopy)
{
    using T = TypeParam;
    using Mutator = void (*)(VyList<T>&);
    const Mutator mutators[] = {
        [](VyList<T>& l) { l.append(T(99)); },
        [](VyList<T>& l) { l.append(makeList<T>(3)); },
        [](VyList<T>& l) { l.prepend(T(99)); },
        [](VyList<T>& l) { l.insert(2, T(99)); },
        [](VyList<T>& l) { l.replace(1, T(99)); },
        [](VyList<T>& l) { l[2] = T(99); },
        [](VyList<T>& l) { l.first() = T(99); },
        [](VyList<T>& l) { l.last() = T(99); },
        [](VyList<T>& l) { l.removeAt(1); },
        [](VyList<T>& l) { l.removeFirst(); },
        [](VyList<T>& l) { l.removeLast(); },
        [](VyList<T>& l) { EXPECT_EQ(l.removeAll(T(20)), 1); },
        [](VyList<T>& l) { EXPECT_TRUE(l.removeOne(T(30))); },
        [](VyList<T>& l) { EXPECT_EQ(valueOf(l.takeAt(1)), 10); },
        [](VyList<T>& l) { l.move(0, 4); },
        [](VyList<T>& l) { l.swap(0, 4); },
        [](VyList<T>& l) { l.reserve(100); },
        [](VyList<T>& l) { *l.begin() = T(99); },
        [](VyList<T>& l) { l.erase(l.begin() + 1); },
        [](VyList<T>& l) { l.clear(); },
        [](VyList<T>& l) { l.detach(); },
    };
    for (Mutator mutate : mutators) {
        VyList<T> original = makeList<T>(5);
        VyList<T> copy = original;
        ASSERT_TRUE(copy.isSharedWith(original));
        mutate(copy);
        EXPECT_FALSE(copy.isSharedWith(original));
        ASSERT_EQ(original.size(), 5);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(valueOf(original.at(i)), i * 10);
    }
}

TYPED_TEST(VyListTypedTest, MutatorsFedTheirOwnElements)
{
    using T = TypeParam;
    VyList<T> l = makeList<T>(3);
    for (int k = 0; k < 40; ++k)
        l.append(l.at(l.size() - 1)); // grows while reading its own element
    l.prepend(l.at(1));
    l.insert(5, l.at(0));
    l.append(l);
    ASSERT_EQ(l.size(), 90);
    EXPECT_EQ(valueOf(l.at(0)), 10);
    EXPECT_EQ(valueOf(l.at(5)), 10);
    EXPECT_EQ(valueOf(l.at(44)), 20);
    EXPECT_EQ(valueOf(l.at(45)), 10);
    EXPECT_EQ(valueOf(l.at(89)), 20);
    EXPECT_EQ(l.removeAll(l.at(0)), 6);
    EXPECT_EQ(l.count(T(20)), 82);
}

TYPED_TEST(VyListTypedTest, RandomOperationsMatchStdDeque)
{
    using T = TypeParam;
    std::mt19937 rng(4321);
    for (int round = 0; round < 10; ++round) {
        VyList<T> l;
        std::deque<int> model;
        VyList<T> snapshot;
        std::deque<int> snapshotModel;
        for (int step = 0; step < 500; ++step) {
            const int n = int(model.size());
            const int value = int(rng() % 50);
            switch (rng() % 11) {
            case 0:
            case 1:
                l.append(T(value));
                model.push_back(value);
                break;
            case 2:
                l.prepend(T(value));
                model.push_front(value);
                break;
            case 3: {
                const int i = int(rng() % (n + 3)) - 1;
                l.insert(i, T(value));
                model.insert(model.begin() + (i < 1 ? 0 : (i > n ? n : i)), value);
                break;
            }
            case 4:
                if (n) {
                    const int i = int(rng() % n);
                    EXPECT_EQ(valueOf(l.takeAt(i)), model[i]);
                    model.erase(model.begin() + i);
                }
                break;
            case 5:
                if (n) {
                    const int from = int(rng() % n), to = int(rng() % n);
                    l.move(from, to);
                    const int v = model[from];
                    model.erase(model.begin() + from);
                    model.insert(model.begin() + to, v);
                }
                break;
            case 6: {
                int removed = 0;
                for (auto it = model.begin(); it != model.end();)
                    if (*it == value) {
                        it = model.erase(it);
                        ++removed;
                    } else {
                        ++it;
                    }
                EXPECT_EQ(l.removeAll(T(value)), removed);
                break;
            }
            case 7:
                snapshot = l;
                snapshotModel = model;
                break;
            case 8:
                if (rng() % 4 == 0) {
                    l.append(snapshot);
                    model.insert(model.end(), snapshotModel.begin(), snapshotModel.end());
                } else if (n) {
                    const int i = int(rng() % n), j = int(rng() % n);
                    l.swap(i, j);
                    std::swap(model[i], model[j]);
                }
                break;
            case 9:
                if (rng() % 10 == 0) {
                    l.clear();
                    model.clear();
                } else if (n) {
                    const int i = int(rng() % n);
                    l[i] = T(value);
                    model[i] = value;
                }
                break;
            case 10: {
                const int pos = int(rng() % (n + 2)) - 1, len = int(rng() % 6) - 1;
                VyList<T> part = l.mid(pos, len);
                const int from = pos < 0 ? 0 : pos;
                int count = len < 0 ? n - from : len + (pos < 0 ? pos : 0);
                if (count > n - from)
                    count = n - from;
                ASSERT_EQ(part.size(), count < 0 ? 0 : count);
                for (int k = 0; k < part.size(); ++k)
                    ASSERT_EQ(valueOf(part.at(k)), model[from + k]);
                break;
            }
            }
            ASSERT_EQ(l.size(), int(model.size()));
            for (int i = 0; i < l.size(); ++i)
                ASSERT_EQ(valueOf(l.at(i)), model[i]) << "step " << step;
            ASSERT_EQ(snapshot.size(), int(snapshotModel.size()));
            for (int i = 0; i < snapshot.size(); ++i)
                ASSERT_EQ(valueOf(snapshot.at(i)), snapshotModel[i]);
        }
    }
}

TEST(VyListTest, PointerElementsLiveInTheSlot)
{
    int a = 1, b = 2;
    VyList<int*> l;
    l << &a << &b;
    EXPECT_EQ(l.p.d->array[l.p.d->begin], &a);
    EXPECT_EQ(l.p.d->array[l.p.d->begin + 1], &b);
    EXPECT_EQ(l.indexOf(&b), 1);
    EXPECT_EQ(l.lastIndexOf(&a), 0);
    EXPECT_TRUE(l.startsWith(&a));
    EXPECT_TRUE(l.endsWith(&b));
}

TEST(VyListTest, AppendToSharedListPutsTheGapAtTheEnd)
{
    VyList<int*> l;
    for (int k = 0; k < 12; ++k)
        l.append(nullptr);
    VyList<int*> copy = l;
    copy.append(nullptr);
    EXPECT_EQ(copy.p.d->begin, 0);
    EXPECT_EQ(copy.p.d->end, 13);
    EXPECT_EQ(copy.p.d->alloc, 27);
}

TEST(VyListTest, IsPolymorphicThroughItsDestructor)
{
    struct Derived : VyList<Counted> {
        Derived() { append(Counted(5)); }
    };
    Counted::reset();
    VyList<Counted>* l = new Derived;
    delete l;
    EXPECT_EQ(Counted::living(), 0);
    EXPECT_TRUE(std::has_virtual_destructor<VyList<int>>::value);
}

TEST(VyListCountedTest, ThrowingCopiesLeaveTheListAsItWas)
{
    Counted::reset();
    {
        VyList<Counted> original = makeList<Counted>(6);
        VyList<Counted> copy = original;
        // Detaching copies the elements: the fourth copy throws.
        Counted::copiesUntilThrow = 4;
        EXPECT_THROW(copy.append(Counted(1)), std::bad_alloc);
        EXPECT_TRUE(copy.isSharedWith(original));
        Counted::copiesUntilThrow = 3;
        EXPECT_THROW(copy.prepend(Counted(1)), std::bad_alloc);
        Counted::copiesUntilThrow = 2;
        EXPECT_THROW(copy.detach(), std::bad_alloc);
        EXPECT_TRUE(copy.isSharedWith(original));
        copy.detach();
        // An owned list gives the reserved slot back when the stored copy throws.
        Counted::copiesUntilThrow = 1;
        EXPECT_THROW(copy.append(Counted(1)), std::bad_alloc);
        EXPECT_EQ(copy.size(), 6);
        Counted::copiesUntilThrow = 0;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(original.at(i).value, i * 10);
            EXPECT_EQ(copy.at(i).value, i * 10);
        }
    }
    EXPECT_EQ(Counted::living(), 0);
}

using VyListDeathTest = ::testing::Test;

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
}

TEST(VyListDeathTest, SharedBlocksRefuseSlotOperations)
{
    VyList<int*> l;
    l.append(nullptr);
    l.append(nullptr);
    VyList<int*> copy = l;
    struct Case {
        void (*op)(VyListData&);
        const char* where;
    };
    const Case cases[] = {
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
    for (const Case& c : cases)
        EXPECT_DEATH(c.op(copy.p),
                     std::string("\\./src/") + c.where + ": Assertion `d->ref == 1' failed");
}
