"""Import, section by section: a document that is applied, and one that is refused.

That the parts meet in the real program is told here; each rule of a section is told by its unit
test in tests/unit/import/. A section of settings is refused for a database that fails alone:
test_import_failures.py.
"""

import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    DOCUMENT_FILE,
    ERROR_FILE,
    Device,
    EndToEndTest,
    changed,
    document,
    golden,
    main,
    tables,
)

# Goes before what is refused: were the import not undone as a whole, this value would stay.
BEFORE = "<lnb><oscLowFreq>9751</oscLowFreq></lnb>"
BEFORE_PRINTS = ["Processing: lnb", "setConfig: LNB_fb = 9751", "0x"]
BEFORE_LOGS = ["setConfig LNB_fb = 9751"]

ROLLED_BACK = "Error 202, Could not set configuration"

KEY_TOOL = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"

# The first module of the QRA-310: two satellite inputs, the second looped through the first.
ONE_MODULE = "DELETE FROM RedesModulos WHERE idRedMod <> 1;"

# What an import that lists only the first of the module's services does to its others.
UNLISTED = """
UPDATE PIDsSalidaGlobal SET EstadoBorrado = 2, EstadoPID = 1 WHERE fk_idSSG BETWEEN 2 AND 10;
UPDATE ServiciosSalidaGlobal
SET Seleccionado = 0, Orden = 0, LCN = 0, EstadoServicio = 1, EstadoBorrado = 2
WHERE idSSG BETWEEN 2 AND 10;
"""


def modules(children: str) -> str:
    return (
        "<modules><module><mac>02:1E:31:0A:00:01</mac><family>36</family><model>2</model>"
        f"{children}</module></modules>"
    )


def service(children: str) -> str:
    """The first service of that module, which has ten, and the headend 40."""
    return modules(
        "<services><service><outputId>1</outputId><outputSid>1101</outputSid>"
        f"{children}</service></services>"
    )


class SectionTest(EndToEndTest):
    def assertSectionRefused(
        self,
        device: Device,
        section: str,
        status: int,
        code: int,
        *,
        prints: list[str],
        logs: list[str],
    ) -> None:
        self.assertRefused(
            device,
            document(BEFORE + section),
            status=status,
            code=code,
            prints=BEFORE_PRINTS + prints,
            logs=[*BEFORE_LOGS, *logs, ROLLED_BACK],
        )


class DocumentTest(SectionTest):
    def test_applied(self) -> None:
        # Further arguments are of no interest, and neither is what stands beside the document.
        device = self.device("QRA-310")
        text = b"<x/>" + document("<network><ip>10.9.8.7</ip></network>", cams="").split(b"\n")[1]
        expected = changed(
            device,
            """UPDATE configuracionWebGlobal SET valor = '10.9.8.7' WHERE nombre = 'network_IP';
               DELETE FROM VSecure""",
        )
        device.path("/tmp/other.xml").write_bytes(document("<lnb><oscLowFreq>1</oscLowFreq></lnb>"))
        result = self.load(device, text, "/tmp/other.xml", "--help")
        self.assertRun(result, actions=["WAN_from_DB.sh", KEY_TOOL])
        self.assertTables(expected, tables(device))
        self.assertEqual(text, device.path(DOCUMENT_FILE).read_bytes())

    def test_without_a_configuration_refused_after_three_tries(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        started = time.monotonic()
        result = self.load(device, b"<backup><x><configuration/></x></backup>")
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

    def test_malformed_aborts_at_once(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        result = self.load(device, golden("WVX-BQ4").partition(b"9.9.9.9")[0])
        self.assertEqual((134, b"", []), (result.status, result.stdout, result.syslog))
        self.assertIn(f"{DOCUMENT_FILE}:20:9: ".encode(), result.stderr)
        self.assertEqual(1, result.stderr.count(DOCUMENT_FILE.encode()))
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertTables(before, tables(device))


class SettingsTest(SectionTest):
    """The sections identification, regional, network, remoteControl and lnb, and maturityRating."""

    def test_applied(self) -> None:
        # Each element is given a value of its own.
        sections = {
            "identification": {
                "headendName": "identificacion_cabecera",
                "location": "identificacion_localizacion",
                "installationDate": "identificacion_fecha",
                "zenContractId": "identificacion_contrato",
                "hostType": "identificacion_hostType",
                "installer": "identificacion_instalador",
                "clientID": "identificacion_codCanal",
                "TVModels": "identificacion_TVModels",
                "installationMode": "identificacion_installationMode",
            },
            "regional": {
                "language": "codtimezone",
                "country": "idtimezone",
                "timezone": "subtimezone",
            },
            "network": {
                "internet": "network_ConfigureNET",
                "dhcp": "network_UseDHCPIP",
                "ip": "network_IP",
                "netmask": "network_Netmask",
                "gateway": "network_Gateway",
                "dns1": "network_PrimaryDNS",
                "dns2": "network_SecondaryDNS",
            },
            "remoteControl": {
                "active": "servidorZEN_activo",
                "interval": "servidorZEN_intervalo",
                "serverUrl": "servidorZEN_direccion",
                "username": "servidorZEN_usuario",
                "password": "servidorZEN_password",
            },
            "lnb": {
                "oscLowFreq": "LNB_fb",
                "oscHighFreq": "LNB_fa",
                "oscBandaCFreq": "LNB_fbandaC",
                "oscBandaSatelite": "LNB_BandaSatelite",
            },
        }
        text, stored, prints = "", {}, []
        for section, children in sections.items():
            text += f"<{section}>"
            prints.append(f"Processing: {section}")
            for element, key in children.items():
                stored[key] = f"new {element} of {section}"
                text += f"<{element}>{stored[key]}</{element}>"
                prints += [f"setConfig: {key} = {stored[key]}", "0x"]
            text += f"</{section}>"
        text += "<maturityRating>7</maturityRating>"
        stored["MaturityRating"] = "7"
        prints += ["Processing: maturityRating", "setConfig: MaturityRating = 7", "0x"]
        self.assertLoads(
            self.device("RNB-K408"),
            document(text),
            "".join(
                f"UPDATE configuracionWebGlobal SET valor = '{value}' WHERE nombre = '{key}';"
                for key, value in stored.items()
            ),
            prints=prints,
            logs=[f"setConfig {key} = {value}" for key, value in stored.items()],
            actions=["WAN_from_DB.sh", "get_time_offsets.sh 0 No", "S60crond restart"],
        )


class RegionalTest(SectionTest):
    def test_applied(self) -> None:
        device = self.device("QRA-310")
        self.assertLoads(
            device,
            document(
                "<regional><language>fr</language><country>Es</country>"
                "<timezone>Europe/Paris</timezone></regional>"
            ),
            """
            UPDATE configuracionWebGlobal SET valor = 'fr' WHERE nombre = 'codtimezone';
            UPDATE configuracionWebGlobal SET valor = 'Es' WHERE nombre = 'idtimezone';
            UPDATE configuracionWebGlobal SET valor = 'Europe/Paris' WHERE nombre = 'subtimezone'
            """,
            prints=[
                "Processing: regional",
                *("setConfig: codtimezone = fr", "0x"),
                *("setConfig: idtimezone = Es", "0x"),
                *("setConfig: subtimezone = Europe/Paris", "0x"),
            ],
            logs=[
                "setConfig codtimezone = fr",
                "setConfig idtimezone = Es",
                "setConfig subtimezone = Europe/Paris",
            ],
            actions=[
                "get_time_offsets.sh 0 Africa/Ceuta Atlantic/Canary Europe/Madrid",
                "S60crond restart",
            ],
        )
        self.assertEqual(
            "Europe/Paris\n", device.path("/tarvo/conf/timezone/localtime").read_text()
        )
        self.assertEqual(
            "FR\noffset of Africa/Ceuta\noffset of Atlantic/Canary\noffset of Europe/Madrid\n",
            device.path("/tarvo/conf/tot_file").read_text(),
        )
        self.assertFalse(device.path("/tmp/temp_tot_file_web").exists())


class MaintenancesTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("LMV-502"),
            document(
                "<maintenances><maintenance><active>1</active><min>7</min><hour>8</hour>"
                "</maintenance></maintenances>"
            ),
            """
            UPDATE configuracionWebGlobal SET valor = '8' WHERE nombre = 'mantenimiento_hora';
            UPDATE configuracionWebGlobal SET valor = '7' WHERE nombre = 'mantenimiento_min';
            UPDATE configuracionWebGlobal SET valor = '1' WHERE nombre = 'mantenimiento_activo'
            """,
            prints=[
                "Processing: maintenances",
                *("setConfig: mantenimiento_hora = 8", "0x"),
                *("setConfig: mantenimiento_min = 7", "0x"),
                *("setConfig: mantenimiento_activo = 1", "0x"),
            ],
            logs=[
                "setConfig mantenimiento_hora = 8",
                "setConfig mantenimiento_min = 7",
                "setConfig mantenimiento_activo = 1",
            ],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<maintenances><maintenance><hour>1</hour><min>2</min></maintenance></maintenances>",
            *(4, 103),
            prints=["Processing: maintenances"],
            logs=["Error 103, Invalid value"],
        )


class HomeChannelsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<homeChannels>"
                "<homechannel><id>9</id><frequency>12000</frequency></homechannel>"
                "<homechannel><id>1</id><frequency>11856</frequency><onid>7</onid><tsid>7</tsid>"
                "</homechannel>"
                "<HomeChannel><ID>2</ID><polarity>Horizontal</polarity><band>HIGH</band>"
                "<symbolrate>27500</symbolrate><orbit>130</orbit></HomeChannel>"
                "<homechannel><id>8</id><polarity>VERTICAL</polarity><band>Low</band></homechannel>"
                "</homeChannels>"
            ),
            """
            DELETE FROM MantenimientoHomeChannelsGlobal WHERE idMantenimiento = 3;
            UPDATE MantenimientoHomeChannelsGlobal
            SET Polaridad = 1, Banda = 1, SymbolRate = 27500, Orbita = 130, Estado = 1
            WHERE idMantenimiento = 2;
            INSERT INTO MantenimientoHomeChannelsGlobal VALUES
                (8, 11856, 192, 0, 0, 27500, 1, 1072, 1),
                (9, 12000, 192, 0, 1, 27500, 1, 1072, 1)
            """,
            prints=["Processing: homeChannels"],
            logs=[],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<homeChannels><homechannel><frequency>7</frequency></homechannel></homeChannels>",
            *(2, 101),
            prints=["Processing: homeChannels"],
            logs=["Error 101, homechannel has no id field"],
        )


class ServiceEpgsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("LMV-502"),
            document(
                """<serviceEPGs>
                <serviceEPG>
                    <onid>1</onid><tsid>65535</tsid><sid>1</sid><epg>x</epg><lcn>65535</lcn>
                    <videoType>2</videoType><videoPeakBitrate/><serviceType>3</serviceType>
                    <name>N &lt;1></name><provider/>
                    <satelliteEPG>
                        <onid>65535</onid><tsid>1</tsid><frequency>11000</frequency>
                        <symbolrate>22000</symbolrate><polarity>VERTICAL</polarity>
                        <orbit>192</orbit><westEastFlag/>
                    </satelliteEPG>
                    <audiosEPGs><audiosEPG><languageCode>old</languageCode></audiosEPG></audiosEPGs>
                    <audiosEPGs>
                        <audiosEPG>
                            <languageCode>spa</languageCode><audioType>1</audioType>
                        </audiosEPG>
                        <AUDIOSEPG/>
                    </audiosEPGs>
                    <replacingEPGs>
                        <replacingEPG>
                            <replacingEpgChannelId>5</replacingEpgChannelId>
                        </replacingEPG>
                    </replacingEPGs>
                </serviceEPG>
                <SERVICEEPG>
                    <SID>7</SID><satelliteEPG><polarity>up</polarity></satelliteEPG>
                </SERVICEEPG>
                <serviceEPG><satelliteEPG/><other/></serviceEPG>
                <serviceEPG/>
                </serviceEPGs>"""
            ),
            """
            DELETE FROM Service_EPG; DELETE FROM Service_EPG_Satellite;
            DELETE FROM Service_EPG_audios; DELETE FROM Service_EPG_replacing;
            INSERT INTO Service_EPG VALUES
                (1, 1, 65535, 1, 'x', 65535, 1, 2, '', 3, 'N <1>', ''),
                (2, NULL, NULL, 7, NULL, NULL, 2, NULL, NULL, NULL, NULL, NULL),
                (3, NULL, NULL, NULL, NULL, NULL, 0, NULL, NULL, NULL, NULL, NULL),
                (4, NULL, NULL, NULL, NULL, NULL, 0, NULL, NULL, NULL, NULL, NULL);
            INSERT INTO Service_EPG_Satellite VALUES
                (1, 1, 65535, 11000, 22000, 0, 192, '', NULL),
                (2, NULL, NULL, NULL, NULL, 1, NULL, NULL, NULL);
            INSERT INTO Service_EPG_audios VALUES (1, 1, 'spa', 1, NULL), (2, 1, NULL, NULL, NULL);
            INSERT INTO Service_EPG_replacing VALUES (1, 1, 5, NULL)
            """,
            prints=[
                "Processing: serviceEPGs",
                "Processing: Service EPGs",
                "Processing: Service EPGs Satellite",
                "Processing: Service EPGs Audios",
                "Processing: Service EPGs Replacing",
                "Processing: Service EPGs Satellite",
                "Processing: Service EPGs Satellite",
            ],
            logs=[],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<serviceEPGs><serviceEPG><sid>0</sid></serviceEPG>"
            "<serviceEPG><lcn>0</lcn></serviceEPG></serviceEPGs>",
            *(4, 103),
            prints=["Processing: serviceEPGs", "Processing: Service EPGs"],
            logs=[
                "Error 103, SID value must be a value between [1-65535]",
                "Error 103, LCN value must be a value between [1-65535]",
            ],
        )


class DvbNetworksTest(SectionTest):
    def test_applied(self) -> None:
        device = self.device("QRA-310")
        folder = device.path("/tarvo/datosWeb/tablasSI")
        files = {path.name: path.read_bytes() for path in folder.iterdir()}
        self.assertLoads(
            device,
            document(
                "<dvbNetworks>"
                "<dvbNetwork><id>9</id></dvbNetwork>"
                "<DVBNETWORK><ID>1</ID><nid>777</nid><name>Ala &amp; &quot;mar&quot;</name>"
                "<onidOut>1</onidOut>"
                "<autoBlockPIDs><subtitles>1</subtitles></autoBlockPIDs></DVBNETWORK>"
                "</dvbNetworks>"
            ),
            """
            DELETE FROM RedesCabecera WHERE idRed = 2;
            UPDATE RedesCabecera
            SET NID = 777, NombreRed = 'Ala & "mar"', ONID_Out = 1, Block_PIDs = 7, estado = 1;
            INSERT INTO RedesCabecera (idRed, estado) VALUES (9, 1)
            """,
            prints=["Processing: dvbNetworks"],
            logs=[
                "New network parameters: idRed=9,",
                'New network parameters: nid=777,name=Ala & "mar",autoBlockPIDsMask=7,',
            ],
        )
        files["NIT_table_777"] = files.pop("NIT_table_12345")
        files["SDT_table_777"] = files.pop("SDT_table_12345")
        self.assertEqual(files, {path.name: path.read_bytes() for path in folder.iterdir()})

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<dvbNetworks><dvbNetwork><id>1</id><nitPatron>2</nitPatron></dvbNetwork>"
            "</dvbNetworks>",
            *(4, 103),
            prints=["Processing: dvbNetworks"],
            logs=["Error 103, nitPatron not allowed value detected"],
        )


class DiseqcsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<diseqcs><diseqc><id>1</id></diseqc>"
                "<DISEQC><Id>2</Id><position>7</position><name>'n' &amp; m</name><orbit>130</orbit>"
                "<polarity>HORIZONTAL</polarity><band>Low</band></DISEQC>"
                "<diseqc><band>HIGH</band><polarity>Vertical</polarity><id>8</id></diseqc>"
                "</diseqcs>"
            ),
            """
            DELETE FROM DiSEqCGlobal WHERE idDiSEqCGlobal > 2;
            UPDATE DiSEqCGlobal
            SET Posicion = 7, Nombre = '''n'' & m', Orbita = 130, Polaridad = 1, Banda = 0,
                Estado = 1
            WHERE idDiSEqCGlobal = 2;
            INSERT INTO DiSEqCGlobal VALUES (8, '', 0, 0, 0, 1, 1)
            """,
            prints=["Processing: diseqcs"],
            logs=[
                "New DISEqC parameters: position=1 name=19.2E V low orbit=192 polarity=0 band=0",
                "New DISEqC parameters: position=7 name='n' & m orbit=130 polarity=1 band=0",
                "New DISEqC parameters: position=0 name= orbit=0 polarity=0 band=1",
            ],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<diseqcs><diseqc><id>1</id><polarity>v</polarity></diseqc></diseqcs>",
            *(2, 101),
            prints=["Processing: diseqcs"],
            logs=["Error 101, Invalid value for diseqc/polarity"],
        )


class ScramblingsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("RNB-K408"),
            document(
                "<scramblings><SCRAMBLING><NAME>other</NAME><active>0</active><mode>Even</mode>"
                "<frequency>5</frequency><oddKey>00FF</oddKey><date>today</date></SCRAMBLING>"
                "</scramblings>"
            ),
            """
            UPDATE ScramblingGlobal SET Mode = 0, Estado = 1;
            UPDATE ScramblingKeysGlobal
            SET Mode = 0, Frequency = 5, Odd = '00FF', EK_Odd = '', Date = 'today', Estado = 1
            """,
            prints=["Processing: scramblings"],
            logs=[],
            actions=[KEY_TOOL],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<scramblings><scrambling><name/><active>2</active></scrambling></scramblings>",
            *(4, 103),
            prints=["Processing: scramblings"],
            logs=["Error 103, scrambling/active should be 0/1"],
        )


class PreferredLanguagesTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<preferredLanguages><language>eng</language><LANGUAGE/><language>50%</language>"
                "<language>eng</language></preferredLanguages>"
            ),
            """
            DELETE FROM AudioLanguageListGlobal;
            INSERT INTO AudioLanguageListGlobal VALUES (1, 'eng'), (2, ''), (3, '50%'), (4, 'eng')
            """,
            prints=["Processing: preferredLanguages"],
            logs=[
                "New preferredLanguage eng",
                "New preferredLanguage ",
                "New preferredLanguage 50%",
                "New preferredLanguage eng",
            ],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            "<preferredLanguages><language>eng</language><lang>spa</lang></preferredLanguages>",
            *(2, 101),
            prints=["Processing: preferredLanguages"],
            logs=["New preferredLanguage eng", "Error 101, language expected"],
        )


class ModulesTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310", ONE_MODULE),
            document(
                modules(
                    "<Attenuation>7dB</Attenuation><NAME>Norte &amp; 'sur'</NAME><id>x</id>"
                    "<dvbNetworkId>2</dvbNetworkId><modoSalidaRF>1</modoSalidaRF>"
                )
            ),
            """UPDATE RedesModulos SET Atenuacion = 7, LabelName = 'Norte & ''sur''', RED = 2,
                      ModoSalidaRF = 1, estado = 1""",
            prints=["Processing: modules"],
            logs=[
                "New Module parameters: attenuation: 7 name: Norte & 'sur' dvbNetworkId: 2"
                " modoSalidaRF: 1"
            ],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310"),
            modules("<name>new</name>"),
            *(5, 202),
            prints=["Processing: modules"],
            logs=["Error 503, Invalid amount of modules"],
        )


class InputsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310", ONE_MODULE),
            document(
                modules(
                    "<inputs><input><inputId>1</inputId><type>0</type>"
                    "<active>1</active><onid>2</onid><tsid>1011</tsid><frequency>11000</frequency>"
                    "<diseqc>1</diseqc><band>LOW</band><PLSmode>auto</PLSmode>"
                    "<scramblingID>5</scramblingID><streamID>3</streamID><PLPID>9</PLPID>"
                    "<inputStatus><signalQuality>Good</signalQuality></inputStatus>"
                    "</input></inputs>"
                )
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

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310", ONE_MODULE),
            modules(
                "<inputs><input><tsid>99</tsid><inputId>1</inputId><type>0</type>"
                "<band>middle</band></input></inputs>"
            ),
            *(5, 202),
            prints=[
                *("Processing: modules", "Processing: Inputs"),
                *("Input: TSID = 99", "Input: Type = 0"),
            ],
            logs=[
                "Error 401, Invalid value for module/input/band",
                "New Module parameters: ",
            ],
        )


class OutputsTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310", ONE_MODULE),
            document(
                modules(
                    "<outputs><output><outputId>1</outputId>"
                    "<active>0</active><type>9</type><onid>5</onid><tsid>6</tsid>"
                    "<frequency>600000</frequency><symbolRate>6875</symbolRate>"
                    "<modeOFDM>2k</modeOFDM><bandwidth>7 mhz</bandwidth>"
                    "<guardInterval>1/4</guardInterval>"
                    "<constellation>16 qam</constellation><codeRate>7/8</codeRate>"
                    "<formatIQ>REVERSED</formatIQ></output></outputs>"
                )
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

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310", ONE_MODULE),
            modules(
                "<modoSalidaRF>1</modoSalidaRF><outputs><output><outputId>1</outputId>"
                "<constellation>QPSK</constellation></output></outputs>"
            ),
            *(5, 202),
            prints=["Processing: modules", "Processing: Outputs"],
            logs=[
                "Error 402, Invalid value for module/output/constellation DVBC",
                "New Module parameters:  modoSalidaRF: 1",
            ],
        )


class ServicesTest(SectionTest):
    def test_applied(self) -> None:
        self.assertLoads(
            self.device("QRA-310", ONE_MODULE),
            document(
                service(
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
            UNLISTED
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

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310", ONE_MODULE),
            service("<inputSid>65536</inputSid>"),
            *(4, 103),
            prints=["Processing: modules", "Processing: Services"],
            logs=[
                "Error 103, inputSid value cannot be greater than 65535",
                "New Module parameters: ",
            ],
        )


class PidOrdersTest(SectionTest):
    def test_applied(self) -> None:
        # Stored: ('', 272, 27, 1), ('spa', 273, 4, 2), ('spa', 275, 129, 3).
        self.assertLoads(
            self.device("QRA-310", ONE_MODULE),
            document(
                service(
                    "<pidOrders>"
                    "<pidOrder><languageCode>spa</languageCode><streamId>273</streamId>"
                    "<type>4</type><order>1</order></pidOrder>"
                    "<pidOrder><languageCode/><streamId>272</streamId><type>27</type>"
                    "<order>2</order></pidOrder>"
                    "<pidOrder><languageCode>Spa</languageCode><streamId>275</streamId>"
                    "<type>129</type><order>4</order></pidOrder>"
                    "</pidOrders>"
                )
            ),
            UNLISTED
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
                "languageCode node_value: Spa",
            ],
            logs=["New SERVICE parameters:  outputSid: 1101", "New Module parameters: "],
        )

    def test_refused(self) -> None:
        self.assertSectionRefused(
            self.device("QRA-310", ONE_MODULE),
            service("<pidOrders><stream/></pidOrders>"),
            *(2, 101),
            prints=[
                *("Processing: modules", "Processing: Services"),
                "Processing: PIDs --->idSSG: 1",
            ],
            logs=[
                "Error 101, No pidOrder element found",
                "New Module parameters: ",
            ],
        )


class CamListTest(EndToEndTest):
    def test_applied(self) -> None:
        # Today is a day of the device's own time zone, and may end while the program runs.
        def local_date() -> str:
            return time.strftime("%Y-%m-%d", time.gmtime(time.time() + 14 * 3600))

        for _ in range(2):
            today = local_date()
            device = self.device("RNB-K408")
            expected = changed(
                device,
                f"""
                DELETE FROM VSecure;
                INSERT INTO VSecure VALUES
                    (1, 'Fab ''x''', 'C1', 'AABB==', 'EK', '2001-02-03', '0', '0', 'D & d', '1'),
                    (2, '', 'C2', '', '', '{today}', '0', '0', '', '1'),
                    (3, '', 'C3', 'K', '', '', '0', '0', '', '1'),
                    (4, '', '', '', 'EK4', '{today}', '0', '0', '', '1')
                """,
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
            result = self.load(device, text, env={"TZ": "EAST-14"})
            if today == local_date():
                break
        self.assertRun(result, stdout=b"", syslog=[])
        self.assertTables(expected, tables(device))

    def test_refused_but_not_the_configuration_before_it(self) -> None:
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
