// Module files for tests: good ones copied where a test wants them, and broken ones made from them.
#ifndef KORVEX2_TESTS_MODULEFILES_H
#define KORVEX2_TESTS_MODULEFILES_H

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <vector>

#include "modulesearch.h"

/// A temporary folder to put module files into.
class ModuleFiles {
 public:
  QString path(const QString& name = {}) const { return name.isEmpty() ? folder_.path() : folder_.filePath(name); }
  std::vector<korvex2::ModuleFolder> folders() const { return {{folder_.path(), true}}; }

  /// Copies the test plug-in `module` ("alphamodule") to `name`, "libalphamodule.so" unless given.
  QString copy(const QString& module, const QString& name = {}) const {
    const QString original = QStringLiteral(TEST_MODULES_FOLDER "/lib%1.so").arg(module);
    const QString target = path(name.isEmpty() ? QStringLiteral("lib%1.so").arg(module) : name);
    EXPECT_TRUE(QDir().mkpath(QFileInfo(target).path()));
    EXPECT_TRUE(QFile::copy(original, target)) << original.toStdString() << " to " << target.toStdString();
    return target;
  }
  QString write(const QString& name, const QByteArray& content) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(content), content.size());
    return file.fileName();
  }
  static QByteArray read(const QString& file) {
    QFile source(file);
    EXPECT_TRUE(source.open(QIODevice::ReadOnly));
    return source.readAll();
  }
  /// The module cut off after a part of its bytes.
  QString truncated(const QString& module, double part, const QString& name) const {
    const QByteArray whole = read(QStringLiteral(TEST_MODULES_FOLDER "/lib%1.so").arg(module));
    return write(name, whole.left(static_cast<int>(whole.size() * part)));
  }
  /// The module with another toolkit version in its metadata: the bytes behind the mark "QTMETADATA !" are the
  /// metadata's own version, then the toolkit's major and minor number.
  QString builtWithToolkit(const QString& module, char major, char minor, const QString& name) const {
    QByteArray whole = read(QStringLiteral(TEST_MODULES_FOLDER "/lib%1.so").arg(module));
    const QByteArray mark("QTMETADATA !");
    const int at = whole.lastIndexOf(mark);
    EXPECT_GE(at, 0) << "no metadata in " << module.toStdString();
    whole[at + mark.size() + 1] = major;
    whole[at + mark.size() + 2] = minor;
    return write(name, whole);
  }

 private:
  QTemporaryDir folder_;
};

#endif
