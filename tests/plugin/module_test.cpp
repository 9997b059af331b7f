// The module object: what it answers, what it makes when, and what it survives.
#include "bodyadjustmentmodule.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMainWindow>
#include <QMetaMethod>
#include <QPointer>

#include "backendversions.h"
#include "bodyadjustmentdialog.h"
#include "fakechannel.h"

namespace {

class ModuleTest : public testing::Test {
 protected:
  void handOver() {
    module.set_param("CommandManager", QVariant::fromValue<IOManager*>(&channel));
    module.set_param("ModuleParent", QVariant::fromValue<QWidget*>(&window));
    module.set_param("BackendVersions", QVariant::fromValue<BackendVersions*>(&versions));
    module.set_param("ObserverMode", false);
  }

  FakeChannel channel;
  QMainWindow window;
  BackendVersions versions;
  BodyAdjustmentModule module;
};

TEST_F(ModuleTest, TellsItsNameAndVersion) {
  EXPECT_EQ(module.get_module_name(), "GUI Body Adjustment");
  EXPECT_EQ(module.get_module_version(), "v3.1.4");
}

TEST_F(ModuleTest, AnswersCastsByNameAndByIdentifierOnly) {
  QObject* root = &module;
  EXPECT_EQ(root->qt_metacast("BodyAdjustmentModule"), static_cast<void*>(&module));
  auto* interface = static_cast<ModuleInterface*>(&module);
  EXPECT_EQ(root->qt_metacast("ModuleInterface"), static_cast<void*>(interface));
  EXPECT_EQ(root->qt_metacast("org.bodyadjust.korvex2.gui.Module/0.2.0"), static_cast<void*>(interface));
  EXPECT_EQ(root->qt_metacast("QObject"), static_cast<void*>(root));
  EXPECT_EQ(root->qt_metacast("MessageReceiver"), nullptr);
  EXPECT_EQ(root->qt_metacast("org.bodyadjust.korvex2.gui.Module/0.1.0"), nullptr);
}

TEST_F(ModuleTest, HasNoSignalsSlotsOrPropertiesOfItsOwn) {
  const QMetaObject* meta = module.metaObject();
  EXPECT_STREQ(meta->className(), "BodyAdjustmentModule");
  EXPECT_EQ(meta->methodCount(), meta->methodOffset());
  EXPECT_EQ(meta->propertyCount(), meta->propertyOffset());
}

TEST_F(ModuleTest, FillsOneMenuEntry) {
  handOver();
  const QList<_GuiElement*> elements = module.get_gui_elements();
  ASSERT_EQ(elements.size(), 1);
  const _GuiElement& entry = *elements.first();
  EXPECT_EQ(entry.placement_in_menu, 680);
  EXPECT_EQ(entry.placement_of_menu, 300);
  EXPECT_EQ(entry.reserved, 0);
  EXPECT_EQ(entry.menu_title, "&Calibration");
  ASSERT_NE(entry.action, nullptr);
  EXPECT_EQ(entry.action->text(), "Body &adjustment");
  EXPECT_EQ(entry.action->shortcut(), QKeySequence("Shift+F6"));
  EXPECT_EQ(entry.action->statusTip(), "Perform the body adjustment");
  EXPECT_EQ(entry.action->whatsThis(), "Adjust the body coordinate system");
  EXPECT_EQ(entry.action->parent(), &module);
  ASSERT_NE(qobject_cast<BodyAdjustmentDialog*>(entry.widget), nullptr);
  EXPECT_EQ(entry.widget->parentWidget(), &window);
}

TEST_F(ModuleTest, MakesTheEntryOnceAndReturnsItEveryTime) {
  handOver();
  const QList<_GuiElement*> first = module.get_gui_elements();
  QAction* action = first.first()->action;
  QWidget* dialog = first.first()->widget;
  const QList<_GuiElement*> second = module.get_gui_elements();
  EXPECT_EQ(first, second);
  EXPECT_EQ(second.first()->action, action);
  EXPECT_EQ(second.first()->widget, dialog);
  EXPECT_EQ(module.findChildren<QAction*>().size(), 1);
  EXPECT_EQ(window.findChildren<BodyAdjustmentDialog*>().size(), 1);
}

TEST_F(ModuleTest, RegistersTheMessageReceiverWhenTheDialogIsMade) {
  handOver();
  EXPECT_TRUE(channel.log.empty());
  module.get_gui_elements();
  EXPECT_EQ(channel.log, std::vector<std::string>{"register_message_receiver BodyAdjustmentModule"});
}

TEST_F(ModuleTest, ExitDeletesTheDialogAndEmptiesTheList) {
  handOver();
  _GuiElement* entry = module.get_gui_elements().first();
  const QPointer<QWidget> dialog = entry->widget;
  const QPointer<QAction> action = entry->action;
  module.exit_module();
  EXPECT_TRUE(dialog.isNull());
  EXPECT_EQ(entry->widget, nullptr);
  EXPECT_FALSE(action.isNull()) << "the action goes with the module";
  module.exit_module();
}

TEST_F(ModuleTest, ExitBeforeAnyEntryDoesNothing) {
  module.about_to_exit_module();
  module.exit_module();
  EXPECT_TRUE(channel.log.empty());
}

TEST_F(ModuleTest, AboutToExitRemovesTheMessageReceiver) {
  handOver();
  module.get_gui_elements();
  channel.takeLog();
  module.about_to_exit_module();
  EXPECT_EQ(channel.log, std::vector<std::string>{"unregister_message_receiver BodyAdjustmentModule"});
  EXPECT_TRUE(channel.receivers.empty());
}

TEST_F(ModuleTest, AValueOfAnotherTypeLeavesTheChannelNull) {
  handOver();
  module.set_param("CommandManager", QStringLiteral("no channel"));
  module.get_gui_elements();
  EXPECT_TRUE(channel.log.empty()) << "the dialog was made without a channel";
}

TEST_F(ModuleTest, UnknownNamesChangeNothing) {
  handOver();
  module.set_param("commandmanager", QVariant());
  module.set_param("CommandManager2", QVariant());
  module.set_param("", 5);
  module.get_gui_elements();
  EXPECT_EQ(channel.receivers.count("BodyAdjustmentModule"), 1U);
}

TEST_F(ModuleTest, SurvivesAParentThatTakesTheDialogAlong) {
  auto parent = std::make_unique<QWidget>();
  BodyAdjustmentModule other;
  other.set_param("CommandManager", QVariant::fromValue<IOManager*>(&channel));
  other.set_param("ModuleParent", QVariant::fromValue<QWidget*>(parent.get()));
  other.get_gui_elements();
  parent.reset();
  other.about_to_exit_module();
  other.exit_module();
}

TEST_F(ModuleTest, WorksWithoutAnyHostObject) {
  const QList<_GuiElement*> elements = module.get_gui_elements();
  ASSERT_EQ(elements.size(), 1);
  EXPECT_EQ(elements.first()->widget->parentWidget(), nullptr);
  module.about_to_exit_module();
  module.exit_module();
}

}  // namespace
