// The generated property tables: the shape of the index and the records, and the whole plane
// against the character database. This reader is deliberately separate from the generator's:
// it takes the files apart its own way, so a slip in one is caught by the other.
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

TEST(VyUnicodeTables, IndexAndRecordsAreWellFormed)
{
    const int size = VyUnicodeTables::propertyIndexSize;
    const int records = VyUnicodeTables::propertyRecordCount;
    std::vector<bool> used(size_t(records), false);
    for (int block = 0; block < 2048; ++block) {
        const int row = VyUnicodeTables::propertyIndex[block];
        ASSERT_GE(row, 2048) << "block " << block;
        ASSERT_LE(row + 32, size) << "block " << block;
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
        // Bytes the library does not read stay 0, so readers by byte position see only fields.
        EXPECT_EQ(p.unused1[0] | p.unused1[1] | p.unused1[2] | p.unused6[0] | p.unused6[1] |
                      p.unused16[0] | p.unused16[1] | (p.digitField & 0x03) |
                      (p.flags &
                       ~(VyUnicodeTables::LowerCaseSpecial | VyUnicodeTables::UpperCaseSpecial)),
                  0);
    }
}

const char* const DataFolder = "/usr/share/unicode";

struct Expectation {
    std::string category = "Cn";
    int digit = -1;
    unsigned upper = 0, lower = 0, title = 0, fold = 0; // mapped code points
    bool lowerSpecial = false, upperSpecial = false;
};

// The ';'-separated fields of a database line, without surrounding spaces.
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
        for (unsigned cp = rangeEnd ? rangeStart : c; cp <= c && cp < 0x10000; ++cp) {
            Expectation& e = plane[cp];
            e.category = f[2];
            e.digit = f[6].empty() ? -1 : std::stoi(f[6]);
            e.upper = f[12].empty() ? cp : hexValue(f[12]);
            e.lower = f[13].empty() ? cp : hexValue(f[13]);
            e.title = f[14].empty() ? e.upper : hexValue(f[14]);
        }
    }

    // Unconditional lines hold four ';'-ended fields, conditional ones a fifth. Their mappings
    // of BMP units are BMP units, so a space separates the units of a longer one.
    while (std::getline(specialCasing, line)) {
        const std::string data = line.substr(0, line.find('#'));
        const std::vector<std::string> f = fieldsOf(data);
        if (std::count(data.begin(), data.end(), ';') != 4 || hexValue(f[0]) > 0xFFFF)
            continue;
        plane[hexValue(f[0])].lowerSpecial = f[1].find(' ') != std::string::npos;
        plane[hexValue(f[0])].upperSpecial = f[3].find(' ') != std::string::npos;
    }

    while (std::getline(caseFolding, line)) {
        const std::vector<std::string> f = fieldsOf(line.substr(0, line.find('#')));
        if (f.size() >= 3 && hexValue(f[0]) <= 0xFFFF && (f[1] == "C" || f[1] == "S"))
            plane[hexValue(f[0])].fold = hexValue(f[2]);
    }
    return true;
}

TEST(VyUnicodeTables, EveryBmpUnitMatchesTheCharacterDatabase)
{
    std::vector<Expectation> plane;
    if (!loadDatabase(plane))
        GTEST_SKIP() << "Unicode data files not found in " << DataFolder
                     << " (Debian package unicode-data)";

    // Category codes 1..30 in this order.
    const std::string codes = "MnMcMeNdNlNoZsZlZpCcCfCsCoCnLuLlLtLmLoPcPdPsPePiPfPoSmScSkSo";
    int failures = 0;
    int cased = 0;
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
