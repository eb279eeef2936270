#include "views/volume_shelf.h"

#include <algorithm>
#include <new>

namespace tarvik {
namespace {

constexpr char kChanged[] = "changed while it was read";

// Whether a block is decoded at the first reading: what defines abbreviations, also in the chain of
// a data record, and what tells of volumes, stations and channels.
bool is_decoded(std::int32_t type) {
  return type <= 48 || type == 50 || type == 52 || type == SDBLK_DATA_RECORD;
}

bool is_cut(const SDBlk &block) {
  std::int64_t size = 0;
  sdblk_raw(&block, &size);
  return size < block.blockette_length;
}

bool is_damaged(const SDBlkWholeCounts &counts) {
  return counts.findings[SDBLK_SKIP_GARBAGE] > 0 || counts.findings[SDBLK_SKIP_PREFIX] > 0 ||
         counts.findings[SDBLK_NOTE_CUT] > 0;
}

}  // namespace

VolumeShelf::~VolumeShelf() { sdblk_free(block_); }

void VolumeShelf::lose(std::int32_t number, const std::string &why) {
  Volume &volume = volumes_[static_cast<std::size_t>(number)];
  if (!volume.lost) lose_(volume.source.name, why);
  volume.lost = true;
}

void VolumeShelf::close(Slot *slot) {
  if (slot->number >= 0 && slot->input.changed()) lose(slot->number, slot->input.error());
  slot->number = -1;
  slot->input.close();
}

void VolumeShelf::close() {
  for (const auto &slot : slots_) close(slot.get());
}

// One that is free, or was not used for longest.
VolumeShelf::Slot *VolumeShelf::free_slot() {
  if (slots_.size() < kSlots) return slots_.emplace_back(std::make_unique<Slot>()).get();
  const auto oldest =
      std::min_element(slots_.begin(), slots_.end(),
                       [](const auto &a, const auto &b) { return a->last_use < b->last_use; });
  close(oldest->get());
  return oldest->get();
}

bool VolumeShelf::fill(Slot *slot, std::int32_t number) {
  const Source &source = volumes_[static_cast<std::size_t>(number)].source;
  slot->number = number;
  slot->last_use = ++uses_;
  if (slot->input.open(source, record_length_, {nullptr, nullptr, SDBLK_KEEP_ALL})) return true;
  lose(number, slot->input.error());
  return false;
}

bool VolumeShelf::read_all(Slot *slot, const Take &take, Outcome *outcome) {
  SDBlkVol *vol = slot->input.volume();
  const Source &source = volumes_[static_cast<std::size_t>(slot->number)].source;
  bool cut = false;
  for (;;) {
    const SDBlkPlace place = sdblk_place(vol);
    const int result = sdblk_parseblk(vol, &block_);
    if (result == SDBLK_EOF) break;
    if (result < 0) throw std::bad_alloc();
    if (is_decoded(block_->blockette_type) && sdblk_unstuffblk(block_) < 0) throw std::bad_alloc();
    if (source.position != nullptr) *source.position = vol->offset;
    if (block_->data_ptr != nullptr) continue;
    cut = cut || is_cut(*block_);
    if (take) take(*block_, place);
  }
  if (slot->input.changed()) {
    lose(slot->number, slot->input.error());
    return false;
  }
  *outcome = cut || is_damaged(sdblk_whole_counts(vol)) ? Outcome::damaged : Outcome::read;
  return true;
}

Outcome VolumeShelf::add(const Source &source, const Take &take) {
  volumes_.push_back({source, 0, {}, false});
  const std::int32_t number = count() - 1;
  Slot *slot = free_slot();
  Outcome outcome = Outcome::unreadable;
  if (!fill(slot, number)) return outcome;
  volumes_.back().size = slot->input.size();
  volumes_.back().modified = slot->input.modified();
  read_all(slot, take, &outcome);
  return outcome;
}

void VolumeShelf::drop_last() {
  const std::int32_t number = count() - 1;
  for (const auto &slot : slots_) {
    if (slot->number == number) close(slot.get());
  }
  volumes_.pop_back();
}

bool VolumeShelf::is_as_it_was(const Slot &slot) const {
  const Volume &volume = volumes_[static_cast<std::size_t>(slot.number)];
  const std::timespec &now = slot.input.modified();
  return slot.input.size() == volume.size && now.tv_sec == volume.modified.tv_sec &&
         now.tv_nsec == volume.modified.tv_nsec;
}

SDBlkVol *VolumeShelf::open(std::int32_t number) {
  if (volumes_[static_cast<std::size_t>(number)].lost) return nullptr;
  for (const auto &slot : slots_) {
    if (slot->number != number) continue;
    slot->last_use = ++uses_;
    return slot->input.volume();
  }
  Slot *slot = free_slot();
  if (!fill(slot, number)) return nullptr;
  if (!is_as_it_was(*slot)) {
    lose(number, kChanged);
    return nullptr;
  }
  Outcome outcome = Outcome::read;
  return read_all(slot, nullptr, &outcome) ? slot->input.volume() : nullptr;
}

}  // namespace tarvik
