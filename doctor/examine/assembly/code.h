// The code of a function of an assembly, as far as what it names goes (ECMA-335, partition II, 25.4, and III).
#pragma once

#include <vector>

#include "doctor/examine/assembly/byte_view.h"
#include "doctor/examine/assembly/metadata_tables.h"

namespace doctor {

struct FunctionBody {
  std::vector<MetadataRow> named;  ///< What its instructions and the exceptions that it catches name.
  MetadataRow locals;              ///< The signature of its local variables; row 0 where it has none.
};

/// Reads the body at a place of the file. Throws `std::out_of_range` where it goes beyond the end.
FunctionBody ReadBody(const ByteView& file, std::size_t at);

}  // namespace doctor
