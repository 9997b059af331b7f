// The colour button: swatch, report, and the standard colour dialog.
#include "bsColorButton.h"

#include <gtest/gtest.h>

#include <QColorDialog>
#include <QImage>
#include <QSignalSpy>
#include <QtTest>

#include "modalwatch.h"

namespace {

QImage swatchOf(const bsColorButton& button) { return button.icon().pixmap(32, 28).toImage(); }

}  // namespace

TEST(ColorButton, HasNoColourAndNoSwatchUntilOneIsSet) {
  const bsColorButton button(nullptr);
  EXPECT_FALSE(button.color().isValid());
  EXPECT_TRUE(button.icon().isNull());
  EXPECT_EQ(button.sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
  EXPECT_EQ(button.sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
}

TEST(ColorButton, ShowsTheColourItIsBuiltWith) {
  const bsColorButton button(QColor(10, 20, 30), nullptr);
  EXPECT_EQ(button.color(), QColor(10, 20, 30));
  EXPECT_EQ(swatchOf(button).pixelColor(16, 14), QColor(10, 20, 30));
  EXPECT_EQ(button.sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
  EXPECT_EQ(button.sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
}

TEST(ColorButton, SwatchIsTheColourInABlackFrame) {
  bsColorButton button(nullptr);
  button.setColor(QColor(200, 100, 50));
  const QImage swatch = swatchOf(button);
  ASSERT_EQ(swatch.size(), QSize(32, 28));
  EXPECT_EQ(button.icon().availableSizes().value(0), QSize(32, 28));
  const QColor black(Qt::black);
  const QColor colour(200, 100, 50);
  EXPECT_EQ(swatch.pixelColor(0, 0), black);
  EXPECT_EQ(swatch.pixelColor(1, 1), black);
  EXPECT_EQ(swatch.pixelColor(2, 2), colour);
  EXPECT_EQ(swatch.pixelColor(30, 26), colour);
  EXPECT_EQ(swatch.pixelColor(31, 14), black);
  EXPECT_EQ(swatch.pixelColor(16, 27), black);
}

TEST(ColorButton, ReportsANewColourOnceAndTheSameNever) {
  bsColorButton button(nullptr);
  const QSignalSpy changed(&button, &bsColorButton::colorChanged);
  button.setColor(QColor());
  EXPECT_EQ(changed.count(), 0);
  button.setColor(Qt::green);
  ASSERT_EQ(changed.count(), 1);
  EXPECT_EQ(changed.at(0).at(0).value<QColor>(), QColor(Qt::green));
  const qint64 key = button.icon().cacheKey();
  button.setColor(Qt::green);
  EXPECT_EQ(changed.count(), 1);
  EXPECT_EQ(button.icon().cacheKey(), key);
}

TEST(ColorButton, ClickOpensTheColourDialogAtTheCurrentColour) {
  bsColorButton button(QColor(10, 20, 30), nullptr);
  const QSignalSpy changed(&button, &bsColorButton::colorChanged);
  button.show();
  ModalWatch watch;
  watch.expectWindow([](QWidget* window) {
    auto* const dialog = qobject_cast<QColorDialog*>(window);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->currentColor(), QColor(10, 20, 30));
    EXPECT_EQ(dialog->parentWidget(), nullptr);
    dialog->setCurrentColor(QColor(1, 2, 3));
    dialog->accept();
  });
  QTest::mouseClick(&button, Qt::LeftButton);
  EXPECT_EQ(button.color(), QColor(1, 2, 3));
  ASSERT_EQ(changed.count(), 1);
  EXPECT_EQ(changed.at(0).at(0).value<QColor>(), QColor(1, 2, 3));
}

TEST(ColorButton, CancelledDialogChangesNothing) {
  bsColorButton button(QColor(10, 20, 30), nullptr);
  const QSignalSpy changed(&button, &bsColorButton::colorChanged);
  const qint64 key = button.icon().cacheKey();
  ModalWatch watch;
  watch.expectWindow([](QWidget* window) {
    auto* const dialog = qobject_cast<QColorDialog*>(window);
    ASSERT_NE(dialog, nullptr);
    dialog->setCurrentColor(QColor(1, 2, 3));
    dialog->reject();
  });
  button.chooseColor();
  EXPECT_EQ(button.color(), QColor(10, 20, 30));
  EXPECT_EQ(button.icon().cacheKey(), key);
  EXPECT_EQ(changed.count(), 0);
}

TEST(ColorButton, ConfirmingTheSameColourReportsNothing) {
  bsColorButton button(QColor(10, 20, 30), nullptr);
  const QSignalSpy changed(&button, &bsColorButton::colorChanged);
  ModalWatch watch;
  watch.expectWindow([](QWidget* window) { qobject_cast<QColorDialog*>(window)->accept(); });
  button.chooseColor();
  EXPECT_EQ(changed.count(), 0);
}
