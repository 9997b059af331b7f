// Answers command lines: splits them, hands the fields to the vocabulary, puts the answer into words.
#include "interpreter.h"

#include <vector>

#include "commandline.h"
#include "commands.h"

namespace korvex2 {

namespace {

QByteArray answerTo(const Outcome& outcome) {
  if (outcome) {
    return QByteArrayLiteral("korvex2 ok");
  }
  // A text may name a file; whatever its name holds, the answer stays one line with two quotes.
  QByteArray text = outcome.text.toUtf8();
  for (char& c : text) {
    if (c == '"' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      c = '?';
    }
  }
  return "korvex2 err " + QByteArray::number(static_cast<int>(outcome.number)) + " \"" + text + '"';
}

}  // namespace

Interpreter::Interpreter(BodyDatabase& database) : database_(database) {}

Outcome Interpreter::startMeasurement() {
  if (!database_.settings().trackingAvailable) {
    return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("tracking is not available"));
  }
  measuring_ = true;
  return Outcome::done();
}

Outcome Interpreter::setTrackingAvailable(bool available) {
  Outcome outcome = database_.setTrackingAvailable(available);
  if (outcome && !available) {
    stopMeasurement();  // and it does not come back by itself
  }
  return outcome;
}

QByteArray Interpreter::answer(const QByteArray& line, ClientState& client) {
  CommandLine command = splitCommandLine(line);
  if (!command.outcome) {
    return answerTo(command.outcome);
  }
  std::vector<Field>& fields = command.fields;
  if (fields.empty() || fields[0].quoted || fields[0].text != "korvex2") {
    return answerTo(Outcome::failed(ErrorNumber::Unknown, QStringLiteral("a command begins with korvex2")));
  }
  const QByteArray verb = fields.size() < 2 || fields[1].quoted ? QByteArray() : fields[1].text;
  const bool isCommand = verb != "get" && verb != "set";
  fields.erase(fields.begin(), fields.begin() + (isCommand ? 1 : 2));
  if (isCommand) {
    return answerTo(carryOutCommand(*this, client, fields));
  }
  if (verb == "set") {
    return answerTo(carryOutSetting(*this, client, fields));
  }
  const QueryAnswer query = answerQuery(*this, client, fields);
  if (!query.outcome) {
    return answerTo(query.outcome);
  }
  QByteArray answer;
  answer.reserve(line.size() + query.value.size() + 1);
  answer += "korvex2 set ";
  for (const Field& field : fields) {
    answer += field.text;  // as asked, so that the sender finds its query in the answer
    answer += ' ';
  }
  answer += query.value;
  return answer;
}

}  // namespace korvex2
