"""Small pictures, drawn."""

import struct
import zlib


def png(width, height, pixels):
    """A PNG file of 8-bit RGB rows (ISO/IEC 15948)."""
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    rows = b"".join(b"\0" + pixels[y * width * 3:(y + 1) * width * 3] for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows))
            + chunk(b"IEND", b""))


def icon(number):
    """A disc on a ramp, in colours and a size of its own."""
    side = 16 + number % 49
    pixels = bytearray()
    for y in range(side):
        for x in range(side):
            inside = (2 * x - side) ** 2 + (2 * y - side) ** 2 < side * side // 2
            pixels += bytes([number * 7 % 256, 255 * x // side, 90] if inside else
                            [255 * y // side, number // 49 % 256, 255 - 255 * x // side])
    return png(side, side, bytes(pixels))


def write_icons(count, folder):
    """So many PNG files, of 16×16 to 64×64; gives their paths."""
    paths = [folder / f"{number}.png" for number in range(count)]
    for number, path in enumerate(paths):
        path.write_bytes(icon(number))
    return paths
