#include "vymap.h"

#include "associativemodel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace
{

typedef VyMapData::Node Node;

// The skip list's invariants: level 0 links every node once in strictly increasing key order
// and `prev` is its inverse (the block's prev is the last node); every higher level up to
// highestLevel is a sorted sub-sequence of the level below; the node count is `size`.
template <class K, class T>::testing::AssertionResult wellFormed(const VyMap<K, T>& m)
{
    typedef typename VyMap<K, T>::const_iterator It;
    Node* e = m.d;
    std::vector<Node*> below;
    for (Node* n = e->next[0]; n != e && int(below.size()) <= m.d->size; n = n->next[0]) {
        Node* prev = below.empty() ? e : below.back();
        if (n->prev != prev || (prev != e && !(It(prev).key() < It(n).key())))
            return ::testing::AssertionFailure() << "level 0 broken at node " << below.size();
        below.push_back(n);
    }
    if (int(below.size()) != m.d->size || e->prev != (below.empty() ? e : below.back()))
        return ::testing::AssertionFailure() << "level 0 holds " << below.size() << " nodes";
    for (int level = 1; level <= m.d->highestLevel; ++level) {
        std::vector<Node*> chain;
        size_t j = 0;
        for (Node* n = e->next[level]; n != e; n = n->next[level], ++j) {
            while (j < below.size() && below[j] != n)
                ++j;
            if (j == below.size())
                return ::testing::AssertionFailure() << "level " << level << " out of order";
            chain.push_back(n);
        }
        below.swap(chain);
    }
    return ::testing::AssertionSuccess();
}

// The number of nodes linked at each level of `d`, from 0 to highestLevel.
std::vector<int> chainLengths(const VyMapData* d)
{
    std::vector<int> lengths;
    for (int level = 0; level <= d->highestLevel; ++level) {
        int count = 0;
        for (const Node* n = d->next[level]; n != d; n = n->next[level])
            ++count;
        lengths.push_back(count);
    }
    return lengths;
}

// Typed tests over plain ints and over Counted keys and values, whose lifetimes the fixture
// checks.
template <class T> class VyMapTyped : public CountedTest
{
};
typedef ::testing::Types<int, Counted> ElementTypes;
TYPED_TEST_SUITE(VyMapTyped, ElementTypes);

TYPED_TEST(VyMapTyped, RandomOperationsMatchStdMap)
{
    typedef TypeParam T;
    typedef VyMap<T, T> Map;
    auto check = [](const Map& m) { EXPECT_TRUE(wellFormed(m)); };
    // Bounds and end keys against the model; the mutable bounds detach and write into this map.
    auto bounds = [](Map& m, Model& model, int key, int value) {
        const Map& cm = m;
        const auto lower = model.lower_bound(key), upper = model.upper_bound(key);
        const auto lo = cm.lowerBound(T(key)), up = cm.upperBound(T(key));
        ASSERT_EQ(lo == cm.end(), lower == model.end());
        ASSERT_EQ(up == cm.end(), upper == model.end());
        if (lower != model.end()) {
            ASSERT_EQ(valueOf(lo.key()), lower->first);
            ASSERT_EQ(valueOf(cm.firstKey()), model.begin()->first);
            ASSERT_EQ(valueOf(cm.lastKey()), model.rbegin()->first);
        }
        if (upper != model.end()) {
            ASSERT_EQ(valueOf(up.key()), upper->first);
            *(value % 2 ? m.upperBound(T(key)) : m.lowerBound(T(upper->first))) =
                T(upper->second = value);
        }
    };
    for (unsigned seed : {1u, 7u, 2024u}) {
        SCOPED_TRACE(seed);
        runAgainstModel<T, T, Map>(seed, 4000, 300, check, bounds);
    }
}

// A payload that asks for more than malloc's alignment.
struct alignas(32) Wide {
    int v;
};

TEST(VyMapLayout, PayloadAndAlignment)
{
    static_assert(VyMap<int, int>::payloadOffset == 8, "int key and int value");
    static_assert(VyMap<char, char>::payloadOffset == int(sizeof(void*)),
                  "the link words stay pointer-aligned");
    VyMap<int, int> m;
    m.insert(12, 34);
    const int* payload = reinterpret_cast<const int*>(reinterpret_cast<char*>(m.d->next[0]) - 8);
    EXPECT_EQ(std::make_pair(payload[0], payload[1]), std::make_pair(12, 34));

    // Over-aligned payloads get aligned nodes, also in copies.
    VyMap<int, Wide> w;
    for (int key = 0; key < 200; ++key)
        w.insert(key, Wide{key});
    VyMap<int, Wide> copy = w;
    copy.remove(7);
    EXPECT_TRUE(copy.d->alignedNodes);
    EXPECT_TRUE(wellFormed(copy));
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        EXPECT_EQ(reinterpret_cast<uintptr_t>(&*it) % 32, 0u);
}

TEST(VyMapLevels, SeedGroupsOfThreeSetBitsGiveTheLevel)
{
    VyMapData* d = VyMapData::createData();
    Node* path[VyMapData::LastLevel + 1] = {d};
    srand(4321);
    const uint first = uint(rand());
    srand(4321);
    // (seed, copyingInOrder, highestLevel after, seed after). 0b110: level 0. 0b111111: two
    // groups, but a level opens one at a time. 0b110111111: the third group stops at level 2.
    // Level 3 reseeds unless copying in order; level 4 does not.
    const uint steps[][4] = {{6, 1, 0, 7},         {0x3f, 1, 1, 0x40},   {0x1bf, 1, 2, 0x1c0},
                             {0x1ff, 1, 3, 0x200}, {0x1ff, 0, 3, first}, {0xfff, 0, 4, 0x1000}};
    for (const auto& s : steps) {
        d->levelSeed = s[0];
        d->copyingInOrder = s[1];
        d->node_create(path, 8);
        EXPECT_EQ(std::make_pair(uint(d->highestLevel), d->levelSeed), std::make_pair(s[2], s[3]))
            << s[0];
    }
    // All bits set reaches the top level, 11, and never beyond.
    for (int i = 0; i < 12; ++i) {
        d->levelSeed = 0xffffffffu;
        d->node_create(path, 8);
    }
    EXPECT_EQ(chainLengths(d), (std::vector<int>{18, 17, 16, 15, 13, 12, 11, 10, 9, 8, 7, 6}));

    d->continueFreeData(8);
}

TEST(VyMapLevels, FreshInsertionsReseedAtTheFirstLevelThreeNode)
{
    // Fresh insertions count until the first level-three node, in any key order.
    VyMap<int, int> m;
    for (int i = 0; i < 511; ++i)
        m.insert((i * 211) % 512, i);
    EXPECT_EQ(chainLengths(m.d), (std::vector<int>{511, 63, 7}));
    srand(99);
    const uint expected = uint(rand());
    srand(99);
    m.insert(100000, 0);
    EXPECT_EQ(m.d->levelSeed, expected);
    EXPECT_EQ(m.d->next[3], m.constFind(100000).i);
}

TEST(VyMapLevels, DetachedCopyLevelsFollowTheCounterFromZero)
{
    for (int n : {7, 8, 63, 64, 600}) {
        VyMap<int, int> original;
        for (int i = 0; i < n; ++i)
            original.insert(i * 37 % n, i);
        VyMap<int, int> copy = original;
        copy.detach();
        EXPECT_TRUE(wellFormed(copy)) << n;
        EXPECT_EQ(copy.d->levelSeed, uint(n)) << "no reseeding";
        EXPECT_EQ(copy.d->copyingInOrder, 0u);
        // Node k (from 1) takes seed k - 1: the first seven stay at level 0, every 8th node
        // reaches level 1, every 64th level 2, every 512th level 3.
        std::vector<int> expected = {n};
        for (int step = 8; step <= n; step *= 8)
            expected.push_back(n / step);
        EXPECT_EQ(chainLengths(copy.d), expected) << n;
    }
}

class VyMapCounted : public CountedTest
{
};

TEST_F(VyMapCounted, ThrowingCopiesLeaveTheMapsAsTheyWere)
{
    const int n = 100; // enough nodes for three levels
    VyMap<Counted, Counted> original;
    Model model;
    for (int i = 0; i < n; ++i)
        original.insert(Counted(2 * i), Counted(model[2 * i] = i));
    // Every copy during the detach (two per node), then the new key and value: a failed
    // detach leaves both maps on the old block; a failed new node is given back from the
    // finished copy.
    for (int throwAt = 1; throwAt <= 2 * n + 2; ++throwAt) {
        SCOPED_TRACE(throwAt);
        VyMap<Counted, Counted> copy = original;
        Counted::copiesUntilThrow = throwAt;
        EXPECT_THROW(copy.insert(Counted(1), Counted(2)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_EQ(copy.d == original.d, throwAt <= 2 * n);
        EXPECT_EQ(Counted::living(), throwAt <= 2 * n ? 2 * n : 4 * n);
        EXPECT_EQ(contentsOf(copy), model);
        EXPECT_TRUE(wellFormed(copy));
    }
    // In an owned map the key's copy or the value's fails; a node that opened a new level is
    // unwound too, and the empty level stays open.
    Counted::copiesUntilThrow = 1;
    EXPECT_THROW(original.insert(Counted(1001), Counted(0)), std::bad_alloc);
    EXPECT_TRUE(wellFormed(original));
    const int top = original.d->highestLevel;
    original.d->levelSeed = 0xffffffffu;
    Counted::copiesUntilThrow = 2;
    EXPECT_THROW(original.insert(Counted(1001), Counted(0)), std::bad_alloc);
    Counted::copiesUntilThrow = 0;
    EXPECT_EQ(original.d->highestLevel, top + 1);
    EXPECT_EQ(original.d->next[top + 1], original.d);
    EXPECT_TRUE(wellFormed(original));
    original.insert(Counted(1001), Counted(model[1001] = 1));
    EXPECT_EQ(contentsOf(original), model);
}

TEST(VyMapDeathTest, FirstAndLastKeyNeedAnEntry)
{
    VyMap<int, int> m;
    EXPECT_DEATH((void)m.firstKey(),
                 "\\./\\.\\./include/pub/vymap:387: .*firstKey.*`!isEmpty\\(\\)'");
    EXPECT_DEATH((void)m.lastKey(),
                 "\\./\\.\\./include/pub/vymap:392: .*lastKey.*`!isEmpty\\(\\)'");
}

} // namespace
