// The fields of a block in the order of the catalogue, and their exact bytes.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "seed/block.h"
#include "seed/cursor.h"
#include "seed/format.h"
#include "seed/whole.h"
#include "support/arr_impl.h"

using namespace tarvik;

namespace {

bool is_read_whole(const SDBlk &block) {
  return block.vol != nullptr && block.vol->whole != nullptr && block.storage != nullptr;
}

// Bytes of a data block that is read strictly: as stated, within the image.
std::int64_t size_of_data(const SDBlk &block) {
  const std::int64_t stated =
      block.blockette_length > 0 ? block.blockette_length : block.logical_length;
  if (block.vol == nullptr) return stated;
  return std::min(stated, image_from(*block.vol, block.data_ptr).size());
}

std::int64_t size_of(const SDBlk &block) {
  if (is_read_whole(block)) return block.storage->there;
  return block.data_ptr == nullptr ? block.blockette_length : size_of_data(block);
}

std::int64_t bytes_before_fields(const SDBlk &block) {
  if (block.data_ptr == nullptr) return kPrefixBytes;
  return block.blockette_type == SDBLK_DATA_RECORD ? kHeaderBytes : kLinkBytes;
}

// Goes over the bytes of decoded fields until it is at those of one entry.
class Finder {
 public:
  Finder(const Cursor &bytes, const SDBlkEntry *entry, std::int32_t element)
      : rest_(bytes), wanted_(entry), element_(element) {}

  // Whether the entry, or what it holds, is among the fields.
  bool find(const Arr *contents, std::int32_t nfields, const SDBlkFieldDef *fields) {
    for (std::int32_t i = 0; i < nfields; ++i) {
      const SDBlkEntry *entry = sdblk_entry_at(contents, fields, i);
      if (entry == nullptr) return false;
      if (entry->def->kind == SDBLK_GROUP_ARRAY) {
        if (find_in_group(*entry)) return true;
      } else if (find_in_field(*entry)) {
        return true;
      }
    }
    return false;
  }
  [[nodiscard]] std::string_view found() const { return found_; }

 private:
  bool find_in_group(const SDBlkEntry &entry) {
    for (std::int32_t i = 0; i < entry.count; ++i) {
      if (find(entry.value.ea[i], entry.def->nsub, entry.def->sub)) return true;
    }
    return false;
  }
  bool find_in_field(const SDBlkEntry &entry) {
    for (std::int32_t i = 0; i < entry.count; ++i) {
      found_ = cut(*entry.def);
      if (&entry == wanted_ && i == element_) return true;
    }
    return false;
  }
  std::string_view cut(const SDBlkFieldDef &field) {
    if (field.stype != 'V') return rest_.take(field.width);
    const std::string_view bytes = rest_.rest().substr(0, rest_.rest().find('~'));
    rest_.skip(static_cast<std::int64_t>(bytes.size()) + 1);
    return bytes;
  }

  Cursor rest_;
  const SDBlkEntry *wanted_;
  std::int32_t element_;
  std::string_view found_;
};

}  // namespace

const char *sdblk_raw(const SDBlk *block, std::int64_t *size) {
  const char *bytes = block->data_ptr != nullptr ? block->data_ptr : block->blockette_raw;
  *size = bytes == nullptr ? 0 : std::max<std::int64_t>(size_of(*block), 0);
  return bytes;
}

const SDBlkEntry *sdblk_entry_at(const Arr *contents, const SDBlkFieldDef *fields,
                                 std::int32_t position) {
  return static_cast<const SDBlkEntry *>(
      arr_get_at(contents, static_cast<std::uint32_t>(position), fields[position].key));
}

std::int64_t sdblk_integer(const SDBlkEntry *entry) {
  const bool is_unsigned = std::strcmp(entry->def->format, "ULONG") == 0;
  return is_unsigned ? std::int64_t{static_cast<std::uint32_t>(entry->value.i)}
                     : std::int64_t{entry->value.i};
}

const char *sdblk_field_bytes(const SDBlk *block, const SDBlkEntry *entry, std::int32_t element,
                              std::int64_t *size) {
  *size = 0;
  if (block->blkdef == nullptr) return nullptr;
  std::int64_t there = 0;
  const char *bytes = sdblk_raw(block, &there);
  if (bytes == nullptr) return nullptr;
  const Cursor fields = Cursor(bytes, there).from(bytes_before_fields(*block));
  Finder finder(fields, entry, element);
  if (!finder.find(block->contents, block->blkdef->nfields, block->blkdef->fields)) return nullptr;
  *size = static_cast<std::int64_t>(finder.found().size());
  return finder.found().data();
}
