#include "foundation/result_code_exception.h"

#include <type_traits>
#include <variant>

#include "foundation/result_code.h"
#include "foundation/utf.h"

namespace tov {
namespace {

std::optional<unsigned int> SystemError(const detail::PropertyRecord* property) {
  if (property == nullptr) {
    return std::nullopt;
  }
  return std::visit(
      [](const auto& value) -> std::optional<unsigned int> {
        if constexpr (std::is_integral_v<std::decay_t<decltype(value)>>) {
          return static_cast<unsigned int>(value);
        } else {
          return std::nullopt;
        }
      },
      property->value);
}

}  // namespace

ResultCodeException::ResultCodeException(const source_location& location, const char* message, int resultCode)
    : ExceptionBase(location, message, WideString(), {{kResultProperty, kResultTypeIdentity, resultCode}}) {}

ResultCodeException::ResultCodeException(const source_location& location, const char* message,
                                         std::initializer_list<property_info> properties)
    : ExceptionBase(location, message, WideString(), properties) {}

ResultCodeException::~ResultCodeException() = default;

std::optional<int> ResultCodeException::ResultCode() const noexcept {
  const detail::PropertyRecord* property = FindProperty(kResultProperty);
  if (property == nullptr || property->type_identity != kResultTypeIdentity) {
    return std::nullopt;
  }
  const auto* code = std::get_if<std::int32_t>(&property->value);
  return code != nullptr ? std::optional<int>(*code) : std::nullopt;
}

WideString ResultCodeException::Text() const {
  WideString text = text::ToUtf16(ResultCodeMessage(ResultCode().value_or(result_code::kNoResultCode)));
  if (const auto error = SystemError(FindProperty(kSystemResultProperty))) {
    text += u" (";
    text += text::ToUtf16(ResultCodeMessage(posix::ResultCodeFromSystemError(*error)));
    text += u")";
  }
  return text;
}

CheckResultFailedException::~CheckResultFailedException() = default;

}  // namespace tov
