#include "doctor/examine/config/json_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

#include "foundation/char_converters.h"
#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

using nlohmann::json;

std::string Contents(const std::string& path) {
  std::ifstream stream(path);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// Where the comment that begins there ends.
std::size_t EndOfComment(std::string_view text, std::size_t at) {
  const bool isLine = text.substr(at).starts_with("//");
  const std::size_t end = text.find(isLine ? "\n" : "*/", at + 2);
  return end == std::string_view::npos ? text.size() : end + (isLine ? 1 : 2);
}

std::size_t EndOfString(std::string_view text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '"'; ++at) {
    at += text[at] == '\\' ? 1 : 0;
  }
  return std::min(at + 1, text.size());
}

// The text up to the end of its first object or array: the host reads no further.
std::string_view FirstValue(std::string_view text) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char letter = text[at];
    if (letter == '"') {
      at = EndOfString(text, at);
      continue;
    }
    if (text.substr(at).starts_with("//") || text.substr(at).starts_with("/*")) {
      at = EndOfComment(text, at);
      continue;
    }
    ++at;
    depth += letter == '{' || letter == '[' ? 1 : 0;
    if ((letter == '}' || letter == ']') && (depth == 0 || --depth == 0)) {
      return text.substr(0, at);
    }
  }
  return text;
}

// The host does not look at the encoding. Each byte stays one byte, so that positions hold.
std::string WithoutForeignBytes(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const auto read = tov::text::detail::StrictUtf8CharConverter::Read(bytes);
    const std::size_t length = read ? read->length : 1;
    text += read ? bytes.substr(0, length) : "?";
    bytes.remove_prefix(length);
  }
  return text;
}

// Has the parser keep the first of several members of one name. Objects are told apart by their depth: the end of one
// that is not kept is not an event.
class FirstOfEqualNames {
 public:
  bool operator()(int depth, json::parse_event_t event, json& parsed) {
    const auto level = static_cast<std::size_t>(depth);
    if (event == json::parse_event_t::object_start) {
      names_.resize(level + 1);  // What stood deeper is over.
      names_.emplace_back();
    }
    return event != json::parse_event_t::key || names_.at(level).insert(parsed.get<std::string>()).second;
  }

 private:
  std::vector<std::set<std::string>> names_;  // Of the object at each depth, which its members are one below.
};

json Parsed(std::string_view text, FileReport& file) {
  try {
    FirstOfEqualNames filter;
    return json::parse(
        text, [&](int depth, json::parse_event_t event, json& parsed) { return filter(depth, event, parsed); },
        /*allow_exceptions=*/true, /*ignore_comments=*/true);
  } catch (const json::exception& failure) {
    const auto* parse = dynamic_cast<const json::parse_error*>(&failure);
    const std::size_t end = parse != nullptr && parse->byte > 0 ? std::min(parse->byte - 1, text.size()) : 0;
    file.line = 1 + static_cast<std::size_t>(std::ranges::count(text.substr(0, end), '\n'));
    return {};
  }
}

}  // namespace

FileReport LookAtFile(const std::string& path) {
  const auto file = tov::posix::OpenForReading(AT_FDCWD, path.c_str());
  if (!file.IsOpen()) {
    return {path, errno == ENOENT || errno == ENOTDIR ? FileState::kMissing : FileState::kUnreadable, errno};
  }
  struct stat status {};
  const bool isFile = ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
  return {path, isFile ? FileState::kPresent : FileState::kUnreadable};
}

json ReadObject(FileReport& file) {
  if (file.state != FileState::kPresent) {
    return json::object();
  }
  const std::string text = WithoutForeignBytes(Contents(file.path));
  json object = Parsed(FirstValue(text), file);
  if (!object.is_object()) {
    file.state = FileState::kMalformed;
    return json::object();
  }
  return object;
}

}  // namespace doctor
