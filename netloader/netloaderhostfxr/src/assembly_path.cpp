#include "netloader/netloaderhostfxr/src/assembly_path.h"

#include "foundation/path.h"

namespace netloader {

const tov::WideString kAssemblyDir = u"/opt/morvath/quor/lib64";

tov::WideString AssemblyPath(const tov::WideString& fileName) {
  tov::WideString path = kAssemblyDir;
  return tov::filesystem::detail::PathImplBase::PathAddLastSeparator(path) += fileName;
}

}  // namespace netloader
