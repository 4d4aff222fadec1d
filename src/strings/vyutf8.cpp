// Conversion between UTF-8 bytes and UTF-16 units, one unit per sequence of at most three
// bytes. Runs of ASCII are converted eight bytes (four units) at a time.
#include "vystring.h"

#include <stdint.h>
#include <string.h>

// Leading 1 bits of a byte: 0 for ASCII, 1 for a continuation byte, 2 to 8 for lead bytes.
static inline int leadingOnes(unsigned char b)
{
    int k = 0;
    while (b & 0x80) {
        ++k;
        b = static_cast<unsigned char>(b << 1);
    }
    return k;
}

int VyString::utf8ToUcs2(VyUcs2* dst, const char* src, int len)
{
    if (len < 1)
        return 0;
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src);

    // Drop an incomplete sequence at the end: walk back over continuation bytes to a lead
    // byte; unless exactly its sequence length stands from it to the end, the end moves to
    // just before it and the walk goes on.
    int end = len;
    for (int i = len - 1; i >= 0; --i) {
        const unsigned char b = s[i];
        if (b < 0x80)
            break;
        const int k = leadingOnes(b);
        if (k == 1)
            continue;
        if (end - i == k)
            break;
        end = i;
    }
    if (end <= 0)
        return 0;

    VyUcs2* out = dst;
    int i = 0;
    // A sequence that starts more than two bytes before `len` has its trailing bytes inside
    // the input, so this loop reads them unchecked; the last bytes go through the checked loop
    // below.
    const int fastEnd = end < len - 2 ? end : len - 2;
    while (i < fastEnd) {
        const unsigned b = s[i];
        if (b < 0x80) {
            if (fastEnd - i >= 8) {
                uint64_t word;
                memcpy(&word, s + i, 8);
                if (!(word & 0x8080808080808080ull)) {
                    for (int j = 0; j < 8; ++j)
                        out[j] = s[i + j];
                    out += 8;
                    i += 8;
                    continue;
                }
            }
            *out++ = VyUcs2(b);
            ++i;
        } else if ((b & 0xE0) == 0xC0) {
            *out++ = VyUcs2(((b & 0x1F) << 6) | (s[i + 1] & 0x3F));
            i += 2;
        } else if ((b & 0xF0) == 0xE0) {
            *out++ = VyUcs2(((b & 0x0F) << 12) | ((s[i + 1] & 0x3F) << 6) | (s[i + 2] & 0x3F));
            i += 3;
        } else {
            ++i;
        }
    }
    while (i < end) {
        const unsigned b = s[i];
        if (b < 0x80) {
            *out++ = VyUcs2(b);
            ++i;
        } else if ((b & 0xE0) == 0xC0) {
            // The trailing bytes are not checked; one past `len` reads as a terminator would.
            const unsigned b1 = i + 1 < len ? s[i + 1] : 0;
            *out++ = VyUcs2(((b & 0x1F) << 6) | (b1 & 0x3F));
            i += 2;
        } else if ((b & 0xF0) == 0xE0) {
            const unsigned b1 = i + 1 < len ? s[i + 1] : 0;
            const unsigned b2 = i + 2 < len ? s[i + 2] : 0;
            *out++ = VyUcs2(((b & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F));
            i += 3;
        } else {
            // Continuation bytes out of place, four-byte leads and 0xF8 to 0xFF: skipped, so a
            // four-byte sequence vanishes byte by byte.
            ++i;
        }
    }
    return int(out - dst);
}

int VyString::ucs2ToUtf8(char* dst, const VyUcs2* src, int len)
{
    if (len < 1)
        return 0;
    unsigned char* out = reinterpret_cast<unsigned char*>(dst);
    const VyUcs2* const end = src + len;
    while (src != end) {
        unsigned u = *src;
        if (u < 0x80) {
            // A run of ASCII goes four units at a time; only an ASCII unit starts one, so other
            // scripts pay nothing for it.
            while (end - src >= 4) {
                uint64_t word;
                memcpy(&word, src, 8);
                if (word & 0xFF80FF80FF80FF80ull)
                    break;
                out[0] = static_cast<unsigned char>(src[0]);
                out[1] = static_cast<unsigned char>(src[1]);
                out[2] = static_cast<unsigned char>(src[2]);
                out[3] = static_cast<unsigned char>(src[3]);
                out += 4;
                src += 4;
            }
            if (src == end)
                break;
            u = *src;
            if (u < 0x80) {
                *out++ = static_cast<unsigned char>(u);
                ++src;
                continue;
            }
        }
        ++src;
        if (u < 0x800) {
            out[0] = static_cast<unsigned char>(0xC0 | (u >> 6));
            out[1] = static_cast<unsigned char>(0x80 | (u & 0x3F));
            out += 2;
        } else {
            // Kept: surrogates are not paired; each unit becomes its own three-byte sequence
            // (0xD83D 0xDE00 -> ED A0 BD ED B8 80). utf8ToUcs2 reads exactly that back, so any
            // unit sequence, lone surrogates included, survives the round trip unchanged.
            out[0] = static_cast<unsigned char>(0xE0 | (u >> 12));
            out[1] = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
            out[2] = static_cast<unsigned char>(0x80 | (u & 0x3F));
            out += 3;
        }
    }
    return int(reinterpret_cast<char*>(out) - dst);
}
