"""The small picture of the host's main screen behind the layout canvas, and
the two sensor icons of the palette."""

import math

LAYOUT_SIZE = (341, 248)
LAYOUT_SPACE = (1024, 768)
LAYOUT_AREA = (70, 50, 914, 748)   # the host's image area in layout units

FACE = (212, 208, 200)
LIGHT_EDGE = (255, 255, 255)
DARK_EDGE = (128, 128, 128)
SHADOW = (64, 64, 64)
IMAGE_AREA = (22, 24, 28)
CAPTION = ((10, 36, 106), (96, 144, 210))
GLYPH = (60, 60, 60)


def image_area_pixels():
    """The image area in picture pixels, first and last column and row: the
    layout area scaled to the picture, truncated as the canvas truncates."""
    w, h = LAYOUT_SIZE
    sw, sh = LAYOUT_SPACE
    l, t, r, b = LAYOUT_AREA
    return l * w // sw, t * h // sh, r * w // sw, b * h // sh


def _raised(img, w, x0, y0, x1, y1):
    for y in range(y0, y1):
        for x in range(x0, x1):
            c = FACE
            if y == y0 or x == x0:
                c = LIGHT_EDGE
            elif y == y1 - 1 or x == x1 - 1:
                c = SHADOW
            elif y == y1 - 2 or x == x1 - 2:
                c = DARK_EDGE
            img[y * w + x] = c


def _sunken(img, w, x0, y0, x1, y1, fill):
    for y in range(y0, y1):
        for x in range(x0, x1):
            c = fill
            if y == y0 or x == x0:
                c = DARK_EDGE
            elif y == y1 - 1 or x == x1 - 1:
                c = LIGHT_EDGE
            img[y * w + x] = c


def _tool_glyph(img, w, kind, cx, cy):
    """Small dark symbols on the tool buttons: magnifier, contrast, rotation,
    ruler, text, hand."""
    def put(x, y, c=GLYPH):
        img[(cy + y) * w + cx + x] = c

    if kind == 0:   # magnifier
        for a in range(24):
            t = 2 * math.pi * a / 24
            put(round(-1 + 3 * math.cos(t)), round(-1 + 3 * math.sin(t)))
        for k in range(3):
            put(2 + k, 2 + k)
            put(3 + k, 2 + k)
    elif kind == 1:  # contrast: half-filled square
        for y in range(-4, 5):
            for x in range(-4, 5):
                if abs(x) == 4 or abs(y) == 4 or x < 0:
                    put(x, y)
    elif kind == 2:  # rotation arrow
        for a in range(20):
            t = math.pi * (0.2 + 1.5 * a / 19)
            put(round(4 * math.cos(t)), round(-4 * math.sin(t)))
        for k in range(3):
            put(3 - k, 1 + k)
            put(3 + k, 1 + k)
    elif kind == 3:  # ruler
        for x in range(-5, 6):
            put(x, 2)
            put(x, -1)
        for x in range(-5, 6, 2):
            put(x, 0)
        for y in range(-1, 3):
            put(-5, y)
            put(5, y)
    elif kind == 4:  # text
        for x in range(-4, 5):
            put(x, -4)
        for y in range(-4, 5):
            put(0, y)
        put(-1, 4)
        put(1, 4)
    else:            # brightness: sun
        for y in range(-2, 3):
            for x in range(-2, 3):
                if x * x + y * y <= 5:
                    put(x, y)
        for a in range(8):
            t = math.pi * a / 4
            put(round(4 * math.cos(t)), round(4 * math.sin(t)))


def layout_picture():
    """Row-major (r, g, b) ints of the 341 x 248 main screen."""
    w, h = LAYOUT_SIZE
    img = [FACE] * (w * h)
    il, it, ir, ib = image_area_pixels()
    # title bar with caption text and buttons
    for y in range(0, 9):
        for x in range(w):
            t = x / (w - 1)
            img[y * w + x] = tuple(int(a + (b - a) * t) for a, b in zip(*CAPTION))
    for x in range(14, 70):
        for y in (3, 4, 5):
            if (x // 4) % 5 != 4:
                img[y * w + x] = (255, 255, 255)
    for x in range(4, 10):
        img[2 * w + x] = (240, 200, 80)
    for k in range(3):
        x0 = w - 9 - 8 * k
        _raised(img, w, x0, 1, x0 + 7, 8)
    # menu bar
    x = 5
    for word in (18, 22, 16, 26, 20, 12):
        for xx in range(x, x + word):
            img[11 * w + xx] = GLYPH
            img[12 * w + xx] = GLYPH
        x += word + 8
    for x in range(w):
        img[(it - 1) * w + x] = DARK_EDGE
    # left strip: patient card and thumbnails of the series
    _sunken(img, w, 1, it, il - 2, ib + 1, (236, 236, 232))
    for k in range(6):
        y0 = it + 4 + 16 * k
        _sunken(img, w, 4, y0, il - 5, y0 + 12, (70, 74, 82) if k else (120, 130, 150))
    # the image area, where the takes are placed, in a sunken frame around it
    _sunken(img, w, il - 1, it - 1, ir + 2, ib + 2, IMAGE_AREA)
    for y in range(it, ib + 1):
        for x in range(il, ir + 1):
            img[y * w + x] = IMAGE_AREA
    # tool strip at the right
    for k in range(9):
        y0 = it + 3 + 24 * k
        if y0 + 22 > ib:
            break
        _raised(img, w, ir + 6, y0, w - 5, y0 + 22)
        _tool_glyph(img, w, k % 6, (ir + 6 + w - 5) // 2, y0 + 11)
    # status bar
    _sunken(img, w, 2, ib + 2, 160, h, FACE)
    _sunken(img, w, 162, ib + 2, 250, h, FACE)
    _sunken(img, w, 252, ib + 2, w - 2, h, FACE)
    return img


# ---- sensor icons ----------------------------------------------------------

VGA16 = [(0, 0, 0), (128, 0, 0), (0, 128, 0), (128, 128, 0), (0, 0, 128), (128, 0, 128),
         (0, 128, 128), (192, 192, 192), (128, 128, 128), (255, 0, 0), (0, 255, 0),
         (255, 255, 0), (0, 0, 255), (255, 0, 255), (0, 255, 255), (255, 255, 255)]
BLACK, NAVY, TEAL, SILVER, GREY, WHITE = 0, 4, 6, 7, 8, 15


def _inside_rounded(x, y, x0, y0, x1, y1, r):
    """Pixel centre (x, y) inside the rounded rectangle [x0, x1) x [y0, y1)."""
    px, py = x + 0.5, y + 0.5
    if not (x0 <= px <= x1 and y0 <= py <= y1):
        return False
    cx = min(max(px, x0 + r), x1 - r)
    cy = min(max(py, y0 + r), y1 - r)
    return (px - cx) ** 2 + (py - cy) ** 2 <= r * r


def _segment_distance(px, py, a, b):
    (ax, ay), (bx, by) = a, b
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - ax - t * dx, py - ay - t * dy)


def sensor_icon(vertical):
    """A digital intraoral sensor with its cable, lying or standing: 32 x 32
    palette indices and an opacity mask."""
    size = 32
    if vertical:
        body = (8, 9, 25, 31)
        cable = [(16.5, 9), (16.5, 6), (18, 3.5), (21, 2.5), (25, 2.5), (28, 1.5), (31, 0.5)]
    else:
        body = (1, 10, 27, 27)
        cable = [(27, 18.5), (29, 18), (30, 15), (29.5, 10), (30, 5), (31.5, 0.5)]
    x0, y0, x1, y1 = body
    idx, opaque = [0] * (size * size), [False] * (size * size)
    for y in range(size):
        for x in range(size):
            i = y * size + x
            d = min(_segment_distance(x + 0.5, y + 0.5, a, b) for a, b in zip(cable, cable[1:]))
            if d <= 1.3:
                idx[i], opaque[i] = (GREY if d <= 0.55 else BLACK), True
            if _inside_rounded(x, y, x0, y0, x1, y1, 4):
                opaque[i] = True
                inner = _inside_rounded(x, y, x0 + 1, y0 + 1, x1 - 1, y1 - 1, 3)
                face = _inside_rounded(x, y, x0 + 3, y0 + 3, x1 - 3, y1 - 3, 2)
                if not inner:
                    idx[i] = BLACK
                elif face:
                    # the sensitive face, lit from the upper left
                    fx0, fy0 = x0 + 3, y0 + 3
                    idx[i] = WHITE if (x - fx0) + (y - fy0) < 3 else \
                        SILVER if (x1 - 4 - x) + (y1 - 4 - y) > 2 else GREY
                else:
                    idx[i] = GREY if (x - x0) + (y - y0) > 3 else SILVER
            # the cable's strain relief at the housing
    if vertical:
        for y in range(y0 - 2, y0 + 1):
            for x in range(15, 19):
                idx[y * size + x], opaque[y * size + x] = BLACK, True
    else:
        for y in range(17, 21):
            for x in range(x1 - 1, x1 + 2):
                idx[y * size + x], opaque[y * size + x] = BLACK, True
    # a small marker on the housing, as real sensors carry their orientation dot
    mx, my = (x0 + 3, y1 - 3) if vertical else (x0 + 3, y1 - 3)
    idx[my * size + mx] = TEAL
    return VGA16, idx, opaque
