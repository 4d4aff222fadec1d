// Random operation sequences on VyVector, VyList, VyHash and VyMap, each container checked
// against a std model after every step. The elements are either int (moved with memcpy, held
// in the int-keyed hash node) or Item, which owns heap memory, so that a lost, doubled or
// stale copy shows under AddressSanitizer.
//
// Input layout: byte 0 bit 0 picks Item over int; then 4 bytes per operation (at most
// kMaxOps): the operation byte (low 2 bits the container, the rest the action), then a, b, c.
// Values and keys are small (0..15) so that equal elements and colliding keys are common;
// Item keys hash to v % 5, so different keys share hash values and buckets.
//
// Each container keeps up to kCopies copies taken mid-sequence with their models; every copy
// must keep its contents while the original mutates, and a copy can be assigned back, so the
// container then shares its block with the copy again. Arguments that refer into the
// container itself (inserting its own element) are part of the actions.
#include "fuzz_check.h"
#include "vyhash.h"
#include "vylist.h"
#include "vymap.h"
#include "vyvector.h"

#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

struct Item {
    Item() : v(0) {}
    Item(int value) : v(value), s(std::string(16, '#') + std::to_string(value)) {}
    bool operator==(const Item& o) const { return v == o.v && s == o.s; }
    bool operator<(const Item& o) const { return v < o.v || (v == o.v && s < o.s); }
    int v;
    std::string s; // longer than the short-string buffer: copies allocate
};

uint vyHash(const Item& item)
{
    return uint(item.v % 5);
}

namespace
{

constexpr size_t kMaxOps = 32;
constexpr int kCopies = 2;
// Appending a list to itself doubles it; it stops at this length.
constexpr size_t kMaxLength = 64;

// A container with its model, and copies of both taken along the way.
template <class C, class M> struct Tracked {
    C c;
    M m;
    C copy[kCopies];
    M copyModel[kCopies];

    void snapshot(int k)
    {
        copy[k % kCopies] = c;
        copyModel[k % kCopies] = m;
        FUZZ_CHECK(!c.isDetached());
    }
    void restore(int k)
    {
        c = copy[k % kCopies];
        m = copyModel[k % kCopies];
    }
    template <class Check> void checkAll(Check check) const
    {
        check(c, m);
        for (int k = 0; k < kCopies; ++k)
            check(copy[k], copyModel[k]);
    }
};

template <class C, class T> void checkSequence(const C& c, const std::vector<T>& m)
{
    FUZZ_CHECK(c.size() == int(m.size()));
    FUZZ_CHECK(std::equal(c.begin(), c.end(), m.begin(), m.end()));
}

// Iteration visits each key once with its value.
template <class T> void checkHash(const VyHash<T, T>& h, const std::map<T, T>& m)
{
    FUZZ_CHECK(h.size() == int(m.size()));
    int i = 0;
    for (typename VyHash<T, T>::const_iterator it = h.constBegin(); it != h.constEnd(); ++it) {
        const auto found = m.find(it.key());
        FUZZ_CHECK(++i <= h.size() && found != m.end() && found->second == it.value());
    }
    FUZZ_CHECK(i == h.size());
}

// keys() and values() follow the iteration.
template <class T> void checkKeysAndValues(const VyHash<T, T>& h)
{
    const VyList<T> keys = h.keys(), values = h.values();
    FUZZ_CHECK(keys.size() == h.size() && values.size() == h.size());
    int i = 0;
    for (typename VyHash<T, T>::const_iterator it = h.constBegin(); it != h.constEnd(); ++it, ++i)
        FUZZ_CHECK(keys.at(i) == it.key() && values.at(i) == it.value());
}

template <class T> void checkMap(const VyMap<T, T>& map, const std::map<T, T>& m)
{
    FUZZ_CHECK(map.size() == int(m.size()));
    auto model = m.begin();
    for (auto it = map.constBegin(); it != map.constEnd(); ++it, ++model)
        FUZZ_CHECK(model != m.end() && it.key() == model->first && it.value() == model->second);
    FUZZ_CHECK(model == m.end());
    if (!m.empty())
        FUZZ_CHECK(map.firstKey() == m.begin()->first && map.lastKey() == m.rbegin()->first);
}

template <class T> void checkBounds(const VyMap<T, T>& map, const std::map<T, T>& m, const T& key)
{
    const auto lower = m.lower_bound(key), upper = m.upper_bound(key);
    FUZZ_CHECK(lower == m.end() ? map.lowerBound(key) == map.constEnd()
                                : map.lowerBound(key).key() == lower->first);
    FUZZ_CHECK(upper == m.end() ? map.upperBound(key) == map.constEnd()
                                : map.upperBound(key).key() == upper->first);
}

template <class T> struct Run {
    Tracked<VyVector<T>, std::vector<T>> vec;
    Tracked<VyList<T>, std::vector<T>> list;
    Tracked<VyHash<T, T>, std::map<T, T>> hash;
    Tracked<VyMap<T, T>, std::map<T, T>> map;

    void vectorStep(int action, int a, int b, int c)
    {
        VyVector<T>& v = vec.c;
        std::vector<T>& m = vec.m;
        const int n = v.size();
        const T value(c & 15);
        switch (action % 11) {
        case 0:
            v.append(value);
            m.push_back(value);
            break;
        case 1: { // its own element, which the growth may move
            if (n == 0)
                break;
            const int i = a % (n + 1), j = b % n;
            const T own = m[size_t(j)];
            if (c & 16)
                v.append(v.at(j));
            else
                v.insert(i, v.at(j));
            m.insert(c & 16 ? m.end() : m.begin() + i, own);
            break;
        }
        case 2: {
            const int i = a % (n + 1), count = b % 4;
            v.insert(i, count, value);
            m.insert(m.begin() + i, size_t(count), value);
            break;
        }
        case 3: {
            const int i = a % (n + 2) - 1, count = b % 5;
            v.remove(i, count);
            const int from = std::max(i, 0), to = std::min(std::max(i + count, 0), n);
            if (from < to)
                m.erase(m.begin() + from, m.begin() + to);
            break;
        }
        case 4:
            v.resize(a % 24);
            m.resize(size_t(a % 24));
            break;
        case 5:
            if (n > 0) {
                v[a % n] = value;
                m[size_t(a % n)] = value;
            }
            break;
        case 6: {
            const int size = b % 9 - 1;
            v.fill(value, size);
            m.assign(size < 0 ? m.size() : size_t(size), value);
            break;
        }
        case 7:
            if (b & 1)
                v.reserve(a % 32);
            else
                v.squeeze();
            break;
        case 8:
            v.clear();
            m.clear();
            break;
        case 9:
            vec.snapshot(a);
            break;
        default:
            vec.restore(a);
            break;
        }
        const auto found = std::find(m.begin(), m.end(), value);
        FUZZ_CHECK(v.indexOf(value) == (found == m.end() ? -1 : int(found - m.begin())));
        FUZZ_CHECK(v.count(value) == int(std::count(m.begin(), m.end(), value)));
        vec.checkAll(checkSequence<VyVector<T>, T>);
    }

    void listStep(int action, int a, int b, int c)
    {
        VyList<T>& l = list.c;
        std::vector<T>& m = list.m;
        const int n = l.size();
        const T value(c & 15);
        switch (action % 12) {
        case 0:
            l.append(value);
            m.push_back(value);
            break;
        case 1:
            l.prepend(value);
            m.insert(m.begin(), value);
            break;
        case 2: { // i < 1 prepends, i >= size appends
            const int i = a % (n + 5) - 2;
            l.insert(i, value);
            m.insert(m.begin() + std::clamp(i, 0, n), value);
            break;
        }
        case 3: { // its own element
            if (n == 0)
                break;
            const int i = a % (n + 1), j = b % n;
            const T own = m[size_t(j)];
            l.insert(i, l.at(j));
            m.insert(m.begin() + i, own);
            break;
        }
        case 4: { // outside the list: ignored
            const int i = a % (n + 4) - 2;
            l.removeAt(i);
            if (i >= 0 && i < n)
                m.erase(m.begin() + i);
            break;
        }
        case 5:
            if (n > 0) {
                FUZZ_CHECK(l.takeAt(a % n) == m[size_t(a % n)]);
                m.erase(m.begin() + a % n);
            }
            break;
        case 6:
            if (n > 0) {
                const int from = a % n, to = b % n;
                if (c & 16) {
                    l.swap(from, to);
                    std::swap(m[size_t(from)], m[size_t(to)]);
                } else {
                    l.move(from, to);
                    const T moved = m[size_t(from)];
                    m.erase(m.begin() + from);
                    m.insert(m.begin() + to, moved);
                }
            }
            break;
        case 7:
            if (c & 16) {
                const auto found = std::find(m.begin(), m.end(), value);
                FUZZ_CHECK(l.removeOne(value) == (found != m.end()));
                if (found != m.end())
                    m.erase(found);
            } else {
                const int removed = l.removeAll(n > 0 ? l.at(a % n) : value);
                const T gone = n > 0 ? m[size_t(a % n)] : value;
                FUZZ_CHECK(removed == int(std::count(m.begin(), m.end(), gone)));
                m.erase(std::remove(m.begin(), m.end(), gone), m.end());
            }
            break;
        case 8: { // itself or a copy, appended; a list that would grow too long stays as it is
            const int k = a % kCopies;
            const std::vector<T> tail = b & 1 ? m : list.copyModel[k];
            if (size_t(n) + tail.size() > kMaxLength)
                break;
            l.append(b & 1 ? l : list.copy[k]);
            m.insert(m.end(), tail.begin(), tail.end());
            break;
        }
        case 9: { // mid clamps both arguments
            const int pos = a % (n + 6) - 3, len = b % (n + 4) - 2;
            const int from = std::clamp(pos, 0, n);
            int count = pos < 0 && len >= 0 ? std::max(len + pos, 0) : len;
            count = count < 0 || count > n - from ? n - from : count;
            checkSequence(l.mid(pos, len),
                          std::vector<T>(m.begin() + from, m.begin() + from + count));
            break;
        }
        case 10:
            list.snapshot(a);
            break;
        default:
            list.restore(a);
            break;
        }
        list.checkAll(checkSequence<VyList<T>, T>);
    }

    // Hash and map share their actions: the model is the same.
    template <class C> void keyedStep(Tracked<C, std::map<T, T>>& t, int action, int a, int b)
    {
        C& c = t.c;
        std::map<T, T>& m = t.m;
        const T key(a & 15), value(b & 15);
        switch (action % 8) {
        case 0:
            c.insert(key, value);
            m[key] = value;
            break;
        case 1: // a value that lives in the container
            if (c.contains(T(b & 15))) {
                c.insert(key, c.constFind(T(b & 15)).value());
                m[key] = m[T(b & 15)];
            }
            break;
        case 2:
            FUZZ_CHECK(c.remove(key) == int(m.erase(key)));
            break;
        case 3:
            FUZZ_CHECK(c.take(key) == (m.count(key) ? m[key] : T()));
            m.erase(key);
            break;
        case 4:
            if (m.count(key)) {
                c.erase(c.find(key));
                m.erase(key);
            }
            break;
        case 5:
            c[key] = value;
            m[key] = value;
            break;
        case 6:
            t.snapshot(a >> 4);
            break;
        default:
            if (b & 16) {
                t.restore(a >> 4);
            } else {
                c.clear();
                m.clear();
            }
            break;
        }
        FUZZ_CHECK(c.contains(key) == (m.count(key) != 0));
        FUZZ_CHECK(c.value(key, T(99)) == (m.count(key) ? m[key] : T(99)));
    }

    void step(const uint8_t* op)
    {
        const int action = op[0] >> 2, a = op[1], b = op[2], c = op[3];
        switch (op[0] & 3) {
        case 0:
            vectorStep(action, a, b, c);
            break;
        case 1:
            listStep(action, a, b, c);
            break;
        case 2:
            if (action & 1)
                hash.c.reserve(a % 40 - 4);
            else
                keyedStep(hash, action >> 1, a, b);
            hash.checkAll(checkHash<T>);
            checkKeysAndValues(hash.c);
            break;
        default:
            keyedStep(map, action, a, b);
            checkBounds(map.c, map.m, T(a & 15));
            map.checkAll(checkMap<T>);
            break;
        }
    }
};

template <class T> void run(const uint8_t* data, size_t size)
{
    Run<T> r;
    for (size_t i = 0; i + 4 <= size && i / 4 < kMaxOps; i += 4)
        r.step(data + i);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    if (data[0] & 1)
        run<Item>(data + 1, size - 1);
    else
        run<int>(data + 1, size - 1);
    return 0;
}
