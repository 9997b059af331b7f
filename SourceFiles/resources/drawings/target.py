"""The rigid body that all pictures show, its frame constructions, and how it is painted."""

import math

from stage import AXIS_COLOURS, AXIS_NAMES, INK, STEEL, add, cross, dot, mean, num, turned, unit

# Five markers, millimetres. The first three are markers 1, 2 and 3 of the frame construction: the assertion below
# repeats the rule (longest distance of the body, and the shortest distance that starts at one of its ends).
MARKERS = [(0.0, 0.0, 0.0), (100.0, 0.0, 0.0), (16.0, 46.0, 0.0), (84.0, 52.0, 0.0), (52.0, 27.0, 36.0)]
PLATE = (0, 1, 3, 2)          # the markers that sit on the corners of the body's plate
STEM = ((52.0, 27.0, 0.0), 4)  # the fifth marker stands on a rod above the plate
AXES = ((1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0))


def _check_numbering():
    pairs = [(i, j) for i in range(len(MARKERS)) for j in range(i + 1, len(MARKERS))]
    longest = max(pairs, key=lambda p: math.dist(MARKERS[p[0]], MARKERS[p[1]]))
    beside = [p for p in pairs if p != longest and set(p) & set(longest)]
    shortest = min(beside, key=lambda p: math.dist(MARKERS[p[0]], MARKERS[p[1]]))
    assert longest == (0, 1) and shortest == (0, 2), (longest, shortest)


_check_numbering()


def posed(angles, place, scale=1.0):
    """The markers and the foot of the stem: centre of gravity at `place`, turned by `angles` degrees about it."""
    middle = mean(MARKERS)
    points = [add(place, turned(add(p, middle, -1.0), angles), scale) for p in MARKERS + [STEM[0]]]
    return points[:-1], points[-1]


def frame_from_three(p1, p2, p3):
    """x from marker 1 to marker 2, z normal to the plane of the three, y completing a right-handed frame."""
    x = unit(add(p2, p1, -1.0))
    z = unit(cross(x, add(p3, p1, -1.0)))
    y = cross(z, x)
    assert abs(dot(cross(x, y), z) - 1.0) < 1e-9
    return (x, y, z)


# What is painted later covers what is painted earlier: the body, axes that lead away from the eye, balls, axes that
# come toward the eye. Within a layer the nearer covers the farther.
BODY, AXES_AWAY, BALLS, AXES_NEAR = range(4)


class Scene:
    """Things in space, painted in the right order onto a page."""

    def __init__(self, page, camera):
        self.page, self.camera, self.jobs = page, camera, []

    def put(self, layer, point, paint):
        self.jobs.append((layer, self.camera.nearness(point), len(self.jobs), paint))

    def paint(self):
        for job in sorted(self.jobs, key=lambda job: job[:3]):
            job[3]()

    def body(self, markers, foot, edge):
        corners = [self.camera.page(markers[i]) for i in PLATE]
        top = self.camera.page(markers[STEM[1]])

        def plate():
            self.page.polygon(corners, fill="#b5c2c9", stroke="#ffffff", stroke_width=edge + 1.6, opacity=0.85)
            self.page.polygon(corners, fill="#b5c2c9", stroke=STEEL, stroke_width=edge)

        def stem():
            self.page.line(self.camera.page(foot), top, stroke="#ffffff", stroke_opacity=0.8, stroke_width=edge + 2.4)
            self.page.line(self.camera.page(foot), top, stroke="#607d8b", stroke_width=edge + 0.8)
        above = self.camera.nearness(markers[STEM[1]]) > self.camera.nearness(foot)
        self.put(BODY, foot, plate)
        self.put(BODY, markers[STEM[1]] if above else add(foot, self.camera.toward_eye, -1.0), stem)

    def balls(self, markers, radius, numbered=()):
        """`numbered` lists the indices that carry their number; they are drawn dark, with a light digit."""
        for i, m in enumerate(markers):
            def paint(centre=self.camera.page(m), i=i):
                dark = i in numbered
                self.page.disc(centre, radius + 1.0, fill="#ffffff", fill_opacity=0.9)
                self.page.disc(centre, radius, fill=INK if dark else "#e4eaed", stroke=INK,
                               stroke_width=max(1.0, radius / 7))
                if dark:
                    self.page.text(str(i + 1), centre, radius * 1.05, "#ffffff", weight=radius * 0.2)
            self.put(BALLS, m, paint)

    def frame(self, origin, axes, length, start, width, head, letters=0.0, letter_places=()):
        """Three arrows of `length` millimetres from `origin`; their first `start` pixels are left to the ball there.

        `letter_places` are the offsets of the three letters from the tips, in pixels.
        """
        for k, axis in enumerate(axes):
            tip = add(origin, axis, length)
            centre, b = self.camera.page(origin), self.camera.page(tip)
            whole = math.dist(centre, b)
            a = add(centre, add(b, centre, -1.0), start / whole)
            size = whole - start

            def paint(a=a, b=b, k=k, size=size):
                self.page.arrow(a, b, AXIS_COLOURS[k], width, min(head, 0.8 * size))
                if letters > 0:
                    at = add(b, letter_places[k])
                    self.page.text(AXIS_NAMES[k], at, letters, AXIS_COLOURS[k], halo=1.3)
            near = dot(axis, self.camera.toward_eye) > 0
            self.put(AXES_NEAR if near else AXES_AWAY, tip, paint)

    def centre_of_gravity(self, point, radius):
        """The usual sign for it: a disc in four quarters, two of them dark."""
        x, y = self.camera.page(point)

        def paint():
            self.page.disc((x, y), radius + 1.0, fill="#ffffff", fill_opacity=0.9)
            self.page.disc((x, y), radius, fill="#ffffff", stroke="#212121", stroke_width=1.4)
            r = radius
            here = f"M{num(x)} {num(y)}"
            self.page.path(f"{here}v{-r}a{r} {r} 0 0 1 {r} {r}z{here}v{r}a{r} {r} 0 0 1 {-r} {-r}z", fill="#212121")
        self.put(BALLS, add(point, self.camera.toward_eye, 1e3), paint)
