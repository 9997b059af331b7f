// A dialog session under load: a thousand lines a second while the operator switches bodies, follows and leaves the
// live pose, aligns and applies, and opens and closes the dialog; once with the backend in this program, once with the
// backend program over sockets. Above all for the thread sanitizer.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "backendprocess.h"
#include "bodydatabase.h"
#include "demo/livechecks.h"
#include "demo/plainframe.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "networkconnection.h"
#include "requester.h"

namespace {

using namespace korvex2;

constexpr int linesPerSecond = 1000;
constexpr int watchdogMs = 60000;
constexpr double allowedDegrees = 0.01;
constexpr double allowedMillimetres = 0.01;  // an apply sends three decimals

class CountingRequester : public Requester {
 public:
  int set_ascii_data(const char* /*tag*/, const char* /*line*/) override {
    ++lines;
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override {}
  std::atomic<int> lines{0};
};

enum class Place { embedded, network };

class LiveSession : public testing::TestWithParam<Place> {
 protected:
  void SetUp() override {
    const QString trajectory = QStringLiteral(SOURCE_DATA_FOLDER "/trajectories/handheld_xyz.tum");
    if (GetParam() == Place::embedded) {
      ASSERT_EQ(copyShippedDatabase(SOURCE_DATA_FOLDER, folder.path()).toStdString(), "");
      LiveOptions live;
      live.rate = linesPerSecond;
      live.trajectory = trajectory;
      frontend = std::make_unique<Frontend>(std::make_unique<EmbeddedConnection>(folder.path(), QStringList(), live));
    } else {
      program = std::make_unique<korvex2_test::BackendProcess>();
      program->options = QStringList{"--rate", QString::number(linesPerSecond), "--trajectory", trajectory};
      ASSERT_TRUE(program->start());
      frontend =
          std::make_unique<Frontend>(std::make_unique<NetworkConnection>(BackendAddress{"127.0.0.1", program->port()}));
      ASSERT_EQ(frontend->connection().linkStatus().state, LinkState::connected);
    }
    ModuleFolder modules;
    modules.path = QStringLiteral(MODULE_FOLDER);
    frontend->loadModules({modules});
    frontend->window().show();
  }

  QAction* menuEntry() {
    for (QAction* menu : frontend->window().menuBar()->actions()) {
      for (QAction* entry : menu->menu() != nullptr ? menu->menu()->actions() : QList<QAction*>()) {
        if (entry->text() == QLatin1String("Body &adjustment")) {
          return entry;
        }
      }
    }
    return nullptr;
  }

  // Runs the dialog and, inside it, `steps`; leaves it by Cancel, with Yes to a question about discarding.
  void inDialog(const std::function<void(QWidget*)>& steps) {
    QAction* entry = menuEntry();
    ASSERT_NE(entry, nullptr);
    bool played = false;
    QTimer answers;  // questions on the way are answered with Yes
    QObject::connect(&answers, &QTimer::timeout, [] {
      if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        box->button(QMessageBox::Yes)->click();
      }
    });
    answers.start(20);
    QTimer::singleShot(watchdogMs, &answers, [] {
      ADD_FAILURE() << "the session hangs";
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        dialog->done(QDialog::Rejected);
      }
    });
    QTimer::singleShot(0, &answers, [&] {
      QWidget* dialog = QApplication::activeModalWidget();
      if (dialog == nullptr) {
        ADD_FAILURE() << "no dialog opened";
        return;
      }
      steps(dialog);
      played = true;
      QTest::mouseClick(dialog->findChild<QAbstractButton*>("cancel_button"), Qt::LeftButton);
    });
    entry->trigger();
    EXPECT_TRUE(played);
  }

  static void choose(QWidget* dialog, int row) {
    dialog->findChild<QComboBox*>("body_name")->setCurrentIndex(row);
    QTest::qWait(30);
  }
  static void press(QWidget* dialog, const char* button) {
    QTest::mouseClick(dialog->findChild<QAbstractButton*>(button), Qt::LeftButton);
    QTest::qWait(30);
  }

  QTemporaryDir folder;
  std::unique_ptr<korvex2_test::BackendProcess> program;
  std::unique_ptr<Frontend> frontend;
};

INSTANTIATE_TEST_SUITE_P(Backend, LiveSession, testing::Values(Place::embedded, Place::network),
                         [](const testing::TestParamInfo<Place>& info) {
                           return info.param == Place::embedded ? "Embedded" : "OverSockets";
                         });

TEST_P(LiveSession, SurvivesBodiesSwitchedFollowedAndLeftWhileLinesCome) {
  CountingRequester counter;
  frontend->channel().register_requester("6d", &counter);
  for (int opening = 0; opening < 3; ++opening) {
    inDialog([](QWidget* dialog) {
      const int rows = dialog->findChild<QComboBox*>("body_name")->count();
      EXPECT_EQ(rows, 9);
      choose(dialog, 0);
      press(dialog, "online_checkbox");
      for (int row = 0; row < rows; ++row) {
        choose(dialog, row);
        press(dialog, "adjust_axes_to_room_button");
        press(dialog, "apply_button");
      }
      choose(dialog, 1);
      press(dialog, "online_checkbox");
      press(dialog, "online_checkbox");
    });
  }
  frontend->channel().unregister_requester("6d", &counter);
  const int afterwards = counter.lines;
  EXPECT_GT(afterwards, 100);
  QTest::qWait(50);
  EXPECT_EQ(counter.lines, afterwards) << "a line came after the subscription had ended";
}

// The table stands still and tilted. Each operation, once applied, must show in the next live pose.
TEST_P(LiveSession, AlignsABodyAtRestWithTheRoomToAHundredthOfADegree) {
  constexpr int tableRow = 1;
  constexpr int tableNumber = 2;
  inDialog([this](QWidget* dialog) {
    PoseListener listener(frontend->channel());
    const auto nextPose = [&listener] {
      listener.forget();
      EXPECT_TRUE(QTest::qWaitFor([&listener] { return listener.pose(tableNumber).has_value(); }, 5000));
      return listener.pose(tableNumber).value_or(RoomPose());
    };
    const auto markers = [this] {
      std::vector<Point> positions(4);
      for (int marker = 1; marker <= 4; ++marker) {
        EXPECT_EQ(frontend->channel().get_reals(positions[static_cast<std::size_t>(marker - 1)].data(), 3,
                                                "body marker standard b%02d m%02d", tableNumber, marker),
                  0);
      }
      return positions;
    };
    choose(dialog, tableRow);
    press(dialog, "online_checkbox");
    for (const char* button : {"adjust_axes_to_room_button", "pushButton_due_to_room", "pushButton_due_to_room_0"}) {
      // Away from the room first, by typed turns.
      dialog->findChild<QTabWidget*>("tabWidget")->setCurrentIndex(0);
      const auto fields = dialog->findChild<QWidget*>("body_ori_xyzWidget")->findChildren<QDoubleSpinBox*>();
      fields[0]->setFocus();
      fields[0]->selectAll();
      QTest::keyClicks(fields[0], "37");
      QTest::keyClick(fields[0], Qt::Key_Return);
      press(dialog, "apply_button");
      const RoomPose before = nextPose();
      EXPECT_GT(before.angleToRoom(), 1.0) << button;
      const std::vector<Point> old = markers();

      auto* control = dialog->findChild<QAbstractButton*>(button);
      dialog->findChild<QTabWidget*>("tabWidget")->setCurrentIndex(qstrncmp(button, "push", 4) == 0 ? 1 : 0);
      ASSERT_TRUE(QTest::qWaitFor([control] { return control->isEnabled(); }, 5000)) << button;
      press(dialog, button);
      press(dialog, "apply_button");
      const RoomPose after = nextPose();
      EXPECT_LT(after.angleToRoom(), allowedDegrees) << button;
      const std::vector<Point> now = markers();
      for (std::size_t i = 0; i < 4; ++i) {  // the markers stay where they are in the room
        EXPECT_LT(distance(before.inRoom(old[i]), after.inRoom(now[i])), allowedMillimetres) << button << " " << i;
      }
      Point origin = before.position;
      if (button == std::string("pushButton_due_to_room")) {
        origin = before.inRoom(mean(old));
      } else if (button == std::string("pushButton_due_to_room_0")) {
        PlainFrame body;
        body.followBody(old);
        for (const Point& marker : old) {  // marker 1 is where the body's own frame has its origin
          if (distance(body.coordinatesOf(marker), Point{}) < 1e-9) {
            origin = before.inRoom(marker);
          }
        }
      }
      EXPECT_LT(distance(after.position, origin), allowedMillimetres) << button;
    }
  });
}

TEST_P(LiveSession, EndsWhileLinesComeAndTheDialogWasFollowed) {
  inDialog([](QWidget* dialog) {
    choose(dialog, 0);
    press(dialog, "online_checkbox");
  });
  frontend->shutdown();
  frontend.reset();
}

}  // namespace
