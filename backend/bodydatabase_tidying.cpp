// Removes what a program that was killed in the middle of a change left in the database folder.
#include "bodydatabase.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>

#include "bodyfileformat.h"
#include "ownfiles.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

const QString& catalogueName() {
  static const QString name = QStringLiteral("catalogue.json");
  return name;
}

QFileInfoList plainFiles(const QString& folder) {
  return QDir(folder).entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Name);
}

// Whether the database itself could have written these bytes. Anything else was put there, or edited, by somebody.
bool isAsWritten(const QString& path) {
  const FileContent file = readWholeFile(path);
  if (!file.problem.isEmpty()) {
    return false;
  }
  const BodyFileContent content = parseBodyFile(file.bytes);
  return content.problem.isEmpty() && bodyFileBytes(content.geometry) == file.bytes;
}

}  // namespace

// A body file goes only if it is known to be superseded, or never to have become valid. Of a body that the catalogue
// does not list it may be all that is left; and a later one than the catalogue names is what remains of somebody's work
// where an older catalogue was put back.
bool BodyDatabase::isLeftOver(const QFileInfo& file) const {
  const OwnFileName name = parseOwnFileName(file.fileName());
  const Body* const body = name.generation == 0 ? nullptr : find(name.key);
  if (body == nullptr || !isAsWritten(file.filePath())) {
    return false;
  }
  const int current = generationOf(name.key, body->file);
  if (name.generation < current) {
    return true;
  }
  // Never became valid: a change that this catalogue did not live to see took the next free number.
  for (int generation = current + 1; generation < name.generation; ++generation) {
    if (!QFileInfo::exists(bodyPath(ownFileName(name.key, generation)))) {
      return false;
    }
  }
  const QDateTime placed = QFileInfo(cataloguePath()).metadataChangeTime();  // not how old the catalogue is itself
  return placed.isValid() && file.lastModified() >= placed;
}

void BodyDatabase::tidyUp() {
  if (!lock_->isLocked() || !problems_.isEmpty() || QFileInfo(cataloguePath()).isSymLink()) {
    return;
  }
  for (const QFileInfo& file : plainFiles(folder_)) {
    if (replacedByTemporary(file.fileName()) == catalogueName()) {
      QFile::remove(file.filePath());
    }
  }
  const QFileInfo bodiesFolder(bodyPath(QString()).chopped(1));
  if (!bodiesFolder.isDir() || bodiesFolder.isSymLink()) {
    return;
  }
  // Fields of others may name files as well, and a file system may take no notice of capitals.
  const QString catalogue = QString::fromUtf8(QJsonDocument(catalogue_).toJson());
  QStringList leftOver;
  for (const QFileInfo& file : plainFiles(bodiesFolder.filePath())) {
    const OwnFileName replaced = parseOwnFileName(replacedByTemporary(file.fileName()));
    const bool isTemporary = replaced.generation != 0 && find(replaced.key) != nullptr;
    if (!catalogue.contains(file.fileName(), Qt::CaseInsensitive) && (isTemporary || isLeftOver(file))) {
      leftOver.append(file.filePath());
    }
  }
  for (const QString& file : leftOver) {
    QFile::remove(file);
  }
}

}  // namespace korvex2
