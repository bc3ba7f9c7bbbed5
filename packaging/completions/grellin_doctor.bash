# Completion of grellin_doctor for bash. The options are those that the program itself names, so that they are never stale.
_grellin_doctor() {
  local cur prev  # Set by the next line, among others.
  # shellcheck disable=SC2034
  local words cword
  _init_completion || return
  case $prev in
    --root) _filedir -d ;;
    --settings | --log | --report) _filedir ;;
    --color) mapfile -t COMPREPLY < <(compgen -W "auto always never" -- "$cur") ;;
    --explain) mapfile -t COMPREPLY < <(compgen -W "$("$1" --explain list 2>/dev/null)" -- "$cur") ;;
    --user) mapfile -t COMPREPLY < <(compgen -u -- "$cur") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1")" -- "$cur") ;;
  esac
} && complete -F _grellin_doctor grellin_doctor
