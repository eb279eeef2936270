// Changes to volumes that keep most of their structure, so that a reader gets past the first
// header.
#ifndef FUZZ_MUTATOR_H_
#define FUZZ_MUTATOR_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

namespace fuzz {

using Random = std::minstd_rand;
using Mutation = void (*)(std::string *bytes, Random *random);

// One change to a whole volume: to a record, a blockette, a length, a count, an offset, or to plain
// bytes; the sequence numbers are put right again most of the time.
void mutate_volume(std::string *bytes, Random *random);
// One change to the bytes of control fields: digits, ends of texts, blanks.
void mutate_fields(std::string *bytes, Random *random);
// One change to a data record: its header, its chain, its fields.
void mutate_data_record(std::string *bytes, Random *random);

// A libFuzzer mutation: one of these or one of libFuzzer's own.
std::size_t mutate_input(Mutation mutation, std::uint8_t *data, std::size_t size,
                         std::size_t max_size, unsigned seed);

}  // namespace fuzz

#endif  // FUZZ_MUTATOR_H_
