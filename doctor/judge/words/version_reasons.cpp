#include "doctor/judge/words/version_reasons.h"

#include "doctor/child/signal_name.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"
#include "foundation/result_code.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

Values ValuesOf(const VersionReport& version) {
  const std::string words = LastWords(version.child);
  return {{"prefix", Quoted(ToUtf8(netloader::quor::kDotnetVersionPrefix))},
          {"library", ToUtf8(netloader::kHostFxrFileName)},
          {"result", std::string(tov::ResultCodeMessage(version.result))},
          {"words", version.words},
          {"function", version.missing_function},
          {"said", version.child.message.empty() ? std::string() : ": " + version.child.message},
          {"status", std::to_string(version.child.code)},
          {"signal", SignalName(version.child.code)},
          {"wrote", words.empty() ? words : "; it wrote: " + words}};
}

}  // namespace

std::string LastWords(const ChildResult& child) {
  constexpr std::size_t kLongest = 200;
  std::string words = child.output.substr(0, kLongest);
  words.erase(words.find_last_not_of(" \r\n") + 1);
  return words;
}

std::string_view ReasonCode(const VersionReport& version) {
  return version.reason ? RowOf(kVersionReasons, *version.reason).code : std::string_view();
}

std::string Detail(const VersionReport& version) {
  return version.reason ? Filled(RowOf(kVersionReasons, *version.reason).detail, ValuesOf(version)) : std::string();
}

}  // namespace doctor
