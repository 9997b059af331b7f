"""Puts 3-D points on a flat page and collects the SVG of one picture, with lettering that needs no font."""

import math

INK = "#37474f"        # outlines, key caps, numbered markers
STEEL = "#90a4ae"      # unnumbered markers, rods
PAPER = "#f5f7f8"      # light fills
ACCENT = "#ef6c00"     # what the operator does, and what moves
AXIS_COLOURS = ("#d32f2f", "#2e9b3d", "#1f63d8")  # x, y, z as in the graphic view
AXIS_NAMES = ("x", "y", "z")

# Single-stroke letters on a grid with cap height 10 and the baseline at y = 10: (advance width, path).
GLYPHS = {
    "1": (4.2, "M0.8 2.3L3.6 0V10"),
    "2": (6.6, "M0.4 2.7C0.5 1 1.7 0 3.3 0C5 0 6.1 1.1 6.1 2.7C6.1 4.5 4.8 5.8 0.4 10H6.5"),
    "3": (6.6, "M0.5 1.7C1 0.6 2 0 3.2 0C4.9 0 6 1 6 2.4C6 3.9 4.8 4.7 2.8 4.7C5.1 4.7 6.4 5.7 6.4 7.3"
               "C6.4 9 5.1 10 3.2 10C1.7 10 0.7 9.4 0.2 8.2"),
    "x": (5.6, "M0 3L5.6 10M5.6 3L0 10"),
    "y": (6.0, "M0 3L3 9.8M6 3L2.6 11.2C2.1 12.5 1.4 13 0.2 12.9"),
    "z": (5.6, "M0.2 3H5.4L0 10H5.6"),
    "C": (7.4, "M7.3 2C6.5 0.7 5.4 0 4.1 0C1.8 0 0.3 2 0.3 5C0.3 8 1.8 10 4.1 10C5.4 10 6.5 9.3 7.3 8"),
    "t": (4.0, "M1.7 0.9V8C1.7 9.4 2.4 10 3.9 9.9M0 3.2H3.8"),
    "r": (3.6, "M0.3 3.2V10M0.3 6C0.6 4.1 1.8 3 3.6 3.3"),
    "l": (0.6, "M0.3 0V10"),
    "S": (6.7, "M6.3 1.6C5.5 0.5 4.5 0 3.3 0C1.6 0 0.5 1 0.5 2.5C0.5 4.1 1.8 4.6 3.4 5C5.2 5.4 6.6 6 6.6 7.6"
               "C6.6 9.1 5.3 10 3.4 10C2 10 0.9 9.4 0.1 8.3"),
    "h": (5.7, "M0.3 0V10M0.3 5.8C0.7 4.1 1.7 3.1 3.1 3.1C4.7 3.1 5.4 4.1 5.4 5.8V10"),
    "i": (0.6, "M0.3 3.2V10M0.3 0.4V0.5"),
    "f": (4.0, "M4.2 0.3C2.6 -0.2 1.7 0.6 1.7 2.2V10M0 3.2H3.9"),
    "?": (6.0, "M0.2 2.6C0.3 1 1.4 0 3 0C4.7 0 5.8 1 5.8 2.5C5.8 4.6 3 4.6 3 7M3 9.9V10"),
}


# --- vectors ---------------------------------------------------------------------------------------------------------

def add(a, b, factor=1.0):
    """a + factor * b."""
    return tuple(p + factor * q for p, q in zip(a, b))


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(a):
    length = math.sqrt(dot(a, a))
    return tuple(p / length for p in a)


def mean(points):
    return tuple(sum(column) / len(points) for column in zip(*points))


def turned(point, angles):
    """The point turned about x, then y, then z by the given degrees, about fixed axes."""
    x, y, z = point
    for axis, degrees in enumerate(angles):
        c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
        if axis == 0:
            y, z = c * y - s * z, s * y + c * z
        elif axis == 1:
            x, z = c * x + s * z, c * z - s * x
        else:
            x, y = c * x - s * y, s * x + c * y
    return (x, y, z)


# --- the camera ------------------------------------------------------------------------------------------------------

class Camera:
    """A parallel projection, so that parallel lines in space stay parallel on the page.

    The eye looks at `target`, which lands on `centre` (pixels); azimuth and elevation say where the eye stands.
    """

    def __init__(self, azimuth, elevation, scale, centre, target=(0, 0, 0)):
        a, e = math.radians(azimuth), math.radians(elevation)
        self.toward_eye = (math.cos(e) * math.cos(a), math.cos(e) * math.sin(a), math.sin(e))
        self.right = (-math.sin(a), math.cos(a), 0.0)
        self.up = cross(self.toward_eye, self.right)
        self.scale, self.centre, self.target = scale, centre, target

    def page(self, point):
        p = add(point, self.target, -1.0)
        return (self.centre[0] + self.scale * dot(p, self.right), self.centre[1] - self.scale * dot(p, self.up))

    def nearness(self, point):
        return dot(point, self.toward_eye)


# --- the page --------------------------------------------------------------------------------------------------------

def num(value):
    text = f"{value:.2f}".rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


def points_path(points, closed=False):
    return "M" + "L".join(f"{num(x)} {num(y)}" for x, y in points) + ("Z" if closed else "")


def cut_back(points, distance):
    """The polyline without the last `distance` of its length."""
    points = list(points)
    while len(points) > 2 and math.dist(points[-1], points[-2]) < distance:
        distance -= math.dist(points[-1], points[-2])
        points.pop()
    share = distance / math.dist(points[-1], points[-2])
    return points[:-1] + [add(points[-1], add(points[-2], points[-1], -1.0), share)]


def arrow_head(points, head):
    """The three corners of the point of an arrow that ends with the polyline."""
    tip, inner = points[-1], cut_back(points, head)[-1]
    dx, dy = ((t - i) / math.dist(tip, inner) for t, i in zip(tip, inner))
    base, half = (tip[0] - head * dx, tip[1] - head * dy), 0.45 * head
    return [tip, (base[0] - half * dy, base[1] + half * dx), (base[0] + half * dy, base[1] - half * dx)]


class Page:
    """The elements of one SVG file, in the order in which they are painted."""

    def __init__(self, name, width, height, title):
        self.name, self.width, self.height, self.title = name, width, height, title
        self.elements = []

    def path(self, data, **style):
        settings = {"fill": "none", "stroke_linecap": "round", "stroke_linejoin": "round"}
        settings.update(style)
        attributes = " ".join(f'{key.replace("_", "-")}="{num(v) if isinstance(v, float) else v}"'
                              for key, v in settings.items())
        self.elements.append(f'<path d="{data}" {attributes}/>')

    def polygon(self, points, **style):
        self.path(points_path(points, closed=True), **style)

    def line(self, start, end, **style):
        self.path(points_path([start, end]), **style)

    def disc(self, centre, radius, **style):
        (x, y), r = centre, radius
        self.path(f"M{num(x - r)} {num(y)}a{num(r)} {num(r)} 0 1 0 {num(2 * r)} 0"
                  f"a{num(r)} {num(r)} 0 1 0 {num(-2 * r)} 0Z", **style)

    def box(self, x, y, width, height, radius, **style):
        r, w, h = num(radius), num(width - 2 * radius), num(height - 2 * radius)
        self.path(f"M{num(x + radius)} {num(y)}h{w}a{r} {r} 0 0 1 {r} {r}v{h}a{r} {r} 0 0 1 -{r} {r}h-{w}"
                  f"a{r} {r} 0 0 1 -{r} -{r}v-{h}a{r} {r} 0 0 1 {r} -{r}Z", **style)

    def arrow(self, start, end, colour, width, head, halo=1.2):
        """A straight arrow; the light rim keeps it apart from what it crosses and from a dark window."""
        self.arrow_along([start, end], colour, width, head, halo)

    def arrow_along(self, points, colour, width, head, halo=1.2, both=False):
        """An arrow along a polyline; its point, `head` pixels long, ends exactly on the last given point."""
        shaft, heads = cut_back(points, 0.85 * head), [arrow_head(points, head)]
        if both:
            heads.append(arrow_head(points[::-1], head))
            shaft = cut_back(shaft[::-1], 0.85 * head)
        if halo > 0:
            self.path(points_path(shaft), stroke="#ffffff", stroke_opacity=0.85, stroke_width=width + 2 * halo)
            for corners in heads:
                self.polygon(corners, fill="#ffffff", stroke="#ffffff", opacity=0.85, stroke_width=2 * halo)
        self.path(points_path(shaft), stroke=colour, stroke_width=width)
        for corners in heads:
            self.polygon(corners, fill=colour)

    def text(self, text, centre, height, colour, weight=None, halo=0.0):
        """Lettering whose capitals are `height` pixels high, its capitals' box centred on `centre`."""
        scale = height / 10.0
        gap = 2.1
        width = sum(GLYPHS[c][0] for c in text) + gap * (len(text) - 1)
        low = text in AXIS_NAMES   # a lone small letter is centred by its own height
        x, y = centre[0] - scale * width / 2, centre[1] - scale * (6.5 if low else 5.0)
        stroke = weight if weight else 0.16 * height
        for rim in ((True, False) if halo > 0 else (False,)):
            cursor = x
            for character in text:
                advance, data = GLYPHS[character]
                style = {"stroke": "#ffffff" if rim else colour,
                         "stroke_width": (stroke + 2 * halo if rim else stroke) / scale}
                if rim:
                    style["stroke_opacity"] = 0.9
                self.path(data, transform=f"translate({num(cursor)} {num(y)}) scale({num(scale)})", **style)
                cursor += scale * (advance + gap)

    def write(self, folder):
        body = "\n".join("  " + element for element in self.elements)
        text = (f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}" '
                f'viewBox="0 0 {self.width} {self.height}">\n  <title>{self.title}</title>\n{body}\n</svg>\n')
        (folder / f"{self.name}.svg").write_text(text, encoding="utf-8")
