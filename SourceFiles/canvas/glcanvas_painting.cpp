// Painting of the canvas: GL state, projection, camera and the order in which the scene is drawn.
#include "glcanvas.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <QOpenGLContext>
#include <QWindow>

#include <cmath>
#include <cstddef>

#include "glUtils.h"

/// False where there is nothing to draw on; GL must not be called then.
bool GLCanvas::makeContextCurrent() {
  if (!isValid()) {
    return false;
  }
  makeCurrent();
  const QOpenGLContext* current = QOpenGLContext::currentContext();
  return current != nullptr && current == context()->contextHandle() && current->surface() == windowHandle();
}

void GLCanvas::initializeGL() {
  if (!makeContextCurrent()) {
    return;
  }
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glShadeModel(GL_SMOOTH);
  glEnable(GL_COLOR_MATERIAL);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LESS);
  glClearDepth(1.0);
  glClearColor(0.0F, 0.0F, 0.0F, 1.0F);
  glEnable(GL_LIGHT0);
  glEnable(GL_LIGHTING);
}

void GLCanvas::resizeGL(int w, int h) {
  width_ = w;
  height_ = h == 0 ? 1 : h;
  if (!makeContextCurrent()) {
    return;
  }
  glViewport(0, 0, width_, height_);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  applyProjection();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  updateGL();
}

/// Multiplies the perspective onto the current matrix.
void GLCanvas::applyProjection() const {
  gluPerspective(fieldOfView_, static_cast<double>(width_) / static_cast<double>(height_), nearPlane_, farPlane_);
}

/// Multiplies the camera onto the current matrix.
void GLCanvas::applyView() const { glMultMatrixd(currentView_.toMatrix()); }

/// Multiplies onto the current matrix where the loaded coordinates lie in the scene: turned as tracked while online,
/// and with the centre of gravity in the middle. The pending change does not move the body, it moves the body's axes.
void GLCanvas::applyBodyPlacement() const {
  if (online_) {
    glMultMatrixd(roomOrientation_);
  }
  const bsVector& cog = body_.getCenterOfGravity();
  if (std::isfinite(cog.x) && std::isfinite(cog.y) && std::isfinite(cog.z)) {
    glTranslated(-cog.x, -cog.y, -cog.z);
  }
}

void GLCanvas::paintGL() {
  if (!makeContextCurrent()) {
    return;
  }
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  glPushMatrix();
  applyView();
  if (modificationMode_ == ABC_MODIFY_BODY) {
    if (showCog_ && isBodyLoaded()) {
      drawCenterOfGravity();
    }
    if (online_ && showRoomOrientation_) {
      const double origin[3] = {0.0, 0.0, 0.0};
      drawAxes(origin, 40.0, 5.0, false, 10.0, 1.0);
    }
    applyBodyPlacement();
    body_.draw();
    drawSelection();
  }
  glPopMatrix();
  glFlush();
}

/// The scene is laid out around the centre of gravity, so it is the origin. Lighting stays off until an object that
/// wants it comes.
void GLCanvas::drawCenterOfGravity() const {
  glDisable(GL_LIGHTING);
  glPointSize(5.0F);
  glColor3ub(255, 255, 255);
  glBegin(GL_POINTS);
  glVertex3d(0.0, 0.0, 0.0);
  glEnd();
}

void GLCanvas::drawSelection() {
  for (std::size_t i = 0; i < selection_.size(); ++i) {
    if (i == 0) {
      glColor3ub(255, 255, 255);
    } else if (i == 1) {
      glColor3ub(128, 128, 128);
    }
    if (selection_[i] != nullptr) {
      selection_[i]->drawSelected(body_.areMarkersSmall());
    }
  }
}
