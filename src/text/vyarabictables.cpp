// The Arabic shaping tables, written by hand: the two join sets and the main, extended and
// lam-alef form tables. Every value is a code point; form columns are final, initial, medial,
// isolated (VyArabicForm).
#include "vyshapingprivate.h"

namespace
{

template <size_t N> constexpr bool ascending(const unsigned short (&units)[N])
{
    for (size_t i = 1; i < N; ++i)
        if (units[i - 1] >= units[i])
            return false;
    return true;
}

// The declarations give the counts: a row too many does not compile, one too few is filled
// with zeros, which these checks reject.
template <size_t R, size_t C> constexpr bool filled(const unsigned short (&rows)[R][C])
{
    for (size_t r = 0; r < R; ++r)
        for (size_t c = 0; c < C; ++c)
            if (rows[r][c] == 0)
                return false;
    return true;
}

} // namespace

constexpr unsigned short vyJoinsNextLetters[] = {
    0x0626, // yeh with hamza above
    0x0628, // beh
    0x062A, // teh
    0x062B, // theh
    0x062C, // jeem
    0x062D, // hah
    0x062E, // khah
    0x0633, // seen
    0x0634, // sheen
    0x0635, // sad
    0x0636, // dad
    0x0637, // tah
    0x0638, // zah
    0x0639, // ain
    0x063A, // ghain
    0x0641, // feh
    0x0642, // qaf
    0x0643, // kaf
    0x0644, // lam
    0x0645, // meem
    0x0646, // noon
    0x0647, // heh
    0x064A, // yeh
    0x067E, // peh
    0x0686, // tcheh
    0x0698, // jeh
    0x06A9, // keheh
    0x06AF, // gaf
    0x06CC, // farsi yeh
};
static_assert(ascending(vyJoinsNextLetters), "binary search needs ascending units");

constexpr unsigned short vyJoinsPreviousLetters[] = {
    0x0622, 0x0623, 0x0624, 0x0625, 0x0626, // alef with madda .. yeh with hamza above
    0x0627, 0x0628, 0x0629, 0x062A, 0x062B, // alef, beh, teh marbuta, teh, theh
    0x062C, 0x062D, 0x062E, 0x062F, 0x0630, // jeem, hah, khah, dal, thal
    0x0631, 0x0632, 0x0633, 0x0634, 0x0635, // reh, zain, seen, sheen, sad
    0x0636, 0x0637, 0x0638, 0x0639, 0x063A, // dad, tah, zah, ain, ghain
    0x0641, 0x0642, 0x0643, 0x0644, 0x0645, // feh, qaf, kaf, lam, meem
    0x0646, 0x0647, 0x0648, 0x0649, 0x064A, // noon, heh, waw, alef maksura, yeh
    0x067E,                                 // peh
    0x0686,                                 // tcheh
    0x0698,                                 // jeh
    0x06A9,                                 // keheh
    0x06AF,                                 // gaf
    0x06CC,                                 // farsi yeh
};
static_assert(ascending(vyJoinsPreviousLetters), "binary search needs ascending units");

// Row r is the letter U+0621 + r.
constexpr unsigned short vyArabicMainForms[][4] = {
    // final  initial medial  isolated
    {0xFE80, 0xFE80, 0xFE80, 0xFE80}, // U+0621 hamza
    {0xFE82, 0xFE81, 0xFE82, 0xFE81}, // U+0622 alef with madda above
    {0xFE84, 0xFE83, 0xFE84, 0xFE83}, // U+0623 alef with hamza above
    {0xFE86, 0xFE85, 0xFE86, 0xFE85}, // U+0624 waw with hamza above
    {0xFE88, 0xFE87, 0xFE88, 0xFE87}, // U+0625 alef with hamza below
    {0xFE8A, 0xFE8B, 0xFE8C, 0xFE89}, // U+0626 yeh with hamza above
    {0xFE8E, 0xFE8D, 0xFE8E, 0xFE8D}, // U+0627 alef
    {0xFE90, 0xFE91, 0xFE92, 0xFE8F}, // U+0628 beh
    // Kept: teh marbuta takes its isolated form where an initial or medial one would stand.
    // It never connects forward and the font has no other glyph for that place; the table
    // gives a glyph for every column so that the lookup needs no special case.
    {0xFE94, 0xFE93, 0xFE93, 0xFE93}, // U+0629 teh marbuta
    {0xFE96, 0xFE97, 0xFE98, 0xFE95}, // U+062A teh
    {0xFE9A, 0xFE9B, 0xFE9C, 0xFE99}, // U+062B theh
    {0xFE9E, 0xFE9F, 0xFEA0, 0xFE9D}, // U+062C jeem
    {0xFEA2, 0xFEA3, 0xFEA4, 0xFEA1}, // U+062D hah
    {0xFEA6, 0xFEA7, 0xFEA8, 0xFEA5}, // U+062E khah
    {0xFEAA, 0xFEA9, 0xFEAA, 0xFEA9}, // U+062F dal
    {0xFEAC, 0xFEAB, 0xFEAC, 0xFEAB}, // U+0630 thal
    {0xFEAE, 0xFEAD, 0xFEAE, 0xFEAD}, // U+0631 reh
    {0xFEB0, 0xFEAF, 0xFEB0, 0xFEAF}, // U+0632 zain
    {0xFEB2, 0xFEB3, 0xFEB4, 0xFEB1}, // U+0633 seen
    {0xFEB6, 0xFEB7, 0xFEB8, 0xFEB5}, // U+0634 sheen
    {0xFEBA, 0xFEBB, 0xFEBC, 0xFEB9}, // U+0635 sad
    {0xFEBE, 0xFEBF, 0xFEC0, 0xFEBD}, // U+0636 dad
    {0xFEC2, 0xFEC3, 0xFEC4, 0xFEC1}, // U+0637 tah
    {0xFEC6, 0xFEC7, 0xFEC8, 0xFEC5}, // U+0638 zah
    {0xFECA, 0xFECB, 0xFECC, 0xFEC9}, // U+0639 ain
    {0xFECE, 0xFECF, 0xFED0, 0xFECD}, // U+063A ghain
    // No presentation forms: these keep their own unit in every column.
    {0x063B, 0x063B, 0x063B, 0x063B}, // U+063B keheh with two dots above
    {0x063C, 0x063C, 0x063C, 0x063C}, // U+063C keheh with three dots below
    {0x063D, 0x063D, 0x063D, 0x063D}, // U+063D farsi yeh with inverted v
    {0x063E, 0x063E, 0x063E, 0x063E}, // U+063E farsi yeh with two dots above
    {0x063F, 0x063F, 0x063F, 0x063F}, // U+063F farsi yeh with three dots above
    {0x0640, 0x0640, 0x0640, 0x0640}, // U+0640 tatweel
    {0xFED2, 0xFED3, 0xFED4, 0xFED1}, // U+0641 feh
    {0xFED6, 0xFED7, 0xFED8, 0xFED5}, // U+0642 qaf
    {0xFEDA, 0xFEDB, 0xFEDC, 0xFED9}, // U+0643 kaf
    {0xFEDE, 0xFEDF, 0xFEE0, 0xFEDD}, // U+0644 lam
    {0xFEE2, 0xFEE3, 0xFEE4, 0xFEE1}, // U+0645 meem
    {0xFEE6, 0xFEE7, 0xFEE8, 0xFEE5}, // U+0646 noon
    {0xFEEA, 0xFEEB, 0xFEEC, 0xFEE9}, // U+0647 heh
    {0xFEEE, 0xFEED, 0xFEEE, 0xFEED}, // U+0648 waw
    {0xFEF0, 0xFEEF, 0xFEF0, 0xFEEF}, // U+0649 alef maksura
    {0xFEF2, 0xFEF3, 0xFEF4, 0xFEF1}, // U+064A yeh
};
static_assert(filled(vyArabicMainForms), "one row per letter of the main range");

constexpr unsigned short vyArabicExtendedForms[][5] = {
    // letter final  initial medial  isolated
    {0x067E, 0xFB57, 0xFB58, 0xFB59, 0xFB56}, // peh
    {0x0686, 0xFB7B, 0xFB7C, 0xFB7D, 0xFB7A}, // tcheh
    {0x0698, 0xFB8B, 0xFB8A, 0xFB8B, 0xFB8A}, // jeh
    {0x06A9, 0xFB8F, 0xFB90, 0xFB91, 0xFB8E}, // keheh
    {0x06AF, 0xFB93, 0xFB94, 0xFB95, 0xFB92}, // gaf
    {0x06CC, 0xFBFD, 0xFBFE, 0xFBFF, 0xFBFC}, // farsi yeh
};
static_assert(filled(vyArabicExtendedForms), "six extended letters");

constexpr unsigned short vyLamAlefForms[][3] = {
    // alef  isolated final
    {0x0622, 0xFEF5, 0xFEF6}, // lam with alef with madda above
    {0x0623, 0xFEF7, 0xFEF8}, // lam with alef with hamza above
    {0x0625, 0xFEF9, 0xFEFA}, // lam with alef with hamza below
    {0x0627, 0xFEFB, 0xFEFC}, // lam with alef
};
static_assert(filled(vyLamAlefForms), "four alefs");
