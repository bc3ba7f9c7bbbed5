#include "doctor/examine/config/collector_options.h"

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
  EXPECT_EQ(With(R"({"System.GC.RegionSize": 6, "System.GC.RegionRange": 5, "System.GC.Path": "/p",
                     "System.GC.Name": "n", "System.GC.HeapHardLimitPercent": 2, "System.GC.HeapHardLimit": 1})"),
            (Options{{"System.GC.HeapHardLimit", "1"},
                     {"System.GC.HeapHardLimitPercent", "2"},
                     {"System.GC.Name", "n"},
                     {"System.GC.Path", "/p"},
                     {"System.GC.RegionRange", "5"},
                     {"System.GC.RegionSize", "6"}}));
}

TEST(CollectorOptions, AFileOfAnotherShapeHasNone) {
  EXPECT_EQ(With("{}"), Options());
  EXPECT_EQ(With("\"words\""), Options());
  EXPECT_EQ(CollectorOptions("/no/such/app.dll"), Options());
}

}  // namespace
}  // namespace doctor
