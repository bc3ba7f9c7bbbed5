#include "doctor/examine/settings_report.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <typeinfo>

#include "foundation/file_descriptor.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/netloaderquorcommon/src/settings_file.h"

namespace doctor {
namespace {

namespace quor = netloader::quor;

// The file system's reason, which a file stream does not keep.
std::string ReasonNotToOpen(const std::string& path) {
  const auto file = tov::posix::OpenForReading(AT_FDCWD, path.c_str());
  return file.IsOpen() ? "" : std::strerror(errno);
}

class Reader {
 public:
  explicit Reader(SettingsReport& report) : report_(report) {}

  void Read(std::string_view line, const std::optional<quor::SettingsLine>& parsed) {
    ++number_;
    if (!report_.failure.empty()) {
      return;  // The launcher never comes this far.
    }
    if (!parsed) {
      report_.entries.push_back({number_, {}, std::string(line), LineUse::kSkipped});
      return;
    }
    SettingsEntry entry{number_, std::string(parsed->key), std::string(parsed->value), LineUse::kUnused};
    try {
      Take(quor::DecodeSettingsLine(*parsed), entry);
    } catch (const std::bad_cast& failure) {
      report_.failure = failure.what();
      entry.use = LineUse::kMalformed;
    }
    report_.entries.push_back(std::move(entry));
  }

 private:
  void Take(const quor::SettingsPair& pair, SettingsEntry& entry) {
    if (const auto earlier = by_key_.find(pair.key); earlier != by_key_.end()) {
      SettingsEntry& replaced = report_.entries[earlier->second];
      replaced.use = LineUse::kReplaced;
      replaced.replaced_by = number_;
    }
    by_key_[pair.key] = report_.entries.size();
    if (pair.key == quor::kDotnetRootFolderKey) {
      entry.use = LineUse::kUsed;
      report_.root = quor::SettingsPath(pair.value);
    } else if (pair.key == quor::kLoaderLoggingDirKey) {
      entry.use = LineUse::kUsed;
      report_.log_folder = quor::SettingsPath(pair.value);
    }
  }

  SettingsReport& report_;
  std::size_t number_ = 0;
  std::map<tov::WideString, std::size_t> by_key_;
};

}  // namespace

SettingsReport ExamineSettings(const std::string& path) {
  SettingsReport report;
  report.path = path;
  quor::SettingsFile file(path);
  report.is_open = file.IsOpen();
  if (!report.is_open) {
    report.reason = ReasonNotToOpen(path);
    report.failure = quor::CannotOpenSettings(path).what();
    return report;
  }
  Reader reader(report);
  quor::ForEachSettingsLine(file, [&](std::string_view line, const auto& parsed) { reader.Read(line, parsed); });
  return report;
}

}  // namespace doctor
