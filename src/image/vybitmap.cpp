// VyBitmap: construction, header reading and checking, the colour table. Pixel decoding is in
// vybitmapdecode.cpp.
#include "vybitmap.h"

#include <string.h>

namespace
{

constexpr uint16_t kBmpMagic = 19778; // "BM" read as a little-endian 16-bit value

struct PaletteEntry {
    int index;
    uint8_t red, green, blue;
};

// The 16 colours of the standard 4-bit palette, also most of the fixed 8-bit entries.
const PaletteEntry kStandard16[] = {
    {0, 0, 0, 0},       {1, 128, 0, 0},    {2, 0, 128, 0},    {3, 128, 128, 0},
    {4, 0, 0, 128},     {5, 128, 0, 128},  {6, 0, 128, 128},  {7, 128, 128, 128},
    {8, 192, 192, 192}, {9, 255, 0, 0},    {10, 0, 255, 0},   {11, 255, 255, 0},
    {12, 0, 0, 255},    {13, 255, 0, 255}, {14, 0, 255, 255}, {15, 255, 255, 255},
};

// The 20 fixed entries laid over the 8-bit colour cube.
const PaletteEntry kStandard256Fixed[] = {
    {0, 0, 0, 0},         {1, 128, 0, 0},     {2, 0, 128, 0},       {3, 128, 128, 0},
    {4, 0, 0, 128},       {5, 128, 0, 128},   {6, 0, 128, 128},     {7, 192, 192, 192},
    {8, 192, 220, 192},   {9, 166, 202, 240}, {246, 255, 251, 240}, {247, 160, 160, 164},
    {248, 128, 128, 128}, {249, 255, 0, 0},   {250, 0, 255, 0},     {251, 255, 255, 0},
    {252, 0, 0, 255},     {253, 255, 0, 255}, {254, 0, 255, 255},   {255, 255, 255, 255},
};

RGBApixel rgb(uint8_t red, uint8_t green, uint8_t blue)
{
    return RGBApixel{blue, green, red, 255};
}

const RGBApixel kAllOnes = {255, 255, 255, 255};

bool hasColorTable(int depth)
{
    return depth == 1 || depth == 4 || depth == 8;
}

uint16_t swap16(uint16_t v)
{
    return uint16_t((v >> 8) | (v << 8));
}

uint32_t swap32(uint32_t v)
{
    return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}

int32_t swap32(int32_t v)
{
    return int32_t(swap32(uint32_t(v)));
}

} // namespace

VyBitmap::VyBitmap()
    : width(0), height(0), bitDepth(0), stream(nullptr), pixels(nullptr), colors(nullptr),
      xPelsPerMeter(0), yPelsPerMeter(0), ownsStream(true)
{
    init();
}

VyBitmap::VyBitmap(const char* path) : VyBitmap()
{
    stream = fopen(path, "rb");
    if (!stream) {
        printf("Open %s file failed.\n", path);
        return;
    }
    if (!readHeaderInfo()) {
        fclose(stream);
        stream = nullptr;
        puts("VyBitmap(): BMP header error !!!");
    }
}

VyBitmap::VyBitmap(FILE* file) : VyBitmap()
{
    ownsStream = false;
    stream = file;
    if (!stream) {
        puts("VyBitmap(): open buffer failed !!!");
        return;
    }
    fseek(stream, 0, SEEK_SET);
    if (!readHeaderInfo()) {
        stream = nullptr;
        puts("VyBitmap(): BMP header error !!!");
    }
}

VyBitmap::~VyBitmap()
{
    delete[] colors;
    if (stream && ownsStream)
        fclose(stream);
}

void VyBitmap::init()
{
    memset(&bmfh, 0, sizeof bmfh);
    memset(&bmih, 0, sizeof bmih);
    ownsStream = true;
}

bool VyBitmap::readHeaderInfo()
{
    if (!stream)
        return false;
    safeFread(reinterpret_cast<char*>(&bmfh.bfType), 2, 1, stream);
    if (bmfh.bfType != kBmpMagic) {
        puts("The format of this image file is not bmp file.");
        return false;
    }

    // Every field is attempted even after a failure; one message covers them all.
    bool ok = true;
    auto field = [&](auto& f) {
        ok = safeFread(reinterpret_cast<char*>(&f), int(sizeof f), 1, stream) && ok;
    };
    field(bmfh.bfSize);
    field(bmfh.bfReserved1);
    field(bmfh.bfReserved2);
    field(bmfh.bfOffBits);
    field(bmih.biSize);
    field(bmih.biWidth);
    field(bmih.biHeight);
    field(bmih.biPlanes);
    field(bmih.biBitCount);
    field(bmih.biCompression);
    field(bmih.biSizeImage);
    field(bmih.biXPelsPerMeter);
    field(bmih.biYPelsPerMeter);
    field(bmih.biClrUsed);
    field(bmih.biClrImportant);
    if (!ok) {
        puts("Read information of bmp file header failed.");
        return false;
    }

    xPelsPerMeter = bmih.biXPelsPerMeter;
    yPelsPerMeter = bmih.biYPelsPerMeter;

    const uint32_t compression = bmih.biCompression;
    const int depth = bmih.biBitCount;
    if (compression == 1 || compression == 2) {
        puts("Can not support RLE compression.");
        return false;
    }
    if (compression >= 4) {
        puts("Can not support this compression format.");
        return false;
    }
    if (compression == 3 && depth != 16) {
        puts("This format could use bit fields and is not a 16-bit file,we can't support.");
        return false;
    }
    if (compression == 0 && depth != 1 && depth != 4 && depth != 8 && depth != 16 && depth != 24 &&
        depth != 32) {
        puts("Unrecognized bit depth.");
        return false;
    }

    setBitDepth(depth);

    if (bmih.biWidth > 0 && bmih.biHeight > 0) {
        width = bmih.biWidth;
        height = bmih.biHeight;
        return true;
    }
    puts("This file has a non-positive width or height.");
    return false;
}

bool VyBitmap::setBitDepth(int depth)
{
    bitDepth = depth;
    delete[] colors;
    colors = nullptr;
    if (hasColorTable(depth)) {
        colors = new RGBApixel[size_t(1) << depth];
        createStandardColorTable();
    }
    return true;
}

int VyBitmap::tellNumberOfColors()
{
    if (bitDepth < 1)
        return 1;
    // Kept: see the header; a 32-bit image reports the 24-bit count.
    if (bitDepth >= 24)
        return 1 << 24;
    return 1 << bitDepth;
}

bool VyBitmap::createStandardColorTable()
{
    if (!colors)
        return false;
    if (bitDepth == 1) {
        colors[0] = rgb(0, 0, 0);
        colors[1] = rgb(255, 255, 255);
    } else if (bitDepth == 4) {
        for (const PaletteEntry& e : kStandard16)
            colors[e.index] = rgb(e.red, e.green, e.blue);
    } else if (bitDepth == 8) {
        // A 8 × 8 × 4 colour cube, then the fixed system colours at both ends.
        for (int n = 0; n < 256; ++n)
            colors[n] =
                rgb(uint8_t((n % 8) * 32), uint8_t(((n / 8) % 8) * 32), uint8_t((n / 64) * 64));
        for (const PaletteEntry& e : kStandard256Fixed)
            colors[e.index] = rgb(e.red, e.green, e.blue);
    }
    return true;
}

// Kept: "lacksa" and "thatlacks" are the messages as this version prints them; log filters
// in the field match these exact lines.
RGBApixel VyBitmap::getColor(int index)
{
    if (!hasColorTable(bitDepth)) {
        puts("Attempted to access color table for a BMP object that lacksa color table. "
             "Ignoring request.");
        return kAllOnes;
    }
    if (!colors) {
        puts("Requested a color, but the color table is not defined. Ignoring request.");
        return kAllOnes;
    }
    return colors[index];
}

bool VyBitmap::setColor(int index, RGBApixel colour)
{
    if (!hasColorTable(bitDepth)) {
        puts("Attempted to change color table for a BMP object thatlacks a color table. "
             "Ignoring request.");
        return false;
    }
    if (!colors) {
        puts("No color to set.");
        return false;
    }
    colors[index] = colour;
    return true;
}

bool VyBitmap::safeFread(char* buffer, int size, int count, FILE* file)
{
    if (feof(file))
        return false;
    return fread(buffer, size_t(size), size_t(count), file) >= size_t(count);
}

void VyBitmap::bmfhSwitchEndianess()
{
    bmfh.bfType = swap16(bmfh.bfType);
    bmfh.bfSize = swap32(bmfh.bfSize);
    bmfh.bfReserved1 = swap16(bmfh.bfReserved1);
    bmfh.bfReserved2 = swap16(bmfh.bfReserved2);
    bmfh.bfOffBits = swap32(bmfh.bfOffBits);
}

void VyBitmap::bmihSwitchEndianess()
{
    bmih.biSize = swap32(bmih.biSize);
    bmih.biWidth = swap32(bmih.biWidth);
    bmih.biHeight = swap32(bmih.biHeight);
    bmih.biPlanes = swap16(bmih.biPlanes);
    bmih.biBitCount = swap16(bmih.biBitCount);
    bmih.biCompression = swap32(bmih.biCompression);
    bmih.biSizeImage = swap32(bmih.biSizeImage);
    bmih.biXPelsPerMeter = swap32(bmih.biXPelsPerMeter);
    bmih.biYPelsPerMeter = swap32(bmih.biYPelsPerMeter);
    bmih.biClrUsed = swap32(bmih.biClrUsed);
    bmih.biClrImportant = swap32(bmih.biClrImportant);
}
