// The paint list: the records of the last division placed inside the text box.
#include "vyfontmetrics.h"

namespace
{

// The left edge of a line w pixels wide inside a box from x1, W pixels wide.
int leftEdge(int horizontal, bool rtl, int x1, int W, int w)
{
    // Right-to-left text mirrors left and right; centre stays centre.
    if (horizontal == VyFontMetrics::AlignHCenter)
        return x1 + (W - w) / 2;
    const bool right = (horizontal == VyFontMetrics::AlignRight) != rtl;
    return right ? x1 + W - w : x1;
}

} // namespace

VyVector<PaintInfo>& VyFontMetrics::paintInfoList()
{
    if (layoutDirty)
        divideText();
    if (lines.isEmpty())
        return paintList;
    const int x1 = textRect.x1;
    const int y1 = textRect.y1;
    const int W = textRect.x2 + 1 - x1;
    const int H = textRect.y2 + 1 - y1;
    if (!(alignment & AlignHorizontalMask))
        alignment += AlignLeft;
    if (!(alignment & AlignVerticalMask))
        alignment += AlignTop;
    const int horizontal = alignment & AlignHorizontalMask;
    const int vertical = alignment & AlignVerticalMask;

    // Kept: only the bottom edges move, and they move again on every call, so a record
    // carries its line's relative top and its absolute bottom, and a second call without a new
    // division shifts the bottoms once more (measured from the moved last record). The
    // framework's painter reads the records this way. Bottom alignment puts the last bottom
    // edge one pixel below the box.
    int dy = y1;
    if (vertical == AlignBottom)
        dy = y1 + H - paintList.last().rect.y2;
    else if (vertical == AlignVCenter)
        dy = y1 + (H - paintList.last().rect.y2) / 2;

    // Kept: widths come from the rectangle list by line number while the records are in build
    // order; for right-to-left text of three or more lines the two differ and a record is
    // placed with another line's width, which the framework's layouts already account for.
    const bool rtl = isRightToLeft();
    const VyList<VyRect>& rects = lineRects();
    const int count = lines.size();
    for (int i = 0; i < count; ++i) {
        const VyRect& r = rects.at(i);
        const int left = leftEdge(horizontal, rtl, x1, W, r.x2 - r.x1 + 1);
        VyRect& p = paintList[i].rect;
        p.x2 = p.x2 - p.x1 + left;
        p.x1 = left;
        p.y2 += dy;
    }
    return paintList;
}
