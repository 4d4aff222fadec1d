// Editing VyString: replacing, inserting and removing units, slicing, trimming, splitting,
// casing and padding. Every mutator detaches a shared block first and grows its buffer with
// allocMemory(d, newSize + 1, true), so repeated edits are amortised.
#include "vystring.h"

#include "vystringfold.h"
#include "vystringlist.h"
#include "vyunitbuffer.h"

#include <limits.h>
#include <new>
#include <stdint.h>
#include <string.h>

namespace
{

// Whether `units` points into the block's buffer.
bool pointsInto(const VyString::Data* d, const VyUcs2* units)
{
    const uintptr_t u = reinterpret_cast<uintptr_t>(units);
    const uintptr_t b = reinterpret_cast<uintptr_t>(d->data);
    return d->data && u >= b && u < b + size_t(d->alloc) * sizeof(VyUcs2);
}

// Clamps [pos, pos + len) to [0, size]: a negative pos shortens len by as much.
void clampRange(int size, int& pos, int& len)
{
    long long p = pos;
    long long n = len;
    if (p < 0) {
        n += p;
        p = 0;
    }
    if (p > size)
        p = size;
    if (n < 0)
        n = 0;
    if (p + n > size)
        n = size - p;
    pos = int(p);
    len = int(n);
}

int checkedSize(long long n)
{
    if (n > INT_MAX - 1)
        throw std::bad_alloc();
    return int(n);
}

} // namespace

void VyString::replaceUnits(int pos, int len, const VyUcs2* units, int n)
{
    detachIfShared();
    if (n > 0 && pointsInto(d, units)) {
        VyUnitBuffer copy;
        copy.append(units, n);
        replaceUnits(pos, len, copy.units(), n);
        return;
    }
    const int oldSize = d->size;
    const int newSize = checkedSize((long long)oldSize - len + n);
    const int tail = oldSize - pos - len;
    // Move the tail before a shrink and after a growth, so no unit is lost to realloc.
    if (n > len) {
        Data::allocMemory(d, newSize + 1, true);
        if (tail > 0)
            memmove(d->data + pos + n, d->data + pos + len, size_t(tail) * sizeof(VyUcs2));
    } else {
        if (tail > 0 && n != len)
            memmove(d->data + pos + n, d->data + pos + len, size_t(tail) * sizeof(VyUcs2));
        Data::allocMemory(d, newSize + 1, true);
    }
    if (n > 0)
        memcpy(d->data + pos, units, size_t(n) * sizeof(VyUcs2));
    d->size = newSize;
    d->data[newSize] = 0;
}

void VyString::insertUnits(int pos, const VyUcs2* units, int n)
{
    if (n <= 0)
        return;
    if (pos < 0)
        pos = 0;
    if (pos > d->size)
        pos = d->size;
    replaceUnits(pos, 0, units, n);
}

void VyString::insertUtf8(int pos, const char* utf8, int len)
{
    if (!utf8)
        return;
    const size_t length = strlen(utf8);
    const int n = length > size_t(INT_MAX) - 1 ? INT_MAX - 1 : int(length);
    const int used = (len >= 0 && len < n) ? len : n;
    if (used == 0)
        return;
    VyUnitBuffer units;
    units.appendUtf8(utf8, used);
    insertUnits(pos, units.units(), units.size());
}

VyString& VyString::replace(int pos, int len, const VyUcs2* after, int alen)
{
    clampRange(d->size, pos, len);
    if (alen < 0)
        alen = 0;
    if (len == 0 && alen == 0)
        return *this;
    replaceUnits(pos, len, after, alen);
    return *this;
}

VyString& VyString::replace(int pos, int len, const VyString& after)
{
    return replace(pos, len, after.d->data, after.d->size);
}

VyString& VyString::replace(int pos, int len, VyUcs2 after)
{
    return replace(pos, len, &after, 1);
}

VyString& VyString::replace(VyUcs2 before, VyUcs2 after, Vy::CaseSensitivity cs)
{
    int i = findUnit(d->data, d->size, before, 0, cs);
    if (i < 0)
        return *this;
    detachIfShared();
    VyUcs2* const data = d->data;
    const int size = d->size;
    if (cs == Vy::CaseSensitive) {
        for (; i < size; ++i) {
            if (data[i] == before)
                data[i] = after;
        }
    } else {
        const int folded = vyFoldUnit(before);
        for (; i < size; ++i) {
            if (vyFoldUnit(data[i]) == folded)
                data[i] = after;
        }
    }
    return *this;
}

VyString& VyString::replace(VyUcs2 before, const VyString& after, Vy::CaseSensitivity cs)
{
    if (after.d->size == 0)
        return remove(before, cs);
    if (after.d->size == 1)
        return replace(before, after.d->data[0], cs);
    const int matches = count(before, cs);
    if (matches == 0)
        return *this;
    // Holding `after` keeps its units alive and unchanged when it is this string itself.
    const VyString kept(after);
    const VyUcs2* const units = kept.d->data;
    const int alen = kept.d->size;
    detachIfShared();
    const int oldSize = d->size;
    const int newSize = checkedSize(oldSize + (long long)matches * (alen - 1));
    Data::allocMemory(d, newSize + 1, true);
    // Grow in place from the back: the write position never overtakes the read position.
    VyUcs2* const data = d->data;
    const bool sensitive = cs == Vy::CaseSensitive;
    const int folded = vyFoldUnit(before);
    int out = newSize;
    for (int i = oldSize - 1; i >= 0; --i) {
        const VyUcs2 u = data[i];
        if (sensitive ? u == before : vyFoldUnit(u) == folded) {
            out -= alen;
            memcpy(data + out, units, size_t(alen) * sizeof(VyUcs2));
        } else {
            data[--out] = u;
        }
    }
    d->size = newSize;
    data[newSize] = 0;
    return *this;
}

VyString& VyString::replace(const VyUcs2* before, int blen, const VyUcs2* after, int alen,
                            Vy::CaseSensitivity cs)
{
    if (d->size == 0)
        return *this;
    // The buffer changes with every replacement: take copies of arguments that point into it.
    if (blen > 0 && pointsInto(d, before)) {
        VyUnitBuffer copy;
        copy.append(before, blen);
        return replace(copy.units(), blen, after, alen, cs);
    }
    if (alen > 0 && pointsInto(d, after)) {
        VyUnitBuffer copy;
        copy.append(after, alen);
        return replace(before, blen, copy.units(), alen, cs);
    }
    // Kept: the next search starts where the replacement went, so the replacement text is
    // searched again; see the header. Callers were written against this loop's results: a
    // replacement that completes a further occurrence has that one replaced as well.
    int index = 0;
    while ((index = vyFindString(d->data, d->size, index, before, blen, cs)) != -1)
        replace(index, blen, after, alen);
    return *this;
}

VyString& VyString::replace(const VyString& before, const VyString& after, Vy::CaseSensitivity cs)
{
    const VyString b(before);
    const VyString a(after);
    if (a.d->size == 0)
        return remove(b, cs);
    if (b.d->size == 1 && a.d->size == 1)
        return replace(b.d->data[0], a.d->data[0], cs);
    if (d->size == 0)
        return *this;
    return replace(b.d->data, b.d->size, a.d->data, a.d->size, cs);
}

VyString& VyString::insert(int pos, const VyString& s)
{
    insertUnits(pos, s.d->data, s.d->size);
    return *this;
}

VyString& VyString::insert(int pos, VyUcs2 c)
{
    insertUnits(pos, &c, 1);
    return *this;
}

VyString& VyString::insert(int pos, const char* utf8, int len)
{
    insertUtf8(pos, utf8, len);
    return *this;
}

VyString& VyString::append(const VyString& s)
{
    insertUnits(d->size, s.d->data, s.d->size);
    return *this;
}

VyString& VyString::append(const char* utf8, int len)
{
    insertUtf8(d->size, utf8, len);
    return *this;
}

VyString& VyString::prepend(const VyString& s)
{
    insertUnits(0, s.d->data, s.d->size);
    return *this;
}

VyString& VyString::prepend(VyUcs2 c)
{
    insertUnits(0, &c, 1);
    return *this;
}

VyString& VyString::prepend(const char* utf8, int len)
{
    insertUtf8(0, utf8, len);
    return *this;
}

VyString& VyString::remove(int pos, int len)
{
    clampRange(d->size, pos, len);
    if (len > 0)
        replaceUnits(pos, len, nullptr, 0);
    return *this;
}

VyString& VyString::remove(VyUcs2 c, Vy::CaseSensitivity cs)
{
    const int first = findUnit(d->data, d->size, c, 0, cs);
    if (first < 0)
        return *this;
    detachIfShared();
    VyUcs2* const data = d->data;
    const int size = d->size;
    const bool sensitive = cs == Vy::CaseSensitive;
    const int folded = vyFoldUnit(c);
    int out = first;
    for (int i = first; i < size; ++i) {
        const VyUcs2 u = data[i];
        if (!(sensitive ? u == c : vyFoldUnit(u) == folded))
            data[out++] = u;
    }
    d->size = out;
    data[out] = 0;
    Data::allocMemory(d, out + 1, true);
    return *this;
}

VyString& VyString::remove(const VyString& s, Vy::CaseSensitivity cs)
{
    if (s.d->size == 0)
        return *this;
    // A copy, so that removing from this string cannot change the text searched for.
    const VyString needle(s);
    int pos = 0;
    while ((pos = indexOf(needle, pos, cs)) != -1)
        remove(pos, needle.d->size);
    return *this;
}

VyString VyString::mid(int pos, int n) const
{
    const int size = d->size;
    if (size == 0 || pos >= size)
        return VyString();
    long long p = pos;
    long long len = n < 0 ? size - p : n;
    if (p < 0) {
        len += p;
        p = 0;
    }
    if (p + len > size)
        len = size - p;
    if (p == 0 && len == size)
        return *this;
    return VyString(d->data + p, int(len));
}

VyString VyString::left(int n) const
{
    if (n >= 0 && n < d->size)
        return VyString(d->data, n);
    return *this;
}

VyString VyString::right(int n) const
{
    if (n >= 0 && n < d->size)
        return VyString(d->data + d->size - n, n);
    return *this;
}

VyString VyString::trimmed() const
{
    const int size = d->size;
    if (size == 0)
        return *this;
    const VyUcs2* const data = d->data;
    if (!VyUnicode::isSpace(data[0]) && !VyUnicode::isSpace(data[size - 1]))
        return *this;
    int start = 0;
    int end = size - 1;
    while (start <= end && VyUnicode::isSpace(data[start]))
        ++start;
    while (end > start && VyUnicode::isSpace(data[end]))
        --end;
    if (start > end)
        return VyString();
    return VyString(data + start, end - start + 1);
}

VyString VyString::simplified() const
{
    const int size = d->size;
    if (size == 0)
        return *this;
    const VyUcs2* const data = d->data;
    int start = 0;
    int end = size - 1;
    while (start <= end && VyUnicode::isSpace(data[start]))
        ++start;
    if (start > end)
        return VyString();
    while (VyUnicode::isSpace(data[end]))
        --end;
    // Already simple when the only inner white space is single U+0020 units.
    bool simple = true;
    for (int i = start; i <= end; ++i) {
        if (VyUnicode::isSpace(data[i]) && (data[i] != ' ' || VyUnicode::isSpace(data[i + 1]))) {
            simple = false;
            break;
        }
    }
    if (simple)
        return mid(start, end - start + 1);
    VyString result(data + start, end - start + 1);
    VyUcs2* out = result.d->data;
    bool inSpace = false;
    for (int i = start; i <= end; ++i) {
        if (VyUnicode::isSpace(data[i])) {
            if (!inSpace)
                *out++ = ' ';
            inSpace = true;
        } else {
            *out++ = data[i];
            inSpace = false;
        }
    }
    result.d->size = int(out - result.d->data);
    *out = 0;
    return result;
}

VyStringList VyString::split(const VyString& sep, SplitBehavior behavior,
                             Vy::CaseSensitivity cs) const
{
    VyStringList list;
    int start = 0;
    int extra = 0;
    int end;
    while ((end = indexOf(sep, start + extra, cs)) != -1) {
        if (start != end || behavior == KeepEmpty)
            list.append(mid(start, end - start));
        start = end + sep.d->size;
        extra = sep.d->size == 0 ? 1 : 0;
    }
    if (start != d->size || behavior != DropEmpty)
        list.append(mid(start));
    return list;
}

VyStringList VyString::split(const VyUcs2& sep, SplitBehavior behavior,
                             Vy::CaseSensitivity cs) const
{
    VyStringList list;
    int start = 0;
    int end;
    while ((end = indexOf(sep, start, cs)) != -1) {
        if (start != end || behavior == KeepEmpty)
            list.append(mid(start, end - start));
        start = end + 1;
    }
    if (start != d->size || behavior != DropEmpty)
        list.append(mid(start));
    return list;
}

// Applies one of the case differences of the property records from the first unit that has
// one (or a special mapping) on; shares the block when there is none. Pairing reads the
// original units, so a changed unit never affects how its neighbour is looked up.
template <typename Diff>
static VyString mapCase(const VyString& s, const VyString::Data* d, Diff diff, int specialFlag)
{
    const VyUcs2* const begin = d->data;
    const int size = d->size;
    if (!begin || size == 0)
        return s;
    int i = 0;
    for (; i < size; ++i) {
        const VyUnicodeTables::Properties* p =
            VyUnicodeTables::properties(vyPropertyUnit(begin + i, begin));
        if (diff(p) || (p->flags & specialFlag))
            break;
    }
    if (i == size)
        return s;
    VyString result(begin, size);
    VyUcs2* const out = result.d->data;
    for (; i < size; ++i) {
        const VyUnicodeTables::Properties* p =
            VyUnicodeTables::properties(vyPropertyUnit(begin + i, begin));
        // A unit whose full mapping is longer than one unit stays as it is.
        if (!(p->flags & specialFlag))
            out[i] = VyUcs2((begin[i] + diff(p)) & 0xFFFF);
    }
    return result;
}

VyString VyString::toLower() const
{
    return mapCase(
        *this, d, [](const VyUnicodeTables::Properties* p) { return int(p->lowerCaseDiff); },
        VyUnicodeTables::LowerCaseSpecial);
}

VyString VyString::toUpper() const
{
    return mapCase(
        *this, d, [](const VyUnicodeTables::Properties* p) { return int(p->upperCaseDiff); },
        VyUnicodeTables::UpperCaseSpecial);
}

VyString& VyString::fill(VyUcs2 c, int size)
{
    resize(size < 0 ? d->size : size);
    if (d->size == 0)
        return *this;
    detachIfShared();
    VyUcs2* const data = d->data;
    for (int i = 0, n = d->size; i < n; ++i)
        data[i] = c;
    return *this;
}

namespace
{

// `s` padded with `fill` to `width` units, the text first or last; `s` itself (or its first
// `width` units when `truncate`) when it is not shorter.
VyString justified(const VyString& s, int width, VyUcs2 fill, bool truncate, bool textLast)
{
    const int size = s.size();
    const int pad = width - size;
    if (pad < 1)
        return truncate ? s.left(width) : s;
    VyString result(width, fill);
    if (size > 0)
        memcpy(result.d->data + (textLast ? pad : 0), s.unicode(), size_t(size) * sizeof(VyUcs2));
    return result;
}

} // namespace

VyString VyString::leftJustified(int width, VyUcs2 fill, bool truncate) const
{
    return justified(*this, width, fill, truncate, false);
}

VyString VyString::rightJustified(int width, VyUcs2 fill, bool truncate) const
{
    return justified(*this, width, fill, truncate, true);
}
