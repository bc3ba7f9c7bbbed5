#include "doctor/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <map>
#include <sstream>
#include <string_view>

#include "doctor/judge/words/text.h"
#include "doctor/version.h"
#include "foundation/strings.h"
#include "foundation/utf.h"

namespace doctor {
namespace {

constexpr const char* kDescription =
    "Reports why a launch of the product's managed application fails, or that it does not: where the\n"
    "launcher looks, what it finds, and why it refuses it. Runs nothing of the application and changes\n"
    "nothing.";

constexpr const char* kFooter =
    "Exit status: 0 a launch would run the application, 1 it would not, 2 wrong usage, 3 not known: the\n"
    "doctor itself could not work, or what it tried did not finish in time. Warnings alone keep 0.";

// What is said to those who gave an option something else.
struct OptionWords {
  std::string_view name;
  std::string_view takes;
};

constexpr auto kOptionWords = std::to_array<OptionWords>({
    {"--log", "takes a file to write to"},
    {"--report", "takes a file to write to"},
    {"--settings", "takes a file"},
    {"--root", "takes a path in UTF-8"},
    {"--time-limit", "takes a number of seconds above 0"},
    {"--user", "takes the name of a user"},
    {"--explain", "takes the code of a finding, or list"},
    {"--color", "takes auto, always or never"},
});

// How the library ends what it says of a flag with a value, behind the flag's name without its dashes.
constexpr std::string_view kFlagWithValue = " was given a disallowed flag override";

// Of whole or fractional seconds; empty for another text, and for less than a millisecond.
std::optional<std::chrono::milliseconds> TimeOf(std::string_view seconds) {
  constexpr std::size_t kMostDigits = 9;
  constexpr std::string_view kDigits = "0123456789";
  const std::string_view whole = seconds.substr(0, seconds.find('.'));
  std::string_view decimals = seconds.substr(whole.size());
  decimals.remove_prefix(decimals.empty() ? 0 : 1);
  const bool isNumber = whole.size() + decimals.size() > 0 && whole.size() <= kMostDigits &&
                        whole.find_first_not_of(kDigits) == std::string_view::npos &&
                        decimals.find_first_not_of(kDigits) == std::string_view::npos;
  if (!isNumber) {
    return std::nullopt;
  }
  std::string milliseconds(decimals.substr(0, 3));
  milliseconds.append(3 - milliseconds.size(), '0').insert(0, whole);
  const std::chrono::milliseconds time(std::stoll(milliseconds));
  return time.count() > 0 ? std::optional(time) : std::nullopt;
}

// The library's words name the option first, and quote what was given for it only then.
const OptionWords* ConcernedBy(std::string_view words) {
  const auto at = [words](const OptionWords& row) { return words.find(row.name); };
  const auto first = std::ranges::min_element(kOptionWords, {}, at);
  return at(*first) != std::string_view::npos ? &*first : nullptr;
}

std::string ReasonOf(const CLI::ParseError& error, const CLI::App& app) {
  if (const auto unknown = app.remaining(); !unknown.empty()) {
    const std::string word = Printable(unknown.front());
    return word.starts_with('-') ? "there is no option " + word
                                 : "only options are taken, not " + Quoted(unknown.front());
  }
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    return "--no-probe loads nothing that --log could be the log of";
  }
  const std::string_view words = error.what();
  if (words.ends_with(kFlagWithValue)) {
    return "--" + std::string(words.substr(0, words.find(' '))) + " takes no value";
  }
  const OptionWords* concerned = ConcernedBy(words);
  if (concerned == nullptr) {
    return Printable(words);
  }
  const bool isRepeated = app.get_option(std::string(concerned->name))->count() > 1;
  return std::string(concerned->name) + " " + std::string(isRepeated ? "is given twice" : concerned->takes);
}

Refusal RefusalFor(const CLI::ParseError& end, const CLI::App& app) {
  std::ostringstream text;
  if (app.exit(end, text, text) == 0) {  // Help or version.
    return {text.str(), false};
  }
  return {"grellin_doctor: " + ReasonOf(end, app) + "\nAll options:  grellin_doctor --help\n", true};
}

}  // namespace

std::variant<Options, Refusal> ParseOptions(int argc, const char* const* argv) {
  Options options;
  bool noProbe = false;
  CLI::App app(kDescription, "grellin_doctor");
  app.footer(kFooter);
  app.set_help_flag("-h,--help", "Print these words and end")->disable_flag_override();
  app.set_version_flag("--version", std::string("grellin_doctor ") + kVersion, "Print the doctor's version and end")
      ->disable_flag_override();
  app.add_flag("--json", options.json, "Write one JSON object, for machines")->disable_flag_override();
  app.add_flag("--verbose", options.verbose, "Show every part in detail, not only where something is wrong")
      ->disable_flag_override();
  auto* log = app.add_option("--log", options.log, "Write the loader's own log of the walk to this file");
  log->option_text("FILE");
  app.add_option("--report", options.report, "Write all that support asks for to this new file")->option_text("FILE");
  app.add_option("--settings", options.settings, "Ask about this settings file instead of the installed one")
      ->option_text("FILE");
  app.add_option("--root", options.root, "Ask about this runtime root instead of the one in the settings")
      ->option_text("DIR")
      ->check(
          [](const std::string& root) { return tov::text::ToUtf16(root).empty() ? "it must be a path in UTF-8" : ""; },
          "");
  app.add_option_function<std::string>(
         "--time-limit", [&](const std::string& seconds) { options.time_limit = *TimeOf(seconds); },
         "Wait so long for each child process, 10 seconds unless said")
      ->option_text("SECONDS")
      ->check([](const std::string& seconds) { return TimeOf(seconds) ? "" : "it must be a positive number"; }, "");
  app.add_flag("--no-probe", noProbe, "Load nothing; excludes --log")
      ->excludes(log)
      ->option_text(" ")
      ->disable_flag_override();
  app.add_option("--user", options.user, "Ask as this user, with its rights; for root")->option_text("NAME");
  app.add_option("--explain", options.explain, "Say what the code of a finding means, and end; list has all codes")
      ->option_text("CODE");
  app.add_option("--color", options.color, "When to use colours: auto, always or never")
      ->option_text("WHEN")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, Color>{{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}}));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    return RefusalFor(end, app);
  }
  options.probe = !noProbe;
  return options;
}

}  // namespace doctor
