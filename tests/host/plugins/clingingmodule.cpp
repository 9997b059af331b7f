// A module that leaves its dialog behind.
#include "fakemodule.h"

class ClingingModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)

 public:
  ClingingModule() : FakeModule("Clinging", "&Tools", 1, 900) { keepDialog_ = true; }
};

#include "clingingmodule.moc"
