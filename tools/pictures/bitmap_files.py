"""Writers and readers for the file formats the pictures ship in: Windows BMP
(8 bits with a colour table, or 24 bits), Windows ICO (4 bits with an AND
mask) and PNG (for looking at results only)."""

import struct
import zlib


def _row_bytes(bits, width):
    return ((bits * width + 31) // 32) * 4


def bmp8(width, height, palette, indices):
    """An 8-bit BMP: palette is a list of (r, g, b), at most 256; indices are
    row-major from the top. The table is padded to 256 entries so that every
    reader sees the same layout whatever biClrUsed it expects."""
    if len(palette) > 256:
        raise ValueError("more than 256 colours")
    table = bytearray()
    for r, g, b in list(palette) + [(0, 0, 0)] * (256 - len(palette)):
        table += bytes((b, g, r, 0))
    stride = _row_bytes(8, width)
    pixels = bytearray()
    for y in range(height - 1, -1, -1):
        row = bytes(indices[y * width:(y + 1) * width])
        pixels += row + bytes(stride - width)
    return _bmp_file(width, height, 8, 256, bytes(table), bytes(pixels))


def bmp24(width, height, rgb):
    """A 24-bit BMP; rgb is a row-major list of (r, g, b) from the top."""
    stride = _row_bytes(24, width)
    pixels = bytearray()
    for y in range(height - 1, -1, -1):
        row = bytearray()
        for r, g, b in rgb[y * width:(y + 1) * width]:
            row += bytes((b, g, r))
        pixels += row + bytes(stride - 3 * width)
    return _bmp_file(width, height, 24, 0, b"", bytes(pixels))


def _bmp_file(width, height, bits, colours, table, pixels):
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, len(pixels),
                       2835, 2835, colours, 0)
    offset = 14 + len(info) + len(table)
    head = struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset)
    return head + info + table + pixels


def read_bmp(data):
    """Parses an uncompressed 8- or 24-bit BMP. Returns a dict with width,
    height, bits, palette (list of (r, g, b), empty for 24 bits) and pixels:
    row-major from the top, palette indices for 8 bits, (r, g, b) for 24."""
    if data[:2] != b"BM":
        raise ValueError("not a BMP file")
    offset = struct.unpack_from("<I", data, 10)[0]
    (size, width, height, planes, bits, compression, _, _, _, used,
     _) = struct.unpack_from("<IiiHHIIiiII", data, 14)
    if size != 40 or compression != 0 or bits not in (8, 24) or height <= 0:
        raise ValueError("unsupported BMP layout")
    palette = []
    if bits == 8:
        count = used or 256
        for i in range(count):
            b, g, r, _ = data[54 + 4 * i:58 + 4 * i]
            palette.append((r, g, b))
    stride = _row_bytes(bits, width)
    pixels = []
    for y in range(height):
        start = offset + (height - 1 - y) * stride
        row = data[start:start + stride]
        if bits == 8:
            pixels.extend(row[:width])
        else:
            pixels.extend((row[3 * x + 2], row[3 * x + 1], row[3 * x]) for x in range(width))
    return {"width": width, "height": height, "bits": bits, "palette": palette,
            "pixels": pixels, "colours_used": used}


def ico4(size, palette, indices, opaque):
    """A one-image ICO of size x size pixels, 4 bits per pixel (16 colours)
    with an AND mask; opaque[i] false makes pixel i transparent."""
    if len(palette) != 16:
        raise ValueError("a 4-bit icon needs 16 colours")
    table = b"".join(bytes((b, g, r, 0)) for r, g, b in palette)
    xor_stride = _row_bytes(4, size)
    and_stride = _row_bytes(1, size)
    xor = bytearray()
    mask = bytearray()
    for y in range(size - 1, -1, -1):
        row = bytearray(xor_stride)
        bits = bytearray(and_stride)
        for x in range(size):
            i = y * size + x
            value = indices[i] if opaque[i] else 0
            row[x // 2] |= value << (4 if x % 2 == 0 else 0)
            if not opaque[i]:
                bits[x // 8] |= 0x80 >> (x % 8)
        xor += row
        mask += bits
    info = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 4, 0, len(xor) + len(mask),
                       0, 0, 16, 0)
    image = info + table + bytes(xor) + bytes(mask)
    head = struct.pack("<HHH", 0, 1, 1)
    entry = struct.pack("<BBBBHHII", size, size, 16, 0, 1, 4, len(image), 6 + 16)
    return head + entry + image


def png(width, height, rgb):
    """An 8-bit RGB PNG of a row-major list of (r, g, b) from the top."""
    raw = bytearray()
    for y in range(height):
        raw.append(0)
        for r, g, b in rgb[y * width:(y + 1) * width]:
            raw += bytes((r, g, b))

    def chunk(kind, body):
        return (struct.pack(">I", len(body)) + kind + body
                + struct.pack(">I", zlib.crc32(kind + body) & 0xFFFFFFFF))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))
