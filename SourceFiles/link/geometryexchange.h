// Reads a body's markers from the backend and writes them back.
#ifndef KORVEX2_GEOMETRYEXCHANGE_H
#define KORVEX2_GEOMETRYEXCHANGE_H

#include <QByteArray>

#include <vector>

#include "abcmarkerdata.h"
#include "bsVector.h"

namespace korvex2 {

class BackendChannel;

/// Fetches positions (millimetres) and emissions (direction, opening angle in degrees), both in the body's own
/// coordinate system, marker number = list index + 1.
///
/// False with both lists untouched: the marker count could not be had, is 0, or is more than any body can have (1000).
/// False with the markers read so far: a marker could not be read. Failures are reported; a count of 0 is none.
/// A negative count gives true and two empty lists.
bool readGeometry(BackendChannel& channel, const QByteArray& type, int number, std::vector<bsVector>& positions,
                  std::vector<Emission>& emissions);

/// Whether any emission value is other than zero; NaN is.
bool haveEmissions(const std::vector<Emission>& emissions);

/// Writes the marker count, then every marker's position and, on a backend that takes them and when the body has any,
/// its emission. A failed count ends it; a failed marker is reported and the next one follows. A position without an
/// emission of its own is written without one.
void writeGeometry(BackendChannel& channel, const QByteArray& type, int number, const std::vector<bsVector>& positions,
                   const std::vector<Emission>& emissions);

/// Whether the backend says so; a failed query is reported and means no.
bool isBodyCalibrated(BackendChannel& channel, const QByteArray& type, int number);

}  // namespace korvex2

#endif
