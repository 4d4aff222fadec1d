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
    bool operator==(const Wide& o) const { return v == o.v; }
};

int num(int v)
{
    return v;
}
int num(const Counted& v)
{
    return v.value;
}

// What a hash holds, read through its const iterators; also checks that the iterator count
// matches size().
template <class T> std::map<int, int> contentsOf(const VyHash<int, T>& h)
{
    std::map<int, int> result;
    int visited = 0;
    for (typename VyHash<int, T>::const_iterator it = h.begin(); it != h.end(); ++it) {
        if (visited > h.size())
            break;
        EXPECT_TRUE(result.emplace(it.key(), num(it.value())).second) << "key twice " << it.key();
        ++visited;
    }
    EXPECT_EQ(visited, h.size());
    return result;
}

template <class M> std::map<int, int> ordered(const M& model)
{
    return std::map<int, int>(model.begin(), model.end());
}

// Checks the block's structure: every node sits in bucket h % bucketCount, chains end at the
// block, the node count is `size`, the table size follows tableBits, and walking backwards
// visits exactly the forward order reversed.
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
        for (VyHashData::Node* n = d->bucketTable[b]; n != e; n = n->next) {
            ASSERT_NE(n, nullptr);
            ASSERT_EQ(int(n->h % uint(d->bucketCount)), b);
            ++nodes;
        }
    }
    ASSERT_EQ(nodes, d->size);

    std::vector<VyHashData::Node*> forward;
    // Bounded, so a broken walk fails instead of running on.
    for (auto it = h.begin(); it != h.end() && int(forward.size()) <= d->size; ++it)
        forward.push_back(it.i);
    ASSERT_EQ(int(forward.size()), d->size);
    std::vector<VyHashData::Node*> backward;
    auto it = h.end();
    for (int i = 0; i < d->size; ++i) {
        --it;
        backward.push_back(it.i);
    }
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(forward, backward);
}

// ---------------------------------------------------------------------------------------------
// Typed tests: the same scenarios over a plain value type and over Counted, whose lifetimes
// are checked after every test.

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

TYPED_TEST(VyHashTypedTest, LookupsInsertionsAndRemovals)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash h;
    EXPECT_TRUE(h.isEmpty());
    EXPECT_EQ(h.d, &VyHashData::shared_null);
    EXPECT_EQ(num(h.value(7)), 0);
    EXPECT_EQ(num(h.value(7, TypeParam(-1))), -1);
    EXPECT_FALSE(h.contains(7));
    EXPECT_EQ(h.remove(7), 0);
    EXPECT_EQ(num(h.take(7)), 0);
    EXPECT_EQ(h.d, &VyHashData::shared_null) << "lookups and removals on an empty hash detach";

    for (int k = -50; k < 50; ++k)
        EXPECT_EQ(h.insert(k * 7, TypeParam(k)).key(), k * 7);
    EXPECT_EQ(h.size(), 100);
    EXPECT_EQ(h.count(), 100);
    for (int k = -50; k < 50; ++k) {
        EXPECT_TRUE(h.contains(k * 7));
        EXPECT_EQ(h.count(k * 7), 1);
        EXPECT_EQ(num(h.value(k * 7)), k);
        EXPECT_EQ(num(h.value(k * 7, TypeParam(1000))), k);
        EXPECT_FALSE(h.contains(k * 7 + 1));
        EXPECT_EQ(num(h.value(k * 7 + 1, TypeParam(1000))), 1000);
    }

    // Replacing keeps one node per key.
    EXPECT_EQ(num(h.insert(14, TypeParam(-2)).value()), -2);
    EXPECT_EQ(h.size(), 100);
    EXPECT_EQ(num(h.value(14)), -2);

    // operator[] inserts a default value for a missing key and returns the stored value.
    EXPECT_EQ(num(h[1]), 0);
    EXPECT_EQ(h.size(), 101);
    h[1] = TypeParam(55);
    EXPECT_EQ(num(h.value(1)), 55);
    const Hash& ch = h;
    EXPECT_EQ(num(ch[1]), 55);
    EXPECT_EQ(num(ch[2]), 0);
    EXPECT_EQ(h.size(), 101) << "const operator[] must not insert";

    EXPECT_EQ(h.remove(1), 1);
    EXPECT_EQ(h.remove(1), 0);
    EXPECT_EQ(num(h.take(21)), 3);
    EXPECT_FALSE(h.contains(21));
    EXPECT_EQ(num(h.take(21)), 0);
    EXPECT_EQ(h.size(), 99);

    typename Hash::iterator it = h.find(-350);
    ASSERT_NE(it, h.end());
    EXPECT_EQ(num(*it), -50);
    it.value() = TypeParam(4);
    EXPECT_EQ(num(h.value(-350)), 4);
    EXPECT_EQ(h.find(-351), h.end());
    EXPECT_EQ(ch.constFind(-351), ch.constEnd());
    EXPECT_EQ(num(ch.find(-350).value()), 4);

    it = h.erase(h.find(-350));
    EXPECT_EQ(h.size(), 98);
    EXPECT_FALSE(h.contains(-350));
    EXPECT_EQ(h.erase(h.end()), h.end());
    checkStructure(h);

    h.clear();
    EXPECT_TRUE(h.isEmpty());
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
    EXPECT_EQ(a.d, b.d);
    EXPECT_EQ(a.d->ref.load(), 2);
    EXPECT_FALSE(a.isDetached());

    // Lookups, const iteration, keys and values leave the block shared.
    EXPECT_EQ(num(b.value(3)), 103);
    EXPECT_TRUE(b.contains(4));
    EXPECT_NE(static_cast<const Hash&>(b).constFind(5), static_cast<const Hash&>(b).constEnd());
    EXPECT_EQ(b.keys().size(), 30);
    EXPECT_EQ(b.values().size(), 30);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.d, b.d);

    Hash c;
    c = b;
    EXPECT_EQ(a.d->ref.load(), 3);
    Hash moved(std::move(c));
    EXPECT_EQ(c.d, &VyHashData::shared_null);
    EXPECT_EQ(moved.d, a.d);
    moved = Hash();
    EXPECT_EQ(a.d->ref.load(), 2);
    const Hash& alias = b;
    b = alias;
    EXPECT_EQ(a.d->ref.load(), 2);
    b.swap(moved);
    EXPECT_EQ(a.d->ref.load(), 2);
    EXPECT_EQ(b.d, &VyHashData::shared_null);
    moved.clear();
    EXPECT_EQ(a.d->ref.load(), 1);

    // A copied block keeps the table size, hint and chain order.
    Hash d = a;
    d.detach();
    EXPECT_NE(d.d, a.d);
    EXPECT_TRUE(d.isDetached());
    EXPECT_TRUE(a.isDetached());
    EXPECT_EQ(d.d->bucketCount, a.d->bucketCount);
    EXPECT_EQ(d.d->tableBits, a.d->tableBits);
    EXPECT_EQ(d.d->hintBits, a.d->hintBits);
    EXPECT_EQ(d.d->nodeBytes, int(sizeof(VyHashNode<int, TypeParam>)));
    EXPECT_TRUE(d.d->canShare);
    EXPECT_EQ(d.keys().size(), 30);
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(d.keys().at(i), a.keys().at(i));
    checkStructure(d);
}

// For every mutator: copy, change the copy, and the original must be as it was.
TYPED_TEST(VyHashTypedTest, EveryMutatorDetachesFromCopies)
{
    typedef VyHash<int, TypeParam> Hash;
    typedef std::map<int, int> Model;
    struct Case {
        const char* name;
        std::function<void(Hash&, Model&)> mutate;
    };
    const std::vector<Case> cases = {
        {"insert new",
         [](Hash& h, Model& m) {
             h.insert(500, TypeParam(5));
             m[500] = 5;
         }},
        {"insert existing",
         [](Hash& h, Model& m) {
             h.insert(3, TypeParam(9));
             m[3] = 9;
         }},
        {"operator[] new",
         [](Hash& h, Model& m) {
             EXPECT_EQ(num(h[600]), 0);
             m[600] = 0;
         }},
        {"operator[] existing",
         [](Hash& h, Model& m) {
             h[4] = TypeParam(-4);
             m[4] = -4;
         }},
        {"remove existing",
         [](Hash& h, Model& m) {
             EXPECT_EQ(h.remove(5), 1);
             m.erase(5);
         }},
        {"remove absent", [](Hash& h, Model&) { EXPECT_EQ(h.remove(700), 0); }},
        {"take existing",
         [](Hash& h, Model& m) {
             EXPECT_EQ(num(h.take(6)), 206);
             m.erase(6);
         }},
        {"take absent", [](Hash& h, Model&) { EXPECT_EQ(num(h.take(701)), 0); }},
        {"erase found",
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
        {"write through find",
         [](Hash& h, Model& m) {
             *h.find(8) = TypeParam(88);
             m[8] = 88;
         }},
        {"write through begin",
         [](Hash& h, Model& m) {
             typename Hash::iterator it = h.begin();
             m[it.key()] = 77;
             it.value() = TypeParam(77);
         }},
        {"write through end",
         [](Hash& h, Model& m) {
             typename Hash::iterator it = h.end();
             --it;
             m[it.key()] = 66;
             *it = TypeParam(66);
         }},
        {"detach", [](Hash& h, Model&) { h.detach(); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Hash original;
        Model model;
        for (int k = 0; k < 40; ++k) {
            original.insert(k, TypeParam(k + 200));
            model[k] = k + 200;
        }
        VyHashData* block = original.d;
        Hash copy = original;
        Model changed = model;
        c.mutate(copy, changed);
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
    h.insert(100, h.value(3));
    EXPECT_EQ(num(h.value(100)), 30);
    h.insert(101, h[2]);
    EXPECT_EQ(num(h.value(101)), 20);
    // Replacing a value with itself, and a key taken from the node it names.
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

    // Removing by a key that lives in the node being removed.
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

// An iterator taken while the block was owned, used after a copy shared it: erase carries it
// over to this hash's own copy and leaves the other hash alone.
TYPED_TEST(VyHashTypedTest, EraseCarriesAnIteratorOverToTheCopy)
{
    typedef VyHash<int, TypeParam> Hash;
    for (int position = 0; position < 40; ++position) {
        SCOPED_TRACE(position);
        Hash h;
        for (int k = 0; k < 40; ++k)
            h.insert(k * 3, TypeParam(k));
        const std::map<int, int> before = contentsOf(h);
        typename Hash::iterator it = h.begin();
        for (int i = 0; i < position; ++i)
            ++it;
        const int erasedKey = it.key();
        Hash copy = h;
        typename Hash::iterator next = h.erase(it);

        EXPECT_EQ(contentsOf(copy), before);
        std::map<int, int> after = before;
        after.erase(erasedKey);
        EXPECT_EQ(contentsOf(h), after);
        EXPECT_NE(h.d, copy.d);
        // The returned iterator is the erased node's successor, in this hash's block.
        typename Hash::const_iterator successor = copy.constFind(erasedKey);
        ++successor;
        if (successor == copy.constEnd()) {
            EXPECT_EQ(next, h.end());
        } else {
            ASSERT_NE(next, h.end());
            EXPECT_EQ(next.key(), successor.key());
            EXPECT_EQ(next, h.find(successor.key()));
        }
        checkStructure(h);
    }
}

TYPED_TEST(VyHashTypedTest, IterationVisitsEveryNodeBothWays)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash h;
    EXPECT_EQ(h.begin(), h.end());
    std::map<int, int> model;
    for (int k = 0; k < 300; ++k) {
        const int key = (k * 7919) % 1009 - 500;
        h.insert(key, TypeParam(k));
        model[key] = k;
    }
    EXPECT_EQ(contentsOf(h), model);
    checkStructure(h);

    // keys() and values() follow the iteration order.
    VyList<int> keys = h.keys();
    VyList<TypeParam> values = h.values();
    ASSERT_EQ(keys.size(), h.size());
    ASSERT_EQ(values.size(), h.size());
    int i = 0;
    for (typename Hash::const_iterator it = h.constBegin(); it != h.constEnd(); ++it, ++i) {
        EXPECT_EQ(keys.at(i), it.key());
        EXPECT_EQ(num(values.at(i)), num(it.value()));
    }

    // Post-increment and post-decrement return the old position.
    typename Hash::iterator it = h.begin();
    typename Hash::iterator old = it++;
    EXPECT_EQ(old, h.begin());
    EXPECT_NE(it, old);
    EXPECT_EQ(it--, ++typename Hash::iterator(old));
    EXPECT_EQ(it, old);

    // Writing through iterators changes the stored values.
    for (typename Hash::iterator w = h.begin(); w != h.end(); ++w)
        w.value() = TypeParam(num(w.value()) + 1);
    for (auto& kv : model)
        ++kv.second;
    EXPECT_EQ(contentsOf(h), model);

    // Erasing while iterating.
    for (typename Hash::iterator e = h.begin(); e != h.end();) {
        if (e.key() % 3 == 0) {
            model.erase(e.key());
            e = h.erase(e);
        } else {
            ++e;
        }
    }
    EXPECT_EQ(contentsOf(h), model);
    checkStructure(h);
}

TYPED_TEST(VyHashTypedTest, EqualityComparesKeysAndValues)
{
    typedef VyHash<int, TypeParam> Hash;
    Hash a, b;
    EXPECT_TRUE(a == b);
    for (int k = 0; k < 50; ++k)
        a.insert(k, TypeParam(k));
    // The same pairs inserted in another order, into a table of another size.
    b.reserve(500);
    for (int k = 49; k >= 0; --k)
        b.insert(k, TypeParam(k));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    b.insert(10, TypeParam(11));
    EXPECT_FALSE(a == b);
    b.insert(10, TypeParam(10));
    EXPECT_TRUE(a == b);
    b.remove(10);
    b.insert(50, TypeParam(10));
    EXPECT_FALSE(a == b) << "same size, one key differs";
    b.remove(50);
    EXPECT_TRUE(a != b);
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
        switch (pick(12)) {
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
        case 4: {
            const int expected = int(model.erase(key));
            ASSERT_EQ(h.remove(key), expected);
            break;
        }
        case 5: {
            auto found = model.find(key);
            const int expected = found == model.end() ? 0 : found->second;
            if (found != model.end())
                model.erase(found);
            ASSERT_EQ(num(h.take(key)), expected);
            break;
        }
        case 6: {
            auto found = model.find(key);
            ASSERT_EQ(h.contains(key), found != model.end());
            ASSERT_EQ(num(h.value(key, T(-1))), found == model.end() ? -1 : found->second);
            ASSERT_EQ(num(h.value(key)), found == model.end() ? 0 : found->second);
            break;
        }
        case 7: {
            typename VyHash<int, T>::iterator it = h.find(key);
            auto found = model.find(key);
            ASSERT_EQ(it == h.end(), found == model.end());
            if (it != h.end()) {
                if (pick(2)) {
                    it = h.erase(it);
                    model.erase(found);
                } else {
                    *it = T(value);
                    found->second = value;
                }
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
                const size_t s = size_t(pick(int(snapshots.size())));
                h = snapshots[s].first;
                model = std::unordered_map<int, int>(snapshots[s].second.begin(),
                                                     snapshots[s].second.end());
            }
            break;
        case 10:
            if (pick(8) == 0)
                h.reserve(pick(300));
            else if (pick(30) == 0) {
                h.clear();
                model.clear();
            }
            break;
        case 11:
            ASSERT_EQ(h.size(), int(model.size()));
            break;
        }
        ASSERT_EQ(h.size(), int(model.size()));
        if (step % 97 == 0) {
            ASSERT_EQ(contentsOf(h), ordered(model));
            checkStructure(h);
            for (const auto& snapshot : snapshots)
                ASSERT_EQ(contentsOf(snapshot.first), snapshot.second);
        }
    }
    ASSERT_EQ(contentsOf(h), ordered(model));
    for (const auto& snapshot : snapshots)
        ASSERT_EQ(contentsOf(snapshot.first), snapshot.second);
}

TYPED_TEST(VyHashTypedTest, RandomOperationsMatchStdUnorderedMap)
{
    for (unsigned seed : {1u, 7u, 1234u}) {
        SCOPED_TRACE(seed);
        runAgainstModel<TypeParam>(seed, 6000, 200);
        runAgainstModel<TypeParam>(seed + 100, 3000, 5000);
    }
}

// ---------------------------------------------------------------------------------------------
// Bucket counts and rehashing.

TEST(VyHashTest, BucketCountsGrowAtTheDocumentedPoints)
{
    VyHash<int, void*> h;
    EXPECT_EQ(h.capacity(), 0);
    // (number of keys after the insertion that grows the table, new bucket count, bits)
    const struct {
        int keys, buckets, bits;
    } steps[] = {{1, 17, 4}, {18, 37, 5}, {38, 67, 6}, {68, 131, 7}, {132, 257, 8}, {258, 521, 9}};
    int key = 0;
    int previousBuckets = 0;
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
    // Replacing an existing key in a full table does not grow it.
    VyHash<int, void*> full;
    for (int k = 0; k < 17; ++k)
        full.insert(k, nullptr);
    full.insert(16, &full);
    full[3] = &full;
    EXPECT_EQ(full.capacity(), 17);
    // operator[] on a new key grows it like insert.
    full[17];
    EXPECT_EQ(full.capacity(), 37);
    checkStructure(h);
    checkStructure(full);
}

bool isPrime(int n)
{
    if (n < 2)
        return false;
    for (int f = 2; f <= n / f; ++f) {
        if (n % f == 0)
            return false;
    }
    return true;
}

TEST(VyHashTest, BucketCountsLieJustAboveAPowerOfTwo)
{
    for (int bits = 4; bits <= 30; ++bits) {
        const long long count = VyHashData::bucketCountForBits(bits);
        EXPECT_GE(count, 1LL << bits) << bits;
        EXPECT_LT(count, (1LL << bits) + 32) << bits;
    }
    // The sizes a glyph cache reaches are primes, apart from the entries pinned below.
    for (int bits = 4; bits <= 20; ++bits) {
        if (bits != 13 && bits != 14 && bits != 17) {
            EXPECT_TRUE(isPrime(VyHashData::bucketCountForBits(bits))) << bits;
        }
    }
}

TEST(VyHashTest, ReserveAsksForABucketCount)
{
    struct {
        int request, buckets, hintBits;
    } cases[] = {{1, 17, 4},  {17, 17, 4},   {18, 37, 5},     {37, 37, 5},
                 {38, 67, 6}, {100, 131, 7}, {131, 131, 7},   {132, 257, 8},
                 {0, 17, 4},  {-5, 17, 4},   {1031, 1031, 10}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.request);
        VyHash<int, int> h;
        h.reserve(c.request);
        EXPECT_EQ(h.capacity(), c.buckets);
        EXPECT_EQ(h.d->hintBits, c.hintBits);
        EXPECT_TRUE(h.isEmpty());
        EXPECT_NE(h.d, &VyHashData::shared_null);
    }

    // Shrinking stops at half the size: 100 nodes keep at least 50 buckets.
    VyHash<int, int> h;
    for (int k = 0; k < 100; ++k)
        h.insert(k, k);
    ASSERT_EQ(h.capacity(), 131);
    h.reserve(10);
    EXPECT_EQ(h.d->hintBits, 4);
    EXPECT_EQ(h.capacity(), 67);
    checkStructure(h);
    // A table of more than one node per bucket still finds everything and grows on the next
    // new key.
    h.d->rehash(4);
    EXPECT_EQ(h.capacity(), 17);
    for (int k = 0; k < 100; ++k)
        ASSERT_EQ(h.value(k, -1), k);
    checkStructure(h);
    h.insert(100, 100);
    EXPECT_EQ(h.capacity(), 37);
    // Bit counts below 4 mean 4; the same bit count changes nothing.
    VyHashData::Node** table = h.d->bucketTable;
    h.d->rehash(5);
    EXPECT_EQ(h.d->bucketTable, table);
    h.d->rehash(1);
    EXPECT_EQ(h.capacity(), 17);
    checkStructure(h);
}

TEST(VyHashTest, NonPrimeBucketCountsUsedAsTheyStand_Kept)
{
    // Every table size from 4 to 30 bits that is not a prime: 8201 = 59 * 139,
    // 16409 = 61 * 269, 131093 = 337 * 389, the larger ones, and the plain powers of two from
    // 27 bits on.
    std::vector<int> composite;
    for (int bits = 4; bits <= 30; ++bits) {
        if (!isPrime(VyHashData::bucketCountForBits(bits)))
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
        VyHash<int, int> h;
        h.reserve(c.buckets);
        EXPECT_EQ(h.capacity(), c.buckets);
        EXPECT_EQ(h.d->tableBits, c.bits);
        // One bucket more asks for the next table.
        VyHash<int, int> more;
        more.reserve(c.buckets + 1);
        EXPECT_EQ(more.d->tableBits, c.bits + 1);
        // Keys that are multiples of the factor crowd into a fraction of the buckets, and
        // everything still works.
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

TEST(VyHashTest, NewNodesGoToTheEndOfTheirChain)
{
    VyHash<int, int> h;
    // 17 buckets: 3, 20, 37 and 54 share bucket 3.
    for (int k : {3, 1, 20, 16, 37, 54})
        h.insert(k, k);
    ASSERT_EQ(h.capacity(), 17);
    std::vector<int> chain;
    for (VyHashData::Node* n = h.d->bucketTable[3]; n != h.d->end(); n = n->next)
        chain.push_back(int(n->h));
    EXPECT_EQ(chain, (std::vector<int>{3, 20, 37, 54}));
    // Iteration: bucket order, then chain order.
    const VyList<int> keys = h.keys();
    EXPECT_EQ(std::vector<int>(keys.begin(), keys.end()), (std::vector<int>{1, 3, 20, 37, 54, 16}));
    // A removal in the middle of a chain keeps the rest linked.
    h.remove(37);
    chain.clear();
    for (VyHashData::Node* n = h.d->bucketTable[3]; n != h.d->end(); n = n->next)
        chain.push_back(int(n->h));
    EXPECT_EQ(chain, (std::vector<int>{3, 20, 54}));
}

TEST(VyHashTest, EqualHashesKeepTheirOrderAcrossRehashes)
{
    VyHash<CollidingKey, int> h;
    // Keys in an order that interleaves the runs of equal hashes.
    std::vector<int> keys(400);
    for (int i = 0; i < 400; ++i)
        keys[size_t(i)] = i;
    std::shuffle(keys.begin(), keys.end(), std::mt19937(42));
    std::map<uint, std::vector<int>> insertionOrder;
    int rehashes = 0;
    for (int k : keys) {
        const int before = h.capacity();
        h.insert(CollidingKey{k}, k);
        rehashes += h.capacity() != before;
        insertionOrder[uint(k >> 3)].push_back(k);
    }
    EXPECT_GE(rehashes, 4);
    std::map<uint, std::vector<int>> iterationOrder;
    for (auto it = h.constBegin(); it != h.constEnd(); ++it) {
        EXPECT_EQ(it.value(), it.key().v);
        iterationOrder[uint(it.key().v >> 3)].push_back(it.key().v);
    }
    EXPECT_EQ(iterationOrder, insertionOrder);
    // Equal hashes with different keys are told apart.
    for (int k = 0; k < 400; ++k)
        ASSERT_EQ(h.value(CollidingKey{k}, -1), k);
    EXPECT_FALSE(h.contains(CollidingKey{400}));
    // A copy keeps the chains in order too.
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

// ---------------------------------------------------------------------------------------------
// The block and its nodes.

TEST(VyHashTest, SharedNullAndBlockLayout)
{
    const VyHashData& n = VyHashData::shared_null;
    EXPECT_EQ(n.sentinelNext, nullptr);
    EXPECT_EQ(n.bucketTable, nullptr);
    EXPECT_GE(n.ref.load(), 1);
    EXPECT_EQ(n.size, 0);
    EXPECT_EQ(n.nodeBytes, 0);
    EXPECT_EQ(n.hintBits, 4);
    EXPECT_EQ(n.tableBits, 0);
    EXPECT_EQ(n.bucketCount, 0);
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

    // The fields sit in the documented order: two pointers, the 32-bit counters, the two
    // 16-bit bit counts, the bucket count and the flag byte.
    EXPECT_EQ(offsetof(VyHashData, sentinelNext), 0u);
    EXPECT_EQ(offsetof(VyHashData, bucketTable), sizeof(void*));
    EXPECT_EQ(offsetof(VyHashData, ref), 2 * sizeof(void*));
    EXPECT_EQ(offsetof(VyHashData, size), 2 * sizeof(void*) + 4);
    EXPECT_EQ(offsetof(VyHashData, nodeBytes), 2 * sizeof(void*) + 8);
    EXPECT_EQ(offsetof(VyHashData, hintBits), 2 * sizeof(void*) + 12);
    EXPECT_EQ(offsetof(VyHashData, tableBits), 2 * sizeof(void*) + 14);
    EXPECT_EQ(offsetof(VyHashData, bucketCount), 2 * sizeof(void*) + 16);
    VyHashData flags{};
    flags.alignedNodes = 1;
    unsigned char byte;
    memcpy(&byte, reinterpret_cast<const char*>(&flags) + 2 * sizeof(void*) + 20, 1);
    EXPECT_EQ(byte, 2) << "alignedNodes is bit 1 of the flag byte";
    flags.alignedNodes = 0;
    flags.canShare = 1;
    memcpy(&byte, reinterpret_cast<const char*>(&flags) + 2 * sizeof(void*) + 20, 1);
    EXPECT_EQ(byte, 1) << "canShare is bit 0 of the flag byte";
}

TEST(VyHashTest, IntKeyedNodesAreThreeWords)
{
    VyHash<int, GlyphBitmap*> h;
    h.insert(-7, nullptr);
    EXPECT_EQ(h.d->nodeBytes, int(3 * sizeof(void*)));
    if (sizeof(void*) == 4) {
        EXPECT_EQ(h.d->nodeBytes, 12);
    }
    // The key is the stored hash.
    VyHashData::Node* node = h.d->firstNode();
    EXPECT_EQ(node->h, uint(-7));
    EXPECT_EQ(h.constBegin().key(), -7);
    EXPECT_FALSE(h.d->alignedNodes);
    // Other keys are stored beside their hash.
    EXPECT_EQ(sizeof(VyHashNode<unsigned, void*>), sizeof(VyHashNode<int, void*>) + sizeof(void*));
}

TEST(VyHashTest, FindNodeSlots)
{
    VyHash<int, int> h;
    // Before the first insertion the slot is the hash's own block pointer, which reads as the
    // end.
    uint hash = 0;
    VyHashNode<int, int>** slot = h.findNode(-3, &hash);
    EXPECT_EQ(static_cast<void*>(slot), static_cast<void*>(&h.d));
    EXPECT_EQ(hash, uint(-3));

    for (int k : {3, 20, 37})
        h.insert(k, k * 2);
    // A found key: the slot that points at its node (here the first node's next).
    slot = h.findNode(20, &hash);
    EXPECT_EQ(hash, 20u);
    EXPECT_EQ(static_cast<void*>(slot), static_cast<void*>(&h.d->bucketTable[3]->next));
    // A missing key: the slot at the end of its chain, or the empty bucket.
    slot = h.findNode(54);
    EXPECT_EQ(static_cast<void*>(slot), static_cast<void*>(&h.find(37).i->next));
    slot = h.findNode(5);
    EXPECT_EQ(static_cast<void*>(slot), static_cast<void*>(&h.d->bucketTable[5]));
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
    EXPECT_EQ(VyHashData::nextNode(n16), e);
    EXPECT_EQ(static_cast<void*>(VyHashData::nextNode(n16)), static_cast<void*>(d));

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

TEST(VyHashTest, AllocateNodeSchemes)
{
    // A block without buckets, made the way a hash detaches from shared_null.
    VyHashData* plain = VyHashData::shared_null.detach_helper(nullptr, 20);
    EXPECT_EQ(plain->ref.load(), 1);
    EXPECT_EQ(plain->nodeBytes, 20);
    EXPECT_EQ(plain->hintBits, 4);
    EXPECT_TRUE(plain->canShare);
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
        // The raw pointer is the first word, the node right after it.
        void* node = alignment ? aligned->allocateNode(alignment) : aligned->allocateNode();
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(static_cast<void**>(node)[-1], static_cast<void*>(static_cast<void**>(node) - 1));
        memset(node, 0x5a, 40);
        aligned->freeNode(node);
    }
    aligned->destroyAndFree();
}

TEST(VyHashTest, OverAlignedValuesUseAlignedNodes)
{
    VyHash<int, Wide> h;
    for (int k = 0; k < 100; ++k)
        h.insert(k, Wide(k));
    EXPECT_TRUE(h.d->alignedNodes);
    EXPECT_EQ(h.d->nodeBytes, int(sizeof(VyHashNode<int, Wide>)));
    auto checkAligned = [](const VyHash<int, Wide>& x) {
        for (auto it = x.constBegin(); it != x.constEnd(); ++it) {
            EXPECT_EQ(reinterpret_cast<uintptr_t>(&it.value()) % 32, 0u);
            EXPECT_EQ(it.value().v, it.key());
        }
    };
    checkAligned(h);
    VyHash<int, Wide> copy = h;
    copy.insert(1000, Wide(1000));
    EXPECT_TRUE(copy.d->alignedNodes);
    checkAligned(copy);
    EXPECT_EQ(copy.take(5).v, 5);
    EXPECT_EQ(copy.remove(6), 1);
    EXPECT_EQ(copy.size(), 99);
    EXPECT_EQ(h.size(), 100);
    checkStructure(copy);
}

TEST(VyHashTest, OtherKeyTypes)
{
    // Integer keys other than int are stored beside their hash.
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
}

TEST(VyHashTest, CountedKeysAndValuesAreAllReleased)
{
    Counted::reset();
    {
        VyHash<Counted, Counted> h;
        for (int k = 0; k < 200; ++k)
            h.insert(Counted(k), Counted(-k));
        EXPECT_EQ(Counted::living(), 400);
        VyHash<Counted, Counted> copy = h;
        copy.insert(Counted(1), Counted(5));
        EXPECT_EQ(Counted::living(), 800);
        EXPECT_EQ(copy.take(Counted(2)).value, -2);
        EXPECT_EQ(copy.remove(Counted(3)), 1);
        EXPECT_EQ(Counted::living(), 796);
        EXPECT_EQ(h.value(Counted(1)).value, -1);
        EXPECT_EQ(copy.value(Counted(1)).value, 5);
        EXPECT_EQ(copy.keys().size(), 198);
        checkStructure(copy);
    }
    EXPECT_EQ(Counted::living(), 0);
}

// ---------------------------------------------------------------------------------------------
// Exception safety: a copy that throws leaves every hash as it was and leaks nothing.

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
            EXPECT_FALSE(b.contains(100));
            checkStructure(b);
        }
        EXPECT_EQ(Counted::living(), living);

        // The same through an explicit detach, operator[] and the copy of keys.
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

TEST(VyHashTest, FailedDuplicationFreesTheHalfBuiltBlock)
{
    // The untyped path: the callbacks count what they build and destroy.
    static int built;
    static int destroyed;
    static int throwAt;
    built = destroyed = 0;
    struct Callbacks {
        static void duplicate(VyHashData::Node* original, void* memory)
        {
            if (built + 1 == throwAt)
                throw std::bad_alloc();
            ++built;
            new (memory)
                VyHashNode<int, int>(0, static_cast<VyHashNode<int, int>*>(original)->value);
        }
        static void destroy(VyHashData::Node*) { ++destroyed; }
    };
    VyHash<int, int> h;
    for (int k = 0; k < 30; ++k)
        h.insert(k, k);
    throwAt = 12;
    EXPECT_THROW(h.d->detach_helper2(Callbacks::duplicate, Callbacks::destroy,
                                     int(sizeof(VyHashNode<int, int>)), 4),
                 std::bad_alloc);
    EXPECT_EQ(built, 11);
    EXPECT_EQ(destroyed, 11) << "every node made before the failure is destroyed";
    EXPECT_EQ(h.d->ref.load(), 1);
    EXPECT_EQ(h.size(), 30);

    throwAt = 0;
    built = destroyed = 0;
    VyHashData* copy = h.d->detach_helper2(Callbacks::duplicate, Callbacks::destroy,
                                           int(sizeof(VyHashNode<int, int>)), 4);
    EXPECT_EQ(built, 30);
    EXPECT_EQ(copy->size, 30);
    EXPECT_EQ(copy->bucketCount, h.d->bucketCount);
    VyHashData::Node* a = h.d->firstNode();
    VyHashData::Node* b = copy->firstNode();
    while (a != h.d->end()) {
        ASSERT_NE(b, copy->end());
        EXPECT_EQ(a->h, b->h);
        typedef VyHashNode<int, int> IntNode;
        EXPECT_EQ(static_cast<IntNode*>(a)->value, static_cast<IntNode*>(b)->value);
        a = VyHashData::nextNode(a);
        b = VyHashData::nextNode(b);
    }
    EXPECT_EQ(b, copy->end());
    copy->free_helper(Callbacks::destroy);
    EXPECT_EQ(destroyed, 30);
}

TEST(VyHashTest, BlocksThatCannotBeSharedAreCopied)
{
    VyHash<int, int> a;
    a.insert(1, 1);
    a.d->canShare = 0;
    VyHash<int, int> b = a;
    EXPECT_NE(b.d, a.d);
    EXPECT_EQ(b.value(1), 1);
    EXPECT_TRUE(b.d->canShare) << "a copy is an ordinary block";
    VyHash<int, int> c;
    c = a;
    EXPECT_NE(c.d, a.d);
    EXPECT_EQ(c.value(1), 1);
}

// ---------------------------------------------------------------------------------------------
// Assertion texts.

TEST(VyHashDeathTest, StepPastTheEnd)
{
    VyHash<int, int> h;
    h.insert(1, 1);
    VyHash<int, int>::const_iterator it = h.constEnd();
    EXPECT_DEATH(++it, "\\./src/vyhash:193: static VyHashData::Node\\* "
                       "VyHashData::nextNode\\(VyHashData::Node\\*\\): Assertion `next' failed\\.");
}

TEST(VyHashDeathTest, StepBeforeTheBeginning)
{
    const char* message = "\\./src/vyhash:239: static VyHashData::Node\\* "
                          "VyHashData::previousNode\\(VyHashData::Node\\*\\): "
                          "Assertion `start >= 0' failed\\.";
    VyHash<int, int> h;
    for (int k : {5, 22, 9})
        h.insert(k, k);
    VyHash<int, int>::iterator first = h.begin();
    EXPECT_DEATH(--first, message);
    VyHash<int, int> empty;
    VyHash<int, int>::const_iterator end = empty.constEnd();
    EXPECT_DEATH(--end, message);
}

TEST(VyHashDeathTest, FindNodeOnACorruptChain)
{
    VyHash<int, GlyphBitmap*> h;
    h.insert(5, nullptr);
    h.insert(6, nullptr);
    // A chain head whose `next` is null instead of a node or the block.
    EXPECT_DEATH(
        {
            h.d->bucketTable[5]->next = nullptr;
            h.contains(5);
        },
        "\\./\\.\\./include/pub/vyhash:1840: VyHashNode<Key, T>\\*\\* VyHash<Key, "
        "T>::findNode\\(const Key&, uint\\*\\) const \\[with Key = int, T = GlyphBitmap\\*\\]: "
        "Assertion `\\*node == e \\|\\| \\(\\*node\\)->next' failed\\.");
    EXPECT_EQ(h.value(5), nullptr) << "the parent's hash is intact";
}

} // namespace
