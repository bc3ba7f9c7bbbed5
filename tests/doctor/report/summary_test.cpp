#include "doctor/report/summary.h"

#include <gtest/gtest.h>

#include <string>

#include "doctor/judge/diagnosis.h"
#include "doctor/judge/verdict.h"

namespace doctor {
namespace {

// "name: words", a line for each part that the launch does not come to, or that was not tried.
std::string NotReached(const Diagnosis& diagnosis) {
  std::string lines;
  for (const StationSummary& each : Summary(diagnosis)) {
    if (each.mark == Mark::kNotReached) {
      lines.append(each.name).append(": ").append(each.words).append("\n");
    }
  }
  return lines;
}

TEST(Summary, TheStartIsNotTriedWhereOnlyTheHostWas) {
  Diagnosis diagnosis;

  for (const Tried tried : {Tried::kFiles, Tried::kHost}) {
    diagnosis.verdict.tried = tried;
    EXPECT_EQ(NotReached(diagnosis), "start: not tried\n");
  }
  diagnosis.verdict.tried = Tried::kStart;
  EXPECT_EQ(NotReached(diagnosis), "");
}

TEST(Summary, WhatComesBehindTheEndOfALaunchIsNotReached) {
  Diagnosis diagnosis;
  diagnosis.verdict.outcome = Outcome::kStatus255;
  diagnosis.verdict.cause.finding = Finding::kNoexec;

  EXPECT_EQ(NotReached(diagnosis), "environment: not reached\napplication: not reached\nstart: not reached\n");
}

TEST(Summary, SettingsOrARootThatWasAskedAboutAreNamed) {
  Diagnosis diagnosis;
  const auto words = [&] { return Summary(diagnosis).at(0).words; };

  EXPECT_EQ(words(), "they do not name a runtime root");
  diagnosis.settings.root = u"/a\n";
  EXPECT_EQ(words(), "/a\\n is the runtime root");
  diagnosis.runtime.emplace().root = u"/b";
  EXPECT_EQ(words(), "asked about /b in their place");
}

TEST(Summary, AHostThatWasNotAskedIsNoHostThatAccepts) {
  Diagnosis diagnosis;
  diagnosis.application.assembly_file.path = "/opt/app.dll";
  diagnosis.application.frameworks = {{.name = "A", .version = "6.0.0"},
                                      {.name = "B", .version = "6.0.0", .taken = "6.0.36"}};
  const auto words = [&] { return Summary(diagnosis).at(3).words; };

  EXPECT_EQ(words(), "app.dll, A 6.0.0, B 6.0.36 (the host was not asked)");
  diagnosis.application.context.emplace();
  EXPECT_EQ(words(), "app.dll, A 6.0.0, B 6.0.36");
}

}  // namespace
}  // namespace doctor
