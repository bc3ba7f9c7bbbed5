#include "doctor/report/details/details.h"

#include <algorithm>

#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

constexpr std::size_t kLongestValue = 200;

}  // namespace

std::string Shortened(std::string_view bytes) {
  return bytes.size() <= kLongestValue ? Quoted(bytes)
                                       : Quoted(bytes.substr(0, kLongestValue)) + " and " +
                                             std::to_string(bytes.size() - kLongestValue) + " bytes more";
}

void PutWords(Page& page, const std::string& whose, std::string words) {
  if (words.empty()) {
    return;
  }
  page.Paragraph(whose, kIndent);
  for (std::size_t end = 0; !words.empty(); words.erase(0, end + 1)) {
    end = std::min(words.find('\n'), words.size());
    page.Paragraph(Printable(words.substr(0, end)), 2 * kIndent);
  }
}

}  // namespace doctor
