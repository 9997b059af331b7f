// See glprobe.h.
#include "glprobe.h"

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <QApplication>

#include <cmath>

namespace {

constexpr int size = 256;
constexpr int valuesPerVertex = 7;  // x, y, z, red, green, blue, alpha

}  // namespace

GlProbe::GlProbe(double reach) : reach_(reach), widget_(new QGLWidget) {
  widget_->resize(size, size);
  widget_->show();
  widget_->makeCurrent();
  if (!widget_->isValid()) {
    ADD_FAILURE() << "no OpenGL context: these cases need a display with OpenGL";
  }
}

GlProbe::~GlProbe() = default;

void GlProbe::begin() {
  widget_->makeCurrent();
  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glViewport(0, 0, size, size);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(-reach_, reach_, -reach_, reach_, -reach_, reach_);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glDisable(GL_LIGHTING);
  glDisable(GL_LIGHT0);
  glEnable(GL_COLOR_MATERIAL);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glColor3d(0.5, 0.5, 0.5);
}

void GlProbe::end() {
  glPopAttrib();
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

GlProbe::Vertex GlProbe::vertexFrom(const float* v) const {
  const double half = 0.5 * size;
  const bsVector position((static_cast<double>(v[0]) / half - 1.0) * reach_,
                          (static_cast<double>(v[1]) / half - 1.0) * reach_,
                          (1.0 - 2.0 * static_cast<double>(v[2])) * reach_);
  return {position, static_cast<double>(v[3]), static_cast<double>(v[4]), static_cast<double>(v[5])};
}

GlProbe::Recording GlProbe::record(const std::function<void()>& draw, const std::function<void()>& after) {
  std::vector<float> buffer(std::size_t{1} << 21);
  begin();
  glFeedbackBuffer(static_cast<GLsizei>(buffer.size()), GL_3D_COLOR, buffer.data());
  glRenderMode(GL_FEEDBACK);
  draw();
  const int used = glRenderMode(GL_RENDER);
  if (after) {
    after();
  }
  end();
  EXPECT_GE(used, 0) << "the feedback buffer is too small";

  Recording recording;
  int at = 0;
  while (at < used) {
    const auto token = static_cast<int>(buffer[static_cast<std::size_t>(at++)]);
    Primitive primitive{Kind::Polygon, {}};
    int count = 0;
    if (token == GL_POINT_TOKEN) {
      primitive.kind = Kind::Point;
      count = 1;
    } else if (token == GL_LINE_TOKEN || token == GL_LINE_RESET_TOKEN) {
      primitive.kind = Kind::Line;
      count = 2;
    } else if (token == GL_POLYGON_TOKEN) {
      count = static_cast<int>(buffer[static_cast<std::size_t>(at++)]);
    } else {
      ADD_FAILURE() << "unexpected feedback token " << token;
      break;
    }
    for (int i = 0; i < count; ++i, at += valuesPerVertex) {
      primitive.vertices.push_back(vertexFrom(&buffer[static_cast<std::size_t>(at)]));
    }
    recording.push_back(primitive);
  }
  return recording;
}

std::vector<GlProbe::Hit> GlProbe::select(const std::function<void()>& draw) {
  std::vector<unsigned int> buffer(65536);
  begin();
  glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
  glRenderMode(GL_SELECT);
  glInitNames();
  draw();
  const int count = glRenderMode(GL_RENDER);
  end();
  EXPECT_GE(count, 0) << "the selection buffer is too small";
  std::vector<Hit> hits;
  const unsigned int* at = buffer.data();
  for (int i = 0; i < count; ++i) {
    const unsigned int names = at[0];
    hits.emplace_back(at + 3, at + 3 + names);
    at += 3 + names;
  }
  return hits;
}

QImage GlProbe::picture(const std::function<void()>& draw) {
  begin();
  glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  draw();
  glFinish();
  QImage image(size, size, QImage::Format_RGBA8888);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glReadPixels(0, 0, size, size, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
  end();
  return image.mirrored();
}

QPoint GlProbe::pixelOf(const bsVector& point) const {
  const double half = 0.5 * size;
  return QPoint(static_cast<int>(std::floor((point.x / reach_ + 1.0) * half)),
                size - 1 - static_cast<int>(std::floor((point.y / reach_ + 1.0) * half)));
}
