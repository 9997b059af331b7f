// The data view of a body: a table of marker positions and, where there are any, one of marker emissions.
#ifndef BODYTABLE_H
#define BODYTABLE_H

#include <QList>
#include <QTableWidget>
#include <QWidget>

#include <memory>
#include <vector>

#include "abcmarkerdata.h"
#include "bsVector.h"

class QContextMenuEvent;
class QMenu;
class QMouseEvent;

namespace Ui {
class BodyTable02Class;
}

/// A table that opens a menu on a right press and takes no other press.
class QelTableWidget02 : public QTableWidget {
  Q_OBJECT

 public:
  explicit QelTableWidget02(QWidget* parent = nullptr);

  /// The menu stays the caller's; it must outlive the table or be replaced. May be null: no menu opens then.
  void set_menu(QMenu* menu) { menu_ = menu; }

 public slots:
  void mousePressEvent(QMouseEvent* event) override;

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  QMenu* menu_ = nullptr;
};

/// Read-only tables of a body's markers. Positions in millimetres, opening angles in degrees, both with two decimals
/// and a decimal point in every locale. Rows are numbered from 1 in list order, whatever the records' own numbers.
class BodyTable : public QWidget {
  Q_OBJECT

 public:
  explicit BodyTable(QWidget* parent = nullptr);
  ~BodyTable() override;

  /// Shows the records; a body without emissions shows the marker table only.
  void update_table_widgets(const QList<AbcMarkerData>& markers);
  /// Shows geometry as fetched: `number` goes into each record; markers beyond the shorter list are left out.
  /// A null list counts as an empty one.
  void update_table_widgets(int number, std::vector<bsVector>* positions, std::vector<Emission>* emissions);
  /// True when x + y + z + angle of at least one record's emission exceeds 0.001. The sum is of signed components, so a
  /// direction whose components cancel with the angle counts as no emission (kept on purpose).
  bool bodyHasEmission(const QList<AbcMarkerData>& markers) const;
  /// Empties both tables; headers and row counts stay.
  void clear_tables();
  void clear_tableWidget_data();
  void clear_tableWidget_emissions();
  void set_tables_column_size();
  /// Keeps the menu, which stays the caller's, and hands it to both tables.
  void set_menu(QMenu* menu);

 public slots:
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void fill_tableWidget_data(const QList<AbcMarkerData>& markers);
  void fill_tableWidget_emissions(const QList<AbcMarkerData>& markers);

  std::unique_ptr<Ui::BodyTable02Class> ui_;
  QMenu* menu_ = nullptr;
};

#endif
