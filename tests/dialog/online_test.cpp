// Following the live pose: which bodies can be followed, what is shown, and the operations that need the room.
#include <QMessageBox>

#include <thread>

#include "dialogtest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string rotationText(const std::array<double, 9>& r) {
  std::string text;
  for (const double value : r) {
    text += (text.empty() ? "[" : " ") + fixedText(value, 6);
  }
  return text + "]";
}

class Online : public DialogTest {
 protected:
  static std::string bodyLine(int id, const std::array<double, 9>& rotation = turn(0, 0), const char* quality = "1.000",
                              const char* position = "[10 20 30]") {
    return "6d 1 [" + std::to_string(id) + " " + quality + "]" + position + rotationText(rotation);
  }
  static std::string oldDeviceLine(int id, const std::array<double, 9>& rotation = turn(0, 0)) {
    return "6dw 1 [" + std::to_string(id) + " 1.000 0][10 20 30]" + rotationText(rotation);
  }
  static std::string newDeviceLine(int id, const std::array<double, 9>& rotation = turn(0, 0)) {
    return "6dw2 1 1 [" + std::to_string(id) + " 1.000 0 0][10 20 30]" + rotationText(rotation) + "[0]";
  }
  void live(const std::string& line) {
    EXPECT_EQ(dialog->set_ascii_data(line.substr(0, line.find(' ')).c_str(), line.c_str()), 0);
  }
  bool seen() {
    dialog->update_track();
    return canvas().isTrackedBodySeen();
  }
  QImage stateIcon() { return find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).toImage(); }
  static QImage scaledIcon(const char* path) {
    return QPixmap(path).scaled(18, 18, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).toImage();
  }
  std::vector<Point> shown() {
    std::vector<Point> points;
    for (const bsVector& v : canvas().give_data()) {
      points.push_back({v.x, v.y, v.z});
    }
    return points;
  }
};

const std::vector<const char*> roomControls = {"pushButton_due_to_room", "pushButton_due_to_room_0",
                                               "adjust_axes_to_room_button"};

TEST_F(Online, OnlyACalibratedBodyOfARunningMeasurementCanBeFollowed) {
  run([&] {
    EXPECT_FALSE(enabled("online_checkbox"));
    choose(cupRow);
    EXPECT_TRUE(enabled("online_checkbox"));
    choose(handRow);
    EXPECT_FALSE(enabled("online_checkbox"));
    choose(penRow);
    EXPECT_TRUE(enabled("online_checkbox"));
  });
  EXPECT_FALSE(enabled("online_checkbox"));  // hidden again, nothing is measured
  backend.startsMeasuring = false;
  run([&] {
    choose(cupRow);
    EXPECT_FALSE(enabled("online_checkbox"));
  });
}

TEST_F(Online, TheCheckBoxSwitchesTheCanvasAndTheRoomButtonsOff) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    EXPECT_TRUE(canvas().isOnline());
    EXPECT_TRUE(menuEntry("Show room orientation")->isEnabled());
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_THAT(disabledOf(roomControls), IsEmpty());
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
    emit dialog->set_chosen_body_tracked(false);
    EXPECT_EQ(disabledOf(roomControls).size(), 3U);
    EXPECT_EQ(stateIcon(), scaledIcon(":/red.png"));
    emit dialog->set_chosen_body_tracked(true);
    click("online_checkbox");
    EXPECT_FALSE(canvas().isOnline());
    EXPECT_FALSE(menuEntry("Show room orientation")->isEnabled());
    EXPECT_EQ(disabledOf(roomControls).size(), 3U);
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(disabledOf(roomControls).size(), 3U);
  });
}

TEST_F(Online, RoomButtonsAreForStandardTargetsInAnUnlockedConfiguration) {
  run([&] {
    choose(stickRow);
    click("online_checkbox");
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(disabledOf(roomControls).size(), 3U);
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
  });
  backend.changeable = false;
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    emit dialog->set_chosen_body_tracked(true);
    for (const char* const control : roomControls) {
      EXPECT_FALSE(enabledItself(control)) << control;
    }
  });
}

TEST_F(Online, TheChosenBodysRecordIsShownByTheRefresh) {
  const std::array<double, 9> rotation = turn(2, 90);
  run([&] {
    choose(cupRow);
    live(bodyLine(0, rotation));
    EXPECT_FALSE(seen()) << "not online";
    click("online_checkbox");
    EXPECT_TRUE(QTest::qWaitFor([&] { return canvas().isTrackedBodySeen(); }, 2000));
    EXPECT_NEAR(canvas().getRoomOrientation()(1, 0), 1.0, 1e-6);
    EXPECT_NEAR(canvas().getRoomOrientation()(0, 1), -1.0, 1e-6);
    EXPECT_TRUE(canvas().getTrackedPosition() == bsVector(10, 20, 30));
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
    EXPECT_THAT(disabledOf({"pushButton_due_to_room"}), ElementsAre("pushButton_due_to_room"));
    live(bodyLine(0, rotation));
    EXPECT_THAT(disabledOf(roomControls), IsEmpty());
  });
}

TEST_F(Online, OtherBodiesAndHalfTrackedOnesAreNotShown) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    live(bodyLine(1));
    EXPECT_FALSE(seen());
    live(bodyLine(0, turn(0, 0), "0.990"));
    EXPECT_FALSE(seen());
    live(oldDeviceLine(0));
    live(newDeviceLine(0));
    EXPECT_FALSE(seen());
    live(bodyLine(0));
    EXPECT_TRUE(seen());
    live("6d 0");
    EXPECT_EQ(stateIcon(), scaledIcon(":/red.png"));
    live(bodyLine(0, turn(0, 0), "-1.000"));
  });
}

TEST_F(Online, DevicesAreShownFromTheirOwnLines) {
  run([&] {
    choose(penRow);
    click("online_checkbox");
    live(bodyLine(0));
    EXPECT_FALSE(seen());
    live(newDeviceLine(0));
    EXPECT_TRUE(seen());
  });
  backend.oldDeviceFormat = true;
  run([&] {
    choose(penRow);
    click("online_checkbox");
    live(oldDeviceLine(0));
    EXPECT_TRUE(seen());
  });
}

TEST_F(Online, WithHeadModeShiftsTheIdsOfBodies) {
  backend.withHead = true;  // without multi user it is not switched off
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    live(bodyLine(0));
    EXPECT_NE(stateIcon(), scaledIcon(":/green.png"));
    EXPECT_FALSE(seen());
    live(bodyLine(1));
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
    EXPECT_TRUE(seen());
    choose(penRow);  // devices keep theirs
    live(newDeviceLine(0));
    EXPECT_TRUE(seen());
  });
}

TEST_F(Online, RoomButtonsWaitForALineAboutTheBodyThatIsShown) {
  run([&] {
    for (const int next : {stickRow, penRow, handRow, -1}) {
      SCOPED_TRACE(next);
      choose(cupRow);
      if (!canvas().isOnline()) {
        click("online_checkbox");
      }
      emit dialog->set_chosen_body_tracked(true);
      EXPECT_THAT(disabledOf(roomControls), IsEmpty());
      choose(next);
      EXPECT_EQ(disabledOf(roomControls).size(), 3U);
    }
    choose(penRow);
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_THAT(disabledOf(roomControls), IsEmpty());
  });
}

TEST_F(Online, ThePoseOfThePreviousBodyIsForgotten) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    live(bodyLine(0));
    EXPECT_TRUE(seen());
    choose(stickRow);
    EXPECT_TRUE(canvas().isOnline());
    EXPECT_FALSE(seen());
    choose(cupRow);
    EXPECT_FALSE(seen());
    live(bodyLine(0));
    EXPECT_TRUE(seen());
    click("set_origin_cog_button");
    click("apply_button");
    EXPECT_TRUE(canvas().isOnline());
    EXPECT_FALSE(seen());
  });
}

TEST_F(Online, LinesOfTheDeliveryThreadReachTheOperator) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    std::thread delivery([&] {
      for (int i = 0; i < 200; ++i) {
        const std::string line = bodyLine(0);
        dialog->set_ascii_data("6d", line.c_str());
      }
    });
    delivery.join();
    EXPECT_TRUE(QTest::qWaitFor([&] { return stateIcon() == scaledIcon(":/green.png"); }, 2000));
    EXPECT_TRUE(seen());
    EXPECT_THAT(disabledOf(roomControls), IsEmpty());
  });
}

TEST_F(Online, AxesAreLaidParallelToTheRoom) {
  const std::array<double, 9> rotation = turn(1, 30);
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    live(bodyLine(0, rotation));
    ASSERT_TRUE(seen());
    click("adjust_axes_to_room_button");
    std::vector<Point> expected = before;
    for (Point& p : expected) {
      p = moved(rotation, {0, 0, 0}, p);
    }
    expectPoints(shown(), expected);
    EXPECT_TRUE(enabled("apply_button"));
    EXPECT_EQ(canvas().getBody().getUndoCount(), 1U);
    click("undo_button");
    click("pushButton_due_to_room");
    for (Point& p : expected) {
      p = seenFrom(moved(rotation, {0, 0, 0}, meanOf(before)), {p})[0];
    }
    expectPoints(shown(), expected);
  });
}

TEST_F(Online, TheOriginInMarkerOneComesWithTheRoomsAxes) {
  const std::array<double, 9> rotation = turn(2, 25);
  std::vector<Point>& markers = backend.body("standard", 1).markers;
  // Longest distance: markers 2-3; the shortest from either is marker 2 to marker 4, so marker 2 is the origin.
  markers = {{50, 5, 0}, {0, 0, 0}, {120, 0, 10}, {3, 14, 0}, {60, 40, 20}};
  backend.body("standard", 1).emissions.resize(5);
  const std::vector<Point> before = markers;
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    live(bodyLine(0, rotation));
    ASSERT_TRUE(seen());
    click("pushButton_due_to_room_0");
    std::vector<Point> expected = before;
    for (Point& p : expected) {
      p = moved(rotation, {0, 0, 0}, p);
    }
    expectPoints(shown(), expected);
  });
}

TEST_F(Online, FollowingGoesOnWithTheNextBodyAndPausesForOneThatIsNotCalibrated) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    choose(handRow);
    EXPECT_FALSE(canvas().isOnline());
    choose(cupRow);
    EXPECT_TRUE(canvas().isOnline());
    choose(-1);
    EXPECT_FALSE(canvas().isOnline());
  });
}

TEST_F(Online, TheOfflineViewComesBackUnchanged) {
  run([&] {
    choose(cupRow);
    canvas().setViewPosition(bsVector(5, 6, -200));
    const bsMatrix before = canvas().get_view().toMatrix();
    click("online_checkbox");
    choose(penRow);
    click("online_checkbox");
    EXPECT_TRUE(canvas().get_view().toMatrix() == before);
  });
}

TEST_F(Online, AnUnknownTypeIsToldOnce) {
  backend.types = {"Standard"};
  for (ScriptedBody& body : backend.bodies) {
    body.type = body.type == "standard" ? "Standard" : body.type;
  }
  run([&] {
    choose(cupRow);
    ASSERT_TRUE(canvas().isBodyLoaded());
    watch.expectBox("[Korvexlib] Error", "Unknown body type.\nGoing offline...", QMessageBox::Ok);
    click("online_checkbox");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !watch.boxes().empty(); }, 2000));
    QTest::qWait(150);  // some ticks more
    EXPECT_EQ(watch.boxes().size(), 1U);
    EXPECT_EQ(watch.boxes()[0].icon, QMessageBox::Information);
    EXPECT_EQ(watch.boxes()[0].buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
  });
}

TEST_F(Online, NoBodyIsNoKnownTypeEither) {
  make();
  find<QAbstractButton>("online_checkbox")->setChecked(true);
  dialog->on_online_checkbox_clicked();
  watch.expectBox("[Korvexlib] Error", "Unknown body type.\nGoing offline...", QMessageBox::Ok);
  dialog->update_track();
  dialog->update_track();
  EXPECT_EQ(watch.boxes().size(), 1U);
  EXPECT_FALSE(canvas().isTrackedBodySeen());
}

TEST_F(Online, BrokenLinesDoNoHarm) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    for (const char* const line :
         {"", "6d", "6d ", "6d x", "6d 1", "6d 1 [", "6d 1 [0 1.0]", "6d 1 [0 1.0][1 2", "]["}) {
      dialog->set_ascii_data("6d", line);
      EXPECT_FALSE(seen()) << line;
    }
    dialog->set_ascii_data(nullptr, nullptr);
    live(bodyLine(0));
    EXPECT_TRUE(seen());
  });
}

}  // namespace
