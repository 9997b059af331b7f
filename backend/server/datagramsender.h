// Sends frames of live lines to the clients that asked for them, one datagram a frame.
#ifndef KORVEX2_BACKEND_DATAGRAMSENDER_H
#define KORVEX2_BACKEND_DATAGRAMSENDER_H

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "filedescriptor.h"
#include "livesink.h"
#include "sockets.h"

namespace korvex2 {

/// Set of record kinds, a bit each.
using LineKinds = unsigned;
constexpr LineKinds kind6d = 1;
constexpr LineKinds kind6dw = 2;
constexpr LineKinds kind6dw2 = 4;

LineKinds kindsOf(const std::set<QByteArray>& names);
std::set<QByteArray> kindNames(LineKinds kinds);

/// Where one client's output channel goes.
struct Destination {
  std::shared_ptr<const FileDescriptor> socket;  ///< to send from
  SocketAddress address;
  LineKinds kinds = 0;
};

/// A datagram has the lines of one frame, each ended by '\n': "fr", "ts" and the destination's kinds. Sending never
/// waits: a datagram that the system has no room for is left out, as one that gets lost on its way.
///
/// setDestinations() may be called on any thread while frames are sent; a frame that is being sent then goes to the old
/// ones.
class DatagramSender : public LiveSink {
 public:
  /// No datagram is longer.
  static constexpr int longestDatagram = 65507;

  void setDestinations(std::vector<Destination> destinations);

  bool wantsFrames() const override;
  void frame(const std::vector<QByteArray>& lines) override;

 private:
  using Destinations = std::vector<Destination>;

  std::shared_ptr<const Destinations> present() const;

  mutable std::mutex mutex_;
  std::shared_ptr<const Destinations> destinations_ = std::make_shared<const Destinations>();  // guarded by mutex_
};

}  // namespace korvex2

#endif
