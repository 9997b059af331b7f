// What the dialog's tests share: the dialog on the scripted backend, run modally, and the operator's hands.
#ifndef KORVEX2_TESTS_DIALOGTEST_H
#define KORVEX2_TESTS_DIALOGTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QString>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bodyadjustmentdialog.h"
#include "glcanvas.h"
#include "modalwatch.h"
#include "scriptedbackend.h"
#include "xyzWidget.h"

/// Rows of the selector in the bodies that the fixture brings.
constexpr int cupRow = 0;
constexpr int handRow = 1;
constexpr int stickRow = 2;
constexpr int tubeRow = 3;
constexpr int penRow = 4;

/// The dialog with five bodies behind it:
///   row 0  standard 1  "Cup", six markers
///   row 1  standard 2  "Hand", not calibrated
///   row 2  standard 3  without description, five markers, target type tt_5dof
///   row 3  standard 4  "Tube", four markers, target type tt_long_cyl
///   row 4  wandgrip 1  "Pen", five markers with emissions
class DialogTest : public testing::Test {
 protected:
  DialogTest();
  ~DialogTest() override;

  /// Builds the dialog (run() does when there is none) and forgets what was logged on the way.
  BodyAdjustmentDialog& make();
  /// Opens the dialog, does the steps inside its modal run and returns what the run returned. A dialog that the steps
  /// left open is hidden without a question or an answer to anybody.
  int run(const std::function<void()>& steps);
  /// The same on a request by another module.
  void runOnRequest(const QString& module, const QString& key, const std::function<void()>& steps);

  // --- the dialog's parts ----------------------------------------------------------------------------------------

  template <class Widget = QWidget>
  Widget* find(const char* name) {
    auto* const found = dialog->findChild<Widget*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << "no " << name;
    return found;
  }
  bool enabled(const char* name) { return find<QWidget>(name)->isEnabled(); }
  /// The same of the control alone, whatever the page around it is.
  bool enabledItself(const char* name) {
    auto* const widget = find<QWidget>(name);
    return widget->isEnabledTo(widget->parentWidget());
  }
  std::string text(const char* name);
  GLCanvas& canvas();
  QComboBox& bodies();
  QAction* menuEntry(const QString& text);
  /// Cells of a table, row by row, "1|10.00|20.00|30.00"; a cleared cell is empty.
  std::vector<std::string> cells(const char* table);
  /// Field 0 (x), 1 (y) or 2 (z) of a group of entries.
  QDoubleSpinBox* field(const char* group, int axis);
  std::vector<std::string> disabledOf(const std::vector<const char*>& names);

  // --- the operator's hands --------------------------------------------------------------------------------------

  void choose(int row);
  /// Brings the button's page to the front and clicks it with the mouse; the button must be enabled.
  void click(const char* button);
  /// A keystroke at the widget that has the focus.
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  /// Focuses the field, replaces its text, and leaves the edit open.
  void type(const char* group, int axis, const QString& number);
  /// The same and Return.
  void enter(const char* group, int axis, const QString& number);
  void select(const std::vector<std::size_t>& markers);

  // --- what the backend hears ------------------------------------------------------------------------------------

  /// Log since the last call; the sign of a printed zero is dropped, for it says nothing.
  Log heard();
  /// The same, without what is asked: only commands, settings and messages.
  Log changesHeard();
  static Log joined(const std::vector<Log>& parts);
  Log fetchOf(const std::string& type, int number);
  /// Texts that write a body's markers.
  static Log writeOf(const std::string& type, int number, const std::vector<Point>& markers,
                     const std::vector<EmissionValues>& emissions);
  static std::string transformOf(const std::string& type, int number, const Point& translation,
                                 const std::array<double, 9>& rotation = {1, 0, 0, 0, 1, 0, 0, 0, 1});
  static Log hideLog();
  static std::string report(const std::string& text) { return "send_message standard Korvex2 1 " + text; }

  ScriptedBackend backend;
  ModalWatch watch;
  std::unique_ptr<BodyAdjustmentDialog> dialog;

 private:
  void scheduleSteps(const std::function<void()>& steps);
  bool stepsDone_ = false;
};

constexpr const char* discardQuestion = "Discard the changes for all bodies?";
constexpr const char* applyQuestion = "Apply the changes?";

/// Near enough for values that travelled as text with three decimals, and directions with eight.
constexpr double textRounding = 0.002;
void expectPoints(const std::vector<Point>& found, const std::vector<Point>& expected, double tolerance = textRounding);
Point meanOf(const std::vector<Point>& points);
/// Every point seen from the given one.
std::vector<Point> seenFrom(const Point& origin, std::vector<Point> points);
/// Rotation by degrees about x (0), y (1) or z (2), column by column.
std::array<double, 9> turn(int axis, double degrees);
std::array<double, 9> transposed(const std::array<double, 9>& r);

#endif
