// Prints the catalogue as a table: print_catalogue | diff - tests/seed/catalogue.tsv
#include <cstddef>
#include <cstdio>
#include <string>

#include "tests/tools/catalogue_table.h"

int main() {
  const std::string table = catalogue::table();
  const std::size_t written = std::fwrite(table.data(), 1, table.size(), stdout);
  return written == table.size() && std::fflush(stdout) == 0 ? 0 : 1;
}
