// VyString: the library's text type, a sequence of UTF-16 code units (VyUcs2).
//
// A string holds one pointer `d` to a reference-counted Data block {ref, alloc, size, data};
// the units live in a separate malloc'd buffer of `alloc` units. Copies share the block in
// O(1); every mutating member detaches first when the block is shared (copy on write), except
// operator[], which writes into the shared block (see there). Empty strings made by the default
// constructor share the static `Data::shared_null`, whose count starts at 1 so that it is
// never freed. Whenever text was written, the buffer holds a 0 unit at data[size]; the text
// itself may contain 0 units. An empty string may have a null buffer: every reader accepts
// size == 0 with data == null.
//
// Capacity (allocMemory): a buffer is reallocated when it is missing, too small, or more than
// three times larger than needed; it then gets twice the need when growing (append, insert,
// prepend, replace) and exactly the need otherwise (constructors, clear, resize, detach).
//
// Construction from `const char*` reads UTF-8. Decoding never fails (see utf8ToUcs2); surrogate
// pairs are neither produced nor combined: each surrogate unit travels as its own three-byte
// sequence, so any sequence of units survives a round trip through toUtf8.
//
// Threads: the reference count is atomic, so strings sharing a block may be copied and
// destroyed on different threads. A given string object belongs to one thread at a time.
#ifndef VYSTRING_H
#define VYSTRING_H

#include "vybytearray.h"
#include "vyglobal.h"

#include <atomic>
#include <stdarg.h>
#include <type_traits>

class VyStringList;

// Substring search over raw unit arrays. A negative `from` counts from the end (from +
// haystackLen); the result is the index of the first occurrence at or after `from`, or -1.
// An empty needle is found at `from` itself when from <= haystackLen. Case-insensitive
// searches compare case-folded units, a low surrogate being folded through the record of the
// code point it forms with a preceding high surrogate of the same array. Haystacks above 500
// units searched for needles above 5 units go to vyFindStringBoyerMoore; others use a
// rolling hash. Neither allocates.
VY_EXPORT int vyFindString(const VyUcs2* haystack, int haystackLen, int from, const VyUcs2* needle,
                           int needleLen, Vy::CaseSensitivity cs);
// The long-haystack search: a 256-entry skip table indexed by the low byte of each (folded)
// unit. A negative `from` counts as 0 here.
VY_EXPORT int vyFindStringBoyerMoore(const VyUcs2* haystack, int haystackLen, int from,
                                     const VyUcs2* needle, int needleLen, Vy::CaseSensitivity cs);
// The first index at or after `from` whose unit equals `unit` (or has the same case folding,
// without surrogate pairing), or -1. A negative `from` counts from the end, clamped at 0.
int findUnit(const VyUcs2* haystack, int haystackLen, VyUcs2 unit, int from,
             Vy::CaseSensitivity cs);

class VY_EXPORT VyString
{
public:
    struct Data {
        std::atomic<int> ref; // reference count, changed atomically
        int alloc;            // capacity of `data` in units
        int size;             // units of text, without the terminator
        VyUcs2* data;         // malloc/realloc'd buffer of `alloc` units; null until needed

        // The empty block default-constructed strings share: {1, 0, 0, null}. Never freed.
        static Data shared_null;

        // Makes the buffer fit `size` units (terminator included): nothing happens when the
        // buffer exists, holds `size` units and is at most three times that; otherwise the
        // capacity becomes 2 * size (grow) or `size` and the buffer is reallocated. The
        // contents up to the new capacity are kept. Throws std::bad_alloc when growing fails.
        static void allocMemory(Data* d, int size, bool grow);
    };

    enum SplitBehavior { KeepEmpty = 0, DropEmpty = 1 };

    VyString() : d(&Data::shared_null) { d->ref.fetch_add(1, std::memory_order_relaxed); }
    VyString(const VyString& other) : d(other.d) { d->ref.fetch_add(1, std::memory_order_relaxed); }
    // UTF-8 text: the first `size` bytes when 0 <= size < strlen(str), else all of strlen(str)
    // (so `str` must be 0-terminated either way). A null `str` gives an empty string with a
    // block of its own and a null buffer. The capacity is the byte count + 1.
    VyString(const char* str, int size = -1);
    // `size` units copied from `unicode`; below 1 an empty string with a block of its own
    // (the pointer is not read).
    VyString(const VyUcs2* unicode, int size);
    VyString(VyUcs2 ch);
    // The byte is stored unchanged as one unit: 0x80 to 0xFF become U+0080 to U+00FF.
    VyString(char ch);
    // `size` copies of `ch`; below 1 an empty string with a block of its own.
    VyString(int size, VyUcs2 ch);
    VyString(int size, char ch);
    virtual ~VyString() { releaseData(); }

    // Releases this string's block first, then shares the other's.
    // Kept: there is no self-assignment test. Assigning a string to itself works while its
    // block is shared (the count drops and rises again), but an unshared block is freed before
    // it is taken, so `s = s` on an unshared string is undefined. Do not assign a string to
    // itself.
    VyString& operator=(const VyString& other);
    VyString& operator=(VyUcs2 ch);

    // Block management. createData stores a fresh block {1, 0, 0, null} in `d` without
    // releasing what `d` held (constructors only). releaseData drops one reference; the last
    // one frees the buffer and the block and sets `d` to null. detach unconditionally replaces
    // `d` by a private copy with exactly size + 1 units (a null buffer when empty).
    Data* createData();
    void releaseData()
    {
        if (d->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
            freeData();
    }
    void detach();

    int size() const { return d->size; }
    bool isEmpty() const { return d->size == 0; }
    // The buffer: 0-terminated when the string holds text; may be null when it is empty.
    const VyUcs2* unicode() const { return d->data; }

    // The unit at i. Asserts i < size(); a negative index is not detected.
    VyUcs2 at(int i) const
    {
        VY_ASSERT_SITE(i < size(), VyAssertSites::stringAt);
        return d->data[i];
    }
    // A reference into the buffer. Asserts i < size(); a negative index is not detected.
    // Kept: operator[] does not detach. Writing through the reference changes every string
    // that shares the block; the framework patches text in place through it and relies on
    // the write being cheap. Call detach() first for a private change.
    VyUcs2& operator[](int i)
    {
        VY_ASSERT_SITE(i < size(), VyAssertSites::stringIndex);
        return d->data[i];
    }

    // Empties the string; nothing happens when it is empty already. The buffer is kept unless
    // it is more than three times (old size + 1).
    void clear();
    // A negative `n` counts as 0. Units beyond the old size are left uninitialised.
    void resize(int n);
    // Removes the last `n` units (all of them when n >= size); n < 1 does nothing.
    void chop(int n);
    // Keeps the first `pos` units; a negative `pos` empties the string.
    void truncate(int pos);

    // Decodes `len` bytes of UTF-8 into `dst`, which must hold `len` units; returns the units
    // written. Never fails and never reads outside the `len` bytes: an incomplete sequence at
    // the end is dropped; stray continuation bytes, four-byte sequences and the bytes 0xF8 to
    // 0xFF are skipped; the bytes after a two- or three-byte lead are taken as its trailing
    // bytes whatever they are (only their low six bits count), a trailing byte past `len`
    // reading as 0. Overlong forms and encoded surrogates decode as they stand.
    static int utf8ToUcs2(VyUcs2* dst, const char* src, int len);
    // Encodes `len` units as UTF-8 into `dst`, which must hold 3 * len bytes; returns the bytes
    // written (no terminator). Each unit is encoded on its own, surrogates included.
    static int ucs2ToUtf8(char* dst, const VyUcs2* src, int len);
    // The UTF-8 form, 0-terminated, in an array whose capacity is 3 * size + 1.
    VyByteArray toUtf8() const;

    bool operator==(const VyString& other) const;
    bool operator!=(const VyString& other) const { return !(*this == other); }
    // Unit-by-unit order of the unsigned values; a prefix sorts first.
    bool operator<(const VyString& other) const;
    // Case-sensitive: the difference of the first differing units, else of the sizes.
    // Otherwise the difference of the first differing case-folded units, else 1, 0 or -1 by
    // which string is longer.
    // Kept: case-insensitively, an empty string with a null buffer compares greater than any
    // string with a buffer, an empty one included.
    int compare(const VyString& other, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;

    // Searching. `cs` is case-sensitive only when it is Vy::CaseSensitive (1).
    int indexOf(const VyString& s, int from = 0, Vy::CaseSensitivity cs = Vy::CaseSensitive) const
    {
        return vyFindString(d->data, d->size, from, s.d->data, s.d->size, cs);
    }
    int indexOf(VyUcs2 c, int from = 0, Vy::CaseSensitivity cs = Vy::CaseSensitive) const
    {
        return findUnit(d->data, d->size, c, from, cs);
    }
    // The last match at or before `from` (a negative `from` counts from the end), or -1 when
    // `from` lies outside the string. An empty `s` with from == size gives size.
    int lastIndexOf(VyUcs2 c, int from = -1, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    int lastIndexOf(const VyString& s, int from = -1,
                    Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    // Occurrences of `s`, overlapping ones included.
    // Kept: the search starts at index 1, so an occurrence at index 0 is never counted.
    int count(const VyString& s, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    int count(VyUcs2 c, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    // A string with a null buffer starts (ends) only with another one with a null buffer; an
    // empty string with a buffer only with an empty string.
    bool startsWith(const VyString& s, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    bool endsWith(const VyString& s, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    // False on an empty string.
    bool startsWith(VyUcs2 c, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    bool endsWith(VyUcs2 c, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;

    // Editing. Every member detaches a shared block first and grows the buffer to twice what
    // it needs. Arguments may be this string itself or point into its buffer.
    //
    // Positional forms: the range [pos, pos + len) is clamped to the string (a negative `pos`
    // shortens `len` by as much and starts at 0; a negative `len` is empty); the new units go
    // where the clamped range starts. Nothing happens when there is nothing to remove or put.
    VyString& replace(int pos, int len, const VyUcs2* after, int alen);
    VyString& replace(int pos, int len, const VyString& after);
    VyString& replace(int pos, int len, VyUcs2 after);
    // Every unit equal to `before` becomes `after`; the block is untouched when none matches.
    VyString& replace(VyUcs2 before, VyUcs2 after, Vy::CaseSensitivity cs = Vy::CaseSensitive);
    // Every unit equal to `before` becomes `after`, in one pass (units that `after` brings in
    // are not searched again).
    VyString& replace(VyUcs2 before, const VyString& after,
                      Vy::CaseSensitivity cs = Vy::CaseSensitive);
    // Replaces occurrences of `before` from the left.
    // Kept: after each replacement the search resumes at the index where the replacement
    // went, so the inserted text is searched again ("abbb" with "ab" -> "a" becomes "a").
    // A replacement that contains the searched text (or an empty `before` with a non-empty
    // `after` on a non-empty string) therefore never ends: it grows the string until memory
    // runs out. Callers must not ask for one.
    VyString& replace(const VyUcs2* before, int blen, const VyUcs2* after, int alen,
                      Vy::CaseSensitivity cs = Vy::CaseSensitive);
    // An empty `after` removes `before`; one unit each is the unit-for-unit form; an empty
    // string stays unchanged; otherwise the loop above, with the same kept rescan.
    VyString& replace(const VyString& before, const VyString& after,
                      Vy::CaseSensitivity cs = Vy::CaseSensitive);

    // Insertion: `pos` at or beyond the end appends, a negative `pos` prepends (no padding).
    // An empty argument changes nothing, not even the sharing. The `const char*` forms read
    // UTF-8 like the constructor: `len` bytes when 0 <= len < strlen(utf8), else all of it; a
    // null pointer changes nothing.
    VyString& insert(int pos, const VyString& s);
    VyString& insert(int pos, VyUcs2 c);
    VyString& insert(int pos, const char* utf8, int len = -1);
    VyString& append(const VyString& s);
    VyString& append(const char* utf8, int len = -1);
    VyString& prepend(const VyString& s);
    VyString& prepend(VyUcs2 c);
    VyString& prepend(const char* utf8, int len = -1);

    // Removes the range clamped as for the positional replace.
    VyString& remove(int pos, int len);
    // Removes every matching unit; the block is untouched when none matches.
    VyString& remove(VyUcs2 c, Vy::CaseSensitivity cs = Vy::CaseSensitive);
    // Removes occurrences from the left, each search starting where the last one was found.
    VyString& remove(const VyString& s, Vy::CaseSensitivity cs = Vy::CaseSensitive);

    // Slices. A result equal to this string shares its block. mid: `n` units from `pos`
    // (n < 0: to the end; a negative `pos` shortens `n` by as much and starts at 0); empty
    // when pos >= size. left/right: the first/last `n` units for 0 <= n < size, else the
    // whole string.
    VyString mid(int pos, int n = -1) const;
    VyString left(int n) const;
    VyString right(int n) const;
    // Without leading and trailing white space (VyUnicode::isSpace).
    VyString trimmed() const;
    // Trimmed, with every inner run of white space turned into one U+0020.
    VyString simplified() const;
    // The parts between occurrences of `sep`. An empty `sep` splits between every unit (with
    // an empty first and last part under KeepEmpty).
    VyStringList split(const VyString& sep, SplitBehavior behavior = KeepEmpty,
                       Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    VyStringList split(const VyUcs2& sep, SplitBehavior behavior = KeepEmpty,
                       Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    // Single-unit case mappings. A low surrogate after a high one takes its mapping from the
    // record of the low 16 bits of the code point they form. Units whose full mapping is
    // longer than one unit stay unchanged. Shares the block when nothing changes.
    VyString toLower() const;
    VyString toUpper() const;
    // Resizes to `size` (a negative `size` keeps the length), then sets every unit to `c`.
    VyString& fill(VyUcs2 c, int size = -1);
    // The text padded with `fill` to `width` units, after (leftJustified) or before
    // (rightJustified) it. A text of `width` units or more is returned whole, or cut to
    // left(width) when `truncate` is set.
    VyString leftJustified(int width, VyUcs2 fill = ' ', bool truncate = false) const;
    VyString rightJustified(int width, VyUcs2 fill = ' ', bool truncate = false) const;

    // ---- Formatting and number reading ----
    //
    // Place markers: a percent sign, an optional `L`, then one or two decimal digits of any
    // script ("%1", "%L2", "%05" is marker 5, "%123" is marker 12 followed by "3"). Each arg
    // replaces every marker that carries the lowest number in the text, padded with `fillChar`
    // to |fieldWidth| units: before the value for a positive width, after it for a negative
    // one. Markers with `L` get the number with group separators while
    // VyLocale::mNumberOptions is 0. A text without any marker prints a message on standard
    // output and is returned unchanged. A fillChar of '0' pads numbers with zeros after the
    // sign. A VyUcs2 argument is formatted as a number (wrap it in VyString for the unit).
    // A result longer than a string can hold throws std::bad_alloc.
    VyString arg(const VyString& a, int fieldWidth = 0, VyUcs2 fillChar = ' ') const;
    // The byte stored unchanged as one unit, like VyString(char).
    VyString arg(char a, int fieldWidth = 0, VyUcs2 fillChar = ' ') const;
    // `base` 2 to 36 (others are taken as 10); outside base 10 a negative value is written as
    // its unsigned 64-bit pattern.
    VyString arg(long long a, int fieldWidth = 0, int base = 10, VyUcs2 fillChar = ' ') const;
    VyString arg(unsigned long long a, int fieldWidth = 0, int base = 10,
                 VyUcs2 fillChar = ' ') const;
    VyString arg(int a, int fieldWidth = 0, int base = 10, VyUcs2 fillChar = ' ') const
    {
        return arg((long long)a, fieldWidth, base, fillChar);
    }
    VyString arg(uint a, int fieldWidth = 0, int base = 10, VyUcs2 fillChar = ' ') const
    {
        return arg((unsigned long long)a, fieldWidth, base, fillChar);
    }
    VyString arg(long a, int fieldWidth = 0, int base = 10, VyUcs2 fillChar = ' ') const
    {
        return arg((long long)a, fieldWidth, base, fillChar);
    }
    VyString arg(unsigned long a, int fieldWidth = 0, int base = 10, VyUcs2 fillChar = ' ') const
    {
        return arg((unsigned long long)a, fieldWidth, base, fillChar);
    }
    // Any integer with a fill of any character type (a plain '0' included), which the
    // overloads above would leave ambiguous against the double form.
    template <
        typename Int, typename Fill,
        typename = std::enable_if_t<std::is_integral<Int>::value && std::is_integral<Fill>::value>>
    VyString arg(Int a, int fieldWidth, int base, Fill fillChar) const
    {
        if constexpr (std::is_signed<Int>::value)
            return arg((long long)a, fieldWidth, base, VyUcs2(fillChar));
        else
            return arg((unsigned long long)a, fieldWidth, base, VyUcs2(fillChar));
    }
    // `format` is one of e, E, f, F, g, G (others are taken as g); a negative precision is 6.
    VyString arg(double a, int fieldWidth = 0, char format = 'g', int precision = -1,
                 VyUcs2 fillChar = ' ') const;
    // Replaces several markers at once: the distinct marker numbers (ASCII digits only, up to
    // 999), in ascending order, take args[0] to args[numArgs - 1] (no padding, `L` ignored);
    // other markers stay. Prints a message when there are fewer markers than arguments.
    VyString multiArg(int numArgs, const VyString** args) const;

    // Numbers as text with VyLocale's symbols: no grouping, no padding. `base` 2 to 36 (others
    // are taken as 10); outside base 10 negative values are written as unsigned 64-bit
    // patterns. A double is written with `format` (e, E, f, F, g, G) and `precision`.
    static VyString number(int n, int base = 10);
    static VyString number(long n, int base = 10);
    static VyString number(uint n, int base = 10);
    static VyString number(unsigned long n, int base = 10);
    static VyString number(long long n, int base = 10);
    static VyString number(unsigned long long n, int base = 10);
    static VyString number(double n, char format = 'g', int precision = 6);
    VyString& setNum(long long n, int base = 10);
    VyString& setNum(unsigned long long n, int base = 10);
    VyString& setNum(double n, char format = 'g', int precision = 6);
    VyString& setNum(short n, int base = 10) { return setNum((long long)n, base); }
    VyString& setNum(unsigned short n, int base = 10)
    {
        return setNum((unsigned long long)n, base);
    }
    VyString& setNum(int n, int base = 10) { return setNum((long long)n, base); }
    VyString& setNum(uint n, int base = 10) { return setNum((unsigned long long)n, base); }
    VyString& setNum(long n, int base = 10) { return setNum((long long)n, base); }
    VyString& setNum(unsigned long n, int base = 10) { return setNum((unsigned long long)n, base); }
    VyString& setNum(float n, char format = 'g', int precision = 6)
    {
        return setNum(double(n), format, precision);
    }

    // Replaces the contents with the C-style formatted text. The format is read as bytes
    // (plain runs as UTF-8). Conversions: flags # 0 - space + ' (grouping); a width and a
    // precision, either as digits or `*` from the arguments; the length modifiers hh h l ll L
    // j z t; d i o u x X e E f F g G a A c s p n %. `%s` reads UTF-8 (with a precision: at
    // most that many bytes), `%c` one byte as a unit (`%lc` a unit), `%p` "0x" and lower-case
    // hex digits, `%n` stores the units written so far. An unknown conversion is copied as it
    // stands. The result has no length limit of its own (beyond a string's INT_MAX units, past
    // which std::bad_alloc is thrown).
    //
    // Numbers are written by VyLocale with its symbols (%a excepted). While the symbols keep
    // their initial values the text is that of C's snprintf in the C locale, except:
    // - `'` groups with VyLocale::mGroupSeparator (',') where the C locale does not group.
    // - A NaN prints as "nan" whatever its sign bit, and takes `+` and space like a positive
    //   number ("+nan").
    // - `%n` counts UTF-16 units, not bytes.
    // - A width counts UTF-16 units: a character above U+007F fills one place, where C counts
    //   each of its two or three UTF-8 bytes.
    // - `%Le`, `%Lf`, `%Lg` and `%La` convert the long double to double first.
    // - `%p` of a null pointer prints "0x0"; `%p` takes `-` and the width only, no other flag
    //   and no precision.
    // - Text is decoded like the `const char*` constructor decodes it: four-byte sequences and
    //   stray bytes are dropped, and so is a character that a `%s` precision cuts in two.
    // - `%c` writes its byte as the unit U+0000 to U+00FF; `l` does not change `%s`, which
    //   always reads a `const char*`.
    // - A null `%s` prints "(null)", cut by the precision like any other text.
    // - Positional arguments (`%1$d`), `%m`, `%C`, `%S` and a `%` conversion with flags or a
    //   width (`%5%`) are copied as they stand and take no argument.
    VyString& sprintf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    VyString& vsprintf(const char* format, va_list ap) __attribute__((format(printf, 2, 0)));

    // The whole text as a number in `base` (0: from the prefix, or 2 to 36), white space
    // allowed around it, no group separators. Failure (malformed text, a value outside the
    // type) gives 0 and sets *ok to false; `ok` may be null.
    short toShort(bool* ok = nullptr, int base = 10) const;
    unsigned short toUShort(bool* ok = nullptr, int base = 10) const;
    int toInt(bool* ok = nullptr, int base = 10) const;
    uint toUInt(bool* ok = nullptr, int base = 10) const;
    long toLong(bool* ok = nullptr, int base = 10) const;
    unsigned long toULong(bool* ok = nullptr, int base = 10) const;
    long long toLongLong(bool* ok = nullptr, int base = 10) const;
    unsigned long long toULongLong(bool* ok = nullptr, int base = 10) const;
    // Decimal text, or inf / infinity / nan in any case. toFloat fails beyond the float range.
    float toFloat(bool* ok = nullptr) const;
    double toDouble(bool* ok = nullptr) const;

    // Never null while the string is alive.
    Data* d;

private:
    void freeData();
    void detachIfShared()
    {
        if (d->ref.load(std::memory_order_acquire) != 1)
            detach();
    }
    // allocMemory for a block a constructor has just made: frees the block when it throws.
    void allocForConstructor(int size);
    // Replaces the already clamped range [pos, pos + len) by `n` units.
    void replaceUnits(int pos, int len, const VyUcs2* units, int n);
    // Inserts at `pos` (clamped to 0..size).
    void insertUnits(int pos, const VyUcs2* units, int n);
    void insertUtf8(int pos, const char* utf8, int len);
    int lastIndexOfUnits(const VyUcs2* needle, int needleLen, int from,
                         Vy::CaseSensitivity cs) const;
};

static_assert(sizeof(VyString) == 2 * sizeof(void*), "a string is a vtable pointer and `d`");

// The place markers of a template, as VyString::arg sees them: the lowest marker number
// (INT_MAX when there is none), how many markers carry it, how many of those carry `L`, and
// their total length in units.
struct VY_EXPORT ArgEscapeData {
    int minEscape;
    int occurrences;
    int localeOccurrences;
    int escapeLength;
};
// Scans `s` for place markers (see VyString::arg).
VY_EXPORT ArgEscapeData findArgEscapes(const VyString& s);
// Replaces the markers numbered d.minEscape: by `larg` where they carry `L`, else by `arg`,
// padded with `fillChar` to |fieldWidth| (before the value for a positive width, after it for
// a negative one). `d` must be findArgEscapes(s) with occurrences > 0.
VY_EXPORT VyString replaceArgEscapes(const VyString& s, const ArgEscapeData& d, int fieldWidth,
                                     const VyString& arg, const VyString& larg, VyUcs2 fillChar);

// The key hash of VyHash<VyString, T>: the first size() bytes of the UTF-8 form (a prefix of
// it for non-ASCII text) through h = (h << 4) + byte, folding the top nibble back in and
// keeping 28 bits. The empty string hashes to 0. Does not allocate.
VY_EXPORT uint vyHash(const VyString& s);

// split returns a VyStringList; make it complete for every includer of this header.
#include "vystringlist.h"

#endif
