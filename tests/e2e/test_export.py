"""Export: the whole document of each sample headend, and what surrounds it."""

import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    ERROR_FILE,
    OUTPUT_FILE,
    EndToEndTest,
    edited,
    golden,
    main,
    models,
    tables,
)


class GoldenDocumentTest(EndToEndTest):
    def check(self, model: str) -> None:
        device = self.device(model)
        before = tables(device)
        result = self.export(device)
        self.assertRun(result, stdout=golden(model) + b"\n", syslog=[])
        self.assertBytes(golden(model), device.path(OUTPUT_FILE).read_bytes())
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertEqual(before, tables(device))

    def test_sample_headend_of_every_model(self) -> None:
        self.assertEqual(7, len(models()))
        self.each(self.check, [(model,) for model in models()])


class OutputFileTest(EndToEndTest):
    def test_longer_earlier_file_is_replaced_whole(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(OUTPUT_FILE).write_bytes(golden("QRA-310") * 2)
        self.assertRun(self.export(device))
        self.assertBytes(golden("WVX-BQ4"), device.path(OUTPUT_FILE).read_bytes())

    def test_file_that_cannot_be_created_fails_after_the_document_was_printed(self) -> None:
        device = self.device("LMV-502")
        device.path(OUTPUT_FILE).mkdir()
        self.assertRun(
            self.export(device),
            1,
            stdout=golden("LMV-502") + b"\n",
            stderr=b"Unable to create ConfigurationXML file\n",
            syslog=[],
        )
        self.assertFalse(device.path(ERROR_FILE).exists())


class GeneratedTableTest(EndToEndTest):
    def test_date_after_2038_is_written_like_any_other(self) -> None:
        for seconds, utc in (
            (0x7FFFFFFF, "19-01-38 03:14:07"),
            (0x80000000, "19-01-38 03:14:08"),
            (2208988800, "01-01-40 00:00:00"),
        ):
            with self.subTest(utc):
                device = self.device("QRA-310")
                table = device.path("/tarvo/datosWeb/tablasSI/NIT_table_12345")
                os.utime(table, (seconds, seconds))
                document = edited(golden("QRA-310"), "12-03-24 04:30:00", utc)
                self.assertRun(self.export(device), stdout=document + b"\n", syslog=[])


class IdentityTest(EndToEndTest):
    """Who the device is must be known before anything else is done."""

    def refused(self, name: str, script: str, text: bytes, reason: str) -> None:
        for arguments in ((), ("/tmp/document.xml",)):
            device = self.device("QRA-310")
            device.path("/tmp/document.xml").write_bytes(golden("LMV-502"))
            path = device.path(f"/tarvo/script/{script}")
            path.write_bytes(text)
            before = tables(device)
            result = self.run_program(device, *arguments)
            self.assertEqual((134, b""), (result.status, result.stdout))
            self.assertIn(reason, result.stderr.decode())
            self.assertEqual([], result.syslog)
            self.assertEqual([], result.actions)
            self.assertFalse(device.path(ERROR_FILE).exists())
            self.assertFalse(device.path(OUTPUT_FILE).exists())
            self.assertEqual(before, tables(device))

    def test_process_is_aborted_without_an_identity(self) -> None:
        serial, mac, model = (
            "Could not read Serial Number",
            "Could not read MAC",
            "Could not read model",
        )
        self.each(
            self.refused,
            [
                ("second line is not OK", "SERIAL", b"#!/bin/sh\necho A123\necho KO\n", serial),
                ("a line of 128", "SERIAL", b"#!/bin/sh\necho %0128d\necho OK\n" % 0, serial),
                ("is killed", "MAC", b"#!/bin/sh\necho 02:1E\nkill -9 $$\necho OK\n", mac),
                ("cannot be run", "MODELO", b"#!/no/such/shell\n", model),
            ],
        )


if __name__ == "__main__":
    main()
