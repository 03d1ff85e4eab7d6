#!/usr/bin/env python3
"""Draws the site's images: images/Varnel.ico and images/spinner.gif.

The results are committed; run this again after changing a shape. Python's standard library only.
"""
import math
import struct
import zlib
from pathlib import Path

IMAGES = Path(__file__).resolve().parent.parent / "images"
SAMPLES = 4  # sub-samples a pixel and axis, for smooth edges

ACCENT = (11, 92, 173)
WHITE = (255, 255, 255)
DOT = (92, 128, 163)  # readable on a light and on a dark page


def coverage(inside, x, y):
    """Share of pixel (x, y) that lies inside a shape."""
    steps = [(i + 0.5) / SAMPLES for i in range(SAMPLES)]
    return sum(inside(x + dx, y + dy) for dx in steps for dy in steps) / SAMPLES**2


def rounded_box(left, top, right, bottom, radius):
    def inside(x, y):
        dx = max(left + radius - x, x - (right - radius), 0)
        dy = max(top + radius - y, y - (bottom - radius), 0)
        return left <= x <= right and top <= y <= bottom and dx * dx + dy * dy <= radius * radius

    return inside


def disc(cx, cy, radius):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius


# --- icon: two sliders on a rounded tile -----------------------------------------------------------


def icon_pixels(size):
    unit = size / 16
    tile = rounded_box(0, 0, size, size, 3.5 * unit)
    marks = []
    for row, knob in ((5.25, 10.5), (10.75, 5.5)):
        marks.append(rounded_box(3 * unit, (row - 0.75) * unit, 13 * unit, (row + 0.75) * unit, 0.75 * unit))
        marks.append(disc(knob * unit, row * unit, 2.1 * unit))
    for y in range(size):
        for x in range(size):
            mark = coverage(lambda px, py: any(inside(px, py) for inside in marks), x, y)
            colour = (round(a + (b - a) * mark) for a, b in zip(ACCENT, WHITE))
            yield (*colour, round(255 * coverage(tile, x, y)))


def png(size):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    flat = bytes(channel for pixel in icon_pixels(size) for channel in pixel)
    rows = b"".join(b"\0" + flat[y * size * 4 : (y + 1) * size * 4] for y in range(size))
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


def ico(sizes):
    pictures = [png(size) for size in sizes]
    offset = 6 + 16 * len(sizes)
    entries = b""
    for size, picture in zip(sizes, pictures):
        entries += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(picture), offset)
        offset += len(picture)
    return struct.pack("<HHH", 0, 1, len(sizes)) + entries + b"".join(pictures)


# --- spinner: a ring of dots, the leading one largest ----------------------------------------------

SPINNER_SIZE = 48  # shown at half of that, sharp on dense screens
SPINNER_DOTS = 10
FRAME_HUNDREDTHS = 8


def spinner_frame(step):
    """Colour indices of one frame: 0 is transparent, 1 a dot.

    A GIF has no half-transparent pixels, so the dots fade by size, not by colour: that looks right on
    any background.
    """
    middle = SPINNER_SIZE / 2
    dots = []
    for i in range(SPINNER_DOTS):
        age = (step - i) % SPINNER_DOTS / SPINNER_DOTS
        angle = 2 * math.pi * i / SPINNER_DOTS - math.pi / 2
        dots.append(disc(middle + 18 * math.cos(angle), middle + 18 * math.sin(angle), 4.8 - 3.4 * age))
    return bytes(
        coverage(lambda px, py: any(inside(px, py) for inside in dots), x, y) >= 0.5
        for y in range(SPINNER_SIZE)
        for x in range(SPINNER_SIZE)
    )


def lzw(indices, code_size):
    """GIF's variable-length LZW, least significant bit first."""
    clear, end = 1 << code_size, (1 << code_size) + 1
    bits, count, out = 0, 0, bytearray()

    def emit(code):
        nonlocal bits, count
        bits |= code << count
        count += width
        while count >= 8:
            out.append(bits & 255)
            bits >>= 8
            count -= 8

    table, width = {bytes([i]): i for i in range(clear)}, code_size + 1
    emit(clear)
    word = b""
    for index in indices:
        longer = word + bytes([index])
        if longer in table:
            word = longer
            continue
        emit(table[word])
        table[longer] = len(table) + 2  # two codes are taken by clear and end
        if table[longer] == 1 << width:
            width += 1
        word = bytes([index])
    emit(table[word])
    emit(end)
    if count:
        out.append(bits & 255)
    return bytes(out)


def gif(frames):
    code_size = 2
    out = b"GIF89a" + struct.pack("<HHBBB", SPINNER_SIZE, SPINNER_SIZE, 0x80, 0, 0)
    out += bytes((*WHITE, *DOT))
    out += b"\x21\xff\x0bNETSCAPE2.0\x03\x01\0\0\0"  # repeat for ever
    for frame in frames:
        # Clear to the background between frames; colour 0 is transparent.
        out += b"\x21\xf9\x04" + struct.pack("<BHBB", 0x09, FRAME_HUNDREDTHS, 0, 0)
        out += b"\x2c" + struct.pack("<HHHHB", 0, 0, SPINNER_SIZE, SPINNER_SIZE, 0)
        data = lzw(frame, code_size)
        blocks = (data[i : i + 255] for i in range(0, len(data), 255))
        out += bytes([code_size]) + b"".join(bytes([len(block)]) + block for block in blocks) + b"\0"
    return out + b"\x3b"


if __name__ == "__main__":
    (IMAGES / "Varnel.ico").write_bytes(ico((16, 32, 48)))
    (IMAGES / "spinner.gif").write_bytes(gif([spinner_frame(step) for step in range(SPINNER_DOTS)]))
