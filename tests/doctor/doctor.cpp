#include "tests/doctor/doctor.h"

#include <cstdlib>

namespace tests {

std::filesystem::path DoctorFile() {
  return DOCTOR_FILE;
}

Command Doctor(std::vector<std::string> arguments) {
  Command doctor{DoctorFile()};
  doctor.Arguments(std::move(arguments));
  if (IsSanitized()) {
    const char* told = std::getenv("ASAN_OPTIONS");
    doctor.Variable("ASAN_OPTIONS",
                    std::string(told != nullptr ? told : "") + ":handle_segv=0:handle_sigbus=0:handle_abort=0");
  }
  return doctor;
}

bool IsSanitized() {
#if defined(__SANITIZE_ADDRESS__)
  return true;
#elif defined(__has_feature)
  return __has_feature(address_sanitizer);
#else
  return false;
#endif
}

}  // namespace tests
