// The configuration sections the tool reads and writes, by name: for each,
// the library's get and set requests with their codes, and its typed reader
// and writer.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct ConfigSection {
  std::string name;     // what a person types: "video-encode"
  long get_code = 0;
  long set_code = 0;    // 0: the section cannot be written
  size_t record_size = 0;
  std::function<long(long id)> get;
  // Fills the record from XML; 0, or -1 when the text holds no such element.
  std::function<int(void* record, const char* xml)> read;
  // The record as XML, released with free(); null on failure.
  std::function<char*(const void* record)> write;
  std::function<long(long id, const void* record)> set;
};

const std::vector<ConfigSection>& ConfigSections();
// The section of that name; null when there is none.
const ConfigSection* FindConfigSection(const std::string& name);
