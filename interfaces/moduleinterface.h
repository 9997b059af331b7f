// The interface that every host module implements.
#ifndef KORVEX2_MODULEINTERFACE_H
#define KORVEX2_MODULEINTERFACE_H

#include <QList>
#include <QString>
#include <QVariant>
#include <QtPlugin>

#include "guielement.h"

/// A module of the host front end. The plug-in's root object derives from QObject first and ModuleInterface second
/// and names ModuleInterface in Q_INTERFACES, so that the host can cast it by the identifier.
///
/// Order of calls: set_param (any number of times), get_gui_elements, then events; about_to_exit_module and
/// exit_module at the host's end. All on the GUI thread.
///
/// Binary contract: virtual operations in this order. Never reorder.
class ModuleInterface {
 public:
  virtual ~ModuleInterface() = default;                      // 1
  virtual void about_to_exit_module() = 0;                   // 2: the host is about to shut down
  virtual void exit_module() = 0;                            // 3: release everything; the module is destroyed next
  virtual QString get_module_name() const = 0;               // 4: display name, translated
  virtual QString get_module_version() const = 0;            // 5: version text, for example "v3.1.4"
  virtual QList<_GuiElement*> get_gui_elements() = 0;        // 6: records stay the module's property
  virtual void set_param(QString name, QVariant value) = 0;  // 7: unknown names are ignored
};

#define KORVEX2_MODULE_INTERFACE_IID "org.bodyadjust.korvex2.gui.Module/0.2.0"
Q_DECLARE_INTERFACE(ModuleInterface, KORVEX2_MODULE_INTERFACE_IID)

#endif
