// See bsAssert.h.
#include "bsAssert.h"

#include <cstdio>
#include <cstdlib>

namespace korvex2 {

void assertionFailed(const char* text, const char* file, int line, const char* function) noexcept {
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", file, line, function, text);
  std::fflush(stderr);
  std::abort();
}

}  // namespace korvex2
