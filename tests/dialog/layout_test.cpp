// The dialog's layout: nothing clipped on small and scaled screens, a canvas that grows, a sensible way for the tab
// key.
#include <qwt_wheel.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QTabBar>

#include <algorithm>

#include "bsDoubleWidget.h"
#include "dialogtest.h"

using testing::ElementsAreArray;

namespace {

class Layout : public DialogTest {
 protected:
  void resizeTo(const QSize& size) {
    dialog->resize(size);
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog->size() == size; }))
        << "the dialog needs more room than the screen";
    QApplication::processEvents();
  }
  /// Widgets with text or a number in them that the operator sees now.
  std::vector<QWidget*> readable() {
    std::vector<QWidget*> found;
    for (QWidget* const widget : dialog->findChildren<QWidget*>()) {
      const bool hasText = qobject_cast<QLabel*>(widget) != nullptr ||
                           qobject_cast<QAbstractButton*>(widget) != nullptr ||
                           qobject_cast<QAbstractSpinBox*>(widget) != nullptr ||
                           qobject_cast<QComboBox*>(widget) != nullptr || qobject_cast<QwtWheel*>(widget) != nullptr;
      bool ofAnother = widget->window() != dialog.get();
      for (QWidget* parent = widget->parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        ofAnother = ofAnother || qobject_cast<QAbstractScrollArea*>(parent) != nullptr ||
                    qobject_cast<QTabBar*>(parent) != nullptr || qobject_cast<QComboBox*>(parent) != nullptr;
      }
      if (hasText && !ofAnother && widget->isVisible()) {
        found.push_back(widget);
      }
    }
    return found;
  }
  static std::string nameOf(const QWidget* widget) {
    std::string name = widget->objectName().toStdString();
    for (const QWidget* parent = widget; name.empty() && parent != nullptr; parent = parent->parentWidget()) {
      name = parent->objectName().toStdString() + "/" + widget->metaObject()->className();
      name = parent->objectName().isEmpty() ? "" : name;
    }
    return name;
  }
  void expectNothingClipped() {
    const std::vector<QWidget*> widgets = readable();
    EXPECT_GT(widgets.size(), 20U);
    for (const QWidget* const widget : widgets) {
      SCOPED_TRACE(nameOf(widget));
      EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()));
      EXPECT_TRUE(dialog->rect().contains(QRect(widget->mapTo(dialog.get(), QPoint()), widget->size())));
      EXPECT_GE(widget->width(), widget->minimumSizeHint().width());
      EXPECT_GE(widget->height(), widget->minimumSizeHint().height());
      EXPECT_EQ(widget->visibleRegion().boundingRect().size(), widget->size());
      for (const QWidget* const other : widgets) {
        EXPECT_FALSE(other != widget && other->parentWidget() == widget->parentWidget() &&
                     other->geometry().intersects(widget->geometry()))
            << "overlaps " << nameOf(other);
      }
    }
  }
  void expectNothingClippedAnywhere() {
    auto* const tabs = find<QTabWidget>("tabWidget");
    for (const int row : {cupRow, handRow, tubeRow, penRow}) {
      choose(row);
      for (int page = 0; page < tabs->count(); ++page) {
        SCOPED_TRACE("row " + std::to_string(row) + ", page " + std::to_string(page));
        tabs->setCurrentIndex(page);
        QApplication::processEvents();
        expectNothingClipped();
      }
    }
    for (QAbstractButton* const scroller : tabs->tabBar()->findChildren<QAbstractButton*>()) {
      EXPECT_FALSE(scroller->isVisible()) << "a page's title is out of sight";
    }
    menuEntry("Data view")->trigger();
    QApplication::processEvents();
    expectNothingClipped();
    menuEntry("Graphic view")->trigger();
  }
};

TEST_F(Layout, NothingIsClippedOnASmallScreen) {
  run([&] {
    resizeTo({1280, 800});
    expectNothingClippedAnywhere();
  });
}

TEST_F(Layout, NothingIsClippedAsItOpens) {
  run([&] {
    EXPECT_EQ(dialog->size(), QSize(980, 740));
    expectNothingClippedAnywhere();
  });
}

TEST_F(Layout, NothingIsClippedOnASmallScreenScaledByHalf) {
  run([&] {
    resizeTo({853, 533});
    expectNothingClippedAnywhere();
    EXPECT_GE(canvas().height(), 200);
  });
}

TEST_F(Layout, WarningsFitOnASmallScreenScaledByHalf) {
  backend.changeable = false;
  backend.trackingAvailable = false;
  backend.multiUser = true;
  backend.multiUserStuck = true;
  run([&] {
    resizeTo({853, 533});
    EXPECT_TRUE(find("error_label")->isVisible());
    expectNothingClippedAnywhere();
  });
}

TEST_F(Layout, NothingIsClippedWhenTheToolkitScales) {
  if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
    run([&] {
      EXPECT_EQ(dialog->devicePixelRatioF(), 1.5);
      resizeTo({853, 533});
      expectNothingClippedAnywhere();
    });
    return;
  }
  QProcess child;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("QT_SCALE_FACTOR", "1.5");
  child.setProcessEnvironment(environment);
  child.setProcessChannelMode(QProcess::MergedChannels);
  child.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=Layout.NothingIsClippedWhenTheToolkitScales"});
  ASSERT_TRUE(child.waitForFinished(60000));
  EXPECT_EQ(child.exitCode(), 0) << child.readAll().toStdString();
}

TEST_F(Layout, TheCanvasTakesWhatTheWindowGains) {
  run([&] {
    resizeTo({980, 740});
    const QSize before = canvas().size();
    resizeTo({1180, 840});
    EXPECT_EQ(canvas().width(), before.width() + 200);
    EXPECT_EQ(canvas().height(), before.height() + 100);
    EXPECT_GT(canvas().width() * canvas().height(), 1180 * 840 / 2);
  });
}

TEST_F(Layout, TheTabKeyGoesFromTopToBottom) {
  const std::vector<std::string> order = {"body_name",
                                          "canvas",
                                          "tabWidget",
                                          "body_pos_xyzWidget",
                                          "body_pos_xyzWidget",
                                          "body_pos_xyzWidget",
                                          "body_ori_xyzWidget",
                                          "body_ori_xyzWidget",
                                          "body_ori_xyzWidget",
                                          "set_origin_button",
                                          "set_origin_cog_button",
                                          "set_axis_button",
                                          "pos_xyzWidget",
                                          "pos_xyzWidget",
                                          "pos_xyzWidget",
                                          "ori_xyzWidget",
                                          "ori_xyzWidget",
                                          "ori_xyzWidget",
                                          "reset_view_button",
                                          "online_checkbox",
                                          "help_button",
                                          "ok_button",
                                          "cancel_button"};
  run([&] {
    choose(cupRow);
    select({0, 1});
    bodies().setFocus();
    std::vector<std::string> visited;
    for (std::size_t i = 0; i < order.size(); ++i) {
      QWidget* const focused = QApplication::focusWidget();
      ASSERT_NE(focused, nullptr);
      const QWidget* named = focused;
      while (std::find(order.begin(), order.end(), named->objectName().toStdString()) == order.end() &&
             named != dialog.get()) {
        named = named->parentWidget();
      }
      visited.push_back(named == dialog.get() ? nameOf(focused) : named->objectName().toStdString());
      QTest::keyClick(focused, Qt::Key_Tab);
    }
    EXPECT_THAT(visited, ElementsAreArray(order));
    EXPECT_EQ(QApplication::focusWidget(), &bodies());
  });
}

TEST_F(Layout, EveryFieldHasANameThatCanBeReadOut) {
  make();
  std::vector<const QWidget*> buddies;
  for (const QLabel* const label : dialog->findChildren<QLabel*>()) {
    if (label->buddy() != nullptr && !label->text().isEmpty()) {
      buddies.push_back(label->buddy());
    }
  }
  int fields = 0;
  for (const QWidget* const widget : dialog->findChildren<QWidget*>()) {
    const bool isField = qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
                         qobject_cast<const QComboBox*>(widget) != nullptr ||
                         qobject_cast<const QwtWheel*>(widget) != nullptr;
    if (isField && widget->window() == dialog.get()) {
      ++fields;
      EXPECT_TRUE(!widget->accessibleName().isEmpty() ||
                  std::find(buddies.begin(), buddies.end(), widget) != buddies.end())
          << nameOf(widget);
    }
  }
  EXPECT_EQ(fields, 4 * 3 * 2 + 4 + 1);
  EXPECT_FALSE(canvas().accessibleName().isEmpty());
}

TEST_F(Layout, EveryButtonHasAToolTip) {
  make();
  for (const QPushButton* const button : dialog->findChildren<QPushButton*>()) {
    if (button->window() == dialog.get()) {
      EXPECT_FALSE(button->toolTip().isEmpty()) << nameOf(button);
    }
  }
}

}  // namespace
