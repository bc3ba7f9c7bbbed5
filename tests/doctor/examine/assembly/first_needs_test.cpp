#include "doctor/examine/assembly/first_needs.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/managed_image.h"

namespace doctor {
namespace {

using namespace std::string_literals;
using tests::ManagedImage;
using Names = std::vector<std::string>;

std::string Two(std::uint64_t value) {
  return ManagedImage::Number(value, 2);
}

std::string Four(std::uint64_t value) {
  return ManagedImage::Number(value, 4);
}

// Metadata that a test writes row by row. Everything is so small that each index takes two bytes.
class Metadata {
 public:
  std::uint16_t Text(const std::string& text) { return Kept(texts_, text + '\0'); }
  std::uint16_t Blob(const std::string& blob) { return Kept(blobs_, static_cast<char>(blob.size()) + blob); }

  // The number of the row.
  std::uint32_t Add(MetadataTable table, const std::string& row) {
    std::vector<std::string>& rows = rows_[static_cast<unsigned int>(table)];
    rows.push_back(row);
    return static_cast<std::uint32_t>(rows.size());
  }

  std::string Bytes() const {
    const std::string tables = Tables();
    std::string texts = texts_ + std::string(4 - texts_.size() % 4, '\0');
    constexpr std::size_t kBegin = 72;
    const std::size_t blobs = kBegin + tables.size() + texts.size();
    return "BSJB" + std::string(8, '\0') + Four(4) + Four(0) + Two(0) + Two(3) + Four(kBegin) + Four(tables.size()) +
           "#~\0\0"s + Four(kBegin + tables.size()) + Four(texts.size()) + "#Strings\0\0\0\0"s + Four(blobs) +
           Four(blobs_.size()) + "#Blob\0\0\0"s + tables + texts + blobs_;
  }

 private:
  static std::uint16_t Kept(std::string& heap, const std::string& what) {
    const std::size_t at = heap.size();
    heap += what;
    return static_cast<std::uint16_t>(at);
  }

  std::string Tables() const {
    std::uint64_t present = 0;
    std::string counts;
    std::string all;
    for (const auto& [table, rows] : rows_) {
      present |= std::uint64_t{1} << table;
      counts += Four(rows.size());
      for (const std::string& row : rows) {
        all += row;
      }
    }
    const std::string stream =
        std::string(8, '\0') + ManagedImage::Number(present, 8) + std::string(8, '\0') + counts + all;
    return stream + std::string(4 - stream.size() % 4, '\0');
  }

  std::map<unsigned int, std::vector<std::string>> rows_;
  std::string texts_ = std::string(1, '\0');
  std::string blobs_ = std::string(1, '\0');
};

// An application whose types and functions a test adds, in the order of their rows. It refers to five assemblies, "A"
// to "E", with a type of each: the types 1 to 5.
class Application {
 public:
  Application() {
    for (const char* name : {"A", "B", "C", "D", "E"}) {
      const std::uint32_t assembly =
          metadata_.Add(MetadataTable::kAssemblyRef, std::string(14, '\0') + Two(metadata_.Text(name)) + Four(0));
      metadata_.Add(MetadataTable::kTypeRef, Two(assembly << 2 | 2) + Four(0));
    }
    AddType("<Module>");
  }

  // The type has the fields and functions that follow it.
  std::uint32_t AddType(const std::string& name, std::uint32_t base = 0, std::uint32_t flags = 0) {
    return metadata_.Add(MetadataTable::kTypeDef, Four(flags) + Two(metadata_.Text(name)) + Two(0) +
                                                      Two(base << 2 | 1) + Two(fields_ + 1) + Two(functions_ + 1));
  }

  void AddField(const std::string& type) {
    ++fields_;
    metadata_.Add(MetadataTable::kField, Two(0) + Two(0) + Two(metadata_.Blob("\x06" + type)));
  }

  // Its body may be told later, by its address, which is its number.
  std::uint32_t AddFunction(const std::string& name, const std::string& signature = "\x00\x00\x01"s) {
    return AddFunctionAt(functions_ + 1, name, signature);
  }

  // The address 0 is that of a function whose body is not in this file.
  std::uint32_t AddFunctionAt(std::size_t address, const std::string& name,
                              const std::string& signature = "\x00\x00\x01"s) {
    ++functions_;
    return metadata_.Add(MetadataTable::kMethodDef,
                         Four(address) + Four(0) + Two(metadata_.Text(name)) + Two(metadata_.Blob(signature)) + Two(1));
  }

  std::uint32_t AddMember(std::uint32_t type, const std::string& signature) {
    return metadata_.Add(MetadataTable::kMemberRef, Two(type << 3 | 1) + Two(0) + Two(metadata_.Blob(signature)));
  }

  std::uint32_t AddInstance(std::uint32_t member, const std::string& types) {
    return metadata_.Add(MetadataTable::kMethodSpec, Two(member << 1 | 1) + Two(metadata_.Blob("\x0a\x01" + types)));
  }

  std::uint32_t AddMadeType(const std::string& type) {
    return metadata_.Add(MetadataTable::kTypeSpec, Two(metadata_.Blob(type)));
  }

  void AddInterface(std::uint32_t type, std::uint32_t interface) {
    metadata_.Add(MetadataTable::kInterfaceImpl, Two(type) + Two(interface << 2 | 1));
  }

  Application& Names(std::uint32_t function, MetadataTable table, std::uint32_t row) {
    bodies_[function].named.push_back({static_cast<std::uint32_t>(table), row});
    return *this;
  }

  void HasLocals(std::uint32_t function, const std::string& types, char count = 1) {
    bodies_[function].locals = {
        static_cast<std::uint32_t>(MetadataTable::kStandAloneSig),
        metadata_.Add(MetadataTable::kStandAloneSig, Two(metadata_.Blob("\x07" + std::string(1, count) + types)))};
  }

  std::vector<std::string> Needs(std::uint32_t function) const {
    const std::string bytes = metadata_.Bytes();
    const MetadataTables tables((ByteView(bytes)));
    return FirstNeeds(
        tables,
        [this](std::uint32_t address) {
          const auto body = bodies_.find(address);
          return body != bodies_.end() ? body->second : FunctionBody{{}, {0, 0}};
        },
        function);
  }

 private:
  Metadata metadata_;
  std::map<std::uint32_t, FunctionBody> bodies_;
  std::uint32_t fields_ = 0;
  std::uint32_t functions_ = 0;
};

// How signatures name the types 1 to 5, and own types.
const std::string kClassA = "\x12\x05";
const std::string kValueB = "\x11\x09";
const std::string kClassC = "\x12\x0d";

std::string OwnClass(std::uint32_t type) {
  return "\x12" + std::string(1, static_cast<char>(type << 2));
}

std::string OwnValue(std::uint32_t type) {
  return "\x11" + std::string(1, static_cast<char>(type << 2));
}

TEST(FirstNeeds, AFunctionThatNamesNothingNeedsNothing) {
  Application app;
  app.AddType("Program");

  EXPECT_EQ(app.Needs(app.AddFunction("Main")), Names());
}

TEST(FirstNeeds, TypesThatItsCodeNamesAreNeeded) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  app.Names(main, MetadataTable::kTypeRef, 2).Names(main, MetadataTable::kTypeRef, 1);
  app.Names(main, MetadataTable::kTypeRef, 2);
  app.Names(main, MetadataTable::kTypeSpec, app.AddMadeType("\x15" + OwnClass(1) + "\x01" + kClassC));

  EXPECT_EQ(app.Needs(main), (Names{"A", "B", "C"})) << "each once, those put into a generic type included";
}

TEST(FirstNeeds, TypesOfItsLocalVariablesAreNeeded) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  app.HasLocals(main, kClassA + kValueB, 2);

  EXPECT_EQ(app.Needs(main), (Names{"A", "B"}));
}

TEST(FirstNeeds, AMemberOfAnotherAssemblyIsFoundByItsWholeSignature) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  const std::uint32_t member = app.AddMember(4, "\x00\x01"s + kClassA + kClassC);
  app.Names(main, MetadataTable::kMethodSpec, app.AddInstance(member, kValueB));

  EXPECT_EQ(app.Needs(main), (Names{"A", "B", "C", "D"}));
}

TEST(FirstNeeds, ACallOfAnOwnFunctionTakesItsResultAndTheValuesHandedOver) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  app.AddType("Other");
  const std::uint32_t called = app.AddFunction("Do", "\x00\x02"s + kClassA + kValueB + kClassC);
  app.Names(main, MetadataTable::kMethodDef, called).Names(called, MetadataTable::kTypeRef, 5);

  EXPECT_EQ(app.Needs(main), (Names{"A", "B"})) << "neither a class handed over nor its own code";
}

TEST(FirstNeeds, AnOwnFieldTakesItsType) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  app.AddType("Other");
  app.AddField("\x08");
  app.AddField(kClassA);
  app.AddField(kClassC);

  EXPECT_EQ(app.Names(main, MetadataTable::kField, 1).Needs(main), Names());
  EXPECT_EQ(app.Names(main, MetadataTable::kField, 2).Needs(main), Names{"A"});
}

TEST(FirstNeeds, AnOwnTypeTakesItsBaseItsInterfacesAndItsFieldsThatAreValues) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  const std::uint32_t other = app.AddType("Other", 1);
  app.AddField(kValueB);
  app.AddField(kClassC);
  app.AddInterface(other + 1, 5);
  app.AddInterface(other, 4);
  app.AddType("Unused", 3);
  app.AddField(OwnValue(other));

  EXPECT_EQ(app.Names(main, MetadataTable::kTypeDef, other).Needs(main), (Names{"A", "B", "D"}));
}

TEST(FirstNeeds, OwnTypesAreFollowedAsDeepAsTheyGo) {
  Application app;
  app.AddType("Program");
  const std::uint32_t main = app.AddFunction("Main");
  const std::uint32_t first = app.AddType("First");
  for (std::uint32_t next = first + 1; next < first + 25; ++next) {
    app.AddField(OwnValue(next));
    app.AddType("Next");
  }
  app.AddField(OwnValue(first));
  app.AddField(kValueB);

  EXPECT_EQ(app.Names(main, MetadataTable::kTypeDef, first).Needs(main), Names{"B"}) << "circles included";
}

TEST(FirstNeeds, TheClassOfTheFunctionIsLoadedFirst) {
  Application app;
  app.AddType("Program", 1);
  app.AddField(kValueB);
  app.AddField(kClassC);

  EXPECT_EQ(app.Needs(app.AddFunction("Main")), (Names{"A", "B"}));
}

TEST(FirstNeeds, AStaticConstructorThatWasWrittenRunsFirst) {
  constexpr std::uint32_t kBeforeField = 0x00100000;
  for (const std::uint32_t flags : {0U, kBeforeField}) {
    Application app;
    app.AddType("Program", 0, flags);
    app.Names(app.AddFunction(".cctor"), MetadataTable::kTypeRef, 1);

    EXPECT_EQ(app.Needs(app.AddFunction("Main")), flags == 0 ? Names{"A"} : Names());
  }
}

TEST(FirstNeeds, InitializersOfTheModuleRunFirst) {
  Application app;
  const std::uint32_t constructor = app.AddFunction(".cctor");
  app.AddType("Initializer");
  const std::uint32_t initialize = app.AddFunction("Initialize");
  const std::uint32_t further = app.AddFunction("Further");
  app.AddType("Program");
  app.Names(constructor, MetadataTable::kTypeRef, 1).Names(constructor, MetadataTable::kMethodDef, initialize);
  app.Names(initialize, MetadataTable::kTypeRef, 2).Names(initialize, MetadataTable::kMethodDef, further);
  app.Names(further, MetadataTable::kTypeRef, 3);

  EXPECT_EQ(app.Needs(app.AddFunction("Main")), (Names{"A", "B"}));
}

TEST(FirstNeeds, OfAnAsynchronousFunctionTheFirstStepCounts) {
  for (const std::string entry : {"<Main>", "Start"}) {
    Application app;
    app.AddType("Program");
    const std::uint32_t main = app.AddFunction("Main");
    const std::uint32_t start = app.AddFunction(entry);
    app.AddType("<Main>d__0");
    const std::uint32_t moveNext = app.AddFunction("MoveNext");
    app.AddType("<Mainly>d__1");
    app.Names(app.AddFunction("MoveNext"), MetadataTable::kTypeRef, 3);
    app.Names(start, MetadataTable::kMethodDef, main).Names(main, MetadataTable::kTypeRef, 1);
    app.Names(moveNext, MetadataTable::kTypeRef, 2);

    EXPECT_EQ(app.Needs(start), entry == "<Main>" ? (Names{"A", "B"}) : Names());
  }
}

TEST(FirstNeeds, AFunctionWithoutCodeNeedsOnlyItsClass) {
  Application app;
  app.AddType("Program", 1);
  const std::uint32_t main = app.AddFunction("Main");

  EXPECT_EQ(app.Needs(main), Names{"A"});
}

TEST(FirstNeeds, AFunctionWhoseBodyIsElsewhereNeedsOnlyItsClass) {
  Application app;
  app.AddType("Program", 1);
  const std::uint32_t main = app.AddFunctionAt(0, "Main");
  app.Names(0, MetadataTable::kTypeRef, 2);

  EXPECT_EQ(app.Needs(main), Names{"A"});
}

TEST(FirstNeeds, AFunctionThatIsNotThereThrows) {
  EXPECT_THROW(Application().Needs(1), std::out_of_range);
}

}  // namespace
}  // namespace doctor
