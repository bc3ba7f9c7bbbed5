#include "netloader/netloaderquorcommon/src/executable_folder.h"

#include <unistd.h>

#include <array>
#include <string_view>
#include <utility>

#include "foundation/convert_to_container.h"
#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"

namespace netloader::quor::detail {
namespace {

constexpr std::size_t kTooLong = 4096;

}  // namespace

tov::WideString ExecutableFolder(const char* link) {
  auto folder = FolderOfExecutable(link);
  if (const int* result = std::get_if<int>(&folder)) {
    throw tov::CheckResultFailedException({"netloader/netloaderquorcommon/src/dotnet_settings", 88},
                                          "Expression failed", *result);
  }
  return std::get<tov::WideString>(std::move(folder));
}

std::variant<tov::WideString, int> FolderOfExecutable(const char* link) {
  std::array<char, kTooLong> text;
  const ssize_t length = ::readlink(link, text.data(), text.size());
  if (length >= 0) {
    return FolderOfLinkText({text.data(), static_cast<std::size_t>(length)});
  }
  const int result = tov::posix::ResultCodeFromErrno();
  if (tov::result_code::IsFailure(result)) {
    return result;
  }
  return tov::WideString();
}

std::variant<tov::WideString, int> FolderOfLinkText(std::string_view text) {
  if (text.size() >= kTooLong) {
    return tov::result_code::kUnspecifiedError;
  }
  const auto slash = text.rfind('/');
  const std::size_t length = slash == std::string_view::npos ? 0 : slash == 0 ? 1 : slash;
  tov::WideString folder;
  const int result = tov::text::Utf8ToUtf16::Do(text.substr(0, length), folder, 0);
  if (tov::result_code::IsFailure(result)) {
    return result;
  }
  return folder;
}

}  // namespace netloader::quor::detail
