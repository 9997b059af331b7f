// A second well-behaved module; its entry stands before the first one's in the same menu.
#include "fakemodule.h"

class BetaModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)

 public:
  BetaModule() : FakeModule("Beta", "&Calibration", 20, 300) { deleteDialogLater_ = true; }
};

#include "betamodule.moc"
