// The fuzz targets' invariant check: stays on in every build (assert would vanish under
// NDEBUG) and aborts so libFuzzer keeps the input.
#ifndef VY_FUZZ_CHECK_H
#define VY_FUZZ_CHECK_H

#include <stdio.h>
#include <stdlib.h>

#define FUZZ_CHECK(cond)                                                                           \
    do {                                                                                           \
        if (!(cond)) {                                                                             \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);               \
            abort();                                                                               \
        }                                                                                          \
    } while (0)

#endif
