#include "doctor/report/details/other_roots_details.h"

#include <algorithm>

#include "doctor/judge/words/message.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/details/details.h"

namespace doctor {
namespace {

constexpr auto kShownRoots = std::to_array<Shown<RootState>>({
    {RootState::kNothing, "no host", Paint::kFaint},
    {RootState::kNoVersion, "no version that fits", Paint::kFaint},
    {RootState::kRefused, "{version}, refused", Paint::kOdd},
    {RootState::kNotLoaded, "{version}, not loaded", Paint::kPlain},
    {RootState::kServes, "{version}, would do", Paint::kGood},
});
static_assert(IsComplete(kShownRoots, RootState::kServes));

std::vector<Cell> RowOfRoot(const OtherRoot& root) {
  const auto& [state, words, paint] = RowOf(kShownRoots, root.state);
  const std::string found = Filled(words, {{"version", Printable(root.version)}});
  const std::string& by = root.place.named_by;
  return {{Printable(root.place.folder)},
          {found + (root.has_framework ? ", with frameworks" : ""), paint},
          {by.empty() ? "" : "named by " + Printable(by), Paint::kFaint}};
}

bool IsEmpty(const OtherRoot& root) {
  return root.state == RootState::kNothing && !root.has_framework;
}

}  // namespace

void PutOtherRoots(Page& page, const std::vector<OtherRoot>& roots) {
  if (std::ranges::all_of(roots, [](const OtherRoot& root) { return root.place.is_meant; })) {
    return;
  }
  page.Heading("Other places of .NET", "");
  Rows rows;
  std::string empty;
  for (const OtherRoot& root : roots) {
    if (root.place.is_meant) {
      continue;  // The opening says what is wrong with it.
    }
    if (IsEmpty(root)) {
      empty.append(empty.empty() ? "" : ", ").append(Printable(root.place.folder));
    } else {
      rows.push_back(RowOfRoot(root));
    }
  }
  page.Table(rows, kIndent);
  if (!empty.empty()) {
    page.Paragraph("nothing in " + empty, kIndent, Paint::kFaint);
  }
}

}  // namespace doctor
