// The example module, loaded from its file, against the channel double.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QPluginLoader>
#include <QTest>
#include <QTreeWidget>

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

const std::string cup = "[0 1] [1.0 2.0 3.0] [1 0 0 0 1 0 0 0 1]";
const std::string lostTable = "[1 -1] [0 0 0] [1 0 0 0 1 0 0 0 1]";

/// The channel double with another module behind it, which is at work while send_message() runs.
class ChannelWithAdjustment : public FakeChannel {
 public:
  int send_message(const char* receiver, const char* sender, int kind, const char* text) override {
    FakeChannel::send_message(receiver, sender, kind, text);
    if (receiver == std::string("BodyAdjustmentModule") && work) {
      work();
    }
    return 0;
  }

  std::function<void()> work;
};

class BodyList : public testing::Test {
 protected:
  void SetUp() override {
    io.answers = {{"body number_of_bodies standard", "2"},     {"body desc standard b01", "\"Cup\""},
                  {"body number_of_marker standard b01", "5"}, {"body desc standard b02", "\"Table\""},
                  {"body number_of_marker standard b02", "8"}, {"korvex2 tracking start", "korvex2 ok"}};
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
  void openList() {
    const _GuiElement& element = entry();
    io.log.clear();
    element.action->trigger();
    ASSERT_NE(list(), nullptr);
    EXPECT_TRUE(list()->isVisible());
  }
  /// Null while it is closed.
  QTreeWidget* list() const { return parent.findChild<QTreeWidget*>(); }
  std::vector<std::string> column(int number) const {
    std::vector<std::string> texts;
    for (int row = 0; row < list()->topLevelItemCount(); ++row) {
      texts.push_back(list()->topLevelItem(row)->text(number).toStdString());
    }
    return texts;
  }
  /// Gives a line to whoever subscribed, on a thread of its own, as a host does.
  void deliver(const std::string& line) {
    std::thread delivery([&] {
      for (const auto& [tag, requester] : io.requesters) {
        EXPECT_EQ(requester->set_ascii_data(tag.c_str(), line.c_str()), 0);
      }
    });
    delivery.join();
  }
  bool qualitiesBecome(const std::vector<std::string>& qualities) const {
    return QTest::qWaitFor([&] { return column(2) == qualities; }, 3000);
  }
  void close() {
    list()->close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }, 3000));
  }
  /// As a double click, or Return, on a row.
  void activate(int row) {
    list()->setCurrentItem(list()->topLevelItem(row));
    QTest::keyClick(list(), Qt::Key_Return);
    QTest::qWait(1);
  }

  ChannelWithAdjustment io;
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
  EXPECT_EQ(element.reserved, 0);
  EXPECT_EQ(module->get_gui_elements(), QList<_GuiElement*>{const_cast<_GuiElement*>(&element)});
  EXPECT_THAT(io.log, IsEmpty()) << "nothing is asked yet";
}

TEST_F(BodyList, ListsTheBodiesWithTheirMarkersAndStartsTheMeasurementWhenItOpens) {
  openList();
  EXPECT_EQ(list()->parentWidget(), &parent);
  EXPECT_THAT(column(0), ElementsAre("Cup", "Table"));
  EXPECT_THAT(column(1), ElementsAre("5", "8"));
  EXPECT_THAT(column(2), ElementsAre("not tracked", "not tracked"));
  EXPECT_THAT(io.log, ElementsAre("get_int body number_of_bodies standard", "get_string body desc standard b01",
                                  "get_int body number_of_marker standard b01", "get_string body desc standard b02",
                                  "get_int body number_of_marker standard b02", "register_requester 6d",
                                  "send_raw_command korvex2 tracking start"));
  io.log.clear();
  close();
  EXPECT_THAT(io.log, ElementsAre("unregister_requester 6d"));
}

TEST_F(BodyList, TellsTheHostWhenABodyCannotBeRead) {
  io.failing = {"get_string body desc standard b02"};
  openList();
  EXPECT_THAT(column(0), ElementsAre("Cup", "unknown"));
  EXPECT_THAT(io.logged("send_message"),
              ElementsAre("send_message standard BodyList 1 Error: Unable to read the list of bodies"));
}

TEST_F(BodyList, IsEmptyAndUsableWhenTheBackendDoesNotAnswer) {
  io.answers.clear();
  openList();
  EXPECT_THAT(column(0), IsEmpty());
  EXPECT_EQ(io.logged("send_message").size(), 1u);
  deliver("6d 1 " + cup);
  QTest::qWait(150);
  activate(0);
  EXPECT_EQ(io.logged("send_message").size(), 1u) << "there is no body to adjust";
  close();
}

TEST_F(BodyList, AsksForNoMoreBodiesThanTheProtocolCanName) {
  io.respond = [](const std::string&, const std::string& text) {
    return FakeChannel::Answer{0, text == "body number_of_bodies standard" ? "2000000000" : "3"};
  };
  openList();
  EXPECT_EQ(column(0).size(), 99u);
}

TEST_F(BodyList, ReadsTheBodiesAnewWhenItsEntryIsChosenAgain) {
  openList();
  io.answers["body number_of_marker standard b01"] = "4";
  openList();
  EXPECT_EQ(parent.findChildren<QTreeWidget*>().size(), 1);
  EXPECT_THAT(column(1), ElementsAre("4", "8"));
  EXPECT_EQ(io.requesters.size(), 1u);
}

TEST_F(BodyList, ShowsTheQualitiesThatComeFromAnotherThread) {
  openList();
  deliver("6d 2 " + cup + " " + lostTable);
  EXPECT_TRUE(qualitiesBecome({"1", "not tracked"})) << "a quality of -1";
  deliver("6d 1 [1 0.75] [1 2 3] [1 0 0 0 1 0 0 0 1]");
  EXPECT_TRUE(qualitiesBecome({"not tracked", "0.75"})) << "no record at all";
}

TEST_F(BodyList, TakesPositionsAndRotationsForNoIds) {
  openList();
  deliver("6d 1 [1 0.5] [0 1 3] [0 1 0 0 1 0 0 0 1]");
  EXPECT_TRUE(qualitiesBecome({"not tracked", "0.5"}));
}

TEST_F(BodyList, ShowsQualitiesWithADecimalPointWhereTheOperatorHasAComma) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  openList();
  deliver("6d 1 [0 0.5] [1.5 2.5 3.5] [1 0 0 0 1 0 0 0 1]");
  EXPECT_TRUE(qualitiesBecome({"0.5", "not tracked"}));
}

TEST_F(BodyList, GetsAlongWithDamagedLines) {
  openList();
  for (const char* line : {"", "6d", "6d 1", "6d 1 [", "6d 1 [x 1]", "6d 1 []", "[[[[", "6d 1 ]0[", "6d 1 [-1 1] [",
                           "6d 1 [99999999999 1]"}) {
    deliver(line);
    QTest::qWait(110);
    EXPECT_THAT(column(2), ElementsAre("not tracked", "not tracked")) << line;
  }
  deliver("6d 1 " + cup);
  EXPECT_TRUE(qualitiesBecome({"1", "not tracked"}));
}

TEST_F(BodyList, KnowsNothingAnyMoreWhenTheMeasurementStops) {
  openList();
  deliver("6d 1 " + cup);
  EXPECT_TRUE(qualitiesBecome({"1", "not tracked"}));
  std::thread delivery([&] {
    io.requesters.at(0).second->set_mea_started();
    io.requesters.at(0).second->set_mea_stopped();
  });
  delivery.join();
  EXPECT_TRUE(qualitiesBecome({"not tracked", "not tracked"}));
}

TEST_F(BodyList, ForgetsWhatItKnewWhenItIsClosed) {
  openList();
  deliver("6d 1 " + cup);
  EXPECT_TRUE(qualitiesBecome({"1", "not tracked"}));
  close();
  openList();
  EXPECT_THAT(column(2), ElementsAre("not tracked", "not tracked"));
}

TEST_F(BodyList, AsksTheAdjustmentForTheChosenBodyAndComesBackWhenThatCloses) {
  openList();
  io.log.clear();
  bool asked = false;
  io.work = [&] {
    asked = true;
    EXPECT_EQ(list(), nullptr);
    EXPECT_THAT(io.requesters, IsEmpty());
    MessageReceiver* const receiver = io.receivers.at("BodyList");
    EXPECT_EQ(receiver->transmit_message(1, "BodyAdjustmentModule", "something else"), 0);
    EXPECT_EQ(list(), nullptr);
    EXPECT_EQ(receiver->transmit_message(1, "BodyAdjustmentModule", "reopen"), 0);
  };
  activate(1);
  EXPECT_TRUE(asked);
  EXPECT_THAT(io.logged("send_message"),
              ElementsAre("send_message BodyAdjustmentModule BodyList 1 OpenBodyAdjustmentDialog standard|2"));
  EXPECT_THAT(io.receivers, IsEmpty());
  ASSERT_NE(list(), nullptr);
  EXPECT_TRUE(list()->isVisible());
}

TEST_F(BodyList, TakesTwoPressesInARowForOne) {
  openList();
  list()->setCurrentItem(list()->topLevelItem(0));
  QTest::keyClick(list(), Qt::Key_Return);
  QTest::keyClick(list(), Qt::Key_Return);
  io.work = [] { QTest::qWait(1); };  // a dialog has an event loop of its own, in which the second press arrives
  QTest::qWait(1);
  EXPECT_EQ(io.logged("send_message").size(), 1u);
  EXPECT_EQ(list(), nullptr);
}

TEST_F(BodyList, AsksForNothingWhenTheHostGoesRightAfterAPress) {
  openList();
  list()->setCurrentItem(list()->topLevelItem(0));
  QTest::keyClick(list(), Qt::Key_Return);
  module->about_to_exit_module();
  QTest::qWait(1);
  EXPECT_THAT(io.logged("send_message"), IsEmpty());
}

TEST_F(BodyList, GivesEverythingBackBeforeTheHostGoes) {
  openList();
  io.log.clear();
  module->about_to_exit_module();
  EXPECT_THAT(io.log, ElementsAre("unregister_requester 6d"));
  EXPECT_EQ(list(), nullptr);
  EXPECT_THAT(io.receivers, IsEmpty());
  EXPECT_THAT(io.requesters, IsEmpty());
  module->exit_module();
}
