// Enumerations shared by the body, its canvas and its dialogs: axes, what the mouse does, what may be edited.
#ifndef KORVEX2_ABCAXIS_H
#define KORVEX2_ABCAXIS_H

#include <QMetaType>

/// Axis of a coordinate system. The value is the column of that axis in a frame's matrix.
enum abcAxis { ABC_AXIS_X = 0, ABC_AXIS_Y = 1, ABC_AXIS_Z = 2 };
Q_DECLARE_METATYPE(abcAxis)

/// What a mouse drag does to the camera.
enum abcViewMode {
  ABC_VIEW_IDLE = 0,
  ABC_VIEW_PAN = 1,    ///< Ctrl + left button
  ABC_VIEW_DOLLY = 2,  ///< Shift + left button
  ABC_VIEW_ROTATE = 3  ///< Ctrl + right button
};

/// What the canvas is used for. Only the first value edits and shows the body; the others leave the view black and the
/// body untouched, so a host that brings its own modes can switch the canvas off without hiding it.
enum abcModificationMode { ABC_MODIFY_BODY = 0, ABC_MODIFY_SUSPENDED = 1, ABC_MODIFY_LOCKED = 2 };

#endif
