"""The git repository of documents: HOST.xml, a commit per changed host.

The last commit is what counts as the last good backup. A commit is made from objects alone, then the
file takes its place by a rename: whatever fails on the way leaves the commit before and its file. What
is killed between the two leaves a file that is behind; the next run mends that. Processes that run side
by side take turns.
"""

from __future__ import annotations

import contextlib
import datetime
import fcntl
import hashlib
import os
import re
import stat
import subprocess
import tempfile
import time
import urllib.parse
from collections.abc import Iterator
from pathlib import Path

from words import Failure, clean, decoded, last_line

LONGEST_MESSAGE = 200  # lines
# No git is at work on an index or a branch for so long; a lock that is older was left by one that was
# killed.
STALE_LOCK_SECONDS = 3600
# The line of git that says why.
TELLING = r"No space left|Out of diskspace|Disk quota|Unable to create|insufficient permission"


class Repository:
    def __init__(self, job: dict) -> None:
        self.folder = Path(os.path.expanduser(job["repository"]))
        if not self.folder.is_absolute():
            raise Failure(
                f"headend_repository is '{job['repository']}': write all of the path, from / or from ~/ on"
            )
        self._author = job["author"]
        self.private = self.folder / ".git/tarvo-fleet"

    def make(self) -> None:
        """Makes the repository where there is none, and closes it to others."""
        self.folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        self._require_own()
        if stat.S_IMODE(self.folder.lstat().st_mode) != 0o700:
            self.folder.chmod(0o700)
        lock = os.open(self.folder, os.O_RDONLY)
        try:
            fcntl.flock(lock, fcntl.LOCK_EX)
            # Without a HEAD it is one that could not be made whole, on a full disk perhaps.
            if not (self.folder / ".git/HEAD").exists():
                if any(path.name != ".git" for path in self.folder.iterdir()):
                    raise Failure(
                        f"on this machine: {self.folder} holds files and is no git repository;"
                        " name a new folder in headend_repository"
                    )
                self._git("init", "-q", "-b", "main", ".")
                self._git("config", "core.sharedRepository", "0600")
            self.private.mkdir(mode=0o700, exist_ok=True)
        finally:
            os.close(lock)

    def require(self) -> None:
        if self.folder.exists():
            self._require_own()
        if not (self.folder / ".git").is_dir():
            raise Failure(
                f"there is no repository {self.folder} yet: playbooks/backup.yml makes it, for the user who"
                " runs that"
            )
        self.private.mkdir(mode=0o700, exist_ok=True)

    def _require_own(self) -> None:
        status = self.folder.lstat()
        if not stat.S_ISDIR(status.st_mode) or status.st_uid != os.geteuid():
            raise Failure(
                f"on this machine: {self.folder} is not a folder of the user of this run: run this as its"
                " owner, or name another folder in headend_repository"
            )

    def document(self, host: str, commit: str = "HEAD") -> bytes | None:
        result = self._try("cat-file", "blob", f"{commit}:{file_name(host)}")
        return result.stdout if result.returncode == 0 else None

    def at(self, host: str, when: str) -> str:
        """The commit that held the host's last backup until the end of that day or minute, local time."""
        moment = _moment(when)
        found = decoded(self._git("log", "--format=%H %ct", "--", file_name(host))).split()
        commits = list(zip(found[::2], map(int, found[1::2])))
        for commit, time in commits:
            if time <= moment:
                return commit
        if not commits:
            raise Failure(f"there is no backup of {host} in {self.folder}")
        first = datetime.datetime.fromtimestamp(commits[-1][1])
        raise Failure(f"the first backup of {host} is of {first:%Y-%m-%d %H:%M}, after {when}")

    def commit_named(self, host: str, name: str) -> str:
        if not re.fullmatch(r"[\w./^~@-]{1,100}", name) or name.startswith("-"):
            raise Failure(f"'{name}' does not name a commit")
        result = self._try("rev-parse", "--verify", "-q", "--end-of-options", name + "^{commit}")
        if result.returncode:
            raise Failure(f"there is no commit {name} in {self.folder}")
        # The commit that made the host's document what it was then.
        commit = decoded(result.stdout).strip()
        commit = decoded(self._git("log", "-1", "--format=%H", commit, "--", file_name(host))).strip()
        if not commit or self.document(host, commit) is None:
            raise Failure(f"commit {name} holds no backup of {host}")
        return commit

    def described(self, commit: str) -> str:
        return clean(decoded(self._git("log", "-1", "--format=%h of %cd: %s", "--date=format:%Y-%m-%d %H:%M", commit)))

    def keep(self, host: str, document: bytes, message: list[str]) -> None:
        """Commits the document as the host's and puts it into its file."""
        name = file_name(host)
        with self.turn(), self._staged(document) as stage:
            self._commit(name, stage, message)
            self._place(name, stage)
            # In its turn, not in the background of somebody else's; a night can do without it.
            self._try("-c", "gc.auto=6700", "-c", "gc.autoDetach=false", "gc", "--auto", "--quiet")

    def mend(self, host: str) -> bool:
        """Makes the host's file, and git's index of it, that of the last commit where they are not."""
        name = file_name(host)
        last = self.document(host)
        if last is None or self._is_in_place(name, last):
            return False
        with self.turn(), self._staged(last) as stage:
            self._place(name, stage)
        return True

    def _is_in_place(self, name: str, document: bytes) -> bool:
        try:
            is_in_file = (self.folder / name).read_bytes() == document
        except FileNotFoundError:
            is_in_file = False
        # "100644 ID 0" and a tab before the name.
        staged = decoded(self._git("ls-files", "-s", "--", name)).split()
        blob = b"blob %d\0" % len(document) + document
        ids = [hashlib.new(kind, blob).hexdigest() for kind in ("sha1", "sha256")]
        return is_in_file and len(staged) > 1 and staged[1] in ids

    @contextlib.contextmanager
    def _staged(self, document: bytes) -> Iterator[str]:
        """A file with the document, beside the repository's own. For one whose turn it is."""
        self._clear()
        handle, stage = tempfile.mkstemp(dir=self.private, prefix="stage-")
        try:
            with os.fdopen(handle, "wb") as file:
                file.write(document)
                file.flush()
                os.fsync(file.fileno())
            yield stage
        finally:
            with contextlib.suppress(FileNotFoundError):
                os.unlink(stage)

    def _place(self, name: str, stage: str) -> None:
        os.replace(stage, self.folder / name)
        self._git("update-index", "--add", "--", name)

    def _clear(self) -> None:
        """What runs that were killed have left."""
        for stage in self.private.glob("stage-*"):
            stage.unlink()
        git = self.folder / ".git"
        for lock in (*git.glob("*.lock"), *(git / "refs/heads").rglob("*.lock")):
            with contextlib.suppress(FileNotFoundError):
                if time.time() - lock.stat().st_mtime > STALE_LOCK_SECONDS:
                    lock.unlink()

    def _commit(self, name: str, stage: str, message: list[str]) -> None:
        branch = self._try("symbolic-ref", "-q", "HEAD")
        if branch.returncode:
            raise Failure(f"on this machine: no branch is checked out in {self.folder}: git switch main")
        before = decoded(self._try("rev-parse", "-q", "--verify", "HEAD").stdout).strip()
        index = {"GIT_INDEX_FILE": str(self.private / "index")}
        # Nobody else works on this index, so a lock of it was left by a run that was killed.
        for left in ("index", "index.lock"):
            (self.private / left).unlink(missing_ok=True)
        if before:
            self._git("read-tree", before, environment=index)
        blob = decoded(self._git("hash-object", "-w", "--no-filters", stage)).strip()
        self._git("update-index", "--add", "--cacheinfo", f"100644,{blob},{name}", environment=index)
        tree = decoded(self._git("write-tree", environment=index)).strip()
        text = [clean(line) for line in message[:LONGEST_MESSAGE]]
        if len(message) > LONGEST_MESSAGE:
            text.append(f"and {len(message) - LONGEST_MESSAGE} more")
        parents = ["-p", before] if before else []
        commit = decoded(
            self._git("commit-tree", tree, *parents, given="\n".join(text).encode() + b"\n")
        ).strip()
        self._git("update-ref", "-m", "backup", decoded(branch.stdout).strip(), commit, before or "0" * 40)

    @contextlib.contextmanager
    def turn(self, host: str = "", *, wait: bool = True) -> Iterator[None]:
        """Of the processes of this machine one at a time: in the repository, or at work on a host."""
        with open(self.private / ("lock-" + (file_name(host) if host else "repository")), "w") as lock:
            try:
                fcntl.flock(lock, fcntl.LOCK_EX | (0 if wait else fcntl.LOCK_NB))
            except BlockingIOError:
                raise Failure(
                    f"another run of this machine is at work on {host}: nothing was done."
                    " When it has ended, run this again"
                ) from None
            yield

    def _git(self, *words: str, given: bytes = b"", environment: dict[str, str] | None = None) -> bytes:
        result = self._try(*words, given=given, environment=environment)
        if result.returncode:
            # The last line of most is advice.
            said = next(
                (line for line in decoded(result.stderr).splitlines() if re.search(TELLING, line)),
                last_line(result.stderr) or f"status {result.returncode}",
            )
            raise Failure(f"on this machine: git {words[0]} in {self.folder} failed: {said}")
        return result.stdout

    def _try(
        self, *words: str, given: bytes = b"", environment: dict[str, str] | None = None
    ) -> subprocess.CompletedProcess[bytes]:
        """No hook, no signature, no question, and none of the caller's settings of a repository."""
        variables = {name: value for name, value in os.environ.items() if not name.startswith("GIT_")}
        name, _, address = self._author.partition(" <")
        for role in ("AUTHOR", "COMMITTER"):
            variables[f"GIT_{role}_NAME"] = name
            variables[f"GIT_{role}_EMAIL"] = address.rstrip(">")
        variables |= {"LC_ALL": "C.UTF-8", "GIT_TERMINAL_PROMPT": "0", **(environment or {})}
        # The folder itself is meant, never a repository around it.
        variables["GIT_CEILING_DIRECTORIES"] = str(self.folder.resolve().parent)
        settings = ("core.hooksPath=/dev/null", "core.quotePath=false", "gc.auto=0", "core.fsync=all")
        command = ["git", *(word for s in settings for word in ("-c", s)), *words]
        try:
            return subprocess.run(
                command, cwd=self.folder, env=variables, input=given, capture_output=True, check=False
            )
        except FileNotFoundError:
            raise Failure("on this machine: git is missing: apt-get install git") from None


def file_name(host: str) -> str:
    """HOST.xml. Signs that a file's name or a shell could stumble over stand as %XX, as in a URL."""
    quoted = urllib.parse.quote(host, safe="@+")
    if quoted[:1] in (".", "-", "~"):
        quoted = f"%{ord(quoted[0]):02X}{quoted[1:]}"
    if not quoted or len(quoted) > 200:
        raise Failure("the name of the host is too long for a file")
    return quoted + ".xml"


def _moment(when: str) -> float:
    try:
        if not re.match(r"\d{4}-\d\d-\d\d(?:[T ]|$)", when):
            raise ValueError
        end = ""
        if len(when) == len("2026-11-20"):
            end = "T23:59:59.999999"
        elif re.fullmatch(r".{11}\d\d:\d\d", when):
            end = ":59.999999"
        return datetime.datetime.fromisoformat(when + end).timestamp()
    except (ValueError, OverflowError):
        raise Failure(f"date={when} is no date: write 2026-11-20, or 2026-11-20T14:30") from None
