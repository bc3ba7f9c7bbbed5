#include "foundation/exception_context.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <locale>
#include <memory>
#include <sstream>
#include <utility>

#include "foundation/stream_output.h"

namespace tov::detail {
namespace {

// By the index of the value's alternative; the opaque value brings its own.
constexpr auto kTypeCodes = std::to_array<std::uint32_t>({20, 21, 22, 23, 7, 8});
static_assert(kTypeCodes.size() + 1 == std::variant_size_v<PropertyValue>);

std::uint32_t TypeCode(const PropertyValue& value) {
  const auto* opaque = std::get_if<OpaqueValue>(&value);
  return opaque != nullptr ? opaque->type_code : kTypeCodes[value.index()];
}

class ValueWriter {
 public:
  explicit ValueWriter(std::ostream& stream) : stream_(stream) {}

  void operator()(std::int32_t value) const { WriteHex(static_cast<std::uint32_t>(value), 8); }
  void operator()(std::uint32_t value) const { WriteHex(value, 8); }
  void operator()(std::int64_t value) const { WriteHex(static_cast<std::uint64_t>(value), 16); }
  void operator()(std::uint64_t value) const { WriteHex(value, 16); }
  void operator()(const NarrowString& value) const { stream_ << value; }
  void operator()(const WideString& value) const { types::operator<<(stream_, value); }
  void operator()(OpaqueValue value) const { stream_ << "<typeid=" << std::dec << value.type_code << ">"; }

 private:
  void WriteHex(std::uint64_t value, int digits) const {
    stream_ << "0x" << std::hex << std::setfill('0') << std::setw(digits) << value << std::dec;
  }

  std::ostream& stream_;
};

void WriteProperties(std::ostream& stream, const std::vector<PropertyRecord>& properties) {
  if (properties.empty()) {
    stream << " ";
    return;
  }
  stream << " Properties:";
  for (const PropertyRecord& property : properties) {
    stream << "\n" << property.name << "=";
    std::visit(ValueWriter(stream), property.value);
  }
  stream << "\n";
}

const ModuleRecord* FindModule(const std::vector<ModuleRecord>& modules, std::uint64_t address) {
  const auto after = std::ranges::upper_bound(modules, address, {}, &ModuleRecord::base);
  if (after == modules.begin()) {
    return nullptr;
  }
  const ModuleRecord& module = *std::prev(after);
  // The end is inside: a call that never returns may be a module's last instruction, with its return address behind.
  return address - module.base <= module.size ? &module : nullptr;
}

void WriteCallStack(std::ostream& stream, const ExceptionContext& context) {
  stream << "Call stack:\n";
  std::size_t frame = 0;
  for (const std::uint64_t address : context.call_stack) {
    stream << std::dec << frame++ << "# " << std::hex;
    if (const ModuleRecord* module = FindModule(context.modules, address)) {
      stream << module->module_name << "!" << module->symbol_name << "!" << address - module->base << "\n";
    } else {
      stream << address << "\n";
    }
  }
}

}  // namespace

ContextPointer::ContextPointer(const char* message, std::initializer_list<property_info> properties) {
  // The copies of an exception share one block that counts its owners itself: it is part of the exceptions' layout.
  auto fresh = std::make_unique<ExceptionContext>();
  fresh->message = message;
  fresh->properties.reserve(properties.size());
  for (const property_info& property : properties) {
    // Assigned, not copy-constructed: when memory runs out, the library's variant destroys what it did not construct.
    PropertyRecord& record = fresh->properties.emplace_back();
    record.name = property.name;
    record.type_code = TypeCode(property.value);
    record.type_identity = property.type_identity;
    record.value = property.value;
  }
  context_ = fresh.release();
}

ContextPointer::ContextPointer(const ContextPointer& other) noexcept : context_(other.context_) {
  if (context_ != nullptr) {
    context_->references.fetch_add(1);
  }
}

ContextPointer& ContextPointer::operator=(const ContextPointer& other) noexcept {
  ContextPointer copy(other);  // Shared before the old one is released, as both may be the same.
  std::swap(context_, copy.context_);
  return *this;
}

ContextPointer::~ContextPointer() {
  // In sequence with the other owners' releases, so that the last one sees all that they wrote.
  if (context_ != nullptr && context_->references.fetch_sub(1) == 1) {
    delete context_;
  }
}

NarrowString ComposeWhat(const source_location& location, const ExceptionContext& context) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());  // The global locale may put separators between the digits.
  stream.exceptions(std::ios::badbit);   // A lack of memory is to be thrown, not to cut the text.
  stream << (location.file != nullptr ? location.file : "") << "(" << location.line << "): " << context.message << ".";
  WriteProperties(stream, context.properties);
  WriteCallStack(stream, context);
  return std::move(stream).str();
}

}  // namespace tov::detail
