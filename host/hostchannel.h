// The host's input/output object: what modules get as "CommandManager".
#ifndef KORVEX2_HOST_HOSTCHANNEL_H
#define KORVEX2_HOST_HOSTCHANNEL_H

#include <cstdarg>
#include <map>
#include <optional>

#include <QByteArray>
#include <QObject>
#include <QString>

#include "changeguard.h"
#include "iomanager.h"
#include "livedistributor.h"

namespace korvex2 {

class BackendConnection;

/// Formats texts, adds the protocol's prefixes, bounds and checks answers, and passes messages between modules.
///
/// | operation            | sends              | expects                  |
/// |----------------------|--------------------|--------------------------|
/// | send_raw_command     | TEXT               | any "korvex2 ..." answer |
/// | get_string, get_int, | korvex2 get TEXT   | korvex2 set TEXT VALUE   |
/// | get_reals            |                    |                          |
/// | set_value            | korvex2 set TEXT   | korvex2 ok               |
///
/// Results: 0 on success, one of Result otherwise. They are non-zero on a text that cannot be sent (longer than 1023
/// characters, empty, with control characters or other than ASCII), when no answer comes, on "korvex2 err", on an
/// answer that is not one line of UTF-8, on a wrong prefix, on an answer that does not parse, and on an answer that
/// needs more than 200 characters with its zero. A text buffer is always zero-terminated afterwards: it holds what was
/// asked for on success, else it is empty; but a raw command leaves the raw answer in it whenever one came that fits, a
/// refusal too. Numbers are written on success only. Null pointers are refused with wrongArgument.
///
/// Where other programs reach the same backend, changes of markers that a module has read are guarded, see ChangeGuard;
/// a refused one is told to the operator.
///
/// Operations with the backend run on the thread this object lives on (the GUI thread) and are refused elsewhere;
/// subscriptions may be made and ended on any thread.
class HostChannel : public QObject, public IOManager {
  Q_OBJECT

 public:
  enum Result {
    success = 0,
    wrongArgument = -1,   // null pointer, empty name, wrong thread
    wrongText = -2,       // the text cannot be sent
    notAnswered = -3,     // the backend was not reached or gave no answer
    refused = -4,         // "korvex2 err"
    wrongAnswer = -5,     // wrong prefix, or a value that does not parse
    answerTooLong = -6,   // does not fit the caller's buffer
    unknownReceiver = -7  // nobody is registered under that name
  };

  /// The connection stays the caller's and must outlive the channel; null stands for "not connected".
  explicit HostChannel(BackendConnection* connection, QObject* parent = nullptr);

  /// Another backend from now on; null for none. Subscriptions and receivers stay.
  void setConnection(BackendConnection* connection);

  int send_raw_command(char* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_string(char* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_int(int* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_reals(double* values, int count, const char* format, ...) override KORVEX2_PRINTF(4, 5);
  int set_value(const char* format, ...) override KORVEX2_PRINTF(2, 3);
  int register_requester(const char* tag, Requester* requester) override;
  int unregister_requester(const char* tag, Requester* requester) override;
  /// "standard" is the host's report (signal reported, 0); other names go to the registered receiver, whose result is
  /// returned. For an unknown name the host reports it itself and returns unknownReceiver.
  int send_message(const char* receiver, const char* sender, int kind, const char* text) override;
  /// A second registration under a name takes the first one's place. The name "standard" cannot be taken.
  int register_message_receiver(const char* name, MessageReceiver* receiver) override;
  /// Removes the registration when `name` is registered with exactly this receiver.
  int unregister_message_receiver(const char* name, MessageReceiver* receiver) override;

  /// Adds a line of the host's own to the report.
  void report(const QString& text);
  /// Where the source of live lines delivers them; usable on any thread.
  LiveDistributor& distributor() { return distributor_; }

  /// Sender's name of the host's own reports.
  static const char* const hostName;

 signals:
  /// One command and its answer, in the order they happened; `answered` is false when no answer came.
  void exchanged(const QByteArray& command, const QByteArray& answer, bool answered);
  /// Text for the operator: what modules send to "standard", and the host's own.
  void reported(const QString& sender, int kind, const QString& text);

 private:
  /// Formats, sends, and checks that an answer came which is no refusal. `answer` holds the answer without its line
  /// end, a refusal too. `prefix` is put before the text; the whole line is given back in `line`.
  int ask(const char* prefix, const char* format, va_list values, QByteArray& line, QByteArray& answer);
  /// Asks for a value: "korvex2 get TEXT", answered with "korvex2 set TEXT VALUE".
  int query(const char* format, va_list values, QByteArray& value);
  /// One line there and its answer back; notAnswered, refused or success.
  int exchange(const QByteArray& line, QByteArray& answer);
  bool onOwnThread(const char* operation) const;

  BackendConnection* connection_;
  ChangeGuard guard_;
  LiveDistributor distributor_;
  std::map<QByteArray, MessageReceiver*> receivers_;
};

}  // namespace korvex2

#endif
