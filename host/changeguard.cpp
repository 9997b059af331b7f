// See changeguard.h.
#include "changeguard.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include <QByteArrayList>
#include <QCoreApplication>

#include "backendconnection.h"
#include "channeltext.h"

namespace korvex2 {

namespace {

constexpr int unknownCommand = 2;
constexpr int changedMeanwhile = 11;

QString tr(const char* text) { return QCoreApplication::translate("HostChannel", text); }

/// The first words of a line, empty ones where there are no more. However many blanks are between: that is how the
/// backend reads it. They live as long as the line does.
using Words = std::array<std::string_view, 6>;

Words wordsOf(const QByteArray& line) {
  Words words;
  const std::string_view text(line.constData(), static_cast<std::size_t>(line.size()));
  std::size_t end = 0;
  for (std::string_view& word : words) {
    const std::size_t begin = text.find_first_not_of(' ', end);
    if (begin == std::string_view::npos) {
      break;
    }
    end = std::min(text.find(' ', begin), text.size());
    word = text.substr(begin, end - begin);
  }
  return words;
}

enum class Kind { other, beginsReading, goesOnReading, changes };

/// What a line does with a body's markers, and which word names the body's type; the one behind it is its number.
struct Meaning {
  Kind kind = Kind::other;
  std::size_t type = 0;
};

Meaning meaningOf(const Words& words) {
  const bool isMarkerValue = words[3] == "marker" || words[3] == "marker_emission";
  if (words[0] != "korvex2") {
    return {};
  }
  if (words[1] == "body" && (words[2] == "transform" || words[2] == "delete_marker")) {
    return {Kind::changes, 3};
  }
  if (words[2] != "body") {
    return {};
  }
  if (words[1] == "get" && (isMarkerValue || words[3] == "number_of_marker")) {
    return {isMarkerValue ? Kind::goesOnReading : Kind::beginsReading, 4};
  }
  if (words[1] == "set" && (isMarkerValue || words[3] == "number_of_marker" || words[3] == "file")) {
    return {Kind::changes, 4};
  }
  return {};
}

/// The body that two words name; nothing when they do not, the backend will say so.
std::optional<std::pair<QByteArray, int>> bodyOf(const Words& words, std::size_t place) {
  const std::string_view type = words[place];
  const std::string_view number = words[place + 1];
  int value = 0;
  if (type.empty() || number.size() < 2 || number.front() != 'b') {
    return std::nullopt;
  }
  const char* const last = number.data() + number.size();
  const auto [end, error] = std::from_chars(number.data() + 1, last, value);
  if (error != std::errc() || end != last) {
    return std::nullopt;
  }
  return std::make_pair(QByteArray(type.data(), static_cast<int>(type.size())), value);
}

QByteArray textOf(const std::pair<QByteArray, int>& body) {
  return body.first + " b" + QByteArray::number(body.second).rightJustified(2, '0');
}

bool isErrorNumber(const QByteArray& answer, int number) {
  const QByteArray refusal = "korvex2 err " + QByteArray::number(number);
  return answer == refusal || answer.startsWith(refusal + ' ');
}

bool isValue(const QByteArray& answer) { return answer.startsWith("korvex2 set "); }

}  // namespace

bool ChangeGuard::exchange(BackendConnection& connection, const QByteArray& line, QByteArray& answer, QString& told) {
  const Words words = wordsOf(line);
  const Meaning meaning = meaningOf(words);
  if (meaning.kind == Kind::other || meaning.kind == Kind::goesOnReading) {
    const bool answered = connection.exchange(line, answer);
    if (meaning.kind == Kind::goesOnReading && !(answered && isValue(answer))) {
      readingBrokeOff(bodyOf(words, meaning.type));
    }
    return answered;
  }
  const std::optional<Body> body = bodyOf(words, meaning.type);
  if (body && meaning.kind == Kind::beginsReading) {
    return beginReading(connection, *body, line, answer);
  }
  const auto noted = body ? notes_.find(*body) : notes_.end();
  return noted == notes_.end() ? connection.exchange(line, answer) : change(connection, noted, line, answer, told);
}

bool ChangeGuard::beginReading(BackendConnection& connection, const Body& body, const QByteArray& line,
                               QByteArray& answer) {
  const QByteArray question = "body state " + textOf(body);
  const QByteArrayList answers = connection.exchangeTogether({"korvex2 get " + question, line});
  if (answers.size() < 2) {
    return false;  // the module goes on with what it had read before
  }
  answer = answers[1];
  const QByteArray said = withoutLineEnd(answers[0]);
  const std::optional<QByteArray> state = valueAfter("korvex2 set " + question, said);
  if (isErrorNumber(said, unknownCommand)) {
    notes_.clear();  // a backend that tells no states
  } else if (isRefusal(said)) {
    notes_.erase(body);
  } else if (state && !state->isEmpty() && isValue(answer)) {
    const auto noted = notes_.find(body);
    if (noted == notes_.end()) {
      notes_[body].state = *state;
    } else {
      noted->second = {*state, noted->second.state};
    }
  }
  return true;
}

void ChangeGuard::readingBrokeOff(const std::optional<Body>& body) {
  const auto noted = body ? notes_.find(*body) : notes_.end();
  if (noted != notes_.end() && !noted->second.before.isEmpty()) {
    noted->second = {noted->second.before, QByteArray()};
  }
}

bool ChangeGuard::change(BackendConnection& connection, Notes::iterator noted, const QByteArray& line,
                         QByteArray& answer, QString& told) {
  const QByteArray expectation = "body expect " + textOf(noted->first);
  const QByteArray beginning = "korvex2 " + expectation + ' ';
  // The expectation ends with the change: on the same connection there are changes that are nobody's reading, imports.
  const QByteArrayList answers = connection.exchangeTogether(
      {beginning + noted->second.state, line, "korvex2 get " + expectation, beginning + "none"});
  if (answers.size() < 2) {
    return false;
  }
  answer = answers[1];
  const QByteArray said = withoutLineEnd(answer);
  const QByteArray made = answers.size() > 2 ? withoutLineEnd(answers[2]) : QByteArray();
  if (isErrorNumber(answers[0], unknownCommand) || isErrorNumber(made, unknownCommand)) {
    notes_.clear();  // a backend without expectations, or with others
  } else if (said == "korvex2 ok") {
    const std::optional<QByteArray> state = valueAfter("korvex2 set " + expectation, made);
    if (state && !state->isEmpty() && *state != "none") {
      noted->second = {*state, QByteArray()};
    }
  } else if (isErrorNumber(said, changedMeanwhile) && !noted->second.told) {
    noted->second.told = true;
    told = tr("The markers of %1 were changed since they were read: by another program, or by a command whose answer "
              "was lost. Read them again before you change them: choose another body and then this one, or close the "
              "dialog and open it again.")
               .arg(QString::fromUtf8(textOf(noted->first)));
  }
  return true;
}

}  // namespace korvex2
