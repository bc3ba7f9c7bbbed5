// A check of JSON against a JSON Schema, as far as the doctor's own schema goes.
#pragma once

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <string_view>

#include "fuzz/support.h"

/// One schema with its definitions.
class Schema {
 public:
  explicit Schema(nlohmann::json root) : root_(std::move(root)) {}

  /// Whether the value is as the schema says. Ends the process when the schema says something unknown here.
  bool Accepts(const nlohmann::json& value) const { return Accepts(root_, value); }

 private:
  using json = nlohmann::json;

  bool Accepts(const json& schema, const json& value) const {
    return std::ranges::all_of(schema.items(), [&](const auto& rule) { return Keeps(rule.key(), schema, value); });
  }

  bool Keeps(std::string_view rule, const json& schema, const json& value) const {
    const json& wanted = schema[rule];
    if (rule == "$ref") {
      return Accepts(root_[json::json_pointer(wanted.get<std::string>().substr(1))], value);
    }
    if (rule == "anyOf") {
      return std::ranges::any_of(wanted, [&](const json& each) { return Accepts(each, value); });
    }
    if (rule == "items") {
      return !value.is_array() || std::ranges::all_of(value, [&](const json& each) { return Accepts(wanted, each); });
    }
    if (rule == "properties") {
      return std::ranges::all_of(wanted.items(), [&](const auto& property) {
        return !value.contains(property.key()) || Accepts(property.value(), value[property.key()]);
      });
    }
    return KeepsByItself(rule, schema, value);
  }

  static bool KeepsByItself(std::string_view rule, const json& schema, const json& value) {
    const json& wanted = schema[rule];
    if (rule == "type") {
      return wanted.is_array() ? std::ranges::any_of(wanted, [&](const json& each) { return IsA(each, value); })
                               : IsA(wanted, value);
    }
    if (rule == "const" || rule == "enum") {
      return rule == "const" ? value == wanted : std::ranges::find(wanted, value) != wanted.end();
    }
    if (rule == "required") {
      return std::ranges::all_of(wanted, [&](const json& name) { return value.contains(name.get<std::string>()); });
    }
    if (rule == "additionalProperties") {
      return std::ranges::all_of(value.items(),
                                 [&](const auto& each) { return schema["properties"].contains(each.key()); });
    }
    if (rule == "minimum" || rule == "maximum") {
      return !value.is_number() || (rule == "minimum" ? value >= wanted : value <= wanted);
    }
    if (rule == "pattern") {
      return !value.is_string() || std::regex_search(value.get<std::string>(), Compiled(wanted));
    }
    Require(rule == "$schema" || rule == "$defs" || rule == "title" || rule == "description");
    return true;
  }

  // Each is compiled once, which takes longer than to use it.
  static const std::regex& Compiled(const std::string& pattern) {
    static std::map<std::string, std::regex> compiled;
    return compiled.try_emplace(pattern, pattern).first->second;
  }

  static bool IsA(const std::string& type, const json& value) {
    return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
           (type == "string" && value.is_string()) || (type == "boolean" && value.is_boolean()) ||
           (type == "null" && value.is_null()) || (type == "integer" && value.is_number_integer()) ||
           (type == "number" && value.is_number());
  }

  json root_;
};
