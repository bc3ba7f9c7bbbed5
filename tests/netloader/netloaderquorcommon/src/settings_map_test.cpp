#include "netloader/netloaderquorcommon/src/settings_map.h"

#include <gtest/gtest.h>

#include <map>
#include <memory_resource>
#include <random>
#include <string>

namespace netloader::quor::detail {
namespace {

using tov::WideString;

// The default memory while it lives, counted.
class CountedMemory : public std::pmr::memory_resource {
 public:
  CountedMemory() : before_(std::pmr::set_default_resource(this)) {}
  ~CountedMemory() override { std::pmr::set_default_resource(before_); }
  CountedMemory(const CountedMemory&) = delete;
  CountedMemory& operator=(const CountedMemory&) = delete;

  std::size_t Taken() const { return taken_; }

 private:
  void* do_allocate(std::size_t bytes, std::size_t alignment) override {
    taken_ += bytes;
    return before_->allocate(bytes, alignment);
  }
  void do_deallocate(void* memory, std::size_t bytes, std::size_t alignment) override {
    before_->deallocate(memory, bytes, alignment);
  }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  std::pmr::memory_resource* before_;
  std::size_t taken_ = 0;
};

TEST(SettingsMap, KeepsTheLastValueOfAKeyAndSaysWhetherItReplacesOne) {
  SettingsMap settings;

  EXPECT_FALSE(settings.Store({u"b", u"1"}));
  EXPECT_FALSE(settings.Store({u"a", u"2"}));
  EXPECT_TRUE(settings.Store({u"b", u"3"}));
  EXPECT_TRUE(settings.Store({u"b", u""}));
  EXPECT_FALSE(settings.Store({u"c", u"4"}));

  EXPECT_EQ(settings.Find(u"a"), u"2");
  EXPECT_EQ(settings.Find(u"b"), u"");
  EXPECT_EQ(settings.Find(u"c"), u"4");
  EXPECT_EQ(settings.Find(u"d"), u"");
}

TEST(SettingsMap, IsTheSameMapWhateverTheOrderOfTheKeys) {
  std::mt19937 random(1);  // The same numbers every time.
  SettingsMap settings;
  std::map<WideString, WideString> expected;
  for (int i = 0; i < 5'000; ++i) {
    const auto key = static_cast<char16_t>(random() % 500);
    const WideString name = WideString(u"a key longer than any small string ") + key;
    const WideString value(random() % 20, key);

    EXPECT_EQ(settings.Store({name, value}), expected.contains(name));
    expected[name] = value;
  }
  for (const auto& [key, value] : expected) {
    EXPECT_EQ(settings.Find(key), value);
  }
}

TEST(SettingsMap, OneKeyTakesNoMoreMemoryHoweverOftenItIsSet) {
  const WideString key(100, u'k');
  CountedMemory memory;
  SettingsMap settings;
  settings.Store({key, u"a value longer than any small string"});
  const std::size_t taken = memory.Taken();

  for (int i = 0; i < 100'000; ++i) {
    settings.Store({key, i % 2 == 0 ? u"short" : u"A value longer than any small string"});
  }

  EXPECT_GT(taken, 0U);
  EXPECT_EQ(memory.Taken(), taken);
}

TEST(SettingsMap, AValueThatGrowsTakesMemoryInProportionToItsLength) {
  constexpr std::size_t kLength = 10'000;
  CountedMemory memory;
  SettingsMap settings;
  WideString value;

  while (value.size() < kLength) {
    value += u'v';
    settings.Store({u"k", value});
  }

  EXPECT_LT(memory.Taken(), 10 * kLength * sizeof(char16_t));
}

}  // namespace
}  // namespace netloader::quor::detail
