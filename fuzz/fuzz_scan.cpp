#include <cstddef>
#include <cstdint>

#include "fuzz/harness.h"
#include "fuzz/input.h"

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  fuzz::take_over();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::exercise_scan(fuzz::text_of(data, size));
  return 0;
}
