// The catalogue file: which bodies and types there are, and the backend's settings, as JSON.
#ifndef KORVEX2_BACKEND_CATALOGUE_H
#define KORVEX2_BACKEND_CATALOGUE_H

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <vector>

#include "body.h"
#include "bodydatabase.h"

namespace korvex2 {

/// A body as the catalogue describes it. `body` has no markers yet: they are in its file, their emissions here.
struct CatalogueEntry {
  Body body;
  std::vector<MarkerEmission> emissions;  ///< empty, or one a marker
  int line = 0;                           ///< where the entry begins in the catalogue
};

/// The catalogue's fields:
///
///   "version"             three integers
///   "config_changeable", "tracking_available"                       true or false
///   "wandgrip"            object of "output_6dw", "multiuser_available", "multiuser", "multiuser_with_head_available",
///                         "multiuser_with_head", each true or false
///   "types"               array of objects: "name", "description"
///   "bodies"              array of objects: "type", "number" (from 1), "description", "file" (in the folder "bodies"),
///                         "calibrated", "target_type", "emissions" (array of [x, y, z, angle], one a marker),
///                         "transform" (12 numbers: position, then the rotation column by column)
///
/// Type and number of a body must be there; everything else may be left out and takes its default. Fields of other
/// names are kept. A wrong field is reported: a setting takes its default then, a body keeps its place with
/// Body::problem set, an entry without a usable type or number is left out. What was not understood stays in `json`.
struct Catalogue {
  QJsonObject json;
  BackendSettings settings;
  std::vector<BodyType> types;
  std::vector<CatalogueEntry> entries;  ///< in the order of the file, no (type, number) twice
  bool readable = false;                ///< false: not JSON at all
  QStringList problems;                 ///< "NAME, line N: what is wrong"
};

/// Reads the bytes of a catalogue; `name` is the file's name for the messages.
Catalogue parseCatalogue(const QByteArray& bytes, const QString& name);

/// Bytes of a catalogue file.
QByteArray catalogueBytes(const QJsonObject& catalogue);

/// Enters the settings that differ from `before`.
void writeSettings(QJsonObject& catalogue, const BackendSettings& before, const BackendSettings& after);

/// Enters everything that the catalogue holds of a body into the first entry with its key.
void writeBody(QJsonObject& catalogue, const Body& body);

/// Whether a text can be sent as a description: printable, without double quotes, at most 120 bytes.
bool isDescription(const QString& text);
/// Whether a text can be a type's name or a target type: 1 to 32 letters, digits and underscores.
bool isName(const QByteArray& text);
/// Whether a version's numbers are in range: major and minor 0 to 9999, revision -9999 to 9999.
bool isVersion(const BackendVersion& version);

}  // namespace korvex2

#endif
