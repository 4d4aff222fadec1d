#include "vylist.h"

#include <stdlib.h>
#include <string.h>

#include "vyallocation.h"

VyListData::Data VyListData::shared_null = {{1}, 0, 0, 0, 1, 0, {nullptr}};

namespace
{

// Bytes of a block with `alloc` slots on this host.
size_t blockBytes(int alloc)
{
    return offsetof(VyListData::Data, array) + size_t(alloc) * sizeof(void*);
}

VyListData::Data* newBlock(int alloc)
{
    VyListData::Data* t = static_cast<VyListData::Data*>(::malloc(blockBytes(alloc)));
    if (!t)
        throw std::bad_alloc();
    return t;
}

void moveSlots(void** to, void** from, int n)
{
    memmove(to, from, size_t(n) * sizeof(void*));
}

} // namespace

int listCapacityFor(int n)
{
    // Counted with the 32-bit layout: a 20-byte header and 4-byte slots.
    const long long bytes = vyAllocationBytes(4LL * n + 20);
    if (bytes < 0)
        return 0x1fffffff;
    return int((bytes - 20) / 4);
}

void VyListData::realloc(int alloc)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataRealloc);
    Data* x = static_cast<Data*>(::realloc(d, blockBytes(alloc)));
    if (!x)
        throw std::bad_alloc();
    d = x;
    d->alloc = alloc;
    if (!alloc)
        d->begin = d->end = 0;
}

void** VyListData::append(int n)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataAppend);
    int e = d->end;
    if (e + n > d->alloc) {
        const int b = d->begin;
        if (b - n >= 2 * d->alloc / 3) {
            // Two thirds or more of the room is in front: slide to the front instead of
            // growing.
            e -= b;
            moveSlots(d->array, d->array + b, e);
            d->begin = 0;
        } else {
            realloc(listCapacityFor(d->alloc + n));
        }
    }
    d->end = e + n;
    return d->array + e;
}

void** VyListData::append(const VyListData& l)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataAppendList);
    const int e = d->end;
    const int n = l.d->end - l.d->begin;
    if (n) {
        if (e + n > d->alloc)
            realloc(listCapacityFor(e + n));
        memcpy(d->array + d->end, l.d->array + l.d->begin, size_t(n) * sizeof(void*));
        d->end += n;
    }
    return d->array + e;
}

void** VyListData::prepend()
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataPrepend);
    if (d->begin == 0) {
        if (d->end >= d->alloc / 3)
            realloc(listCapacityFor(d->alloc + 1));
        if (d->end < d->alloc / 3)
            d->begin = d->alloc - 2 * d->end;
        else
            d->begin = d->alloc - d->end;
        moveSlots(d->array + d->begin, d->array, d->end);
        d->end += d->begin;
    }
    return d->array + --d->begin;
}

void** VyListData::insert(int i)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataInsert);
    if (i < 1)
        return prepend();
    const int size = d->end - d->begin;
    if (i >= size)
        return append();
    bool leftward = false;
    if (d->begin == 0) {
        if (d->end == d->alloc)
            realloc(listCapacityFor(d->alloc + 1));
    } else {
        // Move the shorter side; with no room at the back the front must move.
        leftward = d->end == d->alloc || i < size - i;
    }
    if (leftward) {
        --d->begin;
        moveSlots(d->array + d->begin, d->array + d->begin + 1, i);
    } else {
        moveSlots(d->array + d->begin + i + 1, d->array + d->begin + i, size - i);
        ++d->end;
    }
    return d->array + d->begin + i;
}

void VyListData::remove(int i)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataRemove);
    const int size = d->end - d->begin;
    i += d->begin;
    if (i - d->begin >= size - (i - d->begin)) {
        moveSlots(d->array + i, d->array + i + 1, d->end - i - 1);
        --d->end;
    } else {
        moveSlots(d->array + d->begin + 1, d->array + d->begin, i - d->begin);
        ++d->begin;
    }
}

void VyListData::remove(int i, int n)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataRemoveRange);
    const int size = d->end - d->begin;
    const int middle = i + n / 2;
    if (middle < size - middle) {
        moveSlots(d->array + d->begin + n, d->array + d->begin, i);
        d->begin += n;
    } else {
        moveSlots(d->array + d->begin + i, d->array + d->begin + i + n, size - i - n);
        d->end -= n;
    }
}

void VyListData::move(int from, int to)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataMove);
    if (from == to)
        return;
    const int size = d->end - d->begin;
    from += d->begin;
    to += d->begin;
    void* t = d->array[from];
    if (from > to) {
        if (d->begin > 0 && 2 * size <= 3 * (from - to)) {
            // Cheaper to move the two outer parts one slot towards the front.
            moveSlots(d->array + d->begin - 1, d->array + d->begin, to - d->begin);
            moveSlots(d->array + from, d->array + from + 1, d->end - from - 1);
            d->array[to - 1] = t;
            --d->begin;
            --d->end;
        } else {
            moveSlots(d->array + to + 1, d->array + to, from - to);
            d->array[to] = t;
        }
    } else {
        if (d->end < d->alloc && 2 * size <= 3 * (to - from)) {
            moveSlots(d->array + to + 2, d->array + to + 1, d->end - to - 1);
            moveSlots(d->array + d->begin + 1, d->array + d->begin, from - d->begin);
            d->array[to + 1] = t;
            ++d->begin;
            ++d->end;
        } else {
            moveSlots(d->array + from, d->array + from + 1, to - from);
            d->array[to] = t;
        }
    }
}

void** VyListData::erase(void** xi)
{
    VY_ASSERT_SITE(d->ref == 1, VyAssertSites::listDataErase);
    const int i = int(xi - (d->array + d->begin));
    remove(i);
    return d->array + d->begin + i;
}

VyListData::Data* VyListData::detach(int alloc)
{
    Data* x = d;
    Data* t = newBlock(alloc);
    t->ref.store(1, std::memory_order_relaxed);
    t->alloc = alloc;
    t->canShare = 1;
    t->reserved = 0;
    if (!alloc) {
        t->begin = 0;
        t->end = 0;
    } else {
        t->begin = x->begin;
        t->end = x->end;
    }
    d = t;
    return x;
}

VyListData::Data* VyListData::detach3()
{
    return detach(d->alloc);
}

VyListData::Data* VyListData::detach2()
{
    Data* x = d;
    Data* t = newBlock(x->alloc);
    memcpy(static_cast<void*>(t), x, blockBytes(x->alloc));
    t->ref.store(1, std::memory_order_relaxed);
    t->canShare = 1;
    d = t;
    return x;
}

VyListData::Data* VyListData::detach()
{
    Data* x = detach3();
    if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
        return x;
    return nullptr;
}

VyListData::Data* VyListData::detach_grow(int* i, int n)
{
    Data* x = d;
    const int size = x->end - x->begin;
    const int alloc = listCapacityFor(size + n);
    Data* t = newBlock(alloc);
    t->ref.store(1, std::memory_order_relaxed);
    t->alloc = alloc;
    t->canShare = 1;
    t->reserved = 0;
    const int centred = (alloc - size - n) / 2;
    if (*i < 0) {
        *i = 0;
        t->begin = centred;
    } else if (*i > size) {
        *i = size;
        t->begin = 0;
    } else if (*i >= size / 2) {
        t->begin = 0;
    } else {
        t->begin = centred;
    }
    t->end = t->begin + size + n;
    d = t;
    return x;
}
