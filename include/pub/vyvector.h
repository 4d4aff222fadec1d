// VyVector<T>: an implicitly shared, contiguous array.
//
// A vector holds one pointer `d` to a reference-counted block: a 16-byte header (count,
// capacity, size, flags) followed by the elements. Copies share the block in O(1); every
// mutating member detaches first when the block is shared. Empty vectors point at the static
// `VyVectorData::shared_null`, which is never freed. The reference count is atomic, so copies
// of one vector may live on different threads; a given vector object belongs to one thread at
// a time.
//
// Capacities follow one allocation rule (8-byte steps below 64 bytes, powers of two above) and
// are counted with the 32-bit block layout on every host, so a framework sees the same
// capacities on x86-64 as on the ARM target; only the bytes allocated follow the host.
#ifndef VYVECTOR_H
#define VYVECTOR_H

#include "vyglobal.h"

#include <atomic>
#include <new>
#include <stddef.h>
#include <string.h>
#include <type_traits>

struct VY_EXPORT VyVectorData {
    std::atomic<int> ref;
    int alloc;
    int size;
    uint canShare : 1;
    // Set when the capacity was reserved explicitly; such a block never shrinks on resize.
    uint fixedCapacity : 1;
    uint reserved : 30;

    static VyVectorData shared_null;

    // Capacity in elements for at least `count` elements. `generous` gives count + count / 2;
    // otherwise the common allocation rule over header + count * elementSize bytes, where the
    // header is typedHeaderSize - elementSize.
    static int grow(int typedHeaderSize, int count, int elementSize, bool generous);
    // malloc below an alignment of 9; above, over-allocates and keeps the raw pointer in the
    // word before the returned block. Returns null when the allocation fails.
    static VyVectorData* allocate(int size, int alignment);
    // Moves the block of oldSize bytes to newSize bytes, keeping the first min(oldSize,
    // newSize) bytes, also when an alignment of 9 or more puts the block at another offset
    // from malloc's address. Returns null when the allocation fails; `old` then stays.
    static VyVectorData* reallocate(VyVectorData* old, int newSize, int oldSize, int alignment);
    static void freeData(VyVectorData* x, int alignment);
    // Allocates typedHeaderSize + (count - 1) * elementSize bytes and copies the header and
    // min(count, init->alloc) elements of `init`.
    static VyVectorData* malloc(int typedHeaderSize, int count, int elementSize,
                                VyVectorData* init);
};
static_assert(sizeof(VyVectorData) == 16, "the vector header is four 32-bit words");

// The size an element has on the 32-bit target. Capacities are computed with it so every host
// gives the target's numbers; pointer-sized scalars count as 4 bytes.
template <typename T> struct VyTargetSize {
    static constexpr int value =
        (std::is_pointer<T>::value || std::is_member_pointer<T>::value ||
         std::is_same<T, long>::value || std::is_same<T, unsigned long>::value)
            ? 4
            : int(sizeof(T));
};

template <typename T> class VyVector
{
public:
    typedef T* iterator;
    typedef const T* const_iterator;
    typedef T value_type;

    VyVector() : d(&VyVectorData::shared_null) { d->ref.fetch_add(1); }
    explicit VyVector(int size);
    VyVector(int size, const T& t);
    VyVector(const VyVector& v) : d(v.d) { d->ref.fetch_add(1); }
    VyVector(VyVector&& v) noexcept : d(v.d)
    {
        v.d = &VyVectorData::shared_null;
        v.d->ref.fetch_add(1);
    }
    ~VyVector() { release(d); }
    VyVector& operator=(const VyVector& v);
    VyVector& operator=(VyVector&& v) noexcept
    {
        VyVectorData* old = d;
        d = v.d;
        v.d = old;
        return *this;
    }

    int size() const { return d->size; }
    int count() const { return d->size; }
    int capacity() const { return d->alloc; }
    bool isEmpty() const { return d->size == 0; }

    void detach()
    {
        if (d->ref.load(std::memory_order_acquire) != 1)
            realloc(d->size, d->alloc);
    }
    bool isDetached() const { return d->ref.load(std::memory_order_acquire) == 1; }
    bool isSharedWith(const VyVector& other) const { return d == other.d; }

    T* data()
    {
        detach();
        return arr();
    }
    const T* data() const { return arr(); }
    const T* constData() const { return arr(); }

    const T& at(int i) const { return (*this)[i]; }
    T& operator[](int i);
    const T& operator[](int i) const;
    T value(int i) const { return (i < 0 || i >= d->size) ? T() : arr()[i]; }
    T value(int i, const T& defaultValue) const
    {
        return (i < 0 || i >= d->size) ? defaultValue : arr()[i];
    }

    T& first() { return (*this)[0]; }
    const T& first() const { return (*this)[0]; }
    T& last();
    const T& last() const { return (*this)[d->size - 1]; }

    void append(const T& t);
    void prepend(const T& t) { insert(0, t); }
    // Inserts `t` before position i (clamped to 0..size). Safe with an element of this vector.
    void insert(int i, const T& t) { insert(i, 1, t); }
    void insert(int i, int n, const T& t);
    void replace(int i, const T& t) { (*this)[i] = t; }
    void remove(int i);
    // Removes up to n elements from i; positions outside the vector are ignored.
    void remove(int i, int n);
    void removeFirst() { remove(0); }
    void removeLast() { remove(d->size - 1); }

    // Grows to the allocation rule's capacity, or shrinks when asize falls below both the size
    // and half the capacity (unless the capacity was reserved).
    void resize(int asize);
    // Reserves room for asize elements and keeps that capacity from shrinking.
    void reserve(int asize);
    // Shrinks the capacity to the size and lifts a reservation.
    void squeeze()
    {
        realloc(d->size, d->size);
        d->fixedCapacity = 0;
    }
    void clear();
    VyVector& fill(const T& t, int size = -1);

    int indexOf(const T& t, int from = 0) const;
    int lastIndexOf(const T& t, int from = -1) const;
    bool contains(const T& t) const { return indexOf(t) != -1; }
    int count(const T& t) const;

    iterator begin()
    {
        detach();
        return arr();
    }
    iterator end()
    {
        detach();
        return arr() + d->size;
    }
    const_iterator begin() const { return arr(); }
    const_iterator end() const { return arr() + d->size; }
    const_iterator constBegin() const { return arr(); }
    const_iterator constEnd() const { return arr() + d->size; }

    bool operator==(const VyVector& v) const;
    bool operator!=(const VyVector& v) const { return !(*this == v); }
    VyVector& operator+=(const VyVector& v);
    VyVector operator+(const VyVector& v) const
    {
        VyVector n = *this;
        n += v;
        return n;
    }
    VyVector& operator+=(const T& t)
    {
        append(t);
        return *this;
    }
    VyVector& operator<<(const T& t)
    {
        append(t);
        return *this;
    }

    // Moves the elements to an owned block of capacity aalloc holding asize elements: copies
    // when shared, reallocates in place when owned and trivially copyable, destroys excess
    // elements from the back and value-initialises new ones. Requires asize <= aalloc.
    void realloc(int asize, int aalloc);

    // The shared block; public so tools and tests can read the header.
    VyVectorData* d;

private:
    // Elements start right after the 16-byte header.
    static constexpr int elementOffset = int(sizeof(VyVectorData));
    static_assert(alignof(T) <= 16, "elements follow a 16-byte header");
    // Over-aligned element types use the aligned allocators.
    static constexpr int alignment = int(alignof(T));
    static constexpr bool relocatable = std::is_trivially_copyable<T>::value;
    static constexpr int typedHeaderSize = elementOffset + VyTargetSize<T>::value;

    T* arr() const { return reinterpret_cast<T*>(reinterpret_cast<char*>(d) + elementOffset); }
    static T* arrOf(VyVectorData* x)
    {
        return reinterpret_cast<T*>(reinterpret_cast<char*>(x) + elementOffset);
    }
    static int bytesFor(int n) { return elementOffset + n * int(sizeof(T)); }
    static int growTo(int n)
    {
        return VyVectorData::grow(typedHeaderSize, n, VyTargetSize<T>::value, false);
    }

    static void release(VyVectorData* x);
    static void free(VyVectorData* x);
};

// Both sized constructors delegate to the default one, so a throwing element constructor
// still runs the destructor over the elements made so far.
template <typename T> VyVector<T>::VyVector(int asize) : VyVector()
{
    if (asize > 0)
        realloc(asize, asize);
}

template <typename T> VyVector<T>::VyVector(int asize, const T& t) : VyVector()
{
    if (asize <= 0)
        return;
    realloc(0, asize);
    while (d->size < asize) {
        new (arr() + d->size) T(t);
        ++d->size;
    }
}

template <typename T> VyVector<T>& VyVector<T>::operator=(const VyVector& v)
{
    VyVectorData* x = v.d;
    x->ref.fetch_add(1);
    release(d);
    d = x;
    return *this;
}

template <typename T> void VyVector<T>::release(VyVectorData* x)
{
    if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
        free(x);
}

template <typename T> void VyVector<T>::free(VyVectorData* x)
{
    if (!std::is_trivially_destructible<T>::value) {
        T* b = arrOf(x);
        T* i = b + x->size;
        while (i-- != b)
            i->~T();
    }
    VyVectorData::freeData(x, alignment);
}

template <typename T> void VyVector<T>::realloc(int asize, int aalloc)
{
    VY_ASSERT_SITE(asize <= aalloc, VyAssertSites::vectorRealloc);
    VyVectorData* x = d;
    const bool owned = d->ref.load(std::memory_order_acquire) == 1;
    // An owned block loses its excess elements first, from the back.
    if (!std::is_trivially_destructible<T>::value && asize < d->size && owned) {
        T* i = arr() + d->size;
        while (asize < d->size) {
            (--i)->~T();
            --d->size;
        }
    }
    if (aalloc != d->alloc || !owned) {
        if (relocatable && owned) {
            x = VyVectorData::reallocate(d, bytesFor(aalloc), bytesFor(d->alloc), alignment);
            if (!x)
                throw std::bad_alloc();
            d = x;
        } else {
            x = VyVectorData::allocate(bytesFor(aalloc), alignment);
            if (!x)
                throw std::bad_alloc();
            x->size = 0;
        }
        x->ref.store(1);
        x->alloc = aalloc;
        x->canShare = 1;
        x->fixedCapacity = d->fixedCapacity;
        x->reserved = 0;
    }
    T* dst = arrOf(x);
    if (x != d) {
        const int copy = asize < d->size ? asize : d->size;
        if (relocatable) {
            if (copy > 0)
                memcpy(static_cast<void*>(dst), arr(), size_t(copy) * sizeof(T));
            x->size = copy;
        } else {
            const T* src = arr();
            try {
                while (x->size < copy) {
                    new (dst + x->size) T(src[x->size]);
                    ++x->size;
                }
            } catch (...) {
                free(x);
                throw;
            }
        }
    }
    try {
        while (x->size < asize) {
            new (dst + x->size) T();
            ++x->size;
        }
    } catch (...) {
        if (x != d)
            free(x);
        throw;
    }
    x->size = asize;
    if (x != d) {
        release(d);
        d = x;
    }
}

template <typename T> T& VyVector<T>::operator[](int i)
{
    VY_ASSERT_SITE(i >= 0 && i < d->size, VyAssertSites::vectorIndex);
    return data()[i];
}

template <typename T> const T& VyVector<T>::operator[](int i) const
{
    VY_ASSERT_SITE(i >= 0 && i < d->size, VyAssertSites::vectorIndexConst);
    return arr()[i];
}

template <typename T> T& VyVector<T>::last()
{
    VY_ASSERT_SITE(!isEmpty(), VyAssertSites::vectorLast);
    return data()[d->size - 1];
}

template <typename T> void VyVector<T>::append(const T& t)
{
    VyVectorData* x = d;
    if (x->ref.load(std::memory_order_acquire) == 1) {
        const int s = x->size;
        if (s < x->alloc) {
            new (arrOf(x) + s) T(t);
            x->size = s + 1;
            return;
        }
    }
    // The value may live in this very block, so it is copied before the block moves.
    const T copy(t);
    realloc(d->size, growTo(d->size + 1));
    new (arr() + d->size) T(copy);
    ++d->size;
}

template <typename T> void VyVector<T>::insert(int i, int n, const T& t)
{
    if (n <= 0)
        return;
    if (i < 0)
        i = 0;
    if (i > d->size)
        i = d->size;
    const T copy(t);
    const int oldSize = d->size;
    if (d->ref.load(std::memory_order_acquire) != 1 || oldSize + n > d->alloc)
        realloc(oldSize, growTo(oldSize + n));
    T* b = arr();
    if (relocatable) {
        memmove(static_cast<void*>(b + i + n), b + i, size_t(oldSize - i) * sizeof(T));
        for (int k = 0; k < n; ++k)
            new (b + i + k) T(copy);
        d->size += n;
    } else {
        // Grow at the end with copies, shift the tail up by assignment, then fill the gap.
        for (int k = 0; k < n; ++k) {
            new (b + d->size) T(copy);
            ++d->size;
        }
        for (int k = oldSize - 1; k >= i; --k)
            b[k + n] = b[k];
        for (int k = i; k < i + n; ++k)
            b[k] = copy;
    }
}

template <typename T> void VyVector<T>::remove(int i)
{
    VY_ASSERT_SITE(i >= 0 && i < d->size, VyAssertSites::vectorRemove);
    remove(i, 1);
}

template <typename T> void VyVector<T>::remove(int i, int n)
{
    if (i < 0) {
        n += i;
        i = 0;
    }
    if (n > d->size - i)
        n = d->size - i;
    if (n <= 0)
        return;
    detach();
    T* b = arr();
    if (relocatable) {
        memmove(static_cast<void*>(b + i), b + i + n, size_t(d->size - i - n) * sizeof(T));
    } else {
        for (int k = i; k + n < d->size; ++k)
            b[k] = b[k + n];
        for (int k = d->size - n; k < d->size; ++k)
            b[k].~T();
    }
    d->size -= n;
}

template <typename T> void VyVector<T>::resize(int asize)
{
    if (asize < 0)
        asize = 0;
    if (asize > d->alloc || (!d->fixedCapacity && asize < d->size && asize < d->alloc / 2))
        realloc(asize, growTo(asize));
    else
        realloc(asize, d->alloc);
}

template <typename T> void VyVector<T>::reserve(int asize)
{
    if (asize <= 0 && d->size == 0)
        return;
    if (asize > d->alloc)
        realloc(d->size, asize);
    else
        detach();
    d->fixedCapacity = 1;
}

template <typename T> void VyVector<T>::clear()
{
    VyVectorData* x = &VyVectorData::shared_null;
    x->ref.fetch_add(1);
    release(d);
    d = x;
}

template <typename T> VyVector<T>& VyVector<T>::fill(const T& from, int asize)
{
    const T copy(from);
    resize(asize < 0 ? d->size : asize);
    T* b = data();
    for (int i = 0; i < d->size; ++i)
        b[i] = copy;
    return *this;
}

template <typename T> int VyVector<T>::indexOf(const T& t, int from) const
{
    if (from < 0)
        from = from + d->size < 0 ? 0 : from + d->size;
    const T* b = arr();
    for (int i = from; i < d->size; ++i)
        if (b[i] == t)
            return i;
    return -1;
}

template <typename T> int VyVector<T>::lastIndexOf(const T& t, int from) const
{
    if (from < 0)
        from += d->size;
    else if (from >= d->size)
        from = d->size - 1;
    const T* b = arr();
    for (int i = from; i >= 0; --i)
        if (b[i] == t)
            return i;
    return -1;
}

template <typename T> int VyVector<T>::count(const T& t) const
{
    int c = 0;
    const T* b = arr();
    for (int i = 0; i < d->size; ++i)
        if (b[i] == t)
            ++c;
    return c;
}

template <typename T> bool VyVector<T>::operator==(const VyVector& v) const
{
    if (d == v.d)
        return true;
    if (d->size != v.d->size)
        return false;
    const T* a = arr();
    const T* b = v.arr();
    for (int i = 0; i < d->size; ++i)
        if (!(a[i] == b[i]))
            return false;
    return true;
}

template <typename T> VyVector<T>& VyVector<T>::operator+=(const VyVector& v)
{
    // Holding a reference keeps v's elements alive when v is this vector.
    const VyVector other(v);
    const int newSize = d->size + other.d->size;
    if (d->ref.load(std::memory_order_acquire) != 1 || newSize > d->alloc)
        realloc(d->size, growTo(newSize));
    T* b = arr();
    const T* src = other.arr();
    const int n = other.d->size;
    for (int k = 0; k < n; ++k) {
        new (b + d->size) T(src[k]);
        ++d->size;
    }
    return *this;
}

#endif
