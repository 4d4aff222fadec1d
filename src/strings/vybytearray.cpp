#include "vybytearray.h"

#include <limits.h>
#include <new>
#include <stdlib.h>
#include <string.h>

namespace
{

// allocMemory(fresh, n, false) for a block nothing else refers to yet: when it throws, the
// block is deleted and the exception passes on.
void allocFresh(VyByteArray::Data* fresh, int n)
{
    try {
        VyByteArray::Data::allocMemory(fresh, n, false);
    } catch (...) {
        delete fresh;
        throw;
    }
}

} // namespace

VyByteArray::Data VyByteArray::Data::shared_null = {1, 0, 0, nullptr};

void VyByteArray::Data::allocMemory(Data* d, int n, bool grow)
{
    if (d->data && d->alloc >= n)
        return;
    long long capacity = grow ? 2LL * n : n;
    if (capacity > INT_MAX)
        capacity = n;
    void* buffer = realloc(d->data, size_t(capacity));
    // A failed realloc leaves the old buffer as it was; the block keeps it.
    if (!buffer && capacity > 0)
        throw std::bad_alloc();
    d->data = static_cast<char*>(buffer);
    d->alloc = int(capacity);
}

VyByteArray::Data* VyByteArray::createData()
{
    d = new Data{1, 0, 0, nullptr};
    return d;
}

void VyByteArray::freeData()
{
    // Only unbalanced or racing counts bring the static empty block to 0; it stays alive.
    if (d == &Data::shared_null)
        return;
    free(d->data);
    delete d;
    d = nullptr;
}

VyByteArray::VyByteArray(int size)
{
    createData();
    if (size >= 1) {
        allocFresh(d, size + 1);
        d->size = size;
        d->data[size] = 0;
    }
}

VyByteArray::VyByteArray(int size, char ch)
{
    createData();
    if (size >= 1) {
        allocFresh(d, size + 1);
        memset(d->data, ch, size_t(size));
        d->size = size;
        d->data[size] = 0;
    }
}

VyByteArray::VyByteArray(const char* str, int size)
{
    createData();
    const int length = int(strlen(str));
    const int count = (size >= 0 && size < length) ? size : length;
    allocFresh(d, count + 1);
    memcpy(d->data, str, size_t(count));
    d->size = count;
    d->data[count] = 0;
}

void VyByteArray::fromRawBytes(char* str, int size, bool copy)
{
    if (!str)
        return;
    if (size < 0)
        size = int(strlen(str));
    // The new block is filled before the old one goes, so `str` may point into this array,
    // and a failed allocation leaves the array as it was.
    Data* old = d;
    Data* fresh = createData();
    d = old;
    if (copy) {
        allocFresh(fresh, size + 1);
        memcpy(fresh->data, str, size_t(size));
        fresh->data[size] = 0;
    } else {
        // Handing back this array's own unshared buffer must not free it with the old block.
        if (str == old->data && old->ref == 1)
            old->data = nullptr;
        fresh->data = str;
        fresh->alloc = size;
    }
    fresh->size = size;
    releaseData();
    d = fresh;
}

void VyByteArray::detach()
{
    Data* old = d;
    Data* x = new Data{1, 0, old->size, nullptr};
    if (old->size > 0) {
        allocFresh(x, old->size + 1);
        memcpy(x->data, old->data, size_t(old->size));
        x->data[old->size] = 0;
    }
    releaseData();
    d = x;
}
