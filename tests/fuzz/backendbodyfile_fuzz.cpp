// Fuzz target: the backend's reader of body files; what was read and is written again reads the same.
#include <algorithm>
#include <cmath>

#include "bodydatabase.h"
#include "bodyfileformat.h"
#include "fuzztarget.h"

using korvex2::BodyDatabase;
using korvex2::BodyFileContent;
using korvex2::BodyGeometry;

namespace {

/// Longer than any message with its at most 20 characters from the file.
constexpr int longestProblem = 200;

bool isSame(const BodyGeometry& a, const BodyGeometry& b) {
  return a.positions == b.positions && a.lines == b.lines && a.text == b.text && a.rest == b.rest;
}

/// @return what was wrong, empty when nothing
std::string checkProblem(const BodyFileContent& content, const std::string& bytes) {
  const auto lineEnds = std::count(bytes.begin(), bytes.end(), '\n');
  if (content.line < 1 || content.line > lineEnds + 1) {
    return "the problem is told of a line that is not there";
  }
  return content.problem.size() <= longestProblem ? std::string() : "the message is too long";
}

std::string checkGeometry(const BodyGeometry& geometry) {
  const std::size_t markers = geometry.positions.size();
  if (markers == 1 || markers > static_cast<std::size_t>(BodyDatabase::mostMarkers)) {
    return "an impossible number of markers was accepted";
  }
  for (const korvex2::Vector3& position : geometry.positions) {
    for (const double value : position) {
      if (!(std::fabs(value) <= BodyDatabase::largestCoordinate)) {
        return "a coordinate out of range was accepted";
      }
    }
  }
  for (const korvex2::BodyLine& line : geometry.lines) {
    if (line.from < 0 || line.to < 0 || line.from == line.to ||
        static_cast<std::size_t>(std::max(line.from, line.to)) >= markers) {
      return "a line that does not join two markers was accepted";
    }
  }
  return {};
}

/// A body that asks for at least three markers reads the same, or is refused for their number.
std::string checkFewest(const BodyFileContent& content, const QByteArray& bytes) {
  constexpr int fewest = 3;
  const BodyFileContent strict = korvex2::parseBodyFile(bytes, fewest);
  if (!content.problem.isEmpty()) {
    return strict.problem.isEmpty() ? "asking for more markers made a bad file good" : std::string();
  }
  const bool enough = content.geometry.positions.size() >= static_cast<std::size_t>(fewest);
  if (strict.problem.isEmpty() != enough) {
    return "the fewest markers are not kept to";
  }
  return !enough || isSame(strict.geometry, content.geometry) ? std::string() : "asking for markers changed the body";
}

}  // namespace

int fuzzOne(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzzText(data, size);
  const QByteArray bytes = QByteArray::fromStdString(text);
  const BodyFileContent content = korvex2::parseBodyFile(bytes);
  std::string problem = checkFewest(content, bytes);
  if (problem.empty()) {
    problem = content.problem.isEmpty() ? checkGeometry(content.geometry) : checkProblem(content, text);
  }
  if (!problem.empty()) {
    return fuzzProblem(problem);
  }
  if (!content.problem.isEmpty()) {
    return 0;
  }
  const QByteArray written = korvex2::bodyFileBytes(content.geometry);
  const BodyFileContent again = korvex2::parseBodyFile(written);
  if (!again.problem.isEmpty()) {
    return fuzzProblem("what was written cannot be read: " + again.problem.toStdString());
  }
  if (!isSame(again.geometry, content.geometry)) {
    return fuzzProblem("the body changed by writing");
  }
  return korvex2::bodyFileBytes(again.geometry) == written ? 0 : fuzzProblem("the second writing differs");
}
