// The tables of the command language and the reading of their fields.
#include "commands.h"

#include <QList>

#include <algorithm>
#include <optional>

#include "interpreter.h"
#include "numbertext.h"

namespace korvex2 {

namespace {

Outcome badValue(const QString& text) { return Outcome::failed(ErrorNumber::BadValue, text); }

Outcome badField(const char* expected, const QByteArray& field) {
  return badValue(QStringLiteral("%1 is expected, not %2").arg(QLatin1String(expected), shownField(field)));
}

// "b03", "m12", "t01": a letter and a number without a sign.
std::optional<int> numberBehind(char letter, const QByteArray& field) {
  if (field.size() < 2 || field[0] != letter || field[1] < '0' || field[1] > '9') {
    return std::nullopt;
  }
  return integerFromText(field.mid(1));
}

// Reads the fields of one placeholder kind after the other into Arguments.
class FieldReader {
 public:
  explicit FieldReader(const BodyDatabase& database) : database_(database) {}

  Outcome take(const QByteArray& placeholder, const Field& field) {
    struct Kind {
      const char* placeholder;
      Outcome (FieldReader::*take)(const QByteArray&);
    };
    static const Kind kinds[] = {
        {"%type", &FieldReader::takeType},     {"%typenumber", &FieldReader::takeTypeNumber},
        {"%body", &FieldReader::takeBody},     {"%marker", &FieldReader::takeMarker},
        {"%count", &FieldReader::takeCount},   {"%flag", &FieldReader::takeFlag},
        {"%real", &FieldReader::takeReal},     {"%version", &FieldReader::takeVersion},
        {"%kind", &FieldReader::takeLineKind}, {"%text", &FieldReader::takeText},
    };
    if (field.quoted && placeholder != "%text") {
      return badValue(QStringLiteral("a field is in double quotes that is no text"));
    }
    for (const Kind& kind : kinds) {
      if (placeholder == kind.placeholder) {
        return (this->*kind.take)(field.text);
      }
    }
    return Outcome::failed(ErrorNumber::Unknown, QStringLiteral("unknown field"));
  }

  Arguments arguments;

 private:
  Outcome takeType(const QByteArray& field) {
    arguments.bodyType = database_.findType(field);
    if (arguments.bodyType == nullptr) {
      return Outcome::failed(ErrorNumber::NoSuchBody,
                             QStringLiteral("there is no body type %1").arg(shownField(field)));
    }
    arguments.key.type = field;
    return Outcome::done();
  }

  Outcome takeTypeNumber(const QByteArray& field) {
    const std::optional<int> number = numberBehind('t', field);
    if (!number) {
      return badField("a type number such as t01", field);
    }
    if (*number < 1 || static_cast<std::size_t>(*number) > database_.types().size()) {
      return Outcome::failed(ErrorNumber::NoSuchBody,
                             QStringLiteral("there is no body type %1").arg(shownField(field)));
    }
    arguments.bodyType = &database_.types()[static_cast<std::size_t>(*number - 1)];
    return Outcome::done();
  }

  Outcome takeBody(const QByteArray& field) {
    const std::optional<int> number = numberBehind('b', field);
    if (!number) {
      return badField("a body number such as b01", field);
    }
    arguments.key.number = *number;
    arguments.body = database_.find(arguments.key);
    if (arguments.body == nullptr) {
      return Outcome::failed(ErrorNumber::NoSuchBody, QStringLiteral("there is no body %1").arg(shownField(field)));
    }
    return Outcome::done();
  }

  Outcome takeMarker(const QByteArray& field) {
    const std::optional<int> number = numberBehind('m', field);
    if (!number) {
      return badField("a marker number such as m01", field);
    }
    if (*number < 1 || static_cast<std::size_t>(*number) > arguments.body->markers.size()) {
      return Outcome::failed(ErrorNumber::NoSuchMarker, QStringLiteral("there is no marker %1").arg(shownField(field)));
    }
    arguments.marker = *number;
    return Outcome::done();
  }

  Outcome takeCount(const QByteArray& field) {
    const std::optional<int> count = integerFromText(field);
    if (!count || *count < 0) {
      return badField("a count", field);
    }
    arguments.count = *count;
    return Outcome::done();
  }

  Outcome takeFlag(const QByteArray& field) {
    arguments.flag = field == "yes";
    return field == "yes" || field == "no" ? Outcome::done() : badField("yes or no", field);
  }

  Outcome takeReal(const QByteArray& field) {
    const std::optional<double> value = realFromText(field);
    if (!value) {
      return badField("a number", field);
    }
    arguments.reals.push_back(*value);
    return Outcome::done();
  }

  Outcome takeVersion(const QByteArray& field) {
    const QList<QByteArray> parts = field.split('.');
    std::optional<int> numbers[3];
    for (int i = 0; i < 3 && parts.size() == 3; ++i) {
      numbers[i] = integerFromText(parts[i]);
    }
    if (!numbers[0] || !numbers[1] || !numbers[2]) {
      return badField("a version such as 1.20.0", field);
    }
    arguments.version = {*numbers[0], *numbers[1], *numbers[2]};
    return Outcome::done();
  }

  Outcome takeLineKind(const QByteArray& field) {
    if (field != "6d" && field != "6dw" && field != "6dw2") {
      return badField("6d, 6dw or 6dw2", field);
    }
    return takeText(field);
  }

  Outcome takeText(const QByteArray& field) {
    arguments.text = field;
    return Outcome::done();
  }

  const BodyDatabase& database_;
};

// The words of a pattern. "%real*3" stands for three fields.
std::vector<QByteArray> wordsOf(const char* pattern) {
  std::vector<QByteArray> words;
  for (const QByteArray& word : QByteArray(pattern).split(' ')) {
    const int star = word.indexOf('*');
    words.insert(words.end(), star < 0 ? 1U : word.mid(star + 1).toUInt(), star < 0 ? word : word.left(star));
  }
  return words;
}

// A line of a table; `Action` is a query's value or a setting's or command's effect.
template <typename Action>
struct Phrase {
  Phrase(const char* pattern, Action action)
      : words(wordsOf(pattern)),
        literals(std::find_if(words.begin(), words.end(), [](const QByteArray& w) { return w.startsWith('%'); }) -
                 words.begin()),
        action(action) {}

  bool beginsAs(const std::vector<Field>& fields) const {
    return static_cast<std::ptrdiff_t>(fields.size()) >= literals &&
           std::equal(words.begin(), words.begin() + literals, fields.begin(),
                      [](const QByteArray& word, const Field& field) { return !field.quoted && field.text == word; });
  }

  std::vector<QByteArray> words;
  std::ptrdiff_t literals;  // words before the first placeholder
  Action action;
};

template <typename Action>
using Table = std::vector<Phrase<Action>>;

// Finds the phrase that the fields begin with and reads its fields. Two phrases of a table never begin alike.
template <typename Action>
const Phrase<Action>* findPhrase(const Table<Action>& table, const std::vector<Field>& fields, const char* what,
                                 FieldReader& reader, Outcome& outcome) {
  const auto phrase =
      std::find_if(table.begin(), table.end(), [&fields](const Phrase<Action>& p) { return p.beginsAs(fields); });
  if (phrase == table.end()) {
    outcome = Outcome::failed(ErrorNumber::Unknown, QStringLiteral("there is no such %1").arg(QLatin1String(what)));
    return nullptr;
  }
  if (fields.size() != phrase->words.size()) {
    outcome = Outcome::failed(ErrorNumber::WrongFields, fields.size() < phrase->words.size()
                                                            ? QStringLiteral("there are too few fields")
                                                            : QStringLiteral("there are too many fields"));
    return nullptr;
  }
  for (auto i = static_cast<std::size_t>(phrase->literals); i < fields.size(); ++i) {
    outcome = reader.take(phrase->words[i], fields[i]);
    if (!outcome) {
      return nullptr;
    }
  }
  return &*phrase;
}

QByteArray yesNo(bool flag) { return flag ? "yes" : "no"; }

QByteArray quoted(const QString& text) { return '"' + text.toUtf8() + '"'; }

QByteArray joined(const Vector3& values) {
  return numberText(values[0]) + ' ' + numberText(values[1]) + ' ' + numberText(values[2]);
}

const BodyMarker& markerOf(const Arguments& a) { return a.body->markers[static_cast<std::size_t>(a.marker - 1)]; }

using Query = QByteArray (*)(const Interpreter&, const Arguments&);
using I = const Interpreter&;
using A = const Arguments&;

QByteArray numberOfBodies(I interpreter, A a) {
  return QByteArray::number(static_cast<int>(interpreter.database().bodies(a.key.type).size()));
}

QByteArray emissionText(I, A a) {
  const MarkerEmission& emission = markerOf(a).emission;
  return joined(emission.direction) + ' ' + numberText(emission.openingAngle);
}

// Each query with its value.
const Table<Query>& queries() {
  static const Table<Query> table = {
      {"version", [](I i, A) { return i.database().settings().version.text(); }},
      {"status active", [](I i, A) { return QByteArray(i.isMeasuring() ? "mea" : "idle"); }},
      {"config is_changeable", [](I i, A) { return yesNo(i.database().settings().configChangeable); }},
      {"tracking available", [](I i, A) { return yesNo(i.database().settings().trackingAvailable); }},
      {"output active chmon %kind", [](I i, A a) { return yesNo(i.isOutputActive(a.text)); }},
      {"wandgrip output_6dw", [](I i, A) { return yesNo(i.database().settings().deviceOutput6dw); }},
      {"wandgrip number_of_devices", [](I i, A) { return QByteArray::number(i.database().numberOfDevices()); }},
      {"wandgrip multiuser_available", [](I i, A) { return yesNo(i.database().settings().multiuserAvailable); }},
      {"wandgrip multiuser", [](I i, A) { return yesNo(i.database().settings().multiuser); }},
      {"wandgrip multiuser_with_head_available",
       [](I i, A) { return yesNo(i.database().settings().multiuserWithHeadAvailable); }},
      {"wandgrip multiuser_with_head", [](I i, A) { return yesNo(i.database().settings().multiuserWithHead); }},
      {"body number_of_types",
       [](I i, A) { return QByteArray::number(static_cast<int>(i.database().types().size())); }},
      {"body type %typenumber", [](I, A a) { return a.bodyType->name; }},
      {"body type_desc %type", [](I, A a) { return quoted(a.bodyType->description); }},
      {"body number_of_bodies %type", &numberOfBodies},
      {"body desc %type %body", [](I, A a) { return quoted(a.body->description); }},
      {"body target_type %type %body", [](I, A a) { return '\'' + a.body->targetType + '\''; }},
      {"body calibrated %type %body", [](I, A a) { return yesNo(a.body->calibrated); }},
      {"body number_of_marker %type %body",
       [](I, A a) { return QByteArray::number(static_cast<int>(a.body->markers.size())); }},
      {"body marker %type %body %marker", [](I, A a) { return joined(markerOf(a).position); }},
      {"body marker_emission %type %body %marker", &emissionText},
  };
  return table;
}

using Effect = Outcome (*)(Interpreter&, const Arguments&);

Outcome setOutput(Interpreter& interpreter, A a) {
  interpreter.setOutputActive(a.text, a.flag);
  return Outcome::done();
}

Outcome setDescription(Interpreter& interpreter, A a) {
  const QString description = QString::fromUtf8(a.text);
  if (description.toUtf8() != a.text) {  // a byte order mark at the front would be lost without a word
    return badValue(QStringLiteral("the description has characters that cannot be kept"));
  }
  return interpreter.database().setDescription(a.key, description);
}

Outcome setTargetType(Interpreter& interpreter, A a) {
  QByteArray word = a.text;
  if (word.size() > 2 && word.startsWith('\'') && word.endsWith('\'')) {
    word = word.mid(1, word.size() - 2);
  }
  return interpreter.database().setTargetType(a.key, word);
}

// Each setting with its effect. Settings of the simulated hardware can be set like all others: it has no other panel.
const Table<Effect>& settings() {
  static const Table<Effect> table = {
      {"version %version", [](Interpreter& i, A a) { return i.database().setVersion(a.version); }},
      {"config is_changeable %flag", [](Interpreter& i, A a) { return i.database().setConfigChangeable(a.flag); }},
      {"tracking available %flag", [](Interpreter& i, A a) { return i.setTrackingAvailable(a.flag); }},
      {"output active chmon %kind %flag", &setOutput},
      {"wandgrip output_6dw %flag", [](Interpreter& i, A a) { return i.database().setDeviceOutput6dw(a.flag); }},
      {"wandgrip multiuser_available %flag",
       [](Interpreter& i, A a) { return i.database().setMultiuserAvailable(a.flag); }},
      {"wandgrip multiuser %flag", [](Interpreter& i, A a) { return i.database().setMultiuser(a.flag); }},
      {"wandgrip multiuser_with_head_available %flag",
       [](Interpreter& i, A a) { return i.database().setMultiuserWithHeadAvailable(a.flag); }},
      {"wandgrip multiuser_with_head %flag",
       [](Interpreter& i, A a) { return i.database().setMultiuserWithHead(a.flag); }},
      {"body desc %type %body %text", &setDescription},
      {"body target_type %type %body %text", &setTargetType},
      {"body calibrated %type %body %flag",
       [](Interpreter& i, A a) { return i.database().setCalibrated(a.key, a.flag); }},
      {"body number_of_marker %type %body %count",
       [](Interpreter& i, A a) { return i.database().setNumberOfMarkers(a.key, a.count); }},
      {"body marker %type %body %marker %real*3",
       [](Interpreter& i, A a) {
         return i.database().setMarkerPosition(a.key, a.marker, {{a.reals[0], a.reals[1], a.reals[2]}});
       }},
      {"body marker_emission %type %body %marker %real*4",
       [](Interpreter& i, A a) {
         return i.database().setMarkerEmission(a.key, a.marker, {{{a.reals[0], a.reals[1], a.reals[2]}}, a.reals[3]});
       }},
  };
  return table;
}

Outcome transformBody(Interpreter& interpreter, A a) {
  RigidTransform transform;
  std::copy_n(a.reals.begin(), 3, transform.position.begin());
  std::copy_n(a.reals.begin() + 3, 9, transform.rotation.begin());  // both column by column
  return interpreter.database().transform(a.key, transform);
}

Outcome stopMeasurement(Interpreter& interpreter, A) {
  interpreter.stopMeasurement();
  return Outcome::done();
}

// Each command with its effect.
const Table<Effect>& commands() {
  static const Table<Effect> table = {
      {"tracking start", [](Interpreter& i, A) { return i.startMeasurement(); }},
      {"tracking stop", &stopMeasurement},
      {"body transform %type %body %real*12", &transformBody},
      {"body delete_marker %type %body %marker",
       [](Interpreter& i, A a) { return i.database().deleteMarker(a.key, a.marker); }},
  };
  return table;
}

Outcome carryOut(const Table<Effect>& table, const char* what, Interpreter& interpreter,
                 const std::vector<Field>& fields) {
  FieldReader reader(interpreter.database());
  Outcome outcome;
  const Phrase<Effect>* const phrase = findPhrase(table, fields, what, reader, outcome);
  return phrase == nullptr ? outcome : phrase->action(interpreter, reader.arguments);
}

}  // namespace

QueryAnswer answerQuery(const Interpreter& interpreter, const std::vector<Field>& fields) {
  FieldReader reader(interpreter.database());
  QueryAnswer answer;
  const Phrase<Query>* const phrase = findPhrase(queries(), fields, "query", reader, answer.outcome);
  if (phrase != nullptr) {
    answer.value = phrase->action(interpreter, reader.arguments);
  }
  return answer;
}

Outcome carryOutSetting(Interpreter& interpreter, const std::vector<Field>& fields) {
  return carryOut(settings(), "setting", interpreter, fields);
}

Outcome carryOutCommand(Interpreter& interpreter, const std::vector<Field>& fields) {
  return carryOut(commands(), "command", interpreter, fields);
}

}  // namespace korvex2
