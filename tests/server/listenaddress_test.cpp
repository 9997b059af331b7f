// Addresses to listen on, as an operator writes them.
#include "listenaddress.h"

#include <gtest/gtest.h>

#include <string>

using namespace korvex2;

namespace {

std::string read(const char* text) {
  const auto address = listenAddressFromText(QString::fromUtf8(text));
  return address ? address->text().toStdString() : "none";
}

}  // namespace

TEST(ListenAddress, IsThisMachineOnlyUnlessToldOtherwise) {
  EXPECT_EQ(ListenAddress().text(), "127.0.0.1:27410");
  EXPECT_TRUE(ListenAddress().isLoopback());
}

TEST(ListenAddress, IsReadFromText) {
  const std::pair<const char*, const char*> cases[] = {
      {"127.0.0.1:27410", "127.0.0.1:27410"},
      {"127.0.0.1:0", "127.0.0.1:0"},
      {"127.0.0.1", "127.0.0.1:27410"},
      {"0.0.0.0:65535", "0.0.0.0:65535"},
      {"localhost:5000", "127.0.0.1:5000"},
      {"localhost", "127.0.0.1:27410"},
      {"[::1]:5000", "[::1]:5000"},
      {"[::1]", "[::1]:27410"},
      {"::1", "[::1]:27410"},
      {"[::]:1", "[::]:1"},
      {"192.168.1.7:1", "192.168.1.7:1"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(read(text), expected) << text;
  }
}

TEST(ListenAddress, IsNotReadFromAnythingElse) {
  for (const char* text : {"",
                           ":",
                           ":5000",
                           "127.0.0.1:",
                           "127.0.0.1:65536",
                           "127.0.0.1:-1",
                           "127.0.0.1:5000x",
                           "127.0.0.1:+5",
                           "127.0.0.1:0x10",
                           "127.0.0.1: 5",
                           "127.0.0.1:123456",
                           "127.0.0.256:1",
                           "127.0.0",
                           "127.1:5",
                           "27410",
                           "host.example:5000",
                           "[::1",
                           "[::1]5000",
                           "[::1]:",
                           "::1]:5",
                           "[127.0.0.1]:5",
                           "[]:5",
                           "127.0.0.1:5:6",
                           "127.0.0.1/8:5",
                           "l\xc3\xb6kal:5"}) {
    EXPECT_EQ(read(text), "none") << text;
  }
}

TEST(ListenAddress, KnowsWhatIsThisMachineOnly) {
  for (const char* text : {"127.0.0.1:1", "127.9.9.9:1", "[::1]:1", "localhost:1"}) {
    EXPECT_TRUE(listenAddressFromText(QString::fromLatin1(text))->isLoopback()) << text;
  }
  for (const char* text : {"0.0.0.0:1", "[::]:1", "192.168.1.7:1", "[::ffff:127.0.0.1]:1"}) {
    EXPECT_FALSE(listenAddressFromText(QString::fromLatin1(text))->isLoopback()) << text;
  }
}
