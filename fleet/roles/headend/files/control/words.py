"""Texts for people, and failures that say what to do."""

from __future__ import annotations

import re

LONGEST_LINE = 400


class Failure(Exception):
    """What ends the work on a host, in words; `again` when a later try may go well."""

    def __init__(self, *lines: str, again: bool = False) -> None:
        super().__init__(*lines)
        self.lines = list(lines)
        self.again = again


def clean(text: str, longest: int = LONGEST_LINE) -> str:
    """The text without what could steer a terminal, split a line or pass for a template."""
    text = "".join(c if c.isprintable() else " " for c in text).rstrip()
    text = re.sub(r"\{(?=[{%#])", "{ ", text)
    return text if len(text) <= longest else text[: longest - 3] + "..."


def trouble_here(error: OSError) -> str:
    where = f" ({error.filename})" if error.filename else ""
    return f"on this machine: {error.strerror}{where}"


def decoded(output: bytes) -> str:
    return output.decode("utf-8", "replace")


def last_line(output: bytes) -> str:
    lines = [line for line in decoded(output).splitlines() if line.strip()]
    return clean(lines[-1]) if lines else ""


def plural(count: int, noun: str) -> str:
    return f"{count} {noun}" + ("" if count == 1 else "s")
