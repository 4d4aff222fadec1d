// Rasteriser: relations between the metrics of real glyphs (not pixels, which a FreeType
// upgrade may change), the crossed style bits, slant and emboldening, and the process exits
// with their messages.
#include "textfonts.h"
#include "vyfreetype.h"

#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <iterator>
#include <stdio.h>
#include <stdlib.h>
#include <string>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define VY_TEST_FAILING_MALLOC 1
// Allocations of exactly failingSize bytes requested by this program's own code (the library
// is linked in statically; FreeType and libc are shared objects) fail, the rest pass through.
// The sanitizers bring their own allocator, so the hook exists only without them.
extern "C" void* __libc_malloc(size_t size);
extern "C" char __executable_start[];
extern "C" char etext[];
static size_t failingSize = size_t(-1);
extern "C" void* malloc(size_t size) noexcept
{
    const char* caller = static_cast<const char*>(__builtin_return_address(0));
    if (size == failingSize && caller >= __executable_start && caller < etext)
        return nullptr;
    return __libc_malloc(size);
}
#endif

namespace
{

class VyFreetypeTest : public ::testing::Test
{
protected:
    void open(const char* path)
    {
        VyFreetype::freetype_Done();
        VyFreetype::freetype_init(VyString(path));
    }
    void SetUp() override { open(DEJAVU_SANS); }
    void TearDown() override { VyFreetype::freetype_Done(); }

    // Renders and keeps the glyph until the test ends.
    const GlyphBitmap& render(unsigned short code, const VyFont& font)
    {
        ft.setTextFont(font);
        glyphs.push_back(ft.resloveUnicode(code));
        return glyphs.back();
    }
    ~VyFreetypeTest() override
    {
        for (GlyphBitmap& g : glyphs)
            free(g.buffer);
    }

    VyFreetype ft;
    std::deque<GlyphBitmap> glyphs;
};

// DejaVu Sans with every byte of its glyph outlines ('glyf' table) set to 0xFF: loading any
// glyph with an outline fails. The table directory, the first place the tag appears, gives the
// table's offset and length.
std::string writeBrokenOutlineFont()
{
    std::ifstream in(DEJAVU_SANS, std::ios::binary);
    std::string font((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto word = [&font](size_t at) {
        return unsigned(static_cast<unsigned char>(font[at])) << 24 |
               unsigned(static_cast<unsigned char>(font[at + 1])) << 16 |
               unsigned(static_cast<unsigned char>(font[at + 2])) << 8 |
               unsigned(static_cast<unsigned char>(font[at + 3]));
    };
    const size_t record = font.find("glyf");
    font.replace(word(record + 8), word(record + 12), std::string(word(record + 12), '\xFF'));
    const std::string path = ::testing::TempDir() + "vy_broken_outlines.ttf";
    std::ofstream(path, std::ios::binary) << font;
    return path;
}

} // namespace

// The record carries the request, no holder and the descent below the baseline; a missing
// glyph renders without a message.
TEST_F(VyFreetypeTest, RecordsCarryTheRequest)
{
    testing::internal::CaptureStdout();
    for (int style = 0; style < 4; ++style) {
        const VyFont font(16, style & 2, style & 1, false, true);
        for (unsigned short code : {u'g', u'\u4E00'}) {
            const GlyphBitmap& g = render(code, font);
            EXPECT_EQ(std::make_tuple(g.unicode, VyFont(g.font) == font, g.refCount, g.descent),
                      std::make_tuple(code, true, 0, g.rows - g.top));
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// The style bits cross: boldFace slants, heavyFace emboldens. Slant widens the ink and leaves
// the next upright glyph upright; emboldening widens it without widening the advance.
TEST_F(VyFreetypeTest, CrossedStyleBitsSlantAndEmbolden_Kept)
{
    const VyFont upright(24, false, false, false, false), slanted(24, true, false, false, false),
        heavy(24, false, true, false, false);
    for (unsigned short code : {u'l', u'p', u'H'}) {
        const GlyphBitmap& before = render(code, upright);
        const GlyphBitmap& leaning = render(code, slanted);
        const GlyphBitmap& after = render(code, upright);
        const GlyphBitmap& bold = render(code, heavy);
        EXPECT_GT(leaning.width, before.width + 2) << code;
        EXPECT_GT(bold.width, before.width) << code;
        EXPECT_EQ(std::make_pair(leaning.advance, bold.advance),
                  std::make_pair(before.advance, before.advance));
        EXPECT_EQ(std::make_tuple(after.width, after.left, pixels(&after)),
                  std::make_tuple(before.width, before.left, pixels(&before)));
    }
    // Rows below the baseline lean left, so a descender moves the left edge.
    EXPECT_LT(render('p', slanted).left, render('p', upright).left);
}

TEST_F(VyFreetypeTest, LoadFailureIsPrintedAndTheGlyphFinishedEmpty_Kept)
{
    const std::string path = writeBrokenOutlineFont();
    open(path.c_str());
    testing::internal::CaptureStdout();
    const GlyphBitmap& broken = render('A', VyFont(16, false, false, false, false));
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("FT_Load_Char eroor!\n", 0), 0u) << out;
    EXPECT_EQ(std::make_tuple(broken.width * broken.rows, broken.unicode, broken.descent),
              std::make_tuple(0, 'A', broken.rows - broken.top));
    remove(path.c_str());
}

using VyFreetypeDeathTest = VyFreetypeTest;

TEST_F(VyFreetypeDeathTest, FontConfigurationErrorsEndTheProcess)
{
    unsetenv("VY_FONTLIB");
    EXPECT_EXIT((stdoutToStderr(), VyFreetype::freetype_init(VyString())),
                testing::ExitedWithCode(1),
                literal("[GUI-FRAMEWORK]: font not specified, set \"VY_FONTLIB\" env or call "
                        "VyApplication::setFontFile() !!!!!\n"));
    // A path that is not a font file fails as a missing one does.
    for (const std::string bad : {"/no/such/font.ttf", "/proc/self/status"}) {
        EXPECT_EXIT((stdoutToStderr(), VyFreetype::freetype_init(VyString(bad.c_str()))),
                    testing::ExitedWithCode(1),
                    literal("[GUI-FRAMEWORK]: open font(" + bad + ") failed !!!\n"));
    }
}

#if defined(VY_TEST_FAILING_MALLOC)
// A glyph of no pixels may go without a buffer; a failed pixel allocation ends the process.
TEST_F(VyFreetypeDeathTest, FailedPixelAllocationEndsTheProcess)
{
    failingSize = 0;
    const GlyphBitmap& space = render(' ', VyFont(16, false, false, false, false));
    failingSize = size_t(-1);
    EXPECT_EQ(space.buffer, nullptr);
    const GlyphBitmap& w = render('W', VyFont(40, false, false, false, false));
    EXPECT_EXIT(
        {
            stdoutToStderr();
            failingSize = size_t(w.rows) * w.pitch;
            ft.resloveUnicode('W');
        },
        testing::ExitedWithCode(255), literal("malloc memory error!\n"));
}
#endif
