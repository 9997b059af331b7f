// The port on which a backend program listens, and a front end looks for it, unless told otherwise.
#pragma once

#include <cstdint>

namespace korvex2 {

inline constexpr std::uint16_t defaultBackendPort = 27410;

}  // namespace korvex2
