// See datagramsender.h.
#include "datagramsender.h"

#include <sys/socket.h>

#include <array>
#include <utility>

#include "livelines.h"

namespace korvex2 {

namespace {

// Frame number, time and one line of each kind, each with its line end, always fit.
static_assert(5 * (LiveLines::longestLine + 1) <= DatagramSender::longestDatagram);

constexpr LineKinds allKinds = kind6d | kind6dw | kind6dw2;

LineKinds kindOf(const QByteArray& name) {
  return name == "6d" ? kind6d : name == "6dw" ? kind6dw : name == "6dw2" ? kind6dw2 : 0;
}

QByteArray datagramOf(const std::vector<QByteArray>& lines, LineKinds kinds) {
  QByteArray datagram;
  for (const QByteArray& line : lines) {
    const LineKinds kind = kindOf(line.left(line.indexOf(' ')));
    if (kind == 0 || (kinds & kind) != 0) {
      datagram += line;
      datagram += '\n';
    }
  }
  return datagram;
}

}  // namespace

LineKinds kindsOf(const std::set<QByteArray>& names) {
  LineKinds kinds = 0;
  for (const QByteArray& name : names) {
    kinds |= kindOf(name);
  }
  return kinds;
}

std::set<QByteArray> kindNames(LineKinds kinds) {
  std::set<QByteArray> names;
  for (const char* name : {"6d", "6dw", "6dw2"}) {
    if ((kinds & kindOf(name)) != 0) {
      names.insert(name);
    }
  }
  return names;
}

void DatagramSender::setDestinations(std::vector<Destination> destinations) {
  auto next = std::make_shared<const Destinations>(std::move(destinations));
  const std::lock_guard<std::mutex> lock(mutex_);
  destinations_.swap(next);
}

std::shared_ptr<const DatagramSender::Destinations> DatagramSender::present() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return destinations_;
}

bool DatagramSender::wantsFrames() const { return !present()->empty(); }

void DatagramSender::frame(const std::vector<QByteArray>& lines) {
  const std::shared_ptr<const Destinations> destinations = present();
  std::array<QByteArray, allKinds + 1> datagrams;  // many destinations, few different selections
  for (const Destination& destination : *destinations) {
    QByteArray& datagram = datagrams[destination.kinds & allKinds];
    if (datagram.isEmpty()) {
      datagram = datagramOf(lines, destination.kinds);
    }
    // Lost is lost: the next frame tells newer poses. A port where nobody listens is the client's own business.
    static_cast<void>(::sendto(destination.socket->get(), datagram.constData(),
                               static_cast<std::size_t>(datagram.size()), MSG_DONTWAIT | MSG_NOSIGNAL,
                               reinterpret_cast<const sockaddr*>(&destination.address.storage),
                               destination.address.size));
  }
}

}  // namespace korvex2
