#include <algorithm>
#include <string>

#include "fuzz/input.h"
#include "fuzz/mutator.h"

namespace fuzz {

std::size_t mutate_input(Mutation mutation, std::uint8_t *data, std::size_t size,
                         std::size_t max_size, unsigned seed) {
  Random random(seed);
  if (random() % 3 == 0) return LLVMFuzzerMutate(data, size, max_size);
  std::string bytes(text_of(data, size));
  for (auto changes = 1 + random() % 3; changes > 0; --changes) mutation(&bytes, &random);
  const std::size_t new_size = std::min(bytes.size(), max_size);
  bytes.copy(reinterpret_cast<char *>(data), new_size);
  return new_size;
}

}  // namespace fuzz
