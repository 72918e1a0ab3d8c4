#!/usr/bin/env python3
"""Writes the bundled example: a low/high pebble pair.

pebble_low.obj:  a 24 x 12 UV sphere squashed into a pebble, with normals and
                 one UV set (latitude/longitude, one island, seam at u = 0).
pebble_udim_low.obj: pebble_low's mesh with its UVs over two UDIM tiles: the
                 half around phi < pi in tile 1001, the other half in 1002.
pebble_high.obj: the same shape at 192 x 96 with bumps and a groove carved into
                 it, normals only. It stays within 0.06 of the low surface.

Deterministic: running it again gives the same files.
"""
import math
import os

HERE = os.path.dirname(os.path.abspath(__file__))
SCALE = (1.0, 0.6, 0.8)


def base_point(theta, phi):
    # theta: 0..pi from the top, phi: 0..2pi around
    s = math.sin(theta)
    return (SCALE[0] * s * math.cos(phi), SCALE[1] * math.cos(theta), SCALE[2] * s * math.sin(phi))


def detail(theta, phi):
    bumps = 0.025 * math.sin(7 * phi) * math.sin(5 * theta) ** 2
    groove = -0.04 * math.exp(-((theta - math.pi / 2) / 0.06) ** 2)
    return bumps + groove


def grid(nu, nv, displaced):
    pts = []
    for j in range(nv + 1):
        theta = math.pi * j / nv
        for i in range(nu + 1):
            phi = 2 * math.pi * i / nu
            p = base_point(theta, phi)
            if displaced:
                n = ellipsoid_normal(p)
                d = detail(theta, phi)
                p = tuple(p[k] + d * n[k] for k in range(3))
            pts.append(p)
    return pts


def ellipsoid_normal(p):
    n = [p[k] / (SCALE[k] ** 2) for k in range(3)]
    length = math.sqrt(sum(c * c for c in n)) or 1.0
    return [c / length for c in n]


def faces(nu, nv):
    for j in range(nv):
        for i in range(nu):
            a = j * (nu + 1) + i
            b = a + 1
            c = a + (nu + 1)
            d = c + 1
            if j != 0:
                yield (a, b, c)
            if j != nv - 1:
                yield (b, d, c)


def vertex_normals(pts, tris):
    acc = [[0.0, 0.0, 0.0] for _ in pts]
    for (a, b, c) in tris:
        pa, pb, pc = pts[a], pts[b], pts[c]
        e1 = [pb[k] - pa[k] for k in range(3)]
        e2 = [pc[k] - pa[k] for k in range(3)]
        n = [e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]]
        for v in (a, b, c):
            for k in range(3):
                acc[v][k] += n[k]
    # Seam and pole copies share one normal.
    by_pos = {}
    for i, p in enumerate(pts):
        key = tuple(round(c, 6) for c in p)
        by_pos.setdefault(key, []).append(i)
    out = [None] * len(pts)
    for ids in by_pos.values():
        s = [sum(acc[i][k] for i in ids) for k in range(3)]
        length = math.sqrt(sum(c * c for c in s)) or 1.0
        for i in ids:
            out[i] = [c / length for c in s]
    return out


def write(name, nu, nv, displaced, with_uv):
    pts = grid(nu, nv, displaced)
    tris = list(faces(nu, nv))
    nrm = vertex_normals(pts, tris)
    path = os.path.join(HERE, name + ".obj")
    with open(path, "w") as f:
        f.write("# zmfbaker example, written by make_pebble.py\n")
        f.write("o %s\n" % name)
        for p in pts:
            f.write("v %.6f %.6f %.6f\n" % p)
        if with_uv:
            for j in range(nv + 1):
                for i in range(nu + 1):
                    # A small margin keeps the island off the texture border.
                    f.write("vt %.6f %.6f\n" % (0.02 + 0.96 * i / nu, 0.02 + 0.96 * (1 - j / nv)))
        for n in nrm:
            f.write("vn %.4f %.4f %.4f\n" % tuple(n))
        for (a, b, c) in tris:
            if with_uv:
                f.write("f %d/%d/%d %d/%d/%d %d/%d/%d\n" % (a + 1, a + 1, a + 1, b + 1, b + 1, b + 1, c + 1, c + 1, c + 1))
            else:
                f.write("f %d//%d %d//%d %d//%d\n" % (a + 1, a + 1, b + 1, b + 1, c + 1, c + 1))


def write_udim(name, nu, nv):
    """The low pebble with one island per half, each in a tile of its own."""
    pts = grid(nu, nv, False)
    tris = list(faces(nu, nv))
    nrm = vertex_normals(pts, tris)
    half = nu // 2
    path = os.path.join(HERE, name + ".obj")
    with open(path, "w") as f:
        f.write("# zmfbaker example, written by make_pebble.py\n")
        f.write("o %s\n" % name)
        for p in pts:
            f.write("v %.6f %.6f %.6f\n" % p)
        # Tile t holds columns t*half .. (t+1)*half: one vt block per tile.
        for t in range(2):
            for j in range(nv + 1):
                for k in range(half + 1):
                    f.write("vt %.6f %.6f\n" % (t + 0.02 + 0.96 * k / half, 0.02 + 0.96 * (1 - j / nv)))
        for n in nrm:
            f.write("vn %.4f %.4f %.4f\n" % tuple(n))

        def uv_index(v, t):
            j, i = divmod(v, nu + 1)
            return t * (nv + 1) * (half + 1) + j * (half + 1) + (i - t * half) + 1

        for (a, b, c) in tris:
            t = 0 if min(a % (nu + 1), b % (nu + 1), c % (nu + 1)) < half else 1
            f.write("f %d/%d/%d %d/%d/%d %d/%d/%d\n" % (a + 1, uv_index(a, t), a + 1, b + 1, uv_index(b, t), b + 1,
                                                        c + 1, uv_index(c, t), c + 1))


if __name__ == "__main__":
    write("pebble_low", 24, 12, False, True)
    write_udim("pebble_udim_low", 24, 12)
    write("pebble_high", 192, 96, True, False)
