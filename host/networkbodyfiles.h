// Body files of this machine in and out of a backend over the network.
#ifndef KORVEX2_HOST_NETWORKBODYFILES_H
#define KORVEX2_HOST_NETWORKBODYFILES_H

#include "bodyfilestore.h"

namespace korvex2 {

class BackendConnection;

/// A file is read and checked here before it travels, as base64 in one line; and one that comes is written here.
class NetworkBodyFiles : public BodyFileStore {
 public:
  /// The connection must outlive the store.
  explicit NetworkBodyFiles(BackendConnection& connection) : connection_(connection) {}

  QString importObstacle() const override;
  BodyFileSummary summaryOf(const QString& path) const override;
  ImportOutcome importBody(const BodyId& body, const QString& path) override;
  QString exportBody(const BodyId& body, const QString& path) const override;

 private:
  BackendConnection& connection_;
};

}  // namespace korvex2

#endif
