// BmpData: the BMP writer and the coverage text dump.
#include "vybmpdata.h"

#include "vyfont.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace
{

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kPaletteEntries = 256;

// Little-endian stores into a header being assembled, whatever the host's byte order.
unsigned char* put16(unsigned char* p, uint32_t v)
{
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    return p + 2;
}

unsigned char* put32(unsigned char* p, uint32_t v)
{
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    p[2] = uint8_t(v >> 16);
    p[3] = uint8_t(v >> 24);
    return p + 4;
}

} // namespace

int BmpData::SaveImage(const char* path, Image* image)
{
    FILE* file = fopen(path, "wb");
    if (!file)
        return 0;
    fwrite("BM", 1, 2, file);
    const int channels = image->channels;
    if (channels != 3 && channels != 1)
        return fclose(file);

    const uint32_t width = uint32_t(image->width);
    const uint32_t height = uint32_t(image->height);
    const bool colour = channels == 3;
    const uint32_t rowBytes = width * uint32_t(channels);
    const uint32_t r = rowBytes % 4;
    uint32_t stride;
    if (colour) {
        // Kept: a row that needs no padding still counts 4 more bytes here. Only the file size
        // and image size fields see it, never the pixel data; readers of these dumps go by the
        // data offset and the width, and tools comparing dumps expect these header bytes.
        stride = rowBytes + 4 - r;
    } else {
        stride = r ? rowBytes + 4 - r : rowBytes;
    }
    const uint32_t dataOffset =
        kFileHeaderBytes + kInfoHeaderBytes + (colour ? 0 : kPaletteEntries * 4);

    unsigned char header[kFileHeaderBytes + kInfoHeaderBytes];
    unsigned char* p = header + 2;
    p = put32(p, height * stride + dataOffset);
    p = put16(p, 0);
    p = put16(p, 0);
    p = put32(p, dataOffset);
    p = put32(p, kInfoHeaderBytes);
    // An 8-bit dump declares the padded row as its width, so the padding shows as black
    // columns on the right rather than being hidden.
    p = put32(p, colour ? width : stride);
    p = put32(p, height); // positive: rows stored bottom-up
    p = put16(p, 1);
    p = put16(p, colour ? 24 : 8);
    p = put32(p, 0);
    p = put32(p, height * stride);
    p = put32(p, 0);
    p = put32(p, 0);
    p = put32(p, colour ? 0 : kPaletteEntries);
    put32(p, colour ? 0 : kPaletteEntries);
    fwrite(header + 2, 1, sizeof header - 2, file);

    if (!colour) {
        unsigned char* palette = static_cast<unsigned char*>(malloc(kPaletteEntries * 4));
        for (uint32_t i = 0; i < kPaletteEntries; ++i) {
            palette[4 * i] = uint8_t(i);
            palette[4 * i + 1] = uint8_t(i);
            palette[4 * i + 2] = uint8_t(i);
            palette[4 * i + 3] = 0;
        }
        fwrite(palette, 1, kPaletteEntries * 4, file);
        free(palette);
    }

    const unsigned char zeros[4] = {0, 0, 0, 0};
    for (int y = image->height - 1; y >= 0; --y) {
        if (rowBytes)
            fwrite(image->data + size_t(y) * rowBytes, 1, rowBytes, file);
        if (r)
            fwrite(zeros, 1, 4 - r, file);
    }
    return fclose(file);
}

int BmpData::SaveImage(const char* path, GlyphBitmap* glyph)
{
    Image image{glyph->width, glyph->rows, 1, glyph->buffer};
    return SaveImage(path, &image);
}

void BmpData::showImageDate(GlyphBitmap* glyph)
{
    vyShowCoverage(glyph->rows, glyph->width, glyph->buffer);
}

void vyShowCoverage(int rows, int width, const unsigned char* buffer)
{
    printf("\nrow = %d, col = %d \n", rows, width);
    if (!buffer)
        return;
    for (int y = 0; y < rows; ++y) {
        const unsigned char* row = buffer + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x)
            putchar(row[x] == 0 ? ' ' : row[x] == 255 ? '0' : '1');
        putchar('\n');
    }
}
