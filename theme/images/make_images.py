#!/usr/bin/env python3
"""Draws the seven built-in pictures as RGBA PNG files (run by hand; the PNGs are checked in).

    python3 theme/images/make_images.py theme/images

No imaging library is needed: shapes are rasterised here with 4x4 supersampling and the PNG
written with zlib. The output is byte-for-byte stable.
"""

import math
import struct
import sys
import zlib
from pathlib import Path

SUPER = 4


class Canvas:
    def __init__(self, width, height):
        self.width, self.height = width, height
        self.pixels = [[(0, 0, 0, 0)] * width for _ in range(height)]

    def shade(self, inside, color):
        """Blends color over every pixel by the covered share of its 4x4 subsamples."""
        r, g, b, a = color
        for y in range(self.height):
            for x in range(self.width):
                hits = 0
                for sy in range(SUPER):
                    for sx in range(SUPER):
                        if inside(x + (sx + 0.5) / SUPER, y + (sy + 0.5) / SUPER):
                            hits += 1
                if not hits:
                    continue
                cover = hits / (SUPER * SUPER) * a / 255
                pr, pg, pb, pa = self.pixels[y][x]
                out_a = cover + pa / 255 * (1 - cover)
                if out_a <= 0:
                    continue

                def mix(c, p):
                    return round((c * cover + p * pa / 255 * (1 - cover)) / out_a)

                self.pixels[y][x] = (mix(r, pr), mix(g, pg), mix(b, pb), round(out_a * 255))

    def write(self, path):
        raw = b"".join(b"\0" + bytes(v for px in row for v in px) for row in self.pixels)

        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)
        png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")
        Path(path).write_bytes(png)


def disc(cx, cy, r):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def ring(cx, cy, r_outer, r_inner):
    return lambda x, y: r_inner * r_inner < (x - cx) ** 2 + (y - cy) ** 2 <= r_outer * r_outer


def box(x1, y1, x2, y2):
    return lambda x, y: x1 <= x < x2 and y1 <= y < y2


def polygon(points):
    def inside(x, y):
        hit = False
        n = len(points)
        for i in range(n):
            (ax, ay), (bx, by) = points[i], points[i - 1]
            if (ay > y) != (by > y) and x < ax + (y - ay) * (bx - ax) / (by - ay):
                hit = not hit
        return hit
    return inside


def thick_line(x1, y1, x2, y2, half):
    dx, dy = x2 - x1, y2 - y1
    length_sq = dx * dx + dy * dy

    def inside(x, y):
        t = max(0.0, min(1.0, ((x - x1) * dx + (y - y1) * dy) / length_sq))
        px, py = x1 + t * dx - x, y1 + t * dy - y
        return px * px + py * py <= half * half
    return inside


# A 5 by 7 pixel alphabet for the logo's letters, one string per row.
LETTERS = {
    "E": ["#####", "#....", "#....", "####.", "#....", "#....", "#####"],
    "M": ["#...#", "##.##", "#.#.#", "#.#.#", "#...#", "#...#", "#...#"],
    "B": ["####.", "#...#", "#...#", "####.", "#...#", "#...#", "####."],
    "R": ["####.", "#...#", "#...#", "####.", "#.#..", "#..#.", "#...#"],
    "V": ["#...#", "#...#", "#...#", "#...#", ".#.#.", ".#.#.", "..#.."],
    "A": [".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"],
    "L": ["#....", "#....", "#....", "#....", "#....", "#....", "#####"],
}


def letter_cells(text, left, top, x_scale, y_scale, gap):
    cells = []
    x = left
    for ch in text:
        if ch == " ":
            x += 3 * x_scale
            continue
        for row, bits in enumerate(LETTERS[ch]):
            for col, bit in enumerate(bits):
                if bit == "#":
                    cells.append((x + col * x_scale, top + row * y_scale))
        x += 5 * x_scale + gap
    return cells, x


def logo():
    c = Canvas(192, 43)
    # A glowing ember: warm halo, flame, hot core.
    c.shade(disc(20, 22, 19), (120, 30, 0, 90))
    c.shade(polygon([(20, 3), (31, 20), (30, 31), (24, 38), (16, 38), (10, 31), (9, 21), (15, 13), (17, 19)]),
            (230, 90, 10, 255))
    c.shade(polygon([(20, 14), (26, 25), (25, 33), (20, 37), (15, 33), (14, 26)]), (255, 190, 40, 255))
    c.shade(disc(20, 31, 4), (255, 250, 200, 255))
    # The name in blocky letters with a dark rim so it reads on any background.
    xs, ys, left = 2, 4, 50
    cells, right = letter_cells("EMBER VALE", left, 6, xs, ys, 3)
    for x, y in cells:
        c.shade(box(x - 1, y - 1, x + xs + 1, y + ys + 1), (20, 8, 0, 200))
    for x, y in cells:
        warm = max(0, min(1, (y - 6) / 24))
        color = (255, round(230 - 130 * warm), round(120 - 110 * warm), 255)
        c.shade(box(x, y, x + xs, y + ys), color)
    c.shade(box(left, 37, right - 3, 39), (230, 90, 10, 200))
    return c


def padlock():
    c = Canvas(21, 21)
    c.shade(ring(10.5, 8, 6, 3.6), (200, 200, 210, 255))
    c.shade(box(3, 9, 18, 20), (210, 170, 40, 255))
    c.shade(box(3, 9, 18, 10), (250, 220, 120, 255))
    c.shade(disc(10.5, 13.5, 1.8), (40, 30, 10, 255))
    c.shade(box(10, 14, 11, 18), (40, 30, 10, 255))
    return c


def icon_unarmed():
    c = Canvas(17, 17)
    c.shade(thick_line(3, 14, 14, 3, 1.3), (200, 200, 220, 255))     # blade
    c.shade(thick_line(2, 10, 7, 15, 1.2), (150, 110, 60, 255))     # guard
    c.shade(ring(8.5, 8.5, 8, 6.6), (230, 40, 40, 255))              # "no" ring
    c.shade(thick_line(3.5, 3.5, 13.5, 13.5, 0.9), (230, 40, 40, 255))
    return c


def icon_asleep():
    c = Canvas(17, 17)
    moon = disc(7, 9, 6)
    bite = disc(9.5, 7, 5)
    c.shade(lambda x, y: moon(x, y) and not bite(x, y), (230, 230, 150, 255))
    for size, (x, y) in ((4, (10, 1)), (3, (13, 6))):
        c.shade(box(x, y, x + size, y + 1), (160, 200, 255, 255))
        c.shade(thick_line(x + size - 0.5, y + 0.5, x + 0.5, y + size - 0.5, 0.5), (160, 200, 255, 255))
        c.shade(box(x, y + size - 1, x + size, y + size), (160, 200, 255, 255))
    return c


def icon_burning_hands():
    c = Canvas(17, 17)
    c.shade(polygon([(8.5, 0.5), (13, 7), (14.5, 12), (12, 16), (5, 16), (2.5, 12), (4, 6), (6.5, 9)]),
            (240, 90, 10, 255))
    c.shade(polygon([(8.5, 6), (11.5, 11), (10.5, 15), (6.5, 15), (5.5, 11)]), (255, 210, 60, 255))
    return c


def icon_shocking_grasp():
    c = Canvas(17, 17)
    c.shade(polygon([(10, 0.5), (3, 9.5), (8, 9.5), (5.5, 16.5), (14, 6.5), (9, 6.5), (12, 0.5)]),
            (120, 200, 255, 255))
    c.shade(polygon([(10.5, 2), (5.5, 8.5), (9.5, 8.5), (8, 13), (12, 7.5), (8.5, 7.5)]), (240, 250, 255, 255))
    return c


def icon_sickening_touch():
    c = Canvas(17, 17)
    c.shade(polygon([(8.5, 0.5), (13.5, 9), (13.5, 11.5), (11, 15.5), (6, 15.5), (3.5, 11.5), (3.5, 9)]),
            (80, 190, 40, 255))
    c.shade(disc(7, 11, 1.6), (200, 255, 150, 255))
    c.shade(disc(10.5, 8.5, 1.0), (200, 255, 150, 255))
    return c


PICTURES = {
    "logo.png": logo,
    "padlock.png": padlock,
    "icon0.png": icon_unarmed,
    "icon1.png": icon_asleep,
    "icon2.png": icon_burning_hands,
    "icon3.png": icon_shocking_grasp,
    "icon4.png": icon_sickening_touch,
}


def main():
    out = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent)
    out.mkdir(parents=True, exist_ok=True)
    for name, draw in PICTURES.items():
        draw().write(out / name)
        print(name, (out / name).stat().st_size, "bytes")


if __name__ == "__main__":
    main()
