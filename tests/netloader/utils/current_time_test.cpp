#include "netloader/utils/current_time.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <regex>
#include <string>

#include "tests/support/scoped_environment.h"

namespace netloader::utils {
namespace {

class TimeZone {
 public:
  explicit TimeZone(const std::string& zone) {
    environment_.Set("TZ", zone);
    ::tzset();
  }

 private:
  tests::ScopedEnvironment environment_;
};

// The universal time, moved by so many hours.
std::string Moved(int hours) {
  const std::time_t moved = std::time(nullptr) + std::time_t{hours} * 3600;
  std::tm universal{};
  ::gmtime_r(&moved, &universal);
  std::array<char, 100> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &universal);
  return text.data();
}

TEST(CurrentTime, IsDateBlankTimeWithoutFractionOrZone) {
  const std::regex format(R"(\d{4}-[01]\d-[0-3]\d [0-2]\d:[0-5]\d:[0-6]\d)");

  EXPECT_TRUE(std::regex_match(GetCurrentTimeString(false), format)) << GetCurrentTimeString(false);
  EXPECT_TRUE(std::regex_match(GetCurrentTimeString(true), format)) << GetCurrentTimeString(true);
}

TEST(CurrentTime, IsTheLocalOne) {
  struct Row {
    const char* zone;
    int hours;
  };
  for (const Row& row : {Row{"UTC0", 0}, Row{"EAST-14", 14}, Row{"WEST+11", -11}}) {
    const TimeZone zone(row.zone);
    const std::string before = Moved(row.hours);
    const std::string now = GetCurrentTimeString(false);
    const std::string behind = Moved(row.hours);

    EXPECT_LE(before, now) << row.zone;
    EXPECT_LE(now, behind) << row.zone;
  }
  ::tzset();
}

}  // namespace
}  // namespace netloader::utils
