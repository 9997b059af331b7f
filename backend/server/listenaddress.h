// An address and a port to listen on.
#ifndef KORVEX2_BACKEND_LISTENADDRESS_H
#define KORVEX2_BACKEND_LISTENADDRESS_H

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

#include "backendport.h"

namespace korvex2 {

/// A numeric address of this machine, IPv4 or IPv6 without brackets. "0.0.0.0" and "::" stand for all of them.
struct ListenAddress {
  QByteArray host = QByteArrayLiteral("127.0.0.1");
  std::uint16_t port = defaultBackendPort;  ///< 0: one that is free

  /// "127.0.0.1:27410", "[::1]:27410"
  QByteArray text() const;
  /// Whether only programs on this machine can come.
  bool isLoopback() const;
};

/// Reads "ADDRESS:PORT" or "ADDRESS" (with the default port); an IPv6 address stands in brackets when a port follows.
/// "localhost" stands for 127.0.0.1. Nothing when the text is none of these.
std::optional<ListenAddress> listenAddressFromText(const QString& text);

}  // namespace korvex2

#endif
