// The example module, loaded from its file, against the channel double.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPluginLoader>
#include <QPushButton>
#include <QTest>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "commalocale.h"
#include "fakechannel.h"
#include "messagereceiver.h"
#include "moduleinterface.h"
#include "requester.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const cup = "[0 1] [1.0 2.0 3.0] [1 0 0 0 1 0 0 0 1]";
const char* const lostTable = "[1 -1] [0 0 0] [1 0 0 0 1 0 0 0 1]";

class BodyList : public testing::Test {
 protected:
  void SetUp() override {
    io.answers = {{"body number_of_bodies standard", "2"},     {"body desc standard b01", "\"Cup\""},
                  {"body number_of_marker standard b01", "5"}, {"body desc standard b02", "\"Table\""},
                  {"body number_of_marker standard b02", "8"}, {"wandgrip multiuser_with_head", "no"},
                  {"output active chmon 6d yes", ""},          {"status active", "idle"},
                  {"korvex2 tracking start", "korvex2 ok"},    {"korvex2 tracking stop", "korvex2 ok"}};
    loader.setFileName(MODULE_FILE);
    module = qobject_cast<ModuleInterface*>(loader.instance());
    ASSERT_NE(module, nullptr) << loader.errorString().toStdString();
  }
  void TearDown() override {
    delete loader.instance();  // the next case gets a new one
  }

  /// The module's entry, as a host has it that gave the module its objects.
  _GuiElement& entry() {
    module->set_param("CommandManager", QVariant::fromValue<IOManager*>(&io));
    module->set_param("ModuleParent", QVariant::fromValue<QWidget*>(&parent));
    const QList<_GuiElement*> entries = module->get_gui_elements();
    EXPECT_EQ(entries.size(), 1);
    return *entries.first();
  }
  QWidget* openWindow() {
    _GuiElement& element = entry();
    io.log.clear();
    element.action->trigger();
    EXPECT_TRUE(element.widget->isVisible());
    return element.widget;
  }
  static std::vector<std::string> rows(QWidget* window) {
    std::vector<std::string> texts;
    const auto* list = window->findChild<QListWidget*>();
    for (int row = 0; row < list->count(); ++row) {
      texts.push_back(list->item(row)->text().toStdString());
    }
    return texts;
  }
  static std::string quality(QWidget* window) { return window->findChild<QLabel*>()->text().toStdString(); }
  /// Gives a line to whoever subscribed, on a thread of its own, as a host does.
  void deliver(const std::string& line) {
    std::thread delivery([&] {
      for (const auto& [tag, requester] : io.requesters) {
        EXPECT_EQ(requester->set_ascii_data(tag.c_str(), line.c_str()), 0);
      }
    });
    delivery.join();
  }
  static bool becomes(QWidget* window, const std::string& text) {
    return QTest::qWaitFor([&] { return quality(window) == text; }, 3000);
  }

  FakeChannel io;
  QWidget parent;
  QPluginLoader loader;
  ModuleInterface* module = nullptr;
};

}  // namespace

TEST_F(BodyList, TellsItsNameAndVersion) {
  EXPECT_EQ(module->get_module_name(), "Body List");
  EXPECT_EQ(module->get_module_version(), "v1.0.0");
}

TEST_F(BodyList, HasNoEntryAsLongAsItHasNoChannel) {
  EXPECT_THAT(module->get_gui_elements(), IsEmpty());
  module->set_param("CommandManager", QVariant(3));
  module->set_param("Something else", QVariant::fromValue<IOManager*>(&io));
  EXPECT_THAT(module->get_gui_elements(), IsEmpty());
  module->about_to_exit_module();
  module->exit_module();
}

TEST_F(BodyList, HasOneEntryBehindTheAdjustmentInTheCalibrationMenu) {
  const _GuiElement& element = entry();
  EXPECT_EQ(element.menu_title, "&Calibration");
  EXPECT_EQ(element.placement_of_menu, 300);
  EXPECT_EQ(element.placement_in_menu, 690);
  EXPECT_EQ(element.action->text(), "Body &list");
  EXPECT_EQ(element.widget->parentWidget(), &parent);
  EXPECT_FALSE(element.widget->isVisible());
  EXPECT_EQ(module->get_gui_elements(), QList<_GuiElement*>{const_cast<_GuiElement*>(&element)});
  EXPECT_THAT(io.log, ElementsAre("register_message_receiver BodyList")) << "one window, and nothing asked yet";
}

TEST_F(BodyList, ListsTheBodiesWithTheirMarkersAndStartsAMeasurementWhenItOpens) {
  QWidget* const window = openWindow();
  EXPECT_THAT(rows(window), ElementsAre("1: Cup (5 markers)", "2: Table (8 markers)"));
  EXPECT_EQ(window->findChild<QListWidget*>()->currentRow(), 0);
  EXPECT_THAT(io.log,
              ElementsAre("get_int body number_of_bodies standard", "get_string body desc standard b01",
                          "get_int body number_of_marker standard b01", "get_string body desc standard b02",
                          "get_int body number_of_marker standard b02", "get_string wandgrip multiuser_with_head",
                          "register_requester 6d", "set_value output active chmon 6d yes", "get_string status active",
                          "send_raw_command korvex2 tracking start"));
  EXPECT_THAT(io.reports(), IsEmpty());
  io.log.clear();
  window->hide();
  EXPECT_THAT(io.log, ElementsAre("unregister_requester 6d", "send_raw_command korvex2 tracking stop"));
}

TEST_F(BodyList, LeavesAMeasurementAloneThatRanBefore) {
  io.answers["status active"] = "mea";
  openWindow()->hide();
  EXPECT_THAT(io.logged("send_raw_command"), IsEmpty());
}

TEST_F(BodyList, DoesNotStopAMeasurementThatItCouldNotStart) {
  io.failing = {"send_raw_command korvex2 tracking start"};
  openWindow()->hide();
  EXPECT_THAT(io.logged("send_raw_command"), ElementsAre("send_raw_command korvex2 tracking start"));
}

TEST_F(BodyList, TellsTheHostWhenABodyCannotBeRead) {
  io.failing = {"get_int body number_of_marker standard b02"};
  QWidget* const window = openWindow();
  EXPECT_THAT(rows(window), ElementsAre("1: Cup (5 markers)", "2: unknown"));
  EXPECT_THAT(io.logged("send_message"),
              ElementsAre("send_message standard BodyList 1 Error: Unable to read the list of bodies"));
}

TEST_F(BodyList, IsEmptyAndUsableWhenTheBackendDoesNotAnswer) {
  io.answers.clear();
  QWidget* const window = openWindow();
  EXPECT_THAT(rows(window), IsEmpty());
  EXPECT_EQ(io.logged("send_message").size(), 1u);
  EXPECT_TRUE(becomes(window, "No live data"));
  window->hide();
}

TEST_F(BodyList, AsksForNoMoreBodiesThanTheProtocolCanName) {
  io.respond = [](const std::string&, const std::string& text) {
    return FakeChannel::Answer{0, text == "body number_of_bodies standard" ? "2000000000" : "3"};
  };
  EXPECT_EQ(rows(openWindow()).size(), 99u);
}

TEST_F(BodyList, ReadsTheBodiesAnewWheneverItOpens) {
  QWidget* const window = openWindow();
  window->hide();
  io.answers["body number_of_marker standard b01"] = "4";
  window->show();
  EXPECT_THAT(rows(window), ElementsAre("1: Cup (4 markers)", "2: Table (8 markers)"));
}

TEST_F(BodyList, ShowsTheQualityOfTheChosenBodyFromLinesOfAnotherThread) {
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  deliver(std::string("6d 2 ") + cup + " " + lostTable);
  EXPECT_TRUE(becomes(window, "Tracked, quality 1"));
  deliver("6d 1 [0 0.75] [1 2 3] [1 0 0 0 1 0 0 0 1]");
  EXPECT_TRUE(becomes(window, "Tracked, quality 0.75"));
  deliver(std::string("6d 1 ") + lostTable);
  EXPECT_TRUE(becomes(window, "Not tracked")) << "no record at all";
  window->findChild<QListWidget*>()->setCurrentRow(1);
  EXPECT_TRUE(becomes(window, "No live data")) << "what is known is about the other body";
  deliver(std::string("6d 2 ") + cup + " " + lostTable);
  EXPECT_TRUE(becomes(window, "Not tracked")) << "a quality of -1";
}

TEST_F(BodyList, TakesPositionsForNoIds) {
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  deliver("6d 1 [1 -1] [0 1 3] [0 1 0 0 1 0 0 0 1]");
  EXPECT_TRUE(becomes(window, "Not tracked"));
}

TEST_F(BodyList, CountsTheBodiesBehindTheHeadWhenTheHeadIsTracked) {
  io.answers["wandgrip multiuser_with_head"] = "yes";
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  deliver("6d 2 [0 -1] [0 0 0] [1 0 0 0 1 0 0 0 1] [1 1] [0 0 0] [1 0 0 0 1 0 0 0 1]");
  EXPECT_TRUE(becomes(window, "Tracked, quality 1"));
}

TEST_F(BodyList, ReadsADecimalPointWhereTheOperatorHasAComma) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  deliver("6d 1 [0 0.5] [1.5 2.5 3.5] [1 0 0 0 1 0 0 0 1]");
  EXPECT_TRUE(becomes(window, "Tracked, quality 0.5"));
}

TEST_F(BodyList, GetsAlongWithDamagedLines) {
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  for (const char* line :
       {"", "6d", "6d 1", "6d 1 [", "6d 1 [0", "6d 1 [0 ", "6d 1 [0 x]", "6d 1 []", "[[[[", "6d 1 ]0["}) {
    deliver(line);
  }
  EXPECT_TRUE(becomes(window, "Not tracked"));
  deliver(std::string("6d 1 ") + cup);
  EXPECT_TRUE(becomes(window, "Tracked, quality 1"));
}

TEST_F(BodyList, KnowsNothingAnyMoreWhenTheMeasurementStops) {
  QWidget* const window = openWindow();
  EXPECT_TRUE(becomes(window, "No live data"));
  deliver(std::string("6d 1 ") + cup);
  EXPECT_TRUE(becomes(window, "Tracked, quality 1"));
  std::thread delivery([&] {
    io.requesters.at(0).second->set_mea_started();
    io.requesters.at(0).second->set_mea_stopped();
  });
  delivery.join();
  EXPECT_TRUE(becomes(window, "No live data"));
}

TEST_F(BodyList, AsksTheAdjustmentForTheChosenBodyAndComesBackWhenThatCloses) {
  QWidget* const window = openWindow();
  window->findChild<QListWidget*>()->setCurrentRow(1);
  io.log.clear();
  window->findChild<QPushButton*>()->click();
  EXPECT_THAT(io.log, ElementsAre("unregister_requester 6d", "send_raw_command korvex2 tracking stop",
                                  "send_message BodyAdjustmentModule BodyList 1 OpenBodyAdjustmentDialog standard|2"));
  EXPECT_FALSE(window->isVisible());
  MessageReceiver* const receiver = io.receivers.at("BodyList");
  EXPECT_EQ(receiver->transmit_message(1, "BodyAdjustmentModule", "something else"), 0);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(receiver->transmit_message(1, "BodyAdjustmentModule", "reopen"), 0);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(BodyList, AsksForNothingWhileNoBodyIsChosen) {
  QWidget* const window = openWindow();
  window->findChild<QListWidget*>()->clear();
  window->findChild<QPushButton*>()->click();
  EXPECT_THAT(io.logged("send_message"), IsEmpty());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(BodyList, GivesEverythingBackBeforeTheHostGoes) {
  QWidget* const window = openWindow();
  io.log.clear();
  module->about_to_exit_module();
  EXPECT_THAT(io.log, ElementsAre("unregister_requester 6d", "send_raw_command korvex2 tracking stop",
                                  "unregister_message_receiver BodyList"));
  EXPECT_FALSE(window->isVisible());
  EXPECT_THAT(io.receivers, IsEmpty());
  EXPECT_THAT(io.requesters, IsEmpty());
  module->exit_module();
  EXPECT_TRUE(parent.children().isEmpty()) << "the window is deleted";
  module->exit_module();
}
