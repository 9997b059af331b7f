// A module that throws wherever it is called.
#include <stdexcept>

#include "fakemodule.h"

class ThrowingModule : public FakeModule {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)

 public:
  ThrowingModule() : FakeModule("Throwing", "&Tools", 1, 900) {}

  void set_param(QString, QVariant) override { throw std::runtime_error("no parameters please"); }
  QList<_GuiElement*> get_gui_elements() override { throw 42; }
  void about_to_exit_module() override { throw std::runtime_error("not yet"); }
  void exit_module() override { throw std::runtime_error("never"); }
};

#include "throwingmodule.moc"
