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
// highestLevel runs in increasing key order too; the node count is `size`.
template <class K, class T>::testing::AssertionResult wellFormed(const VyMap<K, T>& m)
{
    typedef typename VyMap<K, T>::const_iterator It;
    Node *const e = m.d, *prev = e;
    int count = 0;
    for (Node* n = e->next[0]; n != e && count <= m.d->size; prev = n, n = n->next[0], ++count) {
        if (n->prev != prev)
            return ::testing::AssertionFailure() << "prev broken at node " << count;
    }
    if (count != m.d->size || e->prev != prev)
        return ::testing::AssertionFailure() << "level 0 holds " << count << " nodes";
    for (int level = 0; level <= m.d->highestLevel; ++level) {
        for (Node* n = e->next[level]; n != e && n->next[level] != e; n = n->next[level]) {
            if (!(It(n).key() < It(n->next[level]).key()))
                return ::testing::AssertionFailure() << "level " << level << " out of order";
        }
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
template <class T> using VyMapTyped = CountedTest;
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

// Over-aligned payloads get aligned nodes, also in copies.
TEST(VyMapTest, AlignedNodes)
{
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

// Node k (from 1) takes seed k - 1 until the first level-3 node: the first seven stay at level 0,
// every 8th node reaches level 1, every 64th level 2 and the 512th level 3.
TEST(VyMapLevels, FreshInsertionsReseedAtLevelThreeDetachedCopiesNever)
{
    VyMap<int, int> m;
    for (int i = 0; i < 511; ++i)
        m.insert((i * 211) % 512, i); // in any key order
    EXPECT_EQ(chainLengths(m.d), (std::vector<int>{511, 63, 7}));
    srand(99);
    const uint expected = uint(rand());
    srand(99);
    m.insert(100000, 0);
    EXPECT_EQ(m.d->levelSeed, expected);
    EXPECT_EQ(m.d->next[3], m.constFind(100000).i);
    // A copy re-creates the nodes in order, counting from seed 0.
    VyMap<int, int> copy = m;
    copy.detach();
    EXPECT_EQ(copy.d->levelSeed, 512u);
    EXPECT_EQ(copy.d->copyingInOrder, 0u);
    EXPECT_EQ(chainLengths(copy.d), (std::vector<int>{512, 64, 8, 1}));
}

TEST(VyMapDeathTest, FirstKeyNeedsAnEntry)
{
    VyMap<int, int> m;
    EXPECT_DEATH((void)m.firstKey(),
                 "\\./\\.\\./include/pub/vymap:387: .*firstKey.*`!isEmpty\\(\\)'");
    EXPECT_DEATH((void)m.lastKey(),
                 "\\./\\.\\./include/pub/vymap:392: .*lastKey.*`!isEmpty\\(\\)'");
}

} // namespace
