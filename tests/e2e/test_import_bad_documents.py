"""Import of files that are no document, and of documents that hold what is not allowed.

Whatever is wrong, the databases stay as they were.
"""

import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    DOCUMENT_FILE,
    ERROR_FILE,
    EndToEndTest,
    document,
    golden,
    main,
    tables,
)

ROLLED_BACK = "Error 202, Could not set configuration"

# Goes before what is refused: were the import not undone as a whole, these values would stay.
BEFORE = (
    "<identification><location>new</location></identification><network><ip>new</ip></network>"
    "<preferredLanguages><language>new</language></preferredLanguages>"
)


class FileTest(EndToEndTest):
    def not_found(self, label: str, prepare, argument: str = DOCUMENT_FILE) -> None:
        device = self.device("QRA-310")
        prepare(device.path(argument))
        before = tables(device)
        started = time.monotonic()
        result = self.run_program(device, argument)
        self.assertGreater(time.monotonic() - started, 3)
        self.assertRun(
            result,
            1,
            stdout=b"",
            stderr=b"No 'configuration' element found\n" * 3,
            syslog=[],
        )
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertTables(before, tables(device))

    def test_files_without_a_configuration(self) -> None:
        def holding(text: bytes):
            return lambda path: path.write_bytes(text)

        network = b"<network><ip>new</ip></network>"
        loop = "/tmp/loop.xml"
        self.each(
            self.not_found,
            [
                ("does not exist", lambda path: None),
                ("in a folder that does not exist", lambda path: None, "/tmp/none/document.xml"),
                ("empty name", lambda path: None, ""),
                ("is a folder", lambda path: path.mkdir()),
                ("link that leads to itself", lambda path: path.symlink_to(loop), loop),
                ("cannot be read", lambda path: None, "/proc/self/mem"),
                ("empty", holding(b"")),
                ("only blanks", holding(b" \n\t\r\n")),
                ("only a byte order mark", holding(b"\xef\xbb\xbf")),
                ("only a declaration", holding(b'<?xml version="1.0"?>')),
                ("only a comment", holding(b"<!-- <configuration/> -->")),
                ("starts with a zero byte", holding(b"\0<configuration/>")),
                ("another root", holding(b"<settings>" + network + b"</settings>")),
                ("sections without a root", holding(network)),
                ("capital letter", holding(b"<Configuration>" + network + b"</Configuration>")),
                (
                    "backup with a capital letter",
                    holding(b"<Backup><configuration>" + network + b"</configuration></Backup>"),
                ),
                ("empty backup", holding(b"<backup/>")),
                (
                    "beside backup",
                    holding(b"<configuration>" + network + b"</configuration><backup></backup>"),
                ),
                (
                    "too deep in backup",
                    holding(
                        b"<backup><x><configuration>" + network + b"</configuration></x></backup>"
                    ),
                ),
            ],
        )

    def malformed(self, label: str, text: bytes, line: int, column: int) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        result = self.load(device, text)
        self.assertEqual((134, b"", []), (result.status, result.stdout, result.syslog))
        self.assertIn(f"{DOCUMENT_FILE}:{line}:{column}: ".encode(), result.stderr)
        self.assertEqual(1, result.stderr.count(DOCUMENT_FILE.encode()))  # one try only
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertTables(before, tables(device))

    def test_malformed_documents_abort_at_once(self) -> None:
        good = document(BEFORE)
        lines = b"<configuration>\n  <network>\n"
        self.each(
            self.malformed,
            [
                ("text", b"no document", 1, 1),
                ("ends in a tag", lines + b"    <ip", 3, 8),
                ("ends in an element", lines, 3, 1),
                ("ends in a closing tag", b"<configuration></configuration", 1, 31),
                ("ends in a comment", lines + b"<!-- x", 3, 7),
                ("ends in character data", lines + b"<![CDATA[x", 3, 11),
                ("attribute without a value", b"<configuration a></configuration>", 1, 17),
                ("attribute without quotes", b"<configuration a=b></configuration>", 1, 18),
                ("tag without a name", b"<configuration>< ip></configuration>", 1, 17),
                ("part of an export", golden("WVX-BQ4").partition(b"9.9.9.9")[0], 20, 9),
                ("text after the root", good + b"x", 2, len(good.splitlines()[1]) + 1),
            ],
        )


class SectionTest(EndToEndTest):
    def refused(self, label: str, sections: str, status: int, code: int, *errors: str) -> None:
        self.assertRefused(
            self.device("QRA-310"),
            document(BEFORE + sections),
            status=status,
            code=code,
            errors=[*errors, ROLLED_BACK],
        )

    def test_maintenance(self) -> None:
        def maintenances(*children: str) -> str:
            return "<maintenances>" + "".join(children) + "</maintenances>"

        whole = "<maintenance><hour>1</hour><min>2</min><active>1</active></maintenance>"
        other = "Error 101, No maintenance element found"
        lacking = "Error 103, Invalid value"
        self.each(
            self.refused,
            [
                ("other child", maintenances(whole, "<service/>"), 2, 101, other),
                ("text", maintenances(whole, "text"), 2, 101, other),
                ("character data", maintenances("<![CDATA[]]>"), 2, 101, other),
                (
                    "no hour",
                    maintenances(whole.replace("<hour>1</hour>", "")),
                    *(4, 103, lacking),
                ),
                ("no min", maintenances(whole, whole.replace("<min>2</min>", "")), 4, 103, lacking),
                ("no active", maintenances(whole.replace("active", "on")), 4, 103, lacking),
                ("nothing", maintenances("<maintenance/>"), 4, 103, lacking),
            ],
        )

    def test_maintenance_that_lacks_a_value_writes_none(self) -> None:
        self.assertRefused(
            self.device("QRA-310"),
            document(
                "<maintenances><maintenance><hour>1</hour><min>2</min></maintenance></maintenances>"
                "<network><ip>new</ip></network>"
            ),
            status=4,
            code=103,
            errors=["Error 103, Invalid value", ROLLED_BACK],
            prints=["Processing: maintenances"],
        )

    def test_headend_wide_lists(self) -> None:
        other = "Error 101, No {} element found"
        network = "<dvbNetworks><dvbNetwork><id>1</id>{}</dvbNetwork></dvbNetworks>"
        kind = "Error 103, tipoNITPatron not allowed value detected"
        pattern = "Error 103, nitPatron not allowed value detected"
        position = "<diseqcs><diseqc><id>1</id>{}</diseqc></diseqcs>"
        polarity = "Error 101, Invalid value for diseqc/polarity"
        band = "Error 101, Invalid value for diseqc/band"
        first = "<homechannel><id>1</id><frequency>7</frequency></homechannel>"
        language = "Error 101, language expected"
        self.each(
            self.refused,
            [
                (
                    "home channel of another name",
                    f"<homeChannels>{first}<channel/></homeChannels>",
                    *(2, 101, other.format("homechannel")),
                ),
                (
                    "home channel without an identifier",
                    f"<homeChannels>{first.replace('<id>1</id>', '')}</homeChannels>",
                    *(2, 101, "Error 101, homechannel has no id field"),
                ),
                (
                    "network of another name",
                    "<dvbNetworks><dvbNetwork><id>1</id></dvbNetwork><network/></dvbNetworks>",
                    *(2, 101, other.format("dvbNetwork")),
                ),
                # Recorded as 101.
                (
                    "network without an identifier",
                    "<dvbNetworks><dvbNetwork><nid>1</nid></dvbNetwork></dvbNetworks>",
                    *(2, 101, "Error 103, dvbNetwork has no id field"),
                ),
                *(
                    (f"network {given}", network.format(given), 4, 103, message)
                    for given, message in (
                        ("<tipoNITPatron>2</tipoNITPatron>", kind),
                        ("<tipoNITPatron>-1</tipoNITPatron>", kind),
                        ("<nitPatron>2</nitPatron>", pattern),
                        ("<nitPatron>-1</nitPatron>", pattern),
                        ("<nitPatron>2</nitPatron><tipoNITPatron>1</tipoNITPatron>", pattern),
                        ("<tipoNITPatron>0</tipoNITPatron><nitPatron>2</nitPatron>", pattern),
                        ("<versionNITPatron>1</versionNITPatron>", pattern),
                        ("<nitPatron>0</nitPatron><versionNITPatron>3</versionNITPatron>", pattern),
                        ("<versionNITPatron>1</versionNITPatron><nitPatron>1</nitPatron>", pattern),
                    )
                ),
                (
                    "position of another name",
                    "<diseqcs><diseqc><id>1</id></diseqc><position/></diseqcs>",
                    *(2, 101, other.format("diseqc")),
                ),
                (
                    "position without an identifier",
                    "<diseqcs><diseqc><position>1</position></diseqc></diseqcs>",
                    *(2, 101, "Error 101, diseqc has no id field"),
                ),
                (
                    "polarity abbreviated",
                    position.format("<polarity>v</polarity>"),
                    2,
                    101,
                    polarity,
                ),
                ("polarity empty", position.format("<polarity/>"), 2, 101, polarity),
                ("polarity as a code", position.format("<polarity>0</polarity>"), 2, 101, polarity),
                ("band misspelt", position.format("<band>lo</band>"), 2, 101, band),
                ("band empty", position.format("<band/>"), 2, 101, band),
                (
                    "bad value before a missing identifier",
                    "<diseqcs><diseqc><band>lo</band></diseqc></diseqcs>",
                    *(2, 101, band),
                ),
                (
                    "language of another name",
                    "<preferredLanguages><language>a</language><lang>b</lang></preferredLanguages>",
                    *(2, 101, language),
                ),
                (
                    "text among the languages",
                    "<preferredLanguages>spa</preferredLanguages>",
                    *(2, 101, language),
                ),
            ],
        )

    def test_scrambling(self) -> None:
        def scrambling(children: str) -> str:
            return f"<scramblings><scrambling>{children}</scrambling></scramblings>"

        name = "<name>VSecure</name><date>new</date>"
        active = "Error 103, scrambling/active should be 0/1"
        self.each(
            self.refused,
            [
                (
                    "other child",
                    scrambling(name).replace("</scramblings>", "<key/></scramblings>"),
                    *(2, 101, "Error 101, No scrambling element found"),
                ),
                (
                    "no name",
                    scrambling("<active>1</active><date>new</date>"),
                    *(2, 101, "Error 101, scrambling has no name field"),
                ),
                ("active 2", scrambling(name + "<active>2</active>"), 4, 103, active),
                ("active -1", scrambling("<active>-1</active>" + name), 4, 103, active),
                # Recorded as 101.
                (
                    "mode misspelt",
                    scrambling(name + "<mode>both</mode>"),
                    *(2, 101, "Error 103, scrambling has no name field"),
                ),
                (
                    "mode empty",
                    scrambling("<mode/>" + name),
                    *(2, 101, "Error 103, scrambling has no name field"),
                ),
            ],
        )

    def test_service_guide(self) -> None:
        def service(children: str) -> str:
            return f"<serviceEPGs><serviceEPG>{children}</serviceEPG></serviceEPGs>"

        self.each(
            self.refused,
            [
                *(
                    (
                        f"{element} {value!r}",
                        service(f"<{element}>{value}</{element}>"),
                        *(4, 103),
                        f"Error 103, {element.upper()} value must be a value between [1-65535]",
                    )
                    for element in ("onid", "tsid", "sid", "lcn")
                    for value in ("0", "65536", "-1", "abc", "")
                ),
                (
                    "other child",
                    "<serviceEPGs><serviceEPG/><service/><serviceEPG><sid>0</sid></serviceEPG>"
                    "</serviceEPGs>",
                    *(2, 101, "Error 101, No serviceEPG element found"),
                ),
                (
                    "every service is looked at, but no child after a wrong one",
                    "<serviceEPGs><serviceEPG><sid>0</sid><onid>0</onid></serviceEPG>"
                    "<serviceEPG><lcn>0</lcn></serviceEPG></serviceEPGs>",
                    *(4, 103, "Error 103, SID value must be a value between [1-65535]"),
                    "Error 103, LCN value must be a value between [1-65535]",
                ),
                (
                    "audio of another name",
                    service("<audiosEPGs><audiosEPG/><audio/></audiosEPGs>"),
                    *(2, 101, "Error 101, No audiosEPGs element found"),
                ),
                (
                    "replacement of another name",
                    service("<replacingEPGs><replacing/></replacingEPGs>"),
                    *(2, 101, "Error 101, No replacingEPGs element found"),
                ),
            ],
        )

    def test_sections_after_a_failed_one_are_not_looked_at(self) -> None:
        self.assertRefused(
            self.device("QRA-310"),
            document(
                "<lnb><oscLowFreq>1</oscLowFreq></lnb><scramblings><x/></scramblings>"
                "<network><ip>new</ip></network>"
            ),
            status=2,
            code=101,
            errors=["Error 101, No scrambling element found", ROLLED_BACK],
            prints=[
                "Processing: lnb",
                *("setConfig: LNB_fb = 1", "0x"),
                "Processing: scramblings",
            ],
        )

    def test_cam_list_is_not_applied_after_a_failed_configuration(self) -> None:
        self.assertRefused(
            self.device("RNB-K408"),
            document("<scramblings><x/></scramblings>", cams=""),
            status=2,
            code=101,
            errors=["Error 101, No scrambling element found", ROLLED_BACK],
        )

    def test_cam_without_a_serial_number_undoes_the_list_but_not_the_configuration(self) -> None:
        device = self.device("RNB-K408")
        before = tables(device)
        result = self.load(
            device,
            document(
                "<lnb><oscLowFreq>9751</oscLowFreq></lnb>",
                cams="<cam><serialNumber>C</serialNumber></cam><cam><publicKey>K</publicKey></cam>",
            ),
        )
        self.assertRun(result, 2, stderr=b"Error: 101\n" * 3)
        self.assertEqual(
            ["REMOTE_CONTROL::: setConfig LNB_fb = 9751"] * 3,
            [line.message for line in result.syslog],
        )
        self.assertEqual("Error: 101", device.path(ERROR_FILE).read_text())
        self.assertEqual(before["vsec_global"], tables(device)["vsec_global"])
        self.assertEqual(
            [("9751",)],
            self.query(device, "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'LNB_fb'"),
        )


if __name__ == "__main__":
    main()
