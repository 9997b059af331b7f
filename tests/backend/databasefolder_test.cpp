// The user's copy of the body database.
#include "databasefolder.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace korvex2;

namespace {

QByteArray content(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

TEST(DatabaseFolder, ShippedDataAreThoseOfTheSourceTreeWhereNothingIsInstalled) {
  EXPECT_EQ(shippedDataFolder("/nowhere/bin"), QStringLiteral(KORVEX2_SHIPPED_DATA));
}

TEST(DatabaseFolder, InstalledDataComeFirst) {
  const QTemporaryDir prefix;
  ASSERT_TRUE(QDir(prefix.path()).mkpath("share/korvex2/data"));
  EXPECT_EQ(shippedDataFolder(prefix.filePath("bin")), prefix.filePath("share/korvex2/data"));
}

TEST(DatabaseFolder, TheFirstStartCopiesAndLaterStartsKeep) {
  const QTemporaryDir place;
  const QString folder = place.filePath("a/b/database");
  ASSERT_EQ(prepareDatabaseFolder(folder, KORVEX2_SHIPPED_DATA).toStdString(), "");
  const QByteArray shipped = content(KORVEX2_SHIPPED_DATA "/catalogue.json");
  ASSERT_FALSE(shipped.isEmpty());
  EXPECT_EQ(content(folder + "/catalogue.json"), shipped);
  EXPECT_FALSE(QDir(folder + "/bodies").isEmpty());

  QFile changed(folder + "/catalogue.json");
  ASSERT_TRUE(changed.open(QIODevice::WriteOnly));
  changed.write("{}");
  changed.close();
  EXPECT_EQ(prepareDatabaseFolder(folder, KORVEX2_SHIPPED_DATA).toStdString(), "");
  EXPECT_EQ(content(folder + "/catalogue.json"), QByteArray("{}"));
}

TEST(DatabaseFolder, TellsWhatKeepsItFromBeingMade) {
  const QTemporaryDir place;
  QFile file(place.filePath("file"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  EXPECT_NE(prepareDatabaseFolder(place.filePath("file/database"), KORVEX2_SHIPPED_DATA).toStdString(), "");
  EXPECT_NE(prepareDatabaseFolder(place.filePath("none"), {}).toStdString(), "");
  EXPECT_EQ(prepareDatabaseFolder(place.path(), {}).toStdString(), "") << "there is a folder already";
}
