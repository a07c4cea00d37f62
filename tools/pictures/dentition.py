"""Paints the dentition chart and the green and grey single-tooth pictures
from the tooth outlines."""

import math

import raster
import teeth as T

BACKGROUND_MID = (46, 52, 62)
BACKGROUND_EDGE = (30, 34, 42)
GUIDE = (66, 74, 86)             # the midline and the occlusal line
ENAMEL = (246, 243, 232)
ENAMEL_CERVICAL = (232, 217, 178)
INCISAL = (184, 196, 210)        # translucent incisal edge
ROOT = (224, 204, 164)
ROOT_APEX = (204, 178, 136)
LIGHT = (-0.42, -0.55, 0.72)     # from the upper left, towards the viewer
EDGE_RADIUS = 8.0                # pixels over which a tooth's surface rounds off


def background(x, y, occlusal):
    t = abs(y + 0.5 - T.CHART_HEIGHT / 2) / (T.CHART_HEIGHT / 2)
    colour = raster.lerp(BACKGROUND_MID, BACKGROUND_EDGE, t * t)
    if (x == T.MIDLINE_X and 8 <= y < T.CHART_HEIGHT - 8) or \
            (y == occlusal and 8 <= x < T.CHART_WIDTH - 8):
        colour = GUIDE
    return colour


def _smoothstep(e0, e1, v):
    t = min(1.0, max(0.0, (v - e0) / (e1 - e0)))
    return t * t * (3 - 2 * t)


class ToothPaint:
    """One tooth rasterised over its picture's rectangle: coverage and colour
    per pixel."""

    def __init__(self, tooth, box):
        self.tooth = tooth
        self.x0, self.y0, self.w, self.h = box
        outline = T.chart_outline(tooth)
        self.polygons = [p for _, p in outline]
        self.cover = raster.coverage(self.polygons, self.x0, self.y0, self.w, self.h)
        self.front = raster.coverage([p for part, p in outline if part == "front"],
                                     self.x0, self.y0, self.w, self.h)
        self.colour = self._shade()

    def _height_field(self, polygons):
        # every span of every row is a bar rounded off at its ends; broad
        # spans keep a flat middle, so that a molar's trunk does not stand
        # out like a shelf above its roots. Blurring rounds crown and apex.
        w, h = self.w, self.h
        field = [0.0] * (w * h)
        for y in range(h):
            for a, b in raster.row_spans(polygons, self.y0 + y + 0.5):
                half = (b - a) / 2
                mid = a + half
                r = min(half, EDGE_RADIUS)
                for x in range(max(0, int(a - self.x0)), min(w, int(b - self.x0) + 1)):
                    u = max(0.0, abs(self.x0 + x + 0.5 - mid) - (half - r)) / r
                    if u < 1:
                        field[y * w + x] = r * 0.9 * math.sqrt(1 - u * u)
        return raster.box_blur(field, w, h, 1, 2)

    def _rim(self, x, y):
        """Distance from pixel (x, y) to the nearest pixel outside the tooth,
        up to 2."""
        best = 2.0
        for dy in range(-2, 3):
            for dx in range(-2, 3):
                gx, gy = x + dx, y + dy
                outside = not (0 <= gx < self.w and 0 <= gy < self.h) or \
                    self.cover.values[gy * self.w + gx] < 0.5
                if outside:
                    best = min(best, math.hypot(dx, dy))
        return best

    def _shade(self):
        tooth, k = self.tooth, self.tooth.kind
        w, h = self.w, self.h
        field = self._height_field(self.polygons)
        ln = math.sqrt(sum(c * c for c in LIGHT))
        light = [c / ln for c in LIGHT]
        half = [light[0], light[1], light[2] + 1]
        hn = math.sqrt(sum(c * c for c in half))
        half = [c / hn for c in half]
        ch = k.crown_height
        out = [None] * (w * h)
        for y in range(h):
            for x in range(w):
                i = y * w + x
                if self.cover.values[i] <= 0:
                    continue
                lx, ly = tooth.to_local(self.x0 + x + 0.5, self.y0 + y + 0.5)
                # crown or root, with a soft junction
                cej = T.cej_y(tooth, lx)
                crown = 1 - _smoothstep(cej - 0.8, cej + 0.8, ly)
                enamel = raster.lerp(ENAMEL, ENAMEL_CERVICAL, min(1.0, max(0.0, ly / cej)) ** 2)
                if k.incisal:
                    edge = T.occlusal_y(k, tooth.width, lx)
                    depth = (ly - edge) / (0.2 * ch)
                    if depth < 1:
                        enamel = raster.lerp(enamel, INCISAL, 0.6 * (1 - max(0.0, depth)))
                t = min(1.0, max(0.0, (ly - ch) / max(1, tooth.root_length)))
                root = raster.lerp(ROOT, ROOT_APEX, t)
                behind = max(0.0, self.cover.values[i] - self.front.values[i])
                if behind > 0:
                    root = raster.lerp(root, tuple(c * 0.8 for c in root),
                                       behind / self.cover.values[i])
                base = raster.lerp(root, enamel, crown)
                # light on the rounded surface
                gx = (field[y * w + min(w - 1, x + 1)] - field[y * w + max(0, x - 1)]) / 2
                gy = (field[min(h - 1, y + 1) * w + x] - field[max(0, y - 1) * w + x]) / 2
                nx, ny, nz = -gx, -gy, 1.0
                nn = math.sqrt(nx * nx + ny * ny + nz * nz)
                nx, ny, nz = nx / nn, ny / nn, nz / nn
                diffuse = max(0.0, nx * light[0] + ny * light[1] + nz * light[2])
                spec = max(0.0, nx * half[0] + ny * half[1] + nz * half[2])
                gloss = crown * 0.38 * spec ** 28 + (1 - crown) * 0.10 * spec ** 10
                shade = 0.40 + 0.68 * diffuse
                # buccal grooves below the notches between cusps
                for g in k.grooves:
                    gxl = g * tooth.width
                    top = T.occlusal_y(k, tooth.width, gxl)
                    along = (ly - top) / (0.5 * ch)
                    across = abs(lx - gxl)
                    if 0 <= along < 1 and across < 1.2:
                        shade *= 1 - 0.30 * (1 - across / 1.2) * (1 - along)
                # the junction line and the silhouette's rim
                shade *= 1 - 0.12 * (1 - abs(2 * crown - 1))
                shade *= 1 - 0.45 * min(1.0, max(0.0, 1.7 - self._rim(x, y)))
                out[i] = tuple(c * shade + 255 * gloss for c in base)
        return out


def paint_chart():
    """The chart as a row-major list of float (r, g, b), the placed teeth,
    their hit polygons and the painted teeth, keyed by FDI number."""
    teeth = T.place_teeth()
    W, H = T.CHART_WIDTH, T.CHART_HEIGHT
    occlusal = teeth[11].occlusal + T.OCCLUSAL_GAP // 2
    image = [background(x, y, occlusal) for y in range(H) for x in range(W)]
    polygons, paints = {}, {}
    for fdi in T.FDI_NUMBERS:
        tooth = teeth[fdi]
        poly = T.hit_polygon(tooth)
        polygons[fdi] = poly
        bx = min(x for x, _ in poly)
        by = min(y for _, y in poly)
        pw, ph = T.PICTURE_SIZES[fdi]
        paint = ToothPaint(tooth, (bx, by, pw, ph))
        paints[fdi] = paint
        for y in range(ph):
            for x in range(pw):
                a = paint.cover.values[y * pw + x]
                cx, cy = bx + x, by + y
                if a > 0 and 0 <= cx < W and 0 <= cy < H:
                    i = cy * W + cx
                    image[i] = raster.lerp(image[i], paint.colour[y * pw + x], a)
    return image, teeth, polygons, paints


# The chart shrinks the tooth pictures with the default stretch mode, which
# ANDs the colours of merged pixels. Channel values from this chain (each one
# holds the bits of the one before) AND to the smaller of the two, so a
# shrunken picture keeps its own colours instead of breaking into specks.
AND_CHAIN = (0, 128, 192, 224, 240, 248, 252, 254, 255)


def _snap(value):
    return min(AND_CHAIN, key=lambda c: (abs(c - value), c))


def _brightness(c):
    """0 for the chart's background, 1 for the brightest enamel."""
    y = 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2]
    return min(1.0, max(0.0, (y - 45) / 200))


def tint_green(c):
    t = _brightness(c)
    pale = 128 if t > 0.92 else 0    # the gloss stays visible
    return (pale, max(128, _snap(100 + 130 * t)), pale)


def tint_grey(c):
    v = max(128, _snap(96 + 110 * _brightness(c)))
    return (v, v, v)


def tooth_picture(image, paint, tint):
    """The tooth as the chart shows it, tinted, on pure black: a list of
    (r, g, b) ints over the picture's rectangle."""
    W = T.CHART_WIDTH
    out = []
    for y in range(paint.h):
        for x in range(paint.w):
            if paint.cover.values[y * paint.w + x] > 0:
                c = tint(image[(paint.y0 + y) * W + paint.x0 + x])
                out.append(tuple(max(1, raster.clamp8(v)) for v in c))
            else:
                out.append((0, 0, 0))
    return out
