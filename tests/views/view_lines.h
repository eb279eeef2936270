// The lines that a view writes of a volume that a test has built.
#ifndef TESTS_VIEWS_VIEW_LINES_H_
#define TESTS_VIEWS_VIEW_LINES_H_

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/run_command.h"
#include "views/view.h"

class TextSink : public tarvik::LineSink {
 public:
  bool write(std::string_view lines) override {
    text_ += lines;
    return true;
  }
  [[nodiscard]] const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// All lines of one file, which they call "v".
inline std::string lines_of(tarvik::View *view, std::string_view volume) {
  const command::ScratchDirectory scratch;
  TextSink sink;
  tarvik::LineBuffer lines(&sink);
  tarvik::Source source;
  source.name = "v";
  source.path = scratch.file("v", volume);
  const tarvik::Outcome outcome = view->read(source, &lines);
  if (outcome != tarvik::Outcome::read && outcome != tarvik::Outcome::damaged) {
    throw std::runtime_error(view->error());
  }
  lines.flush();
  return sink.text();
}

// The lines of a text, without their ends.
inline std::vector<std::string> split_lines(const std::string &text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(text.substr(begin, end - begin));
  }
  return lines;
}

// Those of them that begin so.
inline std::vector<std::string> lines_with(const std::string &text, const std::string &start) {
  std::vector<std::string> lines = split_lines(text);
  std::erase_if(lines, [&](const std::string &line) { return !line.starts_with(start); });
  return lines;
}

// What stands in a text between two others; throws where they are not there.
inline std::string between(const std::string &text, const std::string &before,
                           const std::string &after) {
  const std::size_t begin = text.find(before);
  if (begin == std::string::npos) throw std::runtime_error("no " + before + " in " + text);
  const std::size_t end = text.find(after, begin + before.size());
  if (end == std::string::npos) throw std::runtime_error("no " + after + " in " + text);
  return text.substr(begin + before.size(), end - begin - before.size());
}

#endif  // TESTS_VIEWS_VIEW_LINES_H_
