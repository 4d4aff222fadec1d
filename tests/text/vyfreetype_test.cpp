// Rasteriser: relations between the metrics of real glyphs (not pixels, which a FreeType
// upgrade may change), the crossed style bits, slant and emboldening, bitmap faces, the
// process exits with their messages, and the one-pass rendering against a two-pass reference
// written here with FreeType itself.
#include "textfonts.h"
#include "vyfreetype.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H
#include FT_OUTLINE_H
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

// A file name of this process's own in the temporary folder: ctest runs tests side by side,
// each in a process of its own, and each test removes the files it wrote.
std::string tempPath(const std::string& name)
{
    return ::testing::TempDir() + std::to_string(getpid()) + "_" + name;
}

// A bitmap-only face in BDF: one 8 x 16 glyph at 16 pixels.
std::string writeBitmapFont()
{
    const std::string path = tempPath("vy_bitmap_face.bdf");
    std::string rows;
    for (int row = 0; row < 16; ++row)
        rows += row == 0 || row == 15 ? "FF\n" : "81\n";
    std::ofstream(path)
        << "STARTFONT 2.1\nFONT -vy-test-medium-r-normal--16-160-72-72-c-80-iso10646-1\n"
           "SIZE 16 72 72\nFONTBOUNDINGBOX 8 16 0 -2\nSTARTPROPERTIES 3\nFONT_ASCENT 14\n"
           "FONT_DESCENT 2\nPIXEL_SIZE 16\nENDPROPERTIES\nCHARS 1\nSTARTCHAR A\nENCODING 65\n"
           "SWIDTH 500 0\nDWIDTH 8 0\nBBX 8 16 0 -2\nBITMAP\n"
        << rows << "ENDCHAR\nENDFONT\n";
    return path;
}

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
    const std::string path = tempPath("vy_broken_outlines.ttf");
    std::ofstream(path, std::ios::binary) << font;
    return path;
}

// The reference rendering: the slot rendered for its placement (left, top), and a glyph copy of
// the loaded slot rendered a second time for the bitmap, with the rasteriser's messages.
GlyphBitmap renderTwice(const VyFreetype& ft, unsigned short code)
{
    GlyphBitmap result;
    memset(&result, 0, sizeof result);
    result.unicode = code;
    result.font = ft.font.fontAttr();
    FT_Face face = VyFreetype::m_pface;
    FT_Matrix shear = {0x10000, 0x4000, 0, 0x10000};
    FT_Set_Transform(face, ft.slant ? &shear : nullptr, nullptr);
    if (FT_Load_Glyph(face, FT_Get_Char_Index(face, code), FT_LOAD_FORCE_AUTOHINT))
        puts("FT_Load_Char eroor!");
    FT_GlyphSlot slot = face->glyph;
    if (ft.embolden && slot->format == FT_GLYPH_FORMAT_OUTLINE)
        FT_Outline_Embolden(&slot->outline, 64);
    FT_Glyph glyph = nullptr;
    if (FT_Get_Glyph(slot, &glyph))
        puts("FT_Get_Glyph error!");
    if (slot->format != FT_GLYPH_FORMAT_BITMAP && FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL))
        puts("FT_Render_Glyph error!");
    FT_Glyph_To_Bitmap(&glyph, FT_RENDER_MODE_NORMAL, nullptr, 1);
    if (glyph && glyph->format == FT_GLYPH_FORMAT_BITMAP) {
        const FT_Bitmap& bitmap = reinterpret_cast<FT_BitmapGlyph>(glyph)->bitmap;
        result.width = static_cast<unsigned short>(bitmap.width);
        result.rows = static_cast<unsigned short>(bitmap.rows);
        result.pitch = static_cast<unsigned short>(bitmap.pitch);
        const size_t bytes = size_t(result.rows) * result.pitch;
        result.buffer = static_cast<unsigned char*>(malloc(bytes));
        if (bytes)
            memcpy(result.buffer, bitmap.buffer, bytes);
    }
    result.left = static_cast<short>(slot->bitmap_left);
    result.top = static_cast<short>(slot->bitmap_top);
    result.descent = static_cast<short>(result.rows - result.top);
    result.advance = static_cast<short>((slot->advance.x + 32) >> 6);
    if (glyph)
        FT_Done_Glyph(glyph);
    return result;
}

// Every field of a record but the buffer's address, then its pixels.
std::string describe(const GlyphBitmap& g)
{
    unsigned short font;
    memcpy(&font, &g.font, sizeof font);
    std::string s;
    for (int field : {int(g.width), int(g.rows), int(g.pitch), int(g.left), int(g.top),
                      int(g.descent), int(g.advance), int(font), int(g.unicode), g.refCount})
        s += std::to_string(field) + " ";
    return s + pixels(&g);
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

// One rasterisation gives the very records of the two-pass reference: every glyph of DejaVu
// Sans's character map, of a bitmap face and of the broken font (with the same messages), and
// Unifont's Latin, Hebrew, Arabic, Thai and CJK blocks (every seventh ideograph, to keep the
// run short), at 8 to 48 pixels, plain, slanted and emboldened.
TEST_F(VyFreetypeTest, OneRenderingMatchesTheTwoPassReference)
{
    const std::string bitmapFont = writeBitmapFont(), brokenFont = writeBrokenOutlineFont();
    struct Source {
        std::string path;
        std::vector<std::pair<unsigned, unsigned>> blocks; // none: the character map
        int step;
    };
    const Source sources[] = {
        {DEJAVU_SANS, {}, 1},
        {bitmapFont, {}, 1},
        {brokenFont, {{'A', 'C'}, {' ', ' '}}, 1},
        {UNIFONT, {{0x0000, 0x024F}, {0x0590, 0x05FF}, {0x0600, 0x06FF}, {0x0E00, 0x0E7F}}, 1},
        {UNIFONT, {{0x4E00, 0x9FFF}}, 7},
    };
    int compared = 0;
    for (const Source& source : sources) {
        open(source.path.c_str());
        std::vector<unsigned> codes;
        FT_UInt index;
        for (FT_ULong c = FT_Get_First_Char(VyFreetype::m_pface, &index);
             source.blocks.empty() && index && c < 0x10000;
             c = FT_Get_Next_Char(VyFreetype::m_pface, c, &index))
            codes.push_back(unsigned(c));
        for (const auto& block : source.blocks)
            for (unsigned c = block.first; c <= block.second; c += source.step)
                codes.push_back(c);
        const bool broken = source.path == brokenFont;
        for (int size : {8, 16, 24, 48}) {
            for (int style : {0, 2, 1}) {
                ft.setTextFont(VyFont(size, style & 2, style & 1, false, false));
                for (unsigned code : codes) {
                    if (broken)
                        testing::internal::CaptureStdout();
                    GlyphBitmap once = ft.resloveUnicode(static_cast<unsigned short>(code));
                    const std::string onceOut =
                        broken ? testing::internal::GetCapturedStdout() : "";
                    if (broken)
                        testing::internal::CaptureStdout();
                    GlyphBitmap twice = renderTwice(ft, static_cast<unsigned short>(code));
                    const std::string twiceOut =
                        broken ? testing::internal::GetCapturedStdout() : "";
                    ASSERT_EQ(describe(once), describe(twice)) << source.path << " " << code;
                    ASSERT_EQ(onceOut, twiceOut) << code;
                    free(once.buffer);
                    free(twice.buffer);
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 100000);
    remove(bitmapFont.c_str());
    remove(brokenFont.c_str());
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
