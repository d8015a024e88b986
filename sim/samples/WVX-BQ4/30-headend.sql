-- A student campus without dishes: terrestrial and cable reception only, DVB-C outputs.

INSERT INTO setting VALUES
    ('identificacion_cabecera',     'Campus Maasoever'),
    ('identificacion_localizacion', 'Rotterdam'),
    ('identificacion_fecha',        '2024-01-08'),
    ('identificacion_contrato',     'ZC-0101-0001'),
    ('codtimezone',                 'nl'),
    ('idtimezone',                  'NL'),
    ('subtimezone',                 'Europe/Amsterdam'),
    ('network_UseDHCPIP',           '1');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Maasoever', 61001, 8720, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 6, 0, 0, 0, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('nld'),
    ('eng');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:B4:00:20:01', 'wvxb-1', 'Noord',  1, 36, 2, 1, '2.0', 'WB231200001', 0, 1),
    (2, '02:1E:B4:00:20:02', 'wvxb-2', 'Zuid',   1, 36, 7, 0, '2.0', 'WB231200002', 0, 1),
    (3, '02:1E:B4:00:20:03', 'wvxb-3', 'Campus', 1, 34, 5, 0, '1.5', 'WB200300031', 0, 1);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (1, 1, 1, 8720, 1101, 498000, 2, 0,  0, 1, 2),
    (1, 2, 1, 8720, 1102, 522000, 2, 0, -2, 1, 1),
    (3, 1, 1, 8720, 1103, 674000, 1, 1,  4, 0, 0);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (2, 1, 1, 8720, 2001, 250000, 6875, 2, 1, 2),
    (2, 2, 1, 8720, 2002, 258000, 6875, 4, 1, 3),
    (3, 2, 0, 8720, 2003, 266000, 6900, 0, 0, 2);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 8720, 801, 306000, 1, 0, 0, 2, 0, 0),
    (1, 2, 8720, 802, 314000, 1, 0, 0, 3, 0, 0),
    (2, 1, 8720, 803, 322000, 1, 0, 0, 4, 0, 0),
    (2, 2, 8720, 804, 330000, 1, 0, 0, 1, 0, 1),
    (3, 1, 8720, 805, 338000, 1, 0, 0, 0, 0, 0),
    (3, 2, 8720, 806, 346000, 0, 0, 0, 2, 0, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 1110,   1, 25, 'hd',    0, 'Maas Een HD'),
    (1, 2, 1203, 2, 1224,  10, 22, 'dual',  0, 'Voetbal "Extra"'),
    (2, 1, 2102, 1, 2117,  16,  1, 'sd',    0, 'Koken met Jan'),
    (2, 1, 2103, 1, 2124,  17,  1, 'sd',    0, '''s Avonds Laat'),
    (2, 1, 2104, 1, 2131,  18, 22, 'dual',  0, 'Reizen'),
    (3, 1, 3101, 1, 1310,  29, 25, 'hd',    0, 'Vlaanderen Uno'),
    (3, 2, 3204, 2, 2331,  39, 25, 'hd',    0, 'Kunst'),
    (3, 2, 3205, 2, 2338,  40, 25, 'hd',    0, 'Theater');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (2, 1, 71000001, 'CAM-Z-1', 500, 100);

INSERT INTO firmware VALUES
    (1, '7.3.1'),
    (3, '7.3.1'),
    (3, '7.3.0');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (2102, 0xC0),
    (2103, 0x40);
