// Reads and writes the catalogue file.
#include "catalogue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>

#include <algorithm>
#include <cmath>
#include <optional>

#include "jsonlines.h"

namespace korvex2 {

namespace {

const int longestDescription = 120;

struct FlagField {
  const char* group;  // member of the root, or nullptr
  const char* name;
  bool BackendSettings::*flag;
};

const FlagField flagFields[] = {
    {nullptr, "config_changeable", &BackendSettings::configChangeable},
    {nullptr, "tracking_available", &BackendSettings::trackingAvailable},
    {"wandgrip", "output_6dw", &BackendSettings::deviceOutput6dw},
    {"wandgrip", "multiuser_available", &BackendSettings::multiuserAvailable},
    {"wandgrip", "multiuser", &BackendSettings::multiuser},
    {"wandgrip", "multiuser_with_head_available", &BackendSettings::multiuserWithHeadAvailable},
    {"wandgrip", "multiuser_with_head", &BackendSettings::multiuserWithHead},
};

std::optional<int> integerOf(const QJsonValue& value) {
  const double number = value.toDouble(std::nan(""));
  if (!value.isDouble() || !(std::fabs(number) <= 1e6) || std::floor(number) != number) {
    return std::nullopt;
  }
  return static_cast<int>(number);
}

std::optional<std::vector<double>> numbersOf(const QJsonValue& value, int count) {
  const QJsonArray array = value.toArray();
  if (!value.isArray() || array.size() != count) {
    return std::nullopt;
  }
  std::vector<double> numbers;
  for (const QJsonValue& element : array) {
    if (!element.isDouble() || !(std::fabs(element.toDouble()) <= BodyDatabase::largestCoordinate)) {
      return std::nullopt;
    }
    numbers.push_back(element.toDouble());
  }
  return numbers;
}

// File names stay inside the folder "bodies".
bool isBodyFileName(const QString& name) {
  static const QString suffix = QStringLiteral(".body");
  return name.size() > suffix.size() && name.size() <= 200 && name.endsWith(suffix) &&
         std::all_of(name.begin(), name.end(), [](QChar c) {
           return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-') || c == QLatin1Char('.') ||
                  c == QLatin1Char(' ');
         });
}

class CatalogueReader {
 public:
  CatalogueReader(const QByteArray& bytes, const QString& name) : bytes_(bytes), name_(name) {}

  Catalogue read() {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes_, &error);
    if (document.isNull() || !document.isObject()) {
      const bool isJson = error.error == QJsonParseError::NoError;
      const int line = isJson ? 1 : lineOfOffset(bytes_, error.offset);
      report(line, isJson ? QStringLiteral("the catalogue must be a JSON object") : error.errorString());
      return catalogue_;
    }
    lines_ = jsonLines(bytes_);
    catalogue_.json = document.object();
    catalogue_.readable = true;
    readSettings();
    readTypes();
    readBodies();
    return catalogue_;
  }

 private:
  void report(int line, const QString& problem) {
    catalogue_.problems.append(QStringLiteral("%1, line %2: %3").arg(name_).arg(line).arg(problem));
  }

  int lineOf(const QString& path) const {
    // A value that is missing is reported where its surrounding stands.
    for (QString known = path; !known.isEmpty(); known.truncate(std::max(0, known.lastIndexOf(QLatin1Char('/'))))) {
      const auto line = lines_.constFind(known);
      if (line != lines_.constEnd()) {
        return *line;
      }
    }
    return lines_.value(QString(), 1);
  }

  void reportAt(const QString& path, const QString& problem) { report(lineOf(path), problem); }

  void readVersion() {
    const QJsonValue value = catalogue_.json.value(QLatin1String("version"));
    if (value.isUndefined()) {
      return;
    }
    const QJsonArray numbers = value.toArray();
    const std::optional<int> first = integerOf(numbers.at(0));
    const std::optional<int> second = integerOf(numbers.at(1));
    const std::optional<int> third = integerOf(numbers.at(2));
    if (numbers.size() == 3 && first && second && third && isVersion({*first, *second, *third})) {
      catalogue_.settings.version = {*first, *second, *third};
    } else {
      reportAt(QStringLiteral("version"), QStringLiteral("version must be an array of three integers"));
    }
  }

  void readSettings() {
    readVersion();
    const QJsonValue group = catalogue_.json.value(QLatin1String("wandgrip"));
    if (!group.isUndefined() && !group.isObject()) {
      reportAt(QStringLiteral("wandgrip"), QStringLiteral("wandgrip must be an object"));
    }
    for (const FlagField& field : flagFields) {
      const QString name = QLatin1String(field.name);
      const QJsonValue value = (field.group == nullptr ? catalogue_.json : group.toObject()).value(name);
      if (value.isBool()) {
        catalogue_.settings.*field.flag = value.toBool();
      } else if (!value.isUndefined()) {
        const QString path = field.group == nullptr ? name : QLatin1String(field.group) + QLatin1Char('/') + name;
        reportAt(path, QStringLiteral("%1 must be true or false").arg(name));
      }
    }
    takeImpossibleModesBack();
  }

  void takeImpossibleModesBack() {
    BackendSettings& settings = catalogue_.settings;
    if (settings.multiuser && !settings.multiuserAvailable) {
      settings.multiuser = false;
      reportAt(QStringLiteral("wandgrip/multiuser"), QStringLiteral("multiuser is on though it is not available"));
    }
    if (settings.multiuserWithHead && !settings.multiuserWithHeadAvailable) {
      settings.multiuserWithHead = false;
      reportAt(QStringLiteral("wandgrip/multiuser_with_head"),
               QStringLiteral("multiuser_with_head is on though it is not available"));
    }
  }

  bool isKnownType(const QByteArray& name) const {
    return std::any_of(catalogue_.types.begin(), catalogue_.types.end(),
                       [&name](const BodyType& type) { return type.name == name; });
  }

  void readTypes() {
    const QJsonValue value = catalogue_.json.value(QLatin1String("types"));
    if (!value.isArray()) {
      reportAt(QStringLiteral("types"), QStringLiteral("types must be an array of body types"));
      return;
    }
    const QJsonArray types = value.toArray();
    for (int i = 0; i < types.size(); ++i) {
      const QString path = QStringLiteral("types/%1").arg(i);
      const QByteArray name = types.at(i).toObject().value(QLatin1String("name")).toString().toUtf8();
      const QJsonValue description = types.at(i).toObject().value(QLatin1String("description"));
      if (!isName(name) || isKnownType(name)) {
        reportAt(path + QStringLiteral("/name"),
                 QStringLiteral("a body type needs a name of its own, of letters, digits and underscores"));
      } else if (catalogue_.types.size() == 99) {
        reportAt(path, QStringLiteral("there are more than 99 body types"));
      } else {
        if (!description.isUndefined() && !(description.isString() && isDescription(description.toString()))) {
          reportAt(path + QStringLiteral("/description"), descriptionRule());
          catalogue_.types.push_back({name, QString()});
        } else {
          catalogue_.types.push_back({name, description.toString()});
        }
      }
    }
  }

  static QString descriptionRule() {
    return QStringLiteral(
               "a description must be a text of at most %1 bytes without double quotes and control characters")
        .arg(longestDescription);
  }

  void readBodies() {
    const QJsonValue value = catalogue_.json.value(QLatin1String("bodies"));
    if (!value.isArray()) {
      reportAt(QStringLiteral("bodies"), QStringLiteral("bodies must be an array of bodies"));
      return;
    }
    const QJsonArray bodies = value.toArray();
    for (int i = 0; i < bodies.size(); ++i) {
      readBody(QStringLiteral("bodies/%1").arg(i), bodies.at(i).toObject());
    }
  }

  void readBody(const QString& path, const QJsonObject& object) {
    CatalogueEntry entry;
    entry.line = lineOf(path);
    entry.body.key.type = object.value(QLatin1String("type")).toString().toUtf8();
    if (!isKnownType(entry.body.key.type)) {
      reportAt(path + QStringLiteral("/type"), QStringLiteral("a body needs a type that is listed under types"));
      return;
    }
    const std::optional<int> number = integerOf(object.value(QLatin1String("number")));
    if (!number || *number < 1 || *number > BodyDatabase::highestBodyNumber) {
      reportAt(path + QStringLiteral("/number"),
               QStringLiteral("a body needs a number from 1 to %1").arg(BodyDatabase::highestBodyNumber));
      return;
    }
    entry.body.key.number = *number;
    for (const CatalogueEntry& other : catalogue_.entries) {
      if (other.body.key == entry.body.key) {
        reportAt(path + QStringLiteral("/number"),
                 QStringLiteral("the body of line %1 has this number").arg(other.line));
        return;
      }
    }
    readTexts(path, object, entry);
    readNumbers(path, object, entry);
    catalogue_.entries.push_back(entry);
  }

  // A wrong field spoils the body, but not its place.
  void spoil(CatalogueEntry& entry, const QString& path, const QString& problem) {
    reportAt(path, problem);
    if (entry.body.problem.isEmpty()) {
      entry.body.problem = catalogue_.problems.last();
    }
  }

  void readTexts(const QString& path, const QJsonObject& object, CatalogueEntry& entry) {
    const QJsonValue description = object.value(QLatin1String("description"));
    if (description.isString() && isDescription(description.toString())) {
      entry.body.description = description.toString();
    } else if (!description.isUndefined()) {
      spoil(entry, path + QStringLiteral("/description"), descriptionRule());
    }
    const QJsonValue target = object.value(QLatin1String("target_type"));
    if (target.isString() && isName(target.toString().toUtf8())) {
      entry.body.targetType = target.toString().toUtf8();
    } else if (!target.isUndefined()) {
      spoil(entry, path + QStringLiteral("/target_type"),
            QStringLiteral("target_type must be a word of letters, digits and underscores"));
    }
    const QJsonValue file = object.value(QLatin1String("file"));
    if (file.isString() && isBodyFileName(file.toString())) {
      entry.body.file = file.toString();
    } else if (!file.isUndefined()) {
      spoil(entry, path + QStringLiteral("/file"),
            QStringLiteral("file must be the plain name of a file that ends in .body"));
    }
    const QJsonValue calibrated = object.value(QLatin1String("calibrated"));
    if (!calibrated.isBool() && !calibrated.isUndefined()) {
      spoil(entry, path + QStringLiteral("/calibrated"), QStringLiteral("calibrated must be true or false"));
    }
    entry.body.calibrated = calibrated.toBool(false);
    if (entry.body.calibrated && file.isUndefined()) {
      spoil(entry, path, QStringLiteral("a calibrated body needs a file"));
    }
  }

  void readNumbers(const QString& path, const QJsonObject& object, CatalogueEntry& entry) {
    const QJsonValue emissions = object.value(QLatin1String("emissions"));
    if (!emissions.isArray() && !emissions.isUndefined()) {
      spoil(entry, path + QStringLiteral("/emissions"), QStringLiteral("emissions must be an array"));
    }
    const QJsonArray list = emissions.toArray();
    for (int i = 0; i < list.size(); ++i) {
      const std::optional<std::vector<double>> values = numbersOf(list.at(i), 4);
      if (!values) {
        spoil(entry, path + QStringLiteral("/emissions/%1").arg(i),
              QStringLiteral("an emission must be four numbers: x, y, z, opening angle"));
        break;
      }
      entry.emissions.push_back({{{values->at(0), values->at(1), values->at(2)}}, values->at(3)});
    }
    const QJsonValue transform = object.value(QLatin1String("transform"));
    if (transform.isUndefined()) {
      return;
    }
    const std::optional<std::vector<double>> values = numbersOf(transform, 12);
    if (values) {
      std::copy_n(values->begin(), 3, entry.body.transform.position.begin());
      std::copy_n(values->begin() + 3, 9, entry.body.transform.rotation.begin());
    }
    // Looser than what a command may send, because what many commands sent has piled up here.
    if (!values || !entry.body.transform.isRotation(1e-2)) {
      spoil(entry, path + QStringLiteral("/transform"),
            QStringLiteral("transform must be twelve numbers: a position, then a rotation column by column"));
    }
  }

  const QByteArray& bytes_;
  QString name_;
  QHash<QString, int> lines_;
  Catalogue catalogue_;
};

QJsonArray transformArray(const RigidTransform& transform) {
  QJsonArray array;
  for (const double value : transform.position) {
    array.append(value);
  }
  for (const double value : transform.rotation) {
    array.append(value);
  }
  return array;
}

QJsonArray emissionsArray(const Body& body) {
  QJsonArray array;
  for (const BodyMarker& marker : body.markers) {
    const Vector3& direction = marker.emission.direction;
    array.append(QJsonArray{direction[0], direction[1], direction[2], marker.emission.openingAngle});
  }
  return array;
}

// Fields that hold their default are left out, so that a catalogue stays as plain as it was written.
void setOrRemove(QJsonObject& object, const char* name, const QJsonValue& value, bool isDefault) {
  if (isDefault) {
    object.remove(QLatin1String(name));
  } else {
    object.insert(QLatin1String(name), value);
  }
}

}  // namespace

Catalogue parseCatalogue(const QByteArray& bytes, const QString& name) { return CatalogueReader(bytes, name).read(); }

QByteArray catalogueBytes(const QJsonObject& catalogue) {
  return QJsonDocument(catalogue).toJson(QJsonDocument::Indented);
}

void writeSettings(QJsonObject& catalogue, const BackendSettings& before, const BackendSettings& after) {
  if (!(before.version == after.version)) {
    catalogue.insert(QStringLiteral("version"),
                     QJsonArray{after.version.majorNumber, after.version.minorNumber, after.version.revision});
  }
  for (const FlagField& field : flagFields) {
    if (before.*field.flag == after.*field.flag) {
      continue;
    }
    if (field.group == nullptr) {
      catalogue.insert(QLatin1String(field.name), after.*field.flag);
    } else {
      QJsonObject group = catalogue.value(QLatin1String(field.group)).toObject();
      group.insert(QLatin1String(field.name), after.*field.flag);
      catalogue.insert(QLatin1String(field.group), group);
    }
  }
}

void writeBody(QJsonObject& catalogue, const Body& body) {
  QJsonArray bodies = catalogue.value(QLatin1String("bodies")).toArray();
  for (int i = 0; i < bodies.size(); ++i) {
    QJsonObject object = bodies.at(i).toObject();
    if (object.value(QLatin1String("type")).toString().toUtf8() != body.key.type ||
        integerOf(object.value(QLatin1String("number"))) != body.key.number) {
      continue;
    }
    const bool hasEmissions = std::any_of(body.markers.begin(), body.markers.end(), [](const BodyMarker& marker) {
      return !(marker.emission == MarkerEmission());
    });
    object.insert(QStringLiteral("description"), body.description);
    object.insert(QStringLiteral("calibrated"), body.calibrated);
    object.insert(QStringLiteral("target_type"), QString::fromLatin1(body.targetType));
    setOrRemove(object, "file", body.file, body.file.isEmpty());
    setOrRemove(object, "emissions", emissionsArray(body), !hasEmissions);
    setOrRemove(object, "transform", transformArray(body.transform), body.transform == RigidTransform());
    bodies[i] = object;
    break;
  }
  catalogue.insert(QStringLiteral("bodies"), bodies);
}

bool isDescription(const QString& text) {
  if (text.toUtf8().size() > longestDescription || !text.isValidUtf16()) {
    return false;
  }
  return std::all_of(text.begin(), text.end(), [](QChar c) {
    return c != QLatin1Char('"') && c.category() != QChar::Other_Control && c.category() != QChar::Separator_Line &&
           c.category() != QChar::Separator_Paragraph;
  });
}

bool isName(const QByteArray& text) {
  return !text.isEmpty() && text.size() <= 32 && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

bool isVersion(const BackendVersion& version) {
  const auto within = [](int number, int lowest) { return number >= lowest && number <= 9999; };
  return within(version.majorNumber, 0) && within(version.minorNumber, 0) && within(version.revision, -9999);
}

}  // namespace korvex2
