#!/usr/bin/env bash
# TLS trust under Wine: a stand-in serves HTTPS with a certificate that the
# test authority signed; in a copy of the pristine prefix that trusts the
# authority (trust_certificate.exe) WinINet GETs from it, in a copy that does
# not it refuses with a certificate error, and the pristine prefix itself
# never trusts the authority.
# Usage: trust_certificate_test.sh PYTHON3 STANDIN WINE64 PRISTINE_PREFIX TRUST_EXE PROBE_EXE
set -u
python=$1 standin=$2 wine=$3 pristine=$4 trust=$5 probe=$6
root=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=../../scripts/run_player.sh
source "$root/scripts/run_player.sh"
# shellcheck source=../../scripts/test_tls.sh
source "$root/scripts/test_tls.sh"
unset http_proxy https_proxy HTTP_PROXY HTTPS_PROXY all_proxy ALL_PROXY
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="

# Beside the pristine prefix: its copies are hard links, which need one file system.
work=$(mktemp -d "$(dirname "$(realpath "$pristine")")/tls-test.XXXXXX") || exit 1
server=$(dirname "$wine")/wineserver
[ -x "$server" ] || server=wineserver
cleanup() {
  standin_stop "${standin_pid:-}"
  local prefix
  for prefix in "$work/trusting" "$work/untrusting"; do
    [ -d "$prefix" ] && WINEPREFIX=$prefix timeout 60 "$server" -k 2>/dev/null
  done
  rm -rf "$work"
}
trap cleanup EXIT

passed=0 failed=0
check() { # NAME COMMAND...: one case
  local name=$1
  shift
  if "$@"; then
    echo "[       OK ] $name"
    passed=$((passed + 1))
  else
    echo "[  FAILED  ] $name"
    failed=$((failed + 1))
  fi
}
finish() {
  [ $failed -eq 0 ] || echo "[  FAILED  ] $failed tests."
  echo "[  PASSED  ] $passed tests."
  [ $failed -eq 0 ]
  exit $?
}

tls_make "$work/certificates" || { echo "the certificates were not made" >&2; exit 1; }
standin_start "$python" "$standin" "$work/standin" --lifetime 600 --user tester:secret \
  --tls-cert "$work/certificates/server.pem" --tls-key "$work/certificates/server.key" || exit 1
url="https://127.0.0.1:$standin_port/?hs=true&p=1.1&c=tst&v=1.0&u=tester"

probe_in() { # PREFIX: the probe's one line
  WINEPREFIX=$1 timeout 120 "$wine" "$probe" "$url" </dev/null 2>&1 | tr -d '\r'
}
thumbprint=$(openssl x509 -in "$work/certificates/ca.der" -inform DER -noout -fingerprint -sha1 \
  | sed 's/.*=//; s/://g')
registry_trusts() { # PREFIX: its machine Root store holds the authority
  grep -qF "SystemCertificates\\\\Root\\\\Certificates\\\\$thumbprint]" "$1/system.reg"
}

for prefix in trusting untrusting; do
  player_fresh_prefix "$pristine" "$work/$prefix" || { echo "the $prefix prefix was not made" >&2; exit 1; }
done

# Twice: the second replaces the first.
trusted() {
  tls_trust "$work/trusting" "$wine" "$trust" "$work/certificates/ca.der" \
    && tls_trust "$work/trusting" "$wine" "$trust" "$work/certificates/ca.der" \
    && registry_trusts "$work/trusting"
}
check "trust_certificate adds the authority to the machine Root store" trusted

missing() {
  local line status
  WINEPREFIX=$work/untrusting timeout 120 "$wine" "$trust" "$(player_windows_path "$work/none.der")" \
    </dev/null >"$work/missing.txt" 2>&1
  status=$?
  line=$(tr -d '\r' <"$work/missing.txt")
  echo "  trust_certificate without a file: $status, $line"
  [ "$status" -ne 0 ] && [ "$(printf '%s\n' "$line" | wc -l)" -eq 1 ] \
    && [[ $line == "trust_certificate: "* ]]
}
check "trust_certificate fails with one line when the file is missing" missing

answered() {
  local line
  line=$(probe_in "$work/trusting")
  echo "  trusting prefix: $line"
  [[ $line =~ ^status\ 200,\ [1-9][0-9]*\ bytes$ ]]
}
check "WinINet GETs over TLS in the prefix that trusts the authority" answered

# Wine 8 answers 12057 (ERROR_INTERNET_SEC_CERT_REV_FAILED) where Windows
# gives 12045 (ERROR_INTERNET_INVALID_CA); either is the authority refused.
refused() {
  local line
  line=$(probe_in "$work/untrusting")
  echo "  untrusting prefix: $line"
  [[ $line == "error 12045" || $line == "error 12057" ]]
}
check "WinINet refuses the certificate in a prefix that does not trust it" refused

untouched() {
  ! registry_trusts "$pristine" && ! registry_trusts "$work/untrusting"
}
check "the pristine prefix does not trust the authority" untouched

finish
