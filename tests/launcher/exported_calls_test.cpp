// Libraries in the process that call what the launcher exports.
#include <gtest/gtest.h>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

TEST(ExportedCalls, AreServedForLibrariesOfEitherCompilerAndVisibility) {
  for (const char* library : {CALLING_HOSTS}) {
    SCOPED_TRACE(library);
    RuntimeTree runtime;
    runtime.AddHostOfBytes("6.0.1", ReadFile(library));
    const auto settings = SettingsFile::ForRoot(runtime.Root());

    const auto outcome = Launcher().Run();

    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_EQ(outcome.out, "came to the end\n");
    EXPECT_EQ(outcome.err, "");
  }
}

}  // namespace
}  // namespace tests
