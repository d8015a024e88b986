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
    (1, 1, 1102, 1, 1008,   2, 25, 'hd',    0, 'Lusa Dois HD'),
    (1, 1, 1103, 1, 1015,   3, 22, 'dual',  0, 'Notícias Já'),
    (1, 1, 1104, 1, 1022,   4,  1, 'sd',    0, 'Canal Infantil'),
    (1, 1, 1105, 1, 1029,   5,  1, 'sd',    0, 'Tarde & Noite'),
    (1, 1, 1106, 1, 1016, 806,  2, 'radio', 0, 'Rádio Lusa'),
    (1, 1, 1107, 1, 1019, 807,  2, 'radio', 0, 'Rádio Fado'),
    (1, 2, 1201, 2, 1101,   8, 25, 'hd',    0, 'Atlântico Norte'),
    (1, 2, 1202, 2, 1108,   9, 25, 'hd',    0, 'Atlântico Sul'),
    (1, 2, 1203, 2, 1115,  10,  1, 'sd',    0, 'Cozinha "da Avó"'),
    (1, 2, 1204, 2, 1122,  11,  1, 'sd',    0, 'Açores em Directo'),
    (1, 2, 1205, 2, 1129,  12, 22, 'dual',  0, 'Madeira TV'),
    (1, 2, 1206, 2, 1136,  13,  1, 'sd',    0, 'Ópera e Bailado'),
    (1, 2, 1207, 2, 1119, 814,  2, 'radio', 0, 'Rádio Ilhas'),
    (2, 1, 2101, 1, 2001,  15, 25, 'hd',    1, 'Cinema Um HD'),
    (2, 1, 2102, 1, 2008,  16, 25, 'hd',    1, 'Cinema Dois HD'),
    (2, 1, 2103, 1, 2015,  17, 25, 'hd',    1, 'Cinema Três HD'),
    (2, 1, 2104, 1, 2022,  18, 22, 'dual',  1, 'Golo 1'),
    (2, 1, 2105, 1, 2029,  19, 22, 'dual',  1, 'Golo 2'),
    (2, 1, 2106, 1, 2036,  20, 25, 'hd',    0, 'Mundo Selvagem'),
    (2, 1, 2107, 1, 2019, 821,  2, 'radio', 0, 'Rádio Golo'),
    (2, 2, 2201, 2, 2101,  22, 25, 'hd',    1, 'Ciências <hoje>'),
    (2, 2, 2202, 2, 2108,  23, 22, 'dual',  0, 'História'),
    (2, 2, 2203, 2, 2115,  24,  1, 'sd',    0, 'Música 100% Viva'),
    (2, 2, 2204, 2, 2122,  25,  1, 'sd',    0, 'Desenhos & Cia'),
    (2, 2, 2205, 2, 2129,  26,  1, 'sd',    1, 'Moda'),
    (2, 2, 2206, 2, 2136,  27,  1, 'sd',    0, 'Casa D''Ouro'),
    (2, 2, 2207, 2, 2119, 828,  2, 'radio', 0, 'Rádio Clássica'),
    (3, 1, 3101, 1, 3001,  29, 25, 'hd',    1, 'Brasil Agora'),
    (3, 1, 3102, 1, 3008,  30, 25, 'hd',    1, 'Novelas HD'),
    (3, 1, 3103, 1, 3015,  31,  1, 'sd',    0, 'Samba TV'),
    (3, 1, 3104, 1, 3022,  32, 22, 'dual',  0, 'África Hoje'),
    (3, 1, 3105, 1, 3029,  33,  1, 'sd',    0, 'Angola Directo'),
    (3, 1, 3106, 1, 3036,  34,  1, 'sd',    0, 'Macau & Oriente'),
    (3, 1, 3107, 1, 3019, 835,  2, 'radio', 0, 'Rádio Brasil'),
    (3, 2, 3201, 2, 3101,  36, 25, 'hd',    0, 'Lisboa Canal'),
    (3, 2, 3202, 2, 3108,  37, 25, 'hd',    0, 'Porto Canal 2'),
    (3, 2, 3203, 2, 3115,  38,  1, 'sd',    0, 'Autarquias'),
    (3, 2, 3204, 2, 3122,  39,  1, 'sd',    0, 'Parlamento em Linha'),
    (3, 2, 3205, 2, 3129,  40, 22, 'dual',  0, 'Ensino'),
    (3, 2, 3206, 2, 3136,  41,  1, 'sd',    0, 'Tempo'),
    (3, 2, 3207, 2, 3119, 842,  2, 'radio', 0, 'Rádio Tejo');

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
    (2102, 0x70),
    (2103, 0xC0),
    (2104, 0x90),
    (2201, 0xF0),
    (2204, 0x80);
