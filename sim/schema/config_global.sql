-- The configuration that the web pages and the modules share.

CREATE TABLE configuracionWebGlobal (
    idConfiguracionGlobal INTEGER PRIMARY KEY,
    nombre                TEXT,
    valor                 TEXT,
    aplicarBackup         INTEGER
);

CREATE TABLE MantenimientoHomeChannelsGlobal (
    idMantenimiento INTEGER PRIMARY KEY,
    Frequency       INTEGER,
    Orbita          INTEGER,
    Polaridad       INTEGER,
    Banda           INTEGER,
    SymbolRate      INTEGER,
    ONID            INTEGER,
    TSID            INTEGER,
    Estado          INTEGER
);

CREATE TABLE RedesCabecera (
    idRed              INTEGER PRIMARY KEY,
    NombreRed          TEXT,
    NID                INTEGER,
    ONID_Out           INTEGER,
    NIT_Patron         INTEGER,
    Version_NIT_Patron INTEGER,
    Tipo_NIT_Patron    INTEGER,
    Auto_Service_List  INTEGER,
    LCN_Offset         INTEGER,
    LCN_Mode           INTEGER,
    LCN_Type           INTEGER,
    Force_ServiceName  INTEGER,
    NIT_Version        INTEGER,
    NIT_Data_Source    INTEGER,
    TV_Type            INTEGER,
    CI_TV_Type         INTEGER,
    LG_comp_VSecure    INTEGER,
    Block_PIDs         INTEGER,
    Decrypt_PIDs       INTEGER,
    CellID             INTEGER,
    NIT_Follow         INTEGER,
    estado             INTEGER
);

CREATE TABLE RedesModulos (
    idRedMod       INTEGER PRIMARY KEY,
    MAC            TEXT,
    HostName       TEXT,
    LabelName      TEXT,
    RED            INTEGER,
    Familia        INTEGER,
    Modelo         INTEGER,
    Master         INTEGER,
    HWVersion      TEXT,
    NumeroSerie    TEXT,
    PairedHost     TEXT,
    Atenuacion     INTEGER,
    ResetFactory   INTEGER,
    NFS_Server     INTEGER,
    UpgradeCounter INTEGER,
    ModoSalidaRF   INTEGER,
    estado         INTEGER
);

CREATE TABLE DiSEqCGlobal (
    idDiSEqCGlobal INTEGER PRIMARY KEY,
    Nombre         TEXT,
    Posicion       INTEGER,
    Orbita         INTEGER,
    Polaridad      INTEGER,
    Banda          INTEGER,
    Estado         INTEGER
);

CREATE TABLE AudioLanguageListGlobal (
    idALLG    INTEGER PRIMARY KEY,
    AudioCode TEXT
);

CREATE TABLE ScramblingGlobal (
    idScrambling   INTEGER PRIMARY KEY,
    ScramblingName TEXT,
    Mode           INTEGER,
    Estado         INTEGER
);

CREATE TABLE ScramblingKeysGlobal (
    idScramblingKeys INTEGER PRIMARY KEY,
    Mode             INTEGER,
    Frequency        INTEGER,
    System           TEXT,
    Odd              TEXT,
    Even             TEXT,
    K_Shared         TEXT,
    EK_Odd           TEXT,
    EK_Even          TEXT,
    Date             TEXT,
    Estado           INTEGER
);

CREATE TABLE NimGlobal (
    idNimGlobal         INTEGER PRIMARY KEY,
    MAC                 TEXT,
    Frequency           INTEGER,
    SymbolRate          INTEGER,
    banda_FI            INTEGER,
    fe                  INTEGER,
    STANDBY             INTEGER,
    DiSEqC              INTEGER,
    RFIN_LOOP           INTEGER,
    fk_idEntradasGlobal INTEGER,
    fk_idNim            INTEGER,
    ModoPLS             INTEGER,
    ScramblingID        INTEGER,
    StreamID            INTEGER,
    Estado              INTEGER
);

CREATE TABLE NimCOFDMGlobal (
    idNimCOFDMGlobal    INTEGER PRIMARY KEY,
    MAC                 TEXT,
    Frequency           INTEGER,
    Bandwidth           INTEGER,
    Hierarchy           INTEGER,
    trackingStatusEn    INTEGER,
    TSID_Tracking       INTEGER,
    ONID_Tracking       INTEGER,
    STANDBY             INTEGER,
    fk_idEntradasGlobal INTEGER,
    fk_idNimCOFDM       INTEGER,
    PLP_ID              INTEGER,
    Estado              INTEGER
);

CREATE TABLE NimQAMGlobal (
    idNimQAMGlobal      INTEGER PRIMARY KEY,
    MAC                 TEXT,
    Frequency           INTEGER,
    SymbolRate          INTEGER,
    Constelacion        INTEGER,
    STANDBY             INTEGER,
    fk_idEntradasGlobal INTEGER,
    fk_idNimQAM         INTEGER,
    Estado              INTEGER
);

CREATE TABLE EntradasGlobal (
    idEntradasGlobal INTEGER PRIMARY KEY,
    MAC              TEXT,
    tipoEntrada      INTEGER,
    TSID             INTEGER,
    ONID             INTEGER,
    Activo           INTEGER,
    ResumenNIT       TEXT,
    fk_idEntrada     INTEGER,
    Estado           INTEGER
);

CREATE TABLE SalidasLogicasGlobal (
    idSalidasLogicasGlobal  INTEGER PRIMARY KEY,
    MAC                     TEXT,
    TSID_Out                INTEGER,
    ONID_Out                INTEGER,
    tipoSalida              INTEGER,
    Activo                  INTEGER,
    fk_idSalidasLogicas     INTEGER,
    num_check_solapamientos INTEGER,
    Estado                  INTEGER
);

CREATE TABLE RFOutGlobal (
    idRFOutGlobal             INTEGER PRIMARY KEY,
    MAC                       TEXT,
    Frecuencia                INTEGER,
    Symbol_Rate               INTEGER,
    Ancho_Banda               INTEGER,
    Modo_OFDM                 INTEGER,
    Intervalo_Guarda          INTEGER,
    Constelacion              INTEGER,
    Code_Rate                 INTEGER,
    Espectro_Salida           INTEGER,
    Modo_Salida_Modulacion    INTEGER,
    fk_idSalidasLogicasGlobal INTEGER,
    fk_idRFOut                INTEGER,
    Estado                    INTEGER
);

CREATE TABLE ServiciosSalidaGlobal (
    idSSG               INTEGER PRIMARY KEY,
    MAC                 TEXT,
    OSID                INTEGER,
    SID                 INTEGER,
    NombreEntrada       TEXT,
    NombreSalida        TEXT,
    NombreForzado       INTEGER,
    Tipo                INTEGER,
    VideoFormat         INTEGER,
    Service_Type        INTEGER,
    Video_peak_bitrate  INTEGER,
    fk_idEntrada        INTEGER,
    fk_idSalidasLogicas INTEGER,
    Seleccionado        INTEGER,
    Especial            INTEGER,
    Orden               INTEGER,
    Descifrar           INTEGER,
    Transcoding         INTEGER,
    OLCN                INTEGER,
    LCN                 INTEGER,
    LCNForzado          INTEGER,
    SimulcastLCN        INTEGER,
    idEPG               INTEGER,
    DuplicadoClonado    INTEGER,
    SSU                 INTEGER,
    PMT_pid             INTEGER,
    EstadoBorrado       INTEGER,
    EstadoServicio      INTEGER
);

CREATE TABLE PIDsSalidaGlobal (
    idPSG               INTEGER PRIMARY KEY,
    MAC                 TEXT,
    fk_idSSG            INTEGER,
    fk_idEntrada        INTEGER,
    fk_idSalidasLogicas INTEGER,
    Orden               INTEGER,
    Tipo                INTEGER,
    StreamId            INTEGER,
    AudioCode           TEXT,
    EstadoPID           INTEGER,
    EstadoBorrado       INTEGER
);

CREATE TABLE Service_EPG (
    idService_EPG              INTEGER PRIMARY KEY,
    ONID                       INTEGER,
    TSID                       INTEGER,
    SID                        INTEGER,
    EPG                        INTEGER,
    LCN                        INTEGER,
    fk_idService_EPG_Satellite INTEGER,
    Video_Type                 INTEGER,
    Video_peak_bitrate         INTEGER,
    Service_type               INTEGER,
    Nombre                     TEXT,
    Proveedor                  TEXT
);

CREATE TABLE Service_EPG_audios (
    idService_EPG_audios_EPG INTEGER PRIMARY KEY,
    fk_idService_EPG         INTEGER,
    Language_code            TEXT,
    Audio_Type               INTEGER,
    Estado                   INTEGER
);

CREATE TABLE Service_EPG_replacing (
    idService_EPG_replacing  INTEGER PRIMARY KEY,
    fk_idService_EPG         INTEGER,
    replacing_epg_channel_id INTEGER,
    Estado                   INTEGER
);

CREATE TABLE Service_EPG_Satellite (
    idService_EPG_Satellite INTEGER PRIMARY KEY,
    TSID                    INTEGER,
    ONID                    INTEGER,
    Frequency               INTEGER,
    SymbolRate              INTEGER,
    Polaridad               INTEGER,
    Orbita                  INTEGER,
    West_East_Flag          INTEGER,
    Estado                  INTEGER
);
