// Faults of a product on a real runtime, one at a time: does a launch end as the doctor says, in the right words?
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/real/breakable_product.h"
#include "tests/support/opening.h"

namespace tests {

/// The product that a row breaks. The runtime is shared by the rows of a test; what is put aside comes back after each.
struct BrokenWorld {
  const BreakableRuntime& runtime;
  std::vector<std::unique_ptr<PutAside>> aside = {};
  std::map<std::string, std::string> variables = {};
  std::vector<std::function<void()>> steps = {};  ///< Of Command::Before(), for doctor and launcher alike.
  bool can_be_mended = true;                      ///< By a cure that is a command, which is then carried out.

  /// A file that the launch needs: of the application, of the framework or the host's library, by its plain name.
  [[nodiscard]] std::filesystem::path File(const std::string& name) const;
  /// The file holds these bytes instead.
  void Replace(const std::filesystem::path& file, const std::string& bytes);
  /// The framework's version is another, by the name of its folder.
  void RenameFramework(const std::string& version);
  /// The user is one without rights.
  void AsNobody();
};

/// A row: what is done, and what the doctor's report then opens with. How the launch ends is observed.
struct RealFault {
  const char* name;
  void (*inflict)(BrokenWorld& world);
  Words words;
  const char* wrong = nullptr;  ///< What is not right yet; then the row is shown and not checked.
};

/// The same for damages to a file, each of which is done alone.
struct FileFault {
  const char* file;
  std::vector<Damage> damages;
  Words words;
  const char* wrong = nullptr;
};

/// The same for a variable of the environment.
struct VariableFault {
  const char* variable;
  const char* value;
  Words words;
  const char* wrong = nullptr;
};

/// Its tests have one runtime for all of their rows, and are skipped where a launch cannot be watched.
class FaultsOnRealDotnet : public RealDotnet {
 protected:
  void SetUp() override;

  void Check(const std::vector<RealFault>& faults);
  void Check(const std::vector<FileFault>& faults);
  void Check(const std::vector<VariableFault>& faults);
  void CheckOne(const std::string& name, const Words& words, const char* wrong,
                const std::function<void(BrokenWorld& world)>& inflict);

 private:
  const BreakableRuntime& Runtime();

  std::unique_ptr<BreakableRuntime> runtime_;
  std::unique_ptr<InstalledProduct> product_;
};

}  // namespace tests
