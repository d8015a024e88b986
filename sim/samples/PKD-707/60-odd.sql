-- What should not be there: codes outside their tables, missing values, missing and surplus rows.

-- The spare module is registered, but has neither inputs nor outputs.

-- A second dish has left its tuner row on the first input of the first module.
INSERT INTO NimGlobal
    (MAC, Frequency, SymbolRate, banda_FI, fe, STANDBY, DiSEqC, RFIN_LOOP, fk_idEntradasGlobal,
     fk_idNim, ModoPLS, ScramblingID, StreamID, Estado)
SELECT MAC, 1500, 22000, 3, 11250, 1, 0, 1, idEntradasGlobal, 2, 2, 7, 3, 0
FROM EntradasGlobal WHERE TSID = 1010;
UPDATE NimGlobal SET ModoPLS = 1, RFIN_LOOP = NULL WHERE fe = 12422;
DELETE FROM NimCOFDMGlobal WHERE Frequency = 634000;
UPDATE NimQAMGlobal SET Constelacion = 9, SymbolRate = NULL WHERE Frequency = 290000;

-- All services of the tower are on their way out.
UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1
WHERE MAC = (SELECT MAC FROM RedesModulos WHERE idRedMod = 4);

-- A setting that is there twice, and one without a value.
INSERT INTO configuracionWebGlobal (nombre, valor, aplicarBackup)
VALUES ('identificacion_instalador', 'Señales & Cía "Norte"', NULL);
UPDATE configuracionWebGlobal SET valor = NULL WHERE nombre = 'servidorZEN_usuario';

UPDATE MantenimientoHomeChannelsGlobal SET Polaridad = 2 WHERE idMantenimiento = 2;
UPDATE MantenimientoHomeChannelsGlobal SET Banda = 5, ONID = NULL WHERE idMantenimiento = 3;
UPDATE DiSEqCGlobal SET Nombre = '<V> "bajo" & ''alto''', Orbita = -300 WHERE idDiSEqCGlobal = 1;

-- Left over from an older scrambling system, which ScramblingGlobal no longer knows.
INSERT INTO ScramblingKeysGlobal
    (Mode, Frequency, System, Odd, Even, K_Shared, EK_Odd, EK_Even, Date, Estado) VALUES
    (0, 0, 'Antiguo', '', NULL, NULL, NULL, NULL, NULL, 0),
    (7, NULL, NULL, 'AA', 'BB', '', '', '', '2014-03-30 00:00:00', 1);

UPDATE Service_EPG_Satellite SET Polaridad = 3, West_East_Flag = NULL
WHERE idService_EPG_Satellite = 2;
UPDATE Service_EPG SET ONID = 0, LCN = 0, Nombre = NULL WHERE idService_EPG = 4;
INSERT INTO Service_EPG_audios (fk_idService_EPG, Language_code, Audio_Type, Estado) VALUES
    (4, NULL, NULL, NULL),
    (99, 'zxx', 1, 0);
