#include "vyhash.h"

#include "associativemodel.h"

#include <gtest/gtest.h>

#include <map>
#include <stdint.h>
#include <tuple>
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

// A value type that needs more than malloc's alignment.
struct alignas(32) Wide {
    int v;
};

// The forward walk visits `size` nodes, and walking backwards from the end reverses it.
template <class Key, class T> void checkStructure(const VyHash<Key, T>& h)
{
    std::vector<VyHashData::Node*> forward;
    for (auto it = h.begin(); it != h.end() && int(forward.size()) <= h.size(); ++it)
        forward.push_back(it.i);
    ASSERT_EQ(int(forward.size()), h.size());
    auto it = h.end();
    for (auto n = forward.rbegin(); n != forward.rend(); ++n)
        ASSERT_EQ((--it).i, *n);
}

// Typed tests over a plain value type and over Counted, whose lifetimes the fixture checks.
template <class T> using VyHashTypedTest = CountedTest;
typedef ::testing::Types<int, Counted> ValueTypes;
TYPED_TEST_SUITE(VyHashTypedTest, ValueTypes);

TYPED_TEST(VyHashTypedTest, RandomOperationsMatchStdMap)
{
    typedef VyHash<int, TypeParam> Hash;
    auto reserve = [](Hash& h, Model&, int, int value) {
        if (value % 8 == 0)
            h.reserve(value % 300);
    };
    for (unsigned seed : {1u, 7u, 1234u}) {
        SCOPED_TRACE(seed);
        // Few keys, so lookups hit; then many, so the table grows through several sizes.
        runAgainstModel<int, TypeParam, Hash>(seed, 6000, 200, checkStructure<int, TypeParam>,
                                              reserve);
        runAgainstModel<int, TypeParam, Hash>(seed + 100, 3000, 5000,
                                              checkStructure<int, TypeParam>, reserve);
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
    const int cases[][3] = {{1, 17, 4},    {17, 17, 4}, {18, 37, 5},     {100, 131, 7},
                            {132, 257, 8}, {0, 17, 4},  {1031, 1031, 10}};
    for (const auto& c : cases) {
        VyHash<int, int> r;
        r.reserve(c[0]);
        EXPECT_EQ(std::make_pair(r.capacity(), int(r.d->hintBits)), std::make_pair(c[1], c[2]))
            << c[0];
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
    // 2^bits plus the table's offset for bits 4 to 30; 8201, 16409, 131093 and others are not
    // prime, and from 27 bits on the count is a plain power of two.
    const int offsets[] = {1, 5,  3, 3,  1, 9, 7, 5,  3,  9, 25, 3, 1, 21,
                           3, 21, 7, 15, 9, 5, 3, 29, 15, 0, 0,  0, 0};
    for (int bits = 4; bits <= 30; ++bits)
        EXPECT_EQ(VyHashData::bucketCountForBits(bits), (1 << bits) + offsets[bits - 4]) << bits;
    VyHash<int, int> h;
    h.reserve(8201);
    EXPECT_EQ(h.capacity(), 8201);
    EXPECT_EQ(h.d->tableBits, 13);
}

TEST(VyHashTest, ChainsAndEqualHashesKeepInsertionOrder)
{
    VyHash<int, int> small;
    // 17 buckets: 3, 20, 37 and 54 share bucket 3; new nodes go to the end of their chain.
    for (int k : {3, 1, 20, 16, 37, 54})
        small.insert(k, k);
    EXPECT_EQ(valuesOf(small.keys()), (std::vector<int>{1, 3, 20, 37, 54, 16}));

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

TEST(VyHashTest, EmptyLookupsFoldedKeysAndAlignedNodes)
{
    // Lookups and removals on an empty hash leave it on the shared block.
    VyHash<int, int> empty;
    EXPECT_EQ(empty.remove(7), 0);
    EXPECT_EQ(empty.take(7), 0);
    EXPECT_EQ(empty.d, &VyHashData::shared_null);
    // 64-bit keys fold their high word onto the low one; long does so on 32-bit hosts too.
    EXPECT_EQ(::vyHash(0x100000001ull), 0u);
    EXPECT_EQ(::vyHash(-1L), 0u);

    // Over-aligned values get aligned nodes, also in copies.
    VyHash<int, Wide> h;
    for (int k = 0; k < 100; ++k)
        h.insert(k, Wide{k});
    VyHash<int, Wide> copy = h;
    EXPECT_EQ(copy.take(5).v, 5);
    EXPECT_TRUE(copy.d->alignedNodes);
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        EXPECT_EQ(reinterpret_cast<uintptr_t>(&*it) % 32, 0u);
}

using VyHashCountedTest = CountedTest;

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
    EXPECT_EQ(std::make_tuple(x->ref.load(), bool(x->canShare), bool(x->alignedNodes), x->size),
              std::make_tuple(1, true, false, 40));
    ASSERT_EQ(x->bucketCount, h.d->bucketCount);
    for (int b = 0; b < x->bucketCount; ++b) {
        VyHashData::Node *c = x->bucketTable[b], *o = h.d->bucketTable[b];
        for (; o != h.d->end(); c = c->next, o = o->next) {
            ASSERT_NE(c, x->end());
            ASSERT_NE(c, o);
            EXPECT_EQ(c->h, o->h);
            EXPECT_EQ(static_cast<Node*>(c)->key, static_cast<Node*>(o)->key);
            EXPECT_EQ(static_cast<Node*>(c)->value, static_cast<Node*>(o)->value);
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
}

} // namespace
