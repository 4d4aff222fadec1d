// VyByteArray: a reference-counted byte buffer, mainly the carrier of UTF-8 text
// (VyString::toUtf8 returns one).
//
// An array holds one pointer `d` to a `Data` block: count, capacity, length and a separate
// buffer from malloc/realloc. Copies share the block; `data()` detaches first when the block
// is shared. Empty arrays made by the default constructor share the static
// `Data::shared_null`, which is never freed. A buffer that was written by one of the
// constructors holds a 0 byte at data[size]; an array with nothing allocated has a null buffer.
//
// Threads: the reference count is a plain int, not atomic. A byte array and every copy of it
// belong to one thread; hand a byte array to another thread only as a deep copy
// (`VyByteArray(a.constData(), a.size())` for text). Default-constructed arrays on several
// threads touch `shared_null`'s count concurrently; release never frees that block, so a lost
// count there cannot free it.
#ifndef VYBYTEARRAY_H
#define VYBYTEARRAY_H

#include "vyglobal.h"

class VY_EXPORT VyByteArray
{
public:
    struct Data {
        int ref;    // plain count: see the thread note above
        int alloc;  // capacity of `data` in bytes
        int size;   // length in bytes, not counting a terminator
        char* data; // from malloc/realloc, released with free; null while nothing was allocated

        static Data shared_null;

        // Makes room for n bytes: nothing when a buffer exists and alloc >= n; otherwise the
        // capacity becomes 2n (grow; n when 2n passes the int range) or n and the buffer is
        // reallocated. Never shrinks. Throws std::bad_alloc when the reallocation fails; the
        // block then keeps its buffer and capacity.
        static void allocMemory(Data* d, int n, bool grow);
    };

    VyByteArray() : d(&Data::shared_null) { ++d->ref; }
    VyByteArray(const VyByteArray& other) : d(other.d) { ++d->ref; }
    // `size` bytes (left uninitialised) plus a 0 terminator; below 1 an empty block of its own
    // with a null buffer.
    explicit VyByteArray(int size);
    // `size` copies of `ch` plus a 0 terminator; below 1 as above.
    VyByteArray(int size, char ch);
    // The first `size` bytes of `str`, or all of strlen(str) when `size` is negative or not
    // below strlen(str). `str` must not be null. Always allocates count + 1 bytes.
    VyByteArray(const char* str, int size = -1);
    virtual ~VyByteArray() { releaseData(); }

    // Releases this array's block, then shares the other's. Assigning an array to itself, or
    // to an array sharing its block, changes nothing.
    VyByteArray& operator=(const VyByteArray& other)
    {
        if (d != other.d) {
            releaseData();
            d = other.d;
            ++d->ref;
        }
        return *this;
    }

    int size() const { return d->size; }
    bool isEmpty() const { return d->size == 0; }
    // The buffer; null when nothing was allocated. The non-const form detaches first.
    char* data()
    {
        if (d->ref != 1)
            detach();
        return d->data;
    }
    const char* data() const { return d->data; }
    const char* constData() const { return d->data; }

    // Replaces the contents with `size` bytes of `str` (strlen(str) when `size` is negative).
    // A null `str` changes nothing. With `copy` the bytes are copied into a fresh buffer of
    // size + 1 bytes, 0-terminated. Without it the array adopts `str` itself (capacity `size`,
    // no terminator added) and later frees it with free(): `str` must come from malloc and
    // belong to nobody else, though this array's own unshared buffer may be handed back.
    void fromRawBytes(char* str, int size, bool copy);

    // Stores a fresh block {ref 1, alloc 0, size 0, data null} in `d` without releasing the
    // block `d` held, and returns it.
    Data* createData();
    // Drops one reference; the last one frees the buffer and the block and leaves `d` null.
    void releaseData()
    {
        if (--d->ref == 0)
            freeData();
    }
    // Replaces a shared block by a private copy of the bytes (and terminator). Allocates.
    void detach();

    // The block; public so the string class can record a capacity and tests can read it.
    Data* d;

private:
    void freeData();
};

#endif
