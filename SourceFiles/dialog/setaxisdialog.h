// Dialog that asks which axis is laid along the two selected markers and which one is preserved.
#ifndef SETAXISDIALOG_H
#define SETAXISDIALOG_H

#include <QDialog>

#include <memory>

#include "abcaxis.h"

namespace Ui {
class SetAxisDialog;
}

/// The third axis follows from the other two and is shown for information. The choice is three different axes at all
/// times, X, Y and Z to begin with, and is kept from one opening to the next.
class SetAxisDialog : public QDialog {
  Q_OBJECT

 public:
  explicit SetAxisDialog(QWidget* parent = nullptr);
  ~SetAxisDialog() override;

 public slots:
  /// Offers the two axes that remain beside axis `index` (0 X, 1 Y, 2 Z) for preservation.
  void onAxisToSetChoice(int index);
  /// Shows the axis that remains when entry `index` of the axes on offer is preserved.
  void onAxisToPreserveChoice(int index);
  /// Announces the choice.
  void validateSetAxis();

 signals:
  void setAxis(abcAxis axisToSet, abcAxis axisToKeep);

 private:
  std::unique_ptr<Ui::SetAxisDialog> ui_;
};

#endif
