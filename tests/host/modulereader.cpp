// Program: the module's own reader and writer of body files, in a process of their own so that nothing is shared.
//   modulereader read FILE         prints markers, with all their digits, and lines
//   modulereader rewrite FROM TO   reads one file and writes the other
#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

#include "bodyfile.h"

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  if (arguments.size() < 3) {
    return 2;
  }
  korvex2::BodyFileData content;
  if (!korvex2::readBodyFile(arguments[2], content)) {
    return 1;
  }
  if (arguments.size() == 4) {
    return korvex2::writeBodyFile(arguments[3], content) ? 0 : 1;
  }
  for (const bsVector& position : content.positions) {
    std::printf("%a %a %a\n", position.x, position.y, position.z);
  }
  for (const auto& [from, to] : content.lines) {
    std::printf("line %u %u\n", from, to);
  }
  return 0;
}
