// Root of the plug-in: the module as the host sees it, and its receiver of messages from other modules.
#ifndef BODYADJUSTMENTMODULE_H
#define BODYADJUSTMENTMODULE_H

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include "bodyadjustmentmessagereceiver.h"
#include "moduleinterface.h"

class IOManager;
class QWidget;
struct BackendVersions;

/// The body-adjustment module: one menu entry, "&Calibration" > "Body &adjustment" (Shift+F6), which runs the dialog.
///
/// Owns the dialog, the action and the menu record. The channel, the versions and the parent widget stay the host's;
/// they must outlive the dialog. All calls on the GUI thread.
class BodyAdjustmentModule : public QObject, public ModuleInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID FILE "bodyadjustment.json")
  Q_INTERFACES(ModuleInterface)

 public:
  BodyAdjustmentModule() = default;
  ~BodyAdjustmentModule() override;

  void about_to_exit_module() override;
  /// Deletes the dialog and empties the list of menu entries; does nothing when there is no dialog.
  void exit_module() override;
  QString get_module_name() const override;
  QString get_module_version() const override;
  /// The one menu entry; the first call creates the dialog and the action.
  QList<_GuiElement*> get_gui_elements() override;
  /// "CommandManager" (IOManager*), "ModuleParent" (QWidget*), "BackendVersions" (BackendVersions*) and
  /// "ObserverMode" (bool). A value of another type stores null; another name changes nothing.
  void set_param(QString name, QVariant value) override;

 private:
  void createGuiElement();

  QWidget* parent_widget_ = nullptr;
  QList<_GuiElement*> gui_elements_;
  _GuiElement gui_element_;
  IOManager* channel_ = nullptr;
  BackendVersions* versions_ = nullptr;
  bool observer_mode_ = false;  // kept for the host; nothing here depends on it
  QPointer<QWidget> dialog_;    // null once the parent widget has taken the dialog with it
};

#endif
