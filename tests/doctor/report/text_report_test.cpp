#include "doctor/report/text_report.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "doctor/judge/words/text.h"
#include "doctor/report/page.h"
#include "doctor/version.h"

namespace doctor {
namespace {

std::size_t Count(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) {
    ++count;
  }
  return count;
}

// A launch that ends because of a value in quotes; another warning beside it.
Diagnosis InQuotes() {
  Diagnosis diagnosis;
  diagnosis.warnings = {
      {Finding::kQuotedValue, "line 1", "the root is in quotes", "They count.", "sed 1 file", true, true},
      {Finding::kTmpEmpty, "TMP", "TMP is set but empty", "So.", "unset TMP"}};
  diagnosis.verdict.outcome = Outcome::kStatus255;
  diagnosis.verdict.cause = diagnosis.warnings[0];
  return diagnosis;
}

TEST(TextReport, VerdictWithItsCauseMeaningAndCureComeFirstThenEachPartThenWhatElseWasNoticed) {
  const std::string text = TextReport(InQuotes(), {});

  EXPECT_TRUE(
      text.starts_with("A launch would end with status 255: the root is in quotes.\n"
                       "  They count.\n"
                       "  To mend it:  sed 1 file\n"
                       "\n"
                       "  no  settings     line 1  [quoted-value]\n"
                       "  --  runtime      not reached\n"
                       "  --  environment  not reached  [tmp-empty]\n"
                       "  --  application  not reached\n"
                       "  --  start        not reached\n"
                       "\n"
                       "grellin_doctor " +
                       std::string(kVersion) +
                       "\n"
                       "\n"
                       "Noticed as well\n"
                       "  TMP is set but empty [tmp-empty]\n"
                       "    So.\n"
                       "    -> unset TMP\n"))
      << text;
}

TEST(TextReport, DetailsAreShownOnlyWhereTheLaunchEnds) {
  const std::string brief = TextReport(InQuotes(), {});
  const std::string verbose = TextReport(InQuotes(), {false, true});

  EXPECT_NE(brief.find("\n1. Settings"), std::string::npos) << brief;
  EXPECT_EQ(brief.find("\n2. Runtime"), std::string::npos) << brief;
  EXPECT_NE(verbose.find("\n4. Application"), std::string::npos) << verbose;
}

TEST(TextReport, ACommandIsNeverBroken) {
  Diagnosis diagnosis = InQuotes();
  diagnosis.verdict.cause.cure = "command " + std::string(200, 'x');

  const std::string text = TextReport(diagnosis, {});

  EXPECT_NE(text.find("  To mend it:  " + diagnosis.verdict.cause.cure + "\n"), std::string::npos) << text;
}

TEST(TextReport, AnAbortsLineIsPartOfItsMeaning) {
  Diagnosis diagnosis = InQuotes();
  diagnosis.verdict.outcome = Outcome::kAborts;
  diagnosis.verdict.message = "Error occurred: words\nand more";

  const std::string text = TextReport(diagnosis, {});

  EXPECT_NE(text.find("  They count. It would write 'Error occurred: words'.\n"), std::string::npos) << text;
}

TEST(TextReport, MistakesOfOneLineStandTogether) {
  Diagnosis diagnosis = InQuotes();
  diagnosis.warnings.insert(diagnosis.warnings.begin(),
                            {Finding::kSeveralMistakes, "line 2", "several", "", "sed 2 file"});
  diagnosis.warnings.insert(diagnosis.warnings.begin() + 1, {Finding::kBlankAtEnd, "line 2", "a part", "", "cure"});

  const std::string text = TextReport(diagnosis, {});

  EXPECT_NE(text.find("line 2: several [several-mistakes]"), std::string::npos) << text;
  EXPECT_EQ(text.find("a part"), std::string::npos) << text;
}

TEST(TextReport, LongListsAreShortenedButLinesThatMatterStay) {
  Diagnosis diagnosis;
  diagnosis.verdict.outcome = Outcome::kRuns;
  for (std::size_t line = 1; line <= 100; ++line) {
    diagnosis.settings.entries.push_back({line, "Other", "x", line <= 50 ? LineUse::kUnused : LineUse::kReplaced, 101});
  }
  diagnosis.settings.entries.push_back({101, "DotnetRootFolder", "/r", LineUse::kUsed});
  RuntimeReport& runtime = diagnosis.runtime.emplace();
  runtime.versions.resize(41);
  diagnosis.warnings.resize(42, {Finding::kBlankAtEnd, "place", "text", "", "cure"});
  diagnosis.warnings.left_out = 1000;

  const std::string text = TextReport(diagnosis, {false, true});

  EXPECT_EQ(Count(text, "'Other'"), 40U) << text;
  EXPECT_NE(text.find("and 60 lines more that are not used"), std::string::npos) << text;
  EXPECT_NE(text.find("'DotnetRootFolder' = '/r'"), std::string::npos);
  EXPECT_NE(text.find("and 1 folders more"), std::string::npos) << text;
  EXPECT_EQ(Count(text, "place: text"), 40U);
  EXPECT_NE(text.find("and 1002 more"), std::string::npos);
}

TEST(TextReport, AnOverlongValueIsShortenedAndCounted) {
  constexpr std::size_t kOthers = 0;
  Diagnosis diagnosis;
  diagnosis.verdict.outcome = Outcome::kRuns;
  diagnosis.settings.entries = {{1, "DotnetRootFolder", std::string(200, 'x'), LineUse::kReplaced, 2},
                                {2, "DotnetRootFolder", std::string(203, 'y'), LineUse::kUsed}};

  const std::string text = TextReport(diagnosis, {false, true});

  EXPECT_EQ(Count(text, "x"), 200U + kOthers) << text;
  EXPECT_NE(text.find("and 3 bytes more"), std::string::npos) << text;
}

TEST(TextReport, FitsThePageAndHoldsNoControlsWhateverTheBytes) {
  const std::string bytes = "\033[2J\r\xff x\n" + std::string(300, ' ');
  Diagnosis diagnosis;
  diagnosis.verdict.outcome = Outcome::kAborts;
  diagnosis.verdict.message = bytes;
  diagnosis.settings.path = diagnosis.settings.reason = diagnosis.settings.failure = bytes;
  diagnosis.settings.entries = {{1, bytes, bytes, LineUse::kMalformed}};
  RuntimeReport& runtime = diagnosis.runtime.emplace();
  VersionReport& version = runtime.versions.emplace_back();
  version.name = version.words = bytes;
  version.reason = VersionReason::kLoadFailed;
  diagnosis.environment = {{{"A", "0", bytes}}, {{bytes, bytes}}, bytes};
  diagnosis.application.assembly_file = {bytes, FileState::kUnreadable};
  diagnosis.application.frameworks = {{bytes, bytes, RollForward::kMinor, bytes, false, {bytes}, bytes, bytes}};
  diagnosis.application.context.emplace().host_text = bytes;
  diagnosis.application.context->child.end = ChildEnd::kFinished;

  std::istringstream text(TextReport(diagnosis, {false, true}));

  for (std::string line; std::getline(text, line);) {
    EXPECT_LE(Columns(line), kPageWidth) << line;
    EXPECT_EQ(line, [&] {
      std::string printable = Printable(line);
      for (auto at = printable.find("\\\\"); at != std::string::npos; at = printable.find("\\\\", at + 1)) {
        printable.erase(at, 1);
      }
      return printable;
    }());
  }
}

TEST(TextReport, SaysWhereWhatIsSoForRootMayNotBeForOthers) {
  Diagnosis diagnosis;
  diagnosis.closed_to_others = "/closed";
  Head head;
  const std::string words =
      "That is so for root; others were not tried, and not all of them may use /closed.\n"
      "  To ask as a user:  grellin_doctor --user NAME\n";

  EXPECT_NE(TextReport(diagnosis, {}, head).find(words), std::string::npos) << TextReport(diagnosis, {}, head);
  head.machine.user_id = 1000;
  EXPECT_EQ(TextReport(diagnosis, {}, head).find("--user"), std::string::npos);
  head.machine.user_id = 0;
  diagnosis.closed_to_others = "";
  EXPECT_EQ(TextReport(diagnosis, {}, head).find("--user"), std::string::npos);
}

TEST(TextReport, TheHostsWordsAreShownLineByLine) {
  Diagnosis diagnosis;
  diagnosis.verdict.outcome = Outcome::kStatus255;
  diagnosis.verdict.cause.finding = Finding::kHostRefuses;
  ContextProbe& context = diagnosis.application.context.emplace();
  context.child.end = ChildEnd::kFinished;
  context.child.output = "output";
  context.result = static_cast<std::int32_t>(0x80008096);

  context.host_text = "one\n\ntwo\n";
  const std::string words = TextReport(diagnosis, {false, true});
  context.host_text = "";
  const std::string output = TextReport(diagnosis, {false, true});
  context.result = 0;
  context.has_handle = true;
  const std::string usable = TextReport(diagnosis, {false, true});

  EXPECT_NE(words.find("refused: 0x80008096 FrameworkMissingFailure"), std::string::npos) << words;
  EXPECT_NE(words.find("  The host says:\n    one\n\n    two\n"), std::string::npos) << words;
  EXPECT_NE(output.find("  The host says:\n    output\n"), std::string::npos) << output;
  EXPECT_EQ(usable.find("The host says"), std::string::npos) << usable;
  EXPECT_NE(usable.find("created and closed: 0x00000000 Success"), std::string::npos) << usable;
}

// A coloured report, as "bad{text}" what is red, and so on.
std::string Marked(const Diagnosis& diagnosis) {
  constexpr std::pair<std::string_view, std::string_view> kColors[] = {{"\033[1m", "strong{"}, {"\033[32m", "good{"},
                                                                       {"\033[31m", "bad{"},   {"\033[33m", "odd{"},
                                                                       {"\033[2m", "faint{"},  {"\033[0m", "}"}};
  std::string text = TextReport(diagnosis, {.colored = true, .verbose = true});
  for (const auto& [color, mark] : kColors) {
    for (auto at = text.find(color); at != std::string::npos; at = text.find(color, at)) {
      text.replace(at, color.size(), mark);
    }
  }
  return text;
}

// What the details of a diagnosis say of one thing.
struct Said {
  const char* words;
  void (*lay)(Diagnosis& diagnosis);
};

// The parts in their order: settings, runtime, application, the runtime's start.
const Said kSaid[] = {
    {"  bad{cannot be read: Permission denied}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.end = SettingsEnd::kUnreadable;
       diagnosis.settings.reason = "Permission denied";
     }},
    {"  bad{is a pipe}\n", [](Diagnosis& diagnosis) { diagnosis.settings.end = SettingsEnd::kNeverEnds; }},
    {"  odd{holds no line}\n", [](Diagnosis& diagnosis) { diagnosis.settings.end = SettingsEnd::kNoRoot; }},
    {"  line 3  good{used}  'DotnetRootFolder' = '/r'\n",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.entries = {{3, "DotnetRootFolder", "/r", LineUse::kUsed}};
     }},
    {"  line 3  faint{not used}  'a' = (hidden)\n",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.entries = {{3, "a", "b", LineUse::kUnused}};
     }},
    {"  line 3  odd{replaced by line 9}  ",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.entries = {{3, "a", "b", LineUse::kReplaced, 9}};
     }},
    {"  line 3  faint{skipped: it sets nothing}  (hidden)\n",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.entries = {{3, "", "b", LineUse::kSkipped}};
     }},
    {"  line 3  bad{not UTF-8: a launch aborts here}  ",
     [](Diagnosis& diagnosis) {
       diagnosis.settings.entries = {{3, "a", "\xff", LineUse::kMalformed}};
     }},
    {"\nstrong{2. Runtime}\n  faint{not looked for: no runtime root is known}\n", [](Diagnosis&) {}},
    {"  bad{holds no version}\n", [](Diagnosis& diagnosis) { diagnosis.runtime.emplace(); }},
    {"  (not UTF-8)  odd{refused}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"", u"/a.so", true, Standing::kRefused}};
     }},
    {"  x  faint{refused}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"x", u"/x/libhostfxr.so", false, Standing::kRefused}};
     }},
    {"  6.0.1  good{chosen}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"6.0.1", u"/a.so", true, Standing::kChosen}};
     }},
    {"  6.0.1  sound, not loaded\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"6.0.1", u"/a.so", true, Standing::kNotLoaded}};
     }},
    {"  6.0.1  bad{fatal}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"6.0.1", u"/a.so", true, Standing::kFatal}};
     }},
    {"  6.0.1  bad{not known}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.runtime.emplace().versions = {{"6.0.1", u"/a.so", true, Standing::kNotKnown}};
     }},
    {"  A  removed  faint{now not set}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.environment.variables = {{"A", {}, {}}};
     }},
    {"  A  set to 0  now '1'\n",
     [](Diagnosis& diagnosis) {
       diagnosis.environment.variables = {{"A", "0", "1"}};
     }},
    {"  set by others, and obeyed:\n  DOTNET_Secret  (not shown)  changes how the runtime works\n",
     [](Diagnosis& diagnosis) {
       diagnosis.environment.obeyed = {{"DOTNET_Secret", "x"}};
     }},
    {"  assembly            good{present}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.assembly_file = {"/a.dll", FileState::kPresent};
     }},
    {"  assembly            bad{missing}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.assembly_file = {"/a.dll", FileState::kMissing, ENOENT};
     }},
    {"  runtimeconfig.json  bad{unreadable: Permission denied}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.runtime_config = {"/a", FileState::kUnreadable, EACCES};
     }},
    {"  deps.json           odd{malformed: it does not hold a JSON object}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.dependencies = {"/a", FileState::kMalformed};
     }},
    {"  Some.App 6.0.0      faint{needed; not looked for, as no runtime root is known}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.frameworks = {{"Some.App", "6.0.0"}};
     }},
    {"  Some.App 6.0.0      good{needed; 6.0.9 is taken}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.frameworks = {{"Some.App", "6.0.0", RollForward::kMinor, "", true, {}, "6.0.9"}};
     }},
    {"  Some.App 6.0.0      bad{needed, and not there}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.frameworks = {{"Some.App", "6.0.0", RollForward::kMinor, "", false}};
     }},
    {"  context             bad{was not created in time}\n",
     [](Diagnosis& diagnosis) { diagnosis.application.context.emplace().child.end = ChildEnd::kTimedOut; }},
    {"  context             bad{was not created}\n",
     [](Diagnosis& diagnosis) { diagnosis.application.context.emplace().child.end = ChildEnd::kCrashed; }},
    {"  context             good{created and closed: 0x00000000 Success}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.application.context = {{ChildEnd::kFinished}, 0, true};
     }},
    {"  faint{not tried: there is nothing to start it for}\n", [](Diagnosis&) {}},
    {"  runtime  bad{did not start in time}\n",
     [](Diagnosis& diagnosis) { diagnosis.start.emplace().probe.child.end = ChildEnd::kTimedOut; }},
    {"  runtime  bad{ended the process}\n",
     [](Diagnosis& diagnosis) { diagnosis.start.emplace().probe.child.end = ChildEnd::kCrashed; }},
    {"  runtime  odd{was not tried}\n",
     [](Diagnosis& diagnosis) { diagnosis.start.emplace().probe.child.end = ChildEnd::kFinished; }},
    {"  runtime  good{starts}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.start.emplace().probe = {{ChildEnd::kFinished}, true};
     }},
    {"  /a.so    bad{gone}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.start.emplace().broken = {{.path = "/a.so", .need = Need::kStart, .detail = "gone"}};
     }},
    {"  /a.so    odd{gone}\n",
     [](Diagnosis& diagnosis) {
       diagnosis.start.emplace().broken = {{.path = "/a.so", .need = Need::kLater, .detail = "gone"}};
     }},
    {"  runtime  bad{does not start: 0x00000007}\n  It says:\n    out\n    words\n",
     [](Diagnosis& diagnosis) {
       diagnosis.start.emplace().probe = {{ChildEnd::kFinished, 0, {}, {}, "out\n"}, true, 7, "words"};
     }},
};

TEST(TextReport, EachStateOfAPartHasItsWordsAndItsColour) {
  for (const auto& [words, lay] : kSaid) {
    Diagnosis diagnosis;
    lay(diagnosis);

    const std::string text = Marked(diagnosis);

    EXPECT_NE(text.find(words), std::string::npos) << words << text;
  }
}

TEST(TextReport, OtherPlacesOfDotnetAreListedAndEmptyOnesNamedInOneLine) {
  Diagnosis diagnosis;
  diagnosis.other_roots = {{{"/meant", "", true}, RootState::kServes, "6.0.1", true},
                           {{"/none", "PATH"}, RootState::kNothing},
                           {{"/old", ""}, RootState::kNoVersion},
                           {{"/bad", ""}, RootState::kRefused, "6.0.2"},
                           {{"/unasked", ""}, RootState::kNotLoaded, "6.0.3"},
                           {{"/good", "DOTNET_ROOT"}, RootState::kServes, "6.0.4", true},
                           {{"/void", ""}, RootState::kNothing}};

  const std::string all = Marked(diagnosis);
  diagnosis.other_roots.resize(1);
  const std::string meant = Marked(diagnosis);

  EXPECT_NE(all.find("\nstrong{Other places of .NET}\n"
                     "  /old      faint{no version that fits}\n"
                     "  /bad      odd{6.0.2, refused}\n"
                     "  /unasked  6.0.3, not loaded\n"
                     "  /good     good{6.0.4, would do, with frameworks}  faint{named by DOTNET_ROOT}\n"
                     "  faint{nothing in /none, /void}\n"),
            std::string::npos)
      << all;
  EXPECT_EQ(meant.find("Other places"), std::string::npos) << meant;
}

TEST(TextReport, OfManyBrokenFilesTheFirstAreShown) {
  Diagnosis diagnosis;
  diagnosis.start.emplace().broken.resize(100, {"/net/a.dll", Need::kLater, true, false, false, "missing"});

  EXPECT_EQ(Count(TextReport(diagnosis, {false, true}), "  /net/a.dll  missing\n"), 39U);
}

}  // namespace
}  // namespace doctor
