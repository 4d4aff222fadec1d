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
    static int serial = 0;
    const std::string path = testing::TempDir() + "vybitmap_" + std::to_string(getpid()) + "_" +
                             std::to_string(serial++) + ".bmp";
    FILE* mem = nullptr;
    if (viaPath) {
        FILE* f = fopen(path.c_str(), "wb");
        fwrite(bytes.data(), 1, bytes.size(), f);
        fclose(f);
    } else {
        mem = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
    }
    Decoded d;
    testing::internal::CaptureStdout();
    {
        std::unique_ptr<VyBitmap> bmp(viaPath ? new VyBitmap(path.c_str()) : new VyBitmap(mem));
        d.width = bmp->width;
        d.height = bmp->height;
        d.accepted = bmp->stream != nullptr;
        if (d.width > 0 && d.height > 0) {
            d.pixels.assign(size_t(d.width) * size_t(d.height) * 4 + kGuard, kFill);
            bmp->decode(d.pixels.data());
        }
    }
    d.out = captured();
    if (mem)
        fclose(mem); // still the caller's, even after a rejected header
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
    im.values.resize(size_t(im.width) * size_t(im.height));
    const uint32_t range = depth <= 8 ? (1u << depth) - 1 : uint32_t((1ull << depth) - 1);
    for (uint32_t& v : im.values)
        v = uint32_t(rng()) & range;
    return im;
}

} // namespace

// Every depth and both 16-bit forms, random sizes, tables, extra data and truncations, both
// sources, against the reference decoder; the guard behind the buffer stays untouched.
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

TEST(VyBitmapDecodeTest, HeaderFieldsAndResolution)
{
    BmpImage im;
    im.width = 1;
    im.height = 2;
    im.values = {0x010203, 0x040506};
    std::string file = bmpBytes(im);
    putLe(file, 38, 1234, 4);
    putLe(file, 42, uint32_t(-5), 4);
    FILE* f = fmemopen(file.data(), file.size(), "rb");
    fgetc(f); // the constructor rewinds
    VyBitmap bmp(f);
    EXPECT_EQ(bmp.bitDepth, 24);
    EXPECT_EQ(bmp.xPelsPerMeter, 1234);
    EXPECT_EQ(bmp.yPelsPerMeter, -5);
    EXPECT_EQ(bmp.bmfh.bfOffBits, 54u);
    EXPECT_EQ(bmp.bmih.biSizeImage, 8u); // width 1: 3 bytes and 1 of padding per row
    EXPECT_FALSE(bmp.ownsStream);
    EXPECT_EQ(bmp.colors, nullptr);
    EXPECT_EQ(ftell(f), 54);
    fclose(f);
}

// The file's first row lands in the last output row, except at 16 bits where it stays first.
TEST(VyBitmapDecodeTest, SixteenBitRowsStayBottomUp_Kept)
{
    for (int depth : {16, 24}) {
        BmpImage im;
        im.depth = depth;
        im.height = 2;
        im.values = {depth == 16 ? 0x7FFFu : 0xFFFFFFu, 0}; // white bottom row, black top row
        const Decoded d = decodeBoth(bmpBytes(im));
        const size_t whiteRow = depth == 16 ? 0 : 1;
        EXPECT_EQ(d.pixels[whiteRow * 4], depth == 16 ? 248 : 255) << depth;
        EXPECT_EQ(d.pixels[(1 - whiteRow) * 4], 0) << depth;
    }
}

// An 8-bit file with 16 table entries: no extra data, entries 16 and up become white with
// alpha 255, although the warning speaks of alpha 0.
TEST(VyBitmapDecodeTest, UnderspecifiedTablePadsOpaqueWhite_Kept)
{
    BmpImage im;
    im.depth = 8;
    im.width = 2;
    im.palette.assign(16, 0x102030);
    im.values = {3, 200};
    const std::string file = bmpBytes(im);
    ASSERT_EQ(bmpDataOffset(im), 54u + 4 * 16);
    FILE* f = fmemopen(const_cast<char*>(file.data()), file.size(), "rb");
    VyBitmap bmp(f);
    std::vector<uint8_t> px(8);
    testing::internal::CaptureStdout();
    bmp.decode(px.data());
    EXPECT_EQ(captured(), kUnderspecified);
    EXPECT_EQ(px, (std::vector<uint8_t>{0x30, 0x20, 0x10, 255, 255, 255, 255, 255}));
    const RGBApixel c = bmp.getColor(255);
    EXPECT_EQ(c.blue + c.green + c.red + c.alpha, 4 * 255);
    EXPECT_EQ(bmp.getColor(15).alpha, 0); // file entries keep their reserved byte
    fclose(f);
}

TEST(VyBitmapDecodeTest, HostileOffsetsStayInsideTheTable)
{
    // Data offsets inside the header read no table entries and skip nothing.
    for (uint32_t off : {0u, 10u, 53u}) {
        BmpImage im;
        im.depth = 4;
        im.width = 2;
        im.offBits = off;
        im.values = {1, 2};
        const Decoded d = decodeBoth(bmpBytes(im));
        EXPECT_EQ(d.out, kUnderspecified);
        EXPECT_EQ(d.pixels[0], 255);
    }
    // A huge offset clamps the table and skips to the end of the file.
    BmpImage im;
    im.depth = 1;
    im.width = 8;
    im.palette = {0, 0xFFFFFF};
    im.offBits = 0xFFFFFFF0;
    im.values.assign(8, 1);
    const Decoded d = decodeBoth(bmpBytes(im));
    EXPECT_EQ(d.out, std::string(kExtra) + kShortRow);
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
    // The resolution is copied before the checks that follow it.
    std::string rle = good;
    putLe(rle, 30, 1, 4);
    putLe(rle, 38, 77, 4);
    FILE* f = fmemopen(rle.data(), rle.size(), "rb");
    testing::internal::CaptureStdout();
    VyBitmap bmp(f);
    captured();
    EXPECT_EQ(bmp.xPelsPerMeter, 77);
    fclose(f);
}

TEST(VyBitmapHeaderTest, MissingFileAndNullStream)
{
    testing::internal::CaptureStdout();
    {
        VyBitmap a("/nonexistent/dir/x.bmp");
        VyBitmap b(static_cast<FILE*>(nullptr));
        VyBitmap c;
        EXPECT_EQ(a.stream, nullptr);
        EXPECT_EQ(b.width, 0);
        c.decode(nullptr);
        EXPECT_EQ(c.pixels, nullptr);
    }
    EXPECT_EQ(captured(),
              "Open /nonexistent/dir/x.bmp file failed.\nVyBitmap(): open buffer failed !!!\n");
}

TEST(VyBitmapColorTest, StandardPalettes)
{
    VyBitmap bmp;
    auto rgb = [&](int i) {
        const RGBApixel c = bmp.getColor(i);
        EXPECT_EQ(c.alpha, 255);
        return std::vector<int>{c.red, c.green, c.blue};
    };
    bmp.setBitDepth(1);
    EXPECT_EQ(rgb(1), (std::vector<int>{255, 255, 255}));
    bmp.setBitDepth(4);
    EXPECT_EQ(rgb(3), (std::vector<int>{128, 128, 0}));
    EXPECT_EQ(rgb(8), (std::vector<int>{192, 192, 192}));
    EXPECT_EQ(rgb(12), (std::vector<int>{0, 0, 255}));
    bmp.setBitDepth(8);
    for (int n = 10; n < 246; ++n) // the cube between the fixed entries
        ASSERT_EQ(rgb(n), (std::vector<int>{n % 8 * 32, n / 8 % 8 * 32, n / 64 * 64})) << n;
    EXPECT_EQ(rgb(7), (std::vector<int>{192, 192, 192}));
    EXPECT_EQ(rgb(9), (std::vector<int>{166, 202, 240}));
    EXPECT_EQ(rgb(246), (std::vector<int>{255, 251, 240}));
    EXPECT_EQ(rgb(248), (std::vector<int>{128, 128, 128}));
    EXPECT_TRUE(bmp.setColor(5, RGBApixel{1, 2, 3, 4}));
    EXPECT_EQ(bmp.getColor(5).alpha, 4);
    bmp.setBitDepth(24);
    EXPECT_EQ(bmp.colors, nullptr);
    EXPECT_FALSE(bmp.createStandardColorTable());
}

// 2^depth colours, but 24 bits and more all report 2^24.
TEST(VyBitmapColorTest, NumberOfColors_Kept)
{
    VyBitmap bmp;
    const int want[][2] = {{0, 1},      {1, 2},        {4, 16},      {8, 256},
                           {16, 65536}, {24, 1 << 24}, {32, 1 << 24}};
    for (const auto& w : want) {
        bmp.setBitDepth(w[0]);
        EXPECT_EQ(bmp.tellNumberOfColors(), w[1]) << w[0];
    }
}

// The texts, "lacksa" and "thatlacks" included, are what this version prints.
TEST(VyBitmapColorTest, TableMessages_Kept)
{
    VyBitmap bmp;
    bmp.setBitDepth(24);
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
    for (const RGBApixel& p : {c, d})
        EXPECT_EQ(p.blue & p.green & p.red & p.alpha, 255);
}

TEST(VyBitmapRowTest, ReadersRefuseShortRows)
{
    VyBitmap bmp;
    bmp.setBitDepth(8);
    std::vector<uint8_t> px(64, kFill);
    bmp.pixels = px.data();
    unsigned char row[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    bmp.width = 2;
    EXPECT_FALSE(bmp.read32bitRow(row, 7, 0));
    EXPECT_FALSE(bmp.read24bitRow(row, 5, 0));
    EXPECT_FALSE(bmp.read8bitRow(row, 1, 0));
    EXPECT_TRUE(bmp.read8bitRow(row, 2, 1));
    bmp.width = 3;
    EXPECT_FALSE(bmp.read4bitRow(row, 1, 0));
    bmp.width = 9;
    EXPECT_FALSE(bmp.read1bitRow(row, 1, 0));
    EXPECT_EQ(std::count(px.begin(), px.end(), kFill), 64 - 8); // only the one good row
    bmp.width = 0;
    EXPECT_TRUE(bmp.read32bitRow(row, 0, 0));
    EXPECT_TRUE(bmp.read1bitRow(row, 0, 0));
}

// Rows that are not whole bytes would make decode spin; the condition is visible beforehand.
TEST(VyBitmapRowTest, PartByteRowsAreDetectable_Kept)
{
    EXPECT_FALSE(VyBitmap::hasWholeRowBytes(9, 1));
    EXPECT_FALSE(VyBitmap::hasWholeRowBytes(3, 4));
    EXPECT_TRUE(VyBitmap::hasWholeRowBytes(16, 1));
    EXPECT_TRUE(VyBitmap::hasWholeRowBytes(6, 4));
    for (int depth : {8, 16, 24, 32})
        EXPECT_TRUE(VyBitmap::hasWholeRowBytes(7, depth));
}

TEST(VyBitmapIoTest, SafeFreadAndEndianness)
{
    char bytes[] = "abcdef";
    FILE* f = fmemopen(bytes, 6, "rb");
    VyBitmap bmp;
    char buf[8];
    EXPECT_TRUE(bmp.safeFread(buf, 2, 2, f));
    EXPECT_FALSE(bmp.safeFread(buf, 2, 2, f)); // only 2 bytes left
    EXPECT_FALSE(bmp.safeFread(buf, 1, 0, f)); // already at the end
    fclose(f);

    bmp.bmfh = BMFH{0x4D42, 0x11223344, 1, 2, 54};
    bmp.bmih = BMIH{40, 1, -2, 1, 24, 3, 5, 6, 7, 8, 9};
    bmp.bmfhSwitchEndianess();
    bmp.bmihSwitchEndianess();
    EXPECT_EQ(bmp.bmfh.bfType, 0x424D);
    EXPECT_EQ(bmp.bmfh.bfSize, 0x44332211u);
    EXPECT_EQ(bmp.bmfh.bfReserved2, 0x0200);
    EXPECT_EQ(bmp.bmfh.bfOffBits, 0x36000000u);
    EXPECT_EQ(bmp.bmih.biWidth, 0x01000000);
    EXPECT_EQ(bmp.bmih.biHeight, int32_t(0xFEFFFFFF));
    EXPECT_EQ(bmp.bmih.biBitCount, 0x1800);
    EXPECT_EQ(bmp.bmih.biClrImportant, 0x09000000u);
    bmp.bmihSwitchEndianess();
    EXPECT_EQ(bmp.bmih.biYPelsPerMeter, 7);
}
