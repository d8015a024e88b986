"""`tarvo-backup show`: its page in a real browser, and a redacted document in the import."""

import base64
import json
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.request
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, EndToEndTest, document, golden, main, models, tables  # noqa: E402

DRIVER = shutil.which("chromedriver")
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


def backup(*args: str, text: bytes = b"") -> bytes:
    return subprocess.run(
        [BACKUP_PROGRAM, *args], input=text, capture_output=True, check=True
    ).stdout


class Browser:
    """Chromium through its driver, which speaks JSON over HTTP."""

    def __init__(self, folder: Path) -> None:
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.driver = subprocess.Popen(
            [DRIVER, f"--port={port}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        self.place = f"http://127.0.0.1:{port}"
        arguments = [
            "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
            f"--user-data-dir={folder}",
        ]  # fmt: skip
        wanted = {"alwaysMatch": {"goog:chromeOptions": {"args": arguments}}}
        for _ in range(100):
            try:
                session = self.call("/session", {"capabilities": wanted})
                break
            except urllib.error.URLError:
                time.sleep(0.1)
        else:
            raise RuntimeError("the browser's driver does not answer")
        self.place += "/session/" + session["sessionId"]

    def call(self, path: str, body: dict | None = None, method: str | None = None) -> object:
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.place + path, data, method=method)
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def run(self, script: str) -> object:
        return self.call("/execute/sync", {"script": script, "args": []})

    def width(self, pixels: int) -> None:
        metrics = {"width": pixels, "height": 800, "deviceScaleFactor": 1, "mobile": False}
        command = {"cmd": "Emulation.setDeviceMetricsOverride", "params": metrics}
        self.call("/goog/cdp/execute", command)

    def type(self, selector: str, text: str) -> None:
        found = self.call("/element", {"using": "css selector", "value": selector})
        self.call(f"/element/{found[ELEMENT]}/value", {"text": text})

    def close(self) -> None:
        try:
            self.call("", method="DELETE")
        finally:
            self.driver.terminate()
            self.driver.wait()


@unittest.skipIf(DRIVER is None, "chromedriver is not installed (Debian's chromium-driver)")
class PageTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="backup-show-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.browser = Browser(self.folder / "profile")
        self.addCleanup(self.browser.close)

    def open(self, text: bytes) -> None:
        page = self.folder / "page.html"
        backup("show", "-", "--html", str(page), text=text)
        self.browser.call("/url", {"url": page.as_uri()})

    def assertNothingOverflows(self) -> None:
        for pixels in (360, 1280):
            self.browser.width(pixels)
            self.assertEqual(pixels, self.browser.run("return innerWidth"))
            wide = self.browser.run(
                """return [...document.querySelectorAll('*')].filter(
                       each => each.getBoundingClientRect().right > innerWidth + 0.5
                   ).map(each => each.outerHTML.slice(0, 100))"""
            )
            self.assertEqual([], wide)
            self.assertLessEqual(
                self.browser.run("return document.documentElement.scrollWidth"), pixels
            )

    def test_the_page_of_every_model_reads_and_fits(self) -> None:
        for model in models():
            with self.subTest(model):
                self.open(golden(model))
                shown = json.loads(backup("show", "--json", "-", text=golden(model)))
                read = self.browser.run(
                    """return [document.title, [...document.querySelectorAll('h2')]
                           .map(each => each.textContent)]"""
                )
                self.assertEqual([shown["title"], [s["title"] for s in shown["sections"]]], read)
                cells = self.browser.run(
                    """return [...document.querySelectorAll('td')].map(each => each.textContent)"""
                )
                expected = []
                for section in shown["sections"]:
                    expected += [field["text"] for field in section["fields"]]
                    for table in section["tables"]:
                        expected += [text for row in table["rows"] for text in row]
                self.assertEqual(expected, cells)
                self.assertNothingOverflows()

    def test_the_search_box_leaves_what_holds_the_text(self) -> None:
        channels = "".join(
            f"<service><outputId>1</outputId><outputSid>{sid}</outputSid><outputName>{name}"
            f"</outputName><lcn>{sid}</lcn></service>"
            for sid, name in enumerate(("Österreich Heute", "Zürich Aktuell", "Südtirol Uno"), 1)
        )
        self.open(
            document(
                "<lnb><oscLowFreq>9750</oscLowFreq></lnb><modules><module><mac>02:01</mac>"
                f"<services>{channels}</services></module></modules>"
            )
        )
        self.browser.type("#search", "ZÜRICH")
        visible = """return [...document.querySelectorAll('tbody tr')]
                         .filter(each => each.offsetParent !== null)
                         .map(each => each.querySelectorAll('td')[1].textContent)"""
        self.assertEqual(["Zürich Aktuell"], self.browser.run(visible))
        self.assertEqual(
            ["Channels"],
            self.browser.run(
                """return [...document.querySelectorAll('section:not([hidden]) h2')]
                       .map(each => each.textContent)"""
            ),
        )

    def test_a_text_of_the_document_is_never_markup(self) -> None:
        hostile = "<script>document.title='gone'</script><img src=x onerror=alert(1)>" + "w" * 500
        escaped = hostile.replace("<", "&lt;")
        self.open(
            document(
                f"<identification><headendName>{escaped}</headendName></identification>"
                f"<modules><module><mac>{escaped}</mac><name>{escaped}</name></module></modules>"
            )
        )
        self.assertEqual(hostile, self.browser.run("return document.title"))
        self.assertEqual(0, self.browser.run("return document.images.length"))
        self.assertNothingOverflows()

    def test_the_page_prints(self) -> None:
        self.open(golden("QRA-310"))
        printed = self.browser.call("/print", {})
        self.assertTrue(base64.b64decode(printed).startswith(b"%PDF"))


class RedactTest(EndToEndTest):
    def is_refused(self, model: str) -> None:
        device = self.device(model)
        before = tables(device)
        result = self.load(device, backup("show", "--redact", "-", text=golden(model)))
        self.assertRun(
            result,
            1,
            stdout=b"",
            stderr=b"No 'configuration' element found\n" * 3,
            syslog=[],
        )
        self.assertTables(before, tables(device))

    def test_the_import_refuses_a_redacted_document_and_writes_nothing(self) -> None:
        self.each(self.is_refused, [(model,) for model in models()])


if __name__ == "__main__":
    if DRIVER is None:
        print("The page is not looked at: install Debian's chromium-driver", file=sys.stderr)
    main()
