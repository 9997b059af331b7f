// A plug-in of another program.
#include "fakemodule.h"

class ForeignModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.example.editor.Filter/1.0")

 public:
  ForeignModule() : FakeModule("Foreign", "&Filter", 1, 1) {}
};

#include "foreignmodule.moc"
