#include "vymap.h"

#include "counted.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <vector>

namespace
{

typedef VyMapData::Node Node;
typedef std::map<int, int> Model;

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
    if (int(below.size()) != m.d->size || e->prev != (below.empty() ? e : below.back()) ||
        m.d->highestLevel < 0 || m.d->highestLevel > VyMapData::LastLevel)
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

// Same contents as the model, and well formed.
template <class K, class T>
::testing::AssertionResult matches(const VyMap<K, T>& m, const Model& model)
{
    Model seen;
    int count = 0;
    for (auto it = m.constBegin(); it != m.constEnd() && count <= m.size(); ++it, ++count)
        seen[valueOf(it.key())] = valueOf(*it);
    if (seen != model || count != int(model.size()))
        return ::testing::AssertionFailure() << count << " nodes, not the model's contents";
    return wellFormed(m);
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

// Random operations against std::map. Copies taken along the way are mutated on either side
// of the share and checked later, so every mutator is also checked to detach; some calls are
// given keys and values that live in the map itself, and erase is handed iterators taken
// before a copy shared the block.
TYPED_TEST(VyMapTyped, RandomOperationsMatchStdMap)
{
    typedef TypeParam T;
    typedef VyMap<T, T> Map;
    for (unsigned seed : {1u, 7u, 2024u}) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        auto pick = [&](int n) { return int(rng() % unsigned(n)); };
        Map m;
        const Map& cm = m;
        Model model;
        std::vector<std::pair<Map, Model>> copies;
        for (int step = 0; step < 4000; ++step) {
            const int key = pick(300), value = pick(100000);
            auto found = model.find(key);
            const bool present = found != model.end();
            switch (pick(12)) {
            case 0:
            case 1: {
                auto it = m.insert(T(key), T(value));
                model[key] = value;
                ASSERT_TRUE(valueOf(it.key()) == key && valueOf(*it) == value);
                break;
            }
            case 2:
                if (pick(2))
                    m[T(key)] = T(model[key] = value);
                else
                    model[key] = valueOf(m[T(key)]);
                break;
            case 3:
                ASSERT_EQ(m.remove(T(key)), int(model.erase(key)));
                break;
            case 4:
                ASSERT_EQ(valueOf(m.take(T(key))), present ? found->second : 0);
                model.erase(key);
                break;
            case 5: {
                auto it = m.find(T(key));
                ASSERT_EQ(it == m.end(), !present);
                if (!present)
                    break;
                // Half the time the block is shared before the erase, which then follows the
                // iterator into this map's own copy.
                Map before = m;
                if (pick(2))
                    before.detach();
                it = m.erase(it);
                found = model.erase(found);
                ASSERT_EQ(it == m.end(), found == model.end());
                ASSERT_TRUE(found == model.end() || valueOf(it.key()) == found->first);
                break;
            }
            case 6:
                ASSERT_EQ(cm.contains(T(key)), present);
                ASSERT_EQ(valueOf(cm.value(T(key))), present ? found->second : 0);
                ASSERT_EQ(valueOf(cm.value(T(key), T(-1))), present ? found->second : -1);
                break;
            case 7: {
                auto lower = model.lower_bound(key), upper = model.upper_bound(key);
                auto lo = cm.lowerBound(T(key)), up = cm.upperBound(T(key));
                ASSERT_TRUE(lower == model.end() ? lo == cm.end()
                                                 : valueOf(lo.key()) == lower->first);
                ASSERT_TRUE(upper == model.end() ? up == cm.end()
                                                 : valueOf(up.key()) == upper->first);
                // The mutable forms detach and write into this map only.
                if (upper != model.end())
                    *(pick(2) ? m.upperBound(T(key)) : m.lowerBound(T(upper->first))) =
                        T(upper->second = value);
                break;
            }
            case 8:
                if (copies.size() < 4)
                    copies.emplace_back(m, model);
                else
                    copies[size_t(pick(4))] = {m, model};
                break;
            case 9:
                if (pick(40) == 0) {
                    m.clear();
                    model.clear();
                } else if (pick(20) == 0 && !copies.empty()) {
                    auto& c = copies[size_t(pick(int(copies.size())))];
                    m = c.first;
                    model = c.second;
                }
                break;
            case 10:
                if (model.empty())
                    break;
                ASSERT_EQ(valueOf(cm.lastKey()), model.rbegin()->first);
                if (pick(2)) {
                    m.insert(T(key), cm.constFind(cm.lastKey()).value());
                    model[key] = model.rbegin()->second;
                } else {
                    ASSERT_EQ(m.remove(cm.firstKey()), 1);
                    model.erase(model.begin());
                }
                break;
            case 11:
                if (model.empty())
                    break;
                if (pick(2))
                    *m.begin() = T(model.begin()->second = value);
                else
                    *--m.end() = T(model.rbegin()->second = value);
                break;
            }
            if (step % 250 == 0 || step == 3999) {
                ASSERT_TRUE(matches(m, model)) << "step " << step;
                for (const auto& c : copies) {
                    ASSERT_TRUE(matches(c.first, c.second)) << "step " << step;
                    ASSERT_EQ(c.first == m, c.second == model);
                }
                // keys() and values() follow the key order.
                const VyList<T> keys = m.keys(), values = m.values();
                auto it = model.begin();
                for (int i = 0; i < m.size(); ++i, ++it)
                    ASSERT_TRUE(valueOf(keys.at(i)) == it->first &&
                                valueOf(values.at(i)) == it->second);
            }
        }
    }
}

// A payload that asks for more than malloc's alignment.
struct alignas(32) Wide {
    int v;
};

TEST(VyMapLayout, PayloadHeaderBlocksAndAlignment)
{
    static_assert(VyMap<int, int>::payloadOffset == 8, "int key and int value");
    static_assert(VyMap<char, char>::payloadOffset == int(sizeof(void*)),
                  "the link words stay pointer-aligned");
    VyMap<int, int> m;
    m.insert(12, 34);
    const int* payload = reinterpret_cast<const int*>(reinterpret_cast<char*>(m.d->next[0]) - 8);
    EXPECT_TRUE(payload[0] == 12 && payload[1] == 34);

    const VyMapData& null = VyMapData::shared_null;
    EXPECT_TRUE(null.prev == &null && null.next[0] == &null && null.next[1] == nullptr);
    EXPECT_EQ(null.highestLevel + null.size + int(null.levelSeed), 0);
    // The header words after prev and next[12]: ref, highestLevel, size, levelSeed, flags
    // (bit 0 copyingInOrder, bit 1 canShare, bit 2 alignedNodes).
    auto word = [](const VyMapData* d, int index) {
        uint32_t w;
        memcpy(&w, reinterpret_cast<const char*>(d) + 13 * sizeof(void*) + 4 * size_t(index), 4);
        return w;
    };
    EXPECT_EQ(word(&null, 4), 2u);
    // New blocks start empty and shareable; an alignment of 9 or more asks for aligned nodes.
    for (int alignment : {0, 8, 9, 16}) {
        VyMapData* d = alignment ? VyMapData::createData(alignment) : VyMapData::createData();
        d->highestLevel = 3;
        d->levelSeed = 0xabcdef;
        d->copyingInOrder = 1;
        EXPECT_TRUE(d->prev == d && d->next[0] == d && word(d, 0) == 1 && word(d, 1) == 3 &&
                    word(d, 2) == 0 && word(d, 3) == 0xabcdef);
        EXPECT_EQ(word(d, 4), alignment >= 9 ? 7u : 3u) << alignment;
        d->continueFreeData(8);
    }

    // Empty maps hold a reference to shared_null; removing from one still detaches first.
    const int before = null.ref.load();
    {
        VyMap<int, int> a, c(a);
        EXPECT_EQ(null.ref.load(), before + 2);
        EXPECT_EQ(a.remove(1), 0);
        EXPECT_TRUE(a.d != &null && a.isDetached() && c.d == &null);
        a.insert(1, 2);
        VyMap<int, int> moved(std::move(a));
        EXPECT_TRUE(a.d == &null && moved.size() == 1);
        moved.clear();
        EXPECT_EQ(moved.d, &null);
    }
    EXPECT_EQ(null.ref.load(), before);

    // Over-aligned payloads get aligned nodes, also in copies.
    VyMap<int, Wide> w;
    for (int key = 0; key < 200; ++key)
        w.insert(key, Wide{key});
    VyMap<int, Wide> copy = w;
    copy.remove(7);
    EXPECT_TRUE(w.d->alignedNodes && copy.d->alignedNodes && wellFormed(copy));
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        EXPECT_TRUE(reinterpret_cast<uintptr_t>(&*it) % 32 == 0 && it->v == it.key());
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
        EXPECT_TRUE(d->highestLevel == int(s[2]) && d->levelSeed == s[3]) << s[0];
    }
    EXPECT_EQ(chainLengths(d), (std::vector<int>{6, 5, 4, 3, 1}));
    // All bits set reaches the top level, 11, and never beyond.
    for (int i = 0; i < 12; ++i) {
        d->levelSeed = 0xffffffffu;
        d->node_create(path, 8);
    }
    EXPECT_EQ(d->levelSeed, 0u); // incremented past the top
    EXPECT_EQ(chainLengths(d), (std::vector<int>{18, 17, 16, 15, 13, 12, 11, 10, 9, 8, 7, 6}));

    // Deleting a node unlinks it on every level and fixes prev; here the last, top node.
    Node* last = d->prev;
    Node* before[VyMapData::LastLevel + 1];
    for (int level = 0; level <= VyMapData::LastLevel; ++level) {
        for (before[level] = d; before[level]->next[level] != last;)
            before[level] = before[level]->next[level];
    }
    Node* previous = last->prev;
    d->node_delete(before, 8, last);
    EXPECT_TRUE(d->prev == previous && previous->next[0] == d && d->size == 17);
    EXPECT_EQ(chainLengths(d), (std::vector<int>{17, 16, 15, 14, 12, 11, 10, 9, 8, 7, 6, 5}));
    d->continueFreeData(8);
}

TEST(VyMapLevels, FreshInsertionsReseedAtTheFirstLevelThreeNode)
{
    // Fresh insertions count until the first level-three node, in any key order.
    VyMap<int, int> m;
    for (int i = 0; i < 511; ++i)
        m.insert((i * 211) % 512, i);
    EXPECT_EQ(m.d->levelSeed, 511u);
    EXPECT_EQ(chainLengths(m.d), (std::vector<int>{511, 63, 7}));
    srand(99);
    const uint expected = uint(rand());
    srand(99);
    m.insert(100000, 0);
    EXPECT_TRUE(m.d->highestLevel == 3 && m.d->levelSeed == expected);
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
        EXPECT_TRUE(copy == original && wellFormed(copy)) << n;
        EXPECT_TRUE(copy.d->levelSeed == uint(n) && !copy.d->copyingInOrder) << "no reseeding";
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

TEST_F(VyMapCounted, ThrowingCopyDuringDetachLeavesBothMapsShared)
{
    const int n = 20;
    VyMap<Counted, Counted> original;
    Model model;
    for (int i = 0; i < n; ++i)
        original.insert(Counted(i * 3), Counted(model[i * 3] = i));
    // Every copy during the detach (two per node), then the new key and value.
    for (int throwAt = 1; throwAt <= 2 * n + 2; ++throwAt) {
        SCOPED_TRACE(throwAt);
        VyMap<Counted, Counted> copy = original;
        Counted::copiesUntilThrow = throwAt;
        EXPECT_THROW(copy.insert(Counted(1), Counted(2)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        // A failed detach leaves both maps on the old block; a failed new node is given
        // back from the finished copy.
        const bool detachFailed = throwAt <= 2 * n;
        EXPECT_EQ(copy.d == original.d, detachFailed);
        EXPECT_EQ(original.d->ref.load(), detachFailed ? 2 : 1);
        EXPECT_EQ(Counted::living(), detachFailed ? 2 * n : 4 * n);
        EXPECT_TRUE(matches(copy, model));
        EXPECT_TRUE(matches(original, model));
    }
}

TEST_F(VyMapCounted, ThrowingInsertIntoOwnedMapChangesNothing)
{
    VyMap<Counted, Counted> m;
    Model model;
    // Enough nodes for three levels, so an unwound node may have opened a level.
    for (int i = 0; i < 100; ++i)
        m.insert(Counted(2 * i), Counted(model[2 * i] = i));
    for (int key = -1; key < 202; key += 2) { // odd keys: all missing
        // The key's copy or the value's fails.
        Counted::copiesUntilThrow = key % 4 == 1 ? 1 : 2;
        EXPECT_THROW(m.insert(Counted(key), Counted(0)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        ASSERT_TRUE(matches(m, model)) << key;
        // The list still accepts the key afterwards.
        m.insert(Counted(key), Counted(model[key] = -key));
    }
    // A node that opened a new level is unwound too; the empty level stays open.
    const int top = m.d->highestLevel;
    m.d->levelSeed = 0xffffffffu;
    Counted::copiesUntilThrow = 2;
    EXPECT_THROW(m.insert(Counted(1001), Counted(0)), std::bad_alloc);
    Counted::copiesUntilThrow = 0;
    EXPECT_TRUE(m.d->highestLevel == top + 1 && m.d->next[top + 1] == m.d);
    m.insert(Counted(1001), Counted(model[1001] = 1));
    EXPECT_TRUE(matches(m, model));
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
