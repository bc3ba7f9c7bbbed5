#include "foundation/result_code.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace tov {
namespace {

constexpr std::string_view kUnknown = "Unknown result code";

struct CodeText {
  std::uint32_t code;
  std::string_view text;
};

constexpr auto kGeneralTexts = std::to_array<CodeText>({
    {0x00000000, "No error"},
    {0x00000001, "False"},
    {0x80000001, "Interface not supported"},
    {0x80000040, "Unexpected"},
    {0x80000041, "Out of memory"},
    {0x80000042, "Not supported"},
    {0x80000043, "Not implemented"},
    {0x80000044, "Buffer too small"},
    {0x80000045, "Access denied"},
    {0x80000046, "Invalid argument"},
    {0x80000047, "Bad cast"},
    {0x8000004A, "Not matched"},
    {0x8000004B, "Unspecified error"},
    {0x8000004C, "Not found"},
    {0x8000004D, "Found"},
    {0x8000004F, "Locked"},
    {0x80000050, "Not locked"},
    {0x80000051, "Operation cancelled"},
    {0x80000057, "Method not found"},
    {0x80000058, "Stack is empty"},
    {0x80000059, "Media error"},
    {0x8000005A, "Invalid signature"},
    {0x8000005B, "Invalid version"},
    {0x8000005C, "Invalid size"},
    {0x8000005D, "Invalid type"},
    {0x8000005E, "Out of range"},
    {0x80000062, "Out of space"},
    {0x80000063, "Not ready"},
    {0x80000064, "Less than"},
    {0x80000065, "More than"},
    {0x80000066, "Prohibited"},
    {0x80000067, "Already done"},
    {0x80000068, "Need reboot"},
    {0x80000069, "Bases corrupted"},
    {0x8000006A, "Invalid state"},
    {0x8000006B, "Not initialized"},
    {0x8000006C, "Insufficient resources"},
    {0x80000071, "Invalid result"},
    {0x80000072, "Unknown exception"},
    {0x80000076, "Meta information not found"},
    {0x80000077, "Numerical type overflow"},
    {0x80000078, "File is too big"},
    {0x80000079, "Trace level ok"},
    {0x8000007A, "Trace level prohibited"},
    {0x80000100, "Class not found"},
    {0x80000101, "Settings are required"},
    {0x80000102, "Unexpected settings"},
    {0x80000103, "Wrong settings type"},
    {0x80000104, "Wrong settings revision"},
    {0x80000105, "Settings not found"},
    {0x80000106, "Object is untrusted"},
    {0x80000150, "No current exception"},
    {0x80000151, "Exception has no result code"},
    {0x80000152, "Exception with successful result code"},
    {0x80000180, "Property not found"},
    {0x80000221, "Operation timeout"},
    {0x80000300, "Invalid symbol"},
    {0x80000301, "Non dec symbol"},
    {0x80000302, "Non hex symbol"},
    {0x80000303, "Non base64 symbol"},
    {0x80000310, "Syntax error"},
    {0x80000311, "GUID syntax error"},
    {0x80000312, "OID syntax error"},
    {0x80000313, "DateTime syntax error"},
});
static_assert(std::ranges::is_sorted(kGeneralTexts, {}, &CodeText::code), "looked up by binary search");

constexpr std::uint32_t kFirstPlatformCode = 0x80010100;

// Indexed by the distance from the first platform code; six numbers inside the block have no text.
constexpr auto kPlatformTexts = std::to_array<std::string_view>({
    "Unspecified platform error",
    "Invalid handle",
    "File not found",
    "Path not found",
    "Sharing violation",
    "Already exists",
    "Wait abandoned",
    "Symbol not found",
    "Sxs is incorrect",
    "Invalid path name",
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    kUnknown,
    "Cannot open an anonymous level security token",
    "Password is invalid",
    "Module not found",
    "System image bad signature",
    "Cloud file request aborted",
    "Memory mapping failed",
    "Network error",
    "System image bad format",
    "System shutdown in progress",
});
static_assert(kPlatformTexts.size() == 25);

struct SystemErrorCode {
  unsigned int error;
  std::uint32_t code;
};

// Several errno values share one code on purpose.
constexpr auto kSystemErrorCodes = std::to_array<SystemErrorCode>({
    {0, 0x00000000},
    {EPERM, 0x80000045},
    {ENOENT, 0x80010102},
    {EIO, 0x80000059},
    {ENOEXEC, 0x80010117},
    {EBADF, 0x80010101},
    {ENOMEM, 0x80000041},
    {EACCES, 0x80000045},
    {EBUSY, 0x8000004F},
    {EEXIST, 0x80010105},
    {ENOTDIR, 0x80010103},
    {EINVAL, 0x80000046},
    {ETXTBSY, 0x8000004F},
    {EFBIG, 0x80000078},
    {ENOSPC, 0x80000062},
    {ENAMETOOLONG, 0x8000005C},
    {ELOOP, 0x8000006A},
    {EOVERFLOW, 0x80000044},
});
static_assert(std::ranges::is_sorted(kSystemErrorCodes, {}, &SystemErrorCode::error), "looked up by binary search");

// Where the numbers without a code of their own are kept as they are, in the 16 bits that a facility has for them.
constexpr std::uint32_t kSystemErrorFacility = 0x80060000;
constexpr unsigned int kLastSystemError = 0xFFFF;

constexpr std::uint32_t Bits(int code) {
  return static_cast<std::uint32_t>(code);
}
constexpr std::uint32_t Facility(int code) {
  return (Bits(code) >> 16) & 0x7FFF;
}

std::string_view PlatformMessage(int code) {
  const std::uint32_t index = Bits(code) - kFirstPlatformCode;
  return index < kPlatformTexts.size() ? kPlatformTexts[index] : kUnknown;
}

}  // namespace

std::string_view rtl_result_code_message(int code) noexcept {
  const auto* entry = std::ranges::lower_bound(kGeneralTexts, Bits(code), {}, &CodeText::code);
  return entry != kGeneralTexts.end() && entry->code == Bits(code) ? entry->text : kUnknown;
}

// Each facility numbers its codes on its own, so the same lower half means something else in another one.
std::string_view ResultCodeMessage(int code) noexcept {
  switch (Facility(code)) {
    case 0:
      return rtl_result_code_message(code);
    case 1:
      return PlatformMessage(code);
    default:
      return kUnknown;
  }
}

int posix::ResultCodeFromSystemError(unsigned int error) noexcept {
  const auto* entry = std::ranges::lower_bound(kSystemErrorCodes, error, {}, &SystemErrorCode::error);
  if (entry != kSystemErrorCodes.end() && entry->error == error) {
    return result_code::FromBits(entry->code);
  }
  return result_code::FromBits(error <= kLastSystemError ? kSystemErrorFacility | error : kFirstPlatformCode);
}

int posix::ResultCodeFromErrno() noexcept {
  return ResultCodeFromSystemError(static_cast<unsigned int>(errno));
}

}  // namespace tov
