-- The conditional-access modules that may open the scrambled services.

CREATE TABLE VSecure (
    idVSecure   INTEGER PRIMARY KEY,
    Fabricante  TEXT,
    idCliente   TEXT,
    K_Publica   TEXT,
    EK_Shared   TEXT,
    Alta        TEXT,
    Reintentos  TEXT,
    Error       TEXT,
    Descripcion TEXT,
    estado      TEXT
);
