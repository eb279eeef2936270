// What the fuzz targets do with their bytes.  Each function reads a piece of a hostile volume in
// every way that the library offers and ends the process when a promise is broken: the sanitizers
// see to memory, require() to what must hold beyond it.
#ifndef FUZZ_HARNESS_H_
#define FUZZ_HARNESS_H_

#include <cstdint>
#include <string_view>

namespace fuzz {

// A fatal error of the library.  It ends the reading of one input, not the process.
struct Fatal {};

// From now on the log's text is only counted, elog_die throws Fatal, and standard output goes
// nowhere.
void take_over();

// Writes what was promised and aborts.
[[noreturn]] void broken(const char *promise);
inline void require(bool holds, const char *promise) {
  if (!holds) broken(promise);
}

// Reads a volume to its end: decodes and lists every block, summarises it, feeds it to the station
// buffer, copies it and releases all.  The same bytes are read again in another way now and then.
// Then it is read whole and its views are written, as the next two functions do.
// Returns the number of blocks.
long exercise_volume(std::string_view bytes);
// Reads a volume whole, and requires that records and skips tile it, that the work is in proportion,
// and that a sound volume reads as it does strictly.
void exercise_whole(std::string_view bytes, std::int32_t record_length);
// Writes each view of a volume, and requires of every line that it is JSON in UTF-8.
void exercise_views(std::string_view bytes, std::int32_t record_length);
// Two bytes choose a blockette type, the others are its fields.
void exercise_control(std::string_view bytes);
// One data record; its first eight bytes are made a header.
void exercise_data(std::string_view bytes);
// The first byte chooses a scanner or a time function, the others are what it reads.
void exercise_scan(std::string_view bytes);

}  // namespace fuzz

#endif  // FUZZ_HARNESS_H_
