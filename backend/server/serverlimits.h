// What one client may take of the server.
#ifndef KORVEX2_BACKEND_SERVERLIMITS_H
#define KORVEX2_BACKEND_SERVERLIMITS_H

#include <chrono>
#include <cstddef>

namespace korvex2 {

struct ServerLimits {
  std::size_t mostClients = 64;
  /// Lines of one client that are answered before the others have their turn.
  int mostLinesATurn = 16;
  /// A client's commands wait while so many bytes of answers wait for it to read.
  std::size_t mostWaitingBytes = 256 * 1024;
  /// A client that takes none of the answers that wait for so long is dropped.
  std::chrono::milliseconds stuckAfter{30'000};
  /// How long a client that is turned away has to read why.
  std::chrono::milliseconds farewell{2'000};
  /// Connections over the limit that are told so at the same time; those beyond are closed without a word.
  std::size_t mostFarewells = 16;
};

}  // namespace korvex2

#endif
