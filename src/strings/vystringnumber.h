// Number text for VyString's formatting (number and setNum, the number forms of arg, sprintf's
// conversions): VyLocale's writers with VyLocale's current symbols.
#ifndef VYSTRINGNUMBER_H
#define VYSTRINGNUMBER_H

#include "vylocale.h"
#include "vystring.h"

// The layout a format letter asks for (e, E: exponent; f, F: decimal; anything else: general);
// the capital letters E, F and G add VyLocale::UpperCase to *flags.
inline VyLocale::DoubleForm vyDoubleForm(char format, unsigned* flags)
{
    switch (format) {
    case 'E':
        *flags |= VyLocale::UpperCase;
        // fall through
    case 'e':
        return VyLocale::FormExponent;
    case 'F':
        *flags |= VyLocale::UpperCase;
        // fall through
    case 'f':
        return VyLocale::FormDecimal;
    case 'G':
        *flags |= VyLocale::UpperCase;
        return VyLocale::FormGeneral;
    default:
        return VyLocale::FormGeneral;
    }
}

inline VyString vyFormatDouble(double value, char format, int precision, int width, unsigned flags)
{
    const VyLocale::DoubleForm form = vyDoubleForm(format, &flags);
    return VyLocale::doubleToString(VyLocale::mZeroDigit, VyLocale::mPositiveSign,
                                    VyLocale::mNegativeSign, VyLocale::mExponential,
                                    VyLocale::mGroupSeparator, VyLocale::mDecimal, value, precision,
                                    form, width, flags);
}

inline VyString vyFormatSigned(long long value, int precision, int base, int width, unsigned flags)
{
    return VyLocale::longLongToString(VyLocale::mZeroDigit, VyLocale::mGroupSeparator,
                                      VyLocale::mPositiveSign, VyLocale::mNegativeSign, value,
                                      precision, base, width, flags);
}

inline VyString vyFormatUnsigned(unsigned long long value, int precision, int base, int width,
                                 unsigned flags)
{
    return VyLocale::unsLongLongToString(VyLocale::mZeroDigit, VyLocale::mGroupSeparator,
                                         VyLocale::mPositiveSign, value, precision, base, width,
                                         flags);
}

#endif
