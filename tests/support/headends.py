"""Headends made up at random, for tests of what must hold for all of them.

    sql = headend("QRA-310", seed=7)
    with closing(device.database(CONFIG_DB)) as database:
        database.executescript(sql["config_global"])

A headend is such that an import accepts its export. Apart from that it may hold anything: NULL in
nearly every column, texts with markup, statuses that are set already, services on their way out.
"""

import random
from collections.abc import Callable
from pathlib import Path

SCHEMA = Path(__file__).resolve().parents[2] / "sim/schema"

KEYS = """
    identificacion_cabecera identificacion_localizacion identificacion_fecha identificacion_contrato
    identificacion_instalador identificacion_codCanal identificacion_hostType
    identificacion_TVModels identificacion_installationMode codtimezone idtimezone subtimezone
    MaturityRating mantenimiento_hora mantenimiento_min mantenimiento_activo network_ConfigureNET
    network_UseDHCPIP network_IP network_Netmask network_Gateway network_PrimaryDNS
    network_SecondaryDNS servidorZEN_activo servidorZEN_intervalo servidorZEN_direccion
    servidorZEN_usuario servidorZEN_password LNB_fb LNB_fa LNB_fbandaC LNB_BandaSatelite
""".split()

PIECES = (
    *("a", "TV", "7", " ", "  ", "&", "<", ">", '"', "'", "%", "%s", "%Q", "&amp;", "]]>", "<!--"),
    *("ñ", "É", "Ω", "漢字", "\u20ac", "\U0001f4fa", "\n", "\t", "/", "\\", ";", "--", "\x7f"),
)


class Headend:
    def __init__(self, model: str, seed: int) -> None:
        self.random = random.Random(f"{model} {seed}")
        self.model = model
        self.statements: list[str] = []

    # Values.

    def some(self, *values: Callable | object) -> object:
        value = self.random.choice(values)
        return value() if callable(value) else value

    def chance(self, percent: int) -> bool:
        return self.random.randrange(100) < percent

    def number(self, low: int = 0, high: int = 65535) -> int:
        return self.random.choice((low, high, self.random.randint(low, high)))

    def rarely_null(self, value: object) -> object:
        return None if self.chance(8) else value

    def text(self) -> str | None:
        """Any text but one of blanks only, which a document cannot tell from none."""
        if self.chance(15):
            return self.some(None, "")
        text = "".join(self.random.choices(PIECES, k=self.random.randint(1, 8)))
        return text if text.strip() else text + "x"

    def code(self, count: int) -> int | None:
        return self.rarely_null(self.random.randrange(count))

    def any_number(self) -> int | None:
        return self.rarely_null(self.number(-5, 99999))

    def status(self) -> int | None:
        return self.some(0, 0, 1, None)

    # Rows.

    def insert(self, table: str, **values: object) -> None:
        columns = ", ".join(values)
        quoted = ", ".join(map(_quoted, values.values()))
        self.statements.append(f"INSERT INTO {table} ({columns}) VALUES ({quoted});")

    def taken(self) -> str:
        statements, self.statements = self.statements, []
        return "\n".join(statements)

    def keys(self, count: int) -> list[int]:
        """Row keys that rise, with gaps."""
        return sorted(self.random.sample(range(1, 8 * count + 2), count))

    # The configuration database.

    def settings(self) -> None:
        for key in self.random.sample(KEYS, len(KEYS)):
            self.insert("configuracionWebGlobal", nombre=key, valor=self.text(), aplicarBackup=1)

    def lists(self) -> None:
        for key in self.keys(self.random.randrange(5)):
            self.insert(
                "MantenimientoHomeChannelsGlobal",
                idMantenimiento=key,
                Frequency=self.any_number(),
                Orbita=self.any_number(),
                Polaridad=self.code(2),
                Banda=self.code(2),
                SymbolRate=self.any_number(),
                ONID=self.any_number(),
                TSID=self.any_number(),
                Estado=self.status(),
            )
        for key in self.keys(self.random.randrange(4)):
            self.network(key)
        for key in self.keys(self.random.randrange(6)):
            self.insert(
                "DiSEqCGlobal",
                idDiSEqCGlobal=key,
                Nombre=self.text(),
                Posicion=self.any_number(),
                Orbita=self.any_number(),
                Polaridad=self.code(2),
                Banda=self.code(2),
                Estado=self.status(),
            )
        for key in self.keys(self.random.randrange(5)):
            self.insert("AudioLanguageListGlobal", idALLG=key, AudioCode=self.text())

    def network(self, key: int) -> None:
        kind = self.code(2)
        pattern = self.number(-1, 9) if kind == 1 else self.code(2)
        self.insert(
            "RedesCabecera",
            idRed=key,
            NombreRed=self.text(),
            NID=self.any_number(),
            ONID_Out=self.any_number(),
            Tipo_NIT_Patron=kind,
            NIT_Patron=pattern,
            Version_NIT_Patron=self.any_number() if pattern else self.some(0, None),
            Auto_Service_List=self.any_number(),
            LCN_Offset=self.any_number(),
            LCN_Mode=self.any_number(),
            LCN_Type=self.any_number(),
            Force_ServiceName=self.any_number(),
            NIT_Version=self.any_number(),
            TV_Type=self.any_number(),
            CI_TV_Type=self.any_number(),
            LG_comp_VSecure=self.any_number(),
            Block_PIDs=self.code(16),
            Decrypt_PIDs=self.code(16),
            CellID=self.any_number(),
            NIT_Follow=self.any_number(),
            estado=self.status(),
        )

    def scrambling(self) -> None:
        if self.chance(20):
            return
        self.insert(
            "ScramblingGlobal",
            idScrambling=self.number(1, 9),
            ScramblingName=self.some("VSecure", "vsecure"),
            Mode=self.code(2),
            Estado=self.status(),
        )
        self.insert(
            "ScramblingKeysGlobal",
            idScramblingKeys=self.number(1, 9),
            Mode=self.code(3),
            Frequency=self.any_number(),
            System=self.some("VSecure", "VSECURE"),
            Odd=self.text(),
            Even=self.text(),
            K_Shared=self.text(),
            EK_Odd=self.text(),
            EK_Even=self.text(),
            Date=self.text(),
            Estado=self.status(),
        )

    def guide(self) -> None:
        satellites = self.keys(self.random.randrange(4))
        for key in satellites:
            self.insert(
                "Service_EPG_Satellite",
                idService_EPG_Satellite=key,
                TSID=self.number(1),
                ONID=self.number(1),
                Frequency=self.any_number(),
                SymbolRate=self.any_number(),
                Polaridad=self.random.randrange(2),
                Orbita=self.any_number(),
                West_East_Flag=self.code(2),
                Estado=self.status(),
            )
        services = self.keys(self.random.randrange(5))
        for key in services:
            self.insert(
                "Service_EPG",
                idService_EPG=key,
                ONID=self.number(1),
                TSID=self.number(1),
                SID=self.number(1),
                EPG=self.any_number(),
                LCN=self.number(1),
                fk_idService_EPG_Satellite=self.some(0, None, 999, *satellites, *satellites),
                Video_Type=self.any_number(),
                Video_peak_bitrate=self.any_number(),
                Service_type=self.any_number(),
                Nombre=self.text(),
                Proveedor=self.text(),
            )
        # Some belong to no service.
        for _ in range(self.random.randrange(6)):
            self.insert(
                "Service_EPG_audios",
                fk_idService_EPG=self.some(999, *services),
                Language_code=self.text(),
                Audio_Type=self.any_number(),
                Estado=self.status(),
            )
            self.insert(
                "Service_EPG_replacing",
                fk_idService_EPG=self.some(999, *services),
                replacing_epg_channel_id=self.any_number(),
                Estado=self.status(),
            )

    def modules(self) -> list[str]:
        count = self.random.randint(1, 4)
        macs = [f"02:00:{number:02X}:AA:0B" for number in self.random.sample(range(256), count)]
        for key, mac in zip(self.keys(count), macs):
            family, kind = self.some(36, 36, 36, 35, None), self.some(2, 7, 9, 13, None)
            # A document of this model does not tell the mode, so that it is taken for 0.
            mode = 0 if self.model == "RNB-K408" else self.code(2)
            self.insert(
                "RedesModulos",
                idRedMod=key,
                MAC=mac,
                HostName=self.text(),
                LabelName=self.text(),
                RED=self.any_number(),
                Familia=family,
                Modelo=kind,
                Master=self.code(2),
                HWVersion=self.text(),
                NumeroSerie=self.text(),
                Atenuacion=self.any_number(),
                ModoSalidaRF=mode,
                estado=self.status(),
            )
            for number in self.some((1,), (1, 2), (2, 1), (2,)):
                self.input(mac, number)
            for number in self.some((1,), (1, 2), (2, 1), (2,)):
                self.output(mac, number, 5 if mode else 3)
            self.services(mac, told_to_decrypt=family == 36 and kind != 2)
        return macs

    def input(self, mac: str, number: int) -> None:
        kind = self.random.randrange(3)
        key = self.next_key()
        active = self.code(2)
        self.insert(
            "EntradasGlobal",
            idEntradasGlobal=key,
            MAC=mac,
            tipoEntrada=self.some(None, 0) if kind == 0 else kind,
            TSID=self.any_number(),
            ONID=self.any_number(),
            Activo=active,
            ResumenNIT=self.text(),
            fk_idEntrada=number,
            Estado=self.status(),
        )
        if kind == 0 or self.chance(80):
            self.insert(
                "NimGlobal",
                MAC=mac,
                Frequency=self.any_number(),
                SymbolRate=self.any_number(),
                banda_FI=self.code(2),
                fe=self.any_number(),
                STANDBY=self.code(2),
                DiSEqC=self.rarely_null(self.number(0, 4)),
                RFIN_LOOP=self.code(2),
                fk_idEntradasGlobal=key,
                fk_idNim=number,
                ModoPLS=self.some(0, None),
                ScramblingID=self.any_number(),
                StreamID=self.some(-2, self.any_number),
                Estado=self.status(),
            )
        if kind == 1 or self.chance(80):
            self.insert(
                "NimCOFDMGlobal",
                MAC=mac,
                Frequency=self.any_number(),
                Bandwidth=self.code(3),
                Hierarchy=self.code(2),
                trackingStatusEn=self.any_number(),
                TSID_Tracking=self.any_number(),
                ONID_Tracking=self.any_number(),
                STANDBY=self.code(2),
                fk_idEntradasGlobal=key,
                fk_idNimCOFDM=number,
                PLP_ID=self.some(-2, self.any_number),
                Estado=self.status(),
            )
        if kind == 2 or self.chance(80):
            self.insert(
                "NimQAMGlobal",
                MAC=mac,
                Frequency=self.any_number(),
                SymbolRate=self.any_number(),
                Constelacion=self.any_number(),
                STANDBY=self.code(2),
                fk_idEntradasGlobal=key,
                fk_idNimQAM=number,
                Estado=self.status(),
            )

    def output(self, mac: str, number: int, constellations: int) -> None:
        key = self.next_key()
        self.insert(
            "SalidasLogicasGlobal",
            idSalidasLogicasGlobal=key,
            MAC=mac,
            TSID_Out=self.any_number(),
            ONID_Out=self.any_number(),
            tipoSalida=self.any_number(),
            Activo=self.code(2),
            fk_idSalidasLogicas=number,
            Estado=self.status(),
        )
        self.insert(
            "RFOutGlobal",
            MAC=mac,
            Frecuencia=self.any_number(),
            Symbol_Rate=self.any_number(),
            Ancho_Banda=self.code(3),
            Modo_OFDM=self.code(2),
            Intervalo_Guarda=self.code(4),
            Constelacion=self.code(constellations),
            Code_Rate=self.code(5),
            Espectro_Salida=self.code(2),
            Modo_Salida_Modulacion=self.some(0, 0, 1, 2, 3, 3, 3, -1, None),
            fk_idSalidasLogicasGlobal=key,
            fk_idRFOut=number,
            Estado=self.status(),
        )

    def services(self, mac: str, *, told_to_decrypt: bool) -> None:
        told = told_to_decrypt and self.model != "WVX-BQ4"
        for sid in self.random.sample(range(1, 65536), self.random.randrange(8)):
            key = self.next_key()
            decrypt = self.code(2)
            self.insert(
                "ServiciosSalidaGlobal",
                idSSG=key,
                MAC=mac,
                OSID=self.rarely_null(self.number()),
                SID=sid,
                NombreEntrada=self.text(),
                NombreSalida=self.text(),
                NombreForzado=self.code(2),
                Tipo=self.any_number(),
                VideoFormat=self.any_number(),
                Service_Type=self.any_number(),
                Video_peak_bitrate=self.any_number(),
                fk_idEntrada=self.code(3),
                fk_idSalidasLogicas=self.random.randint(1, 2),
                Seleccionado=self.code(2),
                Especial=self.code(2),
                # Where a document tells whether to decrypt, it also sets the order.
                Orden=(1 if decrypt == 1 else 2) if told else self.any_number(),
                Descifrar=decrypt,
                Transcoding=self.code(2),
                OLCN=self.any_number(),
                LCN=self.any_number(),
                LCNForzado=self.code(2),
                SimulcastLCN=self.any_number(),
                idEPG=self.any_number(),
                DuplicadoClonado=self.code(2),
                SSU=self.some(0, 0, 0, 0, None, 1, 2),
                PMT_pid=self.any_number(),
                EstadoBorrado=self.some(0, 0, 0, 0, None, 1, 2),
                EstadoServicio=self.status(),
            )
            self.streams(mac, key)

    def streams(self, mac: str, service: int) -> None:
        seen = set()
        for _ in range(self.random.randrange(5)):
            language, pid, kind = self.text(), self.any_number(), self.code(200)
            if (language or "", pid, kind) in seen:
                continue
            seen.add((language or "", pid, kind))
            self.insert(
                "PIDsSalidaGlobal",
                MAC=mac,
                fk_idSSG=service,
                fk_idEntrada=self.code(3),
                fk_idSalidasLogicas=self.code(3),
                Orden=self.any_number(),
                Tipo=kind,
                StreamId=pid,
                AudioCode=language,
                EstadoPID=self.status(),
                EstadoBorrado=self.status(),
            )

    _key = 0

    def next_key(self) -> int:
        self._key += self.random.randint(1, 3)
        return self._key

    # The state database, which is only read, and the CAM list.

    def state(self, macs: list[str]) -> None:
        for mac in macs:
            for _ in range(self.random.randrange(3)):
                self.insert(
                    "CAMInfoGlobal",
                    MAC=mac,
                    CardStatus=self.code(6),
                    CardSerialNumber=self.any_number(),
                    CAMSerialNumber=self.text(),
                    CAMVersion=self.any_number(),
                    RightsHours=self.rarely_null(self.number(-30, 80)),
                )
                self.insert("ModulosCabecera", MAC=mac, SWVersion=self.text())
                for table in ("TempNIMGlobal", "TempNIMCOFDMGlobal", "TempNIMQAMGlobal"):
                    self.insert(
                        table,
                        MAC=mac,
                        fk_idEntrada=self.random.randint(1, 2),
                        Calidad=self.code(4),
                        Locked=self.code(3),
                    )

    def cams(self) -> None:
        for key in self.keys(self.random.randrange(5)):
            self.insert(
                "VSecure",
                idVSecure=key,
                Fabricante=self.text(),
                idCliente=self.text(),
                K_Publica=self.some(None, "", "S0VZ", "YWJj=="),
                EK_Shared=self.text(),
                Alta=self.text(),
                Reintentos=self.any_number(),
                Error=self.any_number(),
                Descripcion=self.text(),
                estado=self.status(),
            )


def headend(model: str, seed: int) -> dict[str, str]:
    """A headend's statements by the name of their database. They replace all that is in it."""
    maker = Headend(model, seed)
    sql = {}
    maker.settings()
    maker.lists()
    maker.scrambling()
    maker.guide()
    macs = maker.modules()
    sql["config_global"] = maker.taken()
    maker.state(macs)
    sql["temp_global"] = maker.taken()
    maker.cams()
    sql["vsec_global"] = maker.taken()
    return {name: _emptied(name) + statements for name, statements in sql.items()}


def _emptied(database: str) -> str:
    words = (SCHEMA / f"{database}.sql").read_text("utf-8").split("CREATE TABLE ")[1:]
    return "".join(f"DELETE FROM {word.split()[0]};\n" for word in words)


def _quoted(value: object) -> str:
    if value is None:
        return "NULL"
    if isinstance(value, int):
        return str(value)
    return "'" + str(value).replace("'", "''") + "'"
