// Body files out of the database by the File menu, and both ways together with the module's own reader and writer.
#include <gtest/gtest.h>

#include <QProcess>

#include "bodyfilescase.h"

using namespace korvex2;

TEST_F(BodyFiles, ExportWritesTheSelectedBody) {
  ASSERT_EQ(ask("body transform standard b01 0.1 0 0 1 0 0 0 1 0 0 0 1"), "korvex2 ok");
  select(0);
  exportTo([&](BodyFileDialog& dialog) {
    EXPECT_EQ(summary(dialog), "Choose a body and the file that its markers are written to.");
    EXPECT_FALSE(confirm(dialog)->isEnabled());
    EXPECT_EQ(choose(dialog, path("mine")).second, "cup.body");
    EXPECT_EQ(dialog.findChild<QLineEdit*>("file")->text(), path("mine.body"));
    EXPECT_EQ(summary(dialog), "Cup (Standard body 01)\nMarkers: 5, in the body's present coordinate system.");
    EXPECT_EQ(confirm(dialog)->text(), "&Export");
    EXPECT_FALSE(QFile::exists(path("mine.body"))) << "nothing happens before it is confirmed";
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
  });
  const std::string text = "Front end: Exported from Cup (Standard body 01): " + path("mine.body").toStdString();
  EXPECT_EQ(lastReport(), text);
  EXPECT_EQ(statusText(), text);
  const std::string exported = bytes(path("mine.body"));
  EXPECT_EQ(exported.substr(0, 2), "5\n");
  EXPECT_EQ(exported.substr(exported.find("\n# Lines")), "\n# Lines\n2\n0 1\n2 3\n");
  EXPECT_EQ(std::stod(exported.substr(2)), -16.4095 + 0.1);
}

TEST_F(BodyFiles, AFileIsReplacedOnlyAfterAQuestion) {
  const QString file = written("older.body", "older");
  select(1);
  exportTo([&](BodyFileDialog& dialog) {
    watch.expectBox("Export body file", "older.body already exists.\nDo you want to replace it?", QMessageBox::Yes);
    choose(dialog, file);
    EXPECT_EQ(summary(dialog),
              "Table (Standard body 02)\nMarkers: 4, in the body's present coordinate system.\n"
              "The file exists and is replaced.");
    EXPECT_EQ(bytes(file), "older");
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_EQ(bytes(file).substr(0, 2), "4\n");
}

TEST_F(BodyFiles, AFailedExportIsToldAndCanBeTriedElsewhere) {
  select(0);
  exportTo([&](BodyFileDialog& dialog) {
    const QString inside = database() + "/bodies/new.body";
    choose(dialog, inside);
    const QString text = "Body not exported: " + inside + " lies in the folder of the body database";
    expectFailure("Export body file", text);
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_EQ(lastReport(), "!Front end: " + text.toStdString());
    EXPECT_FALSE(QFile::exists(inside));
    ASSERT_TRUE(dialog.isVisible());
    choose(dialog, path("mine.body"));
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(bytes(path("mine.body")).substr(0, 2), "5\n");
}

TEST_F(BodyFiles, ABodyWithoutMarkersIsNotExported) {
  frontend.reset();
  QFile broken(database() + "/bodies/table.body");
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
  broken.close();
  start();
  select(1);
  exportTo([&](BodyFileDialog& dialog) {
    choose(dialog, path("none.body"));
    EXPECT_EQ(summary(dialog), "Table (Standard body 02)\nThe body has no markers to export.");
    EXPECT_FALSE(confirm(dialog)->isEnabled());
  });
  EXPECT_FALSE(QFile::exists(path("none.body")));
}

TEST_F(BodyFiles, TheOfferedNameIsPlainWhateverTheBodyIsCalled) {
  ASSERT_EQ(ask("set body desc standard b02 \"../a b: *c?\""), "korvex2 ok");
  ASSERT_EQ(ask("set body desc standard b03 \"\""), "korvex2 ok");
  frontend->refreshBodies();
  select(1);
  exportTo([&](BodyFileDialog& dialog) { EXPECT_EQ(choose(dialog, QString()).second, "a_b_c.body"); });
  select(2);
  exportTo([&](BodyFileDialog& dialog) { EXPECT_EQ(choose(dialog, QString()).second, "standard_03.body"); });
}

TEST_F(BodyFiles, TheFolderLastUsedIsOfferedNextTime) {
  ASSERT_TRUE(QDir(place.path()).mkdir("other"));
  select(0);
  exportTo([&](BodyFileDialog& dialog) { choose(dialog, place.filePath("other/cup.body")); });
  start();
  importFrom([&](BodyFileDialog& dialog) {
    EXPECT_EQ(choose(dialog, QString()).first, place.filePath("other").toStdString());
  });
  EXPECT_EQ(QSettings("korvex2", "frontend").value("bodyFiles/folder"), place.filePath("other"));
  ASSERT_TRUE(QDir(place.filePath("other")).removeRecursively());
  importFrom([&](BodyFileDialog& dialog) {
    const QString offered = QString::fromStdString(choose(dialog, QString()).first);
    EXPECT_NE(offered, place.filePath("other"));
    EXPECT_TRUE(QFileInfo(offered).isDir());
  });
}

TEST_F(BodyFiles, TheModuleReadsWhatIsExportedToTheLastDigit) {
  // Markers 10 - y, 20 + x, 30 + z of the cup as shipped, each step in the arithmetic of doubles.
  ASSERT_EQ(ask("body transform standard b01 10 20 30 0 1 0 -1 0 0 0 0 1"), "korvex2 ok");
  select(0);
  exportTo([&](BodyFileDialog& dialog) {
    choose(dialog, path("cup.body"));
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  QProcess reader;
  reader.start(MODULE_READER_PROGRAM, {"read", path("cup.body")});
  ASSERT_TRUE(reader.waitForFinished());
  ASSERT_EQ(reader.exitCode(), 0);
  const QList<QByteArray> lines = reader.readAllStandardOutput().trimmed().split('\n');
  ASSERT_EQ(lines.size(), 7);
  for (int marker = 0; marker < 5; ++marker) {
    double values[3] = {};
    ASSERT_EQ(frontend->channel().get_reals(values, 3, "body marker standard b01 m%2.2d", marker + 1), 0);
    const QList<QByteArray> read = lines[marker].split(' ');
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(std::strtod(read[i].constData(), nullptr), values[i]) << marker;
    }
  }
  EXPECT_NEAR(std::strtod(lines[0].constData(), nullptr), 10 - 43.2385, 1e-12);
  EXPECT_EQ(lines[5], "line 0 1");
  EXPECT_EQ(lines[6], "line 2 3");
}

TEST_F(BodyFiles, WhatTheModuleWritesIsImported) {
  const QByteArray content = "3\n0 0 0\n100 0.5 0\n0 10 -0.001\nby hand\n# Lines\n2\n0 2\n1 2\n";
  const QString source = written("source.body", content);
  ASSERT_EQ(QProcess::execute(MODULE_READER_PROGRAM, {"rewrite", source, path("module.body")}), 0);
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, path("module.body"));
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_EQ(ask("get body marker standard b01 m03"), "korvex2 set body marker standard b01 m03 0 10 -0.001");
  exportTo([&](BodyFileDialog& dialog) {
    choose(dialog, path("again.body"));
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_EQ(bytes(path("again.body")), content.toStdString()) << "text and lines, too";
}
