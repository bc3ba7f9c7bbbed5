#include "doctor/examine/config/dependencies.h"

#include <array>
#include <nlohmann/json.hpp>

namespace doctor {
namespace {

using nlohmann::json;

constexpr auto kTextsOfLibraries = std::to_array<const char*>({"type", "sha512"});

bool HasText(const json& object, const char* name) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  return object.is_object() && found != object.end() && found->is_string();
}

bool HasTarget(const json& object) {
  const auto target = object.find("runtimeTarget");
  return target != object.end() && (target->is_string() || HasText(*target, "name"));
}

std::string WantingOf(const json& object) {
  if (!HasTarget(object)) {
    return "runtimeTarget";
  }
  const json libraries = object.value("libraries", json::object());
  for (const auto& [name, library] : libraries.items()) {
    for (const char* text : kTextsOfLibraries) {
      if (!HasText(library, text)) {
        return std::string(text) + " of " + name;
      }
    }
  }
  return {};
}

}  // namespace

Dependencies ReadDependencies(const std::string& path) {
  Dependencies read{LookAtFile(path)};
  const json object = ReadObject(read.file);
  if (read.file.state == FileState::kPresent) {
    read.wanting = WantingOf(object);
  }
  return read;
}

}  // namespace doctor
