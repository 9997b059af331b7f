// See hostchannel.h.
#include "hostchannel.h"

#include <algorithm>

#include <QThread>

#include "backendconnection.h"
#include "channeltext.h"
#include "hostlogging.h"
#include "messagereceiver.h"

namespace korvex2 {

namespace {

const char* const reportReceiver = "standard";
/// Longest report shown; a module's runaway text must not fill the window.
constexpr int longestReport = 2000;

/// Copies into a caller's buffer of answerCapacity characters.
bool copyBounded(const QByteArray& text, char* buffer) {
  if (text.size() >= answerCapacity) {
    return false;
  }
  std::copy(text.cbegin(), text.cend(), buffer);
  buffer[text.size()] = '\0';
  return true;
}

/// Descriptions of bodies come in the language of whoever wrote them, so an answer may be any line of UTF-8.
bool isOneLineOfText(const QByteArray& answer) {
  if (isPrintableAscii(answer)) {
    return true;  // as nearly all are
  }
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
  return std::none_of(answer.cbegin(), answer.cend(), isControl) && QString::fromUtf8(answer).toUtf8() == answer;
}

QString textOf(const char* characters) {
  QString text = QString::fromUtf8(characters).trimmed();
  if (text.size() > longestReport) {
    text.truncate(longestReport);
    text += QChar(0x2026);
  }
  return text;
}

}  // namespace

const char* const HostChannel::hostName = "Front end";

HostChannel::HostChannel(BackendConnection* connection, QObject* parent) : QObject(parent), connection_(connection) {}

void HostChannel::setConnection(BackendConnection* connection) { connection_ = connection; }

bool HostChannel::onOwnThread(const char* operation) const {
  if (QThread::currentThread() == thread()) {
    return true;
  }
  qCWarning(logChannel) << operation << "was called on a foreign thread and refused";
  return false;
}

int HostChannel::ask(const char* prefix, const char* format, va_list values, QByteArray& line, QByteArray& answer) {
  if (!onOwnThread("a backend operation")) {
    return wrongArgument;
  }
  const std::optional<QByteArray> text = formatCommand(format, values);
  if (!text || text->size() + static_cast<int>(qstrlen(prefix)) > longestCommand) {
    qCWarning(logChannel) << "a text that cannot be sent was refused, its format:" << (format ? format : "(null)");
    return wrongText;
  }
  line = prefix + *text;
  const int result = exchange(line, answer);
  emit exchanged(line, answer, result != notAnswered);
  if (result == notAnswered) {
    return result;
  }
  if (!isOneLineOfText(answer) || !answer.startsWith("korvex2 ")) {
    qCWarning(logChannel) << "an answer that is none:" << answer.left(answerCapacity);
    return wrongAnswer;
  }
  return isRefusal(answer) ? refused : success;
}

int HostChannel::exchange(const QByteArray& line, QByteArray& answer) {
  answer.clear();
  if (connection_ == nullptr) {
    return notAnswered;
  }
  QByteArray received;
  QString told;
  const bool answered = connection_->sharesBackend() ? guard_.exchange(*connection_, line, received, told)
                                                     : connection_->exchange(line, received);
  if (!answered) {
    return notAnswered;
  }
  answer = withoutLineEnd(received);
  if (!told.isEmpty()) {
    report(told);
  }
  return success;
}

int HostChannel::query(const char* format, va_list values, QByteArray& value) {
  QByteArray line;
  QByteArray answer;
  const int result = ask("korvex2 get ", format, values, line, answer);
  if (result != success) {
    return result;
  }
  const QByteArray text = line.mid(static_cast<int>(qstrlen("korvex2 get ")));
  const std::optional<QByteArray> found = valueAfter("korvex2 set " + text, answer);
  if (!found) {
    qCWarning(logChannel) << "the answer" << answer.left(answerCapacity) << "belongs to another query than" << line;
    return wrongAnswer;
  }
  value = *found;
  return success;
}

int HostChannel::send_raw_command(char* answer, const char* format, ...) {
  if (answer == nullptr) {
    return wrongArgument;
  }
  answer[0] = '\0';
  QByteArray line;
  QByteArray received;
  va_list values;
  va_start(values, format);
  const int result = ask("", format, values, line, received);
  va_end(values);
  // Some callers look at the answer only, so a refusal is handed over as well.
  if ((result == success || result == refused) && !copyBounded(received, answer)) {
    return answerTooLong;
  }
  return result;
}

int HostChannel::get_string(char* answer, const char* format, ...) {
  if (answer == nullptr) {
    return wrongArgument;
  }
  answer[0] = '\0';
  QByteArray value;
  va_list values;
  va_start(values, format);
  const int result = query(format, values, value);
  va_end(values);
  if (result != success) {
    return result;
  }
  return copyBounded(value, answer) ? success : answerTooLong;
}

int HostChannel::get_int(int* answer, const char* format, ...) {
  if (answer == nullptr) {
    return wrongArgument;
  }
  QByteArray value;
  va_list values;
  va_start(values, format);
  const int result = query(format, values, value);
  va_end(values);
  if (result != success) {
    return result;
  }
  const std::optional<int> number = parseInteger(value);
  if (!number) {
    return wrongAnswer;
  }
  *answer = *number;
  return success;
}

int HostChannel::get_reals(double* reals, int count, const char* format, ...) {
  if (reals == nullptr || count <= 0) {
    return wrongArgument;
  }
  QByteArray value;
  va_list values;
  va_start(values, format);
  const int result = query(format, values, value);
  va_end(values);
  if (result != success) {
    return result;
  }
  const std::optional<std::vector<double>> numbers = parseReals(value, count);
  if (!numbers) {
    return wrongAnswer;
  }
  std::copy(numbers->cbegin(), numbers->cend(), reals);
  return success;
}

int HostChannel::set_value(const char* format, ...) {
  QByteArray line;
  QByteArray answer;
  va_list values;
  va_start(values, format);
  const int result = ask("korvex2 set ", format, values, line, answer);
  va_end(values);
  if (result != success) {
    return result;
  }
  return answer == "korvex2 ok" ? success : wrongAnswer;
}

int HostChannel::register_requester(const char* tag, Requester* requester) {
  return distributor_.add(QByteArray(tag), requester) ? success : wrongArgument;
}

int HostChannel::unregister_requester(const char* tag, Requester* requester) {
  return distributor_.remove(QByteArray(tag), requester) ? success : wrongArgument;
}

int HostChannel::send_message(const char* receiver, const char* sender, int kind, const char* text) {
  if (receiver == nullptr || sender == nullptr || text == nullptr || !onOwnThread("send_message")) {
    return wrongArgument;
  }
  if (qstrcmp(receiver, reportReceiver) == 0) {
    qCInfo(logChannel) << "report from" << sender << "kind" << kind << ":" << text;
    emit reported(textOf(sender), kind, textOf(text));
    return success;
  }
  const auto found = receivers_.find(receiver);
  if (found == receivers_.end()) {
    report(tr("A message from %1 found no receiver \"%2\": %3").arg(textOf(sender), textOf(receiver), textOf(text)));
    return unknownReceiver;
  }
  // The receiver may open a dialog and return when it is closed, and registrations may change meanwhile.
  return found->second->transmit_message(kind, sender, text);
}

int HostChannel::register_message_receiver(const char* name, MessageReceiver* receiver) {
  if (name == nullptr || *name == '\0' || receiver == nullptr || qstrcmp(name, reportReceiver) == 0 ||
      !onOwnThread("register_message_receiver")) {
    return wrongArgument;
  }
  MessageReceiver*& registered = receivers_[name];
  if (registered != nullptr && registered != receiver) {
    qCWarning(logChannel) << "the message receiver" << name << "was replaced by another one";
  }
  registered = receiver;
  return success;
}

int HostChannel::unregister_message_receiver(const char* name, MessageReceiver* receiver) {
  if (name == nullptr || receiver == nullptr || !onOwnThread("unregister_message_receiver")) {
    return wrongArgument;
  }
  const auto found = receivers_.find(name);
  if (found == receivers_.end() || found->second != receiver) {
    return unknownReceiver;
  }
  receivers_.erase(found);
  return success;
}

void HostChannel::report(const QString& text) {
  qCInfo(logHost) << "report:" << text;
  emit reported(tr(hostName), 1, text);
}

}  // namespace korvex2
