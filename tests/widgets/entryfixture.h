// A window with a numeric entry widget in it, the operator's hands, and an ordered record of what the widget reports.
#ifndef KORVEX2_TESTS_ENTRYFIXTURE_H
#define KORVEX2_TESTS_ENTRYFIXTURE_H

#include <gtest/gtest.h>
#include <qwt_wheel.h>

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

#include <string>
#include <vector>

#include "bsDoubleWidget.h"
#include "xyzWidget.h"

/// Signals in the order of their emission: "begin", "value 14", "finished"; of a triple "value 1 2 3".
using Log = std::vector<std::string>;

void record(bsDoubleWidget* widget, Log* log);
void record(xyzWidget* widget, Log* log);
/// What has been recorded, and starts anew.
Log take(Log* log);

QDoubleSpinBox* spinOf(const bsDoubleWidget* widget);
QwtWheel* wheelOf(const bsDoubleWidget* widget);
QLabel* labelOf(const bsDoubleWidget* widget);
/// The X, Y and Z field of a triple.
std::vector<bsDoubleWidget*> fieldsOf(const xyzWidget* widget);

void press(QwtWheel* wheel);
/// Moves the pressed wheel to `pixels` right of its centre.
void dragTo(QwtWheel* wheel, int pixels);
void release(QwtWheel* wheel);
/// Turns the mouse's scroll wheel over the centre of `target`; one notch is 120.
void scroll(QWidget* target, int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void leave(QWidget* widget);

/// Value of the spin box at 0 after the thumb wheel at 0 was dragged to `wheelValue` by less than half a turn.
double draggedTo(double wheelValue);

/// Shows a window and makes it the active one.
bool showActive(QWidget* window);

/// A shown, active window: the widget under test above a line edit that can take the focus from it.
class EntryWindow : public QWidget {
 public:
  explicit EntryWindow(QWidget* underTest);

  bool activate();

  QLineEdit* elsewhere;
};

#endif
