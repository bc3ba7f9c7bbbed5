#include "doctor/report/head.h"

#include <vector>

#include "doctor/child/patience.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"
#include "doctor/version.h"

namespace doctor {
namespace {

// "2026-11-21T16:30:05+01:00" as people write it.
std::string WithoutSeconds(const std::string& time) {
  constexpr std::size_t kDay = 10;
  constexpr std::size_t kMinutes = 16;
  constexpr std::size_t kSeconds = 19;
  return time.size() < kSeconds
             ? time
             : time.substr(0, kDay) + " " + time.substr(kDay + 1, kMinutes - kDay - 1) + " " + time.substr(kSeconds);
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    joined.append(joined.empty() ? "" : ", ").append(text);
  }
  return joined;
}

std::string UserOf(const Machine& machine) {
  return machine.user.empty() ? "uid " + std::to_string(machine.user_id) : machine.user;
}

std::string LimitWords(const Machine& machine) {
  std::vector<std::string> limits;
  for (const ProcessLimit& limit : machine.limits) {
    const bool isHard = limit.hard == limit.soft;
    limits.push_back(limit.name + " " + std::to_string(limit.soft) +
                     (isHard ? "" : " of " + (limit.hard ? std::to_string(*limit.hard) : "any")));
  }
  return limits.empty() ? "none" : Joined(limits);
}

std::string LoadingWords(const Question& asked) {
  return asked.probe ? "tried, each step for at most " + Seconds(asked.patience.limit) + " s" : "not tried";
}

}  // namespace

std::string HeadLine(const Machine& machine) {
  std::string line = std::string("grellin_doctor ") + kVersion;
  if (!machine.host.empty()) {
    line += " on " + machine.host + " as " + UserOf(machine);
  }
  for (const std::string& part : {WithoutSeconds(machine.time), machine.system, machine.c_library}) {
    line.append(part.empty() ? "" : ", ").append(part);
  }
  return Printable(line);
}

void PutHead(Page& page, const Head& head) {
  page.Heading("Asked", "");
  page.Table({{{"settings"}, {Printable(head.asked.settings_path)}},
              {{"root"}, {head.asked.root ? Printable(*head.asked.root) : "the one in the settings"}},
              {{"loading"}, {LoadingWords(head.asked)}}},
             kIndent);
  const Machine& machine = head.machine;
  page.Heading("Machine", "");
  page.Table({{{"user"},
               {Printable(UserOf(machine)) + ", uid " + std::to_string(machine.user_id) + ", gid " +
                std::to_string(machine.group_id)}},
              {{"groups"}, {Printable(Joined(machine.groups))}},
              {{"kernel"}, {Printable(machine.kernel)}},
              {{"limits"}, {LimitWords(machine)}},
              {{"locale"}, {machine.locale.empty() ? "not set" : Printable(machine.locale)}}},
             kIndent);
}

}  // namespace doctor
