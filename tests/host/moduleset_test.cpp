// Loading modules, handing over, and taking them down in order.
#include "moduleset.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>

#include <algorithm>

#include "backendversions.h"
#include "hostchannel.h"
#include "modulefiles.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

using State = ModuleRecord::State;

class Modules : public testing::Test {
 protected:
  void SetUp() override { takeCalls(); }

  static std::vector<std::string> takeCalls() {
    std::vector<std::string> calls;
    const QStringList logged = qApp->property("moduleCalls").toStringList();
    for (const QString& call : logged) {
      calls.push_back(call.toStdString());
    }
    qApp->setProperty("moduleCalls", QStringList());
    return calls;
  }
  const ModuleRecord* record(const QString& fileName) const {
    for (const ModuleRecord& found : modules->records()) {
      if (QFileInfo(found.file).fileName() == fileName) {
        return &found;
      }
    }
    return nullptr;
  }
  bool reported(const QString& words) const {
    return std::any_of(reports.cbegin(), reports.cend(), [&](const QString& text) { return text.contains(words); });
  }

  ModuleFiles files;
  QStringList reports;
  ScriptedConnection backend;
  HostChannel channel{&backend};
  QWidget parent;
  BackendVersions versions;
  std::unique_ptr<ModuleSet> modules = std::make_unique<ModuleSet>([this](const QString& text) { reports += text; });
};

}  // namespace

TEST_F(Modules, TellsNameAndVersionOfWhatItLoaded) {
  const QString file = files.copy("alphamodule");
  modules->load(files.folders());
  ASSERT_EQ(modules->records().size(), 1u);
  const ModuleRecord& found = modules->records()[0];
  EXPECT_EQ(found.state, State::loaded);
  EXPECT_EQ(found.file, file);
  EXPECT_EQ(found.name, "Alpha");
  EXPECT_EQ(found.version, "v1.2.3");
  EXPECT_TRUE(reports.isEmpty()) << reports.join('\n').toStdString();
}

TEST_F(Modules, CallsEveryModuleInTheContractsOrder) {
  files.copy("alphamodule");
  files.copy("betamodule");
  modules->load(files.folders());
  modules->handOver(&channel, &parent, &versions, false);
  const QList<_GuiElement*> elements = modules->takeGuiElements();
  ASSERT_EQ(elements.size(), 2);
  EXPECT_EQ(elements[0]->action->text(), "Alpha entry");
  EXPECT_EQ(elements[1]->action->text(), "Beta entry");
  EXPECT_EQ(elements[0]->widget->parentWidget(), &parent);
  EXPECT_EQ(takeCalls(),
            (std::vector<std::string>{
                "Alpha constructed", "Beta constructed", "Alpha set_param CommandManager IOManager*",
                "Alpha set_param ModuleParent QWidget*", "Alpha set_param BackendVersions BackendVersions*",
                "Alpha set_param ObserverMode bool", "Beta set_param CommandManager IOManager*",
                "Beta set_param ModuleParent QWidget*", "Beta set_param BackendVersions BackendVersions*",
                "Beta set_param ObserverMode bool", "Alpha get_gui_elements", "Beta get_gui_elements"}));
  modules->shutdown();
  // Beta leaves its dialog to be deleted later: that happens before any module is destroyed.
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Beta about_to_exit_module", "Alpha about_to_exit_module",
                                                   "Beta exit_module", "Alpha exit_module", "Alpha dialog destroyed",
                                                   "Beta dialog destroyed", "Beta destroyed", "Alpha destroyed"}));
  modules->shutdown();
  modules.reset();
  EXPECT_TRUE(takeCalls().empty()) << "everything happens once";
  EXPECT_TRUE(reports.isEmpty()) << reports.join('\n').toStdString();
}

TEST_F(Modules, TheDestructorTakesThemDownToo) {
  files.copy("alphamodule");
  modules->load(files.folders());
  takeCalls();
  modules.reset();
  EXPECT_EQ(takeCalls(),
            (std::vector<std::string>{"Alpha about_to_exit_module", "Alpha exit_module", "Alpha destroyed"}));
}

TEST_F(Modules, AMenuEntryLeavesItsMenuWithItsModule) {
  files.copy("alphamodule");
  modules->load(files.folders());
  modules->handOver(&channel, &parent, &versions, false);
  parent.addAction(modules->takeGuiElements().at(0)->action);
  modules->shutdown();
  EXPECT_TRUE(parent.actions().isEmpty());
}

TEST_F(Modules, RefusesEveryKindOfBadFileWithNameAndReasonAndGoesOn) {
  files.copy("foreignmodule");
  files.copy("oldmodule");
  files.copy("plainlibrary");
  files.copy("rootlessmodule");
  files.copy("unresolvedmodule");
  files.write("libtext.so", "This is a text.\n");
  files.write("libempty.so", "");
  files.truncated("alphamodule", 0.5, "libcut.so");
  files.builtWithToolkit("alphamodule", 6, 2, "libqt6.so");
  ASSERT_TRUE(QFile::link(files.path("nowhere"), files.path("liblink.so")));
  files.copy("betamodule", "libzgood.so");
  modules->load(files.folders());

  const std::vector<std::pair<const char*, const char*>> expected = {{"libforeignmodule.so", "another program"},
                                                                     {"liboldmodule.so", "0.1.0"},
                                                                     {"libplainlibrary.so", "no plug-in"},
                                                                     {"librootlessmodule.so", "RootlessModule"},
                                                                     {"libunresolvedmodule.so", "functionNobodyHas"},
                                                                     {"libtext.so", "no plug-in"},
                                                                     {"libempty.so", "empty"},
                                                                     {"libcut.so", "no plug-in"},
                                                                     {"libqt6.so", "Qt 6.2"},
                                                                     {"liblink.so", "link"}};
  for (const auto& [file, words] : expected) {
    const ModuleRecord* found = record(file);
    ASSERT_NE(found, nullptr) << file;
    EXPECT_EQ(found->state, State::refused) << file;
    EXPECT_TRUE(found->reason.contains(words)) << file << ": " << found->reason.toStdString();
    EXPECT_TRUE(reported(files.path(file))) << file;
    EXPECT_TRUE(reported(found->reason)) << file;
  }
  ASSERT_NE(record("libzgood.so"), nullptr);
  EXPECT_EQ(record("libzgood.so")->state, State::loaded);
  EXPECT_EQ(modules->records().size(), expected.size() + 1);
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Beta constructed"})) << "nothing else was brought to life";
}

TEST_F(Modules, ReportsAMissingFolderOnlyWhenItWasAskedFor) {
  modules->load({{files.path("nowhere"), true}, {files.path("neither"), false}});
  ASSERT_EQ(modules->records().size(), 1u);
  EXPECT_EQ(modules->records()[0].file, files.path("nowhere"));
  EXPECT_EQ(reports.size(), 1);
  EXPECT_TRUE(reported("does not exist"));
  const QString file = files.write("file", "x");
  modules->load({{file, true}});
  EXPECT_TRUE(reported("not a folder"));
}

TEST_F(Modules, SkipsAFileNameThatIsLoadedFromAnEarlierFolder) {
  const QString first = files.copy("alphamodule", "one/libm.so");
  const QString second = files.copy("betamodule", "two/libm.so");
  modules->load({{files.path("one"), false}, {files.path("two"), false}});
  ASSERT_EQ(modules->records().size(), 2u);
  EXPECT_EQ(modules->records()[0].state, State::loaded);
  EXPECT_EQ(modules->records()[1].state, State::skipped);
  EXPECT_EQ(modules->records()[1].file, second);
  EXPECT_TRUE(modules->records()[1].reason.contains(first));
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Alpha constructed"}));
  EXPECT_TRUE(reports.isEmpty()) << "no trouble: an installed module beside the one being developed";
}

TEST_F(Modules, ABrokenFileDoesNotHideAGoodOneOfTheSameName) {
  files.copy("foreignmodule", "one/libm.so");
  files.copy("betamodule", "two/libm.so");
  modules->load({{files.path("one"), false}, {files.path("two"), false}});
  ASSERT_EQ(modules->records().size(), 2u);
  EXPECT_EQ(modules->records()[0].state, State::refused);
  EXPECT_EQ(modules->records()[1].state, State::loaded);
}

TEST_F(Modules, AModuleThatThrowsIsReportedAndTheOthersAreServed) {
  files.copy("throwingmodule", "liba.so");
  files.copy("alphamodule", "libb.so");
  modules->load(files.folders());
  modules->handOver(&channel, &parent, &versions, false);
  EXPECT_TRUE(reported("liba.so") && reported("no parameters please"));
  EXPECT_EQ(modules->takeGuiElements().size(), 1);
  EXPECT_TRUE(reported("get_gui_elements"));
  takeCalls();
  modules->shutdown();
  EXPECT_TRUE(reported("not yet") && reported("never"));
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Alpha about_to_exit_module", "Alpha exit_module",
                                                   "Alpha dialog destroyed", "Alpha destroyed", "Throwing destroyed"}));
}

TEST_F(Modules, AModuleThatLeavesItsDialogBehindIsNotDestroyedUnderIt) {
  files.copy("clingingmodule");
  modules->load(files.folders());
  modules->handOver(&channel, &parent, &versions, false);
  const QPointer<QWidget> dialog = modules->takeGuiElements().at(0)->widget;
  ASSERT_FALSE(dialog.isNull());
  takeCalls();
  modules->shutdown();
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Clinging about_to_exit_module", "Clinging exit_module"}));
  EXPECT_FALSE(dialog.isNull());
  delete dialog.data();  // its code is still there
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Clinging dialog destroyed"}));
}

TEST_F(Modules, ASecondSetOfTheSameFileStartsAFreshModule) {
  files.copy("alphamodule");
  modules->load(files.folders());
  modules->shutdown();
  takeCalls();
  ModuleSet again(nullptr);
  again.load(files.folders());
  EXPECT_EQ(takeCalls(), (std::vector<std::string>{"Alpha constructed"}));
  again.shutdown();
  EXPECT_EQ(takeCalls(),
            (std::vector<std::string>{"Alpha about_to_exit_module", "Alpha exit_module", "Alpha destroyed"}));
}
