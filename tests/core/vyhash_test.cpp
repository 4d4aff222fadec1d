#include "vyhash.h"

#include "counted.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdint.h>
#include <vector>

// Only its pointer type is used: the glyph cache's hash is VyHash<int, GlyphBitmap*>.
struct GlyphBitmap;

// Counted keys collide in runs: every eight consecutive values share one hash.
static uint vyHash(const Counted& key)
{
    return uint(key.value >> 3);
}

namespace
{

typedef std::map<int, int> Model;

// A value type that needs more than malloc's alignment.
struct alignas(32) Wide {
    int v;
};

// What a hash holds, read through its const iterators; each key once, as many as size().
template <class K, class T> Model contentsOf(const VyHash<K, T>& h)
{
    Model result;
    int visited = 0;
    for (auto it = h.begin(); it != h.end() && visited <= h.size(); ++it, ++visited)
        EXPECT_TRUE(result.emplace(valueOf(it.key()), valueOf(*it)).second) << "twice";
    EXPECT_EQ(visited, h.size());
    return result;
}

// Every node sits in bucket h % bucketCount, chains end at the block, the node count is
// `size`, the table size follows tableBits, and walking backwards reverses the forward walk.
template <class Key, class T> void checkStructure(const VyHash<Key, T>& h)
{
    const VyHashData* d = h.d;
    ASSERT_EQ(d->sentinelNext, nullptr);
    EXPECT_EQ(d->bucketCount, d->bucketCount ? VyHashData::bucketCountForBits(d->tableBits) : 0);
    int nodes = 0;
    for (int b = 0; b < d->bucketCount; ++b) {
        for (VyHashData::Node* n = d->bucketTable[b]; n != h.d->end(); n = n->next, ++nodes)
            ASSERT_TRUE(n && int(n->h % uint(d->bucketCount)) == b) << "bucket " << b;
    }
    ASSERT_EQ(nodes, d->size);
    std::vector<VyHashData::Node*> forward;
    for (auto it = h.begin(); it != h.end() && int(forward.size()) <= d->size; ++it)
        forward.push_back(it.i);
    ASSERT_EQ(int(forward.size()), d->size);
    auto it = h.end();
    for (auto n = forward.rbegin(); n != forward.rend(); ++n)
        ASSERT_EQ((--it).i, *n);
}

// Typed tests over a plain value type and over Counted, whose lifetimes the fixture checks.
template <class T> class VyHashTypedTest : public CountedTest
{
};
typedef ::testing::Types<int, Counted> ValueTypes;
TYPED_TEST_SUITE(VyHashTypedTest, ValueTypes);

// Random operations against std::map. Copies taken along the way must stay frozen while the
// live hash changes, so every mutator is also checked to detach; some calls are given keys and
// values that live in the hash itself, and erase is handed iterators taken before a copy
// shared the block.
template <class T> void runAgainstModel(unsigned seed, int steps, int keyRange)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return int(rng() % unsigned(n)); };
    VyHash<int, T> h;
    const VyHash<int, T>& ch = h;
    Model model;
    std::vector<std::pair<VyHash<int, T>, Model>> snapshots;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        const int key = pick(keyRange) - keyRange / 2, value = pick(1 << 20);
        auto found = model.find(key);
        const bool present = found != model.end();
        switch (pick(11)) {
        case 0:
        case 1: {
            auto it = h.insert(key, T(value));
            ASSERT_TRUE(it.key() == key && valueOf(*it) == value);
            model[key] = value;
            break;
        }
        case 2:
            h[key] = T(model[key] = value);
            break;
        case 3:
            ASSERT_EQ(h.remove(key), int(model.erase(key)));
            break;
        case 4:
            ASSERT_EQ(valueOf(h.take(key)), present ? found->second : 0);
            model.erase(key);
            break;
        case 5:
            ASSERT_EQ(h.contains(key), present);
            ASSERT_EQ(valueOf(h.value(key, T(-1))), present ? found->second : -1);
            ASSERT_EQ(valueOf(h.value(key)), present ? found->second : 0);
            break;
        case 6: {
            auto it = h.find(key);
            ASSERT_EQ(it == h.end(), !present);
            if (!present)
                break;
            // Half the time the block is shared before the erase, which then carries the
            // iterator over to this hash's own copy.
            VyHash<int, T> before = h;
            if (pick(2))
                before.detach();
            auto next = h.erase(it);
            model.erase(found);
            auto successor = ++before.constFind(key);
            ASSERT_EQ(next == h.end(), successor == before.constEnd());
            ASSERT_TRUE(next == h.end() || next.key() == successor.key());
            break;
        }
        case 7:
            if (model.empty())
                break;
            if (pick(2)) {
                model[key] = model[ch.constBegin().key()];
                h.insert(key, *ch.constBegin());
            } else if (pick(2)) {
                model.erase(ch.constBegin().key());
                ASSERT_EQ(h.remove(ch.constBegin().key()), 1);
            } else {
                auto last = --h.end();
                *last = T(model[last.key()] = value);
            }
            break;
        case 8:
            if (snapshots.size() < 4)
                snapshots.emplace_back(h, model);
            else
                snapshots[size_t(pick(4))] = {h, model};
            break;
        case 9:
            if (!snapshots.empty()) {
                // Continue from an older copy: the live hash and model jump back.
                const auto& s = snapshots[size_t(pick(int(snapshots.size())))];
                h = s.first;
                model = s.second;
            }
            break;
        case 10:
            if (pick(8) == 0) {
                h.reserve(pick(300));
            } else if (pick(30) == 0) {
                h.clear();
                model.clear();
            }
            break;
        }
        ASSERT_EQ(h.size(), int(model.size()));
        if (step % 97 == 0 || step == steps - 1) {
            ASSERT_EQ(contentsOf(h), model);
            checkStructure(h);
            for (const auto& s : snapshots) {
                ASSERT_EQ(contentsOf(s.first), s.second);
                ASSERT_EQ(s.first == h, s.second == model);
            }
            // keys() and values() follow the iteration order.
            const VyList<int> keys = h.keys();
            const VyList<T> values = h.values();
            auto it = h.constBegin();
            for (int i = 0; i < h.size(); ++i, ++it)
                ASSERT_TRUE(keys.at(i) == it.key() && valueOf(values.at(i)) == valueOf(*it));
        }
    }
}

TYPED_TEST(VyHashTypedTest, RandomOperationsMatchStdMap)
{
    for (unsigned seed : {1u, 7u, 1234u}) {
        SCOPED_TRACE(seed);
        runAgainstModel<TypeParam>(seed, 6000, 200);
        runAgainstModel<TypeParam>(seed + 100, 3000, 5000);
    }
}

TEST(VyHashTest, BucketCountsGrowAndReserveAtTheDocumentedPoints)
{
    VyHash<int, void*> h;
    h.insert(0, nullptr);
    EXPECT_EQ(h.capacity(), 17);
    // (number of keys after the insertion that grows the table, new bucket count)
    const int steps[][2] = {{18, 37}, {38, 67}, {68, 131}, {132, 257}, {258, 521}};
    int key = 1, previousBuckets = 17;
    for (const auto& s : steps) {
        for (; key + 1 < s[0]; ++key)
            h.insert(key, nullptr);
        // Replacing a key in a full table does not grow it; a new key does (also through []).
        h.insert(0, &h);
        h[key / 2] = &h;
        ASSERT_EQ(h.capacity(), previousBuckets) << "grew early at " << key << " keys";
        h[key++];
        EXPECT_EQ(h.capacity(), previousBuckets = s[1]) << "after " << key << " keys";
    }

    // (requested size, bucket count, hint bits)
    const int cases[][3] = {{1, 17, 4},  {17, 17, 4},   {18, 37, 5},     {37, 37, 5},
                            {38, 67, 6}, {100, 131, 7}, {131, 131, 7},   {132, 257, 8},
                            {0, 17, 4},  {-5, 17, 4},   {1031, 1031, 10}};
    for (const auto& c : cases) {
        VyHash<int, int> r;
        r.reserve(c[0]);
        EXPECT_TRUE(r.capacity() == c[1] && r.d->hintBits == c[2]) << c[0];
    }

    // Shrinking stops at half the size: 100 nodes keep at least 50 buckets.
    VyHash<int, int> s;
    for (int k = 0; k < 100; ++k)
        s.insert(k, k);
    ASSERT_EQ(s.capacity(), 131);
    s.reserve(10);
    EXPECT_EQ(s.capacity(), 67);
    // A bit count below 4 means 4; an overfull table grows by one bit on the next new key.
    s.d->rehash(1);
    EXPECT_EQ(s.capacity(), 17);
    s.insert(100, 100);
    EXPECT_EQ(s.capacity(), 37);
    checkStructure(s);
}

TEST(VyHashTest, NonPrimeBucketCountsUsedAsTheyStand_Kept)
{
    // Table sizes lie just above a power of two; the non-primes among them are used as is.
    std::vector<int> composite;
    for (int bits = 4; bits <= 30; ++bits) {
        const int count = VyHashData::bucketCountForBits(bits);
        EXPECT_TRUE(count >= 1 << bits && count < (1 << bits) + 32) << bits;
        int f = 2;
        while (f <= count / f && count % f)
            ++f;
        if (f <= count / f)
            composite.push_back(bits);
    }
    EXPECT_EQ(composite, (std::vector<int>{13, 14, 17, 21, 22, 23, 24, 25, 27, 28, 29, 30}));
    EXPECT_EQ(VyHashData::bucketCountForBits(27), 1 << 27);

    // Multiples of a factor of the count crowd into a fraction of the buckets, each in place.
    const int cases[][3] = {{8201, 13, 59}, {16409, 14, 61}, {131093, 17, 337}};
    for (const auto& c : cases) {
        VyHash<int, int> h;
        h.reserve(c[0]);
        EXPECT_TRUE(h.capacity() == c[0] && h.d->tableBits == c[1]) << c[0];
        for (int k = 0; k < 2000; ++k)
            h.insert(k * c[2], k);
        checkStructure(h);
    }
}

TEST(VyHashTest, ChainsAndEqualHashesKeepInsertionOrder)
{
    VyHash<int, int> small;
    // 17 buckets: 3, 20, 37 and 54 share bucket 3; new nodes go to the end of their chain.
    for (int k : {3, 1, 20, 16, 37, 54})
        small.insert(k, k);
    EXPECT_TRUE(small.keys() == (VyList<int>() << 1 << 3 << 20 << 37 << 54 << 16));

    // Runs of equal hashes interleaved in one chain keep their order when the table grows:
    // hashes 3, 20 and 37 share a bucket of 17, and the keys 8h to 8h + 7 have hash h.
    VyHash<Counted, int> h;
    std::map<uint, std::vector<int>> insertionOrder, iterationOrder;
    for (int k = 0; k < 24; ++k) {
        const int key = 8 * (3 + 17 * (k % 3)) + k / 3;
        h.insert(Counted(key), key);
        insertionOrder[uint(key >> 3)].push_back(key);
    }
    EXPECT_EQ(h.capacity(), 37);
    for (auto it = h.constBegin(); it != h.constEnd(); ++it) {
        EXPECT_EQ(it.key().value, *it);
        iterationOrder[uint(*it >> 3)].push_back(*it);
    }
    EXPECT_EQ(iterationOrder, insertionOrder);
    checkStructure(h);
}

TEST(VyHashTest, BlockLayoutNodesAndAlignment)
{
    const VyHashData& n = VyHashData::shared_null;
    EXPECT_TRUE(!n.sentinelNext && !n.bucketTable && n.canShare && !n.alignedNodes);
    EXPECT_EQ(n.size + n.nodeBytes + n.tableBits + n.bucketCount, 0);
    EXPECT_EQ(n.hintBits, 4);
    const int before = n.ref.load();
    {
        // Lookups and removals on an empty hash do not detach.
        VyHash<int, int> a;
        EXPECT_EQ(a.value(7, -1) + a.remove(7) + a.take(7) + (a.erase(a.end()) != a.end()), -1);
        EXPECT_EQ(n.ref.load(), before + 1);
        // A block that refuses sharing is copied at once, into an ordinary block.
        a.insert(1, 1);
        a.d->canShare = 0;
        VyHash<int, int> c = a, d;
        d = a;
        EXPECT_TRUE(c.d != a.d && d.d != a.d && d.d->canShare && c.value(1) == 1);
    }
    EXPECT_EQ(n.ref.load(), before) << "empty hashes give their reference back";

    // Two pointers, the 32-bit counters, the 16-bit bit counts, the bucket count, the flags.
    const size_t p = 2 * sizeof(void*);
    EXPECT_EQ(offsetof(VyHashData, bucketTable), sizeof(void*));
    EXPECT_EQ(offsetof(VyHashData, ref), p);
    EXPECT_EQ(offsetof(VyHashData, nodeBytes), p + 8);
    EXPECT_EQ(offsetof(VyHashData, hintBits), p + 12);
    EXPECT_EQ(offsetof(VyHashData, tableBits), p + 14);
    EXPECT_EQ(offsetof(VyHashData, bucketCount), p + 16);
    VyHashData flags{};
    flags.alignedNodes = 1;
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&flags)[p + 20], 2) << "bit 1";
    // Int-keyed nodes are three words: the key is the stored hash.
    VyHash<int, GlyphBitmap*> g;
    g.insert(-7, nullptr);
    EXPECT_EQ(g.d->nodeBytes, int(3 * sizeof(void*)));
    EXPECT_EQ(g.d->firstNode()->h, uint(-7));
    // 64-bit keys fold their high word onto the low one; long does so on 32-bit hosts too.
    EXPECT_EQ(::vyHash(0x100000001ull) | ::vyHash(0x200000002ull) | ::vyHash(-1L), 0u);

    // Over-aligned values get aligned nodes, also in copies.
    VyHash<int, Wide> h;
    for (int k = 0; k < 100; ++k)
        h.insert(k, Wide{k});
    VyHash<int, Wide> copy = h;
    EXPECT_EQ(copy.take(5).v, 5);
    EXPECT_TRUE(h.d->alignedNodes && copy.d->alignedNodes);
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        EXPECT_TRUE(reinterpret_cast<uintptr_t>(&*it) % 32 == 0 && it->v == it.key());
}

// A copy that throws leaves every hash as it was and leaks nothing.
class VyHashCountedTest : public CountedTest
{
};

TEST_F(VyHashCountedTest, ThrowingCopiesLeaveTheHashesAsTheyWere)
{
    VyHash<Counted, Counted> a;
    for (int k = 0; k < 20; ++k)
        a.insert(Counted(k), Counted(-k));
    const Model contents = contentsOf(a);
    // Copies 1 to 40 fail while detaching (a key and a value per node); 41 and 42 fail making
    // the new node in the finished copy.
    for (int failing = 1; failing <= 42; ++failing) {
        SCOPED_TRACE(failing);
        VyHash<Counted, Counted> b = a;
        Counted::copiesUntilThrow = failing;
        EXPECT_THROW(b.insert(Counted(100), Counted(100)), std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_EQ(Counted::living(), failing <= 40 ? 40 : 80);
        EXPECT_EQ(b.d == a.d, failing <= 40);
        EXPECT_EQ(contentsOf(a), contents);
        EXPECT_EQ(contentsOf(b), contents);
        checkStructure(b);
    }
    Counted::copiesUntilThrow = 1;
    EXPECT_THROW(a[Counted(500)], std::bad_alloc);
    Counted::copiesUntilThrow = 0;
    EXPECT_EQ(contentsOf(a), contents);
    // Removals destroy the key and the value.
    EXPECT_EQ(a.take(Counted(2)).value + a.remove(Counted(3)), -1);
    EXPECT_EQ(Counted::living(), 36);
}

// The two-argument detach_helper: malloc'd nodes (alignment 4) holding copies of every
// payload, in the same buckets and chain order.
TEST_F(VyHashCountedTest, DetachHelperCopiesEveryChainInOrder)
{
    typedef VyHash<Counted, Counted> H;
    typedef VyHashNode<Counted, Counted> Node;
    H h;
    for (int k = 0; k < 40; ++k)
        h.insert(Counted(k), Counted(-k));
    VyHashData* const x = h.d->detach_helper(H::duplicateNode, h.d->nodeBytes);
    EXPECT_EQ(Counted::living(), 160);
    EXPECT_TRUE(x->ref.load() == 1 && x->canShare && !x->alignedNodes && x->size == 40);
    ASSERT_EQ(x->bucketCount, h.d->bucketCount);
    for (int b = 0; b < x->bucketCount; ++b) {
        VyHashData::Node *c = x->bucketTable[b], *o = h.d->bucketTable[b];
        for (; o != h.d->end(); c = c->next, o = o->next) {
            ASSERT_TRUE(c != x->end() && c != o && c->h == o->h);
            EXPECT_TRUE(static_cast<Node*>(c)->key == static_cast<Node*>(o)->key &&
                        static_cast<Node*>(c)->value == static_cast<Node*>(o)->value);
        }
        EXPECT_EQ(c, x->end()) << "bucket " << b;
    }
    x->free_helper(H::deleteNode2);
}

// destroyAndFree releases the bucket table and the block but neither destroys nor frees the
// nodes: they stay for the caller.
TEST_F(VyHashCountedTest, DestroyAndFreeLeavesTheNodes)
{
    typedef VyHash<Counted, Counted> H;
    H h;
    for (int k = 0; k < 20; ++k)
        h.insert(Counted(k), Counted(k));
    VyHashData* const x = h.d->detach_helper(H::duplicateNode, h.d->nodeBytes);
    std::vector<VyHashData::Node*> nodes;
    for (VyHashData::Node* n = x->firstNode(); n != x->end(); n = VyHashData::nextNode(n))
        nodes.push_back(n);
    x->destroyAndFree();
    EXPECT_EQ(Counted::living(), 80);
    for (VyHashData::Node* n : nodes) {
        H::deleteNode2(n);
        ::free(n);
    }
}

TEST(VyHashDeathTest, IteratorStepsAndCorruptChains)
{
    VyHash<int, int> h;
    h.insert(5, 5);
    VyHash<int, int>::const_iterator end = h.constEnd();
    EXPECT_DEATH(++end,
                 "\\./src/vyhash:193: static VyHashData::Node\\* "
                 "VyHashData::nextNode\\(VyHashData::Node\\*\\): Assertion `next' failed\\.");
    VyHash<int, int>::iterator first = h.begin();
    EXPECT_DEATH(--first, "\\./src/vyhash:239: static VyHashData::Node\\* "
                          "VyHashData::previousNode\\(VyHashData::Node\\*\\): "
                          "Assertion `start >= 0' failed\\.");

    VyHash<int, GlyphBitmap*> g;
    g.insert(5, nullptr);
    // A chain head whose `next` is null instead of a node or the block.
    EXPECT_DEATH(
        {
            g.d->bucketTable[5]->next = nullptr;
            g.contains(5);
        },
        "\\./\\.\\./include/pub/vyhash:1840: VyHashNode<Key, T>\\*\\* VyHash<Key, "
        "T>::findNode\\(const Key&, uint\\*\\) const \\[with Key = int, T = GlyphBitmap\\*\\]: "
        "Assertion `\\*node == e \\|\\| \\(\\*node\\)->next' failed\\.");
    EXPECT_EQ(g.value(5), nullptr) << "the parent's hash is intact";
}

} // namespace
