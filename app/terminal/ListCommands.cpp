#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "DocumentHost.h"
#include "Engine.h"
#include "Failure.h"
#include "Json.h"
#include "LinuxAddressSpace.h"
#include "LinuxSerialPorts.h"
#include "ManualTime.h"
#include "Output.h"

namespace ovka::terminal {
namespace {

/// An engine that is never started, for its registries.
class IdleEngine {
 public:
  IdleEngine() : time_(0), engine_({time_, time_, time_, space_, serial_, nullptr, &documents_}) {}
  Engine& operator*() { return engine_; }

 private:
  Console console_{Console::Show::Nothing};
  ManualTime time_;
  LinuxAddressSpace space_;
  LinuxSerialPorts serial_;
  DocumentHost host_;
  DocumentMachine documents_ = host_.filesOnly(host_.folders);
  Engine engine_;
};

void writeSettingJson(std::string& out, const Setting& setting) {
  JsonWriter json(out);
  json.beginObject().key("name").text(setting.name);
  if (setting.count > 0) json.key("entries").number(static_cast<double>(setting.count));
  if (setting.kind == Setting::Kind::Character) {
    json.key("default").text(SettingsRegistry::format(setting, setting.defaultValue));
  } else {
    json.key("default").number(setting.defaultValue);
  }
  if (setting.writable && setting.choices.empty()) {
    json.key("minimum").number(setting.minimum).key("maximum").number(setting.maximum);
  }
  if (!setting.choices.empty()) json.key("choices").text(setting.choices);
  json.key("writable").boolean(setting.writable).key("meaning").text(setting.meaning).endObject();
  out += '\n';
}

/// The name as it is written to set it; a table with its entries.
std::string shownName(const Setting& setting) {
  if (setting.count == 0) return setting.name;
  return setting.name + "[0..." + std::to_string(setting.count - 1) + "]";
}

void writeSettingText(std::string& out, const Setting& setting, std::size_t nameWidth) {
  const std::string name = shownName(setting);
  out += name;
  out.append(nameWidth - name.size() + 2, ' ');
  out += SettingsRegistry::format(setting, setting.defaultValue) + "  [" +
         SettingsRegistry::range(setting) + "]  " + setting.meaning + "\n";
}

/// Whether `word` occurs in `text`, whatever the case of its letters.
bool holds(std::string_view text, std::string_view word) {
  const auto equal = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), equal) != text.end();
}

}  // namespace

void runPorts(const Arguments& arguments) {
  LinuxSerialPorts serial;
  int error = 0;
  const std::vector<SerialDevice> devices = serial.devices(&error);
  if (error != 0) {
    throw Failure(ExitCode::Failed,
                  "the serial ports cannot be listed: " + std::generic_category().message(error));
  }
  Output output;
  for (const SerialDevice& device : devices) {
    if (arguments.given("json")) {
      JsonWriter json(output.text());
      json.beginObject().key("path").text(device.path).key("name").text(device.name);
      json.key("device").text(device.device).endObject();
      output.write("\n");
    } else {
      output.write(device.path + "  " + device.name);
      output.write(device.path == device.device ? "\n" : "  (" + device.device + ")\n");
    }
  }
  if (devices.empty() && !arguments.given("json"))
    output.write("No serial port found. 'ovka live --demo' works without one.\n");
  output.flush();
}

void runSettings(const Arguments& arguments) {
  IdleEngine idle;
  const std::string word = arguments.text("find").value_or("");
  std::size_t nameWidth = 0;
  const auto wanted = [&](const Setting& setting) {
    return (setting.writable || arguments.given("all")) &&
           (holds(setting.name, word) || holds(setting.meaning, word));
  };
  for (const Setting& setting : (*idle).settings().entries()) {
    if (wanted(setting)) nameWidth = std::max(nameWidth, shownName(setting).size());
  }
  Output output;
  for (const Setting& setting : (*idle).settings().entries()) {
    if (!wanted(setting)) continue;
    if (arguments.given("json")) {
      writeSettingJson(output.text(), setting);
    } else {
      writeSettingText(output.text(), setting, nameWidth);
    }
  }
  output.flush();
}

void runActions(const Arguments& arguments) {
  IdleEngine idle;
  Output output;
  for (const auto& [selector, action] : (*idle).actions().entries()) {
    if (arguments.given("json")) {
      JsonWriter json(output.text());
      json.beginObject().key("selector").text(selector).key("meaning").text(action.meaning);
      json.endObject();
      output.write("\n");
    } else {
      output.write(selector + "  " + action.meaning + "\n");
    }
  }
  output.flush();
}

}  // namespace ovka::terminal
