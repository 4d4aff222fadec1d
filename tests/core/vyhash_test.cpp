#include "vyhash.h"

#include "counted.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <stdint.h>
#include <string>
#include <unordered_map>
#include <vector>

// Only its pointer type is used: the glyph cache's hash is VyHash<int, GlyphBitmap*>.
struct GlyphBitmap;

// Counted keys hash to their value.
static uint vyHash(const Counted& key)
{
    return uint(key.value);
}

namespace
{

// Keys whose hashes collide in runs: every group of eight consecutive values shares one hash.
struct CollidingKey {
    int v;
    bool operator==(const CollidingKey& o) const { return v == o.v; }
};
uint vyHash(const CollidingKey& key)
{
    return uint(key.v >> 3);
}

// A value type that needs more than malloc's alignment.
struct alignas(32) Wide {
    int v = 0;
    Wide() = default;
    Wide(int x) : v(x) {}
};

int num(int v)
{
    return v;
}
int num(const Counted& v)
{
    return v.value;
}

// What a hash holds, read through its const iterators; each key once, as many as size().
template <class T> std::map<int, int> contentsOf(const VyHash<int, T>& h)
{
    std::map<int, int> result;
    int visited = 0;
    for (auto it = h.begin(); it != h.end() && visited <= h.size(); ++it, ++visited)
        EXPECT_TRUE(result.emplace(it.key(), num(it.value())).second) << "key twice " << it.key();
    EXPECT_EQ(visited, h.size());
    return result;
}

template <class M> std::map<int, int> ordered(const M& model)
{
    return std::map<int, int>(model.begin(), model.end());
}

// Every node sits in bucket h % bucketCount, chains end at the block, the node count is
// `size`, the table size follows tableBits, and walking backwards reverses the forward walk.
template <class Key, class T> void checkStructure(const VyHash<Key, T>& h)
{
    const VyHashData* d = h.d;
    VyHashData::Node* e = const_cast<VyHashData*>(d)->end();
    ASSERT_EQ(d->sentinelNext, nullptr);
    if (d->bucketCount == 0) {
        EXPECT_EQ(d->size, 0);
        EXPECT_EQ(d->bucketTable, nullptr);
    } else {
        EXPECT_EQ(d->bucketCount, VyHashData::bucketCountForBits(d->tableBits));
    }
    int nodes = 0;
    for (int b = 0; b < d->bucketCount; ++b) {
        for (VyHashData::Node* n = d->bucketTable[b]; n != e; n = n->next, ++nodes) {
            ASSERT_NE(n, nullptr);
            ASSERT_EQ(int(n->h % uint(d->bucketCount)), b);
        }
    }
    ASSERT_EQ(nodes, d->size);
    std::vector<VyHashData::Node*> forward, backward;
    for (auto it = h.begin(); it != h.end() && int(forward.size()) <= d->size; ++it)
        forward.push_back(it.i);
    ASSERT_EQ(int(forward.size()), d->size);
    auto it = h.end();
    for (int i = 0; i < d->size; ++i)
        backward.insert(backward.begin(), (--it).i);
    EXPECT_EQ(forward, backward);
}

std::vector<int> chainOf(const VyHashData* d, int bucket)
{
    std::vector<int> chain;
    for (VyHashData::Node* n = d->bucketTable[bucket]; n != const_cast<VyHashData*>(d)->end();
         n = n->next)
        chain.push_back(int(n->h));
    return chain;
}

bool isPrime(int n)
{
    for (int f = 2; f <= n / f; ++f) {
        if (n % f == 0)
            return false;
    }
    return n >= 2;
}

// Typed tests over a plain value type and over Counted, whose lifetimes are checked after
// every test.
template <class T> class VyHashTypedTest : public ::testing::Test
{
protected:
    void SetUp() override { Counted::reset(); }
    void TearDown() override
    {
        EXPECT_EQ(Counted::living(), 0) << "leaked or double-destroyed values";
        Counted::reset();
    }
};

typedef ::testing::Types<int, Counted> ValueTypes;
TYPED_TEST_SUITE(VyHashTypedTest, ValueTypes);

TYPED_TEST(VyHashTypedTest, LookupsIterationAndEquality)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash h;
    const Hash& ch = h;
    EXPECT_EQ(h.begin(), h.end());
    EXPECT_EQ(num(h.value(7, TypeParam(-1))), -1);
    EXPECT_EQ(h.remove(7), 0);
    EXPECT_EQ(num(h.take(7)), 0);
    EXPECT_EQ(h.d, &VyHashData::shared_null) << "lookups and removals on an empty hash detach";

    for (int k = -50; k < 50; ++k)
        EXPECT_EQ(h.insert(k * 7, TypeParam(k)).key(), k * 7);
    EXPECT_EQ(num(h.insert(14, TypeParam(-2)).value()), -2);
    EXPECT_EQ(h.size(), 100) << "replacing keeps one node per key";
    EXPECT_EQ(h.count(14), 1);
    EXPECT_EQ(num(h[1]), 0);
    h[1] = TypeParam(55);
    EXPECT_EQ(num(ch[1]), 55);
    EXPECT_EQ(num(ch[2]), 0);
    EXPECT_EQ(h.size(), 101) << "const operator[] must not insert";
    EXPECT_EQ(ch.constFind(-351), ch.constEnd());
    *h.find(-350) = TypeParam(4);
    EXPECT_EQ(num(ch.find(-350).value()), 4);
    EXPECT_EQ(h.erase(h.end()), h.end());

    // keys() and values() follow the iteration order; post-steps return the old position.
    VyList<int> keys = h.keys();
    VyList<TypeParam> values = h.values();
    ASSERT_EQ(keys.size(), h.size());
    int i = 0;
    for (auto it = h.constBegin(); it != h.constEnd(); ++it, ++i) {
        EXPECT_EQ(keys.at(i), it.key());
        EXPECT_EQ(num(values.at(i)), num(it.value()));
    }
    typename Hash::iterator it = h.begin(), old = it++;
    EXPECT_EQ(old, h.begin());
    EXPECT_EQ(it--, ++typename Hash::iterator(old));
    EXPECT_EQ(it, old);

    // Erasing while iterating.
    std::map<int, int> model = contentsOf(h);
    for (auto e = h.begin(); e != h.end();) {
        if (e.key() % 3 == 0) {
            model.erase(e.key());
            e = h.erase(e);
        } else {
            ++e;
        }
    }
    EXPECT_EQ(contentsOf(h), model);
    checkStructure(h);

    // Equality: the same pairs in another order and table size; one value or key differs.
    Hash a, b;
    EXPECT_TRUE(a == b);
    b.reserve(500);
    for (int k = 0; k < 50; ++k) {
        a.insert(k, TypeParam(k));
        b.insert(49 - k, TypeParam(49 - k));
    }
    EXPECT_TRUE(a == b);
    b.insert(10, TypeParam(11));
    EXPECT_TRUE(a != b);
    b.remove(10);
    b.insert(50, TypeParam(10));
    EXPECT_FALSE(a == b) << "same size, one key differs";

    h.clear();
    EXPECT_EQ(h.d, &VyHashData::shared_null);
    EXPECT_EQ(h.capacity(), 0);
}

TYPED_TEST(VyHashTypedTest, CopiesShareUntilTheFirstChange)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash a;
    for (int k = 0; k < 30; ++k)
        a.insert(k, TypeParam(k + 100));
    Hash b = a;
    // Lookups, const iteration, keys and values leave the block shared.
    EXPECT_EQ(num(b.value(3)), 103);
    EXPECT_NE(static_cast<const Hash&>(b).constFind(5), static_cast<const Hash&>(b).constEnd());
    EXPECT_EQ(b.keys().size(), 30);
    EXPECT_EQ(b.values().size(), 30);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.d, b.d);
    EXPECT_FALSE(a.isDetached());

    Hash c;
    c = b;
    EXPECT_EQ(a.d->ref.load(), 3);
    Hash moved(std::move(c));
    EXPECT_EQ(c.d, &VyHashData::shared_null);
    moved = Hash();
    const Hash& alias = b;
    b = alias;
    EXPECT_EQ(a.d->ref.load(), 2);
    b.swap(moved);
    EXPECT_EQ(b.d, &VyHashData::shared_null);
    moved.clear();
    EXPECT_EQ(a.d->ref.load(), 1);

    // A copied block keeps the table size, hint and chain order.
    Hash d = a;
    d.detach();
    EXPECT_NE(d.d, a.d);
    EXPECT_TRUE(d.isDetached());
    EXPECT_EQ(d.d->bucketCount, a.d->bucketCount);
    EXPECT_EQ(d.d->tableBits, a.d->tableBits);
    EXPECT_EQ(d.d->hintBits, a.d->hintBits);
    EXPECT_EQ(d.d->nodeBytes, int(sizeof(VyHashNode<int, TypeParam>)));
    EXPECT_TRUE(d.d->canShare);
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(d.keys().at(i), a.keys().at(i));
    checkStructure(d);
}

// For every mutator: copy, change the copy, and the original must be as it was.
TYPED_TEST(VyHashTypedTest, EveryMutatorDetachesFromCopies)
{
    typedef VyHash<int, TypeParam> Hash;
    typedef std::map<int, int> Model;
    typedef TypeParam T;
    const std::vector<std::pair<const char*, std::function<void(Hash&, Model&)>>> cases = {
        {"insert new", [](Hash& h, Model& m) { h.insert(500, T(m[500] = 5)); }},
        {"insert existing", [](Hash& h, Model& m) { h.insert(3, T(m[3] = 9)); }},
        {"operator[] new",
         [](Hash& h, Model& m) {
             EXPECT_EQ(num(h[600]), 0);
             m[600] = 0;
         }},
        {"operator[] existing", [](Hash& h, Model& m) { h[4] = T(m[4] = -4); }},
        {"remove", [](Hash& h, Model& m) { EXPECT_EQ(h.remove(5), int(m.erase(5))); }},
        {"remove absent", [](Hash& h, Model&) { EXPECT_EQ(h.remove(700), 0); }},
        {"take",
         [](Hash& h, Model& m) {
             EXPECT_EQ(num(h.take(6)), 206);
             m.erase(6);
         }},
        {"take absent", [](Hash& h, Model&) { EXPECT_EQ(num(h.take(701)), 0); }},
        {"erase",
         [](Hash& h, Model& m) {
             h.erase(h.find(7));
             m.erase(7);
         }},
        {"clear",
         [](Hash& h, Model& m) {
             h.clear();
             m.clear();
         }},
        {"reserve", [](Hash& h, Model&) { h.reserve(1000); }},
        {"write through find", [](Hash& h, Model& m) { *h.find(8) = T(m[8] = 88); }},
        {"write through begin",
         [](Hash& h, Model& m) {
             auto it = h.begin();
             it.value() = T(m[it.key()] = 77);
         }},
        {"write through end",
         [](Hash& h, Model& m) {
             auto it = --h.end();
             *it = T(m[it.key()] = 66);
         }},
        {"detach", [](Hash& h, Model&) { h.detach(); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        Hash original;
        Model model;
        for (int k = 0; k < 40; ++k)
            original.insert(k, T(model[k] = k + 200));
        VyHashData* block = original.d;
        Hash copy = original;
        Model changed = model;
        c.second(copy, changed);
        EXPECT_EQ(original.d, block);
        EXPECT_EQ(contentsOf(original), model);
        EXPECT_EQ(contentsOf(copy), changed);
        if (copy.d != &VyHashData::shared_null) {
            EXPECT_NE(copy.d, original.d);
            EXPECT_TRUE(copy.isDetached());
        }
        EXPECT_TRUE(original.isDetached());
        checkStructure(copy);
    }

    // An iterator taken while the block was owned, used after a copy shared it: erase carries
    // it over to this hash's own copy and returns the successor there.
    for (int position = 0; position < 40; ++position) {
        SCOPED_TRACE(position);
        Hash h;
        for (int k = 0; k < 40; ++k)
            h.insert(k * 3, T(k));
        const Model before = contentsOf(h);
        auto it = h.begin();
        std::advance(it, position);
        const int erasedKey = it.key();
        Hash copy = h;
        auto next = h.erase(it);
        Model after = before;
        after.erase(erasedKey);
        EXPECT_EQ(contentsOf(copy), before);
        EXPECT_EQ(contentsOf(h), after);
        auto successor = ++copy.constFind(erasedKey);
        if (successor == copy.constEnd()) {
            EXPECT_EQ(next, h.end());
        } else {
            ASSERT_NE(next, h.end());
            EXPECT_EQ(next, h.find(successor.key()));
        }
        checkStructure(h);
    }
}

// Arguments that refer into the hash itself: its own values and keys.
TYPED_TEST(VyHashTypedTest, ArgumentsReferringIntoTheHashItself)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash h;
    for (int k = 0; k < 17; ++k)
        h.insert(k, TypeParam(k * 10));
    const Hash& ch = h;

    // A reference to a stored value while the insertion rehashes (17 nodes in 17 buckets).
    ASSERT_EQ(h.capacity(), 17);
    h.insert(1000, *ch.constFind(4));
    ASSERT_EQ(h.capacity(), 37) << "the insertion grew the table";
    EXPECT_EQ(num(h.value(1000)), 40);
    h.insert(101, h[2]);
    EXPECT_EQ(num(h.value(101)), 20);
    h.insert(5, *ch.constFind(5));
    EXPECT_EQ(num(h.value(5)), 50);
    h.insert(ch.constFind(6).key(), TypeParam(61));
    EXPECT_EQ(num(h.value(6)), 61);
    h[ch.constFind(7).key()] = TypeParam(71);
    EXPECT_EQ(num(h.value(7)), 71);

    // The same while shared: the references point into the block the copy keeps.
    Hash copy = h;
    h.insert(2000, *ch.constFind(8));
    EXPECT_EQ(num(h.value(2000)), 80);
    EXPECT_FALSE(copy.contains(2000));
    copy = h;
    h.insert(ch.constFind(9).key(), *ch.constFind(10));
    EXPECT_EQ(num(h.value(9)), 100);
    EXPECT_EQ(num(copy.value(9)), 90);

    // Removing by a key that lives in the node being removed, shared and owned.
    copy = h;
    EXPECT_EQ(h.remove(ch.constFind(11).key()), 1);
    EXPECT_FALSE(h.contains(11));
    EXPECT_TRUE(copy.contains(11));
    copy = Hash();
    const int firstKey = ch.begin().key();
    EXPECT_EQ(h.remove(ch.begin().key()), 1);
    EXPECT_FALSE(h.contains(firstKey));
    const int nextKey = ch.begin().key();
    const int nextValue = num(ch.begin().value());
    EXPECT_EQ(num(h.take(ch.begin().key())), nextValue);
    EXPECT_FALSE(h.contains(nextKey));
    checkStructure(h);
}

// Random operations against std::unordered_map, with copies taken along the way whose
// contents must stay frozen while the live hash changes.
template <class T> void runAgainstModel(unsigned seed, int steps, int keyRange)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return int(rng() % unsigned(n)); };
    VyHash<int, T> h;
    std::unordered_map<int, int> model;
    std::vector<std::pair<VyHash<int, T>, std::map<int, int>>> snapshots;

    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        const int key = pick(keyRange) - keyRange / 2;
        const int value = pick(1 << 20);
        auto found = model.find(key);
        const bool present = found != model.end();
        switch (pick(11)) {
        case 0:
        case 1:
        case 2:
            h.insert(key, T(value));
            model[key] = value;
            break;
        case 3:
            h[key] = T(value);
            model[key] = value;
            break;
        case 4:
            ASSERT_EQ(h.remove(key), int(model.erase(key)));
            break;
        case 5:
            ASSERT_EQ(num(h.take(key)), present ? found->second : 0);
            model.erase(key);
            break;
        case 6:
            ASSERT_EQ(h.contains(key), present);
            ASSERT_EQ(num(h.value(key, T(-1))), present ? found->second : -1);
            ASSERT_EQ(num(h.value(key)), present ? found->second : 0);
            break;
        case 7: {
            auto it = h.find(key);
            ASSERT_EQ(it == h.end(), !present);
            if (present && pick(2)) {
                h.erase(it);
                model.erase(found);
            } else if (present) {
                *it = T(found->second = value);
            }
            break;
        }
        case 8:
            if (snapshots.size() < 4)
                snapshots.emplace_back(h, ordered(model));
            else
                snapshots[size_t(pick(4))] = std::make_pair(h, ordered(model));
            break;
        case 9:
            if (!snapshots.empty()) {
                // Continue from an older copy: the live hash and model jump back.
                const auto& s = snapshots[size_t(pick(int(snapshots.size())))];
                h = s.first;
                model = std::unordered_map<int, int>(s.second.begin(), s.second.end());
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
            ASSERT_EQ(contentsOf(h), ordered(model));
            checkStructure(h);
            for (const auto& snapshot : snapshots)
                ASSERT_EQ(contentsOf(snapshot.first), snapshot.second);
        }
    }
}

TYPED_TEST(VyHashTypedTest, RandomOperationsMatchStdUnorderedMap)
{
    for (unsigned seed : {1u, 7u, 1234u}) {
        SCOPED_TRACE(seed);
        runAgainstModel<TypeParam>(seed, 6000, 200);
        runAgainstModel<TypeParam>(seed + 100, 3000, 5000);
    }
}

// Bucket counts and rehashing.

TEST(VyHashTest, BucketCountsGrowAndReserveAtTheDocumentedPoints)
{
    VyHash<int, void*> h;
    // (number of keys after the insertion that grows the table, new bucket count, bits)
    const struct {
        int keys, buckets, bits;
    } steps[] = {{1, 17, 4}, {18, 37, 5}, {38, 67, 6}, {68, 131, 7}, {132, 257, 8}, {258, 521, 9}};
    int key = 0, previousBuckets = 0;
    for (const auto& s : steps) {
        while (key + 1 < s.keys) {
            h.insert(key++, nullptr);
            ASSERT_EQ(h.capacity(), previousBuckets) << "grew early at " << key << " keys";
        }
        h.insert(key++, nullptr);
        EXPECT_EQ(h.capacity(), s.buckets) << "after " << key << " keys";
        EXPECT_EQ(h.d->tableBits, s.bits);
        EXPECT_EQ(h.d->hintBits, 4) << "only a wanted bucket count sets the hint";
        previousBuckets = s.buckets;
    }
    checkStructure(h);
    // Replacing an existing key in a full table does not grow it; operator[] on a new key does.
    VyHash<int, void*> full;
    for (int k = 0; k < 17; ++k)
        full.insert(k, nullptr);
    full.insert(16, &full);
    full[3] = &full;
    EXPECT_EQ(full.capacity(), 17);
    full[17];
    EXPECT_EQ(full.capacity(), 37);

    const struct {
        int request, buckets, hintBits;
    } cases[] = {{1, 17, 4},  {17, 17, 4},   {18, 37, 5},     {37, 37, 5},
                 {38, 67, 6}, {100, 131, 7}, {131, 131, 7},   {132, 257, 8},
                 {0, 17, 4},  {-5, 17, 4},   {1031, 1031, 10}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.request);
        VyHash<int, int> r;
        r.reserve(c.request);
        EXPECT_EQ(r.capacity(), c.buckets);
        EXPECT_EQ(r.d->hintBits, c.hintBits);
        EXPECT_TRUE(r.isEmpty());
        EXPECT_NE(r.d, &VyHashData::shared_null);
    }

    // Shrinking stops at half the size: 100 nodes keep at least 50 buckets.
    VyHash<int, int> s;
    for (int k = 0; k < 100; ++k)
        s.insert(k, k);
    ASSERT_EQ(s.capacity(), 131);
    s.reserve(10);
    EXPECT_EQ(s.d->hintBits, 4);
    EXPECT_EQ(s.capacity(), 67);
    // Overfull tables still find everything and grow on the next new key.
    s.d->rehash(4);
    EXPECT_EQ(s.capacity(), 17);
    for (int k = 0; k < 100; ++k)
        ASSERT_EQ(s.value(k, -1), k);
    checkStructure(s);
    s.insert(100, 100);
    EXPECT_EQ(s.capacity(), 37);
    // Bit counts below 4 mean 4; the same bit count changes nothing.
    VyHashData::Node** table = s.d->bucketTable;
    s.d->rehash(5);
    EXPECT_EQ(s.d->bucketTable, table);
    s.d->rehash(1);
    EXPECT_EQ(s.capacity(), 17);
    checkStructure(s);
}

TEST(VyHashTest, NonPrimeBucketCountsUsedAsTheyStand_Kept)
{
    // Table sizes lie just above a power of two; the non-primes among them are used as is.
    std::vector<int> composite;
    for (int bits = 4; bits <= 30; ++bits) {
        const long long count = VyHashData::bucketCountForBits(bits);
        EXPECT_GE(count, 1LL << bits) << bits;
        EXPECT_LT(count, (1LL << bits) + 32) << bits;
        if (!isPrime(int(count)))
            composite.push_back(bits);
    }
    EXPECT_EQ(composite, (std::vector<int>{13, 14, 17, 21, 22, 23, 24, 25, 27, 28, 29, 30}));
    EXPECT_EQ(VyHashData::bucketCountForBits(27), 1 << 27);

    const struct {
        int buckets, bits, factor;
    } cases[] = {{8201, 13, 59}, {16409, 14, 61}, {131093, 17, 337}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.buckets);
        EXPECT_EQ(c.buckets % c.factor, 0);
        VyHash<int, int> h, more;
        h.reserve(c.buckets);
        EXPECT_EQ(h.capacity(), c.buckets);
        EXPECT_EQ(h.d->tableBits, c.bits);
        more.reserve(c.buckets + 1);
        EXPECT_EQ(more.d->tableBits, c.bits + 1);
        // Multiples of the factor crowd into a fraction of the buckets and still work.
        for (int k = 0; k < 2000; ++k)
            h.insert(k * c.factor, k);
        EXPECT_EQ(h.capacity(), c.buckets);
        for (int k = 0; k < 2000; ++k)
            ASSERT_EQ(h.value(k * c.factor, -1), k);
        int used = 0;
        for (int b = 0; b < h.capacity(); ++b)
            used += h.d->bucketTable[b] != h.d->end();
        EXPECT_LE(used, c.buckets / c.factor + 1);
        checkStructure(h);
    }
}

TEST(VyHashTest, ChainsAndEqualHashesKeepInsertionOrder)
{
    VyHash<int, int> small;
    // 17 buckets: 3, 20, 37 and 54 share bucket 3; new nodes go to the end of their chain.
    for (int k : {3, 1, 20, 16, 37, 54})
        small.insert(k, k);
    ASSERT_EQ(small.capacity(), 17);
    EXPECT_EQ(chainOf(small.d, 3), (std::vector<int>{3, 20, 37, 54}));
    const VyList<int> smallKeys = small.keys();
    EXPECT_EQ(std::vector<int>(smallKeys.begin(), smallKeys.end()),
              (std::vector<int>{1, 3, 20, 37, 54, 16}));
    small.remove(37);
    EXPECT_EQ(chainOf(small.d, 3), (std::vector<int>{3, 20, 54}));

    // Runs of equal hashes, inserted interleaved, keep their order across rehashes and copies.
    VyHash<CollidingKey, int> h;
    std::vector<int> keys(400);
    for (int i = 0; i < 400; ++i)
        keys[size_t(i)] = i;
    std::shuffle(keys.begin(), keys.end(), std::mt19937(42));
    std::map<uint, std::vector<int>> insertionOrder, iterationOrder;
    int rehashes = 0;
    for (int k : keys) {
        const int before = h.capacity();
        h.insert(CollidingKey{k}, k);
        rehashes += h.capacity() != before;
        insertionOrder[uint(k >> 3)].push_back(k);
    }
    EXPECT_GE(rehashes, 4);
    for (auto it = h.constBegin(); it != h.constEnd(); ++it)
        iterationOrder[uint(it.key().v >> 3)].push_back(it.key().v);
    EXPECT_EQ(iterationOrder, insertionOrder);
    for (int k = 0; k < 400; ++k)
        ASSERT_EQ(h.value(CollidingKey{k}, -1), k);
    EXPECT_FALSE(h.contains(CollidingKey{400}));
    VyHash<CollidingKey, int> copy = h;
    copy.detach();
    std::vector<int> a, b;
    for (auto it = h.constBegin(); it != h.constEnd(); ++it)
        a.push_back(it.key().v);
    for (auto it = copy.constBegin(); it != copy.constEnd(); ++it)
        b.push_back(it.key().v);
    EXPECT_EQ(a, b);
    checkStructure(copy);
}

// The block and its nodes.

TEST(VyHashTest, SharedNullBlockLayoutAndNodeSize)
{
    const VyHashData& n = VyHashData::shared_null;
    EXPECT_EQ(n.sentinelNext, nullptr);
    EXPECT_EQ(n.bucketTable, nullptr);
    EXPECT_EQ(n.size + n.nodeBytes + n.tableBits + n.bucketCount, 0);
    EXPECT_EQ(n.hintBits, 4);
    EXPECT_TRUE(n.canShare);
    EXPECT_FALSE(n.alignedNodes);
    // Empty hashes hold a reference to shared_null and give it back.
    const int before = n.ref.load();
    {
        VyHash<int, int> a, b;
        VyHash<int, int> c = a;
        EXPECT_EQ(n.ref.load(), before + 3);
        c.insert(1, 1);
        EXPECT_EQ(n.ref.load(), before + 2);
        c.clear();
        EXPECT_EQ(n.ref.load(), before + 3);
    }
    EXPECT_EQ(n.ref.load(), before);

    // Two pointers, the 32-bit counters, the 16-bit bit counts, the bucket count, the flags.
    const size_t p = 2 * sizeof(void*);
    EXPECT_EQ(offsetof(VyHashData, sentinelNext), 0u);
    EXPECT_EQ(offsetof(VyHashData, bucketTable), sizeof(void*));
    EXPECT_EQ(offsetof(VyHashData, ref), p);
    EXPECT_EQ(offsetof(VyHashData, size), p + 4);
    EXPECT_EQ(offsetof(VyHashData, nodeBytes), p + 8);
    EXPECT_EQ(offsetof(VyHashData, hintBits), p + 12);
    EXPECT_EQ(offsetof(VyHashData, tableBits), p + 14);
    EXPECT_EQ(offsetof(VyHashData, bucketCount), p + 16);
    VyHashData flags{};
    unsigned char byte;
    flags.alignedNodes = 1;
    memcpy(&byte, reinterpret_cast<const char*>(&flags) + p + 20, 1);
    EXPECT_EQ(byte, 2) << "alignedNodes is bit 1 of the flag byte";
    flags.alignedNodes = 0;
    flags.canShare = 1;
    memcpy(&byte, reinterpret_cast<const char*>(&flags) + p + 20, 1);
    EXPECT_EQ(byte, 1) << "canShare is bit 0 of the flag byte";

    // Int-keyed nodes are three words: the key is the stored hash. Other keys sit beside it.
    VyHash<int, GlyphBitmap*> h;
    h.insert(-7, nullptr);
    EXPECT_EQ(h.d->nodeBytes, int(3 * sizeof(void*)));
    EXPECT_EQ(h.d->firstNode()->h, uint(-7));
    EXPECT_EQ(h.constBegin().key(), -7);
    EXPECT_EQ(sizeof(VyHashNode<unsigned, void*>), sizeof(VyHashNode<int, void*>) + sizeof(void*));
}

TEST(VyHashTest, NextAndPreviousNodeWalkBucketsAndChains)
{
    VyHash<int, int> h;
    for (int k : {1, 3, 20, 16})
        h.insert(k, 0);
    ASSERT_EQ(h.capacity(), 17);
    VyHashData* d = h.d;
    VyHashData::Node* e = d->end();
    VyHashData::Node* n1 = d->bucketTable[1];
    VyHashData::Node* n3 = d->bucketTable[3];
    VyHashData::Node* n20 = n3->next;
    VyHashData::Node* n16 = d->bucketTable[16];
    ASSERT_EQ(n20->h, 20u);
    EXPECT_EQ(d->firstNode(), n1);
    EXPECT_EQ(VyHashData::nextNode(n1), n3);
    EXPECT_EQ(VyHashData::nextNode(n3), n20);
    EXPECT_EQ(VyHashData::nextNode(n20), n16);
    // The last node of the last non-empty bucket leads to the block itself.
    EXPECT_EQ(static_cast<void*>(VyHashData::nextNode(n16)), static_cast<void*>(d));
    EXPECT_EQ(VyHashData::nextNode(n16), e);
    EXPECT_EQ(VyHashData::previousNode(e), n16);
    EXPECT_EQ(VyHashData::previousNode(n16), n20);
    EXPECT_EQ(VyHashData::previousNode(n20), n3);
    EXPECT_EQ(VyHashData::previousNode(n3), n1);
    // With the last bucket empty, the end's predecessor is found further back.
    h.remove(16);
    EXPECT_EQ(VyHashData::previousNode(h.d->end()), n20);
    EXPECT_EQ(VyHashData::nextNode(n20), h.d->end());

    VyHash<int, int> empty;
    empty.reserve(1);
    EXPECT_EQ(empty.d->firstNode(), empty.d->end());
    const VyHash<int, int> none;
    EXPECT_EQ(none.d->firstNode(), VyHashData::shared_null.end());
}

TEST(VyHashTest, AlignedNodeAllocation)
{
    VyHashData* plain = VyHashData::shared_null.detach_helper(nullptr, 20);
    EXPECT_EQ(plain->ref.load(), 1);
    EXPECT_EQ(plain->nodeBytes, 20);
    EXPECT_EQ(plain->hintBits, 4);
    EXPECT_FALSE(plain->alignedNodes);
    void* p = plain->allocateNode();
    memset(p, 0xab, 20);
    plain->freeNode(p);
    plain->destroyAndFree();

    VyHashData* aligned = VyHashData::shared_null.detach_helper2(nullptr, nullptr, 40, 64);
    EXPECT_TRUE(aligned->alignedNodes);
    for (int alignment : {16, 32, 64, 4096}) {
        SCOPED_TRACE(alignment);
        std::vector<void*> nodes;
        for (int i = 0; i < 20; ++i) {
            void* node = aligned->allocateNode(alignment);
            ASSERT_NE(node, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(node) % uintptr_t(alignment), 0u);
            // The raw allocation starts before the node, by no more than the alignment.
            char* raw = static_cast<char*>(static_cast<void**>(node)[-1]);
            EXPECT_LT(raw, static_cast<char*>(node));
            EXPECT_LE(static_cast<char*>(node) - raw, alignment);
            memset(node, i, 40);
            nodes.push_back(node);
        }
        for (void* node : nodes)
            aligned->freeNode(node);
    }
    for (int alignment : {0, 1, 2, 4}) {
        SCOPED_TRACE(alignment);
        // Below a pointer's alignment: the raw pointer is the first word, the node after it.
        void* node = alignment ? aligned->allocateNode(alignment) : aligned->allocateNode();
        EXPECT_EQ(static_cast<void**>(node)[-1], static_cast<void*>(static_cast<void**>(node) - 1));
        memset(node, 0x5a, 40);
        aligned->freeNode(node);
    }
    aligned->destroyAndFree();

    // Over-aligned values get aligned nodes, also in copies.
    VyHash<int, Wide> h;
    for (int k = 0; k < 100; ++k)
        h.insert(k, Wide(k));
    EXPECT_TRUE(h.d->alignedNodes);
    VyHash<int, Wide> copy = h;
    copy.insert(1000, Wide(1000));
    EXPECT_TRUE(copy.d->alignedNodes);
    EXPECT_EQ(copy.take(5).v, 5);
    EXPECT_EQ(copy.size(), 100);
    EXPECT_EQ(h.size(), 100);
    for (const auto* x : {&h, &copy}) {
        for (auto it = x->constBegin(); it != x->constEnd(); ++it) {
            EXPECT_EQ(reinterpret_cast<uintptr_t>(&it.value()) % 32, 0u);
            EXPECT_EQ(it.value().v, it.key());
        }
    }
    checkStructure(copy);
}

TEST(VyHashTest, OtherKeyTypes)
{
    // Integer keys other than int are stored beside their hash; wide ones fold.
    VyHash<unsigned long long, int> wide;
    wide.insert(0x100000001ull, 1);
    wide.insert(0x1ull, 2);
    wide.insert(0x200000002ull, 3);
    EXPECT_EQ(::vyHash(0x100000001ull), 0u) << "the high word folds onto the low one";
    EXPECT_EQ(::vyHash(0x200000002ull), 0u);
    EXPECT_EQ(wide.value(0x100000001ull), 1);
    EXPECT_EQ(wide.value(0x1ull), 2);
    EXPECT_EQ(wide.value(0x200000002ull), 3);
    EXPECT_FALSE(wide.contains(0));
    EXPECT_EQ(::vyHash(-1L), 0u) << "long folds like long long on 32-bit hosts too";
    EXPECT_EQ(::vyHash(5L), 5u);
    EXPECT_EQ(::vyHash(short(-2)), uint(-2));
    EXPECT_EQ(::vyHash(static_cast<unsigned char>(200)), 200u);
    VyHash<short, char> small;
    for (int k = -300; k < 300; ++k)
        small.insert(short(k), char(k));
    for (int k = -300; k < 300; ++k)
        ASSERT_EQ(small.value(short(k)), char(k));
    checkStructure(small);

    // Counted keys and values are all released.
    Counted::reset();
    {
        VyHash<Counted, Counted> h;
        for (int k = 0; k < 200; ++k)
            h.insert(Counted(k), Counted(-k));
        VyHash<Counted, Counted> copy = h;
        copy.insert(Counted(1), Counted(5));
        EXPECT_EQ(Counted::living(), 800);
        EXPECT_EQ(copy.take(Counted(2)).value, -2);
        EXPECT_EQ(copy.remove(Counted(3)), 1);
        EXPECT_EQ(Counted::living(), 796);
        EXPECT_EQ(h.value(Counted(1)).value, -1);
        EXPECT_EQ(copy.value(Counted(1)).value, 5);
        checkStructure(copy);
    }
    EXPECT_EQ(Counted::living(), 0);
}

// A copy that throws leaves every hash as it was and leaks nothing.
TEST(VyHashTest, ThrowingCopyDuringDetachLeavesTheOriginal)
{
    Counted::reset();
    {
        VyHash<int, Counted> a;
        for (int k = 0; k < 40; ++k)
            a.insert(k, Counted(k));
        const int living = Counted::living();
        ASSERT_EQ(living, 40);
        const std::map<int, int> contents = contentsOf(a);
        // Copies 1 to 40 fail while detaching; copy 41 fails making the new node.
        for (int failing = 1; failing <= 41; ++failing) {
            SCOPED_TRACE(failing);
            VyHash<int, Counted> b = a;
            Counted::copiesUntilThrow = failing;
            EXPECT_THROW(b.insert(100, Counted(100)), std::bad_alloc);
            Counted::copiesUntilThrow = 0;
            EXPECT_EQ(Counted::living(), failing <= 40 ? living : 2 * living);
            EXPECT_EQ(b.d == a.d, failing <= 40);
            EXPECT_EQ(contentsOf(a), contents);
            EXPECT_EQ(contentsOf(b), contents);
            checkStructure(b);
        }
        EXPECT_EQ(Counted::living(), living);

        // The same through an explicit detach with Counted keys, and through operator[].
        VyHash<Counted, Counted> keyed;
        for (int k = 0; k < 10; ++k)
            keyed.insert(Counted(k), Counted(k));
        for (int failing = 1; failing <= 20; ++failing) {
            VyHash<Counted, Counted> b = keyed;
            Counted::copiesUntilThrow = failing;
            EXPECT_THROW(b.detach(), std::bad_alloc) << failing;
            Counted::copiesUntilThrow = 0;
            EXPECT_EQ(b.d, keyed.d);
        }
        EXPECT_EQ(Counted::living(), living + 20);
        a.detach();
        Counted::copiesUntilThrow = 1;
        EXPECT_THROW(a[500], std::bad_alloc);
        Counted::copiesUntilThrow = 0;
        EXPECT_FALSE(a.contains(500));
        EXPECT_EQ(a.size(), 40);
    }
    EXPECT_EQ(Counted::living(), 0);
    Counted::reset();
}

TEST(VyHashTest, BlocksThatCannotBeSharedAreCopied)
{
    VyHash<int, int> a;
    a.insert(1, 1);
    a.d->canShare = 0;
    VyHash<int, int> b = a, c;
    c = a;
    for (const auto* x : {&b, &c}) {
        EXPECT_NE(x->d, a.d);
        EXPECT_EQ(x->value(1), 1);
        EXPECT_TRUE(x->d->canShare) << "a copy is an ordinary block";
    }
}

// Assertion texts.
TEST(VyHashDeathTest, IteratorStepsAndCorruptChains)
{
    VyHash<int, int> h;
    for (int k : {5, 22, 9})
        h.insert(k, k);
    VyHash<int, int>::const_iterator end = h.constEnd();
    EXPECT_DEATH(++end,
                 "\\./src/vyhash:193: static VyHashData::Node\\* "
                 "VyHashData::nextNode\\(VyHashData::Node\\*\\): Assertion `next' failed\\.");

    const char* before = "\\./src/vyhash:239: static VyHashData::Node\\* "
                         "VyHashData::previousNode\\(VyHashData::Node\\*\\): "
                         "Assertion `start >= 0' failed\\.";
    VyHash<int, int>::iterator first = h.begin();
    EXPECT_DEATH(--first, before);
    VyHash<int, int> empty;
    VyHash<int, int>::const_iterator emptyEnd = empty.constEnd();
    EXPECT_DEATH(--emptyEnd, before);

    VyHash<int, GlyphBitmap*> g;
    g.insert(5, nullptr);
    g.insert(6, nullptr);
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
