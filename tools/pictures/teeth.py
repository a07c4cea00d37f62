"""The permanent dentition as data: the size of every tooth's picture, the
kinds of teeth, where each tooth sits in the 529 x 250 chart, its outline
as polygons and the four-vertex polygon that the chart hit-tests."""

import math
from dataclasses import dataclass

CHART_WIDTH, CHART_HEIGHT = 529, 250

# Width x height of each tooth's single-tooth pictures, by FDI number. The
# polygons must start where these pictures are drawn, so every position is
# derived from this table.
PICTURE_SIZES = {
    11: (27, 101), 12: (29, 97), 13: (32, 93), 14: (37, 88),
    15: (34, 81), 16: (45, 71), 17: (48, 76), 18: (35, 33),
    21: (29, 106), 22: (25, 96), 23: (20, 95), 24: (31, 87),
    25: (34, 84), 26: (39, 73), 27: (44, 74), 28: (38, 38),
    31: (19, 73), 32: (26, 78), 33: (30, 88), 34: (34, 88),
    35: (32, 77), 36: (62, 85), 37: (59, 78), 38: (44, 48),
    41: (21, 74), 42: (23, 85), 43: (28, 96), 44: (31, 94),
    45: (39, 75), 46: (63, 83), 47: (61, 77), 48: (47, 47),
}

FDI_NUMBERS = [q * 10 + t for q in (1, 2, 3, 4) for t in range(1, 9)]

CONTACT_GAP = 1     # pixels between neighbouring crowns
OCCLUSAL_GAP = 6    # pixels between the upper and the lower cusp tips
ROW_MARGIN = 6      # least free pixels left and right of a row
MIDLINE_X = (CHART_WIDTH - 1) // 2   # the gap column between 11/21 and 41/31


@dataclass(frozen=True)
class Root:
    """One root, in shares of the crown width: centre at the cervix,
    half-width there, shift of the apex (positive = distal), and length as
    a share of the tooth's root length. A back root (palatal) is shaded as
    lying behind the others."""
    centre: float
    half_width: float
    apex_shift: float
    length: float = 1.0
    back: bool = False
    taper: float = 0.5       # how much narrower the root gets towards the apex


@dataclass(frozen=True)
class Cusp:
    """A cusp tip at a share of the crown width, lying drop x crown height
    below the occlusal line, its ridges falling slope pixels per pixel."""
    at: float
    drop: float
    slope: float


@dataclass(frozen=True)
class Kind:
    name: str
    width_mm: float          # crown width, sets the proportions along a row
    crown_height: int        # pixels from cusp tip to cervix
    contact: float           # height of the widest point, share of the crown
    cervix: float            # width at the cervix, share of the crown width
    corners: tuple           # rounding of the mesial and distal occlusal corners
    cusps: tuple
    roots: tuple
    furcation: float = 0.0   # depth of the common root trunk, share of the root
    grooves: tuple = ()      # buccal grooves, shares of the crown width
    incisal: bool = False    # translucent incisal edge
    cej_dip: float = 0.08    # how far the enamel reaches down the middle


FLAT = (Cusp(0.5, 0.0, 0.0),)   # an incisal edge

UPPER = {
    1: Kind("upper central incisor", 8.5, 40, 0.18, 0.68, (0.10, 0.24), FLAT,
            (Root(0.5, 0.34, 0.05),), incisal=True, cej_dip=0.14),
    2: Kind("upper lateral incisor", 6.5, 36, 0.22, 0.64, (0.16, 0.34), FLAT,
            (Root(0.5, 0.32, 0.09),), incisal=True, cej_dip=0.14),
    3: Kind("upper canine", 7.5, 31, 0.42, 0.70, (0.22, 0.26), (Cusp(0.46, 0.0, 0.95),),
            (Root(0.5, 0.35, 0.08),), cej_dip=0.12),
    4: Kind("upper first premolar", 7.0, 31, 0.36, 0.70, (0.18, 0.18),
            (Cusp(0.32, 0.0, 0.85), Cusp(0.70, 0.10, 0.85)),
            (Root(0.40, 0.22, 0.0), Root(0.60, 0.20, 0.06, 0.95, back=True)),
            furcation=0.45),
    5: Kind("upper second premolar", 6.5, 30, 0.36, 0.70, (0.18, 0.18),
            (Cusp(0.33, 0.0, 0.85), Cusp(0.69, 0.08, 0.85)),
            (Root(0.5, 0.35, 0.07),)),
    6: Kind("upper first molar", 10.0, 28, 0.36, 0.80, (0.14, 0.16),
            (Cusp(0.25, 0.0, 0.62), Cusp(0.74, 0.06, 0.62)),
            (Root(0.5, 0.15, 0.02, 1.0, back=True), Root(0.25, 0.16, -0.08, 0.9, taper=0.35),
             Root(0.75, 0.15, 0.13, 0.84, taper=0.35)),
            furcation=0.2, grooves=(0.5,), cej_dip=0.05),
    7: Kind("upper second molar", 9.0, 27, 0.36, 0.80, (0.14, 0.18),
            (Cusp(0.27, 0.0, 0.62), Cusp(0.73, 0.10, 0.62)),
            (Root(0.52, 0.15, 0.04, 1.0, back=True), Root(0.27, 0.16, -0.04, 0.92, taper=0.35),
             Root(0.73, 0.15, 0.12, 0.86, taper=0.35)),
            furcation=0.3, grooves=(0.5,), cej_dip=0.05),
    8: Kind("upper third molar", 8.5, 17, 0.38, 0.78, (0.18, 0.24),
            (Cusp(0.30, 0.0, 0.65), Cusp(0.70, 0.14, 0.65)),
            (Root(0.30, 0.20, 0.08, taper=0.3), Root(0.70, 0.20, 0.12, 0.9, taper=0.3)),
            furcation=0.6, grooves=(0.5,), cej_dip=0.05),
}

LOWER = {
    1: Kind("lower central incisor", 5.0, 28, 0.15, 0.62, (0.08, 0.12), FLAT,
            (Root(0.5, 0.31, 0.03),), incisal=True, cej_dip=0.14),
    2: Kind("lower lateral incisor", 5.5, 30, 0.17, 0.62, (0.10, 0.20), FLAT,
            (Root(0.5, 0.31, 0.05),), incisal=True, cej_dip=0.14),
    3: Kind("lower canine", 7.0, 33, 0.40, 0.68, (0.20, 0.26), (Cusp(0.45, 0.0, 0.9),),
            (Root(0.5, 0.34, 0.07),), cej_dip=0.12),
    4: Kind("lower first premolar", 7.0, 30, 0.36, 0.66, (0.18, 0.18),
            (Cusp(0.42, 0.0, 0.85), Cusp(0.77, 0.24, 0.8)),
            (Root(0.5, 0.33, 0.07),)),
    5: Kind("lower second premolar", 7.0, 29, 0.36, 0.68, (0.18, 0.18),
            (Cusp(0.34, 0.0, 0.85), Cusp(0.70, 0.10, 0.8)),
            (Root(0.5, 0.34, 0.07),)),
    6: Kind("lower first molar", 11.0, 28, 0.36, 0.80, (0.12, 0.16),
            (Cusp(0.18, 0.0, 0.62), Cusp(0.50, 0.02, 0.62), Cusp(0.82, 0.10, 0.62)),
            (Root(0.25, 0.15, -0.05, taper=0.35), Root(0.75, 0.14, 0.12, 0.92, taper=0.35)),
            furcation=0.26, grooves=(0.34, 0.66), cej_dip=0.05),
    7: Kind("lower second molar", 10.5, 27, 0.36, 0.80, (0.14, 0.18),
            (Cusp(0.26, 0.0, 0.62), Cusp(0.74, 0.05, 0.62)),
            (Root(0.27, 0.15, 0.04, taper=0.35), Root(0.73, 0.14, 0.11, 0.93, taper=0.35)),
            furcation=0.34, grooves=(0.5,), cej_dip=0.05),
    8: Kind("lower third molar", 10.0, 24, 0.38, 0.78, (0.16, 0.22),
            (Cusp(0.27, 0.0, 0.62), Cusp(0.73, 0.08, 0.62)),
            (Root(0.29, 0.15, 0.12, taper=0.4), Root(0.71, 0.14, 0.12, 0.88, taper=0.4)),
            furcation=0.45, grooves=(0.5,), cej_dip=0.05),
}


def kind_of(fdi):
    return (UPPER if fdi < 30 else LOWER)[fdi % 10]


@dataclass
class Tooth:
    """One tooth placed in the chart. Local coordinates run from the mesial
    side (x 0) to the distal side (x width) and from the cusp tips (y 0) to
    the apex (y height)."""
    fdi: int
    kind: Kind
    width: int
    height: int
    left: int          # chart x of the tooth's leftmost column
    occlusal: int      # chart y of the cusp tips
    upper: bool
    mesial_right: bool  # the patient's right half, shown on the viewer's left

    def to_chart(self, x, y):
        cx = self.left + (self.width - x if self.mesial_right else x)
        cy = self.occlusal - y if self.upper else self.occlusal + y
        return cx, cy

    def to_local(self, cx, cy):
        x = self.width - (cx - self.left) if self.mesial_right else cx - self.left
        y = self.occlusal - cy if self.upper else cy - self.occlusal
        return x, y

    @property
    def top(self):
        return self.occlusal - self.height if self.upper else self.occlusal

    @property
    def root_length(self):
        return self.height - self.kind.crown_height


def _partner(fdi):
    """The same tooth in the other half of the same jaw."""
    q, t = divmod(fdi, 10)
    return {1: 2, 2: 1, 3: 4, 4: 3}[q] * 10 + t


def _row_widths(quadrant):
    """Crown widths for the jaw of a quadrant: anatomical proportions, each
    capped by the narrower picture of the tooth's pair (so that both halves
    match), at a scale still to be chosen. Returns the row for a scale, the
    span of a row and the widest possible span."""
    caps, mm = {}, {}
    for t in range(1, 9):
        fdi = quadrant * 10 + t
        caps[t] = min(PICTURE_SIZES[fdi][0], PICTURE_SIZES[_partner(fdi)][0]) - 1
        mm[t] = kind_of(fdi).width_mm

    def row(scale):
        return {t: min(caps[t], int(scale * mm[t])) for t in caps}

    def span(widths):
        return 2 * sum(widths.values()) + 15 * CONTACT_GAP

    return row, span, span(caps)


def place_teeth():
    """Every tooth of the chart, keyed by FDI number."""
    upper_row, upper_span, upper_max = _row_widths(1)
    lower_row, lower_span, lower_max = _row_widths(4)
    target = min(upper_max, lower_max, CHART_WIDTH - 2 * ROW_MARGIN)
    rows = {}
    for name, row, span in (("upper", upper_row, upper_span), ("lower", lower_row, lower_span)):
        lo, hi = 0.0, 20.0
        for _ in range(60):   # largest scale whose row still fits
            mid = (lo + hi) / 2
            lo, hi = (mid, hi) if span(row(mid)) <= target else (lo, mid)
        rows[name] = row(lo)

    heights = {fdi: min(PICTURE_SIZES[fdi][1], PICTURE_SIZES[_partner(fdi)][1]) - 1
               for fdi in FDI_NUMBERS}
    upper_tall = max(heights[f] for f in FDI_NUMBERS if f < 30)
    lower_tall = max(heights[f] for f in FDI_NUMBERS if f > 30)
    upper_occlusal = (CHART_HEIGHT + upper_tall - lower_tall - OCCLUSAL_GAP) // 2
    lower_occlusal = upper_occlusal + OCCLUSAL_GAP

    teeth = {}
    for q in (1, 2, 3, 4):
        upper = q in (1, 2)
        widths = rows["upper" if upper else "lower"]
        viewer_left = q in (1, 4)
        x = MIDLINE_X if viewer_left else MIDLINE_X + 1
        for t in range(1, 9):
            fdi = q * 10 + t
            w = widths[t]
            left = x - w if viewer_left else x
            x = left - CONTACT_GAP if viewer_left else left + w + CONTACT_GAP
            teeth[fdi] = Tooth(fdi, kind_of(fdi), w, heights[fdi], left,
                               upper_occlusal if upper else lower_occlusal, upper, viewer_left)
    return teeth


# ---- outline -------------------------------------------------------------

def occlusal_y(kind, w, x):
    """Depth of the occlusal outline below the cusp tips at local x."""
    ch = kind.crown_height
    yc = kind.contact * ch
    deepest = min(c.drop * ch + math.hypot((x - c.at * w) * c.slope, 1.2) - 1.2
                  for c in kind.cusps)
    rm, rd = kind.corners[0] * w, kind.corners[1] * w
    corner = 0.0
    if x < rm:
        corner = yc * (1 - math.sqrt(max(0.0, 1 - ((rm - x) / rm) ** 2)))
    elif x > w - rd:
        corner = yc * (1 - math.sqrt(max(0.0, 1 - ((x - (w - rd)) / rd) ** 2)))
    return min(yc, max(corner, deepest))


def _side_inset(kind, w, y):
    """How far the crown's side lies inside the contact width at local y."""
    ch = kind.crown_height
    yc = kind.contact * ch
    t = min(1.0, max(0.0, (y - yc) / (ch - yc)))
    return (1 - kind.cervix) * w / 2 * t ** 1.6


def cej_y(tooth, x):
    """Local y where enamel ends at local x (the cementoenamel junction)."""
    k, w = tooth.kind, tooth.width
    half = k.cervix * w / 2
    u = min(1.0, abs(x - w / 2) / half) if half else 1.0
    return k.crown_height + k.cej_dip * k.crown_height * (1 - u * u)


def _crown(tooth):
    k, w = tooth.kind, tooth.width
    ch = k.crown_height
    yc = k.contact * ch
    pts = []
    steps = int(w * 3)
    for i in range(steps + 1):
        x = w * i / steps
        pts.append((x, occlusal_y(k, w, x)))
    n = max(4, int((ch - yc) * 2))
    right = [(w - _side_inset(k, w, yc + (ch + 1 - yc) * i / n), yc + (ch + 1 - yc) * i / n)
             for i in range(1, n + 1)]
    left = [(w - x, y) for x, y in reversed(right)]
    return pts + right + left


def _root(tooth, root):
    """A root from the cervix to its apex. The roots of a multi-rooted tooth
    are joined in the tooth's middle down to the furcation (the trunk) and
    part there under a rounded arch."""
    k, w = tooth.kind, tooth.width
    ys = k.crown_height - 1.0
    span = tooth.height - ys
    length = span * root.length
    c0, hw0, shift = root.centre * w, root.half_width * w, root.apex_shift * w
    mesial = c0 < w / 2
    edge = (1 - k.cervix) * w / 2   # roots leave the cervix at the neck's width
    joined = k.furcation > 0 and not root.back
    trunk = k.furcation * span
    n = max(8, int(length))
    left, right = [], []
    for i in range(n + 1):
        t = i / n
        c = c0 + shift * t * t
        hw = hw0 * (1 - root.taper * t ** 1.3) * math.sqrt(max(0.0, 1 - t ** 5))
        spread = edge - max(0.0, t - 0.25) * 0.25 * w   # splaying roots may pass it
        lo, hi = max(spread, c - hw), min(w - spread, c + hw)
        if joined:
            d = length * t - trunk
            inner = hi if mesial else lo
            full = abs(w / 2 - inner)
            off = 0.0 if d <= 0 else full if d >= full else math.sqrt(2 * full * d - d * d)
            if mesial:
                hi = max(hi, w / 2 + 0.5 - off)
            else:
                lo = min(lo, w / 2 - 0.5 + off)
        left.append((lo, ys + length * t))
        right.append((hi, ys + length * t))
    return left + list(reversed(right))


def local_outline(tooth):
    """Polygons in local coordinates: (part, points), part one of 'front'
    or 'back'. Their union is the tooth's silhouette."""
    k = tooth.kind
    parts = [("front", _crown(tooth))]
    for r in k.roots:
        parts.append(("back" if r.back else "front", _root(tooth, r)))
    return parts


def chart_outline(tooth):
    return [(part, [tooth.to_chart(x, y) for x, y in pts]) for part, pts in local_outline(tooth)]


# ---- hit-test polygon ------------------------------------------------------

def _hull(points):
    pts = sorted(set(points))
    if len(pts) < 3:
        return pts

    def cross(o, a, b):
        return (a[0] - o[0]) * (b[1] - o[1]) - (a[1] - o[1]) * (b[0] - o[0])

    lower, upper = [], []
    for p in pts:
        while len(lower) >= 2 and cross(lower[-2], lower[-1], p) <= 0:
            lower.pop()
        lower.append(p)
    for p in reversed(pts):
        while len(upper) >= 2 and cross(upper[-2], upper[-1], p) <= 0:
            upper.pop()
        upper.append(p)
    return lower[:-1] + upper[:-1]


HIT_SLACK = 1.0   # pixels by which the outline may leave its polygon


def hit_polygon(tooth):
    """Four integer vertices hugging the tooth: the occlusal corners of its
    bounding box and two vertices on the apical row, each as far in as keeps
    the silhouette within HIT_SLACK of the polygon. The crown's widest point
    lies above its cusps, so no four-cornered shape inside the box holds the
    whole tooth; the slack lets the sides follow the root all the same. The
    box of the polygon is the tooth's box: that is where its pictures go."""
    points = _hull([p for _, pts in chart_outline(tooth) for p in pts])
    top, bottom = tooth.top, tooth.top + tooth.height
    left, right = tooth.left, tooth.left + tooth.width
    apex_row, crown_row = (top, bottom) if tooth.upper else (bottom, top)

    def miss(ax, ay, bx, by, sign):
        # how far any outline point lies on the outer side of the line a-b
        length = math.hypot(bx - ax, by - ay)
        worst = 0.0
        for px, py in points:
            d = sign * ((bx - ax) * (py - ay) - (by - ay) * (px - ax)) / length
            worst = max(worst, d)
        return worst

    # outer side: left of the line from the crown corner to the apex vertex
    # for the left side, right of it for the right side (chart y grows down)
    side = 1 if tooth.upper else -1
    xa = left
    for x in range(left, right + 1):
        if miss(left, crown_row, x, apex_row, -side) <= HIT_SLACK:
            xa = x
    xb = right
    for x in range(right, xa - 1, -1):
        if miss(right, crown_row, x, apex_row, side) <= HIT_SLACK:
            xb = x
    if tooth.upper:
        return [(xa, top), (xb, top), (right, bottom), (left, bottom)]
    return [(left, top), (right, top), (xb, bottom), (xa, bottom)]
