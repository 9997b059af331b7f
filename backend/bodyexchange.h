// Body files from outside the database: read for a body to take, and written from a body.
#ifndef KORVEX2_BACKEND_BODYEXCHANGE_H
#define KORVEX2_BACKEND_BODYEXCHANGE_H

#include <QByteArray>
#include <QString>

#include "bodydatabase.h"

namespace korvex2 {

/// What a body can take over, see BodyDatabase::setGeometry(); when `problem` is not empty, why it cannot:
/// "FILE, line 3: what is wrong".
struct ImportableBody {
  BodyGeometry geometry;
  QString problem;
};

/// Reads any body file. Besides malformed ones, those with too few or too many markers for a body are refused.
ImportableBody readImportableBody(const QString& path);

/// Writes a body's markers, in its current coordinates with all their digits, and its lines and free text to a file,
/// which afterwards is whole or what it was before. A locked configuration does not matter: the body does not change.
/// Refused are bodies without markers, and files of the database itself, because other bodies may be read from them.
/// Returns an empty text, or what went wrong.
QString exportBody(const BodyDatabase& database, const BodyKey& key, const QString& path);

/// Writes the bytes of a body file, which afterwards is whole or what it was before; folders and devices are refused.
/// Returns an empty text, or what went wrong.
QString writeBodyFile(const QString& path, const QByteArray& bytes);

}  // namespace korvex2

#endif
