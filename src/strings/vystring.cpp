// VyString storage: the data block and its capacity rule, construction, assignment, detaching,
// resizing, comparison and the key hash.
#include "vystring.h"

#include "vystringfold.h"

#include <limits.h>
#include <new>
#include <stdlib.h>
#include <string.h>

VyString::Data VyString::Data::shared_null = {{1}, 0, 0, nullptr};

void VyString::Data::allocMemory(Data* d, int size, bool grow)
{
    const long long need = size;
    if (d->data && d->alloc >= need && d->alloc <= 3 * need)
        return;
    long long capacity = grow ? 2 * need : need;
    if (capacity > INT_MAX)
        capacity = need;
    if (capacity < 0)
        capacity = 0;
    void* buffer = realloc(d->data, size_t(capacity) * sizeof(VyUcs2));
    if (!buffer && capacity > 0) {
        // A failed shrink leaves the larger buffer in place, which still fits.
        if (d->data && d->alloc >= need)
            return;
        throw std::bad_alloc();
    }
    d->data = static_cast<VyUcs2*>(buffer);
    d->alloc = int(capacity);
}

VyString::Data* VyString::createData()
{
    d = new Data{{1}, 0, 0, nullptr};
    return d;
}

void VyString::freeData()
{
    // Only unbalanced counts bring the static empty block to 0; it stays alive.
    if (d == &Data::shared_null)
        return;
    free(d->data);
    delete d;
    d = nullptr;
}

void VyString::allocForConstructor(int size)
{
    try {
        Data::allocMemory(d, size, false);
    } catch (...) {
        delete d;
        throw;
    }
}

VyString::VyString(const char* str, int size)
{
    createData();
    if (!str)
        return;
    const size_t length = strlen(str);
    const int n = length > size_t(INT_MAX) - 1 ? INT_MAX - 1 : int(length);
    const int used = (size >= 0 && size < n) ? size : n;
    allocForConstructor(used + 1);
    d->size = utf8ToUcs2(d->data, str, used);
    d->data[d->size] = 0;
}

VyString::VyString(const VyUcs2* unicode, int size)
{
    createData();
    if (size < 1)
        return;
    allocForConstructor(size + 1);
    memcpy(d->data, unicode, size_t(size) * sizeof(VyUcs2));
    d->size = size;
    d->data[size] = 0;
}

VyString::VyString(VyUcs2 ch)
{
    createData();
    allocForConstructor(2);
    d->size = 1;
    d->data[0] = ch;
    d->data[1] = 0;
}

VyString::VyString(char ch) : VyString(VyUcs2(static_cast<unsigned char>(ch))) {}

VyString::VyString(int size, VyUcs2 ch)
{
    createData();
    if (size < 1)
        return;
    allocForConstructor(size + 1);
    VyUcs2* p = d->data;
    for (int i = 0; i < size; ++i)
        p[i] = ch;
    d->size = size;
    p[size] = 0;
}

VyString::VyString(int size, char ch) : VyString(size, VyUcs2(static_cast<unsigned char>(ch))) {}

VyString& VyString::operator=(const VyString& other)
{
    // Kept: the own block is released before the other one is taken, with no test for
    // assignment to itself (the framework never assigns a string to itself, and every
    // assignment is spared a compare); see the header.
    releaseData();
    d = other.d;
    d->ref.fetch_add(1, std::memory_order_relaxed);
    return *this;
}

VyString& VyString::operator=(VyUcs2 ch)
{
    return *this = VyString(ch);
}

void VyString::detach()
{
    Data* x = new Data{{1}, 0, d->size, nullptr};
    if (d->size > 0) {
        try {
            Data::allocMemory(x, d->size + 1, false);
        } catch (...) {
            delete x;
            throw;
        }
        memcpy(x->data, d->data, size_t(d->size) * sizeof(VyUcs2));
        x->data[d->size] = 0;
    }
    releaseData();
    d = x;
}

void VyString::clear()
{
    if (d->size == 0)
        return;
    detachIfShared();
    Data::allocMemory(d, d->size + 1, false);
    d->size = 0;
    d->data[0] = 0;
}

void VyString::resize(int n)
{
    if (n < 0)
        n = 0;
    if (n == d->size)
        return;
    detachIfShared();
    Data::allocMemory(d, n + 1, false);
    d->size = n;
    d->data[n] = 0;
}

void VyString::chop(int n)
{
    if (n < 1)
        return;
    resize(n >= d->size ? 0 : d->size - n);
}

void VyString::truncate(int pos)
{
    if (d->size <= pos)
        return;
    resize(pos);
}

VyByteArray VyString::toUtf8() const
{
    const int size = d->size;
    const size_t capacity = size_t(size) * 3 + 1;
    char* buffer = static_cast<char*>(malloc(capacity));
    if (!buffer)
        throw std::bad_alloc();
    const int n = ucs2ToUtf8(buffer, d->data, size);
    buffer[n] = 0;
    VyByteArray result;
    result.fromRawBytes(buffer, n, false);
    result.d->alloc = int(capacity);
    return result;
}

bool VyString::operator==(const VyString& other) const
{
    if (d->size != other.d->size)
        return false;
    if (d->size == 0 || d->data == other.d->data)
        return true;
    return memcmp(d->data, other.d->data, size_t(d->size) * sizeof(VyUcs2)) == 0;
}

bool VyString::operator<(const VyString& other) const
{
    if (d->size == other.d->size && d->data == other.d->data)
        return false;
    const int n = d->size < other.d->size ? d->size : other.d->size;
    const VyUcs2* a = d->data;
    const VyUcs2* b = other.d->data;
    for (int i = 0; i < n; ++i) {
        if (a[i] != b[i])
            return a[i] < b[i];
    }
    return d->size < other.d->size;
}

// Case-insensitive order of two unit ranges, each folded with its own surrogate pairing.
static int compareFolded(const VyUcs2* a, const VyUcs2* aEnd, const VyUcs2* b, const VyUcs2* bEnd)
{
    if (a == b)
        return int(aEnd - a) - int(bEnd - b);
    // Kept: a missing buffer sorts after everything, even after an empty string that has
    // one. Orders the framework has already built with this comparison must stay valid.
    if (!a)
        return 1;
    if (!b)
        return -1;
    const VyUcs2* const aBegin = a;
    const VyUcs2* const bBegin = b;
    while (a != aEnd && b != bEnd) {
        const int diff = vyFoldAt(a, aBegin) - vyFoldAt(b, bBegin);
        if (diff)
            return diff;
        ++a;
        ++b;
    }
    if (a != aEnd)
        return 1;
    return b == bEnd ? 0 : -1;
}

int VyString::compare(const VyString& other, Vy::CaseSensitivity cs) const
{
    if (cs != Vy::CaseSensitive)
        return compareFolded(d->data, d->data + d->size, other.d->data,
                             other.d->data + other.d->size);
    if (d->size == other.d->size && d->data == other.d->data)
        return 0;
    const int n = d->size < other.d->size ? d->size : other.d->size;
    const VyUcs2* a = d->data;
    const VyUcs2* b = other.d->data;
    for (int i = 0; i < n; ++i) {
        if (a[i] != b[i])
            return int(a[i]) - int(b[i]);
    }
    return d->size - other.d->size;
}

uint vyHash(const VyString& s)
{
    // Kept: the hash covers the first size() bytes of the UTF-8 form, the unit count rather
    // than the byte count, so non-ASCII text hashes only a prefix of its encoding. The values
    // decide the iteration order of every VyHash with string keys, which the framework sees.
    // The bytes are encoded here on the fly: the same bytes as toUtf8(), without allocating.
    const VyUcs2* p = s.unicode();
    int remaining = s.size();
    uint h = 0;
    while (remaining > 0) {
        const uint u = *p++;
        unsigned char bytes[3];
        int n;
        if (u < 0x80) {
            bytes[0] = static_cast<unsigned char>(u);
            n = 1;
        } else if (u < 0x800) {
            bytes[0] = static_cast<unsigned char>(0xC0 | (u >> 6));
            bytes[1] = static_cast<unsigned char>(0x80 | (u & 0x3F));
            n = 2;
        } else {
            bytes[0] = static_cast<unsigned char>(0xE0 | (u >> 12));
            bytes[1] = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
            bytes[2] = static_cast<unsigned char>(0x80 | (u & 0x3F));
            n = 3;
        }
        for (int i = 0; i < n && remaining > 0; ++i, --remaining) {
            h = (h << 4) + bytes[i];
            h ^= (h & 0xF0000000u) >> 23;
            h &= 0x0FFFFFFFu;
        }
    }
    return h;
}
