#include "vyunicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

int category(unsigned short c)
{
    return VyUnicodeTables::properties(c)->category;
}

// Unicode counts U+0085 (NEXT LINE) as white space; here it is only a control.
TEST(VyUnicode, NextLineIsNotSpace_Kept)
{
    EXPECT_EQ(category(0x0085), VyUnicodeTables::Cc);
    EXPECT_FALSE(VyUnicode::isSpace(0x0085));
}

// The letters and ranges where a table or mapping slip would show first; the sweep below
// checks the whole plane when the character database is installed.
TEST(VyUnicode, LandmarkUnits)
{
    const struct {
        unsigned short c, upper, lower, fold;
        int category, digit;
        bool space;
    } cases[] = {
        {0x0009, 0x0009, 0x0009, 0x0009, 10, -1, true},
        {0x000E, 0x000E, 0x000E, 0x000E, 10, -1, false},
        {0x00A0, 0x00A0, 0x00A0, 0x00A0, 7, -1, true},
        {0x2028, 0x2028, 0x2028, 0x2028, 8, -1, true},
        {0x200B, 0x200B, 0x200B, 0x200B, 11, -1, false},
        {0x0041, 0x0041, 0x0061, 0x0061, 15, -1, false},
        {0x0069, 0x0049, 0x0069, 0x0069, 16, -1, false}, // no Turkish rules
        {0x00FF, 0x0178, 0x00FF, 0x00FF, 16, -1, false}, // a jump out of Latin-1
        {0x03C2, 0x03A3, 0x03C2, 0x03C3, 16, -1, false}, // final sigma folds to σ
        {0x01C5, 0x01C4, 0x01C6, 0x01C6, 17, -1, false}, // title case leaves in both ways
        {0x1E9E, 0x1E9E, 0x00DF, 0x00DF, 15, -1, false}, // simple folding only
        // One unit cannot hold "SS", "i̇" or "ἈΙ": the special direction keeps the unit.
        {0x00DF, 0x00DF, 0x00DF, 0x00DF, 16, -1, false},
        {0x0130, 0x0130, 0x0130, 0x0130, 15, -1, false},
        {0x1F88, 0x1F88, 0x1F80, 0x1F80, 17, -1, false},
        // Differences beyond a signed 16-bit reach wrap and still land right.
        {0x0265, 0xA78D, 0x0265, 0x0265, 16, -1, false},
        {0xA78D, 0xA78D, 0x0265, 0x0265, 15, -1, false},
        {0x13A0, 0x13A0, 0xAB70, 0x13A0, 15, -1, false}, // Cherokee folds to upper case
        {0xAB70, 0x13A0, 0xAB70, 0x13A0, 16, -1, false},
        {0x0663, 0x0663, 0x0663, 0x0663, 4, 3, false},
        {0xFF10, 0xFF10, 0xFF10, 0xFF10, 4, 0, false},
        {0x00B2, 0x00B2, 0x00B2, 0x00B2, 6, -1, false},
        {0x2167, 0x2167, 0x2177, 0x2177, 5, -1, false},
        {0x0300, 0x0300, 0x0300, 0x0300, 1, -1, false},
        {0x0378, 0x0378, 0x0378, 0x0378, 14, -1, false},
        {0x9FFF, 0x9FFF, 0x9FFF, 0x9FFF, 19, -1, false}, // range ends
        {0xD7A3, 0xD7A3, 0xD7A3, 0xD7A3, 19, -1, false},
        {0xDFFF, 0xDFFF, 0xDFFF, 0xDFFF, 12, -1, false},
        {0xE000, 0xE000, 0xE000, 0xE000, 13, -1, false},
        {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 14, -1, false},
    };
    for (const auto& e : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << e.c);
        EXPECT_EQ(VyUnicode::toUpper(e.c), e.upper);
        EXPECT_EQ(VyUnicode::toLower(e.c), e.lower);
        EXPECT_EQ(VyUnicode::foldCase(e.c), e.fold);
        EXPECT_EQ(category(e.c), e.category);
        EXPECT_EQ(VyUnicode::digitValue(e.c), e.digit);
        EXPECT_EQ(VyUnicode::isSpace(e.c), e.space);
    }
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
    EXPECT_EQ(VyUnicodeTables::properties(0x0061)->titleCaseDiff, -32);
    EXPECT_EQ(VyUnicodeTables::properties(0x01C4)->titleCaseDiff, 1);
    EXPECT_TRUE(VyUnicodeTables::properties(0x0130)->flags & VyUnicodeTables::LowerCaseSpecial);
}

TEST(VyUnicodeTables, IndexAndRecordsAreWellFormed)
{
    const int size = VyUnicodeTables::propertyIndexSize;
    const int records = VyUnicodeTables::propertyRecordCount;
    ASSERT_GT(size, 2048);
    std::vector<bool> used(size_t(records), false);
    for (int block = 0; block < 2048; ++block) {
        const int row = VyUnicodeTables::propertyIndex[block];
        ASSERT_TRUE(row >= 2048 && row + 32 <= size) << "block " << block;
        for (int i = 0; i < 32; ++i) {
            const int record = VyUnicodeTables::propertyIndex[row + i];
            ASSERT_LT(record, records) << "block " << block << " entry " << i;
            used[size_t(record)] = true;
        }
    }
    for (int r = 0; r < records; ++r) {
        SCOPED_TRACE(r);
        EXPECT_TRUE(used[size_t(r)]) << "never reached";
        const VyUnicodeTables::Properties& p = VyUnicodeTables::propertyRecords[r];
        for (int s = r + 1; s < records; ++s) // one record per distinct combination
            EXPECT_NE(std::memcmp(&p, &VyUnicodeTables::propertyRecords[s], sizeof p), 0) << s;
        // Bytes the library does not read stay 0.
        EXPECT_EQ(p.unused1[0] | p.unused1[1] | p.unused1[2] | p.unused6[0] | p.unused6[1] |
                      p.unused16[0] | p.unused16[1] | (p.digitField & 0x03) |
                      (p.flags &
                       ~(VyUnicodeTables::LowerCaseSpecial | VyUnicodeTables::UpperCaseSpecial)),
                  0);
        EXPECT_TRUE(p.category >= 1 && p.category <= 30);
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

    // Category codes 1..30 in this order.
    const std::string codes = "MnMcMeNdNlNoZsZlZpCcCfCsCoCnLuLlLtLmLoPcPdPsPePiPfPoSmScSkSo";
    int failures = 0, cased = 0;
    auto check = [&](unsigned c, const char* what, long got, long want) {
        if (got != want && ++failures <= 20) {
            ADD_FAILURE() << "U+" << std::hex << std::uppercase << c << " " << what << ": got "
                          << std::dec << got << ", want " << want;
        }
    };
    for (unsigned c = 0; c < 0x10000; ++c) {
        const unsigned short u = static_cast<unsigned short>(c);
        const Expectation& e = plane[c];
        const VyUnicodeTables::Properties* p = VyUnicodeTables::properties(u);
        check(c, "category", p->category, long(codes.find(e.category) / 2 + 1));
        check(c, "isSpace", VyUnicode::isSpace(u),
              (c >= 0x09 && c <= 0x0D) || e.category[0] == 'Z');
        check(c, "toUpper", VyUnicode::toUpper(u), e.upperSpecial ? c : e.upper);
        check(c, "toLower", VyUnicode::toLower(u), e.lowerSpecial ? c : e.lower);
        check(c, "title", (c + p->titleCaseDiff) & 0xFFFF, e.title);
        check(c, "foldCase", VyUnicode::foldCase(u), e.fold);
        check(c, "digitValue", VyUnicode::digitValue(u), e.digit);
        check(c, "lower special", (p->flags & VyUnicodeTables::LowerCaseSpecial) != 0,
              e.lowerSpecial);
        check(c, "upper special", (p->flags & VyUnicodeTables::UpperCaseSpecial) != 0,
              e.upperSpecial);
        cased += e.upper != c || e.lower != c || e.fold != c;
    }
    // Guards the reader itself: it must have found the case mappings at all.
    EXPECT_GT(cased, 2000);
    EXPECT_EQ(failures, 0);
}

} // namespace
