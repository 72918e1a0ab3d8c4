#!/usr/bin/env python3
"""Makes the README's small pictures from maps that zmfbaker wrote.

    scripts/make-thumbnails.py OUT.png SIZE TILE.png [TILE.png ...]

Each input PNG (8 or 16 bits, grey or colour, with or without alpha) is
shrunk to SIZE x SIZE by averaging, and the tiles are laid side by side into
one 8-bit RGB picture. Standard library only, so that it runs wherever the
build does.
"""
import struct
import sys
import zlib

CHANNELS = {0: 1, 2: 3, 4: 2, 6: 4}


def read_png(path):
    with open(path, "rb") as f:
        data = f.read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("%s: not a PNG file" % path)
    pos, idat, header = 8, [], None
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            idat.append(body)
        pos += 12 + length
    width, height, depth, colour, _, _, interlace = header
    if colour not in CHANNELS or depth not in (8, 16) or interlace:
        raise ValueError("%s: unsupported PNG layout" % path)
    channels = CHANNELS[colour]
    bpp = channels * depth // 8
    stride = width * bpp
    raw = zlib.decompress(b"".join(idat))
    rows, prev = [], bytearray(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - bpp] if i >= bpp else 0
            b = prev[i]
            c = prev[i - bpp] if i >= bpp else 0
            if kind == 1:
                line[i] = (line[i] + a) & 255
            elif kind == 2:
                line[i] = (line[i] + b) & 255
            elif kind == 3:
                line[i] = (line[i] + ((a + b) >> 1)) & 255
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(line)
        prev = line
    step = depth // 8
    pixels = []
    for line in rows:
        values = line[0::2] if step == 2 else line  # the high byte is enough for a thumbnail
        row = []
        for x in range(width):
            px = values[x * channels:(x + 1) * channels]
            row.append((px[0], px[0], px[0]) if channels <= 2 else tuple(px[:3]))
        pixels.append(row)
    return width, height, pixels


def shrink(width, height, pixels, size):
    out = []
    for ty in range(size):
        y0, y1 = ty * height // size, max(ty * height // size + 1, (ty + 1) * height // size)
        row = []
        for tx in range(size):
            x0, x1 = tx * width // size, max(tx * width // size + 1, (tx + 1) * width // size)
            acc, n = [0, 0, 0], 0
            for y in range(y0, y1):
                for x in range(x0, x1):
                    p = pixels[y][x]
                    acc[0] += p[0]
                    acc[1] += p[1]
                    acc[2] += p[2]
                    n += 1
            row.append(tuple(v // n for v in acc))
        out.append(row)
    return out


def write_png(path, rows):
    height, width = len(rows), len(rows[0])
    raw = b"".join(b"\x00" + bytes(c for p in row for c in p) for row in rows)

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body) & 0xFFFFFFFF)

    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n")
        f.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        f.write(chunk(b"IDAT", zlib.compress(raw, 9)))
        f.write(chunk(b"IEND", b""))


def main(argv):
    if len(argv) < 4:
        sys.exit(__doc__)
    out, size, tiles = argv[1], int(argv[2]), argv[3:]
    shrunk = [shrink(*read_png(t), size) for t in tiles]
    rows = [sum((s[y] for s in shrunk), []) for y in range(size)]
    write_png(out, rows)


if __name__ == "__main__":
    main(sys.argv)
