// A line on a terminal that is renewed in its place: how far a long run has come.
#ifndef SUPPORT_PROGRESS_LINE_H_
#define SUPPORT_PROGRESS_LINE_H_

#include <array>
#include <cstddef>
#include <string_view>

namespace tarvik {

// "4:05", and "1:04:05" from an hour on, of seconds rounded up.
std::array<char, 40> time_left_text(double seconds);

class ProgressLine {
 public:
  static constexpr std::size_t kMostColumns = 79;

  // Nothing may be shown where the descriptor is no terminal, -1 included.
  explicit ProgressLine(int descriptor);

  [[nodiscard]] bool is_on_terminal() const { return on_terminal_; }
  // Shows a line in the place of the one before: as much of it as fits the terminal, at most
  // kMostColumns.
  void show(std::string_view line);
  // Takes it away.  A signal handler may call it.
  void erase();

 private:
  char *put_erasure(char *out) const;
  void write_or_forget(std::string_view bytes);

  int descriptor_;
  bool on_terminal_;
  bool dumb_ = false;      // the terminal knows the carriage return at most
  std::size_t shown_ = 0;  // columns of the line that is there
};

}  // namespace tarvik

#endif  // SUPPORT_PROGRESS_LINE_H_
