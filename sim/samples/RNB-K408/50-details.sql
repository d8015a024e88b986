-- What sets single services and outputs apart, and the CAMs that may open the scrambled ones.

UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Sport & Spiel "Klinik"', NombreForzado = 1
WHERE SID = 1203;
UPDATE ServiciosSalidaGlobal SET LCNForzado = 1 WHERE SID = 1101;
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 2203;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1 WHERE SID = 3204;
UPDATE RFOutGlobal SET Modo_OFDM = 0 WHERE Frecuencia = 530000;
UPDATE ScramblingGlobal SET Mode = 1;
UPDATE ScramblingKeysGlobal SET Mode = 1, Frequency = 15, Date = '2024-06-01 02:00:00';
UPDATE DiSEqCGlobal SET Nombre = '19,2° Ost, V "tief"' WHERE idDiSEqCGlobal = 1;

INSERT INTO VSecure
    (Fabricante, idCliente, K_Publica, EK_Shared, Alta, Reintentos, Error, Descripcion, estado)
VALUES
    ('Northlock', '000000010001', 'cm5iLWs0MDgtY2FtLW9uZQ==', '91AE03D2', '2023-09-01', '0', '0',
     'Zimmer 101 "Fenster"', '0'),
    ('Northlock', '000000010002', 'cm5iLWs0MDgtY2FtLXR3bw==', '91AE03D3', '2023-09-01', '0', '0',
     'Zimmer 102 & 103', '0'),
    ('Südschloss', '000000010003', 'cm5iLWs0MDgtY2FtLXRocmVl', '', '2023-09-04', '1', '0',
     'Zimmer <104>', '1'),
    ('Südschloss', '000000010004', '', '', '2023-10-11', '5', '31', 'Ersatz', '2'),
    (NULL, '000000010005', NULL, NULL, NULL, NULL, NULL, NULL, '1');
