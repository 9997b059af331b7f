// Names of the files that the database makes itself.
#include "ownfiles.h"

#include <QRegularExpression>

namespace korvex2 {

QString ownFileName(const BodyKey& key, int generation) {
  return QStringLiteral("%1_b%2-%3.body")
      .arg(QString::fromLatin1(key.type))
      .arg(key.number, 2, 10, QLatin1Char('0'))
      .arg(generation);
}

OwnFileName parseOwnFileName(const QString& file) {
  static const QRegularExpression scheme(
      QStringLiteral("\\A([A-Za-z0-9_]{1,32})_b(0[1-9]|[1-9][0-9])-([1-9][0-9]{0,8})\\.body\\z"));
  const QRegularExpressionMatch match = scheme.match(file);
  if (!match.hasMatch()) {
    return {};
  }
  return {{match.captured(1).toLatin1(), match.captured(2).toInt()}, match.captured(3).toInt()};
}

int generationOf(const BodyKey& key, const QString& file) {
  const OwnFileName name = parseOwnFileName(file);
  return name.key == key ? name.generation : 0;
}

QString replacedByTemporary(const QString& file) {
  static const QRegularExpression scheme(QStringLiteral("\\A(.+)\\.([A-Za-z]{6})\\z"));
  static const QRegularExpression word(QStringLiteral("\\A([A-Za-z][a-z]{5}|[A-Z]{6})\\z"));
  const QRegularExpressionMatch match = scheme.match(file);
  return match.hasMatch() && !word.match(match.captured(2)).hasMatch() ? match.captured(1) : QString();
}

}  // namespace korvex2
