// Right-to-left text for a renderer that only draws left to right, one glyph per UTF-16 unit.
//
// Arabic letters are replaced by their contextual presentation forms (the font carries glyphs
// for the forms); then every Hebrew or Arabic run is put into visual order with its numbers
// kept readable. The functions work in place on the caller's buffer and never change its
// length. They keep no state: any thread may call them on a buffer of its own.
//
// Character classes, by code unit: Hebrew is U+0590 to U+05FF; Arabic is U+0600 to U+06FF,
// U+0750 to U+077F, U+FB50 to U+FDFF and U+FE70 to U+FEFF (so shaped text still counts as
// Arabic); a digit is '0' to '9' only, a space U+0020 only.
//
// Run reversal, the same for both scripts: a unit outside the class is written through. A unit
// of the class starts a run, which goes on through units of the class, spaces and digits. The
// run is written in reverse order, each group of digits in its own left-to-right order. The
// spaces that end a run stay behind it when another unit follows them; at the end of the text
// they belong to the run and so come out in front of it. "A B 12 C" with A, B, C of the class
// comes out as "C 12 B A"; "A B x" as "B A x".
#ifndef VYSHAPING_H
#define VYSHAPING_H

#include "vyglobal.h"

// True when one of the first `n` units is Hebrew; false for n < 1 or a null `s`.
VY_EXPORT bool isIncludeHebrew(const unsigned short* s, int n);
// True when one of the first `n` units is Arabic; false for n < 1 or a null `s`.
VY_EXPORT bool isIncludeArbic(const unsigned short* s, int n);

// Shapes the Arabic letters U+0621 to U+064A and the extended letters of convertRule3 into
// presentation forms, then reverses the Arabic runs. A letter's form depends on whether the
// unit before it joins forward and the unit after it joins backward, both read from the
// unshaped text; other units (marks, shaped forms, other scripts) keep their value and join
// nothing. A lam (U+0644) before U+0622, U+0623, U+0625 or U+0627 becomes the lam-alef
// ligature; the alef keeps its own unit. A null `s` is ignored; n < 1 changes nothing.
// Allocates a work copy of n + 1 units; when that fails, prints "Malloc unicode failed." and
// leaves the text as it was.
VY_EXPORT void arabicRulesConvert(unsigned short* s, int n);

// The presentation form of the extended letter `cur` (U+067E, U+0686, U+0698, U+06A9, U+06AF,
// U+06CC) between `prev` and `next` (0 for none), or -1 for any other unit.
VY_EXPORT int convertRule3(unsigned short prev, unsigned short cur, unsigned short next);

// Reverses the Hebrew runs of the first `n` units. Null and n < 1, the work copy and its
// failure as for arabicRulesConvert.
VY_EXPORT void reversalHebrew(unsigned short* s, int n);

#endif
