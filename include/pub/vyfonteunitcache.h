// VyFonteUnitCache: the store of every glyph rendered in the life of the cache.
//
// Records (GlyphBitmap, by value) live in a chain of blocks of 2, 4, 8, ... records that are
// never resized or freed one by one, so a pointer to a record stays valid until clean(),
// releaseDat() or destruction. The class is the hash from glyph key to record: the key is
// the unit in bits 0-15, the pixel size in bits 16-23 and the style number (fontFlag,
// VyFont::propertyFlag) in bits 24-31. Every record owns its pixel buffer. Under memory
// pressure the pixels of records nobody holds are dropped while the records, metrics and keys
// stay; fresh pixels can later be attached to the same record.
//
// `usedBytes` accounts pixel memory as width * rows of every record with pixels; `limit` is
// the caller's bound for it (-1: none). Neither is enforced here.
//
// Threads: no locking of its own. VyFontCache, derived from it, runs lookups under the read
// side and every change under the write side of its lock; holders change `refCount`
// atomically without any lock.
#ifndef VYFONTEUNITCACHE_H
#define VYFONTEUNITCACHE_H

#include "vyglobal.h"

#include "vyfont.h"
#include "vyhash.h"
#include "vyvector.h"

class VY_EXPORT VyFonteUnitCache : public VyHash<int, GlyphBitmap*>
{
public:
    // One block of records, filled from index 0 upwards.
    struct BlockUnit {
        int capacity;
        int count;
        // `capacity` records from malloc.
        GlyphBitmap* records;

        // capacity = n and records = malloc of n records (unchecked); count is left as it is.
        static void allocMemory(BlockUnit* unit, int n);
        // Frees the pixels of the first `count` records that have any (nulling them), then the
        // array; records becomes null.
        void release();
    };

    // The blocks in order of creation; only the last one receives records.
    class BlockMM : public VyVector<BlockUnit>
    {
    public:
        // Makes sure the last block has a free slot: when it is full, appends an empty block
        // of twice its capacity. Asserts that there is a block.
        void greathMemory();
        // Copies every field of g into the next free slot; the block owns g's buffer from now
        // on. Returns the stored record, whose address never changes.
        GlyphBitmap* append(GlyphBitmap g);
        // Releases every block in order and empties the vector.
        void release();
    };

    // Empty map, no limit, no pixels, one empty block of capacity 2.
    VyFonteUnitCache();
    ~VyFonteUnitCache();
    VyFonteUnitCache(const VyFonteUnitCache&) = delete;
    VyFonteUnitCache& operator=(const VyFonteUnitCache&) = delete;

    // The glyph key of a unit at a pixel size and a style number.
    static int glyphKey(unsigned short unicode, unsigned char fontSize, int style)
    {
        return int(uint(unicode) | uint(fontSize) << 16 | uint(style) << 24);
    }
    // The style number of the key: 2 for boldFace, plus 1 for heavyFace. Agrees with
    // VyFont::propertyFlag, which builds the lookup key.
    static int fontFlag(FontAttr attr)
    {
        return (attr.boldFace ? 2 : 0) + (attr.heavyFace ? 1 : 0);
    }

    // The record of `code` in `font`, or null. The record's buffer is null when its pixels
    // were purged.
    GlyphBitmap* fontTable(unsigned short code, VyFont font) const
    {
        return value(glyphKey(code, font.fontSize(), font.propertyFlag()));
    }
    // Stores a copy of g (taking over its buffer), maps g's key to it and accounts its pixels.
    // A key already present is mapped to the new record; the old record stays in its block.
    GlyphBitmap* addFontInfo(const GlyphBitmap& g);
    // Attaches g's buffer to the record stored under g's key and accounts it; no other field
    // changes. The key must be present. Returns the record.
    GlyphBitmap* addfontMetrics(const GlyphBitmap& g);
    // Frees the pixels of every mapped record with pixels and no holders. O(records);
    // allocates the list of records.
    void cleanAllFontMetrics();

    // Builds the block store (one empty block of capacity 2).
    void createDat();
    // Empties the map and frees every record, pixel buffer and block; no store is left.
    void releaseDat();
    // Back to the state after construction; `limit` is kept.
    void clean();

    BlockMM* blockMM;
    // Bound for usedBytes in accounted bytes; -1 means none.
    int limit;
    // Sum of width * rows over the records whose pixels are present.
    // Kept: the count is width * rows, not the rows * pitch bytes actually allocated (pitch
    // may exceed width); the framework's memory limits are tuned against this count.
    int usedBytes;
};

#endif
