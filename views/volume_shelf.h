// Volumes that are read more than once.
#ifndef VIEWS_VOLUME_SHELF_H_
#define VIEWS_VOLUME_SHELF_H_

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "seed/whole.h"
#include "views/input.h"
#include "views/view.h"

namespace tarvik {

// Volumes by number, from 0.  A few of them are open at a time, with all abbreviations that they
// define, so that any of their blocks can be gone to.  For one thread.  Throws std::bad_alloc.
class VolumeShelf {
 public:
  // Told once of each volume that cannot be read, or not any more as it was: its name, and why, for
  // people.
  using Lose = std::function<void(const std::string &name, const std::string &why)>;

  VolumeShelf(std::int32_t record_length, Lose lose)
      : record_length_(record_length), lose_(std::move(lose)) {}
  ~VolumeShelf();
  VolumeShelf(const VolumeShelf &) = delete;
  VolumeShelf &operator=(const VolumeShelf &) = delete;

  // Takes a block of a control header, in the order of the volume, and the place before it.  Decoded
  // are those that define abbreviations or begin a volume, a station or a channel.
  using Take = std::function<void(const SDBlk &block, const SDBlkPlace &place)>;

  // Reads a volume to its end and gives it the next number.
  Outcome add(const Source &source, const Take &take);
  // Takes the last volume back: nothing of it will be asked for.
  void drop_last();

  // A volume that was added, standing where it was left; nullptr when it is lost.
  SDBlkVol *open(std::int32_t number);
  // Closes all volumes, and looks whether they stayed as they were.
  void close();

  [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(volumes_.size()); }
  [[nodiscard]] const std::string &name(std::int32_t number) const {
    return volumes_[static_cast<std::size_t>(number)].source.name;
  }

 private:
  struct Volume {
    Source source;
    std::int64_t size = 0;
    std::timespec modified = {};
    bool lost = false;
  };
  // A volume that is open.
  struct Slot {
    Input input;
    std::int32_t number = -1;
    std::int64_t last_use = 0;
  };

  static constexpr std::size_t kSlots = 8;

  Slot *free_slot();
  bool fill(Slot *slot, std::int32_t number);
  bool read_all(Slot *slot, const Take &take, Outcome *outcome);
  bool is_as_it_was(const Slot &slot) const;
  void close(Slot *slot);
  void lose(std::int32_t number, const std::string &why);

  std::int32_t record_length_;
  Lose lose_;
  std::vector<Volume> volumes_;
  std::vector<std::unique_ptr<Slot>> slots_;
  std::int64_t uses_ = 0;
  SDBlk *block_ = nullptr;
};

}  // namespace tarvik

#endif  // VIEWS_VOLUME_SHELF_H_
