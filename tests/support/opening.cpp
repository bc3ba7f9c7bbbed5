#include "tests/support/opening.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string_view>

namespace tests {

namespace {

using nlohmann::json;

constexpr unsigned int kNobody = 65534;
constexpr std::string_view kUnset = "unset ";

// What a cure begins with that is a command and no words.
constexpr auto kCommands = std::to_array<std::string_view>(
    {"chmod ", "echo ", "iconv ", "mkdir ", "mount ", "mv ", "printf ", "rm ", "rmdir ", "sed ", kUnset});

std::string TextOrNothing(const json& value) {
  return value.is_string() ? value.get<std::string>() : "";
}

bool Has(const std::string& text, const char* words) {
  return text.find(words) != std::string::npos;
}

}  // namespace

std::optional<Opening> ReadOpening(const std::string& report) {
  const json parsed = json::parse(report, nullptr, false);
  if (!parsed.is_object()) {
    return std::nullopt;
  }
  const json& verdict = parsed.at("verdict");
  return Opening{verdict.at("line"), TextOrNothing(verdict.at("code")), TextOrNothing(verdict.at("meaning")),
                 TextOrNothing(verdict.at("cure"))};
}

void ExpectWords(const Opening& opening, const Words& words) {
  EXPECT_TRUE(opening.code == words.code && Has(opening.line + "\n" + opening.meaning, words.cause) &&
              Has(opening.cure, words.cure) && opening.cure.empty() == (*words.cure == '\0'))
      << "expected " << words.code << ", [" << words.cause << "] and [" << words.cure << "]\nof      " << opening.code
      << ": " << opening.line << "\n  " << opening.meaning << "\n  To mend it:  " << opening.cure;
}

bool SaysHowItEnded(const std::string& line, const Outcome& ended) {
  return Has(line, (ended.signal != 0 ? std::string("SIG") + ::sigabbrev_np(ended.signal)
                                      : "status " + std::to_string(ended.status))
                       .c_str());
}

bool IsCommand(const std::string& cure) {
  return std::ranges::any_of(kCommands, [&](std::string_view command) { return cure.starts_with(command); });
}

void CarryOut(const std::string& cure) {
  const Outcome outcome =
      Command("/bin/sh").Arguments({"-c", cure}).Variable("PATH", "/usr/bin:/bin:/usr/sbin:/sbin").Run();
  EXPECT_EQ(outcome.status, 0) << cure << "\n" << outcome;
}

std::optional<std::string> UnsetBy(const std::string& cure) {
  return cure.starts_with(kUnset) ? std::optional(cure.substr(kUnset.size())) : std::nullopt;
}

// Without the C library, which would do it to every thread that it knows of.
void BecomeUser(unsigned int number) {
  ::syscall(SYS_setgroups, 0, nullptr);
  if (::syscall(SYS_setgid, number) != 0 || ::syscall(SYS_setuid, number) != 0) {
    ::_exit(126);
  }
}

void BecomeNobody() {
  BecomeUser(kNobody);
}

}  // namespace tests
