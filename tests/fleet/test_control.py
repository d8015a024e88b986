"""What the role does on the control machine, without a headend."""

import contextlib
import datetime
import errno
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import tracemalloc
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from unittest.mock import patch

HERE = Path(__file__).resolve()
sys.path.insert(0, str(HERE.parent))
CONTROL = HERE.parents[2] / "fleet/roles/headend/files/control"
sys.path.insert(0, str(CONTROL))

import documents
import verbs
from documents import Change, Tool, prove_whole
from fleet_sim import BACKUP, SSHD
from repository import Repository, file_name
from session import Answer, ConnectionFailure, _connection_failure, _parsed, _run, _ssh
from words import Failure, clean

MODULES = b"<modules><module><mac/></module></modules>"


class WordsTest(unittest.TestCase):
    def test_nothing_steers_a_terminal_or_passes_for_a_template(self) -> None:
        self.assertEqual(" [31mred { { x }} { % y %}", clean("\033[31mred {{ x }}\n{% y %}\0"))
        self.assertEqual("{ { { x }}}", clean("{{{ x }}}"))

    def test_a_long_text_is_cut(self) -> None:
        self.assertEqual(20, len(clean("x" * 100, 20)))


class JobTest(unittest.TestCase):
    def test_what_is_to_be_a_number_is_one(self) -> None:
        numbers = ("connect_timeout", "silence", "timeout", "restore_timeout", "tries", "pause", "limit")
        for value in ("five", "", "-1", "1.5", None):
            with self.subTest(value):
                job = {**dict.fromkeys(numbers, "1"), "limit": value}
                command = [sys.executable, "-B", CONTROL, "backup"]
                result = subprocess.run(command, input=json.dumps(job).encode(), capture_output=True, check=True)
                answer = json.loads(result.stdout)
                self.assertTrue(answer["failed"])
                self.assertEqual([f"headend_document_limit is no whole number: '{value}'"], answer["lines"])


class FileNameTest(unittest.TestCase):
    def test_any_name_of_a_host_is_one_file_of_the_folder(self) -> None:
        for host, expected in (
            ("hotel-1.example.com", "hotel-1.example.com.xml"),
            ("../etc/passwd", "%2E.%2Fetc%2Fpasswd.xml"),
            (".git", "%2Egit.xml"),
            ("-rf", "%2Drf.xml"),
            ("a b\n", "a%20b%0A.xml"),
            ("fe80::1", "fe80%3A%3A1.xml"),
            ("hôtel", "h%C3%B4tel.xml"),
            ("a%20b", "a%2520b.xml"),
        ):
            with self.subTest(host):
                self.assertEqual(expected, file_name(host))

    def test_a_name_that_no_file_can_have_is_refused(self) -> None:
        self.assertRaises(Failure, file_name, "ü" * 100)


class ProofTest(unittest.TestCase):
    def test_whole_documents(self) -> None:
        prove_whole(b"<configuration>" + MODULES + b"</configuration>\n")
        prove_whole(b"<backup><configuration>" + MODULES + b"</configuration></backup>")
        # Texts are the headend's own affair.
        prove_whole(b"<configuration>\x01\xff" + MODULES + b"</configuration>")

    def test_anything_else(self) -> None:
        for name, text in (
            ("nothing", b""),
            ("cut off", b"<configuration>" + MODULES),
            ("cut off in a tag", b"<configuration>" + MODULES + b"</configurat"),
            ("something behind", b"<configuration>" + MODULES + b"</configuration><more/>"),
            ("another root", b"<html>" + MODULES + b"</html>"),
            ("no module", b"<configuration><modules/></configuration>"),
            ("entities", b"<!DOCTYPE x [<!ENTITY a 'b'>]><configuration>" + MODULES + b"&a;</configuration>"),
            ("deep", b"<configuration>" + b"<a>" * 100000 + b"</a>" * 100000 + b"</configuration>"),
        ):
            with self.subTest(name):
                self.assertRaises(Failure, prove_whole, text)


    def test_a_document_of_nothing_but_names_takes_no_memory_for_each(self) -> None:
        names = b"".join(b"<x%d/>" % number for number in range(50_000))
        document = b"<configuration>" + names + MODULES + b"</configuration>"
        tracemalloc.start()
        self.addCleanup(tracemalloc.stop)
        prove_whole(document)
        self.assertLess(tracemalloc.get_traced_memory()[1], 15 * len(document))


class ToolTest(unittest.TestCase):
    def test_what_it_prints_of_a_document_is_limited(self) -> None:
        with tempfile.TemporaryDirectory(prefix="fleet-") as name, patch.object(documents, "MOST_OUTPUT", 1000):
            program = Path(name) / "program"
            program.write_text("#!/bin/sh\nexec head -c 5000000 /dev/zero\n")
            program.chmod(0o755)
            with Tool(str(program)) as tool, self.assertRaises(Failure) as caught:
                tool.faults(b"x")
        self.assertIn("takes too much of it", caught.exception.lines[0])

    def test_it_is_found_where_the_package_puts_it(self) -> None:
        # The PATH is cron's. sshd is there on every machine of these tests, and reads no document.
        program = Path(SSHD).name
        with patch.dict(os.environ, PATH="/usr/bin:/bin"), Tool(program) as tool:
            with self.assertRaises(Failure) as caught:
                tool.prove_readable(b"x")
        self.assertIn("cannot read its document", caught.exception.lines[0])


class AnswerTest(unittest.TestCase):
    def test_what_the_login_prints_is_no_part_of_the_document(self) -> None:
        answer = _parsed(b"M", b"Welcome\nM begins save\n<a/>\n\n\nM ends 3\nM over\nbye\n")
        self.assertEqual((b"<a/>\n\n", 3), (answer.body, answer.status))
        self.assertEqual({"begins": "save", "ends": "3", "over": ""}, answer.said)

    def test_an_answer_without_its_end_has_no_document(self) -> None:
        answer = _parsed(b"M", b"M begins save\n<a/>\nM end")
        self.assertEqual((None, {"begins": "save"}), (answer.body, answer.said))

    def test_lines_that_say_nothing_take_no_memory(self) -> None:
        output = b"x\n" * 500_000 + b"M over\n"
        tracemalloc.start()
        self.addCleanup(tracemalloc.stop)
        self.assertEqual({"over": ""}, _parsed(b"M", output).said)
        self.assertLess(tracemalloc.get_traced_memory()[1], len(output))

    def test_a_number_that_is_none_is_not_believed(self) -> None:
        for number in ("\u00b2", "9" * 5000, "-1", ""):
            with self.subTest(number[:9]):
                answer = Answer({"clock": number, "log": number})
                self.assertEqual([], verbs._clock(answer))
                self.assertRaises(Failure, verbs._prove_by_log, answer)

    def test_an_empty_document(self) -> None:
        self.assertEqual(b"", _parsed(b"M", b"M begins save\n\nM ends 0\nM over\n").body)


class CommandTest(unittest.TestCase):
    JOB = {"connect_timeout": 5, "key": "", "port": "", "user": "root", "address": "-oX=y"}

    def test_the_address_is_no_option(self) -> None:
        command = _ssh({**self.JOB, "ssh_args": "-J 'a b'"})
        self.assertEqual(["-J", "a b", "-l", "root", "--", "-oX=y"], command[-6:])

    def test_a_quotation_mark_without_its_pair_is_told(self) -> None:
        self.assertRaises(Failure, _ssh, {**self.JOB, "ssh_args": "-o 'x"})


class MeaningTest(unittest.TestCase):
    def test_a_private_key_that_is_none_is_not_blamed_on_the_headend(self) -> None:
        for said, expected in (
            ('Load key "key": error in libcrypto\n', "the private key cannot be used"),
            ('Load key "key": bad permissions\n', "the private key cannot be used"),
            ("", "it does not take the key or the user"),
        ):
            with self.subTest(said):
                text = said + "root@10.1.0.17: Permission denied (publickey).\n"
                [line] = _connection_failure(text.encode(), 255, list).lines
                self.assertIn(expected, line)

    def test_the_line_that_says_why_is_told(self) -> None:
        said = "Warning: Identity file /k not accessible: No such file or directory.\nroot@h: Permission denied.\n"
        [line] = _connection_failure(said.encode(), 255, list).lines
        self.assertIn("Identity file /k not accessible: No such file or directory", line)
        [line] = _connection_failure(b"\n", 255, list).lines
        self.assertIn("it does not answer any more", line)

    def test_a_name_that_is_not_ascii_is_told_as_it_is(self) -> None:
        said = rb"ssh: Could not resolve hostname h\303\264tel: Name or service not known"
        [line] = _connection_failure(said, 255, list).lines
        self.assertIn("Could not resolve hostname hôtel:", line)


class LimitsTest(unittest.TestCase):
    def test_a_program_that_does_not_end_is_ended(self) -> None:
        self.assertRaises(ConnectionFailure, _run, ["sleep", "600"], b"", 1000, 0.2, 600)

    def test_a_program_that_says_nothing_is_ended(self) -> None:
        with self.assertRaises(ConnectionFailure) as caught:
            _run(["sleep", "600"], b"", 1000, 600, 0.2)
        self.assertIn("said nothing for 0.2 seconds", caught.exception.lines[0])

    def test_a_program_that_does_not_stop_talking_is_ended(self) -> None:
        with self.assertRaises(Failure) as caught:
            _run(["yes"], b"", 1000, 600, 600)
        self.assertIn("it sends more than", caught.exception.lines[0])

    def test_of_complaints_the_last_are_kept(self) -> None:
        script = "head -c 1000000 /dev/zero | tr '\\0' x >&2; echo why >&2"
        _, complaints, _ = _run(["sh", "-c", script], b"", 1000, 600, 600)
        self.assertEqual(64 * 1024, len(complaints))
        self.assertTrue(complaints.endswith(b"xwhy\n"))

    def test_a_long_document_arrives_whole_whatever_comes_back(self) -> None:
        document = bytes(range(256)) * 20000
        output, _, status = _run(["cat"], document, len(document), 600, 600)
        self.assertEqual((document, 0), (output, status))


class RepositoryTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="fleet-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name) / "headends"
        self.repository = Repository({"repository": str(self.folder), "author": "me <me@here>"})
        self.repository.make()

    def git(self, *words: str, **environment: str) -> str:
        command = ["git", "-C", self.folder, "-c", "user.name=x", "-c", "user.email=x", *words]
        environment = {"PATH": "/usr/bin:/bin", "HOME": "/nonexistent", **environment}
        return subprocess.run(command, check=True, capture_output=True, text=True, env=environment).stdout

    def test_many_at_once_make_a_commit_each(self) -> None:
        names = [f"host{number}" for number in range(24)]
        with ThreadPoolExecutor(12) as pool:
            list(pool.map(lambda name: self.repository.keep(name, name.encode(), [name]), names))
        self.assertEqual(sorted(names), sorted(self.git("log", "--format=%s").split()))
        self.assertEqual("", self.git("status", "--porcelain"))
        for name in names:
            self.assertEqual(name.encode(), self.repository.document(name))

    def test_what_a_killed_run_has_left_between_commit_and_file_is_mended(self) -> None:
        file = self.folder / "one.xml"
        self.repository.keep("one", b"1", ["one"])
        first = self.git("rev-parse", "HEAD:one.xml").strip()

        def killed_before_the_file() -> None:
            with patch.object(os, "replace", side_effect=KeyboardInterrupt):
                self.assertRaises(KeyboardInterrupt, self.repository.keep, "one", b"2", ["two"])
            self.assertEqual(b"1", file.read_bytes())

        def killed_before_the_index() -> None:
            self.git("update-index", "--cacheinfo", f"100644,{first},one.xml")

        for damage in (
            killed_before_the_file,
            killed_before_the_index,
            lambda: file.write_bytes(b"3"),
            file.unlink,
        ):
            damage()
            self.assertNotEqual("", self.git("status", "--porcelain"))
            self.assertTrue(self.repository.mend("one"))
            self.assertEqual(b"2", file.read_bytes())
            self.assertEqual(b"2", self.repository.document("one"))
            self.assertEqual("", self.git("status", "--porcelain"))
            self.assertFalse(self.repository.mend("one"))
        self.assertFalse(self.repository.mend("nobody"))

    def test_locks_and_files_of_killed_runs_are_no_obstacle(self) -> None:
        self.repository.keep("one", b"1", ["one"])
        locks = [self.folder / ".git" / name for name in ("index.lock", "HEAD.lock", "refs/heads/main.lock")]
        stage = self.repository.private / "stage-x"
        for path in (*locks, stage):
            path.touch()
            os.utime(path, (0, 0))
        self.repository.keep("one", b"2", ["two"])
        self.assertEqual("two\none\n", self.git("log", "--format=%s"))
        self.assertEqual([], [path for path in (*locks, stage) if path.exists()])
        # One of somebody who is at work is his.
        for lock in locks:
            lock.touch()
            with self.assertRaises(Failure) as caught:
                self.repository.keep("one", b"3", ["three"])
            self.assertIn(str(lock), caught.exception.lines[0])
            lock.unlink()

    def test_a_run_that_was_killed_over_its_own_index_holds_up_none(self) -> None:
        self.repository.keep("one", b"1", ["one"])
        (self.repository.private / "index.lock").touch()
        self.repository.keep("one", b"2", ["two"])
        self.assertEqual(b"2", self.repository.document("one"))

    def test_the_repository_of_another_user_is_left_alone(self) -> None:
        with patch.object(os, "geteuid", return_value=os.geteuid() + 1):
            for step in (self.repository.make, self.repository.require):
                with self.assertRaises(Failure) as caught:
                    step()
                self.assertIn("run this as its owner", caught.exception.lines[0])

    def test_a_repository_has_a_whole_path(self) -> None:
        for path in ("headends", "", "~nobody-of-that-name/headends"):
            with self.subTest(path):
                self.assertRaises(Failure, Repository, {"repository": path, "author": "me <me@here>"})

    def test_one_at_a_time_works_on_a_host(self) -> None:
        with self.repository.turn("one"), self.repository.turn("two", wait=False):
            with self.assertRaises(Failure) as caught, self.repository.turn("one", wait=False):
                self.fail("there are two")
            self.assertIn("at work on one: nothing was done", caught.exception.lines[0])
        with self.repository.turn("one", wait=False):
            pass

    def test_what_the_operator_has_staged_or_changed_stays_his(self) -> None:
        self.repository.keep("one", b"1", ["one"])
        (self.folder / "notes").write_text("mine")
        self.git("add", "notes")
        self.repository.keep("two", b"2", ["two"])
        self.assertEqual("two.xml\n", self.git("show", "--format=", "--name-only", "HEAD"))
        self.assertEqual("A  notes\n", self.git("status", "--porcelain"))

    def test_a_date_means_the_last_commit_of_that_day(self) -> None:
        self.repository.keep("other", b"0", ["other"])
        for text, when in (("a", "2026-11-18T02:00"), ("b", "2026-11-20T02:00"), ("c", "2026-11-20T14:00:20")):
            (self.folder / "hotel.xml").write_text(text)
            self.git("add", "hotel.xml")
            self.git("commit", "-m", text, GIT_COMMITTER_DATE=when, GIT_AUTHOR_DATE=when)
        for when, expected in (
            ("2026-11-18", b"a"),
            ("2026-11-19", b"a"),
            ("2026-11-20", b"c"),
            ("2026-11-20T03:00", b"b"),
            ("2026-11-20T13:59", b"b"),
            # Commits are shown with the minute.
            ("2026-11-20T14:00", b"c"),
            ("2026-11-20T14:00:19", b"b"),
            ("2027-01-01", b"c"),
        ):
            with self.subTest(when):
                commit = self.repository.at("hotel", when)
                self.assertEqual(expected, self.repository.document("hotel", commit))
        self.assertRaises(Failure, self.repository.at, "hotel", "2026-11-17")
        self.assertRaises(Failure, self.repository.at, "nobody", "2026-11-20")
        self.assertRaises(Failure, self.repository.at, "hotel", "0001-01-01")
        # Which would be the beginning of the day, and so the document of the day before.
        self.assertRaises(Failure, self.repository.at, "hotel", "20261120")
        self.assertRaises(Failure, self.repository.commit_named, "hotel", "--all")
        self.assertRaises(Failure, self.repository.commit_named, "nobody", "HEAD")
        self.assertEqual(b"a", self.repository.document("hotel", self.repository.commit_named("hotel", "HEAD~2")))

    def test_a_repository_that_was_not_made_whole_is_made_again(self) -> None:
        # Within another one, which is none of ours.
        self.git("commit", "--allow-empty", "-m", "outer")
        inner = self.folder / "inner"
        (inner / ".git").mkdir(parents=True)
        repository = Repository({"repository": str(inner), "author": "me <me@here>"})
        repository.make()
        repository.keep("one", b"1", ["one"])
        self.assertEqual("outer\n", self.git("log", "--format=%s"))
        self.assertEqual("one\n", self.git("-C", "inner", "log", "--format=%s"))
        (inner / ".git/config").unlink()
        (inner / ".git/objects").rename(inner / "elsewhere")
        self.assertRaises(Failure, repository.keep, "two", b"2", ["two"])
        self.assertEqual("outer\n", self.git("log", "--format=%s"))

    def test_a_folder_of_files_or_of_links_is_not_taken_over(self) -> None:
        other = self.folder.parent / "other"
        other.mkdir()
        (other / "thesis.txt").touch()
        link = self.folder.parent / "link"
        link.symlink_to(self.folder)
        for path in (other, link):
            with self.subTest(path.name):
                repository = Repository({"repository": str(path), "author": "me <me@here>"})
                self.assertRaises(Failure, repository.make)

    def test_a_hook_of_somebody_else_does_not_run(self) -> None:
        hook = self.folder / ".git/hooks/reference-transaction"
        hook.parent.mkdir(exist_ok=True)
        hook.write_text("#!/bin/sh\nexit 1\n")
        hook.chmod(0o755)
        self.repository.keep("one", b"1", ["one"])
        self.assertEqual(b"1", self.repository.document("one"))


class NoTool:
    """Stands for tarvo-backup: two documents are the same or have one change."""

    def __init__(self, _: str) -> None:
        pass

    def changes(self, old: bytes, new: bytes) -> list[Change]:
        return [] if old == new else [Change("name", new.decode(), "name: changed")]


class DeviceScriptTest(unittest.TestCase):
    def said(self, folder: Path) -> str:
        device = CONTROL.parent / "device"
        text = "".join((device / name).read_text("utf-8") for name in ("answer.sh", "restore.sh"))
        command = ["sh", "-c", text, "tarvo-fleet", "M", "10", folder, "start", "id", "0", "1"]
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True)
        self.assertIn("mkdir: ", result.stderr)
        return result.stdout

    def test_a_folder_that_cannot_be_made_is_not_another_restore(self) -> None:
        with tempfile.TemporaryDirectory(prefix="fleet-") as name:
            folder = Path(name)
            self.assertEqual("M foreign\nM over\n", self.said(folder / "nowhere/device"))
            (folder / "restore").touch()
            self.assertEqual("M cut\nM over\n", self.said(folder))
            (folder / "restore").unlink()
            (folder / "restore").mkdir()
            self.assertEqual("M busy\nM over\n", self.said(folder))


class EndTest(unittest.TestCase):
    """A run that is ended while a headend answers, by systemd or with its terminal."""

    def test_nothing_is_left_of_a_run_that_is_ended(self) -> None:
        for number in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number), tempfile.TemporaryDirectory(prefix="fleet-") as name:
                folder = Path(name)
                ssh = folder / "ssh"
                ssh.write_text(f"#!/bin/sh\necho $$ >{folder}/new\nmv {folder}/new {folder}/pid\nexec sleep 60\n")
                ssh.chmod(0o755)
                (folder / "tmp").mkdir()
                numbers = dict.fromkeys(("connect_timeout", "silence", "timeout", "restore_timeout", "limit"), 600)
                job = {
                    **numbers,
                    **dict.fromkeys(("key", "port", "ssh_args", "log_command"), ""),
                    **{"host": "hotel", "address": "hotel", "user": "root", "tries": 1, "pause": 0},
                    **{"repository": f"{name}/headends", "author": "me <me@here>", "tool": str(BACKUP)},
                }
                environment = {**os.environ, "PATH": f"{name}:{os.environ['PATH']}", "TMPDIR": f"{name}/tmp"}
                process = subprocess.Popen(
                    [sys.executable, "-B", CONTROL, "backup"], stdin=subprocess.PIPE, env=environment
                )
                process.stdin.write(json.dumps(job).encode())
                process.stdin.close()
                while not (folder / "pid").exists():
                    self.assertIsNone(process.poll())
                    time.sleep(0.02)
                self.assertNotEqual([], list((folder / "tmp").iterdir()))
                process.send_signal(number)
                process.wait()
                self.assertEqual([], list((folder / "tmp").iterdir()))
                with self.assertRaises(ProcessLookupError):
                    os.kill(int((folder / "pid").read_text()), 0)

    def test_a_signal_while_ssh_starts_does_not_leave_it_behind(self) -> None:
        started: list[subprocess.Popen[bytes]] = []

        class Program(subprocess.Popen):
            def __init__(self, *arguments: object, **options: object) -> None:
                super().__init__(*arguments, **options)
                started.append(self)
                signal.raise_signal(signal.SIGTERM)

        def end(caught: int, _: object) -> None:
            sys.exit(128 + caught)

        self.addCleanup(signal.signal, signal.SIGTERM, signal.signal(signal.SIGTERM, end))
        with patch.object(subprocess, "Popen", Program), self.assertRaises(SystemExit) as ended:
            _run(["sleep", "600"], b"", 1, 600, 600)
        self.assertEqual(128 + signal.SIGTERM, ended.exception.code)
        self.assertEqual(-signal.SIGKILL, started[0].returncode)
        self.assertIs(end, signal.getsignal(signal.SIGTERM))


class StepsTest(unittest.TestCase):
    """A restore of a headend that is what the test says."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="fleet-")
        self.addCleanup(folder.cleanup)
        self.job = {
            "host": "hotel",
            "repository": f"{folder.name}/headends",
            "author": "me <me@here>",
            "tool": str(BACKUP),
            "folder": folder.name,
            "limit": 1000,
            **dict.fromkeys(("date", "commit", "document"), ""),
        }
        self.repository = Repository(self.job)
        self.repository.make()
        self.repository.keep("hotel", b"good", ["first"])
        self.restored: list[bytes] = []

    def restore(self, fetched: list[bytes], *said: Answer | Failure, **asked: str) -> dict:
        """The restore of a headend that holds one thing before and another afterwards."""
        answers = iter((*said, Answer()))

        def job_script(_: dict, verb: str, __: verbs.Pending, document: bytes = b"") -> Answer:
            if verb == "start":
                self.restored.append(document)
            answer = next(answers)
            if isinstance(answer, Failure):
                raise answer
            return answer

        with (
            patch.object(verbs, "Tool", lambda _: contextlib.nullcontext(NoTool(""))),
            patch.object(verbs, "_fetch", side_effect=[(document, []) for document in fetched]),
            patch.object(verbs, "_job_script", job_script),
        ):
            return verbs.restore({**self.job, **asked})

    def failed(self, *words: object, **asked: str) -> str:
        with self.assertRaises(Failure) as caught:
            self.restore(*words, **asked)
        return "\n".join(caught.exception.lines)

    CUT = Answer({"cut": ""})
    DONE = Answer({"begins": "x"}, b"done", 0)

    def test_the_same_command_means_the_same_document_until_it_is_done(self) -> None:
        # Every restore keeps a backup, which is a commit of today, and the last one.
        for asked in ({"date": datetime.date.today().isoformat()}, {"commit": "HEAD"}):
            with self.subTest(asked):
                self.restored.clear()
                self.assertIn("Before:", self.failed([b"other", b"other"], self.CUT, **asked))
                self.assertEqual(b"other", self.repository.document("hotel"))
                self.restore([b"other", b"good"], self.DONE, **asked)
                self.assertEqual([b"good", b"good"], self.restored)
        self.repository.keep("hotel", b"later", ["later"])
        self.assertEqual(b"later", verbs._intended({**self.job, **asked}, self.repository).document)

    def test_trouble_of_this_machine_does_not_hide_the_restore(self) -> None:
        for trouble in (OSError(errno.ENOSPC, "No space left on device"), Failure("git failed")):
            with (
                self.subTest(trouble),
                patch.object(Repository, "keep", side_effect=[None, trouble]),
            ):
                text = self.failed([b"other", b"third"], self.DONE, commit="HEAD")
                self.assertIn("the headend says (status 0)", text)
                self.assertIn("No space left" if isinstance(trouble, OSError) else "git failed", text)
                self.assertIn("run the same command again", text)
                self.assertTrue(verbs.Pending(self.repository, "hotel"))

    def test_a_connection_that_is_lost_at_the_very_end_says_what_to_do(self) -> None:
        text = self.failed([b"other", b"good"], self.DONE, ConnectionFailure("it is lost"), commit="HEAD")
        self.assertIn("it is lost", text)
        self.assertIn("run the same command", text)
        self.assertTrue(verbs.Pending(self.repository, "hotel"))

    def test_a_full_disk_of_the_headend_is_told(self) -> None:
        said = b"mkdir: cannot create directory: No space left on device\n"
        text = self.failed([b"other", b"other"], Answer({"cut": ""}, complaints=said), commit="HEAD")
        self.assertIn("did not arrive whole (mkdir: cannot create directory: No space left on device)", text)
        job = {**self.job, "device_folder": "/tmp/tarvo-fleet"}
        with self.assertRaises(Failure) as caught:
            pending = verbs.Pending(self.repository, "hotel")
            verbs._told(job, pending, Answer({"foreign": ""}, complaints=said))
        self.assertIn("cannot be used (mkdir: cannot create directory", caught.exception.lines[0])

    def test_the_file_of_the_repository_is_no_document_to_edit(self) -> None:
        # A rerun would find it as it was in its last commit.
        (self.repository.folder / "hotel.xml").write_bytes(b"edited")
        text = self.failed([], document="headends/hotel.xml")
        self.assertIn("edit a copy", text)

    def test_what_no_comparison_could_read_is_not_kept(self) -> None:
        document = b"<configuration><name>Ho\0tel</name>" + MODULES + b"</configuration>"
        answer = Answer({"begins": "save"}, document, 0)
        job = {**self.job, "log_command": "", "accept_faults": True}
        with patch.object(verbs, "ask", return_value=answer), Tool(str(BACKUP)) as tool:
            self.assertRaises(Failure, verbs._fetched, job, tool, 1)

    def test_a_last_commit_that_nobody_can_read_is_no_obstacle(self) -> None:
        document = b"<configuration>" + MODULES + b"</configuration>"
        with Tool(str(BACKUP)) as tool:
            what, _ = verbs._keep(self.job, self.repository, tool, document)
        self.assertEqual("backup in the place of a file that is no configuration", what)
        self.assertEqual(document, self.repository.document("hotel"))


if __name__ == "__main__":
    unittest.main()
