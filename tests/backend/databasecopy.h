// A copy of the shipped database in a temporary folder, with an interpreter on it and hands on its files.
#ifndef KORVEX2_TESTS_DATABASECOPY_H
#define KORVEX2_TESTS_DATABASECOPY_H

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

#include "bodydatabase.h"
#include "interpreter.h"

namespace korvex2_test {

inline QByteArray readBytes(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
  return file.readAll();
}

inline void writeBytes(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
  ASSERT_EQ(bytes.size(), file.write(bytes));
}

/// Every file of a folder and its content, but for the lock.
inline QMap<QString, QByteArray> allFiles(const QString& folder) {
  QMap<QString, QByteArray> files;
  for (const QString& sub : {QStringLiteral("."), QStringLiteral("bodies")}) {
    for (const QString& name : QDir(folder + '/' + sub).entryList(QDir::Files | QDir::Hidden)) {
      if (!name.endsWith(QStringLiteral(".lock"))) {
        files[(sub == "." ? QString() : sub + '/') + name] = readBytes(folder + '/' + sub + '/' + name);
      }
    }
  }
  return files;
}

/// Everything that the protocol tells of a database, one answer a line.
inline std::string dumpOf(korvex2::Interpreter& interpreter) {
  std::string text;
  const auto add = [&](const std::string& query) {
    text += interpreter.answer(QByteArray::fromStdString("korvex2 get " + query)).toStdString() + '\n';
  };
  for (const char* query :
       {"version", "config is_changeable", "tracking available", "wandgrip output_6dw", "wandgrip number_of_devices",
        "wandgrip multiuser_available", "wandgrip multiuser", "wandgrip multiuser_with_head_available",
        "wandgrip multiuser_with_head", "body number_of_types"}) {
    add(query);
  }
  for (const korvex2::BodyType& type : interpreter.database().types()) {
    const std::string name = type.name.toStdString();
    add("body type_desc " + name);
    add("body number_of_bodies " + name);
    for (const korvex2::Body& body : interpreter.database().bodies(type.name)) {
      const std::string key = " " + name + " b" + std::to_string(body.key.number);
      for (const char* query : {"desc", "target_type", "calibrated", "number_of_marker"}) {
        add("body " + (query + key));
      }
      for (std::size_t marker = 1; marker <= body.markers.size(); ++marker) {
        add("body marker" + key + " m" + std::to_string(marker));
        add("body marker_emission" + key + " m" + std::to_string(marker));
      }
    }
  }
  return text;
}

/// Each change is flushed to its disk before it is acknowledged; memory spares the tests the waiting.
inline QString temporaryTemplate() {
  const QString memory = QStringLiteral("/dev/shm");
  return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/korvex2-XXXXXX");
}

class DatabaseCopy : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(temporary.isValid());
    copyAgain();
  }

  QString folder() const { return temporary.filePath("database"); }
  QString path(const QString& file) const { return folder() + '/' + file; }

  void close() {
    interpreter.reset();
    database.reset();  // gives the lock back
  }

  /// Begins again with a fresh copy.
  void copyAgain() {
    close();
    ASSERT_TRUE(QDir(folder()).removeRecursively());
    ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder()).toStdString());
    open();
  }

  /// Opens the folder anew, as a restart does.
  void open() {
    close();
    database = korvex2::openDatabase(folder());
    interpreter = std::make_unique<korvex2::Interpreter>(*database);
  }

  std::string ask(const std::string& line) {
    return interpreter->answer(QByteArray::fromStdString(line)).toStdString();
  }

  /// Number of an error answer; 0 for any other answer.
  int errorOf(const std::string& line) {
    const std::string answer = ask(line);
    return answer.rfind("korvex2 err ", 0) == 0 ? std::stoi(answer.substr(12)) : 0;
  }

  std::string dump() { return dumpOf(*interpreter); }

  /// What the operator is told, joined.
  std::string problems() const { return database->problems().join('\n').toStdString(); }

  QTemporaryDir temporary{temporaryTemplate()};
  std::unique_ptr<korvex2::BodyDatabase> database;
  std::unique_ptr<korvex2::Interpreter> interpreter;
};

}  // namespace korvex2_test

#endif
