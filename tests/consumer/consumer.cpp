// Succeeds when the layer for C++ does its work from an installed copy: a volume in memory of one
// record, which holds a unit and a comment that refers to it, is read block by block and field by
// field.
#include <cstdio>
#include <string>

#include "seed/sdblk.hpp"

namespace {

std::string one_record() {
  std::string record = "000001A 0340023001M/S~Velocity~03100200001SWind~001";
  record.resize(256, ' ');
  return record;
}

// The field's key, and of a reference the name of the unit that it leads to.
std::string text_of(const sdblk::Field &field) {
  const std::optional<sdblk::Block> unit = field.reference();
  if (!unit) return field.key();
  return std::string(field.key()) + "->" + std::string(unit->field("name")->text());
}

std::string text_of(const std::string &bytes) {
  std::string text;
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes);
  for (const sdblk::Block block : volume) {
    block.decode();
    text += std::to_string(block.type()) + ":";
    for (const sdblk::Field field : block.fields()) text.append(" ").append(text_of(field));
    text += "\n";
  }
  return text;
}

}  // namespace

int main() {
  const std::string text = text_of(one_record());
  if (text == "34: uid name descr\n31: cid class comment uid->M/S\n") return 0;
  std::fprintf(stderr, "consumer: the volume was read as\n%s", text.c_str());
  return 1;
}
