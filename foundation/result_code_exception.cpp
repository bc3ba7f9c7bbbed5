#include "foundation/result_code_exception.h"

#include <climits>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "foundation/result_code.h"
#include "foundation/utf.h"

namespace tov {
namespace {

using detail::PropertyRecord;

// The first value that `read` finds in a property of this name. A property of another type counts as absent, so it
// hides no later one.
template <typename Read, typename Value = std::invoke_result_t<Read, const PropertyRecord&>>
Value ReadProperty(std::span<const PropertyRecord> properties, std::string_view name, Read read) noexcept {
  for (const PropertyRecord& property : properties) {
    if (Value value = property.name == name ? read(property) : std::nullopt) {
      return value;
    }
  }
  return std::nullopt;
}

std::optional<int> ReadResult(const PropertyRecord& property) {
  const auto* code = std::get_if<std::int32_t>(&property.value);
  return code != nullptr && property.type_identity == kResultTypeIdentity ? std::optional<int>(*code) : std::nullopt;
}

// A number that cannot be an errno value becomes the largest one, for which there is a result code of its own; cut to
// its lower half, it could pass for an error that did not happen.
std::optional<unsigned int> ReadSystemError(const PropertyRecord& property) {
  return std::visit(
      [](const auto& value) -> std::optional<unsigned int> {
        if constexpr (std::is_integral_v<std::decay_t<decltype(value)>>) {
          return std::in_range<unsigned int>(value) ? static_cast<unsigned int>(value) : UINT_MAX;
        } else {
          return std::nullopt;
        }
      },
      property.value);
}

}  // namespace

ResultCodeException::ResultCodeException(const source_location& location, const char* message, int code)
    : ExceptionBase(location, message, WideString(), {{kResultProperty, kResultTypeIdentity, code}}) {}

ResultCodeException::ResultCodeException(const source_location& location, const char* message,
                                         std::initializer_list<property_info> properties)
    : ExceptionBase(location, message, WideString(), properties) {}

ResultCodeException::~ResultCodeException() = default;

std::optional<int> ResultCodeException::ResultCode() const noexcept {
  return ReadProperty(Properties(), kResultProperty, ReadResult);
}

WideString ResultCodeException::Text() const {
  WideString text = text::ToUtf16(ResultCodeMessage(ResultCode().value_or(result_code::kNoResultCode)));
  if (const auto error = ReadProperty(Properties(), kSystemResultProperty, ReadSystemError)) {
    text += u" (";
    text += text::ToUtf16(ResultCodeMessage(posix::ResultCodeFromSystemError(*error)));
    text += u")";
  }
  return text;
}

CheckResultFailedException::~CheckResultFailedException() = default;

}  // namespace tov
