#include "doctor/examine/assembly/pe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

using tov::posix::FileDescriptor;

constexpr std::size_t kHeaderOffsetAt = 0x3c;  // Where the DOS header says where the PE header begins.
constexpr std::array<char, 4> kSignature{'P', 'E', '\0', '\0'};
constexpr std::uint16_t kPlus = 0x20b;  // The optional header with 64-bit fields; the other one is 0x10b.
constexpr std::size_t kCliDirectory = 14;
constexpr std::size_t kMostSections = 96;  // What loaders accept.

// Precompiled code for Linux: x64 with the bits of that system.
constexpr auto kMachines = std::to_array<std::uint16_t>({0x014c, 0x8664, 0x8664 ^ 0x7b79});

struct FileHeader {
  std::array<char, 4> signature;
  std::uint16_t machine;
  std::uint16_t section_count;
  std::array<std::uint32_t, 3> unused;
  std::uint16_t optional_size;
  std::uint16_t characteristics;
};
static_assert(sizeof(FileHeader) == 24);

struct Directory {
  std::uint32_t address;
  std::uint32_t size;
};

struct Section {
  std::array<char, 8> name;
  std::uint32_t virtual_size;
  std::uint32_t address;
  std::uint32_t raw_size;
  std::uint32_t raw_offset;
  std::array<std::uint32_t, 4> unused;
};
static_assert(sizeof(Section) == 40);

class File {
 public:
  File(const FileDescriptor& descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}

  std::uint64_t Size() const { return size_; }

  // What stands there; nothing when the file ends before.
  template <typename Value>
  std::optional<Value> At(std::uint64_t offset) const {
    Value value{};
    return Read(std::as_writable_bytes(std::span(&value, 1)), offset) ? std::optional(value) : std::nullopt;
  }

  template <typename Value>
  std::optional<std::vector<Value>> At(std::uint64_t offset, std::size_t count) const {
    std::vector<Value> values(count);
    return Read(std::as_writable_bytes(std::span(values)), offset) ? std::optional(std::move(values)) : std::nullopt;
  }

 private:
  bool Read(std::span<std::byte> into, std::uint64_t offset) const {
    return ::pread(descriptor_.Get(), into.data(), into.size(), static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(into.size());
  }

  const FileDescriptor& descriptor_;
  std::uint64_t size_;
};

PeFinding NotManaged(std::string reason) {
  return {PeVerdict::kNotManaged, std::move(reason)};
}

PeFinding CutShort(const File& file, std::uint64_t needed) {
  return {PeVerdict::kCutShort,
          "cut short: " + std::to_string(file.Size()) + " bytes, at least " + std::to_string(needed) + " are needed"};
}

// Where the CLI header is; nothing when the optional header has no such entry, or is not there.
std::optional<Directory> CliDirectory(const File& file, std::uint64_t optionalHeader, std::size_t optionalSize) {
  const auto magic = file.At<std::uint16_t>(optionalHeader);
  const std::size_t directories = magic && *magic == kPlus ? 112 : 96;
  const std::size_t offset = directories + kCliDirectory * sizeof(Directory);
  return magic && offset + sizeof(Directory) <= optionalSize ? file.At<Directory>(optionalHeader + offset)
                                                             : std::nullopt;
}

PeFinding CheckSections(const File& file, const std::vector<Section>& sections, const Directory& cli) {
  std::uint64_t end = 0;
  for (const Section& section : sections) {
    end = std::max(end, std::uint64_t{section.raw_offset} + section.raw_size);
  }
  if (end > file.Size()) {
    return CutShort(file, end);
  }
  const bool hasCli = std::ranges::any_of(sections, [&](const Section& section) {
    return cli.address >= section.address && cli.address - section.address < section.raw_size;
  });
  return hasCli ? PeFinding{PeVerdict::kSound, {}} : NotManaged("its CLI header lies outside of its sections");
}

PeFinding CheckHeaders(const File& file) {
  if (file.At<std::array<char, 2>>(0) != std::array<char, 2>{'M', 'Z'}) {
    return NotManaged(file.Size() == 0 ? "empty" : "not a .NET assembly");
  }
  const auto offset = file.At<std::uint32_t>(kHeaderOffsetAt);
  const auto header = offset ? file.At<FileHeader>(*offset) : std::nullopt;
  if (!header) {
    return CutShort(file, (offset ? *offset : kHeaderOffsetAt) + sizeof(FileHeader));
  }
  if (header->signature != kSignature || header->section_count > kMostSections) {
    return NotManaged("not a .NET assembly");
  }
  if (std::ranges::find(kMachines, header->machine) == kMachines.end()) {
    return {PeVerdict::kOtherMachine, "built for another machine"};
  }
  const std::uint64_t optionalHeader = std::uint64_t{*offset} + sizeof(FileHeader);
  const std::uint64_t table = optionalHeader + header->optional_size;
  const auto sections = file.At<Section>(table, header->section_count);
  if (!sections) {
    return CutShort(file, table + header->section_count * sizeof(Section));
  }
  const auto cli = CliDirectory(file, optionalHeader, header->optional_size);
  return cli && cli->address != 0 ? CheckSections(file, *sections, *cli) : NotManaged("a program without .NET code");
}

}  // namespace

PeFinding CheckPe(const char* path) {
  // Whoever opens a fifo waits for a writer, for ever if none comes.
  const FileDescriptor descriptor(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!descriptor.IsOpen() || ::fstat(descriptor.Get(), &status) != 0) {
    const bool isMissing = errno == ENOENT || errno == ENOTDIR;
    return {isMissing ? PeVerdict::kMissing : PeVerdict::kUnreadable, isMissing ? "missing" : std::strerror(errno)};
  }
  if (!S_ISREG(status.st_mode)) {
    return {PeVerdict::kUnreadable, "not a regular file"};
  }
  return CheckHeaders(File(descriptor, static_cast<std::uint64_t>(status.st_size)));
}

}  // namespace doctor
