// Runs the installed vytext (path in VYTEXT) with the unifont font, whose advances are exact:
// half-width glyphs size / 2, full-width ones size. The expected lines, rectangles, placements
// and pixels are worked out here from those advances and the layout rules.
#include <gtest/gtest.h>
#include <png.h>

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace
{

const char* const Unifont = "/usr/share/fonts/opentype/unifont/unifont.otf";

std::string format(const char* f, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char* f, ...)
{
    char buffer[256];
    va_list args;
    va_start(args, f);
    vsnprintf(buffer, sizeof buffer, f, args);
    va_end(args);
    return buffer;
}

// ---- JSON, flattened to paths: "records.0.glyphs.2.pen" -> "12"; strings keep their quotes
// and escapes as written, true and false their words; "lines.#" is the number of items of
// "lines".

struct Json : std::map<std::string, std::string> {
    // A missing path throws, which fails the test.
    int n(const std::string& path) const { return std::stoi(at(path)); }
    // The four edges of a rectangle, as the dump prints them.
    std::string edges(const std::string& path) const
    {
        return format("%d %d %d %d", n(path + ".0"), n(path + ".1"), n(path + ".2"),
                      n(path + ".3"));
    }
};

// The value that starts at token t, stored under `path`; false on a token out of place.
bool parse(const std::vector<std::string>& tokens, size_t& t, const std::string& path, Json& j)
{
    const std::string open = tokens[t++];
    if (open != "{" && open != "[") {
        j[path] = open;
        return !open.empty() && std::string("{}[]:,").find(open[0]) == std::string::npos;
    }
    const std::string close = open == "{" ? "}" : "]", prefix = path.empty() ? "" : path + ".";
    int n = 0;
    for (; !tokens[t].empty() && tokens[t] != close; ++n) {
        if (n > 0 && tokens[t++] != ",")
            return false;
        std::string key = std::to_string(n);
        if (open == "{") {
            key = tokens[t].substr(1, tokens[t].size() - 2);
            if (tokens[t][0] != '"' || tokens[t + 1] != ":")
                return false;
            t += 2;
        }
        if (!parse(tokens, t, prefix + key, j))
            return false;
    }
    j[prefix + "#"] = std::to_string(n);
    return tokens[t++] == close;
}

// Parses a whole document; a syntax error fails the test.
Json parseJson(const std::string& s)
{
    static const std::regex token(R"("(\\.|[^"\\\x00-\x1f])*"|[{}\[\]:,]|-?[0-9]+|true|false)");
    std::vector<std::string> tokens(std::sregex_token_iterator(s.begin(), s.end(), token), {});
    tokens.push_back(""); // the end
    Json j;
    size_t t = 0;
    const bool ok = parse(tokens, t, "", j) && t + 1 == tokens.size() &&
                    std::regex_replace(s, token, "").find_first_not_of(" \n") == std::string::npos;
    EXPECT_TRUE(ok) << "not JSON:\n" << s;
    return j;
}

// ---- running the tool

// A name for a file of this test program (ctest may run several at once).
std::string scratch(const std::string& name)
{
    return testing::TempDir() + "vytext-test-" + std::to_string(getpid()) + "-" + name;
}

std::string readFile(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

// `s` as one word of the shell.
std::string shellWord(const std::string& s)
{
    return "'" + std::regex_replace(s, std::regex("'"), "'\\''") + "'";
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
    std::ofstream(scratch("in"), std::ios::binary) << input;
    std::string command = fontlib ? "VY_FONTLIB=" + shellWord(fontlib) : "unset VY_FONTLIB;";
    command += " " + shellWord(getenv("VYTEXT"));
    for (const std::string& word : args)
        command += " " + shellWord(word);
    command += " <" + scratch("in") + " >" + scratch("out") + " 2>" + scratch("err");
    const int status = system(command.c_str());
    return {WEXITSTATUS(status), readFile(scratch("out")), readFile(scratch("err"))};
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
        ASSERT_NE(getenv("VYTEXT"), nullptr) << "VYTEXT is not set";
        if (access(Unifont, R_OK) != 0)
            GTEST_SKIP() << Unifont << " is not installed";
    }
};

TEST_F(Vytext, WrappedWordsArePlacedInTheBoxByEveryAlignment)
{
    const std::pair<const char*, int> aligns[] = {{"left,top", 0x11}, {"right,bottom", 0x22},
                                                  {"center", 0x44},   {"0", 0x11},
                                                  {"0x03", 0x13},     {"hcenter,bottom", 0x24}};
    for (const int size : {16, 32})
        for (const int ls : {0, 2})
            for (const auto& [flags, stored] : aligns) {
                SCOPED_TRACE(format("%s size %d ls %d", flags, size, ls));
                // Cells of half-width letters; ten of them fill the box exactly, so the third
                // word wraps.
                const int cell = size / 2 + ls, boxW = 10 * cell, boxH = 200;
                const Json j = layout({"--size", std::to_string(size), "--letter-spacing",
                                       std::to_string(ls), "--line-spacing", "3", "--wrap", "--box",
                                       format("10,20,%d,200", boxW), "--align", flags},
                                      "aaaa bbbb cccc");
                // Every record's baseline sits the ascent below the middle of its pitch.
                const int ascent = j.n("ascent"), descent = j.n("descent"),
                          height = j.n("line_height"), pitch = j.n("pitch");
                EXPECT_EQ(pitch, height + j.n("line_spacing"));
                for (int r = 0; r < j.n("records.#"); ++r)
                    EXPECT_EQ(j.n(format("records.%d.baseline", r)),
                              j.n(format("records.%d.rect.3", r)) - pitch + 1 +
                                  (height - ascent - descent) / 2 + ascent);
                EXPECT_EQ(j.n("alignment"), stored);
                EXPECT_EQ(std::make_tuple(j.n("lines.#"), j.n("records.#"), j.at("lines.0.text"),
                                          j.at("lines.1.text")),
                          std::make_tuple(2, 2, "\"aaaa bbbb \"", "\"cccc\""));
                const int h = stored & 7, v = stored & 0x70, lastBottom = 2 * pitch - 1;
                const int dy = v == 0x20   ? 20 + boxH - lastBottom
                               : v == 0x40 ? 20 + (boxH - lastBottom) / 2
                                           : 20;
                for (int i = 0; i < 2; ++i) {
                    const int w = (i ? 4 : 10) * cell;
                    const int left = h == 2 ? 10 + boxW - w : h == 4 ? 10 + (boxW - w) / 2 : 10;
                    const std::string record = format("records.%d.", i);
                    EXPECT_EQ(j.edges(record + "rect"),
                              format("%d %d %d %d", left, i * pitch, left + w - 1,
                                     (i + 1) * pitch - 1 + dy));
                    EXPECT_EQ(j.n(record + "glyphs.#"), w / cell);
                    for (int k = 0; k < j.n(record + "glyphs.#"); ++k)
                        EXPECT_EQ(j.n(record + format("glyphs.%d.pen", k)), left + k * cell);
                }
            }
}

TEST_F(Vytext, RightToLeftRecordsCarryEveryEarlierGlyph)
{
    const Json j = layout({}, "אב\nגד\nהו");
    EXPECT_EQ(j.at("rtl"), "true");
    ASSERT_EQ(std::make_pair(j.n("lines.#"), j.n("records.#")), std::make_pair(3, 3));
    for (int i = 0; i < 3; ++i) {
        const std::string record = format("records.%d.", i);
        // Each record carries the glyphs of the records before it.
        ASSERT_EQ(j.n(record + "glyphs.#"), 2 * (i + 1));
        // Only the glyphs beyond the previous record's are the record's own, painted from x1.
        EXPECT_EQ(j.n(record + "own"), 2 * i);
        EXPECT_EQ(j.n(record + format("glyphs.%d.pen", 2 * i)), j.n(record + "rect.0"));
    }
}

TEST_F(Vytext, LinesDumpAndJsonAgree)
{
    // Quotes, backslashes, newlines, ideographs, a code point beyond the BMP and standard input.
    const std::string text = "say \"hi\" \\o/\n\xF0\x9F\x98\x80 中文\n\nend";
    const Json j = layout({"--box", "0,0,200,100"}, text);
    EXPECT_EQ(j.n("units"), 23);
    EXPECT_EQ(
        std::make_tuple(j.n("lines.#"), j.at("lines.0.text"), j.at("lines.1.text"),
                        j.at("lines.2.text"), j.at("lines.3.text")),
        std::make_tuple(4, R"("say \"hi\" \\o/")", "\"\xF0\x9F\x98\x80 中文\"", "\"\"", "\"end\""));
    for (const char* fontlib : {Unifont, static_cast<const char*>(nullptr)}) {
        const Result lines = run({"-"}, text, fontlib);
        EXPECT_EQ(lines.status, 0) << lines.err;
        EXPECT_EQ(lines.out, text + "\n");
    }
    const Result dump = run({"--font", Unifont, "--box", "0,0,200,100", "--dump", text});
    EXPECT_EQ(dump.status, 0) << dump.err;
    // The dump prints what the JSON holds: each record with its rectangle and baseline.
    for (int i = 0; i < j.n("records.#"); ++i) {
        const std::string record = format("record %d: ", i) +
                                   j.edges(format("records.%d.rect", i)) +
                                   format(" baseline %d,", j.n(format("records.%d.baseline", i)));
        EXPECT_NE(dump.out.find(record), std::string::npos) << record;
    }
}

TEST_F(Vytext, ImageIsTheBoxWithTheGlyphsInk)
{
    const int boxX = 3, boxY = 5, w = 30, h = 40;
    for (const auto& [scale, invert] : {std::make_pair(1, false), std::make_pair(3, true)}) {
        SCOPED_TRACE(scale);
        const std::string path = scratch(scale == 1 ? "blocks.png" : "big.PNG");
        std::vector<std::string> args{
            "--scale",  std::to_string(scale), "-o", path, "--box", "3,5,30,40", "--align",
            "left,top", "--letter-spacing",    "1"};
        if (invert)
            args.push_back("--invert");
        // Full and left-half blocks: their coverage fills their bitmaps.
        const Json j = layout(args, "\u2588\u258C\u2588");
        EXPECT_EQ(readFile(path).substr(24, 2), std::string("\x08\x00", 2)); // 8-bit grey
        png_image png{};
        png.version = PNG_IMAGE_VERSION;
        ASSERT_TRUE(png_image_begin_read_from_file(&png, path.c_str()));
        png.format = PNG_FORMAT_GRAY;
        std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(png));
        ASSERT_TRUE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr));
        ASSERT_EQ(std::make_pair(int(png.width), int(png.height)),
                  std::make_pair(w * scale, h * scale));
        // Left, top, right and bottom of each glyph's ink in the box.
        std::vector<std::vector<int>> inked;
        for (int k = 0; k < j.n("records.0.glyphs.#"); ++k) {
            const std::string g = format("records.0.glyphs.%d.", k);
            const int x = j.n(g + "pen") + j.n(g + "left") - boxX;
            const int y = j.n("records.0.baseline") - j.n(g + "top") - boxY;
            inked.push_back({x, y, x + j.n(g + "width"), y + j.n(g + "rows")});
        }
        for (int y = 0; y < h * scale; ++y)
            for (int x = 0; x < w * scale; ++x) {
                const int bx = x / scale, by = y / scale;
                const bool ink = std::any_of(inked.begin(), inked.end(), [&](const auto& e) {
                    return bx >= e[0] && bx < e[2] && by >= e[1] && by < e[3];
                });
                ASSERT_EQ(pixels[size_t(y * w * scale + x)], ink != invert ? 0 : 255)
                    << "pixel " << x << "," << y;
            }
    }

    // Glyphs far outside a small box are clipped away; a BMP's rows are padded to 4 bytes.
    const std::string small = scratch("small.bmp");
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
    const std::string png = scratch("specimen.png");
    args.insert(args.end(), {"-o", png});
    const Result r = run(args);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(readFile(png) == readFile(docs + "/specimen.png"))
        << "run ./scripts/demo to draw docs/specimen.png again";
}

TEST_F(Vytext, ErrorsAreOneLineAndAFailure)
{
    const std::string garbage = scratch("garbage.otf");
    std::ofstream(garbage) << "not a font at all";
    // Arguments, and what the message names.
    std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"--bogus", "x"}, "--bogus"},
        {{"--size", "256", "x"}, "--size"},
        {{"--letter-spacing", "1e3", "x"}, "--letter-spacing"},
        {{"--box", "1,2,3", "x"}, "--box"},
        {{"--box", "0,0,0,10", "x"}, "--box"},
        {{"--box", "0,0,10,10,", "x"}, "--box"},
        {{"--align", "middle", "x"}, "--align"},
        {{"-o", "x.bmp", "x"}, "--box"},
        {{}, "TEXT"},
        {{"a", "b"}, "TEXT"},
        {{"--font", "/nonexistent/font.otf", "x"}, "/nonexistent/font.otf"},
        {{"--font", garbage, "x"}, garbage},
        {{std::string(70000, 'a')}, "too long"},
        {{"--box", "0,0,8,8", "-o", "/nonexistent/dir/x.bmp", "x"}, "/nonexistent/dir/x.bmp"},
        {{"--box", "0,0,8,8", "-o", "/nonexistent/dir/x.png", "x"}, "/nonexistent/dir/x.png"},
        {{"--box", "0,0,8,8", "-o", "x.gif", "x"}, ".png"},
        {{"--box", "0,0,8,8", "--scale", "17", "-o", "x.png", "x"}, "--scale"},
        {{"--box", "0,0,1000,8", "--scale", "9", "-o", "x.png", "x"}, "8192"},
        {{"--invert", "x"}, "-o FILE"},
    };
    // Stray, overlong, surrogate, out-of-range and cut-off sequences.
    for (const char* bad : {"ab\xFF", "\x80", "a\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                            "\xF4\x90\x80\x80", "\xE4\xB8"})
        cases.push_back({{bad}, "UTF-8"});
    for (const auto& [given, says] : cases) {
        // A later --font replaces this one.
        std::vector<std::string> args = given;
        args.insert(args.begin(), {"--font", Unifont});
        const Result r = run(args);
        SCOPED_TRACE(says + ": " + r.err);
        EXPECT_GE(r.status, 1);
        EXPECT_LE(r.status, 2);
        EXPECT_EQ(std::make_tuple(r.out, r.err.rfind("vytext: ", 0), r.err.find('\n')),
                  std::make_tuple("", 0u, r.err.size() - 1));
        EXPECT_NE(r.err.find(says), std::string::npos);
    }

    const Result env = run({"x"}, "", "/nonexistent/env.otf");
    EXPECT_EQ(env.status, 1);
    EXPECT_NE(env.err.find("/nonexistent/env.otf (from VY_FONTLIB)"), std::string::npos);
}

} // namespace
