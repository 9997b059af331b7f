// See measuredhost.h.
#include "measuredhost.h"

#include <QCheckBox>
#include <QTimer>

#include <cstdarg>
#include <cstdio>

namespace korvex2_bench {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

/// Adds the time of its life.
class Stopwatch {
 public:
  explicit Stopwatch(double& sum) : sum_(sum) {}
  ~Stopwatch() { sum_ += secondsSince(begin_); }

 private:
  double& sum_;
  const Clock::time_point begin_ = Clock::now();
};

struct Text {
  char text[1024];
};

Text formatted(const char* format, va_list values) {
  Text text;
  std::vsnprintf(text.text, sizeof(text.text), format, values);
  return text;
}

}  // namespace

bool MeasuredConnection::exchange(const QByteArray& line, QByteArray& answer) {
  const Clock::time_point begin = Clock::now();
  const bool answered = korvex2::NetworkConnection::exchange(line, answer);
  seconds += secondsSince(begin);
  commands.push_back(line);
  exchanged.emplace_back(line.size(), answer.size());
  return answered;
}

QByteArrayList MeasuredConnection::exchangeTogether(const QByteArrayList& lines) {
  const Clock::time_point begin = Clock::now();
  const QByteArrayList answers = korvex2::NetworkConnection::exchangeTogether(lines);
  seconds += secondsSince(begin);
  commands.insert(commands.end(), lines.begin(), lines.end());
  exchanged.emplace_back(lines.join('\n').size(), answers.join('\n').size());
  return answers;
}

int MeasuredChannel::send_raw_command(char* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Text text = formatted(format, values);
  va_end(values);
  const Stopwatch watch(seconds);
  return host_.send_raw_command(answer, "%s", text.text);
}

int MeasuredChannel::get_string(char* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Text text = formatted(format, values);
  va_end(values);
  const Stopwatch watch(seconds);
  return host_.get_string(answer, "%s", text.text);
}

int MeasuredChannel::get_int(int* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Text text = formatted(format, values);
  va_end(values);
  const Stopwatch watch(seconds);
  return host_.get_int(answer, "%s", text.text);
}

int MeasuredChannel::get_reals(double* reals, int count, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Text text = formatted(format, values);
  va_end(values);
  const Stopwatch watch(seconds);
  return host_.get_reals(reals, count, "%s", text.text);
}

int MeasuredChannel::set_value(const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Text text = formatted(format, values);
  va_end(values);
  const Stopwatch watch(seconds);
  return host_.set_value("%s", text.text);
}

int MeasuredChannel::register_requester(const char* tag, Requester* requester) {
  return host_.register_requester(tag, requester);
}

int MeasuredChannel::unregister_requester(const char* tag, Requester* requester) {
  return host_.unregister_requester(tag, requester);
}

int MeasuredChannel::send_message(const char* receiver, const char* sender, int kind, const char* text) {
  return host_.send_message(receiver, sender, kind, text);
}

int MeasuredChannel::register_message_receiver(const char* name, MessageReceiver* receiver) {
  return host_.register_message_receiver(name, receiver);
}

int MeasuredChannel::unregister_message_receiver(const char* name, MessageReceiver* receiver) {
  return host_.unregister_message_receiver(name, receiver);
}

MeasuredHost::MeasuredHost(quint16 port) {
  korvex2::BackendAddress address;
  address.port = port;
  auto connection = std::make_unique<MeasuredConnection>(address);
  connection_ = connection.get();
  frontend_ = std::make_unique<korvex2::Frontend>(std::move(connection));
  frontend_->window().show();
  channel_ = std::make_unique<MeasuredChannel>(frontend_->channel());
  versions_ = frontend_->versions();
  dialog_ = std::make_unique<BodyAdjustmentDialog>(channel_.get(), &frontend_->window(), &versions_);
}

MeasuredHost::~MeasuredHost() {
  dialog_->about_to_exit();
  dialog_.reset();
  frontend_->shutdown();
}

MeasuredHost::Opening MeasuredHost::open(int body) {
  Opening opening;
  connection_->commands.clear();
  connection_->exchanged.clear();
  connection_->seconds = 0.0;
  channel_->seconds = 0.0;
  const Clock::time_point begin = Clock::now();
  // The first turn of the dialog's own event loop: everything is read and shown.
  QTimer::singleShot(0, dialog_.get(), [&] {
    opening.whole = secondsSince(begin);
    opening.inChannel = channel_->seconds;
    opening.inExchanges = connection_->seconds;
    opening.commands = connection_->commands;
    opening.lines = connection_->exchanged;
    dialog_->reject();
  });
  dialog_->onReceiveOpenBodyAdjustmentDialog(QStringLiteral("standard"), QStringLiteral("standard|%1").arg(body));
  return opening;
}

void MeasuredHost::follow(int body, const std::function<void(QDialog&)>& during) {
  QTimer::singleShot(0, dialog_.get(), [&] {
    dialog_->findChild<QCheckBox*>(QStringLiteral("online_checkbox"))->click();
    during(*dialog_);
    dialog_->reject();
  });
  dialog_->onReceiveOpenBodyAdjustmentDialog(QStringLiteral("standard"), QStringLiteral("standard|%1").arg(body));
}

}  // namespace korvex2_bench
