// Volumes that were made to hurt a reader: each of some size, so that what they cost can be
// compared from one size to the next.
#ifndef TESTS_CMD_HOSTILE_VOLUMES_H_
#define TESTS_CMD_HOSTILE_VOLUMES_H_

#include <string>

namespace hostile {

// Records of blanks, 64 bytes each: the next header is looked for at every record.
std::string shortest_records(int count);
// Data records whose chains go back and forth over 1024 blockettes, 8 KiB each.
std::string longest_chains(int count);
// Data records of 4 KiB in which the header stands again every 64 bytes, each time with a chain,
// and two records of blanks after each.
std::string overlapping_records(int count);
// The same with chains of opaque blockettes, each of which takes the rest of the record as its
// texts; records of so many times 64 bytes.
std::string overlapping_texts(int count, unsigned steps = 64);
// Data records of 64 bytes, so many that each has a chain of up to 1024 blockettes which lie in the
// records after it: its length is looked for along the chain.
std::string far_chains(int count);
// Dictionary blockettes that promise 9999 coefficients and hold one byte.
std::string broken_promises(int count);
// Control records of 64 bytes, none followed by the next number, so that each reaches to the end of
// the volume; there a volume identifier puts the reader back to 64 bytes after the record's start.
// The blockettes promise 9999 coefficients and hold one byte, and all are read once for each
// record.  At most 2048 records make sense.
std::string steps_back(int count);
// Abbreviations with codes of their own, up to ten thousand.
std::string large_dictionary(int count);
// Response references, each to an abbreviation of 2000 lines.
std::string long_references(int count);

}  // namespace hostile

#endif  // TESTS_CMD_HOSTILE_VOLUMES_H_
