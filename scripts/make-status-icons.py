#!/usr/bin/env python3
"""Draws the library's four status icons as .ico files (16x16 and 32x32).

    scripts/make-status-icons.py [output folder]   (default: platform/resources)

Each icon is a shaded dot in its status colour. The output is the same on
every run, so the committed files change only when this script does.
"""
import math
import struct
import sys
from pathlib import Path

# Resource id, file name, fill colour, rim colour (RGB).
ICONS = [
    (5018, "status_connected.ico", (0x2E, 0xA0, 0x43), (0x1A, 0x66, 0x29)),
    (5019, "status_disconnected.ico", (0xD6, 0x2D, 0x2D), (0x8A, 0x1A, 0x1A)),
    (5020, "status_new_input.ico", (0x2F, 0x6F, 0xDE), (0x1B, 0x45, 0x96)),
    (5021, "status_locked.ico", (0x8C, 0x8C, 0x8C), (0x55, 0x55, 0x55)),
]
SIZES = (16, 32)
SAMPLES = 4  # per pixel and axis, for smooth edges


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def pixel(size, x, y, fill, rim):
    """The straight-alpha RGBA of one pixel: the dot, its rim and a highlight."""
    centre = size / 2
    radius = size / 2 - size / 16
    rim_width = max(1.0, size / 16)
    light = (centre - radius * 0.35, centre - radius * 0.35)
    covered = 0
    colour = [0.0, 0.0, 0.0]
    for sy in range(SAMPLES):
        for sx in range(SAMPLES):
            px = x + (sx + 0.5) / SAMPLES
            py = y + (sy + 0.5) / SAMPLES
            d = math.hypot(px - centre, py - centre)
            if d > radius:
                continue
            covered += 1
            if d > radius - rim_width:
                c = rim
            else:
                glow = max(0.0, 1 - math.hypot(px - light[0], py - light[1]) / radius)
                c = mix(fill, (255, 255, 255), 0.45 * glow * glow)
            colour = [a + b for a, b in zip(colour, c)]
    if covered == 0:
        return (0, 0, 0, 0)
    r, g, b = (round(c / covered) for c in colour)
    return (r, g, b, round(255 * covered / SAMPLES**2))


def image(size, fill, rim):
    """One icon image: BITMAPINFOHEADER, 32-bit BGRA rows bottom-up, AND mask."""
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    colours = bytearray()
    mask = bytearray()
    mask_stride = (size + 31) // 32 * 4
    for y in reversed(range(size)):
        row_mask = bytearray(mask_stride)
        for x in range(size):
            r, g, b, a = pixel(size, x, y, fill, rim)
            colours += bytes((b, g, r, a))
            if a == 0:
                row_mask[x // 8] |= 0x80 >> (x % 8)
        mask += row_mask
    return header + bytes(colours) + bytes(mask)


def icon_file(fill, rim):
    images = [image(size, fill, rim) for size in SIZES]
    out = bytearray(struct.pack("<HHH", 0, 1, len(images)))
    offset = 6 + 16 * len(images)
    for size, data in zip(SIZES, images):
        out += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    for data in images:
        out += data
    return bytes(out)


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "platform/resources"
    folder.mkdir(parents=True, exist_ok=True)
    for resource_id, name, fill, rim in ICONS:
        (folder / name).write_bytes(icon_file(fill, rim))
        print(f"{resource_id} {folder / name}")


if __name__ == "__main__":
    main()
