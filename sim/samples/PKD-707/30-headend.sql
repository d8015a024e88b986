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
    (1, 2, 1201, 2, 6101,   6, 25, 'hd',    1, 'Estreno HD'),
    (1, 2, 1202, 2, 6108,   7, 25, 'hd',    1, 'Estreno 2 HD'),
    (1, 2, 1203, 2, 6115,   8, 22, 'dual',  1, 'Lucha & Vela'),
    (1, 2, 1204, 2, 6122,   9, 25, 'hd',    1, 'Surf <extremo>'),
    (2, 1, 2101, 1, 6201,  11, 25, 'hd',    0, 'Sonne TV'),
    (2, 1, 2102, 1, 6208,  12,  1, 'sd',    0, 'Strandkorb 24'),
    (3, 1, 3101, 1, 6401,  21,  1, 'sd',    0, 'La Palma Directo'),
    (3, 2, 3202, 2, 6508,  27,  1, 'sd',    0, 'Bazar'),
    (4, 1, 4101, 1, 6601,  31, 25, 'hd',    0, 'Puerto Cam');

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
