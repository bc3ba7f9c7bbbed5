// Result codes: signed 32-bit integers whose bit 31 marks failure and whose bits 16 to 30 name the facility.
#pragma once

#include <cstdint>
#include <string_view>

namespace tov {

namespace result_code {

/// The code with this bit pattern.
constexpr int FromBits(std::uint32_t bits) {
  return static_cast<int>(bits);
}

inline constexpr int kNoError = 0;
inline constexpr int kOutOfMemory = FromBits(0x80000041);
inline constexpr int kInvalidArgument = FromBits(0x80000046);
inline constexpr int kUnspecifiedError = FromBits(0x8000004B);
inline constexpr int kNotFound = FromBits(0x8000004C);
inline constexpr int kNoResultCode = FromBits(0x80000151);

/// True for the codes that report a failure.
constexpr bool IsFailure(int code) {
  return code < 0;
}

}  // namespace result_code

/// The text of a general code (facility 0), static and ASCII. Codes without one, those of other facilities included,
/// give "Unknown result code".
std::string_view rtl_result_code_message(int code) noexcept;

/// The text of any code: general codes, platform codes (facility 1), "Unknown result code" for the rest.
std::string_view ResultCodeMessage(int code) noexcept;

namespace posix {

/// The result code of an errno value: one of the listed codes, else facility 6 with the value itself, else, above
/// 65535, "Unspecified platform error". 0 is no failure and gives 0.
int ResultCodeFromSystemError(unsigned int error) noexcept;

/// The result code of what the last failed system call left in `errno`.
[[nodiscard]] int ResultCodeFromErrno() noexcept;

}  // namespace posix
}  // namespace tov
