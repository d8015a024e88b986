-- A hospital in Munich whose rooms have scrambled television: DVB-T everywhere, remote control on.

INSERT INTO setting VALUES
    ('identificacion_cabecera',     'Klinikum Süd'),
    ('identificacion_localizacion', 'München, Haus "C" & D'),
    ('identificacion_fecha',        '2023-09-01'),
    ('identificacion_contrato',     'ZC-0088-0042'),
    ('codtimezone',                 'de'),
    ('idtimezone',                  'DE'),
    ('subtimezone',                 'Europe/Berlin'),
    ('servidorZEN_activo',          '1'),
    ('servidorZEN_intervalo',       '5'),
    ('servidorZEN_direccion',       'https://zen.example.com/device'),
    ('servidorZEN_usuario',         'klinikum-sued'),
    ('servidorZEN_password',        's3cr&t<"''>'),
    ('network_IP',                  '172.16.4.2'),
    ('network_Netmask',             '255.255.240.0'),
    ('network_Gateway',             '172.16.0.1'),
    ('network_PrimaryDNS',          '172.16.0.1');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Klinikum Süd', 50001, 1, 0, 0, 0, 1,   0, 1, 0, 0, 3, 0, 1, 1, 1, 1, 2, 0, 0, 0),
    ('Personal',     50002, 1, 0, 0, 0, 0, 200, 1, 0, 0, 1, 0, 1, 1, 1, 6, 0, 0, 0, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('deu'),
    ('eng'),
    ('tur');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:40:80:00:01', 'rnb-1', 'Haus C',   1, 36,  7, 1, '4.0', 'RN220800001', 0, 0),
    (2, '02:1E:40:80:00:02', 'rnb-2', 'Haus D',   1, 36,  9, 0, '4.0', 'RN220800002', 0, 0),
    (3, '02:1E:40:80:00:03', 'rnb-3', 'Info',     1, 36, 13, 0, '4.0', 'RN220800003', 0, 0),
    (4, '02:1E:40:80:00:04', 'rnb-4', 'Personal', 2, 36,  7, 0, '4.0', 'RN220800004', 6, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (1, 1, 1,   1, 1019, 11494, 22000, 3, 0, 0, 1, 2),
    (1, 2, 1,   1, 1011, 11362, 22000, 3, 0, 1, 1, 2),
    (2, 1, 1, 133,    5, 12545, 22000, 4, 1, 0, 1, 2),
    (2, 2, 1, 133,   12, 12031, 27500, 4, 1, 1, 1, 1),
    (4, 1, 1,   1, 1025, 10744, 22000, 0, 0, 0, 1, 2);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (3, 1, 1, 8468, 772, 586000, 2, 0,  0, 1, 2),
    (3, 2, 1, 8468, 773, 594000, 2, 0, -2, 1, 2);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (4, 2, 1, 61441, 10001, 346000, 6900, 4, 1, 2);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 1, 601, 474000, 1, 0, 0, 2, 1, 0),
    (1, 2, 1, 602, 482000, 1, 0, 0, 2, 1, 0),
    (2, 1, 1, 603, 490000, 1, 0, 0, 2, 1, 0),
    (2, 2, 1, 604, 498000, 1, 0, 0, 2, 1, 0),
    (3, 1, 1, 605, 506000, 1, 0, 0, 2, 2, 0),
    (3, 2, 1, 606, 514000, 1, 0, 1, 2, 2, 0),
    (4, 1, 1, 607, 522000, 1, 0, 2, 1, 3, 0),
    (4, 2, 1, 608, 530000, 0, 0, 3, 0, 4, 1);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 10301,   1, 25, 'hd',    0, 'Isar Eins HD'),
    (1, 2, 1201, 2, 10351,   6, 25, 'hd',    1, 'Film Privat HD'),
    (1, 2, 1203, 2, 10365,   8, 22, 'dual',  1, 'Sport & Spiel'),
    (2, 1, 2101, 1, 17501,  11, 25, 'hd',    0, 'Wissen <jetzt>'),
    (2, 2, 2203, 2, 12015,  18, 25, 'hd',    1, 'Krimi'),
    (3, 1, 3101, 1,   544,  21, 25, 'hd',    0, 'Gesundheit TV'),
    (3, 2, 3204, 2,   645,  29,  1, 'sd',    0, 'Türkçe Bir'),
    (4, 1, 4101, 1, 28221,  31, 25, 'hd',    0, 'Polska Jeden');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (1, 1, 90014477, 'CAM-1-RNB0001', 310, 2000),
    (2, 2,     NULL, 'CAM-2-RNB0002', 310,    0),
    (4, 1, 90014470, 'CAM-4-OLD',     298,    1),
    (4, 1, 90014479, 'CAM-4-RNB0004', 310,   72);

INSERT INTO firmware VALUES
    (1, '6.0.1'),
    (2, '6.0.1'),
    (2, '6.0.0'),
    (3, '6.0.1');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (1201, 0x30);
