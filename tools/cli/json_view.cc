#include "json_view.h"

#include <tinyxml.h>

namespace {

nlohmann::ordered_json ElementToJson(const TiXmlElement* e) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const TiXmlAttribute* a = e->FirstAttribute(); a != nullptr; a = a->Next()) {
    object[a->Name()] = a->Value();
  }
  for (const TiXmlNode* c = e->FirstChild(); c != nullptr; c = c->NextSibling()) {
    if (const TiXmlElement* child = c->ToElement()) {
      nlohmann::ordered_json value = ElementToJson(child);
      auto& slot = object[child->Value()];
      if (slot.is_null()) {
        slot = std::move(value);
      } else {
        if (!slot.is_array()) slot = nlohmann::ordered_json::array({slot});
        slot.push_back(std::move(value));
      }
    } else if (const TiXmlText* text = c->ToText()) {
      object["#text"] = text->Value();
    }
  }
  return object;
}

}  // namespace

bool XmlToJson(const std::string& xml, nlohmann::ordered_json* out) {
  TiXmlDocument doc;
  doc.Parse(xml.c_str(), nullptr, TIXML_ENCODING_LEGACY);
  const TiXmlElement* root = doc.RootElement();
  if (doc.Error() || root == nullptr) return false;
  *out = nlohmann::ordered_json::object();
  (*out)[root->Value()] = ElementToJson(root);
  return true;
}
