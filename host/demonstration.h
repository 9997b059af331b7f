// A demonstration of the program that runs by itself and leaves pictures.
#ifndef KORVEX2_HOST_DEMONSTRATION_H
#define KORVEX2_HOST_DEMONSTRATION_H

#include <QString>

namespace korvex2 {

class MainWindow;

/// Shows the window and writes a picture of it, "frontend.png", into `dir`, which is made when it is missing.
/// @return the program's exit code: 0, or 1 when the picture could not be written (message on standard error)
int runDemonstration(MainWindow& window, const QString& dir);

}  // namespace korvex2

#endif
