// Lines there and back between two programs that do nothing else: what a round trip costs at least.
#ifndef KORVEX2_BENCH_PINGPONG_H
#define KORVEX2_BENCH_PINGPONG_H

#include <QProcess>
#include <QTcpSocket>

#include <utility>
#include <vector>

namespace korvex2_bench {

/// Lengths of a line and of its answer, without their ends.
using LineLengths = std::vector<std::pair<int, int>>;

enum class Sockets { Plain, Qt };

/// The other program's main function, when this one was started as that: waits for one client, learns the lengths of
/// the answers from it, and answers. Returns its exit status, or -1 when it is not meant.
int playPartner(int argc, char** argv);

/// A connection to such a partner, both without delay. Plain sockets block; those of Qt are used as usual: the client
/// waits for each answer, the partner answers from its event loop.
class PingPong {
 public:
  /// @param program  this program
  PingPong(const QString& program, Sockets sockets, const LineLengths& lines);
  /// Plain sockets to a backend at this port, which is sent these lines.
  PingPong(quint16 port, const std::vector<QByteArray>& lines);
  ~PingPong();

  /// Sends every line and takes its answer before the next one. Returns the seconds that took, negative when it failed.
  double play();

 private:
  void connectPlain(quint16 port);
  double playPlain();
  double playQt();

  const Sockets sockets_;
  std::vector<std::pair<QByteArray, int>> lines_;  // with their ends
  QProcess partner_;
  QTcpSocket socket_;
  int descriptor_ = -1;
};

}  // namespace korvex2_bench

#endif
