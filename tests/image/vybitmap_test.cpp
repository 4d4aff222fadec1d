#include "vybitmap.h"

#include "bmpwriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <stdio.h>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{

constexpr uint8_t kFill = 0xCD;
constexpr size_t kGuard = 16;

const char kHeaderError[] = "VyBitmap(): BMP header error !!!\n";
const char kUnderspecified[] = "Warning: file has an underspecified color table.The tablewill be "
                               "padded with extra white (255,255,255,0) entries.\n";
const char kExtra[] = "Warning: Extra meta data detected in file Data will be skipped.\n";
const char kExtra16[] = "Warning: Extra meta data detected in file, Data will be skipped.\n";
const char kShortRow[] = "Could not read proper amount of data.\n";

struct Decoded {
    int width = 0, height = 0;
    bool accepted = false;
    std::vector<uint8_t> pixels; // width × height × 4 bytes plus a guard, all kFill at first
    std::string out;             // what construction and decode printed
    auto key() const { return std::tie(width, height, accepted, pixels, out); }
};

std::string captured()
{
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// Constructs from a temporary file or from a memory stream, then decodes into a fresh buffer
// when the header was accepted.
Decoded decodeVia(const std::string& bytes, bool viaPath)
{
    const std::string path = testing::TempDir() + "vybitmap_" + std::to_string(getpid()) + ".bmp";
    FILE* f =
        viaPath ? fopen(path.c_str(), "wb") : fmemopen((void*)bytes.data(), bytes.size(), "rb");
    if (viaPath) {
        fwrite(bytes.data(), 1, bytes.size(), f);
        fclose(f);
    }
    Decoded d;
    testing::internal::CaptureStdout();
    {
        std::unique_ptr<VyBitmap> bmp(viaPath ? new VyBitmap(path.c_str()) : new VyBitmap(f));
        d.width = bmp->width;
        d.height = bmp->height;
        d.accepted = bmp->stream != nullptr;
        if (d.width > 0 && d.height > 0) {
            d.pixels.assign(size_t(d.width) * size_t(d.height) * 4 + kGuard, kFill);
            bmp->decode(d.pixels.data());
        }
    }
    d.out = captured();
    if (!viaPath)
        fclose(f); // still the caller's, even after a rejected header
    remove(path.c_str());
    return d;
}

// Both sources must give the same result.
Decoded decodeBoth(const std::string& bytes)
{
    const Decoded viaPath = decodeVia(bytes, true);
    const Decoded viaMemory = decodeVia(bytes, false);
    EXPECT_TRUE(viaPath.key() == viaMemory.key()) << viaPath.out << "---\n" << viaMemory.out;
    return viaMemory;
}

int maskShift(uint32_t m)
{
    int s = 0;
    for (; m > 31; m >>= 1)
        ++s;
    return s;
}

// Reference decoder for `file`, made by bmpBytes from `im` and possibly cut short.
Decoded model(const BmpImage& im, const std::string& file)
{
    Decoded d;
    d.width = im.width;
    d.height = im.height;
    d.accepted = true;
    d.pixels.assign(size_t(im.width) * size_t(im.height) * 4 + kGuard, kFill);
    const long long off = im.offBits < 0 ? bmpDataOffset(im) : im.offBits;
    const long long length = (long long)file.size();
    uint8_t table[256][4];
    long long extra = off - 54;
    long long dataStart = 54; // where the rows start: behind what the decoder read or skipped
    if (im.depth <= 8) {
        const int n = 1 << im.depth;
        long long k = std::min<long long>(std::max<long long>((off - 54) / 4, 0), n);
        dataStart += 4 * k;
        if (k < n)
            d.out += kUnderspecified;
        for (int i = 0; i < n; ++i)
            for (int b = 0; b < 4; ++b)
                table[i][b] = i < k ? uint8_t(file[size_t(54 + 4 * i + b)]) : 255;
        extra -= 4LL * n;
    } else if (im.depth == 16 && im.compression == 3) {
        extra -= 12;
        dataStart += 12;
    }
    if (extra > 0)
        d.out += im.depth == 16 ? kExtra16 : kExtra;
    const long long rowBytes = (long long)bmpRowBytes(im.width, im.depth);
    dataStart += std::max(extra, 0LL);
    uint32_t masks[3] = {0x7C00, 0x03E0, 0x001F};
    for (size_t i = 0; i < im.masks.size(); ++i)
        masks[i] = im.masks[i] & 0xFFFF;
    for (int r = 0; r < im.height; ++r) {
        const long long avail = length - dataStart - r * rowBytes;
        int count = im.width; // pixels of this row that arrive
        if (im.depth == 16) {
            count = int(std::min<long long>(std::max(avail, 0LL) / 2, im.width));
        } else if (avail < rowBytes) {
            d.out += kShortRow;
            break;
        }
        const int outRow = im.depth == 16 ? r : im.height - 1 - r;
        for (int x = 0; x < count; ++x) {
            // The value at the position the decoder reads from, which is where the writer put
            // it unless a short table shifted the rows.
            const size_t bit = size_t(dataStart + r * rowBytes) * 8 + size_t(x * im.depth);
            uint32_t v = 0;
            for (int b = 0; b < std::max(im.depth, 8) / 8; ++b)
                v |= uint32_t(uint8_t(file[bit / 8 + size_t(b)])) << (8 * b);
            if (im.depth < 8)
                v = (v >> (8 - im.depth - bit % 8)) & ((1u << im.depth) - 1);
            if (dataStart == bmpDataOffset(im)) {
                EXPECT_EQ(v, im.values[size_t(r) * size_t(im.width) + size_t(x)]);
            }
            uint8_t* p = &d.pixels[(size_t(outRow) * size_t(im.width) + size_t(x)) * 4];
            if (im.depth <= 8) {
                p[0] = table[v][0], p[1] = table[v][1], p[2] = table[v][2], p[3] = 255;
            } else if (im.depth == 16) {
                for (int c = 0; c < 3; ++c) // blue, green, red from masks 2, 1, 0
                    p[c] = uint8_t(((v & masks[2 - c]) >> maskShift(masks[2 - c])) * 8);
                p[3] = 255;
            } else {
                for (int c = 0; c < 4; ++c)
                    p[c] = uint8_t(v >> (8 * c));
                if (im.depth == 24)
                    p[3] = 255;
            }
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
    if (depth <= 8) {
        const int n = 1 << depth;
        im.palette.resize(size_t(pick(0, 3) ? n : pick(0, n)));
        for (uint32_t& c : im.palette)
            c = rng() & 0xFFFFFF;
    }
    if (compression == 3) {
        const uint32_t sets[][3] = {
            {0xF800, 0x07E0, 0x001F},
            {0x7C00, 0x03E0, 0x001F},
            {uint32_t(rng() & 0xFFFF), uint32_t(rng() & 0xFFFF), uint32_t(rng() & 0xFFFF)}};
        const auto& set = sets[pick(0, 2)];
        im.masks = {set[0] | 0xABCD0000, set[1], set[2]}; // high halves are ignored
    }
    const int extras[] = {0, 0, 0, 3, 6, 9000};
    im.extra = uint32_t(extras[pick(0, 5)]);
    // Now and then a lying data offset: inside the header, or far beyond the file.
    const int64_t offsets[] = {-1, -1, -1, -1, -1, -1, 0, 10, 53, 0xFFFFFFF0};
    im.offBits = offsets[pick(0, 9)];
    im.values.resize(size_t(im.width) * size_t(im.height));
    const uint32_t range = depth <= 8 ? (1u << depth) - 1 : uint32_t((1ull << depth) - 1);
    for (uint32_t& v : im.values)
        v = uint32_t(rng()) & range;
    return im;
}

} // namespace

// Every depth and both 16-bit forms, random sizes, tables, extra data, data offsets and
// truncations, both sources, against the reference decoder; the guard behind the buffer stays
// untouched.
TEST(VyBitmapDecodeTest, RandomImagesMatchReferenceDecoder)
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
            const Decoded got = decodeBoth(file);
            const Decoded want = model(im, file);
            EXPECT_EQ(got.out, want.out) << form.depth << " bits, trial " << trial;
            ASSERT_TRUE(got.pixels == want.pixels) << form.depth << " bits, trial " << trial;
        }
    }
}

// The file's first row lands in the last output row, except at 16 bits where it stays first.
// Entries a short table lacks become white with alpha 255, although the warning speaks of
// alpha 0; the file's entries keep their reserved byte.
TEST(VyBitmapDecodeTest, BottomUpSixteenBitsAndOpaquePadding_Kept)
{
    for (int depth : {16, 24}) {
        BmpImage im;
        im.depth = depth;
        im.height = 2;
        im.values = {depth == 16 ? 0x7FFFu : 0xFFFFFFu, 0}; // white bottom row, black top row
        EXPECT_EQ(decodeBoth(bmpBytes(im)).pixels[depth == 16 ? 0 : 4], depth == 16 ? 248 : 255);
    }
    BmpImage im;
    im.depth = 8;
    im.width = 2;
    im.palette.assign(16, 0x102030);
    im.values = {3, 200};
    std::string file = bmpBytes(im);
    putLe(file, 38, 1234, 4);
    FILE* f = fmemopen(file.data(), file.size(), "rb");
    fgetc(f); // the header is read from the start wherever the stream stood
    VyBitmap bmp(f);
    EXPECT_EQ(ftell(f), 54);
    EXPECT_EQ(bmp.xPelsPerMeter, 1234);
    std::vector<uint8_t> px(8);
    testing::internal::CaptureStdout();
    bmp.decode(px.data());
    EXPECT_EQ(captured(), kUnderspecified);
    EXPECT_EQ(px, (std::vector<uint8_t>{0x30, 0x20, 0x10, 255, 255, 255, 255, 255}));
    const RGBApixel c = bmp.getColor(255);
    EXPECT_EQ(c.blue + c.green + c.red + c.alpha + bmp.getColor(15).alpha, 4 * 255);
    fclose(f);
}

TEST(VyBitmapHeaderTest, RejectionsPrintTheirMessage)
{
    BmpImage im;
    im.values = {0};
    const std::string good = bmpBytes(im);
    const struct {
        size_t offset;
        uint64_t value;
        int bytes;
        const char* message;
    } cases[] = {
        {0, 0x4142, 2, "The format of this image file is not bmp file."},
        {30, 1, 4, "Can not support RLE compression."},
        {30, 2, 4, "Can not support RLE compression."},
        {30, 4, 4, "Can not support this compression format."},
        {30, 0x80000000, 4, "Can not support this compression format."},
        {30, 3, 4, "This format could use bit fields and is not a 16-bit file,we can't support."},
        {28, 2, 2, "Unrecognized bit depth."},
        {18, 0, 4, "This file has a non-positive width or height."},
        {22, uint32_t(-1), 4, "This file has a non-positive width or height."},
    };
    for (const auto& c : cases) {
        std::string file = good;
        putLe(file, c.offset, c.value, c.bytes);
        const Decoded d = decodeBoth(file);
        EXPECT_EQ(d.out, std::string(c.message) + "\n" + kHeaderError);
        EXPECT_EQ(d.width + d.height, 0);
        EXPECT_FALSE(d.accepted);
    }
    // The magic is checked before anything else is read, even in an empty file; a short
    // header fails as a whole.
    EXPECT_EQ(decodeVia("", true).out,
              std::string("The format of this image file is not bmp file.\n") + kHeaderError);
    EXPECT_EQ(decodeBoth(good.substr(0, 53)).out,
              std::string("Read information of bmp file header failed.\n") + kHeaderError);
    testing::internal::CaptureStdout();
    {
        VyBitmap a("/nonexistent/dir/x.bmp");
        VyBitmap b(static_cast<FILE*>(nullptr));
        EXPECT_EQ(a.stream, nullptr);
        b.decode(nullptr);
        EXPECT_EQ(b.width + b.height, 0);
    }
    EXPECT_EQ(captured(),
              "Open /nonexistent/dir/x.bmp file failed.\nVyBitmap(): open buffer failed !!!\n");
}

TEST(VyBitmapColorTest, StandardPalettes)
{
    VyBitmap bmp;
    auto rgb = [&](int i) {
        const RGBApixel c = bmp.getColor(i);
        return std::vector<int>{c.red, c.green, c.blue, c.alpha};
    };
    bmp.setBitDepth(4);
    EXPECT_EQ(rgb(3), (std::vector<int>{128, 128, 0, 255}));
    EXPECT_EQ(rgb(8), (std::vector<int>{192, 192, 192, 255}));
    bmp.setBitDepth(8);
    for (int n = 10; n < 246; ++n) // the cube between the fixed entries
        ASSERT_EQ(rgb(n), (std::vector<int>{n % 8 * 32, n / 8 % 8 * 32, n / 64 * 64, 255})) << n;
    EXPECT_EQ(rgb(9), (std::vector<int>{166, 202, 240, 255}));
    EXPECT_EQ(rgb(246), (std::vector<int>{255, 251, 240, 255}));
    bmp.setBitDepth(24);
    EXPECT_FALSE(bmp.createStandardColorTable());
}

// 2^depth colours, but 24 bits and more all report 2^24. The texts, "lacksa" and "thatlacks"
// included, are what this version prints.
TEST(VyBitmapColorTest, ColorCountAndTableMessages_Kept)
{
    VyBitmap bmp;
    const int want[][2] = {{0, 1}, {4, 16}, {16, 65536}, {32, 1 << 24}, {24, 1 << 24}};
    for (const auto& w : want) {
        bmp.setBitDepth(w[0]);
        EXPECT_EQ(bmp.tellNumberOfColors(), w[1]) << w[0];
    }
    testing::internal::CaptureStdout();
    const RGBApixel c = bmp.getColor(0);
    EXPECT_FALSE(bmp.setColor(0, c));
    bmp.bitDepth = 8; // a table depth without a table
    const RGBApixel d = bmp.getColor(0);
    EXPECT_FALSE(bmp.setColor(0, d));
    EXPECT_EQ(captured(), "Attempted to access color table for a BMP object that lacksa color "
                          "table. Ignoring request.\n"
                          "Attempted to change color table for a BMP object thatlacks a color "
                          "table. Ignoring request.\n"
                          "Requested a color, but the color table is not defined. Ignoring "
                          "request.\n"
                          "No color to set.\n");
    EXPECT_EQ(c.blue & c.green & c.red & c.alpha & d.blue & d.green & d.red & d.alpha, 255);
}

// Rows that are not whole bytes would make decode spin; the condition is visible beforehand.
// The row readers refuse rows shorter than the width needs and then write nothing.
TEST(VyBitmapRowTest, ShortAndPartByteRows_Kept)
{
    EXPECT_FALSE(VyBitmap::hasWholeRowBytes(9, 1) || VyBitmap::hasWholeRowBytes(3, 4));
    EXPECT_TRUE(VyBitmap::hasWholeRowBytes(16, 1) && VyBitmap::hasWholeRowBytes(6, 4));
    EXPECT_TRUE(VyBitmap::hasWholeRowBytes(7, 8) && VyBitmap::hasWholeRowBytes(7, 24));
    VyBitmap bmp;
    bmp.setBitDepth(8);
    std::vector<uint8_t> px(64, kFill);
    bmp.pixels = px.data();
    unsigned char row[8] = {};
    bmp.width = 2;
    EXPECT_FALSE(bmp.read32bitRow(row, 7, 0) || bmp.read24bitRow(row, 5, 0) ||
                 bmp.read8bitRow(row, 1, 0));
    bmp.width = 3;
    EXPECT_FALSE(bmp.read4bitRow(row, 1, 0));
    bmp.width = 9;
    EXPECT_FALSE(bmp.read1bitRow(row, 1, 0));
    EXPECT_EQ(std::count(px.begin(), px.end(), kFill), 64);
}

TEST(VyBitmapIoTest, EndiannessSwapsEveryField)
{
    VyBitmap bmp;
    bmp.bmfh = BMFH{0x4D42, 0x11223344, 1, 2, 54};
    bmp.bmih = BMIH{40, 1, -2, 1, 24, 3, 5, 6, 7, 8, 9};
    bmp.bmfhSwitchEndianess();
    bmp.bmihSwitchEndianess();
    EXPECT_EQ(bmp.bmfh.bfType, 0x424D);
    EXPECT_EQ(bmp.bmfh.bfSize, 0x44332211u);
    EXPECT_EQ(bmp.bmfh.bfReserved2, 0x0200);
    EXPECT_EQ(bmp.bmih.biHeight, int32_t(0xFEFFFFFF));
    EXPECT_EQ(bmp.bmih.biBitCount, 0x1800);
    EXPECT_EQ(bmp.bmih.biClrImportant, 0x09000000u);
}
