// The canvas's way to its body: loading, unloading, saving and reading it.
#include "glcanvas.h"

bool GLCanvas::loadBody(std::vector<bsVector>* positions, std::vector<Emission>* emissions) {
  prepareForAnotherBody();
  const bool loaded = body_.load(positions);
  if (loaded) {
    body_.loadEmissions(emissions);
  }
  announceBody();
  return loaded;
}

bool GLCanvas::loadBody(const QString& path) {
  prepareForAnotherBody();
  const bool loaded = body_.load(path);
  announceBody();
  return loaded;
}

void GLCanvas::unloadBody() {
  prepareForAnotherBody();
  body_.initialize();
  announceBody();
}

/// Before the body deletes its objects, for a message box while loading keeps painting the canvas.
void GLCanvas::prepareForAnotherBody() { selection_.clear(); }

void GLCanvas::announceBody() {
  emitSelectionSignals();
  emitHistorySignals();
  updateGL();
}

bool GLCanvas::saveBody(const QString& path) { return body_.save(path); }

bool GLCanvas::isBodyLoaded() const { return body_.isLoaded(); }

bool GLCanvas::isBodyModified() const { return body_.isModified(); }

QString GLCanvas::getBodyFileName() const { return body_.getFileName(); }

unsigned int GLCanvas::getBodyNumMarker() const { return body_.getNumMarker(); }

bsMatrix GLCanvas::getBodyTransformation() const { return body_.give_my_transformation(); }

bsMatrix GLCanvas::give_body_transformation() const {
  bsMatrix inverse;
  return body_.getTransformation().fastInvert(inverse);
}

std::vector<bsVector> GLCanvas::give_data() const { return body_.give_new_data(); }

std::vector<bsVector> GLCanvas::give_immediate_data() const { return body_.give_immediate_new_data(); }

QList<AbcMarkerData> GLCanvas::give_data_with_emissions() const { return body_.give_data_with_emissions(); }

void GLCanvas::setMarkerEmission(double x, double y, double z, double angle) {
  body_.setMarkerEmission(x, y, z, angle);
  updateGL();
}
