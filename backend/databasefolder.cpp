// See databasefolder.h.
#include "databasefolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "bodydatabase.h"

namespace korvex2 {

QString userDatabaseFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/database");
}

QString shippedDataFolder(const QString& programFolder) {
  for (const QString& folder :
       {programFolder + QStringLiteral("/" KORVEX2_DATA_FROM_PROGRAM), QStringLiteral(KORVEX2_SOURCE_DATA)}) {
    const QString clean = QDir::cleanPath(folder);  // also where the program's folder is named but not there
    if (QFileInfo(clean).isDir()) {
      return clean;
    }
  }
  return {};
}

QString shippedTrajectory(const QString& shipped) {
  return shipped.isEmpty() ? QString() : QDir(shipped).filePath(QStringLiteral("trajectories/handheld_xyz.tum"));
}

QString prepareDatabaseFolder(const QString& folder, const QString& shipped) {
  if (!shipped.isEmpty()) {
    return copyShippedDatabase(shipped, folder);
  }
  if (QFileInfo(folder).isDir()) {
    return {};
  }
  return QCoreApplication::translate(
      "DatabaseFolder", "The bodies that come with the program were not found; there are none to begin with");
}

}  // namespace korvex2
