// Frames at the full rate while commands are answered: neither thread waits for the other.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

#include "runningserver.h"
#include "udpreceiver.h"

namespace {

using korvex2_test::frameOf;
using korvex2_test::TcpClient;
using korvex2_test::UdpReceiver;

class ServerLive : public korvex2_test::RunningServer {
 protected:
  void SetUp() override {
    rate = 1000;
    RunningServer::SetUp();
  }
};

TEST_F(ServerLive, AThousandFramesASecondGoOnWhileCommandsAreAnswered) {
  TcpClient follower = connect();
  UdpReceiver receiver;
  ASSERT_EQ(follower.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  ASSERT_EQ(follower.ask("korvex2 set output active chmon 6dw2 yes"), "korvex2 ok");
  ASSERT_EQ(follower.ask("korvex2 tracking start"), "korvex2 ok");
  std::atomic<bool> done{false};
  std::atomic<int> queries{0};
  std::atomic<int> changes{0};
  std::atomic<int> refused{0};
  std::thread asking([&] {
    TcpClient client = connect();
    while (!done) {
      queries +=
          client.ask("korvex2 get body marker standard b01 m01").substr(0, 36) == "korvex2 set body marker standard b01"
              ? 1
              : 0;
    }
  });
  std::thread changing([&] {
    TcpClient client = connect();
    while (!done) {
      const bool ok = client.ask("korvex2 body transform standard b02 1 2 3 0 1 0 -1 0 0 0 0 1") == "korvex2 ok" &&
                      client.ask("korvex2 set output active chx 6dw2 yes") == "korvex2 ok";
      (ok ? changes : refused) += 1;
    }
  });
  const auto begin = std::chrono::steady_clock::now();
  const long first = frameOf(receiver.datagram());
  long last = first;
  int frames = 1;
  int backwards = 0;
  while (last < first + 600 || frames < 100) {  // on a busy machine many are left out, but they never end
    const long frame = frameOf(receiver.datagram());
    if (frame < 0) {
      break;
    }
    backwards += frame <= last ? 1 : 0;
    last = frame;
    ++frames;
  }
  const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  done = true;
  asking.join();
  changing.join();
  EXPECT_GE(last, first + 600);
  EXPECT_EQ(backwards, 0);
  EXPECT_GE(frames, 100);
  EXPECT_NEAR(elapsed, static_cast<double>(last - first) / 1000.0, 1.0) << "frame numbers keep the clock's time";
  EXPECT_GT(queries, 100);
  EXPECT_GT(changes, 5);
  EXPECT_EQ(refused, 0);
}

TEST_F(ServerLive, FramesFollowWhileClientsComeAndGo) {
  TcpClient follower = connect();
  UdpReceiver receiver;
  ASSERT_EQ(follower.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  ASSERT_EQ(follower.ask("korvex2 tracking start"), "korvex2 ok");
  for (int i = 0; i < 100; ++i) {
    TcpClient client = connect();
    UdpReceiver other;
    ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + other.port()), "korvex2 ok");
    ASSERT_GE(frameOf(other.datagram()), 0);
    ASSERT_GE(frameOf(receiver.datagram()), 0);
  }
}

TEST_F(ServerLive, AClientForWhichNoSocketWasLeftGetsItsLinesWhenOneIs) {
  TcpClient client = connect();
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  UdpReceiver receiver;
  rlimit usual{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
  const int next = ::dup(0);
  ASSERT_GE(next, 0);
  ::close(next);
  rlimit none = usual;
  none.rlim_cur = static_cast<rlim_t>(next);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const std::string answer = client.ask("korvex2 set output net chmon udp " + receiver.port());
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
  EXPECT_EQ(answer, "korvex2 ok");
  EXPECT_EQ(receiver.datagram(std::chrono::milliseconds(30)), "(none)");
  EXPECT_EQ(client.ask("korvex2 set output active chmon 6dw2 yes"), "korvex2 ok");
  EXPECT_GE(frameOf(receiver.datagram()), 0);
}

TEST_F(ServerLive, StopsWhileFramesAreSent) {
  for (int i = 0; i < 5; ++i) {
    start();
    TcpClient client = connect();
    UdpReceiver receiver;
    ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
    ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
    ASSERT_GE(frameOf(receiver.datagram()), 0);
    stop();
    receiver.drain();
    EXPECT_EQ(receiver.datagram(std::chrono::milliseconds(10)), "(none)");
  }
}

}  // namespace
