// JSON Schemas (draft 2020-12) of the views' lines, made from the catalogue.
#ifndef VIEWS_SCHEMA_H_
#define VIEWS_SCHEMA_H_

#include <string>

namespace tarvik {

// Each a text of many lines that ends in LF.  Made for people and validators, not for speed.
std::string blocks_schema();
std::string volumes_schema();
std::string stations_schema();
std::string segments_schema();

}  // namespace tarvik

#endif  // VIEWS_SCHEMA_H_
