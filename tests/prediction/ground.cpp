#include "tests/prediction/ground.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <system_error>

#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

std::string PathQuoted(const fs::path& path) {
  return ShellQuoted(path.native());
}

// Each library is read once.
const std::string& BytesOf(const fs::path& library) {
  static std::map<fs::path, std::string> files;
  const auto [file, added] = files.try_emplace(library);
  if (added) {
    file->second = ReadFile(library);
  }
  return file->second;
}

template <typename Step>
void IfPossible(Step step) {
  try {
    step();
  } catch (const std::system_error&) {  // Noted all the same.
  }
}

// Rights are given back first: not every user may remove what is in a closed folder.
void Remove(const fs::path& folder) {
  std::error_code ignored;
  fs::permissions(folder, fs::perms::owner_all, ignored);
  for (auto entry = fs::recursive_directory_iterator(folder, ignored); entry != fs::recursive_directory_iterator();
       entry.increment(ignored)) {
    if (!entry->is_symlink(ignored) && entry->is_directory(ignored)) {
      fs::permissions(entry->path(), fs::perms::owner_all, ignored);
    }
  }
  fs::remove_all(folder, ignored);
}

}  // namespace

std::string ShellQuoted(std::string_view text) {
  std::string quoted = "$'";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7f && c != '\'' && c != '\\') {
      quoted += c;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", byte);
      quoted += escape;
    }
  }
  return quoted += '\'';
}

Ground::Ground(fs::path folder) : folder_(std::move(folder)) {
  Remove(folder_);
  MakeFolder(folder_);
}

Ground::~Ground() {
  Remove(folder_);
  Remove(fs::path(kSettingsPath).parent_path());
  Remove("/opt/morvath/quor");
}

void Ground::MakeFolder(const fs::path& path) {
  Note("mkdir -p " + PathQuoted(path));
  std::error_code ignored;
  fs::create_directories(path, ignored);
}

void Ground::MakeFile(const fs::path& path, std::string_view bytes) {
  MakeFolder(path.parent_path());
  // In pieces between NULs, which no argument holds.
  std::string pieces;
  for (std::size_t begin = 0;;) {
    const std::size_t end = bytes.find('\0', begin);
    pieces += ShellQuoted(bytes.substr(begin, end - begin)) + " ";
    if (end == std::string_view::npos) {
      break;
    }
    begin = end + 1;
    pieces += "; printf '\\0'; printf %s ";
  }
  Note("{ printf %s " + pieces + "; } >" + PathQuoted(path));
  IfPossible([&] { WriteFile(path, bytes); });
}

void Ground::MakeLink(const fs::path& path, const fs::path& target) {
  MakeFolder(path.parent_path());
  Note("ln -s " + PathQuoted(target) + " " + PathQuoted(path));
  std::error_code ignored;
  fs::create_symlink(target, path, ignored);
}

void Ground::MakeHardLink(const fs::path& path, const fs::path& target) {
  MakeFolder(path.parent_path());
  Note("ln " + PathQuoted(target) + " " + PathQuoted(path));
  std::error_code ignored;
  fs::create_hard_link(target, path, ignored);
}

void Ground::MakeCut(const fs::path& path, const fs::path& library, std::size_t size) {
  MakeFolder(path.parent_path());
  Note("head -c " + std::to_string(size) + " " + PathQuoted(library) + " >" + PathQuoted(path));
  IfPossible([&] { WriteFile(path, std::string_view(BytesOf(library)).substr(0, size)); });
}

void Ground::MakeCopy(const fs::path& path, const fs::path& library) {
  MakeFolder(path.parent_path());
  Note("cp " + PathQuoted(library) + " " + PathQuoted(path));
  IfPossible([&] { WriteFile(path, BytesOf(library)); });
}

void Ground::ChangeByte(const fs::path& path, std::size_t offset, unsigned char value) {
  const std::string byte(1, static_cast<char>(value));
  char octal[8];
  std::snprintf(octal, sizeof octal, "\\%03o", value);
  Note("printf '" + std::string(octal) + "' | dd of=" + PathQuoted(path) + " bs=1 seek=" + std::to_string(offset) +
       " conv=notrunc status=none");
  IfPossible([&] {
    std::string bytes = ReadFile(path);
    bytes.resize(std::max(bytes.size(), offset + 1));
    bytes.replace(offset, 1, byte);
    WriteFile(path, bytes);
  });
}

void Ground::TakeRights(const fs::path& path, fs::perms left) {
  char octal[8];
  std::snprintf(octal, sizeof octal, "%03o", static_cast<unsigned int>(left));
  Note("chmod " + std::string(octal) + " " + PathQuoted(path));
  std::error_code ignored;
  fs::permissions(path, left, ignored);
}

}  // namespace tests
