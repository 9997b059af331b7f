// See glquadric.h.
#include "glquadric.h"

#include <GL/glu.h>

#include <memory>

namespace korvex2 {

namespace {

struct QuadricDeleter {
  void operator()(GLUquadric* quadric) const { gluDeleteQuadric(quadric); }
};

/// Null only when there is no memory left.
GLUquadric* filledQuadric() {
  static const std::unique_ptr<GLUquadric, QuadricDeleter> quadric = [] {
    std::unique_ptr<GLUquadric, QuadricDeleter> made(gluNewQuadric());
    if (made) {
      gluQuadricDrawStyle(made.get(), GLU_FILL);
      gluQuadricNormals(made.get(), GLU_SMOOTH);
    }
    return made;
  }();
  return quadric.get();
}

}  // namespace

void drawSphere(double radius, int slices, int stacks) {
  if (GLUquadric* quadric = filledQuadric()) {
    gluSphere(quadric, radius, slices, stacks);
  }
}

void drawCylinder(double base, double top, double height, int slices, int stacks) {
  if (GLUquadric* quadric = filledQuadric()) {
    gluCylinder(quadric, base, top, height, slices, stacks);
  }
}

}  // namespace korvex2
