// The triple of numeric entries: reports, brackets, passing on, and arrangement.
#include "xyzWidget.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QBoxLayout>
#include <QGroupBox>
#include <QtTest>

#include <cmath>
#include <memory>

#include "entryfixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QGroupBox* groupBoxOf(const xyzWidget& widget) { return widget.findChild<QGroupBox*>(); }

/// The fields a layout holds, as "XYZ"; 'G' stands for the group box.
std::string contentOf(const QLayout* layout, const xyzWidget& widget) {
  const std::vector<bsDoubleWidget*> fields = fieldsOf(&widget);
  std::string content;
  for (int i = 0; i < layout->count(); ++i) {
    const QWidget* const item = layout->itemAt(i)->widget();
    content += item == fields[0]            ? 'X'
               : item == fields[1]          ? 'Y'
               : item == fields[2]          ? 'Z'
               : item == groupBoxOf(widget) ? 'G'
                                            : '?';
  }
  return content;
}

QBoxLayout::Direction directionOf(const QWidget& widget) {
  return qobject_cast<QBoxLayout*>(widget.layout())->direction();
}

}  // namespace

TEST(XyzWidget, IsBuiltAsThreeColouredFieldsInARow) {
  const xyzWidget widget(nullptr, bsDoubleSpinWheel, -3.0, 9.0, true);
  EXPECT_EQ(widget.sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
  EXPECT_EQ(widget.sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
  EXPECT_EQ(directionOf(widget), QBoxLayout::LeftToRight);
  EXPECT_EQ(widget.layout()->contentsMargins(), QMargins(0, 0, 0, 0));
  EXPECT_EQ(contentOf(widget.layout(), widget), "XYZ");
  ASSERT_NE(groupBoxOf(widget), nullptr);
  EXPECT_TRUE(groupBoxOf(widget)->isHidden());
  EXPECT_EQ(directionOf(*groupBoxOf(widget)), QBoxLayout::LeftToRight);
  EXPECT_TRUE(widget.getLayoutHorizontal());
  EXPECT_EQ(widget.xLabel(), "X :");
  EXPECT_EQ(widget.yLabel(), "Y :");
  EXPECT_EQ(widget.zLabel(), "Z :");
  ASSERT_EQ(widget.findChildren<bsDoubleWidget*>().size(), 3);
  const QColor colors[] = {QColor(200, 0, 0), QColor(0, 200, 0), QColor(0, 0, 200)};
  for (std::size_t i = 0; i < 3; ++i) {
    const bsDoubleWidget* const field = fieldsOf(&widget)[i];
    EXPECT_EQ(labelOf(field)->palette().color(QPalette::WindowText), colors[i]);
    EXPECT_EQ(spinOf(field)->minimum(), -3.0);
    EXPECT_EQ(spinOf(field)->maximum(), 8.0) << "one below the nominal maximum while wrapping";
    EXPECT_FALSE(spinOf(field)->isHidden());
    EXPECT_FALSE(wheelOf(field)->isHidden());
  }
}

TEST(XyzWidget, PlacedByAFormItShowsWheelsFrom0To100) {
  const xyzWidget widget;
  for (const bsDoubleWidget* const field : fieldsOf(&widget)) {
    EXPECT_TRUE(spinOf(field)->isHidden());
    EXPECT_FALSE(wheelOf(field)->isHidden());
    EXPECT_EQ(spinOf(field)->minimum(), 0.0);
    EXPECT_EQ(spinOf(field)->maximum(), 100.0);
    EXPECT_FALSE(spinOf(field)->wrapping());
  }
}

TEST(XyzWidget, SetValuesReportsOnceAndOpensNoEdit) {
  xyzWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  Log log;
  record(&widget, &log);
  widget.setValues(1.0, -2.0, 3.5);
  EXPECT_THAT(take(&log), ElementsAre("value 1 -2 3.5"));
  EXPECT_EQ(widget.xValue(), 1.0);
  EXPECT_EQ(widget.yValue(), -2.0);
  EXPECT_EQ(widget.zValue(), 3.5);
  widget.setValues(1.0 + 0.9e-5, -2.0 - 0.9e-5, 3.5);
  EXPECT_THAT(take(&log), IsEmpty());
  widget.setValues(1.0, -2.0, 3.5 + 1.1e-5);
  EXPECT_THAT(take(&log), ElementsAre("value 1 -2 3.5")) << "the values read back";
  widget.setValues(1.0, 500.0, 3.5);
  EXPECT_THAT(take(&log), ElementsAre("value 1 100 3.5"));
  widget.setValues(std::nan(""), 100.0, 3.5);
  EXPECT_THAT(take(&log), IsEmpty());
  widget.setValues(0.0, 0.0, 0.0);
  EXPECT_THAT(take(&log), ElementsAre("value 0 0 0"));
  widget.setValues(1.0, 1.0, 1.0);
  for (const bsDoubleWidget* const field : fieldsOf(&widget)) {
    EXPECT_FALSE(field->signalsBlocked());
  }
}

TEST(XyzWidget, AdjustValuesAddsToAllThree) {
  xyzWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  widget.setValues(1.0, 2.0, 3.0);
  Log log;
  record(&widget, &log);
  widget.adjustValues(0.5, -5.0, 0.0);
  EXPECT_THAT(take(&log), ElementsAre("value 1.5 -3 3"));
  widget.adjustValues(0.0, 1e-6, 0.0);
  EXPECT_THAT(take(&log), IsEmpty());
}

TEST(XyzWidget, SingleSettersPassOnToTheirField) {
  xyzWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  const std::vector<bsDoubleWidget*> fields = fieldsOf(&widget);
  Log log;
  record(&widget, &log);
  widget.setXValue(1.0);
  widget.setYValue(2.0);
  widget.setZValue(3.0);
  EXPECT_THAT(take(&log), ElementsAre("value 1 0 0", "value 1 2 0", "value 1 2 3"));
  widget.setXRange(-1.0, 10.0);
  widget.setYRange(-2.0, 20.0);
  widget.setZRange(-3.0, 30.0);
  widget.setXWrapping(true);
  EXPECT_EQ(spinOf(fields[0])->minimum(), -1.0);
  EXPECT_EQ(spinOf(fields[0])->maximum(), 9.0);
  EXPECT_EQ(spinOf(fields[1])->minimum(), -2.0);
  EXPECT_EQ(spinOf(fields[1])->maximum(), 20.0);
  EXPECT_EQ(spinOf(fields[2])->minimum(), -3.0);
  EXPECT_EQ(spinOf(fields[2])->maximum(), 30.0);
  widget.setYWrapping(true);
  widget.setZWrapping(true);
  EXPECT_EQ(spinOf(fields[1])->maximum(), 19.0);
  EXPECT_EQ(spinOf(fields[2])->maximum(), 29.0);
  widget.setXLabel("a");
  widget.setYLabel("b");
  widget.setZLabel("c");
  EXPECT_EQ(fields[0]->label(), "a");
  EXPECT_EQ(fields[1]->label(), "b");
  EXPECT_EQ(fields[2]->label(), "c");
  widget.setLabels("x:", "y:", "z:");
  EXPECT_EQ(widget.xLabel(), "x:");
  EXPECT_EQ(widget.yLabel(), "y:");
  EXPECT_EQ(widget.zLabel(), "z:");
}

TEST(XyzWidget, CommonSettersPassOnToAllFields) {
  xyzWidget widget(nullptr, bsDoubleWheel, 0.0, 100.0, false);
  widget.setSuffix(" mm");
  widget.setStep(0.25);
  widget.setMode(bsDoubleSpin);
  widget.setValues(1.0, 2.0, 3.0);
  for (const bsDoubleWidget* const field : fieldsOf(&widget)) {
    EXPECT_EQ(spinOf(field)->suffix(), " mm");
    EXPECT_EQ(spinOf(field)->singleStep(), 0.25);
    EXPECT_FALSE(spinOf(field)->isHidden());
    EXPECT_TRUE(wheelOf(field)->isHidden());
  }
  widget.reset();
  EXPECT_EQ(widget.xValue(), 0.0);
  EXPECT_EQ(widget.yValue(), 0.0);
  EXPECT_EQ(widget.zValue(), 0.0);
}

TEST(XyzWidget, PropertiesReadAndWrite) {
  xyzWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  EXPECT_TRUE(widget.setProperty("xValue", 1.0));
  EXPECT_TRUE(widget.setProperty("yValue", 2.0));
  EXPECT_TRUE(widget.setProperty("zValue", 3.0));
  EXPECT_TRUE(widget.setProperty("xLabel", "x [mm]"));
  EXPECT_TRUE(widget.setProperty("yLabel", "y [mm]"));
  EXPECT_TRUE(widget.setProperty("zLabel", "z [mm]"));
  EXPECT_TRUE(widget.setProperty("groupTitle", "Position"));
  EXPECT_TRUE(widget.setProperty("horizontal", false));
  EXPECT_EQ(widget.property("xValue").toDouble(), 1.0);
  EXPECT_EQ(widget.property("yValue").toDouble(), 2.0);
  EXPECT_EQ(widget.property("zValue").toDouble(), 3.0);
  EXPECT_EQ(widget.property("xLabel").toString(), "x [mm]");
  EXPECT_EQ(widget.property("yLabel").toString(), "y [mm]");
  EXPECT_EQ(widget.property("zLabel").toString(), "z [mm]");
  EXPECT_EQ(widget.property("groupTitle").toString(), "Position");
  EXPECT_FALSE(widget.property("horizontal").toBool());
  EXPECT_EQ(groupBoxOf(widget)->title(), "Position");
}

TEST(XyzWidget, HorizontalOrVerticalIsTheArrangementOfTheFields) {
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  const std::vector<bsDoubleWidget*> fields = fieldsOf(widget);
  widget->setLayoutHorizontal(false);
  QApplication::processEvents();
  EXPECT_FALSE(widget->getLayoutHorizontal());
  EXPECT_EQ(directionOf(*widget), QBoxLayout::TopToBottom);
  EXPECT_EQ(directionOf(*groupBoxOf(*widget)), QBoxLayout::TopToBottom);
  EXPECT_EQ(widget->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
  EXPECT_EQ(contentOf(widget->layout(), *widget), "XYZ");
  EXPECT_TRUE(fields[0]->isVisible() && fields[1]->isVisible() && fields[2]->isVisible());
  EXPECT_LT(fields[0]->y(), fields[1]->y());
  EXPECT_LT(fields[1]->y(), fields[2]->y());
  EXPECT_EQ(fields[0]->x(), fields[2]->x());
  widget->setLayoutHorizontal(true);
  QApplication::processEvents();
  EXPECT_TRUE(widget->getLayoutHorizontal());
  EXPECT_EQ(directionOf(*widget), QBoxLayout::LeftToRight);
  EXPECT_LT(fields[0]->x(), fields[1]->x());
  EXPECT_LT(fields[1]->x(), fields[2]->x());
  EXPECT_EQ(fields[0]->y(), fields[2]->y());
}

TEST(XyzWidget, GroupBoxTakesTheFieldsInAndGivesThemBack) {
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  QGroupBox* const box = groupBoxOf(*widget);
  const std::vector<bsDoubleWidget*> fields = fieldsOf(widget);
  for (int round = 0; round < 2; ++round) {
    widget->showGroupBox(true);
    EXPECT_TRUE(fields[0]->isVisible() && fields[1]->isVisible() && fields[2]->isVisible()) << "at once";
    QApplication::processEvents();
    EXPECT_TRUE(box->isVisible());
    EXPECT_EQ(contentOf(box->layout(), *widget), "XYZ");
    EXPECT_EQ(contentOf(widget->layout(), *widget), "G");
    for (const bsDoubleWidget* const field : fields) {
      EXPECT_EQ(field->parentWidget(), box);
      EXPECT_TRUE(field->isVisible());
      EXPECT_TRUE(box->rect().contains(field->geometry()));
    }
    widget->showGroupBox(false);
    EXPECT_TRUE(fields[0]->isVisible() && fields[1]->isVisible() && fields[2]->isVisible()) << "at once";
    QApplication::processEvents();
    EXPECT_FALSE(box->isVisible());
    EXPECT_EQ(contentOf(box->layout(), *widget), "");
    EXPECT_EQ(contentOf(widget->layout(), *widget), "GXYZ");
    for (const bsDoubleWidget* const field : fields) {
      EXPECT_EQ(field->parentWidget(), widget);
      EXPECT_TRUE(field->isVisible());
    }
  }
}

TEST(XyzWidget, ChangedArrangementTakesTheFieldsOutOfAShownGroupBox) {
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  widget->showGroupBox(true);
  widget->setLayoutHorizontal(false);
  QApplication::processEvents();
  EXPECT_EQ(contentOf(widget->layout(), *widget), "XYZ");
  for (const bsDoubleWidget* const field : fieldsOf(widget)) {
    EXPECT_EQ(field->parentWidget(), widget);
    EXPECT_TRUE(field->isVisible());
  }
  widget->showGroupBox(true);
  EXPECT_EQ(contentOf(groupBoxOf(*widget)->layout(), *widget), "XYZ");
  EXPECT_EQ(contentOf(widget->layout(), *widget), "G");
}

TEST(XyzWidget, HiddenFieldsStayHiddenInTheGroupBox) {
  xyzWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  fieldsOf(&widget)[1]->hide();
  widget.showGroupBox(true);
  EXPECT_TRUE(fieldsOf(&widget)[1]->isHidden());
  EXPECT_FALSE(fieldsOf(&widget)[0]->isHidden());
  widget.showGroupBox(false);
  EXPECT_TRUE(fieldsOf(&widget)[1]->isHidden());
}

TEST(XyzWidget, TypedValueIsOneBracketWithTheTriple) {
  Log log;
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  const std::vector<bsDoubleWidget*> fields = fieldsOf(widget);
  record(widget, &log);
  spinOf(fields[1])->setFocus();
  spinOf(fields[1])->selectAll();
  QTest::keyClicks(spinOf(fields[1]), "14");
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 0 1 0", "value 0 14 0"));
  QTest::keyClick(spinOf(fields[1]), Qt::Key_Tab);
  EXPECT_TRUE(spinOf(fields[2])->hasFocus());
  EXPECT_THAT(take(&log), ElementsAre("finished"));
}

TEST(XyzWidget, RelativeEntryReturnsToZeroWithinTheSameEdit) {
  Log log;
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  const std::vector<bsDoubleWidget*> fields = fieldsOf(widget);
  record(widget, &log);
  QObject::connect(widget, &xyzWidget::xyzEditingFinished, widget, &xyzWidget::reset);
  for (const std::size_t i : {std::size_t{0}, std::size_t{2}}) {
    spinOf(fields[i])->setFocus();
    spinOf(fields[i])->selectAll();
    QTest::keyClicks(spinOf(fields[i]), "5");
    QTest::keyClick(spinOf(fields[i]), Qt::Key_Return);
    const std::string five = i == 0 ? "value 5 0 0" : "value 0 0 5";
    EXPECT_THAT(take(&log), ElementsAre("begin", five, five, "finished", "value 0 0 0"));
    window.elsewhere->setFocus();
    EXPECT_THAT(take(&log), IsEmpty());
  }
}

TEST(XyzWidget, WheelDragIsOneBracketWithTheTriple) {
  Log log;
  auto* const widget = new xyzWidget(nullptr, bsDoubleWheel, -999.99, 999.99, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  QwtWheel* const wheel = wheelOf(fieldsOf(widget)[2]);
  record(widget, &log);
  QObject::connect(widget, &xyzWidget::xyzEditingFinished, widget, &xyzWidget::reset);
  press(wheel);
  dragTo(wheel, 25);
  const std::string turned = QString::number(widget->zValue()).toStdString();
  EXPECT_GT(widget->zValue(), 0.0);
  release(wheel);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 0 0 " + turned, "finished", "value 0 0 0"));
}

TEST(XyzWidget, AFieldThatWasLeftWithReturnShowsNoSelection) {
  auto* const widget = new xyzWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  QDoubleSpinBox* const field = spinOf(fieldsOf(widget)[0]);
  auto* const text = field->findChild<QLineEdit*>();
  field->setFocus();
  field->selectAll();
  ASSERT_TRUE(text->hasSelectedText());
  QTest::keyClicks(field, "14");
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_FALSE(field->hasFocus());
  EXPECT_FALSE(text->hasSelectedText());
}
