// UTF-8 input to VyString: any bytes through utf8ToUcs2, the `const char*` constructor,
// append(const char*, int) and back through toUtf8 and ucs2ToUtf8.
//
// Checked on every input: the decoder matches a reference decoder written here from the rules
// (incomplete tails dropped, stray bytes skipped, trailing bytes taken unchecked), writes at
// most `len` units and reads only its `len` bytes (buffers are exactly sized for the
// sanitizer); constructed strings hold the right units, are 0-terminated and have the byte
// count + 1 as capacity; toUtf8 is 0-terminated, as long as the units' encodings, has capacity
// 3 * size + 1 and decodes back to the same units. The input read as 16-bit units (lone
// surrogates and 0 units included) must survive the round trip too, since each unit is
// encoded on its own.
#include "fuzz_check.h"
#include "vystring.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

namespace
{

// Leading 1 bits of a byte: 0 ASCII, 1 continuation, 2 to 8 lead bytes.
int leadingOnes(unsigned char b)
{
    int k = 0;
    while (k < 8 && (b & (0x80 >> k)))
        ++k;
    return k;
}

// The decoding rules, one byte at a time.
std::u16string referenceDecode(const unsigned char* in, int len)
{
    int end = len;
    for (int i = len - 1; i >= 0; --i) {
        const int k = leadingOnes(in[i]);
        if (k == 0)
            break;
        if (k == 1)
            continue;
        if (end - i == k)
            break;
        end = i;
    }
    auto at = [&](int i) -> unsigned { return i < len ? in[i] : 0u; };
    std::u16string out;
    int i = 0;
    while (i < end) {
        const int k = leadingOnes(in[i]);
        if (k == 0) {
            out += char16_t(in[i]);
        } else if (k == 2) {
            out += char16_t((in[i] & 0x1F) << 6 | (at(i + 1) & 0x3F));
        } else if (k == 3) {
            out += char16_t((in[i] & 0x0F) << 12 | (at(i + 1) & 0x3F) << 6 | (at(i + 2) & 0x3F));
        }
        i += k == 2 || k == 3 ? k : 1;
    }
    return out;
}

std::u16string unitsOf(const VyString& s)
{
    return s.isEmpty()
               ? std::u16string()
               : std::u16string(reinterpret_cast<const char16_t*>(s.unicode()), size_t(s.size()));
}

int encodedLength(const std::u16string& units)
{
    int n = 0;
    for (char16_t u : units)
        n += u < 0x80 ? 1 : u < 0x800 ? 2 : 3;
    return n;
}

// toUtf8 of `s`: length, terminator, capacity, and the bytes decode back to the same units
// (through an exactly sized copy, so an over-read shows).
void checkToUtf8(const VyString& s)
{
    const std::u16string units = unitsOf(s);
    const VyByteArray bytes = s.toUtf8();
    FUZZ_CHECK(bytes.size() == encodedLength(units));
    FUZZ_CHECK(bytes.d->alloc == 3 * s.size() + 1);
    FUZZ_CHECK(bytes.constData() && bytes.constData()[bytes.size()] == 0);

    std::vector<char> copy(bytes.constData(), bytes.constData() + bytes.size());
    std::vector<VyUcs2> back(copy.size());
    const int n = VyString::utf8ToUcs2(back.data(), copy.data(), int(copy.size()));
    FUZZ_CHECK(std::u16string(back.begin(), back.begin() + n) == units);

    std::vector<char> direct(3 * units.size());
    const int m = VyString::ucs2ToUtf8(direct.data(), s.unicode(), s.size());
    FUZZ_CHECK(m == bytes.size());
    FUZZ_CHECK(m == 0 || memcmp(direct.data(), bytes.constData(), size_t(m)) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 1 << 16)
        return 0;
    const int len = int(size);

    // The decoder on exactly `len` bytes into exactly `len` units.
    std::vector<char> src(data, data + size);
    std::vector<VyUcs2> dst(size);
    const int n = VyString::utf8ToUcs2(dst.data(), src.data(), len);
    FUZZ_CHECK(n >= 0 && n <= len);
    FUZZ_CHECK(std::u16string(dst.begin(), dst.begin() + n) == referenceDecode(data, len));

    // The constructor reads up to the first 0 byte, or the first `size` bytes when fewer.
    const std::string text(reinterpret_cast<const char*>(data), size);
    const int length = int(strlen(text.c_str()));
    const int sizeArg = len > 0 ? int(data[0] % 64) - 1 : -1;
    const int used = sizeArg >= 0 && sizeArg < length ? sizeArg : length;
    const std::u16string expected = referenceDecode(data, used);
    const VyString s(text.c_str(), sizeArg);
    FUZZ_CHECK(unitsOf(s) == expected);
    FUZZ_CHECK(s.d->alloc == used + 1 && s.unicode() != nullptr);
    checkTerminated(s);
    checkToUtf8(s);

    // Appending the same bytes to a copy: the copy grows, the original stays.
    VyString appended(s);
    appended.append(text.c_str(), sizeArg);
    FUZZ_CHECK(unitsOf(appended) == expected + expected);
    FUZZ_CHECK(unitsOf(s) == expected);
    checkTerminated(appended);

    // The input read as little-endian 16-bit units: every unit sequence round-trips.
    std::vector<VyUcs2> units(size / 2);
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = VyUcs2(data[2 * i] | data[2 * i + 1] << 8);
    const VyString u(units.data(), int(units.size()));
    FUZZ_CHECK(u.size() == int(units.size()));
    checkTerminated(u);
    checkToUtf8(u);
    return 0;
}
