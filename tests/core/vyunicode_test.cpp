#include "vyunicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

int category(unsigned short c)
{
    return VyUnicodeTables::properties(c)->category;
}

TEST(VyUnicode, IsSpaceCoversControlsTabToCarriageReturnAndSeparators)
{
    for (unsigned short c : {0x0009, 0x000A, 0x000B, 0x000C, 0x000D, 0x0020, 0x00A0, 0x1680, 0x2000,
                             0x200A, 0x2028, 0x2029, 0x202F, 0x3000})
        EXPECT_TRUE(VyUnicode::isSpace(c)) << std::hex << c;
    for (unsigned short c : {0x0000, 0x0008, 0x000E, 0x001F, 0x0041, 0x0061, 0x00DF, 0x200B, 0x4E00,
                             0xD800, 0xFEFF, 0xFFFF})
        EXPECT_FALSE(VyUnicode::isSpace(c)) << std::hex << c;
}

// Unicode counts U+0085 (NEXT LINE) as white space; here it is only a control.
TEST(VyUnicode, NextLineIsNotSpace_Kept)
{
    EXPECT_EQ(category(0x0085), VyUnicodeTables::Cc);
    EXPECT_FALSE(VyUnicode::isSpace(0x0085));
}

TEST(VyUnicode, SimpleCaseMappings)
{
    EXPECT_EQ(VyUnicode::toUpper(0x0061), 0x0041);
    EXPECT_EQ(VyUnicode::toLower(0x0041), 0x0061);
    EXPECT_EQ(VyUnicode::toLower(0x03A3), 0x03C3);
    EXPECT_EQ(VyUnicode::toUpper(0x03C2), 0x03A3);
    EXPECT_EQ(VyUnicode::toUpper(0x0430), 0x0410);
    EXPECT_EQ(VyUnicode::toUpper(0x00FF), 0x0178); // a jump out of Latin-1
    EXPECT_EQ(VyUnicode::toLower(0x1E9E), 0x00DF); // capital sharp s lowers to one unit
    // Title-case letters: the upper and lower mappings leave the title case.
    EXPECT_EQ(VyUnicode::toUpper(0x01C5), 0x01C4);
    EXPECT_EQ(VyUnicode::toLower(0x01C5), 0x01C6);
    // Characters without case, surrogates, ideographs and noncharacters stay as they are.
    for (unsigned short c :
         {0x0030, 0x0020, 0x4E00, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF}) {
        EXPECT_EQ(VyUnicode::toUpper(c), c) << std::hex << c;
        EXPECT_EQ(VyUnicode::toLower(c), c) << std::hex << c;
    }
}

TEST(VyUnicode, MultiUnitMappingsLeaveTheUnitAlone)
{
    // ß upper-cases to "SS" and İ lower-cases to "i̇": one unit cannot hold either.
    EXPECT_EQ(VyUnicode::toUpper(0x00DF), 0x00DF);
    EXPECT_EQ(VyUnicode::toLower(0x0130), 0x0130);
    EXPECT_TRUE(VyUnicodeTables::properties(0x00DF)->flags & VyUnicodeTables::UpperCaseSpecial);
    EXPECT_TRUE(VyUnicodeTables::properties(0x0130)->flags & VyUnicodeTables::LowerCaseSpecial);
    // Each flag guards only its own direction; the other mapping is the simple one (here the
    // unit itself in every case).
    EXPECT_EQ(VyUnicode::toLower(0x00DF), 0x00DF);
    EXPECT_EQ(VyUnicode::toUpper(0x0130), 0x0130);
    EXPECT_EQ(VyUnicode::toUpper(0xFB01), 0xFB01);
    // ᾈ lowers to the single unit ᾀ but upper-cases to "ἈΙ".
    EXPECT_EQ(VyUnicode::toLower(0x1F88), 0x1F80);
    EXPECT_EQ(VyUnicode::toUpper(0x1F88), 0x1F88);
}

TEST(VyUnicode, LanguageAndContextRulesDoNotApply)
{
    // Turkish dotted and dotless i, Lithuanian dot above and final sigma are conditional.
    EXPECT_EQ(VyUnicode::toLower(0x0049), 0x0069);
    EXPECT_EQ(VyUnicode::toUpper(0x0069), 0x0049);
    EXPECT_EQ(VyUnicode::toLower(0x00CC), 0x00EC);
    EXPECT_EQ(VyUnicode::toLower(0x03A3), 0x03C3);
    EXPECT_EQ(VyUnicodeTables::properties(0x0049)->flags, 0);
    EXPECT_EQ(VyUnicodeTables::properties(0x03A3)->flags, 0);
}

// Some mappings jump further than a signed 16-bit difference reaches; the stored difference
// wraps, and the 16-bit results must still be right in both directions.
TEST(VyUnicode, MappingsBeyondSixteenBitDifferences)
{
    EXPECT_EQ(VyUnicode::toUpper(0x0265), 0xA78D);
    EXPECT_EQ(VyUnicode::toLower(0xA78D), 0x0265);
    EXPECT_EQ(VyUnicode::toUpper(0x026A), 0xA7AE);
    EXPECT_EQ(VyUnicode::toLower(0xA7AE), 0x026A);
    EXPECT_EQ(VyUnicode::toLower(0x13A0), 0xAB70); // Cherokee
    EXPECT_EQ(VyUnicode::toUpper(0xAB70), 0x13A0);
    EXPECT_EQ(VyUnicode::foldCase(0xA78D), 0x0265);
    EXPECT_EQ(VyUnicode::foldCase(0x0265), 0x0265);
    // Cherokee folds to the upper-case letters.
    EXPECT_EQ(VyUnicode::foldCase(0xAB70), 0x13A0);
    EXPECT_EQ(VyUnicode::foldCase(0x13A0), 0x13A0);
}

TEST(VyUnicode, FoldCaseAddsTheFoldingDifference)
{
    EXPECT_EQ(VyUnicode::foldCase(0x0041) - 0x0041, 32);
    EXPECT_EQ(VyUnicode::foldCase(0x03A3) - 0x03A3, 32);
    EXPECT_EQ(VyUnicode::foldCase(0x03C2) - 0x03C2, 1);
    EXPECT_EQ(VyUnicode::foldCase(0x01C5) - 0x01C5, 1);
    EXPECT_EQ(VyUnicodeTables::properties(0x0041)->caseFoldDiff, 32);
    EXPECT_EQ(VyUnicodeTables::properties(0x01C5)->caseFoldDiff, 1);
    // Lower-case letters fold to themselves; upper and lower forms meet.
    EXPECT_EQ(VyUnicodeTables::properties(0x0061)->caseFoldDiff, 0);
    EXPECT_EQ(VyUnicode::foldCase(0x03C3), 0x03C3);
    EXPECT_EQ(VyUnicode::foldCase(0x03A3), VyUnicode::foldCase(0x03C2));
    EXPECT_EQ(VyUnicode::foldCase(0x0410), VyUnicode::foldCase(0x0430));
    // Full foldings are not used: ß and İ fold to themselves, no flag is consulted.
    EXPECT_EQ(VyUnicode::foldCase(0x00DF), 0x00DF);
    EXPECT_EQ(VyUnicode::foldCase(0x0130), 0x0130);
    // The capital sharp s has a simple folding to ß.
    EXPECT_EQ(VyUnicode::foldCase(0x1E9E), 0x00DF);
    EXPECT_EQ(VyUnicode::foldCase(0xFFFF), 0xFFFF);
}

TEST(VyUnicode, RecordDifferencesForTheDocumentedLetters)
{
    const VyUnicodeTables::Properties* upperA = VyUnicodeTables::properties(0x0041);
    const VyUnicodeTables::Properties* lowerA = VyUnicodeTables::properties(0x0061);
    EXPECT_EQ(upperA->lowerCaseDiff, 32);
    EXPECT_EQ(lowerA->upperCaseDiff, -32);
    EXPECT_EQ(lowerA->titleCaseDiff, -32);
    EXPECT_EQ(VyUnicodeTables::properties(0x01C5)->titleCaseDiff, 0);
    EXPECT_EQ(VyUnicodeTables::properties(0x01C4)->titleCaseDiff, 1);
    EXPECT_EQ(VyUnicodeTables::properties(0x01C6)->titleCaseDiff, -1);
}

TEST(VyUnicode, DigitValues)
{
    for (int d = 0; d <= 9; ++d) {
        EXPECT_EQ(VyUnicode::digitValue(static_cast<unsigned short>(0x0030 + d)), d);
        EXPECT_EQ(VyUnicode::digitValue(static_cast<unsigned short>(0x0660 + d)),
                  d); // Arabic-Indic
        EXPECT_EQ(VyUnicode::digitValue(static_cast<unsigned short>(0x06F0 + d)), d); // Persian
        EXPECT_EQ(VyUnicode::digitValue(static_cast<unsigned short>(0x0E50 + d)), d); // Thai
        EXPECT_EQ(VyUnicode::digitValue(static_cast<unsigned short>(0xFF10 + d)), d); // full width
    }
    // Letters, superscripts, Roman numerals and fractions are not decimal digits.
    for (unsigned short c :
         {0x0041, 0x0061, 0x002F, 0x003A, 0x00B2, 0x00BD, 0x2167, 0x4E00, 0xFFFF})
        EXPECT_EQ(VyUnicode::digitValue(c), -1) << std::hex << c;
}

TEST(VyUnicodeTables, CategoryCodes)
{
    EXPECT_EQ(category(0x0030), 4);
    EXPECT_EQ(category(0x0020), 7);
    EXPECT_EQ(category(0x00A0), 7);
    EXPECT_EQ(category(0x3000), 7);
    EXPECT_EQ(category(0x2028), 8);
    EXPECT_EQ(category(0x2029), 9);
    EXPECT_EQ(category(0x0009), 10);
    EXPECT_EQ(category(0x0085), 10);
    EXPECT_EQ(category(0xD800), 12);
    EXPECT_EQ(category(0xDBFF), 12);
    EXPECT_EQ(category(0xDC00), 12);
    EXPECT_EQ(category(0xDFFF), 12);
    EXPECT_EQ(category(0xFFFF), 14);
    EXPECT_EQ(category(0x0378), 14); // a gap in the Greek block
    EXPECT_EQ(category(0x0041), 15);
    EXPECT_EQ(category(0x0061), 16);
    EXPECT_EQ(category(0x01C5), 17);
    EXPECT_EQ(category(0x4E00), 19);
    EXPECT_EQ(category(0x9FFF), 19); // the last ideograph of its range
    EXPECT_EQ(category(0xAC00), 19); // first and last Hangul syllable
    EXPECT_EQ(category(0xD7A3), 19);
    EXPECT_EQ(category(0xE000), 13);
    EXPECT_EQ(category(0x0300), 1);
}

TEST(VyUnicodeTables, RecordLayoutByBytePosition)
{
    // Readers that go by byte position see the same values as the named fields.
    unsigned char bytes[20];
    std::memcpy(bytes, VyUnicodeTables::properties(0x0041), sizeof bytes);
    short word;
    EXPECT_EQ(bytes[0], 15);
    EXPECT_EQ(bytes[4] & 0xFC, 0xFC); // −1 in bits 2..7
    std::memcpy(&word, bytes + 8, 2);
    EXPECT_EQ(word, 32);
    std::memcpy(&word, bytes + 14, 2);
    EXPECT_EQ(word, 32);
    std::memcpy(bytes, VyUnicodeTables::properties(0x0037), sizeof bytes);
    EXPECT_EQ(bytes[4] >> 2, 7);
    std::memcpy(bytes, VyUnicodeTables::properties(0x00DF), sizeof bytes);
    EXPECT_EQ(bytes[5], 0x20);
    std::memcpy(&word, bytes + 14, 2);
    EXPECT_EQ(word, 0);
}

TEST(VyUnicodeTables, IndexAndRecordsAreWellFormed)
{
    const int size = VyUnicodeTables::propertyIndexSize;
    const int records = VyUnicodeTables::propertyRecordCount;
    ASSERT_GT(size, 2048);
    ASSERT_GT(records, 0);
    std::vector<bool> used(records, false);
    for (int block = 0; block < 2048; ++block) {
        const int row = VyUnicodeTables::propertyIndex[block];
        ASSERT_GE(row, 2048) << "block " << block;
        ASSERT_LE(row + 32, size) << "block " << block;
        for (int i = 0; i < 32; ++i) {
            const int record = VyUnicodeTables::propertyIndex[row + i];
            ASSERT_LT(record, records) << "block " << block << " entry " << i;
            used[record] = true;
        }
    }
    for (int r = 0; r < records; ++r) {
        EXPECT_TRUE(used[r]) << "record " << r << " is never reached";
        const VyUnicodeTables::Properties& p = VyUnicodeTables::propertyRecords[r];
        // One record per distinct combination.
        for (int s = r + 1; s < records; ++s)
            EXPECT_NE(std::memcmp(&p, &VyUnicodeTables::propertyRecords[s], sizeof p), 0)
                << "records " << r << " and " << s << " are the same";
        // Bytes the library does not read stay 0.
        EXPECT_EQ(p.unused1[0] | p.unused1[1] | p.unused1[2] | p.unused6[0] | p.unused6[1] |
                      p.unused16[0] | p.unused16[1],
                  0)
            << "record " << r;
        EXPECT_EQ(p.digitField & 0x03, 0) << "record " << r;
        EXPECT_EQ(
            p.flags & ~(VyUnicodeTables::LowerCaseSpecial | VyUnicodeTables::UpperCaseSpecial), 0)
            << "record " << r;
        EXPECT_GE(p.category, 1) << "record " << r;
        EXPECT_LE(p.category, 30) << "record " << r;
    }
}

// ---------------------------------------------------------------------------------------------
// The whole plane against the character database. This reader is deliberately separate from
// the generator's: it takes the files apart its own way, so a slip in one is caught by the
// other.

const char* const DataFolder = "/usr/share/unicode";

struct Expectation {
    std::string category = "Cn";
    int digit = -1;
    unsigned upper = 0, lower = 0, title = 0, fold = 0; // mapped code points
    bool lowerSpecial = false, upperSpecial = false;
};

std::vector<std::string> fieldsOf(const std::string& line)
{
    std::vector<std::string> fields;
    std::stringstream in(line);
    std::string field;
    while (std::getline(in, field, ';')) {
        const auto first = field.find_first_not_of(' ');
        const auto last = field.find_last_not_of(' ');
        fields.push_back(first == std::string::npos ? "" : field.substr(first, last - first + 1));
    }
    return fields;
}

unsigned hexValue(const std::string& s)
{
    return static_cast<unsigned>(std::stoul(s, nullptr, 16));
}

int wordCount(const std::string& s)
{
    std::istringstream in(s);
    std::string word;
    int n = 0;
    while (in >> word)
        n += hexValue(word) > 0xFFFF ? 2 : 1;
    return n;
}

bool loadDatabase(std::vector<Expectation>& plane)
{
    std::ifstream unicodeData(std::string(DataFolder) + "/UnicodeData.txt");
    std::ifstream specialCasing(std::string(DataFolder) + "/SpecialCasing.txt");
    std::ifstream caseFolding(std::string(DataFolder) + "/CaseFolding.txt");
    if (!unicodeData || !specialCasing || !caseFolding)
        return false;

    plane.assign(0x10000, Expectation());
    for (unsigned c = 0; c < 0x10000; ++c)
        plane[c].upper = plane[c].lower = plane[c].title = plane[c].fold = c;

    std::string line;
    unsigned rangeStart = 0x110000;
    while (std::getline(unicodeData, line)) {
        std::vector<std::string> f = fieldsOf(line);
        f.resize(15);
        const unsigned c = hexValue(f[0]);
        if (f[1].find(", First>") != std::string::npos) {
            rangeStart = c;
            continue;
        }
        const bool rangeEnd = f[1].find(", Last>") != std::string::npos;
        const unsigned from = rangeEnd ? rangeStart : c;
        for (unsigned cp = from; cp <= c && cp < 0x10000; ++cp) {
            Expectation& e = plane[cp];
            e.category = f[2];
            e.digit = f[6].empty() ? -1 : std::stoi(f[6]);
            if (!f[12].empty())
                e.upper = hexValue(f[12]);
            if (!f[13].empty())
                e.lower = hexValue(f[13]);
            e.title = f[14].empty() ? e.upper : hexValue(f[14]);
        }
    }

    while (std::getline(specialCasing, line)) {
        const std::string data = line.substr(0, line.find('#'));
        // Unconditional lines hold four ';'-ended fields, conditional ones a fifth.
        if (std::count(data.begin(), data.end(), ';') != 4)
            continue;
        const std::vector<std::string> f = fieldsOf(data);
        const unsigned c = hexValue(f[0]);
        if (c > 0xFFFF)
            continue;
        plane[c].lowerSpecial = wordCount(f[1]) != 1;
        plane[c].upperSpecial = wordCount(f[3]) != 1;
    }

    while (std::getline(caseFolding, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        const std::vector<std::string> f = fieldsOf(line);
        const unsigned c = hexValue(f[0]);
        if (c <= 0xFFFF && (f[1] == "C" || f[1] == "S"))
            plane[c].fold = hexValue(f[2]);
    }
    return true;
}

TEST(VyUnicodeSweep, EveryBmpUnitMatchesTheCharacterDatabase)
{
    std::vector<Expectation> plane;
    if (!loadDatabase(plane))
        GTEST_SKIP() << "Unicode data files not found in " << DataFolder
                     << " (Debian package unicode-data)";

    const std::map<std::string, int> codes = {
        {"Mn", 1},  {"Mc", 2},  {"Me", 3},  {"Nd", 4},  {"Nl", 5},  {"No", 6},
        {"Zs", 7},  {"Zl", 8},  {"Zp", 9},  {"Cc", 10}, {"Cf", 11}, {"Cs", 12},
        {"Co", 13}, {"Cn", 14}, {"Lu", 15}, {"Ll", 16}, {"Lt", 17}, {"Lm", 18},
        {"Lo", 19}, {"Pc", 20}, {"Pd", 21}, {"Ps", 22}, {"Pe", 23}, {"Pi", 24},
        {"Pf", 25}, {"Po", 26}, {"Sm", 27}, {"Sc", 28}, {"Sk", 29}, {"So", 30}};

    std::vector<std::string> mismatches;
    int cased = 0;
    auto check = [&](unsigned c, const char* what, long got, long want) {
        if (got != want) {
            std::ostringstream text;
            text << "U+" << std::hex << std::uppercase << c << " " << what << ": got " << std::dec
                 << got << ", want " << want;
            mismatches.push_back(text.str());
        }
    };
    for (unsigned c = 0; c < 0x10000; ++c) {
        const unsigned short u = static_cast<unsigned short>(c);
        const Expectation& e = plane[c];
        const VyUnicodeTables::Properties* p = VyUnicodeTables::properties(u);
        const int code = codes.at(e.category);
        check(c, "category", p->category, code);
        check(c, "isSpace", VyUnicode::isSpace(u),
              (c >= 0x09 && c <= 0x0D) || e.category == "Zs" || e.category == "Zl" ||
                  e.category == "Zp");
        check(c, "toUpper", VyUnicode::toUpper(u), e.upperSpecial ? c : e.upper);
        check(c, "toLower", VyUnicode::toLower(u), e.lowerSpecial ? c : e.lower);
        check(c, "title", (c + p->titleCaseDiff) & 0xFFFF, e.title);
        check(c, "foldCase", VyUnicode::foldCase(u), e.fold);
        check(c, "digitValue", VyUnicode::digitValue(u), e.digit);
        check(c, "lower special", (p->flags & VyUnicodeTables::LowerCaseSpecial) != 0,
              e.lowerSpecial);
        check(c, "upper special", (p->flags & VyUnicodeTables::UpperCaseSpecial) != 0,
              e.upperSpecial);
        if (e.upper != c || e.lower != c || e.fold != c)
            ++cased;
    }
    // Guards the reader itself: it must have found the case mappings at all.
    EXPECT_GT(cased, 2000);
    EXPECT_EQ(mismatches.size(), 0u);
    for (std::size_t i = 0; i < mismatches.size() && i < 20; ++i)
        ADD_FAILURE() << mismatches[i];
}

} // namespace
