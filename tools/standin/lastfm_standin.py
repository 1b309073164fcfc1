#!/usr/bin/env python3
"""A local stand-in for the Last.fm services the plug-in talks to.

It answers the protocol 1.1 handshake and the submissions, serves the two
web-service feeds from a folder of fixture documents, and misbehaves on
request, so that tests and demos never reach the internet. It listens on
127.0.0.1 only, prints the port it bound as its first line of output and
stops by itself after its lifetime. A port it cannot bind (80 without the
right to, or one in use) ends it at once with exit code 3 and one line on
stderr, "lastfm_standin: cannot listen on 127.0.0.1:PORT: REASON"; a
certificate it cannot load, with exit code 2 and one line.

With --tls-cert and --tls-key it speaks HTTPS only (TLS 1.2 and later), and
the submission URLs it hands out begin with https://. The TLS handshake runs
in the thread of each connection, so a client that never speaks blocks
nothing; a client that refuses the certificate is simply let go.

Submissions are taken at "/protocol_1.1" and at "/submissions/1.2/"; runs of
slashes count as one, so "//submissions/1.2/" is taken too. The journal keeps
the path as it came.

By default the handshake answers "UPTODATE", a random challenge and
http://127.0.0.1:PORT/protocol_1.1, and a wrong session is "BADAUTH".
With --real-server it answers the way a real protocol 1.1 server does as
deployed: the challenge is its clock in whole seconds, the submission URL is
its base URL (which ends in a slash) followed by "/submissions/1.2/", so
"http://127.0.0.1:PORT//submissions/1.2/", without the port when it is the
scheme's own (80, 443 over TLS), and "INTERVAL 1" follows. It then answers a
wrong session with "BADSESSION", reads the time of a play as UTC, refuses
a time more than 5 minutes ahead ("FAILED Submitted track has timestamp in
the future") and answers "OK" to a play it already has (same user, artist,
title and time) without recording it again.

This is an implementation of its own, written from the protocol; it shares
nothing with the plug-in, so that one mistake cannot hide on both sides.

Scripted answers are consumed one per request, in order, separately for
handshakes, for submissions and for feed requests; when a list runs dry the
service behaves. A feed request takes the actions common to every route
(delay, hold, hang, stall, drop, huge, binary, raw, html, failed, badauth,
baduser, badsession); any other word gives the normal answer.
An action is a word, some with an argument after a colon:

  ok             the normal answer
  update:URL     "UPDATE URL" in front of a normal handshake answer
  failed:REASON  "FAILED REASON"
  badauth        "BADAUTH"
  baduser        "BADUSER"
  badsession     "BADSESSION"
  html           an HTTP 500 whose body is a small HTML error page
  two-lines      handshake: "UPTODATE" and the challenge only
  no-port        handshake: a submission URL without a port (its scheme's)
  double-slash   handshake: the real server's submission URL,
                 scheme://127.0.0.1[:PORT]//submissions/1.2/
  refused        handshake: a submission URL on a port of 127.0.0.1 that
                 refuses connections (held bound, never listening)
  leading-slash  handshake: a submission URL that begins with "/"
  crlf           the normal answer with CR LF and blank lines between lines
  interval:N     the normal answer followed by "INTERVAL N"
  ok-late        submission: "OK" on a line after another line
  delay:SECONDS  wait, then give the normal answer
  hold           wait for a release (/control/release), then give the normal
                 answer; never answered when the service stops first
  hang           accept the request and never answer
  stall:SECONDS  send the headers of an answer, then no body: the connection
                 closes after SECONDS (never, without a number)
  drop           close the connection without answering
  huge           a body of 1,000,000 bytes without a line break
  binary         a body of bytes 0 to 255, NUL included
  raw:TEXT       exactly TEXT (backslash escapes such as \\n are decoded)

The control endpoint (GET, query parameters):
  /control/reset                      forget scripts and requests, empty the files
  /control/script?handshake=A&submit=B&feed=C
                                      append actions (each parameter repeatable)
  /control/user?name=N&password=P     add or change a user
  /control/release                    let one held request go; a release that
                                      comes before its request is kept for it
  /control/requests                   every request so far, one JSON object a line

The web-service feeds (GET), answered from the fixture folder (--feeds,
by default feeds/ beside this script), each request journalled as a "feed":
  /1.0/user/NAME/friends.xml          the file FEEDS/NAME/friends.xml
  /1.0/user/NAME/recenttracks.xml     the file FEEDS/NAME/recenttracks.xml
A file that is not there answers 404. The fixtures in feeds/ (UTF-8):
  tester   friends alice, bob, carol, dave and erin, in that order
  loner    a friends document without any user
  alice    recent tracks with non-Latin and bracketed names, and one track
           without a url
  bob      recent tracks that answer "Error: ..." instead of a document
  carol    an empty recenttracks document
  dave     no recent tracks file at all (404)
  erin     two plain recent tracks
"""

import argparse
import calendar
import hashlib
import json
import os
import re
import secrets
import socket
import ssl
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from typing import NamedTuple

SUBMISSION_PATH = "/protocol_1.1"
SUBMISSION_PATH_1_2 = "/submissions/1.2/"
SUBMISSION_ROUTES = (SUBMISSION_PATH, SUBMISSION_PATH_1_2)
DEFAULT_PORTS = {"http": 80, "https": 443}
FUTURE_SLACK_SECONDS = 5 * 60
TLS_HANDSHAKE_SECONDS = 30
HTML_ERROR_PAGE = (b"<!DOCTYPE html>\n<html><head><title>500 Internal Server Error</title></head>\n"
                   b"<body><h1>Internal Server Error</h1><p>The server could not complete"
                   b" your request.</p></body></html>\n")
HUGE_BODY_BYTES = 1_000_000
FEED_ROUTES = ("friends.xml", "recenttracks.xml")
DEFAULT_FEEDS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "feeds")
SCRIPTED_KINDS = ("handshake", "submit", "feed")
EXIT_BAD_CERTIFICATE = 2
EXIT_CANNOT_LISTEN = 3


def md5_hex(data):
    return hashlib.md5(data).hexdigest()


class ServiceState:
    """What the service knows: users, sessions, scripts, and what it saw."""

    def __init__(self, users, record_path, journal_path, feeds_folder):
        self.lock = threading.Lock()
        self.users = dict(users)
        self.sessions = {}  # user name -> the challenge of its latest handshake
        self.plays = set()  # (user, artist, track, time) of every recorded play
        self.scripts = {kind: [] for kind in SCRIPTED_KINDS}
        self.requests = []
        self.record_path = record_path
        self.journal_path = journal_path
        self.feeds_folder = feeds_folder
        self.stopping = threading.Event()
        self.releases = threading.Semaphore(0)  # one for each held request to let go
        self._truncate_files()

    def _truncate_files(self):
        for path in (self.record_path, self.journal_path):
            if path:
                with open(path, "w", encoding="utf-8"):
                    pass

    def reset(self):
        with self.lock:
            self.sessions.clear()
            self.plays.clear()
            self.scripts = {kind: [] for kind in SCRIPTED_KINDS}
            self.requests.clear()
            self.releases = threading.Semaphore(0)
            self._truncate_files()

    def next_action(self, kind):
        with self.lock:
            script = self.scripts[kind]
            return script.pop(0) if script else "ok"

    def add_actions(self, kind, actions):
        with self.lock:
            self.scripts[kind].extend(actions)

    def note_request(self, entry):
        line = json.dumps(entry, ensure_ascii=False, separators=(",", ":"))
        with self.lock:
            self.requests.append(line)
            if self.journal_path:
                with open(self.journal_path, "a", encoding="utf-8") as journal:
                    journal.write(line + "\n")

    def record_play(self, play, once=False):
        """Records a play; with once, a play it has already (same user, artist,
        title and time) is left out."""
        key = (play["user"], play["artist"], play["track"], play["time"])
        line = json.dumps(play, ensure_ascii=False, separators=(",", ":"))
        with self.lock:
            if once and key in self.plays:
                return
            self.plays.add(key)
            if self.record_path:
                with open(self.record_path, "a", encoding="utf-8") as record:
                    record.write(line + "\n")


def split_action(action):
    word, _, argument = action.partition(":")
    return word, argument


class Target(NamedTuple):
    path: str
    query: str


def split_target(target):
    """The path and the query of a request target.

    urllib.parse.urlsplit would read "//submissions/1.2/" as the host
    "submissions", so the target is split here. An absolute target, as a
    client sends it to a proxy, loses its scheme and host."""
    for scheme in ("http://", "https://"):
        if target.startswith(scheme):
            slash = target.find("/", len(scheme))
            target = target[slash:] if slash >= 0 else "/"
    path, _, query = target.partition("#")[0].partition("?")
    return Target(path, query)


def route_of(path):
    """The path as the routes know it: a run of slashes counts as one."""
    return re.sub("/{2,}", "/", path)


def utc_seconds(text):
    """A play's time "YYYY-MM-DD hh:mm:ss", read as UTC; None when it is not one."""
    try:
        return calendar.timegm(time.strptime(text, "%Y-%m-%d %H:%M:%S"))
    except ValueError:
        return None


def decode_escapes(text):
    return text.encode("latin-1", "backslashreplace").decode("unicode_escape").encode("latin-1")


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    server_version = "StandIn/1.0"
    # Each answer leaves at once: with Nagle's algorithm on, a kept-alive
    # connection's next answer would wait for the client's delayed ACK.
    disable_nagle_algorithm = True

    # The state is the server's; every handler thread shares it.
    @property
    def state(self):
        return self.server.state

    def log_message(self, format, *args):  # noqa: A002 - the base class's name
        if self.server.verbose:
            sys.stderr.write("standin: " + (format % args) + "\n")

    # Routing

    def request_target(self):
        # http.server folds a leading "//" of self.path into "/"; the journal
        # keeps the target as it came, from the request line.
        words = self.requestline.split()
        return split_target(words[1] if len(words) >= 2 else self.path)

    def do_GET(self):
        url = self.request_target()
        if url.path.startswith("/control/"):
            self.control(url)
        elif url.path.startswith("/1.0/user/") and url.path.endswith(FEED_ROUTES):
            self.feed(url)
        elif urllib.parse.parse_qs(url.query).get("hs") == ["true"]:
            self.handshake(url)
        else:
            self.note("other", url, b"", "404")
            self.answer(b"Not found\n", status=404)

    def do_POST(self):
        url = self.request_target()
        length = int(self.headers.get("Content-Length") or 0)
        body = self.rfile.read(length) if length > 0 else b""
        if route_of(url.path) in SUBMISSION_ROUTES:
            self.submission(url, body)
        else:
            self.note("other", url, body, "404")
            self.answer(b"Not found\n", status=404)

    # Answers

    def answer(self, body, status=200, content_type="text/plain; charset=utf-8"):
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        # Each handshake must bring a fresh challenge, never a cached one.
        self.send_header("Cache-Control", "no-cache, no-store")
        self.send_header("Pragma", "no-cache")
        self.end_headers()
        self.wfile.write(body)

    def misbehave(self, word, argument):
        """Handles the actions common to every route; True when it answered."""
        if word == "delay":
            if self.state.stopping.wait(float(argument or "1")):
                return True
            return False
        if word == "hold":
            releases = self.state.releases
            while not self.state.stopping.is_set():
                if releases.acquire(timeout=0.1):
                    return False
            self.close_connection = True
            return True
        if word == "hang":
            self.state.stopping.wait()
            self.close_connection = True
            return True
        if word == "stall":
            self.send_response(200)
            self.send_header("Content-Type", "text/plain; charset=utf-8")
            self.send_header("Content-Length", "100")
            self.end_headers()
            self.wfile.flush()
            self.state.stopping.wait(float(argument) if argument else None)
            self.close_connection = True
            self.connection.shutdown(2)
            return True
        if word == "drop":
            self.close_connection = True
            self.connection.shutdown(2)
            return True
        if word == "huge":
            self.answer(b"A" * HUGE_BODY_BYTES)
            return True
        if word == "binary":
            self.answer(bytes(range(256)) * 4)
            return True
        if word == "raw":
            self.answer(decode_escapes(argument))
            return True
        if word == "html":
            self.answer(HTML_ERROR_PAGE, status=500, content_type="text/html; charset=utf-8")
            return True
        lines = {"failed": "FAILED " + argument, "badauth": "BADAUTH", "baduser": "BADUSER",
                 "badsession": "BADSESSION"}
        if word in lines:
            self.answer((lines[word] + "\n").encode("utf-8"))
            return True
        return False

    def note(self, kind, url, body, action):
        self.state.note_request({
            "kind": kind,
            "path": url.path,
            "query": url.query,
            "body": body.decode("latin-1"),
            "action": action,
        })

    # The handshake

    def handshake(self, url):
        action = self.state.next_action("handshake")
        self.note("handshake", url, b"", action)
        word, argument = split_action(action)
        if self.misbehave(word, argument):
            return
        query = urllib.parse.parse_qs(url.query, keep_blank_values=True)
        user = query.get("u", [""])[0]
        if query.get("p") != ["1.1"]:
            self.answer(b"FAILED Unsupported protocol version\n")
            return
        real = self.server.real_server
        with self.state.lock:
            known = user in self.state.users
            challenge = str(int(time.time())) if real else secrets.token_hex(16)
            if known:
                self.state.sessions[user] = challenge
        if not known:
            self.answer(b"BADUSER\n")
            return
        lines = ["UPTODATE", challenge, self.submission_url(word)]
        if word == "update":
            lines[0] = "UPDATE " + (argument or "http://127.0.0.1/new-version")
        if word == "interval":
            lines.append("INTERVAL " + argument)
        elif real:
            lines.append("INTERVAL 1")
        if word == "two-lines":
            lines = lines[:2]
        separator = "\r\n\r\n" if word == "crlf" else "\n"
        self.answer((separator.join(lines) + "\n").encode("utf-8"))

    def submission_url(self, word):
        scheme = self.server.scheme
        host, port = self.server.server_address[:2]
        site = "%s://%s" % (scheme, host)
        # A real server's base URL ends in "/", and it appends "/submissions/1.2/";
        # it leaves out the port when that is the scheme's own.
        shown = site if port == DEFAULT_PORTS[scheme] else "%s:%d" % (site, port)
        measured = shown + "/" + SUBMISSION_PATH_1_2
        path = "/" + SUBMISSION_PATH_1_2 if self.server.real_server else SUBMISSION_PATH
        if word == "double-slash":
            return measured
        if word == "no-port":
            return site + path
        if word == "refused":
            return "%s:%d%s" % (site, self.server.refusing_port, path)
        if word == "leading-slash":
            return SUBMISSION_PATH
        return measured if self.server.real_server else "%s:%d%s" % (site, port, SUBMISSION_PATH)

    # The submission

    def submission(self, url, body):
        action = self.state.next_action("submit")
        self.note("submit", url, body, action)
        word, argument = split_action(action)
        if self.misbehave(word, argument):
            return
        # A form decoder: "+" is a blank, %XX are UTF-8 bytes.
        form = urllib.parse.parse_qs(body.decode("latin-1"), keep_blank_values=True,
                                     encoding="utf-8", errors="replace")
        field = lambda key: form.get(key, [""])[0]  # noqa: E731
        user = field("u")
        with self.state.lock:
            password = self.state.users.get(user)
            challenge = self.state.sessions.get(user)
        real = self.server.real_server
        if password is None:
            self.answer(b"BADAUTH\n")
            return
        if challenge is None or field("s") != md5_hex(
                (md5_hex(password.encode("utf-8")) + challenge).encode("utf-8")):
            self.answer(b"BADSESSION\n" if real else b"BADAUTH\n")
            return
        when = utc_seconds(field("i[0]"))
        if real and when is not None and when > time.time() + FUTURE_SLACK_SECONDS:
            self.answer(b"FAILED Submitted track has timestamp in the future\n")
            return
        self.state.record_play({
            "user": user,
            "artist": field("a[0]"),
            "track": field("t[0]"),
            "album": field("b[0]"),
            "mbid": field("m[0]"),
            "length": field("l[0]"),
            "time": field("i[0]"),
        }, once=real)
        if word == "interval":
            self.answer(("OK\nINTERVAL %s\n" % argument).encode("utf-8"))
        elif word == "ok-late":
            self.answer(b"NOTICE\nOK\n")
        elif word == "crlf":
            self.answer(b"OK\r\n\r\n")
        else:
            self.answer(b"OK\n")

    # The web-service feeds

    def feed(self, url):
        action = self.state.next_action("feed")
        self.note("feed", url, b"", action)
        if self.misbehave(*split_action(action)):
            return
        parts = url.path.split("/")  # "", "1.0", "user", NAME, FILE
        name = urllib.parse.unquote(parts[3]) if len(parts) == 5 else ""
        folder = self.state.feeds_folder
        candidate = os.path.join(folder, name, parts[-1]) if folder and name else ""
        # Only files inside the fixture folder are ever served.
        inside = candidate and os.path.realpath(candidate).startswith(
            os.path.realpath(folder) + os.sep)
        if inside and os.path.isfile(candidate):
            with open(candidate, "rb") as document:
                self.answer(document.read())
        else:
            self.answer(b"Error: no such user\n", status=404)

    # The control endpoint

    def control(self, url):
        query = urllib.parse.parse_qs(url.query, keep_blank_values=True)
        command = url.path[len("/control/"):]
        if command == "reset":
            self.state.reset()
        elif command == "script":
            for kind in SCRIPTED_KINDS:
                self.state.add_actions(kind, query.get(kind, []))
        elif command == "release":
            self.state.releases.release()
        elif command == "user":
            with self.state.lock:
                self.state.users[query.get("name", [""])[0]] = query.get("password", [""])[0]
        elif command == "requests":
            with self.state.lock:
                text = "".join(line + "\n" for line in self.state.requests)
            self.answer(text.encode("utf-8"))
            return
        else:
            self.answer(b"unknown control command\n", status=404)
            return
        self.answer(b"done\n")


class StandInServer(ThreadingHTTPServer):
    daemon_threads = True
    allow_reuse_address = True

    def __init__(self, port, state, verbose=False, tls=None, real_server=False):
        self.state = state
        self.verbose = verbose
        self.tls = tls
        self.scheme = "https" if tls else "http"
        self.real_server = real_server
        # Bound and never listening: a connection to this port is refused, and
        # no other program can take the port while the service runs.
        self.refusing_socket = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        self.refusing_socket.bind(("127.0.0.1", 0))
        self.refusing_port = self.refusing_socket.getsockname()[1]
        try:
            super().__init__(("127.0.0.1", port), Handler)
        except BaseException:
            self.refusing_socket.close()
            raise

    def finish_request(self, request, client_address):
        # Runs in the connection's own thread: a TLS handshake that never
        # comes holds up this connection only, and for a bounded time.
        if self.tls is None:
            super().finish_request(request, client_address)
            return
        request.settimeout(TLS_HANDSHAKE_SECONDS)
        try:
            secure = self.tls.wrap_socket(request, server_side=True)
        except (ssl.SSLError, OSError) as error:
            if self.verbose:
                sys.stderr.write("standin: TLS handshake failed: %s\n" % error)
            return
        try:
            secure.settimeout(None)
            super().finish_request(secure, client_address)
        finally:
            self.shutdown_request(secure)

    def server_close(self):
        super().server_close()
        self.refusing_socket.close()

    def handle_error(self, request, client_address):
        # A client that goes away in the middle is part of the tests.
        if self.verbose:
            super().handle_error(request, client_address)


def parse_user(text):
    name, separator, password = text.partition(":")
    if not separator:
        raise argparse.ArgumentTypeError("expected NAME:PASSWORD, got %r" % text)
    return name, password


def parse_arguments(argv):
    parser = argparse.ArgumentParser(description="Local stand-in for the Last.fm services.")
    parser.add_argument("--port", type=int, default=0, help="port on 127.0.0.1; 0 picks a free one")
    parser.add_argument("--user", type=parse_user, action="append", default=[],
                        metavar="NAME:PASSWORD", help="a known user (repeatable)")
    parser.add_argument("--record", help="file that gets one JSON line per accepted play")
    parser.add_argument("--journal", help="file that gets one JSON line per request")
    parser.add_argument("--feeds", default=DEFAULT_FEEDS,
                        help="folder of fixture feeds: NAME/friends.xml, NAME/recenttracks.xml"
                             " (default: feeds/ beside this script)")
    parser.add_argument("--lifetime", type=float, default=600.0,
                        help="seconds after which the service stops by itself")
    parser.add_argument("--handshake", action="append", default=[], metavar="ACTION",
                        help="scripted handshake answer (repeatable, used in order)")
    parser.add_argument("--submit", action="append", default=[], metavar="ACTION",
                        help="scripted submission answer (repeatable, used in order)")
    parser.add_argument("--feed", action="append", default=[], metavar="ACTION",
                        help="scripted feed answer (repeatable, used in order)")
    parser.add_argument("--port-file", help="also write the bound port into this file")
    parser.add_argument("--real-server", action="store_true",
                        help="answer as a real protocol 1.1 server does (see the top of the script)")
    parser.add_argument("--tls-cert", metavar="FILE", help="serve HTTPS with this PEM certificate")
    parser.add_argument("--tls-key", metavar="FILE", help="the PEM private key of --tls-cert")
    parser.add_argument("--verbose", action="store_true", help="log every request on stderr")
    arguments = parser.parse_args(argv)
    if bool(arguments.tls_cert) != bool(arguments.tls_key):
        parser.error("--tls-cert and --tls-key go together")
    return arguments


def tls_context(certificate, key):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    return context


def fail(message, status):
    sys.stderr.write("lastfm_standin: %s\n" % message)
    return status


def serve(arguments):
    tls = None
    if arguments.tls_cert:
        try:
            tls = tls_context(arguments.tls_cert, arguments.tls_key)
        except (OSError, ssl.SSLError) as error:
            return fail("cannot load the TLS certificate %s and key %s: %s"
                        % (arguments.tls_cert, arguments.tls_key, error), EXIT_BAD_CERTIFICATE)
    state = ServiceState(arguments.user, arguments.record, arguments.journal, arguments.feeds)
    state.add_actions("handshake", arguments.handshake)
    state.add_actions("submit", arguments.submit)
    state.add_actions("feed", arguments.feed)
    try:
        server = StandInServer(arguments.port, state, arguments.verbose, tls, arguments.real_server)
    except OSError as error:
        return fail("cannot listen on 127.0.0.1:%d: %s" % (arguments.port, error.strerror or error),
                    EXIT_CANNOT_LISTEN)
    port = server.server_address[1]
    print(port, flush=True)
    if arguments.port_file:
        with open(arguments.port_file + ".part", "w") as port_file:
            port_file.write("%d\n" % port)
        os.replace(arguments.port_file + ".part", arguments.port_file)

    def stop_after_lifetime():
        if not state.stopping.wait(arguments.lifetime):
            state.stopping.set()
            server.shutdown()

    threading.Thread(target=stop_after_lifetime, daemon=True).start()
    try:
        server.serve_forever(poll_interval=0.1)
    except KeyboardInterrupt:
        pass
    finally:
        state.stopping.set()
        server.server_close()
    return 0


if __name__ == "__main__":
    sys.exit(serve(parse_arguments(sys.argv[1:])))
