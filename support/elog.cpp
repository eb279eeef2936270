#include "support/elog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "support/memory.h"
#include "support/stream.h"

using namespace tarvik;

namespace {

struct Program {
  int argc = 0;
  char **argv = nullptr;
  const char *name = nullptr;
};
Program program;

// The newest texts, as a ring.
struct Register {
  std::array<FormattedText, ELOG_REGISTER_SIZE> texts;
  int oldest = 0;
  int count = 0;
  int dropped = 0;  // older texts that the newest ones have pushed out
};
Register registered;

void (*die_hook)(void *context) = nullptr;
void *die_context = nullptr;

// One text as the log writes it: with its line end, and with the system's text for error unless
// that is 0.
SDBLK_PRINTF(3, 0)
void format_text(FormattedText &text, int error, const char *format, std::va_list arguments) {
  constexpr std::string_view kIndent = "    ";
  const std::string_view reason = error == 0 ? "" : std::strerror(error);
  text.format(format, arguments, reason.size() + kIndent.size() + 2);
  if (!text.view().ends_with('\n')) text.append("\n");
  if (error == 0) return;
  text.append(kIndent);
  text.append(reason);
  text.append("\n");
}

void write_text(const FormattedText &text) {
  stream_write(log_stream, text.view().data(), text.view().size());
}

FormattedText &next_place() {
  const int place = (registered.oldest + registered.count) % ELOG_REGISTER_SIZE;
  if (registered.count < ELOG_REGISTER_SIZE) {
    ++registered.count;
  } else {
    registered.oldest = (registered.oldest + 1) % ELOG_REGISTER_SIZE;
    ++registered.dropped;
  }
  return registered.texts[static_cast<std::size_t>(place)];
}

void empty_register() {
  for (FormattedText &text : registered.texts) text.clear();
  registered.oldest = 0;
  registered.count = 0;
  registered.dropped = 0;
}

void write_register() {
  if (registered.dropped > 0) {
    elog_notify(0, "(%d earlier messages dropped)\n", registered.dropped);
  }
  for (int i = 0; i < registered.count; ++i) {
    const int place = (registered.oldest + i) % ELOG_REGISTER_SIZE;
    write_text(registered.texts[static_cast<std::size_t>(place)]);
  }
  empty_register();
}

SDBLK_PRINTF(2, 0)
void complain(int error, const char *format, std::va_list arguments) {
  FormattedText text;
  format_text(text, error, format, arguments);
  write_register();
  write_text(text);
  elog_flush();
}

int error_for(int flag) { return flag == 1 ? errno : 0; }

bool is_plain(char c) {
  constexpr std::string_view kSigns = "_@%+=:,./-";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kSigns.find(c) != std::string_view::npos;
}

// Counts what is put, and keeps it when there is memory to keep it in.
struct TextWriter {
  char *memory;
  std::size_t size = 0;

  void put(std::string_view text) {
    if (memory != nullptr && !text.empty()) std::memcpy(memory + size, text.data(), text.size());
    size += text.size();
  }
};

void put_argument(TextWriter &line, std::string_view argument) {
  if (!argument.empty() && std::all_of(argument.begin(), argument.end(), is_plain)) {
    line.put(argument);
    return;
  }
  line.put("'");
  for (const char &c : argument) line.put(c == '\'' ? "'\\''" : std::string_view(&c, 1));
  line.put("'");
}

void put_command_line(TextWriter &line) {
  for (int i = 0; i < program.argc && program.argv[i] != nullptr; ++i) {
    if (i > 0) line.put(" ");
    put_argument(line, program.argv[i]);
  }
}

}  // namespace

void elog_init(int argc, char **argv) {
  program = {argc, argv, nullptr};
  if (argc < 1 || argv == nullptr || argv[0] == nullptr) {
    program.argc = 0;
    return;
  }
  const char *slash = std::strrchr(argv[0], '/');
  program.name = slash == nullptr ? argv[0] : slash + 1;
}

const char *elog_program_name(void) { return program.name; }

void elog_notify(int flag, const char *format, ...) {
  const int error = error_for(flag);
  std::va_list arguments;
  va_start(arguments, format);
  FormattedText text;
  format_text(text, error, format, arguments);
  va_end(arguments);
  write_text(text);
}

void elog_log(int flag, const char *format, ...) {
  const int error = error_for(flag);
  std::va_list arguments;
  va_start(arguments, format);
  format_text(next_place(), error, format, arguments);
  va_end(arguments);
}

void elog_complain(int flag, const char *format, ...) {
  const int error = error_for(flag);
  std::va_list arguments;
  va_start(arguments, format);
  complain(error, format, arguments);
  va_end(arguments);
}

void elog_die(int flag, const char *format, ...) {
  const int error = error_for(flag);
  std::va_list arguments;
  va_start(arguments, format);
  complain(error, format, arguments);
  va_end(arguments);
  stream_flush(output_stream);
  if (die_hook != nullptr) die_hook(die_context);
  std::exit(EXIT_FAILURE);
}

void elog_clear_register(int flag) {
  if (flag == 0) {
    empty_register();
  } else {
    write_register();
  }
}

void elog_commandline(void) {
  char *line = elog_commandline_str();
  if (line != nullptr) elog_notify(0, "%s", line);
  memory_free(line);
}

char *elog_commandline_str(void) {
  TextWriter line{nullptr};
  put_command_line(line);
  line = {static_cast<char *>(memory_get(line.size + 1))};
  if (line.memory == nullptr) return nullptr;
  put_command_line(line);
  line.memory[line.size] = '\0';
  return line.memory;
}

void elog_flush(void) { stream_flush(log_stream); }

int elog_write_error(void) { return log_stream.error; }

void elog_set_die(void (*die)(void *context), void *context) {
  die_hook = die;
  die_context = context;
}

void elog_set_sink(void (*sink)(void *context, const char *bytes, size_t size), void *context) {
  stream_set_sink(log_stream, sink, context);
}
