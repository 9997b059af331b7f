// Names of the files that the database makes itself, so that it can tell them from files of others.
#ifndef KORVEX2_BACKEND_OWNFILES_H
#define KORVEX2_BACKEND_OWNFILES_H

#include <QString>

#include "body.h"

namespace korvex2 {

/// What the name of a body file of the database's own says.
struct OwnFileName {
  BodyKey key;
  int generation = 0;  ///< from 1, rising with every change of the body's geometry; 0: no file of the database's own
};

/// "standard_b01-7.body": the file with the body's seventh geometry.
QString ownFileName(const BodyKey& key, int generation);

/// Reads such a name; it must be spelt exactly as ownFileName() spells it.
OwnFileName parseOwnFileName(const QString& file);

/// The running number in the name of this body's own file; 0 for any other file.
int generationOf(const BodyKey& key, const QString& file);

/// The file that a temporary file was to replace: QSaveFile appends a dot and six random letters. Empty for names that
/// are none of these, and for those whose letters could be a word ("catalogue.json.backup", "...Backup", "...BACKUP"):
/// one of twenty temporaries looks like that as well, but somebody's copy must not be taken for one.
QString replacedByTemporary(const QString& file);

}  // namespace korvex2

#endif
