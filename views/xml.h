// XML 1.0 in UTF-8, written as it is made.
#ifndef VIEWS_XML_H_
#define VIEWS_XML_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "views/lines.h"

struct _xmlTextWriter;  // NOLINT(bugprone-reserved-identifier): the library's

namespace tarvik {

// A text of any bytes as characters that XML may hold: those that JSON would show, without those
// that XML forbids.  *left_out tells whether there were any.
std::string xml_text(std::string_view text, bool *left_out);

// The same digits as in JSON; infinities as the schema language has them.  Room for kRealRoom.
char *put_xml_real(char *out, double value);

// Writes elements one after the other, each on lines of its own, a blank deeper than the one that
// holds it.  Throws std::bad_alloc.
class Xml {
 public:
  // Takes a document's text in pieces of any size; it outlives the writer.
  explicit Xml(LineSink *sink);

  void declare();  // first in a document
  void start(const char *element);
  void attribute(const char *name, const std::string &value);
  void end();
  // A whole element.
  void element(const char *name, const std::string &value);
  void element(const char *name, double value);

  // Where whole elements are put that are text already, each on lines of its own that begin with
  // indent(), after an element that has ended; to be used before anything else is written.
  TextBuffer *elements();
  // The line end and the blanks before an element that is started now.
  [[nodiscard]] std::string_view indent() const { return indent_; }

  // Hands on what is there, where that is much.  False from the first piece on that could not be
  // written.
  bool flush_much() { return out_.size() < kMuch || flush(); }
  // Hands on what is there.
  bool flush();

 private:
  static constexpr std::size_t kMuch = std::size_t{128} << 10;

  static int take(void *out, const char *bytes, int size);
  static void check(int result);
  void put(std::string_view text);

  struct Free {
    void operator()(_xmlTextWriter *writer) const;
  };

  LineSink *sink_;
  TextBuffer out_;
  bool good_ = true;
  std::string indent_;
  bool has_elements_ = false;                     // the element that is open
  std::string line_;                              // kept for its memory
  std::unique_ptr<_xmlTextWriter, Free> writer_;  // which writes into the members above
};

}  // namespace tarvik

#endif  // VIEWS_XML_H_
