// VyString to and from std::u16string, the model type of the string tests and fuzz targets, and
// to UTF-8 as a std::string for readable comparisons.
#ifndef VY_TESTS_VYU16_H
#define VY_TESTS_VYU16_H

#include "vystring.h"

#include <string>

inline std::u16string U(const VyString& s)
{
    return s.isEmpty() ? std::u16string()
                       : std::u16string(reinterpret_cast<const char16_t*>(s.unicode()), s.size());
}

inline std::string U8(const VyString& s)
{
    return std::string(s.toUtf8().constData());
}

inline VyString V(const std::u16string& s)
{
    return VyString(reinterpret_cast<const VyUcs2*>(s.data()), int(s.size()));
}

#endif
