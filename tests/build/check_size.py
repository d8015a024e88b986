"""Fails when a program, stripped, takes more bytes than it may: check_size.py STRIP PROGRAM LIMIT"""

import subprocess
import sys
import tempfile
from pathlib import Path

strip, program, limit = sys.argv[1:]
with tempfile.TemporaryDirectory(prefix="size-") as folder:
    stripped = Path(folder) / "stripped"
    subprocess.run([strip, "-o", stripped, program], check=True)
    size = stripped.stat().st_size
print(f"{size} bytes of at most {limit}")
sys.exit(size > int(limit))
