// vyunicodegen — writes the Unicode property tables of the Basic Multilingual Plane
// (src/strings/vyunicodetables.cpp) from the Unicode Character Database files that Debian's
// unicode-data package installs in /usr/share/unicode.
//
//     vyunicodegen <folder with UnicodeData.txt, SpecialCasing.txt, CaseFolding.txt> <output>
//
// Run it from the source root as `vyunicodegen /usr/share/unicode src/strings/vyunicodetables.cpp`.
// The output depends only on the input files and the two arguments, so the same input gives a
// byte-identical file on every machine.
//
// What goes into each code point's record:
// - category: UnicodeData.txt field 2; code points the file does not list are Cn. A pair of
//   "<..., First>" / "<..., Last>" lines gives its properties to every code point between.
// - digit value: UnicodeData.txt field 6 (decimal digit value), −1 where it is empty.
// - lower, upper and title differences: the simple mappings of UnicodeData.txt fields 13, 12
//   and 14; an empty title field means the title case is the upper case.
// - case folding difference: CaseFolding.txt lines of status C (common) and S (simple). The
//   full foldings (F) and the Turkic ones (T) are left out: a unit folds to one unit.
// - flags LowerCaseSpecial / UpperCaseSpecial: SpecialCasing.txt lines without a condition
//   whose lower (upper) mapping is longer than one UTF-16 unit. Lines with a condition (final
//   sigma, the Lithuanian, Turkish and Azeri rules) hold only for some languages or contexts,
//   which a single-unit mapping cannot know; they set nothing, so the simple mapping stands
//   (U+03A3 lowers to U+03C3, U+0049 to U+0069).
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

const unsigned CodePointCount = 0x10000;
const unsigned BlockSize = 32;
const unsigned BlockCount = CodePointCount / BlockSize;

// The category codes of the library, in the order of their numbers (code 0 is unused).
const char* const CategoryNames[] = {
    "",   "Mn", "Mc", "Me", "Nd", "Nl", "No", "Zs", "Zl", "Zp", "Cc", "Cf", "Cs", "Co", "Cn", "Lu",
    "Ll", "Lt", "Lm", "Lo", "Pc", "Pd", "Ps", "Pe", "Pi", "Pf", "Po", "Sm", "Sc", "Sk", "So"};
const int CategoryCount = sizeof(CategoryNames) / sizeof(CategoryNames[0]);
const int Unassigned = 14;

const int LowerCaseSpecial = 0x10;
const int UpperCaseSpecial = 0x20;

[[noreturn]] void fail(const std::string& message)
{
    std::fprintf(stderr, "vyunicodegen: %s\n", message.c_str());
    std::exit(1);
}

// The properties of one code point, with the differences as plain ints.
struct CodePoint {
    int category = Unassigned;
    int digit = -1;
    int flags = 0;
    int lower = 0;
    int upper = 0;
    int title = 0;
    int fold = 0;
};

// The record as it is written out: the differences reduced to signed 16 bits.
struct Record {
    int category;
    int digitField;
    int flags;
    int lower, upper, title, fold;

    bool operator<(const Record& o) const
    {
        const int a[] = {category, digitField, flags, lower, upper, title, fold};
        const int b[] = {o.category, o.digitField, o.flags, o.lower, o.upper, o.title, o.fold};
        for (int i = 0; i < 7; ++i) {
            if (a[i] != b[i])
                return a[i] < b[i];
        }
        return false;
    }
};

std::string trim(const std::string& s)
{
    const char* space = " \t\r\n";
    const std::string::size_type begin = s.find_first_not_of(space);
    if (begin == std::string::npos)
        return std::string();
    return s.substr(begin, s.find_last_not_of(space) - begin + 1);
}

// The ';'-separated fields of a line, trimmed; a trailing ';' gives a last empty field.
std::vector<std::string> splitFields(const std::string& line)
{
    std::vector<std::string> fields;
    std::string::size_type start = 0;
    for (;;) {
        const std::string::size_type end = line.find(';', start);
        fields.push_back(trim(line.substr(start, end - start)));
        if (end == std::string::npos)
            return fields;
        start = end + 1;
    }
}

unsigned parseHex(const std::string& text, const std::string& where)
{
    if (text.empty() || text.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
        fail("bad code point '" + text + "' in " + where);
    return static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 16));
}

// Code points separated by spaces.
std::vector<unsigned> parseHexList(const std::string& text, const std::string& where)
{
    std::vector<unsigned> list;
    std::istringstream in(text);
    std::string item;
    while (in >> item)
        list.push_back(parseHex(item, where));
    return list;
}

int utf16Length(const std::vector<unsigned>& codePoints)
{
    int units = 0;
    for (unsigned cp : codePoints)
        units += cp > 0xFFFF ? 2 : 1;
    return units;
}

struct InputFile {
    std::string name;
    std::vector<std::string> lines;
};

InputFile readFile(const std::string& folder, const char* name)
{
    InputFile file;
    file.name = name;
    std::ifstream in(folder + "/" + name);
    if (!in)
        fail("cannot read " + folder + "/" + name);
    std::string line;
    while (std::getline(in, line))
        file.lines.push_back(line);
    return file;
}

// The version in a first line such as "# CaseFolding-15.0.0.txt".
std::string versionOf(const InputFile& file)
{
    const std::string stem = file.name.substr(0, file.name.size() - 4); // without ".txt"
    const std::string prefix = "# " + stem + "-";
    if (file.lines.empty() || file.lines[0].compare(0, prefix.size(), prefix) != 0)
        fail(file.name + " does not start with '" + prefix + "<version>.txt'");
    const std::string rest = file.lines[0].substr(prefix.size());
    const std::string::size_type dot = rest.rfind(".txt");
    if (dot == std::string::npos || dot == 0)
        fail(file.name + ": no version in its first line");
    return rest.substr(0, dot);
}

// The difference between a mapping and its code point; a mapping out of the BMP cannot be
// reached by a 16-bit difference, so such input is refused rather than tabled wrongly.
int mappingDiff(unsigned c, const std::string& field, const std::string& where)
{
    if (field.empty())
        return 0;
    const unsigned target = parseHex(field, where);
    if (target >= CodePointCount)
        fail(where + ": mapping to " + field + " leaves the Basic Multilingual Plane");
    return static_cast<int>(target) - static_cast<int>(c);
}

int categoryCode(const std::string& name, const std::string& where)
{
    for (int code = 1; code < CategoryCount; ++code) {
        if (name == CategoryNames[code])
            return code;
    }
    fail("unknown general category '" + name + "' in " + where);
}

bool endsWith(const std::string& s, const std::string& tail)
{
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

void readUnicodeData(const InputFile& file, std::vector<CodePoint>& points)
{
    bool inRange = false;
    unsigned rangeFirst = 0;
    CodePoint rangeProperties;
    for (std::size_t n = 0; n < file.lines.size(); ++n) {
        const std::string& line = file.lines[n];
        if (trim(line).empty())
            continue;
        const std::string where = file.name + " line " + std::to_string(n + 1);
        const std::vector<std::string> f = splitFields(line);
        if (f.size() != 15)
            fail(where + ": expected 15 fields");
        const unsigned c = parseHex(f[0], where);

        CodePoint p;
        p.category = categoryCode(f[2], where);
        if (!f[6].empty()) {
            p.digit = std::atoi(f[6].c_str());
            if (p.digit < 0 || p.digit > 9 ||
                f[6].find_first_not_of("0123456789") != std::string::npos)
                fail(where + ": bad decimal digit value");
        }
        if (c < CodePointCount) {
            p.upper = mappingDiff(c, f[12], where);
            p.lower = mappingDiff(c, f[13], where);
            p.title = f[14].empty() ? p.upper : mappingDiff(c, f[14], where);
        }

        if (endsWith(f[1], ", First>")) {
            if (inRange)
                fail(where + ": range opened twice");
            inRange = true;
            rangeFirst = c;
            rangeProperties = p;
            continue;
        }
        if (endsWith(f[1], ", Last>")) {
            if (!inRange || c < rangeFirst)
                fail(where + ": range end without its start");
            inRange = false;
            // The range shares the category and digit value of its first line; no member of
            // a range has a case mapping.
            CodePoint shared;
            shared.category = rangeProperties.category;
            shared.digit = rangeProperties.digit;
            for (unsigned cp = rangeFirst; cp <= c && cp < CodePointCount; ++cp)
                points[cp] = shared;
            continue;
        }
        if (inRange)
            fail(where + ": range start not followed by its end");
        if (c < CodePointCount)
            points[c] = p;
    }
    if (inRange)
        fail(file.name + ": range left open at the end");
}

void readSpecialCasing(const InputFile& file, std::vector<CodePoint>& points)
{
    for (std::size_t n = 0; n < file.lines.size(); ++n) {
        const std::string data = trim(file.lines[n].substr(0, file.lines[n].find('#')));
        if (data.empty())
            continue;
        const std::string where = file.name + " line " + std::to_string(n + 1);
        // code; lower; title; upper; [condition;]
        const std::vector<std::string> f = splitFields(data);
        if (f.size() < 5 || f.size() > 6 || !f.back().empty())
            fail(where + ": expected 4 or 5 fields, each ended by ';'");
        const unsigned c = parseHex(f[0], where);
        const bool conditional = f.size() == 6;
        if (conditional || c >= CodePointCount)
            continue;
        if (utf16Length(parseHexList(f[1], where)) != 1)
            points[c].flags |= LowerCaseSpecial;
        if (utf16Length(parseHexList(f[3], where)) != 1)
            points[c].flags |= UpperCaseSpecial;
    }
}

void readCaseFolding(const InputFile& file, std::vector<CodePoint>& points)
{
    for (std::size_t n = 0; n < file.lines.size(); ++n) {
        const std::string data = trim(file.lines[n].substr(0, file.lines[n].find('#')));
        if (data.empty())
            continue;
        const std::string where = file.name + " line " + std::to_string(n + 1);
        // code; status; mapping;
        const std::vector<std::string> f = splitFields(data);
        if (f.size() != 4 || !f[3].empty())
            fail(where + ": expected 3 fields, each ended by ';'");
        const unsigned c = parseHex(f[0], where);
        if (f[1] != "C" && f[1] != "S") {
            if (f[1] != "F" && f[1] != "T")
                fail(where + ": unknown status '" + f[1] + "'");
            continue;
        }
        if (c < CodePointCount)
            points[c].fold = mappingDiff(c, f[2], where);
    }
}

// A difference reduced to the signed 16-bit range modulo 65536: (c + result) & 0xFFFF is
// still the mapped unit.
int toSigned16(int diff)
{
    int wrapped = ((diff % 0x10000) + 0x10000) % 0x10000;
    return wrapped >= 0x8000 ? wrapped - 0x10000 : wrapped;
}

Record recordOf(const CodePoint& p)
{
    Record r;
    r.category = p.category;
    r.digitField = (p.digit & 0x3F) << 2;
    r.flags = p.flags;
    r.lower = toSigned16(p.lower);
    r.upper = toSigned16(p.upper);
    r.title = toSigned16(p.title);
    r.fold = toSigned16(p.fold);
    return r;
}

struct Tables {
    std::vector<Record> records;
    std::vector<unsigned> index; // first level, then the rows
    int rowCount = 0;
};

// Records and rows are numbered in order of first use, walking up from U+0000.
Tables buildTables(const std::vector<CodePoint>& points)
{
    Tables t;
    std::map<Record, unsigned> recordNumbers;
    std::map<std::array<unsigned, BlockSize>, unsigned> rowOffsets;
    t.index.assign(BlockCount, 0);
    for (unsigned block = 0; block < BlockCount; ++block) {
        std::array<unsigned, BlockSize> row;
        for (unsigned i = 0; i < BlockSize; ++i) {
            const Record r = recordOf(points[block * BlockSize + i]);
            auto found = recordNumbers.find(r);
            if (found == recordNumbers.end()) {
                found = recordNumbers.emplace(r, static_cast<unsigned>(t.records.size())).first;
                t.records.push_back(r);
            }
            row[i] = found->second;
        }
        auto found = rowOffsets.find(row);
        if (found == rowOffsets.end()) {
            found = rowOffsets.emplace(row, static_cast<unsigned>(t.index.size())).first;
            t.index.insert(t.index.end(), row.begin(), row.end());
            ++t.rowCount;
        }
        t.index[block] = found->second;
    }
    if (t.index.size() > 0x10000 || t.records.size() > 0x10000)
        fail("the tables outgrow 16-bit indexes");
    return t;
}

std::string formatRecord(const Record& r)
{
    char text[160];
    std::snprintf(text, sizeof text, "{%d, {0, 0, 0}, %d, 0x%02X, {0, 0}, %d, %d, %d, %d, {0, 0}}",
                  r.category, r.digitField, static_cast<unsigned>(r.flags), r.lower, r.upper,
                  r.title, r.fold);
    return text;
}

std::string render(const Tables& t, const std::string& command, const std::string& version)
{
    std::string out;
    out += "// Unicode properties of the Basic Multilingual Plane, for vyunicode.h.\n";
    out += "//\n";
    out += "// generated — do not edit.\n";
    out += "// Command: " + command + "\n";
    out += "// Input:   Unicode " + version +
           " (UnicodeData.txt, SpecialCasing.txt, CaseFolding.txt)\n";
    out += "// " + std::to_string(t.records.size()) + " records, " +
           std::to_string(t.index.size()) + " index entries (" + std::to_string(BlockCount) +
           " row offsets, " + std::to_string(t.rowCount) + " rows of " + std::to_string(BlockSize) +
           ").\n";
    out += "// clang-format off\n\n";
    out += "#include \"vyunicode.h\"\n\n";
    out += "const int VyUnicodeTables::propertyRecordCount = " + std::to_string(t.records.size()) +
           ";\n";
    out += "const int VyUnicodeTables::propertyIndexSize = " + std::to_string(t.index.size()) +
           ";\n\n";

    out += "// {category, unused, digit field, flags, unused, lower, upper, title, fold, unused}\n";
    out += "const VyUnicodeTables::Properties VyUnicodeTables::propertyRecords[" +
           std::to_string(t.records.size()) + "] = {\n";
    for (std::size_t i = 0; i < t.records.size(); ++i)
        out += "    " + formatRecord(t.records[i]) + ", // " + std::to_string(i) + "\n";
    out += "};\n\n";

    out += "const unsigned short VyUnicodeTables::propertyIndex[" + std::to_string(t.index.size()) +
           "] = {\n";
    out += "    // Row offset of each block of 32 code points; the comment names the first.\n";
    char text[32];
    for (unsigned block = 0; block < BlockCount; block += 16) {
        std::snprintf(text, sizeof text, "    /* U+%04X */", block * BlockSize);
        out += text;
        for (unsigned i = block; i < block + 16; ++i)
            out += " " + std::to_string(t.index[i]) + ",";
        out += "\n";
    }
    out += "    // Rows: the record of each code point c & 31; the comment gives the position.\n";
    for (std::size_t row = BlockCount; row < t.index.size(); row += BlockSize) {
        out += "    /* " + std::to_string(row) + " */";
        for (std::size_t i = row; i < row + BlockSize; ++i)
            out += " " + std::to_string(t.index[i]) + ",";
        out += "\n";
    }
    out += "};\n";
    return out;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: vyunicodegen <unicode-data folder> <output .cpp>\n");
        return 2;
    }
    const std::string folder = argv[1];
    const std::string output = argv[2];

    const InputFile unicodeData = readFile(folder, "UnicodeData.txt");
    const InputFile specialCasing = readFile(folder, "SpecialCasing.txt");
    const InputFile caseFolding = readFile(folder, "CaseFolding.txt");
    // UnicodeData.txt carries no header; the other two name their version in the first line.
    const std::string version = versionOf(caseFolding);
    if (versionOf(specialCasing) != version)
        fail("SpecialCasing.txt and CaseFolding.txt are of different Unicode versions");

    std::vector<CodePoint> points(CodePointCount);
    readUnicodeData(unicodeData, points);
    readSpecialCasing(specialCasing, points);
    readCaseFolding(caseFolding, points);

    // The banner names the program, not argv[0]: the build folder (or an emulator) must not
    // change the output.
    const std::string text =
        render(buildTables(points), "vyunicodegen " + folder + " " + output, version);

    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out)
        fail("cannot write " + output);
    return 0;
}
