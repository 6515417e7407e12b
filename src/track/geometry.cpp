// One track's barrier lines made ready: closed, kept apart, their normals and the distance along them.

#include "track/track.h"

#include <cmath>
#include <cstdint>

#include "shell/angles.h"

namespace {

// j = (i - 1) mod n with the subtraction done on 32-bit unsigned numbers.
// Kept: point 0's predecessor is 4294967295 mod n, not the last point that
// (i + n - 1) % n would give; pinned by TrackLoad.With100PairsPoint0IsNotComparedWithTheLastPoint
unsigned int previous(unsigned int i, unsigned int n) {
    return (uint32_t)((uint32_t)i - 1u) % (uint32_t)n;
}

}  // namespace

void sTrack::buildGeometry() {
    const unsigned int n = nLRpoints;
    // Close both barrier lines with a copy of the first pair.
    Lpoint[n] = Lpoint[0];
    Rpoint[n] = Rpoint[0];

    // Neighbours that share an x or a z would give the collision test a
    // vertical or horizontal segment; a hundredth of a unit keeps them apart.
    if (n > 0) {
        for (unsigned int i = 0; i <= n; i++) {
            unsigned int j = previous(i, n);
            if (Lpoint[i].x == Lpoint[j].x) Lpoint[i].x += 0.01f;
            if (Lpoint[i].z == Lpoint[j].z) Lpoint[i].z += 0.01f;
            if (Rpoint[i].x == Rpoint[j].x) Rpoint[i].x -= 0.01f;
            if (Rpoint[i].z == Rpoint[j].z) Rpoint[i].z -= 0.01f;
        }
    }

    // Normals from the mean direction of the incoming and outgoing segments.
    // The arctangent loses the sense of direction, so each normal is turned to
    // agree with its predecessor, starting from the start straight at point 0.
    LNpoint[0] = {1.0f, 0.0f};
    RNpoint[0] = {-1.0f, 0.0f};
    for (unsigned int i = 1; i < n; i++) {
        unsigned int p = (i - 1) % n, q = (i + 1) % n;
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            float spandz = P[q].z - P[p].z;
            float dx1 = P[i].x - P[p].x, dz1 = P[i].z - P[p].z;
            float dx2 = P[q].x - P[i].x, dz2 = P[q].z - P[i].z;
            if (dx1 == 0) dx1 = 0.1f;
            if (dx2 == 0) dx2 = 0.1f;
            float angle = (std::atan(dz1 / dx1) + std::atan(dz2 / dx2)) / 2;
            if (dx1 > 0 && dx2 > 0) angle += (float)(PI / 2);
            if (dx1 < 0 && dx2 < 0) angle -= (float)(PI / 2);
            float t = std::tan(angle);
            float root = std::sqrt(t * t + 1);
            if (root == 0) root = 0.1f;
            float c = 1 / root;
            bool negate = side == 0 ? spandz > 0 : !(spandz > 0);
            if (negate)
                N[i] = {-c, -c * t};
            else
                N[i] = {c, c * t};
            if (std::fabs(N[i].x - N[i - 1].x) > 1 || std::fabs(N[i].z - N[i - 1].z) > 1) {
                N[i].x *= -1.0f;
                N[i].z *= -1.0f;
            }
        }
    }
    // The drawing reads one normal past the last pair, where the line closes.
    LNpoint[n] = LNpoint[0];
    RNpoint[n] = RNpoint[0];

    // Distance along each barrier, for the textures that run along it.
    LTcoord[0] = RTcoord[0] = 0;
    if (n > 0) {
        float lsum = 0, rsum = 0;
        for (unsigned int i = 0; i <= n; i++) {
            unsigned int j = previous(i, n);
            float dx = Lpoint[i].x - Lpoint[j].x, dz = Lpoint[i].z - Lpoint[j].z;
            lsum += std::sqrt(dx * dx + dz * dz);
            LTcoord[i] = lsum;
            dx = Rpoint[i].x - Rpoint[j].x;
            dz = Rpoint[i].z - Rpoint[j].z;
            rsum += std::sqrt(dx * dx + dz * dz);
            RTcoord[i] = rsum;
        }
    }
}
