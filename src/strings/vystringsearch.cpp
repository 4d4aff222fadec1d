// Searching in UTF-16 text: the rolling-hash and Boyer-Moore substring searches, the unit
// search, and the string's indexOf/lastIndexOf/count/startsWith/endsWith built on them.
#include "vystring.h"

#include "vystringfold.h"

#include <stdint.h>
#include <string.h>

static inline bool equalUnits(const VyUcs2* a, const VyUcs2* b, int n)
{
    return n <= 0 || memcmp(a, b, size_t(n) * sizeof(VyUcs2)) == 0;
}

// n units at a (paired within [aBegin, ...)) and at b (paired within [bBegin, ...)) fold alike.
static inline bool equalFolded(const VyUcs2* a, const VyUcs2* aBegin, const VyUcs2* b,
                               const VyUcs2* bBegin, int n)
{
    for (int i = 0; i < n; ++i) {
        if (vyFoldAt(a + i, aBegin) != vyFoldAt(b + i, bBegin))
            return false;
    }
    return true;
}

int findUnit(const VyUcs2* haystack, int haystackLen, VyUcs2 unit, int from, Vy::CaseSensitivity cs)
{
    const int l = haystackLen;
    if (from < 0) {
        from += l;
        if (from < 0)
            from = 0;
    }
    if (from >= l)
        return -1;
    const VyUcs2* p = haystack + from;
    const VyUcs2* const end = haystack + l;
    if (cs == Vy::CaseSensitive) {
        // Four units per 64-bit word: a lane of (word ^ pattern) is zero where the unit
        // matches; the classic zero-lane test flags the first such lane exactly.
        const uint64_t pattern = unit * 0x0001000100010001ull;
        while (end - p >= 4) {
            uint64_t word;
            memcpy(&word, p, 8);
            const uint64_t x = word ^ pattern;
            if ((x - 0x0001000100010001ull) & ~x & 0x8000800080008000ull)
                break;
            p += 4;
        }
        for (; p != end; ++p) {
            if (*p == unit)
                return int(p - haystack);
        }
        return -1;
    }
    const int folded = vyFoldUnit(unit);
    for (; p != end; ++p) {
        if (vyFoldUnit(*p) == folded)
            return int(p - haystack);
    }
    return -1;
}

int vyFindStringBoyerMoore(const VyUcs2* haystack, int haystackLen, int from, const VyUcs2* needle,
                           int needleLen, Vy::CaseSensitivity cs)
{
    const int l = haystackLen;
    const int sl = needleLen;
    if (from < 0)
        from = 0;
    if (sl <= 0)
        return sl == 0 && from <= l ? from : -1;
    if (from >= l || sl > l - from)
        return -1;

    const bool sensitive = cs == Vy::CaseSensitive;
    // Only the needle's last 255 units take part; an entry is the distance from the last
    // occurrence of that low byte to the needle's end, or the window length when absent.
    const int window = sl < 255 ? sl : 255;
    unsigned char skip[256];
    memset(skip, window, sizeof(skip));
    for (int i = 0; i < window; ++i) {
        const VyUcs2* u = needle + sl - window + i;
        const int key = sensitive ? *u : vyFoldAt(u, needle);
        skip[key & 0xFF] = static_cast<unsigned char>(window - 1 - i);
    }

    const VyUcs2* current = haystack + from + sl - 1;
    const VyUcs2* const end = haystack + l;
    const VyUcs2* const last = needle + sl - 1;
    // Note: only the low byte indexes the table, so units sharing it share an entry; the
    // comparison below keeps the result exact.
    if (sensitive) {
        for (;;) {
            int step = skip[*current & 0xFF];
            // Short needles: a step moves at most `window` units, and each one waits for two
            // dependent loads (the unit, then its entry). While two windows fit before the end,
            // the entry one window ahead is read along with the current one, so a full-window
            // step (the usual one in text that shares few low bytes with the needle) finds its
            // next entry at hand. The cursor visits the same units as below. Longer windows
            // gain nothing from it: their steps are long already and more often partial.
            while (step && window <= 8 && end - current > 2 * window) {
                const int ahead = skip[current[window] & 0xFF];
                if (step == window) {
                    current += window;
                    step = ahead;
                } else {
                    current += step;
                    step = skip[*current & 0xFF];
                }
            }
            while (step) {
                if (end - current <= step)
                    return -1;
                current += step;
                step = skip[*current & 0xFF];
            }
            int m = 0;
            while (m < sl && current[-m] == last[-m])
                ++m;
            if (m == sl)
                return int(current - haystack) - (sl - 1);
            step = skip[current[-m] & 0xFF] == sl ? sl - m : 1;
            if (end - current <= step)
                return -1;
            current += step;
        }
    }
    for (;;) {
        int step = skip[vyFoldAt(current, haystack) & 0xFF];
        while (step) {
            if (end - current <= step)
                return -1;
            current += step;
            step = skip[vyFoldAt(current, haystack) & 0xFF];
        }
        int m = 0;
        while (m < sl && vyFoldAt(current - m, haystack) == vyFoldAt(last - m, needle))
            ++m;
        if (m == sl)
            return int(current - haystack) - (sl - 1);
        step = skip[vyFoldAt(current - m, haystack) & 0xFF] == sl ? sl - m : 1;
        if (end - current <= step)
            return -1;
        current += step;
    }
}

int vyFindString(const VyUcs2* haystack, int haystackLen, int from, const VyUcs2* needle,
                 int needleLen, Vy::CaseSensitivity cs)
{
    const int l = haystackLen;
    const int sl = needleLen;
    if (l < 0 || sl < 0)
        return -1;
    if (from < 0)
        from += l;
    // Compared unsigned, so a still-negative `from` fails too.
    if (uint(from) + uint(sl) > uint(l) || from < 0)
        return -1;
    if (sl == 0)
        return from;
    if (l == 0)
        return -1;
    if (sl == 1)
        return findUnit(haystack, l, needle[0], from, cs);
    if (l > 500 && sl > 5)
        return vyFindStringBoyerMoore(haystack, l, from, needle, sl, cs);

    // Rolling hash: hash = (hash << 1) + unit over the window. Sliding subtracts the leaving
    // unit's contribution, which has been shifted out entirely for needles above 32 units.
    const VyUcs2* p = haystack + from;
    const VyUcs2* const lastStart = haystack + (l - sl);
    const uint shift = uint(sl - 1);
    uint needleHash = 0;
    uint windowHash = 0;
    if (cs == Vy::CaseSensitive) {
        for (int i = 0; i < sl; ++i) {
            needleHash = (needleHash << 1) + needle[i];
            windowHash = (windowHash << 1) + p[i];
        }
        windowHash -= p[shift];
        for (;;) {
            windowHash += p[shift];
            if (windowHash == needleHash && equalUnits(needle, p, sl))
                return int(p - haystack);
            if (p == lastStart)
                return -1;
            if (shift < 32)
                windowHash -= uint(*p) << shift;
            windowHash <<= 1;
            ++p;
        }
    }
    for (int i = 0; i < sl; ++i) {
        needleHash = (needleHash << 1) + uint(vyFoldAt(needle + i, needle));
        windowHash = (windowHash << 1) + uint(vyFoldAt(p + i, haystack));
    }
    windowHash -= uint(vyFoldAt(p + shift, haystack));
    for (;;) {
        windowHash += uint(vyFoldAt(p + shift, haystack));
        if (windowHash == needleHash && equalFolded(p, haystack, needle, needle, sl))
            return int(p - haystack);
        if (p == lastStart)
            return -1;
        if (shift < 32)
            windowHash -= uint(vyFoldAt(p, haystack)) << shift;
        windowHash <<= 1;
        ++p;
    }
}

int VyString::lastIndexOf(VyUcs2 c, int from, Vy::CaseSensitivity cs) const
{
    const int size = d->size;
    if (from < 0)
        from += size;
    if (from < 0 || from >= size)
        return -1;
    const VyUcs2* const data = d->data;
    if (cs == Vy::CaseSensitive) {
        for (int i = from; i >= 0; --i) {
            if (data[i] == c)
                return i;
        }
        return -1;
    }
    const int folded = vyFoldUnit(c);
    for (int i = from; i >= 0; --i) {
        if (vyFoldUnit(data[i]) == folded)
            return i;
    }
    return -1;
}

// The backward rolling hash: each window's hash is built from its last unit to its first, so
// moving one unit back drops the window's last unit (weight 2^(sl - 1)) and adds the new first.
int VyString::lastIndexOfUnits(const VyUcs2* needle, int sl, int from, Vy::CaseSensitivity cs) const
{
    const VyUcs2* const h = d->data;
    const VyUcs2* p = h + from;
    const uint shift = uint(sl - 1);
    const bool sensitive = cs == Vy::CaseSensitive;
    auto unitAt = [=](const VyUcs2* u, const VyUcs2* begin) -> uint {
        return sensitive ? *u : uint(vyFoldAt(u, begin));
    };
    uint needleHash = 0;
    uint windowHash = 0;
    for (int i = sl - 1; i >= 0; --i) {
        needleHash = (needleHash << 1) + unitAt(needle + i, needle);
        windowHash = (windowHash << 1) + unitAt(p + i, h);
    }
    for (;;) {
        if (windowHash == needleHash &&
            (sensitive ? equalUnits(p, needle, sl) : equalFolded(p, h, needle, needle, sl)))
            return int(p - h);
        if (p == h)
            return -1;
        if (shift < 32)
            windowHash -= unitAt(p + shift, h) << shift;
        windowHash <<= 1;
        --p;
        windowHash += unitAt(p, h);
    }
}

int VyString::lastIndexOf(const VyString& s, int from, Vy::CaseSensitivity cs) const
{
    const int sl = s.d->size;
    if (sl == 1)
        return lastIndexOf(s.d->data[0], from, cs);
    const int l = d->size;
    if (from < 0)
        from += l;
    if (sl == 0 && from == l)
        return l;
    if (from < 0 || from >= l || sl > l)
        return -1;
    if (from > l - sl)
        from = l - sl;
    if (sl == 0)
        return from;
    return lastIndexOfUnits(s.d->data, sl, from, cs);
}

int VyString::count(const VyString& s, Vy::CaseSensitivity cs) const
{
    // Kept: the first search starts at index 1, so an occurrence at index 0 is never counted
    // ("aa" occurs twice in "aaaa", at 1 and 2). The framework's callers were written
    // against these counts; starting at 0 would change their results.
    int found = 0;
    int i = 0;
    while ((i = vyFindString(d->data, d->size, i + 1, s.d->data, s.d->size, cs)) != -1)
        ++found;
    return found;
}

int VyString::count(VyUcs2 c, Vy::CaseSensitivity cs) const
{
    const VyUcs2* p = d->data;
    const VyUcs2* const end = p + d->size;
    int found = 0;
    if (cs == Vy::CaseSensitive) {
        for (; p != end; ++p)
            found += *p == c;
        return found;
    }
    const int folded = vyFoldUnit(c);
    for (; p != end; ++p)
        found += vyFoldUnit(*p) == folded;
    return found;
}

bool VyString::startsWith(const VyString& s, Vy::CaseSensitivity cs) const
{
    if (!d->data)
        return !s.d->data;
    if (d->size == 0)
        return s.d->size == 0;
    const int n = s.d->size;
    if (n > d->size)
        return false;
    if (cs == Vy::CaseSensitive)
        return equalUnits(d->data, s.d->data, n);
    return equalFolded(d->data, d->data, s.d->data, s.d->data, n);
}

bool VyString::endsWith(const VyString& s, Vy::CaseSensitivity cs) const
{
    if (!d->data)
        return !s.d->data;
    if (d->size == 0)
        return s.d->size == 0;
    const int n = s.d->size;
    const int pos = d->size - n;
    if (pos < 0)
        return false;
    if (cs == Vy::CaseSensitive)
        return equalUnits(d->data + pos, s.d->data, n);
    return equalFolded(d->data + pos, d->data, s.d->data, s.d->data, n);
}

bool VyString::startsWith(VyUcs2 c, Vy::CaseSensitivity cs) const
{
    if (d->size == 0)
        return false;
    const VyUcs2 first = d->data[0];
    return cs == Vy::CaseSensitive ? first == c : vyFoldUnit(first) == vyFoldUnit(c);
}

bool VyString::endsWith(VyUcs2 c, Vy::CaseSensitivity cs) const
{
    if (d->size == 0)
        return false;
    const VyUcs2 last = d->data[d->size - 1];
    return cs == Vy::CaseSensitive ? last == c : vyFoldUnit(last) == vyFoldUnit(c);
}
