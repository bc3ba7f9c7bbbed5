#include "doctor/child/answer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "doctor/child/shared_text.h"

namespace doctor {
namespace {

constexpr char kEnd = '\0';

struct EndName {
  ChildEnd end;
  std::string_view name;
};

constexpr auto kEndNames = std::to_array<EndName>({
    {ChildEnd::kFinished, "finished"},
    {ChildEnd::kThrew, "threw"},
    {ChildEnd::kThrewUnknown, "threw unknown"},
});

}  // namespace

std::string Encode(const WorkEnd& work) {
  std::string bytes(std::ranges::find(kEndNames, work.end, &EndName::end)->name);
  bytes += kEnd;
  for (const std::string& text : work.texts) {
    const std::size_t taken = bytes.size() + work.texts.size();  // Each text needs its end.
    bytes += text.substr(0, SharedText::kLongest - std::min(taken, SharedText::kLongest));
    bytes += kEnd;
  }
  return bytes;
}

std::optional<WorkEnd> Decode(std::string_view bytes) {
  if (!bytes.ends_with(kEnd)) {
    return std::nullopt;
  }
  Answer texts;
  for (std::size_t end = 0; !bytes.empty(); bytes.remove_prefix(end + 1)) {
    end = bytes.find(kEnd);
    texts.emplace_back(bytes.substr(0, end));
  }
  const auto* row = std::ranges::find(kEndNames, texts.front(), &EndName::name);
  if (row == kEndNames.end()) {
    return std::nullopt;
  }
  texts.erase(texts.begin());
  return WorkEnd{row->end, std::move(texts)};
}

}  // namespace doctor
