// The user's body database: where it is and how it comes to be.
#ifndef KORVEX2_BACKEND_DATABASEFOLDER_H
#define KORVEX2_BACKEND_DATABASEFOLDER_H

#include <QString>

namespace korvex2 {

/// The user's own database folder: "database" in the user's data folder of this program.
QString userDatabaseFolder();

/// The data that came with the program: the installed ones beside the program, else those of the source tree it was
/// built from. Empty when neither is there.
QString shippedDataFolder(const QString& programFolder);

/// The recorded motion among this shipped data; empty when there are none.
QString shippedTrajectory(const QString& shipped);

/// Gives the user a copy of the shipped data at the first start; a database that is there is left as it is.
/// @return what went wrong, for the operator; empty on success
QString prepareDatabaseFolder(const QString& folder, const QString& shipped);

}  // namespace korvex2

#endif
