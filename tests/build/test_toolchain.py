"""That a build folder is not silently built for another machine than it was asked for."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

CMAKE = os.environ["TARVO_CMAKE"]
REPOSITORY = Path(__file__).resolve().parents[2]


class ToolchainTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="toolchain-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        # Of this machine: what is tested is when it is given.
        self.toolchain = self.folder / "other.cmake"
        self.toolchain.write_text("set(CMAKE_SYSTEM_NAME Linux)\n")

    def configure(self, *options: str) -> subprocess.CompletedProcess[str]:
        command = [CMAKE, "-G", "Ninja", "-S", REPOSITORY, "-B", self.folder / "build"]
        return subprocess.run(
            [*command, "-DTARVO_BUILD_TESTS=OFF", *options], capture_output=True, text=True
        )

    def with_toolchain(self, *options: str) -> subprocess.CompletedProcess[str]:
        return self.configure(f"-DCMAKE_TOOLCHAIN_FILE={self.toolchain}", *options)

    def assertConfigured(self, result: subprocess.CompletedProcess[str]) -> None:
        self.assertEqual((0, ""), (result.returncode, result.stderr))

    def assertRefused(self, result: subprocess.CompletedProcess[str]) -> None:
        self.assertEqual(1, result.returncode)
        message = " ".join(result.stderr.split())
        self.assertIn("was configured with another toolchain file, or with none", message)
        self.assertIn("or begin this one anew with --fresh", message)

    def test_given_to_a_folder_of_this_machine_it_is_refused_until_begun_anew(self) -> None:
        self.assertConfigured(self.configure())
        self.assertRefused(self.with_toolchain())
        self.assertRefused(self.with_toolchain())
        self.assertConfigured(self.configure())
        self.assertConfigured(self.with_toolchain("--fresh"))

    def test_given_first_it_may_be_given_again_or_left_out(self) -> None:
        self.assertConfigured(self.with_toolchain())
        self.assertConfigured(self.with_toolchain())
        self.assertConfigured(self.configure())


if __name__ == "__main__":
    unittest.main()
