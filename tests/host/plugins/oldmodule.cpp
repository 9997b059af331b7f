// A module for an earlier version of the interface.
#include "fakemodule.h"

class OldModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.bodyadjust.korvex2.gui.Module/0.1.0")

 public:
  OldModule() : FakeModule("Old", "&Old", 1, 1) {}
};

#include "oldmodule.moc"
