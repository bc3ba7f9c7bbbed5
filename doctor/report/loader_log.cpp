#include "doctor/report/loader_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "doctor/child/child.h"
#include "doctor/judge/shown_line.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"
#include "foundation/file_descriptor.h"
#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/logger/global_logger.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "netloader/netloaderquorcommon/src/launch_sequence.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_listener.h"
#include "netloader/netloaderquorcommon/src/settings_log.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
namespace logger = netloader::logger;
namespace quor = netloader::quor;

using tov::posix::FileDescriptor;

constexpr std::string_view kExtension = ".log";

// The loader's own lines, without what is not to be shown.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): no listener is destroyed through its base.
class DiscreetLog final : public quor::detail::SettingsListener {
 public:
  void CannotOpen(const tov::WideString& path, int error) override { lines_.CannotOpen(path, error); }
  void CannotRead(const tov::WideString& path, int error) override { lines_.CannotRead(path, error); }
  void Skips(std::string_view line) override { lines_.Skips(Remember({}, line).value.value_or(std::string(kHidden))); }
  void Takes(std::string_view /*line*/, const quor::detail::SettingsLine& parsed) override {
    const ShownLine shown = Remember(parsed.key, parsed.value);
    const std::string key = shown.key.value_or(std::string(kHidden));
    const std::string value = shown.value.value_or(std::string(kHidden));
    lines_.Takes(key + "=" + value, {key, value});
  }
  void IsLoaded() override { lines_.IsLoaded(); }

 private:
  // Counts the lines, as a mark in the first one belongs to no key.
  ShownLine Remember(std::string_view key, std::string_view value) {
    return ShownOf({++line_, std::string(key), std::string(value)});
  }

  quor::detail::SettingsLog lines_;
  std::size_t line_ = 0;
};

// A launch up to the context, but for the empty logger, which would discard the lines.
Answer WalkTheRoad(const logger::LoggerSettings& place, const Walk& walk) {
  logger::InitGlobalFileLogger(place);
  DiscreetLog lines;
  quor::DotnetSettingsProvider provider(walk.settings_path, lines);
  logger::LoggerSettings unused;
  quor::detail::InitLogSettings(provider, unused);
  if (walk.root) {
    provider.Replace(quor::detail::SettingsKey::kDotnetRootFolder, *walk.root);
  }
  // The context is left to the end of the process: only running the application closes it.
  static_cast<void>(
      quor::detail::LoadAssembly(provider, launcher::kAssemblyFileName, 0, nullptr, launcher::RuntimeEnvironment()));
  return {};
}

// The file that is meant: a folder, and a name without its extension.
struct Place {
  fs::path folder;
  std::string name;

  fs::path File() const { return folder / (name + std::string(kExtension)); }
};

Place PlaceOf(const std::string& file) {
  const fs::path path = fs::absolute(file).lexically_normal();
  std::string name = path.filename().string();
  if (name.ends_with(kExtension)) {
    name.resize(name.size() - kExtension.size());
  }
  return {path.parent_path(), std::move(name)};
}

// The devices are there under other names, too, or are links to a file.
bool IsDevice(const fs::path& path) {
  const std::string text = fs::absolute(path).lexically_normal().string();
  return text.starts_with("/dev/") && !text.starts_with("/dev/shm/");
}

// Why no log can be there, seen from outside; empty when nothing speaks against it.
std::string ReasonAgainst(const fs::path& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status) || !path.has_filename() || path.filename() == "." || path.filename() == "..") {
    return "it is a folder";
  }
  if (IsDevice(path) || (fs::exists(status) && !fs::is_regular_file(status))) {
    return "it is not a regular file";
  }
  return IsUtf8(fs::absolute(path).string()) ? "" : "its name is not UTF-8";
}

// Empties the file. The logger, which would quietly take another name, then finds it as it is.
FileDescriptor OpenEmpty(const fs::path& file) {
  return FileDescriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666));
}

bool EndsItsLines(const fs::path& file, off_t size) {
  const FileDescriptor reader = tov::posix::OpenForReading(AT_FDCWD, file.c_str());
  char last = '\0';
  return size > 0 && ::pread(reader.Get(), &last, 1, size - 1) == 1 && last == '\n';
}

// Why it is not whole; empty when it is. The logger tells nobody of a line that it could not write: after one, the log
// does not end with a line, or there is no room for another.
std::string Incompleteness(const FileDescriptor& log, const fs::path& file) {
  struct stat status {};
  if (::fsync(log.Get()) != 0 || ::fstat(log.Get(), &status) != 0 ||
      ::pwrite(log.Get(), "\n", 1, status.st_size) != 1 || ::ftruncate(log.Get(), status.st_size) != 0) {
    return std::strerror(errno);
  }
  return EndsItsLines(file, status.st_size) ? "" : "it was not written to its end";
}

std::string FailureOf(const ChildResult& child) {
  return child.end == ChildEnd::kNotStarted ? "no process can be started: " + std::string(std::strerror(child.code))
         : child.end == ChildEnd::kTimedOut ? "the walk did not finish within " + Seconds(child.limit) + " s"
                                            : "";
}

// A folder that nobody else can enter; gone when destroyed.
class PrivateFolder {
 public:
  PrivateFolder() {
    std::error_code failure;
    std::string path = (fs::temp_directory_path(failure) / "grellin_doctor.XXXXXX").string();
    if (!failure && ::mkdtemp(path.data()) != nullptr) {
      path_ = path;
    } else {
      failure_ = failure ? failure.message() : std::strerror(errno);
    }
  }
  ~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const fs::path& Path() const { return path_; }
  const std::string& Failure() const { return failure_; }

 private:
  fs::path path_;
  std::string failure_;
};

}  // namespace

LoaderLog WriteLoaderLog(const std::string& file, const Walk& walk, const Patience& patience) {
  if (std::string reason = ReasonAgainst(file); !reason.empty()) {
    return {file, std::move(reason)};
  }
  const Place place = PlaceOf(file);
  const fs::path path = place.File();
  if (std::string reason = ReasonAgainst(path); !reason.empty()) {
    return {path, std::move(reason)};
  }
  const FileDescriptor log = OpenEmpty(path);
  if (!log.IsOpen()) {
    return {path, std::strerror(errno)};
  }
  const logger::LoggerSettings settings{ToUtf16(place.folder.string()), ToUtf16(place.name)};
  const ChildResult child = RunInChild([&] { return WalkTheRoad(settings, walk); }, "the log to be written", patience);
  const std::string failure = FailureOf(child);
  return {path, failure.empty() ? Incompleteness(log, path) : failure};
}

std::string LoaderLogText(const Walk& walk, const Patience& patience) {
  const PrivateFolder folder;
  if (!folder.Failure().empty()) {
    return "There is no folder to write it to: " + Printable(folder.Failure()) + "\n";
  }
  const LoaderLog log = WriteLoaderLog(folder.Path() / "walk.log", walk, patience);
  std::ifstream file(log.file);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return log.failure.empty() ? text : text + "\nIt is not whole: " + Printable(log.failure) + "\n";
}

}  // namespace doctor
