// A module that needs a function nobody has.
#include "fakemodule.h"

int functionNobodyHas();

class UnresolvedModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)

 public:
  UnresolvedModule() : FakeModule("Unresolved", "&Tools", functionNobodyHas(), 900) {}
};

#include "unresolvedmodule.moc"
