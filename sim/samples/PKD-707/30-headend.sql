-- A resort whose headend has grown for ten years; 60-odd.sql holds what is wrong with it.

INSERT INTO setting VALUES
    ('identificacion_cabecera',         'Resort "Las Olas" & Playa'),
    ('identificacion_localizacion',     'Las Palmas <edif. B>'),
    ('identificacion_fecha',            '2014-03-30'),
    ('identificacion_contrato',         ''),
    ('identificacion_instalador',       'Señales D''Islas'),
    ('identificacion_codCanal',         'ñandú-7'),
    ('identificacion_hostType',         '0'),
    ('identificacion_TVModels',         '255'),
    ('identificacion_installationMode', '2'),
    ('subtimezone',                     'Atlantic/Canary'),
    ('MaturityRating',                  '0'),
    ('servidorZEN_activo',              '1'),
    ('servidorZEN_intervalo',           'cada hora'),
    ('servidorZEN_direccion',           'http://zen.example.com/old/'),
    ('LNB_BandaSatelite',               '1');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Las Olas', 40001, 1, 1, 31, 0, 1, 5, 3, 2, 1, 30, 1, 3, 3, 1, 2, 5, 255, 1, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('spa'),
    ('deu'),
    ('eng'),
    ('nor');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:70:77:00:1C', 'pkd-28', 'Recepción',     1, 36,  7, 1, '1.0', 'PK140300001', 0, 0),
    (2, '02:1E:70:77:00:1D', 'pkd-29', 'Piscina & Bar', 1, 36,  7, 0, '1.0', 'PK140300002', 0, 0),
    (3, '02:1E:70:77:00:0B', 'pkd-11', 'Edificio B',    1, 36, 13, 0, '1.1', 'PK140900014', 5, 1),
    (4, '02:1E:70:77:00:2A', 'pkd-42', 'Torre',         7, 40,  1, 0, '1.1', 'PK150100020', 5, 0),
    (5, '02:1E:70:77:00:2B', 'pkd-43', 'Repuesto',      0, 36,  9, 0, '1.1', 'PK150100021', 0, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (1, 1, 1, 1, 1010, 10876, 22000, 3, 0, 0, 1, 2),
    (1, 2, 1, 1, 1012, 10906, 22000, 3, 0, 1, 1, 0),
    (2, 1, 1, 1, 1082, 12382, 27500, 2, 1, 0, 0, 3),
    (2, 2, 1, 1, 1084, 12422, 27500, 0, 1, 0, 1, 1),
    (4, 1, 1, 1, 1088, 12515, 22000, 4, 1, 0, 1, 2);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (3, 1, 1, 8916, 33, 626000, 2, 0, -2, 1, 2),
    (4, 2, 1, 8916, 34, 634000, 0, 0,  2, 0, 0);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (3, 2, 1, 160, 9, 290000, 6111, 3, 1, 3);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 1, 501, 474000, 1, 0, 0, 2, 0, 0),
    (1, 2, 1, 502, 482000, 1, 1, 1, 1, 1, 0),
    (2, 1, 1, 503, 490000, 1, 2, 2, 0, 2, 0),
    (2, 2, 1, 504, 498000, 0, 0, 3, 2, 3, 1),
    (3, 1, 1, 505, 306000, 1, 0, 0, 0, 4, 0),
    (3, 2, 1, 506, 314000, 1, 0, 0, 1, 0, 0),
    (4, 1, 1, 507, 506000, 1, 0, 0, 2, 1, 0),
    (4, 2, 1, 508, 514000, 1, 0, 0, 2, 1, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 6001,   1, 25, 'hd',    0, 'Islas Uno HD'),
    (1, 1, 1102, 1, 6008,   2, 25, 'hd',    0, 'Islas Dos HD'),
    (1, 1, 1103, 1, 6015,   3, 22, 'dual',  0, 'Teide Noticias'),
    (1, 1, 1104, 1, 6022,   4,  1, 'sd',    0, 'Guanche TV'),
    (1, 1, 1105, 1, 6013, 805,  2, 'radio', 0, 'Radio Isla'),
    (1, 2, 1201, 2, 6101,   6, 25, 'hd',    1, 'Estreno HD'),
    (1, 2, 1202, 2, 6108,   7, 25, 'hd',    1, 'Estreno 2 HD'),
    (1, 2, 1203, 2, 6115,   8, 22, 'dual',  1, 'Lucha & Vela'),
    (1, 2, 1204, 2, 6122,   9, 25, 'hd',    1, 'Surf <extremo>'),
    (1, 2, 1205, 2, 6113, 810,  2, 'radio', 0, 'Radio Olas'),
    (2, 1, 2101, 1, 6201,  11, 25, 'hd',    0, 'Sonne TV'),
    (2, 1, 2102, 1, 6208,  12,  1, 'sd',    0, 'Strandkorb 24'),
    (2, 1, 2103, 1, 6215,  13, 22, 'dual',  0, 'Nordwind'),
    (2, 1, 2104, 1, 6210, 814,  2, 'radio', 0, 'Schlager "Gold"'),
    (2, 1, 2105, 1, 6229,  15,  1, 'sd',    0, 'Kinder Insel'),
    (2, 2, 2201, 2, 6301,  16, 25, 'hd',    0, 'Sunrise One'),
    (2, 2, 2202, 2, 6308,  17, 22, 'dual',  0, 'Sunrise Two'),
    (2, 2, 2203, 2, 6315,  18, 25, 'hd',    1, 'Pub Sports'),
    (2, 2, 2204, 2, 6322,  19,  1, 'sd',    0, 'Old Movies'),
    (2, 2, 2205, 2, 6313, 820,  2, 'radio', 0, 'Holiday FM'),
    (3, 1, 3101, 1, 6401,  21,  1, 'sd',    0, 'La Palma Directo'),
    (3, 1, 3102, 1, 6408,  22,  1, 'sd',    0, 'Gran Canaria Ahora'),
    (3, 1, 3103, 1, 6415,  23, 25, 'hd',    0, 'Timanfaya'),
    (3, 1, 3104, 1, 6422,  24,  1, 'sd',    0, 'L''Hierro'),
    (3, 1, 3105, 1, 6413, 825,  2, 'radio', 0, 'Radio Volcán'),
    (3, 2, 3201, 2, 6501,  26,  1, 'sd',    0, 'Cocina Canaria'),
    (3, 2, 3202, 2, 6508,  27,  1, 'sd',    0, 'Bazar'),
    (3, 2, 3203, 2, 6515,  28,  1, 'sd',    0, 'Rocío Clásicos'),
    (3, 2, 3204, 2, 6522,  29, 25, 'hd',    0, 'Niños Ñ'),
    (3, 2, 3205, 2, 6513, 830,  2, 'radio', 0, 'Radio Plátano'),
    (4, 1, 4101, 1, 6601,  31, 25, 'hd',    0, 'Puerto Cam'),
    (4, 1, 4102, 1, 6608,  32,  1, 'sd',    0, 'Aeropuerto'),
    (4, 1, 4103, 1, 6615,  33, 22, 'dual',  0, 'Bienvenidos'),
    (4, 1, 4104, 1, 6622,  34,  1, 'sd',    0, 'Piscina Bar'),
    (4, 1, 4105, 1, 6613, 835,  2, 'radio', 0, 'Radio Hotel'),
    (4, 2, 4201, 2, 6701,  36, 25, 'hd',    0, 'Nordic Wave'),
    (4, 2, 4202, 2, 6708,  37,  1, 'sd',    0, 'Midnattsol'),
    (4, 2, 4203, 2, 6715,  38, 25, 'hd',    0, 'Fjord & Fjell'),
    (4, 2, 4204, 2, 6722,  39,  1, 'sd',    0, 'Ålesund Live'),
    (4, 2, 4205, 2, 6713, 840,  2, 'radio', 0, 'Radio Nord');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (1, 2, 11002200, 'CAM-28-01', 77, 25),
    (2, 4, 11002201, 'CAM-29-01', 78, 23);

INSERT INTO firmware VALUES
    (1, '2.6.0'),
    (2, '2.6.0'),
    (3, '2.6.0'),
    (3, '2.5.7');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (1201, 0x10),
    (1201, 0x30),
    (1201, 0x00),
    (1202, 0x40),
    (1203, 0xC0),
    (1204, 0xF0);
