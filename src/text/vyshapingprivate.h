// Internals of the shaping functions: the character classes, the Arabic join sets and form
// tables, the run reversal shared by Hebrew and Arabic, and the allocator of the work copies.
#ifndef VYSHAPINGPRIVATE_H
#define VYSHAPINGPRIVATE_H

#include <stddef.h>

inline bool vyIsHebrewUnit(unsigned short c)
{
    return c >= 0x0590 && c <= 0x05FF;
}

// Shaped presentation forms count as Arabic too.
inline bool vyIsArabicUnit(unsigned short c)
{
    return (c >= 0x0600 && c <= 0x06FF) || (c >= 0x0750 && c <= 0x077F) ||
           (c >= 0xFB50 && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFF);
}

// Column of every form table: joined to the previous letter only, to the next only, to both,
// to neither.
enum VyArabicForm { VyFormFinal = 0, VyFormInitial = 1, VyFormMedial = 2, VyFormIsolated = 3 };

// The letters that connect to a following letter, and those that connect to a preceding one,
// ascending (vyarabictables.cpp).
extern const unsigned short vyJoinsNextLetters[29];
extern const unsigned short vyJoinsPreviousLetters[41];

// Forms of U+0621 to U+064A, one row per letter, columns by VyArabicForm.
constexpr unsigned short vyArabicMainFirst = 0x0621;
constexpr unsigned short vyArabicMainLast = 0x064A;
extern const unsigned short vyArabicMainForms[42][4];

// The extended letters: the letter, then its forms by VyArabicForm.
extern const unsigned short vyArabicExtendedForms[6][5];

// Lam followed by one of four alefs: the alef, the ligature's isolated form, its final form.
extern const unsigned short vyLamAlefForms[4][3];

// Binary search of an ascending set. The halving steps depend only on the set's size and pick
// the next half without a branch, so the letters of real text, which follow no pattern a
// branch predictor could learn, cost the same few steps as any other unit. Runs twice for
// every letter shaped.
template <size_t N> inline bool vyContainsUnit(const unsigned short (&set)[N], unsigned short c)
{
    const unsigned short* base = set;
    size_t len = N;
    while (len > 1) {
        const size_t half = len / 2;
        base = base[half] <= c ? base + half : base;
        len -= half;
    }
    return *base == c;
}

// True when `c` is one of the 29 letters that connect to a following letter; 0 never is.
inline bool joinsNext(unsigned short c)
{
    return vyContainsUnit(vyJoinsNextLetters, c);
}

// True when `c` is one of the 41 letters that connect to a preceding letter.
inline bool joinsPrevious(unsigned short c)
{
    return vyContainsUnit(vyJoinsPreviousLetters, c);
}

// The column for a letter between `prev` and `next` (0 for none).
inline int vyArabicFormIndex(unsigned short prev, unsigned short next)
{
    const bool joinedBefore = joinsNext(prev);
    const bool joinedAfter = next != 0 && joinsPrevious(next);
    if (joinedBefore)
        return joinedAfter ? VyFormMedial : VyFormFinal;
    return joinedAfter ? VyFormInitial : VyFormIsolated;
}

// The lam-alef ligature standing for lam `cur` before alef `next`: the final form when `prev`
// joins forward, else the isolated one. -1 unless `cur` is U+0644 and `next` is U+0622,
// U+0623, U+0625 or U+0627.
int lamAlefRule(unsigned short prev, unsigned short cur, unsigned short next);

// Copies `n` units from `logical` to `visual` (different buffers) in visual order, Hebrew or
// Arabic being the right-to-left class (see vyshaping.h).
void vyReverseHebrewRuns(const unsigned short* logical, unsigned short* visual, int n);
void vyReverseArabicRuns(const unsigned short* logical, unsigned short* visual, int n);

// Allocates the work copies of arabicRulesConvert and reversalHebrew, which free() them:
// malloc, unless a test installs an allocator that fails, to reach the "Malloc unicode
// failed." path. Not locked: change it only while no other thread shapes text.
extern void* (*vyShapingAllocate)(size_t bytes);

#endif
