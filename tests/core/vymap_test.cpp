#include "vymap.h"

#include "counted.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{

typedef VyMapData::Node Node;
typedef std::map<int, int> Model;
typedef VyMap<int, int> IntMap;

// Element values are built from ints so that one std::map<int, int> can model every map type.
template <class X> X make(int v);
template <> int make<int>(int v)
{
    return v;
}
template <> Counted make<Counted>(int v)
{
    return Counted(v);
}
// Zero-padded so the strings sort like the numbers, long enough to live on the heap.
template <> std::string make<std::string>(int v)
{
    char buffer[64];
    snprintf(buffer, sizeof buffer, "n%09d-a-string-that-does-not-fit-inline", v);
    return buffer;
}

int num(int v)
{
    return v;
}
int num(const Counted& v)
{
    return v.value;
}
int num(const std::string& v)
{
    return v.empty() ? 0 : atoi(v.c_str() + 1);
}

template <class K, class T> const K& keyOf(Node* n)
{
    return typename VyMap<K, T>::const_iterator(n).key();
}

// The skip list's invariants: level 0 links every node once in strictly increasing key order
// and `prev` is its inverse (the block's prev is the last node); every higher level up to
// highestLevel is a sorted sub-sequence of the level below; the node count is `size`.
template <class K, class T>::testing::AssertionResult wellFormed(const VyMap<K, T>& m)
{
    VyMapData* d = m.d;
    Node* e = d;
    auto fail = [] { return ::testing::AssertionFailure(); };
    if (d->highestLevel < 0 || d->highestLevel > VyMapData::LastLevel)
        return fail() << "highestLevel " << d->highestLevel;
    std::vector<Node*> below;
    Node* prev = e;
    for (Node* n = e->next[0]; n != e; prev = n, n = n->next[0]) {
        if (int(below.size()) >= d->size)
            return fail() << "level 0 holds more than size " << d->size;
        if (n->prev != prev)
            return fail() << "prev is not the inverse of next[0] at node " << below.size();
        if (prev != e && !(keyOf<K, T>(prev) < keyOf<K, T>(n)))
            return fail() << "level 0 not increasing at " << below.size();
        below.push_back(n);
    }
    if (e->prev != prev)
        return fail() << "block prev is not the last node";
    if (int(below.size()) != d->size)
        return fail() << "level 0 holds " << below.size() << " nodes, size " << d->size;
    for (int level = 1; level <= d->highestLevel; ++level) {
        std::vector<Node*> chain;
        size_t j = 0;
        for (Node* n = e->next[level]; n != e; n = n->next[level], ++j) {
            while (j < below.size() && below[j] != n)
                ++j;
            if (j == below.size())
                return fail() << "level " << level << " node " << chain.size()
                              << " is out of order or missing from the level below";
            chain.push_back(n);
        }
        below.swap(chain);
    }
    return ::testing::AssertionSuccess();
}

// Same contents as the model, in both directions, and well formed.
template <class K, class T>
::testing::AssertionResult matches(const VyMap<K, T>& m, const Model& model)
{
    if (m.size() != int(model.size()))
        return ::testing::AssertionFailure()
               << "size " << m.size() << ", expected " << model.size();
    auto it = m.constBegin();
    for (const auto& kv : model) {
        if (num(it.key()) != kv.first || num(it.value()) != kv.second)
            return ::testing::AssertionFailure()
                   << "at key " << kv.first << " found " << num(it.key()) << " -> "
                   << num(it.value()) << ", expected " << kv.second;
        ++it;
    }
    if (it != m.constEnd())
        return ::testing::AssertionFailure() << "more nodes than the model";
    auto back = m.constEnd();
    for (auto r = model.rbegin(); r != model.rend(); ++r) {
        if (num((--back).key()) != r->first)
            return ::testing::AssertionFailure() << "backward walk differs at " << r->first;
    }
    return wellFormed(m);
}

// The number of nodes linked at each level of `d`, from 0 to highestLevel.
std::vector<int> chainLengths(const VyMapData* d)
{
    std::vector<int> lengths;
    const Node* e = d;
    for (int level = 0; level <= d->highestLevel; ++level) {
        int count = 0;
        for (const Node* n = e->next[level]; n != e; n = n->next[level])
            ++count;
        lengths.push_back(count);
    }
    return lengths;
}

template <class Params> class VyMapTyped : public ::testing::Test
{
protected:
    typedef typename Params::first_type Key;
    typedef typename Params::second_type Value;
    typedef VyMap<Key, Value> Map;

    static Key k(int v) { return make<Key>(v); }
    static Value v(int x) { return make<Value>(x); }
    static int none() { return num(Value()); }

    // Keys 1, 3, 5, ... inserted in a scrambled order, value = 10 * key.
    static Map filled(int n, Model* model)
    {
        Map m;
        for (int i = 0; i < n; ++i) {
            int key = 2 * ((i * 37) % n) + 1;
            m.insert(k(key), v(10 * key));
            (*model)[key] = 10 * key;
        }
        return m;
    }

    void SetUp() override { Counted::reset(); }
    void TearDown() override
    {
        EXPECT_EQ(Counted::living(), 0) << "Counted objects leaked or destroyed twice";
    }
};

typedef ::testing::Types<std::pair<int, int>, std::pair<Counted, Counted>,
                         std::pair<std::string, std::string>>
    MapParams;

struct MapParamNames {
    template <class P> static std::string GetName(int)
    {
        if (std::is_same<P, std::pair<int, int>>::value)
            return "IntInt";
        return std::is_same<P, std::pair<Counted, Counted>>::value ? "CountedCounted"
                                                                   : "StringString";
    }
};

TYPED_TEST_SUITE(VyMapTyped, MapParams, MapParamNames);

TYPED_TEST(VyMapTyped, EmptyMapsShareTheNullBlock)
{
    typedef typename TestFixture::Map Map;
    VyMapData* null = &VyMapData::shared_null;
    const int before = null->ref.load();
    {
        Map a, c(a);
        const Map b;
        EXPECT_EQ(c.d, null);
        EXPECT_EQ(null->ref.load(), before + 3);
        EXPECT_FALSE(a.isDetached());
        EXPECT_TRUE(b.constBegin() == b.constEnd());
        EXPECT_TRUE(b.lowerBound(this->k(1)) == b.constEnd());
        EXPECT_TRUE(b.upperBound(this->k(1)) == b.constEnd());
        EXPECT_EQ(num(b.value(this->k(1))), this->none());
        EXPECT_EQ(num(b.value(this->k(1), this->v(42))), 42);
        // Removing from an empty map still takes it off the shared block first.
        EXPECT_EQ(a.remove(this->k(1)), 0);
        EXPECT_NE(a.d, null);
        EXPECT_TRUE(a.isDetached());
        EXPECT_TRUE(wellFormed(a));
        a.clear();
        EXPECT_EQ(a.d, null);
    }
    EXPECT_EQ(null->ref.load(), before);
}

TYPED_TEST(VyMapTyped, InsertLookupsAndIterators)
{
    Model model;
    auto m = this->filled(120, &model);
    const auto& cm = m;
    EXPECT_TRUE(matches(m, model));
    for (int key = 0; key <= 245; ++key) {
        EXPECT_EQ(m.count(this->k(key)), int(model.count(key))) << key;
        auto lower = model.lower_bound(key);
        auto lo = cm.lowerBound(this->k(key));
        if (lower == model.end())
            EXPECT_TRUE(lo == cm.constEnd()) << key;
        else
            EXPECT_EQ(num(lo.key()), lower->first) << key;
        // The mutable forms land on the same nodes of an owned map.
        EXPECT_EQ(m.lowerBound(this->k(key)).i, lo.i);
        EXPECT_EQ(m.upperBound(this->k(key)).i, cm.upperBound(this->k(key)).i);
    }

    // An existing key keeps its node and takes the new value; a new key returns its node.
    auto node = cm.constFind(this->k(51)).i;
    auto it = m.insert(this->k(51), this->v(-51));
    EXPECT_EQ(it.i, node);
    EXPECT_EQ(num(it.value()), -51);
    it = m.insert(this->k(52), this->v(520));
    EXPECT_EQ(num(it.key()), 52);
    EXPECT_EQ(num(*it), 520);
    // operator[] adds a value-initialised value for a missing key.
    EXPECT_EQ(num(m[this->k(1000)]), this->none());
    m[this->k(1000)] = this->v(5);
    model[51] = -51;
    model[52] = 520;
    model[1000] = 5;
    EXPECT_EQ(num(cm[this->k(54)]), this->none());
    EXPECT_EQ(m.size(), int(model.size())) << "const operator[] must not insert";

    // Post-steps, writes through iterators, and the walk back.
    auto mit = model.begin();
    for (auto w = m.begin(); w != m.end(); w++, ++mit) {
        w.value() = this->v(mit->second + 1);
        mit->second += 1;
    }
    auto cit = m.constEnd();
    for (auto r = model.rbegin(); r != model.rend(); ++r) {
        cit--;
        EXPECT_EQ(num(*cit), r->second);
    }
    EXPECT_TRUE(cit == m.constBegin());
    typename TestFixture::Map::const_iterator fromMutable = m.begin();
    EXPECT_TRUE(fromMutable == m.constBegin());
    EXPECT_TRUE(matches(m, model));
}

TYPED_TEST(VyMapTyped, RemoveTakeAndEraseUnlinkNodes)
{
    Model model;
    auto m = this->filled(100, &model);
    EXPECT_EQ(m.remove(this->k(2)), 0);
    EXPECT_EQ(m.remove(this->k(3)), 1);
    EXPECT_EQ(num(m.take(this->k(5))), 50);
    EXPECT_EQ(num(m.take(this->k(5))), this->none());
    EXPECT_EQ(num(m.erase(m.find(this->k(7))).key()), 9);
    EXPECT_TRUE(m.erase(m.find(this->k(199))) == m.end());
    EXPECT_TRUE(m.erase(m.end()) == m.end());
    for (int key : {3, 5, 7, 199})
        model.erase(key);
    EXPECT_TRUE(matches(m, model));
    // Down to empty from both ends, checking the list after every step.
    while (!m.isEmpty()) {
        if (m.size() % 2) {
            model.erase(num(m.firstKey()));
            m.erase(m.begin());
        } else {
            model.erase(num(m.lastKey()));
            m.remove(m.lastKey());
        }
        ASSERT_TRUE(matches(m, model));
    }
}

// Every mutator, applied to a copy, leaves the original's block and contents untouched; and
// applied to the original, leaves the copy untouched.
TYPED_TEST(VyMapTyped, EveryMutatorCopiesOnWrite)
{
    typedef typename TestFixture::Map Map;
    auto k = [](int x) { return TestFixture::k(x); };
    auto v = [](int x) { return TestFixture::v(x); };
    const std::vector<std::pair<const char*, std::function<void(Map&, Model&)>>> mutators = {
        {"insert new", [&](Map& m, Model& mm) { m.insert(k(1000), v(mm[1000] = 1)); }},
        {"insert existing", [&](Map& m, Model& mm) { m.insert(k(11), v(mm[11] = 2)); }},
        {"operator[] new", [&](Map& m, Model& mm) { m[k(4)] = v(mm[4] = 3); }},
        {"operator[] existing", [&](Map& m, Model& mm) { m[k(13)] = v(mm[13] = 4); }},
        {"operator[] read", [&](Map& m, Model& mm) { mm[6] = num(m[k(6)]); }},
        {"remove",
         [&](Map& m, Model& mm) {
             m.remove(k(15));
             mm.erase(15);
         }},
        {"remove missing", [&](Map& m, Model&) { m.remove(k(16)); }},
        {"take",
         [&](Map& m, Model& mm) {
             m.take(k(17));
             mm.erase(17);
         }},
        {"erase",
         [&](Map& m, Model& mm) {
             m.erase(m.find(k(19)));
             mm.erase(19);
         }},
        {"clear",
         [&](Map& m, Model& mm) {
             m.clear();
             mm.clear();
         }},
        {"find", [&](Map& m, Model& mm) { *m.find(k(21)) = v(mm[21] = 5); }},
        {"begin", [&](Map& m, Model& mm) { m.begin().value() = v(mm.begin()->second = 6); }},
        {"end", [&](Map& m, Model& mm) { (--m.end()).value() = v(mm.rbegin()->second = 7); }},
        {"lowerBound", [&](Map& m, Model& mm) { *m.lowerBound(k(22)) = v(mm[23] = 8); }},
        {"upperBound", [&](Map& m, Model& mm) { *m.upperBound(k(23)) = v(mm[25] = 9); }},
        {"detach", [&](Map& m, Model&) { m.detach(); }},
    };
    for (const auto& mutator : mutators) {
        SCOPED_TRACE(mutator.first);
        for (int side = 0; side < 2; ++side) {
            Model model;
            Map original = TestFixture::filled(40, &model);
            Map copy = original;
            ASSERT_EQ(copy.d, original.d);
            VyMapData* block = original.d;
            Model changed = model;
            Map& target = side == 0 ? copy : original;
            Map& other = side == 0 ? original : copy;
            mutator.second(target, changed);
            EXPECT_NE(target.d, other.d);
            EXPECT_EQ(other.d, block);
            EXPECT_TRUE(other.isDetached());
            EXPECT_TRUE(matches(other, model));
            EXPECT_TRUE(matches(target, changed));
        }
    }

    // An iterator taken before the map was shared still erases the right key, in this map only.
    Model model;
    Map m = TestFixture::filled(25, &model);
    auto it = m.find(k(21));
    Map copy = m;
    EXPECT_TRUE(matches(copy, model));
    it = m.erase(it);
    EXPECT_EQ(num(it.key()), 23);
    EXPECT_EQ(num((++it).key()), 25);
    EXPECT_TRUE(matches(copy, model));
    model.erase(21);
    EXPECT_TRUE(matches(m, model));
}

// Mutators handed references into the map's own nodes, owned and shared.
TYPED_TEST(VyMapTyped, MutatorsFedTheirOwnContents)
{
    typedef typename TestFixture::Map Map;
    for (int shared = 0; shared < 2; ++shared) {
        SCOPED_TRACE(shared ? "shared" : "owned");
        Model model;
        Map m = TestFixture::filled(30, &model);
        Map keep;
        if (shared)
            keep = m;
        m.insert(this->k(2), m.value(this->k(9)));
        model[2] = model[9];
        m[this->k(4)] = m[this->k(11)];
        model[4] = model[11];
        m[this->k(13)] = m[this->k(6)]; // the right side inserts key 6 first
        model[13] = model[6] = this->none();
        m.insert(m.firstKey(), m.constFind(m.lastKey()).value());
        model.begin()->second = model.rbegin()->second;
        EXPECT_TRUE(matches(m, model));

        if (shared)
            keep = m; // share again so the removals below detach with a reference into keep
        EXPECT_EQ(m.remove(m.firstKey()), 1);
        model.erase(model.begin());
        EXPECT_EQ(num(m.take(m.lastKey())), model.rbegin()->second);
        model.erase(std::prev(model.end()));
        const auto last = m.constFind(this->k(41)).i;
        m.insert(m.constFind(this->k(41)).key(), m.constFind(this->k(41)).value());
        EXPECT_EQ(num(m.constFind(this->k(41)).value()), 410);
        if (!shared) {
            EXPECT_EQ(m.constFind(this->k(41)).i, last);
        }
        EXPECT_TRUE(matches(m, model));
        if (shared)
            EXPECT_NE(keep.d, m.d);
        else
            EXPECT_TRUE(matches(keep, Model()));
    }
}

TYPED_TEST(VyMapTyped, KeysValuesEqualityAndMoves)
{
    typedef typename TestFixture::Map Map;
    Model model;
    Map a = TestFixture::filled(20, &model);
    auto keys = a.keys();
    auto values = a.values();
    ASSERT_EQ(keys.size(), 20);
    ASSERT_EQ(values.size(), 20);
    int i = 0;
    for (const auto& kv : model) {
        EXPECT_EQ(num(keys.at(i)), kv.first);
        EXPECT_EQ(num(values.at(i++)), kv.second);
    }

    Map b;
    for (auto r = model.rbegin(); r != model.rend(); ++r)
        b.insert(this->k(r->first), this->v(r->second));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    b[this->k(9)] = this->v(0);
    EXPECT_TRUE(a != b);
    b[this->k(9)] = this->v(90);
    EXPECT_TRUE(a == b);
    b.remove(this->k(9));
    b.insert(this->k(10), this->v(90)); // same size and values, one key differs
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(Map() == Map());

    Map moved(std::move(b));
    EXPECT_EQ(b.d, &VyMapData::shared_null);
    EXPECT_EQ(moved.size(), 20);
    b = std::move(moved);
    b.swap(a);
    EXPECT_TRUE(b.contains(this->k(9)));
    EXPECT_FALSE(a.contains(this->k(9)));
    const Map& alias = a;
    a = alias;
    EXPECT_EQ(a.size(), 20);
    EXPECT_TRUE(wellFormed(a));
}

// Thousands of random operations against std::map, with copies taken along the way that are
// later mutated on either side of the share.
TYPED_TEST(VyMapTyped, RandomOperationsMatchStdMap)
{
    typedef typename TestFixture::Map Map;
    for (unsigned seed : {1u, 7u, 2024u}) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        auto pick = [&](int n) { return int(rng() % unsigned(n)); };
        Map m;
        const Map& cm = m;
        Model model;
        std::vector<std::pair<Map, Model>> copies;
        for (int step = 0; step < 4000; ++step) {
            const int key = pick(300);
            const int value = pick(100000);
            auto found = model.find(key);
            const bool present = found != model.end();
            switch (pick(12)) {
            case 0:
            case 1: {
                auto it = m.insert(this->k(key), this->v(value));
                model[key] = value;
                ASSERT_EQ(num(it.key()), key);
                ASSERT_EQ(num(it.value()), value);
                break;
            }
            case 2:
                m[this->k(key)] = this->v(model[key] = value);
                break;
            case 3:
                ASSERT_EQ(m.remove(this->k(key)), int(model.erase(key)));
                break;
            case 4:
                ASSERT_EQ(num(m.take(this->k(key))), present ? found->second : this->none());
                model.erase(key);
                break;
            case 5: {
                auto it = m.find(this->k(key));
                ASSERT_EQ(it == m.end(), !present);
                if (present) {
                    it = m.erase(it);
                    found = model.erase(found);
                    ASSERT_EQ(it == m.end(), found == model.end());
                    if (found != model.end()) {
                        ASSERT_EQ(num(it.key()), found->first);
                    }
                }
                break;
            }
            case 6:
                ASSERT_EQ(cm.contains(this->k(key)), present);
                ASSERT_EQ(num(cm.value(this->k(key))), present ? found->second : this->none());
                ASSERT_EQ(num(cm.value(this->k(key), this->v(-1))), present ? found->second : -1);
                break;
            case 7: {
                auto lower = model.lower_bound(key);
                auto lo = cm.lowerBound(this->k(key));
                ASSERT_EQ(lo == cm.constEnd(), lower == model.end());
                if (lower != model.end()) {
                    ASSERT_EQ(num(lo.key()), lower->first);
                }
                auto upper = model.upper_bound(key);
                auto up = cm.upperBound(this->k(key));
                ASSERT_EQ(up == cm.constEnd(), upper == model.end());
                if (upper != model.end()) {
                    ASSERT_EQ(num(up.key()), upper->first);
                }
                break;
            }
            case 8:
                // Take a copy; it is checked later while both sides go on changing.
                if (copies.size() < 4)
                    copies.emplace_back(m, model);
                else
                    copies[size_t(pick(4))] = std::make_pair(m, model);
                break;
            case 9:
                // Mutate a copy, which may still share its block with `m` or another copy.
                if (!copies.empty()) {
                    auto& c = copies[size_t(pick(int(copies.size())))];
                    if (pick(2)) {
                        c.first.insert(this->k(key), this->v(c.second[key] = value));
                    } else {
                        c.first.remove(this->k(key));
                        c.second.erase(key);
                    }
                }
                break;
            case 10:
                if (pick(40) == 0) {
                    m.clear();
                    model.clear();
                } else if (pick(20) == 0 && !copies.empty()) {
                    auto& c = copies[size_t(pick(int(copies.size())))];
                    m = c.first;
                    model = c.second;
                }
                break;
            case 11:
                if (!model.empty()) {
                    ASSERT_EQ(num(m.firstKey()), model.begin()->first);
                    ASSERT_EQ(num(m.lastKey()), model.rbegin()->first);
                }
                break;
            }
            if (step % 250 == 0 || step == 3999) {
                ASSERT_TRUE(matches(m, model)) << "step " << step;
                for (const auto& c : copies)
                    ASSERT_TRUE(matches(c.first, c.second)) << "step " << step;
            }
        }
    }
}

// Layout, levels and the untyped operations.

TEST(VyMapLayout, PayloadHeaderAndNewBlocks)
{
    static_assert(VyMap<int, int>::payloadOffset == 8, "int key and int value");
    static_assert(VyMap<char, char>::payloadOffset == int(sizeof(void*)),
                  "the link words stay pointer-aligned");
    VyMap<int, int> m;
    m.insert(12, 34);
    m.insert(-5, 6);
    for (Node* n = m.d->next[0]; n != m.d; n = n->next[0]) {
        const int* payload = reinterpret_cast<const int*>(reinterpret_cast<char*>(n) - 8);
        EXPECT_EQ(payload[0], IntMap::const_iterator(n).key());
        EXPECT_EQ(payload[1], IntMap::const_iterator(n).value());
    }

    const VyMapData& null = VyMapData::shared_null;
    EXPECT_EQ(null.prev, &null);
    EXPECT_EQ(null.next[0], &null);
    for (int i = 1; i <= VyMapData::LastLevel; ++i)
        EXPECT_EQ(null.next[i], nullptr) << i;
    EXPECT_EQ(null.highestLevel + null.size + int(null.levelSeed), 0);
    EXPECT_EQ(null.canShare, 1u);
    EXPECT_EQ(null.copyingInOrder + null.alignedNodes, 0u);
    // The header words after prev and next[12]: ref, highestLevel, size, levelSeed, flags
    // (bit 0 copyingInOrder, bit 1 canShare, bit 2 alignedNodes).
    auto word = [](const VyMapData* d, int index) {
        uint32_t w;
        memcpy(&w, reinterpret_cast<const char*>(d) + 13 * sizeof(void*) + 4 * size_t(index), 4);
        return w;
    };
    EXPECT_EQ(word(&null, 4), 2u);
    VyMapData* raw = VyMapData::createData(16);
    raw->highestLevel = 3;
    raw->size = 5;
    raw->levelSeed = 0xabcdef;
    raw->copyingInOrder = 1;
    EXPECT_EQ(word(raw, 0), 1u);
    EXPECT_EQ(word(raw, 1), 3u);
    EXPECT_EQ(word(raw, 2), 5u);
    EXPECT_EQ(word(raw, 3), 0xabcdefu);
    EXPECT_EQ(word(raw, 4), 7u);
    raw->size = 0;
    raw->continueFreeData(8);
    // New blocks start empty and shareable; an alignment of 9 or more asks for aligned nodes.
    for (int alignment : {0, 4, 8, 9, 16}) {
        VyMapData* d = alignment ? VyMapData::createData(alignment) : VyMapData::createData();
        EXPECT_EQ(d->ref.load(), 1);
        EXPECT_EQ(d->prev, d);
        EXPECT_EQ(d->next[0], d);
        EXPECT_EQ(d->highestLevel + d->size + int(d->levelSeed), 0);
        EXPECT_EQ(d->canShare, 1u);
        EXPECT_EQ(d->copyingInOrder, 0u);
        EXPECT_EQ(d->alignedNodes, alignment >= 9 ? 1u : 0u) << alignment;
        d->continueFreeData(8);
    }
}

TEST(VyMapLevels, SeedGroupsOfThreeSetBitsGiveTheLevel)
{
    VyMapData* d = VyMapData::createData();
    Node* path[VyMapData::LastLevel + 1] = {d};
    d->copyingInOrder = 1;
    // 0b110: not all three low bits set.
    d->levelSeed = 6;
    Node* a = d->node_create(path, 8);
    EXPECT_EQ(d->highestLevel, 0);
    EXPECT_EQ(d->levelSeed, 7u);
    // 0b111 111: two groups, but a level opens one at a time.
    d->levelSeed = 0x3f;
    Node* b = d->node_create(path, 8);
    EXPECT_EQ(d->highestLevel, 1);
    EXPECT_EQ(d->next[1], b);
    EXPECT_EQ(d->levelSeed, 0x40u);
    // Now level 2 is allowed; the third group is 0b011, so it stops there.
    d->levelSeed = 0x1bf; // 0b110 111 111
    Node* c = d->node_create(path, 8);
    EXPECT_EQ(d->highestLevel, 2);
    EXPECT_EQ(d->next[2], c);
    EXPECT_EQ(b->next[1], c);
    EXPECT_EQ(c->next[2], d);
    EXPECT_EQ(a->next[0], b);
    EXPECT_EQ(c->prev, b);
    EXPECT_EQ(d->prev, c);
    EXPECT_EQ(chainLengths(d), (std::vector<int>{3, 2, 1}));
    // All bits set reaches the top level, 11, and never beyond.
    for (int i = 0; i < 12; ++i) {
        d->levelSeed = 0xffffffffu;
        d->node_create(path, 8);
    }
    EXPECT_EQ(d->levelSeed, 0u); // incremented past the top
    EXPECT_EQ(chainLengths(d), (std::vector<int>{15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4}));

    // Deleting a node unlinks it on every level and fixes prev; here the last, top node.
    Node* last = d->prev;
    Node* before[VyMapData::LastLevel + 1];
    for (int level = 0; level <= VyMapData::LastLevel; ++level) {
        before[level] = d;
        while (before[level]->next[level] != last)
            before[level] = before[level]->next[level];
    }
    Node* previous = last->prev;
    d->node_delete(before, 8, last);
    EXPECT_EQ(d->prev, previous);
    EXPECT_EQ(previous->next[0], d);
    EXPECT_EQ(chainLengths(d), (std::vector<int>{14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3}));
    d->continueFreeData(8);
}

TEST(VyMapLevels, LevelThreeReseedsOnlyOutsideInOrderCopies)
{
    VyMapData* d = VyMapData::createData();
    Node* path[VyMapData::LastLevel + 1] = {d, d, d, d};
    d->highestLevel = 3;
    d->next[1] = d->next[2] = d->next[3] = d;
    srand(4321);
    const uint first = uint(rand());
    const uint second = uint(rand());
    srand(4321);
    d->levelSeed = 0x1ff; // level 3
    d->node_create(path, 8);
    EXPECT_EQ(d->levelSeed, first);
    d->levelSeed = 0xfff; // level 4 does not reseed
    d->node_create(path, 8);
    EXPECT_EQ(d->levelSeed, 0x1000u);
    d->copyingInOrder = 1;
    d->levelSeed = 0x1ff;
    d->node_create(path, 8);
    EXPECT_EQ(d->levelSeed, 0x200u);
    d->copyingInOrder = 0;
    d->levelSeed = 0x1ff;
    d->node_create(path, 8);
    EXPECT_EQ(d->levelSeed, second);
    EXPECT_EQ(chainLengths(d), (std::vector<int>{4, 4, 4, 4, 1}));
    d->continueFreeData(8);

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
    EXPECT_EQ(m.d->highestLevel, 3);
    EXPECT_EQ(m.d->levelSeed, expected);
    EXPECT_EQ(m.d->next[3], m.constFind(100000).i);
    EXPECT_TRUE(wellFormed(m));
}

TEST(VyMapLevels, DetachedCopyLevelsFollowTheCounterFromZero)
{
    for (int n : {7, 8, 63, 64, 600}) {
        SCOPED_TRACE(n);
        VyMap<int, int> original;
        std::mt19937 rng{unsigned(n)};
        Model model;
        while (int(model.size()) < n) {
            int key = int(rng() % 100000);
            original.insert(key, model[key] = -key);
        }
        original.remove(model.begin()->first); // give the original's seed some history
        original.insert(model.begin()->first, model.begin()->second);

        VyMap<int, int> copy = original;
        copy.detach();
        ASSERT_NE(copy.d, original.d);
        EXPECT_TRUE(matches(copy, model));
        EXPECT_EQ(copy.d->copyingInOrder, 0u);
        EXPECT_EQ(copy.d->levelSeed, uint(n)) << "a copy counts without reseeding";
        // Node k (from 1) takes seed k - 1: the first seven stay at level 0, every 8th node
        // reaches level 1, every 64th level 2, every 512th level 3.
        std::vector<int> expected = {n};
        for (int step = 8; step <= n; step *= 8)
            expected.push_back(n / step);
        EXPECT_EQ(chainLengths(copy.d), expected);
        std::vector<int> keys;
        for (const auto& kv : model)
            keys.push_back(kv.first);
        for (int level = 1; level <= copy.d->highestLevel; ++level) {
            const int step = 1 << (3 * level);
            int position = step;
            for (Node* x = copy.d->next[level]; x != copy.d; x = x->next[level], position += step)
                EXPECT_EQ(IntMap::const_iterator(x).key(), keys[size_t(position - 1)]) << level;
        }
    }
}

// A payload that asks for more than malloc's alignment.
struct alignas(32) Wide {
    int v = 0;
    Wide() = default;
    Wide(int x) : v(x) {}
};
int num(const Wide& w)
{
    return w.v;
}

TEST(VyMapAlignment, OverAlignedPayloadsGetAlignedNodes)
{
    VyMap<int, Wide> m;
    Model model;
    std::mt19937 rng(5);
    for (int step = 0; step < 2000; ++step) {
        int key = int(rng() % 200);
        if (rng() % 3) {
            m.insert(key, Wide(model[key] = step));
        } else {
            m.remove(key);
            model.erase(key);
        }
    }
    EXPECT_EQ(m.d->alignedNodes, 1u);
    VyMap<int, Wide> copy = m;
    copy.insert(1000, Wide(1));
    EXPECT_EQ(copy.d->alignedNodes, 1u);
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        EXPECT_EQ(reinterpret_cast<uintptr_t>(&it.value()) % 32, 0u);
    EXPECT_TRUE(matches(m, model));
    model[1000] = 1;
    EXPECT_TRUE(matches(copy, model));
}

// Exception safety.

class VyMapCounted : public ::testing::Test
{
protected:
    void SetUp() override { Counted::reset(); }
    void TearDown() override
    {
        Counted::copiesUntilThrow = 0;
        EXPECT_EQ(Counted::living(), 0);
    }
};

TEST_F(VyMapCounted, ThrowingCopyDuringDetachLeavesBothMapsShared)
{
    const int n = 20;
    // Every copy during the detach (two per node), then the new key and value.
    for (int throwAt = 1; throwAt <= 2 * n + 2; ++throwAt) {
        SCOPED_TRACE(throwAt);
        {
            VyMap<Counted, Counted> original;
            Model model;
            for (int i = 0; i < n; ++i)
                original.insert(Counted(i * 3), Counted(model[i * 3] = i));
            VyMap<Counted, Counted> copy = original;
            VyMapData* block = original.d;
            const Counted key(1), value(2);
            const int living = Counted::living();
            Counted::copiesUntilThrow = throwAt;
            EXPECT_THROW(copy.insert(key, value), std::bad_alloc);
            Counted::copiesUntilThrow = 0;
            // A failed detach leaves both maps on the old block; a failed new node is given
            // back from the finished copy.
            const bool detachFailed = throwAt <= 2 * n;
            EXPECT_EQ(copy.d == block, detachFailed);
            EXPECT_EQ(block->ref.load(), detachFailed ? 2 : 1);
            EXPECT_EQ(Counted::living(), living + (detachFailed ? 0 : 2 * n));
            EXPECT_TRUE(matches(copy, model));
            EXPECT_TRUE(matches(original, model));
            copy.insert(key, value);
            model[1] = 2;
            EXPECT_TRUE(matches(copy, model));
        }
        EXPECT_EQ(Counted::living(), 0);
    }
}

TEST_F(VyMapCounted, ThrowingInsertIntoOwnedMapChangesNothing)
{
    VyMap<Counted, Counted> m;
    Model model;
    // Enough nodes for three levels, so an unwound node may have opened a level.
    for (int i = 0; i < 100; ++i)
        m.insert(Counted(2 * i), Counted(model[2 * i] = i));
    for (int key = -1; key < 202; key += 4) { // odd keys: all missing
        for (int throwAt : {1, 2}) {          // the key's copy, then the value's
            const int living = Counted::living();
            Counted::copiesUntilThrow = throwAt;
            if (throwAt == 1)
                EXPECT_THROW(m[Counted(key)], std::bad_alloc);
            else
                EXPECT_THROW(m.insert(Counted(key), Counted(0)), std::bad_alloc);
            Counted::copiesUntilThrow = 0;
            EXPECT_EQ(Counted::living(), living);
            ASSERT_TRUE(matches(m, model)) << key;
        }
        // The list still accepts the key afterwards.
        m.insert(Counted(key), Counted(model[key] = -key));
    }
    EXPECT_TRUE(matches(m, model));

    // A node that opened a new level is unwound too; the empty level stays open.
    const int top = m.d->highestLevel;
    m.d->levelSeed = 0xffffffffu;
    Counted::copiesUntilThrow = 2;
    EXPECT_THROW(m.insert(Counted(1001), Counted(0)), std::bad_alloc);
    Counted::copiesUntilThrow = 0;
    EXPECT_EQ(m.d->highestLevel, top + 1);
    EXPECT_EQ(m.d->next[top + 1], m.d);
    EXPECT_TRUE(matches(m, model));
    m.insert(Counted(1001), Counted(model[1001] = 1));
    EXPECT_TRUE(matches(m, model));
}

// Threads and preconditions.

TEST(VyMapThreads, CopiesOfOneBlockDetachOnTwoThreads)
{
    VyMap<int, int> shared;
    Model model;
    for (int i = 0; i < 64; ++i)
        shared.insert(i, model[i] = i * i);
    auto work = [&shared](int salt, bool* ok) {
        *ok = true;
        for (int round = 0; round < 300; ++round) {
            VyMap<int, int> mine = shared;
            mine.insert(1000 + salt, round);
            mine.remove(round % 64);
            VyMap<int, int> again = mine;
            *ok = *ok && again.size() == 64 && again.value(1000 + salt) == round;
        }
    };
    bool ok1 = false, ok2 = false;
    std::thread t1(work, 1, &ok1), t2(work, 2, &ok2);
    t1.join();
    t2.join();
    EXPECT_TRUE(ok1 && ok2);
    EXPECT_EQ(shared.d->ref.load(), 1);
    EXPECT_TRUE(matches(shared, model));
}

TEST(VyMapDeathTest, FirstAndLastKeyNeedAnEntry)
{
    VyMap<int, int> m;
    EXPECT_DEATH((void)m.firstKey(), "Assertion `!isEmpty\\(\\)' failed");
    EXPECT_DEATH((void)m.lastKey(), "Assertion `!isEmpty\\(\\)' failed");
}

} // namespace
