// See livedelivery.h.
#include "livedelivery.h"

#include <algorithm>

#include "livedistributor.h"

namespace korvex2 {

bool LiveDelivery::wantsFrames() const {
  static const QByteArray tags[] = {"fr", "ts", "6d", "6dw", "6dw2"};
  return std::any_of(std::begin(tags), std::end(tags),
                     [this](const QByteArray& tag) { return distributor_.hasSubscriber(tag); });
}

void LiveDelivery::frame(const std::vector<QByteArray>& lines) {
  for (const QByteArray& line : lines) {
    const QByteArray tag = line.left(line.indexOf(' '));
    if (distributor_.hasSubscriber(tag)) {
      delivered_.fetch_add(1, std::memory_order_relaxed);
      distributor_.deliver(tag, line);
    }
  }
}

void LiveDelivery::measurementStarted() { distributor_.measurementStarted(); }

void LiveDelivery::measurementStopped() { distributor_.measurementStopped(); }

}  // namespace korvex2
