// Lines over a socket, where only the socket itself shows what happens.
#include "linesocket.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

class Lines : public testing::Test {
 protected:
  void SetUp() override {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(::bind(listener, any, sizeof address), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    ASSERT_EQ(::getsockname(listener, any, &length), 0);
    const int near = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(::connect(near, any, sizeof address), 0);
    far = ::accept(listener, nullptr, nullptr);
    ASSERT_GE(far, 0);
    ::close(listener);
    lines = std::make_unique<LineSocket>(near, 200ms);
  }
  void TearDown() override { ::close(far); }
  static LineSocket::Clock::time_point soon() { return LineSocket::Clock::now() + 200ms; }
  /// What the other side reads until the end, and whether that was a clean one.
  std::string readToTheEnd(bool& clean) const {
    std::string text;
    char piece[64];
    ssize_t count = 0;
    while ((count = ::recv(far, piece, sizeof piece, 0)) > 0) {
      text.append(piece, static_cast<std::size_t>(count));
    }
    clean = count == 0;
    return text;
  }
  void send(const std::string& text) const {
    ASSERT_EQ(::send(far, text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
  }

  int far = -1;
  std::unique_ptr<LineSocket> lines;
};

}  // namespace

TEST_F(Lines, AClosedSocketDeliversWhatItWasGiven) {
  EXPECT_EQ(lines->write("last words\n", soon()), LineSocket::Result::done);
  lines.reset();
  bool clean = false;
  EXPECT_EQ(readToTheEnd(clean), "last words\n");
  EXPECT_TRUE(clean);
}

TEST_F(Lines, AnAbortedSocketIsResetSoThatNothingIsSentAnyMore) {
  EXPECT_EQ(lines->write("last words\n", soon()), LineSocket::Result::done);
  lines->abort();
  lines.reset();
  bool clean = true;
  readToTheEnd(clean);
  EXPECT_FALSE(clean);
}

TEST_F(Lines, AreTakenOneByOneHoweverTheyCome) {
  QByteArray line;
  EXPECT_EQ(lines->takeLine(line), LineSocket::Result::notYet);
  send("one\ntwo\r\n\nfo");
  EXPECT_EQ(lines->readLine(line, soon()), LineSocket::Result::done);
  EXPECT_EQ(line, "one");
  EXPECT_TRUE(lines->hasRest());
  EXPECT_EQ(lines->readLine(line, soon()), LineSocket::Result::done);
  EXPECT_EQ(line, "two");
  EXPECT_EQ(lines->takeLine(line), LineSocket::Result::done);
  EXPECT_EQ(line, "");
  EXPECT_EQ(lines->takeLine(line), LineSocket::Result::notYet);
  EXPECT_TRUE(lines->hasRest());
  EXPECT_EQ(lines->readLine(line, soon()), LineSocket::Result::late);
  send("ur\n");
  EXPECT_EQ(lines->readLine(line, soon()), LineSocket::Result::done);
  EXPECT_EQ(line, "four");
  EXPECT_FALSE(lines->hasRest());
  ::shutdown(far, SHUT_RDWR);
  EXPECT_EQ(lines->readLine(line, soon()), LineSocket::Result::closed);
}

TEST_F(Lines, ManyLinesInAPieceAreAllThere) {
  std::string text;
  for (int i = 0; i < 20000; ++i) {
    text += "line " + std::to_string(i) + "\n";
  }
  send(text.substr(0, 60000));
  QByteArray line;
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(lines->readLine(line, soon()), LineSocket::Result::done);
    ASSERT_EQ(line.toStdString(), "line " + std::to_string(i));
  }
}

TEST_F(Lines, APeerThatDoesNotReadIsLateNotWaitedForForEver) {
  const auto begin = LineSocket::Clock::now();
  EXPECT_EQ(lines->write(QByteArray(64 * 1024 * 1024, 'x'), soon()), LineSocket::Result::late);
  EXPECT_LT(LineSocket::Clock::now() - begin, 2s);
}
