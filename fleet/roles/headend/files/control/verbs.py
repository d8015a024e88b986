"""The steps of the playbooks. Each takes the job of a host and gives the answer's fields."""

from __future__ import annotations

import json
import os
import re
import secrets
import shutil
import time
from dataclasses import dataclass
from pathlib import Path

from documents import Change, Tool, lines_of, prove_whole, summary
from repository import Repository, file_name
from session import Answer, ConnectionFailure, ask
from words import Failure, clean, decoded, last_line, plural, trouble_here

# A device's clock may be so far off before it is worth a word.
CLOCK_SECONDS = 300
# Exit statuses. `tarvo-backup`: the import was refused or undone; another restore holds the headend.
REFUSED, BUSY = 6, 7
# `tarvo-config`: a database could not be accessed.
DATABASE = 3
# What `tarvo-backup show` masks.
_SECRETS = "(?:password|oddkey|evenkey|ekshared)"
_SECRET_ELEMENTS = re.compile(rf"(<{_SECRETS}>)[^<]*", re.IGNORECASE)
_SECRET_CHANGES = re.compile(rf"(?m)^(.*/{_SECRETS}: ).*$", re.IGNORECASE)


def backup(job: dict) -> dict:
    repository = Repository(job)
    repository.make()
    with repository.turn(job["host"]), Tool(job["tool"]) as tool:
        mended = _mend(job, repository)
        document, remarks = _fetch(job, tool)
        what, changed = _keep(job, repository, tool, document)
    return {"changed": changed, "lines": [what, *mended, *remarks]}


def plan(job: dict) -> dict:
    """Settles what an earlier restore left, and tells what this one would do."""
    repository = Repository(job)
    repository.require()
    with repository.turn(job["host"], wait=False), Tool(job["tool"]) as tool:
        intended = _intended(job, repository)
        lines = [f"the document: {intended.description}"]
        settled, is_done = _settle(job, repository, tool, intended.document)
        lines += settled
        if is_done:
            result = {"lines": lines, "refused": False, "same": True}
        else:
            result = _planned(job, tool, intended.document, lines)
        if result["same"]:
            Meant(repository, job["host"]).end()
        return result


def _planned(job: dict, tool: Tool, intended: bytes, lines: list[str]) -> dict:
    try:
        prove_whole(intended)
    except Failure as failure:
        raise Failure(*(line.replace("what it sends", "the document") for line in failure.lines)) from None
    answer = ask(job, "plan.sh", str(len(intended)), document=intended, limit=1 << 20, seconds=job["timeout"])
    if answer.body is not None:
        lines += _printed(answer)
        if answer.status == REFUSED:
            lines.append("The headend would refuse this document: nothing would change.")
        elif answer.status not in (0, 1):
            raise Failure(*lines, f"tarvo-backup plan ended with status {answer.status}")
        return {"lines": lines, "refused": answer.status == REFUSED, "same": answer.status == 0}
    if "cannot" not in answer.said:
        raise Failure(f"the document did not arrive whole{_why(answer)}: nothing was done, try again")
    current, _ = _fetch(job, tool)
    faults = tool.faults(intended)
    differences = lines_of(tool.changes(current, intended))
    lines.append("The headend has no tarvo-backup, so this is what is different, not what an import would do:")
    lines += [f"  {line}" for line in differences] or ["  nothing"]
    if faults:
        lines += ["An import would refuse this document:", *(f"  {fault}" for fault in faults[:20])]
    return {"lines": lines, "refused": bool(faults), "same": not differences}


def restore(job: dict) -> dict:
    repository = Repository(job)
    repository.require()
    with repository.turn(job["host"], wait=False), Tool(job["tool"]) as tool:
        intended = _intended(job, repository)
        mended = _mend(job, repository)
        before, remarks = _fetch(job, tool)
        meant = Meant(repository, job["host"])
        meant.begin(intended)
        what, _ = _keep(job, repository, tool, before)
        pending = Pending(repository, job["host"])
        pending.begin(intended.document, before, intended.description)
        lines = [f"before the restore: {what}", *mended, *remarks]
        result = _finish(job, repository, tool, pending, lines, document=intended.document)
        meant.end()
        return result


VERBS = {"backup": backup, "plan": plan, "restore": restore}


class Pending:
    """What this machine knows of a restore whose end it has not seen yet."""

    def __init__(self, repository: Repository, host: str) -> None:
        self._folder = repository.private / ("restore-" + file_name(host))

    def __bool__(self) -> bool:
        return (self._folder / "about.json").exists()

    def begin(self, intended: bytes, before: bytes, description: str) -> None:
        self.end()
        self._folder.mkdir(mode=0o700)
        (self._folder / "intended.xml").write_bytes(intended)
        (self._folder / "before.xml").write_bytes(before)
        about = {"id": secrets.token_hex(8), "document": description, "begun": time.strftime("%F %R")}
        (self._folder / "about.new").write_text(json.dumps(about), "utf-8")
        (self._folder / "about.new").rename(self._folder / "about.json")

    def end(self) -> None:
        if self._folder.exists():
            shutil.rmtree(self._folder)

    @property
    def about(self) -> dict:
        return json.loads((self._folder / "about.json").read_text("utf-8"))

    @property
    def intended(self) -> bytes:
        return (self._folder / "intended.xml").read_bytes()

    @property
    def before(self) -> bytes:
        return (self._folder / "before.xml").read_bytes()


@dataclass(frozen=True)
class Intended:
    """The document that is to be restored, and what it is. One of the repository also has the words that
    it was asked for with, and its commit.
    """

    document: bytes
    description: str
    asked: str = ""
    commit: str = ""


class Meant:
    """The commit that a date or a name meant when a restore was begun that has not been done since. Its
    own backups are commits, too, and the same command has to mean the same document again.
    """

    def __init__(self, repository: Repository, host: str) -> None:
        self._file = repository.private / ("meant-" + file_name(host))

    def commit(self, asked: str) -> str | None:
        try:
            known = json.loads(self._file.read_text("utf-8"))
        except (FileNotFoundError, ValueError):
            return None
        return known["commit"] if known["asked"] == asked else None

    def begin(self, intended: Intended) -> None:
        if not intended.commit:
            self.end()
            return
        new = self._file.with_suffix(".new")
        new.write_text(json.dumps({"asked": intended.asked, "commit": intended.commit}), "utf-8")
        new.rename(self._file)

    def end(self) -> None:
        self._file.unlink(missing_ok=True)


def _mend(job: dict, repository: Repository) -> list[str]:
    if not repository.mend(job["host"]):
        return []
    return [f"{file_name(job['host'])} was not as in its last commit, and is now"]


def _fetch(job: dict, tool: Tool) -> tuple[bytes, list[str]]:
    """The headend's configuration, proved to be whole, and remarks. All tries share the time for one,
    so that a headend in trouble does not hold up the others.
    """
    deadline = time.monotonic() + job["timeout"]
    for left in reversed(range(job["tries"])):
        try:
            return _fetched(job, tool, deadline - time.monotonic())
        except Failure as failure:
            if not failure.again or not left or time.monotonic() + job["pause"] >= deadline:
                raise
        time.sleep(job["pause"])
    raise AssertionError("no try")


def _fetched(job: dict, tool: Tool, seconds: float) -> tuple[bytes, list[str]]:
    answer = ask(job, "backup.sh", job["log_command"], limit=job["limit"], seconds=seconds)
    if "missing" in answer.said:
        raise Failure("there is neither tarvo-backup nor tarvo-config on it")
    if answer.body is None:
        raise Failure(f"its shell did not do what it was told: {last_line(answer.complaints)}")
    if answer.status:
        name = "tarvo-backup save" if answer.method == "save" else "tarvo-config"
        said = last_line(answer.complaints)
        raise Failure(
            f"{name} ended with status {answer.status}" + (f": {said}" if said else ""), again=True
        )
    document = answer.body
    if answer.method != "save":
        _prove_by_log(answer)
        # tarvo-backup ends its document where it ends; a line feed was put behind tarvo-config's.
        document = document.rstrip(b"\n") + b"\n"
    prove_whole(document)
    remarks = []
    faults = tool.faults(document)
    if faults:
        tool.prove_readable(document)
        count = f"an import would refuse it for {plural(len(faults), 'fault')}, the first: {faults[0]}"
        if answer.method != "save" and not job["accept_faults"]:
            raise Failure(
                f"the document is no proven backup: {count}. If the headend is like that, as every"
                " RNB-K408 is, set headend_accept_faults for it"
            )
        remarks.append(f"as it is, {count}")
    remarks += _clock(answer)
    return document, remarks


def _prove_by_log(answer: Answer) -> None:
    """tarvo-config ends with 0 also when it could not read a table; the log tells."""
    found = answer.said.get("log", "unknown")
    if not re.fullmatch("[0-9]{1,9}", found):
        raise Failure(
            "its log does not show the run, so that nothing proves that the backup is whole:"
            " headend_log_command can say how to print the log",
            again=True,
        )
    if int(found):
        raise Failure(
            f"tarvo-config could not read everything ({answer.said.get('complaint', '')}):"
            " the backup is not whole",
            again=True,
        )


def _clock(answer: Answer) -> list[str]:
    told = answer.said.get("clock", "")
    if not re.fullmatch("[0-9]{1,12}", told):
        return []
    off = int(told) - int(time.time())
    if abs(off) < CLOCK_SECONDS:
        return []
    way = "fast" if off > 0 else "slow"
    for seconds, unit in ((86400, "day"), (3600, "hour"), (60, "minute")):
        if abs(off) >= seconds:
            break
    return [f"its clock is {plural(round(abs(off) / seconds), unit)} {way}"]


def _keep(
    job: dict, repository: Repository, tool: Tool, document: bytes, reason: str = ""
) -> tuple[str, bool]:
    """Commits the document when the settings are others than in the last one."""
    host = job["host"]
    last = repository.document(host)
    if last is None:
        what, details = "first backup", []
    else:
        try:
            changes = tool.changes(last, document)
        except Failure:
            if tool.can_read(last):
                raise
            what, details = "backup in the place of a file that is no configuration", []
        else:
            if not changes:
                return "unchanged", False
            what, details = summary(changes), lines_of(changes)
    message = [f"{clean(host, 100)}: {what}" + (", after a restore" if reason else "")]
    if reason or details:
        message += ["", *([reason, ""] if reason else []), *details]
    repository.keep(host, document, message)
    return what, True


def _intended(job: dict, repository: Repository) -> Intended:
    named = [word for word in ("date", "commit", "document") if job[word]]
    if len(named) != 1:
        raise Failure("say which document: one of -e date=2026-11-20, -e commit=COMMIT, -e document=FILE")
    name = file_name(job["host"])
    if job["document"]:
        path = Path(job["folder"], os.path.expanduser(job["document"]))
        if path.resolve() == (repository.folder / name).resolve():
            raise Failure(
                f"{path} is the repository's own file, and is put back to its last commit: name the commit"
                " with -e commit=COMMIT, or edit a copy elsewhere"
            )
        if path.stat().st_size > job["limit"]:
            raise Failure(f"{path} is larger than headend_document_limit")
        return Intended(path.read_bytes(), str(path))
    asked = f"{named[0]}={job[named[0]]}"
    commit = Meant(repository, job["host"]).commit(asked)
    again = ", as when this was asked for first" if commit else ""
    if not commit:
        find = repository.at if job["date"] else repository.commit_named
        commit = find(job["host"], job["date"] or job["commit"])
    document = repository.document(job["host"], commit)
    if document is None:
        raise Failure(f"commit {commit[:12]} holds no backup of {job['host']}")
    description = f"{name} in commit {repository.described(commit)}{again}"
    return Intended(document, description, asked, commit)


def _settle(
    job: dict, repository: Repository, tool: Tool, intended: bytes
) -> tuple[list[str], bool]:
    """Finds out how a restore ended whose end nobody has seen, and whether it is the one asked for."""
    pending = Pending(repository, job["host"])
    if not pending:
        return [], False
    is_same = pending.intended == intended
    begun = f"a restore was begun on {pending.about['begun']} ({pending.about['document']})"
    result = _finish(job, repository, tool, pending, [begun + ", and its end was not seen"])
    return result["lines"], is_same and result["is_done"]


def _job_script(job: dict, verb: str, pending: Pending, document: bytes = b"") -> Answer:
    seconds = job["restore_timeout"]
    words = [job["device_folder"], verb, pending.about["id"], str(len(document)), str(seconds)]
    return ask(job, "restore.sh", *words, document=document, limit=1 << 20, seconds=seconds + job["timeout"])


def _finish(
    job: dict,
    repository: Repository,
    tool: Tool,
    pending: Pending,
    lines: list[str],
    document: bytes | None = None,
) -> dict:
    """Starts a restore, or finds one, waits for its end, and tells before from after by a backup."""
    try:
        if document is None:
            answer = _job_script(job, "wait", pending)
        else:
            answer = _job_script(job, "start", pending, document)
        lines += _told(job, pending, answer)
        now, what = _kept_after(job, repository, tool, pending, lines)
        _job_script(job, "forget", pending)
    except ConnectionFailure as failure:
        raise Failure(
            *lines,
            *failure.lines,
            "The headend is as before the restore or as after it, never between: the restore does not"
            " need the connection. When the headend answers again, run the same command: it tells which"
            " it is, and goes on from there. If the document holds another address than the headend had,"
            " look for it there: change ansible_host in the inventory.",
        ) from None
    intended, before = pending.intended, pending.before
    pending.end()
    told = answer.status if answer.body is not None else None
    outcome = _outcome(tool, intended, before, now, told)
    lines += outcome.lines
    if outcome.name != "After":
        lines.append(_what_next(answer))
    lines.append(f"the backup afterwards: {what}")
    if outcome.name != "After" and document is not None:
        raise Failure(*lines)
    return {"changed": True, "lines": lines, "is_done": outcome.is_sure}


@dataclass(frozen=True)
class Outcome:
    """What has become of a restore: Before, After or Neither; sure when there is nothing left to do."""

    name: str
    is_sure: bool
    lines: list[str]


def _outcome(tool: Tool, intended: bytes, before: bytes, now: bytes, told: int | None) -> Outcome:
    """Told from the three documents, and from the status that the headend's program ended with, if
    that is known. That the headend is otherwise than before is no proof: somebody else may have
    changed something.
    """
    missing = tool.changes(intended, now)
    if not missing:
        return Outcome("After", True, ["After: the headend is as the document says."])
    missing_lines = [
        f"{plural(len(missing), 'item')} otherwise than in the document:",
        *(f"  {change.line}" for change in missing),
    ]
    asymmetries = "docs/known-asymmetries.md says which items no restore brings back, and what to do."
    if told == 0:
        first, *others = missing_lines
        return Outcome("After", True, [f"After: the restore was done; {first}", *others, asymmetries])
    since = tool.changes(before, now)
    if not since:
        said = "Before: the headend is as it was before the restore; nothing of the document is in it."
        return Outcome("Before", False, [said])
    wanted = tool.changes(before, intended)
    came, others = _sorted_by(since, wanted)
    if told is None and came:
        said = (
            f"After: of the {plural(len(wanted), 'item')} that the document changes, the headend has {len(came)},"
            " so the restore was done, though nobody saw its end;"
        )
        first, *rest = missing_lines
        return Outcome("After", False, [f"{said} {first}", *rest, asymmetries])
    if came:
        said = (
            "Neither before nor after: the headend says that the restore was not done, and yet it has"
            f" {len(came)} of the {plural(len(wanted), 'item')} that the document changes. Look at it;"
        )
        first, *rest = missing_lines
        return Outcome("Neither", False, [f"{said} {first}", *rest])
    return Outcome(
        "Neither",
        False,
        [
            "Neither before nor after: nothing of the document is in the headend, so the restore was not"
            f" done, and somebody else has changed {plural(len(others), 'item')} meanwhile:",
            *(f"  {change.line}" for change in others),
        ],
    )


def _sorted_by(since: list[Change], wanted: list[Change]) -> tuple[list[Change], list[Change]]:
    """Of the changes since, those that were wanted, and the others."""
    by_path = {change.path: change for change in wanted}
    came = [change for change in since if change.path in by_path and change.is_like(by_path[change.path])]
    return came, [change for change in since if change not in came]


def _kept_after(
    job: dict, repository: Repository, tool: Tool, pending: Pending, lines: list[str]
) -> tuple[bytes, str]:
    """The backup that tells before from after, and what has been kept of it. `lines` have told what the
    headend says of the restore.
    """
    try:
        document, _ = _fetch(job, tool)
        what, _ = _keep(job, repository, tool, document, f"Restored was {pending.about['document']}.")
    except ConnectionFailure:
        raise
    except (Failure, OSError) as failure:
        raise Failure(
            *lines,
            "the backup afterwards failed:",
            *([trouble_here(failure)] if isinstance(failure, OSError) else failure.lines),
            "When that has passed, run the same command again: it tells whether the headend is as before"
            " the restore or as after it, and goes on from there.",
        ) from None
    return document, what


def _told(job: dict, pending: Pending, answer: Answer) -> list[str]:
    """What the device says of the restore. Raises when it is still under way or cannot begin."""
    said = answer.said
    if "foreign" in said:
        pending.end()
        raise Failure(
            f"{job['device_folder']} on the headend cannot be used{_why(answer)}: nothing was done. If it"
            " belongs to somebody else, remove it there, or name another folder in headend_device_folder"
        )
    if "busy" in said or ("id" in said and said["id"] != pending.about["id"]):
        pending.end()
        raise Failure(
            "another restore is under way on the headend, or was begun from elsewhere and its end not"
            f" fetched: nothing was done. Look at {job['device_folder']}/restore there (output, status);"
            " remove that folder when that restore has ended, and run this again"
        )
    if "running" in said:
        raise Failure(
            "the restore still runs on the headend. Run the same command again later: it waits for it"
        )
    if answer.body is not None:
        # The plan comes first, which has been shown.
        lines = _printed(answer)[-2 if answer.status == 0 else -40 :]
        return [f"the headend says (status {answer.status}):", *(f"  {line}" for line in lines)]
    if "died" in said:
        lines = ["the restore was ended on the headend, before it was done"]
        undo = _job_script(job, "undo", pending)
        if undo.body is not None and undo.status == 0:
            lines += [f"  {line}" for line in _printed(undo)]
        return lines
    if "none" in said:
        return ["the headend knows nothing of it: it never began there, or the headend has started anew"]
    return [f"the document did not arrive whole{_why(answer)}, so that the restore never began"]


def _why(answer: Answer) -> str:
    """What the headend complained of, such as a full disk."""
    said = last_line(answer.complaints)
    return f" ({said})" if said else ""


def _printed(answer: Answer) -> list[str]:
    """The lines that a program of the device printed, without the secrets that documents hold."""
    text = _SECRET_ELEMENTS.sub(r"\1(secret)", decoded(answer.body or b""))
    text = _SECRET_CHANGES.sub(r"\1changed (secret)", text)
    return [line.rstrip() for line in text.splitlines() if line.strip()]


def _what_next(answer: Answer) -> str:
    if answer.body is None:
        return "Run this again."
    is_refusal = answer.status == REFUSED
    if answer.said.get("program") != "tarvo-backup":
        is_refusal = answer.status != DATABASE
    elif answer.status == BUSY:
        return (
            "Another restore holds the headend, or waits to be confirmed: 'tarvo-backup confirm' or"
            " 'tarvo-backup undo' on the headend ends that; then run this again."
        )
    if is_refusal:
        return (
            "The headend refused the document. playbooks/plan.yml names the element; correct a copy of"
            " the document ('/usr/sbin/tarvo-backup check' finds faults) and restore it with -e document=FILE."
        )
    return "The headend could not do it now, its last line says why. When that has passed, run this again."
