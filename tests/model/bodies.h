// Bodies, files and signal records for the tests of the model.
#ifndef KORVEX2_TESTS_BODIES_H
#define KORVEX2_TESTS_BODIES_H

#include <gtest/gtest.h>

#include <QString>
#include <QTemporaryDir>

#include <string>
#include <vector>

#include "abcBody.h"

/// Keeps a body's signals in order: "loaded 1", "modified 0".
class SignalLog {
 public:
  explicit SignalLog(abcBody& body);
  /// Signals since the last call.
  std::vector<std::string> take();

 private:
  std::vector<std::string> log_;
};

/// A folder of its own for a test's files, gone with it.
class Folder {
 public:
  QString path(const QString& name) const { return folder_.filePath(name); }
  /// Writes the file, byte for byte, and returns its path.
  QString file(const QString& name, const std::string& content) const;

 private:
  QTemporaryDir folder_;
};

/// Content of a file, byte for byte.
std::string contentOf(const QString& path);

/// Positions 10 mm apart along x.
std::vector<bsVector> row(unsigned int count);

/// Sets the pending change: turned by `degrees` about `axis`, then moved to `position`.
void setPending(abcBody& body, const bsVector& position, double degrees = 0.0,
                const bsVector& axis = bsVector(0, 0, 1));

/// Whether the vectors are equal position by position, within the vectors' own tolerance.
testing::AssertionResult samePositions(const std::vector<bsVector>& actual, const std::vector<bsVector>& expected);

#endif
