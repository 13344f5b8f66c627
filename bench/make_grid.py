#!/usr/bin/env python3
"""Writes a flat grid of N x N quads (2 N^2 triangles) as OUT.gltf + OUT.bin: positions, normals and
32-bit indices, one mesh on one node. Standard library only.

    python3 bench/make_grid.py OUT_BASENAME [N]   (N defaults to 1000)
"""

import array
import json
import os
import sys


def main():
    base = sys.argv[1]
    n = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    side = n + 1
    pos = array.array("f")
    for j in range(side):
        y = j / n
        for i in range(side):
            pos.extend((i / n, 0.0, y))
    nrm = array.array("f", (0.0, 1.0, 0.0)) * (side * side)
    idx = array.array("I")
    for j in range(n):
        row = j * side
        for i in range(n):
            a = row + i
            b, c, d = a + 1, a + side, a + side + 1
            idx.extend((a, c, b, b, c, d))
    if sys.byteorder != "little":
        for a in (pos, nrm, idx):
            a.byteswap()
    blobs = [pos.tobytes(), nrm.tobytes(), idx.tobytes()]
    offsets = [0, len(blobs[0]), len(blobs[0]) + len(blobs[1])]
    with open(base + ".bin", "wb") as out:
        for b in blobs:
            out.write(b)
    count = side * side
    doc = {
        "asset": {"version": "2.0", "generator": "make_grid.py"},
        "scene": 0,
        "scenes": [{"nodes": [0]}],
        "nodes": [{"name": "Grid", "mesh": 0}],
        "meshes": [{"name": "Grid", "primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2}]}],
        "buffers": [{"byteLength": sum(len(b) for b in blobs), "uri": os.path.basename(base) + ".bin"}],
        "bufferViews": [
            {"buffer": 0, "byteOffset": offsets[0], "byteLength": len(blobs[0]), "target": 34962},
            {"buffer": 0, "byteOffset": offsets[1], "byteLength": len(blobs[1]), "target": 34962},
            {"buffer": 0, "byteOffset": offsets[2], "byteLength": len(blobs[2]), "target": 34963},
        ],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": count, "type": "VEC3",
             "min": [0.0, 0.0, 0.0], "max": [1.0, 0.0, 1.0]},
            {"bufferView": 1, "componentType": 5126, "count": count, "type": "VEC3"},
            {"bufferView": 2, "componentType": 5125, "count": 6 * n * n, "type": "SCALAR"},
        ],
    }
    with open(base + ".gltf", "w") as out:
        json.dump(doc, out, indent=1)


if __name__ == "__main__":
    main()
