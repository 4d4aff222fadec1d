// VyList<T>: an implicitly shared array of pointer-sized slots with free room at both ends.
//
// The list holds `p`, a VyListData whose `d` points at a reference-counted block: header words
// (count, capacity, begin, end, flags) followed by `alloc` slots. The elements are
// slots[begin] to slots[end - 1]; free slots lie before `begin` and after `end`, so prepend,
// append and insertion near either end are amortised O(1) and always move the shorter side.
// Pointer elements live in the slot itself; every other type is stored as a heap copy the slot
// points at. Copies share the block in O(1); every mutator detaches first. Empty lists point
// at the static `VyListData::shared_null`, which is never freed. The reference count is
// atomic; a given list object belongs to one thread at a time.
//
// Capacities are counted with the 32-bit layout (20-byte header, 4-byte slots) on every host.
#ifndef VYLIST_H
#define VYLIST_H

#include "vyglobal.h"

#include <atomic>
#include <iterator>
#include <limits.h>
#include <new>
#include <stddef.h>
#include <stdlib.h>
#include <type_traits>

// Slot count for a block that must hold at least n slots.
VY_EXPORT int listCapacityFor(int n);

struct VY_EXPORT VyListData {
    struct Data {
        std::atomic<int> ref;
        int alloc;
        int begin;
        int end;
        uint canShare : 1;
        uint reserved : 31;
        void* array[1];
    };
    static Data shared_null;
    Data* d;

    // The operations below require an owned block (d->ref == 1). Those that return void**
    // return the first new slot, which the caller fills.
    void realloc(int alloc);
    void** append(int n);
    void** append() { return append(1); }
    // Appends l's slots (the slot values themselves) to this block.
    void** append(const VyListData& l);
    // Reserves as many slots as l holds, without copying them.
    void** append2(const VyListData& l) { return append(l.d->end - l.d->begin); }
    void** prepend();
    void** insert(int i);
    void remove(int i);
    void remove(int i, int n);
    void move(int from, int to);
    void** erase(void** xi);

    // Detaching: each makes a fresh block of ref 1 for `d` and returns the old one, whose
    // count is not touched (except by detach()), for the caller to copy from and release.
    Data* detach(int alloc);
    Data* detach2();
    Data* detach3();
    // Returns the old block only when this dropped its last reference, else null.
    Data* detach();
    // A block with room for n more slots; the gap of n slots lands at *i, which is clamped to
    // 0..size. The caller copies the old elements around the gap.
    Data* detach_grow(int* i, int n);

    int size() const { return d->end - d->begin; }
    bool isEmpty() const { return d->end == d->begin; }
    void** at(int i) const { return d->array + d->begin + i; }
    void** begin() const { return d->array + d->begin; }
    void** end() const { return d->array + d->end; }
};

template <typename T> class VyList
{
    // Pointers sit in the slot; everything else is a heap copy.
    static constexpr bool inSlot = std::is_pointer<T>::value;

    struct Node {
        void* v;
        T& t()
        {
            if constexpr (inSlot)
                return *reinterpret_cast<T*>(this);
            else
                return *static_cast<T*>(v);
        }
    };

public:
    class const_iterator;
    class iterator
    {
    public:
        Node* i;
        typedef std::random_access_iterator_tag iterator_category;
        typedef ptrdiff_t difference_type;
        typedef T value_type;
        typedef T* pointer;
        typedef T& reference;
        iterator() : i(nullptr) {}
        explicit iterator(Node* n) : i(n) {}
        T& operator*() const { return i->t(); }
        T* operator->() const { return &i->t(); }
        T& operator[](difference_type j) const { return i[j].t(); }
        bool operator==(const iterator& o) const { return i == o.i; }
        bool operator!=(const iterator& o) const { return i != o.i; }
        bool operator<(const iterator& o) const { return i < o.i; }
        iterator& operator++()
        {
            ++i;
            return *this;
        }
        iterator operator++(int) { return iterator(i++); }
        iterator& operator--()
        {
            --i;
            return *this;
        }
        iterator operator--(int) { return iterator(i--); }
        iterator& operator+=(difference_type j)
        {
            i += j;
            return *this;
        }
        iterator operator+(difference_type j) const { return iterator(i + j); }
        iterator operator-(difference_type j) const { return iterator(i - j); }
        difference_type operator-(const iterator& o) const { return i - o.i; }
    };
    class const_iterator
    {
    public:
        Node* i;
        typedef std::random_access_iterator_tag iterator_category;
        typedef ptrdiff_t difference_type;
        typedef T value_type;
        typedef const T* pointer;
        typedef const T& reference;
        const_iterator() : i(nullptr) {}
        explicit const_iterator(Node* n) : i(n) {}
        const_iterator(const iterator& o) : i(o.i) {}
        const T& operator*() const { return i->t(); }
        const T* operator->() const { return &i->t(); }
        bool operator==(const const_iterator& o) const { return i == o.i; }
        bool operator!=(const const_iterator& o) const { return i != o.i; }
        const_iterator& operator++()
        {
            ++i;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(i++); }
        const_iterator& operator--()
        {
            --i;
            return *this;
        }
        const_iterator operator--(int) { return const_iterator(i--); }
        const_iterator operator+(difference_type j) const { return const_iterator(i + j); }
        difference_type operator-(const const_iterator& o) const { return i - o.i; }
    };

    VyList() { p.d = acquire(&VyListData::shared_null); }
    VyList(const VyList& l) { p.d = acquire(l.p.d); }
    VyList(VyList&& l) noexcept
    {
        p.d = l.p.d;
        l.p.d = acquire(&VyListData::shared_null);
    }
    virtual ~VyList() { release(p.d); }
    VyList& operator=(const VyList& l);
    VyList& operator=(VyList&& l) noexcept
    {
        VyListData::Data* old = p.d;
        p.d = l.p.d;
        l.p.d = old;
        return *this;
    }

    int size() const { return p.size(); }
    int count() const { return p.size(); }
    int length() const { return p.size(); }
    bool isEmpty() const { return p.isEmpty(); }

    void detach()
    {
        if (p.d->ref.load(std::memory_order_acquire) != 1)
            detach_helper(p.d->alloc);
    }
    bool isDetached() const { return p.d->ref.load(std::memory_order_acquire) == 1; }
    bool isSharedWith(const VyList& other) const { return p.d == other.p.d; }
    // Makes room for `alloc` slots in an owned block.
    void reserve(int alloc);

    const T& at(int i) const;
    T& operator[](int i);
    const T& operator[](int i) const { return at(i); }
    T value(int i) const { return (i < 0 || i >= p.size()) ? T() : node(i)->t(); }
    T value(int i, const T& defaultValue) const
    {
        return (i < 0 || i >= p.size()) ? defaultValue : node(i)->t();
    }
    T& first();
    const T& first() const { return at(0); }
    T& last();
    const T& last() const { return at(p.size() - 1); }

    void append(const T& t);
    void append(const VyList& l);
    void prepend(const T& t);
    // Inserts before position i; i < 1 prepends and i >= size appends.
    void insert(int i, const T& t);
    void replace(int i, const T& t) { (*this)[i] = t; }
    // Removals outside the list are ignored.
    void removeAt(int i);
    void removeFirst() { removeAt(0); }
    void removeLast() { removeAt(p.size() - 1); }
    int removeAll(const T& t);
    bool removeOne(const T& t);
    T takeAt(int i);
    T takeFirst() { return takeAt(0); }
    T takeLast() { return takeAt(p.size() - 1); }
    void move(int from, int to);
    void swap(int i, int j);
    void clear();

    int indexOf(const T& t, int from = 0) const;
    int lastIndexOf(const T& t, int from = -1) const;
    bool contains(const T& t) const { return indexOf(t) != -1; }
    int count(const T& t) const;
    bool startsWith(const T& t) const { return !isEmpty() && first() == t; }
    bool endsWith(const T& t) const { return !isEmpty() && last() == t; }
    // Up to `length` elements from `pos` (-1: to the end); positions are clamped.
    VyList mid(int pos, int length = -1) const;

    iterator begin()
    {
        detach();
        return iterator(reinterpret_cast<Node*>(p.begin()));
    }
    iterator end()
    {
        detach();
        return iterator(reinterpret_cast<Node*>(p.end()));
    }
    const_iterator begin() const { return const_iterator(reinterpret_cast<Node*>(p.begin())); }
    const_iterator end() const { return const_iterator(reinterpret_cast<Node*>(p.end())); }
    const_iterator constBegin() const { return begin(); }
    const_iterator constEnd() const { return end(); }
    iterator erase(iterator it);

    bool operator==(const VyList& l) const;
    bool operator!=(const VyList& l) const { return !(*this == l); }
    VyList& operator+=(const VyList& l)
    {
        append(l);
        return *this;
    }
    VyList operator+(const VyList& l) const
    {
        VyList n = *this;
        n += l;
        return n;
    }
    VyList& operator+=(const T& t)
    {
        append(t);
        return *this;
    }
    VyList& operator<<(const T& t)
    {
        append(t);
        return *this;
    }
    VyList& operator<<(const VyList& l)
    {
        append(l);
        return *this;
    }

    VyListData p;

private:
    static VyListData::Data* acquire(VyListData::Data* x)
    {
        x->ref.fetch_add(1, std::memory_order_relaxed);
        return x;
    }
    Node* node(int i) const { return reinterpret_cast<Node*>(p.at(i)); }
    static void node_construct(Node* n, const T& t)
    {
        if constexpr (inSlot)
            n->v = const_cast<void*>(static_cast<const void*>(t));
        else
            n->v = new T(t);
    }
    static void node_destruct(Node* n)
    {
        if constexpr (!inSlot)
            delete static_cast<T*>(n->v);
    }
    static void node_destruct(Node* from, Node* to)
    {
        while (from != to)
            node_destruct(--to);
    }
    // Copies [src, src + (to - from)) into [from, to); on a throw the copies made are
    // destroyed again.
    static void node_copy(Node* from, Node* to, Node* src);
    static void release(VyListData::Data* x);
    static void freeData(VyListData::Data* x);
    void detach_helper(int alloc);
    Node* detachGrowHelper(int i, int n);
};

template <typename T> void VyList<T>::node_copy(Node* from, Node* to, Node* src)
{
    Node* current = from;
    try {
        for (; current != to; ++current, ++src)
            node_construct(current, src->t());
    } catch (...) {
        node_destruct(from, current);
        throw;
    }
}

template <typename T> void VyList<T>::release(VyListData::Data* x)
{
    // The empty list's static block never reaches zero; the second test says so to the
    // optimiser, which otherwise warns of a free of a static object after inlining.
    if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1 && x != &VyListData::shared_null)
        freeData(x);
}

template <typename T> void VyList<T>::freeData(VyListData::Data* x)
{
    node_destruct(reinterpret_cast<Node*>(x->array + x->begin),
                  reinterpret_cast<Node*>(x->array + x->end));
    ::free(x);
}

template <typename T> VyList<T>& VyList<T>::operator=(const VyList& l)
{
    VyListData::Data* x = acquire(l.p.d);
    release(p.d);
    p.d = x;
    return *this;
}

template <typename T> void VyList<T>::detach_helper(int alloc)
{
    Node* src = reinterpret_cast<Node*>(p.begin());
    VyListData::Data* x = p.detach(alloc);
    try {
        node_copy(reinterpret_cast<Node*>(p.begin()), reinterpret_cast<Node*>(p.end()), src);
    } catch (...) {
        ::free(p.d);
        p.d = x;
        throw;
    }
    release(x);
}

template <typename T> typename VyList<T>::Node* VyList<T>::detachGrowHelper(int i, int n)
{
    Node* src = reinterpret_cast<Node*>(p.begin());
    VyListData::Data* x = p.detach_grow(&i, n);
    Node* b = reinterpret_cast<Node*>(p.begin());
    try {
        node_copy(b, b + i, src);
    } catch (...) {
        ::free(p.d);
        p.d = x;
        throw;
    }
    try {
        node_copy(b + i + n, reinterpret_cast<Node*>(p.end()), src + i);
    } catch (...) {
        node_destruct(b, b + i);
        ::free(p.d);
        p.d = x;
        throw;
    }
    release(x);
    return b + i;
}

template <typename T> void VyList<T>::reserve(int alloc)
{
    if (p.d->alloc < alloc) {
        if (p.d->ref.load(std::memory_order_acquire) != 1)
            detach_helper(alloc);
        else
            p.realloc(alloc);
    }
}

template <typename T> const T& VyList<T>::at(int i) const
{
    VY_ASSERT_SITE(i >= 0 && i < p.size(), VyAssertSites::listAt);
    return node(i)->t();
}

template <typename T> T& VyList<T>::operator[](int i)
{
    VY_ASSERT_SITE(i >= 0 && i < p.size(), VyAssertSites::listIndex);
    detach();
    return node(i)->t();
}

template <typename T> T& VyList<T>::first()
{
    VY_ASSERT_SITE(!isEmpty(), VyAssertSites::listFirst);
    detach();
    return node(0)->t();
}

template <typename T> T& VyList<T>::last()
{
    VY_ASSERT_SITE(!isEmpty(), VyAssertSites::listLast);
    detach();
    return node(p.size() - 1)->t();
}

template <typename T> void VyList<T>::append(const T& t)
{
    VyListData::Data* x = p.d;
    if (x->ref.load(std::memory_order_acquire) == 1) {
        // Room at the back needs no call into the block's out-of-line growth.
        if constexpr (inSlot) {
            // The value may be one of our own slots, which append() can move.
            const T copy = t;
            const int e = x->end;
            if (e < x->alloc) {
                node_construct(reinterpret_cast<Node*>(x->array + e), copy);
                x->end = e + 1;
            } else {
                node_construct(reinterpret_cast<Node*>(p.append()), copy);
            }
        } else {
            Node* n = reinterpret_cast<Node*>(x->end < x->alloc ? x->array + x->end++ : p.append());
            try {
                node_construct(n, t);
            } catch (...) {
                --p.d->end;
                throw;
            }
        }
    } else {
        // The value may live in the block we are leaving.
        const T copy = t;
        Node* n = detachGrowHelper(INT_MAX, 1);
        try {
            node_construct(n, copy);
        } catch (...) {
            --p.d->end;
            throw;
        }
    }
}

template <typename T> void VyList<T>::prepend(const T& t)
{
    const T copy = t;
    VyListData::Data* x = p.d;
    Node* n;
    if (x->ref.load(std::memory_order_acquire) != 1)
        n = detachGrowHelper(0, 1);
    else if (x->begin > 0)
        n = reinterpret_cast<Node*>(x->array + --x->begin);
    else
        n = reinterpret_cast<Node*>(p.prepend());
    try {
        node_construct(n, copy);
    } catch (...) {
        ++p.d->begin;
        throw;
    }
}

template <typename T> void VyList<T>::insert(int i, const T& t)
{
    const T copy = t;
    if (p.d->ref.load(std::memory_order_acquire) == 1) {
        Node* n = reinterpret_cast<Node*>(p.insert(i));
        try {
            node_construct(n, copy);
        } catch (...) {
            p.remove(int(reinterpret_cast<void**>(n) - p.begin()));
            throw;
        }
    } else {
        Node* n = detachGrowHelper(i, 1);
        try {
            node_construct(n, copy);
        } catch (...) {
            p.remove(int(reinterpret_cast<void**>(n) - p.begin()));
            throw;
        }
    }
}

template <typename T> void VyList<T>::append(const VyList& l)
{
    if (l.isEmpty())
        return;
    if (isEmpty()) {
        *this = l;
        return;
    }
    // Holding a reference keeps l's elements alive when l is this list.
    const VyList other(l);
    const int n = other.size();
    Node* dst = p.d->ref.load(std::memory_order_acquire) == 1
                    ? reinterpret_cast<Node*>(p.append2(other.p))
                    : detachGrowHelper(INT_MAX, n);
    try {
        node_copy(dst, dst + n, reinterpret_cast<Node*>(other.p.begin()));
    } catch (...) {
        p.d->end -= n;
        throw;
    }
}

template <typename T> void VyList<T>::removeAt(int i)
{
    if (i < 0 || i >= p.size())
        return;
    detach();
    node_destruct(node(i));
    p.remove(i);
}

template <typename T> T VyList<T>::takeAt(int i)
{
    T t = at(i);
    removeAt(i);
    return t;
}

template <typename T> int VyList<T>::removeAll(const T& t)
{
    int index = indexOf(t);
    if (index == -1)
        return 0;
    // The value may be one of the elements about to go.
    const T copy = t;
    detach();
    Node* b = reinterpret_cast<Node*>(p.begin());
    Node* e = reinterpret_cast<Node*>(p.end());
    Node* out = b + index;
    for (Node* in = out; in != e; ++in) {
        if (in->t() == copy)
            node_destruct(in);
        else
            *out++ = *in;
    }
    const int removed = int(e - out);
    p.d->end -= removed;
    return removed;
}

template <typename T> bool VyList<T>::removeOne(const T& t)
{
    const int index = indexOf(t);
    if (index == -1)
        return false;
    removeAt(index);
    return true;
}

template <typename T> void VyList<T>::move(int from, int to)
{
    if (from < 0 || from >= p.size() || to < 0 || to >= p.size())
        return;
    detach();
    p.move(from, to);
}

template <typename T> void VyList<T>::swap(int i, int j)
{
    if (i < 0 || i >= p.size() || j < 0 || j >= p.size())
        return;
    detach();
    void* t = *p.at(i);
    *p.at(i) = *p.at(j);
    *p.at(j) = t;
}

template <typename T> void VyList<T>::clear()
{
    VyListData::Data* x = acquire(&VyListData::shared_null);
    release(p.d);
    p.d = x;
}

template <typename T> int VyList<T>::indexOf(const T& t, int from) const
{
    const int n = p.size();
    if (from < 0)
        from = from + n < 0 ? 0 : from + n;
    for (int i = from; i < n; ++i)
        if (node(i)->t() == t)
            return i;
    return -1;
}

template <typename T> int VyList<T>::lastIndexOf(const T& t, int from) const
{
    const int n = p.size();
    if (from < 0)
        from += n;
    else if (from >= n)
        from = n - 1;
    for (int i = from; i >= 0; --i)
        if (node(i)->t() == t)
            return i;
    return -1;
}

template <typename T> int VyList<T>::count(const T& t) const
{
    int c = 0;
    for (int i = 0; i < p.size(); ++i)
        if (node(i)->t() == t)
            ++c;
    return c;
}

template <typename T> VyList<T> VyList<T>::mid(int pos, int length) const
{
    const int n = p.size();
    if (pos < 0) {
        if (length >= 0)
            length = length + pos < 0 ? 0 : length + pos;
        pos = 0;
    }
    if (pos > n)
        pos = n;
    if (length < 0 || length > n - pos)
        length = n - pos;
    if (pos == 0 && length == n)
        return *this;
    VyList result;
    if (length <= 0)
        return result;
    result.reserve(length);
    for (int i = pos; i < pos + length; ++i)
        result.append(node(i)->t());
    return result;
}

template <typename T> typename VyList<T>::iterator VyList<T>::erase(iterator it)
{
    // Iterators refer to an owned block: begin()/end() detached it.
    node_destruct(it.i);
    return iterator(reinterpret_cast<Node*>(p.erase(reinterpret_cast<void**>(it.i))));
}

template <typename T> bool VyList<T>::operator==(const VyList& l) const
{
    if (p.d == l.p.d)
        return true;
    if (p.size() != l.p.size())
        return false;
    for (int i = 0; i < p.size(); ++i)
        if (!(node(i)->t() == l.node(i)->t()))
            return false;
    return true;
}

#endif
