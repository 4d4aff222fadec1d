// Images written by BmpData and read back by VyBitmap: a glyph's coverage or a raw 1- or
// 3-channel image goes to a BMP file in the temporary folder, and the decoded pixels must be
// the written ones.
//
// Expected: an 8-bit file (glyphs and 1-channel images) decodes to grey pixels (the coverage
// in blue, green and red, alpha 255) at its padded width, the padding columns black; a
// 24-bit file decodes to the image's bytes in the order they stand (blue, green, red), alpha
// 255; both top row first. An image with no pixels, or a channel count the writer does not
// know (the file then holds only "BM"), is rejected by the reader: width and height stay 0.
//
// Input layout:
//     byte 0   bit 0: the glyph overload; bits 1-2: the channels of a raw image (1, 3, 0, 4);
//              bit 3: read through an open stream instead of the path
//     byte 1   width % kMaxSide, byte 2 rows % kMaxSide
//     the rest the pixel bytes, repeated as needed (zeros when there are none)
#include "fuzz_check.h"
#include "vybitmap.h"
#include "vybmpdata.h"
#include "vyfont.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

constexpr int kMaxSide = 48;

const std::string& scratchPath()
{
    static const std::string path = (std::filesystem::temp_directory_path() /
                                     ("fuzz_bmp_roundtrip_" + std::to_string(getpid()) + ".bmp"))
                                        .string();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 3)
        return 0;
    const bool glyph = data[0] & 1, throughStream = data[0] & 8;
    const int channelChoices[] = {1, 3, 0, 4};
    const int channels = glyph ? 1 : channelChoices[data[0] >> 1 & 3];
    const int width = data[1] % kMaxSide, rows = data[2] % kMaxSide;
    std::vector<unsigned char> pixels(size_t(width * rows * (channels ? channels : 1)));
    for (size_t i = 0; i < pixels.size() && size > 3; ++i)
        pixels[i] = data[3 + i % (size - 3)];

    const char* path = scratchPath().c_str();
    if (glyph) {
        GlyphBitmap g = {};
        g.width = static_cast<unsigned short>(width);
        g.rows = static_cast<unsigned short>(rows);
        g.pitch = static_cast<unsigned short>(width);
        g.buffer = pixels.data();
        FUZZ_CHECK(BmpData().SaveImage(path, &g) == 0);
    } else {
        Image image{width, rows, channels, pixels.data()};
        FUZZ_CHECK(BmpData().SaveImage(path, &image) == 0);
    }

    FILE* stream = throughStream ? fopen(path, "rb") : nullptr;
    FUZZ_CHECK(!throughStream || stream);
    {
        VyBitmap bmp = throughStream ? VyBitmap(stream) : VyBitmap(path);
        if (width == 0 || rows == 0 || (channels != 1 && channels != 3)) {
            FUZZ_CHECK(bmp.width == 0 && bmp.height == 0);
        } else {
            // 8-bit rows are stored (and read back) padded to whole words.
            const int stored = channels == 1 ? (width + 3) / 4 * 4 : width;
            FUZZ_CHECK(bmp.width == stored && bmp.height == rows);
            FUZZ_CHECK(bmp.bitDepth == 8 * channels);
            std::vector<unsigned char> out(size_t(stored * rows * 4));
            bmp.decode(out.data());
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < stored; ++x) {
                    const unsigned char* px = &out[size_t((y * stored + x) * 4)];
                    for (int c = 0; c < 3; ++c) {
                        const size_t from = size_t((y * width + x) * channels + c % channels);
                        FUZZ_CHECK(px[c] == (x < width ? pixels[from] : 0));
                    }
                    FUZZ_CHECK(px[3] == 255);
                }
            }
        }
    }
    if (stream)
        fclose(stream);
    remove(path);
    return 0;
}
