-- A university residence: a second dish at 13 degrees East, several conditional-access modules.

INSERT INTO setting VALUES
    ('identificacion_cabecera',     'Résidence des Alpes'),
    ('identificacion_localizacion', 'Grenoble'),
    ('identificacion_fecha',        '2019-07-14'),
    ('identificacion_contrato',     'ZC-0090-7777'),
    ('codtimezone',                 'fr'),
    ('idtimezone',                  'FR'),
    ('subtimezone',                 'Europe/Paris'),
    ('network_IP',                  '10.1.1.9'),
    ('network_Gateway',             '10.1.1.254'),
    ('network_PrimaryDNS',          '10.1.1.253'),
    ('network_SecondaryDNS',        '');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Résidence', 60001, 8442, 1, 12, 1, 1,   0, 1, 1, 0, 12, 0, 0, 1, 0, 7, 7, 33, 0, 0),
    ('Campus',    60002, 8442, 0,  0, 0, 1, 500, 2, 0, 1,  2, 0, 0, 1, 0, 0, 1, 34, 0, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('fra'),
    ('eng'),
    ('ita');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:A4:00:10:01', 'wvxa-1', 'Bâtiment A', 1, 36, 7, 1, '2.0', 'WA190700101', 0, 1),
    (2, '02:1E:A4:00:10:02', 'wvxa-2', 'Bâtiment B', 1, 36, 7, 0, '2.0', 'WA190700102', 0, 1),
    (3, '02:1E:A4:00:10:03', 'wvxa-3', 'Bâtiment C', 1, 36, 2, 0, '2.0', 'WA190700103', 3, 1),
    (4, '02:1E:A4:00:10:04', 'wvxa-4', 'Campus',     2, 36, 7, 0, '2.1', 'WA200200007', 3, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (1, 1, 1,   1, 1104, 12522, 22000, 4, 1, 0, 1, 2),
    (1, 2, 1,   1, 1120, 12610, 22000, 4, 1, 1, 1, 2),
    (2, 1, 1, 318,  300, 10930, 30000, 5, 0, 0, 1, 1),
    (2, 2, 1, 318, 5300, 11013, 30000, 5, 0, 0, 1, 0),
    (4, 1, 1, 318, 7500, 11662, 27500, 6, 0, 0, 0, 1);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (3, 1, 1, 8442, 1, 562000, 2, 0,  0, 1, 2),
    (3, 2, 1, 8442, 3, 586000, 2, 0, -2, 1, 2);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (4, 2, 1, 8442, 77, 410000, 6875, 3, 1, 2);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 8442, 701, 306000, 1, 0, 0, 4, 0, 0),
    (1, 2, 8442, 702, 314000, 1, 0, 0, 4, 0, 0),
    (2, 1, 8442, 703, 322000, 1, 0, 0, 3, 0, 0),
    (2, 2, 8442, 704, 330000, 1, 0, 0, 1, 0, 0),
    (3, 1, 8442, 705, 338000, 1, 0, 0, 0, 0, 0),
    (3, 2, 8442, 706, 346000, 0, 0, 0, 2, 0, 1),
    (4, 1, 8442, 707, 474000, 1, 0, 0, 2, 2, 0),
    (4, 2, 8442, 708, 482000, 1, 0, 0, 2, 2, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 9001,   1, 25, 'hd',    0, 'Alpes Un HD'),
    (1, 2, 1201, 2, 9101,   6, 25, 'hd',    1, 'Grand Écran HD'),
    (1, 2, 1202, 2, 9108,   7, 25, 'hd',    1, 'Grand Écran 2'),
    (1, 2, 1203, 2, 9115,   8, 22, 'dual',  1, 'Ballon Rond'),
    (2, 2, 2204, 2, 9322,  19, 22, 'dual',  0, 'Théâtre'),
    (3, 1, 3104, 1,  278,  24,  1, 'sd',    0, 'Marché & Bourse'),
    (3, 2, 3203, 2,  527,  28,  1, 'sd',    0, 'Bruxelles Soir'),
    (3, 2, 3204, 2,  534,  29,  1, 'sd',    0, 'Québec Matin'),
    (4, 2, 4201, 2, 9501,  36, 25, 'hd',    0, 'Campus TV');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (1, 5, 66005501, 'CAM-A-1', 400,  -5),
    (2, 0, 66005502, 'CAM-B-1', 400,   0),
    (4, 1, 66005503, 'CAM-D-1', 400, 240),
    (4, 1, 66005504, 'CAM-D-2', 402,   1);

INSERT INTO firmware VALUES
    (1, '7.3.0'),
    (2, '7.3.0'),
    (2, '7.2.4'),
    (4, '7.3.0');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (1201, 0x30),
    (1202, 0x50),
    (1203, 0xF0);
