// A well-behaved module.
#include "fakemodule.h"

class AlphaModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)

 public:
  AlphaModule() : FakeModule("Alpha", "&Calibration", 680, 300) {}
};

#include "alphamodule.moc"
