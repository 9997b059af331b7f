// The quadric with which the body view draws its spheres, cylinders and cones.
#ifndef KORVEX2_GLQUADRIC_H
#define KORVEX2_GLQUADRIC_H

namespace korvex2 {

// All draw filled, with smooth outward normals, in the current OpenGL context and model-view coordinates
// (millimetres). They share one quadric, made on first use and kept, so that painting allocates nothing; like OpenGL
// itself they are for the GUI thread. Shapes that GLU refuses (a negative size) are not drawn.

/// Sphere around the origin, its poles on the z axis.
void drawSphere(double radius, int slices, int stacks);

/// Cylinder or cone around the z axis from z = 0, where its radius is `base`, to z = `height`, where it is `top`. The
/// ends are open.
void drawCylinder(double base, double top, double height, int slices, int stacks);

}  // namespace korvex2

#endif
