// See logmodel.h.
#include "logmodel.h"

#include <utility>

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QTextDocument>

namespace korvex2 {

LogModel::LogModel(const QStringList& columns, int limit, QObject* parent)
    : QAbstractTableModel(parent), columns_(columns), limit_(qMax(1, limit)) {}

int LogModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int LogModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns_.size(); }

QVariant LogModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount()) {
    return {};
  }
  const Row& row = rows_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case Qt::DisplayRole:
      return row.cells.at(index.column());
    case Qt::ToolTipRole:
      return Qt::convertFromPlainText(row.cells.at(index.column()));  // marks of a text stay text
    case Qt::DecorationRole:
      if (row.alert && index.column() == 0) {
        return QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
      }
      return {};
    default:
      return {};
  }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columns_.size()) {
    return {};
  }
  return columns_.at(section);
}

void LogModel::append(const QStringList& cells, bool alert) { appendRows({{cells, alert}}); }

void LogModel::appendRows(std::vector<Row> rows) {
  if (rows.size() > static_cast<std::size_t>(limit_)) {
    rows.erase(rows.begin(), rows.end() - limit_);
  }
  if (rows.empty()) {
    return;
  }
  const int count = static_cast<int>(rows.size());
  const int surplus = rowCount() + count - limit_;
  if (surplus > 0) {
    beginRemoveRows({}, 0, surplus - 1);
    rows_.erase(rows_.begin(), rows_.begin() + surplus);
    endRemoveRows();
  }
  const int at = rowCount();
  beginInsertRows({}, at, at + count - 1);
  for (Row& row : rows) {
    row.cells = row.cells.mid(0, columns_.size());
    while (row.cells.size() < columns_.size()) {
      row.cells += QString();
    }
    rows_.push_back(std::move(row));
  }
  endInsertRows();
}

void LogModel::clear() {
  if (rows_.empty()) {
    return;
  }
  beginResetModel();
  rows_.clear();
  endResetModel();
}

QString LogModel::rowText(int row) const {
  return row >= 0 && row < rowCount() ? rows_[static_cast<std::size_t>(row)].cells.join(QLatin1Char('\t')) : QString();
}

}  // namespace korvex2
