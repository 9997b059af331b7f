// Where a backend listens: a host and a port.
#ifndef KORVEX2_HOST_BACKENDADDRESS_H
#define KORVEX2_HOST_BACKENDADDRESS_H

#include <cstdint>
#include <optional>

#include <QString>

#include "backendport.h"

namespace korvex2 {

/// A host by name or by number, and a TCP port.
struct BackendAddress {
  QString host = QStringLiteral("127.0.0.1");  ///< name, IPv4 or IPv6 address; without brackets
  std::uint16_t port = defaultBackendPort;     ///< 1 to 65535

  /// "127.0.0.1:27410", "[::1]:27410": what parse() reads as the same address.
  QString text() const;

  friend bool operator==(const BackendAddress& a, const BackendAddress& b) {
    return a.port == b.port && a.host == b.host;
  }
  friend bool operator!=(const BackendAddress& a, const BackendAddress& b) { return !(a == b); }

  /// Reads "HOST:PORT", "HOST" (with the usual port), "[IPV6]:PORT", "[IPV6]" and "IPV6"; blanks around it do not
  /// matter, nor does the case of a host's letters.
  /// @param problem  when nothing is returned: what is wrong with the text, one sentence for the operator
  static std::optional<BackendAddress> parse(const QString& text, QString* problem = nullptr);
};

}  // namespace korvex2

#endif
