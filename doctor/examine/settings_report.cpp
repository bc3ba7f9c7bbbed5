#include "doctor/examine/settings_report.h"

#include <cstring>
#include <filesystem>
#include <system_error>
#include <typeinfo>
#include <unordered_map>
#include <utility>

#include "foundation/result_code_exception.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_listener.h"
#include "netloader/netloaderquorcommon/src/settings_map.h"

namespace doctor {
namespace {

namespace quor = netloader::quor::detail;
using netloader::quor::DotnetSettingsProvider;

bool IsPipe(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_fifo(path, ignored);
}

// Keeps each line with its use.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): no listener is destroyed through its base.
class Reader final : public quor::SettingsListener {
 public:
  explicit Reader(SettingsReport& report) : report_(report) {}

  void CannotOpen(const tov::WideString& /*path*/, int error) override { report_.reason = std::strerror(error); }
  void CannotRead(const tov::WideString& /*path*/, int error) override { report_.reason = std::strerror(error); }

  void Skips(std::string_view line) override { Add({}, line, LineUse::kSkipped); }

  void Takes(std::string_view /*line*/, const quor::SettingsLine& parsed) override {
    Add(parsed.key, parsed.value, LineUse::kMalformed);  // Unless it is stored.
  }

  void Stores(const quor::SettingsPair& pair, bool replaces) override {
    SettingsEntry& entry = report_.entries.back();
    entry.use = quor::FindKey(pair.key) ? LineUse::kUsed : LineUse::kUnused;
    std::size_t& last = last_with_key_[entry.key];
    if (replaces) {
      report_.entries[last].use = LineUse::kReplaced;
      report_.entries[last].replaced_by = entry.line;
    }
    last = report_.entries.size() - 1;
  }

 private:
  void Add(std::string_view key, std::string_view value, LineUse use) {
    report_.entries.push_back({report_.entries.size() + 1, std::string(key), std::string(value), use});
  }

  SettingsReport& report_;
  std::unordered_map<std::string, std::size_t> last_with_key_;
};

SettingsEnd Load(DotnetSettingsProvider& provider, SettingsReport& report) {
  netloader::logger::LoggerSettings log;
  quor::UseDefaultLog(log);
  report.taken_log_folder = log.logsDir;
  if (IsPipe(report.path)) {
    return SettingsEnd::kNeverEnds;
  }
  try {
    quor::InitLogSettings(provider, log);
    report.taken_log_folder = log.logsDir;
    return SettingsEnd::kComplete;
  } catch (const std::system_error& failure) {
    report.failure = failure.what();
    return SettingsEnd::kUnreadable;
  } catch (const std::bad_cast& failure) {
    report.failure = failure.what();
    return SettingsEnd::kMalformed;
  }
}

void TakeOwnValues(const DotnetSettingsProvider& provider, SettingsReport& report) {
  netloader::HostFxrModuleParameters parameters;
  quor::TakeRoot(provider, parameters);
  report.root = std::move(parameters.dotnetRootPath);
  netloader::logger::LoggerSettings log;
  report.names_log_folder = quor::TakeLogFolder(provider, log);
  report.log_folder = std::move(log.logsDir);
}

SettingsEnd TakeParameters(DotnetSettingsProvider& provider, SettingsReport& report) {
  try {
    netloader::HostFxrModuleParameters parameters;
    return quor::InitLoaderSettings(provider, parameters) ? SettingsEnd::kComplete : SettingsEnd::kNoRoot;
  } catch (const tov::CheckResultFailedException& failure) {
    report.folder_failure = failure.what();
    return SettingsEnd::kNoProductFolder;
  }
}

}  // namespace

SettingsReport ExamineSettings(const std::string& path, const std::optional<tov::WideString>& root) {
  SettingsReport report;
  report.path = path;
  Reader reader(report);
  DotnetSettingsProvider provider(path, reader);
  report.end = Load(provider, report);
  TakeOwnValues(provider, report);
  if (report.end == SettingsEnd::kComplete) {
    if (root) {
      provider.Replace(quor::SettingsKey::kDotnetRootFolder, *root);
    }
    report.end = TakeParameters(provider, report);
  }
  return report;
}

}  // namespace doctor
