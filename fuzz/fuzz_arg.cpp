// Fuzzes place-marker substitution over fuzzed templates.
//
// Input: four control bytes (field width, fill character, argument count, number choice), then
// the template as raw UTF-16 units. Each arg form and multiArg runs on the template and is
// compared with a model written here over std::u16string: the template is cut into text and
// marker tokens first, then the tokens are joined again with the replacements. The library's
// own length assertions guard its buffer; the model checks the text.
#include "vylocale.h"
#include "vystring.h"
#include "vyu16.h"
#include "vyunicode.h"

#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

namespace
{

void check(bool condition, const char* what)
{
    if (!condition) {
        fprintf(stderr, "fuzz_arg: %s\n", what);
        abort();
    }
}

// A piece of a template: plain text, or a marker with its number and `L` flag.
struct Token {
    std::u16string text; // the piece as it stands
    int number;          // -1 for plain text
    bool locale;
};

// arg's reading: '%', optional 'L', one or two digits of any script.
std::vector<Token> argTokens(const std::u16string& t)
{
    std::vector<Token> tokens;
    size_t i = 0;
    while (i < t.size()) {
        size_t j = i;
        int number = -1;
        bool locale = false;
        if (t[i] == u'%') {
            j = i + 1;
            if (j < t.size() && t[j] == u'L') {
                locale = true;
                ++j;
            }
            const int first = j < t.size() ? VyUnicode::digitValue(t[j]) : -1;
            if (first >= 0) {
                number = first;
                ++j;
                const int second = j < t.size() ? VyUnicode::digitValue(t[j]) : -1;
                if (second >= 0) {
                    number = number * 10 + second;
                    ++j;
                }
            }
        } else {
            j = i + 1;
        }
        tokens.push_back({t.substr(i, j - i), number, locale});
        i = j;
    }
    return tokens;
}

std::u16string modelArg(const std::u16string& t, int width, const std::u16string& plain,
                        const std::u16string& locale, char16_t fill)
{
    const std::vector<Token> tokens = argTokens(t);
    int lowest = INT_MAX;
    for (const Token& k : tokens)
        if (k.number >= 0 && k.number < lowest)
            lowest = k.number;
    std::u16string out;
    for (const Token& k : tokens) {
        if (k.number != lowest || lowest == INT_MAX) {
            out += k.text;
            continue;
        }
        const std::u16string& value = k.locale ? locale : plain;
        const size_t w = size_t(width < 0 ? -(long long)width : width);
        const std::u16string pad(w > value.size() ? w - value.size() : 0, fill);
        out += width > 0 ? pad + value : value + (width < 0 ? pad : std::u16string());
    }
    return out;
}

// multiArg's reading: '%', optional 'L', ASCII digits up to 999.
std::u16string modelMultiArg(const std::u16string& t, const std::vector<std::u16string>& args)
{
    struct Piece {
        std::u16string text;
        int number;
    };
    std::vector<Piece> pieces;
    std::map<int, int> order;
    for (size_t i = 0; i < t.size();) {
        size_t j = i + 1;
        int number = -1;
        if (t[i] == u'%') {
            if (j < t.size() && t[j] == u'L')
                ++j;
            const size_t digits = j;
            long long n = 0;
            while (j < t.size() && t[j] >= u'0' && t[j] <= u'9' && n <= 999)
                n = n * 10 + (t[j++] - u'0');
            number = (j > digits && n <= 999) ? int(n) : -1;
            if (number < 0)
                j = i + 1;
        }
        pieces.push_back({t.substr(i, j - i), number});
        if (number >= 0)
            order[number] = 0;
        i = j;
    }
    int ordinal = 0;
    for (auto& o : order)
        o.second = ordinal++;
    std::u16string out;
    for (const Piece& p : pieces)
        out += (p.number >= 0 && order[p.number] < int(args.size())) ? args[size_t(order[p.number])]
                                                                     : p.text;
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 4 || size > 2048)
        return 0;
    const int width = int(int8_t(data[0])) % 40;
    const char16_t fill = "* 0.\xE9"[data[1] % 5] & 0xFF;
    const int argCount = data[2] % 12;
    const unsigned choice = data[3];
    std::u16string t((size - 4) / 2, u'\0');
    if (!t.empty())
        memcpy(&t[0], data + 4, t.size() * 2);
    const VyString templ = V(t);
    const bool hasMarker = findArgEscapes(templ).occurrences > 0;

    const std::u16string value = u"v%1L";
    VyString r = templ.arg(V(value), width, fill);
    check(U(r) == (hasMarker ? modelArg(t, width, value, value, fill) : t), "arg(string)");

    // The number forms: the model is given the texts VyLocale writes for them.
    const unsigned zero = fill == u'0' ? unsigned(VyLocale::ZeroPad) : 0u;
    const auto checkNumber = [&](const VyString& result, const VyString& plain,
                                 const VyString& grouped, const char* what) {
        check(U(result) == (hasMarker ? modelArg(t, width, U(plain), U(grouped), fill) : t), what);
    };
    const long long n = (long long)(choice * 2654435761u) - 2000000000LL;
    const int base = 2 + int(choice % 35);
    checkNumber(templ.arg(n, width, base, VyUcs2(fill)),
                VyLocale::longLongToString('0', ',', '+', '-', n, -1, base, width, zero),
                VyLocale::longLongToString('0', ',', '+', '-', n, -1, base, width,
                                           zero | VyLocale::GroupDigits),
                "arg(long long)");
    const unsigned long long un = (unsigned long long)n;
    checkNumber(templ.arg(un, width, base, VyUcs2(fill)),
                VyLocale::unsLongLongToString('0', ',', '+', un, -1, base, width, zero),
                VyLocale::unsLongLongToString('0', ',', '+', un, -1, base, width,
                                              zero | VyLocale::GroupDigits),
                "arg(unsigned long long)");
    const double x = double(n) / 7.0;
    const int precision = int(choice % 20);
    const VyLocale::DoubleForm form = choice % 3 == 0   ? VyLocale::FormExponent
                                      : choice % 3 == 1 ? VyLocale::FormDecimal
                                                        : VyLocale::FormGeneral;
    checkNumber(
        templ.arg(x, width, "efg"[choice % 3], precision, VyUcs2(fill)),
        VyLocale::doubleToString('0', '+', '-', 'e', ',', '.', x, precision, form, width, zero),
        VyLocale::doubleToString('0', '+', '-', 'e', ',', '.', x, precision, form, width,
                                 zero | VyLocale::GroupDigits),
        "arg(double)");

    std::vector<std::u16string> args;
    std::vector<VyString> strings;
    for (int i = 0; i < argCount; ++i) {
        args.push_back(u"<" + std::u16string(size_t(i), u'%') + u"1>");
        strings.push_back(V(args.back()));
    }
    std::vector<const VyString*> pointers;
    for (const VyString& s : strings)
        pointers.push_back(&s);
    r = templ.multiArg(argCount, pointers.data());
    check(U(r) == modelMultiArg(t, args), "multiArg");
    return 0;
}
