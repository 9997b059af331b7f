// The scripted backend has the real one answer: every text goes through a host's channel and over a socket.
#include <gtest/gtest.h>

#include <QString>

#include <cstdio>
#include <memory>

#include "hostchannel.h"
#include "mirroredbackend.h"
#include "networkconnection.h"
#include "scriptedbackend.h"

namespace {

using korvex2_test::MirroredBackend;

/// Texts that stay scripted, because the case wants an answer that no real backend can be brought to give.
struct Scripted {
  const char* test;       ///< "Suite.Case"
  const char* beginning;  ///< of the texts
  const char* reason;
};
const Scripted scriptedTexts[] = {
    {"Choosing.ABodyWithoutMarkersLeavesThePreviousOneChosenWithoutAReport", "body number_of_marker wandgrip b01",
     "a calibrated body has at least three markers"},
    {"Choosing.ABodyOfOneMarkerIsRefusedWithItsWarningAndCannotBeEdited", "body ",
     "a calibrated body has at least three markers"},
    {"Layout.WarningsFitOnASmallScreenScaledByHalf", "wandgrip multiuser", "a setting is accepted and not done"},
    {"Online.OnlyACalibratedBodyOfARunningMeasurementCanBeFollowed", "korvex2 tracking start",
     "a command is accepted and not done"},
    {"Opening.AMeasurementThatDoesNotRunIsNotStopped", "korvex2 tracking start", "a command is accepted and not done"},
    {"Opening.AnUnavailableTrackingCanBeReadWhileTheDialogIsOpen", "status active",
     "nothing is measured while tracking is not available"},
    {"Opening.WithoutTrackingNoTrackingCommandIsSent", "status active",
     "nothing is measured while tracking is not available"},
    {"Opening.MultiUserModeThatStaysOnIsShown", "wandgrip multiuser", "a setting is accepted and not done"},
    {"Opening.MultiUserModeWithoutDevicesIsNoneOfTheOperatorsBusiness", "wandgrip ",
     "a setting is accepted and not done, and devices are listed that are not there"},
    {"Opening.BothWarningsCanBeReadTogether", "wandgrip multiuser", "a setting is accepted and not done"},
};

std::string runningCase() {
  const testing::TestInfo* const info = testing::UnitTest::GetInstance()->current_test_info();
  return std::string(info->test_suite_name()) + '.' + info->name();
}

bool isListed() {
  for (const Scripted& row : scriptedTexts) {
    if (runningCase() == row.test) {
      return true;
    }
  }
  return false;
}

bool staysScripted(const std::string& text) {
  for (const Scripted& row : scriptedTexts) {
    if (runningCase() == row.test && text.rfind(row.beginning, 0) == 0) {
      return true;
    }
  }
  return false;
}

std::string joined(const double* values, int count) {
  QByteArray text;
  for (int i = 0; i < count; ++i) {
    text += (i == 0 ? "" : " ") + QByteArray::number(values[i], 'g', 17);
  }
  return text.toStdString();
}

}  // namespace

/// One case's host: a connection, a channel on it, and the count of what went where.
struct ScriptedBackend::Elsewhere {
  ~Elsewhere() {
    std::printf("[ SOCKET   ] %d texts over the socket, %d answered by the script\n", sent, scripted);
    EXPECT_EQ(isListed(), scripted > 0) << "the list of what stays scripted and what did do not agree";
  }

  void connect(quint16 port) {
    channel.reset();
    connection.reset();
    connection = std::make_unique<korvex2::NetworkConnection>(korvex2::BackendAddress{"127.0.0.1", port});
    channel = std::make_unique<korvex2::HostChannel>(connection.get());
    QObject::connect(channel.get(), &korvex2::HostChannel::exchanged,
                     [this](const QByteArray& command, const QByteArray& answer, bool answered) {
                       lastExchange = command + " -> " + answer;
                       wasAnswered = answered;
                       ++exchanges;
                     });
  }

  FakeChannel::Answer ask(const std::string& operation, const std::string& text) {
    char buffer[200] = "";
    const char* const asked = text.c_str();
    if (operation == "get_int") {
      int number = 0;
      const int result = channel->get_int(&number, "%s", asked);
      return {result, result == 0 ? std::to_string(number) : ""};
    }
    if (operation == "get_reals") {
      const int count = text.rfind("body marker_emission ", 0) == 0 ? 4 : 3;
      double values[4] = {};
      const int result = channel->get_reals(values, count, "%s", asked);
      return {result, result == 0 ? joined(values, count) : ""};
    }
    if (operation == "set_value") {
      return {channel->set_value("%s", asked), ""};
    }
    const int result = operation == "get_string" ? channel->get_string(buffer, "%s", asked)
                                                 : channel->send_raw_command(buffer, "%s", asked);
    return {result, buffer};
  }

  std::unique_ptr<korvex2::NetworkConnection> connection;
  std::unique_ptr<korvex2::HostChannel> channel;
  QByteArray lastExchange;
  bool wasAnswered = false;
  int exchanges = 0;
  int sent = 0;
  int scripted = 0;
};

void ScriptedBackend::prepare() {
  if (!elsewhere_) {
    elsewhere_ = std::make_shared<Elsewhere>();
  }
  MirroredBackend& backend = MirroredBackend::instance();
  if (backend.bring(*this, isListed()) || !elsewhere_->connection) {
    elsewhere_->connect(backend.port());
  }
}

FakeChannel::Answer ScriptedBackend::undisturbedAnswer(const std::string& operation, const std::string& text) {
  prepare();
  if (staysScripted(text)) {
    ++elsewhere_->scripted;
    return scriptedAnswer(operation, text);
  }
  const int exchangesBefore = elsewhere_->exchanges;
  const Answer given = elsewhere_->ask(operation, text);
  ++elsewhere_->sent;
  EXPECT_GT(elsewhere_->exchanges, exchangesBefore) << "nothing was sent for " << text;
  EXPECT_TRUE(elsewhere_->wasAnswered) << text;
  // Nobody else is at work here, so a refusal means that host and backend understand the text differently. Only bodies
  // of a type that the case does not list may be missing.
  EXPECT_TRUE(given.result == 0 || elsewhere_->lastExchange.contains("-> korvex2 err 5 "))
      << elsewhere_->lastExchange.toStdString();
  if (operation == "set_value" || operation == "send_raw_command") {
    MirroredBackend::instance().readBack(*this, text);
  }
  return given;
}
