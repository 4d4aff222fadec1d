#include "vytextoptions.h"

#include <errno.h>
#include <getopt.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

namespace
{

// Bounds that keep every sum the library forms from the values inside 32 bits, and the image
// inside 64 MiB.
const long MaxCoordinate = 1000000;
const long MaxSpacing = 1000;
const int MaxImageSide = 8192;
const long MaxScale = 16;

enum LongOption {
    OptFont = 256,
    OptSize,
    OptBox,
    OptWrap,
    OptAlign,
    OptLineSpacing,
    OptLetterSpacing,
    OptBold,
    OptHeavy,
    OptCacheLimit,
    OptScale,
    OptInvert,
    OptDump,
    OptJson
};

const option longOptions[] = {{"font", required_argument, nullptr, OptFont},
                              {"size", required_argument, nullptr, OptSize},
                              {"box", required_argument, nullptr, OptBox},
                              {"wrap", no_argument, nullptr, OptWrap},
                              {"align", required_argument, nullptr, OptAlign},
                              {"line-spacing", required_argument, nullptr, OptLineSpacing},
                              {"letter-spacing", required_argument, nullptr, OptLetterSpacing},
                              {"bold", no_argument, nullptr, OptBold},
                              {"heavy", no_argument, nullptr, OptHeavy},
                              {"cache-limit", required_argument, nullptr, OptCacheLimit},
                              {"output", required_argument, nullptr, 'o'},
                              {"scale", required_argument, nullptr, OptScale},
                              {"invert", no_argument, nullptr, OptInvert},
                              {"dump", no_argument, nullptr, OptDump},
                              {"json", no_argument, nullptr, OptJson},
                              {"help", no_argument, nullptr, 'h'},
                              {nullptr, 0, nullptr, 0}};

// A whole decimal (or 0x hex, when `hex` is set) integer from lo to hi.
bool parseNumber(const char* s, long lo, long hi, long& value, bool hex = false)
{
    if (!*s || strchr(" \t\n", *s))
        return false;
    errno = 0;
    char* end = nullptr;
    const long v = strtol(s, &end, hex ? 0 : 10);
    if (errno || *end || v < lo || v > hi)
        return false;
    value = v;
    return true;
}

bool parseInt(const char* name, const char* s, long lo, long hi, int& out, std::string& error)
{
    long v;
    if (!parseNumber(s, lo, hi, v)) {
        error = std::string("--") + name + " wants a whole number from " + std::to_string(lo) +
                " to " + std::to_string(hi) + ", not '" + s + "'";
        return false;
    }
    out = int(v);
    return true;
}

bool parseBox(const char* s, VyTextOptions& o, std::string& error)
{
    const long lo[4] = {-MaxCoordinate, -MaxCoordinate, 1, 1};
    long v[4];
    std::string rest = s;
    for (int i = 0; i < 4; ++i) {
        const size_t comma = i < 3 ? rest.find(',') : std::string::npos;
        if (i < 3 && comma == std::string::npos)
            break;
        const std::string field = rest.substr(0, comma);
        if (!parseNumber(field.c_str(), lo[i], MaxCoordinate, v[i]))
            break;
        if (i == 3) {
            o.hasBox = true;
            o.boxX = int(v[0]);
            o.boxY = int(v[1]);
            o.boxW = int(v[2]);
            o.boxH = int(v[3]);
            return true;
        }
        rest = rest.substr(comma + 1);
    }
    error = std::string("--box wants X,Y,W,H with X and Y from -") + std::to_string(MaxCoordinate) +
            " to " + std::to_string(MaxCoordinate) + " and W and H from 1 to " +
            std::to_string(MaxCoordinate) + ", not '" + s + "'";
    return false;
}

bool parseAlignment(const std::string& text, int& flags)
{
    long v;
    if (parseNumber(text.c_str(), 0, 0x77, v, true)) {
        if (v & ~0x77L)
            return false;
        flags = int(v);
        return true;
    }
    static const struct {
        const char* name;
        int flags;
    } names[] = {{"left", 0x01},   {"right", 0x02},   {"hcenter", 0x04}, {"top", 0x10},
                 {"bottom", 0x20}, {"vcenter", 0x40}, {"center", 0x44}};
    int result = 0;
    size_t start = 0;
    while (true) {
        const size_t comma = text.find(',', start);
        const std::string name = text.substr(start, comma - start);
        int found = -1;
        for (const auto& n : names)
            if (name == n.name)
                found = n.flags;
        if (found < 0)
            return false;
        result |= found;
        if (comma == std::string::npos)
            break;
        start = comma + 1;
    }
    flags = result;
    return true;
}

// True when `name` ends in `extension`, in any letter case.
bool hasExtension(const std::string& name, const char* extension)
{
    const size_t n = strlen(extension);
    return name.size() > n && strcasecmp(name.c_str() + name.size() - n, extension) == 0;
}

} // namespace

bool parseOptions(int argc, char** argv, VyTextOptions& o, std::string& error)
{
    opterr = 0;
    optind = 1;
    int c;
    while ((c = getopt_long(argc, argv, ":ho:", longOptions, nullptr)) != -1) {
        bool ok = true;
        switch (c) {
        case 'h':
            o.help = true;
            return true;
        case 'o':
            o.image = optarg;
            ok = !o.image.empty();
            if (!ok)
                error = "-o wants a file name";
            break;
        case OptFont:
            o.font = optarg;
            break;
        case OptSize:
            ok = parseInt("size", optarg, 1, 255, o.size, error);
            break;
        case OptBox:
            ok = parseBox(optarg, o, error);
            break;
        case OptWrap:
            o.wrap = true;
            break;
        case OptAlign:
            ok = parseAlignment(optarg, o.alignment);
            if (!ok)
                error = std::string("--align wants names joined by commas (left, right, hcenter, "
                                    "top, bottom, vcenter, center) or flags from 0 to 0x77 "
                                    "within 0x77, not '") +
                        optarg + "'";
            break;
        case OptLineSpacing:
            ok = parseInt("line-spacing", optarg, -MaxSpacing, MaxSpacing, o.lineSpacing, error);
            break;
        case OptLetterSpacing:
            ok =
                parseInt("letter-spacing", optarg, -MaxSpacing, MaxSpacing, o.letterSpacing, error);
            break;
        case OptBold:
            o.bold = true;
            break;
        case OptHeavy:
            o.heavy = true;
            break;
        case OptCacheLimit:
            ok = parseInt("cache-limit", optarg, -1, 0x7fffffff, o.cacheLimit, error);
            break;
        case OptScale:
            ok = parseInt("scale", optarg, 1, MaxScale, o.scale, error);
            break;
        case OptInvert:
            o.invert = true;
            break;
        case OptDump:
        case OptJson: {
            const OutputFormat f = c == OptDump ? OutputFormat::Dump : OutputFormat::Json;
            ok = o.format == OutputFormat::Lines || o.format == f;
            o.format = f;
            if (!ok)
                error = "--dump and --json exclude each other";
            break;
        }
        case ':':
            error = std::string("option '") + argv[optind - 1] + "' wants a value";
            ok = false;
            break;
        default:
            // Short options are named by their letter, since a cluster such as -hx does not
            // move optind past the unknown one.
            if (optopt > 0 && optopt < 256)
                error = std::string("unknown option '-") + char(optopt) + "'";
            else
                error = std::string("unknown option '") + argv[optind - 1] + "'";
            ok = false;
        }
        if (!ok)
            return false;
    }
    if (argc - optind != 1) {
        error = argc == optind ? "no TEXT given (use - to read standard input)"
                               : "only one TEXT may be given (quote it)";
        return false;
    }
    o.text = argv[optind];
    if (o.image.empty()) {
        if (o.scale != 1 || o.invert) {
            error = "--scale and --invert change the image: give -o FILE";
            return false;
        }
        return true;
    }
    if (!o.hasBox) {
        error = "-o needs --box X,Y,W,H: the image is the box";
        return false;
    }
    if (long(o.boxW) * o.scale > MaxImageSide || long(o.boxH) * o.scale > MaxImageSide) {
        error = "with -o the box times the scale may be at most " + std::to_string(MaxImageSide) +
                " by " + std::to_string(MaxImageSide) + " pixels";
        return false;
    }
    if (!hasExtension(o.image, ".png") && !hasExtension(o.image, ".bmp")) {
        error = "-o wants a file name ending in .png or .bmp, not '" + o.image + "'";
        return false;
    }
    o.imageFormat = hasExtension(o.image, ".png") ? ImageFormat::Png : ImageFormat::Bmp;
    return true;
}

const char* helpText()
{
    return R"(usage: vytext [options] TEXT      (TEXT "-" reads UTF-8 from standard input)

Lays TEXT out with libvy exactly as a framework widget would (VyFontMetrics: measuring,
line division, paint records) and prints the lines, optionally painting them into a PNG or
BMP image.

  --font PATH          font file (default: $VY_FONTLIB, else
                       /usr/share/fonts/opentype/unifont/unifont.otf)
  --size N             pixel size, 1 to 255 (default 16)
  --box X,Y,W,H        the text box (setTextMinRect); W is also the wrap width
  --wrap               word wrap on
  --align FLAGS        left, right, hcenter, top, bottom, vcenter, center joined by commas,
                       or the numeric flags (0x01 left ... 0x40 vcenter); default 0x44
  --line-spacing N     pixels between lines (-1000 to 1000, default 0)
  --letter-spacing N   pixels after every character cell (-1000 to 1000, default 0)
  --bold               the font's boldFace bit: drawn slanted, widens line rectangles
  --heavy              the font's heavyFace bit: drawn with an emboldened outline
  --cache-limit BYTES  glyph cache pixel limit (-1: none, the default)
  -o FILE.png          paint the records into an 8-bit grey PNG of the box (needs --box;
                       at most 8192 pixels a side after scaling); black text on white
  -o FILE.bmp          the same as a BMP, written by the library; rows padded to 4 bytes
                       show as black columns on the right
  --scale N            with -o, each box pixel becomes N x N image pixels (1 to 16)
  --invert             with -o, white text on black
  --dump               print text, lines, rectangles and placed records as text
  --json               the same as one JSON object
  -h, --help           this text

Without --dump or --json the line texts are printed, one per line.

Painting: a record's rect has x1..x2 placed in the box and y2 = the line's absolute bottom
(y1 is the line's top relative to the text and is not used). With pitch = line height +
line spacing, the line's top is y2 - pitch + 1. With A the tallest glyph top and D the
deepest glyph descent of the text, the leading (line height - A - D) is split with the
smaller half above: baseline = top + (line height - A - D) / 2 + A. Each glyph's coverage
is placed `left` columns right of the pen and `top` rows above the baseline; the pen
starts at x1 and moves by advance + letter spacing per glyph. Everything is clipped to
the image. Right-to-left records hold every glyph placed since the start of the text, as
the library builds them; a record's own glyphs are those beyond the previous record's, and
only those are painted, the pen starting at x1 with the first of them.

Exit status: 0 on success, 1 on an error (one line on standard error), 2 on a bad
command line.
)";
}
