# shellcheck shell=bash
# Sourced by the tests that run the stand-in service over TLS or on a fixed
# port: the test authority's certificates, trust in a Wine prefix of the
# test's own, and stand-ins started in the background. Only ever trust the
# authority in a copy of the pristine prefix (player_fresh_prefix in
# run_player.sh), never in the shared build/win64/wineprefix.

tls_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=run_player.sh
source "$tls_root/scripts/run_player.sh" # player_windows_path

# The certificates in DIR (see make_test_certificate.sh): DIR/server.pem and
# DIR/server.key for the stand-in's --tls-cert and --tls-key, DIR/ca.der for
# tls_trust, DIR/ca.pem for a client on the host.
tls_make() { # DIR
  "$tls_root/scripts/make_test_certificate.sh" "$1"
}

# The machine "Root" store of PREFIX trusts the certificate DERFILE. The
# prefix's wine server is ended afterwards, so that its registry files hold
# the trust; nothing else may run in PREFIX meanwhile.
tls_trust() { # PREFIX WINE TRUST_EXE DERFILE
  local prefix=$1 wine=$2 exe=$3 der=$4 server status
  server=$(dirname "$wine")/wineserver
  [ -x "$server" ] || server=wineserver
  WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" \
    timeout 120 "$wine" "$exe" "$(player_windows_path "$der")" </dev/null
  status=$?
  WINEPREFIX=$prefix timeout 60 "$server" -k 2>/dev/null
  WINEPREFIX=$prefix timeout 60 "$server" -w 2>/dev/null
  [ $status -eq 0 ] || echo "tls_trust: $(basename "$exe") ended with $status in $prefix" >&2
  return $status
}

# Starts a stand-in service in the background, its port in FOLDER/port, its
# standard error in FOLDER/standin.log. Sets standin_pid and standin_port
# (copy them before starting another). When the service ends before it
# listens, returns its exit code with its one line on standard error: 3 is a
# port it could not bind (port 80 without root, a port in use), 2 a
# certificate it could not load.
standin_start() { # PYTHON3 STANDIN FOLDER [STANDIN_OPTIONS...]
  local python=$1 standin=$2 folder=$3
  shift 3
  mkdir -p "$folder" || return 1
  rm -f "$folder/port"
  # shellcheck disable=SC2034 # the caller's to read
  standin_pid='' standin_port=''
  "$python" "$standin" --port-file "$folder/port" "$@" >/dev/null 2>"$folder/standin.log" &
  local pid=$!
  for _ in $(seq 100); do
    [ -s "$folder/port" ] && break
    if ! kill -0 "$pid" 2>/dev/null; then
      wait "$pid"
      local status=$?
      cat "$folder/standin.log" >&2
      return $((status == 0 ? 1 : status))
    fi
    sleep 0.1
  done
  if [ ! -s "$folder/port" ]; then
    echo "standin_start: the stand-in did not start within 10 seconds" >&2
    kill "$pid" 2>/dev/null
    wait "$pid" 2>/dev/null
    return 1
  fi
  # shellcheck disable=SC2034
  standin_pid=$pid
  # shellcheck disable=SC2034
  standin_port=$(head -n 1 "$folder/port")
}

# Stops a stand-in that standin_start started.
standin_stop() { # PID
  [ -n "${1:-}" ] || return 0
  kill "$1" 2>/dev/null
  wait "$1" 2>/dev/null
  return 0
}
