-- What every sample starts from. A model's own file changes settings through the sheet "setting"
-- and rows with plain UPDATE, INSERT and DELETE.

INSERT INTO configuracionWebGlobal (nombre, valor, aplicarBackup) VALUES
    ('identificacion_cabecera',         '',                1),
    ('identificacion_localizacion',     '',                1),
    ('identificacion_fecha',            '2021-01-01',      1),
    ('identificacion_contrato',         '',                0),
    ('identificacion_instalador',       '',                1),
    ('identificacion_codCanal',         '',                1),
    ('identificacion_hostType',         '0',               1),
    ('identificacion_TVModels',         '0',               1),
    ('identificacion_installationMode', '0',               1),
    ('codtimezone',                     'es',              1),
    ('idtimezone',                      'ES',              1),
    ('subtimezone',                     'Europe/Madrid',   1),
    ('MaturityRating',                  '18',              1),
    ('mantenimiento_hora',              '4',               1),
    ('mantenimiento_min',               '30',              1),
    ('mantenimiento_activo',            '1',               1),
    ('network_ConfigureNET',            '1',               0),
    ('network_UseDHCPIP',               '0',               0),
    ('network_IP',                      '192.168.10.20',   0),
    ('network_Netmask',                 '255.255.255.0',   0),
    ('network_Gateway',                 '192.168.10.1',    0),
    ('network_PrimaryDNS',              '192.168.10.1',    0),
    ('network_SecondaryDNS',            '9.9.9.9',         0),
    ('servidorZEN_activo',              '0',               0),
    ('servidorZEN_intervalo',           '15',              0),
    ('servidorZEN_direccion',           '',                0),
    ('servidorZEN_usuario',             '',                0),
    ('servidorZEN_password',            '',                0),
    ('LNB_fb',                          '9750',            1),
    ('LNB_fa',                          '10600',           1),
    ('LNB_fbandaC',                     '5150',            1),
    ('LNB_BandaSatelite',               '0',               1),
    ('web_idioma',                      'es',              0),
    ('web_tema',                        'claro',           0);

INSERT INTO DiSEqCGlobal (idDiSEqCGlobal, Nombre, Posicion, Orbita, Polaridad, Banda, Estado) VALUES
    (1, '19.2E V low',  1, 192, 0, 0, 0),
    (2, '19.2E V high', 2, 192, 0, 1, 0),
    (3, '19.2E H low',  3, 192, 1, 0, 0),
    (4, '19.2E H high', 4, 192, 1, 1, 0);

INSERT INTO MantenimientoHomeChannelsGlobal
    (idMantenimiento, Frequency, Orbita, Polaridad, Banda, SymbolRate, ONID, TSID, Estado) VALUES
    (1, 11856, 192, 0, 1, 27500, 1, 1072, 0),
    (2, 10847, 192, 0, 0, 22000, 1, 1010, 0),
    (3, 11317, 300, 1, 0, 30000, 1, 1210, 0);

INSERT INTO ScramblingGlobal (ScramblingName, Mode, Estado) VALUES ('VSecure', 1, 0);

INSERT INTO ScramblingKeysGlobal
    (Mode, Frequency, System, Odd, Even, K_Shared, EK_Odd, EK_Even, Date, Estado) VALUES
    (2, 30, 'VSecure', '1A2B3C4D5E6F7081', '8899AABBCCDDEEFF', 'C0FFEE0123456789',
     '5D11E09A7733C2F4', '0E4B77D1A9C25F38', '2024-02-29 03:00:00', 0);

INSERT INTO Service_EPG_Satellite
    (TSID, ONID, Frequency, SymbolRate, Polaridad, Orbita, West_East_Flag, Estado) VALUES
    (1072, 1, 11856, 27500, 0, 192, 1, 0),
    (1010, 1, 10847, 22000, 1, 192, 1, 0),
    (1210, 1, 11317, 30000, 1, 300, 0, 0);

-- The sixth service has no satellite, the seventh names one that does not exist.
INSERT INTO Service_EPG
    (ONID, TSID, SID, EPG, LCN, fk_idService_EPG_Satellite, Video_Type, Video_peak_bitrate,
     Service_type, Nombre, Proveedor) VALUES
    (1, 1072, 30001, 1, 1, 1, 1, 14000,  1, 'Uno Guía',          'Plataforma'),
    (1, 1072, 30002, 2, 2, 1, 1, 14000,  1, 'Dos Guía',          'Plataforma'),
    (1, 1010, 30110, 1, 5, 2, 0,  7000,  1, 'Cine & Series',     'Plataforma'),
    (1, 1010, 30111, 0, 6, 2, 0,  7000,  1, 'Deporte < 24 h >',  ''),
    (1, 1210, 30200, 1, 9, 3, 1, 12000, 25, 'Atlántico HD',      'Ilhas'),
    (8916, 35, 410,  1, 12, 0, 0,  6500,  1, 'Municipal "12"',   NULL),
    (8916, 35, 411,  1, 65535, 9, 0, 6500, 1, 'L''Arxiu',        'Local');

INSERT INTO Service_EPG_audios (fk_idService_EPG, Language_code, Audio_Type, Estado) VALUES
    (1, 'spa', 1, 0),
    (1, 'eng', 2, 0),
    (2, 'spa', 1, 0),
    (3, 'spa', 1, 0),
    (3, 'qaa', 3, 0),
    (5, 'por', 1, 0);

INSERT INTO Service_EPG_replacing (fk_idService_EPG, replacing_epg_channel_id, Estado) VALUES
    (1, 501, 0),
    (3, 512, 0),
    (3, 513, 0);
