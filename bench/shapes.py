"""Headends of any size, for measuring.

    shape = Shape(modules=16, services=200, streams=2000)
    fill(device, shape)

Every row is a row of the sample device with other keys, so that a document of such a headend goes
back in as it came.
"""

from __future__ import annotations

import sqlite3
import sys
from collections.abc import Callable, Iterator
from contextlib import closing
from dataclasses import dataclass
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "sim"))

from device import DATABASES, Device  # noqa: E402

MODEL = "QRA-310"


@dataclass(frozen=True)
class Shape:
    """How many of each thing. Services are spread over the modules, streams over the services."""

    modules: int = 4
    services: int = 40
    streams: int = 120
    guide: int = 7
    networks: int = 2


# The devices of the tables in docs/performance.md; the first is the sample itself.
DEVICES: dict[str, Shape | None] = {
    "a": None,
    "b": Shape(modules=16, services=200, streams=2000),
    "c": Shape(modules=64, services=2500, streams=15000),
}

# Ways of growing, each with the shape of its first size; one thing is doubled from size to size.
GROWTH: dict[str, Callable[[int], Shape]] = {
    "modules": lambda size: Shape(8 * size, 16 * size, 48 * size),
    "services": lambda size: Shape(1, 60 * size, 180 * size),
    "streams": lambda size: Shape(1, 1, 200 * size),
    "guide": lambda size: Shape(1, 1, 1, guide=80 * size),
    "networks": lambda size: Shape(1, 1, 1, networks=60 * size),
}
SIZES = (1, 2, 4, 8, 16)


def create(folder: Path, shape: Shape | None) -> Device:
    """The sample device, filled with a headend of that shape unless it is None."""
    device = Device.create(MODEL, folder)
    if shape is not None:
        fill(device, shape)
    return device


def fill(device: Device, shape: Shape) -> None:
    """Replaces modules, services, streams, guide and networks of a sample device."""
    for name in ("config_global", "temp_global"):
        with closing(device.database(DATABASES[name])) as database:
            database.execute("BEGIN")
            for table, rows in _TABLES[name].items():
                _replace(database, table, shape, rows)
            database.execute("COMMIT")


Rows = Callable[[Shape], Iterator[dict[str, object]]]


def _replace(database: sqlite3.Connection, table: str, shape: Shape, rows: Rows) -> None:
    cursor = database.execute(f"SELECT * FROM {table} LIMIT 1")
    columns = [column[0] for column in cursor.description]
    pattern = cursor.fetchone()
    key = columns[0]
    database.execute(f"DELETE FROM {table}")
    database.executemany(
        f"INSERT INTO {table} VALUES ({', '.join('?' * len(columns))})",
        (
            [row.get(column, value) for column, value in zip(columns, pattern)]
            for number, changes in enumerate(rows(shape), 1)
            for row in [{key: number, **changes}]
        ),
    )


def _mac(module: int) -> str:
    return f"02:1E:31:0A:{module >> 8:02X}:{module & 255:02X}"


def _modules(shape: Shape) -> Iterator[dict[str, object]]:
    for module in range(1, shape.modules + 1):
        yield {"MAC": _mac(module), "HostName": f"qra-{module}", "LabelName": f"Satellite {module}"}


def _ports(foreign: str, number: str) -> Rows:
    """Two rows for each module, as it has two inputs and two outputs."""

    def rows(shape: Shape) -> Iterator[dict[str, object]]:
        for module in range(1, shape.modules + 1):
            for port in (1, 2):
                key = 2 * module - 2 + port
                yield {"MAC": _mac(module), foreign: key, number: port}

    return rows


def _services(shape: Shape) -> Iterator[dict[str, object]]:
    for service in range(shape.services):
        module = 1 + service * shape.modules // shape.services
        yield {
            "MAC": _mac(module),
            "OSID": 1 + service,
            "SID": 1 + service,
            "NombreEntrada": f"Service {service} & Co.",
            "NombreSalida": f"Service {service}",
            "LCN": 1 + service,
            "OLCN": 1 + service,
            "fk_idEntrada": 1 + service % 2,
            "fk_idSalidasLogicas": 1 + service % 2,
        }


def _streams(shape: Shape) -> Iterator[dict[str, object]]:
    services = list(_services(shape))
    for stream in range(shape.streams):
        place = stream * shape.services // shape.streams
        service = services[place]
        yield {
            "MAC": service["MAC"],
            "fk_idSSG": 1 + place,
            "fk_idEntrada": service["fk_idEntrada"],
            "fk_idSalidasLogicas": service["fk_idSalidasLogicas"],
            "Orden": stream,
            "StreamId": 256 + stream % 7000,
            "AudioCode": ("spa", "eng", "")[stream % 3],
        }


def _guide(shape: Shape) -> Iterator[dict[str, object]]:
    for number in range(1, shape.guide + 1):
        yield {"SID": number, "LCN": number, "Nombre": f"Guide {number}"}


def _guide_details(shape: Shape) -> Iterator[dict[str, object]]:
    for number in range(1, shape.guide + 1):
        yield {"fk_idService_EPG": number}


def _networks(shape: Shape) -> Iterator[dict[str, object]]:
    for number in range(1, shape.networks + 1):
        yield {"NombreRed": f"Network {number}", "NID": number}


_TABLES: dict[str, dict[str, Rows]] = {
    "config_global": {
        "RedesModulos": _modules,
        "EntradasGlobal": _ports("idEntradasGlobal", "fk_idEntrada"),
        "NimGlobal": _ports("fk_idEntradasGlobal", "fk_idNim"),
        "NimCOFDMGlobal": _ports("fk_idEntradasGlobal", "fk_idNimCOFDM"),
        "NimQAMGlobal": _ports("fk_idEntradasGlobal", "fk_idNimQAM"),
        "SalidasLogicasGlobal": _ports("idSalidasLogicasGlobal", "fk_idSalidasLogicas"),
        "RFOutGlobal": _ports("fk_idSalidasLogicasGlobal", "fk_idRFOut"),
        "ServiciosSalidaGlobal": _services,
        "PIDsSalidaGlobal": _streams,
        "Service_EPG": _guide,
        "Service_EPG_audios": _guide_details,
        "Service_EPG_replacing": _guide_details,
        "RedesCabecera": _networks,
    },
    "temp_global": {
        "ServiciosEntradaGlobal": _services,
        "ModulosCabecera": _modules,
        "CAMInfoGlobal": _modules,
        "TempNIMGlobal": _ports("idTempNIMGlobal", "fk_idEntrada"),
    },
}
