#include "doctor/report/details/application_details.h"

#include "doctor/child/child.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/probe.h"
#include "doctor/judge/words/file_detail.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/names.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/details/details.h"

namespace doctor {
namespace {

Cell FileCell(const FileReport& file, bool isNeeded) {
  const std::string words = Detail(file);
  const std::string detail = words.empty() || file.state == FileState::kMissing ? std::string() : ": " + words;
  const Paint paint = file.state == FileState::kPresent ? Paint::kGood : isNeeded ? Paint::kBad : Paint::kOdd;
  return {std::string(RowOf(kFileStates, file.state).code) + detail, paint};
}

Cell FrameworkCell(const FrameworkReport& framework) {
  if (!framework.is_there) {
    return {"needed; not looked for, as no runtime root is known", Paint::kFaint};
  }
  return *framework.is_there ? Cell{"needed; " + Printable(framework.taken) + " is taken", Paint::kGood}
                             : Cell{"needed, and not there", Paint::kBad};
}

std::string ContextWords(const ContextProbe& context) {
  if (context.child.end != ChildEnd::kFinished) {
    return context.child.end == ChildEnd::kTimedOut ? "was not created in time" : "was not created";
  }
  return (context.IsUsable() ? "created and closed: " : "refused: ") + Hex(context.result) + " " +
         std::string(HostStatusName(context.result));
}

void PutHostWords(Page& page, const ContextProbe& context) {
  if (!context.IsUsable()) {
    PutWords(page, "The host says:", context.host_text.empty() ? context.child.output : context.host_text);
  }
}

}  // namespace

void PutApplication(Page& page, const ApplicationReport& application) {
  page.Heading("4. Application", Printable(application.assembly_file.path));
  Rows rows = {{{"assembly"}, FileCell(application.assembly_file, true)},
               {{"runtimeconfig.json"}, FileCell(application.runtime_config, true)},
               {{"deps.json"}, FileCell(application.dependencies, false)}};
  for (const FrameworkReport& framework : application.frameworks) {
    rows.push_back({{Printable(framework.name) + " " + Printable(framework.version)}, FrameworkCell(framework)});
  }
  if (application.context) {
    rows.push_back(
        {{"context"},
         {ContextWords(*application.context), application.context->IsUsable() ? Paint::kGood : Paint::kBad}});
  }
  page.Table(rows, kIndent);
  if (application.context) {
    PutHostWords(page, *application.context);
  }
}

}  // namespace doctor
