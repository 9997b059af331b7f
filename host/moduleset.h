// The modules of the host: found, loaded, given the host's objects, and taken down in the right order.
#ifndef KORVEX2_HOST_MODULESET_H
#define KORVEX2_HOST_MODULESET_H

#include <functional>
#include <memory>
#include <vector>

#include <QList>
#include <QObject>
#include <QPluginLoader>
#include <QPointer>
#include <QString>
#include <QWidget>

#include "guielement.h"
#include "modulesearch.h"

class IOManager;
class ModuleInterface;
struct BackendVersions;

namespace korvex2 {

/// What became of one file that was found.
struct ModuleRecord {
  enum class State {
    loaded,
    refused,  ///< `reason` says why
    skipped   ///< a module of the same file name was loaded from an earlier folder; `reason` names it
  };
  State state = State::refused;
  QString file;     ///< absolute
  QString name;     ///< display name, loaded modules only
  QString version;  ///< as the module writes it, loaded modules only
  QString reason;   ///< for the operator
};

/// Order of calls: load, handOver, takeGuiElements, shutdown; the destructor shuts down if nobody did.
///
/// Every call into a module is guarded: what a module throws is reported and the host goes on.
class ModuleSet {
 public:
  /// `report` takes a text for the operator: every refusal with file name and reason, and misbehaviour of modules.
  explicit ModuleSet(std::function<void(const QString&)> report);
  ~ModuleSet();
  ModuleSet(const ModuleSet&) = delete;
  ModuleSet& operator=(const ModuleSet&) = delete;

  /// Loads every module of the folders. A file that is no module of this host is refused before it is loaded; a file
  /// name loaded from an earlier folder is skipped in later ones, a refused one is not.
  void load(const std::vector<ModuleFolder>& folders);
  /// Gives every module, in this order: "CommandManager", "ModuleParent", "BackendVersions", "ObserverMode".
  /// All three objects stay the caller's and must outlive shutdown().
  void handOver(IOManager* channel, QWidget* parent, BackendVersions* versions, bool observerMode);
  /// Asks every module for its menu entries, in the order the modules were loaded. The records stay the modules'.
  QList<_GuiElement*> takeGuiElements();
  /// about_to_exit_module() on every module, then exit_module() on every module, then destroys them; each round in
  /// the reverse of the loading order. A module whose dialog is still there after its exit_module() is not
  /// destroyed, because the dialog needs its code and may refer to it. Nothing happens the second time.
  void shutdown();

  /// What was found, in the order it was looked at.
  const std::vector<ModuleRecord>& records() const { return records_; }

 private:
  struct Module {
    QString file;
    std::unique_ptr<QPluginLoader> loader;
    ModuleInterface* root = nullptr;         // owned by the loader
    std::vector<QPointer<QWidget>> widgets;  // dialogs behind the menu entries
  };

  void loadFile(const QString& file);
  void refuse(const QString& file, const QString& reason);
  void destroy(Module& module);
  /// Runs a call into a module; reports what it throws.
  void guarded(const QString& file, const char* operation, const std::function<void()>& call);

  std::function<void(const QString&)> report_;
  std::vector<ModuleRecord> records_;
  std::vector<Module> modules_;
};

}  // namespace korvex2

#endif
