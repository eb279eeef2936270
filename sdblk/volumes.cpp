#include "sdblk/volumes.h"

#include "views/volumes.h"

namespace tarvik {

void declare_volumes(OptionList *options, Chosen *chosen) {
  options->path("--known", "LIST", &chosen->known,
                "Pass over files that are as the lines of earlier runs\n"
                "say; tell those that are gone");
  chosen->make_view = make_volumes_view;
}

}  // namespace tarvik
