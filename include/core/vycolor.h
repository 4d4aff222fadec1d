// VyColor: a colour as five bytes, red, green, blue, alpha and one byte the framework keeps
// beside them.
//
// The library only copies and compares colours; what the bytes mean belongs to the framework's
// painter. A plain five-byte value with public components, copied by value. Any thread may use
// its own copies.
#ifndef VYCOLOR_H
#define VYCOLOR_H

#include "vyglobal.h"

class VY_EXPORT VyColor
{
public:
    VyColor() : red(0), green(0), blue(0), alpha(0), extra(0) {}
    VyColor(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha = 255,
            unsigned char extra = 0)
        : red(red), green(green), blue(blue), alpha(alpha), extra(extra)
    {
    }

    VyColor(const VyColor&) = default;
    // Copies all five bytes.
    VyColor& operator=(const VyColor&) = default;
    // Compares all five bytes.
    bool operator==(const VyColor& c) const
    {
        return red == c.red && green == c.green && blue == c.blue && alpha == c.alpha &&
               extra == c.extra;
    }
    bool operator!=(const VyColor& c) const { return !(*this == c); }

    unsigned char red;
    unsigned char green;
    unsigned char blue;
    unsigned char alpha;
    unsigned char extra;
};

static_assert(sizeof(VyColor) == 5, "a colour is five bytes");

#endif
