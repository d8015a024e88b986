"""Export: the whole document of each sample headend, and what surrounds it."""

import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    ERROR_FILE,
    OUTPUT_FILE,
    STATE_DB,
    EndToEndTest,
    edited,
    golden,
    main,
    models,
    tables,
)

DECLARATION = b'<?xml version="1.0" encoding="utf-8"?>\n'


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


class LocalTimeTest(EndToEndTest):
    def test_date_of_a_generated_table_is_written_in_local_time(self) -> None:
        central_europe = {"TZ": "CET-1CEST,M3.5.0,M10.5.0/3"}
        # In winter an hour ahead of UTC, in summer two, and into the next day.
        for model, utc, local in (
            ("QRA-310", "12-03-24 04:30:00", "12-03-24 05:30:00"),
            ("WVX-AQ4", "30-06-22 21:05:09", "30-06-22 23:05:09"),
            ("WVX-AQ4", "01-07-22 00:00:00", "01-07-22 02:00:00"),
            ("LMV-502", "01-01-24 00:00:00", "01-01-24 01:00:00"),
        ):
            with self.subTest(model, local=local):
                result = self.export(self.device(model), env=central_europe)
                self.assertIn(f"<OutputNITDate>{local}<", result.stdout.decode())
                self.assertNotIn(f"<OutputNITDate>{utc}<", result.stdout.decode())


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

    def refused(
        self, name: str, script: str, text: bytes, reason: str, *, mode: int = 0o755
    ) -> None:
        for arguments in ((), ("/tmp/document.xml",)):
            device = self.device("QRA-310")
            device.path("/tmp/document.xml").write_bytes(golden("LMV-502"))
            path = device.path(f"/tarvo/script/{script}")
            path.write_bytes(text)
            path.chmod(mode)
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
                ("prints nothing", "SERIAL", b"#!/bin/sh\n", serial),
                ("prints one line", "SERIAL", b"#!/bin/sh\necho A123\n", serial),
                ("OK is the only line", "SERIAL", b"#!/bin/sh\necho OK\n", serial),
                ("second line is not OK", "SERIAL", b"#!/bin/sh\necho A123\necho KO\n", serial),
                ("OK in small letters", "MAC", b"#!/bin/sh\necho 02:1E\necho ok\n", mac),
                ("more than OK", "MAC", b"#!/bin/sh\necho 02:1E\necho OK.\n", mac),
                ("blank before OK", "MODELO", b"#!/bin/sh\necho QRA-310\necho ' OK'\n", model),
                ("OK on the third line", "MODELO", b"#!/bin/sh\necho QRA\necho\necho OK\n", model),
                ("first line is empty", "MODELO", b"#!/bin/sh\necho\necho OK\n", model),
                ("first line is blank", "MODELO", b"#!/bin/sh\necho ' \t'\necho OK\n", model),
                ("a line of 128", "SERIAL", b"#!/bin/sh\necho %0128d\necho OK\n" % 0, serial),
                ("is killed", "SERIAL", b"#!/bin/sh\necho A123\nkill -9 $$\necho OK\n", serial),
            ],
        )

    def test_missing_script_aborts(self) -> None:
        for script, reason in (
            ("SERIAL", "Could not read Serial Number"),
            ("MAC", "Could not read MAC"),
            ("MODELO", "Could not read model"),
        ):
            with self.subTest(script):
                device = self.device("QRA-310")
                device.path(f"/tarvo/script/{script}").unlink()
                result = self.export(device)
                self.assertEqual((134, b""), (result.status, result.stdout))
                self.assertIn(reason, result.stderr.decode())

    def test_blanks_at_the_end_of_both_lines_do_not_count(self) -> None:
        device = self.device("RNB-K408")
        device.path("/tarvo/script/MODELO").write_bytes(
            b"#!/bin/sh\nprintf 'RNB-K408 \\t\\r\\nOK \\t\\r\\nmore\\n'\n"
        )
        self.assertRun(self.export(device), stdout=golden("RNB-K408") + b"\n", syslog=[])

    def test_model_that_satisfies_no_condition_gets_the_common_sections(self) -> None:
        device = self.device("WVX-AQ4")
        device.path("/tarvo/sim/values/MODELO").write_text("qra-310\n")
        text = self.export(device).stdout.decode()
        sections = [line[2:-1] for line in text.splitlines() if line.startswith("\t<")]
        self.assertEqual(
            "identification regional network dvbNetworks lnb diseqcs scramblings"
            " preferredLanguages modules",
            " ".join(section for section in sections if not section.startswith("/")),
        )
        self.assertIn(
            "\t<identification>\n"
            "\t\t<headendName>Résidence des Alpes</headendName>\n"
            "\t\t<location>Grenoble</location>\n"
            "\t\t<installationDate>2019-07-14</installationDate>\n"
            "\t</identification>\n",
            text,
        )


class TextTest(EndToEndTest):
    def test_markup_is_escaped_and_other_bytes_go_out_as_they_are(self) -> None:
        device = self.device(
            "QRA-310",
            """UPDATE configuracionWebGlobal
               SET valor = CAST(x'26203C203E20222027202520252520C3B120FF8001' AS TEXT)
               WHERE nombre = 'identificacion_cabecera'""",
        )
        expected = edited(
            golden("QRA-310"), "<headendName>Hotel Mirador &amp; Spa</headendName>", "@"
        ).replace(
            b"@",
            b"<headendName>&amp; &lt; &gt; &quot; &apos; % %% \xc3\xb1 \xff\x80\x01</headendName>",
        )
        self.assertRun(self.export(device), stdout=expected + b"\n", syslog=[])

    def test_address_with_a_quote_still_finds_its_rows(self) -> None:
        rename = "UPDATE {} SET MAC = replace(MAC, '02:1E', 'it''s')"
        device = self.device(
            "WVX-AQ4",
            ";".join(
                rename.format(table)
                for table in (
                    *("RedesModulos", "EntradasGlobal", "NimGlobal", "NimCOFDMGlobal"),
                    *("SalidasLogicasGlobal", "ServiciosSalidaGlobal"),
                )
            ),
            state=";".join(
                rename.format(table)
                for table in (
                    *("ModulosCabecera", "CAMInfoGlobal", "ServiciosEntradaGlobal"),
                    *("TempNIMGlobal", "TempNIMCOFDMGlobal", "TempNIMQAMGlobal"),
                )
            ),
        )
        expected = edited(golden("WVX-AQ4"), "<mac>02:1E", "<mac>it&apos;s", count=4)
        self.assertRun(self.export(device), stdout=expected + b"\n", syslog=[])


class RowTest(EndToEndTest):
    def test_further_columns_of_any_table_are_left_alone(self) -> None:
        config = [table for table in self.device("QRA-310").dump("/tarvo/DB/config_global.sqlite")]
        state = [table for table in self.device("QRA-310").dump(STATE_DB)]
        added = "ALTER TABLE {} ADD COLUMN later TEXT DEFAULT 'x'"
        device = self.device(
            "RNB-K408",
            ";".join(map(added.format, config)),
            state=";".join(map(added.format, state)),
            vsec=added.format("VSecure"),
        )
        self.assertRun(self.export(device), stdout=golden("RNB-K408") + b"\n", syslog=[])

    def test_null_in_every_column_that_joins_nothing(self) -> None:
        # One row in each table. Where a number decides, NULL counts as 0.
        device = self.device(
            "QRA-310",
            """
            DELETE FROM configuracionWebGlobal; DELETE FROM MantenimientoHomeChannelsGlobal;
            DELETE FROM RedesCabecera; DELETE FROM RedesModulos; DELETE FROM DiSEqCGlobal;
            DELETE FROM AudioLanguageListGlobal; DELETE FROM ScramblingGlobal;
            DELETE FROM ScramblingKeysGlobal; DELETE FROM NimGlobal; DELETE FROM NimCOFDMGlobal;
            DELETE FROM NimQAMGlobal; DELETE FROM EntradasGlobal; DELETE FROM SalidasLogicasGlobal;
            DELETE FROM RFOutGlobal; DELETE FROM ServiciosSalidaGlobal;
            DELETE FROM PIDsSalidaGlobal; DELETE FROM Service_EPG; DELETE FROM Service_EPG_audios;
            DELETE FROM Service_EPG_replacing; DELETE FROM Service_EPG_Satellite;
            INSERT INTO MantenimientoHomeChannelsGlobal (idMantenimiento) VALUES (1);
            INSERT INTO RedesCabecera (idRed) VALUES (1);
            INSERT INTO RedesModulos (MAC) VALUES ('m'), (NULL);
            INSERT INTO DiSEqCGlobal (idDiSEqCGlobal) VALUES (1);
            INSERT INTO AudioLanguageListGlobal (idALLG) VALUES (1);
            INSERT INTO ScramblingGlobal (idScrambling, Mode) VALUES (1, 1);
            INSERT INTO ScramblingKeysGlobal (idScramblingKeys) VALUES (1);
            INSERT INTO EntradasGlobal (idEntradasGlobal, MAC) VALUES (1, 'm');
            INSERT INTO NimGlobal (fk_idEntradasGlobal) VALUES (1);
            INSERT INTO EntradasGlobal (idEntradasGlobal, MAC, tipoEntrada) VALUES (2, 'm', 1);
            INSERT INTO NimCOFDMGlobal (fk_idEntradasGlobal) VALUES (2);
            INSERT INTO EntradasGlobal (idEntradasGlobal, MAC, tipoEntrada) VALUES (3, 'm', 2);
            INSERT INTO NimQAMGlobal (fk_idEntradasGlobal) VALUES (3);
            INSERT INTO SalidasLogicasGlobal (idSalidasLogicasGlobal, MAC) VALUES (1, 'm');
            INSERT INTO RFOutGlobal (fk_idSalidasLogicasGlobal) VALUES (1);
            INSERT INTO ServiciosSalidaGlobal (idSSG, MAC) VALUES (1, 'm');
            INSERT INTO PIDsSalidaGlobal (fk_idSSG) VALUES (1);
            INSERT INTO Service_EPG (idService_EPG, fk_idService_EPG_Satellite) VALUES (1, 1);
            INSERT INTO Service_EPG_audios (fk_idService_EPG) VALUES (1);
            INSERT INTO Service_EPG_replacing (fk_idService_EPG) VALUES (1);
            INSERT INTO Service_EPG_Satellite (idService_EPG_Satellite) VALUES (1)
            """,
            state="""
            DELETE FROM ModulosCabecera; DELETE FROM CAMInfoGlobal; DELETE FROM TempNIMGlobal;
            DELETE FROM TempNIMCOFDMGlobal; DELETE FROM TempNIMQAMGlobal;
            INSERT INTO ModulosCabecera (MAC) VALUES ('m');
            INSERT INTO CAMInfoGlobal (MAC) VALUES ('m');
            INSERT INTO TempNIMGlobal (MAC) VALUES ('m');
            INSERT INTO TempNIMCOFDMGlobal (MAC) VALUES ('m');
            INSERT INTO TempNIMQAMGlobal (MAC) VALUES ('m')
            """,
        )
        for table in ("NIT_table_CPLUS", "BAT_table_CPLUS"):
            device.path(f"/tarvo/datosWeb/tablasSI/{table}").unlink()
        result = self.export(device)
        expected = indented(
            """
            configuration
             identification
              headendName
              location
              installationDate
              installer
              clientID
              hostType
              TVModels
              installationMode
             regional
              language
              country
              timezone
             maturityRating
             maintenances
              maintenance
               hour
               min
               active
             homeChannels
              homechannel
               id=1
               frequency
               orbit
               polarity=vertical
               band=low
               symbolrate
               onid
               tsid
             serviceEPGs
              serviceEPG
               onid
               tsid
               sid
               epg
               lcn
               videoType
               videoPeakBitrate
               serviceType
               name
               provider
               satelliteEPG
                onid
                tsid
                frequency
                symbolrate
                polarity=vertical
                orbit
                westEastFlag
               audiosEPGs
                audiosEPG
                 languageCode
                 audioType
               replacingEPGs
                replacingEPG
                 replacingEpgChannelId
             network
              internet
              dhcp
              ip
              netmask
              gateway
              dns1
              dns2
             dvbNetworks
              dvbNetwork
               id=1
               nid
               onidOut
               name
               ciplusTVs
               tvType
               cellID
               forceServiceName
               autoServiceList
               lcnOffset
               lcnMode
               tipoNITPatron
               nitPatron
               versionNITPatron
               autoBlockPIDs
                text=0
                subtitles=0
                data=0
               autoDecryptPIDs
                text=0
                subtitles=0
                data=0
               InputVersionNIT=Not Found
               InputVersionBAT=Not Found
               OutputVersionNIT=Not Found
             lnb
              oscLowFreq
              oscHighFreq
              oscBandaCFreq
              oscBandaSatelite
             diseqcs
              diseqc
               id=1
               position
               name
               orbit
               polarity=vertical
               band=low
             scramblings
              scrambling
               name
               active=0
               mode=even
               frequency
               oddKey
               evenKey
               date
             preferredLanguages
              language
             modules
              module
               id
               mac=m
               isMaster
               name
               family
               model
               modoSalidaRF
               serialNumber
               hwVersion
               swVersion
               attenuation
               dvbNetworkId
               inputs
                input
                 inputId
                 active
                 type
                 onid
                 tsid
                 frequency
                 diseqc
                 band=low
                 PLSmode=auto
                 scramblingID
                 streamID
                 inputStatus
                  signalQuality=Unlocked
                input
                 inputId
                 active
                 type=1
                 onid
                 tsid
                 frequency
                 bandwidth=6 MHz
                 hierarchy=High Priority
                 PLPID
                 autoScan
                 onidScan
                 tsidScan
                 inputStatus
                  signalQuality=Unlocked
                input
                 inputId
                 active
                 type=2
                 onid
                 tsid
                 frequency
                 symbolRate
                 constelacion
                 inputStatus
                  signalQuality=Unlocked
               outputs
                output
                 outputId
                 type
                 onid
                 tsid
                 active=0
                 frequency
                 symbolRate
                 modeOFDM=2K
                 bandwidth=8 MHz
                 guardInterval=1/32
                 constellation=QPSK
                 codeRate=1/2
                 formatIQ=Normal
               services
                service
                 outputId
                 outputSid
                 inputId
                 inputSid
                 inputName
                 forcedName
                 outputName
                 lcn
                 olcn
                 simulcastLcn
                 forcedLcn
                 idEPG
                 serviceTypeDVB
                 serviceTypeCanal
                 videoFormat
                 transcoding
                 encrypt=0
                 videoPeakBitrate
                 pidOrders
                  pidOrder
                   languageCode
                   streamId
                   type
                   order
              module
               id
               mac
               isMaster
               name
               family
               model
               modoSalidaRF
               serialNumber
               hwVersion
               attenuation
               dvbNetworkId
               inputs
               outputs
               services
            """
        )
        self.assertRun(result, stdout=expected + b"\n", syslog=[])


def indented(outline: str) -> bytes:
    """The document that an outline stands for: a line is an element, a blank before it a level."""
    lines = [line for line in outline.splitlines() if line.strip()]
    margin = len(lines[0]) - len(lines[0].lstrip())
    elements = [
        (len(line) - len(line.lstrip()) - margin, *line.strip().partition("=")) for line in lines
    ]
    text, open_names = "", []
    for (depth, name, _, value), after in zip(elements, [*elements[1:], (0,)]):
        if after[0] > depth:
            text += "\t" * depth + f"<{name}>\n"
            open_names.append(name)
        else:
            text += "\t" * depth + (f"<{name}>{value}</{name}>\n" if value else f"<{name}/>\n")
        while len(open_names) > after[0]:
            text += "\t" * (len(open_names) - 1) + f"</{open_names.pop()}>\n"
    return DECLARATION + text.encode()


if __name__ == "__main__":
    main()
