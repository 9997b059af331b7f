// A history with its tools: filter, copy, clear.
#ifndef KORVEX2_HOST_LOGPANE_H
#define KORVEX2_HOST_LOGPANE_H

#include <QTimer>
#include <QWidget>

class QLineEdit;
class QSortFilterProxyModel;
class QToolButton;
class QTreeView;

namespace korvex2 {

class LogModel;

/// Shows a LogModel, newest row at the bottom. The view follows the newest row as long as the operator has not
/// scrolled up to read. Object names: "view", "filter", "copyButton", "clearButton".
class LogPane : public QWidget {
  Q_OBJECT

 public:
  /// The model stays the caller's. `emptyText` stands where the rows would be as long as there are none.
  LogPane(LogModel* model, const QString& emptyText, QWidget* parent = nullptr);

  /// Width of a column in average characters; the last column takes the rest.
  void setColumnWidth(int column, int characters);
  /// The selected rows that pass the filter, or all of them when none is selected, one a line, cells separated by
  /// tabs.
  QString text() const;

 public slots:
  /// Puts text() into the clipboard.
  void copy();
  void clear();

 private:
  QWidget* buildTools();
  void updateTools();

  LogModel* model_;
  QSortFilterProxyModel* shown_;
  QTreeView* view_;
  QLineEdit* filter_;
  QToolButton* copyButton_;
  QToolButton* clearButton_;
  QWidget* emptyNote_;
  QTimer scroll_;
  bool following_ = true;
};

}  // namespace korvex2

#endif
