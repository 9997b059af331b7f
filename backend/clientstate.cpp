// See clientstate.h.
#include "clientstate.h"

#include <algorithm>

namespace korvex2 {

namespace {

const char monitor[] = "chmon";

Outcome tooManyChannels() {
  return Outcome::failed(
      ErrorNumber::NotAvailable,
      QStringLiteral("a client has at most %1 output channels").arg(static_cast<int>(ClientState::mostChannels)));
}

}  // namespace

ClientState::ClientState(bool hasNetwork) : hasNetwork_(hasNetwork), channels_{{monitor, OutputChannel()}} {}

bool ClientState::isChannelName(const QByteArray& name) {
  return name.startsWith("ch") && name.size() >= 3 && name.size() <= 14 &&
         std::all_of(name.begin() + 2, name.end(),
                     [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
}

OutputChannel* ClientState::channelToChange(const QByteArray& name) {
  const auto found = channels_.find(name);
  if (found != channels_.end()) {
    return &found->second;
  }
  return channels_.size() < mostChannels ? &channels_[name] : nullptr;
}

bool ClientState::isOutputActive(const QByteArray& channel, const QByteArray& kind) const {
  const auto found = channels_.find(channel);
  return (found == channels_.end() ? OutputChannel() : found->second).kinds.count(kind) != 0;
}

Outcome ClientState::setOutputActive(const QByteArray& channel, const QByteArray& kind, bool active) {
  OutputChannel* const changed = channelToChange(channel);
  if (changed == nullptr) {
    return tooManyChannels();
  }
  if (active) {
    changed->kinds.insert(kind);
  } else {
    changed->kinds.erase(kind);
  }
  ++channelsVersion_;
  return Outcome::done();
}

std::uint16_t ClientState::udpPort(const QByteArray& channel) const {
  const auto found = channels_.find(channel);
  return found == channels_.end() ? std::uint16_t(0) : found->second.udpPort;
}

Outcome ClientState::setUdpPort(const QByteArray& channel, std::uint16_t port) {
  if (!hasNetwork_) {
    return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("there is no network between client and backend"));
  }
  ++channelsVersion_;
  if (port == 0 && channel != monitor) {
    channels_.erase(channel);
    return Outcome::done();
  }
  OutputChannel* const changed = channelToChange(channel);
  if (changed == nullptr) {
    return tooManyChannels();
  }
  changed->udpPort = port;
  return Outcome::done();
}

std::vector<ClientState::Expectation>::const_iterator ClientState::find(const BodyKey& key) const {
  return std::find_if(expectations_.begin(), expectations_.end(),
                      [&key](const Expectation& expectation) { return expectation.key == key; });
}

Outcome ClientState::expect(const BodyKey& key, const QByteArray& state) {
  const auto same = find(key);
  if (same == expectations_.end() && expectations_.size() >= mostExpectations) {
    return Outcome::failed(
        ErrorNumber::NotAvailable,
        QStringLiteral("a client has at most %1 expectations").arg(static_cast<int>(mostExpectations)));
  }
  if (same != expectations_.end()) {
    expectations_[static_cast<std::size_t>(same - expectations_.begin())].state = state;
  } else {
    expectations_.push_back({key, state});
  }
  return Outcome::done();
}

void ClientState::expectNothing(const BodyKey& key) {
  const auto found = find(key);
  if (found != expectations_.end()) {
    expectations_.erase(found);
  }
}

std::optional<QByteArray> ClientState::expectation(const BodyKey& key) const {
  const auto found = find(key);
  return found == expectations_.end() ? std::nullopt : std::optional<QByteArray>(found->state);
}

}  // namespace korvex2
