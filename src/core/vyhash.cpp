#include "vyhash.h"

#include "vyallocation.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// The framework's crash reports name these functions by their qualified signatures, which g++
// would print with the parameter's scope dropped ("nextNode(Node*)"); the texts are therefore
// given here as the reports expect them.
#define VY_HASH_ASSERT(cond, site, function)                                                       \
    ((cond) ? static_cast<void>(0) : vyAssertFail(#cond, (site).file, (site).line, function))

VyHashData VyHashData::shared_null = {nullptr, nullptr, 1, 0, 0, 4, 0, 0, 1, 0};

// Kept: not every bucket count this table gives is prime. 8201 (13 bits), 16409 (14) and
// 131093 (17) are composite, so are the counts for 21 to 25 bits, and the zero entries from 27
// bits on give plain powers of two. The framework's tables are sized by this list as it
// stands: a different entry would change the bucket counts, and with them the iteration order
// that callers and stored results rely on.
// Entry `bits` is added to 2^bits to give the bucket count of a table of that many bits:
// 17, 37, 67, 131, 257, ...
static const unsigned char bucketPrimeOffsets[32] = {0, 0, 1, 3,  1,  5, 3,  3, 1,  9, 7,
                                                     5, 3, 9, 25, 3,  1, 21, 3, 21, 7, 15,
                                                     9, 5, 3, 29, 15, 0, 0,  0, 0,  0};

// A 2^31-entry table could not be counted in the signed bucketCount.
static const int maxTableBits = 30;
static const int minTableBits = 4;
// How many buckets ahead the table walks start loading chain heads.
static const int prefetchDistance = 16;

int VyHashData::bucketCountForBits(int bits)
{
    return (1 << bits) + bucketPrimeOffsets[bits];
}

void* VyHashData::allocateNode(int alignment)
{
    if (!alignedNodes)
        return malloc(size_t(nodeBytes));
    if (alignment > 4)
        return vyAlignedAllocate(size_t(nodeBytes), alignment);
    // The raw pointer goes in the first word, the node right after it; freeNode finds it in
    // the word before the node as for the aligned case.
    void** raw = static_cast<void**>(malloc(size_t(nodeBytes) + sizeof(void*)));
    if (!raw)
        return nullptr;
    raw[0] = raw;
    return raw + 1;
}

void VyHashData::freeNode(void* node)
{
    if (alignedNodes)
        vyAlignedFree(node);
    else
        free(node);
}

// The bit count for a wanted bucket count n >= 1: floor(log2 n), one more when the table of
// that many bits would still be too small.
static int bitsForBuckets(unsigned n)
{
    int bits = 31 - __builtin_clz(n);
    if (n > (1u << bits) + bucketPrimeOffsets[bits])
        ++bits;
    return bits;
}

void VyHashData::rehash(int hint)
{
    int bits;
    if (hint < 0) {
        bits = bitsForBuckets(0u - unsigned(hint));
        bits = std::min(std::max(bits, minTableBits), maxTableBits);
        hintBits = short(bits);
        while (bits < maxTableBits && bucketCountForBits(bits) < size / 2)
            ++bits;
    } else {
        bits = std::min(std::max(hint, minTableBits), maxTableBits);
    }
    if (bits == tableBits)
        return;

    const int newCount = bucketCountForBits(bits);
    Node** newTable = new Node*[size_t(newCount)];
    Node* const e = end();
    std::fill(newTable, newTable + newCount, e);

    // Each run of nodes with the same hash moves as a unit to the end of its new chain, so
    // equal hashes keep their order.
    for (int i = 0; i < bucketCount; ++i) {
        // The chains lie scattered in memory: start loading a later chain's head early.
        if (i + prefetchDistance < bucketCount)
            __builtin_prefetch(bucketTable[i + prefetchDistance]);
        Node* first = bucketTable[i];
        while (first != e) {
            const uint h = first->h;
            Node* last = first;
            while (last->next != e && last->next->h == h)
                last = last->next;
            Node* const rest = last->next;
            Node** tail = &newTable[h % uint(newCount)];
            while (*tail != e)
                tail = &(*tail)->next;
            *tail = first;
            last->next = e;
            first = rest;
        }
    }
    delete[] bucketTable;
    bucketTable = newTable;
    bucketCount = newCount;
    tableBits = short(bits);
}

VyHashData::Node* VyHashData::firstNode()
{
    Node* const e = end();
    for (int i = 0; i < bucketCount; ++i) {
        if (bucketTable[i] != e)
            return bucketTable[i];
    }
    return e;
}

VyHashData::Node* VyHashData::nextNode(Node* node)
{
    // Read as raw memory: after end() the node is the block, whose link is the null
    // sentinelNext.
    Node* const next = linkAfter(node);
    VY_HASH_ASSERT(next, VyAssertSites::hashNextNode,
                   "static VyHashData::Node* VyHashData::nextNode(VyHashData::Node*)");
    if (linkAfter(next))
        return next;

    // `next` is the block: continue with the first node of a later bucket.
    VyHashData* const d = reinterpret_cast<VyHashData*>(next);
    for (int i = int(node->h % uint(d->bucketCount)) + 1; i < d->bucketCount; ++i) {
        if (d->bucketTable[i] != next)
            return d->bucketTable[i];
    }
    return next;
}

VyHashData::Node* VyHashData::previousNode(Node* node)
{
    // The block is the one "node" whose link is null.
    Node* e = node;
    while (Node* next = linkAfter(e))
        e = next;
    VyHashData* const d = reinterpret_cast<VyHashData*>(e);

    int start = node == e ? d->bucketCount - 1 : int(node->h % uint(d->bucketCount));
    // Within the node's own bucket the answer comes before `node`; in earlier buckets it is
    // the last node of the chain.
    Node* stop = node;
    for (;;) {
        VY_HASH_ASSERT(start >= 0, VyAssertSites::hashPreviousNode,
                       "static VyHashData::Node* VyHashData::previousNode(VyHashData::Node*)");
        Node* previous = d->bucketTable[start];
        if (previous != stop) {
            while (previous->next != stop)
                previous = previous->next;
            return previous;
        }
        stop = e;
        --start;
    }
}

void VyHashData::free_helper(void (*deleteNode)(Node*))
{
    if (deleteNode) {
        Node* const e = end();
        for (int i = 0; i < bucketCount; ++i) {
            if (i + prefetchDistance < bucketCount)
                __builtin_prefetch(bucketTable[i + prefetchDistance]);
            Node* node = bucketTable[i];
            while (node != e) {
                Node* const next = node->next;
                deleteNode(node);
                freeNode(node);
                node = next;
            }
        }
    }
    delete[] bucketTable;
    delete this;
}

VyHashData* VyHashData::detach_helper2(void (*duplicateNode)(Node*, void*),
                                       void (*deleteNode)(Node*), int nodeBytes, int nodeAlign)
{
    VyHashData* const d = new VyHashData();
    d->sentinelNext = nullptr;
    d->bucketTable = nullptr;
    d->ref.store(1, std::memory_order_relaxed);
    d->size = size;
    d->nodeBytes = nodeBytes;
    d->hintBits = hintBits;
    d->tableBits = tableBits;
    d->bucketCount = bucketCount;
    d->canShare = 1;
    d->alignedNodes = nodeAlign >= 9;
    if (!bucketCount)
        return d;

    try {
        d->bucketTable = new Node*[size_t(bucketCount)];
    } catch (...) {
        d->bucketCount = 0;
        d->free_helper(deleteNode);
        throw;
    }
    Node* const e = end();
    Node* const de = d->end();
    // Every chain is terminated before copying starts, so a failure leaves a block that
    // free_helper can walk.
    std::fill(d->bucketTable, d->bucketTable + bucketCount, de);
    try {
        for (int i = 0; i < bucketCount; ++i) {
            Node** tail = &d->bucketTable[i];
            for (Node* original = bucketTable[i]; original != e; original = original->next) {
                void* const memory = d->allocateNode(nodeAlign);
                if (!memory)
                    throw std::bad_alloc();
                try {
                    duplicateNode(original, memory);
                } catch (...) {
                    d->freeNode(memory);
                    throw;
                }
                // The typed node begins with its Node part.
                Node* const copy = std::launder(static_cast<Node*>(memory));
                copy->h = original->h;
                copy->next = de;
                *tail = copy;
                tail = &copy->next;
            }
        }
    } catch (...) {
        d->free_helper(deleteNode);
        throw;
    }
    return d;
}

VyHashData* VyHashData::detach_helper(void (*duplicateNode)(Node*, void*), int nodeBytes)
{
    return detach_helper2(duplicateNode, nullptr, nodeBytes, 4);
}

// Reads the type name out of a typeText signature: g++ writes "... [with U = int]", clang
// "... [U = int]".
static void copyTypeName(char* out, size_t outSize, const char* signature)
{
    const char* begin = strstr(signature, "U = ");
    const char* end = strrchr(signature, ']');
    if (!begin || !end || end < begin + 4) {
        snprintf(out, outSize, "%s", signature);
        return;
    }
    begin += 4;
    snprintf(out, outSize, "%.*s", int(end - begin), begin);
}

void VyHashData::findNodeFailed(const char* keyTypeText, const char* valueTypeText)
{
    static char keyName[256];
    static char valueName[256];
    static char function[640];
    copyTypeName(keyName, sizeof keyName, keyTypeText);
    copyTypeName(valueName, sizeof valueName, valueTypeText);
    snprintf(function, sizeof function,
             "VyHashNode<Key, T>** VyHash<Key, T>::findNode(const Key&, uint*) const "
             "[with Key = %s, T = %s]",
             keyName, valueName);
    vyAssertFail("*node == e || (*node)->next", VyAssertSites::hashFindNode.file,
                 VyAssertSites::hashFindNode.line, function);
}
