#include "netloader/utils/current_time.h"

#include <array>
#include <ctime>
#include <stdexcept>

namespace netloader::utils {
namespace {

std::string Failure(bool throwOnError, const char* reason) {
  if (throwOnError) {
    throw std::runtime_error(reason);
  }
  return {};
}

}  // namespace

std::string GetCurrentTimeString(bool throwOnError) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (::localtime_r(&now, &local) == nullptr) {
    return Failure(throwOnError, "Failed to get current time ...");
  }
  std::array<char, 99> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%F %T", &local);
  if (length == 0) {
    return Failure(throwOnError, "Failed to convert current time to string ...");
  }
  return {text.data(), length};
}

}  // namespace netloader::utils
