# What scdoc writes, as mandoc's lint wants it: no paragraph macros where they mean nothing, the title in capitals, no line
# longer than 80 bytes outside of literal text.
function ends_paragraph(line) { return line ~ /^\.(SH|SS|TP|PP?|RS|RE|IP)/ }

function wrapped(line,   at) {
  while (length(line) > 80) {
    for (at = 80; at > 1 && !(substr(line, at, 1) == " " && substr(line, at + 1, 1) !~ /[.']/); --at) {}
    if (at == 1) break
    print substr(line, 1, at - 1)
    line = substr(line, at + 1)
  }
  print line
}

function put(line) {
  if (line ~ /^\./ || literal) print line; else wrapped(line)
  before = line
}

/^\.TH / { sub(/"[^"]*"/, toupper($2)) }
$0 == ".nf" { literal = 1 }
$0 == ".fi" { literal = 0 }
$0 == ".P" || $0 == ".PP" { paragraph = 1; next }
{
  if (paragraph && !ends_paragraph($0) && before !~ /^\.(SH|SS)/) put(".PP")
  paragraph = 0
  put($0)
}
