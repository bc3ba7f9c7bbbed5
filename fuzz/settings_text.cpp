// A settings file of any bytes, against a plain reading of its grammar: what each line is, what is stored, what is
// found in the end, and where the load ends at a line that is not UTF-8.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "foundation/strings.h"
#include "fuzz/support.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

namespace detail = netloader::quor::detail;

namespace {

// What a load tells, a text for each step.
using Steps = std::vector<std::string>;

// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): no listener is destroyed through its base.
class Recorder final : public detail::SettingsListener {
 public:
  void IsLoadedAlready() override { steps_.emplace_back("again"); }
  void Skips(std::string_view line) override { steps_.push_back("skips " + std::string(line)); }
  void Takes(std::string_view line, const detail::SettingsLine& parsed) override {
    Require(line == std::string(parsed.key) + "=" + std::string(parsed.value));
    steps_.push_back("takes " + std::string(parsed.key) + "\n" + std::string(parsed.value));
  }
  void Stores(const detail::SettingsPair& /*pair*/, bool replaces) override {
    steps_.emplace_back(replaces ? "replaces" : "stores");
  }
  void IsLoaded() override { steps_.emplace_back("loaded"); }

  const Steps& Heard() const { return steps_; }

 private:
  Steps steps_;
};

// The same file, read by the rules.
class Model {
 public:
  explicit Model(std::string_view text) {
    while (!text.empty() && isWhole) {
      const std::size_t end = text.find('\n');
      ReadLine(std::string(text.substr(0, end)));
      text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    if (isWhole) {
      steps.emplace_back("loaded");
    }
  }

  Steps steps;
  std::map<std::u16string, std::u16string> pairs;
  bool isWhole = true;  // False where a line is not UTF-8.

 private:
  void ReadLine(const std::string& line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || equals == 0) {
      steps.push_back("skips " + line);
      return;
    }
    steps.push_back("takes " + line.substr(0, equals) + "\n" + line.substr(equals + 1));
    const auto key = StrictUtf16(line.substr(0, equals));
    const auto value = StrictUtf16(line.substr(equals + 1));
    isWhole = key && value;
    if (isWhole) {
      steps.emplace_back(pairs.contains(*key) ? "replaces" : "stores");
      pairs[*key] = *value;
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Write(AsText(data, size));
  Model model(AsText(data, size));
  Recorder recorder;
  netloader::quor::DotnetSettingsProvider provider(file.Path(), recorder);

  try {
    provider.LoadSettingsFromFile();
    Require(model.isWhole);
    provider.LoadSettingsFromFile();
    model.steps.emplace_back("again");
  } catch (const std::bad_cast&) {
    Require(!model.isWhole);
  }

  Require(recorder.Heard() == model.steps);
  for (const auto& [key, value] : model.pairs) {
    Require(provider.GetValue(key) == value);
    const std::u16string other = key + u"x";
    Require(model.pairs.contains(other) || provider.GetValue(other).empty());
  }
  return 0;
}
