#include "vyvector.h"

#include <stdint.h>
#include <stdlib.h>

#include "vyallocation.h"

VyVectorData VyVectorData::shared_null = {{1}, 0, 0, 1, 0, 0};

int VyVectorData::grow(int typedHeaderSize, int count, int elementSize, bool generous)
{
    if (generous)
        return count + count / 2;
    const int header = typedHeaderSize - elementSize;
    if (header == 0 && count == 0)
        return 0;
    const long long bytes = vyAllocationBytes(header + (long long)count * elementSize);
    if (bytes < 0)
        return 0x7fffffff / elementSize;
    return int((bytes - header) / elementSize);
}

VyVectorData* VyVectorData::allocate(int size, int alignment)
{
    if (alignment < 9)
        return static_cast<VyVectorData*>(::malloc(size_t(size)));
    return static_cast<VyVectorData*>(vyAlignedAllocate(size_t(size), alignment));
}

VyVectorData* VyVectorData::reallocate(VyVectorData* old, int newSize, int oldSize, int alignment)
{
    if (alignment < 9)
        return static_cast<VyVectorData*>(::realloc(old, size_t(newSize)));
    return static_cast<VyVectorData*>(
        vyAlignedReallocate(old, size_t(newSize), size_t(oldSize), alignment));
}

void VyVectorData::freeData(VyVectorData* x, int alignment)
{
    if (alignment < 9)
        ::free(x);
    else
        vyAlignedFree(x);
}

VyVectorData* VyVectorData::malloc(int typedHeaderSize, int count, int elementSize,
                                   VyVectorData* init)
{
    VyVectorData* x =
        static_cast<VyVectorData*>(::malloc(size_t(typedHeaderSize + (count - 1) * elementSize)));
    if (x && init) {
        const int header = typedHeaderSize - elementSize;
        const int copy = count < init->alloc ? count : init->alloc;
        memcpy(static_cast<void*>(x), init, size_t(header + copy * elementSize));
    }
    return x;
}
