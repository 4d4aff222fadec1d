// Runs the installed vytext (path in VYTEXT) with the unifont font, whose advances are exact:
// half-width glyphs size / 2, full-width ones size. The expected lines, rectangles, placements
// and pixels are worked out here from those advances and the layout rules.
#include <gtest/gtest.h>
#include <png.h>

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace
{

const char* const Unifont = "/usr/share/fonts/opentype/unifont/unifont.otf";

// ---- a small JSON reader: objects, arrays, strings, integers, true and false

struct Json {
    enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
    long long number = 0;
    std::string text;
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> fields;

    const Json& operator[](const std::string& key) const
    {
        static const Json missing;
        for (const auto& f : fields)
            if (f.first == key)
                return f.second;
        ADD_FAILURE() << "no field " << key;
        return missing;
    }
    const Json& operator[](size_t i) const { return items.at(i); }
    int n() const { return int(number); }
    std::vector<int> ints() const
    {
        std::vector<int> v;
        for (const Json& j : items)
            v.push_back(j.n());
        return v;
    }
};

struct JsonReader {
    const std::string& s;
    size_t p = 0;

    void space() { p = std::min(s.size(), s.find_first_not_of(" \n\t\r", p)); }
    bool take(char c)
    {
        space();
        return p < s.size() && s[p] == c ? (++p, true) : false;
    }
    bool string(std::string& out)
    {
        if (!take('"'))
            return false;
        while (p < s.size() && s[p] != '"') {
            char c = s[p++];
            if (c == '\\') {
                if (p >= s.size())
                    return false;
                c = s[p++];
                if (c == 'u') {
                    // Only the control characters vytext escapes.
                    const unsigned v = unsigned(strtoul(s.substr(p, 4).c_str(), nullptr, 16));
                    if (v >= 0x20)
                        return false;
                    c = char(v);
                    p += 4;
                } else if (c != '"' && c != '\\') {
                    return false;
                }
            } else if (static_cast<unsigned char>(c) < 0x20) {
                return false;
            }
            out += c;
        }
        return take('"');
    }
    bool value(Json& v)
    {
        space();
        if (p >= s.size())
            return false;
        if (s[p] == '{' || s[p] == '[') {
            const bool object = s[p++] == '{';
            v.kind = object ? Json::Object : Json::Array;
            if (take(object ? '}' : ']'))
                return true;
            do {
                Json item;
                std::string key;
                if ((object && (!string(key) || !take(':'))) || !value(item))
                    return false;
                if (object)
                    v.fields.emplace_back(key, item);
                else
                    v.items.push_back(item);
            } while (take(','));
            return take(object ? '}' : ']');
        }
        if (s[p] == '"') {
            v.kind = Json::String;
            return string(v.text);
        }
        for (const std::string word : {"true", "false"})
            if (s.compare(p, word.size(), word) == 0) {
                v.kind = Json::Bool;
                v.number = word == "true";
                p += word.size();
                return true;
            }
        char* end = nullptr;
        v.number = strtoll(s.c_str() + p, &end, 10);
        v.kind = Json::Number;
        const size_t used = size_t(end - (s.c_str() + p));
        p += used;
        return used > 0;
    }
};

// Parses a whole document; a syntax error fails the test.
Json parseJson(const std::string& s)
{
    JsonReader r{s};
    Json v;
    const bool ok = r.value(v);
    r.space();
    EXPECT_TRUE(ok && r.p == s.size()) << "not JSON at byte " << r.p << ":\n" << s;
    return v;
}

// ---- running the tool

std::string scratch()
{
    static std::string dir = [] {
        char name[] = "/tmp/vytext-test.XXXXXX";
        return std::string(mkdtemp(name) ? name : "/tmp");
    }();
    return dir;
}

std::string readFile(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

struct Result {
    int status;
    std::string out;
    std::string err;
};

// Runs vytext with `args`, `input` on standard input and VY_FONTLIB set to `fontlib` (unset
// for null).
Result run(const std::vector<std::string>& args, const std::string& input = "",
           const char* fontlib = nullptr)
{
    const std::string in = scratch() + "/in", out = scratch() + "/out", err = scratch() + "/err";
    writeFile(in, input);
    const char* tool = getenv("VYTEXT");
    if (!tool) {
        ADD_FAILURE() << "VYTEXT is not set";
        return {-1, "", ""};
    }
    std::vector<char*> argv{const_cast<char*>(tool)};
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(open(in.c_str(), O_RDONLY), 0);
        dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
        dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
        if (fontlib)
            setenv("VY_FONTLIB", fontlib, 1);
        else
            unsetenv("VY_FONTLIB");
        execv(tool, argv.data());
        _exit(127);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readFile(out),
            readFile(err)};
}

// The layout of `text` as JSON with the unifont font.
Json layout(std::vector<std::string> args, const std::string& text)
{
    args.insert(args.begin(), {"--font", Unifont, "--json"});
    args.push_back(text);
    const Result r = run(args);
    EXPECT_EQ(r.status, 0) << r.err;
    return parseJson(r.out);
}

class Vytext : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (access(Unifont, R_OK) != 0)
            GTEST_SKIP() << Unifont << " is not installed";
    }
};

// Line height, ascent, descent and every record's baseline, as the glyphs give them.
void checkVerticalMetrics(const Json& j)
{
    int ascent = 0, descent = 0;
    for (const Json& r : j["records"].items)
        for (const Json& g : r["glyphs"].items) {
            ascent = std::max(ascent, g["top"].n());
            descent = std::max(descent, g["rows"].n() - g["top"].n());
        }
    EXPECT_EQ(j["ascent"].n(), ascent);
    EXPECT_EQ(j["descent"].n(), descent);
    const int height = j["line_height"].n();
    EXPECT_EQ(height, int(double(ascent + descent) + double(ascent + descent) * 0.36));
    EXPECT_EQ(j["pitch"].n(), height + j["line_spacing"].n());
    for (const Json& r : j["records"].items)
        EXPECT_EQ(r["baseline"].n(),
                  r["rect"][3].n() - j["pitch"].n() + 1 + (height - ascent - descent) / 2 + ascent);
}

TEST_F(Vytext, WrappedWordsArePlacedInTheBoxByEveryAlignment)
{
    struct Align {
        const char* flags;
        int stored;
    };
    const Align aligns[] = {{"left,top", 0x11}, {"right,bottom", 0x22}, {"center", 0x44},
                            {"0", 0x11},        {"0x03", 0x13},         {"hcenter,bottom", 0x24}};
    for (const int size : {16, 32})
        for (const int ls : {0, 2})
            for (const Align& a : aligns) {
                SCOPED_TRACE(std::string(a.flags) + " size " + std::to_string(size) + " ls " +
                             std::to_string(ls));
                // Cells of half-width letters; ten of them fill the box exactly, so the third
                // word wraps.
                const int cell = size / 2 + ls;
                const int boxW = 10 * cell, boxH = 200;
                const Json j =
                    layout({"--size", std::to_string(size), "--letter-spacing", std::to_string(ls),
                            "--line-spacing", "3", "--wrap", "--box",
                            "10,20," + std::to_string(boxW) + ",200", "--align", a.flags},
                           "aaaa bbbb cccc");
                checkVerticalMetrics(j);
                const int pitch = j["pitch"].n();
                EXPECT_EQ(j["alignment"].n(), a.stored);
                EXPECT_EQ(j["box"].ints(), (std::vector<int>{10, 20, 9 + boxW, 219}));
                ASSERT_EQ(j["lines"].items.size(), 2u);
                EXPECT_EQ(j["lines"][0]["text"].text, "aaaa bbbb ");
                EXPECT_EQ(j["lines"][1]["text"].text, "cccc");
                const int widths[2] = {10 * cell, 4 * cell};
                const int h = a.stored & 7, v = a.stored & 0x70;
                const int lastBottom = 2 * pitch - 1;
                const int dy = v == 0x20   ? 20 + boxH - lastBottom
                               : v == 0x40 ? 20 + (boxH - lastBottom) / 2
                                           : 20;
                ASSERT_EQ(j["records"].items.size(), 2u);
                for (int i = 0; i < 2; ++i) {
                    const int w = widths[i];
                    EXPECT_EQ(j["lines"][i]["rect"].ints(),
                              (std::vector<int>{0, i * pitch, w - 1, (i + 1) * pitch - 1}));
                    const int left = h == 2 ? 10 + boxW - w : h == 4 ? 10 + (boxW - w) / 2 : 10;
                    const Json& r = j["records"][i];
                    EXPECT_EQ(r["rect"].ints(), (std::vector<int>{left, i * pitch, left + w - 1,
                                                                  (i + 1) * pitch - 1 + dy}));
                    const Json& glyphs = r["glyphs"];
                    for (size_t k = 0; k < glyphs.items.size(); ++k) {
                        EXPECT_EQ(glyphs[k]["advance"].n(), size / 2);
                        EXPECT_EQ(glyphs[k]["pen"].n(), left + int(k) * cell);
                    }
                }
            }
}

TEST_F(Vytext, IdeographsBreakBetweenFullWidthCells)
{
    for (const int size : {16, 24}) {
        const Json j = layout({"--size", std::to_string(size), "--wrap", "--box",
                               "0,0," + std::to_string(size * 5 / 2) + ",100"},
                              "中文字");
        ASSERT_EQ(j["lines"].items.size(), 2u);
        EXPECT_EQ(j["lines"][0]["text"].text, "中文");
        EXPECT_EQ(j["lines"][1]["text"].text, "字");
        EXPECT_EQ(j["lines"][0]["rect"][2].n(), 2 * size - 1);
        EXPECT_EQ(j["lines"][1]["rect"][2].n(), size - 1);
        EXPECT_EQ(j["records"][1]["glyphs"][0]["advance"].n(), size);
    }
}

TEST_F(Vytext, RightToLeftRecordsCarryEveryEarlierGlyph)
{
    const Json j = layout({}, "אב\nגד\nהו");
    EXPECT_EQ(j["rtl"].number, 1);
    const int pitch = j["pitch"].n();
    // Earlier lines go to the front, the last one to the end; records stay in build order.
    const char* texts[3] = {"גד", "אב", "הו"};
    const int tops[3] = {pitch, 0, 2 * pitch};
    ASSERT_EQ(j["lines"].items.size(), 3u);
    ASSERT_EQ(j["records"].items.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(j["lines"][i]["text"].text, texts[i]);
        EXPECT_EQ(j["lines"][i]["rect"][1].n(), tops[i]);
        const Json& glyphs = j["records"][i]["glyphs"];
        ASSERT_EQ(glyphs.items.size(), 2 * (i + 1));
        for (size_t k = 0; i > 0 && k < 2 * i; ++k)
            EXPECT_EQ(glyphs[k]["unit"].n(), j["records"][i - 1]["glyphs"][k]["unit"].n());
        // Only the glyphs beyond the previous record's are the record's own, painted from x1.
        EXPECT_EQ(j["records"][i]["own"].n(), int(2 * i));
        EXPECT_EQ(glyphs[2 * i]["pen"].n(), j["records"][i]["rect"][0].n());
    }
}

TEST_F(Vytext, LinesDumpAndJsonAgree)
{
    // Quotes, backslashes, newlines, a code point beyond the BMP and standard input.
    const std::string text = "say \"hi\" \\o/\n\xF0\x9F\x98\x80 ok\n\nend";
    const Json j = layout({"--box", "0,0,200,100"}, text);
    EXPECT_EQ(j["units"].n(), 23);
    std::string joined;
    for (const Json& l : j["lines"].items)
        joined += l["text"].text + "\n";
    EXPECT_EQ(joined, "say \"hi\" \\o/\n\xF0\x9F\x98\x80 ok\n\nend\n");

    for (const char* fontlib : {Unifont, static_cast<const char*>(nullptr)}) {
        const Result lines = run({"-"}, text, fontlib);
        EXPECT_EQ(lines.status, 0) << lines.err;
        EXPECT_EQ(lines.out, joined);
    }

    const Result dump = run({"--font", Unifont, "--box", "0,0,200,100", "--dump", text});
    ASSERT_EQ(dump.status, 0) << dump.err;
    std::istringstream rows(dump.out);
    std::string row;
    size_t lines = 0, records = 0, fonts = 0;
    while (std::getline(rows, row)) {
        int i, x1, y1, x2, y2, baseline, count, own, used = 0;
        int size, height, ascent, descent, lineSpacing, letterSpacing, pitch;
        if (sscanf(row.c_str(),
                   "font: size %d, line height %d, ascent %d, descent %d, line spacing %d, "
                   "letter spacing %d, pitch %d",
                   &size, &height, &ascent, &descent, &lineSpacing, &letterSpacing, &pitch) == 7) {
            EXPECT_EQ((std::vector<int>{size, height, ascent, descent, lineSpacing, letterSpacing,
                                        pitch}),
                      (std::vector<int>{j["size"].n(), j["line_height"].n(), j["ascent"].n(),
                                        j["descent"].n(), j["line_spacing"].n(),
                                        j["letter_spacing"].n(), j["pitch"].n()}));
            ++fonts;
        } else if (sscanf(row.c_str(), "line %d: %d %d %d %d %n", &i, &x1, &y1, &x2, &y2, &used) ==
                   5) {
            const Json& l = j["lines"][size_t(i)];
            EXPECT_EQ(l["rect"].ints(), (std::vector<int>{x1, y1, x2, y2}));
            EXPECT_EQ(parseJson(row.substr(size_t(used))).text, l["text"].text);
            ++lines;
        } else if (sscanf(row.c_str(), "record %d: %d %d %d %d baseline %d, %d glyphs from %d", &i,
                          &x1, &y1, &x2, &y2, &baseline, &count, &own) == 8) {
            const Json& r = j["records"][size_t(i)];
            EXPECT_EQ(r["rect"].ints(), (std::vector<int>{x1, y1, x2, y2}));
            EXPECT_EQ(r["baseline"].n(), baseline);
            EXPECT_EQ(r["glyphs"].items.size(), size_t(count));
            EXPECT_EQ(r["own"].n(), own);
            ++records;
        }
    }
    EXPECT_EQ(fonts, 1u);
    EXPECT_EQ(lines, 4u);
    EXPECT_EQ(records, 4u);

    const Json empty = layout({}, "");
    EXPECT_TRUE(empty["lines"].items.empty() && empty["records"].items.empty());
}

// The unsigned number of `bytes` bytes at `at`, least significant byte first (BMP) or last.
uint32_t number(const std::string& b, size_t at, int bytes, bool bigEndian = false)
{
    uint32_t v = 0;
    for (int k = 0; k < bytes; ++k)
        v = v << 8 | static_cast<unsigned char>(b[at + size_t(bigEndian ? k : bytes - 1 - k)]);
    return v;
}

// Grey pixels, rows top to bottom.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;
};

// A PNG file decoded to 8-bit grey; an empty picture when it cannot be read.
Picture readPng(const std::string& path)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    Picture p;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return p;
    image.format = PNG_FORMAT_GRAY;
    p.pixels.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, p.pixels.data(), 0, nullptr)) {
        p.width = int(image.width);
        p.height = int(image.height);
    }
    return p;
}

// The 8-bit BMP of a w × h box with its header and grey palette checked; its rows are padded
// to 4 bytes.
Picture readBmp(const std::string& b, int w, int h)
{
    const int stride = (w + 3) / 4 * 4;
    if (b.size() != 1078u + size_t(stride * h) || b.substr(0, 2) != "BM") {
        ADD_FAILURE() << "not an 8-bit BMP of " << stride << " x " << h;
        return {};
    }
    // Offset, width in bytes and value of each header field.
    const uint32_t header[] = {
        2,  4, uint32_t(b.size()), 10, 4, 1078, 14, 4, 40, 18, 4, uint32_t(stride),
        22, 4, uint32_t(h),        26, 2, 1,    28, 2, 8};
    for (size_t i = 0; i < std::size(header); i += 3)
        EXPECT_EQ(number(b, header[i], int(header[i + 1])), header[i + 2]) << "byte " << header[i];
    for (uint32_t i = 0; i < 256; ++i)
        EXPECT_EQ(number(b, 54 + 4 * i, 4), i | i << 8 | i << 16);
    Picture p{stride, h, {}};
    for (int y = h - 1; y >= 0; --y)
        p.pixels.insert(p.pixels.end(), b.begin() + 1078 + y * stride,
                        b.begin() + 1078 + (y + 1) * stride);
    return p;
}

TEST_F(Vytext, ImageIsTheBoxWithTheGlyphsInk)
{
    struct Case {
        const char* file;
        bool png;
        int scale;
        bool invert;
    };
    const Case cases[] = {{"blocks.bmp", false, 1, false},
                          {"blocks.png", true, 1, false},
                          {"big.PNG", true, 3, true}};
    const int boxX = 3, boxY = 5, w = 30, h = 40;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string path = scratch() + "/" + c.file;
        std::vector<std::string> args{"--scale", std::to_string(c.scale), "-o", path};
        args.insert(args.end(),
                    {"--box", "3,5,30,40", "--align", "left,top", "--letter-spacing", "1"});
        if (c.invert)
            args.push_back("--invert");
        // Full and left-half blocks: their coverage fills their bitmaps.
        const Json j = layout(args, "\u2588\u258C\u2588");
        const std::string b = readFile(path);
        const Picture pic = c.png ? readPng(path) : readBmp(b, w, h);
        if (c.png) {
            EXPECT_EQ(b.substr(0, 16), std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16));
            // Width, height, 8 bits a sample, greyscale.
            EXPECT_EQ(number(b, 16, 4, true), uint32_t(w * c.scale));
            EXPECT_EQ(number(b, 20, 4, true), uint32_t(h * c.scale));
            EXPECT_EQ(number(b, 24, 2, true), 0x0800u);
        }
        ASSERT_EQ(pic.height, h * c.scale);
        ASSERT_EQ(pic.width, (c.png ? w : (w + 3) / 4 * 4) * c.scale);
        const Json& r = j["records"][0];
        for (int y = 0; y < pic.height; ++y)
            for (int x = 0; x < pic.width; ++x) {
                const int bx = x / c.scale, by = y / c.scale;
                bool ink = false;
                for (const Json& g : r["glyphs"].items) {
                    const int gx = g["pen"].n() + g["left"].n() - boxX;
                    const int gy = r["baseline"].n() - g["top"].n() - boxY;
                    ink |=
                        bx >= gx && bx < gx + g["width"].n() && by >= gy && by < gy + g["rows"].n();
                }
                // Columns past the box are the BMP writer's row padding.
                const int want = bx >= w ? 0 : ink != c.invert ? 0 : 255;
                ASSERT_EQ(pic.pixels[size_t(y * pic.width + x)], want) << "pixel " << x << "," << y;
            }
    }

    // Glyphs far outside a small box are clipped away.
    const std::string small = scratch() + "/small.bmp";
    const Result clipped = run({"--font", Unifont, "--size", "200", "--box", "-5,-5,5,3", "--align",
                                "right", "-o", small, "\u2588\u2588\u2588"});
    EXPECT_EQ(clipped.status, 0) << clipped.err;
    EXPECT_EQ(readFile(small).size(), 1078u + 8 * 3);
}

TEST_F(Vytext, DocsSpecimenIsWhatTheToolDraws)
{
    // The same bytes: the tool writes PNG with fixed settings (grey, compression level, filters,
    // no time chunk), so a drawing that changes in any pixel changes the file.
    const std::string docs = VY_DOCS;
    std::ifstream list(docs + "/specimen.args");
    std::vector<std::string> args;
    for (std::string a; std::getline(list, a);)
        args.push_back(a);
    ASSERT_FALSE(args.empty()) << "no arguments in " << docs << "/specimen.args";
    const std::string png = scratch() + "/specimen.png";
    args.insert(args.end(), {"-o", png});
    const Result r = run(args);
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string drawn = readFile(png), committed = readFile(docs + "/specimen.png");
    EXPECT_GT(drawn.size(), 8u);
    EXPECT_TRUE(drawn == committed) << "run ./scripts/demo to draw docs/specimen.png again";
}

TEST_F(Vytext, ErrorsAreOneLineAndAFailure)
{
    const std::string garbage = scratch() + "/garbage.otf";
    writeFile(garbage, "not a font at all");
    struct Case {
        std::vector<std::string> args;
        std::string input;
        std::string says;
    };
    const Case cases[] = {
        {{"--bogus", "x"}, "", "--bogus"},
        {{"--size", "256", "x"}, "", "--size"},
        {{"--size", "99999999999999999999", "x"}, "", "--size"},
        {{"--letter-spacing", "1e3", "x"}, "", "--letter-spacing"},
        {{"--box", "1,2,3", "x"}, "", "--box"},
        {{"--box", "0,0,0,10", "x"}, "", "--box"},
        {{"--box", "2147483647,0,10,10", "x"}, "", "--box"},
        {{"--box", "0,0,10,10,", "x"}, "", "--box"},
        {{"--align", "middle", "x"}, "", "--align"},
        {{"--align", "0x80", "x"}, "", "--align"},
        {{"-o", "x.bmp", "x"}, "", "--box"},
        {{"--box", "0,0,9000,10", "-o", "x.bmp", "x"}, "", "8192"},
        {{}, "", "TEXT"},
        {{"a", "b"}, "", "TEXT"},
        {{"--font", "/nonexistent/font.otf", "x"}, "", "/nonexistent/font.otf"},
        {{"--font", scratch(), "x"}, "", scratch()},
        {{"--font", garbage, "x"}, "", garbage},
        {{"-"}, std::string(300000, 'a'), "too long"},
        {{"--box", "0,0,8,8", "-o", "/nonexistent/dir/x.bmp", "x"}, "", "/nonexistent/dir/x.bmp"},
        {{"--box", "0,0,8,8", "-o", "/nonexistent/dir/x.png", "x"}, "", "/nonexistent/dir/x.png"},
        {{"--box", "0,0,8,8", "-o", "x.gif", "x"}, "", ".png"},
        {{"--box", "0,0,8,8", "--scale", "17", "-o", "x.png", "x"}, "", "--scale"},
        {{"--box", "0,0,1000,8", "--scale", "9", "-o", "x.png", "x"}, "", "8192"},
        {{"--invert", "x"}, "", "-o FILE"},
    };
    std::vector<Case> all(std::begin(cases), std::end(cases));
    // Stray, overlong, surrogate, out-of-range and cut-off sequences.
    for (const char* bad : {"ab\xFF", "\x80", "a\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                            "\xF4\x90\x80\x80", "\xE4\xB8"})
        all.push_back({{"-"}, bad, "UTF-8"});
    for (const Case& c : all) {
        // A later --font replaces this one.
        std::vector<std::string> args = c.args;
        args.insert(args.begin(), {"--font", Unifont});
        const Result r = run(args, c.input);
        SCOPED_TRACE(c.says + ": " + r.err);
        EXPECT_TRUE(r.status > 0 && r.status < 128 && r.out.empty());
        EXPECT_EQ(r.err.rfind("vytext: ", 0), 0u);
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1);
        EXPECT_NE(r.err.find(c.says), std::string::npos);
    }

    const Result env = run({"x"}, "", "/nonexistent/env.otf");
    EXPECT_EQ(env.status, 1);
    EXPECT_NE(env.err.find("/nonexistent/env.otf (from VY_FONTLIB)"), std::string::npos);
}

} // namespace
