// See networkbodyfiles.h.
#include "networkbodyfiles.h"

#include <QCoreApplication>
#include <QDir>

#include <optional>

#include "backendconnection.h"
#include "bodyexchange.h"
#include "bodyfileformat.h"
#include "channeltext.h"
#include "interpreter.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("NetworkBodyFiles", text); }

QByteArray placeOf(const BodyId& body) {
  return body.type.toUtf8() + " b" + QByteArray::number(body.number).rightJustified(2, '0');
}

/// What a refusal says, without its number: `korvex2 err 8 "the body has no markers"`.
QString saidBy(const QByteArray& refusal) {
  const int begin = refusal.indexOf('"');
  const int end = refusal.lastIndexOf('"');
  return begin >= 0 && end > begin ? QString::fromUtf8(refusal.mid(begin + 1, end - begin - 1))
                                   : tr("the backend refused it");
}

QString notConnected(const BackendConnection& connection) {
  const QString reason = connection.linkStatus().reason;
  return reason.isEmpty() ? tr("the backend is not connected") : tr("the backend is not connected: %1").arg(reason);
}

QString badAnswer() { return tr("the backend gave an answer that makes no sense"); }

}  // namespace

QString NetworkBodyFiles::importObstacle() const {
  QByteArray answer;
  if (!connection_.exchange("korvex2 get config is_changeable", answer)) {
    return notConnected(connection_);
  }
  // A backend that cannot tell will say so when it is given the file.
  return answer == "korvex2 set config is_changeable no" ? tr("the configuration is locked") : QString();
}

BodyFileSummary NetworkBodyFiles::summaryOf(const QString& path) const {
  const ImportableBody file = readImportableBody(path);
  return {static_cast<int>(file.geometry.positions.size()), static_cast<int>(file.geometry.lines.size()), file.problem};
}

ImportOutcome NetworkBodyFiles::importBody(const BodyId& body, const QString& path) {
  const ImportableBody checked = readImportableBody(path);
  const FileContent file = readWholeFile(path);
  for (const QString& problem : {checked.problem, file.problem}) {
    if (!problem.isEmpty()) {
      return {problem};
    }
  }
  const QByteArray line = "korvex2 set body file " + placeOf(body) + ' ' + file.bytes.toBase64();
  if (line.size() > Interpreter::longestLine) {
    return {tr("%1 is too large to be sent to the backend").arg(QDir::toNativeSeparators(path))};
  }
  const bool wasConnected = connection_.linkStatus().state == LinkState::connected;
  QByteArray answer;
  if (!connection_.exchange(line, answer)) {
    return wasConnected ? ImportOutcome{connection_.linkStatus().reason, true}
                        : ImportOutcome{notConnected(connection_)};
  }
  if (isRefusal(answer)) {
    return {saidBy(answer)};
  }
  return answer == "korvex2 ok" ? ImportOutcome() : ImportOutcome{badAnswer(), true};
}

QString NetworkBodyFiles::exportBody(const BodyId& body, const QString& path) const {
  const QByteArray what = "body file " + placeOf(body);
  QByteArray answer;
  if (!connection_.exchange("korvex2 get " + what, answer)) {
    return notConnected(connection_);
  }
  if (isRefusal(answer)) {
    return saidBy(answer);
  }
  const std::optional<QByteArray> value = valueAfter("korvex2 set " + what, answer);
  const auto file =
      QByteArray::fromBase64Encoding(value.value_or(QByteArray()), QByteArray::AbortOnBase64DecodingErrors);
  // What is no body file must not take the place of one.
  if (!file || !parseBodyFile(*file).problem.isEmpty()) {
    return badAnswer();
  }
  return writeBodyFile(path, *file);
}

}  // namespace korvex2
