// Double of a backend on the network: a TCP server in a thread of its own that answers lines as the test says.
#ifndef KORVEX2_TESTS_LINESERVER_H
#define KORVEX2_TESTS_LINESERVER_H

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

/// What the server does with one line.
struct Reaction {
  QByteArray bytes;       ///< sent as they are, line ends included
  int delay = 0;          ///< milliseconds before that
  bool bytewise = false;  ///< each byte in a segment of its own
  bool close = false;     ///< ends the connection afterwards

  static Reaction answer(const QByteArray& line) { return {line + '\n'}; }
  static Reaction silence() { return {}; }
};

/// Answers come from `react` when it is set, else from `answers` by line; another line is refused as unknown. A few
/// answers are there from the beginning: those that a connection begins with and lives on. Settings of output and
/// tracking are answered with "korvex2 ok".
///
/// Listens on a loopback port that is free. All operations are called on the test's thread.
class LineServer {
 public:
  explicit LineServer(const QHostAddress& address = QHostAddress(QHostAddress::LocalHost)) : address_(address) {
    answers_["korvex2 get version"] = "korvex2 set version 1.20.3";
    answers_["korvex2 get status active"] = "korvex2 set status active idle";
    host_.moveToThread(&thread_);
    thread_.start();
    listen();
  }
  ~LineServer() {
    onThread([this] {
      dropAll();
      server_.reset();
    });
    thread_.quit();
    thread_.wait();
  }

  quint16 port() const { return port_; }

  void setAnswer(const QByteArray& line, const QByteArray& answer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_[line] = answer;
  }
  void react(std::function<Reaction(const QByteArray& line)> react) {
    const std::lock_guard<std::mutex> lock(mutex_);
    react_ = std::move(react);
  }
  /// What `react` may fall back on.
  Reaction usual(const QByteArray& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return answerFor(line);
  }

  /// Lines received so far, without the questions that keep a connection alive.
  std::vector<QByteArray> lines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  std::vector<QByteArray> takeLines() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(lines_, {});
  }
  int heartbeats() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return heartbeats_;
  }
  /// Connections taken so far.
  int connections() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return connections_;
  }

  /// Sends bytes that nobody asked for to everyone.
  void send(const QByteArray& bytes) {
    onThread([this, bytes] {
      const auto clients = clients_;  // whoever has gone leaves the list meanwhile
      for (const auto& client : clients) {
        client.first->write(bytes);
        client.first->flush();
      }
    });
  }
  /// Ends all connections; new ones are taken.
  void cut() {
    onThread([this] { dropAll(); });
  }
  /// Ends all connections and refuses new ones.
  void stopListening() {
    onThread([this] {
      server_->close();
      dropAll();
    });
  }
  /// On the same port.
  void listenAgain() { listen(); }

 private:
  void onThread(const std::function<void()>& action) {
    QMetaObject::invokeMethod(&host_, action, Qt::BlockingQueuedConnection);
  }
  void listen() {
    onThread([this] {
      if (!server_) {
        server_ = std::make_unique<QTcpServer>();
        QObject::connect(server_.get(), &QTcpServer::newConnection, &host_, [this] { takeClients(); });
      }
      server_->listen(address_, port_);
      port_ = server_->serverPort();
    });
  }
  void takeClients() {
    while (QTcpSocket* client = server_->nextPendingConnection()) {
      client->setParent(nullptr);
      client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
      clients_[client];
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++connections_;
      }
      QObject::connect(client, &QTcpSocket::readyRead, &host_, [this, client] { takeBytes(client); });
      QObject::connect(client, &QTcpSocket::disconnected, &host_, [this, client] {
        if (clients_.erase(client) > 0) {
          client->deleteLater();
        }
      });
    }
  }
  void takeBytes(QTcpSocket* client) {
    QByteArray& buffer = clients_[client];
    buffer += client->readAll();
    for (int end = buffer.indexOf('\n'); end >= 0; end = buffer.indexOf('\n')) {
      const QByteArray line = buffer.left(end);
      buffer.remove(0, end + 1);
      carryOut(client, reactionTo(line));
      if (clients_.count(client) == 0) {
        return;
      }
    }
  }
  Reaction reactionTo(const QByteArray& line) {
    std::function<Reaction(const QByteArray&)> react;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (line == "korvex2 get status active") {
        ++heartbeats_;
      } else {
        lines_.push_back(line);
      }
      react = react_;
      if (!react) {
        return answerFor(line);
      }
    }
    return react(line);
  }
  Reaction answerFor(const QByteArray& line) const {
    const auto found = answers_.find(line);
    if (found != answers_.end()) {
      return Reaction::answer(found->second);
    }
    const bool accepted = line.startsWith("korvex2 set output ") || line.startsWith("korvex2 tracking ");
    return Reaction::answer(accepted ? "korvex2 ok" : "korvex2 err 2 \"there is no such query\"");
  }
  void carryOut(QTcpSocket* client, const Reaction& reaction) {
    if (reaction.delay > 0) {
      Reaction later = reaction;
      later.delay = 0;
      QTimer::singleShot(reaction.delay, Qt::PreciseTimer, client, [this, client, later] { carryOut(client, later); });
      return;
    }
    if (reaction.bytewise) {
      for (const char byte : reaction.bytes) {
        client->write(&byte, 1);
        client->flush();
      }
    } else {
      client->write(reaction.bytes);
      client->flush();
    }
    if (reaction.close) {
      client->disconnectFromHost();
    }
  }
  void dropAll() {
    const auto leaving = std::exchange(clients_, {});
    for (const auto& client : leaving) {
      client.first->disconnect(&host_);
      client.first->close();
      delete client.first;
    }
  }

  const QHostAddress address_;
  quint16 port_ = 0;
  QThread thread_;
  QObject host_;  // lives on the thread
  std::unique_ptr<QTcpServer> server_;
  std::map<QTcpSocket*, QByteArray> clients_;

  mutable std::mutex mutex_;
  std::map<QByteArray, QByteArray> answers_;  // guarded by mutex_, as are the next ones
  std::function<Reaction(const QByteArray&)> react_;
  std::vector<QByteArray> lines_;
  int heartbeats_ = 0;
  int connections_ = 0;
};

#endif
