-- What sets single services, tuners and outputs apart.

INSERT INTO DiSEqCGlobal (idDiSEqCGlobal, Nombre, Posicion, Orbita, Polaridad, Banda, Estado) VALUES
    (5, '13° Est, V & bas', 5, 130, 0, 0, 0),
    (6, '13° Est, H & bas', 6, 130, 1, 0, 0);

UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Grand Écran <1>', NombreForzado = 1
WHERE SID = 1201;
UPDATE ServiciosSalidaGlobal SET Transcoding = 1 WHERE SID IN (1202, 1203);
UPDATE ServiciosSalidaGlobal SET DuplicadoClonado = 1 WHERE SID = 4201;
UPDATE ServiciosSalidaGlobal SET SimulcastLCN = LCN + 200 WHERE SID = 1101;
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 3203;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1 WHERE SID = 3204;

-- A fourth language for one service, and one service that has lost its streams.
INSERT INTO PIDsSalidaGlobal
    (MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo, StreamId, AudioCode, EstadoPID,
     EstadoBorrado)
SELECT MAC, idSSG, fk_idEntrada, fk_idSalidasLogicas, 5, 4, 6001, 'qaa', 0, 0
FROM ServiciosSalidaGlobal WHERE SID = 2204;
DELETE FROM PIDsSalidaGlobal
WHERE fk_idSSG = (SELECT idSSG FROM ServiciosSalidaGlobal WHERE SID = 3104);

UPDATE NimGlobal SET StreamID = 12, ScramblingID = 121212 WHERE fe = 11013;
UPDATE RFOutGlobal SET Symbol_Rate = 6875 WHERE Frecuencia BETWEEN 306000 AND 346000;
UPDATE ScramblingGlobal SET Mode = 0;

INSERT INTO VSecure
    (Fabricante, idCliente, K_Publica, EK_Shared, Alta, Reintentos, Error, Descripcion, estado)
VALUES ('Northlock', '66005501', 'd3Z4LWFxNC1jYW0=', '7F00', '2019-07-14', '0', '0', '', '0');

-- The second tuners of terrestrial inputs are wired through as well.
UPDATE NimGlobal SET RFIN_LOOP = 1
WHERE fk_idEntradasGlobal = (SELECT idEntradasGlobal FROM EntradasGlobal WHERE TSID = 3);

-- A satellite tuner that is still searching, a terrestrial one that follows a moved carrier.
UPDATE TempNIMGlobal SET Locked = 2 WHERE fe = 11662;
UPDATE TempNIMCOFDMGlobal SET Locked = 2 WHERE Frequency = 586000;
