// The order of menus and entries that modules contribute.
#ifndef KORVEX2_HOST_MENUPLAN_H
#define KORVEX2_HOST_MENUPLAN_H

#include <vector>

#include <QList>
#include <QString>

#include "guielement.h"

class QAction;

namespace korvex2 {

/// One menu of the menu bar with its entries in order.
struct PlannedMenu {
  QString title;  ///< with its mnemonic, as the first entry of this menu wrote it
  int placement = 0;
  std::vector<QAction*> actions;
};

/// A menu title as the operator reads it: without mnemonic marks ("&Calibration" is "Calibration") and outer blanks.
QString plainTitle(const QString& title);

/// Menus in ascending order of placement_of_menu, entries of one menu in ascending order of placement_in_menu; equal
/// placements stay in the given order. Titles that read the same are one menu; it stands where the smallest of its
/// placements puts it. Null records and records without an action are left out; an entry without a menu title goes
/// into the menu `untitled`.
std::vector<PlannedMenu> planMenus(const QList<_GuiElement*>& elements, const QString& untitled);

}  // namespace korvex2

#endif
