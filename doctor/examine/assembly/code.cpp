#include "doctor/examine/assembly/code.h"

#include <algorithm>
#include <array>

namespace doctor {
namespace {

// Opcodes of one byte, and those behind the byte 0xfe, by what follows them. What no range names is followed by
// nothing.
enum class Operand { kNone, kOne, kTwo, kFour, kEight, kToken, kSwitch };

struct OpcodeRange {
  std::uint16_t first;
  std::uint16_t last;
  Operand operand;
};

constexpr auto kOpcodes = std::to_array<OpcodeRange>({
    {0x0e, 0x13, Operand::kOne},        // ldarg.s to stloc.s
    {0x1f, 0x1f, Operand::kOne},        // ldc.i4.s
    {0x20, 0x20, Operand::kFour},       // ldc.i4
    {0x21, 0x21, Operand::kEight},      // ldc.i8
    {0x22, 0x22, Operand::kFour},       // ldc.r4
    {0x23, 0x23, Operand::kEight},      // ldc.r8
    {0x27, 0x28, Operand::kToken},      // jmp, call
    {0x29, 0x29, Operand::kFour},       // calli, which names a signature
    {0x2b, 0x37, Operand::kOne},        // br.s to blt.un.s
    {0x38, 0x44, Operand::kFour},       // br to blt.un
    {0x45, 0x45, Operand::kSwitch},     // switch
    {0x6f, 0x71, Operand::kToken},      // callvirt, cpobj, ldobj
    {0x72, 0x72, Operand::kFour},       // ldstr
    {0x73, 0x75, Operand::kToken},      // newobj, castclass, isinst
    {0x79, 0x79, Operand::kToken},      // unbox
    {0x7b, 0x81, Operand::kToken},      // ldfld to stobj
    {0x8c, 0x8d, Operand::kToken},      // box, newarr
    {0x8f, 0x8f, Operand::kToken},      // ldelema
    {0xa3, 0xa5, Operand::kToken},      // ldelem, stelem, unbox.any
    {0xc2, 0xc2, Operand::kToken},      // refanyval
    {0xc6, 0xc6, Operand::kToken},      // mkrefany
    {0xd0, 0xd0, Operand::kToken},      // ldtoken
    {0xdd, 0xdd, Operand::kFour},       // leave
    {0xde, 0xde, Operand::kOne},        // leave.s
    {0xfe06, 0xfe07, Operand::kToken},  // ldftn, ldvirtftn
    {0xfe09, 0xfe0e, Operand::kTwo},    // ldarg to stloc
    {0xfe12, 0xfe12, Operand::kOne},    // unaligned.
    {0xfe15, 0xfe16, Operand::kToken},  // initobj, constrained.
    {0xfe19, 0xfe19, Operand::kOne},    // no.
    {0xfe1c, 0xfe1c, Operand::kToken},  // sizeof
});

Operand OperandOf(std::uint16_t opcode) {
  const auto* found = std::ranges::find_if(
      kOpcodes, [&](const OpcodeRange& range) { return opcode >= range.first && opcode <= range.last; });
  return found != kOpcodes.end() ? found->operand : Operand::kNone;
}

std::size_t SizeOf(Operand operand, const ByteView& code, std::size_t at) {
  switch (operand) {
    case Operand::kNone:
      return 0;
    case Operand::kOne:
      return 1;
    case Operand::kTwo:
      return 2;
    case Operand::kFour:
    case Operand::kToken:
      return 4;
    case Operand::kEight:
      return 8;
    case Operand::kSwitch:
      break;
  }
  return 4 + std::size_t{4} * code.Number(at, 4);
}

MetadataRow RowOf(std::uint32_t token) {
  return {token >> 24, token & 0xffffffU};
}

void AddNamed(const ByteView& code, std::vector<MetadataRow>& named) {
  for (std::size_t at = 0; at < code.Size();) {
    std::uint16_t opcode = code.Byte(at++);
    if (opcode == 0xfe) {
      opcode = static_cast<std::uint16_t>(0xfe00U | code.Byte(at++));
    }
    const Operand operand = OperandOf(opcode);
    if (operand == Operand::kToken) {
      named.push_back(RowOf(code.Number(at, 4)));
    }
    at += SizeOf(operand, code, at);
  }
}

// Sections behind the code, each aligned to four bytes, say what is caught where. Only a clause of kind 0 names a type.
void AddCaught(const ByteView& file, std::size_t at, std::vector<MetadataRow>& named) {
  constexpr std::uint8_t kClauses = 0x01;
  constexpr std::uint8_t kIsFat = 0x40;
  constexpr std::uint8_t kMore = 0x80;
  std::uint8_t kind = kMore;
  while ((kind & kMore) != 0) {
    at = (at + 3) / 4 * 4;
    kind = file.Byte(at);
    const bool isFat = (kind & kIsFat) != 0;
    const std::size_t end = at + std::max<std::size_t>(4, file.Number(at + 1, isFat ? 3 : 1));
    const std::size_t size = isFat ? 24 : 12;
    for (at += 4; at + size <= end; at += size) {
      if ((kind & kClauses) != 0 && file.Number(at, isFat ? 4 : 2) == 0) {
        named.push_back(RowOf(file.Number(at + size - 4, 4)));
      }
    }
    at = end;
  }
}

}  // namespace

FunctionBody ReadBody(const ByteView& file, std::size_t at) {
  constexpr std::uint8_t kTiny = 2;
  constexpr std::uint8_t kHasSections = 8;
  const std::uint8_t head = file.Byte(at);
  FunctionBody body{{}, {0, 0}};
  if ((head & 3U) == kTiny) {
    AddNamed(file.Part(at + 1, head >> 2), body.named);
    return body;
  }
  const std::size_t begin = at + std::size_t{4} * (file.Byte(at + 1) >> 4);
  const std::size_t size = file.Number(at + 4, 4);
  AddNamed(file.Part(begin, size), body.named);
  body.locals = RowOf(file.Number(at + 8, 4));
  if ((head & kHasSections) != 0) {
    AddCaught(file, begin + size, body.named);
  }
  return body;
}

}  // namespace doctor
