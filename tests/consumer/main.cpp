// A program built against an installed libvy, the way a framework uses it: headers from the
// installed include folder, the library through its CMake package or pkg-config. It calls
// into the shared object (an exported function and the vector's shared empty block) and
// checks the answers, so a broken install fails here rather than in the framework. The font
// cache brings in FreeType, which the static library's users must link as well.
#include "vyfontcache.h"
#include "vyglobal.h"
#include "vyvector.h"

#include <stdio.h>

int main()
{
    int failures = 0;

    // 16-byte header plus 13 four-byte elements is 68 bytes; the allocation rule rounds that
    // up to 128 bytes, which hold 28 elements.
    const int capacity = VyVectorData::grow(20, 13, 4, false);
    printf("VyVectorData::grow(20, 13, 4, false) = %d\n", capacity);
    if (capacity != 28) {
        fprintf(stderr, "expected 28\n");
        ++failures;
    }

    VyVector<int> v;
    for (int i = 0; i < 13; ++i)
        v.append(i * i);
    VyVector<int> copy = v;
    copy.append(-1);
    printf("vector: size %d, last %d, copy size %d\n", v.size(), v.last(), copy.size());
    if (v.size() != 13 || v.last() != 144 || copy.size() != 14 || copy.isSharedWith(v)) {
        fprintf(stderr, "expected 13 elements ending in 144 and a detached copy of 14\n");
        ++failures;
    }

    // The font cache pulls in the rasteriser, so a static link needs FreeType as well. No
    // font is opened: a new cache is empty and has no limit.
    VyFontCache* cache = VyFontCache::instance();
    printf("font cache: %d glyphs, %d bytes, limit %d\n", cache->size(), cache->usedBytes,
           cache->limit);
    if (cache->size() != 0 || cache->usedBytes != 0 || cache->limit != -1) {
        fprintf(stderr, "expected an empty font cache without a limit\n");
        ++failures;
    }
    delete cache;

    return failures == 0 ? 0 : 1;
}
