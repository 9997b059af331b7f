// The 3-D view of one body: camera, picking and selection, operations on the body's coordinate system, painting.
#ifndef KORVEX2_GLCANVAS_H
#define KORVEX2_GLCANVAS_H

#include <QGLWidget>
#include <QList>
#include <QPointer>
#include <QString>

#include <vector>

#include "abcBody.h"
#include "abcObject.h"
#include "abcaxis.h"
#include "abcmarkerdata.h"
#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsVector.h"

class QMenu;

/// Shows one body and edits its coordinate system.
///
/// Coordinates. Marker positions stay in *loaded* coordinates for ever. T is the committed pose of the body's
/// coordinate system in them (loaded = T * new), M a pending change relative to T. Whoever reads data gets inverse(T),
/// or inverse(M) * inverse(T), applied to the stored positions. Millimetres and degrees throughout.
///
/// Camera. The current view maps what is drawn (loaded coordinates minus the centre of gravity; turned by the tracked
/// orientation while online) to eye coordinates: x right, y up, the camera looks along -z. Typed and dragged changes
/// are displacements of the *saved* view; whoever wants them to add up connects storeViewRequest() to
/// saveCurrentView().
///
/// Mouse and wheel, with a body loaded and in modification mode 0:
///   Ctrl + left drag     pan            Ctrl + wheel     dolly in steps
///   Shift + left drag    dolly          left click       select (see checkSelection())
///   Ctrl + right drag    rotate         right click      context menu
///
/// One undo step. An operation that ends in storeBodyRequest() is committed at once: the canvas has connected that
/// signal to saveCurrentBody() before anybody else can connect to it, so later receivers see the committed state.
///
/// A canvas without a usable GL context (hidden, or no GL on the machine) keeps its state and neither draws nor picks.
class GLCanvas : public QGLWidget {
  Q_OBJECT

 public:
  explicit GLCanvas(QWidget* parent = nullptr);
  ~GLCanvas() override;

  // --- Camera ---

  /// Current and saved view become `view`.
  void set_view(const bsFrame& view);
  bsFrame get_view() const;
  bsVector getViewPosition() const;
  void setViewMode(abcViewMode mode);
  abcViewMode getViewMode() const { return viewMode_; }
  /// Entering mode 0 puts the online view back to (0, 0, -300); in every mode the offline view becomes the online view.
  void setModificationMode(abcModificationMode mode);
  abcModificationMode getModificationMode() const { return modificationMode_; }

  // --- Live pose ---

  /// Switches between the two remembered views; leaving online forgets the tracked pose. Only a change of state moves
  /// the camera.
  void setOnline(bool on);
  bool isOnline() const { return online_; }
  void setUseTrackedBody(bool use);
  bool isUseTrackedBody() const { return useTrackedBody_; }
  void setTrackedBodySeen(bool seen);
  bool isTrackedBodySeen() const { return trackedBodySeen_; }
  /// Orientation of the loaded coordinates in the room. A matrix with a value that is not finite is ignored.
  void setTrackedBodyOrientation(const bsMatrix& orientation);
  const bsMatrix& getRoomOrientation() const { return roomOrientation_; }
  /// Millimetres, room coordinates. A vector with a value that is not finite is ignored.
  void setTrackedBodyPosition(const bsVector& position);
  const bsVector& getTrackedPosition() const { return trackedPosition_; }

  // --- Display ---

  double getLongAxesFactor() const;
  /// Axes of the room beside the body's, drawn while online.
  void show_room_ori(bool show);
  /// The menu that a right click opens; it stays its owner's. Null: no menu.
  void set_menu(QMenu* menu);

  // --- Body ---

  /// The body to edit. A load or an unload empties the selection and the edit history and tells so by the selection
  /// signals, canUndo(false) and canRedo(false); the camera stays. `emissions` may be null.
  bool loadBody(std::vector<bsVector>* positions, std::vector<Emission>* emissions);
  bool loadBody(const QString& path);
  bool saveBody(const QString& path);
  void unloadBody();
  bool isBodyLoaded() const;
  bool isBodyModified() const;
  QString getBodyFileName() const;
  unsigned int getBodyNumMarker() const;
  /// T: committed pose of the body's coordinate system in loaded coordinates.
  bsMatrix getBodyTransformation() const;
  /// The same emission (direction, opening angle in degrees) for every marker.
  void setMarkerEmission(double x, double y, double z, double angle);
  const abcBody& getBody() const { return body_; }

  /// Inverse of T, what the backend is sent.
  bsMatrix give_body_transformation() const;
  /// Marker positions in committed body coordinates.
  std::vector<bsVector> give_data() const;
  /// Marker positions in body coordinates including the pending change.
  std::vector<bsVector> give_immediate_data() const;
  QList<AbcMarkerData> give_data_with_emissions() const;

  // --- Picking and selection ---

  /// The object seen at widget coordinates (x, y), logical pixels from the top left corner; null when there is none.
  abcObject* doPicking(unsigned int x, unsigned int y);
  /// Takes a click on `clicked` (null: into empty space) into the selection and tells which commands are possible now.
  /// Two markers can be selected, in order; clicking one of them again swaps them.
  void checkSelection(abcObject* clicked);
  /// In order of selection, not owned, at most two entries.
  const std::vector<abcObject*>& getSelection() const { return selection_; }
  /// Id of the only selected object when it is a marker, -2 when several objects are selected, else -1.
  int getSelectedMarker() const;
  bool checkIntroduceLine() const;
  bool checkDeleteLine() const;

  // --- Coordinate system ---

  bool checkSetOriginToMarker() const;
  bool checkSetAxisToMarkers() const;
  bool checkSetParallelAxes() const;

  /// Axes parallel to the room's, origin in the centre of gravity.
  void set_due_to_room_cog();
  /// Axes parallel to the room's, origin in marker 1. Nothing happens for a body without markers 1, 2, 3.
  void set_due_to_room_marker();
  /// The frame of markers 1, 2, 3, origin in marker 1. Nothing happens for a body without markers 1, 2, 3 or with
  /// these markers on one line: they define no frame, and what is sent to a laboratory must stay a rigid one.
  void set_due_to_body();

  /// See korvex2::computeFrame().
  bsMatrix computeFrame(bsVector& set, bsVector& keep, bsVector& third, abcAxis axisToSet,
                        abcAxis axisToPreserve) const;
  /// See korvex2::compute_orientation().
  bsMatrix compute_orientation(const bsVector& p1, const bsVector& p2, const bsVector& p3) const;
  /// See korvex2::compute_marker_1_2_3(), here on the stored positions.
  bool compute_marker_1_2_3(int& m1, int& m2, int& m3) const;

  // --- Drawing and input, called by the toolkit ---

  void initializeGL() override;
  /// Width and height in device pixels.
  void resizeGL(int w, int h) override;
  void paintGL() override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 signals:
  // The order of signals and slots is part of the interface; nobody sorts them.
  void translateViewRequest(double x, double y, double z);
  void rotateViewRequest(double x, double y, double z);
  void storeViewRequest();
  void bodyModified(bool bodyModified);
  void storeBodyRequest();
  void canUndo(bool enableUndo);
  void canRedo(bool enableRedo);
  void canSetOriginToMarker(bool enableSetOriginToMarker);
  void canSetAxisToMarkers(bool enableSetAxisToMarkers);
  void canSetParallelAxes(bool enableSetParallelAxes);
  void body_change(bool can_apply);
  void is_online(bool online);
  void canIntroduceLine(bool enableIntroduceLine);
  void canDeleteLine(bool enableDeleteLine);
  void canDeleteMarker();

 public slots:
  void saveCurrentView();
  /// Degrees; turns the saved view by Rx * Ry * Rz.
  void rotateView(double x, double y, double z);
  void setViewOrientation(const bsMatrix& orientation);
  /// Millimetres; displaces the saved view.
  void translateView(double x, double y, double z);
  void setViewPosition(const bsVector& position);
  void transformView(const bsMatrix& m);
  void showCOG(bool showCOG);
  void showSmallMarkers(bool showSmall);
  void showColoredMarkers(bool showColored);
  void showLongAxes(bool showLong);
  void setLongAxesFactor(double longAxesFactor);
  void showXYGrid(bool showXY);
  void showYZGrid(bool showYZ);
  void showXZGrid(bool showXZ);
  void setXYGridColor(QColor& XYColor);
  void setYZGridColor(QColor& YZColor);
  void setXZGridColor(QColor& XZColor);
  void rotateViewBegin();
  void rotateViewEnd();
  void showMarkerEmissions(bool show_emissions);
  void undo();
  void redo();
  /// Pending rotation, degrees, Rx * Ry * Rz; replaces the previous pending rotation.
  void rotateBody(double x, double y, double z);
  void rotateBody(const bsMatrix& orientation);
  /// Pending: the axes get this orientation in loaded coordinates; a matrix that is not finite is ignored.
  void setBodyOrientation(const bsMatrix& orientation);
  /// Pending: the origin moves to this point of loaded coordinates; a point that is not finite is ignored.
  void setBodyPosition(const bsVector& position);
  /// Pending translation, millimetres in committed body coordinates; replaces the previous pending translation.
  void translateBody(double x, double y, double z);
  void saveCurrentBody();
  /// One step back or forward in the edit history whatever the modification mode; undo() and redo() are the commands.
  void undoBody();
  void redoBody();
  void setOriginToMarker();
  /// The axis runs from the first to the second selected marker, the kept axis is the committed one made perpendicular
  /// to it, the origin stays. Nothing happens when the markers coincide or lie along the axis to keep. Equal axes are
  /// a programming error and abort with "axisToSet != axisToPreserve".
  void setAxisToMarkers(abcAxis axisToSet, abcAxis axisToKeep);
  void setParallelAxes();
  void set_origin_to_cog();
  void introduceLine();
  void deleteLine();

 private:
  bool makeContextCurrent();
  void applyProjection() const;
  void applyView() const;
  void applyBodyPlacement() const;
  int drawForPicking(std::vector<unsigned int>& records, double x, double y);
  void drawCenterOfGravity() const;
  void drawSelection();
  abcObject* nearestPicked(const std::vector<unsigned int>& records, int hits) const;

  void prepareForAnotherBody();
  void announceBody();
  void emitSelectionSignals();
  void emitHistorySignals();
  static bool isMarker(const abcObject* object);
  bool selectedAreTwoMarkers() const;
  bsMatrix roomAxesInLoaded() const;
  bool chooseMarkers(bsVector& p1, bsVector& p2, bsVector& p3) const;

  double fieldOfView_ = 45.0;  ///< vertical, degrees
  double nearPlane_ = 1.0;
  double farPlane_ = 100000.0;
  int width_ = 0;   ///< of the viewport, device pixels; 0 until the canvas is laid out
  int height_ = 0;  ///< of the viewport, device pixels
  QPoint lastMouse_;
  std::vector<abcObject*> selection_;
  bool online_ = false;
  bsFrame onlineView_;
  bsFrame offlineView_;
  bsFrame currentView_;
  bsFrame savedView_;
  abcViewMode viewMode_ = ABC_VIEW_IDLE;
  bool showCog_ = false;
  abcModificationMode modificationMode_ = ABC_MODIFY_BODY;
  abcBody body_;
  bool useTrackedBody_ = false;
  bool trackedBodySeen_ = false;
  bsMatrix roomOrientation_;
  bsVector trackedPosition_;
  QPointer<QMenu> menu_;
  bool showRoomOrientation_ = false;
};

#endif
