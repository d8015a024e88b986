"""What must hold for every headend, tried on hundreds that are made up at random."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    Device,
    EndToEndTest,
    changed,
    edited,
    errors_in,
    main,
    models,
    tables,
)
from headends import headend
from round_trip import unchanged_import, with_input_types

SEEDS_PER_MODEL = 30


class GeneratedHeadendTest(EndToEndTest):
    def made_up(self, model: str, seed: int) -> Device:
        sql = headend(model, seed)
        return self.device(
            model, sql["config_global"], state=sql["temp_global"], vsec=sql["vsec_global"]
        )

    def exported(self, device: Device) -> bytes:
        result = self.export(device)
        self.assertRun(result, syslog=[])
        return result.stdout

    def importable(self, device: Device, text: bytes) -> bytes:
        if device.model != "RNB-K408":
            return text
        types = self.query(
            device,
            """SELECT coalesce(tipoEntrada, 0)
               FROM EntradasGlobal JOIN RedesModulos USING (MAC)
               ORDER BY idRedMod, idEntradasGlobal""",
        )
        return with_input_types(text, [number for (number,) in types])

    def comes_back(self, label: str, model: str, seed: int) -> None:
        device = self.made_up(model, seed)
        first = self.exported(device)
        expected = changed(device, unchanged_import(model))
        result = self.load(device, self.importable(device, first))
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual([], errors_in(result))
        self.assertTables(expected, tables(device))
        self.assertBytes(first, self.exported(device))

    def is_undone(self, label: str, model: str, seed: int) -> None:
        device = self.made_up(model, seed)
        text = self.importable(device, self.exported(device))
        # Changes everywhere, and at the very end what is not allowed.
        for element in ("location", "hour", "ip", "name", "attenuation", "olcn", "order"):
            text = text.replace(f"<{element}>".encode(), f"<{element}>1".encode())
        bad = "<preferredLanguages><language>x</language><bad/></preferredLanguages>"
        text = edited(text, "</configuration>", bad + "</configuration>")
        self.assertRefused(
            device,
            text,
            status=2,
            code=101,
            errors=["Error 101, language expected", "Error 202, Could not set configuration"],
        )

    def test_documents_come_back_as_they_were(self) -> None:
        self.each(
            self.comes_back,
            [
                (f"{model}, seed {seed}", model, seed)
                for seed in range(SEEDS_PER_MODEL)
                for model in models()
            ],
        )

    def test_failed_imports_change_nothing(self) -> None:
        self.each(
            self.is_undone,
            [
                (f"{model}, seed {seed}", model, seed)
                for seed in range(1000, 1000 + SEEDS_PER_MODEL // 6)
                for model in models()
            ],
        )


if __name__ == "__main__":
    main()
