// Exceptions that carry a result code.
#pragma once

#include <initializer_list>
#include <optional>

#include "foundation/exception.h"
#include "foundation/exception_context.h"
#include "foundation/strings.h"

namespace tov {

/// A failure with a result code, kept as the property "tov.result".
class ResultCodeException : public ExceptionBase<ResultCodeException, Exception> {
 public:
  ResultCodeException(const source_location& location, const char* message, int code);
  /// With the properties given and no others; without "tov.result" among them the exception has no result code.
  ResultCodeException(const source_location& location, const char* message,
                      std::initializer_list<property_info> properties);
  ResultCodeException(const ResultCodeException&) = default;
  ResultCodeException& operator=(const ResultCodeException&) = default;
  ~ResultCodeException() override;

  /// The result code: the first "tov.result" of the right type. Empty when there is none.
  std::optional<int> ResultCode() const noexcept;

  /// The text of the result code, with that of an "os.result" property (an errno value) in brackets behind it:
  /// "Not found (Access denied)". Without a result code: "Exception has no result code".
  WideString Text() const override;
};

/// Thrown when a checked result code is a failure.
class CheckResultFailedException : public ExceptionBase<CheckResultFailedException, ResultCodeException> {
 public:
  using ExceptionBase::ExceptionBase;
  CheckResultFailedException(const CheckResultFailedException&) = default;
  CheckResultFailedException& operator=(const CheckResultFailedException&) = default;
  ~CheckResultFailedException() override;
};

}  // namespace tov
