#include "doctor/report/details/settings_details.h"

#include "doctor/judge/shown_line.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/details/details.h"

namespace doctor {
namespace {

constexpr auto kShownUses = std::to_array<Shown<LineUse>>({
    {LineUse::kUsed, "used", Paint::kGood},
    {LineUse::kUnused, "not used", Paint::kFaint},
    {LineUse::kReplaced, "replaced by line {line}", Paint::kOdd},
    {LineUse::kSkipped, "skipped: it sets nothing", Paint::kFaint},
    {LineUse::kMalformed, "not UTF-8: a launch aborts here", Paint::kBad},
});
static_assert(IsComplete(kShownUses, LineUse::kMalformed));

Cell UseCell(const SettingsEntry& entry) {
  const auto& [use, words, paint] = RowOf(kShownUses, entry.use);
  return {Filled(words, {{"line", std::to_string(entry.replaced_by)}}), paint};
}

// The lines that matter are always shown, the others as far as there is room.
bool Matters(const SettingsEntry& entry) {
  return entry.use == LineUse::kUsed || entry.use == LineUse::kMalformed;
}

std::string OrHidden(const std::optional<std::string>& bytes) {
  return bytes ? Shortened(*bytes) : std::string(kHidden);
}

std::string LineWords(const SettingsEntry& entry) {
  const ShownLine shown = ShownOf(entry);
  return entry.use == LineUse::kSkipped ? OrHidden(shown.value) : OrHidden(shown.key) + " = " + OrHidden(shown.value);
}

}  // namespace

void PutSettings(Page& page, const SettingsReport& settings) {
  page.Heading("1. Settings", Printable(settings.path));
  if (!settings.IsReadable()) {
    page.Paragraph(settings.end == SettingsEnd::kNeverEnds ? "is a pipe" : "cannot be read: " + settings.reason,
                   kIndent, Paint::kBad);
    return;
  }
  Rows rows;
  std::size_t leftOut = 0;
  for (const SettingsEntry& entry : settings.entries) {
    if (rows.size() >= kLongestList && !Matters(entry)) {
      ++leftOut;
      continue;
    }
    rows.push_back({{"line " + std::to_string(entry.line)}, UseCell(entry), {LineWords(entry)}});
  }
  page.Table(rows, kIndent);
  if (leftOut > 0) {
    page.Paragraph("and " + std::to_string(leftOut) + " lines more that are not used", kIndent, Paint::kFaint);
  }
  if (settings.entries.empty()) {
    page.Paragraph("holds no line", kIndent, Paint::kOdd);
  }
}

}  // namespace doctor
