// What a volume says that StationXML cannot take.
#ifndef VIEWS_LOSSES_H_
#define VIEWS_LOSSES_H_

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace tarvik {

struct Loss {
  std::string volume;   // its name
  std::int64_t offset;  // of the blockette
  std::string element;  // its path: "Network/Station/Channel/Dip"
  std::string text;     // for people
};

// An element's path, which is put together only where it is told.
struct XmlPath {
  const XmlPath *parent;  // nullptr for none; it outlives this one
  const char *element;    // or several, with slashes

  [[nodiscard]] std::string text() const {
    return parent == nullptr ? element : parent->text() + '/' + element;
  }
};

// Tells losses of one epoch after the other; some of them to nobody.
class Losses {
 public:
  using Tell = std::function<void(const Loss &loss)>;

  explicit Losses(Tell tell) : tell_(std::move(tell)) {}

  // What follows is of an epoch of a volume, called NET_STA_CHA_LO; silent: nobody is told.
  void begin(const std::string &volume, std::string epoch, bool silent) {
    volume_ = volume;
    epoch_ = std::move(epoch);
    silent_ = silent;
  }
  void tell(std::int64_t offset, const XmlPath &path, const std::string &text) {
    if (!silent_) tell_({volume_, offset, path.text(), text + " (" + epoch_ + ")"});
  }

 private:
  Tell tell_;
  std::string volume_;
  std::string epoch_;
  bool silent_ = false;
};

}  // namespace tarvik

#endif  // VIEWS_LOSSES_H_
