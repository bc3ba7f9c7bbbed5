#include "doctor/judge/words/message.h"

namespace doctor {

std::string Filled(std::string_view message, const Values& values) {
  std::string text;
  while (true) {
    const std::size_t open = message.find('{');
    const std::size_t close = message.find('}', open);
    if (open == std::string_view::npos || close == std::string_view::npos) {
      return text.append(message);
    }
    text += message.substr(0, open);
    const auto value = values.find(message.substr(open + 1, close - open - 1));
    text += value != values.end() ? std::string_view(value->second) : message.substr(open, close - open + 1);
    message.remove_prefix(close + 1);
  }
}

}  // namespace doctor
