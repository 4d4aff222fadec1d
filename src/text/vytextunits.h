// The character classes of measuring and line division: tests on single UTF-16 units, with no
// surrogate handling.
#ifndef VYTEXTUNITS_H
#define VYTEXTUNITS_H

// Katakana, the unified ideographs up to U+9FCF and the Hangul syllables: each unit is a line
// break opportunity of its own. Hiragana and the other ideograph blocks behave like letters.
inline bool vyIsIdeographic(unsigned short c)
{
    // Most text lies below the first block: one comparison decides it.
    return c >= 0x30A0 &&
           ((c <= 0x30FF) || (c >= 0x4E00 && c <= 0x9FCF) || (c >= 0xAC00 && c <= 0xD7AF));
}

inline bool vyIsThai(unsigned short c)
{
    return c >= 0x0E00 && c <= 0x0E7F;
}

// Only U+0020 separates words and only U+000A ends a line; tabs, no-break spaces and carriage
// returns are letters to the layout.
inline bool vyIsSpace(unsigned short c)
{
    return c == 0x0020;
}

inline bool vyIsNewline(unsigned short c)
{
    return c == 0x000A;
}

#endif
