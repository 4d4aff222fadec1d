#include "vybitarray.h"

#include <string.h>

namespace
{

int bytesFor(int bits)
{
    return (bits + 7) >> 3;
}

// The low n & 7 bits of a byte: the valid bits of a partial last byte.
unsigned char lowMask(int n)
{
    return (unsigned char)(~(0xFF << (n & 7)) & 0xFF);
}

struct And {
    unsigned char operator()(unsigned char a, unsigned char b) const { return a & b; }
};
struct Or {
    unsigned char operator()(unsigned char a, unsigned char b) const { return a | b; }
};
struct Xor {
    unsigned char operator()(unsigned char a, unsigned char b) const { return a ^ b; }
};

// Kept: a compound operator combines only the first min(size, other.size) bits and leaves the
// rest of this array as it was, so `&=` with a shorter array does not clear the tail, and the
// size never changes. Masks the framework has stored were built under this rule, so it stays
// bit for bit.
template <typename Op> void combineInto(VyBitArray& a, const VyBitArray& b, Op op)
{
    const int n = a.size < b.size ? a.size : b.size;
    if (n <= 0)
        return;
    unsigned char* p = a.d.data();
    const unsigned char* q = b.d.constData();
    const int whole = n >> 3;
    for (int i = 0; i < whole; ++i)
        p[i] = op(p[i], q[i]);
    if (n & 7) {
        const unsigned char m = lowMask(n);
        p[whole] = (unsigned char)((p[whole] & ~m) | (op(p[whole], q[whole]) & m));
    }
}

// Kept: the result is as long as the longer operand, but only the bytes both operands have are
// combined (whole, including whatever the shorter one holds beyond its count in its last
// byte); every further byte is 0. So `|` and `^` do not carry over the longer operand's extra
// bits, exactly like `&`. The framework relies on the tail of such a result being clear
// whatever the operator.
template <typename Op> VyBitArray combined(const VyBitArray& a, const VyBitArray& b, Op op)
{
    VyBitArray r(a.size > b.size ? a.size : b.size, false);
    const int common = a.d.size() < b.d.size() ? a.d.size() : b.d.size();
    if (common > 0) {
        unsigned char* p = r.d.data();
        const unsigned char* x = a.d.constData();
        const unsigned char* y = b.d.constData();
        for (int i = 0; i < common; ++i)
            p[i] = op(x[i], y[i]);
    }
    return r;
}

} // namespace

VyBitArray::VyBitArray(int bits, bool value) : size(0)
{
    fill(bits, value);
}

void VyBitArray::fill(int bits, bool value)
{
    size = bits < 0 ? 0 : bits;
    d.resize(bytesFor(size));
    if (size > 0)
        memset(d.data(), value ? 0xFF : 0x00, size_t(d.size()));
}

bool VyBitArray::allSet() const
{
    const unsigned char* p = d.constData();
    const int whole = size >> 3;
    for (int i = 0; i < whole; ++i)
        if (p[i] != 0xFF)
            return false;
    const unsigned char m = lowMask(size);
    return !(size & 7) || (p[whole] & m) == m;
}

bool VyBitArray::allCleared() const
{
    const unsigned char* p = d.constData();
    const int whole = size >> 3;
    for (int i = 0; i < whole; ++i)
        if (p[i] != 0)
            return false;
    return !(size & 7) || (p[whole] & lowMask(size)) == 0;
}

bool operator==(const VyBitArray& a, const VyBitArray& b)
{
    if (a.size != b.size)
        return false;
    const int whole = a.size >> 3;
    const unsigned char* p = a.d.constData();
    const unsigned char* q = b.d.constData();
    if (whole > 0 && memcmp(p, q, size_t(whole)) != 0)
        return false;
    return !(a.size & 7) || ((p[whole] ^ q[whole]) & lowMask(a.size)) == 0;
}

void VyBitArray::toRawBytes(unsigned char* out, int bits) const
{
    const int n = (bits < 0 || bits > size) ? size : bits;
    const int whole = n >> 3;
    const unsigned char* p = d.constData();
    if (whole > 0)
        memcpy(out, p, size_t(whole));
    if (n & 7) {
        const unsigned char m = lowMask(n);
        out[whole] = (unsigned char)((out[whole] & ~m) | (p[whole] & m));
    }
}

void VyBitArray::fromRawBytes(const unsigned char* in, int bits)
{
    // A fresh vector, so `in` stays readable even when it points into this array.
    const int n = bits < 0 ? 0 : bits;
    VyVector<unsigned char> bytes(bytesFor(n));
    if (n > 0) {
        unsigned char* p = bytes.data();
        memcpy(p, in, size_t(bytes.size()));
        if (n & 7)
            p[n >> 3] &= lowMask(n);
    }
    d = bytes;
    size = n;
}

VyBitArray& VyBitArray::operator&=(const VyBitArray& other)
{
    combineInto(*this, other, And());
    return *this;
}

VyBitArray& VyBitArray::operator|=(const VyBitArray& other)
{
    combineInto(*this, other, Or());
    return *this;
}

VyBitArray& VyBitArray::operator^=(const VyBitArray& other)
{
    combineInto(*this, other, Xor());
    return *this;
}

VyBitArray operator&(const VyBitArray& a, const VyBitArray& b)
{
    return combined(a, b, And());
}
VyBitArray operator|(const VyBitArray& a, const VyBitArray& b)
{
    return combined(a, b, Or());
}
VyBitArray operator^(const VyBitArray& a, const VyBitArray& b)
{
    return combined(a, b, Xor());
}
