// The fuzz targets' invariant check: stays on in every build (assert would vanish under
// NDEBUG) and aborts so libFuzzer keeps the input.
#ifndef VY_FUZZ_CHECK_H
#define VY_FUZZ_CHECK_H

#include "vystring.h"

#include <stdio.h>
#include <stdlib.h>

#define FUZZ_CHECK(cond)                                                                           \
    do {                                                                                           \
        if (!(cond)) {                                                                             \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);               \
            abort();                                                                               \
        }                                                                                          \
    } while (0)

// A string's buffer holds its text and a 0 unit after it; an empty string may have none.
inline void checkTerminated(const VyString& s)
{
    if (!s.unicode()) {
        FUZZ_CHECK(s.size() == 0);
        return;
    }
    FUZZ_CHECK(s.size() >= 0 && s.size() < s.d->alloc);
    FUZZ_CHECK(s.unicode()[s.size()] == 0);
}

#endif
