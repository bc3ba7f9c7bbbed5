#include "doctor/examine/collector_options.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using Options = std::vector<std::pair<std::string, std::string>>;

// Those of a configuration with such properties.
Options With(const std::string& properties) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "app.runtimeconfig.json",
                   R"({"runtimeOptions": {"configProperties": )" + properties + "}}");
  return CollectorOptions(folder / "app.dll");
}

TEST(CollectorOptions, ThoseThatLimitOrReplaceTheCollectorAreFound) {
  EXPECT_EQ(With(R"({"System.GC.Server": true, "System.GC.Name": "libnone.so", "System.GC.HeapHardLimit": 16})"),
            (Options{{"System.GC.HeapHardLimit", "16"}, {"System.GC.Name", "libnone.so"}}));
}

TEST(CollectorOptions, AFileOfAnotherShapeHasNone) {
  EXPECT_EQ(With("{}"), Options());
  EXPECT_EQ(With("\"words\""), Options());
  EXPECT_EQ(CollectorOptions("/no/such/app.dll"), Options());
}

}  // namespace
}  // namespace doctor
