// The body being adjusted: its markers and lines, its redefined coordinate system with undo and redo, its display.
#ifndef KORVEX2_ABCBODY_H
#define KORVEX2_ABCBODY_H

#include <QColor>
#include <QGLWidget>
#include <QList>
#include <QObject>
#include <QString>

#include <deque>
#include <vector>

#include "abcLine.h"
#include "abcMarker.h"
#include "abcmarkerdata.h"
#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsVector.h"

namespace korvex2 {
struct BodyFileResult;
}

/// A body and the redefinition of its coordinate system.
///
/// Positions are millimetres. Marker positions stay in loaded coordinates, those in which the body was loaded. The body
/// coordinate system is kept as
///   - the transformation T, the committed pose of the new system in loaded coordinates: loaded = T * new;
///   - the immediate frame M, a change relative to T that is still being made: the effective pose is T * M;
///   - the transformations before and after T, for undo and redo.
/// What the body hands out is computed from the stored positions: inverse(T) * p, or inverse(M) * inverse(T) * p.
///
/// The body owns its markers and lines. Drawing needs a current OpenGL context, nothing else does. The body is not
/// thread safe: it belongs to the GUI thread.
class abcBody : public QObject {
  Q_OBJECT

 public:
  /// `parent`, if any, owns the body and is the parent of its message boxes.
  explicit abcBody(QGLWidget* parent = nullptr);
  abcBody(const abcBody&) = delete;
  abcBody& operator=(const abcBody&) = delete;
  ~abcBody() override;

  // --- loading and saving ---

  /// Back to the empty body: unloaded, unmodified, coordinate system as loaded, no history, no markers, no lines.
  /// Emits bodyLoaded(false) and bodyModified(false) first, while the markers and lines still exist.
  void initialize();
  /// Loads markers at these positions (loaded coordinates := the given ones), each in a colour of the palette. A body
  /// loaded before is forgotten first. Exactly one position is refused with a warning box and a result of false; a null
  /// pointer is refused without one.
  bool load(const std::vector<bsVector>* positions);
  /// Loads a body file. On failure shows a warning box, returns false and leaves the body empty and unloaded.
  bool load(const QString& path);
  /// Writes a body file in the committed body coordinates. On failure shows a warning box, returns false and leaves the
  /// file name and the modified flag as they were.
  bool save(const QString& path);
  /// Gives the markers these emissions, by index; markers without an entry keep theirs.
  void loadEmissions(const std::vector<Emission>* emissions);
  /// Gives every marker the same emission: direction in body coordinates, opening angle in degrees.
  void setMarkerEmission(double x, double y, double z, double angle);

  bool isLoaded() const { return loaded_; }
  /// Stores the flag and emits bodyLoaded; false also empties the file name.
  void setLoaded(bool loaded);
  bool isModified() const { return modified_; }
  /// Stores the flag and emits bodyModified, changed or not.
  void setModified(bool modified);
  /// Path of the body file last read or written; empty for a body that came otherwise.
  const QString& getFileName() const { return fileName_; }
  void setFileName(const QString& fileName) { fileName_ = fileName; }

  // --- markers and lines ---

  unsigned int getNumMarker() const { return static_cast<unsigned int>(markers_.size()); }
  const std::vector<abcMarker*>& getMarkers() const { return markers_; }
  const std::vector<abcLine*>& getLines() const { return lines_; }
  /// Whether a line joins these markers, in either direction.
  bool lineExists(const abcMarker* a, const abcMarker* b) const;
  /// Appends a line between two markers of this body, which owns it from now on. A null pointer or a line that is in
  /// the list already is ignored.
  void addLine(abcLine* line);
  /// Takes a line out of the list; later lines move down. The object stays alive until the body is initialised or
  /// destroyed, on purpose: a selection may still point at it.
  void removeLine(abcLine* line);
  /// Mean of the marker positions, loaded coordinates; the origin for a body without markers.
  const bsVector& getCenterOfGravity() const { return centerOfGravity_; }

  // --- what the body hands out, in marker order ---

  /// T.
  bsMatrix give_my_transformation() const { return transformation_; }
  const bsMatrix& getTransformation() const { return transformation_; }
  /// Positions in loaded coordinates.
  std::vector<bsVector> give_old_data() const;
  /// Positions in the committed body coordinates.
  std::vector<bsVector> give_new_data() const;
  /// Positions in the body coordinates that include the pending change.
  std::vector<bsVector> give_immediate_new_data() const;
  /// Records with positions in the committed body coordinates. Emission directions are handed out as they are, not
  /// turned into the new coordinates: kept on purpose.
  QList<AbcMarkerData> give_data_with_emissions() const;

  // --- the coordinate system and its history ---

  const bsFrame& getImmediateFrame() const { return immediateFrame_; }
  /// Part of the pending change, relative to T. Values that are not finite are ignored: no later undo could repair a
  /// coordinate system made of them.
  void setImmediatePosition(const bsVector& position);
  void setImmediateOrientation(const bsQuaternion& orientation);

  /// Commits the pending change as one undoable step. Returns false, and does nothing, when there is no change.
  bool store();
  /// Goes back to the transformation before the last commit. The pending change stays.
  void undo();
  /// Takes the last undo back. The pending change stays.
  void redo();
  bool canUndo() const { return !undoList_.empty(); }
  bool canRedo() const { return !redoList_.empty(); }
  unsigned int getUndoCount() const { return static_cast<unsigned int>(undoList_.size()); }
  unsigned int getRedoCount() const { return static_cast<unsigned int>(redoList_.size()); }
  /// Longest undo list, 0 for no limit. The oldest steps above the limit are forgotten.
  void setUndoLimit(unsigned int limit);
  unsigned int getUndoLimit() const { return undoLimit_; }

  // --- drawing (loaded coordinates, current OpenGL context) ---

  /// Axes, grids, markers, emissions and lines; nothing while no body is loaded.
  void draw();
  /// Markers and lines for selection mode, each under two names: its kind (abcObjectType) and its index.
  void drawForPicking();

  // --- display options ---

  void showSmallMarkers(bool show) { smallMarkers_ = show; }
  bool areMarkersSmall() const { return smallMarkers_; }
  void showColoredMarkers(bool show) { coloredMarkers_ = show; }
  bool areMarkersColored() const { return coloredMarkers_; }
  void showMarkerEmissions(bool show) { showEmissions_ = show; }
  bool areMarkerEmissionsShown() const { return showEmissions_; }
  void showLongAxes(bool show) { longAxes_ = show; }
  bool areLongAxesShown() const { return longAxes_; }
  void setLongAxesFactor(double factor) { longAxesFactor_ = factor; }
  double getLongAxesFactor() const { return longAxesFactor_; }

  void showXYGrid(bool show) { xyGrid_ = show; }
  bool isXYGridShown() const { return xyGrid_; }
  void showYZGrid(bool show) { yzGrid_ = show; }
  bool isYZGridShown() const { return yzGrid_; }
  void showXZGrid(bool show) { xzGrid_ = show; }
  bool isXZGridShown() const { return xzGrid_; }
  /// Millimetres: the grids reach from -extent to +extent, a line every step.
  void setGridExtent(double extent) { gridExtent_ = extent; }
  double getGridExtent() const { return gridExtent_; }
  void setGridStep(double step) { gridStep_ = step; }
  double getGridStep() const { return gridStep_; }
  void setXYGridColor(const QColor& color) { xyGridColor_ = color; }
  const QColor& getXYGridColor() const { return xyGridColor_; }
  void setYZGridColor(const QColor& color) { yzGridColor_ = color; }
  const QColor& getYZGridColor() const { return yzGridColor_; }
  void setXZGridColor(const QColor& color) { xzGridColor_ = color; }
  const QColor& getXZGridColor() const { return xzGridColor_; }

 signals:
  void bodyLoaded(bool loaded);
  void bodyModified(bool modified);

 private:
  /// Forgets the body loaded before, if there is anything to forget.
  void initializeIfUsed();
  /// Creates the markers and their centre of gravity.
  void createMarkers(const std::vector<bsVector>& positions);
  void colorMarkers();
  /// Deletes markers and lines, and what belongs to them.
  void deleteObjects();
  void resetImmediateFrame();
  bsMatrix immediateMatrix() const;
  bsMatrix inverseTransformation() const;
  /// Goes to the newest entry of `from` and leaves the present transformation in `to`.
  void step(std::deque<bsMatrix>& from, std::deque<bsMatrix>& to);
  void warn(const QString& title, const QString& text);
  static QString readingError(const korvex2::BodyFileResult& result, const QString& path);
  static QString writingError(const korvex2::BodyFileResult& result, const QString& path);
  void drawCoordinateSystem() const;

  QString fileName_;
  /// Free text of a body file, one character a byte (Latin-1), so that every byte comes back as it was.
  QString secondText_;
  bsMatrix transformation_;
  /// The transformation as of the last commit, undo or redo.
  bsMatrix committed_;
  bsFrame immediateFrame_;
  std::deque<bsMatrix> undoList_;
  std::deque<bsMatrix> redoList_;
  unsigned int undoLimit_ = 0;
  bool smallMarkers_ = false;
  bool coloredMarkers_ = false;
  bool showEmissions_ = true;
  bool longAxes_ = false;
  double longAxesFactor_ = 10.0;
  bool xyGrid_ = false;
  bool yzGrid_ = false;
  bool xzGrid_ = false;
  double gridExtent_ = 500.0;
  double gridStep_ = 25.0;
  QColor xyGridColor_{255, 255, 0};
  QColor yzGridColor_{0, 255, 255};
  QColor xzGridColor_{255, 0, 255};
  bsVector centerOfGravity_;
  bool modified_ = false;
  bool loaded_ = false;
  std::vector<abcLine*> lines_;
  std::vector<abcMarker*> markers_;
  std::vector<QColor> palette_;
  /// Lines taken out of the list, to be deleted with the others.
  std::vector<abcLine*> droppedLines_;
};

#endif
