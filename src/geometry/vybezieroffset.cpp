// VyBezier::shifted: offset curves approximated by cubic segments.
//
// For each piece of the curve a candidate cubic is built that matches the true offset
// O(t) = B(t) + d N(t) in position and first derivative at both ends, and is checked against
// O at sample points. A piece whose candidate misses is halved and each half tried again.
//
// The derivative of the offset follows from the curvature k = cross(B', B'') / |B'|^3: the
// normal turns at the rate |B'| k along the tangent, so O'(t) = B'(t) (1 + d k). Matching
// that at both ends makes the error shrink with the fourth power of the piece's length.
#include "vybezier.h"

#include "vybeziermath.h"

using namespace VyBezierMath;

namespace
{

struct Target {
    VyBezier* out;
    int max;
    int count;
    double offset;
    double threshold;
};

Vec offsetAt(const Cubic& c, double t, double d)
{
    return c.at(t) + turned(c.direction(t)) * d;
}

// A third of the offset's derivative at the end t (0 or 1): the length of the handle there.
// Where the curve stands still at the end the curvature is unbounded; the handle then points
// along the end direction with a third of the chord's length, and halving does the rest.
Vec handle(const Cubic& c, double t, double d, double chord)
{
    const Vec v = c.derivative(t);
    const double speed2 = dot(v, v);
    if (speed2 == 0)
        return c.direction(t) * (chord / 3);
    const double k = cross(v, c.second(t)) / (speed2 * sqrt(speed2));
    return v * ((1 + d * k) / 3);
}

bool candidate(const Cubic& c, double d, Cubic* q)
{
    const Vec n0 = turned(c.direction(0)), n1 = turned(c.direction(1));
    if ((n0.x == 0 && n0.y == 0) || (n1.x == 0 && n1.y == 0))
        return false;
    q->p[0] = c.p[0] + n0 * d;
    q->p[3] = c.p[3] + n1 * d;
    const double chord = norm(q->p[3] - q->p[0]);
    q->p[1] = q->p[0] + handle(c, 0, d, chord);
    q->p[2] = q->p[3] - handle(c, 1, d, chord);
    return true;
}

// The distance between the candidate and the offset at the same parameter bounds the
// distance from the candidate's point to the offset curve.
bool follows(const Cubic& c, const Cubic& q, const Target& target)
{
    const int samples = 16;
    for (int i = 1; i < samples; ++i) {
        const double t = double(i) / samples;
        const Vec dir = c.direction(t);
        if (dir.x == 0 && dir.y == 0)
            return false;
        if (!(norm(q.at(t) - offsetAt(c, t, target.offset)) <= target.threshold))
            return false;
    }
    return true;
}

bool standsStill(const Cubic& c, double t)
{
    const Vec v = c.derivative(t);
    return v.x == 0 && v.y == 0;
}

// `inner0` and `inner1` say whether the piece's ends lie inside the whole curve.
bool shiftPiece(const Cubic& c, int depth, bool inner0, bool inner1, Target& target)
{
    // A piece ending where the curve stands still inside it takes its end direction from its
    // own control points, and so does its neighbour: the two offsets may start on opposite
    // sides. Such a curve has no offset.
    if ((inner0 && standsStill(c, 0)) || (inner1 && standsStill(c, 1)))
        return false;
    Cubic q;
    if (candidate(c, target.offset, &q) && follows(c, q, target)) {
        if (target.count == target.max)
            return false;
        target.out[target.count++] = q.toBezier();
        return true;
    }
    if (depth >= 12)
        return false;
    Cubic a, b;
    c.halve(&a, &b);
    return shiftPiece(a, depth + 1, inner0, true, target) &&
           shiftPiece(b, depth + 1, true, inner1, target);
}

} // namespace

int VyBezier::shifted(VyBezier* curveSegments, int maxSegments, float offset, float threshold) const
{
    if (!curveSegments || maxSegments <= 0)
        return 0;
    const Cubic c = Cubic::of(*this);
    const Vec start = c.direction(0);
    if (start.x == 0 && start.y == 0)
        return 0;
    if (offset == 0) {
        curveSegments[0] = *this;
        return 1;
    }
    Target target = {curveSegments, maxSegments, 0, offset, threshold};
    return shiftPiece(c, 0, false, false, target) ? target.count : 0;
}
