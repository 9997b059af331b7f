"""The pictures of the frame constructions: from the body's own markers, and along the axes of the room."""

from stage import INK, Camera, Page, mean
from target import AXES, AXES_AWAY, Scene, frame_from_three, posed

ROOM = (84.0, 138.0, 66.0)   # floor along x and y, height of the walls, millimetres


def dashed(page, camera, start, end, colour, width=1.8):
    a, b = camera.page(start), camera.page(end)
    page.line(a, b, stroke="#ffffff", stroke_opacity=0.8, stroke_width=width + 2)
    page.line(a, b, stroke=colour, stroke_width=width, stroke_dasharray="4 3.5")


def due_to_body():
    page = Page("due_to_body", 180, 120, "Frame from markers 1, 2 and 3")
    camera = Camera(-64, 30, 1.36, (93, 70.5))
    markers, foot = posed((0, 0, 0), (0, 0, 0))
    p1, p2, p3 = markers[:3]
    axes = frame_from_three(p1, p2, p3)
    scene = Scene(page, camera)
    scene.body(markers, foot, 2)
    scene.put(AXES_AWAY, p1, lambda: page.polygon([camera.page(p) for p in (p1, p2, p3)], fill="#1f63d8",
                                                  fill_opacity=0.22))
    scene.put(AXES_AWAY, p1, lambda: dashed(page, camera, p1, p2, "#d32f2f"))
    scene.balls(markers, 8, numbered=(0, 1, 2))
    scene.frame(p1, axes, 52, 10, 3.2, 10, letters=10,
                letter_places=((-2, 10), (5, -6), (0, -9)))
    scene.paint()
    return page


def room(page, camera, length, letters):
    """A corner of the room with its three axes: floor, two walls, and the arrows that all start in the corner."""
    x, y, z = ROOM
    o = (0.0, 0.0, 0.0)
    floor = [o, (x, 0, 0), (x, y, 0), (0, y, 0)]
    left = [o, (x, 0, 0), (x, 0, z), (0, 0, z)]
    right = [o, (0, y, 0), (0, y, z), (0, 0, z)]
    for corners, fill in ((floor, "#eef1f3"), (left, "#d7dee2"), (right, "#e3e9ec")):
        page.polygon([camera.page(c) for c in corners], fill=fill, stroke="#a7b4bb", stroke_width=1)
    scene = Scene(page, camera)
    places = [(-0.3 * letters, -0.75 * letters), (0.2 * letters, -0.75 * letters), (-0.7 * letters, 0.2 * letters)]
    scene.frame(o, AXES, length, 0, 2.4, 8, letters=letters, letter_places=places)
    scene.paint()


def shadow(page, camera, markers):
    """What the body covers on the floor under a lamp straight above: it shows where the body hangs."""
    points = sorted({(m[0], m[1]) for m in markers})
    hull = []
    for sweep in (points, points[::-1]):
        chain = []
        for p in sweep:
            while len(chain) > 1 and ((chain[-1][0] - chain[-2][0]) * (p[1] - chain[-2][1])
                                      - (chain[-1][1] - chain[-2][1]) * (p[0] - chain[-2][0])) <= 0:
                chain.pop()
            chain.append(p)
        hull += chain[:-1]
    page.polygon([camera.page((hx, hy, 0.0)) for hx, hy in hull], fill=INK, fill_opacity=0.16)


def in_room(name, title, origin_at_cog):
    page = Page(name, 180, 120, title)
    camera = Camera(25, 25, 1.02, (38, 61))
    markers, foot = posed((-34, -10, -149), (42, 88, 30), 0.72)
    room(page, camera, 27, 8)
    shadow(page, camera, markers)
    scene = Scene(page, camera)
    scene.body(markers, foot, 1.6)
    scene.balls(markers, 5)
    if not origin_at_cog:
        scene.balls(markers[:1], 7.5, numbered=(0,))
    origin = mean(markers) if origin_at_cog else markers[0]
    if origin_at_cog:
        scene.centre_of_gravity(origin, 5.2)
    scene.frame(origin, AXES, 38, 7.5 if origin_at_cog else 9.5, 2.8, 8.5)
    scene.paint()
    return page


def due_to_room_cog():
    return in_room("due_to_room_cog", "Frame along the room axes, origin in the centre of gravity", True)


def due_to_room():
    return in_room("due_to_room", "Frame along the room axes, origin in marker 1", False)


def marker_numbers():
    page = Page("71", 96, 72, "Markers 1, 2 and 3: longest distance 1-2, shortest distance from its ends 1-3")
    camera = Camera(-70, 42, 0.72, (49.5, 38))
    markers, foot = posed((0, 0, 0), (0, 0, 0))
    scene = Scene(page, camera)
    scene.body(markers, foot, 1.2)
    for far, colour in ((1, "#6a3ab2"), (2, "#00838f")):
        def paint(far=far, colour=colour):
            a, b = camera.page(markers[0]), camera.page(markers[far])
            page.line(a, b, stroke="#ffffff", stroke_opacity=0.85, stroke_width=6)
            page.line(a, b, stroke=colour, stroke_width=4)
        scene.put(AXES_AWAY, markers[far], paint)
    scene.balls(markers, 7.2, numbered=(0, 1, 2))
    scene.paint()
    return page


def room_axes():
    page = Page("72", 96, 72, "Axes of the room")
    room(page, Camera(32, 26, 0.53, (32, 35)), 52, 9)
    return page


ALL = (due_to_body, due_to_room_cog, due_to_room, marker_numbers, room_axes)
