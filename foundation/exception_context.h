// What the copies of one exception share: its message, properties and call stack.
#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/strings.h"

namespace tov {

/// Where an exception was thrown. `file` is static text, not owned.
struct source_location {
  const char* file;
  std::uint32_t line;
};

/// A value of a type that has no text form; only its type code is printed.
struct OpaqueValue {
  std::uint32_t type_code;
};

/// The value of a property. The alternative decides the type code: 20, 21, 22, 23, 7, 8, or the opaque value's own.
using PropertyValue =
    std::variant<std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, NarrowString, WideString, OpaqueValue>;

/// A typed property as the thrower gives it.
struct property_info {
  std::string_view name;
  std::uint32_t type_identity;
  PropertyValue value;
};

/// The property that carries the result code, and the identity of its type, `std::int32_t`.
inline constexpr std::string_view kResultProperty = "tov.result";
inline constexpr std::uint32_t kResultTypeIdentity = 723073647;
/// An operating-system error number, and a module's own result.
inline constexpr std::string_view kSystemResultProperty = "os.result";
inline constexpr std::string_view kModuleResultProperty = "os.module_result";

namespace detail {

/// A loaded module, for naming the addresses of a call stack.
struct ModuleRecord {
  std::string module_name;
  std::string symbol_name;
  std::uint64_t base;
  std::uint64_t size;
};

/// A property as the exception keeps it.
struct PropertyRecord {
  NarrowString name;
  std::uint32_t type_code;
  std::uint32_t type_identity;
  PropertyValue value;
};

/// The shared block. Only the count is safe to touch from several threads.
struct ExceptionContext {
  NarrowString message;
  NarrowString what_text;                 ///< Empty until it was asked for.
  std::vector<std::uint64_t> call_stack;  ///< Return addresses, innermost first. Not captured by this launcher.
  std::vector<ModuleRecord> modules;      ///< Sorted by base.
  std::vector<PropertyRecord> properties;
  NarrowString reserved;
  std::atomic<std::uint32_t> references{1};
};

/// One owner's share of a context; the last owner to go destroys it. Null when there is no context.
class ContextPointer {
 public:
  ContextPointer() noexcept = default;
  /// A fresh context with a copy of everything given. Throws `std::bad_alloc`.
  ContextPointer(const char* message, std::initializer_list<property_info> properties);
  ContextPointer(const ContextPointer& other) noexcept;
  ContextPointer& operator=(const ContextPointer& other) noexcept;
  ~ContextPointer();

  ExceptionContext* Get() const noexcept { return context_; }

 private:
  ExceptionContext* context_ = nullptr;
};

/// The text of an exception thrown at `location`: "file(line): message.", the properties, the call stack.
NarrowString ComposeWhat(const source_location& location, const ExceptionContext& context);

}  // namespace detail
}  // namespace tov
