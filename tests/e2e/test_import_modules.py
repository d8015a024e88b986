"""Import of modules with their inputs, outputs and services, and of the CAM list."""

import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    ERROR_FILE,
    NEWS_ERROR,
    EndToEndTest,
    changed,
    document,
    errors_in,
    main,
    tables,
)

# Modules of the QRA-310: two satellite inputs looped through; two that are not; satellite and
# terrestrial with DVB-C outputs; terrestrial and (asleep) cable.
LOOPED, APART, MIXED, EARTH = range(1, 5)
KIND = {LOOPED: 2, APART: 13, MIXED: 7, EARTH: 7}


def only(module: int) -> str:
    """Statements that leave a headend with one of its modules."""
    return f"DELETE FROM RedesModulos WHERE idRedMod <> {module};"


def modules(module: int, children: str) -> bytes:
    return document(
        f"<modules><module><mac>02:1E:31:0A:00:0{module}</mac><family>36</family>"
        f"<model>{KIND[module]}</model>{children}</module></modules>"
    )


def inputs(module: int, number: int, kind: int, children: str) -> bytes:
    return modules(
        module,
        f"<inputs><input><inputId>{number}</inputId><type>{kind}</type>{children}</input></inputs>",
    )


def outputs(module: int, number: int, children: str, *, before: str = "") -> bytes:
    return modules(
        module,
        f"{before}<outputs><output><outputId>{number}</outputId>{children}</output></outputs>",
    )


class ModuleTest(EndToEndTest):
    def test_settings_of_a_module(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            modules(
                LOOPED,
                "<Attenuation>7dB</Attenuation><NAME>Norte &amp; 'sur'</NAME><id>x</id>"
                "<dvbNetworkId>2</dvbNetworkId><modoSalidaRF>1</modoSalidaRF>",
            ),
            """UPDATE RedesModulos SET Atenuacion = 7, LabelName = 'Norte & ''sur''', RED = 2,
                      ModoSalidaRF = 1, estado = 1""",
            prints=["Processing: modules"],
            logs=[
                "New Module parameters: attenuation: 7 name: Norte & 'sur' dvbNetworkId: 2"
                " modoSalidaRF: 1"
            ],
        )

    def test_unchanged_module_is_logged_and_not_marked(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            modules(LOOPED, "<attenuation>none</attenuation><dvbNetworkId>01</dvbNetworkId>"),
            logs=["New Module parameters: attenuation: 0 dvbNetworkId: 1"],
        )

    def test_modules_are_bound_by_address_whatever_their_order(self) -> None:
        text = "".join(
            f"<MODULE><MAC>02:1E:52:10:00:0{letter}</MAC><family>36</family><model>{model}</model>"
            f"<isMaster>9</isMaster><name>{name}</name></MODULE>"
            for letter, model, name in (("C", 9, "third"), ("A", 2, "first"), ("B", 9, "second"))
        )
        self.assertLoads(
            self.device("LMV-502"),
            document(f"<modules>{text}</modules>"),
            """UPDATE RedesModulos SET estado = 1,
                      LabelName = CASE idRedMod WHEN 1 THEN 'first' WHEN 2 THEN 'second'
                                  ELSE 'third' END""",
            logs=[f"New Module parameters:  name: {name}" for name in ("third", "first", "second")],
        )

    def test_unknown_address_takes_the_first_free_module_of_its_kind(self) -> None:
        # Kinds: one 36/2 master, two 36/9. One of these is named by its address.
        text = (
            "<module><mac>unknown</mac><family>36</family><model>9</model><isMaster>0</isMaster>"
            "<name>unknown</name></module>"
            "<module><mac/><mac>02:1E:52:10:00:0B</mac><family>36</family><model>9</model>"
            "<name>known</name></module>"
            "<module><family>36</family><model>2</model><isMaster>1</isMaster><mac>other</mac>"
            "<name>master</name></module>"
        )
        # The empty address counts as one that was read, so a fourth module makes up for it.
        self.assertLoads(
            self.device(
                "LMV-502",
                """INSERT INTO RedesModulos (idRedMod, MAC, Familia, Modelo, Master)
                   SELECT 4, '02:1E:52:10:00:0D', 36, 9, 0""",
            ),
            document(f"<modules>{text}</modules>"),
            """UPDATE RedesModulos SET estado = 1,
                      LabelName = CASE idRedMod WHEN 1 THEN 'master' WHEN 2 THEN 'known'
                                  ELSE 'unknown' END
               WHERE idRedMod < 4""",
        )

    def test_address_that_stands_twice_binds_the_second_by_kind(self) -> None:
        again = (
            "<module><mac>02:1E:52:10:00:0C</mac><family>36</family><model>9</model>"
            "<isMaster>0</isMaster><name>{}</name></module>"
        )
        self.assertLoads(
            self.device("LMV-502", "DELETE FROM RedesModulos WHERE idRedMod = 1"),
            document(f"<modules>{again.format('one')}{again.format('two')}</modules>"),
            """UPDATE RedesModulos SET estado = 1,
                      LabelName = iif(idRedMod = 3, 'one', 'two')""",
        )

    def test_amount_family_and_model_do_not_matter_on_one_model(self) -> None:
        self.assertLoads(
            self.device("RNB-K408"),
            document(
                "<modules><module><mac>02:1E:40:80:00:03</mac><family>1</family><model>1</model>"
                "<attenuation>9</attenuation></module></modules>"
            ),
            "UPDATE RedesModulos SET Atenuacion = 9, estado = 1 WHERE idRedMod = 3",
        )

    def test_unknown_address_takes_any_free_module_on_one_model(self) -> None:
        self.assertLoads(
            self.device("RNB-K408"),
            document(
                "<modules><module><mac>other</mac><family>1</family><attenuation>9</attenuation>"
                "</module><module><mac>02:1E:40:80:00:01</mac></module></modules>"
            ),
            "UPDATE RedesModulos SET Atenuacion = 9, estado = 1 WHERE idRedMod = 2",
        )


class InputTest(EndToEndTest):
    def accepted(self, label: str, module: int, setup: str, text: bytes, sql: str) -> None:
        self.assertLoads(self.device("QRA-310", only(module) + setup), text, sql)

    def test_satellite_input(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            inputs(
                LOOPED,
                1,
                0,
                "<active>1</active><onid>2</onid><tsid>1011</tsid><frequency>11000</frequency>"
                "<diseqc>1</diseqc><band>LOW</band><PLSmode>auto</PLSmode>"
                "<scramblingID>5</scramblingID><streamID>3</streamID><PLPID>9</PLPID>"
                "<inputStatus><signalQuality>Good</signalQuality></inputStatus>",
            ),
            """
            UPDATE EntradasGlobal SET ONID = 2, TSID = 1011, Estado = 1 WHERE TSID = 1010;
            UPDATE NimGlobal SET fe = 11000, Frequency = 1250, ScramblingID = 5, StreamID = 3,
                   Estado = 1 WHERE fe = 10729
            """,
            prints=[
                "Processing: modules",
                "Processing: Inputs",
                "Input: Type = 0",
                "Input: ONID = 2",
                "Input: TSID = 1011",
            ],
            logs=[
                "New INPUT parameters:  type: 0 onid: 2 tsid: 1011 frequency: 11000 band: LOW"
                " PLSmode: auto scramblingID: 5 streamID: 3 PLPID: 9",
                "New Module parameters: ",
            ],
        )

    def test_terrestrial_input(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(EARTH)),
            inputs(
                EARTH,
                1,
                1,
                "<frequency>500000</frequency><bandwidth>6 MHz</bandwidth>"
                "<hierarchy>High Priority</hierarchy><PLPID>auto</PLPID><autoScan>1</autoScan>"
                "<onidScan>3</onidScan><tsidScan>4</tsidScan><diseqc>3</diseqc>"
                "<band>sideways</band><symbolRate>1</symbolRate><rfLoop>1</rfLoop>",
            ),
            """
            UPDATE NimCOFDMGlobal
            SET Frequency = 500000, Bandwidth = 0, Hierarchy = 0, PLP_ID = -2, trackingStatusEn = 1,
                ONID_Tracking = 3, TSID_Tracking = 4, Estado = 1
            WHERE Frequency = 690000
            """,
            logs=[
                "New INPUT parameters:  type: 1 frequency: 500000 bandwidth: 6 MHz"
                " hierarchy: High Priority PLPID: auto autoScan: 1 onidScan: 3 tsidScan: 4"
                " band: sideways symbolRate: 1 rfLoop: 1",
                "New Module parameters: ",
            ],
        )

    def test_cable_input_that_wakes_up(self) -> None:
        # Its satellite tuner, still on the high band, is recomputed from its stored frequency.
        self.assertLoads(
            self.device("QRA-310", only(EARTH)),
            inputs(
                EARTH,
                2,
                2,
                "<active>1</active><frequency>410000</frequency><symbolRate>6900</symbolRate>"
                "<constelacion>3</constelacion><bandwidth>none</bandwidth>",
            ),
            """
            UPDATE EntradasGlobal SET Activo = 1, Estado = 1 WHERE TSID = 1 AND ONID = 160;
            UPDATE NimQAMGlobal SET Frequency = 410000, SymbolRate = 6900, Constelacion = 3
            WHERE Frequency = 402000;
            UPDATE NimGlobal SET STANDBY = 0, Estado = 1 WHERE STANDBY = 1;
            UPDATE NimCOFDMGlobal SET STANDBY = 0, Estado = 1 WHERE STANDBY = 1;
            UPDATE NimQAMGlobal SET STANDBY = 0, Estado = 1 WHERE STANDBY = 1
            """,
            logs=[
                "New INPUT parameters:  type: 2STANDBY: 0 frequency: 410000 symbolRate: 6900"
                " constelacion: 3 bandwidth: none",
                "New Module parameters: ",
            ],
        )

    def test_input_changes_its_type(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(EARTH)),
            inputs(EARTH, 1, 2, "<frequency>306000</frequency><bandwidth>x</bandwidth>"),
            "UPDATE EntradasGlobal SET tipoEntrada = 2, Estado = 1 WHERE TSID = 40",
        )

    def test_tuners_that_are_missing_are_left_out_when_an_input_falls_asleep(self) -> None:
        self.assertLoads(
            self.device(
                "QRA-310",
                only(LOOPED) + "DELETE FROM NimQAMGlobal; DELETE FROM NimCOFDMGlobal;",
            ),
            inputs(LOOPED, 2, 0, "<active>0</active>"),
            """
            UPDATE EntradasGlobal SET Activo = 0, Estado = 1 WHERE TSID = 1012;
            UPDATE NimGlobal SET STANDBY = 1, Estado = 1 WHERE fe = 10773
            """,
        )

    def test_values_at_their_bounds(self) -> None:
        def sat(values: str, where: str = "fe = 12188") -> str:
            return f"UPDATE NimGlobal SET {values}, Estado = 1 WHERE {where}"

        ter = "UPDATE NimCOFDMGlobal SET {}, Estado = 1 WHERE Frequency = 690000"
        low = only(APART) + "UPDATE NimGlobal SET DiSEqC = 9 WHERE fe = 12188;"
        self.each(
            self.accepted,
            [
                (
                    "lowest intermediate frequency of the high band",
                    *(APART, "", inputs(APART, 1, 0, "<frequency>11550</frequency>")),
                    sat("fe = 11550, Frequency = 950"),
                ),
                (
                    "highest intermediate frequency of the high band",
                    *(APART, "", inputs(APART, 1, 0, "<frequency>12750</frequency>")),
                    sat("fe = 12750, Frequency = 2150"),
                ),
                (
                    "lowest intermediate frequency of the low band",
                    *(APART, low),
                    inputs(APART, 1, 0, "<band>low</band><frequency>10700</frequency>"),
                    sat("fe = 10700, Frequency = 950, banda_FI = 0"),
                ),
                (
                    "highest intermediate frequency of the low band",
                    *(APART, low),
                    inputs(APART, 1, 0, "<frequency>11900</frequency><band>low</band>"),
                    sat("fe = 11900, Frequency = 2150, banda_FI = 0"),
                ),
                (
                    "position brings its band",
                    *(APART, ""),
                    inputs(
                        *(APART, 1, 0),
                        "<frequency>11000</frequency><diseqc>1</diseqc><band>high</band>",
                    ),
                    sat("fe = 11000, Frequency = 1250, banda_FI = 0, DiSEqC = 1"),
                ),
                (
                    "without a frequency the received one is recomputed",
                    *(APART, "", inputs(APART, 2, 0, "<diseqc>4</diseqc>")),
                    sat("fe = 12388, banda_FI = 1, DiSEqC = 4", "fe = 11538"),
                ),
                (
                    "without an oscillator frequency nothing is computed",
                    *(APART, "DELETE FROM configuracionWebGlobal WHERE nombre = 'LNB_fa'"),
                    inputs(APART, 1, 0, "<frequency>99999</frequency>"),
                    sat("fe = 99999"),
                ),
                (
                    "loop of the second input copies position and band",
                    *(APART, "", inputs(APART, 2, 0, "<rfLoop>1</rfLoop>")),
                    sat("RFIN_LOOP = 1, DiSEqC = 4, banda_FI = 1, fe = 12388", "fe = 11538"),
                ),
                (
                    "loop of the second input overrules what the document gives",
                    *(LOOPED, ""),
                    inputs(
                        *(LOOPED, 2, 0),
                        "<diseqc>4</diseqc><frequency>10800</frequency><band>high</band>",
                    ),
                    sat("fe = 10800, Frequency = 1050", "fe = 10773"),
                ),
                (
                    "loop of the second input ends",
                    *(LOOPED, "", inputs(LOOPED, 2, 0, "<rfLoop>0</rfLoop>")),
                    sat("RFIN_LOOP = 0", "fe = 10773"),
                ),
                (
                    "loop of the first input is stored as none",
                    *(APART, "UPDATE NimGlobal SET RFIN_LOOP = 1 WHERE fe = 12188"),
                    inputs(APART, 1, 0, "<rfLoop>7</rfLoop>"),
                    sat("RFIN_LOOP = 0"),
                ),
                (
                    "change of the first input reaches the looped second",
                    *(LOOPED, ""),
                    inputs(LOOPED, 1, 0, "<diseqc>4</diseqc><frequency>12000</frequency>"),
                    sat("fe = 12000, Frequency = 1400, DiSEqC = 4, banda_FI = 1", "fe = 10729")
                    + ";"
                    + sat("DiSEqC = 4, banda_FI = 1", "fe = 10773"),
                ),
                (
                    "change of the first input does not reach one that is not looped",
                    *(APART, ""),
                    inputs(APART, 1, 0, "<diseqc>2</diseqc><frequency>12000</frequency>"),
                    sat("fe = 12000, Frequency = 1400, DiSEqC = 2"),
                ),
                (
                    "PLS root",
                    *(APART, "", inputs(APART, 1, 0, "<PLSmode>root</PLSmode>")),
                    sat("ModoPLS = 1"),
                ),
                (
                    "PLS gold",
                    *(APART, "", inputs(APART, 1, 0, "<PLSmode>gold</PLSmode>")),
                    sat("ModoPLS = 2"),
                ),
                (
                    "PLS auto",
                    *(APART, "UPDATE NimGlobal SET ModoPLS = 1 WHERE fe = 12188"),
                    inputs(APART, 1, 0, "<PLSmode>auto</PLSmode>"),
                    sat("ModoPLS = 0"),
                ),
                (
                    "stream auto",
                    *(MIXED, "", inputs(MIXED, 1, 0, "<streamID>auto</streamID>")),
                    sat("StreamID = -2", "fe = 12603"),
                ),
                (
                    "stream that is no number",
                    *(MIXED, "", inputs(MIXED, 1, 0, "<streamID>Auto</streamID>")),
                    sat("StreamID = 0", "fe = 12603"),
                ),
                (
                    "integers that are the same in another form",
                    *(MIXED, ""),
                    inputs(
                        *(MIXED, 1, 0),
                        "<scramblingID>008</scramblingID><streamID>+4</streamID><onid> 1</onid>",
                    ),
                    "",
                ),
                (
                    "text form of a changed scrambling identifier is stored",
                    *(MIXED, "", inputs(MIXED, 1, 0, "<scramblingID>9x</scramblingID>")),
                    sat("ScramblingID = '9x'", "fe = 12603"),
                ),
                (
                    "type that is no number counts as satellite",
                    *(APART, ""),
                    modules(
                        APART,
                        "<inputs><INPUT><INPUTID>1</INPUTID><TYPE>dish</TYPE></INPUT></inputs>",
                    ),
                    "",
                ),
                (
                    "first of two identifiers counts",
                    *(APART, ""),
                    inputs(APART, 1, 0, "<inputId>2</inputId><type>0</type><onid>3</onid>"),
                    "UPDATE EntradasGlobal SET ONID = 3, Estado = 1 WHERE TSID = 1072",
                ),
                (
                    "7 MHz",
                    *(EARTH, "", inputs(EARTH, 1, 1, "<bandwidth>7 MHz</bandwidth>")),
                    ter.format("Bandwidth = 1"),
                ),
                (
                    "8 MHz",
                    *(EARTH, "UPDATE NimCOFDMGlobal SET Bandwidth = 0 WHERE Frequency = 690000"),
                    inputs(EARTH, 1, 1, "<bandwidth>8 MHz</bandwidth>"),
                    ter.format("Bandwidth = 2"),
                ),
                (
                    "low priority",
                    *(EARTH, "UPDATE NimCOFDMGlobal SET Hierarchy = 0 WHERE Frequency = 690000"),
                    inputs(EARTH, 1, 1, "<hierarchy>Low Priority</hierarchy>"),
                    ter.format("Hierarchy = 1"),
                ),
                (
                    "stream pipe",
                    *(EARTH, "", inputs(EARTH, 1, 1, "<PLPID>255</PLPID>")),
                    ter.format("PLP_ID = 255"),
                ),
                ("no inputs listed", APART, "", modules(APART, "<inputs/>"), ""),
            ],
        )


class OutOfRangeTest(EndToEndTest):
    """A frequency that the tuner cannot reach is reported, but what went before is kept."""

    MESSAGE = (
        "Error 401, Resulting intermediate frequency is out of range."
        " Please check frequency and diseqc/band/rfLoop values."
    )

    def check(self, label: str, text: bytes, sql: str) -> None:
        device = self.device("QRA-310", only(APART))
        expected = changed(device, sql)
        started = time.monotonic()
        result = self.load(device, text)
        self.assertGreater(time.monotonic() - started, 3)
        self.assertRun(result, 6, stderr=b"Error: 401\n" * 3, actions=["WAN_from_DB.sh"])
        self.assertEqual([self.MESSAGE] * 3, errors_in(result))
        self.assertEqual("Error: 401", device.path(ERROR_FILE).read_text())
        self.assertTables(expected, tables(device))

    def test_import_commits_and_is_tried_three_times(self) -> None:
        network = b"<network><ip>kept</ip></network>"
        kept = "UPDATE configuracionWebGlobal SET valor = 'kept' WHERE nombre = 'network_IP';"
        # The first input's own row is kept, its tuners are not, and the second is not looked at.
        row = "UPDATE EntradasGlobal SET TSID = 5, Estado = 1 WHERE TSID = 1072;"
        # The rest of the module is, and so are the sections that follow.
        name = "UPDATE RedesModulos SET LabelName = 'kept', estado = 1;"
        rest = b"<name>kept</name></module>"
        second = b"<input><inputId>2</inputId><type>0</type><onid>9</onid></input></inputs>"

        def text(children: str) -> bytes:
            one = inputs(APART, 1, 0, "<tsid>5</tsid>" + children)
            one = one.replace(b"</inputs>", second).replace(b"</module>", rest)
            return one.replace(b"</configuration>", network + b"</configuration>")

        self.each(
            self.check,
            [
                (children, text(children), kept + row + name)
                for children in (
                    "<frequency>11549</frequency>",
                    "<frequency>12751</frequency>",
                    "<frequency/>",
                    "<frequency>high</frequency>",
                    "<diseqc>1</diseqc><frequency>10699</frequency>",
                    "<diseqc>1</diseqc><frequency>11901</frequency>",
                )
            ],
        )


class OutputTest(EndToEndTest):
    def accepted(self, label: str, model: str, setup: str, text: bytes, sql: str) -> None:
        self.assertLoads(self.device(model, setup), text, sql)

    def test_output_with_all_that_it_can_hold(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            outputs(
                LOOPED,
                1,
                "<active>0</active><type>9</type><onid>5</onid><tsid>6</tsid>"
                "<frequency>600000</frequency><symbolRate>6875</symbolRate><modeOFDM>2k</modeOFDM>"
                "<bandwidth>7 mhz</bandwidth><guardInterval>1/4</guardInterval>"
                "<constellation>16 qam</constellation><codeRate>7/8</codeRate>"
                "<formatIQ>REVERSED</formatIQ>",
            ),
            """
            UPDATE SalidasLogicasGlobal SET ONID_Out = 5, TSID_Out = 6, Estado = 1
            WHERE TSID_Out = 101;
            UPDATE RFOutGlobal
            SET Modo_Salida_Modulacion = 0, Frecuencia = 600000, Symbol_Rate = 6875, Modo_OFDM = 0,
                Ancho_Banda = 1, Intervalo_Guarda = 3, Constelacion = 1, Code_Rate = 4,
                Espectro_Salida = 1, Estado = 1
            WHERE Frecuencia = 474000
            """,
            prints=["Processing: modules", "Processing: Outputs"],
            logs=[
                "New OUTPUT parameters:  active: 0 onid: 5 tsid: 6 frequency: 600000"
                " symbolRate: 6875 modeOFDM: 2k bandwidth: 7 mhz guardInterval: 1/4"
                " constellation: 16 qam codeRate: 7/8formatIQ: REVERSED",
                "New Module parameters: ",
            ],
        )

    def test_every_text_of_every_code(self) -> None:
        codes = {
            ("modeOFDM", "Modo_OFDM"): ("2K", "8K"),
            ("bandwidth", "Ancho_Banda"): ("8 MHz", "7 MHz", "6 MHz"),
            ("guardInterval", "Intervalo_Guarda"): ("1/32", "1/16", "1/8", "1/4"),
            ("codeRate", "Code_Rate"): ("1/2", "2/3", "3/4", "5/6", "7/8"),
            ("formatIQ", "Espectro_Salida"): ("Normal", "Reversed"),
            ("constellation", "Constelacion"): ("QPSK", "16 QAM", "64 QAM"),
        }
        cable = ("16 QAM", "32 QAM", "64 QAM", "128 QAM", "256 QAM")
        cases = []
        for (element, column), texts in codes.items():
            cases += [(LOOPED, "", element, column, code, text) for code, text in enumerate(texts)]
        mode = "<modoSalidaRF>1</modoSalidaRF>"
        for code, text in enumerate(cable):
            cases.append((MIXED, mode, "constellation", "Constelacion", code, text))
        # Without a mode that came before, the constellations are those of DVB-T.
        cases.append((MIXED, "", "constellation", "Constelacion", 0, "qpsk"))
        mode = "<modoSalidaRF>0</modoSalidaRF>"
        cases.append((LOOPED, mode, "constellation", "Constelacion", 0, "qpsk"))
        self.each(
            self.accepted,
            [
                (
                    f"{element} {text} after {before!r}",
                    "QRA-310",
                    only(module) + f"UPDATE RFOutGlobal SET {column} = 9",
                    outputs(module, 2, f"<{element}>{text}</{element}>", before=before),
                    f"""UPDATE RFOutGlobal SET {column} = {code}, Estado = 1
                        WHERE Frecuencia = {482000 if module == LOOPED else 314000}""",
                )
                for module, before, element, column, code, text in cases
            ],
        )

    def test_mode_that_comes_after_the_outputs_is_too_late_for_them(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(MIXED)),
            modules(
                MIXED,
                "<outputs><OUTPUT><OUTPUTID>1</OUTPUTID><constellation>64 QAM</constellation>"
                "</OUTPUT></outputs><modoSalidaRF>0</modoSalidaRF>",
            ),
            """
            UPDATE RFOutGlobal SET Constelacion = 2, Estado = 1 WHERE Frecuencia = 306000;
            UPDATE RedesModulos SET ModoSalidaRF = 0, estado = 1
            """,
        )

    def test_active_is_stored_as_three_or_nothing(self) -> None:
        def rf(values: str) -> str:
            return f"UPDATE RFOutGlobal SET {values} WHERE Frecuencia = 474000"

        for stored, given, after in (
            (0, 1, "Modo_Salida_Modulacion = 3, Estado = 1"),
            (2, 1, "Modo_Salida_Modulacion = 3, Estado = 1"),
            (3, 1, "Estado = 1"),
            (1, 1, "Estado = 0"),
            (0, 0, "Estado = 0"),
            (1, 0, "Modo_Salida_Modulacion = 0, Estado = 1"),
            (0, "no", "Estado = 0"),
        ):
            with self.subTest(stored=stored, given=given):
                self.assertLoads(
                    self.device("QRA-310", only(LOOPED) + rf(f"Modo_Salida_Modulacion = {stored}")),
                    outputs(LOOPED, 1, f"<active>{given}</active>"),
                    rf(after),
                )

    def test_second_output_of_two_models_is_parked_when_it_is_silent_in_8k(self) -> None:
        for children, active, rf in (
            ("<modeOFDM>8K</modeOFDM><active>0</active>", 0, ""),
            ("<modeOFDM>8k</modeOFDM>", 0, ""),
            ("", 1, ""),
            ("<active>0</active>", 1, ""),
            ("<modeOFDM>2K</modeOFDM><active>0</active>", 1, "Modo_OFDM = 0"),
            ("<modeOFDM>8K</modeOFDM><active>1</active>", 1, "Modo_Salida_Modulacion = 3"),
        ):
            for stored in (0, 1):
                with self.subTest(children, stored=stored):
                    parked = (
                        f"UPDATE SalidasLogicasGlobal SET Activo = {stored} WHERE TSID_Out = 306"
                    )
                    sql = ""
                    if active != stored:
                        sql = f"""UPDATE SalidasLogicasGlobal SET Activo = {active}, Estado = 1
                                  WHERE TSID_Out = 306;"""
                    if rf:
                        sql += f"UPDATE RFOutGlobal SET {rf}, Estado = 1 WHERE Frecuencia = 570000"
                    self.assertLoads(
                        self.device(
                            "LMV-502", "DELETE FROM RedesModulos WHERE idRedMod <> 3;" + parked
                        ),
                        document(
                            "<modules><module><mac>02:1E:52:10:00:0C</mac><family>36</family>"
                            f"<model>9</model><outputs><output><outputId>2</outputId>{children}"
                            "</output></outputs></module></modules>"
                        ),
                        sql,
                    )

    def test_first_output_and_other_models_are_never_parked(self) -> None:
        self.each(
            self.accepted,
            [
                (
                    "first output",
                    "LMV-502",
                    """DELETE FROM RedesModulos WHERE idRedMod <> 3;
                       UPDATE SalidasLogicasGlobal SET Activo = 0""",
                    document(
                        "<modules><module><mac>02:1E:52:10:00:0C</mac><family>36</family>"
                        "<model>9</model><outputs><output><outputId>1</outputId></output></outputs>"
                        "</module></modules>"
                    ),
                    "",
                ),
                (
                    "other model",
                    "QRA-310",
                    only(LOOPED) + "UPDATE SalidasLogicasGlobal SET Activo = 0",
                    outputs(LOOPED, 2, ""),
                    "",
                ),
            ],
        )


UNLISTED = """
UPDATE PIDsSalidaGlobal SET EstadoBorrado = 2, EstadoPID = 1 WHERE fk_idSSG IN ({0});
UPDATE ServiciosSalidaGlobal
SET Seleccionado = 0, Orden = 0, LCN = 0, EstadoServicio = 1, EstadoBorrado = 2
WHERE idSSG IN ({0});
"""


class ServiceTest(EndToEndTest):
    """The services of the first module are rows 1 to 10, those of the headend 1 to 40."""

    OTHERS = UNLISTED.format("2, 3, 4, 5, 6, 7, 8, 9, 10")
    ALL = UNLISTED.format("1, 2, 3, 4, 5, 6, 7, 8, 9, 10")

    def services(self, children: str) -> bytes:
        return modules(LOOPED, f"<services>{children}</services>")

    def service(self, children: str, *, sid: int = 1101, output: int = 1) -> str:
        names = f"<outputId>{output}</outputId><outputSid>{sid}</outputSid>"
        return f"<service>{names}{children}</service>"

    def streams(self, *streams: tuple) -> str:
        text = "".join(
            f"<pidOrder><languageCode>{language}</languageCode><streamId>{pid}</streamId>"
            f"<type>{kind}</type><order>{order}</order></pidOrder>"
            for language, pid, kind, order in streams
        )
        return f"<pidOrders>{text}</pidOrders>"

    def test_service_with_all_that_it_can_hold(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(
                self.service(
                    "<lcn>50</lcn><olcn>51</olcn><forcedLcn>0</forcedLcn>"
                    "<simulcastLcn>52</simulcastLcn><inputId>2</inputId><inputSid>65535</inputSid>"
                    "<inputName>In 'x'</inputName><forcedName>1</forcedName>"
                    "<outputName>Out &amp; 50%</outputName><idEPG>53</idEPG>"
                    "<serviceTypeDVB>1</serviceTypeDVB><serviceTypeCanal>2</serviceTypeCanal>"
                    "<videoFormat>0</videoFormat><cloned>1</cloned><decrypt>1</decrypt>"
                    "<encrypt>1</encrypt><transcoding>1</transcoding>"
                    "<videoPeakBitrate>9000</videoPeakBitrate><serviceStatus><x/></serviceStatus>"
                )
            ),
            self.OTHERS
            + """
            UPDATE ServiciosSalidaGlobal
            SET LCN = 50, OLCN = 51, LCNForzado = 0, SimulcastLCN = 52, fk_idEntrada = 2,
                OSID = 65535, NombreEntrada = 'In ''x''', NombreForzado = 1,
                NombreSalida = 'Out & 50 ', idEPG = 53, Tipo = 1, Service_Type = 2, VideoFormat = 0,
                DuplicadoClonado = 1, Descifrar = 1, Orden = 1, Transcoding = 1,
                Video_peak_bitrate = 9000, EstadoServicio = 1
            WHERE idSSG = 1
            """,
            prints=["Processing: modules", "Processing: Services"],
            logs=[
                "New SERVICE parameters:  outputSid: 1101 lcn: 50 olcn: 51 forcedLcn: 0"
                " simulcastLcn: 52inputId: 2 inputSid: 65535outputSid: In 'x' forcedName: 1"
                " outputName: Out & 50% idEPG: 53 serviceTypeDVB: 1 serviceTypeCanal: 2"
                " videoFormat: 0 cloned: 1decrypt: 1transcoding: 1videoPeakBitrate: 9000",
                "New Module parameters: ",
            ],
        )

    def test_unchanged_service_is_not_marked(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(self.service("<lcn>1</lcn><SERVICEtypeDVB>25</SERVICEtypeDVB>")),
            self.OTHERS,
        )

    def test_service_on_its_way_out_is_called_back(self) -> None:
        self.assertLoads(
            self.device(
                "QRA-310",
                only(LOOPED) + "UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 2, LCN = 0",
            ),
            self.services(self.service("<lcn>1</lcn>")),
            self.OTHERS
            + """UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 0, LCN = 1, EstadoServicio = 1
                 WHERE idSSG = 1""",
        )

    def test_empty_list_marks_every_service_for_removal_and_deletes_none(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)), modules(LOOPED, "<services/>"), self.ALL
        )

    def test_module_without_the_element_keeps_its_services(self) -> None:
        self.assertLoads(self.device("QRA-310", only(LOOPED)), modules(LOOPED, ""))

    def test_unknown_service_is_made_with_its_streams(self) -> None:
        # The row's defaults, but for what the document gives.
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(
                self.service(
                    "<inputId>2</inputId><inputSid>-5</inputSid><inputName>50%</inputName>"
                    "<lcn>0</lcn><decrypt>1</decrypt>" + self.streams(("spa", 300, 4, 2)),
                    sid=65535,
                    output=2,
                )
                + self.service("", sid=1),
            ),
            self.ALL
            + """
            INSERT INTO ServiciosSalidaGlobal VALUES
                (41, '02:1E:31:0A:00:01', -5, 65535, '50%', '', 0, 1, 0, 0, 7000, 2, 2, 1, 0, 1, 1,
                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1),
                (42, '02:1E:31:0A:00:01', 0, 1, '', '', 0, 1, 0, 0, 7000, 0, 1, 1, 0, 2, 0,
                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1);
            INSERT INTO PIDsSalidaGlobal
                (MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo, StreamId, AudioCode,
                 EstadoPID, EstadoBorrado)
            VALUES ('02:1E:31:0A:00:01', 41, 2, 2, 2, 4, 300, 'spa', 1, 0)
            """,
            prints=[
                "Processing: modules",
                "Processing: Services",
                "Processing: PIDs --->idSSG: 41",
                "languageCode node_value: spa",
            ],
            logs=[
                "New SERVICE parameters:  outputSid: 65535inputId: 2 inputSid: -5outputSid: 50%"
                " lcn: 0decrypt: 1",
                "New SERVICE parameters:  outputSid: 1",
                "New Module parameters: ",
            ],
        )

    def test_new_service_that_stands_twice_is_made_twice(self) -> None:
        device = self.device("QRA-310", only(LOOPED) + "DELETE FROM ServiciosSalidaGlobal")
        twice = self.service("<lcn>1</lcn>") + self.service("<lcn>2</lcn>")
        self.assertRun(self.load(device, self.services(twice)))
        self.assertEqual(
            [(1101, 1, 1, 0), (1101, 2, 1, 0)],
            self.query(
                device,
                "SELECT SID, LCN, EstadoServicio, EstadoBorrado FROM ServiciosSalidaGlobal",
            ),
        )

    def test_stored_service_that_stands_twice_takes_both(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(
                self.service("<lcn>7</lcn><olcn>8</olcn>") + self.service("<lcn>9</lcn>")
            ),
            self.OTHERS
            + """UPDATE ServiciosSalidaGlobal SET LCN = 9, OLCN = 8, EstadoServicio = 1
                 WHERE idSSG = 1""",
        )

    def test_streams_are_matched_by_language_identifier_and_type(self) -> None:
        # Stored: ('', 272, 27, 1), ('spa', 273, 4, 2), ('spa', 275, 129, 3).
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(
                self.service(
                    self.streams(("spa", 999, 9, 9))
                    + self.streams(
                        ("spa", 273, 4, 1),
                        ("", 272, 27, 5),
                        ("", 272, 27, 2),
                        ("Spa", 275, 129, 4),
                    )
                )
            ),
            self.OTHERS
            + """
            UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 0, Orden = 1
            WHERE fk_idSSG = 1 AND StreamId = 273;
            UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 0, Orden = 2
            WHERE fk_idSSG = 1 AND StreamId = 272;
            UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 2
            WHERE fk_idSSG = 1 AND StreamId = 275;
            INSERT INTO PIDsSalidaGlobal
                (MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo, StreamId, AudioCode,
                 EstadoPID, EstadoBorrado)
            VALUES ('02:1E:31:0A:00:01', 1, 1, 1, 4, 129, 275, 'Spa', 1, 0)
            """,
            prints=[
                "Processing: modules",
                "Processing: Services",
                "Processing: PIDs --->idSSG: 1",
                "languageCode node_value: spa",
                "languageCode node_value: ",
                "languageCode node_value: ",
                "languageCode node_value: Spa",
            ],
        )

    def test_new_stream_that_stands_twice_is_made_twice(self) -> None:
        device = self.device("QRA-310", only(LOOPED))
        new = ("qaa", 900, 4, 8)
        text = self.services(self.service(self.streams(new, new)))
        self.assertRun(self.load(device, text))
        self.assertEqual(
            [(8, 1, 0), (8, 1, 0)],
            self.query(
                device,
                """SELECT Orden, EstadoPID, EstadoBorrado FROM PIDsSalidaGlobal
                   WHERE fk_idSSG = 1 AND StreamId = 900""",
            ),
        )

    def test_empty_list_of_streams_marks_them_for_removal(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(self.service("<PIDORDERS/>")),
            self.OTHERS
            + "UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 2 WHERE fk_idSSG = 1",
        )

    def test_what_a_stream_lacks_counts_as_empty(self) -> None:
        self.assertLoads(
            self.device("QRA-310", only(LOOPED)),
            self.services(
                self.service(
                    "<pidOrders><PIDORDER><STREAMID>272</STREAMID><TYPE>27</TYPE></PIDORDER>"
                    "</pidOrders>"
                )
            ),
            self.OTHERS
            + """
            UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 2 WHERE fk_idSSG = 1;
            UPDATE PIDsSalidaGlobal SET EstadoBorrado = 0, Orden = ''
            WHERE fk_idSSG = 1 AND StreamId = 272
            """,
        )

    def test_changed_channel_number_is_forced_on_one_model(self) -> None:
        self.assertLoads(
            self.device("RNB-K408"),
            document(
                "<modules><module><mac>02:1E:40:80:00:01</mac><services>"
                + self.service("<lcn>1</lcn>")
                + self.service("<lcn>3</lcn>", sid=1102)
                + "</services></module></modules>"
            ),
            UNLISTED.format("3, 4, 5, 6, 7, 8, 9, 10")
            + """UPDATE ServiciosSalidaGlobal SET LCN = 3, LCNForzado = 1, EstadoServicio = 1
                 WHERE idSSG = 2""",
        )


class CamListTest(EndToEndTest):
    KEY_TOOL = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"

    def replaced(self, rows: str) -> str:
        return f"DELETE FROM VSecure; INSERT INTO VSecure VALUES {rows}"

    def test_list_is_replaced(self) -> None:
        # Today's date is the device's, and may change while the program runs.
        for _ in range(2):
            today = time.strftime("%Y-%m-%d", time.gmtime())
            device = self.device("RNB-K408")
            expected = changed(
                device,
                self.replaced(
                    f"""
                    (1, 'Fab ''x''', 'C1', 'AABB==', 'EK', '2001-02-03', '0', '0', 'D & d', '1'),
                    (2, '', 'C2', '', '', '{today}', '0', '0', '', '1'),
                    (3, '', 'C3', 'K', '', '', '0', '0', '', '1'),
                    (4, '', '', '', 'EK4', '{today}', '0', '0', '', '1')
                    """
                ),
            )
            text = document(
                "",
                cams="<cam><serialNumber>C1</serialNumber><hasPublicKey>0</hasPublicKey>"
                "<publicKey> AA\n\tBB== \r\n</publicKey><manufacturer>Fab 'x'</manufacturer>"
                "<registerDate>2001-02-03</registerDate><ekShared>EK</ekShared>"
                "<description>D &amp; d</description></cam>"
                "<CAM><SERIALNUMBER>C2</SERIALNUMBER></CAM><other/>"
                # A new key makes the derived one that came before it void.
                "<cam><serialNumber>C3</serialNumber><serialNumber>no</serialNumber>"
                "<EKSHARED>x</EKSHARED><PUBLICKEY>K</PUBLICKEY><registerDate/></cam>"
                # A key without anything in it is none.
                "<cam><ekShared>EK4</ekShared><publicKey> \n </publicKey><serialNumber/></cam>",
            )
            result = self.load(device, text)
            if today == time.strftime("%Y-%m-%d", time.gmtime()):
                break
        self.assertRun(result, stdout=b"", syslog=[])
        self.assertTables(expected, tables(device))

    def test_local_date_is_stored(self) -> None:
        device = self.device("RNB-K408")
        east = {"TZ": "EAST-14"}
        before = time.strftime("%Y-%m-%d", time.gmtime(time.time() + 14 * 3600))
        text = document("", cams="<cam><serialNumber>C</serialNumber></cam>")
        self.assertRun(self.load(device, text, env=east))
        after = time.strftime("%Y-%m-%d", time.gmtime(time.time() + 14 * 3600))
        ((stored,),) = self.query(
            device, "SELECT Alta FROM VSecure", "/tarvo/DB/vsec_global.sqlite"
        )
        self.assertIn(stored, (before, after))

    def test_empty_list_empties_the_table(self) -> None:
        self.assertLoads(self.device("RNB-K408"), document("", cams=""), "DELETE FROM VSecure")

    def test_key_tool_runs_for_the_list_on_every_other_model(self) -> None:
        self.assertLoads(
            self.device("LMV-502"),
            document(
                "", cams="<cam><serialNumber>C</serialNumber><registerDate>d</registerDate></cam>"
            ),
            self.replaced("(1, '', 'C', '', '', 'd', '0', '0', '', '1')"),
            logs=[],
            actions=[self.KEY_TOOL],
        )

    def test_list_outside_backup_is_ignored(self) -> None:
        cams = b"<vsecureCAMList/>"
        bare = b"<configuration/>"
        for text in (
            bare + cams,
            cams + bare,
            b"<backup>" + bare + b"</backup>" + cams,
            b"<backup>" + bare + b"<VSECURECAMLIST/></backup>",
            b"<backup>" + bare + b"<x>" + cams + b"</x></backup>",
            b"<configuration>" + cams + b"</configuration>",
        ):
            with self.subTest(text):
                device = self.device("RNB-K408")
                before = tables(device)
                result = self.load(device, text)
                self.assertRun(result)
                self.assertTables(before, tables(device))
                unknown = [line.message for line in result.syslog if line.priority == NEWS_ERROR]
                inside = text.startswith(b"<configuration><v")
                self.assertEqual(
                    ["r9::: Unknown configuration setting: vsecureCAMList"] if inside else [],
                    unknown,
                )


if __name__ == "__main__":
    main()
