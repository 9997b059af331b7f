// The bounded history behind the docks.
#include "logmodel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace korvex2;

namespace {

QString cell(const LogModel& model, int row, int column) { return model.data(model.index(row, column)).toString(); }

}  // namespace

TEST(LogModel, GrowsAtTheEnd) {
  LogModel model({"Time", "Text"}, 10);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  model.append({"1", "one"});
  model.append({"2", "two"});
  ASSERT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.columnCount(), 2);
  EXPECT_EQ(cell(model, 0, 1), "one");
  EXPECT_EQ(cell(model, 1, 1), "two");
  EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), "Text");
  EXPECT_EQ(model.rowText(1), "2\ttwo");
  EXPECT_EQ(model.rowText(2), "");
  EXPECT_EQ(model.rowText(-1), "");
}

TEST(LogModel, ForgetsTheOldestRowsBeyondItsLimit) {
  LogModel model({"Number"}, 5000);
  for (int i = 0; i < 5003; ++i) {
    model.append({QString::number(i)});
  }
  EXPECT_EQ(model.rowCount(), 5000);
  EXPECT_EQ(cell(model, 0, 0), "3");
  EXPECT_EQ(cell(model, 4999, 0), "5002");
}

TEST(LogModel, TakesRowsThatAreTooShortOrTooLong) {
  LogModel model({"a", "b"}, 10);
  model.append({"1"});
  model.append({"1", "2", "3"});
  EXPECT_EQ(cell(model, 0, 1), "");
  EXPECT_EQ(model.rowText(1), "1\t2");
}

TEST(LogModel, ClearsAndGoesOn) {
  LogModel model({"a"}, 2);
  model.clear();
  model.append({"1"});
  model.clear();
  EXPECT_EQ(model.rowCount(), 0);
  model.append({"2"});
  EXPECT_EQ(cell(model, 0, 0), "2");
}

TEST(LogModel, OnlyAnAlertStandsOut) {
  LogModel model({"a", "b"}, 5);
  model.append({"1", "2"}, true);
  model.append({"1", "2"}, false);
  EXPECT_FALSE(model.data(model.index(0, 0), Qt::DecorationRole).isNull());
  EXPECT_TRUE(model.data(model.index(1, 0), Qt::DecorationRole).isNull());
}

TEST(LogModel, TakesSeveralRowsAtOnce) {
  LogModel model({"a"}, 3);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  model.appendRows(std::vector<LogModel::Row>{{{"1"}, false}, {{"2"}, true}});
  model.appendRows(std::vector<LogModel::Row>{});
  EXPECT_EQ(inserted.size(), 1);
  model.appendRows(std::vector<LogModel::Row>{{{"3"}, false}, {{"4"}, false}});
  ASSERT_EQ(model.rowCount(), 3);
  EXPECT_EQ(cell(model, 0, 0), "2");
  EXPECT_EQ(cell(model, 2, 0), "4");
  EXPECT_FALSE(model.data(model.index(0, 0), Qt::DecorationRole).isNull());
  model.appendRows(std::vector<LogModel::Row>{{{"5"}, false}, {{"6"}, false}, {{"7"}, false}, {{"8"}, false}});
  ASSERT_EQ(model.rowCount(), 3);
  EXPECT_EQ(cell(model, 0, 0), "6");
  EXPECT_EQ(cell(model, 2, 0), "8");
}
