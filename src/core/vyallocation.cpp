#include "vyallocation.h"

#include <stdint.h>
#include <stdlib.h>

long long vyAllocationBytes(long long bytes)
{
    if (bytes < 64)
        return (bytes & ~7LL) + 8;
    if (bytes > 0x3ffffffe)
        return -1;
    long long p = 64;
    while (p < bytes)
        p <<= 1;
    return p;
}

static void* vyAlign(void* raw, int alignment)
{
    if (!raw)
        return nullptr;
    uintptr_t a = reinterpret_cast<uintptr_t>(raw) + sizeof(void*);
    a = (a + uintptr_t(alignment) - 1) & ~(uintptr_t(alignment) - 1);
    void* p = reinterpret_cast<void*>(a);
    static_cast<void**>(p)[-1] = raw;
    return p;
}

// Room in front of the block: the alignment, but never less than the stored raw pointer.
static size_t vyAlignmentSlack(int alignment)
{
    return size_t(alignment) < sizeof(void*) ? sizeof(void*) : size_t(alignment);
}

void* vyAlignedAllocate(size_t size, int alignment)
{
    return vyAlign(malloc(size + vyAlignmentSlack(alignment)), alignment);
}

void* vyAlignedReallocate(void* p, size_t size, int alignment)
{
    void* raw = realloc(static_cast<void**>(p)[-1], size + vyAlignmentSlack(alignment));
    return vyAlign(raw, alignment);
}

void vyAlignedFree(void* p)
{
    if (p)
        free(static_cast<void**>(p)[-1]);
}
