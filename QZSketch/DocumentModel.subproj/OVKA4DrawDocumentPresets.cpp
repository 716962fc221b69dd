#include <system_error>

#include "NumberTexts.h"
#include "OVKA4DrawDocument.h"
#include "PropertyListReader.h"
#include "srtToLong.h"

namespace ovka {
namespace {

[[nodiscard]] std::string textOf(const PropertyList& list, std::string_view key) {
  const PropertyList* value = list.find(key);
  return value == nullptr || value->text() == nullptr ? std::string() : *value->text();
}

}  // namespace

PropertyList OVKA4DrawDocument::saveDicForAllPreference() {
  PropertyList::Dictionary dictionary = headOf();
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    // Which displays are in front belongs to a document, not to a preset.
    if (kSettingsGroups[i].key == "OVKAFrontDisplay" || !at_.groups.saved(i, at_.switches))
      continue;
    const std::vector<std::string> texts = at_.groups.at(i).texts();
    dictionary.push_back(
        {std::string(kSettingsGroups[i].key), PropertyList::Array(texts.begin(), texts.end())});
  }
  return dictionary;
}

bool OVKA4DrawDocument::writePreset(const std::string& path, const PropertyList& list) {
  const std::string name = at_.folders.resolve(path);
  static_cast<void>(at_.files.makeFolder(name.substr(0, name.rfind('/'))));
  int error = 0;
  const auto file = at_.files.write(name, WriteMode::InPlace, &error);
  if (file == nullptr) return false;
  PropertyListWriter writer(*file);
  writer.value(list);
  return writer.finish() == 0 && file->commit() == 0;
}

bool OVKA4DrawDocument::readPreset(const std::string& path, PropertyList* list,
                                   DocumentError* error) {
  *error = {};
  int code = 0;
  const auto file = at_.files.read(at_.folders.resolve(path), &code);
  if (file == nullptr) {
    error->detail = "\"" + path + "\": " + std::generic_category().message(code);
    return false;
  }
  PropertyListError problem;
  if (!readPropertyList(*file, list, &problem)) {
    error->detail = "\"" + path + "\", " + problem.describe();
    return false;
  }
  if (list->dictionary() != nullptr) return true;
  error->detail = "\"" + path + "\" holds no dictionary: this is no preset";
  return false;
}

bool OVKA4DrawDocument::saveDataForAllPreference(const std::string& path) {
  return writePreset(path, saveDicForAllPreference());
}

bool OVKA4DrawDocument::openDataForAllPreference(const std::string& path, DocumentError* error) {
  PropertyList list;
  if (!readPreset(path, &list, error)) return false;
  std::vector<std::string> texts;
  static_cast<void>(textsOf(list.find("OVKA4data"), &texts));
  const VersionRules rules = VersionRules::of(
      versionNumber(texts.size() > information::kVersion ? texts[information::kVersion] : ""));
  at_.information.apply(texts, {false, true, rules.multiApplicationMode});
  applyGroups(list, true);
  applyGroups(list, false);
  return true;
}

PropertyList OVKA4DrawDocument::saveDicForPortPreference(const PortPreset& port) {
  PropertyList::Dictionary dictionary = headOf();
  PropertyList::Dictionary ports;
  const bool serialOut = !port.serialOutPath.empty();
  ports.push_back({"OVKAautoPortON", integerText(port.automaticOn ? 1 : 0)});
  ports.push_back({"OVKAautoPortONfullpassName", port.path});
  ports.push_back({"OVKAautoPortONmenuName", port.menuName});
  ports.push_back({"OVKAautoSerialPortONfullpassName", serialOut ? port.serialOutPath : "no port"});
  ports.push_back({"OVKAautoSerialPortONmenuName", serialOut ? port.serialOutMenuName : "no port"});
  dictionary.insert(dictionary.begin() + 1, ports.begin(), ports.end());
  for (const char* key : {"OVKA4Device", "OVKA4BS"}) {
    const std::vector<std::string> texts = at_.groups.find(key)->texts();
    dictionary.push_back({key, PropertyList::Array(texts.begin(), texts.end())});
  }
  return dictionary;
}

bool OVKA4DrawDocument::saveDataForPortPreference(const std::string& path, const PortPreset& port) {
  return writePreset(path, saveDicForPortPreference(port));
}

bool OVKA4DrawDocument::openDataForPortPreference(const std::string& path, PortPreset* port,
                                                  DocumentError* error) {
  PropertyList list;
  if (!readPreset(path, &list, error)) return false;
  *port = {};
  port->automaticOn = srtToLong(textOf(list, "OVKAautoPortON")) != 0;
  port->path = textOf(list, "OVKAautoPortONfullpassName");
  port->menuName = textOf(list, "OVKAautoPortONmenuName");
  port->serialOutPath = textOf(list, "OVKAautoSerialPortONfullpassName");
  port->serialOutMenuName = textOf(list, "OVKAautoSerialPortONmenuName");
  if (port->serialOutPath == "no port") port->serialOutPath = port->serialOutMenuName = "";
  std::vector<std::string> texts;
  for (const char* key : {"OVKA4Device", "OVKA4BS"}) {
    if (textsOf(list.find(key), &texts)) at_.groups.find(key)->put(texts);
  }
  return true;
}

}  // namespace ovka
