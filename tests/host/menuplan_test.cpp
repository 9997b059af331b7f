// Order and merging of the menus that modules contribute.
#include "menuplan.h"

#include <gtest/gtest.h>

#include <QAction>

#include <memory>
#include <string>

using namespace korvex2;

namespace {

class MenuPlan : public testing::Test {
 protected:
  void add(const QString& text, const QString& menu, int inMenu, int ofMenu) {
    actions_.push_back(std::make_unique<QAction>(text));
    records_.push_back(std::make_unique<_GuiElement>());
    _GuiElement& record = *records_.back();
    record.action = actions_.back().get();
    record.menu_title = menu;
    record.placement_in_menu = inMenu;
    record.placement_of_menu = ofMenu;
    elements += &record;
  }
  /// "Title: entry entry; Title: entry"
  std::string plan() const {
    QStringList menus;
    for (const PlannedMenu& menu : planMenus(elements, "&Modules")) {
      QStringList entries;
      for (const QAction* action : menu.actions) {
        entries += action->text();
      }
      menus += menu.title + ": " + entries.join(' ');
    }
    return menus.join("; ").toStdString();
  }
  QList<_GuiElement*> elements;

 private:
  std::vector<std::unique_ptr<QAction>> actions_;
  std::vector<std::unique_ptr<_GuiElement>> records_;
};

}  // namespace

TEST_F(MenuPlan, OrdersMenusByTheirPlacementAndEntriesByTheirs) {
  add("third", "&Calibration", 680, 300);
  add("measure", "&Measurement", 5, 100);
  add("first", "&Calibration", -10, 300);
  add("tool", "&Tools", 1, 900);
  add("second", "&Calibration", 100, 300);
  EXPECT_EQ(plan(), "&Measurement: measure; &Calibration: first second third; &Tools: tool");
}

TEST_F(MenuPlan, KeepsTheGivenOrderAmongEqualPlacements) {
  add("a", "&X", 1, 1);
  add("b", "&X", 1, 1);
  add("c", "&Y", 1, 1);
  add("d", "&X", 1, 1);
  EXPECT_EQ(plan(), "&X: a b d; &Y: c");
}

TEST_F(MenuPlan, MergesTitlesThatReadTheSame) {
  add("a", "&Calibration", 2, 300);
  add("b", "Cali&bration", 1, 300);
  add("c", "Calibration ", 3, 300);
  add("d", "Calibrations", 1, 300);
  EXPECT_EQ(plan(), "&Calibration: b a c; Calibrations: d");
}

TEST_F(MenuPlan, AMergedMenuStandsWhereItsSmallestPlacementPutsIt) {
  add("b", "&Middle", 1, 500);
  add("a", "&Late", 1, 900);
  add("c", "&Late", 2, 100);
  EXPECT_EQ(plan(), "&Late: a c; &Middle: b");
}

TEST_F(MenuPlan, LeavesOutRecordsWithoutAnAction) {
  add("a", "&X", 1, 1);
  _GuiElement empty;
  empty.menu_title = "&Y";
  elements += &empty;
  elements += nullptr;
  EXPECT_EQ(plan(), "&X: a");
  elements.clear();
  EXPECT_EQ(plan(), "");
}

TEST_F(MenuPlan, AnEntryWithoutATitleGoesIntoTheMenuForThose) {
  add("a", "", 1, 1);
  add("b", " & ", 2, 1);
  add("c", "Modules", 3, 1);
  EXPECT_EQ(plan(), "&Modules: a b c");
}

TEST(PlainTitle, LosesItsMnemonicAndKeepsALiteralAmpersand) {
  EXPECT_EQ(plainTitle("Body &adjustment"), "Body adjustment");
  EXPECT_EQ(plainTitle("Search && replace"), "Search & replace");
  EXPECT_EQ(plainTitle("end&"), "end");
  EXPECT_EQ(plainTitle(""), "");
}
