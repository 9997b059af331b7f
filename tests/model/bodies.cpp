// See bodies.h.
#include "bodies.h"

#include <QFile>

#include <fstream>
#include <sstream>

SignalLog::SignalLog(abcBody& body) {
  QObject::connect(&body, &abcBody::bodyLoaded, &body,
                   [this](bool loaded) { log_.push_back(loaded ? "loaded 1" : "loaded 0"); });
  QObject::connect(&body, &abcBody::bodyModified, &body,
                   [this](bool modified) { log_.push_back(modified ? "modified 1" : "modified 0"); });
}

std::vector<std::string> SignalLog::take() {
  std::vector<std::string> taken;
  taken.swap(log_);
  return taken;
}

QString Folder::file(const QString& name, const std::string& content) const {
  const QString path = folder_.filePath(name);
  std::ofstream out(QFile::encodeName(path).constData(), std::ios::binary);
  out << content;
  out.close();
  EXPECT_TRUE(out.good()) << "cannot write " << qPrintable(path);
  return path;
}

std::string contentOf(const QString& path) {
  std::ifstream in(QFile::encodeName(path).constData(), std::ios::binary);
  EXPECT_TRUE(in.is_open()) << "cannot read " << qPrintable(path);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

std::vector<bsVector> row(unsigned int count) {
  std::vector<bsVector> positions;
  for (unsigned int i = 0; i < count; ++i) {
    positions.emplace_back(10.0 * i, 0.0, 0.0);
  }
  return positions;
}

void setPending(abcBody& body, const bsVector& position, double degrees, const bsVector& axis) {
  body.setImmediatePosition(position);
  body.setImmediateOrientation(bsQuaternion(degrees, axis));
}

testing::AssertionResult samePositions(const std::vector<bsVector>& actual, const std::vector<bsVector>& expected) {
  if (actual.size() != expected.size()) {
    return testing::AssertionFailure() << actual.size() << " positions, expected " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (actual[i] != expected[i]) {
      return testing::AssertionFailure() << "position " << i << " is (" << actual[i].x << ", " << actual[i].y << ", "
                                         << actual[i].z << "), expected (" << expected[i].x << ", " << expected[i].y
                                         << ", " << expected[i].z << ")";
    }
  }
  return testing::AssertionSuccess();
}
