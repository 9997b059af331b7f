// Menu entry that a module contributes to the host.
#ifndef KORVEX2_GUIELEMENT_H
#define KORVEX2_GUIELEMENT_H

#include <cstdint>

#include <QString>

class QAction;
class QWidget;

/// One menu entry. The module owns the record and what it points to; the host only reads it.
///
/// Binary contract: fields in this order.
struct _GuiElement {
  QAction* action = nullptr;           // field 0: owned by the module
  std::int32_t placement_in_menu = 0;  // field 1: the host orders the entries of one menu by it, ascending
  QString menu_title;                  // field 2: translated title of the menu, with its mnemonic
  std::int32_t placement_of_menu = 0;  // field 3: the host orders its menus by it, ascending
  QWidget* widget = nullptr;           // field 4: the window behind the action, or null while there is none
  std::int32_t reserved = 0;           // field 5: 0
};

#endif
