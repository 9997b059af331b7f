// See programarguments.h.
#include "programarguments.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include "livesource.h"
#include "numbertext.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("ProgramArguments", text); }

}  // namespace

ProgramArguments::ProgramArguments(const char* program, const QString& description,
                                   const QList<QCommandLineOption>& options)
    : program_(program), help_(parser_.addHelpOption()), version_(parser_.addVersionOption()) {
  parser_.setApplicationDescription(description);
  parser_.addOptions(options);
}

void ProgramArguments::parse(const QStringList& arguments) {
  if (!parser_.parse(arguments)) {
    fail(parser_.errorText());
  }
  if (parser_.isSet(version_)) {
    std::printf("%s %s\n", program_, qPrintable(QCoreApplication::applicationVersion()));
    std::exit(EXIT_SUCCESS);
  }
  if (parser_.isSet(help_) || parser_.isSet(QStringLiteral("help-all"))) {
    parser_.showHelp(EXIT_SUCCESS);
  }
  if (!parser_.positionalArguments().isEmpty()) {
    fail(tr("unexpected argument \"%1\"").arg(parser_.positionalArguments().constFirst()));
  }
}

QString ProgramArguments::folder(const QCommandLineOption& option) const { return path(option, tr("a folder")); }

QString ProgramArguments::file(const QCommandLineOption& option) const { return path(option, tr("a file")); }

QString ProgramArguments::path(const QCommandLineOption& option, const QString& what) const {
  if (!parser_.isSet(option)) {
    return {};
  }
  const QString value = parser_.value(option);
  if (value.isEmpty()) {
    fail(tr("the option --%1 needs %2").arg(option.names().constFirst(), what));
  }
  return value;
}

int ProgramArguments::number(const QCommandLineOption& option, int lowest, int highest, int usual) const {
  if (!parser_.isSet(option)) {
    return usual;
  }
  const QString value = parser_.value(option);
  const std::optional<int> number = integerFromText(value.toUtf8());
  if (!number || *number < lowest || *number > highest) {
    fail(tr("the option --%1 needs a whole number from %2 to %3, not \"%4\"")
             .arg(option.names().constFirst())
             .arg(lowest)
             .arg(highest)
             .arg(value));
  }
  return *number;
}

int ProgramArguments::rate(const QCommandLineOption& option) const {
  return number(option, LiveSource::lowestRate, LiveSource::highestRate, LiveSource::defaultRate);
}

QCommandLineOption ProgramArguments::trajectoryOption() {
  return {QStringLiteral("trajectory"),
          tr("Recorded motion of the first standard body: one pose a line, \"seconds x y z qx qy qz qw\", in metres. "
             "Without it the one that comes with the program."),
          QStringLiteral("file")};
}

QCommandLineOption ProgramArguments::rateOption() {
  return {QStringLiteral("rate"),
          tr("Frames of live tracking lines a second, %1 to %2; without it %3.")
              .arg(LiveSource::lowestRate)
              .arg(LiveSource::highestRate)
              .arg(LiveSource::defaultRate),
          QStringLiteral("hertz")};
}

void ProgramArguments::fail(const QString& message) const {
  std::fprintf(stderr, "%s: %s\n", program_, qPrintable(message));
  std::exit(EXIT_FAILURE);
}

}  // namespace korvex2
