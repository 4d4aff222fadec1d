#include "vysize.h"

#include <stdint.h>

void VySize::scale(const VySize& s, Vy::AspectRatioMode mode)
{
    if (mode == Vy::IgnoreRatio || width == 0 || height == 0) {
        *this = s;
        return;
    }
    // The width that goes with the target's height; 64-bit so that large sizes cannot
    // overflow the product.
    const int64_t rw = int64_t(s.height) * width / height;
    const bool byHeight = mode == Vy::FitInsideRatio ? rw <= s.width : rw >= s.width;
    if (byHeight) {
        width = int(rw);
        height = s.height;
    } else {
        height = int(int64_t(s.width) * height / width);
        width = s.width;
    }
}

void VySizeF::scale(const VySizeF& s, Vy::AspectRatioMode mode)
{
    if (mode == Vy::IgnoreRatio || width == 0 || height == 0) {
        *this = s;
        return;
    }
    const float rw = s.height * width / height;
    const bool byHeight = mode == Vy::FitInsideRatio ? rw <= s.width : rw >= s.width;
    if (byHeight) {
        width = rw;
        height = s.height;
    } else {
        height = s.width * height / width;
        width = s.width;
    }
}
