// VyString and numbers: number and setNum write them with VyLocale's symbols, the to...
// readers take the whole text as one number and narrow it to the asked type.
#include "vystring.h"

#include "vylocale.h"
#include "vystringnumber.h"

#include <limits>
#include <type_traits>
#include <utility>

VyString VyString::number(int n, int base)
{
    return number((long long)n, base);
}

VyString VyString::number(long n, int base)
{
    return number((long long)n, base);
}

VyString VyString::number(uint n, int base)
{
    return number((unsigned long long)n, base);
}

VyString VyString::number(unsigned long n, int base)
{
    return number((unsigned long long)n, base);
}

// number: the text setNum would assign, returned as it is made (a string that starts empty and
// takes the text by setNum would only add two reference count changes).
VyString VyString::number(long long n, int base)
{
    return vyFormatSigned(n, -1, base, -1, VyLocale::NoFlags);
}

VyString VyString::number(unsigned long long n, int base)
{
    return vyFormatUnsigned(n, -1, base, -1, VyLocale::NoFlags);
}

VyString VyString::number(double n, char format, int precision)
{
    return vyFormatDouble(n, format, precision, -1, VyLocale::NoFlags);
}

// setNum: the new text's block is swapped in and the old one released with the temporary,
// which is assignment without the extra reference count changes.
VyString& VyString::setNum(long long n, int base)
{
    VyString text = vyFormatSigned(n, -1, base, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

VyString& VyString::setNum(unsigned long long n, int base)
{
    VyString text = vyFormatUnsigned(n, -1, base, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

VyString& VyString::setNum(double n, char format, int precision)
{
    VyString text = vyFormatDouble(n, format, precision, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

long long VyString::toLongLong(bool* ok, int base) const
{
    return VyLocale::stringToLongLong(*this, base, ok, VyLocale::RejectGroupSeparators);
}

unsigned long long VyString::toULongLong(bool* ok, int base) const
{
    return VyLocale::stringToUnsLongLong(*this, base, ok, VyLocale::RejectGroupSeparators);
}

namespace
{

// A 64-bit read narrowed to T: in range it keeps the read's *ok, outside it gives 0 and false.
template <typename T, typename Wide> T narrowed(Wide value, bool* ok)
{
    bool inRange;
    if constexpr (std::is_signed<Wide>::value)
        inRange = value >= Wide(std::numeric_limits<T>::min()) &&
                  value <= Wide(std::numeric_limits<T>::max());
    else
        inRange = value <= Wide(std::numeric_limits<T>::max());
    if (!inRange) {
        if (ok)
            *ok = false;
        return 0;
    }
    return T(value);
}

} // namespace

short VyString::toShort(bool* ok, int base) const
{
    return narrowed<short>(toLongLong(ok, base), ok);
}

unsigned short VyString::toUShort(bool* ok, int base) const
{
    return narrowed<unsigned short>(toULongLong(ok, base), ok);
}

int VyString::toInt(bool* ok, int base) const
{
    return narrowed<int>(toLongLong(ok, base), ok);
}

uint VyString::toUInt(bool* ok, int base) const
{
    return narrowed<uint>(toULongLong(ok, base), ok);
}

long VyString::toLong(bool* ok, int base) const
{
    return narrowed<long>(toLongLong(ok, base), ok);
}

unsigned long VyString::toULong(bool* ok, int base) const
{
    return narrowed<unsigned long>(toULongLong(ok, base), ok);
}

double VyString::toDouble(bool* ok) const
{
    return VyLocale::stringToDouble(*this, ok, VyLocale::RejectGroupSeparators);
}

float VyString::toFloat(bool* ok) const
{
    bool good;
    const double value = toDouble(&good);
    // The largest float; NaN and infinity lie outside.
    if (good && value >= -3.4028234663852886e38 && value <= 3.4028234663852886e38) {
        if (ok)
            *ok = true;
        return float(value);
    }
    if (ok)
        *ok = false;
    return 0;
}
