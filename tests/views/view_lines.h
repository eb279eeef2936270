// The lines that a view writes of a volume that a test has built.
#ifndef TESTS_VIEWS_VIEW_LINES_H_
#define TESTS_VIEWS_VIEW_LINES_H_

#include <stdexcept>
#include <string>
#include <string_view>

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
