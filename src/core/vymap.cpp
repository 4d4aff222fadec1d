// The skip list behind every VyMap: block creation, node levels, linking and unlinking, and
// freeing. Payloads are the template's business; here a node is only its link words with
// `offset` opaque bytes in front of them.
#include "vymap.h"

#include "vyallocation.h"

#include <stdlib.h>

VyMapData VyMapData::shared_null = {
    {&shared_null,
     {&shared_null, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr}},
    {1}, // ref
    0,   // highestLevel
    0,   // size
    0,   // levelSeed
    0,   // copyingInOrder
    1,   // canShare
    0,   // alignedNodes
    0,   // reserved
};

VyMapData* VyMapData::createData(int alignment)
{
    VyMapData* d = new VyMapData;
    d->prev = d;
    d->next[0] = d;
    for (int i = 1; i <= LastLevel; ++i)
        d->next[i] = nullptr;
    d->ref.store(1, std::memory_order_relaxed);
    d->highestLevel = 0;
    d->size = 0;
    d->levelSeed = 0;
    d->copyingInOrder = 0;
    d->canShare = 1;
    d->alignedNodes = alignment >= 9;
    d->reserved = 0;
    return d;
}

VyMapData* VyMapData::createData()
{
    return createData(0);
}

// Aligned nodes keep the address malloc returned in the word before their memory; the
// alignment is at least a pointer's so that word always fits in the over-allocation.
static int nodeAlignment(int alignment)
{
    return alignment < int(sizeof(void*)) ? int(sizeof(void*)) : alignment;
}

VyMapData::Node* VyMapData::node_create(Node* path[], int offset, int alignment)
{
    // One level per group of three set bits at the low end of the seed: one node in eight
    // reaches level 1, one in 64 level 2, ...
    int level = 0;
    uint mask = (1u << LevelBits) - 1;
    while ((levelSeed & mask) == mask && level < LastLevel) {
        ++level;
        mask <<= LevelBits;
    }
    if (level > highestLevel) {
        // Open one level at a time, so the list never has an empty level above a full one.
        level = ++highestLevel;
        next[level] = this;
        path[level] = this;
    }
    ++levelSeed;
    // A map filled by fresh insertions takes new randomness at each level-3 node; a copy
    // keeps counting so its levels are evenly spaced.
    if (level == 3 && !copyingInOrder)
        levelSeed = uint(rand());

    size_t bytes = size_t(offset) + size_t(2 + level) * sizeof(Node*);
    char* memory = static_cast<char*>(
        alignedNodes ? vyAlignedAllocate(bytes, nodeAlignment(alignment)) : malloc(bytes));
    Node* node = reinterpret_cast<Node*>(memory + offset);

    node->prev = path[0];
    path[0]->next[0]->prev = node;
    for (int i = level; i >= 0; --i) {
        node->next[i] = path[i]->next[i];
        path[i]->next[i] = node;
        path[i] = node;
    }
    ++size;
    return node;
}

VyMapData::Node* VyMapData::node_create(Node* path[], int offset)
{
    return node_create(path, offset, 0);
}

static void freeNode(VyMapData* d, VyMapData::Node* node, int offset)
{
    char* memory = reinterpret_cast<char*>(node) - offset;
    if (d->alignedNodes)
        vyAlignedFree(memory);
    else
        free(memory);
}

void VyMapData::node_delete(Node* path[], int offset, Node* node)
{
    node->next[0]->prev = node->prev;
    for (int i = 0; i <= highestLevel; ++i) {
        if (path[i]->next[i] != node)
            break;
        path[i]->next[i] = node->next[i];
    }
    --size;
    freeNode(this, node, offset);
}

void VyMapData::continueFreeData(int offset)
{
    Node* e = this;
    Node* cur = e->next[0];
    while (cur != e) {
        Node* next = cur->next[0];
        freeNode(this, cur, offset);
        cur = next;
    }
    delete this;
}
