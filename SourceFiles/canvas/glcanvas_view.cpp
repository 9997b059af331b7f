// Camera of the canvas: views, mouse and wheel, live pose, display switches and the way to the body.
#include "glcanvas.h"

#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "bsQuaternion.h"

namespace {

const bsVector startPosition(0.0, 0.0, -300.0);

/// Copies field by field: assigning frames would derive the orientation anew, and a view that is put away and taken
/// back a thousand times must not drift.
void copyView(const bsFrame& from, bsFrame& to) {
  to.position = from.position;
  to.orientation = from.orientation;
  to.setReferenceFrame(from.getReferenceFrame());
}

bsQuaternion turn(double x, double y, double z) {
  return bsQuaternion(x, bsVector(1.0, 0.0, 0.0)) * bsQuaternion(y, bsVector(0.0, 1.0, 0.0)) *
         bsQuaternion(z, bsVector(0.0, 0.0, 1.0));
}

bool isFinite(const double* values, int count) {
  return std::all_of(values, values + count, [](double value) { return std::isfinite(value); });
}

}  // namespace

GLCanvas::GLCanvas(QWidget* parent) : QGLWidget(parent), body_(this), roomOrientation_(bsMatrix::getIdentityMatrix()) {
  setFocusPolicy(Qt::StrongFocus);
  for (bsFrame* view : {&onlineView_, &offlineView_, &currentView_, &savedView_}) {
    view->position = startPosition;
  }
  connect(this, &GLCanvas::storeBodyRequest, this, &GLCanvas::saveCurrentBody);
  connect(&body_, &abcBody::bodyModified, this, &GLCanvas::bodyModified);
}

GLCanvas::~GLCanvas() = default;

// --- Camera ---

void GLCanvas::set_view(const bsFrame& view) {
  copyView(view, currentView_);
  saveCurrentView();
  updateGL();
}

bsFrame GLCanvas::get_view() const { return currentView_; }

bsVector GLCanvas::getViewPosition() const { return currentView_.position; }

void GLCanvas::saveCurrentView() { copyView(currentView_, savedView_); }

void GLCanvas::translateView(double x, double y, double z) {
  currentView_.position = savedView_.position + bsVector(x, y, z);
  updateGL();
}

void GLCanvas::rotateView(double x, double y, double z) {
  currentView_.orientation = turn(x, y, z) * savedView_.orientation;
  updateGL();
}

void GLCanvas::transformView(const bsMatrix& m) {
  copyView(bsFrame(currentView_.toMatrix() * m, currentView_.getReferenceFrame()), currentView_);
  saveCurrentView();
  updateGL();
}

void GLCanvas::setViewPosition(const bsVector& position) {
  currentView_.position = position;
  saveCurrentView();
  updateGL();
}

void GLCanvas::setViewOrientation(const bsMatrix& orientation) {
  currentView_.orientation.fromMatrix(orientation);
  saveCurrentView();
  updateGL();
}

void GLCanvas::rotateViewBegin() {
  viewMode_ = ABC_VIEW_ROTATE;
  updateGL();
}

void GLCanvas::rotateViewEnd() {
  viewMode_ = ABC_VIEW_IDLE;
  updateGL();
}

void GLCanvas::setViewMode(abcViewMode mode) { viewMode_ = mode; }

void GLCanvas::setModificationMode(abcModificationMode mode) {
  modificationMode_ = mode;
  if (mode == ABC_MODIFY_BODY) {
    onlineView_.position = startPosition;
  }
  copyView(onlineView_, offlineView_);
  updateGL();
}

// --- Mouse and wheel ---

void GLCanvas::mousePressEvent(QMouseEvent* event) {
  const bool ctrl = event->modifiers().testFlag(Qt::ControlModifier);
  const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
  if (event->button() == Qt::RightButton) {
    if (ctrl) {
      viewMode_ = ABC_VIEW_ROTATE;
    } else if (menu_ != nullptr) {
      menu_->popup(event->globalPos());
    }
  } else if (event->button() == Qt::LeftButton) {
    if (ctrl) {
      viewMode_ = ABC_VIEW_PAN;
    } else if (shift) {
      viewMode_ = ABC_VIEW_DOLLY;
    } else if (modificationMode_ == ABC_MODIFY_BODY) {
      // A press can lie outside while a button is held; no pixel there, no object.
      const QPoint at = event->pos();
      const bool inside = rect().contains(at);
      checkSelection(inside ? doPicking(static_cast<unsigned int>(at.x()), static_cast<unsigned int>(at.y()))
                            : nullptr);
    }
  }
  lastMouse_ = event->pos();
  updateGL();
}

void GLCanvas::mouseMoveEvent(QMouseEvent* event) {
  if (modificationMode_ == ABC_MODIFY_BODY && isBodyLoaded() && viewMode_ != ABC_VIEW_IDLE) {
    const QPoint step = event->pos() - lastMouse_;
    switch (viewMode_) {
      case ABC_VIEW_PAN:
        translateView(step.x(), -step.y(), 0.0);
        break;
      case ABC_VIEW_DOLLY:
        translateView(0.0, 0.0, step.y());
        break;
      case ABC_VIEW_ROTATE:
        rotateView(step.y(), step.x(), 0.0);
        break;
      case ABC_VIEW_IDLE:
        break;
    }
    emit storeViewRequest();
  }
  lastMouse_ = event->pos();
}

void GLCanvas::mouseReleaseEvent(QMouseEvent*) {
  if (viewMode_ == ABC_VIEW_IDLE) {
    return;
  }
  viewMode_ = ABC_VIEW_IDLE;
  emit storeViewRequest();
  updateGL();
}

void GLCanvas::wheelEvent(QWheelEvent* event) {
  if (!event->modifiers().testFlag(Qt::ControlModifier)) {
    event->ignore();
    return;
  }
  // Eighths of a degree to degrees to notches of 15 degrees, truncating twice on purpose: finer wheels that report less
  // than a notch at a time do not move the camera.
  const int notches = event->angleDelta().y() / 8 / 15;
  const double step = modificationMode_ == ABC_MODIFY_BODY ? 3.0 : 1.0;
  translateView(0.0, 0.0, step * notches);
  emit storeViewRequest();
  updateGL();
  event->accept();
}

// --- Live pose ---

void GLCanvas::setOnline(bool on) {
  if (on && !online_) {
    copyView(currentView_, offlineView_);
    copyView(onlineView_, currentView_);
    saveCurrentView();
  }
  if (!on && online_) {
    copyView(currentView_, onlineView_);
    copyView(offlineView_, currentView_);
    saveCurrentView();
  }
  if (!on) {
    roomOrientation_.setIdentity();
    trackedPosition_ = bsVector();
  }
  online_ = on;
  emit canSetParallelAxes(checkSetParallelAxes());
  emit is_online(on);
  updateGL();
}

void GLCanvas::setUseTrackedBody(bool use) { useTrackedBody_ = use; }

void GLCanvas::setTrackedBodySeen(bool seen) { trackedBodySeen_ = seen; }

void GLCanvas::setTrackedBodyOrientation(const bsMatrix& orientation) {
  if (&orientation != &roomOrientation_ && isFinite(orientation, 16)) {
    roomOrientation_ = orientation;
  }
}

void GLCanvas::setTrackedBodyPosition(const bsVector& position) {
  if (isFinite(position, 3)) {
    trackedPosition_ = position;
  }
}

// --- Display switches ---

void GLCanvas::showCOG(bool showCOG) {
  showCog_ = showCOG;
  updateGL();
}

void GLCanvas::show_room_ori(bool show) {
  showRoomOrientation_ = show;
  updateGL();
}

void GLCanvas::showSmallMarkers(bool showSmall) {
  body_.showSmallMarkers(showSmall);
  updateGL();
}

void GLCanvas::showColoredMarkers(bool showColored) {
  body_.showColoredMarkers(showColored);
  updateGL();
}

void GLCanvas::showMarkerEmissions(bool show_emissions) {
  body_.showMarkerEmissions(show_emissions);
  updateGL();
}

void GLCanvas::showLongAxes(bool showLong) {
  body_.showLongAxes(showLong);
  updateGL();
}

void GLCanvas::setLongAxesFactor(double longAxesFactor) {
  body_.setLongAxesFactor(longAxesFactor);
  updateGL();
}

double GLCanvas::getLongAxesFactor() const { return body_.getLongAxesFactor(); }

void GLCanvas::showXYGrid(bool showXY) {
  body_.showXYGrid(showXY);
  updateGL();
}

void GLCanvas::showYZGrid(bool showYZ) {
  body_.showYZGrid(showYZ);
  updateGL();
}

void GLCanvas::showXZGrid(bool showXZ) {
  body_.showXZGrid(showXZ);
  updateGL();
}

void GLCanvas::setXYGridColor(QColor& XYColor) {
  body_.setXYGridColor(XYColor);
  updateGL();
}

void GLCanvas::setYZGridColor(QColor& YZColor) {
  body_.setYZGridColor(YZColor);
  updateGL();
}

void GLCanvas::setXZGridColor(QColor& XZColor) {
  body_.setXZGridColor(XZColor);
  updateGL();
}

void GLCanvas::set_menu(QMenu* menu) { menu_ = menu; }
