// The files of a run, by its options.
#ifndef SDBLK_FILES_H_
#define SDBLK_FILES_H_

#include <string>

#include "sdblk/options.h"
#include "sdblk/progress.h"

namespace tarvik {

// The system's text for an errno.
std::string error_text(int error);

// The descriptor of the list of further files; -1 where there is none, or it cannot be opened.
int open_list(const Options &options);
// What its paths end in.
char list_end(const Options &options);
// The run's files once more, to be counted; not those of a list that can be read only once.
Progress::List list_to_count(const Options &options);

}  // namespace tarvik

#endif  // SDBLK_FILES_H_
