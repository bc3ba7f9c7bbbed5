#include "foundation/exception_context.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <locale>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tov::detail {
namespace {

// While it lives, the global locale of C++ puts a comma between every three digits.
class GroupedDigits {
 public:
  GroupedDigits() : before_(std::locale::global(std::locale(std::locale::classic(), &punctuation_))) {}
  GroupedDigits(const GroupedDigits&) = delete;
  GroupedDigits& operator=(const GroupedDigits&) = delete;
  ~GroupedDigits() { std::locale::global(before_); }

 private:
  struct Punctuation : std::numpunct<char> {
    Punctuation() : numpunct(1) {}  // Not the locale's to free.
    [[nodiscard]] char do_thousands_sep() const override { return ','; }
    [[nodiscard]] std::string do_grouping() const override { return "\3"; }
  };

  Punctuation punctuation_;
  std::locale before_;
};

std::string Composed(const ExceptionContext& context) {
  return ComposeWhat({"a.cpp", 42}, context);
}

TEST(ExceptionContext, WithoutPropertiesABlankLeadsToTheCallStack) {
  const ContextPointer context("m", {});

  EXPECT_EQ(Composed(*context.Get()), "a.cpp(42): m. Call stack:\n");
}

TEST(ExceptionContext, EveryTypeOfPropertyIsWrittenByItsTypeCode) {
  struct Row {
    PropertyValue value;
    std::uint32_t type_code;
    std::string text;
  };
  const std::vector<Row> rows{
      {std::int32_t{-2147417851}, 20, "0x80010105"},
      {std::int32_t{0}, 20, "0x00000000"},
      {std::int32_t{-1}, 20, "0xffffffff"},
      {std::uint32_t{171}, 21, "0x000000ab"},
      {std::uint32_t{0xFFFFFFFF}, 21, "0xffffffff"},
      {std::int64_t{-1}, 22, "0xffffffffffffffff"},
      {std::int64_t{10}, 22, "0x000000000000000a"},
      {std::uint64_t{0x123456789ABCDEF0}, 23, "0x123456789abcdef0"},
      {NarrowString("bytes \xC3\xA9"), 7, "bytes \xC3\xA9"},
      {NarrowString(), 7, ""},
      {WideString(u"wide \u00E9 \U0001F600"), 8, "wide \xC3\xA9 \xF0\x9F\x98\x80"},
      {WideString{u'a', char16_t{0xD800}}, 8, ""},
      {OpaqueValue{0}, 0, "<typeid=0>"},
      {OpaqueValue{99}, 99, "<typeid=99>"},
      {OpaqueValue{4294967295}, 4294967295, "<typeid=4294967295>"},
  };
  for (const Row& row : rows) {
    const ContextPointer context("m", {{"name", 7, row.value}});

    EXPECT_EQ(context.Get()->properties.at(0).type_code, row.type_code) << row.text;
    EXPECT_EQ(Composed(*context.Get()), "a.cpp(42): m. Properties:\nname=" + row.text + "\nCall stack:\n");
  }
}

TEST(ExceptionContext, PropertiesKeepTheirOrderAndAllTheyWereGiven) {
  const ContextPointer context("m",
                               {{"b", 1, std::uint32_t{255}}, {"a", 2, OpaqueValue{10}}, {"b", 3, NarrowString("x")}});

  const auto& properties = context.Get()->properties;
  ASSERT_EQ(properties.size(), 3U);
  EXPECT_EQ(properties[1].name, "a");
  EXPECT_EQ(properties[1].type_identity, 2U);
  EXPECT_EQ(Composed(*context.Get()), "a.cpp(42): m. Properties:\nb=0x000000ff\na=<typeid=10>\nb=x\nCall stack:\n");
}

TEST(ExceptionContext, TheMessageEndsAtItsNul) {
  const ContextPointer context("shown\0hidden", {});

  EXPECT_EQ(context.Get()->message, "shown");
}

TEST(ExceptionContext, ALocationWithoutAFileHasNoName) {
  const ContextPointer context("m", {});

  EXPECT_EQ(ComposeWhat({nullptr, 7}, *context.Get()), "(7): m. Call stack:\n");
}

TEST(ExceptionContext, AddressesAreNamedByTheModuleTheyFallInto) {
  const ContextPointer context("m", {});
  ExceptionContext& shared = *context.Get();
  shared.modules = {{"one.so", "f", 0x1000, 0x100}, {"two.so", "g", 0x2000, 0}, {"three.so", "h", 0x3000, 0x1000}};
  shared.call_stack = {0x1000, 0x10FF, 0x1100, 0x1101, 0xFFF, 0x2000, 0x2001, 0x3ABC, 0x4000, 0x4001, 0, UINT64_MAX};

  EXPECT_EQ(Composed(shared),
            "a.cpp(42): m. Call stack:\n"
            "0# one.so!f!0\n"
            "1# one.so!f!ff\n"
            "2# one.so!f!100\n"
            "3# 1101\n"
            "4# fff\n"
            "5# two.so!g!0\n"
            "6# 2001\n"
            "7# three.so!h!abc\n"
            "8# three.so!h!1000\n"
            "9# 4001\n"
            "10# 0\n"
            "11# ffffffffffffffff\n");
}

TEST(ExceptionContext, WithoutModulesAddressesAreBare) {
  const ContextPointer context("m", {{"n", 0, std::int32_t{16}}});
  context.Get()->call_stack = {0xABC};

  EXPECT_EQ(Composed(*context.Get()), "a.cpp(42): m. Properties:\nn=0x00000010\nCall stack:\n0# abc\n");
}

TEST(ExceptionContext, TheLineIsDecimal) {
  const ContextPointer context("m", {});

  EXPECT_EQ(ComposeWhat({"f", 4294967295}, *context.Get()), "f(4294967295): m. Call stack:\n");
}

TEST(ExceptionContext, NumbersDoNotFollowTheGlobalLocale) {
  const GroupedDigits locale;
  const ContextPointer context("m", {{"n", 0, std::int32_t{-2147417851}}, {"o", 0, OpaqueValue{4294967295}}});
  context.Get()->call_stack = {0x123456789ABC};

  EXPECT_EQ(ComposeWhat({"f", 4294967295}, *context.Get()),
            "f(4294967295): m. Properties:\nn=0x80010105\no=<typeid=4294967295>\nCall stack:\n0# 123456789abc\n");
}

TEST(ExceptionContext, CopiesShareTheContextAndCountThemselves) {
  const ContextPointer first("m", {});
  EXPECT_EQ(first.Get()->references, 1U);

  {
    const ContextPointer second(first);  // NOLINT(performance-unnecessary-copy-initialization): what is tested.
    EXPECT_EQ(second.Get(), first.Get());
    EXPECT_EQ(first.Get()->references, 2U);
  }

  EXPECT_EQ(first.Get()->references, 1U);
}

TEST(ExceptionContext, AssigningReleasesTheOldAndSharesTheNew) {
  const ContextPointer first("first", {});
  const ContextPointer kept("second", {});
  ContextPointer assigned(kept);

  assigned = first;

  EXPECT_EQ(assigned.Get(), first.Get());
  EXPECT_EQ(first.Get()->references, 2U);
  EXPECT_EQ(kept.Get()->references, 1U);
}

TEST(ExceptionContext, AssigningToItselfChangesNothing) {
  ContextPointer context("m", {});
  const ContextPointer& same = context;

  context = same;

  EXPECT_EQ(context.Get()->references, 1U);
  EXPECT_EQ(context.Get()->message, "m");
}

TEST(ExceptionContext, AnEmptyPointerIsCopiedAndAssignedLikeAnyOther) {
  const ContextPointer empty;
  ContextPointer full("m", {});
  const ContextPointer copy(empty);  // NOLINT(performance-unnecessary-copy-initialization): what is tested.

  full = empty;

  EXPECT_EQ(copy.Get(), nullptr);
  EXPECT_EQ(full.Get(), nullptr);
}

TEST(ExceptionContext, TheCountIsRightAfterManyThreadsCopied) {
  const ContextPointer shared("m", {});
  std::array<std::thread, 4> threads;

  for (std::thread& thread : threads) {
    thread = std::thread([&shared] {
      for (int round = 0; round < 20'000; ++round) {
        ContextPointer copy(shared);
        copy = shared;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }

  EXPECT_EQ(shared.Get()->references, 1U);
}

}  // namespace
}  // namespace tov::detail
