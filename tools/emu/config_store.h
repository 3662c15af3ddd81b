// The emulated camera's configuration document (root IPCConfig) and the
// section codes of configuration get and set messages.
#pragma once

#include <memory>
#include <string>
#include <vector>

class TiXmlDocument;
class TiXmlElement;

namespace qvemu {

class ConfigStore {
 public:
  ConfigStore();  // holds the built-in default document
  ~ConfigStore();

  // The built-in default document.
  static const std::string& DefaultDocument();

  // Element path (from below the root) of a get or set section code; empty
  // for a code that names no section.
  static std::vector<std::string> GetPath(long code);
  static std::vector<std::string> SetPath(long code);

  // Replaces the document. false, keeping the old one, when the text does
  // not parse or its root is neither IPCConfig nor VEXORAConfig.
  bool Load(const std::string& xml);
  std::string Text() const;

  // The section element of a get code as XML text; false for an unknown
  // code or a section the document lacks.
  bool GetSection(long code, std::string* xml) const;
  // Replaces (or adds) the section of a set code with the one element in
  // xml, whose name must be the section's. false leaves the document as is.
  bool SetSection(long code, const std::string& xml);

  // An attribute of the element at path; "" when absent.
  std::string Attribute(const std::vector<std::string>& path, const char* name) const;
  // Sets an attribute of the element at path; false when the element is absent.
  bool SetAttribute(const std::vector<std::string>& path, const char* name,
                    const std::string& value);

 private:
  TiXmlElement* Find(const std::vector<std::string>& path) const;

  std::unique_ptr<TiXmlDocument> doc_;
};

}  // namespace qvemu
