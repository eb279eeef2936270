// Runs commands in turns and prints a table of what they took.
//
// They take turns round by round, so that whatever else the machine does falls on all of them; times
// are medians.
#ifndef BENCH_MEASURE_H_
#define BENCH_MEASURE_H_

#include <map>
#include <string>
#include <vector>

namespace bench {

struct Measurement {
  double seconds = 0;
  double cpu_seconds = 0;       // of the command alone, in user and system mode
  long peak_kib = 0;            // resident
  long peak_anonymous_kib = 0;  // of it not a file's pages; 0 unless asked for
};

// One command line with where its output goes.
struct Command {
  std::vector<std::string> arguments;
  std::string output = "/dev/null";
};

// Brings a file into the page cache by reading it from the start.  A file that was written just now
// lies there in smaller pieces than one that was read, and its readers take a quarter longer or
// more.
void read_afresh(const std::string &path);

// Throws std::runtime_error where the command fails.
Measurement run(const Command &command);

double median(std::vector<double> values);

struct Row {
  std::string name;
  Command command;                      // without arguments: a peer that is not there
  std::vector<std::string> yardsticks;  // names of other rows; what they take together is 1
  double target;                        // the most that the ratio to it may be; 0 without one
  double items;                         // records or blockettes, for the rate; 0 without one
};

class Table {
 public:
  explicit Table(std::vector<Row> rows);

  void measure(int rounds);
  void print();

  [[nodiscard]] double seconds_of(const std::string &name) const;
  [[nodiscard]] double cpu_seconds_of(const std::string &name) const;

 private:
  struct Times {
    std::vector<double> seconds;
    std::vector<double> cpu_seconds;
    long peak_kib = 0;
  };

  void print_row(const Row &row);

  std::vector<Row> rows_;
  std::map<std::string, Times> times_;
};

}  // namespace bench

#endif  // BENCH_MEASURE_H_
