"""Tests of the local stand-in service, run as a real process on 127.0.0.1."""

import hashlib
import json
import os
import select
import socket
import ssl
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
STANDIN = os.path.join(ROOT, "tools", "standin", "lastfm_standin.py")
MAKE_CERTIFICATE = os.path.join(ROOT, "scripts", "make_test_certificate.sh")
TIMEOUT = 10
CANNOT_LISTEN = 3


def md5_hex(text):
    return hashlib.md5(text.encode("utf-8")).hexdigest()


def start_standin(folder, *options, env=None):
    """A stand-in process with OPTIONS, its standard error in FOLDER/stderr."""
    with open(os.path.join(folder, "stderr"), "w") as errors:
        return subprocess.Popen([sys.executable, STANDIN, "--lifetime", "60", *options],
                                stdout=subprocess.PIPE, stderr=errors, text=True, env=env)


def read_port(process):
    """The port the stand-in prints first; None when it ends without one."""
    ready, _, _ = select.select([process.stdout], [], [], TIMEOUT)
    line = process.stdout.readline() if ready else ""
    return int(line) if line.strip() else None


def stop_standin(process):
    process.terminate()
    process.wait(TIMEOUT)
    process.stdout.close()


def utc_text(seconds):
    return time.strftime("%Y-%m-%d %H:%M:%S", time.gmtime(seconds))


class StandInTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.record = os.path.join(self.folder.name, "record.jsonl")
        feeds = os.path.join(self.folder.name, "feeds", "alice")
        os.makedirs(feeds)
        with open(os.path.join(feeds, "friends.xml"), "w") as document:
            document.write('<friends user="alice"><user username="bob"/></friends>')
        with open(os.path.join(self.folder.name, "secret.xml"), "w") as document:
            document.write("secret")
        self.process = subprocess.Popen(
            [sys.executable, STANDIN, "--port", "0", "--lifetime", "60", "--user", "alice:pw",
             "--record", self.record, "--feeds", os.path.join(self.folder.name, "feeds"),
             "--submit", "failed:Plugin bug"],
            stdout=subprocess.PIPE, text=True)
        self.port = int(self.process.stdout.readline())
        self.base = "http://127.0.0.1:%d" % self.port

    def tearDown(self):
        self.process.terminate()
        self.process.wait(TIMEOUT)
        self.process.stdout.close()
        self.folder.cleanup()

    def get(self, path):
        with urllib.request.urlopen(self.base + path, timeout=TIMEOUT) as response:
            return response.read()

    def post(self, url, body):
        with urllib.request.urlopen(url, body.encode("latin-1"), timeout=TIMEOUT) as response:
            return response.read().decode("utf-8")

    def handshake(self, user="alice"):
        return self.get("/?hs=true&p=1.1&c=tst&v=1.0&u=" + user).decode("utf-8").split("\n")

    def submit(self, url, session, artist="A", extra=""):
        body = "u=alice&s=%s&a[0]=%s&t[0]=T&b[0]=B&m[0]=&l[0]=200&i[0]=2024-01-02%%2003:04:05&%s" % (
            session, artist, extra)
        return self.post(url, body)

    def records(self):
        with open(self.record, encoding="utf-8") as record:
            return [json.loads(line) for line in record]

    def test_handshake_gives_a_fresh_challenge_and_a_url_with_its_port(self):
        first, second = self.handshake(), self.handshake()
        self.assertEqual(first[0], "UPTODATE")
        self.assertEqual(len(first[1]), 32)
        self.assertNotEqual(first[1], second[1])
        self.assertEqual(first[2], "%s/protocol_1.1" % self.base)
        self.assertEqual(self.handshake("mallory")[0], "BADUSER")

    def test_submission_checks_the_session_and_records_decoded_fields(self):
        self.get("/control/reset")  # drops the scripted failure of setUp
        lines = self.handshake()
        session = md5_hex(md5_hex("pw") + lines[1])
        artist = urllib.parse.quote("Björk & Sigur Rós".encode("utf-8"), safe="") + "+x"
        self.assertEqual(self.submit(lines[2], session, artist), "OK\n")
        self.assertEqual(self.submit(lines[2], "0" * 32), "BADAUTH\n")
        old_session = session
        self.handshake()
        self.assertEqual(self.submit(lines[2], old_session), "BADAUTH\n", "only the latest session")
        [play] = self.records()
        self.assertEqual(play["artist"], "Björk & Sigur Rós x")
        self.assertEqual(play["time"], "2024-01-02 03:04:05")
        self.assertEqual((play["user"], play["length"], play["mbid"]), ("alice", "200", ""))

    def test_scripts_run_in_order_per_kind_then_normal_answers(self):
        self.get("/control/script?handshake=interval:5&handshake=two-lines&submit=badauth")
        lines = self.handshake()
        self.assertEqual(lines[3], "INTERVAL 5")
        self.assertEqual(self.handshake()[:-1][2:], [], "two lines only")
        lines = self.handshake()
        session = md5_hex(md5_hex("pw") + lines[1])
        self.assertEqual(self.submit(lines[2], session), "FAILED Plugin bug\n", "command line first")
        self.assertEqual(self.submit(lines[2], session), "BADAUTH\n")
        self.assertEqual(self.submit(lines[2], session), "OK\n")
        journal = self.get("/control/requests").decode("utf-8").splitlines()
        actions = [json.loads(line)["action"] for line in journal if '"kind":"submit"' in line]
        self.assertEqual(actions, ["failed:Plugin bug", "badauth", "ok"])

    def test_broken_submission_urls_and_raw_answers(self):
        self.get("/control/script?handshake=no-port&handshake=leading-slash"
                 "&handshake=raw:UPTODATE%5Cr%5Cnx&handshake=crlf")
        self.assertEqual(self.handshake()[2], "http://127.0.0.1/protocol_1.1")
        self.assertEqual(self.handshake()[2], "/protocol_1.1")
        self.assertEqual(self.get("/?hs=true&p=1.1&u=alice"), b"UPTODATE\r\nx")
        self.assertIn(b"\r\n\r\n", self.get("/?hs=true&p=1.1&u=alice"))

    def test_misbehaviour_hang_drop_huge_binary(self):
        self.get("/control/script?handshake=huge&handshake=binary&handshake=drop&handshake=hang")
        self.assertEqual(len(self.get("/?hs=true&p=1.1&u=alice")), 1_000_000)
        binary = self.get("/?hs=true&p=1.1&u=alice")
        self.assertTrue(binary.startswith(b"\x00\x01") and b"\xff\x00" in binary)
        with self.assertRaises((urllib.error.URLError, ConnectionError, OSError)):
            self.get("/?hs=true&p=1.1&u=alice")
        with socket.create_connection(("127.0.0.1", self.port), timeout=1) as hung:
            hung.sendall(b"GET /?hs=true&p=1.1&u=alice HTTP/1.1\r\nHost: x\r\n\r\n")
            with self.assertRaises(socket.timeout):
                hung.recv(1)
        self.assertEqual(self.handshake()[0], "UPTODATE", "a hung request blocks nothing else")

    def test_stall_sends_headers_and_then_closes_without_a_body(self):
        self.get("/control/script?handshake=stall:0.5")
        with socket.create_connection(("127.0.0.1", self.port), timeout=10) as stalled:
            stalled.sendall(b"GET /?hs=true&p=1.1&u=alice HTTP/1.1\r\nHost: x\r\n\r\n")
            received = b""
            while True:
                chunk = stalled.recv(4096)
                if not chunk:
                    break
                received += chunk
        head, _, body = received.partition(b"\r\n\r\n")
        self.assertIn(b"Content-Length: 100", head)
        self.assertEqual(body, b"")

    def test_feeds_come_from_the_fixture_folder_only(self):
        self.assertIn(b'username="bob"', self.get("/1.0/user/alice/friends.xml"))
        for path in ("/1.0/user/nobody/friends.xml", "/1.0/user/..%2F/recenttracks.xml",
                     "/1.0/user/alice/recenttracks.xml"):
            with self.assertRaises(urllib.error.HTTPError, msg=path) as refused:
                self.get(path)
            self.assertEqual(refused.exception.code, 404)

    def test_submissions_are_taken_at_both_paths_and_through_doubled_slashes(self):
        self.get("/control/reset")
        lines = self.handshake()
        session = md5_hex(md5_hex("pw") + lines[1])
        for path in ("/protocol_1.1", "/submissions/1.2/", "//submissions/1.2/",
                     "///submissions//1.2/"):
            self.assertEqual(self.submit(self.base + path, session, artist=path), "OK\n", path)
        for path in ("/submissions/1.2", "//submissions/", "//protocol_1.1/x"):
            with self.assertRaises(urllib.error.HTTPError, msg=path) as refused:
                self.submit(self.base + path, session)
            self.assertEqual(refused.exception.code, 404)
        self.assertEqual([play["artist"] for play in self.records()],
                         ["/protocol_1.1", "/submissions/1.2/", "//submissions/1.2/",
                          "///submissions//1.2/"])
        journal = [json.loads(line) for line in self.get("/control/requests").splitlines()]
        self.assertIn("//submissions/1.2/", [entry["path"] for entry in journal],
                      "the journal keeps the path as it came")

    def test_scripted_submission_urls_double_slash_no_port_and_refused(self):
        self.get("/control/script?handshake=double-slash&handshake=no-port&handshake=refused")
        self.assertEqual(self.handshake()[2], self.base + "//submissions/1.2/")
        self.assertEqual(self.handshake()[2], "http://127.0.0.1/protocol_1.1")
        refused = urllib.parse.urlsplit(self.handshake()[2])
        self.assertEqual((refused.scheme, refused.hostname, refused.path),
                         ("http", "127.0.0.1", "/protocol_1.1"))
        self.assertNotIn(refused.port, (None, self.port))
        with self.assertRaises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.1", refused.port), timeout=TIMEOUT).close()

    def test_html_and_badsession_answers(self):
        self.get("/control/script?submit=html&feed=html&submit=badsession")
        lines = self.handshake()
        session = md5_hex(md5_hex("pw") + lines[1])
        self.assertEqual(self.submit(lines[2], session), "FAILED Plugin bug\n")
        for attempt in (lambda: self.submit(lines[2], session),
                        lambda: self.get("/1.0/user/alice/friends.xml")):
            with self.assertRaises(urllib.error.HTTPError) as failed:
                attempt()
            page = failed.exception.read().decode("utf-8")
            self.assertEqual(failed.exception.code, 500)
            self.assertTrue(failed.exception.headers["Content-Type"].startswith("text/html"))
            self.assertIn("<html>", page)
            self.assertNotRegex(page, "(?m)^(OK|FAILED|BAD)")
        self.assertEqual(self.submit(lines[2], session), "BADSESSION\n")
        self.assertEqual(self.records(), [], "no answer above recorded the play")

    def test_users_can_be_added_and_the_service_stops_after_its_lifetime(self):
        self.get("/control/user?name=Zo%C3%AB&password=x")
        self.assertEqual(self.handshake("Zo%C3%AB")[0], "UPTODATE")
        short = subprocess.Popen([sys.executable, STANDIN, "--lifetime", "0.5"],
                                 stdout=subprocess.PIPE, text=True)
        try:
            self.assertGreater(int(short.stdout.readline()), 0)
            started = time.monotonic()
            self.assertEqual(short.wait(TIMEOUT), 0)
            self.assertLess(time.monotonic() - started, TIMEOUT)
        finally:
            short.kill()
            short.wait(TIMEOUT)
            short.stdout.close()


class RealServerTest(unittest.TestCase):
    """--real-server: the manners of a real protocol 1.1 server as deployed."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.record = os.path.join(self.folder.name, "record.jsonl")
        # Local time 5 h 45 min behind UTC: a time read as local time instead
        # of UTC would be taken as hours ahead.
        self.process = start_standin(self.folder.name, "--port", "0", "--real-server",
                                     "--user", "alice:pw", "--record", self.record,
                                     env=dict(os.environ, TZ="XST+5:45"))
        self.port = read_port(self.process)
        self.base = "http://127.0.0.1:%d" % self.port

    def tearDown(self):
        stop_standin(self.process)
        self.folder.cleanup()

    def handshake(self):
        url = self.base + "/?hs=true&p=1.1&c=tst&v=1.0&u=alice"
        with urllib.request.urlopen(url, timeout=TIMEOUT) as response:
            return response.read().decode("utf-8").split("\n")

    def submit(self, url, session, when, artist="A"):
        body = "u=alice&s=%s&a[0]=%s&t[0]=T&b[0]=&m[0]=&l[0]=200&i[0]=%s" % (
            session, artist, urllib.parse.quote(utc_text(when)))
        with urllib.request.urlopen(url, body.encode("ascii"), timeout=TIMEOUT) as response:
            return response.read().decode("utf-8")

    def records(self):
        with open(self.record, encoding="utf-8") as record:
            return [json.loads(line) for line in record]

    def test_handshake_gives_the_clock_a_doubled_slash_and_interval_1(self):
        before = int(time.time())
        lines = self.handshake()
        after = int(time.time())
        self.assertEqual(lines[0], "UPTODATE")
        self.assertTrue(before <= int(lines[1]) <= after, lines[1])
        self.assertEqual(lines[2:], [self.base + "//submissions/1.2/", "INTERVAL 1", ""])
        self.control("handshake=interval:7&handshake=two-lines")
        self.assertEqual(self.handshake()[3], "INTERVAL 7")
        self.assertEqual(len(self.handshake()), 3, "UPTODATE, the challenge, and the last LF")

    def test_sessions_times_and_plays_it_has_already(self):
        lines = self.handshake()
        session = md5_hex(md5_hex("pw") + lines[1])
        now = time.time()
        self.assertEqual(self.submit(lines[2], "0" * 32, now), "BADSESSION\n")
        self.assertEqual(self.submit(lines[2], session, now + 600),
                         "FAILED Submitted track has timestamp in the future\n")
        self.assertEqual(self.submit(lines[2], session, now + 120), "OK\n", "within 5 minutes")
        self.assertEqual(self.submit(lines[2], session, now - 60), "OK\n")
        self.assertEqual(self.submit(lines[2], session, now - 60), "OK\n", "the same play")
        self.assertEqual(self.submit(lines[2], session, now - 60, artist="B"), "OK\n")
        self.assertEqual([(play["artist"], play["time"]) for play in self.records()],
                         [("A", utc_text(now + 120)), ("A", utc_text(now - 60)),
                          ("B", utc_text(now - 60))])
        self.control("submit=badsession")
        self.assertEqual(self.submit(lines[2], session, now - 30), "BADSESSION\n")

    def control(self, query):
        urllib.request.urlopen(self.base + "/control/script?" + query, timeout=TIMEOUT).close()


class TlsTest(unittest.TestCase):
    """HTTPS with the test authority's certificate, as the Wine tests use it."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        certificates = os.path.join(cls.folder.name, "certificates")
        subprocess.run(["bash", MAKE_CERTIFICATE, certificates], check=True, timeout=60)
        cls.authority = os.path.join(certificates, "ca.pem")
        cls.process = start_standin(cls.folder.name, "--port", "0", "--user", "alice:pw",
                                    "--tls-cert", os.path.join(certificates, "server.pem"),
                                    "--tls-key", os.path.join(certificates, "server.key"))
        cls.port = read_port(cls.process)
        cls.base = "https://127.0.0.1:%d" % cls.port

    @classmethod
    def tearDownClass(cls):
        stop_standin(cls.process)
        cls.folder.cleanup()

    def open(self, path, body=None, context=None):
        # Trusts the test authority only, not the machine's.
        context = context or ssl.create_default_context(cafile=self.authority)
        with urllib.request.urlopen(self.base + path, body, timeout=TIMEOUT,
                                    context=context) as response:
            return response.read().decode("utf-8")

    def test_a_trusting_client_handshakes_and_submits_over_https(self):
        self.open("/control/script?handshake=ok&handshake=double-slash&handshake=no-port")
        lines = self.open("/?hs=true&p=1.1&u=alice").split("\n")
        self.assertEqual(lines[2], self.base + "/protocol_1.1")
        self.assertEqual(self.open("/?hs=true&p=1.1&u=alice").split("\n")[2],
                         self.base + "//submissions/1.2/")
        self.assertEqual(self.open("/?hs=true&p=1.1&u=alice").split("\n")[2],
                         "https://127.0.0.1/protocol_1.1")
        lines = self.open("/?hs=true&p=1.1&u=alice").split("\n")
        body = "u=alice&s=%s&a[0]=A&t[0]=T&i[0]=2024-01-02%%2003:04:05" % (
            md5_hex(md5_hex("pw") + lines[1]))
        self.assertEqual(self.open("//submissions/1.2/", body.encode("ascii")), "OK\n")

    def test_a_client_that_does_not_trust_the_authority_is_refused(self):
        with self.assertRaises(urllib.error.URLError) as refused:
            self.open("/?hs=true&p=1.1&u=alice", context=ssl.create_default_context())
        self.assertIsInstance(refused.exception.reason, ssl.SSLCertVerificationError)
        self.assertEqual(self.open("/?hs=true&p=1.1&u=alice").split("\n")[0], "UPTODATE")

    def test_a_silent_client_blocks_nobody(self):
        with socket.create_connection(("127.0.0.1", self.port), timeout=TIMEOUT):
            self.assertEqual(self.open("/?hs=true&p=1.1&u=alice").split("\n")[0], "UPTODATE")
        plain = urllib.request.Request("http://127.0.0.1:%d/?hs=true&p=1.1&u=alice" % self.port)
        with self.assertRaises((urllib.error.URLError, ConnectionError, OSError)):
            urllib.request.urlopen(plain, timeout=TIMEOUT).close()


class StartupTest(unittest.TestCase):
    """A port it cannot take ends the stand-in with one line; port 80 where allowed."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()

    def tearDown(self):
        self.folder.cleanup()

    def ends_with_one_line(self, *options):
        process = start_standin(self.folder.name, *options)
        try:
            status = process.wait(TIMEOUT)
            self.assertEqual(process.stdout.read(), "", "no port printed")
        finally:
            if process.poll() is None:
                process.kill()
                process.wait(TIMEOUT)
            process.stdout.close()
        with open(os.path.join(self.folder.name, "stderr")) as errors:
            lines = errors.read().splitlines()
        self.assertEqual(len(lines), 1, lines)
        return status, lines[0]

    def test_a_port_in_use_or_a_missing_certificate_ends_it_with_one_line(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            status, line = self.ends_with_one_line("--port", str(port))
        self.assertEqual(status, CANNOT_LISTEN)
        self.assertTrue(line.startswith("lastfm_standin: cannot listen on 127.0.0.1:%d: " % port),
                        line)
        missing = os.path.join(self.folder.name, "none.pem")
        status, line = self.ends_with_one_line("--tls-cert", missing, "--tls-key", missing)
        self.assertEqual(status, 2)
        self.assertTrue(line.startswith("lastfm_standin: cannot load the TLS certificate"), line)

    def test_port_80_hands_out_a_url_without_a_port(self):
        process = start_standin(self.folder.name, "--port", "80", "--real-server",
                                "--user", "alice:pw")
        try:
            if read_port(process) is None:
                process.wait(TIMEOUT)
                with open(os.path.join(self.folder.name, "stderr")) as errors:
                    reason = errors.read().strip()
                if process.returncode == CANNOT_LISTEN:
                    self.skipTest("port 80 cannot be bound here: " + reason)
                self.fail("the stand-in did not start on port 80: " + reason)
            url = "http://127.0.0.1/?hs=true&p=1.1&u=alice"
            with urllib.request.urlopen(url, timeout=TIMEOUT) as response:
                lines = response.read().decode("utf-8").split("\n")
            self.assertEqual(lines[2], "http://127.0.0.1//submissions/1.2/")
            body = "u=alice&s=%s&a[0]=A&t[0]=T&i[0]=%s" % (
                md5_hex(md5_hex("pw") + lines[1]), urllib.parse.quote(utc_text(time.time())))
            with urllib.request.urlopen(lines[2], body.encode("ascii"),
                                        timeout=TIMEOUT) as response:
                self.assertEqual(response.read(), b"OK\n")
        finally:
            stop_standin(process)


if __name__ == "__main__":
    # The summary line the build's test script counts, as for the C++ tests.
    program = unittest.main(exit=False, verbosity=2)
    result = program.result
    failed = len(result.failures) + len(result.errors)
    skipped = len(result.skipped)
    if failed:
        print("[  FAILED  ] %d tests." % failed)
    if skipped:
        print("[  SKIPPED ] %d tests." % skipped)
    print("[  PASSED  ] %d tests." % (result.testsRun - failed - skipped))
    sys.exit(1 if failed or not result.wasSuccessful() else 0)
