// What the start page tells.
#include "startpage.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

using namespace korvex2;

namespace {

class Page : public testing::Test {
 protected:
  std::vector<std::string> rows(const char* name) const {
    std::vector<std::string> found;
    const auto* tree = page.findChild<QTreeWidget*>(name);
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
      QStringList cells;
      for (int column = 0; column < tree->columnCount(); ++column) {
        cells += tree->topLevelItem(i)->text(column);
      }
      found.push_back(cells.join('|').toStdString());
    }
    return found;
  }
  StartPage page;
};

}  // namespace

TEST_F(Page, TellsTheBackend) {
  page.setConnection("Simulated backend", {"Version 1.20.3", "Body database: /a/<b>"});
  EXPECT_EQ(page.findChild<QLabel*>("connection")->text(), "Simulated backend");
  EXPECT_EQ(page.findChild<QLabel*>("connectionDetails")->text(), "Version 1.20.3\nBody database: /a/<b>");
  EXPECT_EQ(page.findChild<QLabel*>("connectionDetails")->textFormat(), Qt::PlainText);
}

TEST_F(Page, ListsLoadedAndRefusedModulesButNoSkippedOnes) {
  ModuleRecord loaded{ModuleRecord::State::loaded, "/m/liba.so", "Alpha", "v1.2.3", {}};
  ModuleRecord refused{ModuleRecord::State::refused, "/m/libb.so", {}, {}, "it is empty"};
  ModuleRecord skipped{ModuleRecord::State::skipped, "/n/liba.so", {}, {}, "loaded already"};
  page.setModules({loaded, refused, skipped}, {});
  EXPECT_EQ(rows("modules"), (std::vector<std::string>{"Alpha|v1.2.3", "libb.so|refused"}));
  const auto* item = page.findChild<QTreeWidget*>("modules")->topLevelItem(1);
  EXPECT_TRUE(item->toolTip(0).contains("/m/libb.so") && item->toolTip(0).contains("it is empty"));
}

TEST_F(Page, SaysWhereModulesWereLookedForWhenThereAreNone) {
  page.setModules({}, {{"/opt/modules", false}, {"/home/modules", false}});
  page.resize(900, 500);
  page.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
  const auto* label = page.findChild<QLabel*>("noModules");
  EXPECT_EQ(label->text(), "No modules were found in:\n/opt/modules\n/home/modules");
  EXPECT_TRUE(label->isVisible());
  EXPECT_GE(label->height(), label->fontMetrics().size(0, label->text()).height());
  EXPECT_FALSE(page.findChild<QTreeWidget*>("modules")->isVisible());
}

TEST_F(Page, ListsBodiesWithMarkersAndState) {
  page.setBodies({{"standard", "Standard body", 1, "Head", 5, true},
                  {"standard", "Standard body", 12, "", 4, true},
                  {"wandgrip", "Wandgrip", 1, "Pointer", 0, false}});
  EXPECT_EQ(rows("bodies"),
            (std::vector<std::string>{"Head (Standard body 01)|5|calibrated", "Standard body 12|4|calibrated",
                                      "Pointer (Wandgrip 01)||not calibrated"}));
  EXPECT_TRUE(page.findChild<QLabel*>("noBodies")->isHidden());
  page.setBodies({});
  EXPECT_FALSE(page.findChild<QLabel*>("noBodies")->isHidden());
}

TEST_F(Page, OffersAButtonForEveryMenuEntry) {
  auto action = std::make_unique<QAction>("Body &adjustment");
  action->setShortcut(QKeySequence("Shift+F6"));
  int triggered = 0;
  QObject::connect(action.get(), &QAction::triggered, &page, [&] { ++triggered; });
  page.setActions({action.get()});
  auto buttons = page.findChildren<QPushButton*>();
  ASSERT_EQ(buttons.size(), 1);
  EXPECT_EQ(buttons[0]->text(), "Body adjustment   (Shift+F6)");
  page.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
  QTest::mouseClick(buttons[0], Qt::LeftButton);
  EXPECT_EQ(triggered, 1);
  action->setEnabled(false);
  EXPECT_FALSE(buttons[0]->isEnabled());
  action.reset();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(page.findChildren<QPushButton*>().isEmpty());
}

TEST_F(Page, ASelectedBodyStaysSelectedInANewList) {
  const BodySummary first{"standard", "Standard body", 1, "Cup", 5, true};
  const BodySummary second{"standard", "Standard body", 2, "Table", 4, true};
  const BodySummary device{"wandgrip", "Wandgrip", 2, "", 6, true};
  page.setBodies({first, second, device});
  EXPECT_FALSE(page.selectedBody().has_value());
  page.resize(900, 500);
  page.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
  auto* tree = page.findChild<QTreeWidget*>("bodies");
  QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(tree->topLevelItem(1)).center());
  EXPECT_TRUE(page.selectedBody() == (BodyId{"standard", 2}));
  page.setBodies({device, first, {"standard", "Standard body", 2, "Desk", 7, true}});
  EXPECT_TRUE(page.selectedBody() == (BodyId{"standard", 2}));
  EXPECT_EQ(tree->selectedItems().value(0), tree->topLevelItem(2));
  page.setBodies({device, first});
  EXPECT_FALSE(page.selectedBody().has_value());
}
