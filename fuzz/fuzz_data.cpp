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
  fuzz::exercise_data(fuzz::text_of(data, size));
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  return fuzz::mutate_input(fuzz::mutate_data_record, data, size, max_size, seed);
}
