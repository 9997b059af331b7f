// See bodyexchange.h.
#include "bodyexchange.h"

#include <QDir>
#include <QFileInfo>

#include "bodyfileformat.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

// The file that writing to `path` replaces: links are followed, as the writer does.
QFileInfo targetOf(const QString& path) {
  constexpr int mostLinks = 40;
  QFileInfo target(path);
  for (int links = 0; target.isSymLink() && links < mostLinks; ++links) {
    target = QFileInfo(target.symLinkTarget());
  }
  return target;
}

bool isInside(const QFileInfo& file, const QString& folder) {
  const QString outer = QDir(folder).canonicalPath();
  const QString inner = file.absoluteDir().canonicalPath();
  return !outer.isEmpty() && (inner == outer || inner.startsWith(outer + QLatin1Char('/')));
}

}  // namespace

ImportableBody readImportableBody(const QString& path) {
  const FileContent file = readWholeFile(path);
  if (!file.problem.isEmpty()) {
    return {BodyGeometry(), file.problem};
  }
  BodyFileContent content = parseBodyFile(file.bytes, BodyDatabase::fewestMarkers);
  if (!content.problem.isEmpty()) {
    return {BodyGeometry(), QStringLiteral("%1, line %2: %3")
                                .arg(QDir::toNativeSeparators(path), QString::number(content.line), content.problem)};
  }
  return {std::move(content.geometry), QString()};
}

QString exportBody(const BodyDatabase& database, const BodyKey& key, const QString& path) {
  const Body* const body = database.find(key);
  if (body == nullptr) {
    return QStringLiteral("there is no such body");
  }
  if (body->markers.empty()) {
    return QStringLiteral("the body has no markers");
  }
  const QFileInfo target = targetOf(path);
  if (isInside(target, database.folder())) {
    return QStringLiteral("%1 lies in the folder of the body database").arg(QDir::toNativeSeparators(path));
  }
  return writeBodyFile(path, bodyFileBytes(geometryOf(*body)));
}

QString writeBodyFile(const QString& path, const QByteArray& bytes) {
  const QFileInfo target = targetOf(path);
  if (target.exists() && !target.isFile()) {
    return QStringLiteral("%1 is no file").arg(QDir::toNativeSeparators(path));
  }
  return writeWholeFile(path, bytes);
}

}  // namespace korvex2
