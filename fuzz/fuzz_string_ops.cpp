// VyString searching and editing driven by fuzzed input, each operation checked against a
// plain model on std::u16string: naive searches with the documented folding, and the
// documented clamping, replace, remove and split loops written out.
//
// Input layout:
//     byte 0      operation
//     byte 1      flags: 1 case-sensitive, 2 DropEmpty, 4 repeat the haystack to 600+
//                 units, 8 the alternative form of the operation (raw-array replace,
//                 Boyer-Moore function, unit form, private string), 16 an empty haystack is
//                 the shared empty string, 32 / 64 `a` / `b` take an extreme value, 128 an
//                 empty haystack or needle has a buffer
//     bytes 2, 3  `a`, `b`: signed positions, lengths and `from` arguments
//     bytes 4, 5  needle length % 18, replacement length % 10
//     the rest    units: a byte below 0xE0 picks one of a small alphabet (letters with case
//                 pairs, white space, sharp s, Kelvin, sigmas, surrogates, 0), a byte from 0xE0
//                 takes the next two bytes as a raw unit. The needle comes first, then the
//                 replacement, then the haystack.
//
// After every operation: strings are 0-terminated, a copy taken before a mutation still
// holds the old text, and a result equal to the whole string shares its block.
//
// The substring replace whose replacement contains the searched text never ends by design
// (the search resumes where the replacement went); those inputs are skipped.
#include "fuzz_check.h"
#include "vystring.h"
#include "vyu16.h"
#include "vyunicode.h"

#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

typedef std::u16string Units;
typedef long long Index; // positions, wide enough for pos + len of any two ints

const char16_t kAlphabet[] = {
    u'a',   u'b',   u'c', u'A', u'B',   u'C',   u' ',   u'\t',  u'\n',  0x00A0, 0x2028, 0x00DF,
    0x1E9E, 0x212A, u'k', u'K', 0x03A3, 0x03C3, 0x03C2, 0xD801, 0xDC00, 0xDC28, 0xD800, 0x0000,
};
constexpr unsigned kAlphabetSize = sizeof(kAlphabet) / sizeof(kAlphabet[0]);

const int kExtremes[] = {INT_MIN, INT_MIN + 1, -1000000, 1000000, INT_MAX - 1, INT_MAX};

void checkEqual(const VyString& s, const Units& model)
{
    checkTerminated(s);
    FUZZ_CHECK(U(s) == model);
}

// The folded unit at s[i]: the unit plus the folding difference of its record; with
// `pairing`, a low surrogate after a high one takes the record of the low 16 bits of the code
// point they form.
int foldAt(const Units& s, size_t i, bool pairing)
{
    unsigned lookup = s[i];
    if (pairing && (lookup & 0xFC00) == 0xDC00 && i > 0 && (s[i - 1] & 0xFC00) == 0xD800)
        lookup = ((unsigned(s[i - 1]) - 0xD800) << 10 | (lookup - 0xDC00)) + 0x10000;
    return (s[i] + VyUnicodeTables::properties(static_cast<unsigned short>(lookup & 0xFFFF))
                       ->caseFoldDiff) &
           0xFFFF;
}

bool matchAt(const Units& h, size_t p, const Units& n, bool sensitive, bool pairing)
{
    for (size_t i = 0; i < n.size(); ++i) {
        if (sensitive ? h[p + i] != n[i] : foldAt(h, p + i, pairing) != foldAt(n, i, pairing))
            return false;
    }
    return true;
}

// vyFindString: a negative `from` counts from the end; a one-unit needle folds without pairing.
int modelFind(const Units& h, int from, const Units& n, bool sensitive)
{
    const Index l = Index(h.size());
    const Index sl = Index(n.size());
    Index f = from;
    if (f < 0)
        f += l;
    if (f < 0 || f + sl > l)
        return -1;
    if (sl == 0)
        return int(f);
    for (Index p = f; p + sl <= l; ++p) {
        if (matchAt(h, size_t(p), n, sensitive, sl != 1))
            return int(p);
    }
    return -1;
}

// vyFindStringBoyerMoore: a negative `from` counts as 0; folding always pairs.
int modelFindBoyerMoore(const Units& h, int from, const Units& n, bool sensitive)
{
    const Index l = Index(h.size());
    const Index sl = Index(n.size());
    const Index f = from < 0 ? 0 : from;
    if (sl == 0)
        return f <= l ? int(f) : -1;
    for (Index p = f; p + sl <= l; ++p) {
        if (matchAt(h, size_t(p), n, sensitive, true))
            return int(p);
    }
    return -1;
}

// findUnit: a negative `from` counts from the end, clamped at 0; no pairing.
int modelFindUnit(const Units& h, char16_t c, int from, bool sensitive)
{
    const Index l = Index(h.size());
    Index f = from;
    if (f < 0)
        f = f + l < 0 ? 0 : f + l;
    for (Index p = f; p < l; ++p) {
        if (matchAt(h, size_t(p), Units(1, c), sensitive, false))
            return int(p);
    }
    return -1;
}

int modelLastIndexOf(const Units& h, const Units& n, int from, bool sensitive)
{
    const Index l = Index(h.size());
    const Index sl = Index(n.size());
    Index f = from;
    if (f < 0)
        f += l;
    if (sl == 0 && f == l)
        return int(l);
    if (f < 0 || f >= l || sl > l)
        return -1;
    if (f > l - sl)
        f = l - sl;
    for (Index p = f; p >= 0; --p) {
        if (matchAt(h, size_t(p), n, sensitive, sl != 1))
            return int(p);
    }
    return -1;
}

// [pos, pos + len) clamped to the string; a negative pos shortens len by as much.
void clamp(Index size, Index& pos, Index& len)
{
    if (pos < 0) {
        len += pos;
        pos = 0;
    }
    if (pos > size)
        pos = size;
    if (len < 0)
        len = 0;
    if (pos + len > size)
        len = size - pos;
}

Units modelMid(const Units& h, int pos, int n)
{
    const Index l = Index(h.size());
    if (l == 0 || pos >= l)
        return Units();
    Index p = pos;
    Index len = n < 0 ? l - p : n;
    if (p < 0) {
        len += p;
        p = 0;
    }
    if (p + len > l)
        len = l - p;
    return len > 0 ? h.substr(size_t(p), size_t(len)) : Units();
}

Units modelRemove(Units h, const Units& s, bool sensitive)
{
    if (s.empty())
        return h;
    int pos = 0;
    while ((pos = modelFind(h, pos, s, sensitive)) != -1)
        h.erase(size_t(pos), s.size());
    return h;
}

// The replace loop: each search resumes where the last replacement went.
Units modelReplace(Units h, const Units& before, const Units& after, bool sensitive)
{
    if (h.empty())
        return h;
    int pos = 0;
    while ((pos = modelFind(h, pos, before, sensitive)) != -1)
        h.replace(size_t(pos), before.size(), after);
    return h;
}

// replace(VyUcs2, VyUcs2): every matching unit, folded without pairing.
Units modelReplaceUnits(Units h, char16_t before, char16_t after, bool sensitive)
{
    for (size_t i = 0; i < h.size(); ++i) {
        if (matchAt(h, i, Units(1, before), sensitive, false))
            h[i] = after;
    }
    return h;
}

// remove(VyUcs2) and replace(VyUcs2, const VyString&): every matching unit, one pass.
Units modelReplaceUnitBy(const Units& h, char16_t before, const Units& after, bool sensitive)
{
    Units out;
    for (size_t i = 0; i < h.size(); ++i) {
        if (matchAt(h, i, Units(1, before), sensitive, false))
            out += after;
        else
            out += h[i];
    }
    return out;
}

// startsWith / endsWith: a string without a buffer starts only with another one without; an
// empty one with a buffer only with an empty one.
bool modelEdgeMatch(const Units& h, bool hBuffer, const Units& n, bool nBuffer, bool sensitive,
                    bool atEnd)
{
    if (!hBuffer)
        return !nBuffer;
    if (h.empty())
        return n.empty();
    if (n.size() > h.size())
        return false;
    return matchAt(h, atEnd ? h.size() - n.size() : 0, n, sensitive, true);
}

// toLower / toUpper: each unit plus the difference of its record (paired like folding), except
// where the record flags a longer full mapping. Also reports whether any unit has a non-zero
// difference or the flag, which is when the result has a block of its own.
Units modelMapCase(const Units& h, bool lower, bool* touched)
{
    Units out = h;
    *touched = false;
    for (size_t i = 0; i < h.size(); ++i) {
        unsigned lookup = h[i];
        if ((lookup & 0xFC00) == 0xDC00 && i > 0 && (h[i - 1] & 0xFC00) == 0xD800)
            lookup = ((unsigned(h[i - 1]) - 0xD800) << 10 | (lookup - 0xDC00)) + 0x10000;
        const VyUnicodeTables::Properties* p =
            VyUnicodeTables::properties(static_cast<unsigned short>(lookup & 0xFFFF));
        const int diff = lower ? p->lowerCaseDiff : p->upperCaseDiff;
        const bool special = p->flags & (lower ? VyUnicodeTables::LowerCaseSpecial
                                               : VyUnicodeTables::UpperCaseSpecial);
        if (diff != 0 || special)
            *touched = true;
        if (!special)
            out[i] = char16_t((h[i] + diff) & 0xFFFF);
    }
    return out;
}

// Whether replace ends. The string form removes for an empty `after` and replaces unit for
// unit for one unit each. Otherwise the loop ends unless a replacement can be found again where
// it went: inserted text that holds `before` is, and an empty `before` is found at once. In the
// case-insensitive mode a low surrogate opening `after` folds differently after a high one, so
// such replacements are skipped too.
bool replaceEnds(const Units& h, const Units& before, const Units& after, bool sensitive,
                 bool rawForm)
{
    if (!rawForm && (after.empty() || (before.size() == 1 && after.size() == 1)))
        return true;
    if (h.empty())
        return true;
    if (before.empty())
        return false;
    if (after.empty())
        return true;
    if (!sensitive && (after[0] & 0xFC00) == 0xDC00)
        return false;
    return modelFind(after, 0, before, sensitive) == -1;
}

std::vector<Units> modelSplit(const Units& h, const Units& sep, bool keepEmpty, bool sensitive)
{
    std::vector<Units> parts;
    int start = 0;
    int extra = 0;
    int end;
    while ((end = modelFind(h, start + extra, sep, sensitive)) != -1) {
        if (start != end || keepEmpty)
            parts.push_back(modelMid(h, start, end - start));
        start = end + int(sep.size());
        extra = sep.empty() ? 1 : 0;
    }
    if (!(start == int(h.size()) && !keepEmpty))
        parts.push_back(modelMid(h, start, -1));
    return parts;
}

bool isSpace(char16_t c)
{
    return VyUnicode::isSpace(c);
}

Units modelTrimmed(const Units& h)
{
    size_t b = 0;
    size_t e = h.size();
    while (b < e && isSpace(h[b]))
        ++b;
    while (e > b && isSpace(h[e - 1]))
        --e;
    return h.substr(b, e - b);
}

Units modelSimplified(const Units& h)
{
    const Units t = modelTrimmed(h);
    Units out;
    for (size_t i = 0; i < t.size(); ++i) {
        if (!isSpace(t[i]))
            out += t[i];
        else if (!isSpace(t[i - 1]))
            out += u' ';
    }
    return out;
}

// Decodes the payload into units (see the layout above).
Units payloadUnits(const uint8_t* p, size_t n)
{
    Units u;
    for (size_t i = 0; i < n; ++i) {
        if (p[i] < 0xE0) {
            u += kAlphabet[p[i] % kAlphabetSize];
        } else if (i + 2 < n) {
            u += char16_t(p[i + 1] | p[i + 2] << 8);
            i += 2;
        }
    }
    return u;
}

void checkList(const VyStringList& list, const std::vector<Units>& model)
{
    FUZZ_CHECK(list.size() == int(model.size()));
    for (int i = 0; i < list.size(); ++i)
        checkEqual(list.at(i), model[size_t(i)]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 6 || size > 4096)
        return 0;
    const unsigned op = data[0];
    const unsigned flags = data[1];
    const bool sensitive = flags & 1;
    const Vy::CaseSensitivity cs = sensitive ? Vy::CaseSensitive : Vy::CaseInsensitive;
    const bool keepEmpty = !(flags & 2);
    const bool alternate = flags & 8;
    const int a = flags & 32 ? kExtremes[data[2] % 6] : int(int8_t(data[2]));
    const int b = flags & 64 ? kExtremes[data[3] % 6] : int(int8_t(data[3]));

    const Units all = payloadUnits(data + 6, size - 6);
    const size_t nl = std::min<size_t>(data[4] % 18, all.size());
    const size_t rl = std::min<size_t>(data[5] % 10, all.size() - nl);
    const Units needle = all.substr(0, nl);
    const Units repl = all.substr(nl, rl);
    Units hay = all.substr(nl + rl);
    if ((flags & 4) && !hay.empty()) {
        while (hay.size() < 600)
            hay += hay;
    }

    // Empty strings come in three kinds: the shared empty string, a block without a buffer
    // (toVy) and a buffer holding only the terminator (VyString("")).
    const VyString s = !hay.empty()  ? V(hay)
                       : flags & 128 ? VyString("")
                       : flags & 16  ? VyString()
                                     : V(hay);
    const VyString n = needle.empty() && (flags & 128) ? VyString("") : V(needle);
    const VyString r = V(repl);
    const int l = int(hay.size());
    VyString m(s); // the copy that mutators change; `s` must keep its text

    switch (op % 20) {
    case 0: // substring search, both functions
        if (alternate) {
            FUZZ_CHECK(vyFindStringBoyerMoore(s.unicode(), l, a, n.unicode(), n.size(), cs) ==
                       modelFindBoyerMoore(hay, a, needle, sensitive));
        } else {
            FUZZ_CHECK(s.indexOf(n, a, cs) == modelFind(hay, a, needle, sensitive));
            FUZZ_CHECK(vyFindString(s.unicode(), l, a, n.unicode(), n.size(), cs) ==
                       modelFind(hay, a, needle, sensitive));
        }
        break;
    case 1: // unit search
        if (!needle.empty())
            FUZZ_CHECK(s.indexOf(VyUcs2(needle[0]), a, cs) ==
                       modelFindUnit(hay, needle[0], a, sensitive));
        break;
    case 2:
        FUZZ_CHECK(s.lastIndexOf(n, a, cs) == modelLastIndexOf(hay, needle, a, sensitive));
        if (!needle.empty())
            FUZZ_CHECK(s.lastIndexOf(VyUcs2(needle[0]), a, cs) ==
                       modelLastIndexOf(hay, needle.substr(0, 1), a, sensitive));
        break;
    case 3: {
        // Kept behaviour of count: the first search starts at 1.
        int expected = 0;
        int i = 0;
        while ((i = modelFind(hay, i + 1, needle, sensitive)) != -1)
            ++expected;
        FUZZ_CHECK(s.count(n, cs) == expected);
        if (!needle.empty()) {
            int units = 0;
            for (size_t j = 0; j < hay.size(); ++j)
                units += matchAt(hay, j, needle.substr(0, 1), sensitive, false);
            FUZZ_CHECK(s.count(VyUcs2(needle[0]), cs) == units);
        }
        break;
    }
    case 4: { // substring replace
        if (!replaceEnds(hay, needle, repl, sensitive, alternate))
            return 0;
        Units expected;
        if (alternate)
            expected = modelReplace(hay, needle, repl, sensitive);
        else if (repl.empty())
            expected = modelRemove(hay, needle, sensitive);
        else if (needle.size() == 1 && repl.size() == 1)
            expected = modelReplaceUnits(hay, needle[0], repl[0], sensitive);
        else
            expected = modelReplace(hay, needle, repl, sensitive);
        if (alternate)
            m.replace(n.unicode(), n.size(), r.unicode(), r.size(), cs);
        else
            m.replace(n, r, cs);
        checkEqual(m, expected);
        break;
    }
    case 5: // positional replace
        m.replace(a, b, r);
        {
            Index pos = a;
            Index len = b;
            clamp(l, pos, len);
            Units expected = hay;
            expected.replace(size_t(pos), size_t(len), repl);
            checkEqual(m, expected);
        }
        break;
    case 6:
        if (alternate && !needle.empty()) {
            m.remove(VyUcs2(needle[0]), cs);
            checkEqual(m, modelReplaceUnitBy(hay, needle[0], Units(), sensitive));
        } else {
            m.remove(n, cs);
            checkEqual(m, modelRemove(hay, needle, sensitive));
        }
        break;
    case 7: {
        m.remove(a, b);
        Index pos = a;
        Index len = b;
        clamp(l, pos, len);
        Units expected = hay;
        expected.erase(size_t(pos), size_t(len));
        checkEqual(m, expected);
        break;
    }
    case 8: {
        const VyString::SplitBehavior behavior =
            keepEmpty ? VyString::KeepEmpty : VyString::DropEmpty;
        if (alternate && needle.size() == 1)
            checkList(s.split(VyUcs2(needle[0]), behavior, cs),
                      modelSplit(hay, needle, keepEmpty, sensitive));
        else
            checkList(s.split(n, behavior, cs), modelSplit(hay, needle, keepEmpty, sensitive));
        break;
    }
    case 9: {
        const VyString t = s.trimmed();
        checkEqual(t, modelTrimmed(hay));
        if (t.size() == l && l > 0)
            FUZZ_CHECK(t.d == s.d);
        checkEqual(s.simplified(), modelSimplified(hay));
        break;
    }
    case 10: {
        const VyString t = s.mid(a, b);
        checkEqual(t, modelMid(hay, a, b));
        if (t.size() == l && l > 0)
            FUZZ_CHECK(t.d == s.d);
        break;
    }
    case 11: {
        const VyString left = s.left(a);
        const VyString right = s.right(a);
        const bool part = a >= 0 && a < l;
        checkEqual(left, part ? hay.substr(0, size_t(a)) : hay);
        checkEqual(right, part ? hay.substr(size_t(l - a)) : hay);
        if (!part)
            FUZZ_CHECK(left.d == s.d && right.d == s.d);
        break;
    }
    case 12: {
        const VyString::Data* before = m.d;
        m.insert(a, r);
        const size_t pos = a < 0 ? 0 : a > l ? size_t(l) : size_t(a);
        checkEqual(m, Units(hay).insert(pos, repl));
        if (repl.empty())
            FUZZ_CHECK(m.d == before);
        break;
    }
    case 13: // this string itself as the argument, shared or (alternate) private
        if (alternate)
            m.detach();
        m.insert(a, m);
        {
            const size_t pos = a < 0 ? 0 : a > l ? size_t(l) : size_t(a);
            checkEqual(m, Units(hay).insert(pos, hay));
        }
        break;
    case 14:
        if (alternate && !needle.empty()) {
            const char16_t c = needle[0];
            m.insert(a, VyUcs2(c)).prepend(VyUcs2(c));
            const size_t pos = a < 0 ? 0 : a > l ? size_t(l) : size_t(a);
            checkEqual(m, c + Units(hay).insert(pos, 1, c));
        } else {
            m.append(r).prepend(n);
            checkEqual(m, needle + hay + repl);
        }
        break;
    case 15:
        if (alternate)
            m.detach();
        m.replace(a, b, m);
        {
            Index pos = a;
            Index len = b;
            clamp(l, pos, len);
            Units expected = hay;
            expected.replace(size_t(pos), size_t(len), hay);
            checkEqual(m, expected);
        }
        break;
    case 16: // unit replacements
        if (needle.empty())
            break;
        if (alternate && !repl.empty()) {
            m.replace(VyUcs2(needle[0]), VyUcs2(repl[0]), cs);
            checkEqual(m, modelReplaceUnitBy(hay, needle[0], repl.substr(0, 1), sensitive));
        } else {
            m.replace(VyUcs2(needle[0]), r, cs);
            checkEqual(m, modelReplaceUnitBy(hay, needle[0], repl, sensitive));
        }
        break;
    case 17: {
        const bool hBuffer = s.unicode() != nullptr;
        const bool nBuffer = n.unicode() != nullptr;
        FUZZ_CHECK(s.startsWith(n, cs) ==
                   modelEdgeMatch(hay, hBuffer, needle, nBuffer, sensitive, false));
        FUZZ_CHECK(s.endsWith(n, cs) ==
                   modelEdgeMatch(hay, hBuffer, needle, nBuffer, sensitive, true));
        if (!needle.empty()) {
            const Units first = needle.substr(0, 1);
            FUZZ_CHECK(s.startsWith(VyUcs2(needle[0]), cs) ==
                       (!hay.empty() && matchAt(hay, 0, first, sensitive, false)));
            FUZZ_CHECK(s.endsWith(VyUcs2(needle[0]), cs) ==
                       (!hay.empty() && matchAt(hay, hay.size() - 1, first, sensitive, false)));
        }
        break;
    }
    case 18: {
        bool touched = false;
        const VyString lower = s.toLower();
        checkEqual(lower, modelMapCase(hay, true, &touched));
        FUZZ_CHECK((lower.d == s.d) == !touched);
        const VyString upper = s.toUpper();
        checkEqual(upper, modelMapCase(hay, false, &touched));
        FUZZ_CHECK((upper.d == s.d) == !touched);
        break;
    }
    default: {
        // The raw substring replace with both arguments inside the private buffer it changes.
        if (l == 0)
            break;
        m.detach();
        const int p = ((a % (l + 1)) + l + 1) % (l + 1);
        const int q = ((b % (l + 1)) + l + 1) % (l + 1);
        const int k = std::min(int(nl), l - p);
        const int j = std::min(int(rl), l - q);
        const Units before = hay.substr(size_t(p), size_t(k));
        const Units after = hay.substr(size_t(q), size_t(j));
        if (!replaceEnds(hay, before, after, sensitive, true))
            return 0;
        m.replace(m.unicode() + p, k, m.unicode() + q, j, cs);
        checkEqual(m, modelReplace(hay, before, after, sensitive));
        break;
    }
    }
    checkEqual(s, hay);
    return 0;
}
