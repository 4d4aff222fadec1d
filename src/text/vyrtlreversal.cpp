// The run reversal shared by Hebrew and Arabic: reads the logical text left to right and writes
// every unit once into the visual buffer, each right-to-left run reversed with its numbers
// kept in reading order.
#include "vyshapingprivate.h"

#include <string.h>

namespace
{

inline bool isDigit(unsigned short c)
{
    return c >= '0' && c <= '9';
}

// Writes run[0..len) to out[0..len) back to front, each group of digits front to back.
void writeReversed(const unsigned short* run, int len, unsigned short* out)
{
    int k = len - 1;
    while (k >= 0) {
        if (!isDigit(run[k])) {
            *out++ = run[k--];
            continue;
        }
        int first = k;
        while (first > 0 && isDigit(run[first - 1]))
            --first;
        const int digits = k - first + 1;
        memcpy(out, run + first, size_t(digits) * sizeof(*run));
        out += digits;
        k = first - 1;
    }
}

// Space (bit 32) and the digits (bits 48 to 57) among the units below 64.
constexpr unsigned long long kSpaceAndDigits = (1ull << ' ') | (0x3FFull << '0');

// True for the units a run goes on through: the class, spaces and digits. Spaces and digits are
// one bit test rather than two branches, which the alternation of words, spaces and numbers
// would keep mispredicting.
template <bool (*inClass)(unsigned short)> inline bool inRun(unsigned short c)
{
    const unsigned ascii = unsigned(c < 64) & unsigned(kSpaceAndDigits >> (c & 63));
    return (unsigned(inClass(c)) | ascii) & 1;
}

template <bool (*inClass)(unsigned short)>
void reverseRuns(const unsigned short* logical, unsigned short* visual, int n)
{
    // A run occupies the same indexes in both buffers, so the read position is also the write
    // position.
    int i = 0;
    while (i < n) {
        if (!inClass(logical[i])) {
            visual[i] = logical[i];
            ++i;
            continue;
        }
        int end = i + 1;
        while (end < n && inRun<inClass>(logical[end]))
            ++end;
        int last = end - 1;
        // Kept: only a run that another unit ends gives its trailing spaces back; they are
        // written through after it, in front of that unit. A run that reaches the end of the
        // text keeps them, so they come out in front of the reversed run. A right-to-left
        // line grows at its left edge: a space just typed at the end of the text shows there,
        // where the next letter will appear.
        if (end < n)
            while (logical[last] == ' ')
                --last;
        writeReversed(logical + i, last - i + 1, visual + i);
        i = last + 1;
    }
}

} // namespace

void vyReverseHebrewRuns(const unsigned short* logical, unsigned short* visual, int n)
{
    reverseRuns<vyIsHebrewUnit>(logical, visual, n);
}

void vyReverseArabicRuns(const unsigned short* logical, unsigned short* visual, int n)
{
    reverseRuns<vyIsArabicUnit>(logical, visual, n);
}
