// See pingpong.h.
#include "pingpong.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QTcpServer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "backendfolder.h"

namespace korvex2_bench {

namespace {

using Clock = std::chrono::steady_clock;

const char* const plainPartner = "--plain-partner";
const char* const qtPartner = "--qt-partner";

void setUp(int descriptor) {
  const int on = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  const timeval limit{30, 0};  // a partner that hangs ends the benchmark
  ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

QByteArray lineOf(int length) { return QByteArray(length, 'x') + '\n'; }

bool sendAll(int descriptor, const QByteArray& bytes) {
  return ::send(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) == bytes.size();
}

/// Reads up to a line's end, and nothing comes behind it. Lines are much shorter than the buffer.
bool receiveLine(int descriptor, std::array<char, 65536>& buffer) {
  std::size_t size = 0;
  while (size == 0 || buffer[size - 1] != '\n') {
    const ssize_t got = ::recv(descriptor, buffer.data() + size, buffer.size() - size, 0);
    if (got <= 0) {
      return false;
    }
    size += static_cast<std::size_t>(got);
  }
  return true;
}

/// "12,40,7": the answers' lengths, in one line.
std::vector<QByteArray> answersFrom(const QByteArray& lengths) {
  std::vector<QByteArray> answers;
  for (const QByteArray& length : lengths.split(',')) {
    answers.push_back(lineOf(length.toInt()));
  }
  return answers;
}

int playPlainPartner() {
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 || ::listen(listener, 1) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return EXIT_FAILURE;
  }
  std::printf("listening:%d\n", static_cast<int>(ntohs(address.sin_port)));
  std::fflush(stdout);
  const int client = ::accept(listener, nullptr, nullptr);
  setUp(client);
  static std::array<char, 65536> buffer;
  if (!receiveLine(client, buffer)) {
    return EXIT_FAILURE;
  }
  const char* const end = static_cast<const char*>(std::memchr(buffer.data(), '\n', buffer.size()));
  const auto answers = answersFrom(QByteArray(buffer.data(), static_cast<int>(end - buffer.data())));
  for (std::size_t i = 0; receiveLine(client, buffer) && sendAll(client, answers[i]); i = (i + 1) % answers.size()) {
  }
  return EXIT_SUCCESS;
}

int playQtPartner(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  QTcpServer server;
  server.listen(QHostAddress::LocalHost, 0);
  std::vector<QByteArray> answers;
  std::size_t next = 0;
  QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
    QTcpSocket* const client = server.nextPendingConnection();
    client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    QObject::connect(client, &QTcpSocket::disconnected, &application, &QCoreApplication::quit);
    QObject::connect(client, &QTcpSocket::readyRead, client, [&, client] {
      while (client->canReadLine()) {
        const QByteArray line = client->readLine();
        if (answers.empty()) {
          answers = answersFrom(line.trimmed());
        } else {
          client->write(answers[next]);
          next = (next + 1) % answers.size();
        }
      }
    });
  });
  std::printf("listening:%d\n", static_cast<int>(server.serverPort()));
  std::fflush(stdout);
  return QCoreApplication::exec();
}

double seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

}  // namespace

int playPartner(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], plainPartner) == 0) {
    return playPlainPartner();
  }
  return argc == 2 && std::strcmp(argv[1], qtPartner) == 0 ? playQtPartner(argc, argv) : -1;
}

PingPong::PingPong(const QString& program, Sockets sockets, const LineLengths& lines) : sockets_(sockets) {
  QByteArray lengths;
  for (const auto& [line, answer] : lines) {
    lines_.emplace_back(lineOf(line), answer);
    lengths += (lengths.isEmpty() ? "" : ",") + QByteArray::number(answer);
  }
  const quint16 port = startListening(partner_, program, {sockets == Sockets::Plain ? plainPartner : qtPartner});
  lengths += '\n';
  if (sockets == Sockets::Qt) {
    socket_.connectToHost(QHostAddress::LocalHost, port);
    socket_.waitForConnected();
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_.write(lengths);
    socket_.waitForBytesWritten();
    return;
  }
  connectPlain(port);
  sendAll(descriptor_, lengths);
  ::usleep(20000);  // the partner reads the lengths as a line of its own
}

PingPong::PingPong(quint16 port, const std::vector<QByteArray>& lines) : sockets_(Sockets::Plain) {
  for (const QByteArray& line : lines) {
    lines_.emplace_back(line + '\n', 0);
  }
  connectPlain(port);
}

void PingPong::connectPlain(quint16 port) {
  descriptor_ = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
    setUp(descriptor_);
  }
}

PingPong::~PingPong() {
  socket_.abort();
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
  if (partner_.state() != QProcess::NotRunning) {
    partner_.waitForFinished(5000);
  }
}

double PingPong::play() { return sockets_ == Sockets::Plain ? playPlain() : playQt(); }

double PingPong::playPlain() {
  static std::array<char, 65536> buffer;
  const Clock::time_point begin = Clock::now();
  for (const auto& [line, answer] : lines_) {
    if (!sendAll(descriptor_, line) || !receiveLine(descriptor_, buffer)) {
      return -1.0;
    }
  }
  return seconds(begin);
}

double PingPong::playQt() {
  const Clock::time_point begin = Clock::now();
  for (const auto& [line, answer] : lines_) {
    socket_.write(line);
    while (!socket_.canReadLine()) {
      if (!socket_.waitForReadyRead(5000)) {
        return -1.0;
      }
    }
    if (socket_.readLine().size() != answer + 1) {
      return -1.0;
    }
  }
  return seconds(begin);
}

}  // namespace korvex2_bench
