// See dialogtest.h.
#include "dialogtest.h"

#include <QApplication>
#include <QMenu>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>
#include <cmath>

#include "bsDoubleWidget.h"

namespace {

constexpr int watchdogMs = 30000;

/// "-0.000" and "0.000" are the same number.
std::string withoutNegativeZeros(const std::string& text) {
  return QString::fromStdString(text)
      .replace(QRegularExpression(QStringLiteral("-(0\\.0+)(?![0-9])")), QStringLiteral("\\1"))
      .toStdString();
}

void closeEverything() {
  ADD_FAILURE() << "the steps took too long";
  while (QWidget* const popup = QApplication::activePopupWidget()) {
    popup->close();
  }
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    auto* const open = qobject_cast<QDialog*>(window);
    if (open != nullptr && open->isVisible()) {
      open->done(QDialog::Rejected);
    }
  }
}

}  // namespace

DialogTest::DialogTest() {
  watch.ignore("BodyAdjustmentDialog");
  backend.add({"standard",
               1,
               "Cup",
               {{10, 20, 30}, {110, 25, 32}, {15, 80, 28}, {60, 40, -45}, {-30, -35, 12}, {75, -20, 64}},
               {}});
  backend.add({"standard", 2, "Hand", {{1, 2, 3}, {40, 5, 6}, {7, 60, 9}, {10, 11, 70}}, {}, false});
  backend.add(
      {"standard", 3, "", {{5, 6, 7}, {50, 8, 9}, {10, 90, 11}, {12, 13, 70}, {30, 31, 32}}, {}, true, "tt_5dof"});
  backend.add({"standard", 4, "Tube", {{2, 3, 4}, {60, 4, 5}, {6, 70, 7}, {8, 9, 80}}, {}, true, "tt_long_cyl"});
  backend.add({"wandgrip",
               1,
               "Pen",
               {{3, 4, 5}, {80, 6, 7}, {9, 85, 11}, {14, 15, 95}, {33, 34, 35}},
               {{1, 0, 0, 60}, {0, 1, 0, 60}, {0, 0, 1, 60}, {0.6, 0.8, 0, 30}, {0, 0.6, 0.8, 45}}});
}

DialogTest::~DialogTest() = default;

BodyAdjustmentDialog& DialogTest::make() {
  backend.prepare();
  dialog = std::make_unique<BodyAdjustmentDialog>(&backend.io, nullptr, &backend.versions);
  backend.io.takeLog();
  return *dialog;
}

void DialogTest::scheduleSteps(const std::function<void()>& steps) {
  stepsDone_ = false;
  QTimer::singleShot(1, dialog.get(), [this, steps] {
    if (!dialog->isVisible()) {  // something modal on the way
      scheduleSteps(steps);
      return;
    }
    QApplication::setActiveWindow(dialog.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
    steps();
    stepsDone_ = true;
    if (dialog->isVisible()) {
      dialog->done(QDialog::Rejected);
    }
  });
}

int DialogTest::run(const std::function<void()>& steps) {
  if (dialog == nullptr) {
    make();
  }
  scheduleSteps(steps);
  QTimer watchdog;
  watchdog.setSingleShot(true);
  QObject::connect(&watchdog, &QTimer::timeout, closeEverything);
  watchdog.start(watchdogMs);
  const int result = dialog->update_and_exec();
  EXPECT_TRUE(stepsDone_) << "the dialog closed before the steps were done";
  return result;
}

void DialogTest::runOnRequest(const QString& module, const QString& key, const std::function<void()>& steps) {
  if (dialog == nullptr) {
    make();
  }
  scheduleSteps(steps);
  QTimer watchdog;
  watchdog.setSingleShot(true);
  QObject::connect(&watchdog, &QTimer::timeout, closeEverything);
  watchdog.start(watchdogMs);
  dialog->onReceiveOpenBodyAdjustmentDialog(module, key);
  EXPECT_TRUE(stepsDone_) << "the dialog closed before the steps were done";
}

std::string DialogTest::text(const char* name) {
  return find<QWidget>(name)->property("text").toString().toStdString();
}

GLCanvas& DialogTest::canvas() { return *dialog->findChild<GLCanvas*>(); }

QComboBox& DialogTest::bodies() { return *find<QComboBox>("body_name"); }

QAction* DialogTest::menuEntry(const QString& text) {
  for (QMenu* const menu : dialog->findChildren<QMenu*>()) {
    for (QAction* const action : menu->actions()) {
      if (action->text() == text) {
        return action;
      }
    }
  }
  ADD_FAILURE() << "no menu entry " << qPrintable(text);
  return nullptr;
}

std::vector<std::string> DialogTest::cells(const char* table) {
  auto* const widget = find<QTableWidget>(table);
  std::vector<std::string> rows;
  for (int row = 0; row < widget->rowCount(); ++row) {
    std::string line;
    for (int column = 0; column < widget->columnCount(); ++column) {
      const QTableWidgetItem* const item = widget->item(row, column);
      line += (column == 0 ? "" : "|") + (item != nullptr ? item->text().toStdString() : std::string());
    }
    rows.push_back(line);
  }
  return rows;
}

QDoubleSpinBox* DialogTest::field(const char* group, int axis) {
  const auto fields = find<xyzWidget>(group)->findChildren<bsDoubleWidget*>();
  EXPECT_EQ(fields.size(), 3);
  return fields.at(axis)->findChild<QDoubleSpinBox*>();
}

std::vector<std::string> DialogTest::disabledOf(const std::vector<const char*>& names) {
  std::vector<std::string> disabled;
  for (const char* const name : names) {
    if (!enabled(name)) {
      disabled.emplace_back(name);
    }
  }
  return disabled;
}

void DialogTest::choose(int row) { bodies().setCurrentIndex(row); }

void DialogTest::click(const char* button) {
  auto* const target = find<QAbstractButton>(button);
  auto* const tabs = find<QTabWidget>("tabWidget");
  for (int page = 0; page < tabs->count(); ++page) {
    if (tabs->widget(page)->isAncestorOf(target)) {
      tabs->setCurrentIndex(page);
    }
  }
  EXPECT_TRUE(target->isEnabled()) << button << " is disabled";
  EXPECT_TRUE(target->isVisible()) << button << " is hidden";
  QTest::mouseClick(target, Qt::LeftButton);
}

void DialogTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QWidget* const focused = dialog->focusWidget();
  QTest::keyClick(focused != nullptr ? focused : dialog.get(), key, modifiers);
}

void DialogTest::type(const char* group, int axis, const QString& number) {
  auto* const spin = field(group, axis);
  EXPECT_TRUE(spin->isEnabled()) << group << " is disabled";
  spin->setFocus(Qt::TabFocusReason);
  EXPECT_TRUE(spin->hasFocus()) << group << " takes no focus";
  spin->selectAll();
  QTest::keyClicks(spin, number);
}

void DialogTest::enter(const char* group, int axis, const QString& number) {
  type(group, axis, number);
  QTest::keyClick(field(group, axis), Qt::Key_Return);
}

void DialogTest::select(const std::vector<std::size_t>& markers) {
  canvas().checkSelection(nullptr);
  for (const std::size_t marker : markers) {
    canvas().checkSelection(canvas().getBody().getMarkers().at(marker));
  }
}

Log DialogTest::heard() {
  Log log = backend.io.takeLog();
  std::transform(log.begin(), log.end(), log.begin(), withoutNegativeZeros);
  return log;
}

Log DialogTest::changesHeard() {
  Log log = heard();
  log.erase(std::remove_if(log.begin(), log.end(), [](const std::string& entry) { return entry.find("get_") == 0; }),
            log.end());
  return log;
}

Log DialogTest::joined(const std::vector<Log>& parts) {
  Log all;
  for (const Log& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

namespace {
std::string twoDigits(std::size_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }
std::string address(const std::string& type, int number) {
  return type + " b" + twoDigits(static_cast<std::size_t>(number));
}
}  // namespace

Log DialogTest::fetchOf(const std::string& type, int number) {
  const std::string body = address(type, number);
  Log log = {"get_int body number_of_marker " + body};
  for (std::size_t marker = 1; marker <= backend.body(type, number).markers.size(); ++marker) {
    log.push_back("get_reals body marker " + body + " m" + twoDigits(marker));
    log.push_back("get_reals body marker_emission " + body + " m" + twoDigits(marker));
  }
  return log;
}

Log DialogTest::writeOf(const std::string& type, int number, const std::vector<Point>& markers,
                        const std::vector<EmissionValues>& emissions) {
  const std::string body = address(type, number);
  Log log = {"set_value body number_of_marker " + body + " " + std::to_string(markers.size())};
  for (std::size_t i = 0; i < markers.size(); ++i) {
    std::string text = "set_value body marker " + body + " m" + twoDigits(i + 1);
    for (const double value : markers[i]) {
      text += " " + fixedText(value, 3);
    }
    log.push_back(text);
    if (!emissions.empty()) {
      text = "set_value body marker_emission " + body + " m" + twoDigits(i + 1);
      for (const double value : emissions.at(i)) {
        text += " " + fixedText(value, 3);
      }
      log.push_back(text);
    }
  }
  std::transform(log.begin(), log.end(), log.begin(), withoutNegativeZeros);
  return log;
}

std::string DialogTest::transformOf(const std::string& type, int number, const Point& translation,
                                    const std::array<double, 9>& rotation) {
  std::string text = "send_raw_command korvex2 body transform " + address(type, number);
  for (const double value : translation) {
    text += " " + fixedText(value, 3);
  }
  for (const double value : rotation) {
    text += " " + fixedText(value, 8);
  }
  return withoutNegativeZeros(text);
}

Log DialogTest::hideLog() {
  return {"get_string status active", "send_raw_command korvex2 tracking stop", "unregister_requester 6d",
          "unregister_requester 6dw2"};
}

void expectPoints(const std::vector<Point>& found, const std::vector<Point>& expected, double tolerance) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR(found[i][axis], expected[i][axis], tolerance) << "marker " << i + 1 << ", coordinate " << axis;
    }
  }
}

Point meanOf(const std::vector<Point>& points) {
  Point mean{};
  for (const Point& point : points) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      mean[axis] += point[axis] / static_cast<double>(points.size());
    }
  }
  return mean;
}

std::vector<Point> seenFrom(const Point& origin, std::vector<Point> points) {
  for (Point& point : points) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      point[axis] -= origin[axis];
    }
  }
  return points;
}

std::array<double, 9> turn(int axis, double degrees) {
  const double c = std::cos(degrees * std::acos(-1.0) / 180.0);
  const double s = std::sin(degrees * std::acos(-1.0) / 180.0);
  switch (axis) {
    case 0:
      return {1, 0, 0, 0, c, s, 0, -s, c};
    case 1:
      return {c, 0, -s, 0, 1, 0, s, 0, c};
    default:
      return {c, s, 0, -s, c, 0, 0, 0, 1};
  }
}

std::array<double, 9> transposed(const std::array<double, 9>& r) {
  return {r[0], r[3], r[6], r[1], r[4], r[7], r[2], r[5], r[8]};
}
