// The tables of the command language and the reading of their fields.
#include "commands.h"

#include <QList>

#include <algorithm>
#include <initializer_list>
#include <optional>

#include "bodyfileformat.h"
#include "bodystate.h"
#include "clientstate.h"
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

  using Take = Outcome (FieldReader::*)(const QByteArray&);

  // What reads the field at the place of a pattern's word; null for a word that stands for itself.
  static Take takerOf(const QByteArray& word) {
    struct Kind {
      const char* placeholder;
      Take take;
    };
    static const Kind kinds[] = {
        {"%type", &FieldReader::takeType},       {"%typenumber", &FieldReader::takeTypeNumber},
        {"%body", &FieldReader::takeBody},       {"%marker", &FieldReader::takeMarker},
        {"%count", &FieldReader::takeCount},     {"%flag", &FieldReader::takeFlag},
        {"%real", &FieldReader::takeReal},       {"%version", &FieldReader::takeVersion},
        {"%kind", &FieldReader::takeLineKind},   {"%text", &FieldReader::takeText},
        {"%channel", &FieldReader::takeChannel}, {"%port", &FieldReader::takePort},
        {"%state", &FieldReader::takeState},     {"%file", &FieldReader::takeFile},
    };
    const auto* const kind =
        std::find_if(std::begin(kinds), std::end(kinds), [&word](const Kind& k) { return word == k.placeholder; });
    return kind == std::end(kinds) ? nullptr : kind->take;
  }

  Outcome take(Take reader, const Field& field) {
    if (field.quoted && reader != &FieldReader::takeText) {
      return badValue(QStringLiteral("a field is in double quotes that is no text"));
    }
    return (this->*reader)(field.text);
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

  Outcome takeChannel(const QByteArray& field) {
    arguments.channel = field;
    return ClientState::isChannelName(field) ? Outcome::done() : badField("an output channel such as chmon", field);
  }

  Outcome takePort(const QByteArray& field) {
    const std::optional<int> port = integerFromText(field);
    if (!port || *port < 1 || *port > 65535) {
      return badField("a port from 1 to 65535", field);
    }
    arguments.port = static_cast<std::uint16_t>(*port);
    return Outcome::done();
  }

  Outcome takeState(const QByteArray& field) {
    return isBodyState(field) ? takeText(field) : badField("a body state of 16 lower-case hexadecimal digits", field);
  }

  Outcome takeFile(const QByteArray& field) {
    const auto decoded = QByteArray::fromBase64Encoding(field, QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? takeText(*decoded) : badField("a body file in base64", field);
  }

  const BodyDatabase& database_;
};

// A word of a pattern: one that stands for itself, or one that stands for a field.
struct Word {
  QByteArray text;
  FieldReader::Take take;  // null when it stands for itself
};

// The words of a pattern. "%real*3" stands for three fields.
std::vector<Word> wordsOf(const char* pattern) {
  std::vector<Word> words;
  for (const QByteArray& word : QByteArray(pattern).split(' ')) {
    const int star = word.indexOf('*');
    const QByteArray text = star < 0 ? word : word.left(star);
    words.insert(words.end(), star < 0 ? 1U : word.mid(star + 1).toUInt(), {text, FieldReader::takerOf(text)});
  }
  return words;
}

// A line of a table; `Action` is a query's value or a setting's or command's effect.
template <typename Action>
struct Phrase {
  Phrase(const char* pattern, Action action)
      : words(wordsOf(pattern)),
        literals(static_cast<std::size_t>(
            std::find_if(words.begin(), words.end(), [](const Word& w) { return w.take != nullptr; }) - words.begin())),
        action(action) {}

  // Whether every word that stands for itself stands at its place, as far as there are fields.
  bool beginsAs(const std::vector<Field>& fields) const {
    const auto count = static_cast<std::ptrdiff_t>(std::min(words.size(), fields.size()));
    return fields.size() >= literals &&
           std::equal(words.begin(), words.begin() + count, fields.begin(), [](const Word& word, const Field& field) {
             return word.take != nullptr || (!field.quoted && field.text == word.text);
           });
  }

  std::vector<Word> words;
  std::size_t literals;  // words before the first that stands for a field
  Action action;
};

template <typename Action>
using Table = std::vector<Phrase<Action>>;

// Finds the first phrase that the fields begin with and reads its fields.
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
  for (std::size_t i = phrase->literals; i < fields.size(); ++i) {
    if (phrase->words[i].take != nullptr) {
      outcome = reader.take(phrase->words[i].take, fields[i]);
      if (!outcome) {
        return nullptr;
      }
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

using Query = QueryAnswer (*)(const Interpreter&, const ClientState&, const Arguments&);
using I = const Interpreter&;
using C = const ClientState&;
using A = const Arguments&;

QueryAnswer numberOfBodies(I interpreter, C, A a) {
  return QByteArray::number(static_cast<int>(interpreter.database().bodies(a.key.type).size()));
}

QueryAnswer emissionText(I, C, A a) {
  const MarkerEmission& emission = markerOf(a).emission;
  return joined(emission.direction) + ' ' + numberText(emission.openingAngle);
}

QueryAnswer outputPort(I, const ClientState& client, A a) {
  const std::uint16_t port = client.udpPort(a.channel);
  return port == 0 ? QByteArrayLiteral("none") : "udp " + QByteArray::number(port);
}

// The body's file in one field. It must find room in a line, because that is how it comes back.
QueryAnswer bodyFile(I, C, A a) {
  if (a.body->markers.empty()) {
    return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("the body has no markers"));
  }
  constexpr int roomForTheHead = 128;
  QByteArray file = bodyFileBytes(geometryOf(*a.body)).toBase64();
  if (file.size() > Interpreter::longestLine - roomForTheHead) {
    return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("the body's file is too long for one line"));
  }
  return file;
}

// Each query with its value.
const Table<Query>& queries() {
  static const Table<Query> table = {
      {"version", [](I i, C, A) -> QueryAnswer { return i.database().settings().version.text(); }},
      {"status active", [](I i, C, A) -> QueryAnswer { return QByteArray(i.isMeasuring() ? "mea" : "idle"); }},
      {"config is_changeable",
       [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().configChangeable); }},
      {"tracking available", [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().trackingAvailable); }},
      {"output active %channel %kind",
       [](I, const ClientState& client, A a) -> QueryAnswer {
         return yesNo(client.isOutputActive(a.channel, a.text));
       }},
      {"output net %channel", &outputPort},
      {"wandgrip output_6dw", [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().deviceOutput6dw); }},
      {"wandgrip number_of_devices",
       [](I i, C, A) -> QueryAnswer { return QByteArray::number(i.database().numberOfDevices()); }},
      {"wandgrip multiuser_available",
       [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().multiuserAvailable); }},
      {"wandgrip multiuser", [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().multiuser); }},
      {"wandgrip multiuser_with_head_available",
       [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().multiuserWithHeadAvailable); }},
      {"wandgrip multiuser_with_head",
       [](I i, C, A) -> QueryAnswer { return yesNo(i.database().settings().multiuserWithHead); }},
      {"body number_of_types",
       [](I i, C, A) -> QueryAnswer { return QByteArray::number(static_cast<int>(i.database().types().size())); }},
      {"body type %typenumber", [](I, C, A a) -> QueryAnswer { return a.bodyType->name; }},
      {"body type_desc %type", [](I, C, A a) -> QueryAnswer { return quoted(a.bodyType->description); }},
      {"body number_of_bodies %type", &numberOfBodies},
      {"body desc %type %body", [](I, C, A a) -> QueryAnswer { return quoted(a.body->description); }},
      {"body target_type %type %body", [](I, C, A a) -> QueryAnswer { return '\'' + a.body->targetType + '\''; }},
      {"body calibrated %type %body", [](I, C, A a) -> QueryAnswer { return yesNo(a.body->calibrated); }},
      {"body number_of_marker %type %body",
       [](I, C, A a) -> QueryAnswer { return QByteArray::number(static_cast<int>(a.body->markers.size())); }},
      {"body marker %type %body %marker", [](I, C, A a) -> QueryAnswer { return joined(markerOf(a).position); }},
      {"body marker_emission %type %body %marker", &emissionText},
      {"body state %type %body", [](I, C, A a) -> QueryAnswer { return bodyState(*a.body); }},
      {"body expect %type %body",
       [](I, const ClientState& client, A a) -> QueryAnswer { return client.expectation(a.key).value_or("none"); }},
      {"body file %type %body", &bodyFile},
  };
  return table;
}

using Effect = Outcome (*)(Interpreter&, ClientState&, const Arguments&);
using M = ClientState&;  // one that may be modified

// Takes a body's markers from a file. The problem names the line, not a file: the sender knows which one it sent.
Outcome setBodyFile(Interpreter& interpreter, M, A a) {
  const BodyFileContent content = parseBodyFile(a.text, BodyDatabase::fewestMarkers);
  if (!content.problem.isEmpty()) {
    return badValue(QStringLiteral("line %1: %2").arg(QString::number(content.line), content.problem));
  }
  return interpreter.database().setGeometry(a.key, content.geometry);
}

Outcome setDescription(Interpreter& interpreter, M, A a) {
  const QString description = QString::fromUtf8(a.text);
  if (description.toUtf8() != a.text) {  // a byte order mark at the front would be lost without a word
    return badValue(QStringLiteral("the description has characters that cannot be kept"));
  }
  return interpreter.database().setDescription(a.key, description);
}

Outcome setTargetType(Interpreter& interpreter, M, A a) {
  QByteArray word = a.text;
  if (word.size() > 2 && word.startsWith('\'') && word.endsWith('\'')) {
    word = word.mid(1, word.size() - 2);
  }
  return interpreter.database().setTargetType(a.key, word);
}

// Each setting with its effect. Settings of the simulated hardware can be set like all others: it has no other panel.
const Table<Effect>& settings() {
  static const Table<Effect> table = {
      {"version %version", [](Interpreter& i, M, A a) { return i.database().setVersion(a.version); }},
      {"config is_changeable %flag", [](Interpreter& i, M, A a) { return i.database().setConfigChangeable(a.flag); }},
      {"tracking available %flag", [](Interpreter& i, M, A a) { return i.setTrackingAvailable(a.flag); }},
      {"output active %channel %kind %flag",
       [](Interpreter&, M client, A a) { return client.setOutputActive(a.channel, a.text, a.flag); }},
      {"output net %channel udp %port",
       [](Interpreter&, M client, A a) { return client.setUdpPort(a.channel, a.port); }},
      {"output net %channel none", [](Interpreter&, M client, A a) { return client.setUdpPort(a.channel, 0); }},
      {"wandgrip output_6dw %flag", [](Interpreter& i, M, A a) { return i.database().setDeviceOutput6dw(a.flag); }},
      {"wandgrip multiuser_available %flag",
       [](Interpreter& i, M, A a) { return i.database().setMultiuserAvailable(a.flag); }},
      {"wandgrip multiuser %flag", [](Interpreter& i, M, A a) { return i.database().setMultiuser(a.flag); }},
      {"wandgrip multiuser_with_head_available %flag",
       [](Interpreter& i, M, A a) { return i.database().setMultiuserWithHeadAvailable(a.flag); }},
      {"wandgrip multiuser_with_head %flag",
       [](Interpreter& i, M, A a) { return i.database().setMultiuserWithHead(a.flag); }},
      {"body desc %type %body %text", &setDescription},
      {"body target_type %type %body %text", &setTargetType},
      {"body calibrated %type %body %flag",
       [](Interpreter& i, M, A a) { return i.database().setCalibrated(a.key, a.flag); }},
      {"body number_of_marker %type %body %count",
       [](Interpreter& i, M, A a) { return i.database().setNumberOfMarkers(a.key, a.count); }},
      {"body marker %type %body %marker %real*3",
       [](Interpreter& i, M, A a) {
         return i.database().setMarkerPosition(a.key, a.marker, {{a.reals[0], a.reals[1], a.reals[2]}});
       }},
      {"body marker_emission %type %body %marker %real*4",
       [](Interpreter& i, M, A a) {
         return i.database().setMarkerEmission(a.key, a.marker, {{{a.reals[0], a.reals[1], a.reals[2]}}, a.reals[3]});
       }},
      {"body file %type %body %file", &setBodyFile},
  };
  return table;
}

Outcome transformBody(Interpreter& interpreter, M, A a) {
  RigidTransform transform;
  std::copy_n(a.reals.begin(), 3, transform.position.begin());
  std::copy_n(a.reals.begin() + 3, 9, transform.rotation.begin());  // both column by column
  return interpreter.database().transform(a.key, transform);
}

Outcome stopMeasurement(Interpreter& interpreter, M, A) {
  interpreter.stopMeasurement();
  return Outcome::done();
}

Outcome expectNothing(Interpreter&, M client, A a) {
  client.expectNothing(a.key);
  return Outcome::done();
}

// Each command with its effect.
const Table<Effect>& commands() {
  static const Table<Effect> table = {
      {"tracking start", [](Interpreter& i, M, A) { return i.startMeasurement(); }},
      {"tracking stop", &stopMeasurement},
      {"body transform %type %body %real*12", &transformBody},
      {"body delete_marker %type %body %marker",
       [](Interpreter& i, M, A a) { return i.database().deleteMarker(a.key, a.marker); }},
      {"body expect %type %body none", &expectNothing},  // in front: the word is no state
      {"body expect %type %body %state", [](Interpreter&, M client, A a) { return client.expect(a.key, a.text); }},
  };
  return table;
}

Outcome carryOut(const Table<Effect>& table, const char* what, Interpreter& interpreter, ClientState& client,
                 const std::vector<Field>& fields) {
  FieldReader reader(interpreter.database());
  Outcome outcome;
  const Phrase<Effect>* const phrase = findPhrase(table, fields, what, reader, outcome);
  return phrase == nullptr ? outcome : phrase->action(interpreter, client, reader.arguments);
}

// The body whose markers a line is about to change; nothing when it is another kind of line or names no body. The line
// need not be right otherwise: a client whose markers are out of date shall read that first.
std::optional<BodyKey> bodyToChange(const BodyDatabase& database, const std::vector<Field>& fields,
                                    std::initializer_list<const char*> changes) {
  const bool isChange =
      fields.size() >= 4 && fields[0].text == "body" &&
      std::any_of(changes.begin(), changes.end(), [&fields](const char* change) { return fields[1].text == change; });
  if (!isChange) {
    return std::nullopt;
  }
  const BodyKey key{fields[2].text, numberBehind('b', fields[3].text).value_or(0)};
  return database.find(key) == nullptr ? std::nullopt : std::optional<BodyKey>(key);
}

// Carries a line out, if its body's markers are those that the client expects, and expects from then on what the line
// has made of them.
Outcome carryOutExpected(const Table<Effect>& table, const char* what, std::initializer_list<const char*> changes,
                         Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields) {
  const BodyDatabase& database = interpreter.database();
  const std::optional<BodyKey> changed = bodyToChange(database, fields, changes);
  const std::optional<QByteArray> expected = changed ? client.expectation(*changed) : std::nullopt;
  if (expected && *expected != bodyState(*database.find(*changed))) {
    return Outcome::failed(ErrorNumber::Changed,
                           QStringLiteral("the markers of the body are not those that were expected"));
  }
  Outcome outcome = carryOut(table, what, interpreter, client, fields);
  if (outcome && expected) {
    client.expect(*changed, bodyState(*database.find(*changed)));
  }
  return outcome;
}

template <typename Action>
void appendPhrases(std::vector<QByteArray>& phrases, const QByteArray& beginning, const Table<Action>& table) {
  for (const Phrase<Action>& phrase : table) {
    QByteArray text = beginning;
    for (const Word& word : phrase.words) {
      text += ' ' + word.text;
    }
    phrases.push_back(text);
  }
}

}  // namespace

std::vector<QByteArray> vocabulary() {
  std::vector<QByteArray> phrases;
  appendPhrases(phrases, "korvex2 get", queries());
  appendPhrases(phrases, "korvex2 set", settings());
  appendPhrases(phrases, "korvex2", commands());
  return phrases;
}

QueryAnswer answerQuery(const Interpreter& interpreter, const ClientState& client, const std::vector<Field>& fields) {
  FieldReader reader(interpreter.database());
  Outcome outcome;
  const Phrase<Query>* const phrase = findPhrase(queries(), fields, "query", reader, outcome);
  return phrase == nullptr ? QueryAnswer(outcome) : phrase->action(interpreter, client, reader.arguments);
}

Outcome carryOutSetting(Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields) {
  return carryOutExpected(settings(), "setting", {"number_of_marker", "marker", "marker_emission", "file"}, interpreter,
                          client, fields);
}

Outcome carryOutCommand(Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields) {
  return carryOutExpected(commands(), "command", {"transform", "delete_marker"}, interpreter, client, fields);
}

}  // namespace korvex2
