#include "vytextutf8.h"

long decodeUtf8(const std::string& bytes, std::vector<unsigned short>& units)
{
    const size_t n = bytes.size();
    units.clear();
    units.reserve(n);
    size_t i = 0;
    while (i < n) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b < 0x80) {
            units.push_back(b);
            ++i;
            continue;
        }
        // Lead bytes: C2..DF two bytes, E0..EF three, F0..F4 four. C0, C1 and F5..FF would
        // only ever start overlong or out-of-range forms.
        int length;
        unsigned cp;
        unsigned min;
        if (b >= 0xC2 && b <= 0xDF) {
            length = 2;
            cp = b & 0x1F;
            min = 0x80;
        } else if (b >= 0xE0 && b <= 0xEF) {
            length = 3;
            cp = b & 0x0F;
            min = 0x800;
        } else if (b >= 0xF0 && b <= 0xF4) {
            length = 4;
            cp = b & 0x07;
            min = 0x10000;
        } else {
            return long(i);
        }
        if (n - i < size_t(length))
            return long(i);
        for (int k = 1; k < length; ++k) {
            const unsigned char t = static_cast<unsigned char>(bytes[i + k]);
            if ((t & 0xC0) != 0x80)
                return long(i);
            cp = cp << 6 | (t & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return long(i);
        if (cp >= 0x10000) {
            cp -= 0x10000;
            units.push_back(static_cast<unsigned short>(0xD800 | cp >> 10));
            units.push_back(static_cast<unsigned short>(0xDC00 | (cp & 0x3FF)));
        } else {
            units.push_back(static_cast<unsigned short>(cp));
        }
        i += size_t(length);
    }
    return -1;
}

std::string encodeUtf8(const unsigned short* units, int n)
{
    std::string out;
    out.reserve(size_t(n > 0 ? n : 0));
    for (int i = 0; i < n; ++i) {
        unsigned cp = units[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (units[i + 1] - 0xDC00u);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x80) {
            out += char(cp);
        } else if (cp < 0x800) {
            out += char(0xC0 | cp >> 6);
            out += char(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            out += char(0xE0 | cp >> 12);
            out += char(0x80 | (cp >> 6 & 0x3F));
            out += char(0x80 | (cp & 0x3F));
        } else {
            out += char(0xF0 | cp >> 18);
            out += char(0x80 | (cp >> 12 & 0x3F));
            out += char(0x80 | (cp >> 6 & 0x3F));
            out += char(0x80 | (cp & 0x3F));
        }
    }
    return out;
}
