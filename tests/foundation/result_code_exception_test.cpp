#include "foundation/result_code_exception.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <type_traits>
#include <vector>

#include "foundation/result_code.h"

namespace tov {
namespace {

static_assert(std::is_base_of_v<ExceptionBase<ResultCodeException, Exception>, ResultCodeException>);
static_assert(
    std::is_base_of_v<ExceptionBase<CheckResultFailedException, ResultCodeException>, CheckResultFailedException>);
static_assert(std::is_base_of_v<ResultCodeException, CheckResultFailedException>);

constexpr source_location kHere{"a.cpp", 42};
constexpr std::uint32_t kIdentity = 0x2B193A6F;
constexpr int kAlreadyExists = result_code::FromBits(0x80010105);

TEST(ResultCodeException, ShowsItsResultCodeAsOneProperty) {
  const ResultCodeException failure(kHere, "m", kAlreadyExists);

  EXPECT_STREQ(failure.what(), "a.cpp(42): m. Properties:\ntov.result=0x80010105\nCall stack:\n");
  EXPECT_EQ(failure.ResultCode(), kAlreadyExists);
}

TEST(ResultCodeException, TheTextIsThatOfTheResultCode) {
  struct Row {
    std::uint32_t code;
    WideString text;
  };
  for (const Row& row : {Row{0x80010105, u"Already exists"}, Row{0x80000045, u"Access denied"}, Row{0, u"No error"},
                         Row{1, u"False"}, Row{0x80060004, u"Unknown result code"},
                         Row{0x8001010A, u"Unknown result code"}, Row{0x80020041, u"Unknown result code"}}) {
    EXPECT_TRUE(ResultCodeException(kHere, "m", result_code::FromBits(row.code)).Text() == row.text) << row.code;
  }
}

TEST(ResultCodeException, WithoutTheRightPropertyThereIsNoResultCode) {
  const std::vector<property_info> none{
      {"other", kIdentity, std::int32_t{5}},       {"tov.result", kIdentity + 1, std::int32_t{5}},
      {"tov.result", kIdentity, std::uint32_t{5}}, {"tov.result", kIdentity, std::int64_t{5}},
      {"tov.result", kIdentity, OpaqueValue{20}},  {"tov.result", kIdentity, NarrowString("5")},
  };
  for (const property_info& property : none) {
    const ResultCodeException failure(kHere, "m", {property});

    EXPECT_EQ(failure.ResultCode(), std::nullopt) << property.name;
    EXPECT_TRUE(failure.Text() == u"Exception has no result code") << property.name;
  }
}

TEST(ResultCodeException, TheFirstResultCounts) {
  const ResultCodeException failure(
      kHere, "m", {{"tov.result", kIdentity, std::int32_t{1}}, {"tov.result", kIdentity, std::int32_t{2}}});

  EXPECT_EQ(failure.ResultCode(), 1);
}

TEST(ResultCodeException, AResultOfAnotherTypeDoesNotHideALaterOne) {
  const ResultCodeException failure(kHere, "m",
                                    {{"tov.result", kIdentity, NarrowString("5")},
                                     {"tov.result", kIdentity + 1, std::int32_t{5}},
                                     {"tov.result", kIdentity, kAlreadyExists},
                                     {"os.result", 1, OpaqueValue{5}},
                                     {"os.result", 1, std::int32_t{EACCES}}});

  EXPECT_EQ(failure.ResultCode(), kAlreadyExists);
  EXPECT_EQ(failure.Text(), u"Already exists (Access denied)");
}

TEST(ResultCodeException, ASystemErrorIsAddedInBrackets) {
  for (const PropertyValue& error : {PropertyValue(std::int32_t{EACCES}), PropertyValue(std::uint32_t{EACCES}),
                                     PropertyValue(std::int64_t{EACCES}), PropertyValue(std::uint64_t{EACCES})}) {
    const ResultCodeException failure(kHere, "m",
                                      {{"tov.result", kIdentity, result_code::kNotFound}, {"os.result", 1, error}});

    EXPECT_TRUE(failure.Text() == u"Not found (Access denied)") << error.index();
  }
}

TEST(ResultCodeException, ASystemErrorThatNoSystemHasIsUnspecified) {
  for (const PropertyValue& error :
       {PropertyValue(std::int32_t{-EACCES}), PropertyValue(std::uint32_t{0x1'0000 + EACCES}),
        PropertyValue(std::int64_t{0x1'0000'0000 + EACCES}), PropertyValue(std::int64_t{EACCES - 0x1'0000'0000}),
        PropertyValue(std::uint64_t{0x1'0000'0000 + EACCES})}) {
    const ResultCodeException failure(kHere, "m",
                                      {{"tov.result", kIdentity, result_code::kNotFound}, {"os.result", 1, error}});

    EXPECT_EQ(failure.Text(), u"Not found (Unspecified platform error)") << error.index();
  }
}

TEST(ResultCodeException, ASystemErrorThatIsNoNumberIsLeftOut) {
  for (const PropertyValue& error :
       {PropertyValue(NarrowString("13")), PropertyValue(WideString(u"13")), PropertyValue(OpaqueValue{13})}) {
    const ResultCodeException failure(kHere, "m",
                                      {{"tov.result", kIdentity, result_code::kNotFound}, {"os.result", 1, error}});

    EXPECT_TRUE(failure.Text() == u"Not found") << error.index();
  }
}

TEST(ResultCodeException, AModulesOwnResultChangesNoText) {
  const ResultCodeException failure(
      kHere, "m", {{"tov.result", kIdentity, result_code::kNotFound}, {"os.module_result", 1, std::int32_t{5}}});

  EXPECT_TRUE(failure.Text() == u"Not found");
  EXPECT_STREQ(failure.what(),
               "a.cpp(42): m. Properties:\ntov.result=0x8000004c\nos.module_result=0x00000005\nCall stack:\n");
}

TEST(ResultCodeException, ThePropertiesAreNamedAsTheyAreEverywhere) {
  EXPECT_EQ(kResultProperty, "tov.result");
  EXPECT_EQ(kResultTypeIdentity, 723073647U);
  EXPECT_EQ(kSystemResultProperty, "os.result");
  EXPECT_EQ(kModuleResultProperty, "os.module_result");
}

TEST(CheckResultFailedException, IsCaughtAsWhatItIsMadeOf) {
  try {
    throw CheckResultFailedException(kHere, "m", kAlreadyExists);
  } catch (const tov::exception& caught) {
    EXPECT_STREQ(caught.what(), "a.cpp(42): m. Properties:\ntov.result=0x80010105\nCall stack:\n");
    const auto* failure = dynamic_cast<const ResultCodeException*>(&caught);
    ASSERT_NE(failure, nullptr);
    EXPECT_TRUE(failure->Text() == u"Already exists");
    EXPECT_EQ(failure->ResultCode(), kAlreadyExists);
  }
}

TEST(CheckResultFailedException, ACopySharesItsText) {
  const CheckResultFailedException first(kHere, "m", kAlreadyExists);
  CheckResultFailedException second({"b.cpp", 1}, "other", 0);

  second = first;

  EXPECT_EQ(second.what(), first.what());
  EXPECT_EQ(second.ResultCode(), kAlreadyExists);
}

}  // namespace
}  // namespace tov
