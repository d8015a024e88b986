-- What sets single services and tuners apart.

UPDATE ServiciosSalidaGlobal SET NombreSalida = 'Guest "Info" TV', NombreForzado = 1
WHERE SID = 3101;
UPDATE ServiciosSalidaGlobal SET LCNForzado = 1 WHERE SID IN (1101, 1102);
UPDATE ServiciosSalidaGlobal SET SimulcastLCN = 101, idEPG = 501 WHERE SID = 1101;
UPDATE ServiciosSalidaGlobal SET OLCN = 0 WHERE fk_idEntrada = 2 AND SID BETWEEN 3105 AND 3205;
UPDATE ServiciosSalidaGlobal SET Transcoding = 1, Video_peak_bitrate = 6500
WHERE SID IN (3102, 3105, 4103);
UPDATE ServiciosSalidaGlobal SET DuplicadoClonado = 1 WHERE SID = 4104;

-- A software update service and one on its way out.
UPDATE ServiciosSalidaGlobal SET SSU = 1 WHERE SID = 2203;
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1, Seleccionado = 0 WHERE SID = 4204;

DELETE FROM ServiciosEntradaGlobal WHERE OSID = 28308;

UPDATE NimGlobal SET StreamID = 4, ScramblingID = 8 WHERE fe = 12603;
UPDATE NimCOFDMGlobal SET trackingStatusEn = 1 WHERE Frequency = 650000;
UPDATE RFOutGlobal SET Modo_OFDM = 0 WHERE Frecuencia IN (498000, 514000);
UPDATE RFOutGlobal SET Modo_Salida_Modulacion = 1 WHERE Frecuencia = 490000;
UPDATE RFOutGlobal SET Symbol_Rate = 6875 WHERE Frecuencia = 314000;
UPDATE PIDsSalidaGlobal SET EstadoBorrado = 1 WHERE StreamId IN (272, 273) AND Tipo = 129;

INSERT INTO VSecure
    (Fabricante, idCliente, K_Publica, EK_Shared, Alta, Reintentos, Error, Descripcion, estado)
VALUES ('Northlock', '40217733', '', '', '2022-05-17', '0', '0', 'Cable & CAM', '0');
