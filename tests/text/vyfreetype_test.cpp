// Rasteriser: relations between the metrics of real glyphs (not pixels, which a FreeType
// upgrade may change), the crossed style bits, slant and emboldening, bitmap faces, and the
// process exits with their messages.
#include "textfonts.h"
#include "vyfreetype.h"

#include <gtest/gtest.h>

#include <deque>
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

// A bitmap-only face in BDF: one 8 x 16 glyph at 16 pixels.
std::string writeBitmapFont()
{
    std::string path = ::testing::TempDir() + "vy_bitmap_face.bdf";
    FILE* f = fopen(path.c_str(), "w");
    fputs("STARTFONT 2.1\nFONT -vy-test-medium-r-normal--16-160-72-72-c-80-iso10646-1\n"
          "SIZE 16 72 72\nFONTBOUNDINGBOX 8 16 0 -2\nSTARTPROPERTIES 3\nFONT_ASCENT 14\n"
          "FONT_DESCENT 2\nPIXEL_SIZE 16\nENDPROPERTIES\nCHARS 1\nSTARTCHAR A\nENCODING 65\n"
          "SWIDTH 500 0\nDWIDTH 8 0\nBBX 8 16 0 -2\nBITMAP\n",
          f);
    for (int row = 0; row < 16; ++row)
        fputs(row == 0 || row == 15 ? "FF\n" : "81\n", f);
    fputs("ENDCHAR\nENDFONT\n", f);
    fclose(f);
    return path;
}

// DejaVu Sans with every byte of its glyph outlines ('glyf' table) set to 0xFF: loading any
// glyph with an outline fails.
std::string writeBrokenOutlineFont()
{
    FILE* in = fopen(DEJAVU_SANS, "rb");
    std::string font;
    char chunk[65536];
    for (size_t n; (n = fread(chunk, 1, sizeof chunk, in)) > 0;)
        font.append(chunk, n);
    fclose(in);
    auto word = [&font](size_t at, int bytes) {
        unsigned v = 0;
        for (int i = 0; i < bytes; ++i)
            v = v << 8 | static_cast<unsigned char>(font[at + i]);
        return v;
    };
    for (unsigned i = 0, tables = word(4, 2); i < tables; ++i) {
        const size_t record = 12 + 16 * i;
        if (font.compare(record, 4, "glyf") == 0)
            font.replace(word(record + 8, 4), word(record + 12, 4),
                         std::string(word(record + 12, 4), '\xFF'));
    }
    const std::string path = ::testing::TempDir() + "vy_broken_outlines.ttf";
    FILE* out = fopen(path.c_str(), "wb");
    fwrite(font.data(), 1, font.size(), out);
    fclose(out);
    return path;
}

} // namespace

TEST_F(VyFreetypeTest, NewObjectAndSetTextFontCrossStyleBits_Kept)
{
    VyFreetype fresh;
    EXPECT_EQ(fresh.font, VyFont(0, false, false, false, false));
    EXPECT_FALSE(fresh.embolden);
    EXPECT_FALSE(fresh.slant);
    EXPECT_EQ(fresh.pixelSize, 16);

    fresh.setTextFont(VyFont(20, true, false, false, true)); // boldFace slants
    EXPECT_TRUE(fresh.slant);
    EXPECT_FALSE(fresh.embolden);
    EXPECT_EQ(fresh.pixelSize, 20);
    fresh.setTextFont(VyFont(9, false, true, false, false)); // heavyFace emboldens
    EXPECT_FALSE(fresh.slant);
    EXPECT_TRUE(fresh.embolden);
    EXPECT_EQ(fresh.pixelSize, 9);
    EXPECT_EQ(fresh.font, VyFont(9, false, true, false, false));
}

TEST_F(VyFreetypeTest, MetricsHoldTogetherAcrossSizesAndStyles)
{
    testing::internal::CaptureStdout();
    for (int size : {7, 12, 16, 31, 64}) {
        for (int style = 0; style < 4; ++style) {
            const VyFont font(size, style & 2, style & 1, false, true);
            for (unsigned short code : {u'A', u'g', u'j', u'\u00C9', u'\u0416', u'.', u'\u4E00'}) {
                const GlyphBitmap& g = render(code, font);
                EXPECT_EQ(g.unicode, code);
                EXPECT_EQ(VyFont(g.font), font);
                EXPECT_TRUE(VyFont(g.font).underLine());
                EXPECT_EQ(g.descent, g.rows - g.top);
                EXPECT_GE(g.pitch, g.width);
                EXPECT_GT(g.rows, 0);
                EXPECT_NE(g.buffer, nullptr);
                EXPECT_EQ(g.refCount, 0);
                EXPECT_GT(g.advance, 0);
                EXPECT_LE(g.advance, 2 * size);
            }
            // Descenders reach below the baseline, a full stop does not rise to x-height.
            EXPECT_GT(render('g', font).descent, 0);
            EXPECT_LT(render('.', font).top, render('x', font).top);
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(VyFreetypeTest, AdvancesAreWholePixelsOfTheEm)
{
    // Unifont's glyphs advance by half an em or a whole em.
    open(UNIFONT);
    for (int size : {8, 16, 24, 32}) {
        const VyFont font(size, false, false, false, false);
        for (unsigned short code : {u'A', u'\u05D0', u'\uFE8E', u'\u0E01'})
            EXPECT_EQ(render(code, font).advance, size / 2) << size << " " << code;
        for (unsigned short code : {u'\u4E00', u'\uAC00', u'\u3042'})
            EXPECT_EQ(render(code, font).advance, size) << size << " " << code;
    }
}

TEST_F(VyFreetypeTest, MissingCharacterAndSpaceRenderQuietly)
{
    testing::internal::CaptureStdout();
    const VyFont font(20, false, false, false, false);
    const GlyphBitmap& a = render(0x4E00, font); // DejaVu Sans has no CJK: glyph 0
    const GlyphBitmap& b = render(0xAC00, font);
    const GlyphBitmap& real = render('H', font);
    const GlyphBitmap& space = render(' ', font);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_GT(a.rows, 0);
    EXPECT_EQ(pixels(&a), pixels(&b));
    EXPECT_EQ(a.advance, b.advance);
    EXPECT_EQ(a.unicode, 0x4E00);
    EXPECT_NE(pixels(&a), pixels(&real));
    EXPECT_EQ(space.width * space.rows, 0);
    EXPECT_GT(space.advance, 0);
}

TEST_F(VyFreetypeTest, SlantWidensAndTheNextUprightGlyphIsUpright)
{
    const VyFont upright(24, false, false, false, false), slanted(24, true, false, false, false);
    for (unsigned short code : {u'l', u'p', u'H'}) {
        const GlyphBitmap& before = render(code, upright);
        const GlyphBitmap& leaning = render(code, slanted);
        const GlyphBitmap& after = render(code, upright);
        EXPECT_GT(leaning.width, before.width + 2) << code;
        EXPECT_EQ(leaning.advance, before.advance);
        EXPECT_EQ(after.width, before.width);
        EXPECT_EQ(after.left, before.left);
        EXPECT_EQ(pixels(&after), pixels(&before));
    }
    // Rows below the baseline lean left, so a descender moves the left edge.
    EXPECT_LT(render('p', slanted).left, render('p', upright).left);
}

TEST_F(VyFreetypeTest, EmboldenWidensOutlinesButNotTheAdvance_Kept)
{
    for (unsigned short code : {u'l', u'o', u'W'}) {
        const GlyphBitmap& regular = render(code, VyFont(24, false, false, false, false));
        const GlyphBitmap& heavy = render(code, VyFont(24, false, true, false, false));
        EXPECT_GT(heavy.width, regular.width) << code;
        EXPECT_GT(heavy.rows, regular.rows);
        EXPECT_EQ(heavy.advance, regular.advance);
    }
}

TEST_F(VyFreetypeTest, BitmapFaceIgnoresEmboldenAndSlant)
{
    const std::string path = writeBitmapFont();
    open(path.c_str());
    const GlyphBitmap& plain = render('A', VyFont(16, false, false, false, false));
    EXPECT_EQ(plain.width, 8);
    EXPECT_EQ(plain.rows, 16);
    EXPECT_EQ(plain.top, 14);
    EXPECT_EQ(plain.descent, 2);
    EXPECT_EQ(plain.advance, 8);
    for (int style = 1; style < 4; ++style) {
        const GlyphBitmap& styled = render('A', VyFont(16, style & 2, style & 1, false, false));
        EXPECT_EQ(styled.width, plain.width);
        EXPECT_EQ(pixels(&styled), pixels(&plain));
    }
    remove(path.c_str());
}

TEST_F(VyFreetypeTest, LoadFailureIsPrintedAndTheGlyphFinishedEmpty_Kept)
{
    const std::string path = writeBrokenOutlineFont();
    open(path.c_str());
    testing::internal::CaptureStdout();
    const GlyphBitmap& broken = render('A', VyFont(16, false, false, false, false));
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("FT_Load_Char eroor!\n", 0), 0u) << out;
    EXPECT_EQ(broken.width * broken.rows, 0);
    EXPECT_EQ(broken.unicode, 'A');
    EXPECT_EQ(broken.descent, broken.rows - broken.top);
    remove(path.c_str());
}

TEST_F(VyFreetypeTest, FreetypeDoneClosesOnceAndInitFallsBackToTheEnvironment)
{
    EXPECT_NE(VyFreetype::m_pface, nullptr);
    VyFreetype::freetype_Done();
    EXPECT_EQ(VyFreetype::m_pface, nullptr);
    EXPECT_EQ(VyFreetype::m_plibrary, nullptr);
    VyFreetype::freetype_Done(); // nothing open: nothing happens

    setenv("VY_FONTLIB", UNIFONT, 1);
    VyFreetype::freetype_init(VyString());
    unsetenv("VY_FONTLIB");
    EXPECT_EQ(render(0x4E00, VyFont(16, false, false, false, false)).advance, 16);
}

#if defined(VY_TEST_FAILING_MALLOC)
TEST_F(VyFreetypeTest, ZeroByteGlyphWithoutBufferIsNotAnError)
{
    failingSize = 0;
    const GlyphBitmap& space = render(' ', VyFont(16, false, false, false, false));
    failingSize = size_t(-1);
    EXPECT_EQ(space.buffer, nullptr);
    EXPECT_GT(space.advance, 0);
}
#endif

using VyFreetypeDeathTest = VyFreetypeTest;

TEST_F(VyFreetypeDeathTest, FontConfigurationErrorsEndTheProcess)
{
    unsetenv("VY_FONTLIB");
    EXPECT_EXIT((stdoutToStderr(), VyFreetype::freetype_init(VyString())),
                testing::ExitedWithCode(1),
                literal("[GUI-FRAMEWORK]: font not specified, set \"VY_FONTLIB\" env or call "
                        "VyApplication::setFontFile() !!!!!\n"));
    EXPECT_EXIT((stdoutToStderr(), VyFreetype::freetype_init(VyString("/no/such/font.ttf"))),
                testing::ExitedWithCode(1),
                literal("[GUI-FRAMEWORK]: open font(/no/such/font.ttf) failed !!!\n"));
    // A path that is not a font file fails the same way.
    EXPECT_EXIT((stdoutToStderr(), VyFreetype::freetype_init(VyString("/proc/self/status"))),
                testing::ExitedWithCode(1),
                literal("[GUI-FRAMEWORK]: open font(/proc/self/status) failed !!!\n"));
}

#if defined(VY_TEST_FAILING_MALLOC)
TEST_F(VyFreetypeDeathTest, FailedPixelAllocationEndsTheProcess)
{
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
