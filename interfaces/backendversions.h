// Version record that the host hands to its modules.
#ifndef KORVEX2_BACKENDVERSIONS_H
#define KORVEX2_BACKENDVERSIONS_H

#include <cstdint>

#include <QMetaType>

/// Versions of the running system. Handed over with ModuleInterface::set_param("BackendVersions", ...).
///
/// Binary contract: six consecutive signed 32-bit integers in this order; a host may append fields.
/// Modules read the backend's three numbers only. A revision of -1 means "revision unknown" and passes every gate
/// at exactly its major and minor number.
struct BackendVersions {
  std::int32_t frontend_major = 0;     // field 0
  std::int32_t frontend_minor = 0;     // field 1
  std::int32_t frontend_revision = 0;  // field 2
  std::int32_t backend_major = 0;      // field 3
  std::int32_t backend_minor = 0;      // field 4
  std::int32_t backend_revision = 0;   // field 5
};

Q_DECLARE_METATYPE(BackendVersions*)

#endif
