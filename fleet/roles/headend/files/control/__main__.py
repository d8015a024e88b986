"""What the role does on the control machine for one host: `python3 control VERB <job.json`.

The job is an object on standard input, so that no name or text passes through a shell; the answer is
an object on standard output: `failed`, `changed`, and `lines` of text for people. Whatever a device
sent is cleaned before it is shown (words.py).
"""

from __future__ import annotations

import json
import os
import re
import sys

import verbs
from ending import exit_on_signals
from words import Failure, clean, trouble_here


# Ansible gives most values as texts.
NUMBERS = ("connect_timeout", "silence", "timeout", "restore_timeout", "tries", "pause", "limit")
NAMES = {"limit": "document_limit"}


def read_job() -> dict:
    job = json.load(sys.stdin)
    for name in NUMBERS:
        if not re.fullmatch(r"\d{1,9}", str(job[name])):
            raise Failure(f"headend_{NAMES.get(name, name)} is no whole number: '{job[name]}'")
        job[name] = int(job[name])
    for name in ("silence", "timeout", "tries"):
        job[name] = max(1, job[name])
    return job


def main() -> int:
    os.umask(0o077)
    exit_on_signals()
    answer: dict[str, object] = {"failed": False, "changed": False, "lines": []}
    try:
        answer.update(verbs.VERBS[sys.argv[1]](read_job()))
    except Failure as failure:
        answer.update(failed=True, lines=failure.lines)
    except OSError as error:
        answer.update(failed=True, lines=[trouble_here(error)])
    answer["lines"] = [clean(line) for line in answer["lines"]]
    json.dump(answer, sys.stdout)
    return 0


if __name__ == "__main__":
    sys.exit(main())
