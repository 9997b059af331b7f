// See bodylisting.h.
#include "bodylisting.h"

#include <optional>

#include <QByteArray>

#include "backendconnection.h"
#include "channeltext.h"

namespace korvex2 {

namespace {

// A backend that answers nonsense must not keep the window busy.
constexpr int mostTypes = 50;
constexpr int mostBodies = 200;

std::optional<QByteArray> ask(BackendConnection& connection, const QByteArray& query) {
  QByteArray answer;
  if (!connection.exchange("korvex2 get " + query, answer)) {
    return std::nullopt;
  }
  return valueAfter("korvex2 set " + query, withoutLineEnd(answer));
}

std::optional<int> askCount(BackendConnection& connection, const QByteArray& query, int most) {
  const std::optional<QByteArray> answer = ask(connection, query);
  const std::optional<int> count = answer ? parseInteger(*answer) : std::nullopt;
  return count ? std::optional<int>(qBound(0, *count, most)) : std::nullopt;
}

QString unquoted(const QByteArray& text) { return QString::fromUtf8(text).remove(QLatin1Char('"')); }

QByteArray twoDigits(int number) { return QByteArray::number(number).rightJustified(2, '0'); }

}  // namespace

QString BodySummary::title() const {
  const QString place = QStringLiteral("%1 %2").arg(typeDescription.isEmpty() ? type : typeDescription,
                                                    QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')));
  return description.isEmpty() ? place : QStringLiteral("%1 (%2)").arg(description, place);
}

std::vector<BodySummary> listBodies(BackendConnection& connection) {
  std::vector<BodySummary> bodies;
  const int types = askCount(connection, "body number_of_types", mostTypes).value_or(0);
  for (int t = 1; t <= types; ++t) {
    const std::optional<QByteArray> type = ask(connection, "body type t" + twoDigits(t));
    if (!type || type->isEmpty()) {
      return bodies;
    }
    const std::optional<QByteArray> typeDescription = ask(connection, "body type_desc " + *type);
    const std::optional<int> count = askCount(connection, "body number_of_bodies " + *type, mostBodies);
    if (!typeDescription || !count) {
      return bodies;
    }
    for (int n = 1; n <= *count; ++n) {
      const QByteArray key = *type + " b" + twoDigits(n);
      const std::optional<QByteArray> description = ask(connection, "body desc " + key);
      const std::optional<QByteArray> calibrated = ask(connection, "body calibrated " + key);
      const std::optional<QByteArray> markers = ask(connection, "body number_of_marker " + key);
      if (!description || !calibrated || !markers) {
        return bodies;
      }
      bodies.push_back({QString::fromUtf8(*type), unquoted(*typeDescription), n, unquoted(*description),
                        parseInteger(*markers).value_or(0), *calibrated == "yes"});
    }
  }
  return bodies;
}

}  // namespace korvex2
