#!/usr/bin/env bash
# Makes the certificates of the TLS tests in DIR, with openssl only: a test
# certificate authority and a server certificate for 127.0.0.1 that it signs.
#   DIR/ca.pem       the authority (PEM), for a Python client's context
#   DIR/ca.der       the same in DER: what a client must trust
#   DIR/server.pem   the server certificate: subjectAltName IP:127.0.0.1,
#                    DNS:127.0.0.1 and DNS:localhost, serverAuth only
#   DIR/server.key   its private key (PEM, not encrypted)
# The server certificate is the stand-in's --tls-cert, its key --tls-key.
# Both certificates start a day in the past, so that a clock a little behind
# does not find them not yet valid, and last 400 days. When DIR already holds
# them, valid for at least 30 more days, nothing is made again; calls at the
# same time on one DIR take turns. Quiet: openssl's output is shown only when
# it fails.
# Usage: make_test_certificate.sh DIR
set -euo pipefail
dir=${1:?usage: make_test_certificate.sh DIR}
mkdir -p "$dir"
exec 9>"$dir/.lock"
flock -w 120 9 || { echo "make_test_certificate: $dir stays locked" >&2; exit 1; }

outputs=(ca.pem ca.der server.pem server.key)
ready=true
for file in "${outputs[@]}"; do
  [ -s "$dir/$file" ] || ready=false
done
if $ready && openssl x509 -in "$dir/server.pem" -noout -checkend $((30 * 86400)) >/dev/null 2>&1 \
  && openssl x509 -in "$dir/ca.pem" -noout -checkend $((30 * 86400)) >/dev/null 2>&1; then
  exit 0
fi

work=$(mktemp -d "$dir/.make.XXXXXX")
trap 'rm -rf "$work"' EXIT
run() { # openssl's chatter goes to a log that is shown only on failure
  "$@" >>"$work/log" 2>&1 || { cat "$work/log" >&2; echo "make_test_certificate: $* failed" >&2; exit 1; }
}

# openssl ca, unlike openssl x509 of this openssl, can set the start date.
mkdir "$work/db"
: >"$work/db/index.txt"
cat >"$work/openssl.cnf" <<EOF
[ca]
default_ca = test_ca
[test_ca]
dir = $work/db
database = \$dir/index.txt
new_certs_dir = \$dir
rand_serial = yes
default_md = sha256
policy = anything
unique_subject = no
copy_extensions = none
[anything]
commonName = supplied
[authority]
basicConstraints = critical, CA:true, pathlen:0
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[server]
basicConstraints = critical, CA:false
keyUsage = critical, digitalSignature, keyEncipherment
extendedKeyUsage = serverAuth
subjectAltName = IP:127.0.0.1, DNS:127.0.0.1, DNS:localhost
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
EOF

start=$(date -u -d '1 day ago' +%Y%m%d%H%M%SZ)
end=$(date -u -d '399 days' +%Y%m%d%H%M%SZ)
sign() { # CSR OUT EXTENSIONS [OPTIONS...]
  local csr=$1 out=$2 extensions=$3
  shift 3
  run openssl ca -batch -notext -config "$work/openssl.cnf" -startdate "$start" -enddate "$end" \
    -extensions "$extensions" -in "$csr" -out "$out" "$@"
}

run openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$work/ca.key"
run openssl req -new -key "$work/ca.key" -subj "/CN=CVAudioScrobbler test authority" \
  -out "$work/ca.csr"
sign "$work/ca.csr" "$work/ca.pem" authority -selfsign -keyfile "$work/ca.key"

run openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$work/server.key"
run openssl req -new -key "$work/server.key" -subj "/CN=127.0.0.1" -out "$work/server.csr"
sign "$work/server.csr" "$work/server.pem" server -cert "$work/ca.pem" -keyfile "$work/ca.key"

run openssl x509 -in "$work/ca.pem" -outform DER -out "$work/ca.der"
for file in "${outputs[@]}"; do
  mv -f "$work/$file" "$dir/$file"
done
