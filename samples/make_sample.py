#!/usr/bin/env python3
"""Writes the sample scene: sample.gltf (glTF 2.0, buffer embedded as base64) and checker.png.

The scene holds a textured box, a tube skinned to two bones with an animation "Bend", a spot light
aimed at the box and a camera on a rig aimed at the node "Camera.Target". Frame 0 of the animation
is the bind pose. Only the Python standard library is used; run it from anywhere:

    python3 samples/make_sample.py [OUTPUT_DIR]

(OUTPUT_DIR defaults to the folder of this script.)
"""

import base64
import json
import math
import os
import struct
import sys
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


# --- small vector helpers -------------------------------------------------------------------------

def sub(a, b):
    return [a[0] - b[0], a[1] - b[1], a[2] - b[2]]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def normalised(v):
    length = math.sqrt(sum(c * c for c in v))
    return [c / length for c in v]


def quat_from_axes(x, y, z):
    """Unit quaternion (x, y, z, w) of the rotation whose matrix has the columns x, y, z."""
    m00, m01, m02 = x[0], y[0], z[0]
    m10, m11, m12 = x[1], y[1], z[1]
    m20, m21, m22 = x[2], y[2], z[2]
    trace = m00 + m11 + m22
    if trace > 0:
        s = 0.5 / math.sqrt(trace + 1.0)
        q = [(m21 - m12) * s, (m02 - m20) * s, (m10 - m01) * s, 0.25 / s]
    elif m00 > m11 and m00 > m22:
        s = 2.0 * math.sqrt(1.0 + m00 - m11 - m22)
        q = [0.25 * s, (m01 + m10) / s, (m02 + m20) / s, (m21 - m12) / s]
    elif m11 > m22:
        s = 2.0 * math.sqrt(1.0 + m11 - m00 - m22)
        q = [(m01 + m10) / s, 0.25 * s, (m12 + m21) / s, (m02 - m20) / s]
    else:
        s = 2.0 * math.sqrt(1.0 + m22 - m00 - m11)
        q = [(m02 + m20) / s, (m12 + m21) / s, 0.25 * s, (m10 - m01) / s]
    return normalised(q)


def aim(eye, target, up=(0.0, 1.0, 0.0)):
    """Rotation that turns a node's -Z towards the target, keeping +Y near up (glTF cameras and lights)."""
    z = normalised(sub(eye, target))
    x = normalised(cross(list(up), z))
    y = cross(z, x)
    return quat_from_axes(x, y, z)


def quat_z(angle):
    return [0.0, 0.0, math.sin(angle / 2), math.cos(angle / 2)]


def quat_y(angle):
    return [0.0, math.sin(angle / 2), 0.0, math.cos(angle / 2)]


def quat_mul(a, b):
    ax, ay, az, aw = a
    bx, by, bz, bw = b
    return [aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
            aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz]


def quat_conj(q):
    return [-q[0], -q[1], -q[2], q[3]]


# --- binary buffer with views and accessors -------------------------------------------------------

class Buffer:
    def __init__(self):
        self.data = bytearray()
        self.views = []
        self.accessors = []

    def add(self, fmt, rows, component_type, accessor_type, target=None, bounds=False, normalized=False):
        while len(self.data) % 4:
            self.data.append(0)
        offset = len(self.data)
        for row in rows:
            self.data += struct.pack("<" + fmt, *(row if isinstance(row, (list, tuple)) else [row]))
        view = {"buffer": 0, "byteOffset": offset, "byteLength": len(self.data) - offset}
        if target:
            view["target"] = target
        self.views.append(view)
        accessor = {"bufferView": len(self.views) - 1, "componentType": component_type,
                    "count": len(rows), "type": accessor_type}
        if normalized:
            accessor["normalized"] = True
        if bounds:
            columns = list(zip(*[r if isinstance(r, (list, tuple)) else [r] for r in rows]))
            accessor["min"] = [min(c) for c in columns]
            accessor["max"] = [max(c) for c in columns]
        self.accessors.append(accessor)
        return len(self.accessors) - 1


FLOAT, USHORT, UBYTE = 5126, 5123, 5121
ARRAY, ELEMENTS = 34962, 34963


# --- geometry -------------------------------------------------------------------------------------

def box(size):
    """24 vertices (4 per face, own normals and UVs), 12 triangles."""
    h = size / 2
    faces = [  # normal, u axis, v axis
        ((0, 0, 1), (1, 0, 0), (0, 1, 0)), ((0, 0, -1), (-1, 0, 0), (0, 1, 0)),
        ((1, 0, 0), (0, 0, -1), (0, 1, 0)), ((-1, 0, 0), (0, 0, 1), (0, 1, 0)),
        ((0, 1, 0), (1, 0, 0), (0, 0, -1)), ((0, -1, 0), (1, 0, 0), (0, 0, 1)),
    ]
    positions, normals, uvs, indices = [], [], [], []
    for n, u, v in faces:
        base = len(positions)
        for su, sv in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
            positions.append([h * (n[i] + su * u[i] + sv * v[i]) for i in range(3)])
            normals.append(list(map(float, n)))
            uvs.append([(su + 1) / 2, (1 - sv) / 2])
        indices += [base, base + 1, base + 2, base, base + 2, base + 3]
    return positions, normals, uvs, indices


def tube(radius, height, rings, segments, bone_split):
    """A tube along +Y from 0 to height. Rings below bone_split[0] follow bone 0, above
    bone_split[1] bone 1, and blend linearly in between."""
    positions, normals, joints, weights, indices = [], [], [], [], []
    for r in range(rings + 1):
        y = height * r / rings
        t = min(1.0, max(0.0, (y - bone_split[0]) / (bone_split[1] - bone_split[0])))
        for s in range(segments):
            a = 2 * math.pi * s / segments
            positions.append([radius * math.cos(a), y, -radius * math.sin(a)])
            normals.append([math.cos(a), 0.0, -math.sin(a)])
            joints.append([0, 1, 0, 0])
            weights.append([1.0 - t, t, 0.0, 0.0])
    for r in range(rings):
        for s in range(segments):
            a, b = r * segments + s, r * segments + (s + 1) % segments
            c, d = a + segments, b + segments
            indices += [a, b, d, a, d, c]
    return positions, normals, joints, weights, indices


def translation(x, y, z):
    return [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1]  # column-major, as glTF stores matrices


# --- texture --------------------------------------------------------------------------------------

def checker_png(size=64, cells=8):
    rows = bytearray()
    for y in range(size):
        rows.append(0)  # filter: none
        for x in range(size):
            light = ((x * cells // size) + (y * cells // size)) % 2 == 0
            rows += bytes((235, 235, 220) if light else (40, 90, 160))

    def chunk(kind, payload):
        return struct.pack(">I", len(payload)) + kind + payload + struct.pack(">I", zlib.crc32(kind + payload))

    header = struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
            + chunk(b"IEND", b""))


# --- the scene ------------------------------------------------------------------------------------

def build():
    buf = Buffer()

    positions, normals, uvs, indices = box(1.0)
    box_prim = {
        "attributes": {
            "POSITION": buf.add("3f", positions, FLOAT, "VEC3", ARRAY, bounds=True),
            "NORMAL": buf.add("3f", normals, FLOAT, "VEC3", ARRAY),
            "TEXCOORD_0": buf.add("2f", uvs, FLOAT, "VEC2", ARRAY),
        },
        "indices": buf.add("H", indices, USHORT, "SCALAR", ELEMENTS),
        "material": 0,
    }

    tube_origin = (1.5, 0.0, 0.0)
    positions, normals, joints, weights, indices = tube(0.25, 2.0, 8, 12, (0.75, 1.25))
    positions = [[p[0] + tube_origin[0], p[1], p[2]] for p in positions]
    tube_prim = {
        "attributes": {
            "POSITION": buf.add("3f", positions, FLOAT, "VEC3", ARRAY, bounds=True),
            "NORMAL": buf.add("3f", normals, FLOAT, "VEC3", ARRAY),
            "JOINTS_0": buf.add("4B", joints, UBYTE, "VEC4", ARRAY),
            "WEIGHTS_0": buf.add("4f", weights, FLOAT, "VEC4", ARRAY),
        },
        "indices": buf.add("H", indices, USHORT, "SCALAR", ELEMENTS),
        "material": 1,
    }
    # Joints sit at the tube's foot and at its middle; inverse bind matrices undo those places.
    inverse_binds = buf.add("16f", [translation(-1.5, 0.0, 0.0), translation(-1.5, -1.0, 0.0)], FLOAT, "MAT4")

    # Animation "Bend": two seconds, the bind pose at 0 s and again at 2 s.
    times = [0.0, 0.5, 1.0, 1.5, 2.0]
    bend1 = [0.0, -0.2, -0.35, -0.2, 0.0]
    bend2 = [0.0, 0.5, 1.0, 0.5, 0.0]
    key_times = buf.add("f", times, FLOAT, "SCALAR", bounds=True)
    rot1 = buf.add("4f", [quat_z(a) for a in bend1], FLOAT, "VEC4")
    rot2 = buf.add("4f", [quat_z(a) for a in bend2], FLOAT, "VEC4")

    box_at = [-1.5, 0.5, 0.0]
    spot_at, camera_at, target_at = [-0.5, 4.0, 2.5], [4.0, 3.0, 6.0], [0.0, 1.0, 0.0]
    # The camera sits on a turned rig, so its own rotation is the aim relative to the rig.
    camera_rig_rotation = quat_y(0.3)
    camera_rotation = quat_mul(quat_conj(camera_rig_rotation), aim(camera_at, target_at))

    nodes = [
        {"name": "Box", "mesh": 0, "translation": box_at},
        {"name": "Tube", "mesh": 1, "skin": 0},
        {"name": "Bone1", "translation": list(tube_origin), "children": [3]},
        {"name": "Bone2", "translation": [0.0, 1.0, 0.0]},
        {"name": "Spot", "translation": spot_at, "rotation": aim(spot_at, box_at),
         "extensions": {"KHR_lights_punctual": {"light": 0}}},
        {"name": "CameraRig", "translation": camera_at, "rotation": camera_rig_rotation, "children": [6]},
        {"name": "Camera", "camera": 0, "rotation": camera_rotation},
        {"name": "Camera.Target", "translation": target_at},
    ]

    gltf = {
        "asset": {"version": "2.0", "generator": "Ostrex samples/make_sample.py"},
        "extensionsUsed": ["KHR_lights_punctual"],
        "scene": 0,
        "scenes": [{"name": "Sample", "nodes": [0, 1, 2, 4, 5, 7]}],
        "nodes": nodes,
        "meshes": [{"name": "BoxMesh", "primitives": [box_prim]}, {"name": "TubeMesh", "primitives": [tube_prim]}],
        "skins": [{"name": "TubeSkin", "joints": [2, 3], "inverseBindMatrices": inverse_binds, "skeleton": 2}],
        "animations": [{
            "name": "Bend",
            "samplers": [{"input": key_times, "output": rot1, "interpolation": "LINEAR"},
                         {"input": key_times, "output": rot2, "interpolation": "LINEAR"}],
            "channels": [{"sampler": 0, "target": {"node": 2, "path": "rotation"}},
                         {"sampler": 1, "target": {"node": 3, "path": "rotation"}}],
        }],
        "materials": [
            {"name": "Checker", "pbrMetallicRoughness": {"baseColorTexture": {"index": 0},
                                                         "metallicFactor": 0.0, "roughnessFactor": 1.0}},
            {"name": "Copper", "pbrMetallicRoughness": {"baseColorFactor": [0.8, 0.5, 0.2, 1.0],
                                                        "metallicFactor": 0.0, "roughnessFactor": 0.6}},
        ],
        "textures": [{"source": 0, "sampler": 0}],
        "images": [{"uri": "checker.png"}],
        "samplers": [{"magFilter": 9729, "minFilter": 9987, "wrapS": 10497, "wrapT": 10497}],
        "cameras": [{"name": "Camera", "type": "perspective",
                     "perspective": {"yfov": 0.8, "aspectRatio": 1.5, "znear": 0.1, "zfar": 100.0}}],
        "extensions": {"KHR_lights_punctual": {"lights": [{
            "name": "Spot", "type": "spot", "color": [1.0, 0.95, 0.8], "intensity": 1.0, "range": 20.0,
            "spot": {"innerConeAngle": 0.3, "outerConeAngle": 0.6}}]}},
        "accessors": buf.accessors,
        "bufferViews": buf.views,
        "buffers": [{"byteLength": len(buf.data),
                     "uri": "data:application/octet-stream;base64," + base64.b64encode(bytes(buf.data)).decode()}],
    }
    return gltf


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else HERE
    with open(os.path.join(folder, "sample.gltf"), "w", encoding="ascii") as out:
        json.dump(build(), out, indent=1)
        out.write("\n")
    with open(os.path.join(folder, "checker.png"), "wb") as out:
        out.write(checker_png())


if __name__ == "__main__":
    main()
