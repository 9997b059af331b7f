// Filling of the two marker tables and their context menu.
#include "bodytable.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMouseEvent>
#include <QStringList>
#include <QTableWidgetItem>

#include <algorithm>

#include "ui_bodytable.h"

namespace {

constexpr double leastEmission = 0.001;
constexpr int emissionColumnWidth = 80;
constexpr double shownRadius = 10.0;
constexpr double shownSmallRadius = 3.0;

QString fixed(double value) {
  // Not the locale's notation: what is read off here is typed into files and commands.
  return QString::number(value, 'f', 2);
}

void setUpColumns(QTableWidget* table, const QStringList& titles) {
  table->setColumnCount(titles.size());
  table->setHorizontalHeaderLabels(titles);
  table->verticalHeader()->hide();
  table->horizontalHeader()->setSectionsClickable(false);
  table->horizontalHeader()->setStretchLastSection(true);
  table->setSelectionMode(QAbstractItemView::NoSelection);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
}

void fillRow(QTableWidget* table, int row, const QStringList& texts) {
  for (int column = 0; column < texts.size(); ++column) {
    table->setItem(row, column, new QTableWidgetItem(texts.at(column)));
  }
}

// True when the press was one that opens the menu.
bool opensMenu(const QMouseEvent* event) { return event->button() == Qt::RightButton; }

void openMenu(QMenu* menu, const QPoint& globalPosition) {
  if (menu != nullptr) {
    menu->popup(globalPosition);
  }
}

}  // namespace

QelTableWidget02::QelTableWidget02(QWidget* parent) : QTableWidget(parent) {}

void QelTableWidget02::mousePressEvent(QMouseEvent* event) {
  if (opensMenu(event)) {
    openMenu(menu_, event->globalPos());
  }
}

void QelTableWidget02::contextMenuEvent(QContextMenuEvent* event) {
  // The mouse has opened the menu with its press already; this is for the keyboard's menu key.
  if (event->reason() == QContextMenuEvent::Keyboard) {
    openMenu(menu_, event->globalPos());
  }
}

BodyTable::BodyTable(QWidget* parent) : QWidget(parent), ui_(std::make_unique<Ui::BodyTable02Class>()) {
  ui_->setupUi(this);
  setUpColumns(ui_->tableWidget_data, {tr("Marker"), tr("x [mm]"), tr("y [mm]"), tr("z [mm]")});
  setUpColumns(ui_->tableWidget_emissions, {tr("Marker"), tr("x"), tr("y"), tr("z"), tr("Angle [deg]")});
}

BodyTable::~BodyTable() = default;

void BodyTable::update_table_widgets(const QList<AbcMarkerData>& markers) {
  fill_tableWidget_data(markers);
  const bool emissions = bodyHasEmission(markers);
  if (emissions) {
    fill_tableWidget_emissions(markers);
  }
  ui_->label_emissions->setVisible(emissions);
  ui_->tableWidget_emissions->setVisible(emissions);
}

void BodyTable::update_table_widgets(int number, std::vector<bsVector>* positions, std::vector<Emission>* emissions) {
  QList<AbcMarkerData> markers;
  if (positions != nullptr && emissions != nullptr) {
    const std::size_t count = std::min(positions->size(), emissions->size());
    for (std::size_t i = 0; i < count; ++i) {
      const Emission& emission = (*emissions)[i];
      markers.append(AbcMarkerData(static_cast<unsigned int>(number), (*positions)[i], shownRadius, shownSmallRadius,
                                   emission.x, emission.y, emission.z, emission.angle));
    }
  }
  update_table_widgets(markers);
}

bool BodyTable::bodyHasEmission(const QList<AbcMarkerData>& markers) const {
  return std::any_of(markers.begin(), markers.end(), [](const AbcMarkerData& marker) {
    return marker.emission_x + marker.emission_y + marker.emission_z + marker.opening_angle > leastEmission;
  });
}

void BodyTable::clear_tables() {
  clear_tableWidget_data();
  clear_tableWidget_emissions();
}

void BodyTable::clear_tableWidget_data() { ui_->tableWidget_data->clearContents(); }

void BodyTable::clear_tableWidget_emissions() { ui_->tableWidget_emissions->clearContents(); }

void BodyTable::set_tables_column_size() {
  for (const int column : {1, 2, 3}) {
    ui_->tableWidget_emissions->setColumnWidth(column, emissionColumnWidth);
  }
}

void BodyTable::set_menu(QMenu* menu) {
  menu_ = menu;
  ui_->tableWidget_data->set_menu(menu);
  ui_->tableWidget_emissions->set_menu(menu);
}

void BodyTable::mousePressEvent(QMouseEvent* event) {
  if (opensMenu(event)) {
    openMenu(menu_, event->globalPos());
  }
}

void BodyTable::fill_tableWidget_data(const QList<AbcMarkerData>& markers) {
  QTableWidget* const table = ui_->tableWidget_data;
  table->setRowCount(markers.size());
  for (int row = 0; row < markers.size(); ++row) {
    const bsVector& position = markers.at(row).position;
    fillRow(table, row, {QString::number(row + 1), fixed(position.x), fixed(position.y), fixed(position.z)});
  }
}

void BodyTable::fill_tableWidget_emissions(const QList<AbcMarkerData>& markers) {
  QTableWidget* const table = ui_->tableWidget_emissions;
  table->setRowCount(markers.size());
  for (int row = 0; row < markers.size(); ++row) {
    const AbcMarkerData& marker = markers.at(row);
    fillRow(table, row,
            {QString::number(row + 1), fixed(marker.emission_x), fixed(marker.emission_y), fixed(marker.emission_z),
             fixed(marker.opening_angle)});
  }
}
