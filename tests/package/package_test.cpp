// The installation as a module author gets it: its files, and modules built against it from another place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <string>
#include <vector>

#include "markdown.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const QString document = QStringLiteral(SOURCE_FOLDER "/docs/module-authors.md");
const QString installedPackage = QStringLiteral("korvex2/" LIBRARY_FOLDER "/cmake/Korvex2/");

/// Everything that an installation consists of, in alphabetical order.
const char* const installedFiles[] = {
    "bin/korvex2-backend",
    "bin/korvex2-frontend",
    "include/korvex2/backendversions.h",
    "include/korvex2/guielement.h",
    "include/korvex2/iomanager.h",
    "include/korvex2/messagereceiver.h",
    "include/korvex2/moduleinterface.h",
    "include/korvex2/requester.h",
    LIBRARY_FOLDER "/cmake/Korvex2/Korvex2Config.cmake",
    LIBRARY_FOLDER "/cmake/Korvex2/Korvex2ConfigVersion.cmake",
    LIBRARY_FOLDER "/cmake/Korvex2/Korvex2Module.cmake",
    LIBRARY_FOLDER "/cmake/Korvex2/Korvex2Targets.cmake",
    LIBRARY_FOLDER "/korvex2/modules/libbodyadjustment.so",
    "share/doc/korvex2/backend-protocol.md",
    "share/doc/korvex2/examples/bodylist/CMakeLists.txt",
    "share/doc/korvex2/examples/bodylist/bodylist.cpp",
    "share/doc/korvex2/images/bodylist.png",
    "share/doc/korvex2/images/due_to_body.png",
    "share/doc/korvex2/images/due_to_room.png",
    "share/doc/korvex2/images/due_to_room_cog.png",
    "share/doc/korvex2/images/green.png",
    "share/doc/korvex2/images/grey.png",
    "share/doc/korvex2/images/panning.png",
    "share/doc/korvex2/images/red.png",
    "share/doc/korvex2/images/rotation.png",
    "share/doc/korvex2/images/zooming.png",
    "share/doc/korvex2/module-authors.md",
    "share/doc/korvex2/user-guide.md",
    "share/korvex2/data/bodies/cup.body",
    "share/korvex2/data/bodies/phone.body",
    "share/korvex2/data/bodies/quadrotor_large.body",
    "share/korvex2/data/bodies/quadrotor_medium.body",
    "share/korvex2/data/bodies/quadrotor_standard.body",
    "share/korvex2/data/bodies/table.body",
    "share/korvex2/data/catalogue.json",
    "share/korvex2/data/trajectories/README.md",
    "share/korvex2/data/trajectories/handheld_xyz.tum",
};

struct Ended {
  int exitCode = -1;
  std::string out;
  std::string err;
};

/// A home folder in which Korvex2 is installed as the document says, in ~/korvex2, and nothing else.
class Package : public testing::Test {
 protected:
  QString path(const QString& name) const { return QDir(home.path()).filePath(name); }

  Ended run(const QString& program, const QStringList& arguments) const {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "KORVEX2_MODULE_PATH", "CMAKE_PREFIX_PATH",
                             "Korvex2_DIR", "DESTDIR", "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      environment.remove(name);
    }
    environment.insert("HOME", home.path());
    environment.insert("CMAKE_GENERATOR", "Ninja");
    environment.insert("CMAKE_EXPORT_COMPILE_COMMANDS", "ON");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(home.path());
    process.start(program, arguments);
    Ended ended;
    if (!process.waitForFinished(60000)) {
      ADD_FAILURE() << program.toStdString() << " did not end: " << process.errorString().toStdString();
      process.kill();
      process.waitForFinished();
      return ended;
    }
    ended.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    ended.out = process.readAllStandardOutput().toStdString();
    ended.err = process.readAllStandardError().toStdString();
    return ended;
  }
  void install(const QStringList& options = {}) const {
    const Ended ended =
        run(CMAKE_PROGRAM, QStringList{"--install", BUILD_FOLDER, "--prefix", path("korvex2")} + options);
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
  }
  void write(const QString& name, const QByteArray& content) const {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    ASSERT_EQ(file.write(content), content.size());
  }
  /// The example as the document shows it: whoever follows the document has nothing else.
  void writeExample() const {
    const std::vector<MarkdownBlock> blocks = markdownBlocks(document);
    for (const char* name : {"CMakeLists.txt", "bodylist.cpp"}) {
      write(QStringLiteral("bodylist/%1").arg(name), fileFromBlocks(blocks, name));
    }
  }
  /// Configures a project of these lines that looks for the installed package.
  Ended configure(const QByteArray& lines) const {
    write("project/CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(Project LANGUAGES CXX)\n" + lines);
    return run(CMAKE_PROGRAM,
               {"-S", path("project"), "-B", path("project/build"), "-DCMAKE_PREFIX_PATH=" + path("korvex2")});
  }
  QStringList filesIn(const QString& folder) const {
    QStringList files;
    for (QDirIterator each(path(folder), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
         each.hasNext();) {
      files += QDir(path(folder)).relativeFilePath(each.next());
    }
    files.sort();
    return files;
  }

  QTemporaryDir home;
};

}  // namespace

TEST_F(Package, InstallsExactlyTheseFiles) {
  install();
  QStringList expected;
  for (const char* file : installedFiles) {
    expected += QString::fromLatin1(file);
  }
  expected.sort();
  EXPECT_EQ(filesIn("korvex2").join('\n').toStdString(), expected.join('\n').toStdString());
}

TEST_F(Package, NamesNoPlaceOfTheMachineItWasBuiltOn) {
  install();
  for (const QString& file : filesIn(installedPackage)) {
    const std::string text = wholeFile(path(installedPackage + file)).toStdString();
    for (const QString& place : {QStringLiteral(SOURCE_FOLDER), QStringLiteral(BUILD_FOLDER), home.path()}) {
      EXPECT_THAT(text, Not(HasSubstr(place.toStdString()))) << file.toStdString();
    }
  }
}

TEST_F(Package, InstallsDocumentsWhoseLinksLeadToWhatIsInstalledWithThem) {
  install({"--component", "Development"});
  const QDir folder(path("korvex2/share/doc/korvex2"));
  const QStringList documents = folder.entryList({"*.md"}, QDir::Files, QDir::Name);
  EXPECT_EQ(documents, QStringList({"backend-protocol.md", "module-authors.md", "user-guide.md"}));
  int links = 0;
  for (const QString& name : documents) {
    static const QRegularExpression link("\\]\\(([^)#]+)[^)]*\\)");
    const QString text = QString::fromUtf8(wholeFile(folder.filePath(name)));
    for (auto each = link.globalMatch(text); each.hasNext(); ++links) {
      const QString target = each.next().captured(1);
      EXPECT_TRUE(QFile::exists(folder.filePath(target))) << name.toStdString() << ": " << target.toStdString();
    }
  }
  EXPECT_GE(links, 11);
  const QString same[] = {QStringLiteral("module-authors.md"), QStringLiteral("backend-protocol.md")};
  for (const QString& name : same) {
    EXPECT_EQ(wholeFile(folder.filePath(name)), wholeFile(SOURCE_FOLDER "/docs/" + name)) << name.toStdString();
  }
  EXPECT_EQ(QString::fromUtf8(wholeFile(folder.filePath("user-guide.md"))).remove("images/").toStdString(),
            QString::fromUtf8(wholeFile(SOURCE_FOLDER "/docs/user-guide.md"))
                .remove("../SourceFiles/resources/")
                .toStdString());
}

// The commands as printed, one after the other, and what they print.
TEST_F(Package, LeadsFromAnEmptyFolderToTheMenuAsTheDocumentSays) {
  install();
  writeExample();
  Ended last;
  int runs = 0;
  int outputs = 0;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    if (block.mark == "run") {
      last = run("bash", {"-e", "-c", QString::fromUtf8(block.text)});
      ASSERT_EQ(last.exitCode, 0) << block.text.toStdString() << last.out << last.err;
      ++runs;
    } else if (block.mark == "prints") {
      const QString printed = QString::fromStdString(last.out).replace(home.path(), "/home/you");
      EXPECT_THAT(printed.toStdString(), HasSubstr(block.text.toStdString()));
      ++outputs;
    }
  }
  EXPECT_EQ(runs, 3);
  EXPECT_EQ(outputs, 2);
  const std::string commands = wholeFile(path("bodylist/build/compile_commands.json")).toStdString();
  EXPECT_THAT(commands, HasSubstr(path("korvex2/include/korvex2").toStdString()));
  EXPECT_THAT(commands, Not(HasSubstr(SOURCE_FOLDER "/"))) << "the source tree helped";
}

TEST_F(Package, ShowsCallsThatCompileWithoutAWarning) {
  install({"--component", "Development"});
  QByteArray calls;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    calls += block.mark == "calls" ? block.text : QByteArray();
  }
  ASSERT_TRUE(calls.contains("get_reals"));
  write("project/calls.cpp", "#include \"iomanager.h\"\nvoid calls(IOManager* channel) {\n" + calls + "}\n");
  ASSERT_EQ(configure("find_package(Korvex2 REQUIRED)\nkorvex2_add_module(own SOURCES calls.cpp)\n"
                      "target_compile_options(own PRIVATE -Wall -Wextra -Wpedantic -Werror)\n")
                .exitCode,
            0);
  const Ended built = run(CMAKE_PROGRAM, {"--build", path("project/build")});
  EXPECT_EQ(built.exitCode, 0) << built.out;
}

TEST_F(Package, ShowsHowToGiveTheBackendAnotherVersion) {
  install();
  QProcess backend;
  backend.start(path("korvex2/bin/korvex2-backend"), {"--listen", "127.0.0.1:0", "--database", path("database")});
  const QDeadlineTimer deadline(10000);
  while (!backend.canReadLine() && backend.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
  }
  const QByteArray port = backend.readLine().trimmed().split(':').last();
  int runs = 0;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    if (block.mark == "run against a backend") {
      ++runs;
      ASSERT_TRUE(block.text.contains("27410"));
      QByteArray text = block.text;
      const Ended ended = run("bash", {"-e", "-c", QString::fromUtf8(text.replace("27410", port))});
      EXPECT_EQ(ended.exitCode, 0) << ended.err;
      EXPECT_EQ(ended.out, "korvex2 ok\n");
    }
  }
  EXPECT_EQ(runs, 1);
  const Ended asked = run("bash", {"-e", "-c",
                                   "exec 3<>/dev/tcp/127.0.0.1/" + QString::fromLatin1(port) +
                                       "; echo korvex2 get version >&3; head -n 1 <&3"});
  EXPECT_EQ(asked.out, "korvex2 set version 1.9.0\n");
  backend.terminate();
  EXPECT_TRUE(backend.waitForFinished(10000));
}

TEST_F(Package, IsEnoughForAModuleWithoutTheProgramsAndCanBeMoved) {
  install({"--component", "Development"});
  EXPECT_THAT(filesIn("korvex2"), Not(testing::Contains("bin/korvex2-frontend")));
  ASSERT_TRUE(QDir(home.path()).rename("korvex2", "moved"));
  writeExample();
  const QString build = path("bodylist/build");
  Ended ended = run(CMAKE_PROGRAM, {"-S", path("bodylist"), "-B", build, "-DCMAKE_PREFIX_PATH=" + path("moved")});
  ASSERT_EQ(ended.exitCode, 0) << ended.err;
  ended = run(CMAKE_PROGRAM, {"--build", build});
  ASSERT_EQ(ended.exitCode, 0) << ended.out << ended.err;
  ended = run(CMAKE_PROGRAM, {"--install", build});
  ASSERT_EQ(ended.exitCode, 0) << ended.err;
  EXPECT_TRUE(QFile::exists(path("moved/" LIBRARY_FOLDER "/korvex2/modules/libbodylist.so")));
}

TEST_F(Package, HasHeadersThatCompileByThemselvesWithoutAWarning) {
  install({"--component", "Development"});
  QByteArray sources;
  for (const QString& header : QDir(path("korvex2/include/korvex2")).entryList({"*.h"})) {
    const QByteArray name = header.toUtf8();
    write("project/" + header + ".cpp", "#include \"" + name + "\"\n#include \"" + name + "\"\n");
    sources += ' ' + name + ".cpp";
  }
  const Ended configured = configure("find_package(Korvex2 REQUIRED)\nadd_library(headers STATIC" + sources +
                                     ")\ntarget_compile_options(headers PRIVATE -Wall -Wextra -Wpedantic -Werror)\n"
                                     "target_link_libraries(headers PRIVATE Korvex2::Interfaces)\n");
  ASSERT_EQ(configured.exitCode, 0) << configured.err;
  const Ended built = run(CMAKE_PROGRAM, {"--build", path("project/build")});
  EXPECT_EQ(built.exitCode, 0) << built.out;
}

TEST_F(Package, SatisfiesRequestsForItsMajorVersionUpToItsOwn) {
  install({"--component", "Development"});
  EXPECT_EQ(configure("find_package(Korvex2 3.0 REQUIRED)\n").exitCode, 0);
  EXPECT_EQ(configure("find_package(Korvex2 " PACKAGE_VERSION " REQUIRED)\n").exitCode, 0);
  for (const char* version : {"2.9", "3.99", "4.0"}) {
    const Ended refused = configure(QByteArray("find_package(Korvex2 ") + version + " REQUIRED)\n");
    EXPECT_NE(refused.exitCode, 0) << version;
    EXPECT_THAT(refused.err, HasSubstr(PACKAGE_VERSION)) << version;
  }
}

TEST_F(Package, MayBeAskedForTwiceInAProjectAndTellsItsModulesFolder) {
  install({"--component", "Development"});
  const Ended ended = configure(
      "find_package(Korvex2 REQUIRED)\nfind_package(Korvex2 REQUIRED)\nmessage(STATUS \"at "
      "${Korvex2_MODULES_DIR}\")\n");
  EXPECT_EQ(ended.exitCode, 0) << ended.err;
  EXPECT_THAT(ended.out, HasSubstr("at " + path("korvex2/" LIBRARY_FOLDER "/korvex2/modules").toStdString() + "\n"));
}

TEST_F(Package, InstallsAModuleWhereItsAuthorWantsIt) {
  install({"--component", "Development"});
  write("project/empty.cpp", "int anything() { return 0; }\n");
  ASSERT_EQ(configure("find_package(Korvex2 REQUIRED)\n"
                      "korvex2_add_module(own SOURCES empty.cpp DESTINATION plugins)\n")
                .exitCode,
            0);
  ASSERT_EQ(run(CMAKE_PROGRAM, {"--build", path("project/build")}).exitCode, 0);
  ASSERT_EQ(run(CMAKE_PROGRAM, {"--install", path("project/build"), "--prefix", path("own")}).exitCode, 0);
  EXPECT_EQ(filesIn("own"), QStringList{"plugins/libown.so"});
}

TEST_F(Package, RefusesAModuleWithoutSourcesOrWithWordsItDoesNotKnow) {
  install({"--component", "Development"});
  for (const char* call : {"korvex2_add_module(own)", "korvex2_add_module(own main.cpp)"}) {
    const Ended refused = configure(QByteArray("find_package(Korvex2 REQUIRED)\n") + call + "\n");
    EXPECT_NE(refused.exitCode, 0) << call;
    EXPECT_THAT(refused.err, HasSubstr("SOURCES file...")) << call;
  }
}

TEST_F(Package, TellsAtLinkTimeWhatAModuleLacks) {
  install({"--component", "Development"});
  write("project/lacking.cpp", "int missing();\nint anything() { return missing(); }\n");
  ASSERT_EQ(configure("find_package(Korvex2 REQUIRED)\nkorvex2_add_module(own SOURCES lacking.cpp)\n").exitCode, 0);
  const Ended built = run(CMAKE_PROGRAM, {"--build", path("project/build")});
  EXPECT_NE(built.exitCode, 0);
  EXPECT_THAT(built.out, HasSubstr("missing"));
}

// A build tree that was not installed serves module authors as well.
TEST_F(Package, IsInTheBuildTreeToo) {
  writeExample();
  const QString build = path("bodylist/build");
  Ended ended =
      run(CMAKE_PROGRAM, {"-S", path("bodylist"), "-B", build, "-DCMAKE_PREFIX_PATH=" BUILD_FOLDER "/package"});
  ASSERT_EQ(ended.exitCode, 0) << ended.err;
  ended = run(CMAKE_PROGRAM, {"--build", build});
  ASSERT_EQ(ended.exitCode, 0) << ended.out << ended.err;
  EXPECT_TRUE(QFile::exists(build + "/libbodylist.so"));
}
