// Changes of the database: each one is checked, written, and only then becomes visible.
#include "bodydatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <cmath>

#include "bodyfileformat.h"
#include "catalogue.h"
#include "ownfiles.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

Outcome badValue(const QString& text) { return Outcome::failed(ErrorNumber::BadValue, text); }

// A coordinate is finite and in range; written so that NaN fails.
bool isCoordinate(double value) { return std::fabs(value) <= BodyDatabase::largestCoordinate; }

bool areCoordinates(const Vector3& values) { return std::all_of(values.begin(), values.end(), isCoordinate); }

Outcome checkMarkerNumber(const Body& body, int marker) {
  if (marker < 1 || static_cast<std::size_t>(marker) > body.markers.size()) {
    return Outcome::failed(ErrorNumber::NoSuchMarker, QStringLiteral("the body has no such marker"));
  }
  return Outcome::done();
}

Outcome tooFewMarkers() {
  return Outcome::failed(ErrorNumber::TooFewMarkers,
                         QStringLiteral("a body needs at least %1 markers").arg(BodyDatabase::fewestMarkers));
}

// Removes marker `index` (from 0) together with its lines; the numbers behind it close up.
void removeMarker(Body& body, int index) {
  body.markers.erase(body.markers.begin() + index);
  const auto touches = [index](const BodyLine& line) { return line.from == index || line.to == index; };
  body.lines.erase(std::remove_if(body.lines.begin(), body.lines.end(), touches), body.lines.end());
  for (BodyLine& line : body.lines) {
    line.from -= line.from > index ? 1 : 0;
    line.to -= line.to > index ? 1 : 0;
  }
}

bool hasSameGeometry(const Body& a, const Body& b) {
  const auto samePosition = [](const BodyMarker& m, const BodyMarker& n) { return m.position == n.position; };
  return a.lines == b.lines && a.text == b.text && a.rest == b.rest &&
         std::equal(a.markers.begin(), a.markers.end(), b.markers.begin(), b.markers.end(), samePosition);
}

bool isSame(const Body& a, const Body& b) {
  return a.description == b.description && a.targetType == b.targetType && a.calibrated == b.calibrated &&
         a.markers == b.markers && a.transform == b.transform && hasSameGeometry(a, b);
}

Outcome written(const QString& problem) {
  if (problem.isEmpty()) {
    return Outcome::done();
  }
  return Outcome::failed(ErrorNumber::NotSaved, QStringLiteral("the change was not saved: %1").arg(problem));
}

}  // namespace

bool BodyDatabase::isFileNamed(const QString& file) const {
  for (const std::vector<Body>& bodies : bodies_) {
    for (const Body& body : bodies) {
      if (body.file == file) {
        return true;
      }
    }
  }
  return false;
}

QString BodyDatabase::newFileName(const BodyKey& key, const QString& current) const {
  int generation = generationOf(key, current);
  QString name;
  do {
    name = ownFileName(key, ++generation);
  } while (isFileNamed(name) || QFileInfo::exists(bodyPath(name)));
  return name;
}

Outcome BodyDatabase::commit(const QJsonObject& catalogue) {
  if (!readOnly_.isEmpty()) {
    return written(readOnly_);
  }
  Outcome outcome = written(writeWholeFile(cataloguePath(), catalogueBytes(catalogue)));
  if (outcome) {
    catalogue_ = catalogue;
  }
  return outcome;
}

// Writes the body's geometry to a new file and then the catalogue that names it. Until the catalogue is replaced the
// old state is what a reader finds.
Outcome BodyDatabase::store(const Body& before, Body& after) {
  if (!readOnly_.isEmpty()) {
    return written(readOnly_);
  }
  const bool newGeometry = !hasSameGeometry(before, after);
  if (newGeometry) {
    QDir(folder_).mkpath(QStringLiteral("bodies"));
    after.file = newFileName(after.key, before.file);
    Outcome outcome = written(writeWholeFile(bodyPath(after.file), bodyFileBytes(geometryOf(after))));
    if (!outcome) {
      return outcome;
    }
  }
  QJsonObject catalogue = catalogue_;
  writeBody(catalogue, after);
  Outcome committed = commit(catalogue);
  if (!committed && newGeometry) {
    QFile::remove(bodyPath(after.file));
  }
  return committed;
}

Outcome BodyDatabase::changeBody(const BodyKey& key, const Edit& edit) {
  auto* const body = const_cast<Body*>(find(key));
  if (body == nullptr) {
    return Outcome::failed(ErrorNumber::NoSuchBody, QStringLiteral("there is no such body"));
  }
  if (!settings_.configChangeable) {
    return Outcome::failed(ErrorNumber::Locked, QStringLiteral("the configuration is locked"));
  }
  if (!body->problem.isEmpty()) {
    return Outcome::failed(ErrorNumber::NotAvailable,
                           QStringLiteral("the body could not be read and cannot be changed"));
  }
  Body changed = *body;
  Outcome edited = edit(changed);
  if (!edited || isSame(*body, changed)) {
    return edited;
  }
  Outcome stored = store(*body, changed);
  if (!stored) {
    return stored;
  }
  const QString superseded = body->file;
  *body = std::move(changed);
  if (generationOf(key, superseded) != 0 && !isFileNamed(superseded)) {
    QFile::remove(bodyPath(superseded));
  }
  return Outcome::done();
}

Outcome BodyDatabase::changeMarker(const BodyKey& key, int marker, const std::function<void(BodyMarker&)>& edit) {
  return changeBody(key, [&](Body& body) {
    Outcome exists = checkMarkerNumber(body, marker);
    if (exists) {
      edit(body.markers[static_cast<std::size_t>(marker - 1)]);
    }
    return exists;
  });
}

Outcome BodyDatabase::transform(const BodyKey& key, const RigidTransform& transform) {
  return changeBody(key, [&](Body& body) {
    if (!body.calibrated) {
      return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("the body is not calibrated"));
    }
    if (!areCoordinates(transform.position)) {
      return badValue(QStringLiteral("the position is out of range"));
    }
    if (!transform.isRotation(rotationTolerance)) {
      return badValue(QStringLiteral("the nine elements are no rotation"));
    }
    for (BodyMarker& marker : body.markers) {
      marker.position = transform.apply(marker.position);
      marker.emission.direction = transform.rotate(marker.emission.direction);
      if (!areCoordinates(marker.position) || !areCoordinates(marker.emission.direction)) {
        return badValue(QStringLiteral("a marker would be out of range"));
      }
    }
    body.transform = RigidTransform::compose(transform, body.transform);
    // Each command may be off by its rounding; a thousand that are off the same way must not reshape the body.
    if (!areCoordinates(body.transform.position) || !body.transform.isRotation(1e-3)) {
      return badValue(QStringLiteral("all transformations together are no rotation and position in range"));
    }
    return Outcome::done();
  });
}

Outcome BodyDatabase::deleteMarker(const BodyKey& key, int marker) {
  return changeBody(key, [&](Body& body) {
    Outcome exists = checkMarkerNumber(body, marker);
    if (!exists) {
      return exists;
    }
    if (body.markers.size() <= static_cast<std::size_t>(fewestMarkers)) {
      return tooFewMarkers();
    }
    removeMarker(body, marker - 1);
    return Outcome::done();
  });
}

Outcome BodyDatabase::setNumberOfMarkers(const BodyKey& key, int count) {
  return changeBody(key, [&](Body& body) {
    if (count < fewestMarkers) {
      return tooFewMarkers();
    }
    if (count > mostMarkers) {
      return badValue(QStringLiteral("a body has at most %1 markers").arg(mostMarkers));
    }
    while (body.markers.size() > static_cast<std::size_t>(count)) {
      removeMarker(body, static_cast<int>(body.markers.size()) - 1);
    }
    body.markers.resize(static_cast<std::size_t>(count));
    return Outcome::done();
  });
}

Outcome BodyDatabase::setGeometry(const BodyKey& key, const BodyGeometry& geometry) {
  if (!std::all_of(geometry.positions.begin(), geometry.positions.end(), areCoordinates)) {
    return badValue(QStringLiteral("a marker is out of range"));
  }
  // What will be stored must be what the next start reads.
  const BodyFileContent stored = parseBodyFile(bodyFileBytes(geometry), fewestMarkers);
  if (!stored.problem.isEmpty()) {
    return badValue(stored.problem);
  }
  return changeBody(key, [&stored](Body& body) {
    // A body's own file that comes back measures nothing anew: the body must not move in the room by it.
    if (geometryOf(body).positions != stored.geometry.positions) {
      body.markers.clear();
      for (const Vector3& position : stored.geometry.positions) {
        body.markers.push_back({position, MarkerEmission()});
      }
      body.transform = RigidTransform();
    }
    body.calibrated = true;
    body.lines = stored.geometry.lines;
    body.text = stored.geometry.text;
    body.rest = stored.geometry.rest;
    return Outcome::done();
  });
}

Outcome BodyDatabase::setMarkerPosition(const BodyKey& key, int marker, const Vector3& position) {
  if (!areCoordinates(position)) {
    return badValue(QStringLiteral("the position is out of range"));
  }
  return changeMarker(key, marker, [&](BodyMarker& changed) { changed.position = position; });
}

Outcome BodyDatabase::setMarkerEmission(const BodyKey& key, int marker, const MarkerEmission& emission) {
  if (!areCoordinates(emission.direction) || !isCoordinate(emission.openingAngle)) {
    return badValue(QStringLiteral("the emission is out of range"));
  }
  return changeMarker(key, marker, [&](BodyMarker& changed) { changed.emission = emission; });
}

Outcome BodyDatabase::setCalibrated(const BodyKey& key, bool calibrated) {
  return changeBody(key, [&](Body& body) {
    if (calibrated && body.markers.size() < static_cast<std::size_t>(fewestMarkers)) {
      return tooFewMarkers();
    }
    body.calibrated = calibrated;
    return Outcome::done();
  });
}

Outcome BodyDatabase::setDescription(const BodyKey& key, const QString& description) {
  if (!isDescription(description)) {
    return badValue(QStringLiteral("the description is too long or has characters that cannot be sent"));
  }
  return changeBody(key, [&](Body& body) {
    body.description = description;
    return Outcome::done();
  });
}

Outcome BodyDatabase::setTargetType(const BodyKey& key, const QByteArray& targetType) {
  if (!isName(targetType)) {
    return badValue(QStringLiteral("a target type has letters, digits and underscores"));
  }
  return changeBody(key, [&](Body& body) {
    body.targetType = targetType;
    return Outcome::done();
  });
}

Outcome BodyDatabase::setSettings(const BackendSettings& settings) {
  if (!isVersion(settings.version)) {
    return badValue(QStringLiteral("the version is out of range"));
  }
  if ((settings.multiuser && !settings.multiuserAvailable) ||
      (settings.multiuserWithHead && !settings.multiuserWithHeadAvailable)) {
    return Outcome::failed(ErrorNumber::NotAvailable, QStringLiteral("the mode is not available"));
  }
  if (settings == settings_) {
    return Outcome::done();
  }
  QJsonObject catalogue = catalogue_;
  writeSettings(catalogue, settings_, settings);
  Outcome committed = commit(catalogue);
  if (committed) {
    settings_ = settings;
  }
  return committed;
}

Outcome BodyDatabase::setVersion(const BackendVersion& version) {
  BackendSettings changed = settings_;
  changed.version = version;
  return setSettings(changed);
}

Outcome BodyDatabase::setConfigChangeable(bool changeable) {
  BackendSettings changed = settings_;
  changed.configChangeable = changeable;
  return setSettings(changed);
}

Outcome BodyDatabase::setTrackingAvailable(bool available) {
  BackendSettings changed = settings_;
  changed.trackingAvailable = available;
  return setSettings(changed);
}

Outcome BodyDatabase::setDeviceOutput6dw(bool oldFormat) {
  BackendSettings changed = settings_;
  changed.deviceOutput6dw = oldFormat;
  return setSettings(changed);
}

Outcome BodyDatabase::setMultiuserAvailable(bool available) {
  BackendSettings changed = settings_;
  changed.multiuserAvailable = available;
  changed.multiuser = changed.multiuser && available;
  return setSettings(changed);
}

Outcome BodyDatabase::setMultiuser(bool on) {
  BackendSettings changed = settings_;
  changed.multiuser = on;
  return setSettings(changed);
}

Outcome BodyDatabase::setMultiuserWithHeadAvailable(bool available) {
  BackendSettings changed = settings_;
  changed.multiuserWithHeadAvailable = available;
  changed.multiuserWithHead = changed.multiuserWithHead && available;
  return setSettings(changed);
}

Outcome BodyDatabase::setMultiuserWithHead(bool on) {
  BackendSettings changed = settings_;
  changed.multiuserWithHead = on;
  return setSettings(changed);
}

}  // namespace korvex2
