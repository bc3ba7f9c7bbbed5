#include "tests/support/stand_in_host.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <utility>

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr std::array kVariantFolders{"whole",       "lacks_initialize", "lacks_run", "lacks_close",
                                     "lacks_start", "null_run",         "unresolved"};
constexpr std::array kFunctionNames{"INITIALIZE", "RUN", "CLOSE", "START", "MANAGED"};

int HexDigit(char c) {
  return c <= '9' ? c - '0' : c - 'a' + 10;
}

std::string Unescape(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      result += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::pair<std::string, std::string> SplitAtEquals(const std::string& text) {
  const auto equals = text.find('=');
  return {text.substr(0, equals), equals == std::string::npos ? "" : text.substr(equals + 1)};
}

HostCall ParseEvent(const std::string& line) {
  HostCall call;
  std::istringstream stream(line);
  std::getline(stream, call.name, '\t');
  std::getline(stream, call.version, '\t');
  call.version = Unescape(call.version);
  for (std::string field; std::getline(stream, field, '\t');) {
    const auto [name, escaped] = SplitAtEquals(field);
    const std::string value = Unescape(escaped);
    if (name == "argv") {
      call.arguments.push_back(value);
    } else if (name == "environment") {
      call.environment.insert(SplitAtEquals(value));
    } else {
      call.fields[name] = value;
    }
  }
  return call;
}

}  // namespace

fs::path HostLibrary(HostVariant variant) {
  return fs::path(STAND_IN_HOST_FOLDER) / kVariantFolders.at(static_cast<std::size_t>(variant)) / "libhostfxr.so";
}

std::string HostCall::Variable(const std::string& variable) const {
  const auto found = environment.find(variable);
  return found == environment.end() ? "(not set)" : found->second;
}

StandInHost::StandInHost() {
  environment_["STAND_IN_RECORD"] = folder_ / "record";
}

StandInHost& StandInHost::Tell(HostFunction function, const std::string& what, const std::string& value) {
  const std::string name = kFunctionNames.at(static_cast<std::size_t>(function));
  environment_["STAND_IN_" + name + "_" + what] = value;
  return *this;
}

StandInHost& StandInHost::Returns(HostFunction function, int status) {
  return Tell(function, "RETURNS", std::to_string(status));
}

StandInHost& StandInHost::Throws(HostFunction function, const std::string& what) {
  return Tell(function, "THROWS", what);
}

StandInHost& StandInHost::ThrowsOwnClass(HostFunction function, const std::string& what) {
  return Tell(function, "THROWS_OWN_CLASS", what);
}

StandInHost& StandInHost::Says(HostFunction function, const std::string& words) {
  return Tell(function, "SAYS", words);
}

StandInHost& StandInHost::Exits(HostFunction function, int status) {
  return Tell(function, "EXITS", std::to_string(status));
}

StandInHost& StandInHost::Dies(HostFunction function, int signal) {
  return Tell(function, "DIES", std::to_string(signal));
}

StandInHost& StandInHost::SetsErrno(HostFunction function, int error) {
  return Tell(function, "ERRNO", std::to_string(error));
}

StandInHost& StandInHost::IsStrict() {
  environment_["STAND_IN_IS_STRICT"] = "1";
  return *this;
}

StandInHost& StandInHost::GivesNoHandle() {
  return Tell(HostFunction::kInitialize, "GIVES_NO_HANDLE", "1");
}

StandInHost& StandInHost::OffersOnly(int type) {
  return Tell(HostFunction::kStart, "OFFERS", std::to_string(type));
}

StandInHost& StandInHost::Knows(const std::vector<fs::path>& assemblies) {
  std::string& list = environment_["STAND_IN_ASSEMBLIES"];
  for (const fs::path& assembly : assemblies) {
    list += assembly.string() + ":";
  }
  return *this;
}

std::vector<HostCall> StandInHost::Calls() const {
  std::vector<HostCall> calls;
  if (fs::exists(folder_ / "record")) {
    std::istringstream stream(ReadFile(folder_ / "record"));
    for (std::string line; std::getline(stream, line);) {
      calls.push_back(ParseEvent(line));
    }
  }
  return calls;
}

std::vector<std::string> StandInHost::Story() const {
  std::vector<std::string> story;
  for (const HostCall& call : Calls()) {
    story.push_back(call.version + " " + call.name);
  }
  return story;
}

std::string StandInHost::VersionThatRan() const {
  std::string versions;
  for (const HostCall& call : Calls()) {
    if (call.name == "run_app") {
      versions += (versions.empty() ? "" : ", ") + call.version;
    }
  }
  return versions;
}

HostCall StandInHost::Call(const std::string& name) const {
  for (HostCall& call : Calls()) {
    if (call.name == name) {
      return std::move(call);
    }
  }
  ADD_FAILURE() << "no stand-in host recorded the call " << name;
  return {};
}

void StandInHost::Forget() {
  fs::remove(folder_ / "record");
}

}  // namespace tests
