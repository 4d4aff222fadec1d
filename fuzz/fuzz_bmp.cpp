// Fuzzes the BMP decoder: the input is a whole file, read through a memory stream by the FILE*
// constructor and decoded into a buffer of exactly width × height × 4 bytes, so that any read
// or write outside it shows under AddressSanitizer.
//
// Declined after the header: images whose rows are not a whole number of bytes (decoding them
// spins by design) and images above kMaxPixels, to keep the buffer small.
#include "vybitmap.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <vector>

namespace
{
constexpr int64_t kMaxPixels = 1 << 16;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<char> bytes(data, data + size);
    // fmemopen refuses an empty buffer; an empty file is the same as a stream at its end.
    FILE* stream = fmemopen(bytes.empty() ? nullptr : bytes.data(), bytes.size(), "rb");
    if (!stream)
        stream = tmpfile();
    if (!stream)
        return 0;
    {
        VyBitmap bmp(stream);
        const int64_t pixels = int64_t(bmp.width) * bmp.height;
        if (bmp.width > 0 && bmp.height > 0 && pixels <= kMaxPixels &&
            VyBitmap::hasWholeRowBytes(bmp.width, bmp.bitDepth)) {
            std::vector<unsigned char> out(size_t(pixels) * 4);
            bmp.decode(out.data());
        }
    }
    fclose(stream);
    return 0;
}
