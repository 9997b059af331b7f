// The demonstration's part with body files: exports a body by the File menu and imports one.
#ifndef KORVEX2_HOST_DEMO_BODYFILESTEPS_H
#define KORVEX2_HOST_DEMO_BODYFILESTEPS_H

#include <QString>

class QAction;

namespace korvex2 {

class DemoOperator;

/// Triggers a menu entry that opens a body file dialog, chooses body and file there, and confirms.
/// @param entry     how the body's entry in the dialog begins
/// @param pictures  name of the pictures taken on the way
void workBodyFileDialog(DemoOperator& hands, QAction* menuEntry, const QString& entry, const QString& file,
                        const QString& pictures);

}  // namespace korvex2

#endif
