// What the backend keeps for each of its clients: output channels, and the body states that a client expects.
#ifndef KORVEX2_BACKEND_CLIENTSTATE_H
#define KORVEX2_BACKEND_CLIENTSTATE_H

#include <QByteArray>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "body.h"
#include "outcome.h"

namespace korvex2 {

/// A named selection of live lines, and where they go.
struct OutputChannel {
  std::set<QByteArray> kinds{QByteArrayLiteral("6d")};  ///< record kinds that are switched on
  std::uint16_t udpPort = 0;                            ///< port at the client's own address; 0: sent nowhere
};

/// Lives as long as the client's connection, and ends with it. Database, settings and measurement are not in here: all
/// clients share them.
///
/// Channels are named `ch` and 1 to 12 lower-case letters or digits. "chmon" is always there; another one comes to be
/// when something of it is set, and goes when its output is ended. One that is not there can be asked for all the same:
/// it tells what a new one would.
class ClientState {
 public:
  static constexpr std::size_t mostChannels = 8;        ///< "chmon" among them
  static constexpr std::size_t mostExpectations = 198;  ///< every body of two types of 99

  /// @param hasNetwork  whether the client is reached over a network, so that lines can be sent to a port of it
  explicit ClientState(bool hasNetwork = false);

  static bool isChannelName(const QByteArray& name);

  bool isOutputActive(const QByteArray& channel, const QByteArray& kind) const;
  /// Refused when it takes one more channel than a client may have.
  Outcome setOutputActive(const QByteArray& channel, const QByteArray& kind, bool active);
  /// 0: none.
  std::uint16_t udpPort(const QByteArray& channel) const;
  /// Begins to send a channel to a port of the client, or, with 0, ends it; a channel other than "chmon" is gone then.
  /// Refused where there is no network, and when it takes one channel too many.
  Outcome setUdpPort(const QByteArray& channel, std::uint16_t port);
  const std::map<QByteArray, OutputChannel>& channels() const { return channels_; }
  /// Another number after every change of a channel.
  std::uint64_t channelsVersion() const { return channelsVersion_; }

  /// From now on the client's changes of the body's markers shall meet this state (see bodyState()); takes the place of
  /// an earlier expectation for the same body.
  Outcome expect(const BodyKey& key, const QByteArray& state);
  /// Nothing any more.
  void expectNothing(const BodyKey& key);
  std::optional<QByteArray> expectation(const BodyKey& key) const;

 private:
  struct Expectation {
    BodyKey key;
    QByteArray state;
  };

  OutputChannel* channelToChange(const QByteArray& name);
  std::vector<Expectation>::const_iterator find(const BodyKey& key) const;

  const bool hasNetwork_;
  std::map<QByteArray, OutputChannel> channels_;
  std::uint64_t channelsVersion_ = 0;
  std::vector<Expectation> expectations_;
};

}  // namespace korvex2

#endif
