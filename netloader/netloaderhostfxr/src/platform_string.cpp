#include "netloader/netloaderhostfxr/src/platform_string.h"

#include "foundation/convert_to_container.h"
#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"

namespace netloader {

std::string CastPathToPlatformString(tov::WideString path) {  // NOLINT(performance-unnecessary-value-param)
  std::string bytes;
  const int result = tov::text::Utf16ToUtf8::Do(path, bytes, 0);
  if (tov::result_code::IsFailure(result)) {
    throw tov::CheckResultFailedException({"netloader/netloaderhostfxr/src/loadermodule", 77}, "Expression failed",
                                          result);
  }
  return bytes;
}

}  // namespace netloader
