// The list of bodies that the operator can choose from, and what an entry of it stands for.
#ifndef KORVEX2_BODYCATALOGUE_H
#define KORVEX2_BODYCATALOGUE_H

#include <QString>

#include <optional>
#include <vector>

namespace korvex2 {

class BackendChannel;

/// One entry of the body selector.
struct SelectorEntry {
  QString text;  ///< what the operator reads: "Head (Standard body 01)"
  QString data;  ///< what it stands for: "standard|1|calibrated|tt_std", see SelectedBody
};

struct CatalogueListing {
  std::vector<SelectorEntry> entries;  ///< in the backend's order
  bool complete = false;               ///< false: a query failed (and was reported), the entries before it are here
};

/// The body that an entry stands for.
struct SelectedBody {
  QString type;    ///< type name as the backend spells it
  int number = 0;  ///< number within the type, counting from 1
  bool calibrated = false;
  QString targetType;  ///< "tt_std", "tt_5dof", or a word ending in "_cyl" for a body with a cylinder marker
};

/// Asks the backend for all standard bodies and hand-held devices. Stops at the first failed query. A backend that
/// claims more than 99 types or more than 999 bodies of a type is not believed: the count then counts as failed.
CatalogueListing listBodies(BackendChannel& channel);

/// Reads an entry's data back. Nothing for data of fewer than four parts: the caller then has an empty type, number 0,
/// not calibrated, and keeps the target type it had.
std::optional<SelectedBody> parseEntryData(const QString& data);

/// Whether the data are those of the body that another module names by "type|number".
bool matchesKey(const QString& data, const QString& bodyKey);

}  // namespace korvex2

#endif
