// An exception as lines: file, line number, message, then a line for each property, module and address. Its texts are
// those that the C library's formatting gives, whatever the names and values hold.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/exception_context.h"
#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"
#include "fuzz/support.h"

using tov::OpaqueValue;
using tov::property_info;
using tov::PropertyValue;
using tov::detail::ExceptionContext;
using tov::detail::ModuleRecord;

namespace {

template <typename... Values>
std::string Formatted(const char* format, Values... values) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

// A property's value with the text that it has in the exception's.
struct Value {
  PropertyValue value;
  std::string text;
};

Value NewValue(char type, std::string_view word) {
  const std::uint64_t number = Lines::Number(word);
  const auto half = static_cast<std::uint32_t>(number);
  switch (type) {
    case 'i':
      return {static_cast<std::int32_t>(half), Formatted("0x%08x", half)};
    case 'u':
      return {half, Formatted("0x%08x", half)};
    case 'I':
      return {static_cast<std::int64_t>(number), Formatted("0x%016lx", number)};
    case 'U':
      return {number, Formatted("0x%016lx", number)};
    case 'w':
      return {Widened(word), StrictUtf8(Widened(word)).value_or("")};
    case 'o':
      return {OpaqueValue{half}, Formatted("<typeid=%u>", half)};
    default:
      return {std::string(word), std::string(word)};
  }
}

// The exception that the lines describe, and what is expected of it.
struct World {
  std::string file;
  std::uint32_t line = 0;
  std::string message;
  std::vector<property_info> properties;  // Their names are parts of the input.
  std::string properties_text;
  ExceptionContext context;
};

// "i name value"; the identity of the result's type with 'r'.
void AddProperty(World& world, char type, std::string_view line) {
  const std::string_view name = Lines::Word(line);
  Value value = NewValue(type == 'r' ? 'i' : type, line);
  world.properties_text += "\n" + std::string(name) + "=" + value.text;
  world.properties.push_back({name, type == 'r' ? tov::kResultTypeIdentity : 1, std::move(value.value)});
}

void AddModule(World& world, std::string_view line) {
  const std::uint64_t base = Lines::Number(Lines::Word(line));
  const std::uint64_t size = Lines::Number(Lines::Word(line));
  const std::string_view name = Lines::Word(line);
  world.context.modules.push_back({std::string(name), std::string(line), base, size});
}

void Read(World& world, std::string_view text) {
  Lines lines(text);
  world.file = lines.Next();
  world.line = static_cast<std::uint32_t>(lines.NextNumber());
  world.message = lines.Next();
  while (!lines.IsAtEnd()) {
    std::string_view line = lines.Next();
    const std::string_view kind = Lines::Word(line);
    if (kind == "m") {
      AddModule(world, line);
    } else if (kind == "a") {
      world.context.call_stack.push_back(Lines::Number(line));
    } else if (!kind.empty()) {
      AddProperty(world, kind.front(), line);
    }
  }
  std::ranges::stable_sort(world.context.modules, {}, &ModuleRecord::base);
}

// Of several modules that begin before the address the last one counts, even where it ends before and another does not.
std::string Frame(const World& world, std::uint64_t address) {
  const ModuleRecord* last = nullptr;
  for (const ModuleRecord& module : world.context.modules) {
    last = module.base <= address ? &module : last;
  }
  if (last == nullptr || address - last->base > last->size) {
    return Formatted("%lx", address);
  }
  return last->module_name + "!" + last->symbol_name + "!" + Formatted("%lx", address - last->base);
}

// Of the exception up to its call stack. As the message of a thrown one, the message ends at its first NUL.
std::string Head(const World& world, std::string_view message) {
  return world.file.substr(0, world.file.find('\0')) + Formatted("(%u): ", world.line) + std::string(message) + "." +
         (world.properties.empty() ? " " : " Properties:" + world.properties_text + "\n") + "Call stack:\n";
}

void CheckContext(World& world) {
  world.context.message = world.message;
  for (const property_info& property : world.properties) {
    const auto* opaque = std::get_if<OpaqueValue>(&property.value);
    world.context.properties.push_back({std::string(property.name), opaque != nullptr ? opaque->type_code : 0,
                                        property.type_identity, property.value});
  }
  std::string expected = Head(world, world.message);
  std::size_t number = 0;
  for (const std::uint64_t address : world.context.call_stack) {
    expected += Formatted("%zu# ", number++) + Frame(world, address) + "\n";
  }
  Require(ComposeWhat({world.file.c_str(), world.line}, world.context) == expected);
}

std::optional<int> Result(const std::vector<property_info>& properties) {
  for (const property_info& each : properties) {
    if (each.name == "tov.result" && each.type_identity == 723073647 && each.value.index() == 0) {
      return std::get<0>(each.value);
    }
  }
  return std::nullopt;
}

// A number that is no error number counts as the largest.
template <typename Number>
std::uint32_t AsError(Number number) {
  return number < 0 || static_cast<std::uint64_t>(number) > 0xFFFFFFFF ? 0xFFFFFFFF
                                                                       : static_cast<std::uint32_t>(number);
}

std::optional<std::uint32_t> SystemError(const std::vector<property_info>& properties) {
  for (const property_info& each : properties) {
    if (each.name == "os.result" && each.value.index() < 4) {
      const auto& value = each.value;
      return value.index() == 0   ? AsError(std::get<0>(value))
             : value.index() == 1 ? AsError(std::get<1>(value))
             : value.index() == 2 ? AsError(std::get<2>(value))
                                  : AsError(std::get<3>(value));
    }
  }
  return std::nullopt;
}

std::u16string Words(const std::vector<property_info>& properties) {
  std::string words(tov::ResultCodeMessage(Result(properties).value_or(tov::result_code::kNoResultCode)));
  if (const auto error = SystemError(properties)) {
    words += " (" + std::string(tov::ResultCodeMessage(tov::posix::ResultCodeFromSystemError(*error))) + ")";
  }
  return {words.begin(), words.end()};
}

tov::ResultCodeException Thrown(const World& world) {
  const auto& all = world.properties;
  const tov::source_location location{world.file.c_str(), world.line};
  switch (all.size()) {
    case 0:
      return {location, world.message.c_str(), {}};
    case 1:
      return {location, world.message.c_str(), {all[0]}};
    case 2:
      return {location, world.message.c_str(), {all[0], all[1]}};
    default:
      return {location, world.message.c_str(), {all[0], all[1], all[2]}};
  }
}

void CheckException(const World& world) {
  const tov::ResultCodeException exception = Thrown(world);
  const tov::ResultCodeException copy = exception;
  const char* what = copy.what();

  Require(what == exception.what());
  const std::string head = Head(world, world.message.c_str());
  Require(std::string_view(what) == head.c_str());  // Its text ends at a NUL in a property.
  Require(exception.ResultCode() == Result(world.properties));
  Require(exception.Text() == Words(world.properties));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  World world;
  Read(world, AsText(data, size));
  CheckContext(world);
  if (world.properties.size() <= 3) {
    CheckException(world);
  }
  return 0;
}
