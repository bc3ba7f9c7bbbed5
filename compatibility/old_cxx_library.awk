# Makes a stand-in for an old C++ library out of the installed one: reads what `readelf --dyn-syms --wide` prints of that
# and writes those symbols that the library of GCC 4.8 has as well, to the file `assembler`, with their versions in the
# file `versions`. The linker looks at names, types, sizes and versions only, so there is nothing else in it.

# Whether it is one of the versions up to GLIBCXX_3.4.19 and CXXABI_1.3.7.
function is_old(version,    parts) {
  split(version, parts, /[_.]/)
  if (parts[1] == "GLIBCXX") return parts[2] == 3 && parts[3] == 4 && parts[4] + 0 <= 19
  if (parts[1] == "CXXABI") return parts[2] == 1 && parts[3] == 3 && parts[4] + 0 <= 7
  return 0
}

function write_symbol(name, kind, size) {
  printf "%s\n.globl %s\n.type %s, @%s\n.size %s, %s\n%s:\n", sections[kind], name, name, types[kind], name, size,
         name > assembler
}

function remember_version(name, version) {
  if (!(version in symbols)) order[++count] = version
  symbols[version] = symbols[version] "    " name ";\n"
}

BEGIN {
  types["FUNC"] = "function";  sections["FUNC"] = ".text"
  types["OBJECT"] = "object";  sections["OBJECT"] = ".data"
  types["TLS"] = "tls_object"; sections["TLS"] = ".section .tbss, \"awT\", @nobits"
  print ".section .note.GNU-stack, \"\", @progbits" > assembler
}

# A line is: number, value, size, type, binding, visibility, section, name@@version. A single @ marks a version that
# nothing new is linked with, and a section without number the versions themselves, or what the library lacks.
$7 ~ /^[0-9]+$/ && $4 in types && split($8, symbol, "@@") == 2 && is_old(symbol[2]) {
  write_symbol(symbol[1], $4, $3)
  remember_version(symbol[1], symbol[2])
}

END {
  for (i = 1; i <= count; ++i) {
    printf "%s {\n  global:\n%s};\n", order[i], symbols[order[i]] > versions
  }
}
