// Module for the host's tests: writes every call into one ordered log that the whole process shares.
#ifndef KORVEX2_TESTS_FAKEMODULE_H
#define KORVEX2_TESTS_FAKEMODULE_H

#include <QAction>
#include <QApplication>
#include <QPointer>
#include <QWidget>

#include "moduleinterface.h"

/// The log is the application's property "moduleCalls", a list of texts "NAME OPERATION ..."; what is handed over is
/// kept in properties of the root object under the parameter's name.
class FakeModule : public QObject, public ModuleInterface {
  Q_OBJECT
  Q_INTERFACES(ModuleInterface)

 public:
  FakeModule(const QString& name, const QString& menu, int inMenu, int ofMenu)
      : name_(name), menu_(menu), inMenu_(inMenu), ofMenu_(ofMenu) {
    log("constructed");
  }
  ~FakeModule() override { log("destroyed"); }

  void about_to_exit_module() override { log("about_to_exit_module"); }
  void exit_module() override {
    log("exit_module");
    if (deleteDialogLater_ && element_.widget != nullptr) {
      element_.widget->deleteLater();
    } else if (!keepDialog_) {
      delete element_.widget;
    }
    element_.widget = nullptr;
    list_.clear();
  }
  QString get_module_name() const override { return name_; }
  QString get_module_version() const override { return QStringLiteral("v1.2.3"); }
  QList<_GuiElement*> get_gui_elements() override {
    log("get_gui_elements");
    if (list_.isEmpty()) {
      element_.action = new QAction(name_ + QStringLiteral(" entry"), this);
      connect(element_.action, &QAction::triggered, this, [this] { log("triggered"); });
      element_.menu_title = menu_;
      element_.placement_in_menu = inMenu_;
      element_.placement_of_menu = ofMenu_;
      element_.widget = new QWidget(parent_);
      element_.widget->hide();
      connect(element_.widget, &QObject::destroyed, this, [this] { log("dialog destroyed"); });
      list_ += &element_;
    }
    return list_;
  }
  void set_param(QString name, QVariant value) override {
    log("set_param " + name + " " + QLatin1String(value.typeName()));
    if (name == QLatin1String("ModuleParent")) {
      parent_ = value.value<QWidget*>();
    }
  }

 protected:
  void log(const QString& text) const {
    QStringList calls = qApp->property("moduleCalls").toStringList();
    calls += name_ + QLatin1Char(' ') + text;
    qApp->setProperty("moduleCalls", calls);
  }
  bool keepDialog_ = false;
  bool deleteDialogLater_ = false;
  _GuiElement element_;

 private:
  QString name_;
  QString menu_;
  int inMenu_;
  int ofMenu_;
  QPointer<QWidget> parent_;
  QList<_GuiElement*> list_;
};

#endif
