#include "vybitmap.h"

#include "bmpwriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdio.h>
#include <string>
#include <vector>

namespace
{

constexpr uint8_t kFill = 0xCD;
constexpr size_t kGuard = 16;

const char kUnderspecified[] = "Warning: file has an underspecified color table.The tablewill be "
                               "padded with extra white (255,255,255,0) entries.\n";

struct Decoded {
    int width = 0, height = 0;
    std::vector<uint8_t> pixels; // width × height × 4 bytes plus a guard, all kFill at first
    std::string out;             // what construction and decode printed
};

// Constructs from a memory stream (the path constructor shares the header reading) and decodes
// into a fresh buffer.
Decoded decode(std::string bytes)
{
    FILE* f = fmemopen(bytes.data(), bytes.size(), "rb");
    Decoded d;
    testing::internal::CaptureStdout();
    {
        VyBitmap bmp(f);
        d.width = bmp.width;
        d.height = bmp.height;
        d.pixels.assign(size_t(d.width) * size_t(d.height) * 4 + kGuard, kFill);
        bmp.decode(d.pixels.data());
    }
    fflush(stdout);
    d.out = testing::internal::GetCapturedStdout();
    fclose(f);
    return d;
}

int maskShift(uint32_t m)
{
    int s = 0;
    for (; m > 31; m >>= 1)
        ++s;
    return s;
}

// What decoding `im` must give when its file is cut to `size` bytes.
Decoded expected(const BmpImage& im, size_t size)
{
    Decoded d;
    d.width = im.width;
    d.height = im.height;
    d.pixels.assign(size_t(im.width) * size_t(im.height) * 4 + kGuard, kFill);
    if (im.depth <= 8 && im.palette.size() < (1u << im.depth))
        d.out += kUnderspecified;
    if (im.extra > 0)
        d.out += im.depth == 16
                     ? "Warning: Extra meta data detected in file, Data will be skipped.\n"
                     : "Warning: Extra meta data detected in file Data will be skipped.\n";
    uint32_t masks[3] = {0x7C00, 0x03E0, 0x001F};
    for (size_t i = 0; i < im.masks.size(); ++i)
        masks[i] = im.masks[i] & 0xFFFF;
    const size_t rowBytes = bmpRowBytes(im.width, im.depth);
    for (int r = 0; r < im.height; ++r) {
        // 16-bit rows keep the whole pixels that arrive; the others need the whole row.
        const size_t start = bmpDataOffset(im) + size_t(r) * rowBytes;
        const size_t arrived = size > start ? size - start : 0;
        const int count = im.depth == 16        ? int(std::min(arrived / 2, size_t(im.width)))
                          : arrived >= rowBytes ? im.width
                                                : 0;
        if (count == 0 && im.depth != 16)
            d.out += "Could not read proper amount of data.\n";
        // The file's first row lands in the last output row, except at 16 bits.
        const int outRow = im.depth == 16 ? r : im.height - 1 - r;
        for (int x = 0; x < count; ++x) {
            const uint32_t v = im.values[size_t(r) * size_t(im.width) + size_t(x)];
            uint32_t bgra = im.depth == 32 ? v : 0xFF000000 | v; // bytes blue, green, red, alpha
            if (im.depth <= 8)
                bgra = v < im.palette.size() ? 0xFF000000 | im.palette[v] : 0xFFFFFFFF;
            if (im.depth == 16) {
                bgra = 0xFF000000;
                for (int c = 0; c < 3; ++c) // blue, green, red from masks 2, 1, 0
                    bgra |= (((v & masks[2 - c]) >> maskShift(masks[2 - c])) * 8 & 0xFF) << 8 * c;
            }
            for (int c = 0; c < 4; ++c)
                d.pixels[(size_t(outRow) * size_t(im.width) + size_t(x)) * 4 + size_t(c)] =
                    uint8_t(bgra >> 8 * c);
        }
        if (count < im.width)
            break;
    }
    return d;
}

BmpImage randomImage(std::mt19937& rng, int depth, uint32_t compression)
{
    auto pick = [&](int lo, int hi) { return int(rng() % unsigned(hi - lo + 1)) + lo; };
    BmpImage im;
    im.depth = depth;
    im.compression = compression;
    const int unit = depth == 1 ? 8 : depth == 4 ? 2 : 1; // whole bytes per row
    im.width = unit * pick(1, 9);
    im.height = pick(1, 4);
    const int extras[] = {0, 0, 3, 6, 9000};
    im.extra = uint32_t(extras[pick(0, 4)]);
    if (depth <= 8) {
        // A short table leaves no extra data: the decoder would take it for rows.
        const int n = 1 << depth;
        im.palette.resize(size_t(pick(0, 3) || im.extra ? n : pick(0, n)));
        for (uint32_t& c : im.palette)
            c = rng() & 0xFFFFFF;
    }
    if (compression == 3) {
        const uint32_t sets[][3] = {
            {0xF800, 0x07E0, 0x001F},
            {uint32_t(rng() & 0xFFFF), uint32_t(rng() & 0xFFFF), uint32_t(rng() & 0xFFFF)}};
        const auto& set = sets[pick(0, 1)];
        im.masks = {set[0] | 0xABCD0000, set[1], set[2]}; // high halves are ignored
    }
    im.values.resize(size_t(im.width) * size_t(im.height));
    const uint32_t range = depth <= 8 ? (1u << depth) - 1 : uint32_t((1ull << depth) - 1);
    for (uint32_t& v : im.values)
        v = uint32_t(rng()) & range;
    return im;
}

} // namespace

// Every depth and both 16-bit forms, random sizes, tables, extra data and truncations, against
// the expected pixels; the guard behind the buffer stays untouched.
TEST(VyBitmapDecodeTest, RandomImagesMatchTheirPixels)
{
    std::mt19937 rng(2024);
    const struct {
        int depth;
        uint32_t compression;
    } forms[] = {{1, 0}, {4, 0}, {8, 0}, {16, 0}, {16, 3}, {24, 0}, {32, 0}};
    for (int trial = 0; trial < 40; ++trial) {
        for (const auto& form : forms) {
            const BmpImage im = randomImage(rng, form.depth, form.compression);
            std::string file = bmpBytes(im);
            if (trial % 3 == 0) // cut somewhere in the rows
                file.resize(bmpDataOffset(im) + rng() % (file.size() - bmpDataOffset(im)));
            const Decoded got = decode(file);
            const Decoded want = expected(im, file.size());
            EXPECT_EQ(got.out, want.out) << form.depth << " bits, trial " << trial;
            ASSERT_TRUE(got.pixels == want.pixels) << form.depth << " bits, trial " << trial;
        }
    }
}

// A 16-bit image comes out bottom-up, the others top-down. Entries a short table lacks become
// white with alpha 255, although the warning speaks of alpha 0.
TEST(VyBitmapDecodeTest, BottomUpSixteenBitsAndOpaquePadding_Kept)
{
    BmpImage im;
    im.depth = 16;
    im.height = 2;
    im.values = {0x7FFF, 0}; // white bottom row, black top row
    EXPECT_EQ(decode(bmpBytes(im)).pixels[0], 248);
    im = BmpImage();
    im.depth = 8;
    im.width = 2;
    im.palette.assign(16, 0x102030);
    im.values = {3, 200};
    const Decoded d = decode(bmpBytes(im));
    EXPECT_EQ(d.out, kUnderspecified);
    EXPECT_EQ(std::vector<uint8_t>(d.pixels.begin(), d.pixels.begin() + 8),
              (std::vector<uint8_t>{0x30, 0x20, 0x10, 255, 255, 255, 255, 255}));
}

// Rows that are not whole bytes would make decode spin; the condition is visible beforehand.
// The row readers refuse rows shorter than the width needs and then write nothing.
TEST(VyBitmapDecodeTest, ShortAndPartByteRows_Kept)
{
    const int whole[][3] = {{9, 1, 0}, {3, 4, 0}, {16, 1, 1}, {6, 4, 1}, {7, 8, 1}, {7, 24, 1}};
    for (const auto& w : whole)
        EXPECT_EQ(VyBitmap::hasWholeRowBytes(w[0], w[1]), bool(w[2])) << w[0] << " x " << w[1];
    VyBitmap bmp;
    bmp.setBitDepth(8);
    std::vector<uint8_t> px(64, kFill);
    bmp.pixels = px.data();
    unsigned char row[8] = {};
    bmp.width = 2;
    EXPECT_FALSE(bmp.read32bitRow(row, 7, 0));
    EXPECT_FALSE(bmp.read24bitRow(row, 5, 0));
    EXPECT_FALSE(bmp.read8bitRow(row, 1, 0));
    bmp.width = 3;
    EXPECT_FALSE(bmp.read4bitRow(row, 1, 0));
    bmp.width = 9;
    EXPECT_FALSE(bmp.read1bitRow(row, 1, 0));
    EXPECT_EQ(std::count(px.begin(), px.end(), kFill), 64);
}
