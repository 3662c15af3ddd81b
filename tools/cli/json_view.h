// A JSON view of an XML element as the library's writers produce it: each
// element an object of its attributes (as texts) and its children (an array
// where a name repeats), under the element's name.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

// {"Element": {...}} for the first element of xml; false when xml does not
// parse or holds no element.
bool XmlToJson(const std::string& xml, nlohmann::ordered_json* out);
