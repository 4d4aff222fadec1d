// The strings benchmarks: the string's conversion, search, copy and append, and numbers to text
// and back, beside references doing the same work.
//
// Conversion: 64 KB of UTF-8 (all ASCII, or a mix of Latin, Arabic and CJK words) to UTF-16
// and the UTF-16 form back, through the library's converters, ICU's u_strFromUTF8 and
// u_strToUTF8, and a plain scalar loop written here. Every side writes into a buffer made
// beforehand, so only the conversion is timed.
// Search: indexOf over a 1 MB haystack (512 Ki units) with a 6- and a 16-unit needle that
// occurs only at the very end, beside std::u16string::find and std::search with
// std::boyer_moore_horspool_searcher (built inside the loop, as indexOf builds its table).
// Copy and append: beside std::u16string.
// Numbers: VyString::number for 1024 ints of mixed length and 1024 doubles ('g', 6 digits)
// beside std::to_chars into a stack buffer, the same followed by a std::u16string of the text
// (a string result, as number gives), and snprintf; VyString::toInt and toDouble over 1024
// prepared strings beside std::from_chars on the same text as bytes, the same after narrowing
// the UTF-16 text into a stack buffer (a reader of UTF-16 text must do that), and
// strtol/strtod.
//
// Each benchmark first checks that it computes what the library computes and fails otherwise.
// After the run a ratio line per pair (bench_ratio.h) gives library time over reference time.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <random>
#include <stdio.h>
#include <stdlib.h>
#include <string>
#include <utility>
#include <vector>

#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include "bench_ratio.h"
#include "vystring.h"

namespace
{

enum class Script { Ascii, Mixed };

constexpr int kConversionBytes = 64 * 1024;
constexpr int kHaystackUnits = 512 * 1024;

int utf8Length(char16_t u)
{
    return u < 0x80 ? 1 : u < 0x800 ? 2 : 3;
}

// One word and its separator. ASCII text: lower-case words with spaces, commas, full stops and
// line breaks. Mixed text: each word is Latin, Arabic or a run of CJK ideographs, always
// followed by a space or punctuation, so a Latin letter never touches another script.
void appendWord(std::u16string& text, std::mt19937& rng, Script script)
{
    const int kind = script == Script::Ascii ? 0 : int(rng() % 3);
    if (kind == 0) {
        const int n = 2 + int(rng() % 8);
        for (int i = 0; i < n; ++i)
            text += char16_t('a' + rng() % 26);
    } else if (kind == 1) {
        const int n = 3 + int(rng() % 6);
        for (int i = 0; i < n; ++i)
            text += char16_t(0x0621 + rng() % 42); // Arabic letters U+0621..U+064A
    } else {
        const int n = 1 + int(rng() % 4);
        for (int i = 0; i < n; ++i)
            text += char16_t(0x4E00 + rng() % 0x51A6); // CJK unified ideographs
    }
    const unsigned r = rng() % 16;
    text += r == 0 ? u", " : r == 1 ? u". " : r == 2 ? u"\n" : u" ";
}

// Text whose UTF-8 form is exactly `bytes` long (padded with spaces).
std::u16string textOfUtf8Bytes(Script script, int bytes)
{
    std::mt19937 rng(script == Script::Ascii ? 1 : 2);
    std::u16string text;
    int length = 0;
    for (;;) {
        std::u16string word;
        appendWord(word, rng, script);
        int n = 0;
        for (char16_t u : word)
            n += utf8Length(u);
        if (length + n > bytes)
            break;
        text += word;
        length += n;
    }
    text.append(size_t(bytes - length), u' ');
    return text;
}

// Text of exactly `units` units.
std::u16string textOfUnits(Script script, int units)
{
    std::mt19937 rng(script == Script::Ascii ? 3 : 4);
    std::u16string text;
    while (int(text.size()) < units)
        appendWord(text, rng, script);
    text.resize(size_t(units));
    return text;
}

// The plain decoder for well-formed text below U+10000: one branch per sequence length.
int scalarUtf8ToUtf16(VyUcs2* dst, const char* src, int len)
{
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src);
    VyUcs2* out = dst;
    int i = 0;
    while (i < len) {
        const unsigned b = s[i];
        if (b < 0x80) {
            *out++ = VyUcs2(b);
            i += 1;
        } else if (b < 0xE0) {
            *out++ = VyUcs2(((b & 0x1F) << 6) | (s[i + 1] & 0x3F));
            i += 2;
        } else {
            *out++ = VyUcs2(((b & 0x0F) << 12) | ((s[i + 1] & 0x3F) << 6) | (s[i + 2] & 0x3F));
            i += 3;
        }
    }
    return int(out - dst);
}

// The plain encoder, unit by unit.
int scalarUtf16ToUtf8(char* dst, const VyUcs2* src, int len)
{
    unsigned char* out = reinterpret_cast<unsigned char*>(dst);
    for (int i = 0; i < len; ++i) {
        const unsigned u = src[i];
        if (u < 0x80) {
            *out++ = static_cast<unsigned char>(u);
        } else if (u < 0x800) {
            *out++ = static_cast<unsigned char>(0xC0 | (u >> 6));
            *out++ = static_cast<unsigned char>(0x80 | (u & 0x3F));
        } else {
            *out++ = static_cast<unsigned char>(0xE0 | (u >> 12));
            *out++ = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
            *out++ = static_cast<unsigned char>(0x80 | (u & 0x3F));
        }
    }
    return int(reinterpret_cast<char*>(out) - dst);
}

// One conversion input in both forms, the UTF-8 one made by the scalar encoder.
struct ConversionText {
    std::vector<VyUcs2> utf16;
    std::string utf8;

    explicit ConversionText(Script script)
    {
        const std::u16string text = textOfUtf8Bytes(script, kConversionBytes);
        utf16.assign(text.begin(), text.end());
        utf8.resize(3 * text.size());
        utf8.resize(size_t(scalarUtf16ToUtf8(&utf8[0], utf16.data(), int(utf16.size()))));
    }
};

const ConversionText& conversionText(Script script)
{
    static const ConversionText ascii(Script::Ascii);
    static const ConversionText mixed(Script::Mixed);
    return script == Script::Ascii ? ascii : mixed;
}

int icuUtf8ToUtf16(VyUcs2* dst, const char* src, int len)
{
    UErrorCode error = U_ZERO_ERROR;
    int32_t written = 0;
    u_strFromUTF8(reinterpret_cast<UChar*>(dst), len, &written, src, len, &error);
    return U_FAILURE(error) ? -1 : written;
}

int icuUtf16ToUtf8(char* dst, const VyUcs2* src, int len)
{
    UErrorCode error = U_ZERO_ERROR;
    int32_t written = 0;
    u_strToUTF8(dst, 3 * len, &written, reinterpret_cast<const UChar*>(src), len, &error);
    return U_FAILURE(error) ? -1 : written;
}

// The converter is a template parameter, so each timed loop calls it directly.
template <int (*Decode)(VyUcs2*, const char*, int)>
void BM_Decode(benchmark::State& state, Script script)
{
    const ConversionText& text = conversionText(script);
    const int len = int(text.utf8.size());
    std::vector<VyUcs2> out(size_t(len) + 1);
    const int n = Decode(out.data(), text.utf8.data(), len);
    if (n != int(text.utf16.size()) ||
        !std::equal(text.utf16.begin(), text.utf16.end(), out.begin())) {
        state.SkipWithError("decoded text differs");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Decode(out.data(), text.utf8.data(), len));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * len);
    state.SetItemsProcessed(int64_t(state.iterations()) * n);
}

template <int (*Encode)(char*, const VyUcs2*, int)>
void BM_Encode(benchmark::State& state, Script script)
{
    const ConversionText& text = conversionText(script);
    const int len = int(text.utf16.size());
    std::string out(3 * size_t(len) + 1, '\0');
    const int n = Encode(&out[0], text.utf16.data(), len);
    if (n != int(text.utf8.size()) || text.utf8.compare(0, size_t(n), out, 0, size_t(n)) != 0) {
        state.SkipWithError("encoded text differs");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Encode(&out[0], text.utf16.data(), len));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * len * int64_t(sizeof(VyUcs2)));
    state.SetItemsProcessed(int64_t(state.iterations()) * len);
}

void BM_VyUtf8ToUtf16(benchmark::State& state, Script script)
{
    BM_Decode<VyString::utf8ToUcs2>(state, script);
}
void BM_IcuUtf8ToUtf16(benchmark::State& state, Script script)
{
    BM_Decode<icuUtf8ToUtf16>(state, script);
}
void BM_ScalarUtf8ToUtf16(benchmark::State& state, Script script)
{
    BM_Decode<scalarUtf8ToUtf16>(state, script);
}
void BM_VyUtf16ToUtf8(benchmark::State& state, Script script)
{
    BM_Encode<VyString::ucs2ToUtf8>(state, script);
}
void BM_IcuUtf16ToUtf8(benchmark::State& state, Script script)
{
    BM_Encode<icuUtf16ToUtf8>(state, script);
}
void BM_ScalarUtf16ToUtf8(benchmark::State& state, Script script)
{
    BM_Encode<scalarUtf16ToUtf8>(state, script);
}

// A haystack whose only occurrence of the needle is at its very end, so every search scans
// all of it. The needles cannot occur in the generated text: the ASCII ones hold digits, the
// mixed ones put Latin letters right against CJK ideographs.
struct SearchCase {
    std::u16string haystack;
    std::u16string needle;
    VyString vyHaystack;
    VyString vyNeedle;
    int expected;

    SearchCase(Script script, const std::u16string& n)
        : haystack(textOfUnits(script, kHaystackUnits)), needle(n)
    {
        haystack.replace(haystack.size() - needle.size(), needle.size(), needle);
        vyHaystack =
            VyString(reinterpret_cast<const VyUcs2*>(haystack.data()), int(haystack.size()));
        vyNeedle = VyString(reinterpret_cast<const VyUcs2*>(needle.data()), int(needle.size()));
        expected = int(haystack.size() - needle.size());
    }
};

enum class Needle { Ascii6, Ascii16, Mixed6, Mixed16 };

const SearchCase& searchCase(Needle which)
{
    static const SearchCase ascii6(Script::Ascii, u"sear42");
    static const SearchCase ascii16(Script::Ascii, u"searching the 42");
    static const SearchCase mixed6(Script::Mixed, u"the\u6570\u636E\u5E93");
    static const SearchCase mixed16(
        Script::Mixed, u"the\u6570\u636E\u5E93\u4E2D\u6587 \u0643\u062A\u0627\u0628 an");
    switch (which) {
    case Needle::Ascii6:
        return ascii6;
    case Needle::Ascii16:
        return ascii16;
    case Needle::Mixed6:
        return mixed6;
    default:
        return mixed16;
    }
}

template <typename Search> void runSearch(benchmark::State& state, Needle which, Search search)
{
    const SearchCase& c = searchCase(which);
    if (c.needle.size() != (which == Needle::Ascii6 || which == Needle::Mixed6 ? 6u : 16u) ||
        c.haystack.find(c.needle) != size_t(c.expected) || search(c) != c.expected) {
        state.SkipWithError("search result differs");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(search(c));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(c.haystack.size()) *
                            int64_t(sizeof(char16_t)));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(c.haystack.size()));
}

void BM_VyIndexOf(benchmark::State& state, Needle which)
{
    runSearch(state, which, [](const SearchCase& c) { return c.vyHaystack.indexOf(c.vyNeedle); });
}

void BM_U16StringFind(benchmark::State& state, Needle which)
{
    runSearch(state, which, [](const SearchCase& c) { return int(c.haystack.find(c.needle)); });
}

void BM_BoyerMooreHorspool(benchmark::State& state, Needle which)
{
    runSearch(state, which, [](const SearchCase& c) {
        const std::boyer_moore_horspool_searcher<std::u16string::const_iterator> searcher(
            c.needle.begin(), c.needle.end());
        const auto it = std::search(c.haystack.begin(), c.haystack.end(), searcher);
        return it == c.haystack.end() ? -1 : int(it - c.haystack.begin());
    });
}

// Copies: sharing (the library's copy) and a private copy made at once (copy, then detach),
// beside a std::u16string copy, which is always a private one.
std::u16string asciiPrefix(int units)
{
    const std::vector<VyUcs2>& text = conversionText(Script::Ascii).utf16;
    return std::u16string(text.begin(), text.begin() + units);
}

void BM_VyCopyShared(benchmark::State& state, int units)
{
    const std::u16string text = asciiPrefix(units);
    const VyString s(reinterpret_cast<const VyUcs2*>(text.data()), int(text.size()));
    for (auto _ : state) {
        VyString copy(s);
        benchmark::DoNotOptimize(copy.d);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
    state.SetBytesProcessed(int64_t(state.iterations()) * units * 2);
}

void BM_VyCopyDetached(benchmark::State& state, int units)
{
    const std::u16string text = asciiPrefix(units);
    const VyString s(reinterpret_cast<const VyUcs2*>(text.data()), int(text.size()));
    for (auto _ : state) {
        VyString copy(s);
        copy.detach();
        benchmark::DoNotOptimize(copy.d->data);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
    state.SetBytesProcessed(int64_t(state.iterations()) * units * 2);
}

void BM_U16StringCopy(benchmark::State& state, int units)
{
    const std::u16string s = asciiPrefix(units);
    for (auto _ : state) {
        std::u16string copy(s);
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
    state.SetBytesProcessed(int64_t(state.iterations()) * units * 2);
}

// Appending: 4096 pieces of 16 units to an empty string (64 Ki units in the end).
constexpr int kPieces = 4096;
constexpr int kPieceUnits = 16;

void BM_VyAppend(benchmark::State& state)
{
    const std::u16string text = asciiPrefix(kPieceUnits);
    const VyString piece(reinterpret_cast<const VyUcs2*>(text.data()), int(text.size()));
    for (auto _ : state) {
        VyString s;
        for (int i = 0; i < kPieces; ++i)
            s.append(piece);
        benchmark::DoNotOptimize(s.d->data);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPieces);
    state.SetBytesProcessed(int64_t(state.iterations()) * kPieces * kPieceUnits * 2);
}

void BM_U16StringAppend(benchmark::State& state)
{
    const std::u16string piece = asciiPrefix(kPieceUnits);
    for (auto _ : state) {
        std::u16string s;
        for (int i = 0; i < kPieces; ++i)
            s += piece;
        benchmark::DoNotOptimize(s.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kPieces);
    state.SetBytesProcessed(int64_t(state.iterations()) * kPieces * kPieceUnits * 2);
}

// --- numbers ---

constexpr int kNumberCount = 1024;

const std::vector<int>& ints()
{
    static const std::vector<int> values = [] {
        std::mt19937 rng(1);
        std::vector<int> v;
        for (int i = 0; i < kNumberCount; ++i)
            v.push_back(int(rng()) >> (rng() % 31)); // every length from 1 to 10 digits
        return v;
    }();
    return values;
}

const std::vector<double>& doubles()
{
    static const std::vector<double> values = [] {
        std::mt19937_64 rng(2);
        std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
        std::vector<double> v;
        for (int i = 0; i < kNumberCount; ++i)
            v.push_back(std::ldexp(mantissa(rng), int(rng() % 80) - 40));
        return v;
    }();
    return values;
}

std::string toUtf8(const VyString& s)
{
    return std::string(s.toUtf8().constData());
}

template <typename T> std::vector<std::string> texts(const std::vector<T>& values)
{
    std::vector<std::string> out;
    for (T v : values)
        out.push_back(toUtf8(VyString::number(v)));
    return out;
}

std::vector<VyString> vyTexts(const std::vector<std::string>& texts)
{
    std::vector<VyString> out;
    for (const std::string& t : texts)
        out.push_back(VyString(t.c_str()));
    return out;
}

// Writing.

void numberIntVy(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            VyString s = VyString::number(v);
            benchmark::DoNotOptimize(s.d);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberIntToChars(benchmark::State& state)
{
    for (int v : ints()) {
        char b[16];
        if (std::string(b, std::to_chars(b, b + sizeof b, v).ptr) != toUtf8(VyString::number(v)))
            state.SkipWithError("to_chars disagrees");
    }
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            benchmark::DoNotOptimize(std::to_chars(b, b + sizeof b, v).ptr);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberIntToCharsString(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            char* end = std::to_chars(b, b + sizeof b, v).ptr;
            std::u16string s(b, end);
            benchmark::DoNotOptimize(s.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberIntSnprintf(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            benchmark::DoNotOptimize(snprintf(b, sizeof b, "%d", v));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberDoubleVy(benchmark::State& state)
{
    for (auto _ : state) {
        for (double v : doubles()) {
            VyString s = VyString::number(v);
            benchmark::DoNotOptimize(s.d);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberDoubleToChars(benchmark::State& state)
{
    for (double v : doubles()) {
        char b[32];
        char* end = std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr;
        if (std::string(b, end) != toUtf8(VyString::number(v)))
            state.SkipWithError("to_chars disagrees");
    }
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            benchmark::DoNotOptimize(
                std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberDoubleToCharsString(benchmark::State& state)
{
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            char* end = std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr;
            std::u16string s(b, end);
            benchmark::DoNotOptimize(s.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void numberDoubleSnprintf(benchmark::State& state)
{
    for (double v : doubles()) {
        char b[32];
        snprintf(b, sizeof b, "%g", v);
        if (b != toUtf8(VyString::number(v)))
            state.SkipWithError("snprintf disagrees");
    }
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            benchmark::DoNotOptimize(snprintf(b, sizeof b, "%g", v));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

// Reading.

void toIntVy(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(texts(ints()));
    for (size_t i = 0; i < in.size(); ++i) {
        bool ok;
        if (in[i].toInt(&ok) != ints()[i] || !ok)
            state.SkipWithError("toInt disagrees");
    }
    for (auto _ : state) {
        for (const VyString& s : in)
            benchmark::DoNotOptimize(s.toInt());
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void toIntFromChars(benchmark::State& state)
{
    const std::vector<std::string> in = texts(ints());
    for (auto _ : state) {
        for (const std::string& s : in) {
            int v;
            std::from_chars(s.data(), s.data() + s.size(), v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

// Narrows UTF-16 text into a stack buffer (failing on non-ASCII units) and parses that.
template <typename T> bool fromUtf16(const VyString& s, T& v)
{
    char b[64];
    const int n = s.size();
    if (n > int(sizeof b))
        return false;
    const VyUcs2* u = s.unicode();
    for (int i = 0; i < n; ++i) {
        if (u[i] >= 0x80)
            return false;
        b[i] = char(u[i]);
    }
    return std::from_chars(b, b + n, v).ec == std::errc();
}

void toIntFromCharsUtf16(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(texts(ints()));
    for (auto _ : state) {
        for (const VyString& s : in) {
            int v = 0;
            fromUtf16(s, v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void toIntStrtol(benchmark::State& state)
{
    const std::vector<std::string> in = texts(ints());
    for (auto _ : state) {
        for (const std::string& s : in)
            benchmark::DoNotOptimize(strtol(s.c_str(), nullptr, 10));
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

// Shortest round-trip text, so every double reads back exactly.
std::vector<std::string> doubleTexts()
{
    std::vector<std::string> out;
    for (double v : doubles())
        out.push_back(toUtf8(VyString::number(v, 'g', 17)));
    return out;
}

void toDoubleVy(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(doubleTexts());
    for (size_t i = 0; i < in.size(); ++i) {
        bool ok;
        if (in[i].toDouble(&ok) != doubles()[i] || !ok)
            state.SkipWithError("toDouble disagrees");
    }
    for (auto _ : state) {
        for (const VyString& s : in)
            benchmark::DoNotOptimize(s.toDouble());
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void toDoubleFromChars(benchmark::State& state)
{
    const std::vector<std::string> in = doubleTexts();
    for (auto _ : state) {
        for (const std::string& s : in) {
            double v;
            std::from_chars(s.data(), s.data() + s.size(), v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void toDoubleFromCharsUtf16(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(doubleTexts());
    for (auto _ : state) {
        for (const VyString& s : in) {
            double v = 0;
            fromUtf16(s, v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

void toDoubleStrtod(benchmark::State& state)
{
    const std::vector<std::string> in = doubleTexts();
    for (size_t i = 0; i < in.size(); ++i) {
        if (strtod(in[i].c_str(), nullptr) != doubles()[i])
            state.SkipWithError("strtod disagrees");
    }
    for (auto _ : state) {
        for (const std::string& s : in)
            benchmark::DoNotOptimize(strtod(s.c_str(), nullptr));
    }
    state.SetItemsProcessed(state.iterations() * kNumberCount);
}

// The string benchmarks are named strings/<operation>/<input>/<implementation> and the number
// ones numbers/<operation>/<implementation>, so a filter on "strings" or "numbers" selects
// either half.
void registerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    for (Script script : {Script::Ascii, Script::Mixed}) {
        const std::string input = script == Script::Ascii ? "ascii" : "mixed";
        const std::string decode = "strings/utf8_to_utf16/" + input;
        RegisterBenchmark((decode + "/vy").c_str(), BM_VyUtf8ToUtf16, script);
        RegisterBenchmark((decode + "/icu").c_str(), BM_IcuUtf8ToUtf16, script);
        RegisterBenchmark((decode + "/scalar").c_str(), BM_ScalarUtf8ToUtf16, script);
        const std::string encode = "strings/utf16_to_utf8/" + input;
        RegisterBenchmark((encode + "/vy").c_str(), BM_VyUtf16ToUtf8, script);
        RegisterBenchmark((encode + "/icu").c_str(), BM_IcuUtf16ToUtf8, script);
        RegisterBenchmark((encode + "/scalar").c_str(), BM_ScalarUtf16ToUtf8, script);
    }
    const std::pair<Needle, const char*> needles[] = {{Needle::Ascii6, "ascii6"},
                                                      {Needle::Ascii16, "ascii16"},
                                                      {Needle::Mixed6, "mixed6"},
                                                      {Needle::Mixed16, "mixed16"}};
    for (const auto& needle : needles) {
        const std::string search = std::string("strings/index_of/") + needle.second;
        RegisterBenchmark((search + "/vy").c_str(), BM_VyIndexOf, needle.first);
        RegisterBenchmark((search + "/u16string_find").c_str(), BM_U16StringFind, needle.first);
        RegisterBenchmark((search + "/horspool").c_str(), BM_BoyerMooreHorspool, needle.first);
    }
    for (int units : {32, 4096}) {
        const std::string n = std::to_string(units);
        RegisterBenchmark(("strings/copy_shared/" + n + "/vy").c_str(), BM_VyCopyShared, units);
        RegisterBenchmark(("strings/copy_detached/" + n + "/vy").c_str(), BM_VyCopyDetached, units);
        RegisterBenchmark(("strings/copy/" + n + "/u16string").c_str(), BM_U16StringCopy, units);
    }
    RegisterBenchmark("strings/append/vy", BM_VyAppend);
    RegisterBenchmark("strings/append/u16string", BM_U16StringAppend);
    RegisterBenchmark("numbers/number_int/vy", numberIntVy);
    RegisterBenchmark("numbers/number_int/to_chars", numberIntToChars);
    RegisterBenchmark("numbers/number_int/to_chars_u16string", numberIntToCharsString);
    RegisterBenchmark("numbers/number_int/snprintf", numberIntSnprintf);
    RegisterBenchmark("numbers/number_double/vy", numberDoubleVy);
    RegisterBenchmark("numbers/number_double/to_chars", numberDoubleToChars);
    RegisterBenchmark("numbers/number_double/to_chars_u16string", numberDoubleToCharsString);
    RegisterBenchmark("numbers/number_double/snprintf", numberDoubleSnprintf);
    RegisterBenchmark("numbers/to_int/vy", toIntVy);
    RegisterBenchmark("numbers/to_int/from_chars", toIntFromChars);
    RegisterBenchmark("numbers/to_int/from_chars_utf16", toIntFromCharsUtf16);
    RegisterBenchmark("numbers/to_int/strtol", toIntStrtol);
    RegisterBenchmark("numbers/to_double/vy", toDoubleVy);
    RegisterBenchmark("numbers/to_double/from_chars", toDoubleFromChars);
    RegisterBenchmark("numbers/to_double/from_chars_utf16", toDoubleFromCharsUtf16);
    RegisterBenchmark("numbers/to_double/strtod", toDoubleStrtod);
}

constexpr double kConversionGoal = 1.0;
constexpr double kSearchGoal = 1.0;
constexpr double kCopyGoal = 1.5;

const vybench::RatioPair kPairs[] = {
    {"utf8_to_utf16_ascii_vs_icu", "strings/utf8_to_utf16/ascii/vy",
     "strings/utf8_to_utf16/ascii/icu", kConversionGoal},
    {"utf8_to_utf16_mixed_vs_icu", "strings/utf8_to_utf16/mixed/vy",
     "strings/utf8_to_utf16/mixed/icu", kConversionGoal},
    {"utf8_to_utf16_ascii_vs_scalar", "strings/utf8_to_utf16/ascii/vy",
     "strings/utf8_to_utf16/ascii/scalar", kConversionGoal},
    {"utf8_to_utf16_mixed_vs_scalar", "strings/utf8_to_utf16/mixed/vy",
     "strings/utf8_to_utf16/mixed/scalar", kConversionGoal},
    {"utf16_to_utf8_ascii_vs_icu", "strings/utf16_to_utf8/ascii/vy",
     "strings/utf16_to_utf8/ascii/icu", kConversionGoal},
    {"utf16_to_utf8_mixed_vs_icu", "strings/utf16_to_utf8/mixed/vy",
     "strings/utf16_to_utf8/mixed/icu", kConversionGoal},
    {"utf16_to_utf8_ascii_vs_scalar", "strings/utf16_to_utf8/ascii/vy",
     "strings/utf16_to_utf8/ascii/scalar", kConversionGoal},
    {"utf16_to_utf8_mixed_vs_scalar", "strings/utf16_to_utf8/mixed/vy",
     "strings/utf16_to_utf8/mixed/scalar", kConversionGoal},
    {"index_of_ascii6_vs_u16string_find", "strings/index_of/ascii6/vy",
     "strings/index_of/ascii6/u16string_find", kSearchGoal},
    {"index_of_ascii6_vs_horspool", "strings/index_of/ascii6/vy",
     "strings/index_of/ascii6/horspool", kSearchGoal},
    {"index_of_ascii16_vs_u16string_find", "strings/index_of/ascii16/vy",
     "strings/index_of/ascii16/u16string_find", kSearchGoal},
    {"index_of_ascii16_vs_horspool", "strings/index_of/ascii16/vy",
     "strings/index_of/ascii16/horspool", kSearchGoal},
    {"index_of_mixed6_vs_u16string_find", "strings/index_of/mixed6/vy",
     "strings/index_of/mixed6/u16string_find", kSearchGoal},
    {"index_of_mixed6_vs_horspool", "strings/index_of/mixed6/vy",
     "strings/index_of/mixed6/horspool", kSearchGoal},
    {"index_of_mixed16_vs_u16string_find", "strings/index_of/mixed16/vy",
     "strings/index_of/mixed16/u16string_find", kSearchGoal},
    {"index_of_mixed16_vs_horspool", "strings/index_of/mixed16/vy",
     "strings/index_of/mixed16/horspool", kSearchGoal},
    {"copy_shared_32_vs_u16string", "strings/copy_shared/32/vy", "strings/copy/32/u16string",
     kCopyGoal},
    {"copy_detached_32_vs_u16string", "strings/copy_detached/32/vy", "strings/copy/32/u16string",
     kCopyGoal},
    {"copy_shared_4096_vs_u16string", "strings/copy_shared/4096/vy", "strings/copy/4096/u16string",
     kCopyGoal},
    {"copy_detached_4096_vs_u16string", "strings/copy_detached/4096/vy",
     "strings/copy/4096/u16string", kCopyGoal},
    {"append_vs_u16string", "strings/append/vy", "strings/append/u16string", kCopyGoal},
    // The goal: within 1.5 times std::to_chars / std::from_chars. The C library's functions are
    // reported against 1.0.
    {"number_int_vs_to_chars", "numbers/number_int/vy", "numbers/number_int/to_chars", 1.5},
    {"number_int_vs_to_chars_u16string", "numbers/number_int/vy",
     "numbers/number_int/to_chars_u16string", 1.5},
    {"number_int_vs_snprintf", "numbers/number_int/vy", "numbers/number_int/snprintf", 1.0},
    {"number_double_vs_to_chars", "numbers/number_double/vy", "numbers/number_double/to_chars",
     1.5},
    {"number_double_vs_to_chars_u16string", "numbers/number_double/vy",
     "numbers/number_double/to_chars_u16string", 1.5},
    {"number_double_vs_snprintf", "numbers/number_double/vy", "numbers/number_double/snprintf",
     1.0},
    {"to_int_vs_from_chars", "numbers/to_int/vy", "numbers/to_int/from_chars", 1.5},
    {"to_int_vs_from_chars_utf16", "numbers/to_int/vy", "numbers/to_int/from_chars_utf16", 1.5},
    {"to_int_vs_strtol", "numbers/to_int/vy", "numbers/to_int/strtol", 1.0},
    {"to_double_vs_from_chars", "numbers/to_double/vy", "numbers/to_double/from_chars", 1.5},
    {"to_double_vs_from_chars_utf16", "numbers/to_double/vy", "numbers/to_double/from_chars_utf16",
     1.5},
    {"to_double_vs_strtod", "numbers/to_double/vy", "numbers/to_double/strtod", 1.0},
};

} // namespace

int main(int argc, char** argv)
{
    registerBenchmarks();
    return vybench::runWithRatios(argc, argv, kPairs);
}
