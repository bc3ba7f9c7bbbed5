#include "foundation/result_code.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace tov {
namespace {

using Texts = std::map<std::int64_t, std::string_view>;

// In decimal, as the product's own table is in hexadecimal.
const Texts kGeneral = {
    {0, "No error"},
    {1, "False"},
    {-2147483647, "Interface not supported"},
    {-2147483584, "Unexpected"},
    {-2147483583, "Out of memory"},
    {-2147483582, "Not supported"},
    {-2147483581, "Not implemented"},
    {-2147483580, "Buffer too small"},
    {-2147483579, "Access denied"},
    {-2147483578, "Invalid argument"},
    {-2147483577, "Bad cast"},
    {-2147483574, "Not matched"},
    {-2147483573, "Unspecified error"},
    {-2147483572, "Not found"},
    {-2147483571, "Found"},
    {-2147483569, "Locked"},
    {-2147483568, "Not locked"},
    {-2147483567, "Operation cancelled"},
    {-2147483561, "Method not found"},
    {-2147483560, "Stack is empty"},
    {-2147483559, "Media error"},
    {-2147483558, "Invalid signature"},
    {-2147483557, "Invalid version"},
    {-2147483556, "Invalid size"},
    {-2147483555, "Invalid type"},
    {-2147483554, "Out of range"},
    {-2147483550, "Out of space"},
    {-2147483549, "Not ready"},
    {-2147483548, "Less than"},
    {-2147483547, "More than"},
    {-2147483546, "Prohibited"},
    {-2147483545, "Already done"},
    {-2147483544, "Need reboot"},
    {-2147483543, "Bases corrupted"},
    {-2147483542, "Invalid state"},
    {-2147483541, "Not initialized"},
    {-2147483540, "Insufficient resources"},
    {-2147483535, "Invalid result"},
    {-2147483534, "Unknown exception"},
    {-2147483530, "Meta information not found"},
    {-2147483529, "Numerical type overflow"},
    {-2147483528, "File is too big"},
    {-2147483527, "Trace level ok"},
    {-2147483526, "Trace level prohibited"},
    {-2147483392, "Class not found"},
    {-2147483391, "Settings are required"},
    {-2147483390, "Unexpected settings"},
    {-2147483389, "Wrong settings type"},
    {-2147483388, "Wrong settings revision"},
    {-2147483387, "Settings not found"},
    {-2147483386, "Object is untrusted"},
    {-2147483312, "No current exception"},
    {-2147483311, "Exception has no result code"},
    {-2147483310, "Exception with successful result code"},
    {-2147483264, "Property not found"},
    {-2147483103, "Operation timeout"},
    {-2147482880, "Invalid symbol"},
    {-2147482879, "Non dec symbol"},
    {-2147482878, "Non hex symbol"},
    {-2147482877, "Non base64 symbol"},
    {-2147482864, "Syntax error"},
    {-2147482863, "GUID syntax error"},
    {-2147482862, "OID syntax error"},
    {-2147482861, "DateTime syntax error"},
};

const Texts kPlatform = {
    {-2147417856, "Unspecified platform error"},
    {-2147417855, "Invalid handle"},
    {-2147417854, "File not found"},
    {-2147417853, "Path not found"},
    {-2147417852, "Sharing violation"},
    {-2147417851, "Already exists"},
    {-2147417850, "Wait abandoned"},
    {-2147417849, "Symbol not found"},
    {-2147417848, "Sxs is incorrect"},
    {-2147417847, "Invalid path name"},
    {-2147417840, "Cannot open an anonymous level security token"},
    {-2147417839, "Password is invalid"},
    {-2147417838, "Module not found"},
    {-2147417837, "System image bad signature"},
    {-2147417836, "Cloud file request aborted"},
    {-2147417835, "Memory mapping failed"},
    {-2147417834, "Network error"},
    {-2147417833, "System image bad format"},
    {-2147417832, "System shutdown in progress"},
};

struct ErrorRow {
  unsigned int error;
  const char* name;
  int code;
};

const std::vector<ErrorRow> kErrors = {
    {0, "none", 0},
    {1, "EPERM", -2147483579},
    {2, "ENOENT", -2147417854},
    {5, "EIO", -2147483559},
    {8, "ENOEXEC", -2147417833},
    {9, "EBADF", -2147417855},
    {12, "ENOMEM", -2147483583},
    {13, "EACCES", -2147483579},
    {16, "EBUSY", -2147483569},
    {17, "EEXIST", -2147417851},
    {20, "ENOTDIR", -2147417853},
    {22, "EINVAL", -2147483578},
    {26, "ETXTBSY", -2147483569},
    {27, "EFBIG", -2147483528},
    {28, "ENOSPC", -2147483550},
    {36, "ENAMETOOLONG", -2147483556},
    {40, "ELOOP", -2147483542},
    {75, "EOVERFLOW", -2147483580},
};

constexpr std::string_view kUnknown = "Unknown result code";

std::string_view Expected(const Texts& texts, std::int64_t code) {
  const auto found = texts.find(code);
  return found != texts.end() ? found->second : kUnknown;
}

std::string_view ExpectedOfAnyFacility(std::int64_t code) {
  return kGeneral.contains(code) ? Expected(kGeneral, code) : Expected(kPlatform, code);
}

// The two tables together, one below and one above each entry, and both ends of the numbers.
std::vector<int> CodesAndTheirNeighbours() {
  std::vector<int> codes{INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1, -1, 0, 1, 2, 3};
  for (const Texts& texts : {kGeneral, kPlatform}) {
    for (const auto& [code, text] : texts) {
      for (const std::int64_t near : {code - 1, code, code + 1}) {
        codes.push_back(static_cast<int>(near));
      }
    }
  }
  return codes;
}

TEST(ResultCode, TheTestsOwnTablesAreWhole) {
  EXPECT_EQ(kGeneral.size(), 64U);
  EXPECT_EQ(kPlatform.size(), 19U);
  EXPECT_EQ(kErrors.size(), 18U);
}

TEST(ResultCode, EveryListedCodeHasItsTextAndItsNeighboursTheirs) {
  for (const int code : CodesAndTheirNeighbours()) {
    EXPECT_EQ(rtl_result_code_message(code), Expected(kGeneral, code)) << "code " << code;
    EXPECT_EQ(ResultCodeMessage(code), ExpectedOfAnyFacility(code)) << "code " << code;
  }
}

// Bits 16 to 31 decide which table is asked. The four combinations that can lead to a text are tried with all their
// numbers, all the others at both ends and where the tables have their entries: no look-up distinguishes two numbers
// between which neither table has an entry.
TEST(ResultCode, EveryNumberOfTheTwoFacilitiesWithTextsIsRight) {
  for (const std::uint32_t block : {0x00000000U, 0x00010000U, 0x80000000U, 0x80010000U}) {
    for (std::uint32_t number = 0; number <= 0xFFFF; ++number) {
      const int code = result_code::FromBits(block | number);
      ASSERT_EQ(rtl_result_code_message(code), Expected(kGeneral, code)) << "code " << code;
      ASSERT_EQ(ResultCodeMessage(code), ExpectedOfAnyFacility(code)) << "code " << code;
    }
  }
}

TEST(ResultCode, NoOtherFacilityHasTexts) {
  for (std::uint32_t facility = 2; facility <= 0x7FFF; ++facility) {
    for (const std::uint32_t sign : {0U, 0x80000000U}) {
      for (const std::uint32_t number : {0U, 1U, 2U, 0x41U, 0x100U, 0x118U, 0x119U, 0x313U, 0xFFFFU}) {
        const int code = result_code::FromBits(sign | facility << 16 | number);
        ASSERT_EQ(rtl_result_code_message(code), kUnknown) << "code " << code;
        ASSERT_EQ(ResultCodeMessage(code), kUnknown) << "code " << code;
      }
    }
  }
}

TEST(ResultCode, ZeroAndOneHaveTextsAndTwoHasNone) {
  EXPECT_EQ(rtl_result_code_message(0), "No error");
  EXPECT_EQ(rtl_result_code_message(1), "False");
  EXPECT_EQ(rtl_result_code_message(2), kUnknown);
}

TEST(ResultCode, GapsBetweenGeneralCodesAreUnknown) {
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80000041)), "Out of memory");
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80000048)), kUnknown);
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80000049)), kUnknown);
}

TEST(ResultCode, ThePlatformBlockHasAHoleAndAnEnd) {
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80010109)), "Invalid path name");
  for (std::uint32_t hole = 0x8001010A; hole <= 0x8001010F; ++hole) {
    EXPECT_EQ(ResultCodeMessage(result_code::FromBits(hole)), kUnknown) << hole;
  }
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80010110)), "Cannot open an anonymous level security token");
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80010119)), kUnknown);
}

TEST(ResultCode, TheGeneralLookUpKnowsNoPlatformCode) {
  const int code = result_code::FromBits(0x80010101);

  EXPECT_EQ(rtl_result_code_message(code), kUnknown);
  EXPECT_EQ(ResultCodeMessage(code), "Invalid handle");
}

TEST(ResultCode, ARawErrorNumberHasNoTextButItsMappingHas) {
  EXPECT_EQ(ResultCodeMessage(result_code::FromBits(0x80060002)), kUnknown);
  EXPECT_EQ(posix::ResultCodeFromSystemError(2), result_code::FromBits(0x80010102));
  EXPECT_EQ(ResultCodeMessage(posix::ResultCodeFromSystemError(2)), "File not found");
}

TEST(ResultCode, ListedErrorNumbersHaveTheirCodes) {
  for (const ErrorRow& row : kErrors) {
    EXPECT_EQ(posix::ResultCodeFromSystemError(row.error), row.code) << row.name;
    EXPECT_NE(ResultCodeMessage(row.code), kUnknown) << row.name;
  }
}

TEST(ResultCode, TheErrorNumbersAreThoseOfThisSystem) {
  const std::vector<int> system{0,      EPERM,   ENOENT, EIO,     ENOEXEC, EBADF,  ENOMEM,       EACCES, EBUSY,
                                EEXIST, ENOTDIR, EINVAL, ETXTBSY, EFBIG,   ENOSPC, ENAMETOOLONG, ELOOP,  EOVERFLOW};

  ASSERT_EQ(system.size(), kErrors.size());
  for (std::size_t i = 0; i < system.size(); ++i) {
    EXPECT_EQ(static_cast<unsigned int>(system[i]), kErrors[i].error) << kErrors[i].name;
  }
}

TEST(ResultCode, EveryOtherErrorNumberUpTo65535KeepsItsNumber) {
  std::map<unsigned int, int> listed;
  for (const ErrorRow& row : kErrors) {
    listed[row.error] = row.code;
  }

  for (unsigned int error = 0; error <= 65535; ++error) {
    const int expected =
        listed.contains(error) ? listed[error] : static_cast<int>(-2147090432 + static_cast<int>(error));
    ASSERT_EQ(posix::ResultCodeFromSystemError(error), expected) << "errno " << error;
  }
}

TEST(ResultCode, AnErrorNumberAbove65535IsUnspecified) {
  EXPECT_EQ(posix::ResultCodeFromSystemError(65535), result_code::FromBits(0x8006FFFF));
  for (const unsigned int error : {65536U, 65537U, 65536U + 2U, 0x10002U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(posix::ResultCodeFromSystemError(error), result_code::FromBits(0x80010100)) << "errno " << error;
  }
}

TEST(ResultCode, TheLastErrorNumberOfTheSystemHasItsCode) {
  for (const int error : {ENOENT, EINTR, 0}) {
    errno = error;
    EXPECT_EQ(posix::ResultCodeFromErrno(), posix::ResultCodeFromSystemError(static_cast<unsigned int>(error)));
  }
}

TEST(ResultCode, OnlyNegativeCodesAreFailures) {
  EXPECT_TRUE(result_code::IsFailure(INT_MIN));
  EXPECT_TRUE(result_code::IsFailure(-1));
  EXPECT_FALSE(result_code::IsFailure(0));
  EXPECT_FALSE(result_code::IsFailure(1));
  EXPECT_FALSE(result_code::IsFailure(INT_MAX));
}

TEST(ResultCode, TheNamedCodesHaveTheirTexts) {
  EXPECT_EQ(ResultCodeMessage(result_code::kNoError), "No error");
  EXPECT_EQ(ResultCodeMessage(result_code::kOutOfMemory), "Out of memory");
  EXPECT_EQ(ResultCodeMessage(result_code::kInvalidArgument), "Invalid argument");
  EXPECT_EQ(ResultCodeMessage(result_code::kUnspecifiedError), "Unspecified error");
  EXPECT_EQ(ResultCodeMessage(result_code::kNotFound), "Not found");
  EXPECT_EQ(ResultCodeMessage(result_code::kNoResultCode), "Exception has no result code");
}

}  // namespace
}  // namespace tov
