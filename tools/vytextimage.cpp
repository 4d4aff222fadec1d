#include "vytextimage.h"

#include "vybmpdata.h"

#include <png.h>

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

std::vector<unsigned char> enlarge(const std::vector<unsigned char>& pixels, int width, int height,
                                   int scale, bool invert)
{
    const size_t outWidth = size_t(width) * size_t(scale);
    std::vector<unsigned char> out(outWidth * size_t(height) * size_t(scale));
    for (size_t y = 0; y < size_t(height) * size_t(scale); ++y)
        for (size_t x = 0; x < outWidth; ++x) {
            const unsigned char v = pixels[y / size_t(scale) * size_t(width) + x / size_t(scale)];
            out[y * outWidth + x] = invert ? static_cast<unsigned char>(255 - v) : v;
        }
    return out;
}

namespace
{

// Room for one libpng message.
const size_t MessageSize = 200;

// libpng reports an error through this and never returns to its caller: the message goes to
// the buffer given as the error pointer and the write jumps back to its setjmp.
void onPngError(png_structp png, png_const_charp message)
{
    snprintf(static_cast<char*>(png_get_error_ptr(png)), MessageSize, "%s", message);
    png_longjmp(png, 1);
}

// The pixels through libpng into an open file. Everything else that must be released lives in
// the caller, since an error leaves the writing steps by longjmp.
bool encodePng(FILE* f, png_bytep* rows, int width, int height, char* message)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, message, onPngError, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        snprintf(message, MessageSize, "libpng cannot start");
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_init_io(png, f);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 9);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
    png_set_rows(png, info, rows);
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

} // namespace

bool writePng(const std::string& path, const std::vector<unsigned char>& pixels, int width,
              int height, std::string& error)
{
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) {
        error = "cannot write " + path + ": " + strerror(errno);
        return false;
    }
    std::vector<png_bytep> rows(static_cast<size_t>(height));
    for (size_t y = 0; y < rows.size(); ++y)
        rows[y] = const_cast<png_bytep>(&pixels[y * size_t(width)]);
    char message[MessageSize] = "";
    const bool encoded = encodePng(f, rows.data(), width, height, message);
    const bool closed = fclose(f) == 0;
    if (!encoded || !closed) {
        error = "writing " + path + " failed: " + (encoded ? strerror(errno) : message);
        return false;
    }
    return true;
}

bool writeBmp(const std::string& path, const std::vector<unsigned char>& pixels, int width,
              int height, std::string& error)
{
    // The writer reports a file it could not create as it reports success, so the file is
    // created here first and its size checked afterwards.
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) {
        error = "cannot write " + path + ": " + strerror(errno);
        return false;
    }
    fclose(f);
    // The writer only reads the pixels.
    Image image{width, height, 1, const_cast<unsigned char*>(pixels.data())};
    BmpData().SaveImage(path.c_str(), &image);
    const long long stride = (width + 3) / 4 * 4;
    struct stat st;
    if (stat(path.c_str(), &st) != 0 || st.st_size != 1078 + stride * height) {
        error = "writing " + path + " failed";
        return false;
    }
    return true;
}
