// A whole front end with the dialog in it, worked by one operator, and the fixture of the tests with faults.
#ifndef KORVEX2_TESTS_OPERATEDHOST_H
#define KORVEX2_TESTS_OPERATEDHOST_H

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

#include "backendprocess.h"
#include "bodyadjustmentdialog.h"
#include "faultproxy.h"
#include "frontend.h"
#include "glcanvas.h"
#include "modalwatch.h"
#include "networkconnection.h"

namespace korvex2_test {

/// Rows of the selector, as the shipped bodies stand in it.
constexpr int cupRow = 0;     // standard b01, five markers
constexpr int tableRow = 1;   // standard b02, four markers, at rest
constexpr int activeRow = 6;  // standard b07, the cup with emissions

constexpr const char* discardQuestion = "Discard the changes for all bodies?";
constexpr const char* applyQuestion = "Apply the changes?";
constexpr const char* deleteQuestion = "Delete selected marker?";
constexpr const char* transformFailed = "Error: Unable to set body transformation";

/// How the host begins to tell that the connection broke.
constexpr const char* lossReport = "The connection to the backend at 127.0.0.1:";

/// What the host tells when a body is not what was read.
QString changedReport(const char* body);

/// Waits in the event loop until the condition holds; false when it does not within some seconds.
bool becomes(const std::function<bool()>& condition);

/// One host and its operator. The dialog is the module's own; it runs modally, as from the menu.
class OperatedHost {
 public:
  explicit OperatedHost(quint16 port, const korvex2::NetworkOptions& times = quickTimes());
  ~OperatedHost();

  /// Patient with answers, quick to connect again.
  static korvex2::NetworkOptions quickTimes();
  /// Gives an answer up early, for tests that keep one back. Everything else has its answer in a fraction of that.
  static korvex2::NetworkOptions hastyTimes();

  /// Opens the dialog and does the steps inside its modal run. A dialog they left open is hidden without a question.
  void run(const std::function<void()>& steps);

  template <class Widget = QWidget>
  Widget* find(const char* name) {
    auto* const found = dialog->findChild<Widget*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << "no " << name;
    return found;
  }
  bool enabled(const char* name) { return find<QWidget>(name)->isEnabled(); }
  GLCanvas& canvas() { return *dialog->findChild<GLCanvas*>(); }
  /// Coordinates of the markers as the operator sees them.
  std::vector<Position> shown();
  void choose(int row);
  void click(const char* button);
  /// Types a number into field 0 (x), 1 (y) or 2 (z) of a group of entries, and Return.
  void enter(const char* group, int axis, const char* number);
  /// Moves the body's coordinate system along x.
  void move(const char* millimetres) { enter("body_pos_xyzWidget", 0, millimetres); }
  /// Selects one marker, index from 0.
  void select(std::size_t marker);

  /// What the operator has read in the reports so far, modules' and the host's own; takeReports() begins anew.
  QStringList reports;
  QStringList takeReports() { return std::exchange(reports, {}); }
  /// The status bar's words on the connection.
  QString status();
  bool isConnected() { return status().startsWith("Connected to "); }

  korvex2::Frontend frontend;
  std::unique_ptr<BodyAdjustmentDialog> dialog;

 private:
  void schedule(const std::function<void()>& steps);
  bool stepsDone_ = false;
};

/// A backend program, the relay in front of it, and a host on the relay.
class NetworkTest : public testing::Test {
 protected:
  NetworkTest();
  void SetUp() override;
  void TearDown() override;

  void connectHost(const korvex2::NetworkOptions& times = OperatedHost::quickTimes());
  /// Waits until the host is connected again.
  bool comesBack() {
    return becomes([this] { return host->isConnected(); });
  }
  /// Kills the backend, edits its catalogue, starts it where it was, and waits for the host; reports are kept.
  void restartBackend(const std::function<void()>& edit = [] {});
  std::vector<Position> storedMarkers(int number = 1) const;
  bool hostReported(const QString& beginning) const;
  /// The folder holds together: no complaint, no body with a trouble.
  void expectSoundDatabase() const;

  BackendProcess backend;
  std::unique_ptr<FaultProxy> relay;
  ModalWatch watch;
  std::unique_ptr<OperatedHost> host;
};

/// Every point as seen from an origin that was moved by so much along axis 0 (x), 1 (y) or 2 (z).
std::vector<Position> movedAlong(std::vector<Position> points, std::size_t axis, double millimetres);
bool areNear(const std::vector<Position>& a, const std::vector<Position>& b);
/// Near enough for a transform that travelled with three decimals.
void expectNear(const std::vector<Position>& found, const std::vector<Position>& expected);

}  // namespace korvex2_test

#endif
