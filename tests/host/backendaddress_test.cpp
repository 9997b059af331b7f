// Addresses of backends as an operator may write them.
#include "backendaddress.h"

#include <gtest/gtest.h>

#include <string>

using namespace korvex2;

namespace {

struct Written {
  const char* text;
  const char* host;
  int port;
};

struct Wrong {
  const char* text;
  const char* problem;
};

}  // namespace

class GoodAddress : public testing::TestWithParam<Written> {};
class BadAddress : public testing::TestWithParam<Wrong> {};

TEST_P(GoodAddress, IsTakenApart) {
  QString problem;
  const std::optional<BackendAddress> address = BackendAddress::parse(GetParam().text, &problem);
  ASSERT_TRUE(address) << problem.toStdString();
  EXPECT_EQ(address->host.toStdString(), GetParam().host);
  EXPECT_EQ(address->port, GetParam().port);
  EXPECT_EQ(BackendAddress::parse(address->text()), address) << "its own text is read as the same";
}

INSTANTIATE_TEST_SUITE_P(
    All, GoodAddress,
    testing::Values(Written{"127.0.0.1:4000", "127.0.0.1", 4000}, Written{"127.0.0.1", "127.0.0.1", 27410},
                    Written{"  tracker:1  ", "tracker", 1}, Written{"Tracker.Example:65535", "tracker.example", 65535},
                    Written{"my_host-2", "my_host-2", 27410}, Written{"[::1]:4000", "::1", 4000},
                    Written{"[::1]", "::1", 27410}, Written{"::1", "::1", 27410},
                    Written{"[2001:DB8:0:0:0:0:0:7]:80", "2001:db8::7", 80}, Written{"fe80::1%lo", "fe80::1%lo", 27410},
                    Written{"3com.example:00080", "3com.example", 80}));

TEST_P(BadAddress, IsRefusedWithAReason) {
  QString problem;
  EXPECT_FALSE(BackendAddress::parse(GetParam().text, &problem));
  EXPECT_EQ(problem.toStdString(), GetParam().problem);
  EXPECT_FALSE(BackendAddress::parse(GetParam().text)) << "the reason need not be asked for";
}

namespace {
const char* const portProblem = "The port has to be a number from 1 to 65535.";
}  // namespace

INSTANTIATE_TEST_SUITE_P(
    All, BadAddress,
    testing::Values(Wrong{"", "Type the address of a backend: a host, or host and port."},
                    Wrong{"   ", "Type the address of a backend: a host, or host and port."},
                    Wrong{"host:", portProblem}, Wrong{"host:0", portProblem}, Wrong{"host:65536", portProblem},
                    Wrong{"host:-1", portProblem}, Wrong{"host:+80", portProblem}, Wrong{"host: 80", portProblem},
                    Wrong{"host:8o", portProblem}, Wrong{"host:999999999999", portProblem},
                    Wrong{"[::1]:", portProblem}, Wrong{":80", "The name of the host is missing."},
                    Wrong{"[]:80", "The name of the host is missing."},
                    Wrong{"[::1", "An address in brackets ends with \"]\" or \"]:\" and a port."},
                    Wrong{"[::1]80", "An address in brackets ends with \"]\" or \"]:\" and a port."},
                    Wrong{"[host]:80", "\"host\" is no name or address of a host."},
                    Wrong{"1:2:3", "\"1:2:3\" is no name or address of a host."},
                    Wrong{"300.1.1.1", "\"300.1.1.1\" is no name or address of a host."},
                    Wrong{"127.1", "\"127.1\" is no name or address of a host."},
                    Wrong{"127", "\"127\" is no name or address of a host."},
                    Wrong{"010.0.0.1", "\"010.0.0.1\" is no name or address of a host."},
                    Wrong{"a..b", "\"a..b\" is no name or address of a host."},
                    Wrong{"-a", "\"-a\" is no name or address of a host."}, Wrong{"http://host", portProblem},
                    Wrong{"two words", "\"two words\" is no name or address of a host."},
                    Wrong{"h\xc3\xb6st", "\"h\xc3\xb6st\" is no name or address of a host."}));

TEST(BackendAddress, LooksForABackendOfThisMachineUnlessToldOtherwise) {
  EXPECT_EQ(BackendAddress().text().toStdString(), "127.0.0.1:27410");
}

TEST(BackendAddress, AVeryLongNameIsRefused) {
  const QString label = QString(50, QLatin1Char('a')) + QLatin1Char('.');
  EXPECT_TRUE(BackendAddress::parse(label.repeated(4) + QLatin1Char('b')));
  EXPECT_FALSE(BackendAddress::parse(label.repeated(5) + QLatin1Char('b')));
  EXPECT_FALSE(BackendAddress::parse(QString(64, QLatin1Char('a'))));
}
