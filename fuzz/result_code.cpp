// Any numbers as result codes and as the system's error numbers, against tables of their own.
#include "foundation/result_code.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>

#include "fuzz/support.h"

namespace {

using Texts = std::map<std::uint32_t, std::string_view>;

constexpr std::string_view kUnknown = "Unknown result code";

// clang-format off
const Texts kGeneralTexts = {
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
};
const Texts kPlatformTexts = {
    {0x80010100, "Unspecified platform error"},
    {0x80010101, "Invalid handle"},
    {0x80010102, "File not found"},
    {0x80010103, "Path not found"},
    {0x80010104, "Sharing violation"},
    {0x80010105, "Already exists"},
    {0x80010106, "Wait abandoned"},
    {0x80010107, "Symbol not found"},
    {0x80010108, "Sxs is incorrect"},
    {0x80010109, "Invalid path name"},
    {0x80010110, "Cannot open an anonymous level security token"},
    {0x80010111, "Password is invalid"},
    {0x80010112, "Module not found"},
    {0x80010113, "System image bad signature"},
    {0x80010114, "Cloud file request aborted"},
    {0x80010115, "Memory mapping failed"},
    {0x80010116, "Network error"},
    {0x80010117, "System image bad format"},
    {0x80010118, "System shutdown in progress"},
};
// clang-format on

std::uint32_t CodeOfError(std::uint32_t error) {
  switch (error) {
    case 0:
      return 0;
    case EPERM:
    case EACCES:
      return 0x80000045;
    case ENOENT:
      return 0x80010102;
    case EIO:
      return 0x80000059;
    case ENOEXEC:
      return 0x80010117;
    case EBADF:
      return 0x80010101;
    case ENOMEM:
      return 0x80000041;
    case EBUSY:
    case ETXTBSY:
      return 0x8000004F;
    case EEXIST:
      return 0x80010105;
    case ENOTDIR:
      return 0x80010103;
    case EINVAL:
      return 0x80000046;
    case EFBIG:
      return 0x80000078;
    case ENOSPC:
      return 0x80000062;
    case ENAMETOOLONG:
      return 0x8000005C;
    case ELOOP:
      return 0x8000006A;
    case EOVERFLOW:
      return 0x80000044;
    default:
      return error < 65536 ? 0x80060000 + error : 0x80010100;
  }
}

std::string_view TextIn(const Texts& texts, std::uint32_t code) {
  const auto found = texts.find(code);
  return found != texts.end() ? found->second : kUnknown;
}

void CheckCode(std::uint32_t code) {
  const int number = tov::result_code::FromBits(code);
  const std::uint32_t facility = code / 0x10000 % 0x8000;
  const std::string_view text = facility == 0   ? TextIn(kGeneralTexts, code)
                                : facility == 1 ? TextIn(kPlatformTexts, code)
                                                : kUnknown;
  Require(tov::ResultCodeMessage(number) == text);
  Require(tov::rtl_result_code_message(number) == (facility == 0 ? text : kUnknown));
  Require(tov::result_code::IsFailure(number) == (code >= 0x80000000));
}

void CheckError(std::uint32_t error) {
  const int code = tov::result_code::FromBits(CodeOfError(error));
  Require(tov::posix::ResultCodeFromSystemError(error) == code);
  errno = static_cast<int>(error);
  Require(tov::posix::ResultCodeFromErrno() == code);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (std::uint32_t number = 0; size >= sizeof(number); data += sizeof(number), size -= sizeof(number)) {
    std::memcpy(&number, data, sizeof(number));
    CheckCode(number);
    CheckError(number);
    CheckError(number % 0x20000);
    // The block of each facility, with its gaps and what is next to it.
    CheckCode(0x80000000 + number % 0x400);
    CheckCode(0x80010000 + number % 0x200);
  }
  return 0;
}
