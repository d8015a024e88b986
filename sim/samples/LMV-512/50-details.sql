-- What sets single services and outputs apart.

UPDATE ServiciosSalidaGlobal SET Transcoding = 1 WHERE SID IN (1202, 1203);
UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Calcio 1', NombreForzado = 1 WHERE SID = 1203;
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 3202;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1 WHERE SID = 4105;

-- The second output of the second module is parked: no logical output, no carrier.
UPDATE SalidasLogicasGlobal SET Activo = 0 WHERE TSID_Out = 14;
UPDATE RFOutGlobal SET Modo_OFDM = 0 WHERE Frecuencia IN (490000, 498000);
UPDATE ScramblingKeysGlobal SET Mode = 1;
