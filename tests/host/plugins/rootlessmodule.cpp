// A plug-in that claims to be a module but whose root object does not implement the interface.
#include "moduleinterface.h"

class RootlessModule : public QObject {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)
};

#include "rootlessmodule.moc"
