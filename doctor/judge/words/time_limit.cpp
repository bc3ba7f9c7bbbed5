#include "doctor/judge/words/time_limit.h"

namespace doctor {

std::string Seconds(std::chrono::milliseconds time) {
  constexpr int kMilliseconds = 1000;
  std::string text = std::to_string(time.count() / kMilliseconds);
  if (const auto rest = time.count() % kMilliseconds; rest != 0) {
    text.append(".").append(std::to_string(kMilliseconds + rest).substr(1));
    text.erase(text.find_last_not_of('0') + 1);
  }
  return text;
}

Values LimitValues(const ChildResult& child) {
  constexpr int kTimes = 6;
  const auto longer = std::chrono::ceil<std::chrono::seconds>(child.limit * kTimes);
  return {{"limit", Seconds(child.limit)}, {"longer", std::to_string(longer.count())}};
}

}  // namespace doctor
