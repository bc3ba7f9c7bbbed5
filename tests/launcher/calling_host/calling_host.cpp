// A host that, asked to run the application, calls what the launcher exports. It is compiled from the product's headers
// alone: what it lacks, the launcher must have. Every expectation that does not hold is a line on standard output, and
// the last line says that it came to the end.
#include <sys/resource.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <locale>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"
#include "netloader/logger/file_logger.h"
#include "netloader/logger/global_logger.h"
#include "netloader/logger/logger_wrapper.h"
#include "netloader/logger/wide_text_output.h"
#include "netloader/netloaderhostfxr/src/library_module.h"
#include "netloader/netloaderhostfxr/src/loader_module_factory.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "netloader/netloaderhostfxr/src/platform_string.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "netloader/netloaderquorcommon/src/launch_sequence.h"
#include "netloader/platform/environment.h"
#include "netloader/utils/current_time.h"
#include "netloader/utils/path_utils.h"
#include "netloader/utils/text_conversion.h"

namespace {

using netloader::HostFxrModuleParameters;
using netloader::LibraryInterface;
using netloader::LibraryModule;
using netloader::LoaderModule;
using netloader::LoaderModuleInterface;
using netloader::LoaderModuleInterfaceFactory;
using netloader::quor::DotnetSettingsProvider;
namespace logger = netloader::logger;
namespace platform = netloader::platform_utils;
namespace quor = netloader::quor;
namespace utils = netloader::utils;

const tov::WideString kLoneSurrogate(1, u'\xd800');
int context = 0;

void Expect(bool holds, const char* what) {
  if (!holds) {
    std::printf("does not hold: %s\n", what);
  }
}

// Whether `act` throws exactly that type, caught as `Base`, with that text.
template <typename Thrown, typename Base = std::exception, typename Act>
void ExpectThrown(const char* text, Act act, const char* what) {
  try {
    act();
    Expect(false, what);
  } catch (const Base& failure) {
    Expect(typeid(failure) == typeid(Thrown), what);
    Expect(dynamic_cast<const Thrown*>(&failure) != nullptr, what);
    Expect(std::string(failure.what()).find(text) != std::string::npos, failure.what());
  }
}

HostFxrModuleParameters Parameters() {
  HostFxrModuleParameters parameters;
  Expect(quor::TryInitNetloaderSettings(parameters), "the settings are there");
  return parameters;
}

void Objects() {
  const std::shared_ptr<LoaderModuleInterface> loader = LoaderModuleInterfaceFactory::CreateModuleLoader(Parameters());
  Expect(loader != nullptr, "the factory makes a loader");
  const LoaderModuleInterface& made = *loader;
  Expect(typeid(made) == typeid(LoaderModule), "the loader's type is known");
  const auto* const module = dynamic_cast<const LoaderModule*>(&made);
  Expect(module != nullptr && module->VersionSortPredicate(u"6.0.10", u"6.0.9"), "the loader can be cast down");
  const std::shared_ptr<LibraryInterface> library = loader->LoadAssembly(u"x.dll", 0, nullptr);
  Expect(dynamic_cast<LibraryModule*>(library.get()) != nullptr, "the application can be cast down");
  Expect(LibraryModule(
             loader, &context, [](void*) { return 1; },
             [](void*) {
               return 2;
             }).Run() == 2,
         "an application of our own runs");
  Expect(LoaderModuleInterfaceFactory::CreateModuleLoader({u"/nowhere", u"6.0.", {}, {}}) == nullptr, "no loader");
  LoaderModule own(Parameters());
  Expect(!own.LoadDotNet(u"relative") && own.LoadDotNetWithHigerVersion(), "a loader of our own searches");
  netloader::LogFunctionLoadError(u"/x", u"y");
}

// A logger that a library brings along.
class Kept final : public logger::ILogger {
 public:
  bool IsValid() override { return true; }
  void Trace(logger::LogLevel, const char* text) override { kept += text; }
  std::string kept;
};

void Loggers() {
  logger::ILogger* const current = logger::GetLogger();
  Expect(dynamic_cast<logger::EmptyLogger*>(current) != nullptr && current->IsValid(), "the empty logger is current");
  Expect(typeid(*current) == typeid(logger::EmptyLogger), "the empty logger's type is known");
  logger::InitGlobalFileLogger({u"/tmp", u"never"});
  logger::InitEmptyLogger();
  Expect(logger::GetLogger() == current, "the empty logger stays");
  logger::LoggerWrapper(logger::LogLevel::TRACE).stream << "bytes" << 1 << L"wide" << std::wstring(L"wide");
  Kept kept;
  static_cast<logger::ILogger&>(kept).Trace(logger::LogLevel::ERROR, "line");
  Expect(kept.kept == "line", "a logger of our own takes lines");
  logger::FileLogger file(u"/nowhere", u"log");
  Expect(!file.IsValid(), "a file logger without a file is invalid");
  file.Trace(logger::LogLevel::INFRA, "dropped");
}

void Streams() {
  struct Grouped : std::numpunct<char> {
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::ostringstream stream;
  stream.imbue(std::locale(std::locale::classic(), new Grouped));
  stream << L"\u20ac " << 1234567 << std::wstring(L" end");
  Expect(stream.str() == "\u20ac 1'234'567 end", stream.str().c_str());
  std::ostringstream other;
  std::move(other) << L"one" << std::wstring(L" two");
  Expect(other.str() == "one two", other.str().c_str());
  Expect((std::stringstream() << "a" << L"b").good(), "a temporary stream takes wide text");
}

void Utilities() {
  Expect(utils::ToString(L"\u20ac", true) == "\u20ac" && utils::ToWString("x", true) == L"x", "text is converted");
  Expect(utils::CheckIsValidPath(u"/x") && utils::GetLastFolderName(u"/a/b") == u"b", "paths are looked at");
  Expect(utils::GetParentPath(u"/a/b") == u"/a", "parents are found");
  Expect(utils::GetCurrentTimeString(true).size() == 19, "the time has 19 characters");
  Expect(netloader::CastPathToPlatformString(u"/\u20ac") == "/\u20ac", "paths are converted");
  platform::ConfigureStaticEnvironmentsVariables();
  platform::SetEnvVariable(u"CALLING_HOST", u"set");
  errno = 7;
  Expect(platform::GetErrorCode() == 7, "errno is read");
  logger::LoggerSettings settings;
  quor::InitNetloaderLoggingSettingsOrUseDefault(settings);
  Expect(!settings.logsDir.empty(), "there is a log folder");
  Expect(!DotnetSettingsProvider::GetInstance().GetSettingsSource().empty(), "the settings have a source");
}

// Leaves no room for the path's second form.
[[maybe_unused]] void ExhaustMemory() {
  tov::WideString path(std::size_t{64} << 20, u'/');
  rlimit before{};
  ::getrlimit(RLIMIT_AS, &before);
  const rlimit none{std::size_t{1} << 20, before.rlim_max};
  ::setrlimit(RLIMIT_AS, &none);
  try {
    netloader::CastPathToPlatformString(std::move(path));
    Expect(false, "memory runs out");
  } catch (const tov::ResultCodeException& failure) {
    ::setrlimit(RLIMIT_AS, &before);
    const tov::ResultCodeException copy = failure;
    Expect(typeid(failure) == typeid(tov::CheckResultFailedException), "the type of a failed check is known");
    Expect(copy.ResultCode() == tov::result_code::kOutOfMemory && !copy.Text().empty(), "its result code is read");
    Expect(std::string(copy.what()).find("Expression failed") != std::string::npos, copy.what());
  }
}

void Exceptions() {
  LoaderModule loader(Parameters());
  ExpectThrown<std::out_of_range>(
      "tov::basic_string_t::append()", [&] { loader.VersionSortPredicate(u"6", u"6.0.1"); }, "too short a name");
  ExpectThrown<std::bad_cast>(
      "", [] { platform::SetEnvVariable(u"X", kLoneSurrogate); }, "a value that does not convert");
  ExpectThrown<std::runtime_error>(
      "Failed co convert", [] { utils::ToString(nullptr, true); }, "a null text");
  ExpectThrown<std::range_error>(
      "to_bytes", [] { std::ostringstream() << std::wstring(1, wchar_t{0xDC00}); }, "a wide text");
  ExpectThrown<std::invalid_argument, std::logic_error>(
      "absolute", [] { logger::FileLogger(u"relative", u"log"); }, "a relative folder");
  ExpectThrown<std::invalid_argument, std::logic_error>(
      "", [] { static_cast<void>(DotnetSettingsProvider::GetInstance().GetValue(u"")); }, "an empty key");
  Expect(loader.LoadDotNetWithHigerVersion(), "a loader of our own searches");
  ExpectThrown<std::bad_weak_ptr>(
      "", [&] { loader.LoadAssembly(u"x.dll", 0, nullptr); }, "a loader that nobody shares");
  try {
    loader.LoadAssembly(u"x.dll", 1, nullptr);
    Expect(false, "null arguments throw");
  } catch (const std::invalid_argument* failure) {
    Expect(std::string(failure->what()) == "argv is null", failure->what());
    delete failure;
  }
}

}  // namespace

#define EXPORTED extern "C" [[gnu::visibility("default")]]

EXPORTED std::int32_t hostfxr_initialize_for_dotnet_command_line(int, const char**, const void*, void** handle) {
  *handle = &context;
  return 0;
}

EXPORTED std::int32_t hostfxr_run_app(void*) {
  Objects();
  Loggers();
  Streams();
  Utilities();
  Exceptions();
#ifndef SANITIZED
  ExhaustMemory();  // A sanitizer's memory is beyond any limit.
#endif
  std::puts("came to the end");
  std::fflush(stdout);
  return 0;
}

EXPORTED std::int32_t hostfxr_close(void*) {
  return 0;
}
