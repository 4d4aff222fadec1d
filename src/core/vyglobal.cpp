#include "vyglobal.h"

#include <stdio.h>
#include <stdlib.h>

#if defined(__GLIBC__)
// <assert.h> hides libc's routine under NDEBUG; the library's checks never switch off.
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));
#endif

void vyAssertFail(const char* condition, const char* file, unsigned line, const char* function)
{
#if defined(__GLIBC__)
    __assert_fail(condition, file, line, function);
#else
    fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", file, line, function, condition);
    abort();
#endif
}
