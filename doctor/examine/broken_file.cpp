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
  return BrokenFile{.path = path,
                    .need = need,
                    .may_be_read = MayBeRead(path),
                    .is_application = isApplication,
                    .detail = found.detail};
}

std::optional<BrokenFile> BrokenLibrary(const std::string& path, Need need) {
  const netloader::ElfFinding found = netloader::CheckElf(path.c_str());
  if (found.verdict == netloader::ElfVerdict::kLoadable) {
    return std::nullopt;
  }
  return BrokenFile{.path = path,
                    .need = need,
                    .may_be_read = MayBeRead(path),
                    .is_cut_library = found.verdict == netloader::ElfVerdict::kCutShort,
                    .detail = IsMissing(path) ? "missing" : found.detail};
}

}  // namespace doctor
