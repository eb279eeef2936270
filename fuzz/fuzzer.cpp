// A fuzz target as libFuzzer calls it, compiled once for each: FUZZ_EXERCISE reads the input,
// FUZZ_MUTATE, where there is one, changes it.
#include <cstddef>
#include <cstdint>

#include "fuzz/harness.h"
#include "fuzz/input.h"
#include "fuzz/mutator.h"

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  fuzz::take_over();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::FUZZ_EXERCISE(fuzz::text_of(data, size));
  return 0;
}

#ifdef FUZZ_MUTATE
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  return fuzz::mutate_input(fuzz::FUZZ_MUTATE, data, size, max_size, seed);
}
#endif
