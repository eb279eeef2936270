// The headers of data records as rows of a table: sdblk.records.
#ifndef PYTHON_RECORDS_H_
#define PYTHON_RECORDS_H_

#include <pybind11/pybind11.h>

namespace tarvik {

// Adds the function that reads the table.
void add_records(pybind11::module_ *module);

}  // namespace tarvik

#endif  // PYTHON_RECORDS_H_
