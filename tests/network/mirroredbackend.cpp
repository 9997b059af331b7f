// See mirroredbackend.h.
#include "mirroredbackend.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <algorithm>
#include <tuple>

#include "bodyfileformat.h"

namespace korvex2_test {

namespace {

std::unique_ptr<MirroredBackend>& only() {
  static std::unique_ptr<MirroredBackend> backend;
  return backend;
}

/// Ends the program together with the cases, while there is still an application object.
class EndsTheBackend : public testing::Environment {
 public:
  void TearDown() override { only().reset(); }
};
const testing::Environment* const ends = testing::AddGlobalTestEnvironment(new EndsTheBackend);

QByteArray text(double value) { return QByteArray::number(value, 'g', 17); }

QByteArray numbered(char letter, std::size_t number) {
  return letter + QByteArray::number(static_cast<int>(number)).rightJustified(2, '0');
}

QByteArray keyOf(const ScriptedBody& body) {
  return QByteArray::fromStdString(body.type) + ' ' + numbered('b', static_cast<std::size_t>(body.number));
}

QByteArray yesNo(bool value) { return value ? "yes" : "no"; }

EmissionValues emissionOf(const ScriptedBody& body, std::size_t marker) {
  return marker < body.emissions.size() ? body.emissions[marker] : EmissionValues{};
}

template <std::size_t size>
QByteArray joined(const std::array<double, size>& values) {
  QByteArray all;
  for (const double value : values) {
    all += ' ' + text(value);
  }
  return all;
}

template <std::size_t size>
std::array<double, size> numbers(const QByteArray& answer) {
  std::array<double, size> values{};
  const QList<QByteArray> words = answer.split(' ');
  EXPECT_EQ(words.size(), static_cast<int>(size)) << answer.toStdString();
  for (std::size_t i = 0; i < size && static_cast<int>(i) < words.size(); ++i) {
    values[i] = words[static_cast<int>(i)].toDouble();
  }
  return values;
}

/// Bodies of types that the backend does not list cannot be reached by any text.
std::vector<ScriptedBody> reachable(const ScriptedBackend& backend) {
  std::vector<ScriptedBody> bodies;
  for (const ScriptedBody& body : backend.bodies) {
    if (std::find(backend.types.begin(), backend.types.end(), body.type) != backend.types.end()) {
      bodies.push_back(body);
    }
  }
  return bodies;
}

/// What the program can only be told by its catalogue.
std::vector<std::string> shapeOf(const std::vector<std::string>& types, const std::vector<ScriptedBody>& bodies) {
  std::vector<std::string> shape = types;
  for (const ScriptedBody& body : bodies) {
    shape.push_back(keyOf(body).toStdString());
  }
  return shape;
}

}  // namespace

struct MirroredBackend::Known {
  std::vector<std::string> shape;
  std::vector<ScriptedBody> bodies;
  BackendVersions versions;
  bool changeable = true;
  bool trackingAvailable = true;
  bool measuring = false;
  bool oldDeviceFormat = false;
  bool multiUserAvailable = true;
  bool multiUser = false;
  bool withHeadAvailable = true;
  bool withHead = false;
};

MirroredBackend& MirroredBackend::instance() {
  if (!only()) {
    only().reset(new MirroredBackend);
  }
  return *only();
}

MirroredBackend::MirroredBackend() = default;

MirroredBackend::~MirroredBackend() = default;

void MirroredBackend::command(const QByteArray& line) {
  const QByteArray answer = control_->ask(line);
  EXPECT_TRUE(tolerant_ || answer == "korvex2 ok") << line.toStdString() << " -> " << answer.toStdString();
}

void MirroredBackend::set(const QByteArray& what) { command("korvex2 set " + what); }

QByteArray MirroredBackend::get(const QByteArray& what) {
  const QByteArray answer = control_->ask("korvex2 get " + what);
  const QByteArray prefix = "korvex2 set " + what + ' ';
  EXPECT_TRUE(answer.startsWith(prefix)) << what.toStdString() << " -> " << answer.toStdString();
  return answer.mid(prefix.size());
}

void MirroredBackend::restart(const ScriptedBackend& wanted) {
  process_.kill();
  known_ = std::make_unique<Known>();
  known_->bodies = reachable(wanted);
  known_->shape = shapeOf(wanted.types, known_->bodies);
  for (ScriptedBody& body : known_->bodies) {
    if (body.markers.size() < 3) {  // a file of so few is none; what the case wants of the body comes as commands
      body.markers = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
      body.emissions.assign(3, EmissionValues{});
    }
  }
  QJsonArray types;
  for (const std::string& type : wanted.types) {
    types.append(QJsonObject{{"name", QString::fromStdString(type)},
                             {"description", type == "wandgrip" ? "Wandgrip" : "Standard body"}});
  }
  QDir(process_.folder() + "/bodies").removeRecursively();
  QDir(process_.folder()).mkpath("bodies");
  QJsonArray bodies;
  for (const ScriptedBody& body : known_->bodies) {
    korvex2::BodyGeometry geometry;
    QJsonArray emissions;
    for (std::size_t i = 0; i < body.markers.size(); ++i) {
      geometry.positions.push_back({{body.markers[i][0], body.markers[i][1], body.markers[i][2]}});
      const EmissionValues emission = emissionOf(body, i);
      emissions.append(QJsonArray{emission[0], emission[1], emission[2], emission[3]});
    }
    const QString name = QString::fromLatin1(keyOf(body)).replace(' ', '_') + ".body";
    QFile file(process_.folder() + "/bodies/" + name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(korvex2::bodyFileBytes(geometry));
    bodies.append(QJsonObject{{"type", QString::fromStdString(body.type)},
                              {"number", body.number},
                              {"description", QString::fromStdString(body.description)},
                              {"file", name},
                              {"calibrated", body.calibrated},
                              {"target_type", QString::fromStdString(body.target)},
                              {"emissions", emissions}});
  }
  process_.editCatalogue([&](QJsonObject& catalogue) {
    catalogue =
        QJsonObject{{"types", types},
                    {"bodies", bodies},
                    {"wandgrip", QJsonObject{{"multiuser_available", true}, {"multiuser_with_head_available", true}}}};
  });
  process_.start();
  control_ = std::make_unique<PlainClient>(process_.port());
  const QList<QByteArray> version = get("version").split('.');
  EXPECT_EQ(version.size(), 3);
  known_->versions.backend_major = version.value(0).toInt();
  known_->versions.backend_minor = version.value(1).toInt();
  known_->versions.backend_revision = version.value(2).toInt();
}

bool MirroredBackend::bring(const ScriptedBackend& wanted, bool tolerant) {
  tolerant_ = tolerant;
  const std::vector<ScriptedBody> bodies = reachable(wanted);
  const bool again = !known_ || known_->shape != shapeOf(wanted.types, bodies);
  if (again) {
    restart(wanted);
  }
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    bringBody(bodies[i], known_->bodies[i]);
  }
  const auto version = [](const BackendVersions& of) {
    return std::make_tuple(of.backend_major, of.backend_minor, of.backend_revision);
  };
  if (version(known_->versions) != version(wanted.versions)) {
    set("version " + QByteArray::number(wanted.versions.backend_major) + '.' +
        QByteArray::number(wanted.versions.backend_minor) + '.' + QByteArray::number(wanted.versions.backend_revision));
    known_->versions = wanted.versions;
  }
  const auto bringFlag = [this](const char* name, bool now, bool& before) {
    if (now != before) {
      set(name + (' ' + yesNo(now)));
      before = now;
    }
  };
  bringFlag("wandgrip output_6dw", wanted.oldDeviceFormat, known_->oldDeviceFormat);
  bringFlag("wandgrip multiuser_available", wanted.multiUserAvailable, known_->multiUserAvailable);
  bringFlag("wandgrip multiuser", wanted.multiUser, known_->multiUser);
  bringFlag("wandgrip multiuser_with_head_available", wanted.withHeadAvailable, known_->withHeadAvailable);
  bringFlag("wandgrip multiuser_with_head", wanted.withHead, known_->withHead);
  bringFlag("tracking available", wanted.trackingAvailable, known_->trackingAvailable);
  if (wanted.measuring != known_->measuring) {
    command(wanted.measuring ? "korvex2 tracking start" : "korvex2 tracking stop");
    known_->measuring = wanted.measuring;
  }
  bringFlag("config is_changeable", wanted.changeable, known_->changeable);
  return again;
}

void MirroredBackend::bringBody(const ScriptedBody& wanted, ScriptedBody& known) {
  std::vector<QByteArray> settings;
  const QByteArray key = keyOf(wanted);
  if (wanted.description != known.description) {
    settings.push_back("body desc " + key + " \"" + QByteArray::fromStdString(wanted.description) + '"');
  }
  if (wanted.target != known.target) {
    settings.push_back("body target_type " + key + ' ' + QByteArray::fromStdString(wanted.target));
  }
  if (wanted.markers.size() != known.markers.size()) {
    settings.push_back("body number_of_marker " + key + ' ' +
                       QByteArray::number(static_cast<int>(wanted.markers.size())));
    known.emissions.resize(known.markers.size());
    known.markers.resize(wanted.markers.size());
    known.emissions.resize(wanted.markers.size());
  }
  for (std::size_t i = 0; i < wanted.markers.size(); ++i) {
    const QByteArray marker = key + ' ' + numbered('m', i + 1);
    if (wanted.markers[i] != known.markers[i]) {
      settings.push_back("body marker " + marker + joined(wanted.markers[i]));
    }
    if (emissionOf(wanted, i) != emissionOf(known, i)) {
      settings.push_back("body marker_emission " + marker + joined(emissionOf(wanted, i)));
    }
  }
  if (wanted.calibrated != known.calibrated) {
    settings.push_back("body calibrated " + key + ' ' + yesNo(wanted.calibrated));
  }
  if (settings.empty()) {
    return;
  }
  if (!known_->changeable) {  // the lock protects bodies; it is put back with the other settings
    set("config is_changeable yes");
    known_->changeable = true;
  }
  for (const QByteArray& setting : settings) {
    set(setting);
  }
  known = wanted;
}

void MirroredBackend::readBody(ScriptedBody& body) {
  const QByteArray key = keyOf(body);
  const auto count = static_cast<std::size_t>(get("body number_of_marker " + key).toInt());
  body.markers.resize(count);
  body.emissions.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const QByteArray marker = key + ' ' + numbered('m', i + 1);
    body.markers[i] = numbers<3>(get("body marker " + marker));
    body.emissions[i] = numbers<4>(get("body marker_emission " + marker));
  }
}

void MirroredBackend::readBack(ScriptedBackend& fields, const std::string& text) {
  for (ScriptedBody& body : fields.bodies) {
    if (text.find(' ' + keyOf(body).toStdString() + ' ') == std::string::npos) {
      continue;
    }
    readBody(body);
    for (ScriptedBody& known : known_->bodies) {
      if (keyOf(known) == keyOf(body)) {
        known.markers = body.markers;
        known.emissions = body.emissions;
      }
    }
  }
  if (text.find("wandgrip multiuser") != std::string::npos) {
    known_->multiUser = fields.multiUser = flag("wandgrip multiuser");
    known_->withHead = fields.withHead = flag("wandgrip multiuser_with_head");
  }
  if (text.find("korvex2 tracking") == 0) {
    known_->measuring = fields.measuring = get("status active") == "mea";
  }
}

}  // namespace korvex2_test
