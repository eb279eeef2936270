// Numbers and times as whole reading takes them at their word: the whole text, or no value.
#ifndef SEED_WHOLE_NUMBERS_H_
#define SEED_WHOLE_NUMBERS_H_

#include <cstdint>
#include <string_view>

namespace tarvik {

// The value of digits with blanks, or none, before them; -1 for any other text.  The second takes
// blanks after them too.  Nine digits at most.
std::int32_t padded_number(std::string_view text);
std::int32_t number_in_blanks(std::string_view text);

// "[+-]?[0-9]+" within 32 bits.
bool read_whole_integer(std::string_view text, std::int32_t *value);

// Digits with at most one point among them, a sign, an exponent: the nearest double, infinite
// beyond the range.
bool read_whole_real(std::string_view text, double *value);

// "YYYY[,D[DD][,H[H][:M[M][:S[S][.F*]]]]]", in epoch seconds; of the fraction four digits count.
bool read_whole_time(std::string_view text, double *epoch);

// Whether the ten bytes of a binary time are one, and its value.
bool is_whole_binary_time(const char *bytes, bool big_endian);
bool read_whole_binary_time(const char *bytes, bool big_endian, double *epoch);

}  // namespace tarvik

#endif  // SEED_WHOLE_NUMBERS_H_
