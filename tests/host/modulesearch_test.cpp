// Where modules are looked for, and what is refused before anything is loaded.
#include "modulesearch.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "modulefiles.h"

using namespace korvex2;

namespace {

std::vector<std::string> paths(const ModuleSearch& search) {
  std::vector<std::string> found;
  for (const ModuleFolder& folder : moduleFolders(search)) {
    found.push_back(folder.path.toStdString() + (folder.requested ? " requested" : ""));
  }
  return found;
}

ModuleSearch wholeSearch() {
  ModuleSearch search;
  search.environment = "/first:/second";
  search.programFolder = "/opt/korvex2/bin";
  search.userData = "/home/user/.local/share/korvex2/frontend";
  return search;
}

bool says(const QString& refusal, const char* words) { return refusal.contains(QLatin1String(words)); }

}  // namespace

TEST(ModuleSearch, GoesThroughTheFoldersInOrder) {
  const std::vector<std::string> found = paths(wholeSearch());
  ASSERT_EQ(found.size(), 5u);
  EXPECT_EQ(found[0], "/first requested");
  EXPECT_EQ(found[1], "/second requested");
  EXPECT_EQ(found[2], "/opt/korvex2/modules");
  EXPECT_EQ(found[3], "/home/user/.local/share/korvex2/frontend/modules");
  EXPECT_EQ(found[4].substr(0, 17), "/opt/korvex2/lib/");
  EXPECT_EQ(found[4].substr(found[4].size() - 16), "/korvex2/modules");
}

TEST(ModuleSearch, AGivenFolderIsTheOnlyOne) {
  ModuleSearch search = wholeSearch();
  search.pluginDir = "/mine";
  EXPECT_EQ(paths(search), (std::vector<std::string>{"/mine requested"}));
}

TEST(ModuleSearch, MakesFoldersAbsoluteAndLeavesOutEmptyAndRepeatedOnes) {
  ModuleSearch search;
  search.environment = "::/a: :/a/../a:sub:";
  const std::string here = QDir::currentPath().toStdString();
  EXPECT_EQ(paths(search), (std::vector<std::string>{"/a requested", here + "/sub requested"}));
}

TEST(ModuleSearch, TwoNamesOfOneFolderAreOneFolder) {
  const QTemporaryDir folder;
  ASSERT_TRUE(QDir(folder.path()).mkdir("real"));
  ASSERT_TRUE(QFile::link(folder.filePath("real"), folder.filePath("link")));
  ModuleSearch search;
  search.environment = folder.filePath("real") + ":" + folder.filePath("link");
  EXPECT_EQ(paths(search).size(), 1u);
}

TEST(ModuleSearch, ReadsTheVariable) {
  const QByteArray before = qgetenv("KORVEX2_MODULE_PATH");
  qputenv("KORVEX2_MODULE_PATH", "/somewhere");
  EXPECT_EQ(ModuleSearch::ofThisProgram({}).environment, "/somewhere");
  EXPECT_EQ(ModuleSearch::ofThisProgram("/x").pluginDir, "/x");
  before.isNull() ? qunsetenv("KORVEX2_MODULE_PATH") : qputenv("KORVEX2_MODULE_PATH", before);
}

TEST(ModuleSearch, OnlyFilesNamedLikeLibrariesAreLookedAtInAlphabeticalOrder) {
  const ModuleFiles files;
  files.write("libz.so", "x");
  files.write("README.txt", "x");
  files.write("liba.so", "x");
  files.write("libnot.so.bak", "x");
  ASSERT_TRUE(QDir(files.path()).mkdir("folder.so"));
  EXPECT_EQ(libraryFiles(files.path()), (QStringList{files.path("liba.so"), files.path("libz.so")}));
  EXPECT_TRUE(libraryFiles(files.path("missing")).isEmpty());
}

TEST(RefusalBeforeLoading, AcceptsAModule) {
  const ModuleFiles files;
  EXPECT_EQ(refusalBeforeLoading(files.copy("alphamodule")).toStdString(), "");
}

TEST(RefusalBeforeLoading, NamesWhatIsWrongWithTheFile) {
  const ModuleFiles files;
  EXPECT_TRUE(says(refusalBeforeLoading(files.path("nowhere.so")), "does not exist"));
  ASSERT_TRUE(QFile::link(files.path("nowhere.so"), files.path("link.so")));
  EXPECT_TRUE(says(refusalBeforeLoading(files.path("link.so")), "link"));
  ASSERT_TRUE(QDir(files.path()).mkdir("folder.so"));
  EXPECT_TRUE(says(refusalBeforeLoading(files.path("folder.so")), "not a file"));
  EXPECT_TRUE(says(refusalBeforeLoading(files.write("empty.so", "")), "empty"));
}

TEST(RefusalBeforeLoading, RefusesWhatIsNoPlugin) {
  const ModuleFiles files;
  EXPECT_TRUE(says(refusalBeforeLoading(files.write("text.so", "This is a text.\n")), "no plug-in"));
  EXPECT_TRUE(says(refusalBeforeLoading(files.write("zeros.so", QByteArray(100000, '\0'))), "no plug-in"));
  EXPECT_TRUE(says(refusalBeforeLoading(files.copy("plainlibrary")), "no plug-in"));
}

TEST(RefusalBeforeLoading, RefusesAPluginCutOffAnywhere) {
  const ModuleFiles files;
  int number = 0;
  for (const double part : {0.0005, 0.01, 0.2, 0.5, 0.9, 0.999}) {
    const QString file = files.truncated("alphamodule", part, QStringLiteral("cut%1.so").arg(++number));
    EXPECT_NE(refusalBeforeLoading(file).toStdString(), "") << "cut at " << part;
  }
}

TEST(RefusalBeforeLoading, RefusesAPluginOfAnotherProgram) {
  const ModuleFiles files;
  const QString refusal = refusalBeforeLoading(files.copy("foreignmodule"));
  EXPECT_TRUE(says(refusal, "another program")) << refusal.toStdString();
  EXPECT_TRUE(says(refusal, "org.example.editor.Filter/1.0")) << refusal.toStdString();
}

TEST(RefusalBeforeLoading, RefusesAModuleOfAnotherInterfaceVersion) {
  const ModuleFiles files;
  const QString refusal = refusalBeforeLoading(files.copy("oldmodule"));
  EXPECT_TRUE(says(refusal, "0.1.0") && says(refusal, "0.2.0")) << refusal.toStdString();
}

TEST(RefusalBeforeLoading, RefusesAModuleBuiltWithAnotherToolkit) {
  const ModuleFiles files;
  const QString older = refusalBeforeLoading(files.builtWithToolkit("alphamodule", 4, 8, "qt4.so"));
  EXPECT_TRUE(says(older, "Qt 4.8")) << older.toStdString();
  const QString newer = refusalBeforeLoading(files.builtWithToolkit("alphamodule", 5, 99, "qt599.so"));
  EXPECT_TRUE(says(newer, "Qt 5.99")) << newer.toStdString();
  const QString next = refusalBeforeLoading(files.builtWithToolkit("alphamodule", 6, 2, "qt6.so"));
  EXPECT_TRUE(says(next, "Qt 6.2")) << next.toStdString();
  EXPECT_EQ(refusalBeforeLoading(files.builtWithToolkit("alphamodule", 5, 2, "qt52.so")).toStdString(), "");
}
