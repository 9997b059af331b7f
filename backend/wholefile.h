// Reads and replaces files as a whole.
#ifndef KORVEX2_BACKEND_WHOLEFILE_H
#define KORVEX2_BACKEND_WHOLEFILE_H

#include <QByteArray>
#include <QString>

namespace korvex2 {

/// Content of a file; when `problem` is not empty, why there is none: "FILE, line 1: what is wrong".
struct FileContent {
  QByteArray bytes;
  QString problem;
};

/// Reads a file of at most 4 MiB; pipes, devices and folders are refused before they are opened.
FileContent readWholeFile(const QString& path);

/// Replaces a file, or makes it: afterwards it holds all the bytes and is on the disk, or it is what it was before.
/// Returns an empty text, or what went wrong: "FILE could not be written: reason".
QString writeWholeFile(const QString& path, const QByteArray& bytes);

}  // namespace korvex2

#endif
