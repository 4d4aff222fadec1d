// VyBitArray: a packed array of bits.
//
// The bits live in a `VyVector<unsigned char>` of (size + 7) / 8 bytes, so copies share the
// bytes and every mutator detaches them first when shared. Bit i is bit i & 7 (least
// significant first) of byte i >> 3. The bits of the last byte beyond `size` may hold
// anything (a fill sets them too); every reading operation masks them out.
//
// Threads: the byte vector's count is atomic, so copies may live on different threads; a given
// bit array object belongs to one thread at a time.
#ifndef VYBITARRAY_H
#define VYBITARRAY_H

#include "vyglobal.h"

#include "vyvector.h"

class VY_EXPORT VyBitArray
{
public:
    VyBitArray() : size(0) {}
    // `size` bits, every byte 0xFF or 0x00. A negative size counts as 0.
    VyBitArray(int size, bool value);

    // False for i outside 0 to size - 1.
    bool isSet(int i) const
    {
        return i >= 0 && i < size && ((d.constData()[i >> 3] >> (i & 7)) & 1) != 0;
    }
    // Both ignore i outside 0 to size - 1, and detach otherwise.
    void setBit(int i)
    {
        if (i >= 0 && i < size)
            d.data()[i >> 3] |= (unsigned char)(1 << (i & 7));
    }
    void clearBit(int i)
    {
        if (i >= 0 && i < size)
            d.data()[i >> 3] &= (unsigned char)~(1 << (i & 7));
    }
    // Resizes to `size` bits (negative counts as 0) and sets every byte to 0xFF or 0x00.
    void fill(int size, bool value);

    // True for an empty array.
    bool allSet() const;
    bool allCleared() const;

    // Writes min(bits, size) bits to `out` (all of them when `bits` is negative): whole bytes
    // are copied; in a final partial byte only the low bits are replaced and the high bits of
    // `out` are kept.
    void toRawBytes(unsigned char* out, int bits) const;
    // Takes `bits` bits (negative counts as 0) from (bits + 7) / 8 bytes of `in` and clears
    // the stored bits beyond the count. `in` may point into this array.
    void fromRawBytes(const unsigned char* in, int bits);

    // Combine over the shorter of the two bit counts; see the note in the source. The size
    // stays, and bits of this array beyond the shorter count are unchanged.
    VyBitArray& operator&=(const VyBitArray& other);
    VyBitArray& operator|=(const VyBitArray& other);
    VyBitArray& operator^=(const VyBitArray& other);

    // (size + 7) / 8 bytes; public so tools and tests can read the raw bytes.
    VyVector<unsigned char> d;
    // Number of bits.
    int size;
};

// Equal bit counts and equal bits; the bits beyond the count are not compared.
VY_EXPORT bool operator==(const VyBitArray& a, const VyBitArray& b);
inline bool operator!=(const VyBitArray& a, const VyBitArray& b)
{
    return !(a == b);
}

// An array as long as the longer operand. Only the bytes both operands have are combined;
// every further byte is 0 for all three operators (see the note in the source).
VY_EXPORT VyBitArray operator&(const VyBitArray& a, const VyBitArray& b);
VY_EXPORT VyBitArray operator|(const VyBitArray& a, const VyBitArray& b);
VY_EXPORT VyBitArray operator^(const VyBitArray& a, const VyBitArray& b);

#endif
