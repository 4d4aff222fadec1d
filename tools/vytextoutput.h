// vytext's printed forms of a layout: the plain lines, the --dump text and the --json object.
#ifndef VYTEXTOUTPUT_H
#define VYTEXTOUTPUT_H

#include "vytextlayout.h"

#include <stdio.h>

// The line texts, one per line.
void printLines(FILE* out, const TextLayout& layout);
// Everything as text: a header, one "line" row per line and one "record" row per record.
void printDump(FILE* out, const TextLayout& layout, int fontSize);
// Everything as one JSON object followed by a newline.
void printJson(FILE* out, const TextLayout& layout, int fontSize);

#endif
