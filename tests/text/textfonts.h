// Fonts and helpers shared by the text tests. The fonts come from Debian packages that
// scripts/test installs (fonts-dejavu-core, fonts-unifont).
#ifndef TEXTFONTS_H
#define TEXTFONTS_H

#include "vyfont.h"

#include <string.h>
#include <string>
#include <unistd.h>

// An outline font with a missing-glyph box; it has no CJK.
#define DEJAVU_SANS "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
// Covers the whole Basic Multilingual Plane, half-width (size / 2) and full-width (size)
// advances.
#define UNIFONT "/usr/share/fonts/opentype/unifont/unifont.otf"

// The extended regular expression that matches `text` literally.
inline std::string literal(const std::string& text)
{
    std::string re;
    for (char c : text) {
        if (strchr("\\^$.|?*+()[]{}", c))
            re += '\\';
        re += c;
    }
    return re;
}

// Sends standard output where a death test reads (standard error), so exit messages printed
// with puts or printf can be matched.
inline void stdoutToStderr()
{
    dup2(2, 1);
}

// The pixels of a glyph, as a string ("" when it has none).
inline std::string pixels(const GlyphBitmap* g)
{
    const size_t n = size_t(g->rows) * g->pitch;
    return n && g->buffer ? std::string(reinterpret_cast<const char*>(g->buffer), n)
                          : std::string();
}

#endif
