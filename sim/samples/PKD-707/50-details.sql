-- What sets single services and outputs apart.

UPDATE ServiciosSalidaGlobal SET Transcoding = 1 WHERE SID IN (1201, 1202, 1203, 1204);
UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Lucha', NombreForzado = 1 WHERE SID = 1203;
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 2102;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1 WHERE SID = 3202;
UPDATE RFOutGlobal SET Modo_OFDM = 0 WHERE Frecuencia IN (482000, 490000);
UPDATE RFOutGlobal SET Modo_Salida_Modulacion = 2 WHERE Frecuencia = 314000;
UPDATE ScramblingKeysGlobal SET Mode = 1;
