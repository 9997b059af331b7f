// See moduleset.h.
#include "moduleset.h"

#include <algorithm>
#include <exception>

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QVariant>

#include "backendversions.h"
#include "hostlogging.h"
#include "iomanager.h"
#include "moduleinterface.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ModuleSet", text); }

/// Modules that cannot be destroyed safely live until the process ends. Never freed on purpose: the loader's own
/// clean-up at the end of the process destroys a module whose loader is gone.
std::vector<std::unique_ptr<QPluginLoader>>& keptLoaders() {
  static auto* const kept = new std::vector<std::unique_ptr<QPluginLoader>>;
  return *kept;
}

}  // namespace

ModuleSet::ModuleSet(std::function<void(const QString&)> report) : report_(std::move(report)) {}

ModuleSet::~ModuleSet() { shutdown(); }

void ModuleSet::load(const std::vector<ModuleFolder>& folders) {
  for (const ModuleFolder& folder : folders) {
    const QFileInfo info(folder.path);
    if (!info.isDir()) {
      if (folder.requested) {
        refuse(folder.path, info.exists() ? tr("it is not a folder") : tr("the folder does not exist"));
      }
      continue;
    }
    qCInfo(logHost) << "modules are looked for in" << folder.path;
    const QStringList files = libraryFiles(folder.path);
    for (const QString& file : files) {
      loadFile(file);
    }
  }
}

void ModuleSet::loadFile(const QString& file) {
  const QString fileName = QFileInfo(file).fileName();
  const auto earlier = std::find_if(modules_.cbegin(), modules_.cend(), [&](const Module& module) {
    return QFileInfo(module.file).fileName() == fileName;
  });
  if (earlier != modules_.cend()) {
    ModuleRecord record;
    record.state = ModuleRecord::State::skipped;
    record.file = file;
    record.reason = tr("%1 is loaded already").arg(QDir::toNativeSeparators(earlier->file));
    qCInfo(logHost) << "skipped" << file << ":" << record.reason;
    records_.push_back(record);
    return;
  }
  const QString refusal = refusalBeforeLoading(file);
  if (!refusal.isEmpty()) {
    refuse(file, refusal);
    return;
  }
  auto loader = std::make_unique<QPluginLoader>(file);
  // All symbols now: one that is missing is a refusal here and not the end of the program later. The code stays in
  // memory, because libraries that a module brings along register things with the toolkit and are not made to go.
  loader->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
  QObject* instance = nullptr;
  guarded(file, "the plug-in's entry", [&] { instance = loader->instance(); });
  if (instance == nullptr) {
    refuse(file, tr("it cannot be loaded (%1)").arg(loader->errorString()));
    return;
  }
  auto* root = qobject_cast<ModuleInterface*>(instance);
  if (root == nullptr) {
    const QString className = QString::fromLatin1(instance->metaObject()->className());
    loader->unload();  // destroys the root object
    refuse(file, tr("its root object (%1) is no module").arg(className));
    return;
  }
  Module module;
  module.file = file;
  module.loader = std::move(loader);
  module.root = root;
  ModuleRecord record;
  record.state = ModuleRecord::State::loaded;
  record.file = file;
  guarded(file, "get_module_name", [&] { record.name = root->get_module_name(); });
  guarded(file, "get_module_version", [&] { record.version = root->get_module_version(); });
  if (record.name.trimmed().isEmpty()) {
    record.name = fileName;
  }
  qCInfo(logHost) << "loaded" << record.name << record.version << file;
  modules_.push_back(std::move(module));
  records_.push_back(record);
}

void ModuleSet::refuse(const QString& file, const QString& reason) {
  ModuleRecord record;
  record.state = ModuleRecord::State::refused;
  record.file = file;
  record.reason = reason;
  records_.push_back(record);
  qCWarning(logHost).noquote() << "refused" << file << "-" << reason;
  if (report_) {
    report_(tr("The module %1 was refused: %2").arg(QDir::toNativeSeparators(file), reason));
  }
}

void ModuleSet::guarded(const QString& file, const char* operation, const std::function<void()>& call) {
  QString thrown;
  try {
    call();
    return;
  } catch (const std::exception& error) {
    thrown = QString::fromLocal8Bit(error.what());
  } catch (...) {
    thrown = tr("of unknown kind");
  }
  qCWarning(logHost) << file << "threw in" << operation << ":" << thrown;
  if (report_) {
    report_(tr("The module %1 failed in %2: exception %3")
                .arg(QFileInfo(file).fileName(), QString::fromLatin1(operation), thrown));
  }
}

void ModuleSet::handOver(IOManager* channel, QWidget* parent, BackendVersions* versions, bool observerMode) {
  for (Module& module : modules_) {
    guarded(module.file, "set_param", [&] {
      module.root->set_param(QStringLiteral("CommandManager"), QVariant::fromValue(channel));
      module.root->set_param(QStringLiteral("ModuleParent"), QVariant::fromValue(parent));
      module.root->set_param(QStringLiteral("BackendVersions"), QVariant::fromValue(versions));
      module.root->set_param(QStringLiteral("ObserverMode"), QVariant(observerMode));
    });
  }
}

QList<_GuiElement*> ModuleSet::takeGuiElements() {
  QList<_GuiElement*> all;
  for (Module& module : modules_) {
    QList<_GuiElement*> elements;
    guarded(module.file, "get_gui_elements", [&] { elements = module.root->get_gui_elements(); });
    for (_GuiElement* element : qAsConst(elements)) {
      if (element == nullptr || element->action == nullptr) {
        const QString text = tr("The module %1 gave a menu entry without an action").arg(module.file);
        qCWarning(logHost).noquote() << text;
        if (report_) {
          report_(text);
        }
      }
      if (element != nullptr) {
        module.widgets.emplace_back(element->widget);
        all += element;
      }
    }
  }
  return all;
}

void ModuleSet::shutdown() {
  std::vector<Module> leaving = std::move(modules_);
  modules_.clear();
  std::reverse(leaving.begin(), leaving.end());
  for (Module& module : leaving) {
    guarded(module.file, "about_to_exit_module", [&] { module.root->about_to_exit_module(); });
  }
  for (Module& module : leaving) {
    guarded(module.file, "exit_module", [&] { module.root->exit_module(); });
  }
  // What the modules left to be deleted later goes now, while everything it may refer to is still there.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  for (Module& module : leaving) {
    destroy(module);
  }
}

void ModuleSet::destroy(Module& module) {
  const bool dialogLeft = std::any_of(module.widgets.cbegin(), module.widgets.cend(),
                                      [](const QPointer<QWidget>& widget) { return !widget.isNull(); });
  if (dialogLeft) {
    qCWarning(logHost) << module.file << "left its dialog behind and is therefore kept";
    keptLoaders().push_back(std::move(module.loader));
    return;
  }
  const QPointer<QObject> instance = module.loader->instance();
  module.loader->unload();  // destroys the root object
  // It does not when another loader of this process has the file open as well; the module's time is over all the same.
  delete instance.data();
}

}  // namespace korvex2
