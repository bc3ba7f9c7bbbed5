// A runtimeconfig.json of any bytes: it is read without harm, and where nothing is wrong with it, what it names is what
// a plain look at its members finds.
#include "doctor/examine/config/runtime_config.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/support.h"

using nlohmann::json;

namespace {

using Named = std::vector<std::pair<std::string, std::string>>;

// The frameworks and their versions, the single one first.
Named NamedBy(const json& options) {
  Named named;
  const auto add = [&named](const json& framework) { named.emplace_back(framework["name"], framework["version"]); };
  if (options.contains("framework")) {
    add(options["framework"]);
  }
  if (options.contains("frameworks") && options["frameworks"].is_array()) {
    for (const json& framework : options["frameworks"]) {
      add(framework);
    }
  }
  return named;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Write(AsText(data, size));
  doctor::FileReport report = doctor::LookAtFile(file.Path());
  const json object = doctor::ReadObject(report);

  const doctor::RuntimeConfig config = doctor::ReadRuntimeConfig(file.Path(), {});

  Require(config.file.state == report.state && config.file.line == report.line);
  Require(report.state == doctor::FileState::kPresent || config.frameworks.empty());
  if (report.state == doctor::FileState::kPresent && config.fault == doctor::ConfigFault::kNone) {
    Named found;
    for (const auto& framework : config.frameworks) {
      found.emplace_back(framework.name, framework.version);
    }
    Require(found == NamedBy(object.at("runtimeOptions")));
  }
  return 0;
}
