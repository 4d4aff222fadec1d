// VyHash<Key, T>: an implicitly shared hash table with chained buckets.
//
// The hash holds `d`, a pointer to a reference-counted VyHashData block that owns the bucket
// table (an array of chain heads) and the nodes. A node is {next, h, key, value}, where `h` is
// vyHash(key); for int keys the hash is the key itself, so an int-keyed node is {next, key,
// value}, three words. The block's first word is a `next` that is always null, so the block
// itself serves as the end sentinel `e`: every chain ends at a node whose `next` is the block,
// an empty bucket holds the block, and end() points at it.
//
// Copies share the block in O(1); every mutator detaches first, through detach(). Empty
// hashes point at the static VyHashData::shared_null, whose count starts at 1 and is never
// released. Nodes never move while the block is owned: rehashing relinks them, so references
// to keys and values stay valid until their node is removed or the block is copied.
// Iteration follows the bucket order, then the chain order; nodes with the same hash keep
// their insertion order, also across rehashes.
//
// The bucket count is 2^tableBits plus a fixed offset (17, 37, 67, 131, 257, ...) and grows
// one bit when an insertion of a new key finds as many nodes as buckets; it never depends on
// the host's pointer size. Keys need operator== and an overload of `uint vyHash(const Key&)`
// found by ordinary or argument-dependent lookup; the integer types have theirs below.
//
// The reference count is atomic, so copies sharing a block may live on different threads; a
// given hash object belongs to one thread at a time.
#ifndef VYHASH_H
#define VYHASH_H

#include "vyglobal.h"
#include "vylist.h"

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <iterator>
#include <new>
#include <stddef.h>
#include <string.h>
#include <type_traits>
#include <utility>

// Hashes of the integer types. Narrow types hash to their value; 64-bit values fold their high
// word onto the low one. long hashes like long long, so the result is the same on 32-bit and
// 64-bit hosts.
inline uint vyHash(char key)
{
    return uint(key);
}
inline uint vyHash(signed char key)
{
    return uint(key);
}
inline uint vyHash(unsigned char key)
{
    return uint(key);
}
inline uint vyHash(short key)
{
    return uint(key);
}
inline uint vyHash(unsigned short key)
{
    return uint(key);
}
inline uint vyHash(int key)
{
    return uint(key);
}
inline uint vyHash(unsigned int key)
{
    return key;
}
inline uint vyHash(unsigned long long key)
{
    return uint(key) ^ uint(key >> 32);
}
inline uint vyHash(long long key)
{
    return vyHash(static_cast<unsigned long long>(key));
}
inline uint vyHash(long key)
{
    return vyHash(static_cast<long long>(key));
}
inline uint vyHash(unsigned long key)
{
    return vyHash(static_cast<unsigned long long>(key));
}

// The untyped block shared by every VyHash instantiation. The layout is fixed: tools read it.
struct VY_EXPORT VyHashData {
    // The part of a node every instantiation shares; VyHashNode adds the key and value.
    struct Node {
        // The next node of the chain, or the block (as `e`) after the last node.
        Node* next;
        uint h;
    };

    // Always null: it is what a node's `next` reads as when the node is the block itself.
    Node* sentinelNext;
    // bucketCount chain heads (new[]); an empty bucket holds the block. Null while
    // bucketCount is 0.
    Node** bucketTable;
    std::atomic<int> ref;
    int size;
    // Bytes of one node of the typed layer; what allocateNode allocates.
    int nodeBytes;
    // The last size hint, in bits, given to rehash as a wanted bucket count.
    short hintBits;
    // The bucket table's base size in bits: bucketCount == bucketCountForBits(tableBits).
    short tableBits;
    int bucketCount;
    unsigned char canShare : 1;
    // Nodes need more than malloc's alignment: allocateNode over-allocates and keeps the raw
    // pointer in the word before the node.
    unsigned char alignedNodes : 1;

    // The block of every empty hash: count 1 of its own, never freed, no bucket table.
    static VyHashData shared_null;

    // Memory for one node of nodeBytes. With `alignedNodes`, an alignment above 4 is honoured
    // by over-allocating; 4 or less stores the raw pointer in the first word and returns the
    // memory after it. Null when malloc fails. Release with freeNode.
    void* allocateNode(int alignment);
    void* allocateNode() { return allocateNode(0); }
    void freeNode(void* node);

    // A hint of 0 or more is a table size in bits (at least 4). A negative hint asks for at
    // least -hint buckets (and records the bits in hintBits), but never fewer than size / 2.
    // Relinks every node into a new bucket table when the bit count changes; O(size).
    void rehash(int hint);

    // The first node in iteration order, or the block when there is none.
    Node* firstNode();
    // The node after `node` in iteration order, or the block after the last one. `node` must
    // be a node of a chain (not the block itself).
    static Node* nextNode(Node* node);
    // The node before `node` (which may be the block, standing for the end). There must be
    // one: asking before the first node ends the process.
    static Node* previousNode(Node* node);

    // Frees every node (passing each to deleteNode first) when deleteNode is given, then the
    // bucket table and the block. Without deleteNode the nodes are left alone.
    void free_helper(void (*deleteNode)(Node*));
    void destroyAndFree() { free_helper(nullptr); }

    // A new block of count 1 with the same bucket table size, holding a copy of every node in
    // the same buckets and order: duplicateNode constructs the payload of the new node from
    // the old one, `h` is copied here. Nodes are nodeBytes long; an alignment of 9 or more
    // sets alignedNodes. If a copy throws, the half-built block is freed through
    // free_helper(deleteNode) and the exception passes on; this block is not touched.
    VyHashData* detach_helper2(void (*duplicateNode)(Node*, void*), void (*deleteNode)(Node*),
                               int nodeBytes, int nodeAlign);
    // detach_helper2 with alignment 4 and no deleteNode (a failed copy leaks the copies made).
    VyHashData* detach_helper(void (*duplicateNode)(Node*, void*), int nodeBytes);

    // 2^bits plus the table's offset for `bits`; bits 0 to 30.
    static int bucketCountForBits(int bits);

    // Reports the failed chain check of VyHash::findNode; the texts name the instantiation's
    // key and value types (from typeText).
    [[noreturn]] static void findNodeFailed(const char* keyTypeText, const char* valueTypeText);
    // The compiler's signature of this function, which names U; findNodeFailed reads U's name
    // from it.
    template <class U> static const char* typeText() { return VY_FUNCTION_TEXT; }

    // The block as the end sentinel of its chains.
    Node* end() { return reinterpret_cast<Node*>(this); }
    // The word a node's `next` field would hold at `n`, read as raw memory: `n` may be the
    // block, whose first word is sentinelNext.
    static Node* linkAfter(const Node* n)
    {
        Node* next;
        memcpy(&next, static_cast<const void*>(n), sizeof next);
        return next;
    }
};

// A node of VyHash<Key, T>: the shared part, then the key and the value.
template <class Key, class T> struct VyHashNode : VyHashData::Node {
    Key key;
    T value;

    VyHashNode(const Key& k, const T& v) : key(k), value(v) {}
    bool sameKey(uint h0, const Key& k) const { return h == h0 && key == k; }
    const Key& storedKey() const { return key; }
};

// An int-keyed node stores no key: the hash is the key.
template <class T> struct VyHashNode<int, T> : VyHashData::Node {
    T value;

    VyHashNode(const int&, const T& v) : value(v) {}
    bool sameKey(uint h0, const int&) const { return h == h0; }
    // int and unsigned int may name the same object, so the hash reads back as the key.
    const int& storedKey() const { return reinterpret_cast<const int&>(h); }
};

template <class Key, class T> class VyHash
{
    typedef VyHashNode<Key, T> Node;

public:
    class const_iterator;

    class iterator
    {
    public:
        typedef std::bidirectional_iterator_tag iterator_category;
        typedef ptrdiff_t difference_type;
        typedef T value_type;
        typedef T* pointer;
        typedef T& reference;

        // The node, or the block for end().
        VyHashData::Node* i;

        iterator() : i(nullptr) {}
        explicit iterator(VyHashData::Node* node) : i(node) {}
        const Key& key() const { return static_cast<Node*>(i)->storedKey(); }
        T& value() const { return static_cast<Node*>(i)->value; }
        T& operator*() const { return value(); }
        T* operator->() const { return &value(); }
        bool operator==(const iterator& o) const { return i == o.i; }
        bool operator!=(const iterator& o) const { return i != o.i; }
        bool operator==(const const_iterator& o) const { return i == o.i; }
        bool operator!=(const const_iterator& o) const { return i != o.i; }
        iterator& operator++()
        {
            i = VyHashData::nextNode(i);
            return *this;
        }
        iterator operator++(int)
        {
            iterator r = *this;
            i = VyHashData::nextNode(i);
            return r;
        }
        iterator& operator--()
        {
            i = VyHashData::previousNode(i);
            return *this;
        }
        iterator operator--(int)
        {
            iterator r = *this;
            i = VyHashData::previousNode(i);
            return r;
        }
    };

    class const_iterator
    {
    public:
        typedef std::bidirectional_iterator_tag iterator_category;
        typedef ptrdiff_t difference_type;
        typedef T value_type;
        typedef const T* pointer;
        typedef const T& reference;

        VyHashData::Node* i;

        const_iterator() : i(nullptr) {}
        explicit const_iterator(VyHashData::Node* node) : i(node) {}
        const_iterator(const iterator& o) : i(o.i) {}
        const Key& key() const { return static_cast<Node*>(i)->storedKey(); }
        const T& value() const { return static_cast<Node*>(i)->value; }
        const T& operator*() const { return value(); }
        const T* operator->() const { return &value(); }
        bool operator==(const const_iterator& o) const { return i == o.i; }
        bool operator!=(const const_iterator& o) const { return i != o.i; }
        const_iterator& operator++()
        {
            i = VyHashData::nextNode(i);
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator r = *this;
            i = VyHashData::nextNode(i);
            return r;
        }
        const_iterator& operator--()
        {
            i = VyHashData::previousNode(i);
            return *this;
        }
        const_iterator operator--(int)
        {
            const_iterator r = *this;
            i = VyHashData::previousNode(i);
            return r;
        }
    };

    VyHash() : d(acquire(&VyHashData::shared_null)) {}
    VyHash(const VyHash& other) : d(acquire(other.d))
    {
        if (!d->canShare)
            detach_helper();
    }
    VyHash(VyHash&& other) noexcept : d(other.d) { other.d = acquire(&VyHashData::shared_null); }
    VyHash(std::initializer_list<std::pair<Key, T>> pairs) : VyHash()
    {
        for (const std::pair<Key, T>& p : pairs)
            insert(p.first, p.second);
    }
    ~VyHash() { release(d); }

    VyHash& operator=(const VyHash& other);
    VyHash& operator=(VyHash&& other) noexcept
    {
        std::swap(d, other.d);
        return *this;
    }
    void swap(VyHash& other) noexcept { std::swap(d, other.d); }

    int size() const { return d->size; }
    int count() const { return d->size; }
    bool isEmpty() const { return d->size == 0; }
    // The number of buckets (0 before the first insertion).
    int capacity() const { return d->bucketCount; }

    // Makes the block this hash's own, copying every node when it is shared. A throwing copy
    // leaves the hash as it was.
    void detach()
    {
        if (d->ref.load(std::memory_order_acquire) != 1)
            detach_helper();
    }
    bool isDetached() const { return d->ref.load(std::memory_order_acquire) == 1; }
    bool isSharedWith(const VyHash& other) const { return d == other.d; }

    // Rehashes for at least `size` buckets (fewer than half the current size never). Detaches.
    void reserve(int size)
    {
        detach();
        // A zero or negative request still counts as a wanted bucket count, so the table
        // keeps at least size / 2 buckets instead of dropping to the minimum.
        d->rehash(-std::max(size, 1));
    }
    // Drops every node; the hash points at shared_null again.
    void clear() { *this = VyHash(); }

    // Adds the pair, or replaces the value of an existing key. Detaches; may rehash (nodes do
    // not move). The arguments may refer into this hash.
    iterator insert(const Key& key, const T& value);
    // Removes the key's node; returns the number removed (0 or 1). Detaches unless empty.
    int remove(const Key& key);
    // Removes the key's node and returns its value, or T() when absent. Detaches unless empty.
    T take(const Key& key);
    // Removes the node at `it` and returns the iterator after it; end() is returned as is. An
    // iterator into a block that has since become shared is carried over to the copy.
    iterator erase(iterator it);

    // The key's value, or T() (or `defaultValue`) when absent. Does not detach.
    T value(const Key& key) const;
    T value(const Key& key, const T& defaultValue) const;
    // The key's value, inserted as T() first when absent. Detaches.
    T& operator[](const Key& key);
    T operator[](const Key& key) const { return value(key); }
    bool contains(const Key& key) const { return nodeAt(findNode(key)) != d->end(); }
    int count(const Key& key) const { return contains(key) ? 1 : 0; }

    // Every key and every value, in iteration order.
    VyList<Key> keys() const;
    VyList<T> values() const;

    // The non-const forms detach (unless the hash is empty) so the values can be changed.
    iterator begin()
    {
        if (d->size)
            detach();
        return iterator(d->firstNode());
    }
    iterator end()
    {
        if (d->size)
            detach();
        return iterator(d->end());
    }
    const_iterator begin() const { return const_iterator(d->firstNode()); }
    const_iterator end() const { return const_iterator(d->end()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    const_iterator constBegin() const { return begin(); }
    const_iterator constEnd() const { return end(); }
    iterator find(const Key& key)
    {
        if (d->size)
            detach();
        return iterator(nodeAt(findNode(key)));
    }
    const_iterator find(const Key& key) const { return constFind(key); }
    const_iterator constFind(const Key& key) const { return const_iterator(nodeAt(findNode(key))); }

    // Same keys with equal values (T needs operator==).
    bool operator==(const VyHash& other) const;
    bool operator!=(const VyHash& other) const { return !(*this == other); }

    // The slot that points at the key's node: a bucket head or a node's `next`. When the key
    // is absent the slot holds the end of the key's chain (the block), where a new node is
    // linked in. Before the first insertion (no buckets) it is the address of `d`, which
    // reads as the end too. Stores the key's hash in *hashOut when given.
    Node** findNode(const Key& key, uint* hashOut = nullptr) const;

    // Payload callbacks for the untyped block: copy into fresh node memory, destroy in place.
    static void duplicateNode(VyHashData::Node* originalNode, void* newNode);
    static void deleteNode2(VyHashData::Node* node);

    VyHashData* d;

private:
    static VyHashData* acquire(VyHashData* x)
    {
        x->ref.fetch_add(1, std::memory_order_relaxed);
        return x;
    }
    static void release(VyHashData* x)
    {
        if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
            freeData(x);
    }
    static void freeData(VyHashData* x) { x->free_helper(deleteNode2); }
    void detach_helper();
    // The node a findNode slot points at. Read as raw memory: before the first insertion the
    // slot is `d` itself.
    static VyHashData::Node* nodeAt(Node** slot)
    {
        VyHashData::Node* node;
        memcpy(&node, static_cast<const void*>(slot), sizeof node);
        return node;
    }
    static VyHashData::Node** link(Node** slot)
    {
        return reinterpret_cast<VyHashData::Node**>(slot);
    }
    // Links a new node for (key, value) in at `slot` and counts it; nothing changes if the
    // copy throws.
    VyHashData::Node* createNode(uint h, const Key& key, const T& value, Node** slot);
    void deleteNode(VyHashData::Node* node)
    {
        deleteNode2(node);
        d->freeNode(node);
    }
};

// Two words of pointers plus two words of 32-bit fields on every host.
static_assert(sizeof(VyHashNode<int, void*>) == 3 * sizeof(void*),
              "an int-keyed node is {next, key, value}");

template <class Key, class T>
VyHashNode<Key, T>** VyHash<Key, T>::findNode(const Key& key, uint* hashOut) const
{
    const uint h = vyHash(key);
    if (hashOut)
        *hashOut = h;
    if (!d->bucketCount)
        return reinterpret_cast<Node**>(const_cast<VyHashData**>(&d));
    VyHashData::Node* const e = d->end();
    VyHashData::Node** node = &d->bucketTable[h % uint(d->bucketCount)];
    // A chain head that is a node must link on; a null link means the table is corrupt.
    if (__builtin_expect(!(*node == e || (*node)->next), 0))
        VyHashData::findNodeFailed(VyHashData::typeText<Key>(), VyHashData::typeText<T>());
    while (*node != e && !static_cast<Node*>(*node)->sameKey(h, key))
        node = &(*node)->next;
    return reinterpret_cast<Node**>(node);
}

template <class Key, class T>
VyHashData::Node* VyHash<Key, T>::createNode(uint h, const Key& key, const T& value, Node** slot)
{
    void* memory = d->allocateNode(int(alignof(Node)));
    if (!memory)
        throw std::bad_alloc();
    Node* node;
    if constexpr (std::is_nothrow_copy_constructible<Key>::value &&
                  std::is_nothrow_copy_constructible<T>::value) {
        node = new (memory) Node(key, value);
    } else {
        try {
            node = new (memory) Node(key, value);
        } catch (...) {
            d->freeNode(memory);
            throw;
        }
    }
    node->h = h;
    VyHashData::Node** at = link(slot);
    node->next = *at;
    *at = node;
    ++d->size;
    return node;
}

template <class Key, class T>
typename VyHash<Key, T>::iterator VyHash<Key, T>::insert(const Key& key, const T& value)
{
    detach();
    uint h;
    Node** slot = findNode(key, &h);
    VyHashData::Node* node = nodeAt(slot);
    if (node != d->end()) {
        static_cast<Node*>(node)->value = value;
        return iterator(node);
    }
    if (d->size >= d->bucketCount) {
        d->rehash(d->tableBits + 1);
        slot = findNode(key, &h);
    }
    return iterator(createNode(h, key, value, slot));
}

template <class Key, class T> T& VyHash<Key, T>::operator[](const Key& key)
{
    detach();
    uint h;
    Node** slot = findNode(key, &h);
    VyHashData::Node* node = nodeAt(slot);
    if (node == d->end()) {
        if (d->size >= d->bucketCount) {
            d->rehash(d->tableBits + 1);
            slot = findNode(key, &h);
        }
        node = createNode(h, key, T(), slot);
    }
    return static_cast<Node*>(node)->value;
}

template <class Key, class T> T VyHash<Key, T>::value(const Key& key) const
{
    if (d->size == 0)
        return T();
    VyHashData::Node* node = nodeAt(findNode(key));
    return node == d->end() ? T() : static_cast<Node*>(node)->value;
}

template <class Key, class T> T VyHash<Key, T>::value(const Key& key, const T& defaultValue) const
{
    if (d->size == 0)
        return defaultValue;
    VyHashData::Node* node = nodeAt(findNode(key));
    return node == d->end() ? defaultValue : static_cast<Node*>(node)->value;
}

template <class Key, class T> int VyHash<Key, T>::remove(const Key& key)
{
    if (isEmpty())
        return 0;
    detach();
    Node** slot = findNode(key);
    VyHashData::Node* node = nodeAt(slot);
    if (node == d->end())
        return 0;
    // The key may live in the node: it is not read after this point.
    *link(slot) = node->next;
    deleteNode(node);
    --d->size;
    return 1;
}

template <class Key, class T> T VyHash<Key, T>::take(const Key& key)
{
    if (isEmpty())
        return T();
    detach();
    Node** slot = findNode(key);
    VyHashData::Node* node = nodeAt(slot);
    if (node == d->end())
        return T();
    T t = std::move(static_cast<Node*>(node)->value);
    *link(slot) = node->next;
    deleteNode(node);
    --d->size;
    return t;
}

template <class Key, class T> typename VyHash<Key, T>::iterator VyHash<Key, T>::erase(iterator it)
{
    if (it.i == d->end())
        return it;
    if (!isDetached()) {
        // The copy keeps the bucket table size and every chain's order: find the same place.
        const int bucket = int(it.i->h % uint(d->bucketCount));
        int steps = 0;
        for (VyHashData::Node* n = d->bucketTable[bucket]; n != it.i; n = n->next)
            ++steps;
        detach();
        it.i = d->bucketTable[bucket];
        while (steps--)
            it.i = it.i->next;
    }
    iterator next = it;
    ++next;
    VyHashData::Node** slot = &d->bucketTable[it.i->h % uint(d->bucketCount)];
    while (*slot != it.i)
        slot = &(*slot)->next;
    *slot = it.i->next;
    deleteNode(it.i);
    --d->size;
    return next;
}

template <class Key, class T> VyHash<Key, T>& VyHash<Key, T>::operator=(const VyHash& other)
{
    if (d != other.d) {
        VyHashData* x = acquire(other.d);
        release(d);
        d = x;
        if (!d->canShare)
            detach_helper();
    }
    return *this;
}

template <class Key, class T> VyList<Key> VyHash<Key, T>::keys() const
{
    VyList<Key> result;
    for (const_iterator it = begin(); it != end(); ++it)
        result.append(it.key());
    return result;
}

template <class Key, class T> VyList<T> VyHash<Key, T>::values() const
{
    VyList<T> result;
    for (const_iterator it = begin(); it != end(); ++it)
        result.append(it.value());
    return result;
}

template <class Key, class T> bool VyHash<Key, T>::operator==(const VyHash& other) const
{
    if (d->size != other.d->size)
        return false;
    if (d == other.d)
        return true;
    for (const_iterator it = begin(); it != end(); ++it) {
        const_iterator o = other.constFind(it.key());
        if (o == other.end() || !(o.value() == it.value()))
            return false;
    }
    return true;
}

template <class Key, class T>
void VyHash<Key, T>::duplicateNode(VyHashData::Node* originalNode, void* newNode)
{
    const Node* original = static_cast<const Node*>(originalNode);
    new (newNode) Node(original->storedKey(), original->value);
}

template <class Key, class T> void VyHash<Key, T>::deleteNode2(VyHashData::Node* node)
{
    static_cast<Node*>(node)->~Node();
}

template <class Key, class T> __attribute__((noinline)) void VyHash<Key, T>::detach_helper()
{
    VyHashData* x =
        d->detach_helper2(duplicateNode, deleteNode2, int(sizeof(Node)), int(alignof(Node)));
    release(d);
    d = x;
}

#endif
