// See listenaddress.h.
#include "listenaddress.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstring>

namespace korvex2 {

namespace {

bool isNumericAddress(const QByteArray& host) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICHOST;
  addrinfo* found = nullptr;
  if (host.isEmpty() || getaddrinfo(host.constData(), nullptr, &hints, &found) != 0) {
    return false;
  }
  freeaddrinfo(found);
  return true;
}

bool isPort(const QByteArray& text) {
  return !text.isEmpty() && text.size() <= 5 && text.toUInt() <= 65535 &&
         text.count() == static_cast<int>(strspn(text.constData(), "0123456789"));
}

}  // namespace

QByteArray ListenAddress::text() const {
  const QByteArray shown = host.contains(':') ? '[' + host + ']' : host;
  return shown + ':' + QByteArray::number(port);
}

bool ListenAddress::isLoopback() const { return host.startsWith("127.") || host == "::1"; }

std::optional<ListenAddress> listenAddressFromText(const QString& text) {
  QByteArray host = text.toLatin1();
  QByteArray port = QByteArray::number(defaultBackendPort);
  if (host.startsWith('[')) {
    const int close = host.indexOf(']');
    if (close < 0 || (close + 1 < host.size() && host[close + 1] != ':') || !host.left(close).contains(':')) {
      return std::nullopt;
    }
    port = close + 1 < host.size() ? host.mid(close + 2) : port;
    host = host.mid(1, close - 1);
  } else if (host.count(':') == 1) {
    const int colon = host.indexOf(':');
    port = host.mid(colon + 1);
    host = host.left(colon);
  }
  if (host == "localhost") {
    host = "127.0.0.1";
  }
  // Without their four parts, old short forms such as "127.1" would pass, and "1234", which is a port without a colon.
  if (!isPort(port) || !isNumericAddress(host) || (!host.contains(':') && host.count('.') != 3)) {
    return std::nullopt;
  }
  return ListenAddress{host, static_cast<std::uint16_t>(port.toUInt())};
}

}  // namespace korvex2
