// The entry that libFuzzer calls: a target that complains is a crash to it.
#include <cstdio>
#include <cstdlib>

#include "fuzztarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" const char* __ubsan_default_options();

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (fuzzOne(data, size) != 0) {
    std::fprintf(stderr, "%s\n", lastFuzzProblem().c_str());
    std::abort();
  }
  return 0;
}

// Undefined behaviour is a finding, not a remark.
extern "C" const char* __ubsan_default_options() { return "halt_on_error=1:print_stacktrace=1"; }
