// See backendaddress.h.
#include "backendaddress.h"

#include <algorithm>

#include <QCoreApplication>
#include <QHostAddress>
#include <QStringList>

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("BackendAddress", text); }

/// Longest name that the name service knows, and longest part of one.
constexpr int longestName = 253;
constexpr int longestLabel = 63;

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

bool isNameCharacter(QChar c) {
  return isDigit(c) || (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || c == QLatin1Char('-') ||
         c == QLatin1Char('_');
}

bool isNumber(const QString& text) { return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isDigit); }

/// The host as a name or four numbers, in lower case; null when it is neither.
QString hostNamed(const QString& text) {
  const QString host = text.toLower();
  const QStringList labels = host.split(QLatin1Char('.'));
  // What looks like numbers must be an address: resolvers read "127.1" or "010.0.0.1" in ways nobody expects.
  if (std::all_of(labels.cbegin(), labels.cend(), isNumber)) {
    const QHostAddress address(host);
    return address.protocol() == QAbstractSocket::IPv4Protocol && address.toString() == host ? host : QString();
  }
  const bool isName = host.size() <= longestName && std::all_of(labels.cbegin(), labels.cend(), [](const QString& l) {
                        return !l.isEmpty() && l.size() <= longestLabel &&
                               std::all_of(l.cbegin(), l.cend(), isNameCharacter) && !l.startsWith(QLatin1Char('-')) &&
                               !l.endsWith(QLatin1Char('-'));
                      });
  return isName ? host : QString();
}

/// An IPv6 address in its short form, with the scope it may have; null when it is none.
QString hostNumbered(const QString& text) {
  const QHostAddress address(text);
  return address.protocol() == QAbstractSocket::IPv6Protocol ? address.toString().toLower() : QString();
}

std::optional<std::uint16_t> portNumbered(const QString& text) {
  constexpr int mostDigits = 5;
  const int number = isNumber(text) && text.size() <= mostDigits ? text.toInt() : 0;
  return number >= 1 && number <= UINT16_MAX ? std::optional<std::uint16_t>(static_cast<std::uint16_t>(number))
                                             : std::nullopt;
}

/// Host and port as they were written; `port` is null where there is none, not even a colon.
struct Parts {
  QString host;
  QString port;
  bool bracketed = false;
};

std::optional<Parts> split(const QString& text) {
  Parts parts;
  QString rest;
  if (text.startsWith(QLatin1Char('['))) {
    const int end = text.indexOf(QLatin1Char(']'));
    rest = text.mid(end + 1);
    if (end < 0 || !(rest.isEmpty() || rest.startsWith(QLatin1Char(':')))) {
      return std::nullopt;
    }
    parts.bracketed = true;
    parts.host = text.mid(1, end - 1);
  } else {
    const int colons = text.count(QLatin1Char(':'));
    const int at = colons == 1 ? text.indexOf(QLatin1Char(':')) : text.size();  // several: an address of version 6
    parts.host = text.left(at);
    rest = text.mid(at);
    parts.bracketed = colons > 1;
  }
  if (!rest.isEmpty()) {
    parts.port = rest.size() > 1 ? rest.mid(1) : QStringLiteral("");
  }
  return parts;
}

}  // namespace

QString BackendAddress::text() const {
  return host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2").arg(host).arg(port)
                                         : QStringLiteral("%1:%2").arg(host).arg(port);
}

std::optional<BackendAddress> BackendAddress::parse(const QString& text, QString* problem) {
  const auto refuse = [problem](const QString& why) -> std::optional<BackendAddress> {
    if (problem != nullptr) {
      *problem = why;
    }
    return std::nullopt;
  };
  const QString written = text.trimmed();
  if (written.isEmpty()) {
    return refuse(tr("Type the address of a backend: a host, or host and port."));
  }
  const std::optional<Parts> parts = split(written);
  if (!parts) {
    return refuse(tr("An address in brackets ends with \"]\" or \"]:\" and a port."));
  }
  BackendAddress address;
  address.host = parts->bracketed ? hostNumbered(parts->host) : hostNamed(parts->host);
  if (address.host.isEmpty()) {
    return refuse(parts->host.isEmpty() ? tr("The name of the host is missing.")
                                        : tr("\"%1\" is no name or address of a host.").arg(parts->host));
  }
  if (!parts->port.isNull()) {
    const std::optional<std::uint16_t> port = portNumbered(parts->port);
    if (!port) {
      return refuse(tr("The port has to be a number from 1 to 65535."));
    }
    address.port = *port;
  }
  return address;
}

}  // namespace korvex2
