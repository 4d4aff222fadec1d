#include "vybytearray.h"

#include <stdlib.h>
#include <string.h>

VyByteArray::Data VyByteArray::Data::shared_null = {1, 0, 0, nullptr};

void VyByteArray::Data::allocMemory(Data* d, int n, bool grow)
{
    if (d->data && d->alloc >= n)
        return;
    d->alloc = grow ? 2 * n : n;
    d->data = static_cast<char*>(realloc(d->data, size_t(d->alloc)));
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
        Data::allocMemory(d, size + 1, false);
        d->size = size;
        d->data[size] = 0;
    }
}

VyByteArray::VyByteArray(int size, char ch)
{
    createData();
    if (size >= 1) {
        Data::allocMemory(d, size + 1, false);
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
    Data::allocMemory(d, count + 1, false);
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
    Data* old = d;
    // The new block is filled before the old one goes, so `str` may point into this array.
    createData();
    if (copy) {
        Data::allocMemory(d, size + 1, false);
        memcpy(d->data, str, size_t(size));
        d->data[size] = 0;
    } else {
        // Handing back this array's own unshared buffer must not free it with the old block.
        if (str == old->data && old->ref == 1)
            old->data = nullptr;
        d->data = str;
        d->alloc = size;
    }
    d->size = size;
    Data* fresh = d;
    d = old;
    releaseData();
    d = fresh;
}

void VyByteArray::detach()
{
    Data* old = d;
    Data* x = new Data{1, 0, old->size, nullptr};
    if (old->size > 0) {
        Data::allocMemory(x, old->size + 1, false);
        memcpy(x->data, old->data, size_t(old->size));
        x->data[old->size] = 0;
    }
    releaseData();
    d = x;
}
