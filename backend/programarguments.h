// The command line of a program: what is common to all of them, and what is told when it is wrong.
#ifndef KORVEX2_BACKEND_PROGRAMARGUMENTS_H
#define KORVEX2_BACKEND_PROGRAMARGUMENTS_H

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace korvex2 {

/// Whatever is wrong ends the program with a message on standard error and exit code 1.
class ProgramArguments {
 public:
  /// Knows --help and --version besides `options`.
  ProgramArguments(const char* program, const QString& description, const QList<QCommandLineOption>& options);

  /// Ends the program for --help and --version, with exit code 0.
  void parse(const QStringList& arguments);

  bool isSet(const QCommandLineOption& option) const { return parser_.isSet(option); }
  QString value(const QCommandLineOption& option) const { return parser_.value(option); }
  /// Empty when the option is not there.
  QString folder(const QCommandLineOption& option) const;
  QString file(const QCommandLineOption& option) const;
  /// A whole number; `usual` when the option is not there.
  int number(const QCommandLineOption& option, int lowest, int highest, int usual) const;
  /// Frames of live lines a second.
  int rate(const QCommandLineOption& option) const;

  /// "--trajectory" and "--rate", wherever bodies are simulated.
  static QCommandLineOption trajectoryOption();
  static QCommandLineOption rateOption();

  [[noreturn]] void fail(const QString& message) const;

 private:
  QString path(const QCommandLineOption& option, const QString& what) const;

  const char* const program_;
  QCommandLineParser parser_;
  QCommandLineOption help_;
  QCommandLineOption version_;
};

}  // namespace korvex2

#endif
