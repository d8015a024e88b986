-- What sets single services, tuners and outputs apart.

UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Golo "Um"', NombreForzado = 1 WHERE SID = 2104;
UPDATE ServiciosSalidaGlobal SET LCNForzado = 1 WHERE SID = 1101;
UPDATE ServiciosSalidaGlobal SET Transcoding = 1 WHERE SID IN (2101, 2201);
UPDATE ServiciosSalidaGlobal SET DuplicadoClonado = 1, SimulcastLCN = 202 WHERE SID = 2202;
UPDATE ServiciosSalidaGlobal SET SSU = 2 WHERE SID = 3206;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 2, Seleccionado = 0, Orden = 0 WHERE SID = 1206;

UPDATE NimGlobal SET StreamID = 1, ScramblingID = 262141 WHERE fe = 11317;
UPDATE NimCOFDMGlobal SET Hierarchy = 1, trackingStatusEn = 1, TSID_Tracking = 58,
    ONID_Tracking = 8904 WHERE Frequency = 754000;

-- The second output of the last module is parked: no logical output, no carrier.
UPDATE SalidasLogicasGlobal SET Activo = 0 WHERE TSID_Out = 306;

UPDATE MantenimientoHomeChannelsGlobal SET Frequency = 12188, Polaridad = 1
WHERE idMantenimiento = 2;
DELETE FROM MantenimientoHomeChannelsGlobal WHERE idMantenimiento = 3;
DELETE FROM DiSEqCGlobal WHERE idDiSEqCGlobal = 4;
UPDATE ScramblingGlobal SET Mode = 0;
UPDATE ScramblingKeysGlobal SET Mode = 0;

DELETE FROM Service_EPG WHERE idService_EPG IN (6, 7);
UPDATE Service_EPG SET Nombre = 'Programação & Guia' WHERE idService_EPG = 1;
DELETE FROM Service_EPG_replacing;

INSERT INTO VSecure
    (Fabricante, idCliente, K_Publica, EK_Shared, Alta, Reintentos, Error, Descripcion, estado)
VALUES
    ('Northlock', '55120011', 'bG12LTUwMi1wdWJsaWMtb25l', 'A0B1C2D3', '2020-11-03', '0', '0',
     'Satélite e cabo', '0'),
    ('Northlock', '55120012', NULL, NULL, '2020-11-04', '3', '12', 'Reserva', '2');
