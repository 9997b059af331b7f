// The bodies a backend knows, for the host's start page.
#ifndef KORVEX2_HOST_BODYLISTING_H
#define KORVEX2_HOST_BODYLISTING_H

#include <vector>

#include <QString>

#include "bodyfilestore.h"

namespace korvex2 {

class BackendConnection;

/// What the start page tells of one body.
struct BodySummary {
  QString type;             ///< "standard", "wandgrip", ...
  QString typeDescription;  ///< without quotes
  int number = 0;           ///< within its type, from 1
  QString description;      ///< without quotes, may be empty
  int markers = 0;
  bool calibrated = false;

  BodyId id() const { return {type, number}; }
  /// What the operator knows the body by, "Cup (Standard body 01)".
  QString title() const;
};

/// Asks the backend for its bodies, many queries at once: on a slow network the way to the backend and back is what
/// takes the time. A query that fails ends the listing with what was found so far. The queries bypass the channel, so
/// that the traffic shown to the operator is that of the modules.
std::vector<BodySummary> listBodies(BackendConnection& connection);

}  // namespace korvex2

#endif
