#include "views/xml.h"

#include <libxml/xmlwriter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "support/line.h"
#include "views/json.h"

namespace tarvik {
namespace {

const xmlChar *chars(const char *text) {
  return reinterpret_cast<const xmlChar *>(text);
}  // NOLINT
const xmlChar *chars(const std::string &text) { return chars(text.c_str()); }

// The bytes of a character at the start of UTF-8 that XML forbids, or 0.
std::size_t forbidden_size(std::string_view utf8) {
  const auto first = static_cast<unsigned char>(utf8.front());
  if (first < 0x20) return first == '\t' || first == '\n' || first == '\r' ? 0 : 1;
  return utf8.starts_with("\xEF\xBF\xBE") || utf8.starts_with("\xEF\xBF\xBF") ? 3 : 0;
}

}  // namespace

std::string xml_text(std::string_view text, bool *left_out) {
  *left_out = false;
  if (std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < 0x7F; })) {
    return std::string(text);
  }
  std::string utf8 = utf8_text(text);
  for (std::size_t at = 0; at < utf8.size();) {
    const std::size_t size = forbidden_size(std::string_view(utf8).substr(at));
    utf8.erase(at, size);
    *left_out = *left_out || size > 0;
    if (size == 0) ++at;
  }
  return utf8;
}

char *put_xml_real(char *out, double value) {
  if (std::isinf(value)) return put_text(out, value < 0 ? "-INF" : "INF");
  return put_json_real(out, value);
}

void Xml::Free::operator()(xmlTextWriter *writer) const { xmlFreeTextWriter(writer); }

Xml::Xml(LineSink *sink) : sink_(sink), indent_("\n") {
  xmlOutputBuffer *buffer = xmlOutputBufferCreateIO(take, nullptr, &out_, nullptr);
  if (buffer == nullptr) throw std::bad_alloc();
  writer_.reset(xmlNewTextWriter(buffer));  // which owns the buffer
  if (writer_ == nullptr) {
    xmlOutputBufferClose(buffer);
    throw std::bad_alloc();
  }
}

// No exception passes through the library.
int Xml::take(void *out, const char *bytes, int size) {
  try {
    static_cast<TextBuffer *>(out)->put({bytes, static_cast<std::size_t>(size)});
  } catch (const std::bad_alloc &) {
    return -1;
  }
  return size;
}

void Xml::check(int result) {
  if (result < 0) throw std::bad_alloc();
}

// As it is.
void Xml::put(std::string_view text) {
  check(xmlTextWriterWriteRawLen(writer_.get(), chars(text.data()), static_cast<int>(text.size())));
}

void Xml::declare() { put(R"(<?xml version="1.0" encoding="UTF-8"?>)"); }

// The library can indent, but takes a call for each blank.
void Xml::start(const char *element) {
  put(indent_);
  check(xmlTextWriterStartElement(writer_.get(), chars(element)));
  indent_.push_back(' ');
  has_elements_ = false;
}

void Xml::attribute(const char *name, const std::string &value) {
  check(xmlTextWriterWriteAttribute(writer_.get(), chars(name), chars(value)));
}

void Xml::end() {
  indent_.pop_back();
  if (has_elements_) put(indent_);
  check(xmlTextWriterEndElement(writer_.get()));
  has_elements_ = true;
  if (indent_.size() == 1) put("\n");
  flush_much();
}

void Xml::element(const char *name, const std::string &value) {
  put(indent_);
  check(xmlTextWriterWriteElement(writer_.get(), chars(name), chars(value)));
  has_elements_ = true;
}

// Digits need no care.
void Xml::element(const char *name, double value) {
  std::array<char, kRealRoom> room;
  line_ = indent_;
  line_.append("<").append(name).append(">");
  line_.append(room.data(), put_xml_real(room.data(), value));
  line_.append("</").append(name).append(">");
  put(line_);
  has_elements_ = true;
}

TextBuffer *Xml::elements() {
  check(xmlTextWriterFlush(writer_.get()));
  return &out_;
}

bool Xml::flush() {
  check(xmlTextWriterFlush(writer_.get()));
  good_ = good_ && (out_.size() == 0 || sink_->write(out_.text()));
  out_.clear();
  return good_;
}

}  // namespace tarvik
