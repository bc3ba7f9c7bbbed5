#include "netloader/netloaderquorcommon/src/executable_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <variant>

#include "foundation/result_code.h"
#include "tests/support/temp_folder.h"

namespace netloader::quor::detail {
namespace {

using tov::WideString;
using Folder = std::variant<WideString, int>;

int CodeOf(int error) {
  return tov::posix::ResultCodeFromSystemError(static_cast<unsigned int>(error));
}

TEST(ExecutableFolder, IsWhatPrecedesTheLastSlashOfTheLinksText) {
  struct Row {
    const char* text;
    WideString folder;
  };
  for (const auto& [text, folder] : std::to_array<Row>({
           {"/opt/morvath/quor/bin/grellin", u"/opt/morvath/quor/bin"},
           {"/grellin", u"/"},
           {"//grellin", u"/"},
           {"/bin//grellin", u"/bin/"},
           {"/bin/", u"/bin"},
           {"/", u"/"},
           {"grellin", u""},
           {"", u""},
           {"bin/grellin", u"bin"},
           {"/opt/\u00e9\u20ac\U0001F600/grellin", u"/opt/\u00e9\u20ac\U0001F600"},
           {"/bin/grellin (deleted)", u"/bin"},
       })) {
    SCOPED_TRACE(text);
    EXPECT_EQ(FolderOfLinkText(text), Folder(folder));
  }
}

TEST(ExecutableFolder, ATextThatFillsTheBufferOf4096BytesIsTooLong) {
  const std::string name = "/" + std::string(4094, 'x');

  EXPECT_EQ(FolderOfLinkText(name), Folder(u"/"));
  EXPECT_EQ(FolderOfLinkText(std::string(4094, 'x') + "/"), Folder(WideString(4094, u'x')));
  EXPECT_EQ(FolderOfLinkText(name + "x"), Folder(tov::result_code::FromBits(0x8000004B)));
}

TEST(ExecutableFolder, AFolderThatIsNotUtf8IsAnInvalidArgument) {
  EXPECT_EQ(FolderOfLinkText("/\xff/grellin"), Folder(tov::result_code::FromBits(0x80000046)));
  EXPECT_EQ(FolderOfLinkText("/bin/\xff"), Folder(u"/bin"));
}

TEST(ExecutableFolder, IsWhereTheLinkPoints) {
  const tests::TempFolder folder;
  const std::string link = folder / "link";
  std::filesystem::create_symlink("/opt/bin/grellin", link);

  EXPECT_EQ(FolderOfExecutable(link.c_str()), Folder(u"/opt/bin"));
}

TEST(ExecutableFolder, TheLinksTextIsTakenToItsLastByteAndNoFurther) {
  const tests::TempFolder folder;
  const std::string link = folder / "link";
  WideString longFolder(4001, u'x');
  longFolder.front() = u'/';
  std::filesystem::create_symlink("/" + std::string(4000, 'x') + "/y", link);
  ASSERT_EQ(FolderOfExecutable(link.c_str()), Folder(longFolder));
  std::filesystem::remove(link);
  std::filesystem::create_symlink("/a/b", link);

  EXPECT_EQ(FolderOfExecutable(link.c_str()), Folder(u"/a"));
}

TEST(ExecutableFolder, OfThisProcessIsThatOfItsExecutable) {
  EXPECT_EQ(FolderOfExecutable("/proc/self/exe"),
            Folder(std::filesystem::read_symlink("/proc/self/exe").parent_path().u16string()));
}

TEST(ExecutableFolder, ALinkThatCannotBeReadHasTheSystemsResultCode) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "file", "text");

  EXPECT_EQ(FolderOfExecutable((folder / "none").c_str()), Folder(CodeOf(ENOENT)));
  EXPECT_EQ(FolderOfExecutable((folder / "file").c_str()), Folder(CodeOf(EINVAL)));
  EXPECT_EQ(FolderOfExecutable((folder / "file/x").c_str()), Folder(CodeOf(ENOTDIR)));
}

}  // namespace
}  // namespace netloader::quor::detail
