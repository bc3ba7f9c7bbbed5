// A host resolver that runs nothing: it records every call, or prints it to standard output when no record is asked
// for. What its environment variables ask of it stands beside their names in tests/support/stand_in_host.h.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

// As the public hosting interface has it.
struct InitializeParameters {
  std::size_t size;
  const char* host_path;
  const char* dotnet_root;
};
using ErrorWriter = void (*)(const char* message);

// Of the host's documented statuses. A variant that lacks functions uses none.
[[maybe_unused]] constexpr auto kInvalidArgument = static_cast<std::int32_t>(0x80008081);
[[maybe_unused]] constexpr auto kPropertyNotFound = static_cast<std::int32_t>(0x800080a4);

ErrorWriter error_writer = nullptr;
int context = 0;  // Its address is the handle.

const char* Asked(const char* name) {
  return std::getenv(name);
}

int AskedNumber(const char* name, int otherwise) {
  const char* text = Asked(name);
  return text == nullptr ? otherwise : std::atoi(text);
}

std::string Hex(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", address);
  return text;
}

std::string OwnFile() {
  Dl_info info{};
  return ::dladdr(&context, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

std::string OwnVersion() {
  const std::string file = OwnFile();
  const auto slash = file.rfind('/');
  if (slash == std::string::npos || slash == 0) {
    return "";
  }
  const auto before = file.rfind('/', slash - 1);
  return file.substr(before + 1, slash - before - 1);
}

// One event: its name, the version it happened in, then fields of a name and a value. Control characters and "%" are
// written as "%" and two digits, so that tabs and line ends part fields and events only.
class Event {
 public:
  explicit Event(std::string_view name) {
    Append(name);
    line_ += '\t';
    Append(OwnVersion());
  }

  Event& Field(std::string_view name, std::string_view value) {
    line_ += '\t';
    Append(name);
    line_ += '=';
    Append(value);
    return *this;
  }

  Event& Field(std::string_view name, const char* value) {
    return Field(name, std::string_view(value == nullptr ? "(null)" : value));
  }

  Event& Environment() {
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
      Field("environment", *entry);
    }
    return *this;
  }

  void Write(const char* record) {
    line_ += '\n';
    const int saved_errno = errno;
    const int file = ::open(record, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    for (std::string_view rest = line_; file >= 0 && !rest.empty();) {
      const auto written = ::write(file, rest.data(), rest.size());
      if (written <= 0) {
        break;
      }
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    ::close(file);
    errno = saved_errno;
  }

 private:
  void Append(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x20 || c == '%') {
        line_ += '%';
        line_ += kDigits[byte >> 4];
        line_ += kDigits[byte & 15];
      } else {
        line_ += c;
      }
    }
  }

  std::string line_;
};

// Only the calls are printed: whoever watches is not interested in the library being loaded and unloaded.
const char* Record() {
  return Asked("STAND_IN_RECORD");
}

void RecordComingAndGoing(const char* what) {
  if (const char* record = Record()) {
    const char* locale = std::setlocale(LC_ALL, nullptr);
    Event(what).Field("file", OwnFile()).Field("locale", locale).Environment().Write(record);
  }
}

__attribute__((constructor)) void Loaded() {
  RecordComingAndGoing("loaded");
}
__attribute__((destructor)) void Unloaded() {
  RecordComingAndGoing("unloaded");
}

#if !defined(LACKS_RUN) || !defined(LACKS_CLOSE)
void RecordHandle(const char* call, void* handle) {
  if (const char* record = Record()) {
    Event(call).Field("handle", Hex(handle)).Write(record);
  } else {
    std::printf("stand-in host %s: hostfxr_%s\n", OwnVersion().c_str(), call);
    std::fflush(stdout);
  }
}
#endif

// Its text is code and data of this library.
class OwnFailure : public std::exception {
 public:
  explicit OwnFailure(const char* what) : what_(what) {}
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  std::string what_;
};

// Does what was asked of one function, which is named by the beginning of its variables' names.
int Obey(const std::string& function) {
  if (const char* what = Asked((function + "_THROWS").c_str())) {
    if (std::strcmp(what, "int") == 0) {
      throw 42;
    }
    throw std::runtime_error(what);
  }
  if (const char* what = Asked((function + "_THROWS_OWN_CLASS").c_str())) {
    throw OwnFailure(what);
  }
  if (const char* words = Asked((function + "_SAYS").c_str())) {
    if (error_writer != nullptr) {
      error_writer(words);
    } else {
      std::fprintf(stderr, "%s\n", words);
    }
  }
  if (const int signal = AskedNumber((function + "_DIES").c_str(), 0); signal != 0) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
  if (Asked((function + "_EXITS").c_str()) != nullptr) {
    std::exit(AskedNumber((function + "_EXITS").c_str(), 0));
  }
  errno = AskedNumber((function + "_ERRNO").c_str(), errno);
  return AskedNumber((function + "_RETURNS").c_str(), 0);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] ErrorWriter hostfxr_set_error_writer(ErrorWriter writer) {
  const ErrorWriter previous = error_writer;
  error_writer = writer;
  return previous;
}

#ifndef LACKS_INITIALIZE
namespace {

// Of the documented statuses, those of an application that cannot be run.
constexpr auto kAppArgNotRunnable = static_cast<std::int32_t>(0x80008094);
constexpr auto kInvalidConfigFile = static_cast<std::int32_t>(0x80008093);
constexpr auto kHostLibMissing = static_cast<std::int32_t>(0x80008083);
constexpr auto kFrameworkMissing = static_cast<std::int32_t>(0x80008096);

bool IsThere(const std::string& path) {
  return ::access(path.c_str(), F_OK) == 0;
}

// A little of what the documented host does when it is asked to be as strict: the assembly and its configuration have
// to be there, this has to name the one framework that is known here, and any version of it has to hold the host's
// policy.
std::int32_t LookAtApplication(const std::string& assembly, const std::string& root) {
  const std::string configuration = assembly.substr(0, assembly.rfind('.')) + ".runtimeconfig.json";
  if (!IsThere(assembly)) {
    return kAppArgNotRunnable;
  }
  if (!IsThere(configuration)) {
    return kHostLibMissing;
  }
  std::ifstream file(configuration);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (text.find("runtimeOptions") == std::string::npos || text.find_last_not_of(" \n") != text.rfind('}')) {
    return kInvalidConfigFile;
  }
  const std::string framework = root + "/shared/Microsoft.NETCore.App/6.0.36/";
  if (text.find("Microsoft.NETCore.App") == std::string::npos ||
      !IsThere(framework + "Microsoft.NETCore.App.deps.json")) {
    return kFrameworkMissing;
  }
  return IsThere(framework + "libhostpolicy.so") ? 0 : kHostLibMissing;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] std::int32_t hostfxr_initialize_for_dotnet_command_line(
    int argc, const char** argv, const InitializeParameters* parameters, void** handle) {
  if (const char* record = Record()) {
    Event event("initialize");
    event.Field("argc", std::to_string(argc));
    for (int i = 0; i < argc; ++i) {
      event.Field("argv", argv[i]);
    }
    event.Field("size", std::to_string(parameters->size))
        .Field("host_path", parameters->host_path)
        .Field("dotnet_root", parameters->dotnet_root)
        .Field("handle", Hex(*handle))
        .Environment()
        .Write(record);
  } else {
    std::printf("stand-in host %s: hostfxr_initialize_for_dotnet_command_line\n", OwnVersion().c_str());
    for (int i = 0; i < argc; ++i) {
      std::printf("  %s [%s]\n", i == 0 ? "assembly" : "argument", argv[i]);
    }
    std::printf("  host path [%s]\n  runtime root [%s]\n", parameters->host_path, parameters->dotnet_root);
    std::fflush(stdout);
  }
  if (Asked("STAND_IN_IS_STRICT") != nullptr) {
    if (const std::int32_t refusal = LookAtApplication(argv[0], parameters->dotnet_root); refusal != 0) {
      return refusal;
    }
  }
  if (Asked("STAND_IN_INITIALIZE_GIVES_NO_HANDLE") == nullptr) {
    *handle = &context;
  }
  return Obey("STAND_IN_INITIALIZE");
}
#endif

#ifndef LACKS_RUN
extern "C" [[gnu::visibility("default")]] std::int32_t hostfxr_run_app(void* handle) {
  RecordHandle("run_app", handle);
  return Obey("STAND_IN_RUN");
}
#endif

#ifndef LACKS_CLOSE
extern "C" [[gnu::visibility("default")]] std::int32_t hostfxr_close(void* handle) {
  RecordHandle("close", handle);
  return Obey("STAND_IN_CLOSE");
}
#endif

#ifndef LACKS_START
namespace {
// In place of both managed functions that the runtime gives: their first two arguments are texts, and all the others
// stay with the caller.
std::int32_t Managed(const char* first, const char* second) {
  if (const char* record = Record()) {
    Event("managed").Field("first", first).Field("second", second).Write(record);
  }
  return Obey("STAND_IN_MANAGED");
}
}  // namespace

extern "C" [[gnu::visibility("default")]] std::int32_t hostfxr_get_runtime_delegate(void* handle, std::int32_t type,
                                                                                    void** delegate) {
  if (const char* record = Record()) {
    Event("get_runtime_delegate")
        .Field("handle", Hex(handle))
        .Field("type", std::to_string(type))
        .Environment()
        .Write(record);
  }
  if (type != AskedNumber("STAND_IN_START_OFFERS", type)) {
    return kInvalidArgument;
  }
  const int result = Obey("STAND_IN_START");
  *delegate = result == 0 ? reinterpret_cast<void*>(&Managed) : nullptr;
  return result;
}

extern "C" [[gnu::visibility("default")]] std::int32_t hostfxr_get_runtime_property_value(void* handle,
                                                                                          const char* name,
                                                                                          const char** value) {
  if (const char* record = Record()) {
    Event("get_runtime_property_value").Field("handle", Hex(handle)).Field("name", name).Write(record);
  }
  const char* assemblies = Asked("STAND_IN_ASSEMBLIES");
  if (assemblies == nullptr || std::strcmp(name, "TRUSTED_PLATFORM_ASSEMBLIES") != 0) {
    return kPropertyNotFound;
  }
  *value = assemblies;
  return 0;
}
#endif

#ifdef NEEDS_WHAT_NOBODY_HAS
// Found missing only by a loader that binds every symbol at once.
extern "C" void stand_in_function_that_no_library_has();
extern "C" [[gnu::visibility("default")]] void stand_in_calls_it() {
  stand_in_function_that_no_library_has();
}
#endif
