// vytext's command line: the options, their checks and the help text.
#ifndef VYTEXTOPTIONS_H
#define VYTEXTOPTIONS_H

#include <string>

enum class OutputFormat { Lines, Dump, Json };
// Chosen by the -o file name's extension.
enum class ImageFormat { Bmp, Png };

struct VyTextOptions {
    // The TEXT argument as given; "-" reads standard input.
    std::string text;
    // Empty: VY_FONTLIB, else the Debian unifont file.
    std::string font;
    int size = 16;
    bool hasBox = false;
    int boxX = 0;
    int boxY = 0;
    int boxW = 0;
    int boxH = 0;
    bool wrap = false;
    // -1 leaves the library's default alignment.
    int alignment = -1;
    int lineSpacing = 0;
    int letterSpacing = 0;
    bool bold = false;
    bool heavy = false;
    int cacheLimit = -1;
    std::string image;
    ImageFormat imageFormat = ImageFormat::Bmp;
    // Each box pixel becomes a scale × scale square of the image.
    int scale = 1;
    // Light text on a dark background.
    bool invert = false;
    OutputFormat format = OutputFormat::Lines;
    bool help = false;
};

// Reads the command line into `options`. On a bad command line returns false with a one-line
// reason in `error` (without the program name).
bool parseOptions(int argc, char** argv, VyTextOptions& options, std::string& error);

// The --help text.
const char* helpText();

#endif
