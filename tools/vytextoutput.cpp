#include "vytextoutput.h"

namespace
{

// A JSON string literal: quotes, backslashes and control characters escaped, the rest as it
// stands (valid UTF-8 already).
std::string quoted(const std::string& s)
{
    std::string q = "\"";
    for (const char c : s) {
        if (c == '"' || c == '\\') {
            q += '\\';
            q += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char esc[8];
            snprintf(esc, sizeof esc, "\\u%04x", c);
            q += esc;
        } else {
            q += c;
        }
    }
    return q + "\"";
}

void printRect(FILE* out, const char* format, const VyRect& r)
{
    fprintf(out, format, r.x1, r.y1, r.x2, r.y2);
}

} // namespace

void printLines(FILE* out, const TextLayout& t)
{
    for (const std::string& line : t.lines)
        fprintf(out, "%s\n", line.c_str());
}

void printDump(FILE* out, const TextLayout& t, int fontSize)
{
    fprintf(out, "text: %d units, %s\n", t.units, t.rtl ? "right-to-left" : "left-to-right");
    fprintf(out,
            "font: size %d, line height %d, ascent %d, descent %d, line spacing %d, letter "
            "spacing %d, pitch %d\n",
            fontSize, t.lineHeight, t.ascent, t.descent, t.lineSpacing, t.letterSpacing, t.pitch);
    printRect(out, "box: %d %d %d %d", t.box);
    fprintf(out, ", wrap %s, alignment 0x%02x\n", t.wrap ? "on" : "off", t.alignment);
    fprintf(out, "size hint: %d %d\n", t.sizeHint.width, t.sizeHint.height);
    fprintf(out, "lines: %zu\n", t.lines.size());
    for (size_t i = 0; i < t.lines.size(); ++i) {
        fprintf(out, "line %zu: ", i);
        printRect(out, "%d %d %d %d ", t.lineRects[i]);
        fprintf(out, "%s\n", quoted(t.lines[i]).c_str());
    }
    fprintf(out, "records: %zu\n", t.records.size());
    for (size_t i = 0; i < t.records.size(); ++i) {
        const PlacedRecord& r = t.records[i];
        fprintf(out, "record %zu: ", i);
        printRect(out, "%d %d %d %d", r.rect);
        fprintf(out, " baseline %d, %zu glyphs from %zu:", r.baseline, r.glyphs.size(), r.own);
        for (const PlacedGlyph& g : r.glyphs)
            fprintf(out, " U+%04X@%lld", g.glyph->unicode, g.pen);
        fputc('\n', out);
    }
}

void printJson(FILE* out, const TextLayout& t, int fontSize)
{
    fprintf(out, "{\"units\": %d, \"rtl\": %s, \"size\": %d, \"line_height\": %d, ", t.units,
            t.rtl ? "true" : "false", fontSize, t.lineHeight);
    fprintf(out,
            "\"ascent\": %d, \"descent\": %d, \"line_spacing\": %d, \"letter_spacing\": %d, "
            "\"pitch\": %d, ",
            t.ascent, t.descent, t.lineSpacing, t.letterSpacing, t.pitch);
    printRect(out, "\"box\": [%d, %d, %d, %d], ", t.box);
    fprintf(out, "\"wrap\": %s, \"alignment\": %d, \"size_hint\": [%d, %d],\n",
            t.wrap ? "true" : "false", t.alignment, t.sizeHint.width, t.sizeHint.height);
    fprintf(out, " \"lines\": [");
    for (size_t i = 0; i < t.lines.size(); ++i) {
        fprintf(out, "%s\n  {\"text\": %s, ", i ? "," : "", quoted(t.lines[i]).c_str());
        printRect(out, "\"rect\": [%d, %d, %d, %d]}", t.lineRects[i]);
    }
    fprintf(out, "],\n \"records\": [");
    for (size_t i = 0; i < t.records.size(); ++i) {
        const PlacedRecord& r = t.records[i];
        fprintf(out, "%s\n  {", i ? "," : "");
        printRect(out, "\"rect\": [%d, %d, %d, %d], ", r.rect);
        fprintf(out, "\"baseline\": %d, \"own\": %zu, \"glyphs\": [", r.baseline, r.own);
        for (size_t k = 0; k < r.glyphs.size(); ++k) {
            const GlyphBitmap* g = r.glyphs[k].glyph;
            fprintf(out,
                    "%s{\"unit\": %u, \"pen\": %lld, \"advance\": %d, \"left\": %d, \"top\": %d, "
                    "\"width\": %u, \"rows\": %u}",
                    k ? ", " : "", unsigned(g->unicode), r.glyphs[k].pen, g->advance, g->left,
                    g->top, unsigned(g->width), unsigned(g->rows));
        }
        fprintf(out, "]}");
    }
    fprintf(out, "]}\n");
}
