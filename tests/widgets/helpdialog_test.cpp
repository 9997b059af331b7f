// The help window: texts, pictures, places and size.
#include "helpdialog.h"

#include <gtest/gtest.h>

#include <QGridLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QtTest>

namespace {

template <typename Widget>
Widget* named(const HelpDialog& dialog, const char* name) {
  auto* const widget = dialog.findChild<Widget*>(name);
  EXPECT_NE(widget, nullptr) << name;
  return widget;
}

struct Place {
  const char* name;
  int row;
  int column;
};

const Place places[] = {{"label_9", 0, 0}, {"label_10", 0, 1}, {"label_11", 0, 2}, {"label_5", 1, 0}, {"label_3", 1, 1},
                        {"label_7", 1, 2}, {"label_4", 2, 0},  {"label_2", 2, 1},  {"label_6", 2, 2}};

}  // namespace

TEST(HelpDialog, ExplainsTheThreeBindings) {
  const HelpDialog dialog;
  EXPECT_EQ(dialog.windowTitle(), "Body Adjustment Help");
  EXPECT_EQ(named<QLabel>(dialog, "label")->text(), "Control of the graphic view");
  EXPECT_EQ(named<QLabel>(dialog, "label_9")->text(), "panning:");
  EXPECT_EQ(named<QLabel>(dialog, "label_10")->text(), "rotating:");
  EXPECT_EQ(named<QLabel>(dialog, "label_11")->text(), "zoom in / out:");
  EXPECT_EQ(named<QLabel>(dialog, "label_4")->text(), "Ctrl + left mouse button");
  EXPECT_EQ(named<QLabel>(dialog, "label_2")->text(), "Ctrl + right mouse button");
  EXPECT_EQ(named<QLabel>(dialog, "label_6")->text(), "Ctrl + mouse wheel<br>\nShift + left mouse button");
  for (const char* const name : {"label_4", "label_2", "label_6"}) {
    EXPECT_EQ(named<QLabel>(dialog, name)->minimumWidth(), 230) << name;
  }
}

TEST(HelpDialog, ThingsStandInTheirPlaces) {
  HelpDialog dialog;
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  auto* const grid = dialog.findChild<QGridLayout*>();
  ASSERT_NE(grid, nullptr);
  for (const Place& place : places) {
    QLayoutItem* const item = grid->itemAtPosition(place.row, place.column);
    ASSERT_NE(item, nullptr) << place.name;
    EXPECT_EQ(item->widget()->objectName(), place.name);
  }
  const auto* const line = named<QFrame>(dialog, "line");
  EXPECT_LT(named<QLabel>(dialog, "label")->geometry().bottom(), named<QLabel>(dialog, "label_9")->y());
  EXPECT_GT(line->y(), named<QLabel>(dialog, "label_4")->geometry().bottom());
  EXPECT_GT(named<QPushButton>(dialog, "exit_button")->y(), line->y());
}

TEST(HelpDialog, PicturesAreTheModulesCentredAndOfFixedSize) {
  HelpDialog dialog;
  auto* const grid = dialog.findChild<QGridLayout*>();
  const std::pair<const char*, const char*> pictures[] = {
      {"label_5", ":/panning.png"}, {"label_3", ":/rotation.png"}, {"label_7", ":/zooming.png"}};
  for (const auto& [name, file] : pictures) {
    auto* const label = named<QLabel>(dialog, name);
    EXPECT_EQ(label->minimumSize(), QSize(180, 135)) << name;
    EXPECT_EQ(label->maximumSize(), QSize(180, 135)) << name;
    ASSERT_FALSE(label->pixmap(Qt::ReturnByValue).isNull()) << name;
    EXPECT_EQ(label->pixmap(Qt::ReturnByValue).toImage(), QPixmap(file).toImage()) << name;
    EXPECT_EQ(grid->itemAt(grid->indexOf(label))->alignment(), Qt::AlignCenter) << name;
  }
}

TEST(HelpDialog, WidthIsFixedAndHeightIsNot) {
  HelpDialog dialog;
  EXPECT_EQ(dialog.minimumSize(), QSize(768, 299));
  EXPECT_EQ(dialog.maximumSize(), QSize(768, 10000));
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  dialog.resize(1000, 500);
  EXPECT_EQ(dialog.size(), QSize(768, 500));
  dialog.resize(300, 500);
  EXPECT_EQ(dialog.width(), 768);
}

TEST(HelpDialog, TextsAreNotClipped) {
  HelpDialog dialog;
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  for (QLabel* const label : dialog.findChildren<QLabel*>()) {
    EXPECT_GE(label->width(), label->sizeHint().width()) << qPrintable(label->objectName());
    EXPECT_GE(label->height(), label->sizeHint().height()) << qPrintable(label->objectName());
    EXPECT_TRUE(dialog.rect().contains(label->geometry())) << qPrintable(label->objectName());
  }
  const auto* const both = named<QLabel>(dialog, "label_6");
  const auto* const one = named<QLabel>(dialog, "label_4");
  EXPECT_GT(both->sizeHint().height(), one->sizeHint().height()) << "two lines";
}

TEST(HelpDialog, TitleBarHasASystemMenuAndNoMinimiseOrMaximise) {
  QWidget parent;
  for (QWidget* const owner : {static_cast<QWidget*>(nullptr), &parent}) {
    const HelpDialog dialog(owner);
    EXPECT_EQ(dialog.parentWidget(), owner);
    EXPECT_EQ(dialog.windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
  }
}

TEST(HelpDialog, ExitButtonAndItsShortcutClose) {
  HelpDialog dialog;
  auto* const exit = named<QPushButton>(dialog, "exit_button");
  EXPECT_EQ(exit->text(), "E&xit");
  EXPECT_EQ(exit->shortcut(), QKeySequence("Alt+X"));
  EXPECT_EQ(exit->maximumHeight(), 22);
  dialog.show();
  QTest::mouseClick(exit, Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  QTest::keyClick(&dialog, Qt::Key_X, Qt::AltModifier);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }));
  dialog.show();
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
}
