#include "doctor/report/details/environment_details.h"

#include "doctor/judge/words/text.h"
#include "doctor/judge/words/variable_words.h"
#include "doctor/report/details/details.h"

namespace doctor {

void PutEnvironment(Page& page, const EnvironmentReport& environment) {
  page.Heading("3. Environment", "");
  Rows rows;
  for (const VariableReport& variable : environment.variables) {
    rows.push_back({{variable.name},
                    {variable.value ? "set to " + *variable.value : "removed"},
                    {variable.now ? "now " + Shortened(*variable.now) : "now not set",
                     variable.now ? Paint::kPlain : Paint::kFaint}});
  }
  page.Table(rows, kIndent);
  if (environment.obeyed.empty()) {
    return;
  }
  page.Paragraph("set by others, and obeyed:", kIndent);
  Rows obeyed;
  for (const ObeyedVariable& variable : environment.obeyed) {
    obeyed.push_back({{Printable(variable.name)},
                      {IsKnownVariable(variable.name) ? Shortened(variable.value) : "(not shown)"},
                      {std::string(VariableWords(variable.name))}});
  }
  page.Table(obeyed, kIndent);
}

}  // namespace doctor
