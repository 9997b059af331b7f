// The axis dialog: its three fields, how they follow each other, and what it announces.
#include "setaxisdialog.h"

#include <gmock/gmock.h>

#include <QComboBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "modalwatch.h"

using testing::ElementsAre;

namespace {

std::vector<std::string> entriesOf(const QComboBox* box) {
  std::vector<std::string> entries;
  for (int i = 0; i < box->count(); ++i) {
    entries.push_back(box->itemText(i).toStdString());
  }
  return entries;
}

class AxisDialog : public testing::Test {
 protected:
  AxisDialog() {
    QObject::connect(&dialog, &SetAxisDialog::setAxis, [this](abcAxis axisToSet, abcAxis axisToKeep) {
      announced.emplace_back(static_cast<int>(axisToSet), static_cast<int>(axisToKeep));
    });
  }
  QComboBox* box(const char* name) const { return dialog.findChild<QComboBox*>(name); }
  std::vector<std::string> choice() const {
    return {toSet->currentText().toStdString(), toPreserve->currentText().toStdString(),
            toCalculate->currentText().toStdString()};
  }

  SetAxisDialog dialog;
  QComboBox* toSet = box("comboBox_axisToSet");
  QComboBox* toPreserve = box("comboBox_axisToPreserve");
  QComboBox* toCalculate = box("comboBox_axisToCalculate");
  QPushButton* ok = dialog.findChild<QPushButton*>("okButton");
  QPushButton* cancel = dialog.findChild<QPushButton*>("cancelButton");
  std::vector<std::pair<int, int>> announced;
};

}  // namespace

TEST_F(AxisDialog, TextsAndToolTipsSayWhatEachFieldIsFor) {
  std::set<std::string> texts;
  for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
    texts.insert(label->text().toStdString());
  }
  EXPECT_EQ(texts, (std::set<std::string>{
                       "set axis relative to markers:", "axis to set:", "axis to preserve:", "axis to calculate:"}));
  EXPECT_EQ(toSet->toolTip(), "Set this axis as the direction of the two markers");
  EXPECT_EQ(toPreserve->toolTip(), "Set this axis to be preserved");
  EXPECT_EQ(toCalculate->toolTip(), "Set this axis to be calculated");
  const std::pair<QComboBox*, const char*> fields[] = {
      {toSet, "axis to set:"}, {toPreserve, "axis to preserve:"}, {toCalculate, "axis to calculate:"}};
  for (const auto& [field, text] : fields) {
    bool labelled = false;
    for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
      labelled = labelled || (label->buddy() == field && label->text() == text);
    }
    EXPECT_TRUE(labelled) << text;
  }
}

TEST_F(AxisDialog, StartsWithThreeDifferentAxes) {
  EXPECT_THAT(entriesOf(toSet), ElementsAre("X", "Y", "Z"));
  EXPECT_THAT(entriesOf(toPreserve), ElementsAre("Y", "Z"));
  EXPECT_THAT(entriesOf(toCalculate), ElementsAre("X", "Y", "Z"));
  EXPECT_THAT(choice(), ElementsAre("X", "Y", "Z"));
  EXPECT_FALSE(toCalculate->isEnabled()) << "it follows from the other two";
}

TEST_F(AxisDialog, AxisToSetLeavesTheTwoOthersToPreserve) {
  toSet->setCurrentIndex(1);
  EXPECT_THAT(entriesOf(toPreserve), ElementsAre("X", "Z"));
  EXPECT_THAT(choice(), ElementsAre("Y", "X", "Z"));
  toSet->setCurrentIndex(2);
  EXPECT_THAT(entriesOf(toPreserve), ElementsAre("X", "Y"));
  EXPECT_THAT(choice(), ElementsAre("Z", "X", "Y"));
  toPreserve->setCurrentIndex(1);
  EXPECT_THAT(choice(), ElementsAre("Z", "Y", "X"));
  toSet->setCurrentIndex(0);
  EXPECT_THAT(entriesOf(toPreserve), ElementsAre("Y", "Z"));
  EXPECT_THAT(choice(), ElementsAre("X", "Y", "Z")) << "the first entry is selected";
}

TEST_F(AxisDialog, AxisToCalculateIsTheRemainingOne) {
  const char* const names = "XYZ";
  for (int set = 0; set < 3; ++set) {
    toSet->setCurrentIndex(set);
    for (int entry = 0; entry < 2; ++entry) {
      toPreserve->setCurrentIndex(entry);
      const std::vector<std::string> chosen = choice();
      EXPECT_EQ(chosen[0], std::string(1, names[set]));
      EXPECT_EQ(std::set<std::string>(chosen.begin(), chosen.end()), (std::set<std::string>{"X", "Y", "Z"}));
    }
  }
}

TEST_F(AxisDialog, ChoiceSlotsWorkWhenCalledDirectly) {
  dialog.onAxisToSetChoice(1);
  EXPECT_THAT(choice(), ElementsAre("Y", "X", "Z"));
  dialog.onAxisToPreserveChoice(1);
  EXPECT_EQ(toCalculate->currentText(), "X") << "entry 1 of X, Z";
  dialog.onAxisToPreserveChoice(0);
  EXPECT_EQ(toCalculate->currentText(), "Z");
  dialog.onAxisToSetChoice(-1);
  dialog.onAxisToSetChoice(3);
  EXPECT_THAT(choice(), ElementsAre("Y", "X", "Z"));
  EXPECT_THAT(entriesOf(toPreserve), ElementsAre("X", "Z"));
}

TEST_F(AxisDialog, EntryThatIsNoAxisCountsAsX) {
  toSet->setCurrentIndex(1);
  toPreserve->addItem("W");
  toPreserve->setCurrentIndex(2);
  EXPECT_EQ(toCalculate->currentText(), "Z");
  dialog.validateSetAxis();
  EXPECT_THAT(announced, ElementsAre(std::pair<int, int>(1, 0)));
  toSet->setCurrentIndex(0);
  toPreserve->addItem("W");
  toPreserve->setCurrentIndex(2);
  dialog.onAxisToPreserveChoice(99);
  dialog.validateSetAxis();
  EXPECT_EQ(announced.size(), 1U) << "equal axes are never sent";
}

TEST_F(AxisDialog, OkAnnouncesTheChoiceOnce) {
  dialog.show();
  QTest::mouseClick(ok, Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_THAT(announced, ElementsAre(std::pair<int, int>(0, 1))) << "untouched: set X, keep Y";
  announced.clear();
  for (int set = 0; set < 3; ++set) {
    for (int entry = 0; entry < 2; ++entry) {
      dialog.show();
      toSet->setCurrentIndex(set);
      toPreserve->setCurrentIndex(entry);
      QTest::mouseClick(ok, Qt::LeftButton);
    }
  }
  using Pair = std::pair<int, int>;
  EXPECT_THAT(announced, ElementsAre(Pair(0, 1), Pair(0, 2), Pair(1, 0), Pair(1, 2), Pair(2, 0), Pair(2, 1)));
}

TEST_F(AxisDialog, CancelAndEscapeAnnounceNothing) {
  dialog.show();
  QTest::mouseClick(cancel, Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  dialog.show();
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(announced.empty());
}

TEST_F(AxisDialog, RunsModallyAndIsDoneByKeyboardAlone) {
  ModalWatch watch;
  watch.expectWindow([this](QWidget* window) {
    EXPECT_EQ(window, &dialog);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    EXPECT_TRUE(toSet->hasFocus());
    QTest::keyClick(toSet, Qt::Key_Down);
    QTest::keyClick(toSet, Qt::Key_Tab);
    EXPECT_TRUE(toPreserve->hasFocus());
    QTest::keyClick(toPreserve, Qt::Key_Down);
    QTest::keyClick(toPreserve, Qt::Key_Tab);
    EXPECT_TRUE(ok->hasFocus());
    QTest::keyClick(ok, Qt::Key_Return);
  });
  EXPECT_EQ(dialog.exec(), QDialog::Accepted);
  EXPECT_THAT(announced, ElementsAre(std::pair<int, int>(1, 2)));
}

TEST_F(AxisDialog, HasItsSignalAndSlots) {
  const QMetaObject& meta = SetAxisDialog::staticMetaObject;
  std::vector<std::string> methods;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    methods.push_back(meta.method(i).methodSignature().toStdString());
  }
  EXPECT_THAT(methods, ElementsAre("setAxis(abcAxis,abcAxis)", "onAxisToSetChoice(int)", "onAxisToPreserveChoice(int)",
                                   "validateSetAxis()"));
  EXPECT_THAT(meta.method(meta.methodOffset()).parameterNames(), ElementsAre("axisToSet", "axisToKeep"));
  QSignalSpy spy(&dialog, SIGNAL(setAxis(abcAxis, abcAxis)));
  ASSERT_TRUE(spy.isValid());
  dialog.validateSetAxis();
  ASSERT_EQ(spy.count(), 1);
  EXPECT_EQ(spy.at(0).at(0).value<abcAxis>(), ABC_AXIS_X);
  EXPECT_EQ(spy.at(0).at(1).value<abcAxis>(), ABC_AXIS_Y);
}
