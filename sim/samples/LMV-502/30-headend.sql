-- A city hotel with three modules: terrestrial, satellite, and satellite with cable.

INSERT INTO setting VALUES
    ('identificacion_cabecera',         'Hotel Atlântico'),
    ('identificacion_localizacion',     'Lisboa'),
    ('identificacion_fecha',            '2020-11-03'),
    ('identificacion_contrato',         'ZC-0051-0090'),
    ('identificacion_instalador',       'Antenas & Filhos'),
    ('identificacion_codCanal',         'HA-7'),
    ('identificacion_hostType',         '1'),
    ('identificacion_TVModels',         '1'),
    ('identificacion_installationMode', '0'),
    ('codtimezone',                     'pt'),
    ('idtimezone',                      'PT'),
    ('subtimezone',                     'Europe/Lisbon'),
    ('MaturityRating',                  '12'),
    ('mantenimiento_hora',              '3'),
    ('mantenimiento_min',               '0'),
    ('mantenimiento_activo',            '0'),
    ('network_UseDHCPIP',               '1'),
    ('network_IP',                      '10.20.0.50'),
    ('network_Gateway',                 '10.20.0.1'),
    ('network_PrimaryDNS',              '10.20.0.2');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Atlântico', 20101, 8916, 1, 5, 1, 0, 10, 1, 1, 0, 7, 0, 1, 2, 0, 3, 7, 0, 1, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('por'),
    ('eng');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:52:10:00:0A', 'lmv-a', 'TDT',             1, 36, 2, 1, '2.9', 'LM190900201', 2, 0),
    (2, '02:1E:52:10:00:0B', 'lmv-b', 'Satélite',        1, 36, 9, 0, '2.9', 'LM190900202', 2, 0),
    (3, '02:1E:52:10:00:0C', 'lmv-c', 'Satélite e cabo', 1, 36, 9, 0, '3.0', 'LM200100019', 4, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (2, 1, 1, 1, 1072, 11739, 27500, 2, 1, 0, 1, 2),
    (2, 2, 1, 1, 1074, 11778, 27500, 2, 1, 1, 1, 2),
    (3, 1, 1, 1, 1210, 11317, 30000, 3, 0, 0, 1, 1);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (1, 1, 1, 8904, 56, 754000, 2, 0,  0, 1, 2),
    (1, 2, 1, 8904, 57, 650000, 2, 0, -2, 1, 2);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (3, 2, 1, 160, 3, 322000, 6900, 4, 1, 2);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 8904, 301, 530000, 1, 0, 1, 2, 2, 0),
    (1, 2, 8904, 302, 538000, 1, 0, 1, 2, 2, 0),
    (2, 1, 8904, 303, 546000, 1, 0, 1, 2, 2, 0),
    (2, 2, 8904, 304, 554000, 1, 0, 1, 2, 2, 0),
    (3, 1, 8904, 305, 562000, 1, 0, 0, 1, 1, 0),
    (3, 2, 8904, 306, 570000, 0, 0, 0, 2, 1, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 1001,   1, 25, 'hd',    0, 'Lusa Um HD'),
    (1, 2, 1206, 2, 1136,  13,  1, 'sd',    0, 'Ópera e Bailado'),
    (2, 1, 2101, 1, 2001,  15, 25, 'hd',    1, 'Cinema Um HD'),
    (2, 1, 2104, 1, 2022,  18, 22, 'dual',  1, 'Golo 1'),
    (2, 2, 2201, 2, 2101,  22, 25, 'hd',    1, 'Ciências <hoje>'),
    (2, 2, 2202, 2, 2108,  23, 22, 'dual',  0, 'História'),
    (2, 2, 2203, 2, 2115,  24,  1, 'sd',    0, 'Música 100% Viva'),
    (3, 1, 3101, 1, 3001,  29, 25, 'hd',    1, 'Brasil Agora'),
    (3, 2, 3206, 2, 3136,  41,  1, 'sd',    0, 'Tempo');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (3, 1, 55120011, 'CAM-C-5501122', 198, 48);

INSERT INTO firmware VALUES
    (1, '4.8.2'),
    (1, '4.8.0'),
    (3, '4.8.2');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (2101, 0x50),
    (2104, 0x90),
    (2201, 0xF0);
