#include "doctor/report/waiting_line.h"

#include <unistd.h>

#include <string_view>

#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"

namespace doctor {
namespace {

constexpr std::size_t kUsualWidth = 80;

// The beginning that takes as many columns.
std::string Cut(std::string text, std::size_t columns) {
  while (Columns(text) > columns) {
    text.pop_back();
  }
  return text;
}

void Write(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

void WaitingLine::Show(const std::string& what) {
  std::string line = what.empty() ? "" : "Waiting for " + Printable(what) + ", " + Seconds(limit_) + " s at most";
  if (!terminal_.can_erase) {
    return Write(descriptor_, line.empty() ? line : line + "\n");
  }
  // A line that fills the terminal would leave a part of it in the line above.
  line = Cut(std::move(line), (terminal_.columns != 0 ? terminal_.columns : kUsualWidth) - 1);
  std::string text = "\r";
  text.append(columns_, ' ').append("\r").append(line);
  columns_ = Columns(line);
  Write(descriptor_, text);
}

}  // namespace doctor
