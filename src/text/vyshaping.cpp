// Arabic shaping and the entry points of both scripts: the join tests, the form choice, the
// order of the shaping rules, and the work copy the reordering reads from.
#include "vyshaping.h"

#include "vyshapingprivate.h"

#include <algorithm>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

void* (*vyShapingAllocate)(size_t bytes) = malloc;

namespace
{

template <bool (*inClass)(unsigned short)> bool includes(const unsigned short* s, int n)
{
    if (!s)
        return false;
    // Whole blocks of 32 units are tested without an early exit, so the compiler can test the
    // units of a block side by side: most texts hold no such unit and are read to the end.
    int i = 0;
    for (; i + 32 <= n; i += 32) {
        unsigned found = 0;
        for (int k = 0; k < 32; ++k)
            found |= inClass(s[i + k]);
        if (found)
            return true;
    }
    for (; i < n; ++i)
        if (inClass(s[i]))
            return true;
    return false;
}

// The text's `n` units followed by a 0 unit, or null after printing the failure message. A
// negative `n` counts as 0.
unsigned short* workCopy(const unsigned short* s, int n)
{
    n = std::max(n, 0);
    auto* copy = static_cast<unsigned short*>(vyShapingAllocate((size_t(n) + 1) * sizeof(*s)));
    if (!copy) {
        puts("Malloc unicode failed.");
        return nullptr;
    }
    memcpy(copy, s, size_t(n) * sizeof(*s));
    copy[n] = 0;
    return copy;
}

// The shaped form of `cur` between `prev` and `next`, all three from the unshaped text. The
// rules apply in the order lam-alef, extended letters, main table, every other unit kept; as
// each rule covers its own letters (lam, the six extended letters, U+0621 to U+064A), the unit's
// range picks the one rule that can apply.
inline unsigned short shapeUnit(unsigned short prev, unsigned short cur, unsigned short next)
{
    if (cur >= vyArabicMainFirst && cur <= vyArabicMainLast) {
        // Kept: the alef after a lam is neither removed nor skipped. The lam's unit takes the
        // ligature and the alef is shaped on its own at the next index, as a final form since
        // lam joins forward. The text keeps its length, so every glyph stays at the index of
        // its unit, which the layout's line breaks and cursor positions count by.
        const int ligature = cur == 0x0644 ? lamAlefRule(prev, cur, next) : -1;
        if (ligature >= 0)
            return static_cast<unsigned short>(ligature);
        return vyArabicMainForms[cur - vyArabicMainFirst][vyArabicFormIndex(prev, next)];
    }
    const int extended = convertRule3(prev, cur, next);
    return extended >= 0 ? static_cast<unsigned short>(extended) : cur;
}

} // namespace

int lamAlefRule(unsigned short prev, unsigned short cur, unsigned short next)
{
    if (cur != 0x0644)
        return -1;
    for (const auto& row : vyLamAlefForms)
        if (row[0] == next)
            return joinsNext(prev) ? row[2] : row[1];
    return -1;
}

int convertRule3(unsigned short prev, unsigned short cur, unsigned short next)
{
    if (cur < 0x0600 || cur > 0x06FF)
        return -1;
    for (const auto& row : vyArabicExtendedForms)
        if (row[0] == cur)
            return row[1 + vyArabicFormIndex(prev, next)];
    return -1;
}

bool isIncludeHebrew(const unsigned short* s, int n)
{
    return includes<vyIsHebrewUnit>(s, n);
}

bool isIncludeArbic(const unsigned short* s, int n)
{
    return includes<vyIsArabicUnit>(s, n);
}

void arabicRulesConvert(unsigned short* s, int n)
{
    if (!s)
        return;
    unsigned short* copy = workCopy(s, n);
    if (!copy)
        return;
    // The copy ends in a 0 unit, which is the last unit's `next`.
    unsigned short prev = 0;
    for (int i = 0; i < n; ++i) {
        s[i] = shapeUnit(prev, copy[i], copy[i + 1]);
        prev = copy[i];
    }
    if (n > 0)
        memcpy(copy, s, size_t(n) * sizeof(*s));
    vyReverseArabicRuns(copy, s, n);
    free(copy);
}

void reversalHebrew(unsigned short* s, int n)
{
    if (!s)
        return;
    unsigned short* copy = workCopy(s, n);
    if (!copy)
        return;
    vyReverseHebrewRuns(copy, s, n);
    free(copy);
}
