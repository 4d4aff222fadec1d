// Fuzzes measuring, line division and the paint list over synthetic glyphs.
//
// Input: twelve control bytes, then UTF-16 units (two bytes each, little-endian, at most
// 2048). Control: byte 0 flags (bit 0 word wrap, bit 1 bold font, bit 2 set a box), byte 1 the
// alignment flags, bytes 2-9 the box x, y, w, h (signed 16-bit each), byte 10 the letter
// spacing and byte 11 the line spacing (signed 8-bit). A unit below 0x100 picks from a small
// alphabet of the characters the layout treats specially (spaces, newlines, ideographs, Thai,
// Hebrew, Arabic), so that most inputs exercise every path; any other unit is taken as it is.
// Every unit, after the script rules too, gets a glyph whose advance and bitmap width follow
// from the unit itself. Checks:
// - measuring covers every unit once, and the length is -1 plus the cells and their spacings;
// - the four division results stay parallel, and their units add up to the text less one unit
//   per newline;
// - left to right, the lines joined give back the text less its newlines; without wrap they
//   are exactly the newline-separated pieces;
// - the paint list keeps every record's width.
#include "fuzz_check.h"
#include "syntheticglyphs.h"
#include "vyfontmetrics.h"

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace
{

const unsigned short kAlphabet[] = {'a',    'b',    'c',    ' ',    ' ',    '\n',   0x4E2D,
                                    0x6587, 0x30A2, 0xAC00, 0x3042, 0x0E01, 0x0E2E, 0x0E34,
                                    0x0E38, 0x0E47, 0x0E48, 0x0E4C, 0x05D0, 0x05D1, 0x0627,
                                    0x0644, 0x0628, 0x067E, '1',    '\t',   0x00A0};

int signed16(const uint8_t* p)
{
    return int16_t(uint16_t(p[0] | p[1] << 8));
}

void putGlyphs(const VyString& s, const VyFont& font)
{
    VyFontCache* cache = VyFontCache::instance();
    for (int i = 0; i < s.size(); ++i) {
        const unsigned short c = s.at(i);
        if (!cache->fontTable(c, font))
            vyPutGlyph(c, font, (c * 7 + c / 13) % 23, (c * 11 + 3) % 29, c % 17, c % 5);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 12)
        return 0;
    const int flags = data[0];
    const VyFont font(24, flags & 2, false, false, false);
    std::vector<unsigned short> units;
    for (size_t i = 12; i + 1 < size && units.size() < 2048; i += 2) {
        const unsigned short u = uint16_t(data[i] | data[i + 1] << 8);
        units.push_back(u < 0x100 ? kAlphabet[u % (sizeof kAlphabet / sizeof *kAlphabet)] : u);
    }
    VyString text(units.data(), int(units.size()));

    VyFontCache::instance()->clean();
    putGlyphs(text, font);
    {
        VyFontEngine shaper;
        shaper.lanuguageRules(text);
        putGlyphs(shaper.text, font);
    }

    VyFontMetrics m(text, font, int8_t(data[11]), int8_t(data[10]));
    const int n = text.size();
    const int ls = m.letterSpacing;
    m.setWorpWrap(flags & 1);
    m.setAlignment(data[1]);
    if (flags & 4)
        m.setTextMinRect(signed16(data + 2), signed16(data + 4), signed16(data + 6),
                         signed16(data + 8));

    const int length = m.lengthForPixel();
    const VyVector<int> widths = m.characterWidth();
    const VyVector<int> counts = m.charCombinationNum();
    FUZZ_CHECK(widths.size() == counts.size());
    int units_ = 0, total = -1;
    for (int i = 0; i < counts.size(); ++i) {
        units_ += counts.at(i);
        total += ls + widths.at(i);
    }
    FUZZ_CHECK(units_ == n);
    FUZZ_CHECK(n == 0 || total == length);

    const int divided = m.divideText();
    FUZZ_CHECK(divided == (n ? 0 : -1));
    const int lines = m.lines.size();
    FUZZ_CHECK(m.lineRectList.size() == lines && m.lineGlyphs.size() == lines &&
               m.paintList.size() == lines);
    VyString joined, expected;
    int newlines = 0;
    for (int i = 0; i < lines; ++i)
        joined.append(m.lines.at(i));
    for (int i = 0; i < n; ++i) {
        if (text.at(i) == '\n')
            ++newlines;
        else
            expected.insert(expected.size(), text.at(i));
    }
    FUZZ_CHECK(joined.size() == n - newlines);
    if (!m.isRightToLeft()) {
        FUZZ_CHECK(joined == expected);
        if (!(flags & 1)) {
            int line = 0, start = 0;
            for (int i = 0; i <= n; ++i) {
                if (i < n && text.at(i) != '\n')
                    continue;
                if (i < n || start < n) {
                    FUZZ_CHECK(line < lines && m.lines.at(line) == text.mid(start, i - start));
                    ++line;
                }
                start = i + 1;
            }
            FUZZ_CHECK(line == lines);
        }
    }

    std::vector<int> before;
    for (int i = 0; i < lines; ++i)
        before.push_back(m.paintList.at(i).rect.x2 - m.paintList.at(i).rect.x1);
    for (int call = 0; call < 2; ++call) {
        const VyVector<PaintInfo>& records = m.paintInfoList();
        for (int i = 0; i < lines; ++i)
            FUZZ_CHECK(records.at(i).rect.x2 - records.at(i).rect.x1 == before[size_t(i)]);
    }
    m.sizeHint();
    m.subGlyphBitmap();
    return 0;
}
