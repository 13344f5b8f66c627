#!/usr/bin/env python3
"""Writes the benchmark scenes as OUT.gltf + OUT.bin (glTF 2.0, standard library only).

    python3 bench/make_scenes.py grid OUT [N]      N x N quads (2 N^2 triangles) with normals and UVs,
                                                   one mesh on one node; N defaults to 1000 (2M triangles)
    python3 bench/make_scenes.py nodes OUT         256 mesh nodes of 4096 triangles each: 64 distinct
                                                   meshes, each placed on 4 nodes
    python3 bench/make_scenes.py skinned OUT       a 500k-triangle tube skinned to a chain of 64 joints,
                                                   4 influences a vertex, 30 frames of bending

The scenes are deterministic: the same command always writes the same bytes.
"""

import array
import json
import math
import os
import sys

FLOAT, UINT, USHORT = 5126, 5125, 5123
VERTICES, INDICES = 34962, 34963


class Gltf:
    """Collects buffer views and accessors into one .bin and one glTF document."""

    def __init__(self):
        self.blob = bytearray()
        self.doc = {"asset": {"version": "2.0", "generator": "make_scenes.py"}, "scene": 0,
                    "scenes": [{"nodes": []}], "nodes": [], "meshes": [],
                    "buffers": [], "bufferViews": [], "accessors": []}

    def accessor(self, values, component, kind, count, target=None, bounds=False):
        if sys.byteorder != "little":
            values.byteswap()
        while len(self.blob) % 4:
            self.blob.append(0)
        view = {"buffer": 0, "byteOffset": len(self.blob), "byteLength": len(values) * values.itemsize}
        if target:
            view["target"] = target
        self.blob.extend(values.tobytes())
        self.doc["bufferViews"].append(view)
        acc = {"bufferView": len(self.doc["bufferViews"]) - 1, "componentType": component,
               "count": count, "type": kind}
        if bounds:  # POSITION needs min and max
            acc["min"] = [min(values[i::3]) for i in range(3)]
            acc["max"] = [max(values[i::3]) for i in range(3)]
        self.doc["accessors"].append(acc)
        return len(self.doc["accessors"]) - 1

    def mesh(self, name, attributes, indices):
        self.doc["meshes"].append({"name": name, "primitives": [{"attributes": attributes, "indices": indices}]})
        return len(self.doc["meshes"]) - 1

    def node(self, node, root=True):
        self.doc["nodes"].append(node)
        index = len(self.doc["nodes"]) - 1
        if root:
            self.doc["scenes"][0]["nodes"].append(index)
        return index

    def save(self, base):
        with open(base + ".bin", "wb") as out:
            out.write(self.blob)
        self.doc["buffers"].append({"byteLength": len(self.blob), "uri": os.path.basename(base) + ".bin"})
        with open(base + ".gltf", "w") as out:
            json.dump(self.doc, out, indent=1)


def sheet(columns, rows, place):
    """A columns x rows quad sheet: place(u, v) gives the position of the vertex at (u, v) in [0, 1]^2.
    Returns positions, normals (upwards, as the benchmarks need no lighting) and UVs, and the indices."""
    pos, nrm, uv = array.array("f"), array.array("f"), array.array("f")
    for j in range(rows + 1):
        for i in range(columns + 1):
            u, v = i / columns, j / rows
            pos.extend(place(u, v))
            nrm.extend((0.0, 1.0, 0.0))
            uv.extend((u, v))
    idx = array.array("I")
    side = columns + 1
    for j in range(rows):
        for i in range(columns):
            a = j * side + i
            b, c, d = a + 1, a + side, a + side + 1
            idx.extend((a, c, b, b, c, d))
    return pos, nrm, uv, idx


def add_sheet_mesh(g, name, columns, rows, place, extra=None):
    pos, nrm, uv, idx = sheet(columns, rows, place)
    count = len(pos) // 3
    attributes = {"POSITION": g.accessor(pos, FLOAT, "VEC3", count, VERTICES, bounds=True),
                  "NORMAL": g.accessor(nrm, FLOAT, "VEC3", count, VERTICES),
                  "TEXCOORD_0": g.accessor(uv, FLOAT, "VEC2", count, VERTICES)}
    attributes.update(extra or {})
    return g.mesh(name, attributes, g.accessor(idx, UINT, "SCALAR", len(idx), INDICES))


def grid(base, n=1000):
    g = Gltf()
    g.node({"name": "Grid", "mesh": add_sheet_mesh(g, "Grid", n, n, lambda u, v: (u, 0.0, v))})
    g.save(base)


def nodes(base):
    g = Gltf()
    for m in range(64):
        height = 0.05 * (m + 1)
        mesh = add_sheet_mesh(g, "Part%02d" % m, 64, 32,
                              lambda u, v, h=height: (u, h * math.sin(6.0 * u) * math.cos(4.0 * v), v))
        for k in range(4):
            g.node({"name": "Part%02d_%d" % (m, k), "mesh": mesh,
                    "translation": [1.5 * (m % 8), 1.5 * k, 1.5 * (m // 8)]})
    g.save(base)


def skinned(base, joints=64, frames=30):
    g = Gltf()
    around, along, length, radius = 500, 500, 16.0, 1.0
    place = lambda u, v: (radius * math.cos(2 * math.pi * u), length * v, radius * math.sin(2 * math.pi * u))
    # Each ring follows the 4 joints nearest its height, weighted by distance.
    ids, weights = array.array("H"), array.array("f")
    for j in range(along + 1):
        at = j / along * (joints - 1)
        first = min(max(int(at) - 1, 0), joints - 4)
        raw = [1.0 / (1.0 + abs(at - (first + k))) ** 2 for k in range(4)]
        total = sum(raw)
        for _ in range(around + 1):
            ids.extend(first + k for k in range(4))
            weights.extend(w / total for w in raw)
    count = (around + 1) * (along + 1)
    skin_attributes = {"JOINTS_0": g.accessor(ids, USHORT, "VEC4", count, VERTICES),
                       "WEIGHTS_0": g.accessor(weights, FLOAT, "VEC4", count, VERTICES)}
    mesh = add_sheet_mesh(g, "Tube", around, along, place, skin_attributes)

    step = length / (joints - 1)
    chain = []
    for k in range(joints):
        chain.append(g.node({"name": "Bone%02d" % k, "translation": [0.0, 0.0 if k == 0 else step, 0.0]},
                            root=(k == 0)))
        if k:
            g.doc["nodes"][chain[k - 1]]["children"] = [chain[k]]
    inverse_bind = array.array("f")
    for k in range(joints):
        inverse_bind.extend((1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -step * k, 0, 1))
    g.doc["skins"] = [{"joints": chain, "skeleton": chain[0],
                       "inverseBindMatrices": g.accessor(inverse_bind, FLOAT, "MAT4", joints)}]
    g.node({"name": "Tube", "mesh": mesh, "skin": 0})

    times = array.array("f", (f / 30.0 for f in range(frames)))
    time_accessor = g.accessor(times, FLOAT, "SCALAR", frames)
    g.doc["accessors"][time_accessor].update({"min": [times[0]], "max": [times[-1]]})
    samplers, channels = [], []
    for k in range(1, joints):
        rotations = array.array("f")
        for f in range(frames):
            angle = 0.02 * math.sin(2 * math.pi * f / frames + 0.1 * k)
            rotations.extend((math.sin(angle / 2), 0.0, 0.0, math.cos(angle / 2)))
        samplers.append({"input": time_accessor, "output": g.accessor(rotations, FLOAT, "VEC4", frames)})
        channels.append({"sampler": len(samplers) - 1, "target": {"node": chain[k], "path": "rotation"}})
    g.doc["animations"] = [{"name": "Bend", "samplers": samplers, "channels": channels}]
    g.save(base)


def main():
    if len(sys.argv) < 3 or sys.argv[1] not in ("grid", "nodes", "skinned"):
        sys.exit(__doc__)
    kind, base = sys.argv[1], sys.argv[2]
    if kind == "grid":
        grid(base, int(sys.argv[3]) if len(sys.argv) > 3 else 1000)
    else:
        globals()[kind](base)


if __name__ == "__main__":
    main()
