// The backend's database: its bodies and settings, read from a folder and changed there, each change at once.
#ifndef KORVEX2_BACKEND_BODYDATABASE_H
#define KORVEX2_BACKEND_BODYDATABASE_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

#include "body.h"
#include "outcome.h"

class QFileInfo;
class QLockFile;

namespace korvex2 {

/// The backend's version, three numbers. A revision of -1 means "unknown".
struct BackendVersion {
  int majorNumber = 1;
  int minorNumber = 20;
  int revision = 0;

  /// "1.20.0"
  QByteArray text() const;
  friend bool operator==(const BackendVersion& a, const BackendVersion& b) {
    return a.majorNumber == b.majorNumber && a.minorNumber == b.minorNumber && a.revision == b.revision;
  }
};

/// Everything the backend can be asked that is no body.
struct BackendSettings {
  BackendVersion version;
  bool configChangeable = true;             ///< false: bodies are locked
  bool trackingAvailable = true;            ///< false: no measurement can be started
  bool deviceOutput6dw = false;             ///< wandgrips report in the old format ("6dw"), else in the new ("6dw2")
  bool multiuserAvailable = false;          ///< wandgrips can be used by several users at once
  bool multiuser = false;                   ///< ... and are
  bool multiuserWithHeadAvailable = false;  ///< the same with the head tracked
  bool multiuserWithHead = false;

  friend bool operator==(const BackendSettings& a, const BackendSettings& b);
};

/// A body type; its number in the protocol ("t01") is its place in the list, from 1.
struct BodyType {
  QByteArray name;
  QString description;
};

/// Bodies and settings of one folder: `catalogue.json` and `bodies/*.body`.
///
/// Reading never fails as a whole. What cannot be used is told in problems(), one message a trouble, naming file and
/// line; a body with a trouble keeps its number (Body::problem), so that no other body's number moves.
///
/// Writing: when a change returns done, it is on disk. A change that cannot be written is taken back and reported; one
/// that is refused changes nothing. Files are replaced whole (QSaveFile). A body's geometry goes into a new file each
/// time, and becomes valid when the catalogue that names it replaces the old one; so there is no moment in which a
/// reader finds half of a change. Shipped files that several bodies share are never written to.
///
/// A program that is killed in the middle of a change leaves a geometry that no catalogue names, or a temporary file.
/// The next one that opens the folder removes them, unless it met any problem, or the file might be somebody's.
///
/// One program at a time may change a folder (a lock file tells); another one reads only. Not thread-safe: belongs to
/// the thread that created it.
class BodyDatabase {
 public:
  static constexpr int highestBodyNumber = 99;
  static constexpr int mostMarkers = 99;
  static constexpr int fewestMarkers = 3;
  /// Largest accepted number of any coordinate: far beyond any room, far from any overflow.
  static constexpr double largestCoordinate = 1e9;
  /// Accepted deviation of R^T R from the identity: eight decimals are sent, and clients compute with 1e-7.
  static constexpr double rotationTolerance = 1e-5;

  /// Opens the folder; see openDatabase().
  explicit BodyDatabase(const QString& folder);
  ~BodyDatabase();
  BodyDatabase(const BodyDatabase&) = delete;
  BodyDatabase& operator=(const BodyDatabase&) = delete;

  const QString& folder() const { return folder_; }
  /// What was wrong when the folder was read; for the operator's eyes.
  const QStringList& problems() const { return problems_; }
  /// Whether another program has the folder, so that nothing can be changed here.
  bool isHeldByAnother() const { return heldByAnother_; }

  // Reading.
  const BackendSettings& settings() const { return settings_; }
  const std::vector<BodyType>& types() const { return types_; }
  const BodyType* findType(const QByteArray& name) const;
  /// Bodies of a type, b01 first; number n is at index n - 1.
  const std::vector<Body>& bodies(const QByteArray& type) const;
  /// nullptr when there is no such body.
  const Body* find(const BodyKey& key) const;
  /// Hand-held devices: the bodies of the type "wandgrip".
  int numberOfDevices() const;

  // Settings. They change whether or not the configuration is locked; the lock protects bodies. A mode that is not
  // available cannot be on: switching it on is refused, and taking the availability away switches it off.
  Outcome setSettings(const BackendSettings& settings);
  Outcome setVersion(const BackendVersion& version);
  Outcome setConfigChangeable(bool changeable);
  Outcome setTrackingAvailable(bool available);
  Outcome setDeviceOutput6dw(bool oldFormat);
  Outcome setMultiuserAvailable(bool available);
  Outcome setMultiuser(bool on);
  Outcome setMultiuserWithHeadAvailable(bool available);
  Outcome setMultiuserWithHead(bool on);

  // Bodies. All are refused while the configuration is locked. Marker numbers count from 1.
  /// New coordinates p' = R p + t for every marker; emission directions turn with R, opening angles stay.
  Outcome transform(const BodyKey& key, const RigidTransform& transform);
  /// Later markers move up by one number; lines that end at the marker go, the others follow the numbers.
  Outcome deleteMarker(const BodyKey& key, int marker);
  /// New markers lie at (0, 0, 0) without emission; surplus ones go from the end, with their lines.
  Outcome setNumberOfMarkers(const BodyKey& key, int count);
  /// The body was measured anew: markers, lines and free text become these (3 to 99 markers), nothing is known of
  /// emissions, Body::transform begins again at the identity, and the body counts as calibrated. When these are
  /// exactly the markers that the body has, its emissions and transform stay.
  Outcome setGeometry(const BodyKey& key, const BodyGeometry& geometry);
  Outcome setMarkerPosition(const BodyKey& key, int marker, const Vector3& position);
  Outcome setMarkerEmission(const BodyKey& key, int marker, const MarkerEmission& emission);
  Outcome setCalibrated(const BodyKey& key, bool calibrated);
  Outcome setDescription(const BodyKey& key, const QString& description);
  Outcome setTargetType(const BodyKey& key, const QByteArray& targetType);

 private:
  using Edit = std::function<Outcome(Body&)>;

  // Reading (bodydatabase.cpp).
  void takeLock();
  void read();
  void place(Body body);
  void fillGaps();
  void readGeometry(Body& body, const std::vector<MarkerEmission>& emissions, int catalogueLine);
  QString cataloguePath() const;
  QString bodyPath(const QString& file) const;

  // Tidying (bodydatabase_tidying.cpp).
  void tidyUp();
  bool isLeftOver(const QFileInfo& file) const;

  // Writing (bodydatabase_changes.cpp).
  Outcome changeBody(const BodyKey& key, const Edit& edit);
  Outcome changeMarker(const BodyKey& key, int marker, const std::function<void(BodyMarker&)>& edit);
  Outcome store(const Body& before, Body& after);
  Outcome commit(const QJsonObject& catalogue);
  QString newFileName(const BodyKey& key, const QString& current) const;
  bool isFileNamed(const QString& file) const;

  QString folder_;
  QStringList problems_;
  BackendSettings settings_;
  std::vector<BodyType> types_;
  std::vector<std::vector<Body>> bodies_;  // parallel to types_
  QJsonObject catalogue_;                  // as on disk, unknown fields included
  QString readOnly_;                       // why nothing may be written; empty: it may
  bool heldByAnother_ = false;
  std::unique_ptr<QLockFile> lock_;
};

/// Opens the database of a folder. Never null: what is missing or broken is told in problems().
std::unique_ptr<BodyDatabase> openDatabase(const QString& folder);

/// Gives a user a database of his own: copies catalogue and body files of the folder `from` to the folder `to`, unless
/// `to` has a catalogue already. Files that are there are kept; the catalogue comes last, so a copy that was cut short
/// is completed the next time. Returns an empty text, or what went wrong.
QString copyShippedDatabase(const QString& from, const QString& to);

}  // namespace korvex2

#endif
