#include "doctor/examine/assembly/signature.h"

#include <stdexcept>
#include <utility>

namespace doctor {
namespace {

// What a signature begins with.
constexpr std::uint8_t kField = 0x06;
constexpr std::uint8_t kLocals = 0x07;
constexpr std::uint8_t kArguments = 0x0a;
constexpr std::uint8_t kKind = 0x0f;
constexpr std::uint8_t kIsGeneric = 0x10;

// The elements of a type that something follows.
constexpr std::uint8_t kPointer = 0x0f;
constexpr std::uint8_t kReference = 0x10;
constexpr std::uint8_t kValueType = 0x11;
constexpr std::uint8_t kClass = 0x12;
constexpr std::uint8_t kTypeParameter = 0x13;
constexpr std::uint8_t kArray = 0x14;
constexpr std::uint8_t kGenericInstance = 0x15;
constexpr std::uint8_t kFunctionPointer = 0x1b;
constexpr std::uint8_t kVector = 0x1d;
constexpr std::uint8_t kFunctionParameter = 0x1e;
constexpr std::uint8_t kRequiredModifier = 0x1f;
constexpr std::uint8_t kOptionalModifier = 0x20;
constexpr std::uint8_t kSentinel = 0x41;
constexpr std::uint8_t kPinned = 0x45;

// Far more than any compiler writes, and far less than a stack holds.
constexpr int kDeepest = 100;

class Reader {
 public:
  explicit Reader(const ByteView& blob) : blob_(blob) {}

  std::uint8_t Byte() { return blob_.Byte(at_++); }

  std::uint32_t Number() {
    const CompressedNumber number = ReadCompressed(blob_, at_);
    at_ += number.size;
    return number.value;
  }

  std::vector<NamedType> Types(std::uint32_t count) {
    for (std::uint32_t one = 0; one < count; ++one) {
      Type(0);
    }
    return std::move(types_);
  }

  Signature Function(std::uint8_t head) {
    const std::uint32_t parameters = Parameters(head);
    Signature signature{Types(1), {}};
    types_.clear();
    signature.parameters = Types(parameters);
    return signature;
  }

 private:
  std::uint32_t Parameters(std::uint8_t head) {
    if ((head & kIsGeneric) != 0) {
      Number();
    }
    return Number();
  }

  void Named(bool isValue) { types_.push_back({MetadataTables::TypeOf(Number()), isValue}); }

  void Type(int depth) {
    if (depth > kDeepest) {
      throw std::out_of_range("nested too deep");
    }
    switch (const std::uint8_t element = Byte()) {
      case kValueType:
      case kClass:
        return Named(element == kValueType);
      case kRequiredModifier:
      case kOptionalModifier:
        Number();
        return Type(depth + 1);
      case kPointer:
      case kReference:
      case kVector:
      case kSentinel:
      case kPinned:
        return Type(depth + 1);
      case kTypeParameter:
      case kFunctionParameter:
        Number();
        return;
      case kArray:
        return Array(depth);
      case kGenericInstance:
        return GenericInstance(depth);
      case kFunctionPointer:
        return All(Parameters(Byte()) + 1, depth);
      default:
        return;
    }
  }

  void All(std::uint32_t count, int depth) {
    for (std::uint32_t one = 0; one < count; ++one) {
      Type(depth + 1);
    }
  }

  void Array(int depth) {
    Type(depth + 1);
    Number();  // How many dimensions it has; then sizes and lowest indices.
    for (int list = 0; list < 2; ++list) {
      for (std::uint32_t left = Number(); left > 0; --left) {
        Number();
      }
    }
  }

  void GenericInstance(int depth) {
    Named(Byte() == kValueType);
    All(Number(), depth);
  }

  ByteView blob_;
  std::size_t at_ = 0;
  std::vector<NamedType> types_;
};

}  // namespace

Signature ReadSignature(const ByteView& blob) {
  if (blob.Size() == 0) {
    return {};
  }
  Reader reader(blob);
  const std::uint8_t head = reader.Byte();
  switch (head & kKind) {
    case kField:
      return {reader.Types(1), {}};
    case kLocals:
    case kArguments:
      return {reader.Types(reader.Number()), {}};
    default:
      return reader.Function(head);
  }
}

std::vector<NamedType> ReadTypeSignature(const ByteView& blob) {
  return Reader(blob).Types(1);
}

}  // namespace doctor
