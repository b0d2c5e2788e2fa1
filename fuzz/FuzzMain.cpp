// What libFuzzer calls: the one target of the program.
#include "fuzz/FuzzTarget.h"

// Long traces of each allocation would take most of the time; leaks are the tests' business.
extern "C" const char* __asan_default_options() {
  return "malloc_context_size=2:quarantine_size_mb=16:detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  kx::fuzz::Targets().front().Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
