// Reads and replaces files as a whole.
#include "wholefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace korvex2 {

namespace {

const qint64 largestFile = qint64(4) * 1024 * 1024;

QString reading(const QString& path, const QString& reason) {
  return QStringLiteral("%1, line 1: %2").arg(QDir::toNativeSeparators(path), reason);
}

#ifdef Q_OS_UNIX
// Whether everything written reached the disk. A file system that cannot tell is taken at its word.
bool sync(int handle) { return ::fsync(handle) == 0 || errno == EINVAL || errno == ENOTSUP; }

// A renamed file outlives a power failure only once its folder is on the disk, too.
void syncFolder(const QString& path) {
  const int folder = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    sync(folder);
    ::close(folder);
  }
}
#else
bool sync(int) { return true; }
void syncFolder(const QString&) {}
#endif

}  // namespace

FileContent readWholeFile(const QString& path) {
  const QFileInfo info(path);
  if (!info.exists()) {
    return {QByteArray(), reading(path, QStringLiteral("the file is missing"))};
  }
  // A pipe or a device in the place of a file could keep the reader waiting for ever.
  if (!info.isFile() || info.size() > largestFile) {
    return {QByteArray(), reading(path, QStringLiteral("this is no file of a sensible size"))};
  }
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    return {QByteArray(), reading(path, file.errorString())};
  }
  const QByteArray bytes = file.read(largestFile);
  if (file.error() != QFileDevice::NoError) {
    return {QByteArray(), reading(path, file.errorString())};
  }
  return {bytes, QString()};
}

QString writeWholeFile(const QString& path, const QByteArray& bytes) {
  QSaveFile file(path);
  // Unbuffered, because commit() does not notice when emptying a buffer fails and would put a cut-off file in place.
  bool complete = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
  QString reason = file.errorString();
  if (complete && (file.write(bytes) != bytes.size() || !sync(file.handle()))) {
    complete = false;
    reason = QStringLiteral("the disk did not take all of it");
  } else if (complete) {
    complete = file.commit();
    reason = file.errorString();
  }
  if (complete) {
    syncFolder(QFileInfo(path).absolutePath());
    return QString();
  }
  return QStringLiteral("%1 could not be written: %2").arg(QDir::toNativeSeparators(path), reason);
}

}  // namespace korvex2
