// See bodycatalogue.h.
#include "bodycatalogue.h"

#include <QStringList>

#include "backendchannel.h"

namespace korvex2 {

namespace {

constexpr int mostTypes = 99;
constexpr int mostBodies = 999;

const QLatin1Char separator('|');

/// Text of the backend, which puts descriptions in double quotes and target types in apostrophes.
QString without(QChar quote, const QByteArray& answer) { return QString::fromUtf8(answer).remove(quote); }

/// " 01", " 02", ..., " 10", ...
QString numberText(int number) { return QStringLiteral(" %1").arg(number, 2, 10, QLatin1Char('0')); }

/// Item data of a body; false when its target type could not be had.
bool describeData(BackendChannel& channel, const QByteArray& type, int number, QString& data) {
  data = QString::fromUtf8(type) + separator + QString::number(number) + separator;
  data += channel.isBodyCalibrated(type, number) ? QLatin1String("calibrated") : QLatin1String("uncalibrated");
  data += separator;
  if (!channel.hasTargetTypes()) {
    data += QLatin1String("tt_std");
    return true;
  }
  QByteArray targetType;
  if (!channel.targetType(type, number, targetType)) {
    return false;
  }
  data += without(QLatin1Char('\''), targetType).trimmed();
  return true;
}

bool listBodiesOfType(BackendChannel& channel, const QByteArray& type, std::vector<SelectorEntry>& entries) {
  int count = 0;
  if (!channel.numberOfListedBodies(type, count)) {
    return false;
  }
  if (count > mostBodies) {
    channel.reportBodyCountFailure();
    return false;
  }
  QByteArray answer;
  if (!channel.typeDescription(type, answer)) {
    return false;
  }
  const QString typeText = without(QLatin1Char('"'), answer);
  for (int number = 1; number <= count; ++number) {
    SelectorEntry entry;
    if (!describeData(channel, type, number, entry.data) || !channel.bodyDescription(type, number, answer)) {
      return false;
    }
    const QString description = without(QLatin1Char('"'), answer);
    entry.text = typeText + numberText(number);
    if (!description.isEmpty()) {
      entry.text = description + QLatin1String(" (") + entry.text + QLatin1Char(')');
    }
    entries.push_back(entry);
  }
  return true;
}

bool listTypes(BackendChannel& channel, std::vector<SelectorEntry>& entries) {
  int count = 0;
  if (!channel.numberOfTypes(count)) {
    return false;
  }
  if (count > mostTypes) {
    channel.reportTypeCountFailure();
    return false;
  }
  for (int number = 1; number <= count; ++number) {
    QByteArray type;
    if (!channel.typeName(number, type)) {
      return false;
    }
    const QByteArray kind = type.toLower();
    if (kind != "standard" && kind != "wandgrip") {
      continue;  // not a kind of body whose coordinate system can be adjusted
    }
    if (!listBodiesOfType(channel, type, entries)) {
      return false;
    }
  }
  return true;
}

}  // namespace

CatalogueListing listBodies(BackendChannel& channel) {
  CatalogueListing listing;
  listing.complete = listTypes(channel, listing.entries);
  return listing;
}

std::optional<SelectedBody> parseEntryData(const QString& data) {
  const QStringList parts = data.split(separator);
  if (parts.size() < 4) {
    return std::nullopt;
  }
  SelectedBody key;
  key.type = parts.at(0);
  key.number = parts.at(1).toInt();
  key.calibrated = parts.at(2) == QLatin1String("calibrated");
  key.targetType = parts.at(3);
  return key;
}

bool matchesKey(const QString& data, const QString& bodyKey) { return data.startsWith(bodyKey + separator); }

}  // namespace korvex2
