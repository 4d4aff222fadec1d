// Strict UTF-8 for vytext: the text it is given must be well formed (the library's own reader
// repairs bad input silently, which a preview must not do), and what it prints must be too.
#ifndef VYTEXTUTF8_H
#define VYTEXTUTF8_H

#include <string>
#include <vector>

// Decodes `bytes` into UTF-16 units, code points above U+FFFF as surrogate pairs. Rejects
// overlong forms, encoded surrogates, code points above U+10FFFF, stray continuation bytes and
// truncated sequences. Returns -1 when the whole input is well formed, else the offset of the
// first byte of the first bad sequence.
long decodeUtf8(const std::string& bytes, std::vector<unsigned short>& units);

// Encodes `n` units as UTF-8: a surrogate pair becomes one four-byte sequence, a lone surrogate
// U+FFFD.
std::string encodeUtf8(const unsigned short* units, int n);

#endif
