// See bodyadjustmentmodule.h.
#include "bodyadjustmentmodule.h"

#include <QAction>
#include <QKeySequence>
#include <QWidget>

#include "backendversions.h"
#include "bodyadjustmentdialog.h"
#include "iomanager.h"

BodyAdjustmentModule::~BodyAdjustmentModule() { exit_module(); }

void BodyAdjustmentModule::about_to_exit_module() {
  if (auto* dialog = qobject_cast<BodyAdjustmentDialog*>(dialog_.data())) {
    dialog->about_to_exit();
  }
}

void BodyAdjustmentModule::exit_module() {
  delete dialog_.data();
  gui_element_.widget = nullptr;
  gui_elements_.clear();
}

QString BodyAdjustmentModule::get_module_name() const { return tr("GUI Body Adjustment"); }

QString BodyAdjustmentModule::get_module_version() const { return QStringLiteral("v%1.%2.%3").arg(3).arg(1).arg(4); }

QList<_GuiElement*> BodyAdjustmentModule::get_gui_elements() {
  if (gui_elements_.isEmpty()) {
    createGuiElement();
  }
  return gui_elements_;
}

void BodyAdjustmentModule::createGuiElement() {
  auto* dialog = new BodyAdjustmentDialog(channel_, parent_widget_, versions_);
  dialog_ = dialog;
  gui_element_.widget = dialog;
  gui_element_.menu_title = tr("&Calibration");
  gui_element_.placement_of_menu = 300;
  gui_element_.placement_in_menu = 680;
  gui_element_.reserved = 0;

  if (gui_element_.action == nullptr) {  // kept across exit_module(): the action lives as long as the module
    gui_element_.action = new QAction(tr("Body &adjustment"), this);
    gui_element_.action->setShortcut(QKeySequence(tr("Shift+F6")));
    gui_element_.action->setStatusTip(tr("Perform the body adjustment"));
    gui_element_.action->setWhatsThis(tr("Adjust the body coordinate system"));
  }
  connect(gui_element_.action, SIGNAL(triggered()), dialog, SLOT(update_and_exec()));
  gui_elements_.append(&gui_element_);
}

void BodyAdjustmentModule::set_param(QString name, QVariant value) {
  if (name == QLatin1String("CommandManager")) {
    channel_ = value.value<IOManager*>();
  } else if (name == QLatin1String("ModuleParent")) {
    parent_widget_ = value.value<QWidget*>();
  } else if (name == QLatin1String("BackendVersions")) {
    versions_ = value.value<BackendVersions*>();
  } else if (name == QLatin1String("ObserverMode")) {
    observer_mode_ = value.toBool();
  }
}
