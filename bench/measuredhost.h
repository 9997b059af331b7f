// The front end on a backend on the network, with clocks around the connection and around the module's channel.
#ifndef KORVEX2_BENCH_MEASUREDHOST_H
#define KORVEX2_BENCH_MEASUREDHOST_H

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "bodyadjustmentdialog.h"
#include "frontend.h"
#include "iomanager.h"
#include "networkconnection.h"
#include "pingpong.h"

namespace korvex2_bench {

/// A connection that counts and times its exchanges.
class MeasuredConnection : public korvex2::NetworkConnection {
 public:
  using korvex2::NetworkConnection::NetworkConnection;
  bool exchange(const QByteArray& line, QByteArray& answer) override;
  /// Lines that travel together make one round trip of their lengths' sums.
  QByteArrayList exchangeTogether(const QByteArrayList& lines) override;

  std::vector<QByteArray> commands;
  LineLengths exchanged;
  double seconds = 0.0;
};

/// The channel that the dialog gets: hands everything on to the host's and times that. It has to format the texts for
/// it, which is not in the times; what is in them is the host's formatting of a text that is ready.
class MeasuredChannel : public IOManager {
 public:
  explicit MeasuredChannel(IOManager& host) : host_(host) {}

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

  double seconds = 0.0;  ///< in calls that went to the backend

 private:
  IOManager& host_;
};

/// The front end with its window, and the dialog as the module makes it.
class MeasuredHost {
 public:
  explicit MeasuredHost(quint16 port);
  ~MeasuredHost();

  struct Opening {
    double whole = 0.0;        ///< seconds from the request to the dialog on the screen
    double inChannel = 0.0;    ///< of them in the channel's calls
    double inExchanges = 0.0;  ///< of these in the connection
    std::vector<QByteArray> commands;
    LineLengths lines;  ///< their lengths, and those of the answers
  };
  /// Opens the dialog on a standard body and closes it again.
  Opening open(int body);
  /// Opens the dialog on a standard body, puts it online, and hands it to `during`, which runs inside its event loop.
  void follow(int body, const std::function<void(QDialog&)>& during);

  korvex2::Frontend& frontend() { return *frontend_; }

 private:
  MeasuredConnection* connection_;  // the front end's
  std::unique_ptr<korvex2::Frontend> frontend_;
  std::unique_ptr<MeasuredChannel> channel_;
  BackendVersions versions_;
  std::unique_ptr<BodyAdjustmentDialog> dialog_;
};

}  // namespace korvex2_bench

#endif
