#include <unistd.h>

#include <clocale>
#include <csignal>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <variant>

#include "doctor/child/patience.h"
#include "doctor/examine/machine/identity.h"
#include "doctor/examine/machine/launcher_file.h"
#include "doctor/examine/machine/machine.h"
#include "doctor/judge/diagnosis.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/words/text.h"
#include "doctor/options.h"
#include "doctor/report/explanation.h"
#include "doctor/report/head.h"
#include "doctor/report/json_report.h"
#include "doctor/report/loader_log.h"
#include "doctor/report/new_file.h"
#include "doctor/report/support_report.h"
#include "doctor/report/terminal.h"
#include "doctor/report/text_report.h"
#include "doctor/report/waiting_line.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace {

constexpr int kWouldRun = 0;
constexpr int kWouldNot = 1;
constexpr int kWrongUsage = 2;
constexpr int kNotKnown = 3;

doctor::TextStyle StyleFor(const doctor::Options& options) {
  const doctor::Terminal terminal = doctor::LookAtTerminal(STDOUT_FILENO);
  const bool isColored = options.color == doctor::Color::kAuto ? terminal.is_there && terminal.takes_colors
                                                               : options.color == doctor::Color::kAlways;
  return {isColored, options.verbose, doctor::PageWidth(terminal)};
}

int CannotWrite() {
  std::cerr << "grellin_doctor: the report cannot be written" << std::endl;
  return kNotKnown;
}

int WrongUsage(const std::string& words) {
  std::cerr << "grellin_doctor: " << doctor::Printable(words) << std::endl;
  return kWrongUsage;
}

int Write(const std::string& text) {
  std::cout << text << std::flush;
  return std::cout ? kWouldRun : CannotWrite();
}

int Refuse(const doctor::Refusal& refusal) {
  if (refusal.is_error) {
    std::cerr << refusal.text;
    return kWrongUsage;
  }
  return Write(refusal.text);
}

int Explain(const std::string& code) {
  if (code == "list") {
    return Write(doctor::AllCodes());
  }
  if (const auto text = doctor::Explanation(code, doctor::PageWidth(doctor::LookAtTerminal(STDOUT_FILENO)))) {
    return Write(*text);
  }
  std::string words = "there is no finding '" + code + "'; the nearest ones are";
  for (const std::string_view near : doctor::NearestCodes(code)) {
    words.append(" ").append(near);
  }
  return WrongUsage(words + "; all:  grellin_doctor --explain list");
}

doctor::Walk WalkOf(const doctor::Question& question) {
  return {question.settings_path, question.root ? std::optional(doctor::ToUtf16(*question.root)) : std::nullopt};
}

// Whether it is whole.
bool WriteLog(const std::string& file, const doctor::Question& question) {
  const doctor::LoaderLog log = doctor::WriteLoaderLog(file, WalkOf(question), question.patience);
  const std::string path = doctor::Printable(log.file);
  std::cerr << "grellin_doctor: "
            << (log.failure.empty() ? "the loader's log is in " + path
                                    : "the log cannot be written to " + path + ": " + doctor::Printable(log.failure))
            << std::endl;
  return log.failure.empty();
}

// Whether it is whole.
bool WriteReport(const std::string& file, const doctor::Diagnosis& diagnosis, const doctor::Head& head) {
  const std::string log = head.asked.probe ? doctor::LoaderLogText(WalkOf(head.asked), head.asked.patience)
                                           : "Not written, as nothing was to be loaded.\n";
  const std::string failure =
      doctor::WriteNewFile(file, doctor::SupportReport(diagnosis, head, doctor::LookAtSurrounds(diagnosis), log));
  std::cerr << "grellin_doctor: "
            << (failure.empty() ? "the report for support is in " + doctor::Printable(file)
                                : "the report cannot be written to " + doctor::Printable(file) + ": " + failure)
            << std::endl;
  return failure.empty();
}

// Whoever watches a terminal wants to know what takes so long; a file or a program does not.
std::function<void(const std::string&)> TellerOf(const doctor::Terminal& terminal, doctor::WaitingLine& line) {
  if (!terminal.is_there) {
    return {};
  }
  return [&line](const std::string& what) { line.Show(what); };
}

int StatusOf(doctor::Outcome outcome) {
  return outcome == doctor::Outcome::kRuns ? kWouldRun : outcome == doctor::Outcome::kNotKnown ? kNotKnown : kWouldNot;
}

int Run(const doctor::Options& options) {
  if (options.explain) {
    return Explain(*options.explain);
  }
  if (const std::string reason = options.user ? doctor::Become(*options.user) : ""; !reason.empty()) {
    return WrongUsage(reason);
  }
  doctor::Question question;
  // What is said of a file, and the commands that mend it, hold in each folder.
  question.settings_path = options.settings ? std::filesystem::absolute(*options.settings).string()
                                            : doctor::ToUtf8(netloader::quor::detail::SettingsFilePath());
  question.root = options.root;
  question.probe = options.probe;
  question.launcher = doctor::LauncherBeside();
  const doctor::Terminal terminal = doctor::LookAtTerminal(STDERR_FILENO);
  doctor::WaitingLine line(STDERR_FILENO, terminal, options.time_limit);
  question.patience = {options.time_limit, TellerOf(terminal, line)};
  const doctor::Diagnosis diagnosis = doctor::Diagnose(question);
  const doctor::Head head{doctor::LookAtMachine(), question};
  std::cout << (options.json ? doctor::JsonReport(diagnosis, head)
                             : doctor::TextReport(diagnosis, StyleFor(options), head))
            << std::flush;
  if (!std::cout) {
    return CannotWrite();
  }
  const bool hasLog = !options.log || WriteLog(*options.log, question);
  const bool hasReport = !options.report || WriteReport(*options.report, diagnosis, head);
  if (!hasLog || !hasReport) {
    return kNotKnown;
  }
  return StatusOf(diagnosis.verdict.outcome);
}

}  // namespace

int main(int argc, char** argv) {
  // As the launcher does, for the libraries that are loaded.
  static_cast<void>(std::setlocale(LC_ALL, ".UTF8"));
  // Inherited when ignored, and then nobody learns how a child ended.
  static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
  // A file that may not grow further is a failed write, which is told.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  try {
    const auto parsed = doctor::ParseOptions(argc, argv);
    if (const auto* refusal = std::get_if<doctor::Refusal>(&parsed)) {
      return Refuse(*refusal);
    }
    return Run(std::get<doctor::Options>(parsed));
  } catch (const std::exception& failure) {
    std::cerr << "grellin_doctor: it cannot work: " << doctor::Printable(failure.what()) << std::endl;
    return kNotKnown;
  }
}
