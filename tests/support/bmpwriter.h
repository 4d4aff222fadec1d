// Builds BMP file bytes for the image tests and benchmarks: any depth, size, compression, masks,
// colour table and extra data, so that well-formed and hostile files come from one place.
// Header fields can be patched afterwards with putLe.
#ifndef VY_TESTS_BMPWRITER_H
#define VY_TESTS_BMPWRITER_H

#include <algorithm>
#include <stdint.h>
#include <string>
#include <vector>

struct BmpImage {
    int width = 1;
    int height = 1;
    int depth = 24;
    uint32_t compression = 0;
    std::vector<uint32_t> masks;   // written as 32-bit values after the info header
    std::vector<uint32_t> palette; // 0x00RRGGBB: written as blue, green, red, reserved
    uint32_t extra = 0;            // bytes of 0xEE between the table or masks and the rows
    // width × height pixel values in file order (bottom row first): an index for depths up to
    // 8, the 16-bit value, 0xRRGGBB for 24 bits, the four bytes (little-endian) for 32 bits.
    std::vector<uint32_t> values;
};

// Stores `bytes` bytes of v little-endian at `offset`, growing `s` when needed.
inline void putLe(std::string& s, size_t offset, uint64_t v, int bytes)
{
    if (s.size() < offset + size_t(bytes))
        s.resize(offset + size_t(bytes));
    for (int i = 0; i < bytes; ++i)
        s[offset + size_t(i)] = char(v >> (8 * i));
}

// Bytes per file row: the row's bits rounded up to whole 4-byte words.
inline size_t bmpRowBytes(int width, int depth)
{
    return (size_t(width) * size_t(depth) + 31) / 32 * 4;
}

inline uint32_t bmpDataOffset(const BmpImage& im)
{
    return uint32_t(54 + 4 * (im.masks.size() + im.palette.size()) + im.extra);
}

inline std::string bmpBytes(const BmpImage& im)
{
    std::string s = "BM";
    const uint32_t data = bmpDataOffset(im);
    const size_t rowBytes = bmpRowBytes(im.width, im.depth), size = rowBytes * size_t(im.height);
    const uint64_t w = uint32_t(im.width), h = uint32_t(im.height), depth = uint32_t(im.depth);
    // (offset, value, bytes) of the header fields that are not zero
    const uint64_t fields[][3] = {
        {2, data + size, 4}, {10, data, 4}, {14, 40, 4},    {18, w, 4},
        {22, h, 4},          {26, 1, 2},    {28, depth, 2}, {30, im.compression, 4},
        {34, size, 4},       {38, 2835, 4}, {42, 2835, 4},  {46, im.palette.size(), 4}};
    for (const auto& f : fields)
        putLe(s, f[0], f[1], int(f[2]));
    putLe(s, 50, 0, 4);
    for (uint32_t m : im.masks)
        putLe(s, s.size(), m, 4);
    for (uint32_t c : im.palette)
        putLe(s, s.size(), c & 0xFFFFFF, 4);
    s.append(im.extra, char(0xEE));
    for (int y = 0; y < im.height; ++y) {
        // Padding bytes are not zero, so a reader that takes them for pixels shows it.
        std::string row(rowBytes, char(0x5A));
        std::fill_n(row.begin(), (size_t(im.width) * size_t(im.depth) + 7) / 8, '\0');
        for (int x = 0; x < im.width; ++x) {
            const uint32_t v = im.values[size_t(y) * size_t(im.width) + size_t(x)];
            const size_t bit = size_t(x) * size_t(im.depth);
            if (im.depth <= 8)
                row[bit / 8] = char(row[bit / 8] | v << (8 - size_t(im.depth) - bit % 8));
            else
                putLe(row, bit / 8, v, im.depth / 8);
        }
        s += row;
    }
    return s;
}

#endif
