// Double of the host's channel: keeps one ordered log of everything asked of it and answers as the test says.
#ifndef KORVEX2_TESTS_FAKECHANNEL_H
#define KORVEX2_TESTS_FAKECHANNEL_H

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "iomanager.h"

/// The log holds one text an operation, the operation's name, a blank and the formatted text:
///   "get_string config is_changeable"
///   "send_raw_command korvex2 tracking stop"
///   "register_requester 6d"
///   "register_message_receiver BodyAdjustmentModule"
///   "send_message standard Korvex2 1 Error: Unable to check mea status"
///
/// Answers come from `respond` when set, else from `answers` by formatted text; a text without an answer fails (the
/// operation returns 1 and leaves the caller's buffer alone). For get_int and get_reals the answer text is numbers
/// separated by blanks. An operation whose name is in `failing` (by whole log entry) returns 1.
class FakeChannel : public IOManager {
 public:
  struct Answer {
    int result = 0;
    std::string text;
  };

  int send_raw_command(char* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_string(char* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_int(int* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);
  int get_reals(double* values, int count, const char* format, ...) override KORVEX2_PRINTF(4, 5);
  int set_value(const char* format, ...) override KORVEX2_PRINTF(2, 3);
  int register_requester(const char* tag, Requester* requester) override;
  int unregister_requester(const char* tag, Requester* requester) override;
  int send_message(const char* receiver, const char* sender, int kind, const char* text) override;
  int register_message_receiver(const char* name, MessageReceiver* receiver) override;
  int unregister_message_receiver(const char* name, MessageReceiver* receiver) override;

  /// Entries logged since the last call of takeLog().
  std::vector<std::string> takeLog();
  /// Entries of `log` that begin with `prefix`, in order.
  std::vector<std::string> logged(const std::string& prefix) const;
  /// Error reports in the log, texts only: what was sent to "standard" from "Korvex2" with kind 1.
  std::vector<std::string> reports() const;

  std::vector<std::string> log;
  std::map<std::string, std::string> answers;
  std::vector<std::string> failing;
  /// Called with the operation's name and the formatted text.
  std::function<Answer(const std::string& operation, const std::string& text)> respond;
  std::map<std::string, MessageReceiver*> receivers;
  std::vector<std::pair<std::string, Requester*>> requesters;

 private:
  Answer answerTo(const std::string& operation, const std::string& text);
};

#endif
