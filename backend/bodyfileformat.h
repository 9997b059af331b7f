// The body file: marker positions, free text and drawn lines as plain text.
#ifndef KORVEX2_BACKEND_BODYFILEFORMAT_H
#define KORVEX2_BACKEND_BODYFILEFORMAT_H

#include <QByteArray>
#include <QString>

#include "body.h"

namespace korvex2 {

/// A read body file; when `problem` is not empty, `line` (from 1) is where it was met and `geometry` is of no use.
struct BodyFileContent {
  BodyGeometry geometry;
  int line = 0;
  QString problem;
};

/// Reads the bytes of a body file:
///
///   n                      number of markers
///   x y z                  n times, millimetres, separated by any white space
///   ...                    free text up to and including the line "# Lines", exactly so but for a carriage return in
///                          files from other systems; both may be missing
///   m                      number of lines
///   a b                    m times: marker indices from 0
///
/// Numbers are taken as a stream extraction takes them. Refused are a marker count of 1 (most likely no body file) or
/// above BodyDatabase::mostMarkers, coordinates beyond BodyDatabase::largestCoordinate, and lines that do not join two
/// different markers of the body. Refused are also, by their own message, fewer markers than `fewestMarkers`.
BodyFileContent parseBodyFile(const QByteArray& bytes, int fewestMarkers = 0);

/// Bytes of a body file; every coordinate is read back as the same double.
QByteArray bodyFileBytes(const BodyGeometry& geometry);

/// What a body file of this body holds: markers in the body's current coordinates, lines and free text.
BodyGeometry geometryOf(const Body& body);

}  // namespace korvex2

#endif
