// Reads a database folder and tells what was wrong with it.
#include "bodydatabase.h"

#include <QDir>
#include <QLockFile>

#include <algorithm>

#include "bodyfileformat.h"
#include "catalogue.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

const char deviceType[] = "wandgrip";

// A program that is killed while it makes its lock file leaves one that says nobody's name; it would hold the folder
// for ever. A program that lives signs within microseconds, and the system knows that it has the file open.
bool breakUnsignedLock(QLockFile& lock) {
  const int patienceMs = 300;
  const auto isUnsigned = [&lock] {
    qint64 program = 0;
    QString host;
    QString name;
    return lock.error() == QLockFile::LockFailedError && !lock.getLockInfo(&program, &host, &name);
  };
  if (!isUnsigned()) {
    return false;
  }
  if (lock.tryLock(patienceMs)) {
    return true;
  }
  return isUnsigned() && lock.removeStaleLockFile() && lock.tryLock(0);
}

}  // namespace

QByteArray BackendVersion::text() const {
  return QByteArray::number(majorNumber) + '.' + QByteArray::number(minorNumber) + '.' + QByteArray::number(revision);
}

bool operator==(const BackendSettings& a, const BackendSettings& b) {
  return a.version == b.version && a.configChangeable == b.configChangeable &&
         a.trackingAvailable == b.trackingAvailable && a.deviceOutput6dw == b.deviceOutput6dw &&
         a.multiuserAvailable == b.multiuserAvailable && a.multiuser == b.multiuser &&
         a.multiuserWithHeadAvailable == b.multiuserWithHeadAvailable && a.multiuserWithHead == b.multiuserWithHead;
}

BodyDatabase::BodyDatabase(const QString& folder) : folder_(folder) {
  takeLock();
  read();
  tidyUp();
}

BodyDatabase::~BodyDatabase() = default;

QString BodyDatabase::cataloguePath() const { return QDir(folder_).filePath(QStringLiteral("catalogue.json")); }

QString BodyDatabase::bodyPath(const QString& file) const {
  return QDir(folder_).filePath(QStringLiteral("bodies/") + file);
}

void BodyDatabase::takeLock() {
  lock_ = std::make_unique<QLockFile>(cataloguePath() + QStringLiteral(".lock"));
  lock_->setStaleLockTime(0);  // a front end may run for weeks; a lock is stale only when its program is gone
  if (lock_->tryLock(0) || breakUnsignedLock(*lock_) || lock_->error() != QLockFile::LockFailedError) {
    return;  // where no lock file can be written, no change can be written either, and says so when it is tried
  }
  heldByAnother_ = true;
  readOnly_ = QStringLiteral("the database is in use by another program");
  problems_.append(QStringLiteral("%1: %2; changes are refused")
                       .arg(QDir::toNativeSeparators(cataloguePath() + QStringLiteral(".lock")), readOnly_));
}

void BodyDatabase::read() {
  const FileContent content = readWholeFile(cataloguePath());
  Catalogue catalogue;
  if (content.problem.isEmpty()) {
    catalogue = parseCatalogue(content.bytes, QDir::toNativeSeparators(cataloguePath()));
    problems_ += catalogue.problems;
  } else {
    problems_.append(content.problem);
  }
  if (!catalogue.readable && readOnly_.isEmpty()) {
    // Writing now would replace what the operator may still repair.
    readOnly_ = QStringLiteral("the catalogue could not be read");
  }
  catalogue_ = catalogue.json;
  settings_ = catalogue.settings;
  types_ = catalogue.types;
  bodies_.resize(types_.size());
  for (CatalogueEntry& entry : catalogue.entries) {
    if (entry.body.problem.isEmpty()) {
      readGeometry(entry.body, entry.emissions, entry.line);
    }
    if (!entry.body.problem.isEmpty()) {
      entry.body.calibrated = false;
    }
    place(std::move(entry.body));
  }
  fillGaps();
}

void BodyDatabase::readGeometry(Body& body, const std::vector<MarkerEmission>& emissions, int catalogueLine) {
  BodyGeometry geometry;
  if (!body.file.isEmpty()) {
    const FileContent file = readWholeFile(bodyPath(body.file));
    if (file.problem.isEmpty()) {
      BodyFileContent content = parseBodyFile(file.bytes);
      if (!content.problem.isEmpty()) {
        body.problem = QStringLiteral("%1, line %2: %3")
                           .arg(QDir::toNativeSeparators(bodyPath(body.file)))
                           .arg(content.line)
                           .arg(content.problem);
      }
      geometry = std::move(content.geometry);
    } else {
      body.problem = file.problem;
    }
  }
  if (body.problem.isEmpty() && !emissions.empty() && emissions.size() != geometry.positions.size()) {
    body.problem = QStringLiteral("%1, line %2: the body has %3 markers, but %4 emissions")
                       .arg(QDir::toNativeSeparators(cataloguePath()))
                       .arg(catalogueLine)
                       .arg(geometry.positions.size())
                       .arg(emissions.size());
  }
  if (body.problem.isEmpty() && body.calibrated && geometry.positions.empty()) {
    body.problem = QStringLiteral("%1, line %2: a calibrated body has markers")
                       .arg(QDir::toNativeSeparators(cataloguePath()))
                       .arg(catalogueLine);
  }
  if (!body.problem.isEmpty()) {
    problems_.append(body.problem);
    return;
  }
  for (std::size_t i = 0; i < geometry.positions.size(); ++i) {
    body.markers.push_back({geometry.positions[i], emissions.empty() ? MarkerEmission() : emissions[i]});
  }
  body.lines = std::move(geometry.lines);
  body.text = geometry.text;
  body.rest = geometry.rest;
}

// Puts a body at its number; numbers in between wait for their own bodies.
void BodyDatabase::place(Body body) {
  for (std::size_t type = 0; type < types_.size(); ++type) {
    if (types_[type].name == body.key.type) {
      const auto index = static_cast<std::size_t>(body.key.number - 1);
      bodies_[type].resize(std::max(bodies_[type].size(), index + 1));
      bodies_[type][index] = std::move(body);
      return;
    }
  }
}

void BodyDatabase::fillGaps() {
  for (std::size_t type = 0; type < types_.size(); ++type) {
    for (std::size_t index = 0; index < bodies_[type].size(); ++index) {
      Body& body = bodies_[type][index];
      if (body.key.number != 0) {
        continue;
      }
      body.key = {types_[type].name, static_cast<int>(index) + 1};
      body.problem = QStringLiteral("%1, line 1: there is no body with type %2 and number %3")
                         .arg(QDir::toNativeSeparators(cataloguePath()), QString::fromLatin1(body.key.type))
                         .arg(body.key.number);
      problems_.append(body.problem);
    }
  }
}

const BodyType* BodyDatabase::findType(const QByteArray& name) const {
  const auto type = std::find_if(types_.begin(), types_.end(), [&name](const BodyType& t) { return t.name == name; });
  return type == types_.end() ? nullptr : &*type;
}

const std::vector<Body>& BodyDatabase::bodies(const QByteArray& type) const {
  static const std::vector<Body> none;
  for (std::size_t i = 0; i < types_.size(); ++i) {
    if (types_[i].name == type) {
      return bodies_[i];
    }
  }
  return none;
}

const Body* BodyDatabase::find(const BodyKey& key) const {
  const std::vector<Body>& candidates = bodies(key.type);
  if (key.number < 1 || static_cast<std::size_t>(key.number) > candidates.size()) {
    return nullptr;
  }
  return &candidates[static_cast<std::size_t>(key.number - 1)];
}

int BodyDatabase::numberOfDevices() const { return static_cast<int>(bodies(deviceType).size()); }

std::unique_ptr<BodyDatabase> openDatabase(const QString& folder) { return std::make_unique<BodyDatabase>(folder); }

QString copyShippedDatabase(const QString& from, const QString& to) {
  const QDir source(from);
  const QDir target(to);
  if (target.exists(QStringLiteral("catalogue.json"))) {
    return QString();
  }
  if (!target.mkpath(QStringLiteral("bodies"))) {
    return QStringLiteral("%1: the folder cannot be made").arg(QDir::toNativeSeparators(target.filePath("bodies")));
  }
  QStringList files;
  for (const QString& file :
       QDir(source.filePath(QStringLiteral("bodies"))).entryList({QStringLiteral("*.body")}, QDir::Files, QDir::Name)) {
    files.append(QStringLiteral("bodies/") + file);
  }
  files.append(QStringLiteral("catalogue.json"));  // last: it makes the copy valid
  for (const QString& file : files) {
    if (target.exists(file)) {
      continue;
    }
    const FileContent content = readWholeFile(source.filePath(file));
    if (!content.problem.isEmpty()) {
      return content.problem;
    }
    QString problem = writeWholeFile(target.filePath(file), content.bytes);
    if (!problem.isEmpty()) {
      return problem;
    }
  }
  return QString();
}

}  // namespace korvex2
