-- A clinic whose configuration has been through many hands; 60-odd.sql holds what is wrong with it.

INSERT INTO setting VALUES
    ('identificacion_cabecera',     'Clinica San Giorgio'),
    ('identificacion_localizacion', 'Milano'),
    ('identificacion_contrato',     'ZC-0060-3301'),
    ('identificacion_instalador',   'Rossi & Figli'),
    ('identificacion_codCanal',     'CSG'),
    ('codtimezone',                 'it'),
    ('idtimezone',                  'it'),
    ('subtimezone',                 'Europe/Rome'),
    ('network_ConfigureNET',        '0');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('San Giorgio',       30011, 29, 0, 0, 0, 1,  0, 0, 0, 0, 2, 0, 0, 0, 0, 4, 1, 0, 0, 0),
    ('San Giorgio prova', 30012, 29, 2, 7, 1, 0, 50, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0),
    ('Vecchia',           30013, 29, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('ita');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:51:2C:00:41', 'lmv512-1', 'Uno',     1, 36, 7, 1, '1.8', 'LN170100001', 0, 0),
    (2, '02:1E:51:2C:00:42', 'lmv512-2', 'Due',     1, 36, 2, 0, '1.8', 'LN170100002', 0, 1),
    (3, '02:1E:51:2C:00:43', 'lmv512-3', 'Tre',     2, 35, 2, 0, '1.2', 'LN160700044', 0, 0),
    (4, '02:1E:51:2C:00:44', 'lmv512-4', 'Quattro', 1, 35, 4, 0, '1.2', 'LN160700045', 9, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (1, 1, 1,   1, 1072, 12441, 27500, 2, 1, 0, 1, 2),
    (1, 2, 1,   1, 1076, 12480, 27500, 2, 1, 1, 1, 3),
    (2, 1, 1,   1, 1010, 10758, 22000, 0, 0, 0, 0, 2),
    (3, 1, 1, 318, 8000, 11766, 27500, 0, 1, 0, 1, 2);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (2, 2, 1, 8572, 905, 698000, 2, 0, -2, 1, 2),
    (3, 2, 1, 8572, 906, 706000, 1, 1,  3, 1, 0);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (4, 1, 1, 29, 12, 370000, 6900, 4, 1, 1),
    (4, 2, 0, 29, 14, 378000, 6900, 2, 0, 0);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 29, 11, 474000, 1, 0, 0, 2, 2, 0),
    (1, 2, 29, 12, 482000, 1, 0, 1, 2, 2, 0),
    (2, 1, 29, 13, 306000, 1, 0, 0, 3, 0, 0),
    (2, 2, 29, 14, 314000, 0, 0, 0, 4, 0, 0),
    (3, 1, 29, 15, 490000, 1, 1, 2, 1, 3, 1),
    (3, 2, 29, 16, 498000, 1, 2, 3, 0, 4, 0),
    (4, 1, 29, 17, 506000, 1, 0, 0, 2, 2, 0),
    (4, 2, 29, 18, 514000, 1, 0, 0, 2, 2, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 3401,   1, 25, 'hd',    0, 'Lombarda Uno'),
    (1, 2, 1202, 2, 3508,   7, 25, 'hd',    1, 'Cinema Seconda'),
    (1, 2, 1203, 2, 3515,   8, 22, 'dual',  1, 'Calcio Club'),
    (2, 1, 2103, 1, 3615,  13,  1, 'sd',    0, 'Cucina D''Autore'),
    (2, 1, 2104, 1, 3622,  14,  1, 'sd',    0, 'Moda Milano'),
    (2, 1, 2105, 1, 3613, 815,  2, 'radio', 0, 'Radio Opera'),
    (2, 2, 2201, 2, 3701,  16,  1, 'sd',    0, 'Città 7'),
    (2, 2, 2202, 2, 3708,  17,  1, 'sd',    0, 'Lago TV'),
    (2, 2, 2203, 2, 3715,  18, 25, 'hd',    0, 'Alpi HD'),
    (2, 2, 2204, 2, 3722,  19,  1, 'sd',    0, 'Valle Verde'),
    (3, 2, 3202, 2, 3908,  27,  1, 'sd',    0, 'Parlamento 2'),
    (4, 1, 4105, 1, 4013, 835,  2, 'radio', 0, 'Radio Confine');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (1, 4, 77123456, 'CAM-1-AA01', 101, 30);

INSERT INTO firmware VALUES
    (1, '3.9.9'),
    (2, '3.9.9'),
    (2, '3.9.8');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (1202,  0xFF),
    (1203, 0x110);
