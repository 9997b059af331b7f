// See backendfolder.h.
#include "backendfolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace korvex2_bench {

namespace {

constexpr int startLimitMs = 10000;

void write(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
    std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
    std::exit(EXIT_FAILURE);
  }
}

/// Markers on a spiral, so that no two are near each other, with as many digits as measured ones have.
QByteArray bodyFile(int body, int markers) {
  QByteArray text = QByteArray::number(markers) + '\n';
  for (int i = 0; i < markers; ++i) {
    const double radius = 40.0 + 2.5 * body;
    const double coordinates[] = {radius * std::cos(0.7 * i), radius * std::sin(0.7 * i), 9.3 * i + 0.1 * body};
    for (const double coordinate : coordinates) {
      text += QByteArray::number(coordinate, 'g', 7) + ' ';
    }
    text += '\n';
  }
  return text + "# Lines\n1\n0 1\n";
}

void makeDatabase(const QString& folder, int bodies, int markers) {
  QDir(folder).mkpath("bodies");
  QJsonArray entries;
  for (int body = 1; body <= bodies; ++body) {
    const QString file = QStringLiteral("body%1.body").arg(body);
    write(folder + "/bodies/" + file, bodyFile(body, markers));
    entries +=
        QJsonObject{{"type", "standard"}, {"number", body},     {"description", QStringLiteral("Body %1").arg(body)},
                    {"file", file},       {"calibrated", true}, {"target_type", "tt_std"}};
  }
  const QJsonObject standard{{"name", "standard"}, {"description", "Standard body"}};
  const QJsonObject wandgrip{{"name", "wandgrip"}, {"description", "Wandgrip"}};
  const QJsonObject catalogue{{"version", QJsonArray{1, 20, 0}},
                              {"config_changeable", true},
                              {"tracking_available", true},
                              {"types", QJsonArray{standard, wandgrip}},
                              {"bodies", entries}};
  write(folder + "/catalogue.json", QJsonDocument(catalogue).toJson());
}

}  // namespace

quint16 startListening(QProcess& program, const QString& file, const QStringList& arguments) {
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  program.start(file, arguments);
  while (!program.canReadLine() && program.waitForReadyRead(startLimitMs)) {
  }
  const QByteArray line = program.readLine().trimmed();
  return line.mid(line.lastIndexOf(':') + 1).toUShort();
}

BackendOnBodies::BackendOnBodies(int bodies, int markers, int rate) {
  makeDatabase(folder_.path(), bodies, markers);
  port_ = startListening(program_, BACKEND_PROGRAM,
                         {"--listen", "127.0.0.1:0", "--database", folder_.path(), "--rate", QString::number(rate)});
  if (port_ == 0) {
    std::fprintf(stderr, "%s does not come up\n", BACKEND_PROGRAM);
    std::exit(EXIT_FAILURE);
  }
}

BackendOnBodies::~BackendOnBodies() {
  program_.terminate();
  program_.waitForFinished(startLimitMs);
}

double BackendOnBodies::processorTime() const {
  QFile file(QStringLiteral("/proc/%1/stat").arg(program_.processId()));
  if (!file.open(QIODevice::ReadOnly)) {
    return 0.0;
  }
  const QByteArray text = file.readAll();
  const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
  const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble();  // user and system
  return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

}  // namespace korvex2_bench
