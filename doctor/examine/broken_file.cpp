#include "doctor/examine/broken_file.h"

#include <unistd.h>

#include <cerrno>

#include "doctor/examine/assembly/pe_file.h"
#include "netloader/netloaderhostfxr/src/elf_check.h"

namespace doctor {
namespace {

bool MayBeRead(const std::string& path) {
  return ::access(path.c_str(), R_OK) == 0 || errno != EACCES;
}

bool IsMissing(const std::string& path) {
  return ::access(path.c_str(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

}  // namespace

std::optional<BrokenFile> BrokenAssembly(const std::string& path, Need need, bool isApplication) {
  const PeFinding found = CheckPe(path.c_str());
  if (found.verdict == PeVerdict::kSound) {
    return std::nullopt;
  }
  return BrokenFile{path, need, MayBeRead(path), false, isApplication, found.detail, false};
}

std::optional<BrokenFile> BrokenLibrary(const std::string& path, Need need) {
  const netloader::ElfFinding found = netloader::CheckElf(path.c_str());
  if (found.verdict == netloader::ElfVerdict::kLoadable) {
    return std::nullopt;
  }
  const bool isCut = found.verdict == netloader::ElfVerdict::kCutShort;
  return BrokenFile{path, need, MayBeRead(path), isCut, false, IsMissing(path) ? "missing" : found.detail, false};
}

}  // namespace doctor
