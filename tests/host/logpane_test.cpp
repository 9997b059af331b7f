// The history with its filter and buttons, as the operator uses it.
#include "logpane.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

#include "logmodel.h"

using namespace korvex2;

namespace {

class Pane : public testing::Test {
 protected:
  void SetUp() override {
    pane.resize(500, 200);
    pane.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&pane));
    QApplication::clipboard()->setText("before");
  }
  void fill(int rows) {
    for (int i = 0; i < rows; ++i) {
      model.append({QString::number(i), QStringLiteral("command %1").arg(i)});
    }
    QApplication::processEvents();
  }
  bool newestVisible() const {
    const QModelIndex last = view->model()->index(view->model()->rowCount() - 1, 0);
    return view->viewport()->rect().intersects(view->visualRect(last));
  }
  static std::string clipboard() { return QApplication::clipboard()->text().toStdString(); }

  LogModel model{{"Number", "Command"}, 5000};
  LogPane pane{&model, "Nothing yet"};
  QTreeView* view = pane.findChild<QTreeView*>("view");
  QLineEdit* filter = pane.findChild<QLineEdit*>("filter");
  QToolButton* copy = pane.findChild<QToolButton*>("copyButton");
  QToolButton* clear = pane.findChild<QToolButton*>("clearButton");
};

}  // namespace

TEST_F(Pane, SaysSoWhileThereIsNothing) {
  const auto labels = pane.findChildren<QLabel*>();
  ASSERT_EQ(labels.size(), 1);
  EXPECT_EQ(labels[0]->text(), "Nothing yet");
  EXPECT_TRUE(labels[0]->isVisible());
  EXPECT_FALSE(copy->isEnabled());
  EXPECT_FALSE(clear->isEnabled());
  fill(1);
  EXPECT_FALSE(labels[0]->isVisible());
  EXPECT_TRUE(copy->isEnabled());
  EXPECT_TRUE(clear->isEnabled());
}

TEST_F(Pane, FollowsTheNewestRow) {
  fill(300);
  EXPECT_TRUE(newestVisible());
  fill(1);
  EXPECT_TRUE(newestVisible());
}

TEST_F(Pane, StaysWhereTheOperatorReadsAndFollowsAgainFromTheEnd) {
  fill(300);
  view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
  fill(5);
  EXPECT_EQ(view->verticalScrollBar()->value(), view->verticalScrollBar()->minimum());
  EXPECT_FALSE(newestVisible());
  view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
  fill(5);
  EXPECT_TRUE(newestVisible());
}

TEST_F(Pane, CopiesEverythingWhenNothingIsSelected) {
  fill(3);
  QTest::mouseClick(copy, Qt::LeftButton);
  EXPECT_EQ(clipboard(), "0\tcommand 0\n1\tcommand 1\n2\tcommand 2\n");
}

TEST_F(Pane, CopiesTheSelectedRowsInTheirOrderWithCtrlC) {
  fill(5);
  const auto select = QItemSelectionModel::Select | QItemSelectionModel::Rows;
  view->selectionModel()->select(view->model()->index(3, 0), select);
  view->selectionModel()->select(view->model()->index(1, 0), select);
  QApplication::setActiveWindow(&pane);
  view->setFocus();
  QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(clipboard(), "1\tcommand 1\n3\tcommand 3\n");
}

TEST_F(Pane, CtrlCInTheFilterCopiesTheFiltersText) {
  fill(2);
  QApplication::setActiveWindow(&pane);
  filter->setFocus();
  QTest::keyClicks(filter, "command");
  filter->selectAll();
  QTest::keyClick(filter, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(clipboard(), "command");
}

TEST_F(Pane, TheFilterLooksAtEveryColumnWhateverTheCase) {
  fill(30);
  QTest::keyClicks(filter, "COMMAND 2");
  EXPECT_EQ(view->model()->rowCount(), 11);  // 2 and 20 to 29
  QTest::mouseClick(copy, Qt::LeftButton);
  EXPECT_EQ(QString::fromStdString(clipboard()).count('\n'), 11);
  filter->setText("(");
  EXPECT_EQ(view->model()->rowCount(), 0) << "a plain text, no pattern";
  filter->clear();
  EXPECT_EQ(view->model()->rowCount(), 30);
}

TEST_F(Pane, ClearsAndFollowsAgain) {
  fill(300);
  view->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
  QTest::mouseClick(clear, Qt::LeftButton);
  EXPECT_EQ(model.rowCount(), 0);
  fill(300);
  EXPECT_TRUE(newestVisible());
}
