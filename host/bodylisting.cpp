// See bodylisting.h.
#include "bodylisting.h"

#include <optional>

#include <QByteArrayList>

#include "backendconnection.h"
#include "channeltext.h"

namespace korvex2 {

namespace {

// A backend that answers nonsense must not keep the window busy.
constexpr int mostTypes = 50;
constexpr int mostBodies = 200;

/// Lines that are sent together.
constexpr int batch = 48;

/// Values of queries, in their order. They end before the first query that was not answered, or not with a value; what
/// comes after the batch that it stands in is not asked.
QByteArrayList ask(BackendConnection& connection, const QByteArrayList& queries) {
  QByteArrayList values;
  for (int begin = 0; begin < queries.size(); begin += batch) {
    QByteArrayList lines = queries.mid(begin, batch);
    for (QByteArray& line : lines) {
      line.prepend("korvex2 get ");
    }
    const QByteArrayList answers = connection.exchangeTogether(lines);
    for (int i = 0; i < lines.size(); ++i) {
      const std::optional<QByteArray> value =
          i < answers.size() ? valueAfter("korvex2 set " + queries[begin + i], withoutLineEnd(answers[i]))
                             : std::nullopt;
      if (!value) {
        return values;
      }
      values += *value;
    }
  }
  return values;
}

std::optional<int> countIn(const QByteArray& value, int most) {
  const std::optional<int> count = parseInteger(value);
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

namespace {

struct TypeSummary {
  QByteArray name;
  QString description;
  int bodies = 0;
};

std::vector<TypeSummary> listTypes(BackendConnection& connection) {
  std::vector<TypeSummary> types;
  QByteArrayList queries;
  const int count = countIn(ask(connection, {"body number_of_types"}).value(0), mostTypes).value_or(0);
  for (int t = 1; t <= count; ++t) {
    queries += "body type t" + twoDigits(t);
  }
  const QByteArrayList names = ask(connection, queries);
  queries.clear();
  for (const QByteArray& name : names) {
    if (name.isEmpty()) {
      break;
    }
    queries += "body type_desc " + name;
    queries += "body number_of_bodies " + name;
  }
  const QByteArrayList values = ask(connection, queries);
  for (int i = 0; i + 1 < values.size(); i += 2) {
    const std::optional<int> bodies = countIn(values[i + 1], mostBodies);
    if (!bodies) {
      break;
    }
    types.push_back({names[i / 2], unquoted(values[i]), *bodies});
  }
  return types;
}

}  // namespace

std::vector<BodySummary> listBodies(BackendConnection& connection) {
  constexpr int valuesOfABody = 3;
  std::vector<BodySummary> bodies;
  QByteArrayList queries;
  for (const TypeSummary& type : listTypes(connection)) {
    for (int n = 1; n <= type.bodies; ++n) {
      const QByteArray key = type.name + " b" + twoDigits(n);
      queries << "body desc " + key << "body calibrated " + key << "body number_of_marker " + key;
      bodies.push_back({QString::fromUtf8(type.name), type.description, n, QString(), 0, false});
    }
  }
  const QByteArrayList values = ask(connection, queries);
  bodies.resize(static_cast<std::size_t>(values.size() / valuesOfABody));
  int next = 0;
  for (BodySummary& body : bodies) {
    body.description = unquoted(values[next]);
    body.calibrated = values[next + 1] == "yes";
    body.markers = parseInteger(values[next + 2]).value_or(0);
    next += valuesOfABody;
  }
  return bodies;
}

}  // namespace korvex2
