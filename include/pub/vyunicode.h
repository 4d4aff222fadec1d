// Unicode character properties of the Basic Multilingual Plane (U+0000 to U+FFFF): general
// category, decimal digit value, single-unit case mappings and simple case folding.
//
// The data lives in constant tables compiled into the library (src/strings/vyunicodetables.cpp, made
// by tools/vyunicodegen from the Unicode Character Database). Nothing is loaded, allocated or
// locked at run time, so every function here may be called from any thread at any time.
// Supplementary code points are not covered: a caller that combines a surrogate pair looks up
// the low 16 bits of the combined code point and applies the record's differences itself.
#ifndef VYUNICODE_H
#define VYUNICODE_H

#include "vyglobal.h"

struct VY_EXPORT VyUnicodeTables {
    // General-category codes stored in Properties::category.
    enum Category {
        Unused = 0, // no code point carries it
        Mn = 1,
        Mc = 2,
        Me = 3,
        Nd = 4,
        Nl = 5,
        No = 6,
        Zs = 7,
        Zl = 8,
        Zp = 9,
        Cc = 10,
        Cf = 11,
        Cs = 12,
        Co = 13,
        Cn = 14, // unassigned
        Lu = 15,
        Ll = 16,
        Lt = 17,
        Lm = 18,
        Lo = 19,
        Pc = 20,
        Pd = 21,
        Ps = 22,
        Pe = 23,
        Pi = 24,
        Pf = 25,
        Po = 26,
        Sm = 27,
        Sc = 28,
        Sk = 29,
        So = 30
    };

    // Bits of Properties::flags.
    enum Flag {
        // The full lower-case mapping is more than one unit (U+0130 → "i̇"); toLower leaves the
        // unit alone rather than apply lowerCaseDiff.
        LowerCaseSpecial = 0x10,
        // The full upper-case mapping is more than one unit (U+00DF → "SS").
        UpperCaseSpecial = 0x20
    };

    // One record per distinct combination of properties; 20 bytes on every target. The
    // members named unused* are not read by the library and are always 0, as are bits 0 and 1
    // of digitField and the flag bits other than the two above.
    //
    // The four differences are added to the code point to get the mapped unit: 0 means the
    // unit maps to itself. A few mappings jump further than a signed 16-bit value reaches
    // (U+0265 ↔ U+A78D, the Cherokee small letters U+AB70… ↔ U+13A0…); those differences are
    // stored modulo 65536, so (c + diff) & 0xFFFF is the mapped unit in every case while the
    // untruncated sum may be off by ±65536.
    struct Properties {
        unsigned char category; // a Category code
        unsigned char unused1[3];
        // Bits 2 to 7: the decimal digit value as a signed 6-bit number, 0 to 9 for decimal
        // digits of any script, −1 for every other character. Read it through digitValue().
        unsigned char digitField;
        unsigned char flags; // Flag bits
        unsigned char unused6[2];
        short lowerCaseDiff; // simple lower-case mapping minus the code point
        short upperCaseDiff; // simple upper-case mapping minus the code point
        short titleCaseDiff; // simple title-case mapping minus the code point
        short caseFoldDiff;  // simple case folding (statuses C and S) minus the code point
        unsigned short unused16[2];

        // Sign-extends the 6-bit field without relying on how >> treats negative numbers.
        int digitValue() const { return ((digitField >> 2) ^ 0x20) - 0x20; }
    };

    // The record of `c`: two reads of propertyIndex and one record. Never null.
    static const Properties* properties(unsigned short c)
    {
        return propertyRecords + propertyIndex[propertyIndex[c >> 5] + (c & 31)];
    }

    // Entries 0 to 2047 hold, for each block of 32 code points (c >> 5), the position in this
    // same array where the block's row begins; a row holds the record index of each code
    // point c & 31 of the block. Blocks with identical rows share one.
    static const unsigned short propertyIndex[];
    static const Properties propertyRecords[];
    static const int propertyIndexSize;   // entries in propertyIndex
    static const int propertyRecordCount; // entries in propertyRecords
};

static_assert(sizeof(VyUnicodeTables::Properties) == 20, "property records are 20 bytes");

class VY_EXPORT VyUnicode
{
public:
    // True for U+0009 to U+000D and for the space, line and paragraph separators (Zs, Zl,
    // Zp); false for every other control, U+0085 included.
    static bool isSpace(unsigned short c);

    // The simple upper-case mapping; `c` itself when it has none or when its full mapping is
    // more than one unit (U+00DF stays U+00DF).
    static unsigned short toUpper(unsigned short c);

    // The simple lower-case mapping; `c` itself when it has none or when its full mapping is
    // more than one unit (U+0130 stays U+0130). Language and context rules (final sigma,
    // Turkish dotless i) do not apply: U+03A3 gives U+03C3.
    static unsigned short toLower(unsigned short c);

    // The unit as case-insensitive comparison sees it: c plus its case-folding difference.
    // Two units are equal ignoring case when their folds are equal. No special-case flag is
    // consulted. Differences stored modulo 65536 (some foldings jump further than a short
    // reaches) are brought back by taking the sum to 16 bits, which changes nothing else
    // because every simple folding of a BMP unit lands in the BMP.
    static int foldCase(unsigned short c) { return foldCase(c, c); }
    // `unit` plus the folding difference of the record of `lookup`, taken to 16 bits. A string
    // folds the low half of a surrogate pair with the record of the pair's code point.
    static int foldCase(unsigned short unit, unsigned short lookup)
    {
        return (unit + VyUnicodeTables::properties(lookup)->caseFoldDiff) & 0xFFFF;
    }

    // The decimal digit value 0 to 9 for decimal digits of any script, −1 for every other
    // character (superscripts and Roman numerals included).
    static int digitValue(unsigned short c);
};

#endif
