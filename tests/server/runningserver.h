// A server on a copy of the shipped database, in a thread of its own, on a free port of this machine.
#ifndef KORVEX2_TESTS_RUNNINGSERVER_H
#define KORVEX2_TESTS_RUNNINGSERVER_H

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "backendserver.h"
#include "databasecopy.h"
#include "tcpclient.h"

namespace korvex2_test {

/// The test's own thread uses the database only while the server is stopped.
class RunningServer : public DatabaseCopy {
 protected:
  void SetUp() override {
    DatabaseCopy::SetUp();
    start();
  }
  void TearDown() override { stop(); }

  /// Starts with `limits` and `rate`, at `host`.
  void start(const char* host = "127.0.0.1") {
    stop();
    server = std::make_unique<korvex2::BackendServer>(*database, korvex2::LiveLines(), rate, limits);
    ASSERT_EQ(server->listen({host, 0}).toStdString(), "");
    ASSERT_NE(server->address().port, 0);
    thread = std::thread([this] { server->run(); });
  }
  /// Ends it; what clients were told lasts.
  void stop() {
    if (thread.joinable()) {
      server->stop();
      thread.join();
    }
    server.reset();
  }
  /// Stops the server and opens the folder anew.
  void reopen() {
    stop();
    open();
  }
  std::uint16_t port() const { return server->address().port; }
  TcpClient connect() const { return TcpClient(port()); }

  korvex2::ServerLimits limits;
  int rate = 200;
  std::unique_ptr<korvex2::BackendServer> server;
  std::thread thread;
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

}  // namespace korvex2_test

#endif
