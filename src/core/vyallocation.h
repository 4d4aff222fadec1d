// Allocation helpers shared by the containers: the common capacity rule and the aligned
// allocators that keep the raw pointer in the word before the block they return.
#ifndef VYALLOCATION_H
#define VYALLOCATION_H

#include <stddef.h>

// Bytes to allocate for a block that needs `bytes`: below 64 the value rounded down to a
// multiple of 8 plus 8 (so small blocks grow in 8-byte steps); otherwise the smallest power of
// two that holds it. Returns -1
// when the request exceeds 0x3ffffffe, for the caller's largest size.
long long vyAllocationBytes(long long bytes);

// size + alignment bytes, the address rounded up strictly past the start to a multiple of
// `alignment`, the raw pointer stored in the word before it. Null when malloc fails.
void* vyAlignedAllocate(size_t size, int alignment);
// Reallocates the raw block behind `p` (a block of oldSize bytes) to `size` bytes and aligns
// again, moving the first min(oldSize, size) bytes along when the aligned start lies at
// another offset in the new raw block. Null when realloc fails; `p` is then still valid.
void* vyAlignedReallocate(void* p, size_t size, size_t oldSize, int alignment);
void vyAlignedFree(void* p);

#endif
