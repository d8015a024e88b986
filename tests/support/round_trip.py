"""What importing a device's own export does to its databases, as SQL.

It is worked out from the rules of the import, table by table. It holds for devices whose export an
import accepts, and in which a service stands in its order as its "decrypt" says (see headends.py).
"""

import re

# Which services an export leaves out.
UNLISTED = "coalesce(SSU, 0) <> 0 OR coalesce(EstadoBorrado, 0) <> 0"

# Services and streams. Every stream is told to be applied again; what the document does not list
# is on its way out. A listed service is unchanged, and so is not marked.
SERVICES = f"""
UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 0
WHERE fk_idSSG IN (SELECT idSSG FROM ServiciosSalidaGlobal WHERE NOT ({UNLISTED}));
UPDATE PIDsSalidaGlobal SET EstadoPID = 1, EstadoBorrado = 2
WHERE fk_idSSG IN (SELECT idSSG FROM ServiciosSalidaGlobal WHERE {UNLISTED});
UPDATE ServiciosSalidaGlobal
SET Seleccionado = 0, Orden = 0, LCN = 0, EstadoServicio = 1, EstadoBorrado = 2 WHERE {UNLISTED};
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 0 WHERE NOT ({UNLISTED});
"""

# A modulator is exported as 1 or 0. What is stored is the same as that, or else becomes 3 or 0.
OUTPUTS = """
UPDATE RFOutGlobal SET Modo_Salida_Modulacion = 3, Estado = 1 WHERE Modo_Salida_Modulacion > 1;
UPDATE RFOutGlobal SET Modo_Salida_Modulacion = 0, Estado = 1 WHERE Modo_Salida_Modulacion < 0;
"""

# The second output is parked when it is silent in 8K, and only then.
PARKED_OUTPUTS = """
CREATE TEMP TABLE wanted AS
SELECT idSalidasLogicasGlobal AS id,
       iif(coalesce(Modo_OFDM, 0) = 1 AND coalesce(Modo_Salida_Modulacion, 0) <= 0, 0, 1) AS active
FROM SalidasLogicasGlobal JOIN RFOutGlobal ON fk_idSalidasLogicasGlobal = idSalidasLogicasGlobal
WHERE fk_idSalidasLogicas = 2;
UPDATE SalidasLogicasGlobal
SET Activo = (SELECT active FROM wanted WHERE id = idSalidasLogicasGlobal), Estado = 1
WHERE EXISTS (SELECT 1 FROM wanted
              WHERE id = idSalidasLogicasGlobal AND active <> coalesce(Activo, 0));
DROP TABLE wanted;
"""

# The languages are written anew, and so numbered anew.
LANGUAGES = """
CREATE TEMP TABLE language AS SELECT coalesce(AudioCode, '') AS code FROM AudioLanguageListGlobal
ORDER BY idALLG;
DELETE FROM AudioLanguageListGlobal;
INSERT INTO AudioLanguageListGlobal SELECT rowid, code FROM language ORDER BY rowid;
DROP TABLE language;
"""

# The programme guide is written anew: a satellite of its own for each service that has one, the
# status columns NULL, and an empty text where there was NULL.
SERVICE_GUIDE = """
CREATE TEMP TABLE guide AS
SELECT e.*, idService_EPG_Satellite AS satellite, s.TSID AS s_tsid, s.ONID AS s_onid, Frequency,
       SymbolRate, Polaridad, Orbita, West_East_Flag
FROM Service_EPG e
LEFT JOIN Service_EPG_Satellite s ON idService_EPG_Satellite = fk_idService_EPG_Satellite
ORDER BY idService_EPG;
CREATE TEMP TABLE dish AS SELECT rowid AS service FROM guide WHERE satellite IS NOT NULL
ORDER BY service;
CREATE TEMP TABLE audio AS
SELECT g.rowid AS service, coalesce(Language_code, '') AS code, coalesce(Audio_Type, '') AS type
FROM guide g JOIN Service_EPG_audios ON fk_idService_EPG = idService_EPG
ORDER BY g.rowid, idService_EPG_audios_EPG;
CREATE TEMP TABLE replaced AS
SELECT g.rowid AS service, coalesce(replacing_epg_channel_id, '') AS channel
FROM guide g JOIN Service_EPG_replacing ON fk_idService_EPG = idService_EPG
ORDER BY g.rowid, idService_EPG_replacing;
DELETE FROM Service_EPG; DELETE FROM Service_EPG_Satellite; DELETE FROM Service_EPG_audios;
DELETE FROM Service_EPG_replacing;
INSERT INTO Service_EPG
SELECT g.rowid, ONID, TSID, SID, coalesce(EPG, ''), LCN, coalesce(d.rowid, 0),
       coalesce(Video_Type, ''), coalesce(Video_peak_bitrate, ''), coalesce(Service_type, ''),
       coalesce(Nombre, ''), coalesce(Proveedor, '')
FROM guide g LEFT JOIN dish d ON d.service = g.rowid ORDER BY g.rowid;
INSERT INTO Service_EPG_Satellite
SELECT d.rowid, s_tsid, s_onid, coalesce(Frequency, ''), coalesce(SymbolRate, ''), Polaridad,
       coalesce(Orbita, ''), coalesce(West_East_Flag, ''), NULL
FROM dish d JOIN guide g ON g.rowid = d.service ORDER BY d.rowid;
INSERT INTO Service_EPG_audios SELECT rowid, service, code, type, NULL FROM audio ORDER BY rowid;
INSERT INTO Service_EPG_replacing SELECT rowid, service, channel, NULL FROM replaced ORDER BY rowid;
DROP TABLE guide; DROP TABLE dish; DROP TABLE audio; DROP TABLE replaced;
"""

# The CAM list is written anew, as if its CAMs were new.
CAM_LIST = """
CREATE TEMP TABLE cam AS SELECT * FROM VSecure ORDER BY idVSecure;
DELETE FROM VSecure;
INSERT INTO VSecure
SELECT rowid, coalesce(Fabricante, ''), coalesce(idCliente, ''), coalesce(K_Publica, ''),
       coalesce(EK_Shared, ''), coalesce(Alta, ''), '0', '0', coalesce(Descripcion, ''), '1'
FROM cam ORDER BY rowid;
DROP TABLE cam;
"""


def unchanged_import(model: str) -> str:
    """The statements for a device of this model."""
    sql = SERVICES + OUTPUTS + LANGUAGES
    if model in ("LMV-502", "LMV-512"):
        sql = PARKED_OUTPUTS + sql
    if model in ("QRA-310", "LMV-502", "PKD-707"):
        sql += SERVICE_GUIDE
    if model == "RNB-K408":
        sql += CAM_LIST
    return sql


def with_input_types(document: bytes, types: list[int]) -> bytes:
    """The document of a model that does not export the types of its inputs, with these added."""
    left = iter(types)
    text = re.sub(
        rb"(<input>\s*<inputId>\d*</inputId>)",
        lambda found: found[1] + b"<type>%d</type>" % next(left),
        document,
    )
    if next(left, None) is not None:
        raise ValueError("there are fewer inputs in the document")
    return text
