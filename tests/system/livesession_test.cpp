// A dialog session under load: a thousand lines a second while the operator switches bodies, follows and leaves the
// live pose, aligns and applies, and opens and closes the dialog. Above all for the thread sanitizer.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <functional>

#include "bodydatabase.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "requester.h"

namespace {

using namespace korvex2;

constexpr int linesPerSecond = 1000;
constexpr int watchdogMs = 60000;

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

class LiveSession : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(copyShippedDatabase(SOURCE_DATA_FOLDER, folder.path()).toStdString(), "");
    LiveOptions live;
    live.rate = linesPerSecond;
    live.trajectory = QStringLiteral(SOURCE_DATA_FOLDER "/trajectories/handheld_xyz.tum");
    frontend = std::make_unique<Frontend>(std::make_unique<EmbeddedConnection>(folder.path(), QStringList(), live));
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
  std::unique_ptr<Frontend> frontend;
};

TEST_F(LiveSession, SurvivesBodiesSwitchedFollowedAndLeftWhileLinesCome) {
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

TEST_F(LiveSession, EndsWhileLinesComeAndTheDialogWasFollowed) {
  inDialog([](QWidget* dialog) {
    choose(dialog, 0);
    press(dialog, "online_checkbox");
  });
  frontend->shutdown();
  frontend.reset();
}

}  // namespace
