// The marker tables: form, contents, emissions, menu, and what a press does not do.
#include "bodytable.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QtTest>

#include <cmath>
#include <limits>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Row = std::vector<std::string>;

AbcMarkerData marker(double x, double y, double z, double ex = 0.0, double ey = 0.0, double ez = 0.0,
                     double angle = 0.0) {
  return AbcMarkerData(77, bsVector(x, y, z), 10.0, 3.0, ex, ey, ez, angle);
}

std::vector<Row> rowsOf(const QTableWidget* table) {
  std::vector<Row> rows;
  for (int row = 0; row < table->rowCount(); ++row) {
    Row texts;
    for (int column = 0; column < table->columnCount(); ++column) {
      const QTableWidgetItem* const item = table->item(row, column);
      texts.push_back(item == nullptr ? "(none)" : item->text().toStdString());
    }
    rows.push_back(texts);
  }
  return rows;
}

Row headersOf(const QTableWidget* table) {
  Row texts;
  texts.reserve(static_cast<std::size_t>(table->columnCount()));
  for (int column = 0; column < table->columnCount(); ++column) {
    texts.push_back(table->horizontalHeaderItem(column)->text().toStdString());
  }
  return texts;
}

class Tables : public testing::Test {
 protected:
  QTableWidget* data() const { return tables.findChild<QTableWidget*>("tableWidget_data"); }
  QTableWidget* emissions() const { return tables.findChild<QTableWidget*>("tableWidget_emissions"); }
  QLabel* emissionsLabel() const { return tables.findChild<QLabel*>("label_emissions"); }
  bool emissionsHidden() const {
    EXPECT_EQ(emissions()->isHidden(), emissionsLabel()->isHidden());
    return emissions()->isHidden();
  }
  void show() {
    tables.show();
    tables.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&tables));
  }

  BodyTable tables;
};

/// A menu that must not stay open behind the back of a test.
class OpenedMenu {
 public:
  OpenedMenu() { menu.addAction("Graphic view"); }
  ~OpenedMenu() { menu.close(); }
  bool isOpen() const { return menu.isVisible(); }

  QMenu menu;
};

}  // namespace

TEST_F(Tables, FormHoldsTwoTablesAndTwoLabelsInOneColumn) {
  EXPECT_EQ(tables.windowTitle(), "BodyTable02");
  auto* const layout = qobject_cast<QVBoxLayout*>(tables.layout());
  ASSERT_NE(layout, nullptr);
  EXPECT_EQ(layout->objectName(), "verticalLayout");
  std::vector<std::string> names;
  for (int i = 0; i < layout->count(); ++i) {
    names.push_back(layout->itemAt(i)->widget()->objectName().toStdString());
  }
  EXPECT_THAT(names, ElementsAre("tableWidget_data", "label", "label_emissions", "tableWidget_emissions"));
  EXPECT_EQ(tables.findChild<QLabel*>("label")->text(), "");
  EXPECT_EQ(emissionsLabel()->text(), "Emissions:");
  EXPECT_NE(qobject_cast<QelTableWidget02*>(data()), nullptr);
  EXPECT_NE(qobject_cast<QelTableWidget02*>(emissions()), nullptr);
}

TEST_F(Tables, ColumnsAreNamedAndTheTablesReadOnly) {
  EXPECT_THAT(headersOf(data()), ElementsAre("Marker", "x [mm]", "y [mm]", "z [mm]"));
  EXPECT_THAT(headersOf(emissions()), ElementsAre("Marker", "x", "y", "z", "Angle [deg]"));
  for (const QTableWidget* const table : {data(), emissions()}) {
    EXPECT_TRUE(table->verticalHeader()->isHidden());
    EXPECT_FALSE(table->horizontalHeader()->sectionsClickable());
    EXPECT_TRUE(table->horizontalHeader()->stretchLastSection());
    EXPECT_EQ(table->selectionMode(), QAbstractItemView::NoSelection);
    EXPECT_EQ(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    EXPECT_EQ(table->rowCount(), 0);
  }
}

TEST_F(Tables, BodyWithoutEmissionsShowsTheMarkerTableOnly) {
  tables.update_table_widgets({marker(1.0, -2.5, 1234.567), marker(0.004, 0.006, -0.001)});
  EXPECT_THAT(rowsOf(data()), ElementsAre(Row{"1", "1.00", "-2.50", "1234.57"}, Row{"2", "0.00", "0.01", "-0.00"}));
  EXPECT_TRUE(emissionsHidden());
}

TEST_F(Tables, BodyWithEmissionsShowsBothTables) {
  tables.update_table_widgets({marker(1, 2, 3, 0.0, 0.6, -0.8, 45.0), marker(4, 5, 6, 1.0, 0.0, 0.0, 59.996)});
  EXPECT_FALSE(emissionsHidden());
  EXPECT_THAT(rowsOf(data()), ElementsAre(Row{"1", "1.00", "2.00", "3.00"}, Row{"2", "4.00", "5.00", "6.00"}));
  EXPECT_THAT(rowsOf(emissions()),
              ElementsAre(Row{"1", "0.00", "0.60", "-0.80", "45.00"}, Row{"2", "1.00", "0.00", "0.00", "60.00"}));
}

TEST_F(Tables, EmissionsComeAndGoWithTheBodyAndOldOnesStay) {
  tables.update_table_widgets({marker(1, 2, 3, 0.0, 0.0, 1.0, 45.0)});
  EXPECT_FALSE(emissionsHidden());
  tables.update_table_widgets({marker(1, 2, 3), marker(4, 5, 6)});
  EXPECT_TRUE(emissionsHidden());
  EXPECT_EQ(data()->rowCount(), 2);
  EXPECT_THAT(rowsOf(emissions()), ElementsAre(Row{"1", "0.00", "0.00", "1.00", "45.00"}));
  tables.update_table_widgets({marker(1, 2, 3, 0.0, 1.0, 0.0, 30.0)});
  EXPECT_FALSE(emissionsHidden());
  EXPECT_EQ(data()->rowCount(), 1);
  EXPECT_THAT(rowsOf(emissions()), ElementsAre(Row{"1", "0.00", "1.00", "0.00", "30.00"}));
}

TEST_F(Tables, EmptyBodyHasNoRowsAndNoEmissions) {
  tables.update_table_widgets({marker(1, 2, 3, 0.0, 0.0, 1.0, 45.0)});
  tables.update_table_widgets(QList<AbcMarkerData>());
  EXPECT_EQ(data()->rowCount(), 0);
  EXPECT_TRUE(emissionsHidden());
}

TEST_F(Tables, EmissionIsTheSumOfSignedComponents) {
  EXPECT_FALSE(tables.bodyHasEmission({}));
  EXPECT_FALSE(tables.bodyHasEmission({marker(9, 9, 9)}));
  EXPECT_FALSE(tables.bodyHasEmission({marker(0, 0, 0, 0.001, 0, 0, 0)})) << "not greater than the least";
  EXPECT_TRUE(tables.bodyHasEmission({marker(0, 0, 0, 0.0011, 0, 0, 0)}));
  EXPECT_TRUE(tables.bodyHasEmission({marker(0, 0, 0, 0, 0.0011, 0, 0)}));
  EXPECT_TRUE(tables.bodyHasEmission({marker(0, 0, 0, 0, 0, 0.0011, 0)}));
  EXPECT_TRUE(tables.bodyHasEmission({marker(0, 0, 0, 0, 0, 0, 0.0011)}));
  EXPECT_FALSE(tables.bodyHasEmission({marker(0, 0, 0, -1, 0, 0, 0)}));
  EXPECT_FALSE(tables.bodyHasEmission({marker(0, 0, 0, -1.0, 0.5, 0.0, 0.5)}))
      << "components that cancel count as none";
  EXPECT_TRUE(tables.bodyHasEmission({marker(1, 1, 1), marker(0, 0, 0, 0, 0, -1, 45)})) << "one record is enough";
}

TEST_F(Tables, MarkerNumbersRunInListOrderWhateverTheRecordsNumbers) {
  QList<AbcMarkerData> markers;
  for (const unsigned int id : {7U, 0U, AbcMarkerData::noMarker}) {
    markers.append(AbcMarkerData(id, bsVector(0, 0, 0), 10.0, 3.0, 0, 0, 1, 10));
  }
  tables.update_table_widgets(markers);
  for (int row = 0; row < 3; ++row) {
    EXPECT_EQ(data()->item(row, 0)->text(), QString::number(row + 1));
    EXPECT_EQ(emissions()->item(row, 0)->text(), QString::number(row + 1));
  }
}

TEST_F(Tables, FetchedGeometryIsShownUpToTheShorterList) {
  std::vector<bsVector> positions = {bsVector(1, 2, 3), bsVector(4, 5, 6), bsVector(7, 8, 9)};
  std::vector<Emission> directions(2);
  directions[1].x = 0.5;
  directions[1].y = -0.25;
  directions[1].z = 0.75;
  directions[1].angle = 12.345;
  tables.update_table_widgets(5, &positions, &directions);
  EXPECT_THAT(rowsOf(data()), ElementsAre(Row{"1", "1.00", "2.00", "3.00"}, Row{"2", "4.00", "5.00", "6.00"}));
  EXPECT_THAT(rowsOf(emissions()),
              ElementsAre(Row{"1", "0.00", "0.00", "0.00", "0.00"}, Row{"2", "0.50", "-0.25", "0.75", "12.35"}));
  positions.resize(1);
  tables.update_table_widgets(5, &positions, &directions);
  EXPECT_EQ(data()->rowCount(), 1);
  EXPECT_TRUE(emissionsHidden());
  positions.clear();
  tables.update_table_widgets(5, &positions, &directions);
  EXPECT_EQ(data()->rowCount(), 0);
}

TEST_F(Tables, MissingListsCountAsEmptyOnes) {
  std::vector<bsVector> positions = {bsVector(1, 2, 3)};
  std::vector<Emission> directions(1);
  tables.update_table_widgets({marker(1, 2, 3)});
  tables.update_table_widgets(1, nullptr, &directions);
  EXPECT_EQ(data()->rowCount(), 0);
  tables.update_table_widgets({marker(1, 2, 3)});
  tables.update_table_widgets(1, &positions, nullptr);
  EXPECT_EQ(data()->rowCount(), 0);
}

TEST_F(Tables, NumbersKeepTheDecimalPointUnderACommaLocale) {
  const QLocale before;
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  tables.setLocale(QLocale());
  tables.update_table_widgets({marker(1234.5, 0, 0, 0.25, 0, 0, 45)});
  QLocale::setDefault(before);
  EXPECT_THAT(rowsOf(data()), ElementsAre(Row{"1", "1234.50", "0.00", "0.00"}));
  EXPECT_THAT(rowsOf(emissions()), ElementsAre(Row{"1", "0.25", "0.00", "0.00", "45.00"}));
}

TEST_F(Tables, NumbersThatAreNoneDoNoHarm) {
  tables.update_table_widgets({marker(std::nan(""), std::numeric_limits<double>::infinity(), 1e300)});
  EXPECT_EQ(data()->item(0, 1)->text(), "nan");
  EXPECT_EQ(data()->item(0, 2)->text(), "inf");
  EXPECT_TRUE(data()->item(0, 3)->text().endsWith(".00"));
}

TEST_F(Tables, CellsHoldTheTextOnly) {
  tables.update_table_widgets({marker(1, 2, 3, 0, 0, 1, 45)});
  for (const QTableWidget* const table : {data(), emissions()}) {
    for (int column = 0; column < table->columnCount(); ++column) {
      const QTableWidgetItem* const item = table->item(0, column);
      EXPECT_TRUE(item->icon().isNull());
      EXPECT_TRUE(item->toolTip().isEmpty());
      EXPECT_FALSE(item->data(Qt::TextAlignmentRole).isValid());
      EXPECT_FALSE(item->data(Qt::UserRole).isValid());
    }
  }
}

TEST_F(Tables, ClearingKeepsHeadersAndRows) {
  tables.update_table_widgets({marker(1, 2, 3, 0, 0, 1, 45), marker(4, 5, 6, 0, 0, 1, 45)});
  tables.clear_tableWidget_data();
  const Row none4(4, "(none)");
  EXPECT_THAT(rowsOf(data()), ElementsAre(none4, none4));
  EXPECT_EQ(emissions()->item(0, 0)->text(), "1");
  tables.update_table_widgets({marker(1, 2, 3, 0, 0, 1, 45), marker(4, 5, 6, 0, 0, 1, 45)});
  tables.clear_tables();
  const Row none5(5, "(none)");
  EXPECT_THAT(rowsOf(data()), ElementsAre(none4, none4));
  EXPECT_THAT(rowsOf(emissions()), ElementsAre(none5, none5));
  EXPECT_THAT(headersOf(data()), ElementsAre("Marker", "x [mm]", "y [mm]", "z [mm]"));
  EXPECT_THAT(headersOf(emissions()), ElementsAre("Marker", "x", "y", "z", "Angle [deg]"));
}

TEST_F(Tables, ColumnSizeAppliesToTheEmissionComponents) {
  const int before = data()->columnWidth(1);
  const int marker = emissions()->columnWidth(0);
  tables.set_tables_column_size();
  for (const int column : {1, 2, 3}) {
    EXPECT_EQ(emissions()->columnWidth(column), 80);
  }
  EXPECT_EQ(emissions()->columnWidth(0), marker);
  EXPECT_EQ(data()->columnWidth(1), before);
}

TEST_F(Tables, RightPressOpensTheMenuAtThePointer) {
  OpenedMenu opened;
  tables.set_menu(&opened.menu);
  tables.update_table_widgets({marker(1, 2, 3, 0, 0, 1, 45)});
  show();
  const QList<QWidget*> targets = {data()->viewport(), emissions()->viewport(), &tables};
  for (QWidget* const target : targets) {
    const QPoint at(5, 3);
    QTest::mousePress(target, Qt::RightButton, Qt::NoModifier, at);
    EXPECT_TRUE(opened.isOpen());
    EXPECT_EQ(opened.menu.pos(), target->mapToGlobal(at));
    opened.menu.close();
    QTest::mouseRelease(target, Qt::RightButton, Qt::NoModifier, at);
    EXPECT_FALSE(opened.isOpen());
  }
}

TEST_F(Tables, OtherPressesNeitherSelectNorOpen) {
  OpenedMenu opened;
  tables.set_menu(&opened.menu);
  tables.update_table_widgets({marker(1, 2, 3, 0, 0, 1, 45), marker(4, 5, 6, 0, 0, 1, 45)});
  show();
  const QList<QTableWidget*> both = {data(), emissions()};
  for (QTableWidget* const table : both) {
    const QPoint cell = table->visualItemRect(table->item(1, 1)).center();
    const int current = table->currentRow();
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton}) {
      QTest::mouseClick(table->viewport(), button, Qt::NoModifier, cell);
      QTest::mouseDClick(table->viewport(), button, Qt::NoModifier, cell);
      EXPECT_FALSE(opened.isOpen());
      EXPECT_THAT(table->selectedItems(), IsEmpty());
      EXPECT_EQ(table->currentRow(), current);
      EXPECT_EQ(table->findChild<QLineEdit*>(), nullptr) << "no cell editor";
    }
  }
}

TEST_F(Tables, PressIsTakenAndNotHandedOn) {
  show();
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
    QMouseEvent event(QEvent::MouseButtonPress, QPointF(2, 2), button, button, Qt::NoModifier);
    QApplication::sendEvent(data()->viewport(), &event);
    EXPECT_TRUE(event.isAccepted());
    QMouseEvent own(QEvent::MouseButtonPress, QPointF(2, 2), button, button, Qt::NoModifier);
    EXPECT_TRUE(QMetaObject::invokeMethod(&tables, "mousePressEvent", Q_ARG(QMouseEvent*, &own)));
    EXPECT_TRUE(own.isAccepted());
  }
}

TEST_F(Tables, MenuKeyOpensTheMenuOnce) {
  OpenedMenu opened;
  tables.set_menu(&opened.menu);
  tables.update_table_widgets({marker(1, 2, 3)});
  show();
  QContextMenuEvent byMouse(QContextMenuEvent::Mouse, QPoint(3, 3), data()->viewport()->mapToGlobal(QPoint(3, 3)));
  QApplication::sendEvent(data()->viewport(), &byMouse);
  EXPECT_FALSE(opened.isOpen()) << "the press has opened it already";
  QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(3, 3), data()->viewport()->mapToGlobal(QPoint(3, 3)));
  QApplication::sendEvent(data()->viewport(), &byKey);
  EXPECT_TRUE(opened.isOpen());
}
