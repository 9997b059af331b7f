"""The small flat pictures: state icons, padlock, and the mouse bindings of the graphic view."""

import math

from stage import ACCENT, INK, PAPER, Camera, Page, add, points_path
from target import AXES_NEAR, BODY, Scene, posed

RIM = {"stroke": "#ffffff", "stroke_width": 3}   # keeps a disc apart from a background of like brightness


def red():
    page = Page("red", 72, 72, "Body not tracked")
    # An octagon, a disc and a ring: the three states differ in outline and sign, not by colour alone.
    corners = [(36 + 34.5 * math.cos(math.radians(22.5 + 45 * k)), 36 + 34.5 * math.sin(math.radians(22.5 + 45 * k)))
               for k in range(8)]
    page.polygon(corners, fill="#c62828", **RIM)
    for start, end in (((24, 24), (48, 48)), ((48, 24), (24, 48))):
        page.line(start, end, stroke="#ffffff", stroke_width=9)
    return page


def green():
    page = Page("green", 72, 72, "Body tracked")
    page.disc((36, 36), 33, fill="#2e9b3d", **RIM)
    page.path("M20 37L31.5 49L53 25", stroke="#ffffff", stroke_width=9)
    return page


def grey():
    page = Page("grey", 72, 72, "Body not calibrated")
    page.disc((36, 36), 30, fill="#f5f7f8", stroke="#78848a", stroke_width=9)
    page.text("?", (36, 36), 33, INK, weight=8)
    return page


def lock():
    page = Page("lock", 64, 64, "Configuration locked")
    for colour, width in (("#ffffff", 12), ("#546e7a", 8)):
        page.path("M18 32V21a14 14 0 0 1 28 0V32", stroke=colour, stroke_width=width)
    page.box(8, 27, 48, 34, 6, fill="#f9a825", stroke="#ffffff", stroke_width=2)
    page.box(9, 28, 46, 32, 5, stroke="#b26a00", stroke_width=2)
    page.path("M32 39.5a4.6 4.6 0 0 1 2.6 8.4V54h-5.2V47.9A4.6 4.6 0 0 1 32 39.5Z", fill=INK, stroke=INK,
              stroke_width=1.5)
    return page


# --- mouse bindings ----------------------------------------------------------------------------------------------

def key_cap(page, text, centre):
    width = 41
    x, y = centre[0] - width / 2, centre[1] - 12
    page.box(x, y, width, 25, 5, fill=INK)
    page.box(x + 1.6, y + 1.6, width - 3.2, 19.4, 4, fill=PAPER)
    page.text(text, (centre[0], centre[1] - 1), 10, INK, weight=1.7)


def plus(page, centre):
    for halo, colour in ((4.6, "#ffffff"), (2.2, INK)):
        page.line((centre[0] - 4, centre[1]), (centre[0] + 4, centre[1]), stroke=colour, stroke_width=halo)
        page.line((centre[0], centre[1] - 4), (centre[0], centre[1] + 4), stroke=colour, stroke_width=halo)


def mouse(page, centre, pressed):
    """A mouse from above, its cable to the top; `pressed` is "left", "right" or "wheel"."""
    x, y = centre
    body = "M{l} {m}C{l} {t} {r} {t} {r} {m}V{b}C{r} {e} {l} {e} {l} {b}Z".format(
        l=x - 15, r=x + 15, m=y - 6, t=y - 29, b=y + 7, e=y + 29)
    page.path(body, fill=PAPER, stroke="#ffffff", stroke_width=4.4)
    page.path(body, fill=PAPER)
    side = {"left": -1, "right": 1}.get(pressed)
    if side:   # the quarter of the outline between the dividing line and the button's edge
        page.path(f"M{x} {y - 4}H{x + 15 * side}V{y - 6}C{x + 15 * side} {y - 17.5} {x + 7.5 * side} {y - 23.25} "
                  f"{x} {y - 23.25}Z", fill=ACCENT)
    page.path(f"M{x - 15} {y - 4}H{x + 15}M{x} {y - 23}V{y - 4}", stroke=INK, stroke_width=1.6)
    page.path(body, stroke=INK, stroke_width=2.2)
    page.box(x - 3, y - 18, 6, 11, 3, fill=ACCENT if pressed == "wheel" else "#ffffff", stroke=INK, stroke_width=1.6)


def move_cross(page, centre, reach, inner, width=2.8, head=8):
    """Four arrows outward: the pointer, or what it moves, goes left, right, up and down."""
    for dx, dy in ((1, 0), (-1, 0), (0, 1), (0, -1)):
        page.arrow((centre[0] + inner * dx, centre[1] + inner * dy),
                   (centre[0] + reach * dx, centre[1] + reach * dy), ACCENT, width, head)


def small_body(page, centre, scale, radius, edge):
    scene = Scene(page, Camera(-62, 30, scale, centre))
    markers, foot = posed((8, 0, 12), (0, 0, 0))
    scene.body(markers, foot, edge)
    scene.balls(markers, radius)
    return scene


def one_way_input(page, key, pressed):
    key_cap(page, key, (113, 55))
    plus(page, (113, 78))
    mouse(page, (153, 58), pressed)
    move_cross(page, (153, 106), 16, 3, 2.4, 7)


def panning():
    page = Page("panning", 180, 135, "Panning: Ctrl and left mouse button")
    small_body(page, (46, 67), 0.38, 4, 1.6).paint()
    for dx, dy, inner in ((1, 0, 30), (-1, 0, 30), (0, 1, 25), (0, -1, 25)):
        page.arrow((46 + inner * dx, 67 + inner * dy), (46 + 44 * dx, 67 + 44 * dy), ACCENT, 3.2, 9)
    one_way_input(page, "Ctrl", "left")
    return page


def turn_arrow(scene, axis, radius):
    """An arrow both ways along a circle about axis 0 (right on the page) or 1 (up); its far half is dotted."""
    camera = scene.camera
    about, across = (camera.right, camera.up)[axis], (camera.right, camera.up)[1 - axis]
    # Seen a little from above and from the right, the near half of either circle bulges down or left.
    ahead = add(tuple(0.87 * c for c in camera.toward_eye), about, -0.5)

    def arc(first, last):
        steps = [math.radians(first + (last - first) * k / 40) for k in range(41)]
        return [camera.page(add(tuple(radius * math.cos(a) * c for c in across), ahead, radius * math.sin(a)))
                for a in steps]
    near, far = arc(22, 158), arc(180, 360)
    scene.put(BODY, add((0, 0, 0), camera.toward_eye, -1e3), lambda: scene.page.path(
        points_path(far), stroke=ACCENT, stroke_width=2.0, stroke_dasharray="0.1 4.4"))
    scene.put(AXES_NEAR, (0, 0, 0), lambda: scene.page.arrow_along(near, ACCENT, 3.0, 9, both=True))


def rotation():
    page = Page("rotation", 180, 135, "Rotating: Ctrl and right mouse button")
    scene = small_body(page, (46, 67), 0.38, 4, 1.6)
    turn_arrow(scene, 1, 112)
    turn_arrow(scene, 0, 112)
    scene.paint()
    one_way_input(page, "Ctrl", "right")
    return page


def zooming():
    page = Page("zooming", 180, 135, "Zooming: Ctrl and mouse wheel, or Shift and left mouse button")
    small_body(page, (18, 27), 0.2, 2.4, 1).paint()
    small_body(page, (42, 98), 0.58, 5.4, 2.2).paint()
    page.arrow_along([(23, 40), (36, 70)], ACCENT, 3.2, 9, both=True)
    for y, key, pressed in ((34, "Ctrl", "wheel"), (101, "Shift", "left")):
        key_cap(page, key, (104, y))
        plus(page, (130.5, y))
        mouse(page, (152, y), pressed)
        page.arrow_along([(173.5, y - 17), (173.5, y + 17)], ACCENT, 2.6, 8, both=True)
    return page


ALL = (red, green, grey, lock, panning, rotation, zooming)
