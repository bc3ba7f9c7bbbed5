#include "tests/support/doctor.h"

namespace tests {

std::filesystem::path DoctorFile() {
  return DOCTOR_FILE;
}

Command Doctor(std::vector<std::string> arguments) {
  Command doctor{DoctorFile()};
  doctor.Arguments(std::move(arguments)).LeavesSignalsAlone();
  return doctor;
}

}  // namespace tests
