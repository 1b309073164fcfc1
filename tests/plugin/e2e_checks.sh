# Sourced by the plug-in's end-to-end tests, after their arguments are read:
# a work folder removed at the end, and checks that count their failures.
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }
has() { grep -qF -- "$2" "$1" || fail "not in $(basename "$1"): $2"; }
lacks() { grep -qF -- "$2" "$1" && fail "in $(basename "$1"): $2"; }
