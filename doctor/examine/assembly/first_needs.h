// What the runtime loads before an application's first function runs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "doctor/examine/assembly/code.h"
#include "doctor/examine/assembly/metadata_tables.h"

namespace doctor {

/// Reads the body of the function whose code has that address in the image.
using BodyAt = std::function<FunctionBody(std::uint32_t address)>;

/// The names of the assemblies, each once, without which the function cannot be compiled, or something that runs before
/// it: the module's initializers, its class's static constructor. Of a function that only starts an asynchronous one
/// that one counts as well. What another assembly's own types need is not followed. `method` is a row of the table of
/// functions. Throws `std::out_of_range` for metadata that contradicts itself.
std::vector<std::string> FirstNeeds(const MetadataTables& tables, const BodyAt& bodyAt, std::uint32_t method);

}  // namespace doctor
