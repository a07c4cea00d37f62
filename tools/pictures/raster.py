"""Small drawing primitives on plain Python lists: anti-aliased polygon
coverage, blurs, and a median-cut palette."""

import math

SUBSAMPLES = 4  # per pixel and axis: 16 samples give smooth tooth edges


class Grid:
    """A rectangle of float values at integer picture coordinates."""

    def __init__(self, x0, y0, width, height):
        self.x0, self.y0, self.width, self.height = x0, y0, width, height
        self.values = [0.0] * (width * height)


def coverage(polygons, x0, y0, width, height):
    """Fraction of each pixel of the rectangle inside the union of the
    polygons (even-odd within one polygon), from SUBSAMPLES^2 samples."""
    s = SUBSAMPLES
    grid = Grid(x0, y0, width, height)
    out = grid.values
    edges = []
    for poly in polygons:
        pe = []
        for i, (ax, ay) in enumerate(poly):
            bx, by = poly[(i + 1) % len(poly)]
            if ay != by:
                pe.append((ax, ay, bx, by))
        edges.append(pe)
    for sy in range(height * s):
        yy = y0 + (sy + 0.5) / s
        row = bytearray(width * s)
        for pe in edges:
            xs = []
            for ax, ay, bx, by in pe:
                if (ay <= yy < by) or (by <= yy < ay):
                    xs.append(ax + (yy - ay) * (bx - ax) / (by - ay))
            xs.sort()
            for k in range(0, len(xs) - 1, 2):
                # sub-sample column c sits at x0 + (c + 0.5) / s
                a = max(0, math.ceil((xs[k] - x0) * s - 0.5))
                b = min(width * s, math.ceil((xs[k + 1] - x0) * s - 0.5))
                if b > a:
                    row[a:b] = b"\x01" * (b - a)
        if not any(row):
            continue
        base = (sy // s) * width
        for px in range(width):
            n = sum(row[px * s:(px + 1) * s])
            if n:
                out[base + px] += n
    total = float(s * s)
    grid.values = [v / total for v in out]
    return grid


def row_spans(polygons, y):
    """The union of the polygons along the horizontal line at y, as sorted,
    merged (start, end) intervals."""
    spans = []
    for poly in polygons:
        xs = []
        for i, (ax, ay) in enumerate(poly):
            bx, by = poly[(i + 1) % len(poly)]
            if (ay <= y < by) or (by <= y < ay):
                xs.append(ax + (y - ay) * (bx - ax) / (by - ay))
        xs.sort()
        spans.extend((xs[k], xs[k + 1]) for k in range(0, len(xs) - 1, 2))
    spans.sort()
    merged = []
    for a, b in spans:
        if merged and a <= merged[-1][1]:
            merged[-1] = (merged[-1][0], max(merged[-1][1], b))
        else:
            merged.append((a, b))
    return merged


def box_blur(values, width, height, radius, passes):
    """Repeated separable box blur; edges clamp."""
    v = list(values)
    for _ in range(passes):
        for horizontal in (True, False):
            out = [0.0] * len(v)
            n = 2 * radius + 1
            if horizontal:
                for y in range(height):
                    row = v[y * width:(y + 1) * width]
                    for x in range(width):
                        acc = 0.0
                        for k in range(-radius, radius + 1):
                            acc += row[min(width - 1, max(0, x + k))]
                        out[y * width + x] = acc / n
            else:
                for x in range(width):
                    for y in range(height):
                        acc = 0.0
                        for k in range(-radius, radius + 1):
                            acc += v[min(height - 1, max(0, y + k)) * width + x]
                        out[y * width + x] = acc / n
            v = out
    return v


def clamp8(value):
    return 0 if value < 0 else 255 if value > 255 else int(value + 0.5)


def lerp(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def median_cut(colours, limit):
    """Palette of at most limit colours for a list of (r, g, b) ints.
    Returns (palette sorted dark to light, {distinct colour: palette index})."""
    counts = {}
    for c in colours:
        counts[c] = counts.get(c, 0) + 1

    def describe(box):
        weight = sum(counts[c] for c in box)
        spans = [max(c[a] for c in box) - min(c[a] for c in box) for a in range(3)]
        axis = max(range(3), key=lambda a: (spans[a], -a))
        return [spans[axis] * math.sqrt(weight) if len(box) > 1 else 0, axis, box]

    boxes = [describe(sorted(counts))]
    while len(boxes) < limit:
        # split the box whose widest channel, weighted by its pixels, is largest
        best = max(range(len(boxes)), key=lambda i: (boxes[i][0], -i))
        score, axis, box = boxes[best]
        if score == 0:
            break
        box = sorted(box, key=lambda c: (c[axis], c))
        half = sum(counts[c] for c in box) / 2
        acc, cut = 0, 1
        for k, c in enumerate(box):
            acc += counts[c]
            if acc >= half:
                cut = min(max(k + 1, 1), len(box) - 1)
                break
        boxes[best:best + 1] = [describe(box[:cut]), describe(box[cut:])]
    palette = []
    for _, _, box in boxes:
        weight = sum(counts[c] for c in box)
        palette.append(tuple(clamp8(sum(c[a] * counts[c] for c in box) / weight)
                             for a in range(3)))
    order = sorted(range(len(palette)), key=lambda i: (sum(palette[i]), palette[i], i))
    rank = {old: new for new, old in enumerate(order)}
    lookup = {}
    for i, (_, _, box) in enumerate(boxes):
        for c in box:
            lookup[c] = rank[i]
    return [palette[i] for i in order], lookup
