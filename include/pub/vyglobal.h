// Types, enums and the assertion helper shared by every libvy header.
//
// Precondition failures end the process through libc's assertion routine with a fixed
// condition text, a fixed source path and line, and the compiler's function signature, so a
// crash report names the same place on every build. The check stays on in every build type:
// NDEBUG does not remove it.
#ifndef VYGLOBAL_H
#define VYGLOBAL_H

// One UTF-16 code unit. The text engine handles one glyph per unit.
typedef unsigned short VyUcs2;
typedef unsigned int uint;

namespace Vy
{
enum CaseSensitivity { CaseInsensitive = 0, CaseSensitive = 1 };
// Which calendar a date accessor uses; DefaultDateMode resolves to the library-wide mode.
enum DateMode { Gregorian = 0, Persian = 1, DefaultDateMode = 2 };
enum TimeSpec { LocalTimeSpec = 0, UtcTimeSpec = 1, OffsetTimeSpec = 2 };
enum AspectRatioMode { IgnoreRatio = 0, FitInsideRatio = 1, FillOutsideRatio = 2 };
} // namespace Vy

// Marks the classes and functions that libvy.so exports. The library is built with hidden
// visibility, so whatever is not marked (internal helpers, template instantiations) stays out
// of the dynamic symbol table and out of the ABI.
#if defined(__GNUC__)
#define VY_EXPORT __attribute__((visibility("default")))
#else
#define VY_EXPORT
#endif

// Ends the process through libc's assertion routine. Never returns.
[[noreturn]] VY_EXPORT void vyAssertFail(const char* condition, const char* file, unsigned line,
                                         const char* function);

#if defined(__GNUC__)
#define VY_FUNCTION_TEXT __PRETTY_FUNCTION__
#else
#define VY_FUNCTION_TEXT __func__
#endif

// Checks `cond`; on failure reports its text with the given source path and line and the
// enclosing function's signature (g++ writes templates as "... [with T = int]").
#define VY_ASSERT_AT(cond, file, line)                                                             \
    ((cond) ? static_cast<void>(0) : vyAssertFail(#cond, file, line, VY_FUNCTION_TEXT))
// VY_ASSERT_AT at one of the VyAssertSites below.
#define VY_ASSERT_SITE(cond, site)                                                                 \
    ((cond) ? static_cast<void>(0)                                                                 \
            : vyAssertFail(#cond, (site).file, (site).line, VY_FUNCTION_TEXT))

// The source path and line a failed check reports.
struct VyAssertSite {
    const char* file;
    unsigned line;
};

// Where the library's checks report themselves. These paths and lines are frozen: the
// framework's crash reports, and the tools that sort them, match these exact texts, so they
// must not follow the code when it is edited or moved. A new check gets its own entry here.
namespace VyAssertSites
{
inline constexpr const char* vectorHeader = "./../include/pub/vyvector";
inline constexpr VyAssertSite vectorLast = {vectorHeader, 724};
inline constexpr VyAssertSite vectorIndexConst = {vectorHeader, 902};
inline constexpr VyAssertSite vectorIndex = {vectorHeader, 906};
inline constexpr VyAssertSite vectorRemove = {vectorHeader, 922};
inline constexpr VyAssertSite vectorRealloc = {vectorHeader, 1004};

inline constexpr const char* listHeader = "./../include/pub/vylist";
inline constexpr VyAssertSite listFirst = {listHeader, 1233};
inline constexpr VyAssertSite listLast = {listHeader, 1245};
inline constexpr VyAssertSite listAt = {listHeader, 1513};
inline constexpr VyAssertSite listIndex = {listHeader, 1521};

// VyListData's operations, which all require an owned block.
inline constexpr const char* listSource = "./src/vylist";
inline constexpr VyAssertSite listDataRealloc = {listSource, 141};
inline constexpr VyAssertSite listDataAppend = {listSource, 153};
inline constexpr VyAssertSite listDataAppendList = {listSource, 179};
inline constexpr VyAssertSite listDataPrepend = {listSource, 199};
inline constexpr VyAssertSite listDataInsert = {listSource, 217};
inline constexpr VyAssertSite listDataRemove = {listSource, 256};
inline constexpr VyAssertSite listDataRemoveRange = {listSource, 271};
inline constexpr VyAssertSite listDataMove = {listSource, 287};
inline constexpr VyAssertSite listDataErase = {listSource, 327};

inline constexpr VyAssertSite hashFindNode = {"./../include/pub/vyhash", 1840};
inline constexpr VyAssertSite hashNextNode = {"./src/vyhash", 193};
inline constexpr VyAssertSite hashPreviousNode = {"./src/vyhash", 239};

inline constexpr VyAssertSite mapFirstKey = {"./../include/pub/vymap", 387};
inline constexpr VyAssertSite mapLastKey = {"./../include/pub/vymap", 392};

inline constexpr VyAssertSite stringAt = {"./../include/pub/vystring", 302};
inline constexpr VyAssertSite stringIndex = {"./../include/pub/vystring", 311};
// replaceArgEscapes' checks of the length it wrote: after the last marker, and at the end.
inline constexpr VyAssertSite argWrittenAfterLastMarker = {"./src/vystring", 622};
inline constexpr VyAssertSite argWrittenAtEnd = {"./src/vystring", 627};
} // namespace VyAssertSites

#endif
