// The demonstration's operator: works the module's dialog through real widgets, mouse and keyboard events.
#ifndef KORVEX2_HOST_DEMO_DEMOOPERATOR_H
#define KORVEX2_HOST_DEMO_DEMOOPERATOR_H

#include <QPoint>
#include <QPointer>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>

#include "plainframe.h"

class QColor;
class QDoubleSpinBox;

namespace korvex2 {

/// Finds controls by their object names, as any user of the dialog could, and knows the dialog by nothing else.
/// What goes wrong is collected in problems() and never stops the run half-way without a word.
class DemoOperator {
 public:
  /// Pictures go into `dir`, numbered in the order they are taken.
  explicit DemoOperator(const QString& dir) : dir_(dir) {}

  void setDialog(QWidget* dialog) { dialog_ = dialog; }
  QWidget* dialog() const { return dialog_; }
  const QStringList& problems() const { return problems_; }
  void complain(const QString& problem) { problems_ << problem; }

  /// What is on the screen where `window` is.
  void takePicture(QWidget* window, const QString& name);
  void takePicture(const QString& name) { takePicture(dialog_, name); }

  /// Opens the list of bodies and clicks the entry that begins with `description`.
  void chooseBody(const QString& description);
  /// The same in any list.
  void chooseEntry(const QString& listName, const QString& beginning);
  void press(const QString& button);
  /// Presses a button that opens a window, and works that window when it is there.
  void pressAndAnswer(const QString& button, const std::function<void(QWidget*)>& act);
  void showPage(int page);
  /// Types a number into the field of axis 0, 1 or 2 of an entry group and ends the entry with the Return key.
  void type(const QString& group, int axis, const QString& number);
  /// Types a number into a field of its own and ends the entry with the Return key.
  void typeNumber(const QString& field, const QString& number);
  /// Drags with Shift and the left button: the camera moves `millimetres` further away.
  void moveCameraBack(int millimetres);
  void resetCamera();
  /// Clicks the marker at `position` (the file's coordinates, `centre` the centre of gravity of the body shown).
  void clickMarker(const Point& position, const Point& centre);
  void clickEmptySpace();
  bool isEnabled(const QString& control);
  QSizeF viewSize();
  /// Whether the view shows this colour, however it is lit, at or right beside a place in it.
  bool viewShows(const QPoint& place, const QColor& colour);
  void wait(int milliseconds);

 private:
  void typeInto(QDoubleSpinBox* field, const QString& number);
  QWidget* view();
  template <class Widget>
  Widget* find(const QString& name);

  QPointer<QWidget> dialog_;
  QString dir_;
  QStringList problems_;
  int pictures_ = 0;
  double cameraDistance_ = 300.0;
};

}  // namespace korvex2

#endif
