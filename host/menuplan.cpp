// See menuplan.h.
#include "menuplan.h"

#include <algorithm>

namespace korvex2 {

QString plainTitle(const QString& title) {
  QString plain;
  for (int i = 0; i < title.size(); ++i) {
    if (title.at(i) == QLatin1Char('&')) {
      ++i;  // a doubled mark is a literal one
      if (i == title.size()) {
        break;
      }
    }
    plain += title.at(i);
  }
  return plain.trimmed();
}

std::vector<PlannedMenu> planMenus(const QList<_GuiElement*>& elements, const QString& untitled) {
  struct Menu {
    QString title;
    int placement;
    std::vector<const _GuiElement*> entries;
  };
  std::vector<Menu> menus;
  for (const _GuiElement* element : elements) {
    if (element == nullptr || element->action == nullptr) {
      continue;
    }
    const QString title = plainTitle(element->menu_title).isEmpty() ? untitled : element->menu_title;
    auto menu = std::find_if(menus.begin(), menus.end(),
                             [&](const Menu& known) { return plainTitle(known.title) == plainTitle(title); });
    if (menu == menus.end()) {
      menu = menus.insert(menus.end(), {title, element->placement_of_menu, {}});
    }
    menu->placement = std::min<int>(menu->placement, element->placement_of_menu);
    menu->entries.push_back(element);
  }
  std::stable_sort(menus.begin(), menus.end(), [](const Menu& a, const Menu& b) { return a.placement < b.placement; });
  std::vector<PlannedMenu> planned;
  for (Menu& menu : menus) {
    std::stable_sort(menu.entries.begin(), menu.entries.end(), [](const _GuiElement* a, const _GuiElement* b) {
      return a->placement_in_menu < b->placement_in_menu;
    });
    planned.push_back({menu.title, menu.placement, {}});
    for (const _GuiElement* element : menu.entries) {
      planned.back().actions.push_back(element->action);
    }
  }
  return planned;
}

}  // namespace korvex2
