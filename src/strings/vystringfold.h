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

// `unit` folded with the record of `lookup`.
inline int vyFoldWith(VyUcs2 unit, VyUcs2 lookup)
{
    return VyUnicode::foldCase(unit, lookup);
}

// The folded unit without surrogate pairing.
inline int vyFoldUnit(VyUcs2 unit)
{
    return VyUnicode::foldCase(unit);
}

// The folded unit at p, paired with a preceding high surrogate at or after `begin`.
inline int vyFoldAt(const VyUcs2* p, const VyUcs2* begin)
{
    return vyFoldWith(*p, vyPropertyUnit(p, begin));
}

#endif
