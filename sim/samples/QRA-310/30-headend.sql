-- A seaside hotel: satellite films and sport, local terrestrial services, some cable; DVB-T in the
-- old wing, DVB-C in the new one.

INSERT INTO setting VALUES
    ('identificacion_cabecera',         'Hotel Mirador & Spa'),
    ('identificacion_localizacion',     'Málaga, Paseo del Mar 12 <sótano>'),
    ('identificacion_fecha',            '2022-05-17'),
    ('identificacion_contrato',         'ZC-0042-1177'),
    ('identificacion_instalador',       'Antenas D''Amico S.L.'),
    ('identificacion_codCanal',         'HM-204'),
    ('identificacion_hostType',         '2'),
    ('identificacion_TVModels',         '3'),
    ('identificacion_installationMode', '1'),
    ('MaturityRating',                  '16'),
    ('servidorZEN_direccion',           'https://zen.example.com/rc'),
    ('network_IP',                      '192.168.10.21');

INSERT INTO RedesCabecera
    (NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List,
     LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type,
     CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado) VALUES
    ('Mirador ala antigua', 12345, 8916, 0, 0, 0, 1,   0, 1, 0, 0, 4, 0, 2, 1, 0, 5, 0, 17, 0, 0),
    ('Mirador "ala nueva"', 12346, 8916, 1, 3, 0, 1, 100, 2, 0, 1, 9, 0, 2, 1, 0, 0, 6,  0, 0, 0);

INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES
    ('spa'),
    ('eng'),
    ('deu');

-- id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode
INSERT INTO rack VALUES
    (1, '02:1E:31:0A:00:01', 'qra-01', 'Satélite 1',  1, 36,  2, 1, '3.1', 'QM210400117',  0, 0),
    (2, '02:1E:31:0A:00:02', 'qra-02', 'Satélite 2',  1, 36, 13, 0, '3.1', 'QM210400118',  3, 0),
    (3, '02:1E:31:0A:00:03', 'qra-03', 'Cable & CAM', 2, 36,  7, 0, '2.4', 'QM210400342',  6, 1),
    (4, '02:1E:31:0A:00:04', 'qra-04', 'TDT',         1, 36,  7, 0, '2.4', 'QM210400343', 12, 0);

-- module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality
INSERT INTO satellite VALUES
    (1, 1, 1, 1, 1010, 10729, 22000, 1, 0, 0, 1, 2),
    (1, 2, 1, 1, 1012, 10773, 22000, 1, 0, 1, 1, 1),
    (2, 1, 1, 1, 1072, 12188, 27500, 4, 1, 0, 1, 2),
    (2, 2, 1, 1, 1090, 11538, 22000, 0, 0, 0, 0, 0),
    (3, 1, 1, 1, 1100, 12603, 22000, 2, 1, 0, 1, 0);

-- module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality
INSERT INTO terrestrial VALUES
    (3, 2, 1, 8916, 35, 650000, 2, 0, -2, 1, 3),
    (4, 1, 1, 8916, 40, 690000, 2, 1,  1, 1, 2);

-- module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality
INSERT INTO cable VALUES
    (4, 2, 0, 160, 1, 402000, 6875, 4, 0, 0);

-- module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum
INSERT INTO output VALUES
    (1, 1, 8916, 101, 474000, 1, 0, 0, 2, 1, 0),
    (1, 2, 8916, 102, 482000, 1, 0, 1, 2, 2, 0),
    (2, 1, 8916, 103, 490000, 1, 0, 2, 2, 3, 0),
    (2, 2, 8916, 104, 498000, 1, 1, 3, 1, 4, 1),
    (3, 1, 8916, 201, 306000, 1, 0, 0, 4, 0, 0),
    (3, 2, 8916, 202, 314000, 1, 0, 0, 2, 0, 0),
    (4, 1, 8916, 105, 506000, 1, 0, 0, 2, 1, 0),
    (4, 2, 8916, 106, 514000, 0, 2, 0, 0, 0, 0);

-- module, output, sid, input, osid, lcn, type, streams, decrypt, name
INSERT INTO lineup VALUES
    (1, 1, 1101, 1, 30001,   1, 25, 'hd',    0, 'Costa Uno HD'),
    (1, 1, 1102, 1, 30008,   2, 25, 'hd',    0, 'Costa Dos HD'),
    (1, 1, 1103, 1, 30015,   3, 22, 'dual',  0, 'Noticias 24 Horas'),
    (1, 1, 1104, 1, 30022,   4,  1, 'sd',    0, 'Canal Cometa & Co.'),
    (1, 1, 1105, 1, 30013, 805,  2, 'radio', 0, 'Radio Costa'),
    (1, 2, 1201, 2, 30101,   6, 25, 'hd',    0, 'Cine Azul'),
    (1, 2, 1202, 2, 30108,   7, 25, 'hd',    0, 'Cine Azul +1'),
    (1, 2, 1203, 2, 30115,   8, 25, 'hd',    0, 'Series < & >'),
    (1, 2, 1204, 2, 30122,   9, 22, 'dual',  0, 'Deporte Total'),
    (1, 2, 1205, 1, 30069,  10, 25, 'hd',    0, 'Deporte "Gol"'),
    (2, 1, 2101, 1, 30201,  11, 25, 'hd',    0, 'Stern Doku HD'),
    (2, 1, 2102, 1, 30208,  12,  1, 'sd',    0, 'Musik Kanal'),
    (2, 1, 2103, 1, 30215,  13,  1, 'sd',    0, 'Kinderfernsehen'),
    (2, 1, 2104, 1, 30222,  14, 25, 'hd',    0, 'Fußball 1'),
    (2, 1, 2105, 1, 30213, 815,  2, 'radio', 0, 'Klassik am Meer'),
    (2, 2, 2201, 2, 28301,  16, 22, 'dual',  0, 'Télé Monde'),
    (2, 2, 2202, 2, 28308,  17,  1, 'sd',    0, 'L''Écho du Soir'),
    (2, 2, 2203, 2, 28315,  18,  1, 'sd',    0, 'Info Continu'),
    (2, 2, 2204, 2, 28322,  19, 25, 'hd',    0, 'Ciné Club'),
    (2, 2, 2205, 2, 28313, 820,  2, 'radio', 0, 'Radio Océan'),
    (3, 1, 3101, 1, 28401,  21, 25, 'hd',    0, 'Mirador Guest TV'),
    (3, 1, 3102, 1, 28408,  22, 25, 'hd',    1, 'Sol Cine'),
    (3, 1, 3103, 1, 28415,  23, 25, 'hd',    1, 'Sol Acción'),
    (3, 1, 3104, 1, 28422,  24, 22, 'dual',  1, 'Sol Comedia'),
    (3, 1, 3105, 2,   469,  25, 22, 'dual',  1, 'Sol Drama'),
    (3, 2, 3201, 2,   401,  26,  1, 'sd',    0, 'Sur TV'),
    (3, 2, 3202, 2,   408,  27,  1, 'sd',    0, 'Málaga Hoy'),
    (3, 2, 3203, 2,   415,  28, 25, 'hd',    0, 'Andalucía Norte HD'),
    (3, 2, 3204, 2,   422,  29, 25, 'hd',    0, 'Andalucía Sur HD'),
    (3, 2, 3205, 2,   413, 830,  2, 'radio', 0, 'Radio Ñ'),
    (4, 1, 4101, 1,   501,  31,  1, 'sd',    0, 'Oriente Clásico'),
    (4, 1, 4102, 1,   508,  32,  1, 'sd',    0, 'Plató Abierto'),
    (4, 1, 4103, 1,   515,  33, 25, 'hd',    1, 'Mundo Viajes HD'),
    (4, 1, 4104, 1,   522,  34, 25, 'hd',    1, 'Aventura 4'),
    (4, 1, 4105, 1,   513, 835,  2, 'radio', 0, 'Radio Taxi'),
    (4, 2, 4201, 2, 17001,  36, 22, 'dual',  0, 'World Report HD'),
    (4, 2, 4202, 2, 17008,  37,  1, 'sd',    1, 'Business Now'),
    (4, 2, 4203, 2, 17015,  38, 25, 'hd',    0, 'Kids & Toons'),
    (4, 2, 4204, 2, 17022,  39,  1, 'sd',    0, 'Garden, Home & More'),
    (4, 2, 4205, 2, 17013, 840,  2, 'radio', 0, 'Soft Radio');

-- module, card_status, card_serial, serial, version, rights_hours
INSERT INTO cam VALUES
    (3, 1, 40217733, 'CAM-3-00017A2', 212,  49),
    (4, 1, 40217734, 'CAM-4-00017A3', 212, 720),
    (4, 2,        0, 'CAM-4-00017A4', 210,   0),
    (4, 3, 40217735, 'CAM-4-00017A5', 214,  24);

INSERT INTO firmware VALUES
    (1, '5.2.11'),
    (3, '5.2.11'),
    (3, '5.1.90'),
    (4, '5.2.10-rc1');

-- sid, bits (see 40-expand.sql)
INSERT INTO service_state VALUES
    (3102, 0x10),
    (3103, 0x30),
    (3104, 0x20),
    (3105, 0x50),
    (4103, 0xD0),
    (4104, 0x00),
    (4202, 0x10),
    (4202, 0x30);
