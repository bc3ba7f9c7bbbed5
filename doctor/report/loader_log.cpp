#include "doctor/report/loader_log.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "doctor/judge/words/text.h"
#include "launcher/product/product.h"
#include "netloader/logger/global_logger.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/launch_sequence.h"
#include "netloader/netloaderquorcommon/src/settings_log.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
namespace logger = netloader::logger;
namespace quor = netloader::quor;

constexpr const char* kExtension = ".log";

// A launch up to the context, but for the empty logger, which would discard the lines.
Answer WalkTheRoad(const logger::LoggerSettings& place, const Walk& walk) {
  logger::InitGlobalFileLogger(place);
  if (!logger::GetLogger()->IsValid() || logger::IsEmptyLoggerCurrent()) {
    return {"not written"};
  }
  quor::detail::SettingsLog lines;
  quor::DotnetSettingsProvider provider(walk.settings_path, lines);
  logger::LoggerSettings unused;
  quor::detail::InitLogSettings(provider, unused);
  if (walk.root) {
    provider.Replace(quor::detail::SettingsKey::kDotnetRootFolder, *walk.root);
  }
  // The context is left to the end of the process: only running the application closes it.
  static_cast<void>(
      quor::detail::LoadAssembly(provider, launcher::kAssemblyFileName, 0, nullptr, launcher::RuntimeEnvironment()));
  return {"written"};
}

}  // namespace

std::string WriteLoaderLog(const std::string& file, const Walk& walk, const Patience& patience) {
  fs::path path = fs::absolute(file).lexically_normal();
  if (path.extension() != kExtension) {
    path += kExtension;
  }
  const logger::LoggerSettings place{ToUtf16(path.parent_path().string()), ToUtf16(path.stem().string())};
  const ChildResult result = RunInChild([&] { return WalkTheRoad(place, walk); }, "the log to be written", patience);
  if (result.end == ChildEnd::kNotStarted) {
    throw std::system_error(result.code, std::generic_category(), "a process to write the log");
  }
  if (result.end == ChildEnd::kFinished && result.answer.front() != "written") {
    throw std::system_error(std::make_error_code(std::errc::io_error), "the log " + Quoted(path.string()));
  }
  return path.string();
}

}  // namespace doctor
