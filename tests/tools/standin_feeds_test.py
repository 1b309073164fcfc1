"""Tests of the stand-in's web-service feeds: the fixtures it serves by
default, missing files, scripted misbehaviour and the journal."""

import json
import os
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.error
import urllib.request
import xml.etree.ElementTree as ElementTree

STANDIN = os.path.join(os.path.dirname(__file__), "..", "..", "tools", "standin",
                       "lastfm_standin.py")
TIMEOUT = 10


class StandInFeedsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.journal = os.path.join(self.folder.name, "journal.jsonl")
        # No --feeds: the fixtures beside the script.
        self.process = subprocess.Popen(
            [sys.executable, STANDIN, "--port", "0", "--lifetime", "60",
             "--journal", self.journal, "--feed", "raw:Error:"],
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

    def feed(self, user, name):
        return self.get("/1.0/user/%s/%s.xml" % (user, name))

    def journal_entries(self):
        with open(self.journal, encoding="utf-8") as journal:
            return [json.loads(line) for line in journal]

    def tracks(self, user):
        root = ElementTree.fromstring(self.feed(user, "recenttracks"))
        self.assertEqual((root.tag, root.get("user")), ("recenttracks", user))
        return [(t.findtext("artist"), t.findtext("name"), t.findtext("url"),
                 t.find("date").get("uts")) for t in root.findall("track")]

    def test_default_fixtures_give_the_friends_and_their_tracks(self):
        self.assertEqual(self.feed("tester", "friends"), b"Error:", "the scripted answer first")
        root = ElementTree.fromstring(self.feed("tester", "friends"))
        self.assertEqual([user.get("username") for user in root.findall("user")],
                         ["alice", "bob", "carol", "dave", "erin"])
        loner = ElementTree.fromstring(self.feed("loner", "friends"))
        self.assertEqual((loner.tag, loner.findall("user")), ("friends", []))

        alice = self.tracks("alice")
        self.assertGreaterEqual(len(alice), 5)
        artists = [artist for artist, _, _, _ in alice]
        for expected in ("Björk", "Sigur Rós", "Кино", "The [Bracket] Band"):
            self.assertIn(expected, artists)
        self.assertIn(("Björk", "Jóga"), [(a, n) for a, n, _, _ in alice])
        self.assertEqual(sum(url is None for _, _, url, _ in alice), 1, "one track without url")
        self.assertTrue(all(uts.isdigit() for _, _, _, uts in alice))
        self.assertTrue(self.feed("bob", "recenttracks").startswith(b"Error: "))
        self.assertEqual(self.tracks("carol"), [])
        self.assertEqual(len(self.tracks("erin")), 2)
        for user, name in (("dave", "recenttracks"), ("nobody", "friends"), ("tester", "recenttracks")):
            with self.assertRaises(urllib.error.HTTPError, msg=user) as refused:
                self.feed(user, name)
            self.assertEqual(refused.exception.code, 404)

        feeds = [entry for entry in self.journal_entries() if entry["kind"] == "feed"]
        self.assertEqual(len(feeds), 10)
        self.assertEqual(feeds[0]["action"], "raw:Error:")
        self.assertEqual(feeds[-1]["path"], "/1.0/user/tester/recenttracks.xml")

    def test_feed_failures_are_scripted_per_request_in_order(self):
        self.get("/control/reset")  # drops the scripted answer of setUp
        self.get("/control/script?feed=delay:0.1&feed=huge&feed=drop&feed=hang"
                 "&handshake=badauth")
        self.assertIn(b'username="erin"', self.feed("tester", "friends"), "a delay, then the file")
        self.assertEqual(len(self.feed("tester", "friends")), 1_000_000)
        with self.assertRaises((urllib.error.URLError, ConnectionError, OSError)):
            self.feed("alice", "recenttracks")
        with socket.create_connection(("127.0.0.1", self.port), timeout=1) as hung:
            hung.sendall(b"GET /1.0/user/erin/recenttracks.xml HTTP/1.1\r\nHost: x\r\n\r\n")
            with self.assertRaises(socket.timeout):
                hung.recv(1)
        self.assertEqual(len(self.tracks("erin")), 2, "the scripts ran dry")
        self.assertEqual(self.get("/?hs=true&p=1.1&u=x"), b"BADAUTH\n", "handshakes apart")

        requests = [json.loads(line) for line in self.get("/control/requests").splitlines()]
        actions = [entry["action"] for entry in requests if entry["kind"] == "feed"]
        self.assertEqual(actions, ["delay:0.1", "huge", "drop", "hang", "ok"])

    def test_a_held_feed_is_answered_once_released(self):
        self.get("/control/reset")
        self.get("/control/script?feed=hold&feed=hold")
        # A release that comes first is kept for the next held request.
        self.get("/control/release")
        self.assertEqual(len(self.tracks("erin")), 2)
        answers = []
        held = threading.Thread(target=lambda: answers.append(self.feed("erin", "recenttracks")))
        held.start()
        try:
            deadline = time.monotonic() + 60
            while len(self.journal_entries()) < 2 and time.monotonic() < deadline:
                time.sleep(0.05)
            self.assertEqual(len(self.journal_entries()), 2, "the held request came")
            self.assertTrue(held.is_alive(), "held until released")
            self.assertEqual(len(self.tracks("carol")), 0, "a held request blocks nothing else")
        finally:
            self.get("/control/release")
            held.join(TIMEOUT)
        self.assertIn(b"Plain Artist", answers[0])
        actions = [entry["action"] for entry in self.journal_entries()]
        self.assertEqual(actions, ["hold", "hold", "ok"], "the held request was the second")

    def test_a_fixture_folder_of_its_own(self):
        feeds = os.path.join(self.folder.name, "feeds", "zoë")
        os.makedirs(feeds)
        with open(os.path.join(feeds, "recenttracks.xml"), "w", encoding="utf-8") as document:
            document.write('<recenttracks user="zoë"></recenttracks>')
        own = subprocess.Popen(
            [sys.executable, STANDIN, "--lifetime", "60",
             "--feeds", os.path.join(self.folder.name, "feeds")],
            stdout=subprocess.PIPE, text=True)
        try:
            port = int(own.stdout.readline())
            url = "http://127.0.0.1:%d/1.0/user/zo%%C3%%AB/recenttracks.xml" % port
            with urllib.request.urlopen(url, timeout=TIMEOUT) as response:
                self.assertIn('user="zoë"', response.read().decode("utf-8"))
            with self.assertRaises(urllib.error.HTTPError):
                urllib.request.urlopen(url.replace("zo%C3%AB", "tester").replace(
                    "recenttracks", "friends"), timeout=TIMEOUT)
        finally:
            own.terminate()
            own.wait(TIMEOUT)
            own.stdout.close()


if __name__ == "__main__":
    # The summary line the build's test script counts, as for the C++ tests.
    program = unittest.main(exit=False, verbosity=2)
    result = program.result
    failed = len(result.failures) + len(result.errors)
    if failed:
        print("[  FAILED  ] %d tests." % failed)
    print("[  PASSED  ] %d tests." % (result.testsRun - failed))
    sys.exit(1 if failed or not result.wasSuccessful() else 0)
