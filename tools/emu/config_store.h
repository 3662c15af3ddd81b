// The emulated camera's configuration, held in the library's configuration
// model: the whole record (IPCConfig), read from and written to its document
// with the model's readers and writers, and the section codes of the
// configuration get and set messages.
#pragma once

#include <memory>
#include <string>

#include "quorvel/quorvel.h"

namespace qvemu {

class ConfigStore {
 public:
  ConfigStore();  // holds the built-in default document
  ~ConfigStore();
  ConfigStore(const ConfigStore& other);
  ConfigStore& operator=(const ConfigStore& other);

  // The built-in default document.
  static const std::string& DefaultDocument();

  // The element a get or set code's section is ("" for a code that names
  // no section).
  static std::string GetSectionName(long code);
  static std::string SetSectionName(long code);

  // Replaces the whole record with the document's. false, keeping the old
  // one, when the text does not parse or its root is neither IPCConfig nor
  // VEXORAConfig.
  bool Load(const std::string& xml);
  // The whole document as the model writes it.
  std::string Text() const;

  // The section of a get code as its writer's XML; false for an unknown code.
  bool GetSection(long code, std::string* xml) const;
  // Reads the section of a set code from xml with its reader and, when that
  // succeeds, replaces the section. false (record unchanged) for an unknown
  // code or a text without that element.
  bool SetSection(long code, const std::string& xml);

  IPCConfig& Config() { return *cfg_; }
  const IPCConfig& Config() const { return *cfg_; }

 private:
  std::unique_ptr<IPCConfig> cfg_;
};

}  // namespace qvemu
