// Fuzz target: command lines for the backend, on a small database in a temporary folder.
//
// The input is text; each of its lines, filled up to the longest length where it ends with tildes, is answered by one
// interpreter. An input that changed the database is followed
// by a restart, which must find the same.
#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "bodydatabase.h"
#include "bodyfileformat.h"
#include "clientstate.h"
#include "commandline.h"
#include "fuzztarget.h"
#include "interpreter.h"

using korvex2::BackendSettings;
using korvex2::Body;
using korvex2::BodyDatabase;
using korvex2::ClientState;
using korvex2::Field;
using korvex2::Interpreter;

namespace {

constexpr int mostLines = 40;

/// The database under test and its folder. Both are made afresh only after an input that changed them.
class Fresh {
 public:
  /// @return what was wrong, empty when nothing
  std::string prepare() {
    if (database_ != nullptr) {
      return {};
    }
    QDir(path()).removeRecursively();
    const QString problem = korvex2::copyShippedDatabase(QStringLiteral(KORVEX2_FUZZ_FOLDER "/database"), path());
    database_ = korvex2::openDatabase(path());
    return (problem + database_->problems().join(QLatin1Char(' '))).toStdString();
  }
  /// Closes the database, which gives its lock back. The next input gets a new one.
  void close() { database_.reset(); }
  BodyDatabase& database() { return *database_; }
  QString path() const { return temporary_.filePath(QStringLiteral("database")); }

 private:
  /// Each change is flushed to its disk before it is acknowledged; memory spares the waiting.
  static QString temporaryTemplate() {
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/korvex2-fuzz-XXXXXX");
  }
  QTemporaryDir temporary_{temporaryTemplate()};
  std::unique_ptr<BodyDatabase> database_;
};

/// Everything that a restart must find again.
struct Snapshot {
  BackendSettings settings;
  std::vector<Body> bodies;
};

Snapshot snapshotOf(const BodyDatabase& database) {
  Snapshot snapshot{database.settings(), {}};
  for (const korvex2::BodyType& type : database.types()) {
    const std::vector<Body>& bodies = database.bodies(type.name);
    snapshot.bodies.insert(snapshot.bodies.end(), bodies.begin(), bodies.end());
  }
  return snapshot;
}

bool operator==(const Snapshot& a, const Snapshot& b) {
  return a.settings == b.settings &&
         std::equal(
             a.bodies.begin(), a.bodies.end(), b.bodies.begin(), b.bodies.end(), [](const Body& c, const Body& d) {
               return c.key == d.key && c.description == d.description && c.targetType == d.targetType &&
                      c.calibrated == d.calibrated && c.markers == d.markers && c.lines == d.lines &&
                      c.transform == d.transform && c.text == d.text && c.rest == d.rest && c.problem == d.problem;
             });
}

/// @return what is unsound, empty when nothing
std::string checkBodies(const Snapshot& snapshot) {
  if (snapshot.bodies.size() != 4) {
    return "bodies came or went";
  }
  for (const Body& body : snapshot.bodies) {
    const std::size_t markers = body.markers.size();
    if (markers < 3 || markers > 99) {
      return "the number of markers is out of bounds";
    }
    for (const korvex2::BodyMarker& marker : body.markers) {
      for (std::size_t i = 0; i < 3; ++i) {
        if (!(std::fabs(marker.position[i]) <= 1e9) || !(std::fabs(marker.emission.direction[i]) <= 1e9)) {
          return "a coordinate is out of bounds";
        }
      }
    }
    for (const korvex2::BodyLine& line : body.lines) {
      if (line.from < 0 || line.to < 0 || line.from == line.to ||
          static_cast<std::size_t>(std::max(line.from, line.to)) >= markers) {
        return "a line does not join two markers";
      }
    }
  }
  return {};
}

bool isError(const QByteArray& answer) { return answer.startsWith("korvex2 err "); }

std::string checkForm(const QByteArray& answer) {
  const bool control = std::any_of(answer.begin(), answer.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
  if (control) {
    return "the answer is not one line of printable text";
  }
  if (answer == "korvex2 ok") {
    return {};
  }
  if (answer.startsWith("korvex2 set ")) {  // the line as asked, a description of 120 bytes, its quotes
    return answer.size() <= Interpreter::longestLine + 200 ? std::string() : "the answer is too long";
  }
  if (!isError(answer)) {
    return "the answer is none of the three";
  }
  const int quote = answer.indexOf('"');
  const int number = quote < 14 ? -1 : answer.mid(12, quote - 13).toInt();
  const bool sound = number >= 1 && number <= 11 && answer.count('"') == 2 && answer.endsWith('"') &&
                     quote < answer.size() - 2 && answer.size() <= 600;
  return sound ? std::string() : "the error is malformed";
}

/// How many of the fields behind "set" name the setting; the others are its value. 0: no setting.
std::size_t nameFields(const std::vector<Field>& fields) {
  if (fields.size() < 3) {
    return 0;
  }
  const QByteArray group = fields[2].text;
  if (group == "version") {
    return 1;
  }
  if (group == "output") {
    return fields.size() > 3 && fields[3].text == "net" ? 3 : 4;
  }
  if (group == "body" && fields.size() > 3) {
    return fields[3].text == "marker" || fields[3].text == "marker_emission" ? 5 : 4;
  }
  return 2;
}

bool isSameValue(const QByteArray& sent, const QByteArray& answered) {
  if (sent == answered) {
    return true;
  }
  if (sent.count('.') == 2) {  // a version: 01.2.3 is 1.2.3
    const QList<QByteArray> a = sent.split('.');
    const QList<QByteArray> b = answered.split('.');
    return b.size() == 3 && a[0].toInt() == b[0].toInt() && a[1].toInt() == b[1].toInt() &&
           a[2].toInt() == b[2].toInt();
  }
  bool isNumber = false;
  const double value = answered.toDouble(&isNumber);
  return isNumber && value == sent.toDouble(&isNumber) && isNumber;
}

QByteArray withoutApostrophes(const QByteArray& text) {
  return text.size() > 2 && text.startsWith('\'') && text.endsWith('\'') ? text.mid(1, text.size() - 2) : text;
}

/// Body files in base64: the same markers and lines, however the numbers are written.
bool isSameFile(const QByteArray& sent, const QByteArray& answered) {
  const korvex2::BodyFileContent a = korvex2::parseBodyFile(QByteArray::fromBase64(sent));
  const korvex2::BodyFileContent b = korvex2::parseBodyFile(QByteArray::fromBase64(answered));
  return a.problem.isEmpty() && b.problem.isEmpty() && a.geometry.positions == b.geometry.positions &&
         a.geometry.lines == b.geometry.lines;
}

/// What was set can be got.
std::string checkGetAfterSet(Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields) {
  const std::size_t name = nameFields(fields);
  if (name == 0 || fields.size() < 2 + name) {
    return "a setting without a name was accepted";
  }
  QByteArray query;
  for (std::size_t i = 2; i < 2 + name; ++i) {
    query += ' ' + fields[i].text;
  }
  const QByteArray answer = interpreter.answer("korvex2 get" + query, client);
  const QByteArray head = "korvex2 set" + query + ' ';
  if (!answer.startsWith(head)) {
    return "what was set cannot be got: " + answer.toStdString();
  }
  if (query.startsWith(" body desc ")) {
    return answer.mid(head.size()) == '"' + fields.back().text + '"' ? std::string() : "another description came back";
  }
  if (query.startsWith(" body file ")) {
    return isSameFile(fields.back().text, answer.mid(head.size())) ? std::string() : "another body file came back";
  }
  const QList<QByteArray> values = answer.mid(head.size()).split(' ');
  bool same = static_cast<std::size_t>(values.size()) == fields.size() - 2 - name;
  for (int i = 0; same && i < values.size(); ++i) {
    const QByteArray& sent = fields[2 + name + static_cast<std::size_t>(i)].text;
    same = isSameValue(withoutApostrophes(sent), withoutApostrophes(values[i]));
  }
  return same ? std::string() : "another value came back: " + answer.toStdString();
}

/// A query repeats itself, and its answer begins with the query as it was asked.
std::string checkQuery(Interpreter& interpreter, ClientState& client, const QByteArray& line, const QByteArray& answer,
                       const std::vector<Field>& fields) {
  QByteArray head = "korvex2 set ";
  for (std::size_t i = 2; i < fields.size(); ++i) {
    head += fields[i].text + ' ';
  }
  if (!answer.startsWith(head) || answer.size() == head.size()) {
    return "the answer does not repeat the query";
  }
  return interpreter.answer(line, client) == answer ? std::string() : "the same query has another answer";
}

std::string checkMeasurement(Interpreter& interpreter, const QByteArray& verb) {
  const bool measuring = interpreter.answer("korvex2 get status active") == "korvex2 set status active mea";
  if (measuring != interpreter.isMeasuring() || (measuring && !interpreter.database().settings().trackingAvailable)) {
    return "the state of the measurement is not told";
  }
  return verb.isEmpty() || measuring == (verb == "start") ? std::string() : "the measurement did not follow";
}

/// One line: its answer, and what the answer promises.
std::string checkLine(Interpreter& interpreter, ClientState& client, const QByteArray& line) {
  const Snapshot before = snapshotOf(interpreter.database());
  const QByteArray answer = interpreter.answer(line, client);
  const Snapshot after = snapshotOf(interpreter.database());
  std::string problem = checkForm(answer);
  if (problem.empty()) {
    problem = checkBodies(after);
  }
  if (!problem.empty()) {
    return problem;
  }
  const std::vector<Field> fields = korvex2::splitCommandLine(line).fields;
  const QByteArray verb = fields.size() < 2 ? QByteArray() : fields[1].text;
  if (answer != "korvex2 ok") {
    if (!(before == after)) {
      return "a line that was no change changed something";
    }
    return isError(answer) ? std::string() : checkQuery(interpreter, client, line, answer, fields);
  }
  if (verb == "set") {
    problem = checkGetAfterSet(interpreter, client, fields);
  }
  return problem.empty() ? checkMeasurement(interpreter, verb == "tracking" ? fields[2].text : QByteArray()) : problem;
}

/// Lines that end with tildes are filled up with blanks: one gives a line one short of the longest, two the longest,
/// three and more one that is too long. So the limit can be met by small inputs.
QByteArray filledUp(const QByteArray& line) {
  int tildes = 0;
  while (tildes < 3 && line.endsWith(QByteArray(tildes + 1, '~'))) {
    ++tildes;
  }
  const int length = Interpreter::longestLine - 2 + tildes;
  return tildes == 0 || line.size() >= length ? line : line.left(line.size() - tildes).leftJustified(length, ' ');
}

std::string checkRestart(const QString& path, const Snapshot& before) {
  const std::unique_ptr<BodyDatabase> again = korvex2::openDatabase(path);
  if (!again->problems().isEmpty()) {
    return "a restart complains: " + again->problems().join(QStringLiteral("; ")).toStdString();
  }
  return snapshotOf(*again) == before ? std::string() : "a restart finds another database";
}

}  // namespace

int fuzzOne(const std::uint8_t* data, std::size_t size) {
  static Fresh fresh;
  std::string problem = fresh.prepare();
  if (!problem.empty()) {
    return fuzzProblem(problem);
  }
  Interpreter interpreter(fresh.database());
  ClientState client(true);  // on a network: everything can be set
  const Snapshot before = snapshotOf(fresh.database());
  const QList<QByteArray> lines = QByteArray::fromStdString(fuzzText(data, size)).split('\n');
  for (int i = 0; problem.empty() && i < std::min(lines.size(), mostLines); ++i) {
    problem = checkLine(interpreter, client, filledUp(lines[i]));
    if (!problem.empty()) {
      problem = "line " + std::to_string(i + 1) + ", " + problem + ": " + lines[i].toStdString();
    }
  }
  const Snapshot after = snapshotOf(fresh.database());
  if (!problem.empty() || !(before == after)) {
    fresh.close();  // the interpreter is not asked any more
    problem = problem.empty() ? checkRestart(fresh.path(), after) : problem;
  }
  return problem.empty() ? 0 : fuzzProblem(problem);
}
