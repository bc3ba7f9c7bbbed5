// An assembly of any bytes: it is looked at without harm, and refused with a reason or found sound.
#include "doctor/examine/pe_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = ::memfd_create("assembly", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  Require(::ftruncate(file, 0) == 0);
  Require(::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));

  const doctor::PeFinding finding = doctor::CheckPe(path.c_str());

  Require((finding.verdict == doctor::PeVerdict::kSound) == finding.detail.empty());
  Require(finding.verdict != doctor::PeVerdict::kMissing && finding.verdict != doctor::PeVerdict::kUnreadable);
  return 0;
}
