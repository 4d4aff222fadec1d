// vytext — previews text exactly as libvy lays it out: the lines, their rectangles and the
// placed paint records as text or JSON, and optionally the records painted into a PNG or BMP
// image.
// See `vytext --help` (vytextoptions.cpp) for the options and the painting rule.
//
// The tool checks everything the library would handle by ending the process or by repairing
// silently: the font file is tried in a child process before the library opens it, and the
// text must be strict UTF-8.
#include "vytextimage.h"
#include "vytextlayout.h"
#include "vytextoptions.h"
#include "vytextoutput.h"
#include "vytextutf8.h"

#include "vyfontcache.h"
#include "vyfontmetrics.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

const char* const UnifontPath = "/usr/share/fonts/opentype/unifont/unifont.otf";
// A preview needs no more; it keeps every position and width far inside 32 bits.
const int MaxUnits = 65536;
// Right-to-left records carry every glyph placed before them, so their total grows with
// units times lines; beyond this many glyphs in all the text is refused.
const long long MaxRecordGlyphs = 1 << 22;
// Glyph coverage the font cache may hold for one text.
const long long MaxGlyphBytes = 1LL << 28;

int fail(const char* format, ...) __attribute__((format(printf, 1, 2)));
int fail(const char* format, ...)
{
    fputs("vytext: ", stderr);
    va_list args;
    va_start(args, format);
    vfprintf(stderr, format, args);
    va_end(args);
    fputc('\n', stderr);
    return 1;
}

// The TEXT argument, or standard input for "-", up to the bytes MaxUnits can take.
bool readText(const std::string& arg, std::string& bytes)
{
    if (arg != "-") {
        bytes = arg;
        return true;
    }
    const size_t cap = size_t(MaxUnits) * 4 + 1;
    bytes.resize(cap);
    const size_t got = fread(&bytes[0], 1, cap, stdin);
    bytes.resize(got);
    if (ferror(stdin)) {
        fail("cannot read standard input: %s", strerror(errno));
        return false;
    }
    return true;
}

// The font to open: --font, else VY_FONTLIB, else the Debian unifont file.
bool chooseFont(const VyTextOptions& o, std::string& path)
{
    const char* env = getenv("VY_FONTLIB");
    if (!o.font.empty())
        path = o.font;
    else if (env && *env)
        path = env;
    else if (access(UnifontPath, F_OK) == 0)
        path = UnifontPath;
    else {
        fail("no font: VY_FONTLIB is not set and %s does not exist (install fonts-unifont or "
             "use --font PATH)",
             UnifontPath);
        return false;
    }
    return true;
}

// True when the library can open `path`. It ends the process when it cannot, so a child
// process tries first, with its output discarded.
bool fontOpens(const std::string& path)
{
    fflush(stdout);
    fflush(stderr);
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, 1);
            dup2(null, 2);
        }
        VyFontMetrics::setFontFile(VyString(path.c_str()), -1);
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool checkFont(const std::string& path, const VyTextOptions& o)
{
    const char* env = getenv("VY_FONTLIB");
    const char* from = o.font.empty() && env && *env ? " (from VY_FONTLIB)" : "";
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        fail("cannot open font %s%s: %s", path.c_str(), from, strerror(errno));
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        fail("font %s%s is not a regular file", path.c_str(), from);
        return false;
    }
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) {
        fail("cannot read font %s%s: %s", path.c_str(), from, strerror(errno));
        return false;
    }
    fclose(f);
    // The library takes the path as a string of UTF-16 units and back; bytes that do not
    // survive that would name another file.
    const VyByteArray back = VyString(path.c_str()).toUtf8();
    if (std::string(back.constData()) != path) {
        fail("font path %s is not UTF-8 the library can pass on", path.c_str());
        return false;
    }
    if (!fontOpens(path)) {
        fail("font %s%s cannot be opened as a font", path.c_str(), from);
        return false;
    }
    return true;
}

// The font cache keeps every glyph the text uses, each about size × size bytes of coverage.
bool glyphPixelsFit(const std::vector<unsigned short>& units, int size)
{
    std::vector<bool> seen(0x10000);
    long long distinct = 0;
    for (const unsigned short u : units)
        if (!seen[u]) {
            seen[u] = true;
            ++distinct;
        }
    return distinct * (size + 1) * (size + 1) <= MaxGlyphBytes;
}

// Right-to-left text breaks only at newlines and, with wrap, before a word after a space.
bool recordsFit(const VyString& text, bool wrap)
{
    long long lines = 1;
    for (int i = 0; i < text.size(); ++i)
        if (text.at(i) == '\n' || (wrap && text.at(i) == ' '))
            ++lines;
    return lines * text.size() <= MaxRecordGlyphs;
}

bool writeImage(const TextLayout& layout, const VyTextOptions& o)
{
    std::vector<unsigned char> pixels;
    if (!paintLayout(layout, o.boxX, o.boxY, o.boxW, o.boxH, pixels)) {
        fail("too much to paint: the glyphs inside the image cover more than %lld pixels",
             MaxPaintedPixels);
        return false;
    }
    if (o.scale != 1 || o.invert)
        pixels = enlarge(pixels, o.boxW, o.boxH, o.scale, o.invert);
    const int width = o.boxW * o.scale, height = o.boxH * o.scale;
    std::string error;
    const bool written = o.imageFormat == ImageFormat::Png
                             ? writePng(o.image, pixels, width, height, error)
                             : writeBmp(o.image, pixels, width, height, error);
    if (!written)
        fail("%s", error.c_str());
    return written;
}

// Lays the text out and shows it: the image first, so that a failed image prints nothing.
int layOutAndShow(const VyTextOptions& o, const std::vector<unsigned short>& units)
{
    const VyString text(units.data(), int(units.size()));
    const VyFont font(static_cast<unsigned char>(o.size), o.bold, o.heavy, false, false);
    VyFontMetrics m(text, font, o.lineSpacing, o.letterSpacing);
    if (m.isRightToLeft() && !recordsFit(text, o.wrap))
        return fail("right-to-left text too large to lay out: every line record carries all "
                    "glyphs before it (at most %lld glyphs in all)",
                    MaxRecordGlyphs);
    m.setWorpWrap(o.wrap);
    if (o.hasBox)
        m.setTextMinRect(o.boxX, o.boxY, o.boxW, o.boxH);
    if (o.alignment >= 0)
        m.setAlignment(o.alignment);
    const TextLayout layout = readLayout(m);
    if (!o.image.empty() && !writeImage(layout, o))
        return 1;
    if (o.format == OutputFormat::Dump)
        printDump(stdout, layout, o.size);
    else if (o.format == OutputFormat::Json)
        printJson(stdout, layout, o.size);
    else
        printLines(stdout, layout);
    return 0;
}

int run(const VyTextOptions& o)
{
    std::string bytes;
    if (!readText(o.text, bytes))
        return 1;
    std::vector<unsigned short> units;
    const long bad = decodeUtf8(bytes, units);
    if (bad >= 0)
        return fail("text is not UTF-8: bad sequence at byte %ld (0x%02x)", bad,
                    unsigned(static_cast<unsigned char>(bytes[size_t(bad)])));
    if (units.size() > size_t(MaxUnits))
        return fail("text is too long: more than %d UTF-16 units", MaxUnits);
    if (!glyphPixelsFit(units, o.size))
        return fail("text has too many different characters for size %d: their glyphs would "
                    "take more than %lld bytes",
                    o.size, MaxGlyphBytes);

    std::string fontPath;
    if (!chooseFont(o, fontPath) || !checkFont(fontPath, o))
        return 1;
    VyFontMetrics::setFontFile(VyString(fontPath.c_str()), o.cacheLimit);

    const int status = layOutAndShow(o, units);
    VyFontMetrics::closeFontFile();
    delete VyFontCache::instance();
    if (fflush(stdout) != 0 || ferror(stdout))
        return fail("cannot write standard output");
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    VyTextOptions options;
    std::string error;
    if (!parseOptions(argc, argv, options, error)) {
        fprintf(stderr, "vytext: %s (see vytext --help)\n", error.c_str());
        return 2;
    }
    if (options.help) {
        fputs(helpText(), stdout);
        return 0;
    }
    return run(options);
}
