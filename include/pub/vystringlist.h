// VyStringList: a list of strings, the result of VyString::split.
//
// A VyList<VyString> (implicitly shared, copy on write, each string held as a heap copy that
// shares its block with the original) with joining, searching, replacing and sorting. Like
// every VyList it is polymorphic through its destructor alone. A given list object belongs to
// one thread at a time.
#ifndef VYSTRINGLIST_H
#define VYSTRINGLIST_H

#include "vyglobal.h"

#include "vylist.h"
#include "vystring.h"

class VY_EXPORT VyStringList : public VyList<VyString>
{
public:
    VyStringList() {}
    // A list of one string.
    explicit VyStringList(const VyString& s) { append(s); }
    // Shares the other list's block.
    VyStringList(const VyList<VyString>& other) : VyList<VyString>(other) {}

    // The elements with `sep` between them, built in one allocation of the exact length; the
    // shared empty string when that length is 0.
    VyString join(const VyString& sep) const;
    // True when an element equals `str` (same size first, then compare with `cs`).
    bool contains(const VyString& str, Vy::CaseSensitivity cs = Vy::CaseSensitive) const;
    // Applies VyString::replace(before, after, cs) to every element; detaches first.
    VyStringList& replaceInStrings(const VyString& before, const VyString& after,
                                   Vy::CaseSensitivity cs = Vy::CaseSensitive);
    // Sorts into ascending VyString::operator< order with an in-place quicksort (median of the
    // first, middle and last elements as pivot); equal elements may change order. Detaches
    // first; the strings are swapped, never copied. O(n log n) on average, recursion depth
    // O(log n).
    void sort();
};

#endif
