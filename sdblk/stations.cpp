#include "sdblk/stations.h"

#include <memory>

#include "sdblk/epoch_choice.h"
#include "views/stations.h"

namespace tarvik {

void declare_stations(OptionList *options, Chosen *chosen) {
  const auto epochs = std::make_shared<EpochOptions>();
  declare_epoch_choice(options, epochs);
  chosen->make_view = [epochs](const ViewOptions &common) {
    return make_stations_view(common, *epochs);
  };
}

}  // namespace tarvik
