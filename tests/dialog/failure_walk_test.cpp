// A backend that goes wrong at any single point of a session: every query fails once, and answers nonsense once.
#include <QMessageBox>

#include <climits>
#include <map>

#include "dialogtest.h"

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Query {
  std::string operation;
  std::string text;
};

/// Beginnings of texts with the report that a failure must cause. Texts that are not listed fail without one.
struct Report {
  const char* query;
  const char* text;
};
const Report reportsOfFailures[] = {
    {"get_int body number_of_types", "Error: Unable to get number of types for body"},
    {"get_string body type t", "Error: Unable to check body type"},
    {"get_string body type_desc ", "Error: Unable to check body type description"},
    {"get_string body target_type ", "Error: Unable to check body target_type"},
    {"get_string body desc ", "Error: Unable to check body description"},
    {"get_string body calibrated ", "Error: Unable to check body cali info"},
    {"get_int body number_of_marker ", "Error: Unable to check body marker info"},
    {"get_reals body marker ", "Error: Unable to check body marker info"},
    {"get_reals body marker_emission ", "Error: Unable to check body marker emission info"},
    {"send_raw_command korvex2 body transform ", "Error: Unable to set body transformation"},
    {"set_value wandgrip multiuser no", "Error: Unable to deactivate multi user Wandgrip"},
    {"set_value wandgrip multiuser_with_head no", "Error: Unable to deactivate multi user Wandgrip with head"},
    {"set_value wandgrip multiuser yes", "Error: Unable to activate multi user Wandgrip"},
    {"set_value wandgrip multiuser_with_head yes", "Error: Unable to activate multi user Wandgrip with head"},
    {"get_int wandgrip number_of_devices", "Error: Unable to get number of wandgrips"}};

class FailureWalk : public DialogTest {
 protected:
  FailureWalk() {
    backend.bodies.erase(backend.bodies.begin() + stickRow, backend.bodies.begin() + penRow);
    backend.multiUser = true;
    backend.withHead = true;
  }

  /// Opens, chooses the cup, moves it by 14 along x, applies, moves it by 3 along y, says OK; every step only as far
  /// as the dialog lets the operator. Returns whether the dialog closed by itself.
  void session() {
    closedByOk_ = false;
    run([&] {
      if (bodies().count() > 0) {
        choose(0);
      }
      step("body_pos_xyzWidget", 0, "14");
      if (enabled("apply_button")) {
        click("apply_button");
      }
      step("body_pos_xyzWidget", 1, "3");
      click("ok_button");
      closedByOk_ = !dialog->isVisible();
      if (!closedByOk_) {
        // A write failed. The change is still there, and the second try must do it.
        EXPECT_TRUE(canvas().isBodyModified());
        backend.nothingFails();
        click("ok_button");
        EXPECT_FALSE(dialog->isVisible()) << "the dialog cannot be closed";
      }
    });
  }
  void step(const char* group, int axis, const char* number) {
    if (canvas().isBodyLoaded() && enabled(group)) {
      enter(group, axis, number);
      EXPECT_TRUE(enabled("apply_button"));
    }
  }
  void resetBackend(const std::vector<ScriptedBody>& before) {
    backend.bodies = before;
    backend.nothingFails();
    backend.multiUser = true;
    backend.withHead = true;
    backend.measuring = false;
    backend.countFromZero();
    backend.io.takeLog();
  }
  /// All queries of an undisturbed session, in order.
  std::vector<Query> queries() {
    std::vector<Query> all;
    backend.countFromZero();
    backend.disturb = [&all](int, const std::string& operation,
                             const std::string& text) -> std::optional<FakeChannel::Answer> {
      all.push_back({operation, text});
      return std::nullopt;
    };
    session();
    return all;
  }
  /// Which of the changes that the operator made are in the body, as "", "x", "y" or "xy"; fails for anything between.
  std::string changesIn(const std::vector<Point>& now, const std::vector<Point>& before) {
    for (const auto& [name, shift] :
         std::map<std::string, Point>{{"", {0, 0, 0}}, {"x", {14, 0, 0}}, {"y", {0, 3, 0}}, {"xy", {14, 3, 0}}}) {
      bool all = now.size() == before.size();
      for (std::size_t i = 0; all && i < now.size(); ++i) {
        const Point expected = seenFrom(shift, {before[i]})[0];
        for (std::size_t axis = 0; axis < 3; ++axis) {
          all = all && std::abs(now[i][axis] - expected[axis]) < textRounding;
        }
      }
      if (all) {
        return name;
      }
    }
    return "half";
  }
  void expectReportFor(const Query& query) {
    const std::string entry = query.operation + " " + query.text;
    for (const Report& expected : reportsOfFailures) {
      if (entry.compare(0, std::string(expected.query).size(), expected.query) == 0) {
        EXPECT_THAT(backend.io.reports(), Contains(expected.text));
        return;
      }
    }
    if (query.text.find("body number_of_bodies") == 0) {  // reported when the list is built, silent before
      EXPECT_THAT(backend.io.reports(),
                  AnyOf(IsEmpty(), ElementsAre("Error: Unable to check number of bodies for body")));
      return;
    }
    if (query.text == "status active") {  // reported on show, silent on hide
      EXPECT_THAT(backend.io.reports(), AnyOf(IsEmpty(), ElementsAre("Error: Unable to check mea status")));
      return;
    }
    EXPECT_THAT(backend.io.reports(), IsEmpty());
  }
  /// The next session, undisturbed, works as if nothing had happened.
  void expectHealthy(const std::vector<ScriptedBody>& before) {
    resetBackend(before);
    session();
    EXPECT_THAT(backend.io.reports(), IsEmpty());
    EXPECT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), "xy");
  }

  bool closedByOk_ = false;
};

TEST_F(FailureWalk, EveryQueryOfASessionFailsOnce) {
  const std::vector<ScriptedBody> before = backend.bodies;
  const std::vector<Query> all = queries();
  ASSERT_GT(all.size(), 60U);
  ASSERT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), "xy");
  for (std::size_t place = 0; place < all.size(); ++place) {
    SCOPED_TRACE(std::to_string(place) + ": " + all[place].operation + " " + all[place].text);
    resetBackend(before);
    backend.disturb = [place](int asked, const std::string&, const std::string&) {
      return asked == static_cast<int>(place) ? std::optional<FakeChannel::Answer>({1, ""}) : std::nullopt;
    };
    session();
    expectReportFor(all[place]);
    const bool bodyWasThere =
        canvas().getBodyNumMarker() > 0 || !backend.io.logged("send_raw_command korvex2 body").empty();
    const std::string changes = changesIn(backend.bodies[0].markers, before[0].markers);
    EXPECT_EQ(changes, bodyWasThere ? "xy" : "") << "what the operator did and what the backend has";
    EXPECT_EQ(changesIn(backend.bodies[1].markers, before[1].markers), "");
    EXPECT_TRUE(backend.io.requesters.empty());
  }
  expectHealthy(before);
}

TEST_F(FailureWalk, EveryQueryOfASessionAnswersNonsenseOnce) {
  const std::vector<ScriptedBody> before = backend.bodies;
  const std::vector<Query> all = queries();
  const std::map<std::string, std::vector<std::string>> nonsense = {
      {"get_string", {"", std::string(199, 'x'), "|||%s%n", "yes "}},
      {"get_int", {"-1", "0", std::to_string(INT_MAX), std::to_string(INT_MIN)}},
      {"get_reals", {"nan nan nan nan", "1e300 -1e300 1e300 1e300", "inf 0 0 0", ""}},
      {"send_raw_command", {"", "korvex2 error", "korvex2 OK"}},
      {"set_value", {"nonsense"}}};
  // Texts and counts are tried in turns, or the walk would take minutes.
  for (std::size_t place = 0; place < all.size(); ++place) {
    const std::vector<std::string>& choices = nonsense.at(all[place].operation);
    const std::string& answer = choices[place % choices.size()];
    SCOPED_TRACE(std::to_string(place) + ": " + all[place].operation + " " + all[place].text + " -> " + answer);
    resetBackend(before);
    backend.disturb = [&answer, place](int asked, const std::string&, const std::string&) {
      return asked == static_cast<int>(place) ? std::optional<FakeChannel::Answer>({0, answer}) : std::nullopt;
    };
    session();
    EXPECT_NE(changesIn(backend.bodies[0].markers, before[0].markers), "half");
    EXPECT_EQ(changesIn(backend.bodies[1].markers, before[1].markers), "");
    EXPECT_TRUE(backend.io.requesters.empty());
  }
  expectHealthy(before);
}

TEST_F(FailureWalk, ABackendThatDiesInTheMiddleLeavesADialogThatCanBeClosed) {
  const std::vector<ScriptedBody> before = backend.bodies;
  const std::vector<Query> all = queries();
  for (std::size_t place = 0; place < all.size(); place += 3) {
    SCOPED_TRACE(std::to_string(place) + ": " + all[place].operation + " " + all[place].text);
    resetBackend(before);
    backend.disturb = [place](int asked, const std::string&, const std::string&) {
      return asked >= static_cast<int>(place) ? std::optional<FakeChannel::Answer>({1, ""}) : std::nullopt;
    };
    bool asked = false;
    run([&] {
      if (bodies().count() > 0) {
        choose(0);
      }
      step("body_pos_xyzWidget", 0, "14");
      asked = canvas().isBodyLoaded();
      if (asked) {
        watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
      }
      click("cancel_button");
      EXPECT_FALSE(dialog->isVisible());
    });
    EXPECT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), "");
  }
  expectHealthy(before);
}

TEST_F(FailureWalk, EveryStepOfADiscardFailsOnceAndIsTold) {
  const std::vector<ScriptedBody> before = backend.bodies;
  for (const int failing : {0, 1, 2}) {
    SCOPED_TRACE(failing);
    resetBackend(before);
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    run([&] {
      choose(0);
      enter("body_pos_xyzWidget", 0, "14");
      click("apply_button");
      choose(2);
      enter("body_pos_xyzWidget", 0, "14");
      click("apply_button");
      const int now = backend.queries();
      backend.io.takeLog();
      backend.disturb = [now, failing](int asked, const std::string&, const std::string&) {
        return asked == now + failing ? std::optional<FakeChannel::Answer>({1, ""}) : std::nullopt;
      };
      click("cancel_button");
      EXPECT_FALSE(dialog->isVisible());
    });
    EXPECT_EQ(backend.io.reports().size(), 1U);
    EXPECT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), failing == 0 ? "x" : "");
    EXPECT_EQ(changesIn(backend.bodies[2].markers, before[2].markers), failing == 1 ? "x" : "");
  }
}

TEST_F(FailureWalk, EveryQueryOfADeletionAndItsUndoFailsOnce) {
  const std::vector<ScriptedBody> before = backend.bodies;
  std::vector<Query> all;
  const auto deleteAndUndo = [&](const ScriptedBackend::Disturbance& disturbance) {
    run([&] {
      choose(0);
      select({2});
      backend.countFromZero();
      backend.disturb = disturbance;
      watch.expectBox("Korvex2", "Delete selected marker?", QMessageBox::Ok);
      click("pushButton_deleteMarker");
      if (enabled("undo_button")) {
        click("undo_button");
      }
      backend.nothingFails();
      click("cancel_button");
    });
  };
  deleteAndUndo(
      [&all](int, const std::string& operation, const std::string& text) -> std::optional<FakeChannel::Answer> {
        all.push_back({operation, text});
        return std::nullopt;
      });
  ASSERT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), "");
  ASSERT_GT(all.size(), 15U);
  for (std::size_t place = 0; place < all.size(); ++place) {
    SCOPED_TRACE(std::to_string(place) + ": " + all[place].operation + " " + all[place].text);
    resetBackend(before);
    deleteAndUndo([place](int asked, const std::string&, const std::string&) {
      return asked == static_cast<int>(place) ? std::optional<FakeChannel::Answer>({1, ""}) : std::nullopt;
    });
    EXPECT_THAT(backend.io.reports(), testing::Not(IsEmpty()));
    // Whatever failed: the body has all its markers again, or the report has named the value that is missing.
    if (all[place].operation != "set_value") {
      EXPECT_EQ(changesIn(backend.bodies[0].markers, before[0].markers), "");
    }
  }
}

}  // namespace
