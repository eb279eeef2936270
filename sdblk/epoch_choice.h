// The options that choose station and channel epochs.
#ifndef SDBLK_EPOCH_CHOICE_H_
#define SDBLK_EPOCH_CHOICE_H_

#include <memory>

#include "sdblk/option_list.h"
#include "views/epoch_choice.h"

namespace tarvik {

// Declares --accept, --reject, --from and --to.
void declare_epoch_choice(OptionList *options, const std::shared_ptr<EpochOptions> &epochs);

}  // namespace tarvik

#endif  // SDBLK_EPOCH_CHOICE_H_
