// Switches the process to a locale that writes "1,5", and back.
#ifndef KORVEX2_TESTS_BACKEND_COMMALOCALE_H
#define KORVEX2_TESTS_BACKEND_COMMALOCALE_H

#include <QByteArray>
#include <QFile>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>

#include <clocale>
#include <cstdio>
#include <string>

namespace korvex2_test {

/// The C library's locale is compiled on the spot (localedef is part of the C library's own tools), the toolkit's is
/// German. inForce() must be checked: without it a pass under this locale would prove nothing.
class CommaLocale {
 public:
  CommaLocale() : toolkit_(QLocale()), numeric_(std::setlocale(LC_NUMERIC, nullptr)), path_(qgetenv("LOCPATH")) {
    QFile source(folder_.filePath("numbers"));
    if (source.open(QIODevice::WriteOnly)) {
      source.write("LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"<U002E>\"\ngrouping 3;3\nEND LC_NUMERIC\n");
      source.close();
    }
    // -c: the other categories are left undefined, which is worth a warning only.
    QProcess::execute("sh", {"-c", "localedef -c -i \"$0\" -f ANSI_X3.4-1968 \"$1\" 2>/dev/null", source.fileName(),
                             folder_.filePath("komma")});
    qputenv("LOCPATH", folder_.path().toLocal8Bit());
    std::setlocale(LC_NUMERIC, "komma");
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  }
  ~CommaLocale() {
    if (path_.isNull()) {
      qunsetenv("LOCPATH");
    } else {
      qputenv("LOCPATH", path_);
    }
    std::setlocale(LC_NUMERIC, numeric_.c_str());
    QLocale::setDefault(toolkit_);
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  static bool inForce() {
    char text[16];
    std::snprintf(text, sizeof(text), "%.1f", 1.5);
    return std::string(text) == "1,5" && QLocale().decimalPoint() == ',';
  }

 private:
  QTemporaryDir folder_;
  QLocale toolkit_;
  std::string numeric_;
  QByteArray path_;
};

}  // namespace korvex2_test

#endif
