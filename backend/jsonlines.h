// Where in a JSON text a value stands, so that a message about it can name the line.
#ifndef KORVEX2_BACKEND_JSONLINES_H
#define KORVEX2_BACKEND_JSONLINES_H

#include <QByteArray>
#include <QHash>
#include <QString>

namespace korvex2 {

/// Line (from 1) of every value of a JSON text, by its path: "" is the whole, "bodies/2/file" a member of the third
/// element of "bodies". The text must have passed a JSON parser before; of anything else only the beginning is listed.
/// Keys written with escapes are listed as written; values nested deeper than four levels are left out.
QHash<QString, int> jsonLines(const QByteArray& text);

/// Line (from 1) of a byte offset.
int lineOfOffset(const QByteArray& text, int offset);

}  // namespace korvex2

#endif
