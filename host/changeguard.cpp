// See changeguard.h.
#include "changeguard.h"

#include <algorithm>
#include <optional>

#include <QCoreApplication>
#include <QList>

#include "backendconnection.h"
#include "channeltext.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("HostChannel", text); }

/// Reading a body begins with this question.
const QByteArray reading = QByteArrayLiteral("korvex2 get body number_of_marker ");
/// Changes that build on what was read.
const QByteArray relative[] = {QByteArrayLiteral("korvex2 body transform "),
                               QByteArrayLiteral("korvex2 body delete_marker ")};
/// Changes that say themselves what the markers shall be.
const QByteArray absolute[] = {
    QByteArrayLiteral("korvex2 set body number_of_marker "), QByteArrayLiteral("korvex2 set body marker "),
    QByteArrayLiteral("korvex2 set body marker_emission "), QByteArrayLiteral("korvex2 set body file ")};

template <typename Texts>
const QByteArray* prefixOf(const QByteArray& line, const Texts& texts) {
  const auto found = std::find_if(std::begin(texts), std::end(texts),
                                  [&line](const QByteArray& prefix) { return line.startsWith(prefix); });
  return found == std::end(texts) ? nullptr : &*found;
}

/// The body that a command is for, from the words behind the command's own.
std::optional<std::pair<QByteArray, int>> bodyIn(const QByteArray& line, const QByteArray& prefix) {
  const QList<QByteArray> words = line.mid(prefix.size()).split(' ');
  if (words.size() < 2 || words[0].isEmpty() || !words[1].startsWith('b')) {
    return std::nullopt;
  }
  const std::optional<int> number = parseInteger(words[1].mid(1));
  return number ? std::optional<std::pair<QByteArray, int>>({words[0], *number}) : std::nullopt;
}

QByteArray textOf(const std::pair<QByteArray, int>& body) {
  return body.first + " b" + QByteArray::number(body.second).rightJustified(2, '0');
}

bool isErrorNumber(const QByteArray& answer, int number) {
  const QByteArray refusal = "korvex2 err " + QByteArray::number(number);
  return answer == refusal || answer.startsWith(refusal + ' ');
}

constexpr int unknownCommand = 2;
constexpr int changedMeanwhile = 11;

}  // namespace

ChangeGuard::Verdict ChangeGuard::before(BackendConnection& connection, const QByteArray& line, QByteArray& answer) {
  if (line.startsWith(reading)) {
    const std::optional<Body> body = bodyIn(line, reading);
    if (!body) {
      return Verdict::go;
    }
    const QByteArray question = "body state " + textOf(*body);
    if (!connection.exchange("korvex2 get " + question, answer)) {
      return Verdict::notAnswered;
    }
    const std::optional<QByteArray> state = valueAfter("korvex2 set " + question, withoutLineEnd(answer));
    if (state && !state->isEmpty()) {
      states_[*body] = *state;
    } else {
      states_.erase(*body);  // a backend that does not tell
    }
    return Verdict::go;
  }
  const QByteArray* const prefix = prefixOf(line, relative);
  const std::optional<Body> body = prefix == nullptr ? std::nullopt : bodyIn(line, *prefix);
  const auto known = body ? states_.find(*body) : states_.end();
  if (known == states_.end()) {
    return Verdict::go;
  }
  if (!connection.exchange("korvex2 body expect " + textOf(*body) + ' ' + known->second, answer)) {
    return Verdict::notAnswered;
  }
  return isRefusal(withoutLineEnd(answer)) && !isErrorNumber(answer, unknownCommand) ? Verdict::refused : Verdict::go;
}

QString ChangeGuard::after(const QByteArray& line, const QByteArray& answer) {
  if (line.startsWith("korvex2 get ")) {
    return {};
  }
  const QByteArray* prefix = prefixOf(line, relative);
  const bool isRelative = prefix != nullptr;
  prefix = isRelative ? prefix : prefixOf(line, absolute);
  const std::optional<Body> body = prefix == nullptr ? std::nullopt : bodyIn(line, *prefix);
  if (!body) {
    return {};
  }
  if (answer == "korvex2 ok") {
    states_.erase(*body);
  } else if (isRelative && isErrorNumber(answer, changedMeanwhile)) {
    return tr("The markers of %1 were changed since they were read: by another program, or by a command whose answer "
              "was lost. Choose the body again to see them as they are.")
        .arg(QString::fromUtf8(textOf(*body)));
  }
  return {};
}

}  // namespace korvex2
