"""One ssh session: a script runs on the device, and its answer comes back, limited in size and time."""

from __future__ import annotations

import math
import os
import re
import secrets
import selectors
import shlex
import signal
import subprocess
import time
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path

from ending import signals_afterwards
from words import Failure, clean, decoded, last_line

SCRIPTS = Path(__file__).resolve().parents[1] / "device"
LONGEST_COMPLAINT = 64 * 1024

NOT_TAKEN = r"Permission denied|Too many authentication"

# What ssh says, and what that means for whoever reads it in the morning. The first that fits counts.
MEANINGS = (
    (
        r"Identity file|no such identity|Load key",
        "the private key cannot be used: it is not there, is no key, or others can read it",
    ),
    (
        r"REMOTE HOST IDENTIFICATION HAS CHANGED",
        "its host key is another one than before. If the controller was replaced, remove the old key"
        " (ssh-keygen -R) and add the new one; if not, somebody may be in between",
    ),
    (
        r"Host key verification failed|host key is known",
        "its host key is not known here: compare it with the device's and add it to known_hosts",
    ),
    (NOT_TAKEN, "it does not take the key or the user"),
    (
        r"Could not resolve|Name or service|hostname contains invalid|Bad port",
        "there is no such host: look at its line in the inventory",
    ),
    (
        r"Connection refused|No route|unreachable|timed out during banner|port \d+: Connection timed"
        r"|Operation timed out|Connection timed out",
        "it does not answer: it is down, or cut off, or ssh does not run there",
    ),
    (r"closed|reset|Broken pipe|not responding|lost", "the connection was lost"),
)


class ConnectionFailure(Failure):
    """ssh itself failed, or the answer has no end; what the script did is not known."""


@dataclass
class Answer:
    """The lines that the script said, by their first word, and what it printed between two of them."""

    said: dict[str, str] = field(default_factory=dict)
    body: bytes | None = None
    status: int = 0
    complaints: bytes = b""

    @property
    def method(self) -> str:
        return self.said.get("begins", "")


def ask(job: dict, script: str, *words: str, document: bytes = b"", limit: int, seconds: float) -> Answer:
    """Runs a script of files/device; `words` are its arguments. What it says is not trusted."""
    mark = f"tarvo-fleet-{secrets.token_hex(8)}"
    silence = job["silence"]
    text = "".join((SCRIPTS / name).read_text("utf-8") for name in ("answer.sh", script))
    command = shlex.join(["sh", "-c", text, "tarvo-fleet", mark, str(max(1, silence // 6)), *words])
    output, complaints, status = _run(_ssh(job) + [command], document, limit + 64 * 1024, seconds, silence)
    answer = _parsed(mark.encode(), output)
    answer.complaints = complaints.replace(f"{mark} alive\n".encode(), b"")
    if not answer.said:
        raise _connection_failure(answer.complaints, status, lambda: _locked_keys(job))
    if "over" not in answer.said or ("begins" in answer.said and answer.body is None):
        said = last_line(answer.complaints) or f"ssh ended with status {status}"
        raise ConnectionFailure(f"the connection was lost in the middle ({said})", again=True)
    if answer.body is not None and len(answer.body) > limit:
        raise Failure(f"it sends more than {limit} bytes: headend_document_limit says how much is taken")
    return answer


def _ssh(job: dict) -> list[str]:
    """The options come first, because ssh takes the first value that it is given."""
    options = {
        "BatchMode": "yes",
        "StrictHostKeyChecking": "yes",
        "UpdateHostKeys": "no",
        "ConnectTimeout": str(int(job["connect_timeout"])),
        "ServerAliveInterval": "15",
        "ServerAliveCountMax": "4",
        "ForwardAgent": "no",
        "ForwardX11": "no",
        "ClearAllForwardings": "yes",
        "PermitLocalCommand": "no",
        "RequestTTY": "no",
        "LogLevel": "ERROR",
    }
    words = ["ssh"]
    for name, value in options.items():
        words += ["-o", f"{name}={value}"]
    try:
        words += shlex.split(job["ssh_args"])
    except ValueError:
        raise Failure(
            "ansible_ssh_common_args or ansible_ssh_extra_args has a quotation mark without its pair"
        ) from None
    if job["key"]:
        words += ["-i", os.path.expanduser(job["key"]), "-o", "IdentitiesOnly=yes"]
    if job["port"]:
        words += ["-p", str(job["port"])]
    return [*words, "-l", job["user"], "--", job["address"]]


def _run(
    command: list[str], document: bytes, limit: int, seconds: float, silence: float
) -> tuple[bytes, bytes, int]:
    """Standard output, standard error and status; what is over the limits ends the program: so many
    bytes, and seconds, and seconds in which it prints nothing.
    """
    deadline = time.monotonic() + seconds
    heard = time.monotonic()
    outputs = {"stdout": bytearray(), "stderr": bytearray()}
    unsent = memoryview(document)
    process = None
    try:
        with signals_afterwards():
            process = subprocess.Popen(
                command,
                stdin=subprocess.PIPE,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                bufsize=0,
                start_new_session=True,
            )
        with selectors.DefaultSelector() as events:
            os.set_blocking(process.stdin.fileno(), False)
            events.register(process.stdin, selectors.EVENT_WRITE)
            events.register(process.stdout, selectors.EVENT_READ, "stdout")
            events.register(process.stderr, selectors.EVENT_READ, "stderr")
            while events.get_map():
                now = time.monotonic()
                if now >= deadline:
                    raise ConnectionFailure(f"it did not finish in {math.ceil(seconds)} seconds")
                if now >= heard + silence:
                    raise ConnectionFailure(f"it let the connection be and said nothing for {silence} seconds")
                for key, _ in events.select(min(deadline, heard + silence) - now):
                    if key.fileobj is process.stdin:
                        try:
                            unsent = unsent[os.write(key.fd, unsent[: 1 << 16]) :] if unsent else unsent
                        except BrokenPipeError:
                            unsent = unsent[:0]
                        if not unsent:
                            events.unregister(process.stdin)
                            process.stdin.close()
                        continue
                    part = os.read(key.fd, 1 << 16)
                    heard = time.monotonic()
                    if not part:
                        events.unregister(key.fileobj)
                    elif key.data == "stdout":
                        outputs["stdout"] += part
                        if len(outputs["stdout"]) > limit:
                            raise Failure(
                                f"it sends more than {limit} bytes:"
                                " headend_document_limit says how much is taken"
                            )
                    else:  # the last of it tells why
                        outputs["stderr"] = (outputs["stderr"] + part)[-LONGEST_COMPLAINT:]
        process.wait(max(1.0, deadline - time.monotonic()))
    except subprocess.TimeoutExpired:
        raise ConnectionFailure("ssh did not end", again=True) from None
    finally:
        if process is not None:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            for stream in (process.stdin, process.stdout, process.stderr):
                stream.close()
    return bytes(outputs["stdout"]), bytes(outputs["stderr"]), process.returncode


def _parsed(mark: bytes, output: bytes) -> Answer:
    answer = Answer()
    begin = re.search(rb"(?m)^" + mark + rb" begins [^\n]*\n", output)
    if begin:
        end = output.find(b"\n" + mark + b" ends ", begin.end() - 1)
        if end >= 0:
            answer.body = output[begin.end() : end] if end >= begin.end() else b""
            line = output[end + 1 :].split(b"\n", 1)[0]
            number = line.removeprefix(mark + b" ends ").strip()
            answer.status = int(number) if re.fullmatch(rb"\d{1,3}", number) else 255
            output = output[: begin.end()] + output[end + 1 :]
        else:
            output = output[: begin.end()]
    for line in re.findall(rb"(?m)^" + mark + rb" (.*)$", output):
        word, _, rest = decoded(line).partition(" ")
        answer.said.setdefault(word, rest)
    return answer


def _locked_keys(job: dict) -> list[str]:
    """The private keys that ssh cannot use, because they have a password and no agent holds them."""
    settings = [line.partition(" ") for line in decoded(_said(["ssh", "-G", *_ssh(job)[1:]])).splitlines()]
    agent = next((value for name, _, value in settings if name == "identityagent"), "SSH_AUTH_SOCK")
    sockets = {} if agent == "SSH_AUTH_SOCK" else {"SSH_AUTH_SOCK": os.path.expanduser(agent)}
    held = decoded(_said(["ssh-add", "-l"], **sockets)).split()
    locked = []
    for name, _, value in settings:
        path = os.path.expanduser(value)
        if name != "identityfile" or not os.path.exists(path):
            continue
        # An empty password opens a key that has none.
        if b"incorrect passphrase" in _said(["ssh-keygen", "-y", "-P", "", "-f", path]):
            fingerprint = decoded(_said(["ssh-keygen", "-l", "-f", path])).split()[1:2]
            if not set(fingerprint) & set(held):
                locked.append(path)
    return locked


def _said(command: list[str], **variables: str) -> bytes:
    """What a program of this machine prints."""
    result = subprocess.run(
        command,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        env={**os.environ, **variables},
        check=False,
    )
    return result.stdout


def _connection_failure(
    complaints: bytes, status: int, locked_keys: Callable[[], list[str]]
) -> ConnectionFailure:
    # ssh says what is not ASCII in octal numbers.
    complaints = re.sub(rb"\\([0-3][0-7]{2})", lambda found: bytes([int(found[1], 8)]), complaints)
    text = decoded(complaints)
    said = last_line(complaints) or f"ssh ended with status {status}"
    if status == 255:
        for pattern, meaning in MEANINGS:
            fitting = re.search(f"(?im)^.*(?:{pattern}).*$", text)
            if not fitting:
                continue
            if pattern == NOT_TAKEN and (locked := locked_keys()):
                meaning = (
                    f"the private key {' and '.join(locked)} has a password, and no agent gives it to this"
                    " run (SSH_AUTH_SOCK, ssh-add): add it to one, or take a key without a password"
                )
            return ConnectionFailure(f"{meaning} ({clean(fitting[0])})")
        if not complaints.strip():
            return ConnectionFailure("it does not answer any more: ssh gave it up without a word")
    return ConnectionFailure(f"no answer from its shell: {said}")
