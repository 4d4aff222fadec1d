// Queries over the Unicode property tables; the tables themselves are generated into
// vyunicodetables.cpp.
#include "vyunicode.h"

#include <cstddef>

// The record layout is shared with code that reads the fields by byte position.
static_assert(offsetof(VyUnicodeTables::Properties, category) == 0, "category is byte 0");
static_assert(offsetof(VyUnicodeTables::Properties, digitField) == 4, "digit value is byte 4");
static_assert(offsetof(VyUnicodeTables::Properties, flags) == 5, "flags are byte 5");
static_assert(offsetof(VyUnicodeTables::Properties, lowerCaseDiff) == 8, "fifth word");
static_assert(offsetof(VyUnicodeTables::Properties, upperCaseDiff) == 10, "sixth word");
static_assert(offsetof(VyUnicodeTables::Properties, titleCaseDiff) == 12, "seventh word");
static_assert(offsetof(VyUnicodeTables::Properties, caseFoldDiff) == 14, "eighth word");

bool VyUnicode::isSpace(unsigned short c)
{
    // Kept: U+0085 (NEXT LINE) is a control (Cc) and is not white space here, although
    // Unicode lists it as White_Space. Trimming, simplifying and number parsing have always
    // treated it as text, and the framework expects the same results.
    if (c >= 0x0009 && c <= 0x000D)
        return true;
    const unsigned char category = VyUnicodeTables::properties(c)->category;
    return category == VyUnicodeTables::Zs || category == VyUnicodeTables::Zl ||
           category == VyUnicodeTables::Zp;
}

unsigned short VyUnicode::toUpper(unsigned short c)
{
    const VyUnicodeTables::Properties* p = VyUnicodeTables::properties(c);
    if (p->flags & VyUnicodeTables::UpperCaseSpecial)
        return c;
    return static_cast<unsigned short>((c + p->upperCaseDiff) & 0xFFFF);
}

unsigned short VyUnicode::toLower(unsigned short c)
{
    const VyUnicodeTables::Properties* p = VyUnicodeTables::properties(c);
    if (p->flags & VyUnicodeTables::LowerCaseSpecial)
        return c;
    return static_cast<unsigned short>((c + p->lowerCaseDiff) & 0xFFFF);
}

int VyUnicode::digitValue(unsigned short c)
{
    return VyUnicodeTables::properties(c)->digitValue();
}
