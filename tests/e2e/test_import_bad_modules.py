"""Import of modules, inputs, outputs and services that hold what is not allowed."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import EndToEndTest, document, main

ROLLED_BACK = "Error 202, Could not set configuration"

# Goes before what is refused: were the import not undone as a whole, these values would stay.
BEFORE = "<network><ip>new</ip></network><dvbNetworks/>"

MAC = "02:1E:31:0A:00:0{}"
KIND = {1: 2, 2: 13, 3: 7, 4: 7}


class RefusalTest(EndToEndTest):
    def refused(
        self, label: str, setup: str, sections: str, status: int, code: int, *errors: str
    ) -> None:
        self.assertRefused(
            self.device("QRA-310", setup),
            document(BEFORE + sections),
            status=status,
            code=code,
            errors=[*errors, ROLLED_BACK],
        )

    def in_module(self, label: str, module: int, children: str, *expected: int | str) -> None:
        """Refusal of a headend's only module."""
        self.refused(
            label,
            f"DELETE FROM RedesModulos WHERE idRedMod <> {module}",
            f"<modules><module><name>new</name><mac>{MAC.format(module)}</mac><family>36</family>"
            f"<model>{KIND[module]}</model>{children}</module></modules>",
            *expected,
        )


class ModuleTest(RefusalTest):
    def module(self, number: int | str, *, family: int = 36, model: int | None = None) -> str:
        mac = MAC.format(number) if isinstance(number, int) else number
        kind = KIND.get(number, 7) if model is None else model
        return (
            f"<module><mac>{mac}</mac><family>{family}</family><model>{kind}</model>"
            "<isMaster>0</isMaster><name>new</name></module>"
        )

    def test_modules_that_do_not_fit_the_headend(self) -> None:
        one, two, three, four = map(self.module, range(1, 5))
        amount = "Error 503, Invalid amount of modules"
        place = "Error 501, Could not find module"
        self.each(
            self.refused,
            [
                (
                    "headend without modules",
                    "DELETE FROM RedesModulos",
                    f"<modules>{one}</modules>",
                    *(3, 102, "Error 102, No modules found"),
                ),
                (
                    "other child",
                    "",
                    f"<modules>{one}{two}{three}{four}<slot/></modules>",
                    *(2, 101, "Error 101, No module element found"),
                ),
                ("none", "", "<modules/>", 5, 202, amount),
                ("one fewer", "", f"<modules>{one}{two}{three}</modules>", 5, 202, amount),
                (
                    "one more",
                    "",
                    f"<modules>{one}{two}{three}{four}{self.module('x')}</modules>",
                    *(5, 202, amount),
                ),
                (
                    "one without an address",
                    "",
                    f"<modules>{one}{two}{three}<module/></modules>",
                    *(5, 202, amount),
                ),
                (
                    "known address of another family",
                    "",
                    f"<modules>{one}{self.module(2, family=35)}{three}{four}</modules>",
                    *(5, 202, "Error 502, 02:1E:31:0A:00:02"),
                ),
                (
                    "known address of another model",
                    "",
                    f"<modules>{one}{two}{three}{self.module(4, model=2)}</modules>",
                    *(5, 202, "Error 502, 02:1E:31:0A:00:04"),
                ),
                (
                    "family in another form",
                    "",
                    f"<modules>{one}{two}{three}{self.module(4).replace('36', '036')}</modules>",
                    *(5, 202, "Error 502, 02:1E:31:0A:00:04"),
                ),
                (
                    "unknown address of another kind",
                    "",
                    f"<modules>{one}{two}{three}{self.module('x', model=2)}</modules>",
                    *(5, 202, place),
                ),
                (
                    "unknown address that is a master",
                    "",
                    f"<modules>{one}{two}{three}"
                    f"{self.module('x').replace('<isMaster>0', '<isMaster>1')}</modules>",
                    *(5, 202, place),
                ),
                (
                    "address twice, and no other of its kind",
                    "",
                    f"<modules>{one}{two}{three}{two}</modules>",
                    *(5, 202, place),
                ),
                (
                    "address in small letters",
                    "",
                    f"<modules>{one}{self.module(2).replace('0A', '0a')}{three}"
                    f"{self.module('x', model=13)}</modules>",
                    *(5, 202, place),
                ),
            ],
        )

    def refused_by_address(self, label: str, text: str, *errors: str) -> None:
        self.assertRefused(
            self.device("RNB-K408"),
            document(f"{BEFORE}<modules>{text}</modules>"),
            status=5,
            code=202,
            errors=[*errors, ROLLED_BACK],
        )

    def test_modules_of_the_model_that_knows_them_by_address_only(self) -> None:
        known = "<module><mac>02:1E:40:80:00:01</mac><attenuation>9</attenuation></module>"
        unknown = "<module><mac>other</mac></module>"
        self.each(
            self.refused_by_address,
            [
                (
                    "more than the headend has",
                    known + 4 * unknown,
                    "Error 501, Could not find module",
                ),
                # What comes before the address is still read, and no module has it.
                (
                    "unknown, with a kind before its address",
                    known + unknown.replace("<mac>", "<family>36</family><mac>"),
                    "Error 501, Could not find module",
                ),
                (
                    "known, with a kind before its address",
                    known.replace("<mac>", "<model>7</model><mac>"),
                    "Error 502, 02:1E:40:80:00:01",
                ),
            ],
        )


class InputTest(RefusalTest):
    def test_inputs_that_are_refused(self) -> None:
        def one(children: str, number: int | str = 1, kind: int | str = 0) -> str:
            return (
                f"<inputs><input><tsid>99</tsid><inputId>{number}</inputId><type>{kind}</type>"
                f"{children}</input></inputs>"
            )

        number = "Error 401, Input inputId should be 1 or 2"
        kind = "Error 401, Input type should be 0, 1 or 2"
        value = "Error 401, Invalid value for module/input/{}"
        self.each(
            self.in_module,
            [
                (
                    "other child",
                    *(1, one("").replace("</inputs>", "<output/></inputs>")),
                    *(2, 101, "Error 101, No input element found"),
                ),
                (
                    "no identifier",
                    *(1, "<inputs><input><type>0</type></input></inputs>"),
                    *(5, 202, "Error 401, Input has no inputId field"),
                ),
                ("identifier 0", 1, one("", 0), 5, 202, number),
                ("identifier 3", 1, one("", 3), 5, 202, number),
                ("identifier -1", 1, one("", -1), 5, 202, number),
                ("identifier that is no number", 1, one("", "one"), 5, 202, number),
                ("identifier that is empty", 1, one("", ""), 5, 202, number),
                (
                    "no type",
                    *(1, "<inputs><input><inputId>1</inputId></input></inputs>"),
                    *(5, 202, "Error 401, Input has no type field"),
                ),
                ("type 3", 1, one("", 1, 3), 5, 202, kind),
                ("type -1", 1, one("", 1, -1), 5, 202, kind),
                *(
                    (
                        f"{element} {text!r}",
                        1,
                        one(f"<{element}>{text}</{element}>", number),
                        5,
                        202,
                    )
                    + (value.format(element),)
                    for element, text, number in (
                        ("active", "2", 1),
                        ("active", "-1", 1),
                        ("band", "middle", 1),
                        ("band", "", 1),
                        ("band", "0", 1),
                        ("rfLoop", "2", 2),
                        ("rfLoop", "-1", 2),
                        # These two are recorded as 402.
                        ("PLSmode", "Gold", 1),
                        ("PLSmode", "", 1),
                        ("PLSmode", "1", 1),
                    )
                ),
                *(
                    (f"{element} {text!r}", 4, one(f"<{element}>{text}</{element}>", 1, 1), 5, 202)
                    + (value.format(element),)
                    for element, text in (
                        # Recorded as 402.
                        ("bandwidth", "9 MHz"),
                        ("bandwidth", "8 mhz"),
                        ("bandwidth", "2"),
                        ("hierarchy", "high priority"),
                        ("hierarchy", ""),
                    )
                ),
            ],
        )

    def test_inputs_that_are_not_there(self) -> None:
        def text(number: int, kind: int) -> str:
            return (
                "<modules><module><mac>02:1E:31:0A:00:04</mac><family>36</family><model>7</model>"
                f"<inputs><input><inputId>{number}</inputId><type>{kind}</type></input></inputs>"
                "</module></modules>"
            )

        alone = "DELETE FROM RedesModulos WHERE idRedMod <> 4; DELETE FROM {}"
        lost = "Error 401, Input could not be found"
        self.each(
            self.refused,
            [
                (
                    "module without inputs",
                    alone.format("EntradasGlobal"),
                    text(1, 1),
                    *(3, 102, "Error 102, No module inputs found"),
                ),
                (
                    "no second input",
                    alone.format("EntradasGlobal WHERE fk_idEntrada = 2"),
                    text(2, 2),
                    *(5, 202, lost),
                ),
                ("no satellite tuner", alone.format("NimGlobal"), text(1, 0), 5, 202, lost),
                ("no terrestrial tuner", alone.format("NimCOFDMGlobal"), text(1, 1), 5, 202, lost),
                ("no cable tuner", alone.format("NimQAMGlobal"), text(1, 2), 5, 202, lost),
            ],
        )


class OutputTest(RefusalTest):
    def test_outputs_that_are_refused(self) -> None:
        def one(children: str, number: int | str = 1) -> str:
            return (
                f"<outputs><output><tsid>99</tsid><outputId>{number}</outputId>"
                f"{children}</output></outputs>"
            )

        number = "Error 402, Output outputId should be 1 or 2"
        value = "Error 402, Invalid value for module/output/{}"
        self.each(
            self.in_module,
            [
                (
                    "other child",
                    *(1, one("").replace("</outputs>", "<input/></outputs>")),
                    *(2, 101, "Error 101, No output element found"),
                ),
                (
                    "no identifier",
                    *(1, "<outputs><output><tsid>99</tsid></output></outputs>"),
                    *(5, 202, "Error 402, Output has no outputId field"),
                ),
                ("identifier 0", 1, one("", 0), 5, 202, number),
                ("identifier 3", 1, one("", 3), 5, 202, number),
                ("identifier that is no number", 1, one("", "two"), 5, 202, number),
                *(
                    (f"{element} {text!r}", 1, one(f"<{element}>{text}</{element}>"), 5, 202)
                    + (value.format(element),)
                    for element, text in (
                        ("active", "2"),
                        ("active", "-1"),
                        ("modeOFDM", "4K"),
                        ("modeOFDM", ""),
                        ("bandwidth", "5 MHz"),
                        ("bandwidth", "8MHz"),
                        ("guardInterval", "1/64"),
                        ("guardInterval", ""),
                        ("codeRate", "8/9"),
                        ("codeRate", "0"),
                        ("formatIQ", "Reverse"),
                        ("formatIQ", ""),
                    )
                ),
                *(
                    (
                        f"constellation {text!r} after {before!r}",
                        *(1, before + one(f"<constellation>{text}</constellation>")),
                        *(5, 202),
                        value.format("constellation " + kind),
                    )
                    for before, text, kind in (
                        ("", "256 QAM", "DVBT"),
                        ("", "", "DVBT"),
                        ("", "32 QAM", "DVBT"),
                        ("<modoSalidaRF>0</modoSalidaRF>", "128 QAM", "DVBT"),
                        ("<modoSalidaRF>1</modoSalidaRF>", "QPSK", "DVBC"),
                        ("<modoSalidaRF>2</modoSalidaRF>", "QPSK", "DVBC"),
                        ("<modoSalidaRF>1</modoSalidaRF>", "512 QAM", "DVBC"),
                    )
                ),
            ],
        )

    def test_outputs_that_are_not_there(self) -> None:
        text = (
            "<modules><module><mac>02:1E:31:0A:00:01</mac><family>36</family><model>2</model>"
            "<outputs><output><outputId>2</outputId></output></outputs></module></modules>"
        )
        alone = "DELETE FROM RedesModulos WHERE idRedMod <> 1; DELETE FROM {}"
        self.each(
            self.refused,
            [
                (
                    "module without outputs",
                    alone.format("SalidasLogicasGlobal"),
                    text,
                    *(3, 102, "Error 102, No module outputs found"),
                ),
                # These two are recorded as 402.
                (
                    "no second output",
                    alone.format("SalidasLogicasGlobal WHERE TSID_Out = 102"),
                    text,
                    *(5, 202, "Error 101, Output could not be found"),
                ),
                (
                    "no modulator",
                    alone.format("RFOutGlobal WHERE Frecuencia = 482000"),
                    text,
                    *(5, 202, "Error 101, Output could not be found"),
                ),
            ],
        )


class ServiceTest(RefusalTest):
    def test_services_that_are_refused(self) -> None:
        def one(children: str, output: int | str = 1, sid: int | str = 1101) -> str:
            return (
                f"<services><service><outputId>{output}</outputId><outputSid>{sid}</outputSid>"
                f"<olcn>99</olcn>{children}</service></services>"
            )

        def lacking(name: str) -> str:
            return one("").replace(name, "x" + name)

        output = "Error 101, Service outputId should be 1 or 2"
        sid = "Error 101, Service outputSid should be greater than 0"
        stream = "<pidOrders>{}</pidOrders>".format
        order = "<pidOrder><streamId>1</streamId></pidOrder>"
        self.each(
            self.in_module,
            [
                (
                    "other child",
                    *(1, one("").replace("</services>", "<input/></services>")),
                    *(2, 101, "Error 101, No service element found"),
                ),
                (
                    "no output",
                    *(1, lacking("outputId")),
                    *(2, 101, "Error 101, Service has no outputId field"),
                ),
                ("output 0", 1, one("", 0), 2, 101, output),
                ("output 3", 1, one("", 3), 2, 101, output),
                ("output that is no number", 1, one("", "x"), 2, 101, output),
                (
                    "no identifier",
                    *(1, lacking("outputSid")),
                    *(2, 101, "Error 101, Service has no outputSid field"),
                ),
                ("identifier 0", 1, one("", 1, 0), 2, 101, sid),
                ("identifier -1", 1, one("", 1, -1), 2, 101, sid),
                ("identifier that is no number", 1, one("", 1, "x"), 2, 101, sid),
                (
                    "identifier above the highest",
                    *(1, one("", 1, 65536)),
                    *(4, 103, "Error 103, outputSid value cannot be greater than 65535"),
                ),
                (
                    "input identifier above the highest",
                    *(1, one("<inputSid>65536</inputSid>")),
                    *(4, 103, "Error 103, inputSid value cannot be greater than 65535"),
                ),
                # Not logged.
                ("channel number 0", 1, one("<lcn>0</lcn>"), 4, 103),
                ("channel number -1", 1, one("<lcn>-1</lcn>"), 4, 103),
                ("channel number that is no number", 1, one("<lcn>x</lcn>"), 4, 103),
                ("channel number -1 of a new service", 1, one("<lcn>-1</lcn>", 1, 9), 4, 103),
                (
                    "stream of another name",
                    *(1, one(stream(order + "<stream/>"))),
                    *(2, 101, "Error 101, No pidOrder element found"),
                ),
                (
                    "streams before a wrong value are still looked at",
                    *(1, one(stream("<stream/>") + "<lcn>0</lcn>" + stream(""))),
                    *(2, 101, "Error 101, No pidOrder element found"),
                ),
            ],
        )


if __name__ == "__main__":
    main()
