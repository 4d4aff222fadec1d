// VyBezier on fuzzed curves, each operation checked against invariants of the curve rather
// than against expected numbers: the halves of split trace the curve and meet, the length lies
// between a fine inscribed polyline and the control polygon and is the sum of the halves'
// lengths, tAtLength finds the parameter at which a given arc length is reached, bounds hold
// every point of the curve and touch its extremes, and the offset segments of shifted start
// and end where the offset does, meet each other and stay near the true offset curve.
//
// Input layout (at least 21 bytes):
//     bytes 0-15  the eight coordinates x1, y1, ..., y4: signed 16-bit little-endian / 128,
//                 so in [-256, 256)
//     byte 16     the length error, (1 + b % 100) / 100 pixels
//     byte 17     the parameter whose arc length tAtLength must find again, b / 255
//     byte 18     the offset for shifted, signed / 16 pixels
//     byte 19     its threshold, 0.05 + b / 255 pixels
//     byte 20     its segment budget, 1 + b % kMaxSegments
#include "fuzz_check.h"
#include "vybezier.h"

#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <vector>

namespace
{

constexpr int kMaxSegments = 16;

double distance(const VyPointF& a, const VyPointF& b)
{
    return hypot(double(a.x) - b.x, double(a.y) - b.y);
}

VyPointF along(const VyPointF& p, const VyPointF& direction, double d)
{
    return VyPointF(float(p.x + direction.x * d), float(p.y + direction.y * d));
}

double toSegment(const VyPointF& p, const VyPointF& a, const VyPointF& b)
{
    const double ax = double(b.x) - a.x, ay = double(b.y) - a.y, l2 = ax * ax + ay * ay;
    const double u = l2 > 0 ? std::clamp(((p.x - a.x) * ax + (p.y - a.y) * ay) / l2, 0.0, 1.0) : 0;
    return hypot(a.x + u * ax - p.x, a.y + u * ay - p.y);
}

// The offset curve B(t) + d N(t) as a polyline within about kFlatness pixels of it. Pieces
// are halved (at least 5 times, at most 20) until the points at a quarter, a half and three
// quarters of the piece lie that close to its chord and the normal turns by less than about
// 10 degrees from either end to the middle: where the curve nearly stands still the normal
// swings round within a tiny range of t, and the offset sweeps an arc there.
struct OffsetCurve {
    static constexpr double kFlatness = 0.01;
    const VyBezier& b;
    double d;
    std::vector<VyPointF> points;

    OffsetCurve(const VyBezier& curve, double offset) : b(curve), d(offset)
    {
        points.push_back(at(0));
        flatten(0, 1, at(0), at(1), 0);
    }
    VyPointF at(double t) const { return along(b.pointAt(float(t)), b.normalVector(float(t)), d); }
    bool turnsLittle(double t0, double t1) const
    {
        const VyPointF n0 = b.normalVector(float(t0)), n1 = b.normalVector(float(t1));
        return double(n0.x) * n1.x + double(n0.y) * n1.y >= 0.985;
    }
    void flatten(double t0, double t1, const VyPointF& p0, const VyPointF& p1, int depth)
    {
        const double quarter = (t1 - t0) / 4, middle = t0 + 2 * quarter;
        const VyPointF m = at(middle);
        if (depth >= 20 || (depth >= 5 && toSegment(m, p0, p1) <= kFlatness &&
                            toSegment(at(t0 + quarter), p0, p1) <= kFlatness &&
                            toSegment(at(t1 - quarter), p0, p1) <= kFlatness &&
                            turnsLittle(t0, middle) && turnsLittle(middle, t1))) {
            points.push_back(p1);
            return;
        }
        flatten(t0, middle, p0, m, depth + 1);
        flatten(middle, t1, m, p1, depth + 1);
    }
    double distanceTo(const VyPointF& p) const
    {
        double best = distance(points[0], p);
        for (size_t i = 1; i < points.size(); ++i)
            best = std::min(best, toSegment(p, points[i - 1], points[i]));
        return best;
    }
};

float coordinate(const uint8_t* p)
{
    int16_t v;
    memcpy(&v, p, 2);
    return float(v) / 128;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 21)
        return 0;
    VyBezier b;
    float* fields[] = {&b.x1, &b.y1, &b.x2, &b.y2, &b.x3, &b.y3, &b.x4, &b.y4};
    double scale = 1;
    for (int i = 0; i < 8; ++i) {
        *fields[i] = coordinate(data + 2 * i);
        scale = std::max(scale, double(fabsf(*fields[i])));
    }
    // Float rounding of results computed in double, relative to the coordinates.
    const double eps = 1e-5 * scale;

    VyBezier first, second;
    b.split(&first, &second);
    FUZZ_CHECK(first.pt1() == b.pt1() && second.pt4() == b.pt4() && first.pt4() == second.pt1());
    for (double u : {0.0, 0.3, 0.7, 1.0}) {
        FUZZ_CHECK(distance(first.pointAt(float(u)), b.pointAt(float(u / 2))) <= eps);
        FUZZ_CHECK(distance(second.pointAt(float(u)), b.pointAt(float(0.5 + u / 2))) <= eps);
    }

    const double error = (1 + data[16] % 100) / 100.0;
    const double length = b.length(float(error));
    double inscribed = 0;
    for (int i = 1; i <= 256; ++i)
        inscribed += distance(b.pointAt(float(i - 1) / 256), b.pointAt(float(i) / 256));
    const double polygon =
        distance(b.pt1(), b.pt2()) + distance(b.pt2(), b.pt3()) + distance(b.pt3(), b.pt4());
    FUZZ_CHECK(length >= inscribed - error - eps && length <= polygon + eps);
    FUZZ_CHECK(fabs(first.length(float(error)) + second.length(float(error)) - length) <=
               2 * error + eps);

    const double s = data[17] / 255.0;
    const double target = b.bezierOnInterval(0, float(s)).length(0.001f);
    const double t = b.tAtLength(float(target));
    FUZZ_CHECK(t >= 0 && t <= 1);
    FUZZ_CHECK(fabs(b.bezierOnInterval(0, float(t)).length(0.001f) - target) <= 0.02 + eps);
    FUZZ_CHECK(b.tAtLength(0) == 0 && b.tAtLength(float(length + 2 * error + 1)) == 1);

    // The curve moves at most `speed` per unit of t, so each extreme lies within half a step
    // of speed of a sample.
    const VyRectF box = b.bounds();
    const double speed = 3 * polygon, step = 1.0 / 64;
    double left = b.x1, right = left, top = b.y1, bottom = top;
    for (int i = 0; i <= 64; ++i) {
        const VyPointF p = b.pointAt(float(i * step));
        FUZZ_CHECK(p.x >= box.x - eps && p.x <= box.x + box.width + eps);
        FUZZ_CHECK(p.y >= box.y - eps && p.y <= box.y + box.height + eps);
        left = std::min(left, double(p.x));
        right = std::max(right, double(p.x));
        top = std::min(top, double(p.y));
        bottom = std::max(bottom, double(p.y));
    }
    const double slack = speed * step / 2 + eps;
    FUZZ_CHECK(left - box.x <= slack && box.x + box.width - right <= slack);
    FUZZ_CHECK(top - box.y <= slack && box.y + box.height - bottom <= slack);

    const double offset = int8_t(data[18]) / 16.0;
    const double threshold = 0.05 + data[19] / 255.0;
    VyBezier segments[kMaxSegments];
    const int budget = 1 + data[20] % kMaxSegments;
    const int n = b.shifted(segments, budget, float(offset), float(threshold));
    FUZZ_CHECK(n >= 0 && n <= budget);
    if (n == 0)
        return 0;
    const OffsetCurve shifted(b, offset);
    FUZZ_CHECK(distance(segments[0].pt1(), shifted.at(0)) <= eps);
    FUZZ_CHECK(distance(segments[n - 1].pt4(), shifted.at(1)) <= eps);
    const double tolerance = 2 * threshold + OffsetCurve::kFlatness + eps;
    for (int k = 0; k < n; ++k) {
        if (k > 0)
            FUZZ_CHECK(distance(segments[k - 1].pt4(), segments[k].pt1()) <= eps);
        // Between the points at which the library checks its threshold.
        for (double u : {1 / 32.0, 15 / 32.0, 27 / 32.0})
            FUZZ_CHECK(shifted.distanceTo(segments[k].pointAt(float(u))) <= tolerance);
    }
    return 0;
}
