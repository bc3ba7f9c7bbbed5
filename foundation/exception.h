// The root of the foundation's exceptions.
#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <span>

#include "foundation/exception_context.h"
#include "foundation/strings.h"

namespace tov {

/// An exception with a source location, a message and typed properties. Copies share one context, so copying is cheap
/// and never throws.
class exception : public std::exception {
 public:
  /// Without a context: `what()` is "Unknown exception".
  exception() noexcept = default;
  /// Copies the message and the properties, in their order. Throws `std::bad_alloc`.
  exception(const source_location& location, const char* message, std::initializer_list<property_info> properties = {});
  exception(const exception&) noexcept = default;
  exception& operator=(const exception&) noexcept = default;
  ~exception() override;

  /// The whole text, composed on the first call and kept for all copies; the message alone when composing fails. Lives
  /// as long as any copy. Not synchronised.
  const char* what() const noexcept override;

 protected:
  /// The properties in the order in which they were given; none without a context. They live as long as any copy.
  std::span<const detail::PropertyRecord> Properties() const noexcept;

 private:
  const char* file_ = nullptr;
  std::uint32_t line_ = 0;
  detail::ContextPointer context_;
};

/// An exception with a text of its own, in UTF-16.
class Exception : public exception {
 public:
  Exception() = default;
  Exception(const source_location& location, const char* message, WideString text = {},
            std::initializer_list<property_info> properties = {});
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  /// The text that was given, empty without one.
  virtual WideString Text() const;

 private:
  WideString text_;
};

/// Gives `Derived` a type of its own between it and `Base`; adds nothing else.
template <typename Derived, typename Base>
class ExceptionBase : public Base {
 public:
  using Base::Base;
};

}  // namespace tov
