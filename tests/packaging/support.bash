# shellcheck shell=bash disable=SC2034
# What the tests of packages share. A test file sources this, defines its cases as functions and ends with `run "$@"`.
# The work folder $work is removed at the end. Statuses: 0 passed, 77 skipped, anything else failed.
set -euo pipefail
export LC_ALL=C.UTF-8
top=$(readlink -f "$(dirname "${BASH_SOURCE[0]}")/../..")
packages=$top/build/packages
settings=/var/opt/morvath/quor/common/dotnet_settings.ini
product=/opt/morvath/quor

fail() { echo "FAILED: $*" >&2; exit 1; }
skip() { echo "SKIPPED: $*"; exit 77; }

# needs PROGRAM...: skips where one of them is missing.
needs() {
  local program
  for program; do command -v "$program" >/dev/null || skip "$program is not installed"; done
}

# Skips unless the packages are there and made of these sources.
needs_packages() {
  [[ -f $packages/sources ]] || skip "no packages were made: run scripts/package"
  [[ $(<"$packages/sources") == "$("$top/scripts/sources-id")" ]] ||
    skip "the packages in build/packages were made of other sources: run scripts/package"
}

# equal ACTUAL EXPECTED
equal() { [[ $1 == "$2" ]] || fail "expected '$2', got '$1'"; }

# contains TEXT PIECE
contains() { [[ $1 == *"$2"* ]] || fail "expected '$2' in: $1"; }

absent() { [[ ! -e $1 && ! -L $1 ]] || fail "$1 is there"; }
present() { [[ -e $1 ]] || fail "$1 is not there"; }

# silent COMMAND...: it succeeds and has nothing to say.
silent() {
  local said
  said=$("$@" 2>&1) || fail "$*: status $?: $said"
  [[ -z $said ]] || fail "$*: $said"
}

# The one package of that kind. debian product|debug, and so on.
package_file() {
  local name
  case $1-$2 in
    debian-product) name=grellin-loader_${VERSION}-1_amd64.deb ;;
    debian-debug) name=grellin-loader-dbgsym_${VERSION}-1_amd64.deb ;;
    rpm-product) name=grellin-loader-$VERSION-1.x86_64.rpm ;;
    rpm-debug) name=grellin-loader-debuginfo-$VERSION-1.x86_64.rpm ;;
    tar-product) name=grellin-loader-$VERSION-Linux-product.tar.gz ;;
    tar-debug) name=grellin-loader-$VERSION-Linux-debug.tar.gz ;;
  esac
  echo "$packages/$name"
}

# in_private_machine CASE: goes on in a private view of the machine, in which everything can be written and nothing of it
# is seen outside. There is no product and no .NET in it.
in_private_machine() {
  [[ ${INSIDE:-} ]] && return
  local status=0
  INSIDE=1 "$top/tests/support/private-machine" "$(readlink -f "$0")" "$1" || status=$?
  exit "$status"
}

# dotnet ROOT VERSION: something that looks like a .NET of that version.
dotnet() {
  mkdir -p "$1/host/fxr/$2" "$1/shared/Microsoft.NETCore.App/$2"
  cp "$BUILD/stand_in_host/whole/libhostfxr.so" "$1/host/fxr/$2"
}

run() {
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  "$1"
}
