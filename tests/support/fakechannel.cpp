// See fakechannel.h.
#include "fakechannel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <locale>
#include <sstream>

namespace {

std::string formatted(const char* format, va_list values) {
  char buffer[1024];
  const int length = std::vsnprintf(buffer, sizeof buffer, format, values);
  EXPECT_LT(length, static_cast<int>(sizeof buffer)) << "text too long for the channel double";
  return buffer;
}

void copyAnswer(char* buffer, const std::string& text) {
  ASSERT_LT(text.size(), 200u) << "answers hold at most 200 characters";
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = '\0';
}

}  // namespace

FakeChannel::Answer FakeChannel::answerTo(const std::string& operation, const std::string& text) {
  const std::string entry = operation + " " + text;
  log.push_back(entry);
  if (std::find(failing.begin(), failing.end(), entry) != failing.end()) {
    return {1, ""};
  }
  if (respond) {
    return respond(operation, text);
  }
  const auto found = answers.find(text);
  return found == answers.end() ? Answer{1, ""} : Answer{0, found->second};
}

int FakeChannel::send_raw_command(char* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Answer given = answerTo("send_raw_command", formatted(format, values));
  va_end(values);
  if (given.result == 0) {
    copyAnswer(answer, given.text);
  }
  return given.result;
}

int FakeChannel::get_string(char* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Answer given = answerTo("get_string", formatted(format, values));
  va_end(values);
  if (given.result == 0) {
    copyAnswer(answer, given.text);
  }
  return given.result;
}

int FakeChannel::get_int(int* answer, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Answer given = answerTo("get_int", formatted(format, values));
  va_end(values);
  if (given.result == 0) {
    *answer = std::stoi(given.text);
  }
  return given.result;
}

int FakeChannel::get_reals(double* answer, int count, const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Answer given = answerTo("get_reals", formatted(format, values));
  va_end(values);
  if (given.result == 0) {
    std::istringstream numbers(given.text);
    numbers.imbue(std::locale::classic());
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(numbers >> answer[i]) << "the scripted answer \"" << given.text << "\" is too short";
    }
  }
  return given.result;
}

int FakeChannel::set_value(const char* format, ...) {
  va_list values;
  va_start(values, format);
  const Answer given = answerTo("set_value", formatted(format, values));
  va_end(values);
  return given.result;
}

int FakeChannel::register_requester(const char* tag, Requester* requester) {
  log.push_back(std::string("register_requester ") + tag);
  requesters.emplace_back(tag, requester);
  return 0;
}

int FakeChannel::unregister_requester(const char* tag, Requester* requester) {
  log.push_back(std::string("unregister_requester ") + tag);
  const auto found = std::find(requesters.begin(), requesters.end(), std::make_pair(std::string(tag), requester));
  if (found != requesters.end()) {
    requesters.erase(found);
  }
  return 0;
}

int FakeChannel::send_message(const char* receiver, const char* sender, int kind, const char* text) {
  log.push_back(std::string("send_message ") + receiver + " " + sender + " " + std::to_string(kind) + " " + text);
  return 0;
}

int FakeChannel::register_message_receiver(const char* name, MessageReceiver* receiver) {
  log.push_back(std::string("register_message_receiver ") + name);
  receivers[name] = receiver;
  return 0;
}

int FakeChannel::unregister_message_receiver(const char* name, MessageReceiver* receiver) {
  log.push_back(std::string("unregister_message_receiver ") + name);
  const auto found = receivers.find(name);
  if (found != receivers.end() && found->second == receiver) {
    receivers.erase(found);
  }
  return 0;
}

std::vector<std::string> FakeChannel::takeLog() {
  std::vector<std::string> taken;
  taken.swap(log);
  return taken;
}

std::vector<std::string> FakeChannel::logged(const std::string& prefix) const {
  std::vector<std::string> found;
  std::copy_if(log.begin(), log.end(), std::back_inserter(found),
               [&prefix](const std::string& entry) { return entry.compare(0, prefix.size(), prefix) == 0; });
  return found;
}

std::vector<std::string> FakeChannel::reports() const {
  const std::string prefix = "send_message standard Korvex2 1 ";
  std::vector<std::string> texts;
  for (const std::string& entry : logged(prefix)) {
    texts.push_back(entry.substr(prefix.size()));
  }
  return texts;
}
