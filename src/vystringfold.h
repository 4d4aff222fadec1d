// Case folding and property lookup of one unit inside a string, shared by the string's
// comparison, search and casing code.
//
// A low surrogate that follows a high surrogate of the same string is described by the record
// of the code point the pair forms; the tables cover only the BMP, so the record of that code
// point's low 16 bits is used, and its difference is still added to the low surrogate itself.
#ifndef VYSTRINGFOLD_H
#define VYSTRINGFOLD_H

#include "vyglobal.h"
#include "vyunicode.h"

// The unit whose property record describes p[0]: itself, or for a low surrogate preceded (at
// or after `begin`) by a high surrogate, the low 16 bits of the pair's code point.
inline VyUcs2 vyPropertyUnit(const VyUcs2* p, const VyUcs2* begin)
{
    const VyUcs2 u = *p;
    if ((u & 0xFC00) == 0xDC00 && p != begin && (p[-1] & 0xFC00) == 0xD800)
        return VyUcs2(((uint(p[-1]) << 10) + u - 0x35FDC00u) & 0xFFFF);
    return u;
}

// `unit` plus the case-folding difference of the record of `lookup`, taken to 16 bits. The
// table stores differences modulo 65536 (some foldings jump further than a short reaches), so
// the mask gives the true folded unit; for lookup == unit this is VyUnicode::foldCase, inlined
// for the search loops.
inline int vyFoldWith(VyUcs2 unit, VyUcs2 lookup)
{
    return (unit + VyUnicodeTables::properties(lookup)->caseFoldDiff) & 0xFFFF;
}

// The folded unit without surrogate pairing.
inline int vyFoldUnit(VyUcs2 unit)
{
    return vyFoldWith(unit, unit);
}

// The folded unit at p, paired with a preceding high surrogate at or after `begin`.
inline int vyFoldAt(const VyUcs2* p, const VyUcs2* begin)
{
    return vyFoldWith(*p, vyPropertyUnit(p, begin));
}

#endif
