#include "netloader/netloaderhostfxr/src/string_token.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/elf_image.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace netloader {
namespace {

struct Row {
  const char* folder;
  const char* token;
};

constexpr auto kRows = std::to_array<Row>({
    {"$LIB", "$LIB"},
    {"${LIB}", "${LIB}"},
    {"$ORIGIN", "$ORIGIN"},
    {"${ORIGIN}", "${ORIGIN}"},
    {"$PLATFORM", "$PLATFORM"},
    {"${PLATFORM}", "${PLATFORM}"},
    {"a$LIB", "$LIB"},
    {"$$LIB", "$LIB"},
    {"$L$LIB", "$LIB"},
    {"${$LIB}", "$LIB"},
    {"$LIBRARY$LIB", "$LIB"},
    {"$LIB}", "$LIB"},
    {"$LIB-1", "$LIB"},
    {"$LIB LIB", "$LIB"},
    {"$LIB\xc3\xa4", "$LIB"},
    {"${LIB}RARY", "${LIB}"},
    {"$PLATFORM$LIB", "$PLATFORM"},
    {"$", ""},
    {"LIB", ""},
    {"a$b", ""},
    {"$lib", ""},
    {"$LIBRARY", ""},
    {"$LIBz", ""},
    {"$LIB0", ""},
    {"$LIB_", ""},
    {"${LIB", ""},
    {"${LIBRARY}", ""},
    {"${lib}", ""},
    {"$ ORIGIN", ""},
    {"$EXEC_ORIGIN", ""},
});

TEST(StringToken, IsFoundWhereTheDynamicLoaderReplacesIt) {
  for (const auto& [folder, token] : kRows) {
    SCOPED_TRACE(folder);
    const tests::TempFolder world;
    const auto file = world.Path() / folder / "libhostfxr.so";
    tests::WriteFile(file, tests::ReadFile(tests::HostLibrary()));

    EXPECT_EQ(FindStringToken(file.native()), token);
    // The file that a replaced path names is not there.
    EXPECT_EQ(tests::AskLoader(file) == tests::LoaderVerdict::kLoads, std::string(token).empty());
  }
}

TEST(StringToken, MayEndThePath) {
  EXPECT_EQ(FindStringToken("/a/$LIB"), "$LIB");
  EXPECT_EQ(FindStringToken("/a/${LIB}"), "${LIB}");
  EXPECT_EQ(FindStringToken("/a/$"), "");
  EXPECT_EQ(FindStringToken(""), "");
}

}  // namespace
}  // namespace netloader
