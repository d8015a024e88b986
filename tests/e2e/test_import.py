"""Import of documents that are in order: settings and headend-wide sections."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    DOCUMENT_FILE,
    ERROR_FILE,
    NEWS_ERROR,
    EndToEndTest,
    changed,
    document,
    main,
    tables,
)

KEY_TOOL = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"


def valor(**values: str | None) -> str:
    """Statements that set these keys of the settings table."""

    def quoted(value: str | None) -> str:
        return "NULL" if value is None else "'" + value.replace("'", "''") + "'"

    return "".join(
        f"UPDATE configuracionWebGlobal SET valor = {quoted(value)} WHERE nombre = '{key}';"
        for key, value in values.items()
    )


class SettingTest(EndToEndTest):
    def test_changed_values_are_stored_logged_and_applied_once(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<network><ip>10.0.0.7</ip><dns1>192.168.10.1</dns1>"
                "<gateway>10.0.0.1</gateway></network>"
            ),
            valor(network_IP="10.0.0.7", network_Gateway="10.0.0.1"),
            prints=[
                "Processing: network",
                *("setConfig: network_IP = 10.0.0.7", "0x"),
                *("setConfig: network_PrimaryDNS = 192.168.10.1", "0x"),
                *("setConfig: network_Gateway = 10.0.0.1", "0x"),
            ],
            logs=[
                "setConfig network_IP = 10.0.0.7",
                "setConfig network_PrimaryDNS = 192.168.10.1",
                "setConfig network_Gateway = 10.0.0.1",
            ],
            actions=["WAN_from_DB.sh"],
        )

    def test_unchanged_values_write_nothing_and_run_nothing(self) -> None:
        device = self.device("QRA-310")
        before = device.path(CONFIG_DB).read_bytes()
        self.assertLoads(
            device,
            document(
                "<network><internet>1</internet><dhcp>0</dhcp><ip>192.168.10.21</ip></network>"
                "<regional><country>ES</country></regional><lnb><oscLowFreq>9750</oscLowFreq></lnb>"
            ),
            prints=[
                "Processing: network",
                *("setConfig: network_ConfigureNET = 1", "0x"),
                *("setConfig: network_UseDHCPIP = 0", "0x"),
                *("setConfig: network_IP = 192.168.10.21", "0x"),
                "Processing: regional",
                *("setConfig: idtimezone = ES", "0x"),
                "Processing: lnb",
                *("setConfig: LNB_fb = 9750", "0x"),
            ],
        )
        self.assertEqual(before, device.path(CONFIG_DB).read_bytes())

    def test_every_element_has_its_key(self) -> None:
        # Each is given a value of its own. Most keys are sent to a model that does not export them.
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
        text, stored = "", {}
        for section, children in sections.items():
            text += f"<{section}>"
            for element, key in children.items():
                stored[key] = f"new {element} of {section}"
                text += f"<{element}>{stored[key]}</{element}>"
            text += f"</{section}>"
        for model in ("WVX-BQ4", "RNB-K408"):
            with self.subTest(model):
                self.assertLoads(
                    self.device(model),
                    document(text),
                    valor(**stored),
                    logs=[f"setConfig {key} = {value}" for key, value in stored.items()],
                    actions=["WAN_from_DB.sh", "get_time_offsets.sh 0 No", "S60crond restart"],
                )

    def test_names_match_in_any_letter_case(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<NETWORK><IP>10.1.1.1</IP></NETWORK><Lnb><OSCHIGHFREQ>10750</OSCHIGHFREQ></Lnb>"
                "<MATURITYrating>7</MATURITYrating>"
                "<Maintenances><MAINTENANCE><Hour>1</Hour><MIN>2</MIN><aCtive>0</aCtive>"
                "</MAINTENANCE></Maintenances>"
            ),
            valor(
                network_IP="10.1.1.1",
                LNB_fa="10750",
                MaturityRating="7",
                mantenimiento_hora="1",
                mantenimiento_min="2",
                mantenimiento_activo="0",
            ),
            actions=["WAN_from_DB.sh"],
        )

    def test_child_that_a_section_does_not_know_is_skipped_silently(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<network><ipv6>::1</ipv6><regional/><headendName>x</headendName></network>"),
            prints=["Processing: network"],
            logs=[],
        )

    def test_missing_key_is_inserted(self) -> None:
        self.assertLoads(
            self.device("QRA-310", "DELETE FROM configuracionWebGlobal WHERE nombre = 'LNB_fb'"),
            document("<lnb><oscLowFreq>9700 %s 5%</oscLowFreq></lnb>"),
            "INSERT INTO configuracionWebGlobal (nombre, valor) VALUES ('LNB_fb', '9700 %s 5%')",
            logs=["setConfig LNB_fb = 9700 %s 5%"],
        )

    def test_missing_network_key_runs_the_network_script(self) -> None:
        self.assertLoads(
            self.device("QRA-310", "DELETE FROM configuracionWebGlobal WHERE nombre LIKE 'net%'"),
            document("<network><dns2/></network>"),
            """INSERT INTO configuracionWebGlobal (nombre, valor)
               VALUES ('network_SecondaryDNS', '')""",
            actions=["WAN_from_DB.sh"],
        )

    def test_null_counts_as_the_empty_text(self) -> None:
        self.assertLoads(
            self.device("QRA-310", valor(network_IP=None)), document("<network><ip/></network>")
        )

    def test_empty_text_replaces_a_value(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<maturityRating/><identification><location></location></identification>"),
            valor(MaturityRating="", identificacion_localizacion=""),
            prints=[
                "Processing: maturityRating",
                *("setConfig: MaturityRating = ", "0x"),
                "Processing: identification",
                *("setConfig: identificacion_localizacion = ", "0x"),
            ],
        )

    def test_first_percent_sign_of_a_changed_value_becomes_a_blank(self) -> None:
        for given, stored in (("50%", "50 "), ("%s%s%n", " s%s%n"), ("5% of 9%q", "5  of 9%q")):
            with self.subTest(given):
                self.assertLoads(
                    self.device("QRA-310"),
                    document(f"<identification><location>{given}</location></identification>"),
                    valor(identificacion_localizacion=stored),
                    logs=[f"setConfig identificacion_localizacion = {given}"],
                )

    def test_quotes_are_stored_as_they_are(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<identification><installer>l'&apos;\"&quot;</installer></identification>"),
            valor(identificacion_instalador="l''\"\""),
        )

    def test_underscore_of_a_key_matches_any_character_and_the_first_row_is_taken(self) -> None:
        other = "INSERT INTO configuracionWebGlobal VALUES (0, 'NETWORK-ip', 'old', 0)"
        self.assertLoads(
            self.device("QRA-310", other),
            document("<network><ip>new</ip></network>"),
            "UPDATE configuracionWebGlobal SET valor = 'new' WHERE idConfiguracionGlobal = 0",
            actions=["WAN_from_DB.sh"],
        )

    def test_last_maintenance_wins(self) -> None:
        self.assertLoads(
            self.device("LMV-502"),
            document(
                "<maintenances>"
                "<maintenance><hour>1</hour><hour>5</hour><min>6</min><active>1</active>"
                "</maintenance>"
                "<maintenance><other>9</other><active/><min>7</min><hour>8</hour></maintenance>"
                "</maintenances>"
            ),
            valor(mantenimiento_hora="8", mantenimiento_min="7", mantenimiento_activo=""),
            prints=[
                "Processing: maintenances",
                *("setConfig: mantenimiento_hora = 5", "0x"),
                *("setConfig: mantenimiento_min = 6", "0x"),
                *("setConfig: mantenimiento_activo = 1", "0x"),
                *("setConfig: mantenimiento_hora = 8", "0x"),
                *("setConfig: mantenimiento_min = 7", "0x"),
                *("setConfig: mantenimiento_activo = ", "0x"),
            ],
            actions=[],
        )

    def test_empty_sections_of_settings_change_nothing(self) -> None:
        self.assertLoads(
            self.device("RNB-K408"),
            document(
                "<identification/><regional/><maintenances/><network/><remoteControl/><lnb></lnb>"
            ),
            prints=[
                "Processing: identification",
                "Processing: regional",
                "Processing: maintenances",
                "Processing: network",
                "Processing: remoteControl",
                "Processing: lnb",
            ],
            logs=[],
        )

    def test_sections_are_applied_in_the_order_of_the_document(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<network><ip>1</ip></network><lnb/><network><ip>2</ip></network><identification/>"
            ),
            valor(network_IP="2"),
            prints=[
                "Processing: network",
                *("setConfig: network_IP = 1", "0x"),
                "Processing: lnb",
                "Processing: network",
                *("setConfig: network_IP = 2", "0x"),
                "Processing: identification",
            ],
            actions=["WAN_from_DB.sh"],
        )


class RegionalTest(EndToEndTest):
    def test_time_zones_of_the_country_are_applied(self) -> None:
        device = self.device("QRA-310")
        self.assertLoads(
            device,
            document(
                "<regional><language>fr</language><country>Es</country>"
                "<timezone>Europe/Paris</timezone></regional>"
            ),
            valor(codtimezone="fr", idtimezone="Es", subtimezone="Europe/Paris"),
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

    def test_country_without_zones_asks_for_none(self) -> None:
        for country in ("BV", "hm", "XX", ""):
            with self.subTest(country):
                device = self.device("QRA-310")
                self.assertLoads(
                    device,
                    document(f"<regional><country>{country}</country></regional>"),
                    valor(idtimezone=country),
                    actions=["get_time_offsets.sh 0 No", "S60crond restart"],
                )
                self.assertEqual(
                    "ES\noffset of No\n", device.path("/tarvo/conf/tot_file").read_text()
                )

    def test_actions_follow_the_commit_in_their_order(self) -> None:
        # The scripts see what was committed.
        device = self.device("RNB-K408")
        look = (
            "#!/usr/bin/python3\nimport sqlite3\n"
            f"database = sqlite3.connect('{CONFIG_DB}')\n"
            'value = database.execute("SELECT valor FROM configuracionWebGlobal'
            " WHERE nombre = 'network_IP'\").fetchone()[0]\n"
            "print(value, file=open('/tarvo/sim/actions.log', 'a'))\n"
        )
        device.path("/tarvo/script/WAN_from_DB.sh").write_text(look)
        self.assertLoads(
            device,
            document(
                "<scramblings/><regional><country>ad</country></regional>"
                "<network><ip>seen</ip></network>"
            ),
            valor(network_IP="seen", idtimezone="ad"),
            actions=["seen", "get_time_offsets.sh 0 Europe/Andorra", "S60crond restart", KEY_TOOL],
        )


class DocumentTest(EndToEndTest):
    IP = valor(network_IP="10.9.8.7")
    NETWORK = "<network><ip>10.9.8.7</ip></network>"

    def accepted(self, label: str, text: bytes, sql: str, *unknown: str) -> None:
        device = self.device("QRA-310")
        expected = changed(device, sql)
        result = self.load(device, text)
        self.assertRun(result, actions=["WAN_from_DB.sh"] if "network" in sql else [])
        self.assertEqual(
            [(NEWS_ERROR, f"r9::: Unknown configuration setting: {name}") for name in unknown],
            [line for line in result.syslog if line.priority == NEWS_ERROR],
        )
        self.assertTables(expected, tables(device))
        self.assertFalse(device.path(ERROR_FILE).exists())

    def test_forms_of_a_document(self) -> None:
        bare = f"<configuration>{self.NETWORK}</configuration>".encode()
        place = valor(identificacion_localizacion="@")

        def name(text: bytes) -> bytes:
            return (
                b"<configuration><identification><location>"
                + text
                + b"</location></identification></configuration>"
            )

        def placed(value: str) -> str:
            return place.replace("@", value)

        self.each(
            self.accepted,
            [
                ("without a declaration", bare, self.IP),
                ("byte order mark", b"\xef\xbb\xbf" + document(self.NETWORK), self.IP),
                ("blanks around", b" \r\n\t" + bare + b"\n\n ", self.IP),
                ("windows line ends", bare.replace(b"><", b">\r\n\t<"), self.IP),
                ("comment before", b"<!-- <configuration/> -->" + bare, self.IP),
                ("document type", b"<!DOCTYPE configuration [<!ENTITY a 'b'>]>" + bare, self.IP),
                ("instruction", b"<?tool do it?>" + bare, self.IP),
                ("attributes", bare.replace(b"<ip>", b"<ip a='1' b=\"&lt;\">"), self.IP),
                ("encoding that is not so", b'<?xml version="1.0" encoding="x"?>' + bare, self.IP),
                ("zero byte ends it", bare + b"\0<<<", self.IP),
                ("empty configuration", b"<configuration/>", ""),
                ("configuration with blanks", b"<configuration> \n </configuration>", ""),
                ("comment alone", b"<configuration><!-- <network/> --></configuration>", ""),
                ("first of two", bare + b"<configuration><lnb>x</lnb></configuration>", self.IP),
                ("after something else", b"<x><network/></x>" + bare, self.IP),
                ("under backup", b"<backup>" + bare + b"</backup>", self.IP),
                ("second in backup", b"<backup><x/>" + bare + b"</backup>", self.IP),
                ("backup beside", b"<x/><backup>" + bare + b"</backup>", self.IP),
                ("unknown section", document("<nothing/>" + self.NETWORK), self.IP, "nothing"),
                (
                    "comments among the elements",
                    document("<network><!-- a --><ip>10.9.8.7<!-- b --></ip></network><!-- c -->"),
                    self.IP,
                ),
                # Text that stands between sections is a section without a name.
                ("text", document("text" + self.NETWORK + "more"), self.IP, "", ""),
                ("character data", document("<![CDATA[x]]>" + self.NETWORK), self.IP, ""),
                ("text in a section", document(self.NETWORK.replace("<ip>", "text<ip>")), self.IP),
                ("entities", name(b"&lt;&#65;&#x42;&amp;&gt;&#xe9;"), placed("<AB&>é")),
                ("unknown entity", name(b"&euro; &"), placed("&euro; &")),
                ("entity of markup", name(b"&amp;lt;"), placed("&lt;")),
                ("character data as a value", name(b"<![CDATA[a <b> & c]]>"), placed("a <b> & c")),
                ("blanks around a value", name(b"  a\n b\t "), placed("  a\n b\t ")),
                (
                    "bytes of no encoding",
                    name(b"\xff\x80\x01"),
                    """UPDATE configuracionWebGlobal SET valor = CAST(x'FF8001' AS TEXT)
                       WHERE nombre = 'identificacion_localizacion'""",
                ),
            ],
        )

    def test_further_arguments_are_ignored(self) -> None:
        device = self.device("QRA-310")
        expected = changed(device, self.IP)
        device.path("/tmp/other.xml").write_bytes(document("<network><ip>1.1.1.1</ip></network>"))
        result = self.load(device, document(self.NETWORK), "/tmp/other.xml", "--help")
        self.assertRun(result, actions=["WAN_from_DB.sh"])
        self.assertTables(expected, tables(device))

    def test_file_is_left_as_it_was(self) -> None:
        device = self.device("QRA-310")
        text = document("<identification><location>a&amp;b&#65;</location></identification>")
        self.assertRun(self.load(device, text))
        self.assertEqual(text, device.path(DOCUMENT_FILE).read_bytes())


class HomeChannelTest(EndToEndTest):
    def test_table_is_rebuilt_from_stored_rows_and_defaults(self) -> None:
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

    def test_any_other_polarity_and_band_count_as_the_second(self) -> None:
        self.assertLoads(
            self.device("LMV-502"),
            document(
                "<homeChannels><homechannel><id>1</id><polarity>vert</polarity><band/>"
                "</homechannel></homeChannels>"
            ),
            """
            DELETE FROM MantenimientoHomeChannelsGlobal WHERE idMantenimiento = 2;
            UPDATE MantenimientoHomeChannelsGlobal SET Polaridad = 1, Estado = 1
            """,
        )

    def test_empty_section_deletes_every_channel(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<homeChannels/>"),
            "DELETE FROM MantenimientoHomeChannelsGlobal",
        )

    def test_null_is_kept_when_an_empty_text_is_given(self) -> None:
        self.assertLoads(
            self.device("QRA-310", "UPDATE MantenimientoHomeChannelsGlobal SET Frequency = NULL"),
            document(
                "<homeChannels><homechannel><id>1</id><frequency/></homechannel></homeChannels>"
            ),
            "DELETE FROM MantenimientoHomeChannelsGlobal WHERE idMantenimiento > 1",
        )


class NetworkTest(EndToEndTest):
    def test_table_is_rebuilt_and_a_new_identifier_renames_the_generated_tables(self) -> None:
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

    def test_numbers_are_written_unless_they_are_zero(self) -> None:
        numbers = {
            "ciplusTVs": ("CI_TV_Type", "ciplusTVs", 12),
            "tvType": ("TV_Type", "tvType", 9),
            "cellID": ("CellID", "cellID", 8),
            "forceServiceName": ("Force_ServiceName", "forcedServiceName", 7),
            "autoServiceList": ("Auto_Service_List", "autoServiceList", -6),
            "lcnOffset": ("LCN_Offset", "lcnOffset", 5),
            "lcnMode": ("LCN_Mode", "lcnMode", 4),
            "tipoNITPatron": ("Tipo_NIT_Patron", "tipoNITPatron", 1),
            "nitPatron": ("NIT_Patron", "nitPatron", 3),
            "versionNITPatron": ("Version_NIT_Patron", "versionNITPatron", 2),
        }
        values = {column: value for column, _, value in numbers.values()}
        stored = ", ".join(f"{column} = {value}" for column, value in values.items())
        given = "".join(f"<{name}>{value}</{name}>" for name, (_, _, value) in numbers.items())
        device = self.device("WVX-BQ4")
        self.assertLoads(
            device,
            document(f"<dvbNetworks><dvbNetwork><id>1</id>{given}</dvbNetwork></dvbNetworks>"),
            f"UPDATE RedesCabecera SET {stored}, estado = 1",
            logs=[
                "New network parameters: "
                + "".join(f"{label}={value}," for _, label, value in numbers.values())
            ],
        )
        # "ciplusTVs" is a text; the others count as not given.
        zeros = "".join(f"<{name}>0</{name}>" for name in numbers if name != "ciplusTVs")
        self.assertLoads(
            device,
            document(f"<dvbNetworks><dvbNetwork><id>1</id>{zeros}</dvbNetwork></dvbNetworks>"),
            logs=["New network parameters: "],
        )

    def test_stream_masks_change_only_the_bits_that_are_given(self) -> None:
        for stored, children, mask in (
            (5, "<subtitles>1</subtitles>", 7),
            (7, "<subtitles>0</subtitles>", 5),
            (7, "<subtitles>yes</subtitles>", 5),
            (6, "<text>1</text><DATA>0</DATA>", 3),
            (15, "<text>0</text><subtitles>0</subtitles><data>0</data>", 8),
            (0, "<data>1</data><data>0</data><text>1</text>", 1),
        ):
            for element, column in (
                ("autoBlockPIDs", "Block_PIDs"),
                ("autoDecryptPIDs", "Decrypt_PIDs"),
            ):
                with self.subTest(element, stored=stored, children=children):
                    self.assertLoads(
                        self.device("WVX-AQ4", f"UPDATE RedesCabecera SET {column} = {stored}"),
                        document(
                            f"<dvbNetworks><dvbNetwork><id>2</id><{element}>{children}</{element}>"
                            "</dvbNetwork></dvbNetworks>"
                        ),
                        f"""DELETE FROM RedesCabecera WHERE idRed = 1;
                            UPDATE RedesCabecera SET {column} = {mask}, estado = 1""",
                        logs=[f"New network parameters: {element}Mask={mask},"],
                    )

    def test_what_is_the_same_changes_nothing(self) -> None:
        self.assertLoads(
            self.device("WVX-BQ4", "UPDATE RedesCabecera SET NombreRed = NULL, CellID = NULL"),
            document(
                "<dvbNetworks><dvbNetwork><id>1</id><nid>61001</nid><name/><cellID/><lcnMode>x"
                "</lcnMode><autoBlockPIDs/><autoBlockPIDs><text>0</text></autoBlockPIDs>"
                "<InputVersionNIT>3</InputVersionNIT></dvbNetwork></dvbNetworks>"
            ),
            logs=["New network parameters: "],
        )

    def test_identifier_of_a_new_network_renames_as_well(self) -> None:
        device = self.device("WVX-BQ4")
        device.path("/tarvo/datosWeb/tablasSI/NIT_table_").write_text("nobody's")
        self.assertLoads(
            device,
            document("<dvbNetworks><dvbNetwork><id>5</id><nid>99</nid></dvbNetwork></dvbNetworks>"),
            """
            DELETE FROM RedesCabecera;
            INSERT INTO RedesCabecera (idRed, NID, estado) VALUES (5, 99, 1)
            """,
            logs=["New network parameters: idRed=5,nid=99,"],
        )
        self.assertEqual(
            "nobody's", device.path("/tarvo/datosWeb/tablasSI/NIT_table_99").read_text()
        )

    def test_patterns_at_their_bounds(self) -> None:
        for given, stored in (
            ("<tipoNITPatron>0</tipoNITPatron><nitPatron>0</nitPatron>", ""),
            ("<tipoNITPatron>0</tipoNITPatron><nitPatron>1</nitPatron>", "NIT_Patron = 1,"),
            ("<nitPatron>1</nitPatron>", "NIT_Patron = 1,"),
            ("<nitPatron>x</nitPatron><versionNITPatron>0</versionNITPatron>", ""),
            ("<versionNITPatron>0</versionNITPatron>", ""),
            (
                "<tipoNITPatron>1</tipoNITPatron><nitPatron>2</nitPatron>"
                "<versionNITPatron>1</versionNITPatron>",
                "Tipo_NIT_Patron = 1, NIT_Patron = 2, Version_NIT_Patron = 1,",
            ),
            # A later element of the same name overwrites; what was checked before stays checked.
            (
                "<tipoNITPatron>1</tipoNITPatron><nitPatron>-1</nitPatron>"
                "<tipoNITPatron>0</tipoNITPatron>",
                "NIT_Patron = -1,",
            ),
        ):
            with self.subTest(given):
                self.assertLoads(
                    self.device("WVX-BQ4"),
                    document(
                        f"<dvbNetworks><dvbNetwork><id>1</id>{given}</dvbNetwork></dvbNetworks>"
                    ),
                    f"UPDATE RedesCabecera SET {stored} estado = 1" if stored else "",
                )

    def test_empty_section_deletes_every_network(self) -> None:
        self.assertLoads(
            self.device("QRA-310"), document("<dvbNetworks/>"), "DELETE FROM RedesCabecera", logs=[]
        )


class ListTest(EndToEndTest):
    def test_positions_are_rebuilt_from_stored_rows_and_defaults(self) -> None:
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

    def test_languages_are_rebuilt_in_the_order_of_the_document(self) -> None:
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

    def test_empty_sections_empty_their_tables(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<diseqcs/><preferredLanguages/><serviceEPGs/>"),
            """
            DELETE FROM DiSEqCGlobal; DELETE FROM AudioLanguageListGlobal; DELETE FROM Service_EPG;
            DELETE FROM Service_EPG_Satellite; DELETE FROM Service_EPG_audios;
            DELETE FROM Service_EPG_replacing
            """,
            prints=[
                "Processing: diseqcs",
                "Processing: preferredLanguages",
                "Processing: serviceEPGs",
                "Processing: Service EPGs",
            ],
            logs=[],
        )


class ScramblingTest(EndToEndTest):
    def test_unchanged_keys_leave_the_rows_alone_and_run_the_key_tool_on_one_model(self) -> None:
        same = document(
            "<scramblings><scrambling><name>VSecure</name><active>1</active>"
            "<oddKey>1A2B3C4D5E6F7081</oddKey></scrambling></scramblings>"
        )
        for model, actions in (("QRA-310", []), ("RNB-K408", [KEY_TOOL])):
            with self.subTest(model):
                self.assertLoads(
                    self.device(model),
                    same,
                    prints=["Processing: scramblings"],
                    logs=[],
                    actions=actions,
                )

    def test_empty_section_runs_the_key_tool_too(self) -> None:
        self.assertLoads(self.device("RNB-K408"), document("<scramblings/>"), actions=[KEY_TOOL])

    def test_changed_key_clears_its_derived_key(self) -> None:
        for element, column, derived in (
            ("oddKey", "Odd", "EK_Odd"),
            ("evenKey", "Even", "EK_Even"),
        ):
            with self.subTest(element):
                self.assertLoads(
                    self.device("QRA-310"),
                    document(
                        f"<scramblings><scrambling><name/><{element}>00FF</{element}></scrambling>"
                        "</scramblings>"
                    ),
                    f"""UPDATE ScramblingKeysGlobal
                        SET {column} = '00FF', {derived} = '', Estado = 1""",
                    logs=[],
                )

    def test_state_mode_frequency_and_date(self) -> None:
        for text, mode in (("Even", 0), ("ODD", 1)):
            with self.subTest(text):
                self.assertLoads(
                    self.device("QRA-310"),
                    document(
                        "<scramblings><SCRAMBLING><NAME>other</NAME><active>0</active>"
                        f"<mode>toggle</mode><mode>{text}</mode><frequency>5</frequency>"
                        "<date>today</date></SCRAMBLING></scramblings>"
                    ),
                    f"""
                    UPDATE ScramblingGlobal SET Mode = 0, Estado = 1;
                    UPDATE ScramblingKeysGlobal
                    SET Mode = {mode}, Frequency = 5, Date = 'today', Estado = 1
                    """,
                )

    def test_missing_rows_are_inserted(self) -> None:
        self.assertLoads(
            self.device(
                "QRA-310", "DELETE FROM ScramblingGlobal; DELETE FROM ScramblingKeysGlobal"
            ),
            document(
                "<scramblings><scrambling><name>x</name><active>1</active><mode>Toggle</mode>"
                "<evenKey>AA</evenKey></scrambling></scramblings>"
            ),
            """
            INSERT INTO ScramblingGlobal VALUES (1, 'VSecure', 1, 1);
            INSERT INTO ScramblingKeysGlobal VALUES
                (1, 2, 0, 'VSecure', '', 'AA', '', '', '', '', 1)
            """,
        )

    def test_last_of_several_wins(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document(
                "<scramblings>"
                "<scrambling><name>a</name><active>0</active><date>1</date></scrambling>"
                "<scrambling><name>b</name><active>1</active><date>2</date></scrambling>"
                "</scramblings>"
            ),
            """
            UPDATE ScramblingGlobal SET Mode = 1, Estado = 1;
            UPDATE ScramblingKeysGlobal SET Date = '2', Estado = 1
            """,
        )


class ServiceGuideTest(EndToEndTest):
    def test_tables_are_emptied_and_rebuilt(self) -> None:
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

    def test_values_are_stored_as_the_document_gives_them(self) -> None:
        self.assertLoads(
            self.device("QRA-310"),
            document("<serviceEPGs><serviceEPG><lcn> 12abc</lcn></serviceEPG></serviceEPGs>"),
            """
            DELETE FROM Service_EPG; DELETE FROM Service_EPG_Satellite;
            DELETE FROM Service_EPG_audios; DELETE FROM Service_EPG_replacing;
            INSERT INTO Service_EPG (LCN, fk_idService_EPG_Satellite) VALUES (' 12abc', 0)
            """,
        )


if __name__ == "__main__":
    main()
