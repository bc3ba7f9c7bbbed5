#include "doctor/examine/application_report.h"
#include "doctor/examine/text.h"
#include "doctor/judge/near_misses.h"

namespace doctor {

Warnings ApplicationNearMisses(const ApplicationReport& report) {
  Warnings warnings;
  if (report.assembly_file.state == FileState::kMissing) {
    warnings.push_back({"missing-assembly", Printable(report.assembly_file.path),
                        "the application's assembly is missing", "install the product again"});
  }
  for (const FrameworkReport& framework : report.frameworks) {
    if (framework.is_there == false) {
      warnings.push_back({"missing-framework", Printable(report.runtime_config.path),
                          "the application needs " + Printable(framework.name) + " " + Printable(framework.version) +
                              ", which the runtime root does not have",
                          "install that framework under the runtime root"});
    }
  }
  return warnings;
}

}  // namespace doctor
