#include "doctor/report/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "doctor/report/page.h"

namespace doctor {
namespace {

// Narrower tables fall apart, and the eye loses its way in longer lines.
constexpr std::size_t kNarrowest = 60;
constexpr std::size_t kWidest = 160;

std::string_view Variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::size_t NumberIn(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

std::size_t ColumnsOf(int descriptor) {
  winsize size{};
  return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace

Terminal LookAtTerminal(int descriptor) {
  Terminal terminal;
  terminal.is_there = ::isatty(descriptor) == 1;
  terminal.can_erase = Variable("TERM") != "dumb";
  terminal.takes_colors = Variable("NO_COLOR").empty() && terminal.can_erase;
  const std::size_t wanted = NumberIn(Variable("COLUMNS"));
  terminal.columns = wanted != 0 ? wanted : ColumnsOf(descriptor);
  return terminal;
}

std::size_t PageWidth(const Terminal& terminal) {
  return terminal.is_there && terminal.columns != 0 ? std::clamp(terminal.columns, kNarrowest, kWidest) : kPageWidth;
}

}  // namespace doctor
