// How a body gets its markers and lines and is saved: from positions, from and to body files, with the warning boxes.
#include <QMessageBox>

#include "abcBody.h"
#include "bodyfile.h"

using korvex2::BodyFileData;
using korvex2::BodyFileError;
using korvex2::BodyFileResult;

void abcBody::warn(const QString& title, const QString& text) {
  QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, qobject_cast<QWidget*>(parent()));
  // A path is shown as it is, whatever it contains.
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

void abcBody::initializeIfUsed() {
  const bool changed = immediateMatrix() != bsMatrix::getIdentityMatrix() || canUndo() || canRedo();
  // A body that was only marked unloaded still has its markers; the new ones would be appended to them.
  if (loaded_ || modified_ || changed || !markers_.empty()) {
    initialize();
  }
}

void abcBody::createMarkers(const std::vector<bsVector>& positions) {
  markers_.reserve(positions.size());
  for (const bsVector& position : positions) {
    markers_.push_back(new abcMarker(getNumMarker(), position));
    centerOfGravity_ += position;
  }
  // The mean of no positions is undefined (0 / 0). It stays at the origin: a NaN would blank the view, and would get
  // into the coordinate system when the origin is set to the centre of gravity.
  if (!positions.empty()) {
    centerOfGravity_ /= static_cast<double>(positions.size());
  }
}

void abcBody::colorMarkers() {
  for (std::size_t i = 0; i < markers_.size(); ++i) {
    markers_[i]->setColor(palette_[i % palette_.size()]);
  }
}

bool abcBody::load(const std::vector<bsVector>* positions) {
  if (positions == nullptr) {
    return false;
  }
  initializeIfUsed();
  if (positions->size() == 1) {
    warn(tr("Error loading body"), tr("Error : Number of markers = 1 (is it a body file ?).\nBody not loaded."));
    return false;
  }
  createMarkers(*positions);
  setLoaded(true);
  colorMarkers();
  return true;
}

bool abcBody::load(const QString& path) {
  initializeIfUsed();
  BodyFileData content;
  const BodyFileResult result = korvex2::readBodyFile(path, content);
  if (!result) {
    warn(tr("Error loading body"), readingError(result, path));
    return false;
  }
  createMarkers(content.positions);
  secondText_ = QString::fromLatin1(content.text.data(), static_cast<int>(content.text.size()));
  for (const auto& [first, second] : content.lines) {
    addLine(new abcLine(markers_[first], markers_[second]));
  }
  fileName_ = path;
  setLoaded(true);
  colorMarkers();
  return true;
}

bool abcBody::save(const QString& path) {
  BodyFileData content;
  content.positions = give_new_data();
  content.text = secondText_.isEmpty() ? korvex2::emptyBodyFileText : secondText_.toLatin1().toStdString();
  for (const abcLine* line : lines_) {
    content.lines.emplace_back(line->getFirst()->getId(), line->getSecond()->getId());
  }
  const BodyFileResult result = korvex2::writeBodyFile(path, content);
  if (!result) {
    warn(tr("Error saving body"), writingError(result, path));
    return false;
  }
  fileName_ = path;
  setModified(false);
  return true;
}

QString abcBody::readingError(const BodyFileResult& result, const QString& path) {
  switch (result.error) {
    case BodyFileError::MarkerCount:
      return tr("Error while reading number of markers in %1.\nBody not loaded.").arg(path);
    case BodyFileError::SingleMarker:
      return tr("Error : Number of markers = 1 in %1 (is it a body file ?).\nBody not loaded.").arg(path);
    case BodyFileError::Position:
      return tr("Error while reading position of marker n°%1 in %2.\nBody not loaded.")
          .arg(QString::number(result.number), path);
    case BodyFileError::LineCount:
      return tr("Error while reading number of lines in %1.\nBody not loaded.").arg(path);
    case BodyFileError::Line:
      return tr("Error while reading line n°%1 in %2.\nBody not loaded.").arg(QString::number(result.number), path);
    case BodyFileError::None:
    case BodyFileError::Open:
    case BodyFileError::End:
      break;
  }
  return tr("Error while opening %1 for reading.\nBody not loaded.").arg(path);
}

QString abcBody::writingError(const BodyFileResult& result, const QString& path) {
  switch (result.error) {
    case BodyFileError::MarkerCount:
      return tr("Error while writing number of markers in %1.\nBody not saved.").arg(path);
    case BodyFileError::Position:
      return tr("Error while writing position of marker n°%1 in %2.\nBody not saved.")
          .arg(QString::number(result.number), path);
    case BodyFileError::Line:
      return tr("Error while writing line n°%1 in %2.\nBody not saved.").arg(QString::number(result.number), path);
    case BodyFileError::End:
      return tr("Error while writing end of the file in %1.\nBody not saved.").arg(path);
    case BodyFileError::None:
    case BodyFileError::Open:
    case BodyFileError::SingleMarker:
    case BodyFileError::LineCount:
      break;
  }
  return tr("Error while opening %1 for writing.\nBody not saved.").arg(path);
}
