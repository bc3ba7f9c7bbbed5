// What the application's configuration asks of the garbage collector.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace doctor {

/// The options of the assembly's runtimeconfig.json that limit or replace the collector, with their values as they
/// stand there. None when the file cannot be read.
std::vector<std::pair<std::string, std::string>> CollectorOptions(const std::string& assembly);

}  // namespace doctor
