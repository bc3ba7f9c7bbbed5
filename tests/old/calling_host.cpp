// A host resolver whose application calls the launcher's exported functions and writes what comes of it, a line each.
#include <cstdint>
#include <exception>
#include <iostream>
#include <locale>
#include <stdexcept>
#include <string>

#include "netloader/logger/logger_wrapper.h"
#include "netloader/utils/text_conversion.h"

namespace {

void Convert() {
  const std::wstring wide = netloader::utils::ToWString("gr\xc3\xbc\xc3\x9f", false);
  std::cout << "converts: " << netloader::utils::ToString(wide.c_str(), false) << std::endl;
}

template <typename Failure>
void Catch(const char* name) {
  try {
    static_cast<void>(netloader::utils::ToWString("\xff", false));
    std::cout << "nothing was thrown" << std::endl;
  } catch (const Failure& failure) {
    std::cout << "catches as " << name << ": " << failure.what() << std::endl;
  }
}

// The locale that the launcher's own streams begin with has to be the one that this library calls the classic one:
// where there are two, imbue() takes references off the wrong one.
void Stream() {
  const std::locale classic = std::locale::classic();
  netloader::logger::LoggerWrapper line(netloader::logger::LogLevel::TRACE);
  std::cout << (line.stream.getloc() == classic ? "one classic locale" : "another classic locale") << std::endl;

  line.stream << "plain " << 1234L;
  line.stream.imbue(std::locale(classic, classic, std::locale::numeric));
  line.stream << ", copy " << 1234L;
  line.stream.imbue(classic);
  line.stream << ", classic " << 1234L;

  std::cout << "streams: " << line.stream.str() << std::endl;
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED std::int32_t hostfxr_initialize_for_dotnet_command_line(int, const char**, const void*, void** handle) {
  static int context = 0;
  *handle = &context;
  return 0;
}

EXPORTED std::int32_t hostfxr_run_app(void*) {
  Convert();
  Catch<std::range_error>("range_error");
  Catch<std::exception>("exception");
  Stream();
  std::cout << "has called everything" << std::endl;
  return 0;
}

EXPORTED std::int32_t hostfxr_close(void*) {
  return 0;
}
