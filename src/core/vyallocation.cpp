#include "vyallocation.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

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

// Where the aligned block starts in the raw block at `raw`: the first multiple of `alignment`
// that leaves room for the raw pointer in front of it.
static char* vyAlignedStart(void* raw, int alignment)
{
    uintptr_t a = reinterpret_cast<uintptr_t>(raw) + sizeof(void*);
    a = (a + uintptr_t(alignment) - 1) & ~(uintptr_t(alignment) - 1);
    return reinterpret_cast<char*>(a);
}

static void* vyAlign(void* raw, int alignment)
{
    if (!raw)
        return nullptr;
    char* p = vyAlignedStart(raw, alignment);
    reinterpret_cast<void**>(p)[-1] = raw;
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

void* vyAlignedReallocate(void* p, size_t size, size_t oldSize, int alignment)
{
    char* oldRaw = static_cast<char*>(static_cast<void**>(p)[-1]);
    const size_t oldOffset = size_t(static_cast<char*>(p) - oldRaw);
    char* raw = static_cast<char*>(realloc(oldRaw, size + vyAlignmentSlack(alignment)));
    if (!raw)
        return nullptr;
    // realloc keeps the contents at their distance from the raw start. Where malloc aligns to
    // less than `alignment` (8 bytes on 32-bit ARM), a moved block may need another distance;
    // the contents move first, since the raw pointer stored in front of the new start could
    // overwrite them.
    char* start = vyAlignedStart(raw, alignment);
    if (start != raw + oldOffset)
        memmove(start, raw + oldOffset, oldSize < size ? oldSize : size);
    return vyAlign(raw, alignment);
}

void vyAlignedFree(void* p)
{
    if (p)
        free(static_cast<void**>(p)[-1]);
}
