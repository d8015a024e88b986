-- What sets single services, tuners and outputs apart.

UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Voetbal & Meer', NombreForzado = 1
WHERE SID = 2103;
UPDATE ServiciosSalidaGlobal SET Transcoding = 1 WHERE SID IN (2102, 2103);
UPDATE ServiciosSalidaGlobal SET DuplicadoClonado = 1 WHERE SID = 2104;
UPDATE ServiciosSalidaGlobal SET LCNForzado = 1, OLCN = 900 WHERE SID = 1101;
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 3204;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 2 WHERE SID = 3205;

UPDATE NimCOFDMGlobal SET trackingStatusEn = 1 WHERE Frequency IN (498000, 522000);
UPDATE RFOutGlobal SET Symbol_Rate = 6875;
UPDATE RFOutGlobal SET Symbol_Rate = 6900 WHERE Frecuencia = 338000;
UPDATE configuracionWebGlobal SET valor = '0'
WHERE nombre IN ('network_ConfigureNET', 'mantenimiento_activo');
