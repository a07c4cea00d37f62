#!/usr/bin/env python3
"""Fails when the pictures, the tooth outlines or the resource script in the
repository are stale or wrong:

    check_pictures.py [ROOT]

1. draw_pictures.py, run into a temporary folder, must reproduce every file
   byte for byte.
2. The files themselves must fit what the chart, the canvas and the palette
   expect: sizes, 8 bits with a colour table, black backgrounds, tooth
   pictures that show the chart's own tooth at the place where the tooth's
   polygon starts, polygons inside their pictures."""

import math
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True  # keep the source tree clean when CTest runs this
sys.path.insert(0, HERE)

import bitmap_files  # noqa: E402

# The chart draws each tooth's pictures at these sizes; they are the contract
# with the chart, kept here apart from the generator's own table.
EXPECTED_SIZES = {
    1: [(27, 101), (29, 97), (32, 93), (37, 88), (34, 81), (45, 71), (48, 76), (35, 33)],
    2: [(29, 106), (25, 96), (20, 95), (31, 87), (34, 84), (39, 73), (44, 74), (38, 38)],
    3: [(19, 73), (26, 78), (30, 88), (34, 88), (32, 77), (62, 85), (59, 78), (44, 48)],
    4: [(21, 74), (23, 85), (28, 96), (31, 94), (39, 75), (63, 83), (61, 77), (47, 47)],
}
FDI = [q * 10 + t for q in (1, 2, 3, 4) for t in range(1, 9)]
CHART = (529, 250)

failures = []


def fail(message):
    failures.append(message)


def luminance(c):
    return 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2]


def load(root, name):
    with open(os.path.join(root, *name.split("/")), "rb") as f:
        return f.read()


def read_polygons(ini):
    """{fdi: [(x, y)] * 4} from the settings file, and the order of its
    sections."""
    sections, order, current = {}, [], None
    for raw in ini.splitlines():
        line = raw.strip()
        m = re.match(rb"^\[(.+)\]$", line)
        if m:
            current = m.group(1).decode("latin-1")
            order.append(current)
            sections.setdefault(current, {})
        elif current and b"=" in line and not line.startswith(b";"):
            key, value = line.split(b"=", 1)
            sections[current][key.decode("latin-1")] = value.decode("latin-1")
    polygons = {}
    for fdi in FDI:
        keys = sections.get("Tooth%d" % fdi)
        if keys is None:
            fail("settings: no section Tooth%d" % fdi)
            continue
        try:
            polygons[fdi] = [(int(keys["PolygonX%d" % v]), int(keys["PolygonY%d" % v]))
                             for v in range(1, 5)]
        except (KeyError, ValueError):
            fail("settings: Tooth%d lacks one of PolygonX1..PolygonY4" % fdi)
    tooth_order = [s for s in order if s.lower().startswith("tooth")]
    if tooth_order != ["Tooth%d" % f for f in FDI] or order[-len(FDI):] != tooth_order:
        fail("settings: the tooth sections must be Tooth11..Tooth48, once each, at the end")
    return polygons


def distance_to_polygon(px, py, poly):
    inside = False
    best = float("inf")
    for i, (ax, ay) in enumerate(poly):
        bx, by = poly[(i + 1) % len(poly)]
        if (ay > py) != (by > py) and px < ax + (py - ay) * (bx - ax) / (by - ay):
            inside = not inside
        dx, dy = bx - ax, by - ay
        t = 0.0 if dx == dy == 0 else \
            max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
        best = min(best, math.hypot(px - ax - t * dx, py - ay - t * dy))
    return 0.0 if inside else best


def check_regenerated(root):
    with tempfile.TemporaryDirectory() as out:
        subprocess.run([sys.executable, os.path.join(HERE, "draw_pictures.py"),
                        "--root", root, "--out", out], check=True, stdout=subprocess.DEVNULL)
        produced = []
        for base, _, names in os.walk(out):
            for n in names:
                produced.append(os.path.relpath(os.path.join(base, n), out).replace(os.sep, "/"))
        for name in sorted(produced):
            try:
                committed = load(root, name)
            except FileNotFoundError:
                fail("%s: missing; run tools/pictures/draw_pictures.py" % name)
                continue
            if committed != load(out, name):
                fail("%s: stale; run tools/pictures/draw_pictures.py" % name)
        return len(produced)


def check_chart(root, polygons):
    chart = bitmap_files.read_bmp(load(root, "res/dentition.bmp"))
    if (chart["width"], chart["height"], chart["bits"]) != CHART + (8,):
        fail("dentition.bmp: %dx%d, %d bits; want 529x250, 8 bits"
             % (chart["width"], chart["height"], chart["bits"]))
        return
    chart_rgb = [chart["palette"][i] for i in chart["pixels"]]
    for fdi in FDI:
        if fdi not in polygons:
            continue
        poly = polygons[fdi]
        xs, ys = [x for x, _ in poly], [y for _, y in poly]
        bx, by = min(xs), min(ys)
        w, h = EXPECTED_SIZES[fdi // 10][fdi % 10 - 1]
        if bx < 0 or by < 0 or max(xs) > CHART[0] or max(ys) > CHART[1]:
            fail("Tooth%d: polygon leaves the chart" % fdi)
        if max(xs) > bx + w - 1 or max(ys) > by + h - 1:
            fail("Tooth%d: polygon box %d,%d-%d,%d exceeds its %dx%d picture"
                 % (fdi, bx, by, max(xs), max(ys), w, h))
        masks = {}
        for kind in ("assigned", "highlight"):
            name = "res/teeth/%s_%d.bmp" % (kind, fdi)
            try:
                pic = bitmap_files.read_bmp(load(root, name))
            except (FileNotFoundError, ValueError) as e:
                fail("%s: %s" % (name, e))
                continue
            if (pic["width"], pic["height"], pic["bits"]) != (w, h, 8):
                fail("%s: %dx%d, %d bits; want %dx%d, 8 bits"
                     % (name, pic["width"], pic["height"], pic["bits"], w, h))
                continue
            rgb = [pic["palette"][i] for i in pic["pixels"]]
            mask = [c != (0, 0, 0) for c in rgb]
            masks[kind] = mask
            check_tooth_picture(name, fdi, rgb, mask, poly, bx, by, w, h, chart_rgb, kind)
        if len(masks) == 2 and masks["assigned"] != masks["highlight"]:
            fail("Tooth%d: the green and the grey picture cover different pixels" % fdi)


def check_tooth_picture(name, fdi, rgb, mask, poly, bx, by, w, h, chart_rgb, kind):
    painted = sum(mask)
    if painted < w * h // 5:
        fail("%s: only %d of %d pixels show the tooth" % (name, painted, w * h))
        return
    if painted == w * h:
        fail("%s: no black background" % name)
        return
    # the tooth starts in the picture's first row and first column, so that
    # the polygon's box start is the tooth's start
    if not any(mask[:w]) or not any(mask[y * w] for y in range(h)):
        fail("%s: the tooth does not reach the first row and column" % name)
    outside = 0
    for y in range(h):
        for x in range(w):
            if not mask[y * w + x]:
                continue
            c = rgb[y * w + x]
            # pixel centres of the anti-aliased rim may lie outside the
            # polygon, which need not hold the crown's bulge entirely
            if distance_to_polygon(bx + x + 0.5, by + y + 0.5, poly) > 1.5:
                outside += 1
            if kind == "assigned" and not (c[1] > c[0] + 60 and c[1] > c[2] + 60):
                fail("%s: pixel %d,%d %s is not green" % (name, x, y, c))
                return
            if kind == "highlight" and max(c) - min(c) > 8:
                fail("%s: pixel %d,%d %s is not grey" % (name, x, y, c))
                return
    if outside:
        fail("%s: %d tooth pixels lie outside the tooth's polygon" % (name, outside))
    # same tooth, same place: the picture's brightness follows the chart's
    # pixel by pixel better there than one pixel off in any direction
    scores = {}
    for dy in (-1, 0, 1):
        for dx in (-1, 0, 1):
            pairs = []
            for y in range(h):
                for x in range(w):
                    if mask[y * w + x]:
                        cx, cy = bx + x + dx, by + y + dy
                        inside = 0 <= cx < CHART[0] and 0 <= cy < CHART[1]
                        pairs.append((luminance(chart_rgb[cy * CHART[0] + cx]) if inside else 0,
                                      luminance(rgb[y * w + x])))
            scores[dx, dy] = correlation(pairs)
    here = scores.pop((0, 0))
    if here < 0.8 or here <= max(scores.values()):
        fail("%s: does not match the chart at %d,%d (correlation %.3f there, %.3f one pixel off)"
             % (name, bx, by, here, max(scores.values())))


def correlation(pairs):
    n = len(pairs)
    ma = sum(a for a, _ in pairs) / n
    mb = sum(b for _, b in pairs) / n
    cov = sum((a - ma) * (b - mb) for a, b in pairs)
    va = sum((a - ma) ** 2 for a, _ in pairs)
    vb = sum((b - mb) ** 2 for _, b in pairs)
    return cov / math.sqrt(va * vb) if va and vb else 0.0


def check_layout(root):
    pic = bitmap_files.read_bmp(load(root, "res/layout.bmp"))
    w, h = pic["width"], pic["height"]
    if (w, h) != (341, 248) or pic["bits"] not in (8, 24):
        fail("layout.bmp: %dx%d, %d bits; want 341x248, 8 or 24 bits" % (w, h, pic["bits"]))
        return
    px = pic["pixels"] if pic["bits"] == 24 else [pic["palette"][i] for i in pic["pixels"]]
    # the host's image area, x 70..914 and y 50..748 of 1024 x 768 as the
    # canvas maps them, is dark throughout and the screen beside it is not
    l, t = 70 * w // 1024, 50 * h // 768
    r, b = 914 * w // 1024, 748 * h // 768
    if any(luminance(px[y * w + x]) > 60 for y in range(t, b + 1) for x in range(l, r + 1)):
        fail("layout.bmp: the image area %d,%d-%d,%d is not dark throughout" % (l, t, r, b))
    if luminance(px[(h // 2) * w + l - 2]) < 100 or luminance(px[(h // 2) * w + r + 3]) < 100:
        fail("layout.bmp: the dark area reaches beyond the image area")


def check_icon(root, name):
    data = load(root, name)
    import struct
    reserved, kind, count = struct.unpack_from("<HHH", data, 0)
    width, height, colours = data[6], data[7], data[8]
    offset = struct.unpack_from("<I", data, 18)[0]
    size, bw, bh, planes, bits = struct.unpack_from("<IiiHH", data, offset)
    mask_bytes = 32 * 4
    if (kind, count, width, height, colours, bits, bw, bh) != (1, 1, 32, 32, 16, 4, 32, 64) or \
            len(data) < offset + 40 + 64 + 32 * 16 + mask_bytes:
        fail("%s: want one 32 x 32 icon with 16 colours and an AND mask" % name)


def check_resource_script(root):
    rc = load(root, "res/Pictures.rc").decode("ascii")
    ids = {int(m.group(1)): m.group(2) for m in re.finditer(r'^(\d+) BITMAP "([^"]+)"', rc, re.M)}
    want = {15108} | {15100 + f for f in FDI} | {15200 + f for f in FDI}
    if set(ids) != want:
        fail("Pictures.rc: bitmap ids differ from 15108, 15111-15148, 15211-15248")
    for path in ids.values():
        if not os.path.exists(os.path.join(root, "res", *path.split("/"))):
            fail("Pictures.rc: %s does not exist" % path)
    if '#include "Pictures.rc"' not in load(root, "res/Zemblax.rc").decode("utf-8"):
        fail("Zemblax.rc does not include Pictures.rc")


def main():
    root = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "..", ".."))
    count = check_regenerated(root)
    polygons = read_polygons(load(root, "data/Template/Zemblax.ini"))
    check_chart(root, polygons)
    check_layout(root)
    check_icon(root, "res/sensor_h.ico")
    check_icon(root, "res/sensor_v.ico")
    check_resource_script(root)
    for message in failures:
        print("FAIL " + message)
    print("%d generated files compared, %d teeth checked: %s"
          % (count, len(polygons), "%d problems" % len(failures) if failures else "all good"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
