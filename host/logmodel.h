// Rows of text that grow at the end and are forgotten at the beginning.
#ifndef KORVEX2_HOST_LOGMODEL_H
#define KORVEX2_HOST_LOGMODEL_H

#include <deque>
#include <vector>

#include <QAbstractTableModel>
#include <QModelIndexList>
#include <QStringList>

namespace korvex2 {

/// A bounded history: the newest row is the last one; a row beyond the limit pushes the oldest out.
class LogModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  LogModel(const QStringList& columns, int limit, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

  /// Adds a row; missing cells are empty, cells beyond the columns are dropped. With `alert` the row stands out.
  void append(const QStringList& cells, bool alert = false);
  /// Several rows at once, the oldest first: views have less to do than for one after the other.
  struct Row {
    QStringList cells;
    bool alert = false;
  };
  void appendRows(std::vector<Row> rows);
  void clear();
  int limit() const { return limit_; }
  /// One row as text, cells separated by tabs.
  QString rowText(int row) const;

 private:
  QStringList columns_;
  int limit_;
  std::deque<Row> rows_;
};

}  // namespace korvex2

#endif
