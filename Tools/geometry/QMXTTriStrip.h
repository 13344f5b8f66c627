// Triangle strips from an indexed triangle list.
//
// Triangles are adjacent across an edge when the other triangle holds the same edge in the opposite
// direction (an edge shared by more than two triangles keeps its first pairing in triangle order, two
// triangles pair across one edge at most, and triangles that repeat an index pair with nobody).
// Strips are grown from triangles with a single neighbour, then improved by passes over the triangles
// in a pseudo-random order, regrowing strips from every edge until two passes bring no gain. The whole
// process runs five times with the seeds 0 to 4 of the C library's generator sequence, and the run
// with the fewest strips (the first on a tie) is kept, so the result is deterministic. The caller's
// own rand() state is not touched.
//
// Cost: adjacency in O(T) for manifold meshes (O(k^2) for an edge shared by k triangles); O(T log T)
// a pass for the pseudo-random order, which is skipped when no walk of the pass can be kept (such a
// pass changes nothing in any order). Growth walks are only simulated where they can change
// something: a walk that cannot take in a whole existing strip is known to fail and is skipped (a
// path graph over (triangle, edge, winding) states answers that), and a walk repeated right after
// it was kept skips the strip it just made. The remaining walks cost their length. Working memory
// is about 270 bytes a triangle.
#pragma once

#include <cstdint>

// Turns a triangle list into strips. Arguments, in order: the strip indices and strip lengths
// (allocated here with malloc; the caller frees them), the strip count, the triangle list (three
// 32-bit indices a triangle) and the triangle count. A strip of n triangles holds n + 2 indices; its
// first triangle keeps the winding of the input triangle and the winding alternates along the strip.
// Returns 0, or 1 for a missing argument or an allocation failure (outputs then untouched). With no
// triangles the arrays are null and the count 0.
int QMXTTriStrip(uint32_t** ppnStripIdx, uint32_t** ppnStripLen, uint32_t* pnStripNum, const uint32_t* pnIdx,
                 uint32_t nTriNum);

// Reorders a triangle list in place into strip order, still as a list: every input triangle appears
// once, with its winding (its corners may be rotated). Returns 0, or 1 as QMXTTriStrip (list untouched).
int QMXTTriStripList(uint32_t* pnIdx, uint32_t nTriNum);
