// Reading and writing of body files: marker positions, free text, and the lines between markers, as plain text.
#ifndef KORVEX2_BODYFILE_H
#define KORVEX2_BODYFILE_H

#include <QString>

#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "bsVector.h"

class QIODevice;

namespace korvex2 {

/// What a body file holds. A file looks like this:
///
///     3
///     0 0 0
///     100 0 0
///     0 10 0
///     any text, any number of lines
///     # Lines
///     1
///     0 2
///
/// the number of markers, their positions, free text that ends with the line "# Lines", the number of lines and for
/// each the indices of its two markers. Numbers have the decimal point in every locale, six significant digits.
///
/// A line of text that ends with carriage return and newline counts as the section's header, too (a file that has been
/// on another system); the text itself is kept byte for byte.
struct BodyFileData {
  /// Millimetres, in the body's coordinates.
  std::vector<bsVector> positions;
  /// The text between the last marker and the number of lines, "# Lines" and its newline included, byte for byte.
  std::string text;
  /// Marker indices, counted from 0.
  std::vector<std::pair<unsigned int, unsigned int>> lines;
};

/// The text between markers and lines in a file whose body brings none. Without it the number of lines would run into
/// the last coordinate, and the file could not be read again.
extern const char* const emptyBodyFileText;

enum class BodyFileError {
  None,
  Open,          ///< the file cannot be opened
  MarkerCount,   ///< the number of markers is missing, malformed, negative, or was not written
  SingleMarker,  ///< the file says that it has exactly one marker
  Position,      ///< a marker's position is missing, malformed, not finite, or was not written
  LineCount,     ///< the number of lines is missing, malformed or negative
  Line,          ///< a line's marker indices are missing, malformed, name no marker, or were not written
  End,           ///< what follows the markers was not written, or the file could not be completed
};

struct BodyFileResult {
  BodyFileError error = BodyFileError::None;
  /// For Position and Line: which marker or line, counted from 1.
  unsigned long number = 0;

  explicit operator bool() const { return error == BodyFileError::None; }
};

/// Reads the file at `path`. On failure `content` holds what had been read so far and is of no use.
/// Fails with Open, MarkerCount, SingleMarker, Position, LineCount or Line.
BodyFileResult readBodyFile(const QString& path, BodyFileData& content);
/// The same from an open stream. Takes memory only for what is there, whatever the counts in it claim.
BodyFileResult readBody(std::istream& in, BodyFileData& content);

/// Writes the file at `path`. An existing file is replaced only when everything has been written, so a failure leaves
/// it as it was. Fails with Open, MarkerCount, Position, Line or End.
BodyFileResult writeBodyFile(const QString& path, const BodyFileData& content);
/// The same onto an open device; each part has left the device's buffer before the next is written, so a failure is
/// reported for the part that it hit. A position that is not finite is refused: it could not be read again.
BodyFileResult writeBody(QIODevice& out, const BodyFileData& content);

}  // namespace korvex2

#endif
