#include "doctor/report/details/runtime_details.h"

#include "doctor/judge/words/message.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/version_reasons.h"
#include "doctor/report/details/details.h"
#include "foundation/result_code.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace doctor {
namespace {

using netloader::FxrFolderState;

constexpr auto kShownStandings = std::to_array<Shown<Standing>>({
    {Standing::kChosen, "chosen", Paint::kGood},
    {Standing::kNotLoaded, "sound, not loaded", Paint::kPlain},
    {Standing::kRefused, "refused", Paint::kOdd},
    {Standing::kFatal, "fatal", Paint::kBad},
    {Standing::kNotKnown, "not known", Paint::kBad},
});
static_assert(IsComplete(kShownStandings, Standing::kNotKnown));

Cell StandingCell(const VersionReport& version) {
  if (version.standing == Standing::kRefused && !version.is_candidate) {
    return {"refused", Paint::kFaint};
  }
  const auto& [standing, words, paint] = RowOf(kShownStandings, version.standing);
  return {std::string(words), paint};
}

std::string FolderWords(const netloader::Discovery& discovery) {
  if (discovery.state == FxrFolderState::kWalked && discovery.findings.empty()) {
    return "holds no version";
  }
  return Filled(RowOf(kFolderStates, discovery.state).sentence,
                {{"result", std::string(tov::ResultCodeMessage(discovery.result))}});
}

}  // namespace

void PutRuntime(Page& page, const std::optional<RuntimeReport>& runtime) {
  if (!runtime) {
    page.Heading("2. Runtime", "");
    page.Paragraph("not looked for: no runtime root is known", kIndent, Paint::kFaint);
    return;
  }
  page.Heading("2. Runtime", Printable(ToUtf8(runtime->discovery.fxr_folder)));
  if (const std::string words = FolderWords(runtime->discovery); !words.empty()) {
    page.Paragraph(words, kIndent, Paint::kBad);
  }
  Rows rows;
  for (const VersionReport& version : runtime->versions) {
    if (rows.size() < kLongestList) {
      rows.push_back({{version.name.empty() ? "(not UTF-8)" : Printable(version.name)},
                      StandingCell(version),
                      {Printable(Detail(version))}});
    }
  }
  page.Table(rows, kIndent);
  if (runtime->versions.size() > rows.size()) {
    page.Paragraph("and " + std::to_string(runtime->versions.size() - rows.size()) + " folders more", kIndent,
                   Paint::kFaint);
  }
}

}  // namespace doctor
