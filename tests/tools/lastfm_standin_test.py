"""Tests of the local stand-in service, run as a real process on 127.0.0.1."""

import hashlib
import json
import os
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request

STANDIN = os.path.join(os.path.dirname(__file__), "..", "..", "tools", "standin",
                       "lastfm_standin.py")
TIMEOUT = 10


def md5_hex(text):
    return hashlib.md5(text.encode("utf-8")).hexdigest()


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


if __name__ == "__main__":
    # The summary line the build's test script counts, as for the C++ tests.
    program = unittest.main(exit=False, verbosity=2)
    result = program.result
    failed = len(result.failures) + len(result.errors)
    if failed:
        print("[  FAILED  ] %d tests." % failed)
    print("[  PASSED  ] %d tests." % (result.testsRun - failed))
    sys.exit(1 if failed or not result.wasSuccessful() else 0)
