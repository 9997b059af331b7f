// What every fuzz target is: one function that takes any bytes, and the way it says what was wrong.
#ifndef KORVEX2_TESTS_FUZZTARGET_H
#define KORVEX2_TESTS_FUZZTARGET_H

#include <cstddef>
#include <cstdint>
#include <string>

/// Feeds the bytes to the code under test. Each target has its own in a .cpp of its own; a program links exactly one.
/// The bytes alone decide what happens, so that a finding can be repeated.
/// @return 0 when all was well, else 1, with the reason in lastFuzzProblem()
int fuzzOne(const std::uint8_t* data, std::size_t size);

/// Why fuzzOne() returned 1.
inline std::string& lastFuzzProblem() {
  static std::string problem;
  return problem;
}

/// For `return fuzzProblem("...")` within a target.
inline int fuzzProblem(const std::string& problem) {
  lastFuzzProblem() = problem;
  return 1;
}

/// The bytes as text. A copy, because libFuzzer's bytes end without a zero.
inline std::string fuzzText(const std::uint8_t* data, std::size_t size) {
  return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

#endif
