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

#endif
