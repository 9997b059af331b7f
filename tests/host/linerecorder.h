// Double of a module that listens to live lines: keeps all calls in one list.
#ifndef KORVEX2_TESTS_LINERECORDER_H
#define KORVEX2_TESTS_LINERECORDER_H

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "requester.h"

/// Lines, and "started" and "stopped" between them, in the order of the calls. Usable from several threads.
class LineRecorder : public Requester {
 public:
  virtual ~LineRecorder() = default;

  int set_ascii_data(const char* tag, const char* line) override {
    const std::string text(line);
    add(text);
    const std::lock_guard<std::mutex> lock(mutex_);
    wrongTags_ += text.substr(0, text.find(' ')) == tag ? 0 : 1;
    return 0;
  }
  void set_mea_started() override { add("started"); }
  void set_mea_stopped() override { add("stopped"); }

  std::vector<std::string> calls() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }
  std::vector<std::string> takeCalls() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::move(calls_);
  }
  /// Lines whose tag is not their first word.
  int wrongTags() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return wrongTags_;
  }

 private:
  void add(const std::string& call) {
    const std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(call);
  }

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
  int wrongTags_ = 0;
};

/// Waits until the condition holds; false when it does not within ten seconds.
template <typename Condition>
bool holdsInTime(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

#endif
