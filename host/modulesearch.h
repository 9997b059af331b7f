// Where modules are looked for, and what a module file tells about itself before it is loaded.
#ifndef KORVEX2_HOST_MODULESEARCH_H
#define KORVEX2_HOST_MODULESEARCH_H

#include <vector>

#include <QString>
#include <QStringList>

namespace korvex2 {

/// A folder that is searched for modules.
struct ModuleFolder {
  QString path;            ///< absolute
  bool requested = false;  ///< the operator named it, so that its absence is worth a report
};

/// What the search depends on.
struct ModuleSearch {
  QString pluginDir;      ///< of the command line; when given, the only folder searched
  QString environment;    ///< value of KORVEX2_MODULE_PATH: folders separated as in PATH
  QString programFolder;  ///< folder of the running program
  QString userData;       ///< the user's data folder of this program

  /// The search of the running program.
  static ModuleSearch ofThisProgram(const QString& pluginDir);
};

/// The folders in the order they are searched, none twice: `pluginDir` alone when it is given; else those of
/// `environment`, the build tree's beside the program's folder, the user's, the installed one.
std::vector<ModuleFolder> moduleFolders(const ModuleSearch& search);

/// Library files in a folder, absolute, in alphabetical order; files that no library is named like are left out.
QStringList libraryFiles(const QString& folder);

/// Why a file cannot be a module, judged from the metadata inside it without loading it; empty when it can be one.
/// A text for the operator, without the file's name.
QString refusalBeforeLoading(const QString& file);

}  // namespace korvex2

#endif
