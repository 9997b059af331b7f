// See operatedhost.h.
#include "operatedhost.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cmath>

#include "bsDoubleWidget.h"
#include "xyzWidget.h"

namespace korvex2_test {

namespace {

using namespace std::chrono_literals;

constexpr int limitMs = 8000;
constexpr int watchdogMs = 20000;
constexpr double transformRounding = 0.002;

std::unique_ptr<korvex2::NetworkConnection> connectionTo(quint16 port, const korvex2::NetworkOptions& times) {
  return std::make_unique<korvex2::NetworkConnection>(korvex2::BackendAddress{"127.0.0.1", port}, times);
}

void closeEverything() {
  ADD_FAILURE() << "the steps took too long";
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    auto* const open = qobject_cast<QDialog*>(window);
    if (open != nullptr && open->isVisible()) {
      open->done(QDialog::Rejected);
    }
  }
}

}  // namespace

QString changedReport(const char* body) {
  return QStringLiteral(
             "The markers of %1 were changed since they were read: by another program, or by a command whose answer "
             "was lost. Read them again before you change them: choose another body and then this one, or close the "
             "dialog and open it again.")
      .arg(QLatin1String(body));
}

bool becomes(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, limitMs); }

korvex2::NetworkOptions OperatedHost::quickTimes() {
  korvex2::NetworkOptions times;
  times.commandTimeout = 5s;
  times.connectTimeout = 5s;
  times.retryDelays = {0ms, 5ms, 20ms};
  times.stableAfter = 0ms;
  return times;
}

korvex2::NetworkOptions OperatedHost::hastyTimes() {
  korvex2::NetworkOptions times = quickTimes();
  times.commandTimeout = 400ms;
  return times;
}

OperatedHost::OperatedHost(quint16 port, const korvex2::NetworkOptions& times) : frontend(connectionTo(port, times)) {
  QObject::connect(&frontend.channel(), &korvex2::HostChannel::reported,
                   [this](const QString&, int, const QString& text) { reports += text; });
  frontend.window().show();
  // Modules get the record itself, as here.
  auto* const versions = const_cast<BackendVersions*>(&frontend.versions());
  dialog = std::make_unique<BodyAdjustmentDialog>(&frontend.channel(), &frontend.window(), versions);
}

OperatedHost::~OperatedHost() {
  dialog->about_to_exit();
  dialog.reset();
}

void OperatedHost::schedule(const std::function<void()>& steps) {
  stepsDone_ = false;
  QTimer::singleShot(1, dialog.get(), [this, steps] {
    if (!dialog->isVisible()) {
      schedule(steps);
      return;
    }
    steps();
    stepsDone_ = true;
    if (dialog->isVisible()) {
      dialog->done(QDialog::Rejected);
    }
  });
}

void OperatedHost::run(const std::function<void()>& steps) {
  schedule(steps);
  QTimer watchdog;
  watchdog.setSingleShot(true);
  QObject::connect(&watchdog, &QTimer::timeout, closeEverything);
  watchdog.start(watchdogMs);
  dialog->update_and_exec();
  EXPECT_TRUE(stepsDone_) << "the dialog closed before the steps were done";
}

std::vector<Position> OperatedHost::shown() {
  std::vector<Position> positions;
  for (const AbcMarkerData& marker : canvas().give_data_with_emissions()) {
    positions.push_back({marker.position.x, marker.position.y, marker.position.z});
  }
  return positions;
}

void OperatedHost::choose(int row) { find<QComboBox>("body_name")->setCurrentIndex(row); }

void OperatedHost::click(const char* button) {
  auto* const target = find<QAbstractButton>(button);
  auto* const tabs = find<QTabWidget>("tabWidget");
  for (int page = 0; page < tabs->count(); ++page) {
    if (tabs->widget(page)->isAncestorOf(target)) {
      tabs->setCurrentIndex(page);
    }
  }
  EXPECT_TRUE(target->isEnabled()) << button << " is disabled";
  target->click();  // not by the mouse: the dialog of another host may lie over this one
}

void OperatedHost::enter(const char* group, int axis, const char* number) {
  const auto fields = find<xyzWidget>(group)->findChildren<bsDoubleWidget*>();
  ASSERT_EQ(fields.size(), 3);
  auto* const spin = fields.at(axis)->findChild<QDoubleSpinBox*>();
  EXPECT_TRUE(spin->isEnabled()) << group << " is disabled";
  spin->setFocus(Qt::TabFocusReason);
  spin->selectAll();
  QTest::keyClicks(spin, number);
  QTest::keyClick(spin, Qt::Key_Return);
}

void OperatedHost::select(std::size_t marker) {
  canvas().checkSelection(nullptr);
  canvas().checkSelection(canvas().getBody().getMarkers().at(marker));
}

QString OperatedHost::status() {
  return frontend.window().findChild<QLabel*>(QStringLiteral("connectionStatus"))->text();
}

NetworkTest::NetworkTest() {
  watch.ignore("BodyAdjustmentDialog");
  static const QTemporaryDir settings;  // the operator's own stay as they are
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
}

void NetworkTest::SetUp() {
  ASSERT_TRUE(backend.start());
  relay = std::make_unique<FaultProxy>(backend.port());
  ASSERT_NE(relay->port(), 0);
}

void NetworkTest::TearDown() {
  if (relay) {
    relay->passEverything();
  }
  host.reset();
  relay.reset();
}

void NetworkTest::connectHost(const korvex2::NetworkOptions& times) {
  host = std::make_unique<OperatedHost>(relay->port(), times);
  ASSERT_TRUE(comesBack());
  host->takeReports();
}

void NetworkTest::restartBackend(const std::function<void()>& edit) {
  backend.kill();
  EXPECT_TRUE(becomes([this] { return !host->isConnected(); }));
  edit();
  ASSERT_TRUE(backend.startAgain());
  ASSERT_TRUE(comesBack());
}

std::vector<Position> NetworkTest::storedMarkers(int number) const {
  const StoredBody body = backend.stored("standard", number);
  EXPECT_EQ(body.problem.toStdString(), "");
  return body.markers;
}

bool NetworkTest::hostReported(const QString& beginning) const {
  for (const QString& report : host->reports) {
    if (report.startsWith(beginning)) {
      return true;
    }
  }
  return false;
}

void NetworkTest::expectSoundDatabase() const { EXPECT_EQ(backend.problems().join('\n').toStdString(), ""); }

std::vector<Position> movedAlong(std::vector<Position> points, std::size_t axis, double millimetres) {
  for (Position& point : points) {
    point[axis] -= millimetres;
  }
  return points;
}

bool areNear(const std::vector<Position>& a, const std::vector<Position>& b) {
  bool near = a.size() == b.size();
  for (std::size_t i = 0; near && i < a.size(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      near = near && std::abs(a[i][axis] - b[i][axis]) < transformRounding;
    }
  }
  return near;
}

void expectNear(const std::vector<Position>& found, const std::vector<Position>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR(found[i][axis], expected[i][axis], transformRounding) << "marker " << i + 1 << ", axis " << axis;
    }
  }
}

}  // namespace korvex2_test
