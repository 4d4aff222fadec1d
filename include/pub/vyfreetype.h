// VyFreetype: renders one UTF-16 unit at one font request into a GlyphBitmap through FreeType.
//
// The process has one FreeType library handle and one face (face 0 of one font file), held in
// static members and shared by every object: freetype_init opens them, freetype_Done closes
// them. An object only carries the request of the next glyph (setTextFont). resloveUnicode
// returns the glyph by value, owning a new malloc'd pixel buffer that the caller must free.
//
// Font configuration errors end the process (status 1) with a line on standard output, as does
// a failed pixel allocation (status -1); FreeType errors while rendering one glyph are printed
// and the glyph is finished from what FreeType left.
//
// Threads: nothing here locks. The face and an object's fields are shared state; the font
// cache calls setTextFont and resloveUnicode only under its write lock.
#ifndef VYFREETYPE_H
#define VYFREETYPE_H

#include "vyglobal.h"

#include "vyfont.h"
#include "vystring.h"

// FreeType's handle types (FT_Library, FT_Face are pointers to these); the headers stay inside
// the rasteriser's source.
struct FT_LibraryRec_;
struct FT_FaceRec_;

class VY_EXPORT VyFreetype
{
public:
    // Size 0 and no flags for the next glyph, no embolden or slant, pixelSize 16. Touches
    // neither handle.
    VyFreetype();
    // Does nothing: the handles are closed only by freetype_Done.
    ~VyFreetype();

    // Opens the library and face 0 of `path` (UTF-8 to FreeType; an empty path falls back to
    // the VY_FONTLIB environment variable) at 16 pixels, with the face's default character
    // map. Ends the process when there is no path, FreeType does not start or the file does
    // not open. Call freetype_Done first when a face is open: the old handles would leak.
    static void freetype_init(VyString path);
    // Closes the face, then the library, each only if open.
    static void freetype_Done();

    // Takes the request of the next glyph: its size, and its flag bits crossed (see there).
    void setTextFont(const VyFont& font);
    // Stores the size and applies it to the open face (width follows the height).
    void setTextFontSize(int size);
    // Embolden outlines by one pixel of stroke.
    void setTextFontBold(bool on) { embolden = on; }
    // Shear a quarter to the right going up while loading.
    void setTextFontItalics(bool on) { slant = on; }

    // The glyph of `code` at the current request; a unit the face lacks renders glyph 0.
    // Requires an open face. The result's `buffer` holds rows * pitch bytes from malloc (a
    // zero-byte glyph may have none); `refCount` is 0.
    GlyphBitmap resloveUnicode(unsigned short code);

    static FT_LibraryRec_* m_plibrary;
    static FT_FaceRec_* m_pface;

    VyFont font;
    bool embolden;
    bool slant;
    int pixelSize;
};

#endif
