#include "doctor/options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <sstream>

#include "doctor/version.h"
#include "foundation/utf.h"

namespace doctor {
namespace {

constexpr const char* kDescription =
    "Reports why a launch of the product's managed application fails, or that it does not: where the launcher looks, "
    "what it finds, and why it refuses it. Runs nothing of the application and changes nothing.";

constexpr const char* kFooter =
    "Exit status: 0 a launch would run the application, 1 it would not, 2 wrong usage, 3 not known: the "
    "doctor itself could not work, or what it tried did not finish in time. Warnings alone keep 0.";

}  // namespace

std::variant<Options, Refusal> ParseOptions(int argc, const char* const* argv) {
  Options options;
  bool noProbe = false;
  CLI::App app(kDescription, "grellin_doctor");
  app.footer(kFooter);
  app.set_version_flag("--version", std::string("grellin_doctor ") + kVersion);
  app.add_flag("--json", options.json, "Write one JSON object, for machines");
  app.add_flag("--verbose", options.verbose, "Show every part in detail, not only where something is wrong");
  auto* log = app.add_option("--log", options.log, "Write the loader's own log of the walk to this file");
  log->option_text("FILE");
  app.add_option("--settings", options.settings, "Ask about this settings file instead of the installed one")
      ->option_text("FILE");
  app.add_option("--root", options.root, "Ask about this runtime root instead of the one in the settings")
      ->option_text("DIR")
      ->check(
          [](const std::string& root) { return tov::text::ToUtf16(root).empty() ? "it must be a path in UTF-8" : ""; },
          "");
  app.add_flag("--no-probe", noProbe, "Load nothing; excludes --log")->excludes(log)->option_text(" ");
  app.add_option("--color", options.color, "When to use colours: auto, always or never")
      ->option_text("WHEN")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, Color>{{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}}));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    std::ostringstream text;
    const int status = app.exit(end, text, text);
    return Refusal{text.str(), status != 0};
  }
  options.probe = !noProbe;
  return options;
}

}  // namespace doctor
