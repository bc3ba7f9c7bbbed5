#include "doctor/examine/assembly/first_needs.h"

#include <algorithm>
#include <set>

#include "doctor/examine/assembly/signature.h"

namespace doctor {
namespace {

using Table = MetadataTable;

// The columns that are read.
constexpr std::size_t kTypeRefScope = 0;
constexpr std::size_t kTypeFlags = 0;
constexpr std::size_t kTypeName = 1;
constexpr std::size_t kTypeBase = 3;
constexpr std::size_t kTypeFields = 4;
constexpr std::size_t kTypeMethods = 5;
constexpr std::size_t kFieldSignature = 2;
constexpr std::size_t kMethodAddress = 0;
constexpr std::size_t kMethodName = 3;
constexpr std::size_t kMethodSignature = 4;
constexpr std::size_t kMemberParent = 0;
constexpr std::size_t kMemberSignature = 2;
constexpr std::size_t kAssemblyName = 6;

constexpr std::uint32_t kModuleType = 1;                       // The type of what belongs to none.
constexpr std::uint32_t kInitializesBeforeField = 0x00100000;  // Its static constructor runs when a field is read.

struct Rows {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

// Rows that are still to be visited stand in a list: types name each other as deep as they like.
class Search {
 public:
  Search(const MetadataTables& tables, const BodyAt& bodyAt) : tables_(tables), body_at_(bodyAt) {}

  // All that compiling the function takes, its own class included.
  void Compile(std::uint32_t method) {
    Visit({static_cast<std::uint32_t>(Table::kTypeDef), OwnerOf(Table::kMethodDef, method)});
    const std::uint32_t address = tables_.Value(Table::kMethodDef, method, kMethodAddress);
    if (address == 0) {
      return;
    }
    const FunctionBody body = body_at_(address);
    for (const MetadataRow& row : body.named) {
      Visit(row);
    }
    if (body.locals.row != 0) {
      VisitAll(ReadSignature(tables_.Blob(Table::kStandAloneSig, body.locals.row, 0)).types);
    }
  }

  // The functions of this assembly that the function names.
  std::vector<std::uint32_t> Called(std::uint32_t method) const {
    std::vector<std::uint32_t> called;
    const std::uint32_t address = tables_.Value(Table::kMethodDef, method, kMethodAddress);
    for (const MetadataRow& row : address != 0 ? body_at_(address).named : std::vector<MetadataRow>()) {
      if (row.IsIn(Table::kMethodDef)) {
        called.push_back(row.row);
      }
    }
    return called;
  }

  // The function of that name that a type has; 0 for none.
  std::uint32_t MethodOf(std::uint32_t type, std::string_view name) const {
    const Rows rows = MembersOf(Table::kMethodDef, type);
    for (std::uint32_t row = rows.begin; row < rows.end; ++row) {
      if (tables_.Text(Table::kMethodDef, row, kMethodName) == name) {
        return row;
      }
    }
    return 0;
  }

  // The last type whose members do not begin behind that one; 0 for none.
  std::uint32_t OwnerOf(Table table, std::uint32_t member) const {
    std::uint32_t owner = 0;
    for (std::uint32_t behind = tables_.Count(Table::kTypeDef) + 1; behind - owner > 1;) {
      const std::uint32_t middle = owner + (behind - owner) / 2;
      const bool isOwner = tables_.Value(Table::kTypeDef, middle, ColumnOf(table)) <= member;
      (isOwner ? owner : behind) = middle;
    }
    return owner;
  }

  // The assemblies of everything visited, and of what that takes.
  std::vector<std::string> Assemblies() {
    std::vector<std::string> names;
    while (!pending_.empty()) {
      const MetadataRow row = pending_.back();
      pending_.pop_back();
      if (row.IsIn(Table::kAssemblyRef)) {
        names.push_back(tables_.Text(Table::kAssemblyRef, row.row, kAssemblyName));
      } else {
        Follow(row);
      }
    }
    std::ranges::sort(names);
    return names;
  }

 private:
  static std::size_t ColumnOf(Table table) { return table == Table::kField ? kTypeFields : kTypeMethods; }

  Rows MembersOf(Table table, std::uint32_t type) const {
    if (type == 0 || type > tables_.Count(Table::kTypeDef)) {
      return {};
    }
    const std::uint32_t begin = tables_.Value(Table::kTypeDef, type, ColumnOf(table));
    const std::uint32_t end = type < tables_.Count(Table::kTypeDef)
                                  ? tables_.Value(Table::kTypeDef, type + 1, ColumnOf(table))
                                  : tables_.Count(table) + 1;
    return {begin, end};
  }

  void Visit(const MetadataRow& row) {
    if (row.row != 0 && visited_.emplace(row.table, row.row).second) {
      pending_.push_back(row);
    }
  }

  void VisitAll(const std::vector<NamedType>& types) {
    for (const NamedType& one : types) {
      Visit(one.type);
    }
  }

  void VisitValues(const std::vector<NamedType>& types) {
    for (const NamedType& one : types) {
      if (one.is_value) {
        Visit(one.type);
      }
    }
  }

  void Follow(const MetadataRow& row) {
    switch (static_cast<Table>(row.table)) {
      case Table::kTypeRef:
        return Visit(tables_.Named(Table::kTypeRef, row.row, kTypeRefScope));
      case Table::kTypeDef:
        return FollowOwnType(row.row);
      case Table::kTypeSpec:
        return VisitAll(ReadTypeSignature(tables_.Blob(Table::kTypeSpec, row.row, 0)));
      case Table::kField:
        return FollowOwnField(row.row);
      case Table::kMethodDef:
        return FollowOwnMethod(row.row);
      case Table::kMemberRef:
        return FollowMember(row.row);
      case Table::kMethodSpec:
        Visit(tables_.Named(Table::kMethodSpec, row.row, 0));
        return VisitAll(ReadSignature(tables_.Blob(Table::kMethodSpec, row.row, 1)).types);
      default:
        return;
    }
  }

  // What its layout and its table of functions are made of. Fields that hold references need no type yet.
  void FollowOwnType(std::uint32_t type) {
    Visit(tables_.Named(Table::kTypeDef, type, kTypeBase));
    for (std::uint32_t row = 1; row <= tables_.Count(Table::kInterfaceImpl); ++row) {
      if (tables_.Value(Table::kInterfaceImpl, row, 0) == type) {
        Visit(tables_.Named(Table::kInterfaceImpl, row, 1));
      }
    }
    const Rows fields = MembersOf(Table::kField, type);
    for (std::uint32_t row = fields.begin; row < fields.end; ++row) {
      VisitValues(ReadSignature(tables_.Blob(Table::kField, row, kFieldSignature)).types);
    }
  }

  void FollowOwnField(std::uint32_t field) {
    Visit({static_cast<std::uint32_t>(Table::kTypeDef), OwnerOf(Table::kField, field)});
    VisitAll(ReadSignature(tables_.Blob(Table::kField, field, kFieldSignature)).types);
  }

  // A call takes the type of what comes back, and the layout of what is handed over.
  void FollowOwnMethod(std::uint32_t method) {
    Visit({static_cast<std::uint32_t>(Table::kTypeDef), OwnerOf(Table::kMethodDef, method)});
    const Signature signature = ReadSignature(tables_.Blob(Table::kMethodDef, method, kMethodSignature));
    VisitAll(signature.types);
    VisitValues(signature.parameters);
  }

  // A member of another assembly's type is looked for by its whole signature.
  void FollowMember(std::uint32_t member) {
    Visit(tables_.Named(Table::kMemberRef, member, kMemberParent));
    const Signature signature = ReadSignature(tables_.Blob(Table::kMemberRef, member, kMemberSignature));
    VisitAll(signature.types);
    VisitAll(signature.parameters);
  }

  const MetadataTables& tables_;
  const BodyAt& body_at_;
  std::set<std::pair<std::uint32_t, std::uint32_t>> visited_;
  std::vector<MetadataRow> pending_;
};

// The module's constructor does nothing but call its initializers.
void CompileInitializers(Search& search) {
  if (const std::uint32_t constructor = search.MethodOf(kModuleType, ".cctor")) {
    search.Compile(constructor);
    std::ranges::for_each(search.Called(constructor), [&](std::uint32_t method) { search.Compile(method); });
  }
}

void CompileStaticConstructor(Search& search, const MetadataTables& tables, std::uint32_t type) {
  const std::uint32_t constructor = search.MethodOf(type, ".cctor");
  if (constructor != 0 && (tables.Value(Table::kTypeDef, type, kTypeFlags) & kInitializesBeforeField) == 0) {
    search.Compile(constructor);
  }
}

// The compiler writes "<Main>", which calls the function that people wrote, which starts a machine of states,
// "<Main>d__0", which holds what they wrote in its function "MoveNext".
void CompileAsynchronous(Search& search, const MetadataTables& tables, std::uint32_t method) {
  if (tables.Text(Table::kMethodDef, method, kMethodName) != "<Main>") {
    return;
  }
  for (const std::uint32_t called : search.Called(method)) {
    search.Compile(called);
    const std::string machine = std::string("<").append(tables.Text(Table::kMethodDef, called, kMethodName)) + ">d__";
    for (std::uint32_t type = 1; type <= tables.Count(Table::kTypeDef); ++type) {
      const std::uint32_t moves =
          tables.Text(Table::kTypeDef, type, kTypeName).starts_with(machine) ? search.MethodOf(type, "MoveNext") : 0;
      if (moves != 0) {
        search.Compile(moves);
      }
    }
  }
}

}  // namespace

std::vector<std::string> FirstNeeds(const MetadataTables& tables, const BodyAt& bodyAt, std::uint32_t method) {
  Search search(tables, bodyAt);
  CompileInitializers(search);
  CompileStaticConstructor(search, tables, search.OwnerOf(Table::kMethodDef, method));
  search.Compile(method);
  CompileAsynchronous(search, tables, method);
  return search.Assemblies();
}

}  // namespace doctor
