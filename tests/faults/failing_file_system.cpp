// A file system that shows a folder in its own place, and fails in one operation, as a broken disk does.
//
// failing_file_system FOLDER OPERATION NAME FROM: status, list, open or read of the file or folder NAME below FOLDER is
// an I/O error; read only behind that byte. Serves until it is killed.
#define FUSE_USE_VERSION 35
#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

struct Disk {
  int folder;  // Opened before anything was mounted over it.
  std::string_view operation;
  std::string_view name;
  off_t from;

  bool Fails(std::string_view what, const char* path, off_t end = 0) const {
    return what == operation && path == name && end >= from;
  }
};

const Disk& TheDisk() {
  return *static_cast<const Disk*>(fuse_get_context()->private_data);
}

// "/host" is "host" below the folder, and "/" the folder.
std::string Below(const char* path) {
  return "." + std::string(path);
}

int Answer(long result) {
  return result < 0 ? -errno : static_cast<int>(result);
}

// One page at a time: what is read ahead together would fail together.
constexpr unsigned int kLongestRead = 4096;

void* Begin(fuse_conn_info* connection, fuse_config* config) {
  connection->max_read = kLongestRead;
  // Each question reaches this process.
  config->entry_timeout = 0;
  config->attr_timeout = 0;
  config->negative_timeout = 0;
  return fuse_get_context()->private_data;
}

int Status(const char* path, struct stat* status, fuse_file_info*) {
  return TheDisk().Fails("status", path)
             ? -EIO
             : Answer(::fstatat(TheDisk().folder, Below(path).c_str(), status, AT_SYMLINK_NOFOLLOW));
}

int List(const char* path, void* list, fuse_fill_dir_t fill, off_t, fuse_file_info*, fuse_readdir_flags) {
  if (TheDisk().Fails("list", path)) {
    return -EIO;
  }
  DIR* folder = ::fdopendir(::openat(TheDisk().folder, Below(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder == nullptr) {
    return -errno;
  }
  while (const dirent* entry = ::readdir(folder)) {
    fill(list, entry->d_name, nullptr, 0, fuse_fill_dir_flags{});
  }
  return Answer(::closedir(folder));
}

int Open(const char* path, fuse_file_info* file) {
  if (TheDisk().Fails("open", path)) {
    return -EIO;
  }
  const int descriptor = ::openat(TheDisk().folder, Below(path).c_str(), file->flags | O_CLOEXEC);
  if (descriptor < 0) {
    return -errno;
  }
  file->fh = static_cast<std::uint64_t>(descriptor);
  return 0;
}

int Read(const char* path, char* bytes, std::size_t size, off_t at, fuse_file_info* file) {
  return TheDisk().Fails("read", path, at + static_cast<off_t>(size))
             ? -EIO
             : Answer(::pread(static_cast<int>(file->fh), bytes, size, at));
}

int Close(const char*, fuse_file_info* file) {
  return Answer(::close(static_cast<int>(file->fh)));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) {
    return EXIT_FAILURE;
  }
  Disk disk{::open(arguments[1], O_RDONLY | O_DIRECTORY | O_CLOEXEC), arguments[2], arguments[3],
            std::strtol(arguments[4], nullptr, 10)};
  fuse_operations operations{};
  operations.init = Begin;
  operations.getattr = Status;
  operations.readdir = List;
  operations.open = Open;
  operations.read = Read;
  operations.release = Close;
  std::string mostAtOnce = "-omax_read=" + std::to_string(kLongestRead);
  std::array options{arguments[0], arguments[1], const_cast<char*>("-f"), const_cast<char*>("-s"), mostAtOnce.data()};
  return fuse_main(static_cast<int>(options.size()), options.data(), &operations, &disk);
}
