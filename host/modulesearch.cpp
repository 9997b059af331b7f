// See modulesearch.h.
#include "modulesearch.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QStandardPaths>

#include "moduleinterface.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ModuleSearch", text); }

void addFolder(std::vector<ModuleFolder>& folders, const QString& path, bool requested) {
  if (path.isEmpty()) {
    return;
  }
  const QString absolute = QDir::cleanPath(QDir(path).absolutePath());
  const auto identity = [](const QString& folder) {
    const QString canonical = QFileInfo(folder).canonicalFilePath();  // empty when it does not exist
    return canonical.isEmpty() ? folder : canonical;
  };
  const bool known = std::any_of(folders.cbegin(), folders.cend(), [&](const ModuleFolder& folder) {
    return identity(folder.path) == identity(absolute);
  });
  if (!known) {
    folders.push_back({absolute, requested});
  }
}

QString refusalOfInterface(const QString& iid) {
  const QString expected = QStringLiteral(KORVEX2_MODULE_INTERFACE_IID);
  if (iid == expected) {
    return {};
  }
  const QString family = expected.left(expected.lastIndexOf(QLatin1Char('/')) + 1);
  if (iid.startsWith(family)) {
    return tr("it was built for version %1 of the module interface, this program has version %2")
        .arg(iid.mid(family.size()), expected.mid(family.size()));
  }
  return tr("it is a plug-in of another program (interface \"%1\")").arg(iid);
}

/// `version` as the toolkit writes it into a plug-in: 0x050f08 for 5.15.8.
QString refusalOfToolkit(int version) {
  const int major = (version >> 16) & 0xff;
  const int minor = (version >> 8) & 0xff;
  if (major == QT_VERSION_MAJOR && minor <= QT_VERSION_MINOR) {
    return {};
  }
  return tr("it was built with Qt %1.%2, this program runs with Qt %3")
      .arg(major)
      .arg(minor)
      .arg(QString::fromLatin1(qVersion()));
}

}  // namespace

ModuleSearch ModuleSearch::ofThisProgram(const QString& pluginDir) {
  ModuleSearch search;
  search.pluginDir = pluginDir;
  search.environment = qEnvironmentVariable("KORVEX2_MODULE_PATH");
  search.programFolder = QCoreApplication::applicationDirPath();
  search.userData = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  return search;
}

std::vector<ModuleFolder> moduleFolders(const ModuleSearch& search) {
  std::vector<ModuleFolder> folders;
  if (!search.pluginDir.isEmpty()) {
    addFolder(folders, search.pluginDir, true);
    return folders;
  }
  const QStringList named = search.environment.split(QDir::listSeparator(), Qt::SkipEmptyParts);
  for (const QString& path : named) {
    addFolder(folders, path.trimmed(), true);
  }
  if (!search.programFolder.isEmpty()) {
    addFolder(folders, search.programFolder + QStringLiteral("/../modules"), false);
  }
  if (!search.userData.isEmpty()) {
    addFolder(folders, search.userData + QStringLiteral("/modules"), false);
  }
  if (!search.programFolder.isEmpty()) {
    addFolder(folders, search.programFolder + QStringLiteral("/" KORVEX2_MODULES_FROM_PROGRAM), false);
  }
  return folders;
}

QStringList libraryFiles(const QString& folder) {
  QStringList files;
  const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files | QDir::System, QDir::Name);
  for (const QFileInfo& entry : entries) {
    if (QLibrary::isLibrary(entry.fileName())) {
      files += entry.absoluteFilePath();
    }
  }
  return files;
}

QString refusalBeforeLoading(const QString& file) {
  const QFileInfo info(file);
  if (!info.exists()) {
    return info.isSymLink() ? tr("it is a link to a file that does not exist") : tr("the file does not exist");
  }
  if (!info.isFile()) {
    return tr("it is not a file");
  }
  if (!info.isReadable()) {
    return tr("it may not be read");
  }
  if (info.size() == 0) {
    return tr("the file is empty");
  }
  const QPluginLoader loader(file);
  const QJsonObject metadata = loader.metaData();
  if (metadata.isEmpty()) {
    return tr("it is no plug-in, or a broken one (%1)").arg(loader.errorString());
  }
  const QString toolkit = refusalOfToolkit(metadata.value(QLatin1String("version")).toInt());
  return toolkit.isEmpty() ? refusalOfInterface(metadata.value(QLatin1String("IID")).toString()) : toolkit;
}

}  // namespace korvex2
