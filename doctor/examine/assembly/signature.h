// The types that a signature in an assembly's metadata names (ECMA-335, partition II, 23.2).
#pragma once

#include <vector>

#include "doctor/examine/assembly/byte_view.h"
#include "doctor/examine/assembly/metadata_tables.h"

namespace doctor {

struct NamedType {
  MetadataRow type;
  bool is_value;  ///< Whether it is named as a value type, whose layout is needed wherever one is held.
};

struct Signature {
  std::vector<NamedType> types;       ///< Of a function the result's; of anything else all.
  std::vector<NamedType> parameters;  ///< Of a function's parameters.
};

/// Reads the signature of a function, a field, local variables or the arguments of a generic function. An empty
/// one names nothing. Throws `std::out_of_range` for one that contradicts itself or is nested too deep.
Signature ReadSignature(const ByteView& blob);

/// The same for the signature that stands for a type.
std::vector<NamedType> ReadTypeSignature(const ByteView& blob);

}  // namespace doctor
