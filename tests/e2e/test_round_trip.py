"""Export, import, export: a document comes back as it was, but where the two sides do not meet."""

import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    ERROR_FILE,
    OUTPUT_FILE,
    Device,
    EndToEndTest,
    changed,
    edited,
    errors_in,
    golden,
    main,
    tables,
)
from round_trip import unchanged_import, with_input_types

ROLLED_BACK = "Error 202, Could not set configuration"
KEY_TOOL = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"

# The sample headends that an import accepts.
SOUND = ("LMV-502", "QRA-310", "RNB-K408", "WVX-AQ4", "WVX-BQ4")

# The type of each input of the RNB-K408, in the order of its document.
RNB_TYPES = [0, 0, 0, 0, 1, 1, 0, 2]


def importable(model: str) -> bytes:
    text = golden(model)
    return with_input_types(text, RNB_TYPES) if model == "RNB-K408" else text


class RoundTripTest(EndToEndTest):
    def comes_back(self, model: str) -> None:
        device = self.device(model)
        expected = changed(device, unchanged_import(model))
        files = self.files(device)
        result = self.load(device, importable(model))
        self.assertRun(result, actions=[KEY_TOOL] if model == "RNB-K408" else [])
        self.assertEqual([], errors_in(result))
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertTables(expected, tables(device))
        self.assertEqual(files, self.files(device))

        self.assertRun(self.export(device), stdout=golden(model) + b"\n", syslog=[])

        # A second import finds everything as it left it.
        self.assertRun(
            self.load(device, importable(model)),
            actions=[KEY_TOOL] if model == "RNB-K408" else [],
        )
        self.assertTables(expected, tables(device))

    def files(self, device: Device) -> dict[str, bytes]:
        """The device's files that no run is meant to touch."""
        root = device.path("/tarvo")
        return {
            str(path.relative_to(root)): path.read_bytes()
            for path in root.rglob("*")
            if path.is_file() and path.suffix != ".sqlite" and path.name != "actions.log"
        }

    def test_sample_headends_come_back_as_they_were(self) -> None:
        self.each(self.comes_back, [(model,) for model in SOUND])

    def test_what_the_program_itself_wrote_can_be_imported(self) -> None:
        device = self.device("QRA-310")
        expected = changed(device, unchanged_import("QRA-310"))
        self.assertRun(self.export(device))
        self.assertRun(self.run_program(device, OUTPUT_FILE))
        self.assertTables(expected, tables(device))

    def refuses(self, model: str, status: int, code: int, errors: list[str]) -> None:
        self.assertRefused(
            self.device(model), golden(model), status=status, code=code, errors=errors
        )

    def test_sample_headends_with_faults_are_refused(self) -> None:
        # The first has a position of a polarity that is none. The other has a service in its
        # guide that has neither network nor number.
        self.each(
            self.refuses,
            [
                ("LMV-512", 2, 101, ["Error 101, Invalid value for diseqc/polarity", ROLLED_BACK]),
                (
                    "PKD-707",
                    *(4, 103),
                    ["Error 103, ONID value must be a value between [1-65535]", ROLLED_BACK],
                ),
            ],
        )


class ReplacementTest(EndToEndTest):
    """A document restores a device whose modules have other addresses and another order."""

    SERVICES = "DELETE FROM ServiciosSalidaGlobal; DELETE FROM PIDsSalidaGlobal;"
    # Everything that a document holds of a module, set to something else.
    RESET = """
    UPDATE RedesModulos SET Atenuacion = 20;
    UPDATE EntradasGlobal SET tipoEntrada = 0, TSID = 0, ONID = 0, Activo = 0;
    UPDATE NimGlobal SET Frequency = 1000, fe = 10750, banda_FI = 0, DiSEqC = 0, RFIN_LOOP = 0,
           ScramblingID = 1, StreamID = 1, STANDBY = 1;
    UPDATE NimCOFDMGlobal SET Frequency = 0, Bandwidth = 0, Hierarchy = 0, trackingStatusEn = 0,
           TSID_Tracking = 0, ONID_Tracking = 0, PLP_ID = 7, STANDBY = 1;
    UPDATE NimQAMGlobal SET Frequency = 0, SymbolRate = 0, Constelacion = 0, STANDBY = 1;
    UPDATE SalidasLogicasGlobal SET TSID_Out = 0, ONID_Out = 0;
    UPDATE RFOutGlobal SET Frecuencia = 0, Symbol_Rate = 0, Ancho_Banda = 2, Modo_OFDM = 0,
           Intervalo_Guarda = 0, Constelacion = 0, Code_Rate = 0, Espectro_Salida = 0,
           Modo_Salida_Modulacion = 0;
    """
    # The same, where a document of the RNB-K408 does not hold it.
    RESET_FURTHER = """
    UPDATE RedesModulos SET LabelName = 'spare', ModoSalidaRF = 1 - ModoSalidaRF;
    """
    CONFIG_TABLES = (
        *("RedesModulos", "EntradasGlobal", "NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal"),
        *("SalidasLogicasGlobal", "RFOutGlobal"),
    )
    STATE_TABLES = (
        *("ModulosCabecera", "CAMInfoGlobal", "ServiciosEntradaGlobal", "TempNIMGlobal"),
        *("TempNIMCOFDMGlobal", "TempNIMQAMGlobal"),
    )

    def restores(self, model: str) -> None:
        moved = "UPDATE {} SET MAC = replace(MAC, '02:1E', 'F6:00');"
        spare = self.device(
            model,
            self.SERVICES
            + self.RESET
            + ("" if model == "RNB-K408" else self.RESET_FURTHER)
            + "UPDATE RedesModulos SET idRedMod = 100 - idRedMod;"
            + "".join(map(moved.format, self.CONFIG_TABLES)),
            state="".join(map(moved.format, self.STATE_TABLES)),
        )
        result = self.load(spare, importable(model))
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual([], errors_in(result))
        self.assertEqual(self.content(golden(model)), self.content(self.export(spare).stdout))
        # The tuners of all inputs are as awake as the inputs.
        self.assertEqual(
            [],
            self.query(
                spare,
                """SELECT * FROM EntradasGlobal
                   JOIN (SELECT fk_idEntradasGlobal AS id, STANDBY FROM NimGlobal
                         UNION ALL SELECT fk_idEntradasGlobal, STANDBY FROM NimCOFDMGlobal
                         UNION ALL SELECT fk_idEntradasGlobal, STANDBY FROM NimQAMGlobal)
                   ON id = idEntradasGlobal WHERE STANDBY = Activo""",
            ),
        )

    def content(self, text: bytes) -> list[bytes]:
        """The document as it would be with the first addresses, its modules in one order."""
        root = ElementTree.fromstring(text.replace(b"F6:00", b"02:1E"))
        modules = next(root.iter("modules"))
        modules[:] = sorted(modules, key=lambda module: module.findtext("id"))
        return [line.strip() for line in ElementTree.tostring(root, encoding="utf-8").splitlines()]

    def test_replacement_devices_are_restored(self) -> None:
        self.each(self.restores, [(model,) for model in SOUND])


class AsymmetryTest(EndToEndTest):
    """Where the two sides do not meet. Each of these is known, and told to operators."""

    def exported(self, device: Device) -> bytes:
        result = self.export(device)
        self.assertEqual((0, b""), (result.status, result.stderr))
        return result.stdout

    def refused(self, device: Device, text: bytes, status: int, code: int, *errors: str) -> None:
        self.assertRefused(device, text, status=status, code=code, errors=[*errors, ROLLED_BACK])

    def test_pls_modes_gold_and_root_change_places(self) -> None:
        device = self.device("QRA-310", "UPDATE NimGlobal SET ModoPLS = 1 WHERE fe = 12188")
        for mode, stored, after in (("gold", 1, 2), ("root", 2, 1)):
            text = self.exported(device)
            self.assertEqual(1, text.count(f"<PLSmode>{mode}<".encode()))
            self.assertRun(self.load(device, text))
            self.assertEqual(
                [(after, 12188, 1588, 1)],
                self.query(
                    device,
                    "SELECT ModoPLS, fe, Frequency, Estado FROM NimGlobal WHERE ModoPLS <> 0",
                ),
            )

    def test_inputs_of_one_model_are_exported_without_the_type_that_import_requires(self) -> None:
        self.refused(
            *(self.device("RNB-K408"), golden("RNB-K408"), 5, 202),
            "Error 401, Input has no type field",
        )

    def test_cable_outputs_of_one_model_are_refused(self) -> None:
        # Their mode is not exported, and so is read as DVB-T.
        device = self.device("RNB-K408", "UPDATE RedesModulos SET ModoSalidaRF = 1")
        text = with_input_types(self.exported(device), RNB_TYPES)
        # Code 2, "64 QAM", is the same in both; 1 and 0 are not.
        self.refused(
            *(device, text, 5, 202), "Error 402, Invalid value for module/output/constellation DVBT"
        )

    def test_module_without_inputs_is_refused(self) -> None:
        device = self.device("WVX-BQ4", "DELETE FROM EntradasGlobal WHERE TSID > 2000")
        text = self.exported(device)
        self.assertEqual(1, text.count(b"<inputs/>"))
        self.refused(device, text, 3, 102, "Error 102, No module inputs found")

    def test_module_without_outputs_is_refused(self) -> None:
        device = self.device("WVX-BQ4", "DELETE FROM SalidasLogicasGlobal WHERE TSID_Out > 804")
        text = self.exported(device)
        self.assertEqual(1, text.count(b"<outputs/>"))
        self.refused(device, text, 3, 102, "Error 102, No module outputs found")

    def test_output_without_a_modulator_is_refused(self) -> None:
        device = self.device("WVX-BQ4", "DELETE FROM RFOutGlobal WHERE Frecuencia = 346000")
        self.refused(
            *(device, self.exported(device), 5, 202), "Error 101, Output could not be found"
        )

    def test_leaves_of_several_tuner_rows_all_end_in_the_first(self) -> None:
        device = self.device(
            "QRA-310",
            """
            INSERT INTO NimGlobal
                (MAC, Frequency, SymbolRate, banda_FI, fe, STANDBY, DiSEqC, RFIN_LOOP,
                 fk_idEntradasGlobal, fk_idNim, ModoPLS, ScramblingID, StreamID, Estado)
            SELECT MAC, 1500, 22000, 0, 11250, 0, 0, 1, idEntradasGlobal, 2, 0, 7, 3, 0
            FROM EntradasGlobal WHERE TSID = 1072
            """,
        )
        expected = changed(
            device,
            unchanged_import("QRA-310")
            + """UPDATE NimGlobal SET fe = 11250, Frequency = 1500, banda_FI = 0, DiSEqC = 0,
                        ScramblingID = 7, StreamID = 3, Estado = 1
                 WHERE fe = 12188""",
        )
        text = self.exported(device)
        self.assertEqual(1, text.count(b"<frequency>12188<"))
        self.assertEqual(1, text.count(b"<frequency>11250<"))
        self.assertRun(self.load(device, text))
        self.assertTables(expected, tables(device))
        self.assertEqual(2, self.exported(device).count(b"<frequency>11250<"))

    def test_failing_network_script_is_forgotten_by_the_second_try(self) -> None:
        device = self.device("WVX-BQ4")
        device.path("/tarvo/sim/exit/WAN_from_DB.sh").write_text("1\n")
        text = edited(golden("WVX-BQ4"), "<dns2>9.9.9.9<", "<dns2>8.8.8.8<")
        result = self.load(device, text)
        self.assertRun(result, 0, stderr=b"Error: 203\n", actions=["WAN_from_DB.sh"])
        self.assertEqual("Error: 203", device.path(ERROR_FILE).read_text())
        self.assertBytes(text + b"\n", self.exported(device))

    def test_frequency_out_of_range_is_tried_three_times_and_the_rest_is_stored(self) -> None:
        device = self.device("QRA-310")
        expected = changed(
            device,
            unchanged_import("QRA-310")
            + """UPDATE configuracionWebGlobal SET valor = 'x'
                 WHERE nombre = 'identificacion_codCanal'""",
        )
        text = edited(golden("QRA-310"), "<frequency>12603<", "<frequency>9000<")
        text = edited(text, "<clientID>HM-204<", "<clientID>x<")
        result = self.load(device, text)
        self.assertRun(result, 6, stderr=b"Error: 401\n" * 3)
        message = "Resulting intermediate frequency is out of range."
        self.assertEqual(3, sum(message in error for error in errors_in(result)))
        self.assertEqual(3, len(errors_in(result)))
        self.assertTables(expected, tables(device))

    def test_tuner_without_a_band_is_refused(self) -> None:
        device = self.device("QRA-310", "UPDATE NimGlobal SET banda_FI = 3 WHERE fe = 11538")
        text = self.exported(device)
        self.assertEqual(1, text.count(b"<band/>\n\t\t\t\t\t<PLSmode>"))
        self.refused(device, text, 5, 202, "Error 401, Invalid value for module/input/band")

    def test_numbers_of_a_network_that_are_zero_come_back_empty_on_another_device(self) -> None:
        device = self.device("WVX-BQ4", "DELETE FROM RedesCabecera")
        self.assertRun(self.load(device, golden("WVX-BQ4")))
        text = golden("WVX-BQ4")
        for element in (
            *("tvType", "cellID", "forceServiceName", "autoServiceList", "lcnOffset"),
            *("tipoNITPatron", "nitPatron", "versionNITPatron"),
        ):
            text = edited(text, f"<{element}>0</{element}>", f"<{element}/>")
        self.assertBytes(text + b"\n", self.exported(device))

    def test_network_and_stream_of_a_home_channel_are_not_imported(self) -> None:
        device = self.device("QRA-310", "DELETE FROM MantenimientoHomeChannelsGlobal")
        self.assertRun(self.load(device, golden("QRA-310")))
        # Their defaults, 1 and 1072, are those of the first channel.
        channels, rest = golden("QRA-310").split(b"</homeChannels>")
        channels = edited(
            channels,
            "<tsid>1010</tsid>\n\t\t</homechannel>",
            "<tsid>1072</tsid>\n\t\t</homechannel>",
        )
        channels = edited(
            channels,
            "<tsid>1210</tsid>\n\t\t</homechannel>",
            "<tsid>1072</tsid>\n\t\t</homechannel>",
        )
        self.assertBytes(channels + b"</homeChannels>" + rest + b"\n", self.exported(device))

    def test_first_percent_sign_of_a_changed_text_is_lost(self) -> None:
        text = edited(
            golden("LMV-502"), "<outputName>Golo &quot;Um&quot;<", "<outputName>5% de 9%<"
        )
        device = self.device("LMV-502")
        self.assertRun(self.load(device, text))
        came_back = edited(text, "<outputName>5% de 9%<", "<outputName>5  de 9%<")
        self.assertBytes(came_back + b"\n", self.exported(device))

    def test_text_of_blanks_only_comes_back_empty(self) -> None:
        device = self.device("WVX-BQ4", "UPDATE RedesModulos SET LabelName = '  ' WHERE Master = 1")
        text = self.exported(device)
        self.assertRun(self.load(device, text))
        self.assertBytes(edited(text, "<name>  </name>", "<name/>"), self.exported(device))


if __name__ == "__main__":
    main()
