#include "vybmpdata.h"

#include "vyfont.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <stdint.h>
#include <stdio.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

// Runs `write` on a temporary path and returns the bytes it wrote; *result gets its result.
template <class Write> std::string written(Write write, int* result)
{
    const std::string path = testing::TempDir() + "vybmpdata_" + std::to_string(getpid()) + ".bmp";
    *result = write(path.c_str());
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    remove(path.c_str());
    return bytes;
}

uint32_t le(const std::string& s, size_t offset, int bytes)
{
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= uint32_t(uint8_t(s[offset + size_t(i)])) << (8 * i);
    return v;
}

// Saves a width × height image of `channels` bytes per pixel and returns the file's bytes.
std::string save(int width, int height, int channels, std::vector<uint8_t>& data, int* result)
{
    Image image{width, height, channels, data.data()};
    return written([&](const char* path) { return BmpData().SaveImage(path, &image); }, result);
}

std::string coverageText(int rows, int width, const unsigned char* buffer)
{
    testing::internal::CaptureStdout();
    vyShowCoverage(rows, width, buffer);
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

} // namespace

// A 24-bit row that needs no padding still counts 4 bytes of it in the size fields, but the
// rows hold only the pixels and the padding they need.
TEST(BmpDataSaveTest, TwentyFourBitStrideOverCount_Kept)
{
    for (int width : {4, 5}) {
        std::vector<uint8_t> data(size_t(width) * 2 * 3, 7);
        int result = -1;
        const std::string file = save(width, 2, 3, data, &result);
        EXPECT_EQ(result, 0);
        const uint32_t stride = 16; // width 4: 12 bytes + 4 over-counted; width 5: 15 + 1 padding
        EXPECT_EQ(le(file, 2, 4), 2 * stride + 54);
        EXPECT_EQ(le(file, 34, 4), 2 * stride);
        EXPECT_EQ(file.size(), 54 + 2 * size_t(width == 4 ? 12 : 16));
        EXPECT_EQ(file.back(), width == 4 ? 7 : 0);
    }
}

TEST(BmpDataSaveTest, HeaderFieldsAndGreyPalette)
{
    // (offset, bytes, value in a 24-bit file, in an 8-bit file) for a 10 x 3 image: a 24-bit
    // row takes 30 bytes plus 2 of padding, an 8-bit row 10 plus 2, and the 8-bit file declares
    // the padded width.
    const uint32_t fields[][4] = {{0, 2, 0x4D42, 0x4D42}, {2, 4, 150, 1114}, {6, 4, 0, 0},
                                  {10, 4, 54, 1078},      {14, 4, 40, 40},   {18, 4, 10, 12},
                                  {22, 4, 3, 3},          {26, 2, 1, 1},     {28, 2, 24, 8},
                                  {30, 4, 0, 0},          {34, 4, 96, 36},   {38, 4, 0, 0},
                                  {42, 4, 0, 0},          {46, 4, 0, 256},   {50, 4, 0, 256}};
    std::vector<uint8_t> data(10 * 3 * 3, 7);
    int result = -1;
    const std::string files[] = {save(10, 3, 3, data, &result), save(10, 3, 1, data, &result)};
    for (const auto& f : fields) {
        EXPECT_EQ(le(files[0], f[0], int(f[1])), f[2]) << "24-bit at " << f[0];
        EXPECT_EQ(le(files[1], f[0], int(f[1])), f[3]) << "8-bit at " << f[0];
    }
    // The grey ramp: entry i is (i, i, i, 0).
    for (uint32_t i = 0; i < 256; ++i)
        ASSERT_EQ(le(files[1], 54 + 4 * i, 4), i | i << 8 | i << 16) << i;
}

TEST(BmpDataSaveTest, UnsupportedChannelsAndUnwritablePath)
{
    std::vector<uint8_t> data(16);
    int result = -1;
    EXPECT_EQ(save(2, 2, 2, data, &result), "BM");
    EXPECT_EQ(result, 0);
    Image image{2, 2, 3, data.data()};
    EXPECT_EQ(BmpData().SaveImage("/nonexistent/dir/x.bmp", &image), 0);
}

// Rows are written bottom-up, each followed by zero padding to a multiple of 4 bytes; an 8-bit
// file puts them behind its grey palette.
TEST(BmpDataSaveTest, RowsBottomUpWithZeroPadding)
{
    std::mt19937 rng(7);
    for (int trial = 0; trial < 30; ++trial) {
        const int channels = trial % 2 ? 3 : 1;
        const int width = int(rng() % 9) + 1, height = int(rng() % 5) + 1;
        const size_t rowBytes = size_t(width * channels), stride = (rowBytes + 3) / 4 * 4;
        std::vector<uint8_t> data(rowBytes * size_t(height));
        for (uint8_t& b : data)
            b = uint8_t(rng());
        std::string want;
        for (int y = height - 1; y >= 0; --y) {
            want.append(reinterpret_cast<const char*>(&data[size_t(y) * rowBytes]), rowBytes);
            want.append(stride - rowBytes, '\0');
        }
        int result = -1;
        const std::string file = save(width, height, channels, data, &result);
        EXPECT_EQ(file.substr(channels == 3 ? 54 : 1078), want) << trial;
    }
}

TEST(BmpDataShowTest, CoverageAsText)
{
    const unsigned char glyph[] = {0, 1, 254, 255, 128, 0};
    EXPECT_EQ(coverageText(2, 3, glyph), "\nrow = 2, col = 3 \n 11\n01 \n");
    EXPECT_EQ(coverageText(0, 5, glyph), "\nrow = 0, col = 5 \n");
    EXPECT_EQ(coverageText(2, 0, glyph), "\nrow = 2, col = 0 \n\n\n");
    EXPECT_EQ(coverageText(3, 3, nullptr), "\nrow = 3, col = 3 \n");
}

// Glyph rows are taken `width` bytes apart; the wider pitch is ignored.
TEST(BmpDataGlyphTest, RowsAreWidthApart_Kept)
{
    unsigned char coverage[] = {1, 2, 3, 4, 5, 6, 7, 8};
    GlyphBitmap glyph{};
    glyph.width = 3;
    glyph.rows = 2;
    glyph.pitch = 4;
    glyph.buffer = coverage;
    int result = -1;
    const std::string file =
        written([&](const char* path) { return BmpData().SaveImage(path, &glyph); }, &result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(le(file, 18, 4), 4u); // the padded width
    EXPECT_EQ(file.substr(1078), std::string("\4\5\6\0\1\2\3\0", 8));

    testing::internal::CaptureStdout();
    BmpData().showImageDate(&glyph);
    glyph.rows = 0;
    BmpData().showImageDate(&glyph);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\nrow = 2, col = 3 \n111\n111\n\nrow = 0, col = 3 \n");
}
