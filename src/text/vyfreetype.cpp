// The only file of the library that talks to FreeType: it owns the face's lifetime, the 26.6
// rounding and FreeType's error messages.
#include "vyfreetype.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

FT_LibraryRec_* VyFreetype::m_plibrary = nullptr;
FT_FaceRec_* VyFreetype::m_pface = nullptr;

VyFreetype::VyFreetype()
    : font(0, false, false, false, false), embolden(false), slant(false), pixelSize(16)
{
}

VyFreetype::~VyFreetype() {}

void VyFreetype::freetype_init(VyString path)
{
    if (path.isEmpty())
        path.append(getenv("VY_FONTLIB"));
    if (path.isEmpty()) {
        puts("[GUI-FRAMEWORK]: font not specified, set \"VY_FONTLIB\" env or call "
             "VyApplication::setFontFile() !!!!!");
        exit(1);
    }
    if (FT_Init_FreeType(&m_plibrary) || !m_plibrary) {
        m_plibrary = nullptr;
        puts("FT_Init_FreeType error!");
        exit(1);
    }
    const VyByteArray utf8 = path.toUtf8();
    if (FT_New_Face(m_plibrary, utf8.constData(), 0, &m_pface) || !m_pface) {
        m_pface = nullptr;
        printf("[GUI-FRAMEWORK]: open font(%s) failed !!!\n", utf8.constData());
        exit(1);
    }
    FT_Set_Pixel_Sizes(m_pface, 0, 16);
}

void VyFreetype::freetype_Done()
{
    if (m_pface) {
        FT_Done_Face(m_pface);
        m_pface = nullptr;
    }
    if (m_plibrary) {
        FT_Done_FreeType(m_plibrary);
        m_plibrary = nullptr;
    }
}

void VyFreetype::setTextFont(const VyFont& f)
{
    font = f;
    setTextFontSize(font.fontSize());
    // Kept: the flag bits cross here. heavyFace (bit 1) emboldens and boldFace (bit 0), the
    // bit setBoldFace sets, slants; the framework's "bold" text has always been drawn slanted.
    setTextFontBold(font.heavyFace());
    setTextFontItalics(font.boldFace());
}

void VyFreetype::setTextFontSize(int size)
{
    pixelSize = size;
    if (m_pface)
        FT_Set_Pixel_Sizes(m_pface, 0, FT_UInt(size));
}

GlyphBitmap VyFreetype::resloveUnicode(unsigned short code)
{
    GlyphBitmap result;
    memset(&result, 0, sizeof result);
    result.unicode = code;
    result.font = font.fontAttr();

    // The face is shared, so the transform is set (or reset) for every glyph.
    FT_Face face = m_pface;
    if (slant) {
        FT_Matrix shear = {0x10000, 0x4000, 0, 0x10000};
        FT_Set_Transform(face, &shear, nullptr);
    } else {
        FT_Set_Transform(face, nullptr, nullptr);
    }
    if (FT_Load_Glyph(face, FT_Get_Char_Index(face, code), FT_LOAD_FORCE_AUTOHINT))
        puts("FT_Load_Char eroor!"); // Kept: the framework's log filters match this spelling.
    FT_GlyphSlot slot = face->glyph;
    // Kept: one pixel of extra stroke, and the advance stays that of the regular glyph.
    if (embolden && slot->format == FT_GLYPH_FORMAT_OUTLINE)
        FT_Outline_Embolden(&slot->outline, 64);

    // The slot is rendered in place, once: the bitmap, left, top and advance all come from that
    // one rasterisation. A load leaves an outline or a bitmap in the slot, normally even when it
    // fails; a slot of any other format is one FreeType cannot copy into a glyph, which is
    // reported as that failed copy, and it renders to no pixels.
    const bool copyable =
        slot->format == FT_GLYPH_FORMAT_OUTLINE || slot->format == FT_GLYPH_FORMAT_BITMAP;
    if (!copyable)
        puts("FT_Get_Glyph error!");
    if (slot->format != FT_GLYPH_FORMAT_BITMAP && FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL))
        puts("FT_Render_Glyph error!");

    FT_Bitmap empty;
    memset(&empty, 0, sizeof empty);
    const FT_Bitmap& bitmap = slot->format == FT_GLYPH_FORMAT_BITMAP ? slot->bitmap : empty;
    result.width = static_cast<unsigned short>(bitmap.width);
    result.rows = static_cast<unsigned short>(bitmap.rows);
    result.pitch = static_cast<unsigned short>(bitmap.pitch);
    result.left = static_cast<short>(slot->bitmap_left);
    result.top = static_cast<short>(slot->bitmap_top);
    result.descent = static_cast<short>(result.rows - result.top);
    result.advance = static_cast<short>((slot->advance.x + 32) >> 6);
    result.refCount = 0;

    const size_t bytes = size_t(result.rows) * result.pitch;
    result.buffer = static_cast<unsigned char*>(malloc(bytes));
    // A glyph without pixels may get no buffer from malloc(0); that is not an error.
    if (!result.buffer && bytes) {
        puts("malloc memory error!");
        exit(-1);
    }
    if (bytes)
        memcpy(result.buffer, bitmap.buffer, bytes);
    return result;
}
