#include "doctor/examine/config/collector_options.h"

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "doctor/examine/config/json_file.h"

namespace doctor {
namespace {

constexpr auto kOptions =
    std::to_array<const char*>({"System.GC.HeapHardLimit", "System.GC.HeapHardLimitPercent", "System.GC.Name",
                                "System.GC.Path", "System.GC.RegionRange", "System.GC.RegionSize"});

nlohmann::json MemberOf(const nlohmann::json& object, const char* name) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  return found != object.end() ? *found : nlohmann::json();
}

}  // namespace

std::vector<std::pair<std::string, std::string>> CollectorOptions(const std::string& assembly) {
  FileReport file = LookAtFile(std::filesystem::path(assembly).replace_extension(".runtimeconfig.json"));
  const nlohmann::json properties = MemberOf(MemberOf(ReadObject(file), "runtimeOptions"), "configProperties");
  std::vector<std::pair<std::string, std::string>> options;
  for (const char* name : kOptions) {
    if (const nlohmann::json value = MemberOf(properties, name); !value.is_null()) {
      options.emplace_back(name, value.is_string() ? value.get<std::string>() : value.dump());
    }
  }
  return options;
}

}  // namespace doctor
