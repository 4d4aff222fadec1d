// VyMap<Key, T>: an implicitly shared map ordered by Key's operator<, kept as a skip list.
//
// Sharing: a map holds one pointer `d` to a reference-counted VyMapData block. Copies share the
// block (O(1)); every mutating member first detaches, copying the whole list when the count is
// not 1. Empty maps point at VyMapData::shared_null, whose count starts at 1 and never drops to
// 0, so it is never freed and never written to (every map on it holds a reference, so a mutator
// always sees it as shared).
//
// Layout: the block is the list's head and its end sentinel `e` at once: it starts with the
// same `prev` and next[] words as a node. A node is the payload (key, then value) followed by
// `prev` and next[0..level]; node pointers point at the `prev` word and the payload lies at a
// fixed negative offset (8 bytes for VyMap<int, int>). Level 0 links every node in key order,
// both ways; each higher level links a sorted subset of the level below it. Nodes never move,
// so references to keys and values stay valid until their node is removed or the map detaches.
//
// Levels come from the block's `levelSeed` counter: a node gets one level for each group of
// three set bits at the low end of the seed, so one node in eight reaches level 1, one in 64
// level 2 and so on. Fresh insertions reseed from rand() at every level-3 node.
//
// Threads: the reference count is atomic, so maps sharing a block may live on different
// threads; one map object belongs to one thread at a time.
#ifndef VYMAP_H
#define VYMAP_H

#include "vyglobal.h"
#include "vylist.h"

#include <atomic>
#include <cstddef>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

// The link words shared by the map block and every node: `prev` and the forward pointers of
// levels 0 to 11. A node only owns next[0..its level]; the words above are not allocated and
// must not be touched.
struct VY_EXPORT VyMapNode {
    VyMapNode* prev;
    VyMapNode* next[12];
};

// The untyped part of every VyMap: the block header, the list's head and end sentinel `e`
// (through its VyMapNode base), and the operations that do not depend on the payload type.
// Payload offsets are in bytes from the start of a node's memory to its `prev` word.
struct VY_EXPORT VyMapData : VyMapNode {
    typedef VyMapNode Node;
    enum {
        LastLevel = 11, // highest level a node can have
        LevelBits = 3   // bits of levelSeed per level: each level is one in eight of the one below
    };

    std::atomic<int> ref;
    int highestLevel;        // highest level in use; only ever grows
    int size;                // number of nodes
    uint levelSeed;          // source of node levels
    uint copyingInOrder : 1; // set while a copy appends nodes in order: levels follow the counter
    uint canShare : 1;
    uint alignedNodes : 1; // nodes are over-allocated so their payload gets a wider alignment
    uint reserved : 29;

    // The block every empty map points at: prev and next[0] point at itself, count 1.
    static VyMapData shared_null;

    // A new empty block with count 1 and `canShare` set; `alignedNodes` is set when the payload
    // needs an alignment of 9 or more. createData() uses no special alignment.
    static VyMapData* createData(int alignment);
    static VyMapData* createData();

    // Allocates a node with room for `offset` payload bytes, picks its level from levelSeed
    // and links it after path[0..level], where path[i] is the last node before the new one at
    // level i (path[0..highestLevel] must be filled). On return path[0..level] point at the new
    // node, so appending again with the same path keeps the order. The payload is left
    // unconstructed. A level above highestLevel opens exactly one new level.
    Node* node_create(Node* path[], int offset, int alignment);
    Node* node_create(Node* path[], int offset);

    // Unlinks `node` (its payload already destroyed) given the path to it, as filled by a search
    // (path[i] is the last node before it at level i), and frees its memory.
    void node_delete(Node* path[], int offset, Node* node);

    // Frees every node's memory and then the block. The payloads must already be destroyed.
    void continueFreeData(int offset);
};

static_assert(sizeof(std::atomic<int>) == 4, "the reference count is one 32-bit word");
static_assert(sizeof(VyMapData) == (13 * sizeof(void*) + 5 * 4 + alignof(void*) - 1) /
                                       alignof(void*) * alignof(void*),
              "VyMapData is prev, next[12] and five 32-bit words");

template <class Key, class T> class VyMap
{
    typedef VyMapData::Node Node;

    // The payload in front of each node's link words. The key is built first, so a value
    // whose copy throws takes the finished key down with it.
    struct Payload {
        Key key;
        T value;
        template <class... V> Payload(const Key& k, V&&... v) : key(k), value(std::forward<V>(v)...)
        {
        }
    };

public:
    // Bytes from the start of a node's memory to its `prev` word: the payload, padded so that
    // the link words are pointer-aligned.
    static constexpr int payloadOffset =
        int((sizeof(Payload) + alignof(Node*) - 1) / alignof(Node*) * alignof(Node*));
    static constexpr int payloadAlignment = int(alignof(Payload));

    typedef Key key_type;
    typedef T mapped_type;
    typedef int size_type;
    typedef std::ptrdiff_t difference_type;

    class const_iterator;

    // Walks the nodes in key order; end() is the block itself. Stays valid while its node is
    // in the map and the map does not detach.
    class iterator
    {
    public:
        typedef std::bidirectional_iterator_tag iterator_category;
        typedef std::ptrdiff_t difference_type;
        typedef T value_type;
        typedef T* pointer;
        typedef T& reference;

        Node* i;

        iterator() : i(nullptr) {}
        explicit iterator(Node* node) : i(node) {}

        const Key& key() const { return concrete(i)->key; }
        T& value() const { return concrete(i)->value; }
        T& operator*() const { return concrete(i)->value; }
        T* operator->() const { return &concrete(i)->value; }
        bool operator==(const iterator& o) const { return i == o.i; }
        bool operator!=(const iterator& o) const { return i != o.i; }
        bool operator==(const const_iterator& o) const { return i == o.i; }
        bool operator!=(const const_iterator& o) const { return i != o.i; }

        iterator& operator++()
        {
            i = i->next[0];
            return *this;
        }
        iterator operator++(int)
        {
            iterator r = *this;
            i = i->next[0];
            return r;
        }
        iterator& operator--()
        {
            i = i->prev;
            return *this;
        }
        iterator operator--(int)
        {
            iterator r = *this;
            i = i->prev;
            return r;
        }
    };

    class const_iterator
    {
    public:
        typedef std::bidirectional_iterator_tag iterator_category;
        typedef std::ptrdiff_t difference_type;
        typedef T value_type;
        typedef const T* pointer;
        typedef const T& reference;

        Node* i;

        const_iterator() : i(nullptr) {}
        explicit const_iterator(Node* node) : i(node) {}
        const_iterator(const iterator& o) : i(o.i) {}

        const Key& key() const { return concrete(i)->key; }
        const T& value() const { return concrete(i)->value; }
        const T& operator*() const { return concrete(i)->value; }
        const T* operator->() const { return &concrete(i)->value; }
        bool operator==(const const_iterator& o) const { return i == o.i; }
        bool operator!=(const const_iterator& o) const { return i != o.i; }

        const_iterator& operator++()
        {
            i = i->next[0];
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator r = *this;
            i = i->next[0];
            return r;
        }
        const_iterator& operator--()
        {
            i = i->prev;
            return *this;
        }
        const_iterator operator--(int)
        {
            const_iterator r = *this;
            i = i->prev;
            return r;
        }
    };

    VyMapData* d;

    VyMap() : d(&VyMapData::shared_null) { d->ref.fetch_add(1, std::memory_order_relaxed); }
    VyMap(const VyMap& other) : d(other.d) { d->ref.fetch_add(1, std::memory_order_relaxed); }
    // Leaves `other` empty.
    VyMap(VyMap&& other) noexcept : d(other.d)
    {
        other.d = &VyMapData::shared_null;
        other.d->ref.fetch_add(1, std::memory_order_relaxed);
    }
    ~VyMap() { release(d); }

    VyMap& operator=(const VyMap& other)
    {
        if (d != other.d) {
            other.d->ref.fetch_add(1, std::memory_order_relaxed);
            VyMapData* old = d;
            d = other.d;
            release(old);
        }
        return *this;
    }
    VyMap& operator=(VyMap&& other) noexcept
    {
        std::swap(d, other.d);
        return *this;
    }
    void swap(VyMap& other) noexcept { std::swap(d, other.d); }

    int size() const { return d->size; }
    int count() const { return d->size; }
    bool isEmpty() const { return d->size == 0; }
    bool empty() const { return d->size == 0; }

    // True when this map is the block's only owner, so a mutator will not copy.
    bool isDetached() const { return d->ref.load(std::memory_order_acquire) == 1; }
    // Makes the block this map's own, copying it when shared. May allocate.
    void detach()
    {
        if (d->ref.load(std::memory_order_acquire) != 1)
            detach_helper();
    }
    // Drops the contents and points at shared_null.
    void clear() { *this = VyMap(); }

    bool contains(const Key& key) const { return findNode(key) != e(); }
    // 1 when the key is present, else 0.
    int count(const Key& key) const { return findNode(key) != e() ? 1 : 0; }

    // The key's value, or a value-initialised T when the key is absent.
    T value(const Key& key) const
    {
        Node* node = findNode(key);
        return node == e() ? T() : concrete(node)->value;
    }
    T value(const Key& key, const T& defaultValue) const
    {
        Node* node = findNode(key);
        return node == e() ? defaultValue : concrete(node)->value;
    }
    T operator[](const Key& key) const { return value(key); }

    // The key's value, inserting a value-initialised T first when the key is absent. Detaches.
    T& operator[](const Key& key)
    {
        detach();
        Node* path[VyMapData::LastLevel + 1];
        Node* node = findNode(path, key);
        if (node == e())
            node = createNode(d, path, key);
        return concrete(node)->value;
    }

    // Adds the key with a copy of `value`, or replaces the value of an existing key (the
    // stored key is kept). Detaches; allocates one node for a new key.
    iterator insert(const Key& key, const T& value)
    {
        detach();
        Node* path[VyMapData::LastLevel + 1];
        Node* node = findNode(path, key);
        if (node == e())
            node = createNode(d, path, key, value);
        else
            concrete(node)->value = value;
        return iterator(node);
    }

    // Removes the key; returns the number of nodes removed (0 or 1). Detaches.
    int remove(const Key& key)
    {
        detach();
        Node* path[VyMapData::LastLevel + 1];
        Node* node = findNode(path, key);
        if (node == e())
            return 0;
        destroyNode(path, node);
        return 1;
    }

    // Removes the key and returns its value, or a value-initialised T when absent. Detaches.
    T take(const Key& key)
    {
        detach();
        Node* path[VyMapData::LastLevel + 1];
        Node* node = findNode(path, key);
        if (node == e())
            return T();
        T t(std::move(concrete(node)->value));
        destroyNode(path, node);
        return t;
    }

    // Removes the node `it` points at and returns an iterator to the next one. An iterator of a
    // shared block is followed into this map's own copy by its key. erase(end()) does nothing.
    iterator erase(iterator it)
    {
        if (it.i == e())
            return it;
        // The key stays readable across detach(): a shared block keeps its other owner.
        const Key& key = concrete(it.i)->key;
        detach();
        Node* path[VyMapData::LastLevel + 1];
        Node* node = findNode(path, key);
        Node* next = node->next[0];
        destroyNode(path, node);
        return iterator(next);
    }

    iterator begin()
    {
        detach();
        return iterator(d->next[0]);
    }
    iterator end()
    {
        detach();
        return iterator(e());
    }
    const_iterator begin() const { return const_iterator(d->next[0]); }
    const_iterator end() const { return const_iterator(e()); }
    const_iterator constBegin() const { return const_iterator(d->next[0]); }
    const_iterator constEnd() const { return const_iterator(e()); }
    const_iterator cbegin() const { return const_iterator(d->next[0]); }
    const_iterator cend() const { return const_iterator(e()); }

    // The node with the key, or end(). The non-const form detaches.
    iterator find(const Key& key)
    {
        detach();
        return iterator(findNode(key));
    }
    const_iterator find(const Key& key) const { return const_iterator(findNode(key)); }
    const_iterator constFind(const Key& key) const { return const_iterator(findNode(key)); }

    // The first node whose key is not less than `key`, or end(). The non-const form detaches.
    iterator lowerBound(const Key& key)
    {
        detach();
        return iterator(findLowerBound(key));
    }
    const_iterator lowerBound(const Key& key) const { return const_iterator(findLowerBound(key)); }

    // The first node whose key is greater than `key`, or end(). The non-const form detaches.
    iterator upperBound(const Key& key)
    {
        detach();
        return iterator(findUpperBound(key));
    }
    const_iterator upperBound(const Key& key) const { return const_iterator(findUpperBound(key)); }

    // The smallest and the largest key. The map must not be empty.
    const Key& firstKey() const
    {
        VY_ASSERT_SITE(!isEmpty(), VyAssertSites::mapFirstKey);
        return concrete(d->next[0])->key;
    }
    const Key& lastKey() const
    {
        VY_ASSERT_SITE(!isEmpty(), VyAssertSites::mapLastKey);
        return concrete(d->prev)->key;
    }

    // Every key, and every value, in key order. O(n).
    VyList<Key> keys() const
    {
        VyList<Key> r;
        for (Node* n = d->next[0]; n != e(); n = n->next[0])
            r.append(concrete(n)->key);
        return r;
    }
    VyList<T> values() const
    {
        VyList<T> r;
        for (Node* n = d->next[0]; n != e(); n = n->next[0])
            r.append(concrete(n)->value);
        return r;
    }

    // Equal sizes, equivalent keys (neither less than the other) and equal values, in order.
    bool operator==(const VyMap& other) const
    {
        if (d->size != other.d->size)
            return false;
        if (d == other.d)
            return true;
        Node* b = other.d->next[0];
        for (Node* a = d->next[0]; a != e(); a = a->next[0], b = b->next[0]) {
            const Payload* pa = concrete(a);
            const Payload* pb = concrete(b);
            if (pa->key < pb->key || pb->key < pa->key || !(pa->value == pb->value))
                return false;
        }
        return true;
    }
    bool operator!=(const VyMap& other) const { return !(*this == other); }

    // Replaces the shared block by a private copy of it: a new block whose nodes are appended
    // in order with levels following the counter from 0. Leaves the map as it was when a copy
    // throws.
    void detach_helper();

private:
    Node* e() const { return d; }

    static Payload* concrete(Node* node)
    {
        return reinterpret_cast<Payload*>(reinterpret_cast<char*>(node) - payloadOffset);
    }

    // The node holding `key`, or e(). Walks from the top level down; `stop` is the node that
    // ended the walk one level up, known not to be less than the key, so it is not compared
    // again when the lower level reaches it.
    Node* findNode(const Key& key) const
    {
        Node* const end = e();
        Node* cur = end;
        Node* stop = end;
        for (int i = d->highestLevel; i >= 0; --i) {
            Node* next;
            while ((next = cur->next[i]) != stop && concrete(next)->key < key)
                cur = next;
            stop = next;
        }
        return stop != end && !(key < concrete(stop)->key) ? stop : end;
    }

    // As findNode, and fills path[0..highestLevel] with the last node before the key on each
    // level, ready for node_create or node_delete.
    Node* findNode(Node* path[], const Key& key) const
    {
        Node* const end = e();
        Node* cur = end;
        Node* stop = end;
        for (int i = d->highestLevel; i >= 0; --i) {
            Node* next;
            while ((next = cur->next[i]) != stop && concrete(next)->key < key)
                cur = next;
            stop = next;
            path[i] = cur;
        }
        return stop != end && !(key < concrete(stop)->key) ? stop : end;
    }

    Node* findLowerBound(const Key& key) const
    {
        Node* cur = e();
        Node* stop = e();
        for (int i = d->highestLevel; i >= 0; --i) {
            Node* next;
            while ((next = cur->next[i]) != stop && concrete(next)->key < key)
                cur = next;
            stop = next;
        }
        return stop;
    }

    Node* findUpperBound(const Key& key) const
    {
        Node* cur = e();
        Node* stop = e();
        for (int i = d->highestLevel; i >= 0; --i) {
            Node* next;
            while ((next = cur->next[i]) != stop && !(key < concrete(next)->key))
                cur = next;
            stop = next;
        }
        return stop;
    }

    // Allocates and links a node after `path` in block `x` and builds its payload from `key`
    // and `value...` (nothing: a value-initialised T). When building throws, the node is
    // unlinked and freed again and the exception passes on.
    template <class... V>
    static Node* createNode(VyMapData* x, Node* path[], const Key& key, V&&... value)
    {
        if constexpr (std::is_nothrow_copy_constructible_v<Key> &&
                      std::is_nothrow_constructible_v<T, V&&...>) {
            Node* node = x->node_create(path, payloadOffset, payloadAlignment);
            new (concrete(node)) Payload(key, std::forward<V>(value)...);
            return node;
        } else {
            // node_create moves path[0..level] onto the new node; unlinking it needs the
            // predecessors as they were.
            Node* before[VyMapData::LastLevel + 1];
            const int top = x->highestLevel;
            for (int i = 0; i <= top; ++i)
                before[i] = path[i];
            Node* node = x->node_create(path, payloadOffset, payloadAlignment);
            if (x->highestLevel > top)
                before[x->highestLevel] = x;
            try {
                new (concrete(node)) Payload(key, std::forward<V>(value)...);
            } catch (...) {
                x->node_delete(before, payloadOffset, node);
                throw;
            }
            return node;
        }
    }

    void destroyNode(Node* path[], Node* node)
    {
        concrete(node)->~Payload();
        d->node_delete(path, payloadOffset, node);
    }

    // Destroys every payload of `x`, then frees its nodes and the block.
    static void freeData(VyMapData* x)
    {
        if constexpr (!std::is_trivially_destructible_v<Payload>) {
            for (Node* n = x->next[0]; n != x; n = n->next[0])
                concrete(n)->~Payload();
        }
        x->continueFreeData(payloadOffset);
    }

    static void release(VyMapData* x)
    {
        if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
            freeData(x);
    }
};

template <class Key, class T> void VyMap<Key, T>::detach_helper()
{
    VyMapData* x = VyMapData::createData(payloadAlignment);
    if (d->size) {
        // Appending in order with the counter's levels gives the copy an evenly spaced
        // structure whatever the original went through.
        x->copyingInOrder = 1;
        Node* path[VyMapData::LastLevel + 1];
        path[0] = x;
        Node* const olde = d;
        try {
            for (Node* cur = olde->next[0]; cur != olde; cur = cur->next[0])
                createNode(x, path, concrete(cur)->key, concrete(cur)->value);
        } catch (...) {
            freeData(x);
            throw;
        }
        x->copyingInOrder = 0;
    }
    VyMapData* old = d;
    d = x;
    release(old);
}

#endif
