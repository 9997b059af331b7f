// The host with a database of its own, and an operator's hands on the dialogs of body files.
#ifndef KORVEX2_TESTS_BODYFILESCASE_H
#define KORVEX2_TESTS_BODYFILESCASE_H

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "bodyfiledialog.h"
#include "databasefolder.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "logmodel.h"
#include "modalwatch.h"

class BodyFiles : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, place.filePath("settings"));
    ASSERT_TRUE(QDir(place.path()).mkdir("files"));
    ASSERT_EQ(korvex2::prepareDatabaseFolder(database(), SOURCE_DATA_FOLDER).toStdString(), "");
    start();
    watch.ignore("QFileDialog");
  }
  void start() {
    frontend.reset();
    frontend =
        std::make_unique<korvex2::Frontend>(std::make_unique<korvex2::EmbeddedConnection>(database(), QStringList()));
    frontend->window().show();
    QApplication::setActiveWindow(&frontend->window());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend->window()));
  }
  QString database() const { return place.filePath("database"); }
  QString path(const QString& name) const { return place.filePath("files/" + name); }
  QString written(const QString& name, const QByteArray& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return file.fileName();
  }
  static std::string bytes(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll().toStdString();
  }

  static QAction* entry(korvex2::Frontend& host, const QString& text) {
    for (QAction* action : host.window().menuBar()->actions().constFirst()->menu()->actions()) {
      if (action->text() == text) {
        return action;
      }
    }
    return nullptr;
  }
  QTreeWidget* bodies() const { return frontend->window().findChild<QTreeWidget*>("bodies"); }
  void select(int row) const {
    QTest::mouseClick(bodies()->viewport(), Qt::LeftButton, {},
                      bodies()->visualItemRect(bodies()->topLevelItem(row)).center());
  }
  std::string cell(int row, int column) const { return bodies()->topLevelItem(row)->text(column).toStdString(); }
  std::string ask(const QByteArray& line) const {
    QByteArray answer;
    EXPECT_TRUE(frontend->connection().exchange("korvex2 " + line, answer));
    return answer.toStdString();
  }
  /// What the last row of the reports says; "!" before it when it stands out.
  std::string lastReport() const {
    const korvex2::LogModel& reports = frontend->window().reports();
    if (reports.rowCount() == 0) {
      return "";
    }
    const int row = reports.rowCount() - 1;
    const bool alert = !reports.data(reports.index(row, 0), Qt::DecorationRole).isNull();
    return (alert ? "!" : "") + reports.data(reports.index(row, 1)).toString().toStdString() + ": " +
           reports.data(reports.index(row, 2)).toString().toStdString();
  }
  std::string statusText() const {
    return frontend->window().statusBar()->findChild<QLabel*>("lastReport")->text().toStdString();
  }

  /// Opens a dialog by its entry of the menu and goes through it; one that is still open in the end is left by Escape.
  void open(const QString& text, const std::function<void(korvex2::BodyFileDialog&)>& steps) {
    QAction* action = entry(*frontend, text);
    ASSERT_NE(action, nullptr);
    bool opened = false;
    watch.expectWindow([&](QWidget* window) {
      // Not from within the watch, which must go on watching what the dialog opens.
      QTimer::singleShot(0, window, [&opened, &steps, window] {
        auto* dialog = qobject_cast<korvex2::BodyFileDialog*>(window);
        ASSERT_NE(dialog, nullptr);
        opened = true;
        steps(*dialog);
        if (dialog->isVisible()) {
          QTest::keyClick(dialog, Qt::Key_Escape);
        }
      });
    });
    action->trigger();
    EXPECT_TRUE(opened);
    QTest::qWait(30);  // the watch sees that no window is open: the next one may lie at the same address
  }
  void importFrom(const std::function<void(korvex2::BodyFileDialog&)>& steps) { open("&Import body file...", steps); }
  void exportTo(const std::function<void(korvex2::BodyFileDialog&)>& steps) { open("&Export body file...", steps); }

  /// Presses "Choose..." and types a name into the file dialog; an empty name only looks and leaves.
  /// @return the folder and the name that the file dialog offered
  static std::pair<std::string, std::string> choose(korvex2::BodyFileDialog& dialog, const QString& name) {
    std::pair<std::string, std::string> offered;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
      auto* files = dialog.findChild<QFileDialog*>("fileDialog");
      auto* edit = files == nullptr || !files->isVisible() ? nullptr : files->findChild<QLineEdit*>("fileNameEdit");
      if (edit == nullptr) {
        return;
      }
      timer.stop();
      EXPECT_TRUE(files->testOption(QFileDialog::DontUseNativeDialog));
      offered = {files->directory().path().toStdString(), edit->text().toStdString()};
      QApplication::setActiveWindow(files);  // while its entry lacks the focus, an offered file stays selected
      edit->setFocus();
      edit->setText(name);
      QTest::keyClick(edit, name.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    });
    timer.start(5);
    QTest::mouseClick(dialog.findChild<QPushButton*>("choose"), Qt::LeftButton);
    EXPECT_FALSE(timer.isActive()) << "no file dialog opened";
    return offered;
  }
  static std::string summary(const korvex2::BodyFileDialog& dialog) {
    return dialog.findChild<QLabel*>("summary")->text().toStdString();
  }
  static QPushButton* confirm(const korvex2::BodyFileDialog& dialog) {
    return dialog.findChild<QPushButton*>("confirm");
  }
  static QComboBox* body(const korvex2::BodyFileDialog& dialog) { return dialog.findChild<QComboBox*>("body"); }
  /// The box of a failure, and what it must be reported as.
  void expectFailure(const QString& title, const QString& text) { watch.expectBox(title, text, QMessageBox::Ok); }

  /// Each change is flushed to its disk; memory spares the waiting.
  static QString temporaryTemplate() {
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/korvex2-XXXXXX");
  }
  QTemporaryDir place{temporaryTemplate()};
  std::unique_ptr<korvex2::Frontend> frontend;
  ModalWatch watch;
};

#endif
