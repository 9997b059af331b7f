// Module that does what authors are told about: throws where its host says, or leaves a window behind.
#include <QAction>
#include <QApplication>
#include <QPointer>
#include <QWidget>

#include <stdexcept>

#include "moduleinterface.h"

/// The application's property "witness" tells it what to do; what it saw stands in properties "witness..." of the
/// application.
class WitnessModule : public QObject, public ModuleInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)
  Q_INTERFACES(ModuleInterface)

 public:
  WitnessModule() { throwIf("constructor"); }
  ~WitnessModule() override { qApp->setProperty("witnessDestroyed", true); }

  QString get_module_name() const override {
    throwIf("name");
    return QStringLiteral("Witness");
  }
  QString get_module_version() const override { return QStringLiteral("v1"); }
  void set_param(QString name, QVariant value) override {
    if (name == QLatin1String("ObserverMode")) {
      qApp->setProperty("witnessObserver", value);
    }
  }
  QList<_GuiElement*> get_gui_elements() override {
    entry_.action = new QAction(QStringLiteral("Witness"), this);
    // The window comes when the entry is chosen, and is the test's to delete.
    connect(entry_.action, &QAction::triggered, [this] { entry_.widget = new QWidget; });
    return {&entry_};
  }
  void about_to_exit_module() override {}
  void exit_module() override {}

 private:
  static void throwIf(const char* where) {
    if (qApp->property("witness").toString() == QLatin1String(where)) {
      throw std::runtime_error(where);
    }
  }

  _GuiElement entry_;
};

#include "witnessmodule.moc"
