#include "doctor/child/patience.h"

namespace doctor {

ChildResult RunInChild(const std::function<Answer()>& work, const std::string& what, const Patience& patience) {
  if (!patience.waiting_for) {
    return RunInChild(work, patience.limit);
  }
  bool isLong = false;
  ChildResult result = RunInChild(work, patience.limit, [&] {
    isLong = true;
    patience.waiting_for(what);
  });
  if (isLong) {
    patience.waiting_for({});
  }
  return result;
}

}  // namespace doctor
