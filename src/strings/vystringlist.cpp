// VyStringList: joining, searching, replacing and sorting a list of strings.
#include "vystringlist.h"

#include <string.h>

VyString VyStringList::join(const VyString& sep) const
{
    const int n = size();
    long long total = 0;
    for (int i = 0; i < n; ++i)
        total += at(i).size();
    if (n > 1)
        total += (long long)sep.size() * (n - 1);
    VyString result;
    if (total == 0)
        return result;
    result.resize(int(total));
    VyUcs2* out = result.d->data;
    for (int i = 0; i < n; ++i) {
        if (i > 0 && sep.size() > 0) {
            memcpy(out, sep.unicode(), size_t(sep.size()) * sizeof(VyUcs2));
            out += sep.size();
        }
        const VyString& s = at(i);
        if (s.size() > 0) {
            memcpy(out, s.unicode(), size_t(s.size()) * sizeof(VyUcs2));
            out += s.size();
        }
    }
    return result;
}

bool VyStringList::contains(const VyString& str, Vy::CaseSensitivity cs) const
{
    for (const_iterator i = begin(), e = end(); i != e; ++i) {
        // Kept: equality is compare() == 0, so in the case-insensitive mode an empty `str`
        // without a buffer does not match an empty element with one (compare gives 1). The
        // list answers exactly as the string comparison it is built on, quirk included.
        if (i->size() == str.size() && str.compare(*i, cs) == 0)
            return true;
    }
    return false;
}

VyStringList& VyStringList::replaceInStrings(const VyString& before, const VyString& after,
                                             Vy::CaseSensitivity cs)
{
    detach();
    for (iterator i = begin(), e = end(); i != e; ++i)
        i->replace(before, after, cs);
    return *this;
}

namespace
{

// Exchanges two strings' blocks: no text is copied and no count changes.
void swapStrings(VyString& a, VyString& b)
{
    VyString::Data* const d = a.d;
    a.d = b.d;
    b.d = d;
}

// Sorts [first, first + count). The first, middle and last elements are put in order among
// themselves (which finishes ranges of 2 and 3); the middle one is the pivot. After the
// partition the smaller part is sorted by recursion and the larger one by the loop, so the
// depth stays logarithmic.
void quickSort(VyList<VyString>::iterator first, int count)
{
    while (count >= 2) {
        VyString& low = first[0];
        VyString& high = first[count - 1];
        if (high < low)
            swapStrings(low, high);
        if (count == 2)
            return;
        const int middle = count / 2;
        if (first[middle] < low)
            swapStrings(first[middle], low);
        if (high < first[middle])
            swapStrings(high, first[middle]);
        if (count == 3)
            return;

        // Hoare partition around the pivot, parked at the end meanwhile. The ends are already
        // on the right sides: first[0] <= pivot <= the element moved to the middle.
        swapStrings(first[middle], first[count - 2]);
        const VyString& pivot = first[count - 2];
        int i = 0;
        int j = count - 2;
        for (;;) {
            while (first[++i] < pivot) {
            }
            while (pivot < first[--j]) {
            }
            if (i >= j)
                break;
            swapStrings(first[i], first[j]);
        }
        swapStrings(first[i], first[count - 2]);
        // [0, i) <= pivot at i <= (i, count)
        const int left = i;
        const int right = count - i - 1;
        if (left < right) {
            quickSort(first, left);
            first += i + 1;
            count = right;
        } else {
            quickSort(first + (i + 1), right);
            count = left;
        }
    }
}

} // namespace

void VyStringList::sort()
{
    detach();
    quickSort(begin(), size());
}
