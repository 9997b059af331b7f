// The single numeric entry: construction, setters and arrangement, without an operator.
#include "bsDoubleWidget.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QBoxLayout>
#include <QLocale>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

#include "entryfixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QBoxLayout* outerLayoutOf(const bsDoubleWidget& widget) { return qobject_cast<QBoxLayout*>(widget.layout()); }

QBoxLayout* innerLayoutOf(const bsDoubleWidget& widget) {
  return qobject_cast<QBoxLayout*>(outerLayoutOf(widget)->itemAt(1)->layout());
}

void expectPolicy(const QWidget* widget, QSizePolicy::Policy horizontal, QSizePolicy::Policy vertical) {
  EXPECT_EQ(widget->sizePolicy().horizontalPolicy(), horizontal);
  EXPECT_EQ(widget->sizePolicy().verticalPolicy(), vertical);
}

QPoint centreOf(const QWidget* field, const QWidget* in) { return field->mapTo(in, field->rect().center()); }

/// Makes German the locale of the widgets created while it lives.
class GermanLocale {
 public:
  GermanLocale() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }
  ~GermanLocale() { QLocale::setDefault(before_); }

 private:
  QLocale before_;
};

}  // namespace

TEST(DoubleWidget, EnumeratorsHaveTheirFixedNumbers) {
  EXPECT_EQ(static_cast<int>(bsDoubleSpin), 0);
  EXPECT_EQ(static_cast<int>(bsDoubleWheel), 1);
  EXPECT_EQ(static_cast<int>(bsDoubleSpinWheel), 2);
  EXPECT_EQ(static_cast<int>(bsDoubleTop), 0);
  EXPECT_EQ(static_cast<int>(bsDoubleBottom), 1);
  EXPECT_EQ(static_cast<int>(bsDoubleLeft), 2);
  EXPECT_EQ(static_cast<int>(bsDoubleRight), 3);
  EXPECT_EQ(static_cast<int>(bsDoubleHorizontal), 0);
  EXPECT_EQ(static_cast<int>(bsDoubleVertical), 1);
}

TEST(DoubleWidget, HasALabelBesideASpinBoxAboveAWheel) {
  const bsDoubleWidget widget(nullptr, bsDoubleSpinWheel, 0.0, 100.0, false);
  expectPolicy(&widget, QSizePolicy::Preferred, QSizePolicy::Fixed);
  const QBoxLayout* const outer = outerLayoutOf(widget);
  ASSERT_NE(outer, nullptr);
  EXPECT_EQ(outer->direction(), QBoxLayout::LeftToRight);
  EXPECT_EQ(outer->contentsMargins(), QMargins(0, 0, 0, 0));
  ASSERT_EQ(outer->count(), 2);
  EXPECT_EQ(outer->itemAt(0)->widget(), labelOf(&widget));
  expectPolicy(labelOf(&widget), QSizePolicy::Preferred, QSizePolicy::Fixed);
  const QBoxLayout* const inner = innerLayoutOf(widget);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->direction(), QBoxLayout::TopToBottom);
  EXPECT_EQ(inner->spacing(), 5);
  ASSERT_EQ(inner->count(), 2);
  EXPECT_EQ(inner->itemAt(0)->widget(), spinOf(&widget));
  EXPECT_EQ(inner->itemAt(1)->widget(), wheelOf(&widget));
}

TEST(DoubleWidget, SpinBoxKeepsTheToolkitsDecimalsAndStep) {
  const bsDoubleWidget widget(nullptr, bsDoubleSpin, -5.0, 7.0, false);
  const QDoubleSpinBox* const spin = spinOf(&widget);
  EXPECT_TRUE(spin->alignment() & Qt::AlignRight);
  EXPECT_EQ(spin->minimumWidth(), 56);
  EXPECT_EQ(spin->decimals(), 2);
  EXPECT_EQ(spin->singleStep(), 1.0);
  EXPECT_EQ(spin->minimum(), -5.0);
  EXPECT_EQ(spin->maximum(), 7.0);
  EXPECT_FALSE(spin->wrapping());
  EXPECT_EQ(widget.value(), 0.0);
}

TEST(DoubleWidget, WheelTurnsTenTimesForItsWholePeriodicRange) {
  const bsDoubleWidget widget(nullptr, bsDoubleWheel, 0.0, 100.0, false);
  const QwtWheel* const wheel = wheelOf(&widget);
  EXPECT_EQ(wheel->minimum(), 0.0);
  EXPECT_EQ(wheel->maximum(), 360.0);
  EXPECT_EQ(wheel->singleStep(), 1.0);
  EXPECT_EQ(wheel->pageStepCount(), 10);
  EXPECT_EQ(wheel->totalAngle(), 3600.0);
  EXPECT_EQ(wheel->tickCount(), 15);
  EXPECT_TRUE(wheel->wrapping());
  EXPECT_EQ(wheel->value(), 0.0);
  EXPECT_EQ(wheel->orientation(), Qt::Horizontal);
}

TEST(DoubleWidget, ModeDecidesWhichFieldsAreShown) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EXPECT_FALSE(spinOf(&widget)->isHidden());
  EXPECT_TRUE(wheelOf(&widget)->isHidden());
  widget.setMode(bsDoubleWheel);
  EXPECT_TRUE(spinOf(&widget)->isHidden());
  EXPECT_FALSE(wheelOf(&widget)->isHidden());
  widget.setMode(bsDoubleSpinWheel);
  EXPECT_FALSE(spinOf(&widget)->isHidden());
  EXPECT_FALSE(wheelOf(&widget)->isHidden());
  widget.setMode(static_cast<bsDoubleMode>(3));
  EXPECT_FALSE(spinOf(&widget)->isHidden()) << "a mode that does not exist changes nothing";
  EXPECT_FALSE(wheelOf(&widget)->isHidden());
  for (const bsDoubleMode mode : {bsDoubleSpin, bsDoubleWheel, bsDoubleSpinWheel}) {
    const bsDoubleWidget built(nullptr, mode, 0.0, 100.0, false);
    EXPECT_EQ(spinOf(&built)->isHidden(), mode == bsDoubleWheel);
    EXPECT_EQ(wheelOf(&built)->isHidden(), mode == bsDoubleSpin);
  }
}

TEST(DoubleWidget, WrappingKeepsTheMaximumOneBelowTheNominalOne) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, true);
  const QDoubleSpinBox* const spin = spinOf(&widget);
  EXPECT_TRUE(spin->wrapping());
  EXPECT_EQ(spin->maximum(), 99.0);
  widget.setRange(10.0, 360.0);
  EXPECT_EQ(spin->minimum(), 10.0);
  EXPECT_EQ(spin->maximum(), 359.0);
  widget.setWrapping(true);
  EXPECT_EQ(spin->maximum(), 359.0) << "the setting did not change";
  widget.setWrapping(false);
  EXPECT_FALSE(spin->wrapping());
  EXPECT_EQ(spin->maximum(), 360.0);
  widget.setWrapping(false);
  EXPECT_EQ(spin->maximum(), 360.0);
  widget.setRange(-1.0, 50.0);
  EXPECT_EQ(spin->minimum(), -1.0);
  EXPECT_EQ(spin->maximum(), 50.0);
}

TEST(DoubleWidget, WrappingSetAfterTheRangeRunsFromZeroTo359AndWraps) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  widget.setRange(0.0, 360.0);
  widget.setWrapping(true);
  QDoubleSpinBox* const spin = spinOf(&widget);
  EXPECT_EQ(spin->minimum(), 0.0);
  EXPECT_EQ(spin->maximum(), 359.0);
  spin->stepDown();
  EXPECT_EQ(widget.value(), 359.0);
  spin->stepUp();
  EXPECT_EQ(widget.value(), 0.0);
}

TEST(DoubleWidget, StepMovesTheMaximumWhileWrappingOnly) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 360.0, true);
  const QDoubleSpinBox* const spin = spinOf(&widget);
  widget.setStep(5.0);
  EXPECT_EQ(spin->maximum(), 355.0);
  EXPECT_EQ(spin->singleStep(), 5.0);
  widget.setStep(0.5);
  EXPECT_EQ(spin->maximum(), 359.5);
  EXPECT_EQ(spin->singleStep(), 0.5);
  widget.setStep(-1.0);
  EXPECT_EQ(spin->maximum(), 359.5) << "a step that the spin box refuses must not move its maximum";
  EXPECT_EQ(spin->singleStep(), 0.5);

  bsDoubleWidget plain(nullptr, bsDoubleSpin, 0.0, 360.0, false);
  plain.setStep(5.0);
  EXPECT_EQ(spinOf(&plain)->maximum(), 360.0);
  EXPECT_EQ(spinOf(&plain)->singleStep(), 5.0);
}

TEST(DoubleWidget, LabelAndSpinBoxTakeTheirSettings) {
  bsDoubleWidget widget(nullptr, bsDoubleSpinWheel, 0.0, 100.0, false);
  const QLabel* const label = labelOf(&widget);
  widget.setLabel("x [mm]");
  EXPECT_EQ(widget.label(), "x [mm]");
  EXPECT_EQ(label->text(), "x [mm]");
  QFont font = label->font();
  font.setPointSize(17);
  font.setItalic(true);
  widget.setLabelFont(font);
  EXPECT_EQ(label->font().pointSize(), 17);
  EXPECT_TRUE(label->font().italic());
  widget.showLabel(false);
  EXPECT_TRUE(label->isHidden());
  widget.showLabel(true);
  EXPECT_FALSE(label->isHidden());
  widget.setDecimals(3);
  EXPECT_EQ(spinOf(&widget)->decimals(), 3);
  widget.setSuffix(" mm");
  EXPECT_EQ(spinOf(&widget)->suffix(), " mm");
  widget.languageChange();
  EXPECT_EQ(widget.label(), "x [mm]");
}

TEST(DoubleWidget, LabelColourIsASolidBrushInEveryColourGroup) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  widget.setLabelColor(QColor(12, 34, 56));
  for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    const QBrush brush = labelOf(&widget)->palette().brush(group, QPalette::WindowText);
    EXPECT_EQ(brush.color(), QColor(12, 34, 56));
    EXPECT_EQ(brush.style(), Qt::SolidPattern);
  }
}

TEST(DoubleWidget, AssistiveToolsKnowTheFieldsByTheLabel) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  widget.setLabel("X :");
  EXPECT_EQ(spinOf(&widget)->accessibleName(), "X");
  EXPECT_EQ(wheelOf(&widget)->accessibleName(), "X");
  EXPECT_EQ(labelOf(&widget)->buddy(), spinOf(&widget));
  widget.setMode(bsDoubleWheel);
  EXPECT_EQ(labelOf(&widget)->buddy(), wheelOf(&widget)) << "the field that is shown";
  widget.setMode(bsDoubleSpinWheel);
  EXPECT_EQ(labelOf(&widget)->buddy(), spinOf(&widget));
}

TEST(DoubleWidget, LabelStandsOnTheNamedSide) {
  auto* const widget = new bsDoubleWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EntryWindow window(widget);
  widget->setLabel("label");
  ASSERT_TRUE(window.activate());
  const auto offset = [&] {
    QApplication::processEvents();
    return centreOf(labelOf(widget), widget) - centreOf(spinOf(widget), widget);
  };
  widget->setLabelPosition(bsDoubleTop);
  EXPECT_EQ(outerLayoutOf(*widget)->direction(), QBoxLayout::TopToBottom);
  EXPECT_LT(offset().y(), 0);
  EXPECT_TRUE(labelOf(widget)->alignment() & Qt::AlignHCenter);
  widget->setLabelPosition(bsDoubleLeft);
  EXPECT_EQ(outerLayoutOf(*widget)->direction(), QBoxLayout::LeftToRight);
  EXPECT_LT(offset().x(), 0);
  EXPECT_TRUE(labelOf(widget)->alignment() & Qt::AlignLeft);
  EXPECT_FALSE(labelOf(widget)->alignment() & Qt::AlignHCenter);
  widget->setLabelPosition(bsDoubleBottom);
  EXPECT_EQ(outerLayoutOf(*widget)->direction(), QBoxLayout::BottomToTop);
  EXPECT_GT(offset().y(), 0);
  EXPECT_TRUE(labelOf(widget)->alignment() & Qt::AlignHCenter);
  widget->setLabelPosition(bsDoubleRight);
  EXPECT_EQ(outerLayoutOf(*widget)->direction(), QBoxLayout::RightToLeft);
  EXPECT_GT(offset().x(), 0);
  EXPECT_TRUE(labelOf(widget)->alignment() & Qt::AlignLeft);
}

TEST(DoubleWidget, WheelStandsOnTheNamedSideOfTheSpinBox) {
  auto* const widget = new bsDoubleWidget(nullptr, bsDoubleSpinWheel, 0.0, 100.0, false);
  EntryWindow window(widget);
  ASSERT_TRUE(window.activate());
  const auto offset = [&] {
    QApplication::processEvents();
    return centreOf(wheelOf(widget), widget) - centreOf(spinOf(widget), widget);
  };
  widget->setWheelPosition(bsDoubleTop);
  EXPECT_EQ(innerLayoutOf(*widget)->direction(), QBoxLayout::BottomToTop);
  EXPECT_LT(offset().y(), 0);
  widget->setWheelPosition(bsDoubleBottom);
  EXPECT_EQ(innerLayoutOf(*widget)->direction(), QBoxLayout::TopToBottom);
  EXPECT_GT(offset().y(), 0);
  widget->setWheelPosition(bsDoubleLeft);
  EXPECT_EQ(innerLayoutOf(*widget)->direction(), QBoxLayout::RightToLeft);
  EXPECT_LT(offset().x(), 0);
  widget->setWheelPosition(bsDoubleRight);
  EXPECT_EQ(innerLayoutOf(*widget)->direction(), QBoxLayout::LeftToRight);
  EXPECT_GT(offset().x(), 0);
}

TEST(DoubleWidget, WheelOrientationSetsDirectionAndSizePolicies) {
  bsDoubleWidget widget(nullptr, bsDoubleSpinWheel, 0.0, 100.0, false);
  const QwtWheel* const wheel = wheelOf(&widget);
  expectPolicy(wheel, QSizePolicy::Preferred, QSizePolicy::Fixed);
  EXPECT_EQ(wheel->minimumWidth(), 56);
  widget.setWheelOrientation(bsDoubleVertical);
  EXPECT_EQ(wheel->orientation(), Qt::Vertical);
  expectPolicy(&widget, QSizePolicy::Preferred, QSizePolicy::Expanding);
  expectPolicy(wheel, QSizePolicy::Fixed, QSizePolicy::Expanding);
  EXPECT_EQ(wheel->minimumWidth(), 0);
  EXPECT_EQ(innerLayoutOf(widget)->itemAt(1)->alignment(), Qt::AlignHCenter);
  widget.setWheelOrientation(bsDoubleHorizontal);
  EXPECT_EQ(wheel->orientation(), Qt::Horizontal);
  expectPolicy(&widget, QSizePolicy::Preferred, QSizePolicy::Fixed);
  expectPolicy(wheel, QSizePolicy::Preferred, QSizePolicy::Fixed);
  EXPECT_EQ(wheel->minimumWidth(), 56);
}

TEST(DoubleWidget, SetValueReportsOnceWithoutABracket) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  Log log;
  record(&widget, &log);
  widget.setValue(12.5);
  EXPECT_EQ(widget.value(), 12.5);
  EXPECT_THAT(take(&log), ElementsAre("value 12.5"));
  widget.setValue(12.5 + 0.9e-5);
  EXPECT_THAT(take(&log), IsEmpty()) << "within 1e-5";
  widget.setValue(12.5 - 0.9e-5);
  EXPECT_THAT(take(&log), IsEmpty());
  widget.setValue(12.5 + 1.1e-5);
  EXPECT_THAT(take(&log), ElementsAre("value 12.500011")) << "beyond 1e-5, although the spin box rounds it away";
  EXPECT_EQ(widget.value(), 12.5);
  widget.setValue(500.0);
  EXPECT_EQ(widget.value(), 100.0);
  EXPECT_THAT(take(&log), ElementsAre("value 500")) << "the value as given";
}

TEST(DoubleWidget, ValuesThatAreNoNumbersAreRefused) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  widget.setValue(3.0);
  Log log;
  record(&widget, &log);
  for (const double value : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    widget.setValue(value);
    widget.adjustValue(value);
    widget.setStep(std::nan(""));
    widget.setRange(value, std::nan(""));
  }
  EXPECT_THAT(log, IsEmpty());
  EXPECT_EQ(widget.value(), 3.0);
  EXPECT_EQ(spinOf(&widget)->minimum(), -100.0);
  EXPECT_EQ(spinOf(&widget)->singleStep(), 1.0);
}

TEST(DoubleWidget, AdjustValueOpensAnEditAndReportsTheSum) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  widget.setValue(10.0);
  Log log;
  record(&widget, &log);
  widget.adjustValue(1e-5);
  widget.adjustValue(-1e-5);
  EXPECT_THAT(take(&log), IsEmpty());
  widget.adjustValue(2.5);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 12.5"));
  widget.adjustValue(-4.0);
  EXPECT_THAT(take(&log), ElementsAre("value 8.5"));
  widget.setEditingFinished();
  EXPECT_THAT(take(&log), ElementsAre("finished"));
  widget.setEditingFinished();
  EXPECT_THAT(take(&log), IsEmpty()) << "no edit is open";
}

TEST(DoubleWidget, PropertiesReadAndWriteValueAndLabel) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, -100.0, 100.0, false);
  EXPECT_TRUE(widget.setProperty("value", 4.25));
  EXPECT_TRUE(widget.setProperty("label", QString("y")));
  EXPECT_EQ(widget.value(), 4.25);
  EXPECT_EQ(widget.property("value").toDouble(), 4.25);
  EXPECT_EQ(widget.property("label").toString(), "y");
}

TEST(DoubleWidget, TypedDecimalPointCountsWhereTheLocaleWritesAComma) {
  const GermanLocale german;
  bsDoubleWidget widget(nullptr, bsDoubleSpin, -999.99, 999.99, false);
  QDoubleSpinBox* const spin = spinOf(&widget);
  const auto typed = [&](const char* text) {
    spin->selectAll();
    QTest::keyClicks(spin, text);
    return widget.value();
  };
  EXPECT_EQ(typed("1,5"), 1.5);
  EXPECT_EQ(typed("2.5"), 2.5);
  EXPECT_EQ(spin->text(), "2,5");
  EXPECT_EQ(typed("-3.25"), -3.25);
  widget.setSuffix(" n.u.");
  EXPECT_EQ(typed("4.5"), 4.5);
  EXPECT_EQ(spin->text(), "4,5 n.u.");
}
