#include "vybitmap.h"

#include "bmpwriter.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string>
#include <vector>

namespace
{

const char kHeaderError[] = "VyBitmap(): BMP header error !!!\n";

// Constructs from a memory stream holding `bytes`, which it must reject, and returns what it
// printed.
std::string rejection(std::string bytes)
{
    FILE* f = fmemopen(bytes.data(), bytes.size(), "rb");
    testing::internal::CaptureStdout();
    {
        VyBitmap bmp(f);
        EXPECT_EQ(bmp.stream, nullptr);
        EXPECT_EQ(bmp.width, 0);
        EXPECT_EQ(bmp.height, 0);
    }
    fflush(stdout);
    fclose(f); // still the caller's
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(VyBitmapHeaderTest, RejectionsPrintTheirMessage)
{
    BmpImage im;
    im.values = {0};
    std::string good = bmpBytes(im);
    putLe(good, 38, 1234, 4);
    // The header is read from the start wherever the stream stood.
    FILE* f = fmemopen(good.data(), good.size(), "rb");
    fgetc(f);
    {
        VyBitmap bmp(f);
        EXPECT_EQ(ftell(f), 54);
        EXPECT_EQ(bmp.xPelsPerMeter, 1234);
        EXPECT_EQ(bmp.width, 1);
    }
    fclose(f);
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
        EXPECT_EQ(rejection(file), std::string(c.message) + "\n" + kHeaderError);
    }
    // A short header fails as a whole.
    EXPECT_EQ(rejection(good.substr(0, 53)),
              std::string("Read information of bmp file header failed.\n") + kHeaderError);

    // The path constructor closes what it opened; the magic is checked before anything else is
    // read, even in an empty file.
    const std::string path = testing::TempDir() + "vybitmap_empty.bmp";
    fclose(fopen(path.c_str(), "wb"));
    testing::internal::CaptureStdout();
    {
        VyBitmap empty(path.c_str());
        VyBitmap missing("/nonexistent/dir/x.bmp");
        VyBitmap none(static_cast<FILE*>(nullptr));
        EXPECT_EQ(empty.stream, nullptr);
        EXPECT_EQ(missing.stream, nullptr);
    }
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              std::string("The format of this image file is not bmp file.\n") + kHeaderError +
                  "Open /nonexistent/dir/x.bmp file failed.\nVyBitmap(): open buffer failed !!!\n");
    remove(path.c_str());
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
    // (index, red, green, blue) of the fixed entries that are not the 4-bit colours.
    const int fixed[][4] = {{7, 192, 192, 192},   {8, 192, 220, 192},   {9, 166, 202, 240},
                            {246, 255, 251, 240}, {247, 160, 160, 164}, {248, 128, 128, 128}};
    for (const auto& e : fixed)
        EXPECT_EQ(rgb(e[0]), (std::vector<int>{e[1], e[2], e[3], 255})) << e[0];
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
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Attempted to access color table for a BMP object that lacksa color "
              "table. Ignoring request.\n"
              "Attempted to change color table for a BMP object thatlacks a color "
              "table. Ignoring request.\n"
              "Requested a color, but the color table is not defined. Ignoring "
              "request.\n"
              "No color to set.\n");
    const std::vector<int> white = {255, 255, 255, 255};
    EXPECT_EQ((std::vector<int>{c.blue, c.green, c.red, c.alpha}), white);
    EXPECT_EQ((std::vector<int>{d.blue, d.green, d.red, d.alpha}), white);
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
