#include "views/row.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace tarvik;

namespace {

// One value of each kind, the same in both forms.
std::string line(bool csv) {
  TextBuffer buffer;
  Row row(&buffer, csv);
  row.start("epoch", csv ? "a.seed" : "\"a.seed\"");
  row.text("site", "a, b");
  row.text("empty", "");
  row.integer("records", 5000000000);
  row.real("gain", 6.29e8);
  row.real("far", -std::numeric_limits<double>::infinity());
  row.time("start", 1.5);
  row.microtime("end", 1500001);
  row.nanotime("modified", 1, 5);
  row.null("format");
  row.finish();
  return std::string(buffer.text());
}

TEST(Row, JsonHasKindAndKeys) {
  EXPECT_EQ(line(false),
            R"({"kind":"epoch","file":"a.seed","site":"a, b","empty":"","records":5000000000,)"
            R"("gain":6.29e8,"far":"-Infinity","start":"1970-01-01T00:00:01.5000Z",)"
            R"("end":"1970-01-01T00:00:01.500001Z","modified":"1970-01-01T00:00:01.000000005Z",)"
            R"("format":null})");
}

TEST(Row, CsvHasBareValuesAndNothingForNull) {
  EXPECT_EQ(line(true), R"(a.seed,"a, b",,5000000000,6.29e8,-Infinity,1970-01-01T00:00:01.5000Z,)"
                        R"(1970-01-01T00:00:01.500001Z,1970-01-01T00:00:01.000000005Z,)");
}

TEST(Row, TimeThatJsonCannotShowIsNull) {
  TextBuffer buffer;
  Row json(&buffer, false);
  json.time("start", 1e11 * 3);
  Row csv(&buffer, true);
  csv.time("start", 1e11 * 3);
  EXPECT_EQ(buffer.text(), R"(,"start":null,)");
}

}  // namespace
