#include "foundation/exception.h"

#include <utility>

namespace tov {

exception::exception(const source_location& location, const char* message,
                     std::initializer_list<property_info> properties)
    : file_(location.file), line_(location.line), context_(message, properties) {}

exception::~exception() = default;

const char* exception::what() const noexcept {
  detail::ExceptionContext* context = context_.Get();
  if (context == nullptr) {
    return "Unknown exception";
  }
  try {
    if (context->what_text.empty()) {
      context->what_text = detail::ComposeWhat({file_, line_}, *context);
    }
    return context->what_text.c_str();
  } catch (...) {  // For want of memory, as a rule. The next call tries again.
    return context->message.c_str();
  }
}

std::span<const detail::PropertyRecord> exception::Properties() const noexcept {
  const detail::ExceptionContext* context = context_.Get();
  if (context == nullptr) {
    return {};
  }
  return context->properties;
}

Exception::Exception(const source_location& location, const char* message, WideString text,
                     std::initializer_list<property_info> properties)
    : exception(location, message, properties), text_(std::move(text)) {}

Exception::~Exception() = default;

WideString Exception::Text() const {
  // The allocator is named, as for a plain copy it may choose another one.
  return {text_, text_.get_allocator()};
}

}  // namespace tov
