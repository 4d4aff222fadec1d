// VyUnitBuffer: a growable run of UTF-16 units with room for 64 on the stack, for text that is
// built or held unit by unit before it becomes one string: number text, sprintf's output, and
// a private copy of units that lie in a buffer about to change. Short runs never allocate.
//
// The buffer refuses to grow beyond its limit (a string's INT_MAX - 1 units unless the owner
// sets a lower one) and throws std::bad_alloc instead. Not copyable; one thread at a time.
#ifndef VYUNITBUFFER_H
#define VYUNITBUFFER_H

#include "vyglobal.h"
#include "vystring.h"

#include <limits.h>
#include <new>
#include <stdlib.h>
#include <string.h>

class VyUnitBuffer
{
public:
    explicit VyUnitBuffer(int limit = INT_MAX - 1)
        : p_(inline_), size_(0), capacity_(kInline), limit_(limit)
    {
    }
    ~VyUnitBuffer()
    {
        if (p_ != inline_)
            free(p_);
    }
    VyUnitBuffer(const VyUnitBuffer&) = delete;
    VyUnitBuffer& operator=(const VyUnitBuffer&) = delete;

    int size() const { return size_; }
    const VyUcs2* units() const { return p_; }
    VyUcs2 operator[](int i) const { return p_[i]; }

    void append(VyUcs2 u)
    {
        if (size_ == capacity_)
            reserve(size_ + 1);
        p_[size_++] = u;
    }
    // `count` copies of `u`; nothing when count <= 0.
    void append(VyUcs2 u, long long count) { insert(size_, u, count); }
    void append(const VyUcs2* u, int n)
    {
        if (n <= 0)
            return;
        reserve((long long)size_ + n);
        memcpy(p_ + size_, u, size_t(n) * sizeof(VyUcs2));
        size_ += n;
    }
    void append(const VyString& s) { append(s.unicode(), s.size()); }
    // ASCII text up to its terminating 0, one unit per byte.
    void append(const char* ascii)
    {
        while (*ascii)
            append(VyUcs2(static_cast<unsigned char>(*ascii++)));
    }
    // `n` bytes of UTF-8, decoded as VyString::utf8ToUcs2 does.
    void appendUtf8(const char* bytes, int n)
    {
        if (n <= 0)
            return;
        reserve((long long)size_ + n);
        size_ += VyString::utf8ToUcs2(p_ + size_, bytes, n);
    }
    // Inserts `count` copies of `u` before position `pos`; nothing when count <= 0.
    void insert(int pos, VyUcs2 u, long long count = 1)
    {
        if (count <= 0)
            return;
        reserve(size_ + count);
        if (pos < size_)
            memmove(p_ + pos + count, p_ + pos, size_t(size_ - pos) * sizeof(VyUcs2));
        for (VyUcs2 *q = p_ + pos, *e = q + count; q != e; ++q)
            *q = u;
        size_ += int(count);
    }
    void assign(const VyString& s)
    {
        size_ = 0;
        append(s);
    }
    VyString toString() const { return VyString(p_, size_); }

private:
    static constexpr int kInline = 64;

    // Room for `n` units: at least double the old room, or exactly `n` where doubling would
    // pass the limit.
    void reserve(long long n)
    {
        if (n <= capacity_)
            return;
        if (n > limit_)
            throw std::bad_alloc();
        long long capacity = 2 * (long long)capacity_ > n ? 2 * (long long)capacity_ : n;
        if (capacity > limit_)
            capacity = n;
        VyUcs2* q = static_cast<VyUcs2*>(malloc(size_t(capacity) * sizeof(VyUcs2)));
        if (!q)
            throw std::bad_alloc();
        memcpy(q, p_, size_t(size_) * sizeof(VyUcs2));
        if (p_ != inline_)
            free(p_);
        p_ = q;
        capacity_ = int(capacity);
    }

    VyUcs2* p_;
    int size_;
    int capacity_;
    int limit_;
    VyUcs2 inline_[kInline];
};

#endif
