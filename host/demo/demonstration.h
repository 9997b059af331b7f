// The demonstration: adjusts real bodies through the real windows and checks what the backend ends up with.
#ifndef KORVEX2_HOST_DEMONSTRATION_H
#define KORVEX2_HOST_DEMONSTRATION_H

#include <QString>

namespace korvex2 {

class MainWindow;

/// Opens the body-adjustment dialog from the menu and adjusts the table, the cup and the standard quadrotor with mouse
/// and keyboard: chooses, picks markers, sets axis and origin, "due to body", types a move and a turn, undoes, redoes,
/// deletes the cup's fifth marker, applies, presses OK. The bodies must be as shipped.
///
/// Leaves in `dir`, which is made when it is missing, a picture of each step and report.txt with the marker values
/// before and after, those computed from the body files by plain arithmetic, and the differences.
///
/// @param bodyFiles  folder of the shipped body files
/// @return the program's exit code: 0 when every step could be done and no value differs by more than 0.001 mm
int runDemonstration(MainWindow& window, const QString& dir, const QString& bodyFiles);

}  // namespace korvex2

#endif
