// Fuzz target: the module's reader of body files; what was read and is written again reads the same.
#include <QBuffer>

#include <cmath>
#include <limits>
#include <sstream>

#include "bodyfile.h"
#include "fuzztarget.h"

using korvex2::BodyFileData;
using korvex2::BodyFileError;
using korvex2::BodyFileResult;

namespace {

/// A coordinate has six significant digits in a file: off by half of the sixth digit at most. The last term is the
/// distance of the smallest doubles, which have fewer digits.
bool isWrittenAs(double value, double written) {
  return std::fabs(value - written) <= 5e-6 * std::fabs(value) + std::numeric_limits<double>::denorm_min();
}

/// @return what was wrong, empty when nothing
std::string checkFailure(const BodyFileResult& result) {
  if (result.error == BodyFileError::Open || result.error == BodyFileError::End) {
    return "an error that reading a stream cannot have";
  }
  const bool numbered = result.error == BodyFileError::Position || result.error == BodyFileError::Line;
  return numbered == (result.number > 0) ? std::string() : "an error with a number that it does not have";
}

std::string checkContent(const BodyFileData& content) {
  if (content.positions.size() == 1) {
    return "a body of one marker was accepted";
  }
  for (const bsVector& p : content.positions) {
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
      return "a position that is not finite was accepted";
    }
  }
  for (const auto& [first, second] : content.lines) {
    if (first >= content.positions.size() || second >= content.positions.size()) {
      return "a line to no marker was accepted";
    }
  }
  const std::string end = "# Lines\n";
  const std::string otherEnd = "# Lines\r\n";
  const auto endsWith = [&content](const std::string& tail) {
    return content.text.size() >= tail.size() &&
           content.text.compare(content.text.size() - tail.size(), tail.size(), tail) == 0;
  };
  return endsWith(end) || endsWith(otherEnd) ? std::string() : "the text does not end with the header of the lines";
}

std::string checkSame(const BodyFileData& before, const BodyFileData& after) {
  if (after.text != before.text || after.lines != before.lines || after.positions.size() != before.positions.size()) {
    return "text, lines or number of markers changed by writing";
  }
  for (std::size_t i = 0; i < before.positions.size(); ++i) {
    const bsVector& a = before.positions[i];
    const bsVector& b = after.positions[i];
    if (!isWrittenAs(a.x, b.x) || !isWrittenAs(a.y, b.y) || !isWrittenAs(a.z, b.z)) {
      return "a position changed by writing";
    }
  }
  return {};
}

BodyFileResult read(const std::string& text, BodyFileData& content) {
  std::istringstream in(text);
  return korvex2::readBody(in, content);
}

bool write(const BodyFileData& content, std::string& text) {
  QBuffer buffer;
  const bool written = buffer.open(QIODevice::WriteOnly) && static_cast<bool>(korvex2::writeBody(buffer, content));
  text = buffer.data().toStdString();
  return written;
}

}  // namespace

int fuzzOne(const std::uint8_t* data, std::size_t size) {
  BodyFileData content;
  const BodyFileResult result = read(fuzzText(data, size), content);
  if (!result) {
    const std::string problem = checkFailure(result);
    return problem.empty() ? 0 : fuzzProblem(problem);
  }
  std::string problem = checkContent(content);
  if (!problem.empty()) {
    return fuzzProblem(problem);
  }
  std::string written;
  BodyFileData again;
  if (!write(content, written) || !read(written, again)) {
    return fuzzProblem("what was read cannot be written and read again");
  }
  problem = checkSame(content, again);
  if (!problem.empty()) {
    return fuzzProblem(problem);
  }
  std::string rewritten;
  return write(again, rewritten) && rewritten == written ? 0 : fuzzProblem("the second writing differs from the first");
}
