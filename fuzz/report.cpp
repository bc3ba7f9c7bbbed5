// The reports of a doctor that finds any bytes wherever there can be some: in the settings, in the names of versions,
// in what hosts and runtimes say. The text is printable UTF-8 that fits its page, and the JSON is what its schema says.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <system_error>

#include "doctor/judge/diagnosis.h"
#include "doctor/report/json_report.h"
#include "doctor/report/text_report.h"
#include "fuzz/schema.h"
#include "fuzz/support.h"

namespace fs = std::filesystem;
using doctor::ChildEnd;
using doctor::Diagnosis;
using nlohmann::json;

namespace {

constexpr std::size_t kMostLines = 64;

// A folder with settings and a root, gone at the end.
class World {
 public:
  World() {
    std::string pattern = fs::temp_directory_path() / "fuzz-report-XXXXXX";
    folder_ = ::mkdtemp(pattern.data());
    fs::create_directories(Root() / "host" / "fxr");
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() { fs::remove_all(folder_); }

  fs::path Root() const { return folder_ / "root"; }
  fs::path Settings() const { return folder_ / "settings.ini"; }

  // "s LINE" of the settings, "v VERSION LIBRARY", "w VERSION" without a library. What cannot be made is left out.
  void Add(std::string_view kind, std::string_view line) {
    if (kind == "s") {
      std::ofstream(Settings(), std::ios::app) << line << '\n';
    } else if (kind == "v" || kind == "w") {
      AddVersion(Lines::Word(line), line, kind == "v");
    }
  }

 private:
  void AddVersion(std::string_view name, std::string_view library, bool hasLibrary) const {
    std::error_code error;
    const fs::path folder = Root() / "host" / "fxr" / fs::path(name.substr(0, name.find('\0'))).filename();
    fs::create_directories(folder, error);
    if (hasLibrary) {
      std::ofstream(folder / "libhostfxr.so") << library;
    }
  }

  fs::path folder_;
};

// How a child ended: a number and what it said.
doctor::ChildResult Child(std::string_view line) {
  doctor::ChildResult child;
  const std::uint64_t end = Lines::Number(Lines::Word(line));
  child.end = static_cast<ChildEnd>(end % static_cast<std::uint64_t>(ChildEnd::kNotStarted));
  child.code = static_cast<int>(end % 256);
  child.output = line;
  child.message = child.end == ChildEnd::kThrew ? child.output : "";
  return child;
}

// "END OUTPUT"; "RESULT HOST-TEXT" is told by a line of its own.
void SetContext(Diagnosis& diagnosis, std::string_view line) {
  diagnosis.application.context.emplace().child = Child(line);
}

void SetHostText(Diagnosis& diagnosis, std::string_view line) {
  auto& context = diagnosis.application.context;
  context = context ? context : doctor::ContextProbe{{ChildEnd::kFinished}};
  context->result = static_cast<std::int32_t>(Lines::Number(Lines::Word(line)));
  context->has_handle = context->result == 0;
  context->host_text = line;
}

void SetStart(Diagnosis& diagnosis, std::string_view line) {
  doctor::StartReport& start = diagnosis.start.emplace();
  start.probe.child = Child(line);
  start.probe.was_tried = true;
  start.probe.result = static_cast<std::int32_t>(line.size());
}

void AddBrokenFile(Diagnosis& diagnosis, std::string_view line) {
  if (diagnosis.start) {
    doctor::BrokenFile& file = diagnosis.start->broken.emplace_back();
    file.path = Lines::Word(line);
    file.detail = line;
    file.need = static_cast<doctor::Need>(line.size() % 3);
  }
}

void AddFramework(Diagnosis& diagnosis, std::string_view line) {
  auto& framework = diagnosis.application.frameworks.emplace_back();
  framework.name = Lines::Word(line);
  framework.version = line;
  framework.is_there = line.size() % 2 == 0;
}

// What only a host and a runtime could bring about.
void Add(Diagnosis& diagnosis, doctor::Head& head, std::string_view kind, std::string_view line) {
  if (kind == "c") {
    SetContext(diagnosis, line);
  } else if (kind == "h") {
    SetHostText(diagnosis, line);
  } else if (kind == "t") {
    SetStart(diagnosis, line);
  } else if (kind == "b") {
    AddBrokenFile(diagnosis, line);
  } else if (kind == "f") {
    AddFramework(diagnosis, line);
  } else if (kind == "m") {
    head.machine.host = head.machine.user = head.machine.locale = line;
    head.machine.groups.emplace_back(line);
  }
}

// The diagnosis of the world that the lines describe, judged with what they say of hosts.
Diagnosis Diagnosed(std::string_view text, doctor::Head& head) {
  World world;
  Lines lines(text);
  bool asksAboutRoot = false;
  for (std::size_t i = 0; i < kMostLines && !lines.IsAtEnd(); ++i) {
    std::string_view line = lines.Next();
    const std::string_view kind = Lines::Word(line);
    world.Add(kind, line);
    asksAboutRoot = asksAboutRoot || kind == "r";
  }
  head.asked.settings_path = world.Settings();
  head.asked.probe = false;
  if (asksAboutRoot) {
    head.asked.root = world.Root();
  }
  Diagnosis diagnosis = doctor::Diagnose(head.asked);
  lines = Lines(text);
  for (std::size_t i = 0; i < kMostLines && !lines.IsAtEnd(); ++i) {
    std::string_view line = lines.Next();
    const std::string_view kind = Lines::Word(line);
    Add(diagnosis, head, kind, line);
  }
  diagnosis.verdict = doctor::Judge({&diagnosis.settings, diagnosis.runtime ? &*diagnosis.runtime : nullptr,
                                     &diagnosis.application, diagnosis.start ? &*diagnosis.start : nullptr});
  doctor::Explain(diagnosis.verdict, diagnosis.warnings);
  return diagnosis;
}

// Nothing that a terminal would obey, or that moves or hides what stands beside it.
bool IsPrintable(std::string_view text) {
  const auto units = StrictUtf16(text);
  return units && std::ranges::none_of(*units, [](char16_t unit) {
           return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0xAD || (unit >= 0x200B && unit <= 0x200F) ||
                  (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2060 && unit <= 0x206F) || unit == 0xFEFF;
         });
}

std::size_t Width(std::string_view line) {
  return static_cast<std::size_t>(std::ranges::count_if(line, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// A line is too long only because of a command or of its last word.
bool Fits(std::string_view line, std::size_t width) {
  const std::string_view words = line.substr(std::min(line.find_first_not_of(' '), line.size()));
  const bool isCommand = words.starts_with("To mend it: ") || words.starts_with("-> ");
  const std::size_t last = line.rfind(' ');
  return Width(line) <= width || isCommand || last == std::string_view::npos || Width(line.substr(0, last)) <= width;
}

std::string WithoutColors(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    if (text.starts_with('\033')) {
      text.remove_prefix(text.find('m') + 1);
    } else {
      plain += text.front();
      text.remove_prefix(1);
    }
  }
  return plain;
}

void CheckText(const Diagnosis& diagnosis, const doctor::Head& head) {
  for (const bool isVerbose : {false, true}) {
    doctor::TextStyle style;
    style.verbose = isVerbose;
    style.width = isVerbose ? 60 : 100;
    const std::string text = doctor::TextReport(diagnosis, style, head);
    for (Lines lines(text); !lines.IsAtEnd();) {
      const std::string_view line = lines.Next();
      Require(IsPrintable(line) && Fits(line, style.width));
    }
    style.colored = true;
    Require(WithoutColors(doctor::TextReport(diagnosis, style, head)) == text);
  }
}

bool IsPrintable(const json& text) {
  return text.is_null() || IsPrintable(std::string_view(text.get_ref<const std::string&>()));
}

void CheckJson(const Diagnosis& diagnosis, const doctor::Head& head) {
  static const Schema schema([] {
    std::ifstream file(SCHEMA);
    return json::parse(file);
  }());
  const std::string text = doctor::JsonReport(diagnosis, head);
  Require(StrictUtf16(text).has_value() && text.ends_with("}\n"));
  const json report = json::parse(text);
  Require(schema.Accepts(report));
  for (const char* name : {"line", "reason", "cure"}) {
    Require(IsPrintable(report["verdict"][name]));
  }
  for (const json& warning : report["warnings"]) {
    Require(IsPrintable(warning["place"]) && IsPrintable(warning["text"]) && IsPrintable(warning["cure"]));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  doctor::Head head;
  const Diagnosis diagnosis = Diagnosed(AsText(data, size), head);
  CheckText(diagnosis, head);
  CheckJson(diagnosis, head);
  return 0;
}
