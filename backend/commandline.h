// Splits a command line into its fields.
#ifndef KORVEX2_BACKEND_COMMANDLINE_H
#define KORVEX2_BACKEND_COMMANDLINE_H

#include <QByteArray>

#include <vector>

#include "outcome.h"

namespace korvex2 {

/// One field of a command line; `quoted` tells whether it stood in double quotes, which `text` no longer has.
struct Field {
  QByteArray text;
  bool quoted = false;
};

struct CommandLine {
  std::vector<Field> fields;
  Outcome outcome;  ///< why the line is none; `fields` is of no use then
};

/// Splits at blanks and tabs. A field that begins with a double quote reaches to the next one, which must end the
/// field; there is no escape. Refused are control characters, double quotes elsewhere, bytes beyond ASCII outside
/// quotes and quoted text that is not UTF-8. One line end behind the line is ignored.
CommandLine splitCommandLine(const QByteArray& line);

/// A piece of the sender's text for an error message: at most 24 characters; double quotes, which would end the message,
/// and everything that is not printable ASCII are replaced by '?'.
QString shownField(const QByteArray& text);

}  // namespace korvex2

#endif
