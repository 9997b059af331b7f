// Watches what drawing code hands to OpenGL: vertices in feedback mode, hits in selection mode, pixels.
#ifndef KORVEX2_TESTS_GLPROBE_H
#define KORVEX2_TESTS_GLPROBE_H

#include <QColor>
#include <QGLWidget>
#include <QImage>

#include <functional>
#include <memory>
#include <vector>

#include "bsVector.h"

/// A window of 256 x 256 pixels with an orthographic view along -z of the cube -reach .. +reach, so that every vertex
/// that OpenGL reports can be told back in the coordinates in which it was drawn (before the model-view matrix of the
/// drawing code, if any).
///
/// Lighting is set up to be recognised: there is no light source, only the ambient light of 0.2, and the material
/// follows the colour. What is drawn lit comes out in 0.2 times its colour, what is drawn unlit in its colour.
/// Every recording starts from that state, with lighting disabled, filled polygons and the colour (0.5, 0.5, 0.5).
class GlProbe {
 public:
  struct Vertex {
    bsVector position;
    double red, green, blue;
  };
  enum class Kind { Point, Line, Polygon };
  struct Primitive {
    Kind kind;
    std::vector<Vertex> vertices;
  };
  using Recording = std::vector<Primitive>;
  /// Names of a hit, bottom of the stack first.
  using Hit = std::vector<unsigned int>;

  explicit GlProbe(double reach);
  ~GlProbe();

  /// What `draw` draws. `after`, if given, is called at the end, while the state that `draw` left is still in force.
  Recording record(const std::function<void()>& draw, const std::function<void()>& after = {});
  /// What `draw` hits in selection mode with everything in view, in the order of the drawing.
  std::vector<Hit> select(const std::function<void()>& draw);
  /// What `draw` paints onto black.
  QImage picture(const std::function<void()>& draw);

  /// Distance within which a reported vertex is where it should be: OpenGL reports in single precision.
  double tolerance() const { return reach_ * 4e-6; }
  /// Pixel of a point in a picture.
  QPoint pixelOf(const bsVector& point) const;

 private:
  void begin();
  void end();
  Vertex vertexFrom(const float* values) const;

  double reach_;
  std::unique_ptr<QGLWidget> widget_;
};

#endif
