// Assertion of the geometry core that stays active in every build type.
#ifndef KORVEX2_BSASSERT_H
#define KORVEX2_BSASSERT_H

namespace korvex2 {

/// Writes where and what to standard error and aborts. `text` appears there exactly as given, between a back quote and
/// an apostrophe.
[[noreturn]] void assertionFailed(const char* text, const char* file, int line, const char* function) noexcept;

/// Aborts the program unless `holds`, in release builds too: a wrong index or a self-assignment here would otherwise
/// silently corrupt a body's coordinate system. The text is passed on its own rather than made from the condition, so
/// that it does not change with the code's formatting. Place and name of the caller fill in by themselves.
inline void require(bool holds, const char* text, const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                    const char* function = __builtin_FUNCTION()) {
  if (!holds) {
    assertionFailed(text, file, line, function);
  }
}

}  // namespace korvex2

#endif
