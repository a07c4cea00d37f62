#!/usr/bin/env python3
"""Draws every picture of Zemblax.dll that is not a dialog: the dentition
chart (bitmap 15108), the green and grey single-tooth pictures (15111-15148,
15211-15248), the layout background (15107) and the sensor icons (15013,
15015); writes the tooth outlines into the settings file and the resource
script that lists the tooth pictures.

    draw_pictures.py [--root DIR] [--out DIR] [--overlay PNG]

--root is the repository (default: two levels above this file); its
data/Template/Zemblax.ini is the settings file whose tooth sections are
replaced. --out is where the files go, laid out as in the repository
(default: the repository itself). --overlay also writes a PNG of the chart
with every polygon outlined and some tooth pictures laid over their boxes.
Output depends on nothing but this code: running it twice gives the same
bytes."""

import argparse
import os
import sys

sys.dont_write_bytecode = True  # keep the source tree clean when CTest runs this
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import bitmap_files  # noqa: E402
import dentition     # noqa: E402
import raster        # noqa: E402
import screen        # noqa: E402
import teeth as T    # noqa: E402

DENTITION_ID = 15108
ASSIGNED_BASE = 15100
HIGHLIGHT_BASE = 15200
SETTINGS = os.path.join("data", "Template", "Zemblax.ini")


def assigned_name(fdi):
    return "res/teeth/assigned_%d.bmp" % fdi


def highlight_name(fdi):
    return "res/teeth/highlight_%d.bmp" % fdi


def quantised_bmp(width, height, rgb):
    palette, lookup = raster.median_cut(rgb, 256)
    return bitmap_files.bmp8(width, height, palette, [lookup[c] for c in rgb])


def tooth_bmp(width, height, rgb):
    """Index 0 is the transparent black and nothing else is black."""
    coloured = [c for c in rgb if c != (0, 0, 0)]
    palette, lookup = raster.median_cut(coloured, 255)
    if (0, 0, 0) in palette:
        raise AssertionError("a tooth colour quantised to black")
    indices = [0 if c == (0, 0, 0) else lookup[c] + 1 for c in rgb]
    return bitmap_files.bmp8(width, height, [(0, 0, 0)] + palette, indices)


TOOTH_COMMENT = [
    "; Tooth outlines in pixels of the dentition picture (529 x 250), four",
    "; vertices each; the smallest x and y are where the tooth's pictures go.",
    "; Drawn by tools/pictures/draw_pictures.py together with the pictures."]


def tooth_sections(polygons, newline):
    lines = list(TOOTH_COMMENT)
    for fdi in T.FDI_NUMBERS:
        lines.append("[Tooth%d]" % fdi)
        for v, (x, y) in enumerate(polygons[fdi], 1):
            lines.append("PolygonX%d=%d" % (v, x))
            lines.append("PolygonY%d=%d" % (v, y))
        if fdi != T.FDI_NUMBERS[-1]:
            lines.append("")
    return newline.join(lines).encode("ascii") + newline.encode("ascii")


def settings_with_teeth(original, polygons):
    """The settings file with its tooth sections replaced by new ones at the
    end; every other line stays byte for byte, so running this on its own
    output changes nothing."""
    newline = "\r\n" if b"\r\n" in original else "\n"
    ours = {line.encode("ascii") for line in TOOTH_COMMENT}
    kept, skipping = [], False
    for line in original.splitlines(keepends=True):
        text = line.strip()
        if text.startswith(b"["):
            skipping = text[1:].lower().startswith(b"tooth")
        if not skipping and text not in ours:
            kept.append(line)
    while kept and not kept[-1].strip():
        kept.pop()
    body = b"".join(kept)
    if body and not body.endswith(b"\n"):
        body += newline.encode("ascii")
    return body + newline.encode("ascii") + tooth_sections(polygons, newline)


def resource_script():
    lines = ["// Dentition chart and single-tooth pictures; written by",
             "// tools/pictures/draw_pictures.py, do not edit.",
             "%d BITMAP \"dentition.bmp\"" % DENTITION_ID]
    for fdi in T.FDI_NUMBERS:
        lines.append("%d BITMAP \"teeth/assigned_%d.bmp\"" % (ASSIGNED_BASE + fdi, fdi))
    for fdi in T.FDI_NUMBERS:
        lines.append("%d BITMAP \"teeth/highlight_%d.bmp\"" % (HIGHLIGHT_BASE + fdi, fdi))
    return ("\n".join(lines) + "\n").encode("ascii")


def build(root):
    """Every output file: {path relative to the repository: bytes}, plus the
    chart, polygons and tooth pictures for the overlay."""
    files = {}
    image, _, polygons, paints = dentition.paint_chart()
    W, H = T.CHART_WIDTH, T.CHART_HEIGHT
    chart = [tuple(raster.clamp8(v) for v in c) for c in image]
    files["res/dentition.bmp"] = quantised_bmp(W, H, chart)
    pictures = {}
    for fdi in T.FDI_NUMBERS:
        paint = paints[fdi]
        for name, tint in ((assigned_name(fdi), dentition.tint_green),
                           (highlight_name(fdi), dentition.tint_grey)):
            rgb = dentition.tooth_picture(image, paint, tint)
            files[name] = tooth_bmp(paint.w, paint.h, rgb)
            pictures[name] = (paint.x0, paint.y0, paint.w, paint.h, rgb)
    with open(os.path.join(root, SETTINGS), "rb") as f:
        files[SETTINGS.replace(os.sep, "/")] = settings_with_teeth(f.read(), polygons)
    files["res/Pictures.rc"] = resource_script()
    lw, lh = screen.LAYOUT_SIZE
    files["res/layout.bmp"] = bitmap_files.bmp24(lw, lh, screen.layout_picture())
    for name, vertical in (("res/sensor_h.ico", False), ("res/sensor_v.ico", True)):
        files[name] = bitmap_files.ico4(32, *screen.sensor_icon(vertical))
    return files, chart, polygons, pictures


def overlay_png(chart, polygons, pictures, shown):
    """The chart at twice its size with every polygon outlined in red and the
    named tooth pictures (black left out) laid over their boxes."""
    W, H = T.CHART_WIDTH, T.CHART_HEIGHT
    img = list(chart)
    for name in shown:
        x0, y0, w, h, rgb = pictures[name]
        for y in range(h):
            for x in range(w):
                c = rgb[y * w + x]
                if c != (0, 0, 0) and 0 <= x0 + x < W and 0 <= y0 + y < H:
                    img[(y0 + y) * W + x0 + x] = c
    S = 2
    big = [img[(y // S) * W + x // S] for y in range(H * S) for x in range(W * S)]
    for poly in polygons.values():
        for k in range(4):
            (ax, ay), (bx, by) = poly[k], poly[(k + 1) % 4]
            n = int(max(abs(bx - ax), abs(by - ay)) * S * 2) + 1
            for i in range(n + 1):
                x = int((ax + (bx - ax) * i / n) * S)
                y = int((ay + (by - ay) * i / n) * S)
                if 0 <= x < W * S and 0 <= y < H * S:
                    big[y * W * S + x] = (255, 40, 40)
    return bitmap_files.png(W * S, H * S, big)


def main(argv=None):
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", default=os.path.normpath(os.path.join(here, "..", "..")))
    parser.add_argument("--out")
    parser.add_argument("--overlay")
    args = parser.parse_args(argv)
    out = args.out or args.root
    files, chart, polygons, pictures = build(args.root)
    for name, data in sorted(files.items()):
        path = os.path.join(out, *name.split("/"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(data)
    if args.overlay:
        shown = [assigned_name(f) for f in (11, 16, 23, 27, 34, 38, 41, 46)] + \
                [highlight_name(f) for f in (13, 18, 25, 31, 36, 43, 47)]
        with open(args.overlay, "wb") as f:
            f.write(overlay_png(chart, polygons, pictures, shown))
    print("wrote %d files to %s" % (len(files), out))
    return 0


if __name__ == "__main__":
    sys.exit(main())
