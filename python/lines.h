// The library's own views, as lines of JSON.
#ifndef PYTHON_LINES_H_
#define PYTHON_LINES_H_

#include <pybind11/pybind11.h>

namespace tarvik {

// Adds the class Lines and the functions that make one for each view.
void add_lines(pybind11::module_ *module);

}  // namespace tarvik

#endif  // PYTHON_LINES_H_
