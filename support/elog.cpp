#include "support/elog.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "support/elog_impl.h"
#include "support/formatted_text.h"
#include "support/line.h"
#include "support/memory.h"

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
  int oldest;
  int count;
  int dropped;  // older texts that the newest ones have pushed out
};
TARVIK_THREAD_LOCAL std::int64_t registered_ever = 0;
FirstCome<Register> registers;
TARVIK_THREAD_LOCAL Register *registered = nullptr;

struct DieHook {
  void (*call)(void *context);
  void *context;
};
TARVIK_THREAD_LOCAL DieHook die_hook = {};

TARVIK_THREAD_LOCAL ElogDiversion *diversion = nullptr;

constexpr std::string_view kReasonIndent = "    ";

// The system's text for an errno; none for 0.
std::string_view reason_of(int error) { return error == 0 ? "" : std::strerror(error); }

// Bytes that a text may take after what was formatted: its line end, and the reason with its own.
std::size_t spare_for(std::string_view reason) { return reason.size() + kReasonIndent.size() + 2; }

SDBLK_PRINTF(2, 0)
void notify(int error, const char *format, std::va_list arguments) {
  const std::string_view reason = reason_of(error);
  char *end = stream_format(log_stream, spare_for(reason), format, arguments);
  if (end == log_stream.free || end[-1] != '\n') end = put_char(end, '\n');
  if (error != 0) end = put_char(put_text(put_text(end, kReasonIndent), reason), '\n');
  elog_commit(end);
}

void notify_whole(std::string_view text) { elog_commit(put_text(elog_reserve(text.size()), text)); }

void empty_register() {
  if (registered == nullptr) return;
  for (FormattedText &text : registered->texts) text.clear();
  registered->oldest = 0;
  registered->count = 0;
  registered->dropped = 0;
}

void release_register() {
  empty_register();
  registers.give_back(registered);
  registered = nullptr;
}

TARVIK_THREAD_LOCAL ThreadEnd register_end = {release_register, nullptr};

bool have_register() {
  if (registered != nullptr) return true;
  registered = registers.take();
  if (registered == nullptr) return false;
  at_thread_end(&register_end);
  return true;
}

FormattedText &next_text() {
  ++registered_ever;
  const int position = (registered->oldest + registered->count) % ELOG_REGISTER_SIZE;
  if (registered->count < ELOG_REGISTER_SIZE) {
    ++registered->count;
  } else {
    registered->oldest = (registered->oldest + 1) % ELOG_REGISTER_SIZE;
    ++registered->dropped;
  }
  return registered->texts[static_cast<std::size_t>(position)];
}

// The text at a place of the ring, counted from the oldest.
std::string_view text_at(int index) {
  const int position = (registered->oldest + index) % ELOG_REGISTER_SIZE;
  return registered->texts[static_cast<std::size_t>(position)].view();
}

void write_register() {
  if (registered == nullptr) return;
  if (registered->dropped > 0) {
    elog_notify(0, "(%d earlier messages dropped)\n", registered->dropped);
  }
  for (int i = 0; i < registered->count; ++i) {
    notify_whole(text_at(i));
  }
  empty_register();
}

SDBLK_PRINTF(2, 0)
void complain(int error, const char *format, std::va_list arguments) {
  write_register();
  notify(error, format, arguments);
  elog_flush();
}

int error_for(int flag) { return flag == 1 ? errno : 0; }

[[noreturn]] void end_program() {
  if (die_hook.call != nullptr) die_hook.call(die_hook.context);
  std::exit(EXIT_FAILURE);
}

// A log without a buffer cannot take even a message.
void no_room(std::size_t bytes) {
  if (log_stream.capacity > 0) elog_die(0, "elog_reserve: malloc(%zu) error.\n", bytes);
  constexpr std::string_view kMessage = "elog_reserve: no memory for the log.\n";
  static_cast<void>(!write(STDERR_FILENO, kMessage.data(), kMessage.size()));
  end_program();
}

FirstCome<StreamBuffer> log_buffers;

void release_log() { stream_release(log_stream); }

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

namespace tarvik {

TARVIK_THREAD_LOCAL Stream log_stream =
    make_stream(STDERR_FILENO, &log_buffers, release_log, no_room);

std::int64_t elog_registered_ever() noexcept { return registered_ever; }

std::string_view elog_registered_last(std::int64_t ago) noexcept {
  if (registered == nullptr || registered->count == 0 || ago < 1) return {};
  const auto kept = static_cast<int>(std::min<std::int64_t>(ago, registered->count));
  return text_at(registered->count - kept);
}

bool elog_prepare() noexcept {
  return have_register() &&
         (log_stream.capacity > 0 || stream_make_room(log_stream, kStreamBytes) != nullptr);
}

ElogDiversion::ElogDiversion(StreamSink sink, void *context) noexcept
    : sink_before_(log_stream.sink),
      context_before_(log_stream.sink_context),
      outer_(std::exchange(diversion, this)) {
  stream_set_sink(log_stream, sink, context);
}

ElogDiversion::~ElogDiversion() {
  if (diversion == this) end();
}

void ElogDiversion::end() noexcept {
  stream_set_sink(log_stream, sink_before_, context_before_);
  diversion = outer_;
}

}  // namespace tarvik

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
  notify(error, format, arguments);
  va_end(arguments);
}

void elog_log(int flag, const char *format, ...) {
  const std::string_view reason = reason_of(error_for(flag));
  if (!have_register()) return;
  FormattedText &text = next_text();
  std::va_list arguments;
  va_start(arguments, format);
  text.format(format, arguments, spare_for(reason));
  va_end(arguments);
  if (!text.view().ends_with('\n')) text.append("\n");
  if (reason.empty()) return;
  text.append(kReasonIndent);
  text.append(reason);
  text.append("\n");
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
  while (diversion != nullptr) diversion->end();
  std::va_list arguments;
  va_start(arguments, format);
  complain(error, format, arguments);
  va_end(arguments);
  end_program();
}

const char *elog_registered(int index, std::size_t *size) {
  *size = 0;
  if (registered == nullptr || index < 0 || index >= registered->count) return nullptr;
  const std::string_view text = text_at(index);
  *size = text.size();
  return text.data();
}

void elog_clear_register(int flag) {
  if (flag == 0) {
    empty_register();
  } else {
    write_register();
  }
}

void elog_commandline(void) {
  TextWriter line{nullptr};
  put_command_line(line);
  line = {elog_reserve(line.size + 1)};
  put_command_line(line);
  line.put("\n");
  elog_commit(line.memory + line.size);
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

void elog_set_die(void (*die)(void *context), void *context) { die_hook = {die, context}; }

void elog_set_sink(void (*sink)(void *context, const char *bytes, size_t size), void *context) {
  stream_set_sink(log_stream, sink, context);
}
