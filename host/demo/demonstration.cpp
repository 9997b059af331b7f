// See demonstration.h.
#include "demo/demonstration.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <cmath>
#include <cstdio>

#include "demo/bodyfilesteps.h"
#include "demo/demooperator.h"
#include "demo/livechecks.h"
#include "demo/plainframe.h"
#include "hostchannel.h"
#include "mainwindow.h"

namespace korvex2 {

namespace {

constexpr double agreement = 0.001;  // mm, the backend is sent three decimals
constexpr int mostBodies = 99;

/// One body of the demonstration: where it comes from, what it should become, what it became.
struct DemoBody {
  QString description;
  QString file;
  int number = 0;               // in the backend, among the standard bodies
  std::vector<Point> original;  // of the body file
  std::vector<Point> kept;      // the file's positions of the markers that the body still has
  PlainFrame frame;
  std::vector<Point> before;
  std::vector<Point> after;

  /// How the entry of the body list begins.
  QString listed() const { return description + QStringLiteral(" ("); }
  Point centre() const { return mean(kept); }
};

class Demonstration {
 public:
  Demonstration(MainWindow& window, const QString& dir, const QString& bodyFiles)
      : window_(window), dir_(dir), bodyFiles_(bodyFiles), operator_(dir) {}

  int run();

 private:
  DemoBody prepared(const QString& description, const QString& file);
  int findNumber(const QString& description);
  std::vector<Point> backendMarkers(int number);
  QAction* menuEntry(const QString& text) const;
  void playDialog();
  void adjustTable();
  void adjustCup();
  void adjustQuadrotor();
  void followLivePoses();
  void useBodyFiles();
  void compare(const QString& what, const std::vector<Point>& found, const std::vector<Point>& expected);
  bool writeReport();
  bool reportBody(QTextStream& text, const DemoBody& body) const;

  MainWindow& window_;
  QString dir_;
  QString bodyFiles_;
  DemoOperator operator_;
  DemoBody table_;
  DemoBody cup_;
  DemoBody quadrotor_;
  std::vector<DemoCheck> checks_;
};

DemoBody Demonstration::prepared(const QString& description, const QString& file) {
  DemoBody body;
  body.description = description;
  body.file = file;
  body.original = readMarkerPositions(QDir(bodyFiles_).filePath(file));
  if (body.original.empty()) {
    operator_.complain(QStringLiteral("%1 cannot be read").arg(file));
  }
  body.kept = body.original;
  body.number = findNumber(description);
  body.before = backendMarkers(body.number);
  return body;
}

int Demonstration::findNumber(const QString& description) {
  int count = 0;
  if (window_.channel().get_int(&count, "body number_of_bodies standard") == 0) {
    for (int number = 1; number <= qMin(count, mostBodies); ++number) {
      char answer[200] = "";
      if (window_.channel().get_string(answer, "body desc standard b%02d", number) == 0 &&
          QString::fromLatin1(answer).remove(QLatin1Char('"')) == description) {
        return number;
      }
    }
  }
  operator_.complain(QStringLiteral("the backend has no body %1").arg(description));
  return 0;
}

std::vector<Point> Demonstration::backendMarkers(int number) {
  int count = 0;
  std::vector<Point> markers;
  if (window_.channel().get_int(&count, "body number_of_marker standard b%02d", number) == 0) {
    for (int marker = 1; marker <= count; ++marker) {
      Point point{};
      if (window_.channel().get_reals(point.data(), 3, "body marker standard b%02d m%02d", number, marker) != 0) {
        operator_.complain(QStringLiteral("marker %1 of body %2 cannot be asked").arg(marker).arg(number));
      }
      markers.push_back(point);
    }
  }
  return markers;
}

QAction* Demonstration::menuEntry(const QString& text) const {
  for (QAction* menu : window_.menuBar()->actions()) {
    if (menu->menu() == nullptr) {
      continue;
    }
    for (QAction* entry : menu->menu()->actions()) {
      if (QString(entry->text()).remove(QLatin1Char('&')) == text) {
        return entry;
      }
    }
  }
  return nullptr;
}

// Axis through two markers, origin on the first of them.
void Demonstration::adjustTable() {
  const std::vector<Point>& markers = table_.kept;
  operator_.chooseBody(table_.listed());
  operator_.moveCameraBack(1400);
  operator_.takePicture(QStringLiteral("table_chosen"));
  operator_.clickMarker(markers[2], table_.centre());
  operator_.clickMarker(markers[0], table_.centre());
  operator_.takePicture(QStringLiteral("table_two_markers_picked"));
  operator_.pressAndAnswer(QStringLiteral("set_axis_button"), [this](QWidget* axes) {
    operator_.takePicture(QStringLiteral("table_axis_dialog"));
    QTest::mouseClick(axes->findChild<QPushButton*>(QStringLiteral("okButton")), Qt::LeftButton);
  });
  table_.frame.layAxis(0, 1, markers[2], markers[0]);
  operator_.takePicture(QStringLiteral("table_axis_set"));
  operator_.press(QStringLiteral("set_origin_button"));
  table_.frame.putOriginAt(markers[2]);
  operator_.takePicture(QStringLiteral("table_origin_set"));
  operator_.press(QStringLiteral("apply_button"));
  operator_.takePicture(QStringLiteral("table_applied"));
}

// A marker less, the frame of markers 1, 2, 3, a typed move and turn, one of them undone and redone.
void Demonstration::adjustCup() {
  operator_.chooseBody(cup_.listed());
  operator_.resetCamera();
  operator_.takePicture(QStringLiteral("cup_chosen"));
  operator_.clickMarker(cup_.kept[4], cup_.centre());
  operator_.takePicture(QStringLiteral("cup_fifth_marker_picked"));
  operator_.pressAndAnswer(QStringLiteral("pushButton_deleteMarker"), [this](QWidget* question) {
    operator_.takePicture(QStringLiteral("cup_delete_question"));
    auto* box = qobject_cast<QMessageBox*>(question);
    QTest::mouseClick(box != nullptr ? box->button(QMessageBox::Ok) : question, Qt::LeftButton);
  });
  cup_.kept.pop_back();
  operator_.takePicture(QStringLiteral("cup_marker_deleted"));
  operator_.showPage(1);
  operator_.takePicture(QStringLiteral("cup_special_page"));
  operator_.press(QStringLiteral("pushButton_due_to_body"));
  cup_.frame.followBody(cup_.kept);
  operator_.takePicture(QStringLiteral("cup_due_to_body"));
  operator_.showPage(0);
  operator_.type(QStringLiteral("body_pos_xyzWidget"), 0, QStringLiteral("12.5"));
  cup_.frame.move(12.5, 0.0, 0.0);
  operator_.takePicture(QStringLiteral("cup_typed_move"));
  operator_.type(QStringLiteral("body_ori_xyzWidget"), 2, QStringLiteral("30"));
  operator_.takePicture(QStringLiteral("cup_typed_turn"));
  operator_.press(QStringLiteral("undo_button"));
  operator_.takePicture(QStringLiteral("cup_undone"));
  operator_.press(QStringLiteral("redo_button"));
  cup_.frame.turn(0.0, 0.0, 30.0);
  operator_.takePicture(QStringLiteral("cup_redone"));
  operator_.press(QStringLiteral("apply_button"));
  operator_.takePicture(QStringLiteral("cup_applied"));
}

// Typed turns about two axes, the origin in the centre of gravity, an axis through two markers; written by OK.
void Demonstration::adjustQuadrotor() {
  operator_.chooseBody(quadrotor_.listed());
  operator_.resetCamera();
  operator_.takePicture(QStringLiteral("quadrotor_chosen"));
  operator_.type(QStringLiteral("body_ori_xyzWidget"), 0, QStringLiteral("14"));
  operator_.type(QStringLiteral("body_ori_xyzWidget"), 0, QStringLiteral("166"));
  quadrotor_.frame.turn(180.0, 0.0, 0.0);
  operator_.takePicture(QStringLiteral("quadrotor_half_turn_typed"));
  operator_.press(QStringLiteral("set_origin_cog_button"));
  quadrotor_.frame.putOriginAt(quadrotor_.centre());
  operator_.takePicture(QStringLiteral("quadrotor_origin_in_cog"));
  operator_.clickMarker(quadrotor_.kept[1], quadrotor_.centre());
  operator_.clickMarker(quadrotor_.kept[3], quadrotor_.centre());
  operator_.pressAndAnswer(QStringLiteral("set_axis_button"), [](QWidget* axes) {
    QTest::mouseClick(axes->findChild<QPushButton*>(QStringLiteral("okButton")), Qt::LeftButton);
  });
  quadrotor_.frame.layAxis(0, 1, quadrotor_.kept[1], quadrotor_.kept[3]);
  operator_.takePicture(QStringLiteral("quadrotor_axis_set"));
}

// The cup moves as it was recorded, the table stands still. The table's values are compared before it is aligned.
void Demonstration::followLivePoses() {
  table_.after = backendMarkers(table_.number);
  PoseListener listener(window_.channel());
  const auto add = [this](std::vector<DemoCheck> checks) {
    checks_.insert(checks_.end(), checks.begin(), checks.end());
  };
  add(followMovingBody(operator_, listener, cup_.listed(), cup_.number, backendMarkers(cup_.number)));
  add(alignWithRoom(operator_, listener, table_.listed(), table_.number, backendMarkers(table_.number)));
  operator_.press(QStringLiteral("online_checkbox"));
  const QString active = QStringLiteral("Cup, active markers");
  add(editEmissions(operator_, window_.channel(), active + QStringLiteral(" ("), findNumber(active)));
}

void Demonstration::compare(const QString& what, const std::vector<Point>& found, const std::vector<Point>& expected) {
  double worst = found.size() == expected.size() && !found.empty() ? 0.0 : HUGE_VAL;
  for (std::size_t i = 0; i < found.size() && i < expected.size(); ++i) {
    worst = qMax(worst, distance(found[i], expected[i]));
  }
  checks_.push_back({what, worst, agreement, QStringLiteral("mm")});
}

// The adjusted quadrotor goes into a file; the quadrotor's own file comes back in.
void Demonstration::useBodyFiles() {
  const QString exported = QDir(dir_).filePath(QStringLiteral("exported.body"));
  QFile::remove(exported);
  workBodyFileDialog(operator_, menuEntry(QStringLiteral("Export body file...")), quadrotor_.listed(), exported,
                     QStringLiteral("quadrotor_exported"));
  compare(QStringLiteral("Quadrotor exported: the file's markers are off those of the backend by"),
          readMarkerPositions(exported), quadrotor_.after);
  workBodyFileDialog(operator_, menuEntry(QStringLiteral("Import body file...")), quadrotor_.listed(),
                     QDir(bodyFiles_).filePath(quadrotor_.file), QStringLiteral("quadrotor_imported"));
  compare(QStringLiteral("Quadrotor imported: the backend's markers are off those of the file by"),
          backendMarkers(quadrotor_.number), quadrotor_.original);
}

void Demonstration::playDialog() {
  QWidget* dialog = QApplication::activeModalWidget();
  if (dialog == nullptr) {
    operator_.complain(QStringLiteral("the menu entry opened no dialog"));
    return;
  }
  operator_.setDialog(dialog);
  if (!QTest::qWaitForWindowExposed(dialog)) {
    operator_.complain(QStringLiteral("the dialog cannot be seen"));
  }
  operator_.takePicture(QStringLiteral("dialog_opened"));
  adjustTable();
  adjustCup();
  followLivePoses();
  adjustQuadrotor();
  operator_.press(QStringLiteral("ok_button"));
  if (dialog->isVisible()) {
    operator_.complain(QStringLiteral("OK did not close the dialog"));
    dialog->close();
  }
}

bool Demonstration::reportBody(QTextStream& text, const DemoBody& body) const {
  text << "\n"
       << body.description << " (standard body " << body.number << ", " << body.file << ")\n"
       << "millimetres    before                            after                             expected"
          "                          difference\n";
  double worst = !body.after.empty() && body.after.size() == body.kept.size() ? 0.0 : HUGE_VAL;
  const auto column = [&text](const Point& point) {
    for (const double value : point) {
      text << QString::number(value, 'f', 4).rightJustified(11);
    }
    text << " ";
  };
  for (std::size_t i = 0; i < body.before.size(); ++i) {
    text << "marker " << QString::number(i + 1).rightJustified(2) << " ";
    column(body.before[i]);
    if (i >= body.after.size() || i >= body.kept.size()) {
      text << "  deleted\n";
      continue;
    }
    const Point expected = body.frame.coordinatesOf(body.kept[i]);
    const double off = distance(expected, body.after[i]);
    worst = qMax(worst, std::isfinite(off) ? off : HUGE_VAL);
    column(body.after[i]);
    column(expected);
    text << QString::number(off, 'f', 6).rightJustified(12) << "\n";
  }
  const bool agrees = worst <= agreement;
  text << (agrees ? "agrees" : "DIFFERS") << ": largest difference " << QString::number(worst, 'f', 6) << " mm\n";
  return agrees;
}

bool Demonstration::writeReport() {
  QFile file(QDir(dir_).filePath(QStringLiteral("report.txt")));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
    operator_.complain(QStringLiteral("%1 cannot be written").arg(file.fileName()));
    return false;
  }
  QTextStream text(&file);
  text << "Marker values in the backend before and after the adjustments, and what plain arithmetic on the body files"
          " says they must be.\n";
  bool agrees = true;
  for (const DemoBody* body : {&table_, &cup_, &quadrotor_}) {
    agrees = reportBody(text, *body) && agrees;
  }
  text << "\nLive poses, emissions, body files\n";
  for (const DemoCheck& check : checks_) {
    text << (check.good() ? "agrees   " : "DIFFERS  ") << check.what << " " << QString::number(check.off, 'f', 6) << " "
         << check.unit << "\n";
    agrees = agrees && check.good();
  }
  agrees = agrees && !checks_.empty();
  text << "\nSteps that went wrong: " << operator_.problems().size() << "\n";
  for (const QString& problem : operator_.problems()) {
    text << "  " << problem << "\n";
  }
  return agrees && operator_.problems().isEmpty();
}

int Demonstration::run() {
  if (!QDir().mkpath(dir_)) {
    std::fprintf(stderr, "korvex2-frontend: the folder %s cannot be made\n", qPrintable(dir_));
    return 1;
  }
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QDir(dir_).filePath(QStringLiteral("settings")));
  window_.show();
  if (!QTest::qWaitForWindowExposed(&window_)) {
    operator_.complain(QStringLiteral("the window cannot be seen"));
  }
  operator_.takePicture(&window_, QStringLiteral("frontend"));
  table_ = prepared(QStringLiteral("Table"), QStringLiteral("table.body"));
  cup_ = prepared(QStringLiteral("Cup"), QStringLiteral("cup.body"));
  quadrotor_ = prepared(QStringLiteral("Quadrotor"), QStringLiteral("quadrotor_standard.body"));
  QAction* entry = menuEntry(QStringLiteral("Body adjustment"));
  if (entry == nullptr) {
    operator_.complain(QStringLiteral("there is no menu entry \"Body adjustment\""));
  }
  if (operator_.problems().isEmpty()) {
    QTimer::singleShot(500, &window_, [this] { playDialog(); });
    entry->trigger();
    operator_.takePicture(&window_, QStringLiteral("frontend_afterwards"));
    cup_.after = backendMarkers(cup_.number);
    quadrotor_.after = backendMarkers(quadrotor_.number);
    useBodyFiles();
  }
  const bool good = writeReport();
  for (const QString& problem : operator_.problems()) {
    std::fprintf(stderr, "korvex2-frontend: %s\n", qPrintable(problem));
  }
  std::printf("%s: %s\n", qPrintable(QDir(dir_).filePath(QStringLiteral("report.txt"))),
              good ? "the backend agrees with plain arithmetic" : "NOT as it should be");
  return good ? 0 : 1;
}

}  // namespace

int runDemonstration(MainWindow& window, const QString& dir, const QString& bodyFiles) {
  return Demonstration(window, dir, bodyFiles).run();
}

}  // namespace korvex2
