-- What should not be there: codes outside their tables, missing values, missing rows.

-- Outputs.
UPDATE RFOutGlobal
SET Modo_OFDM = 2, Ancho_Banda = 3, Intervalo_Guarda = 4, Constelacion = 3, Code_Rate = 5,
    Espectro_Salida = 2, Modo_Salida_Modulacion = -1
WHERE Frecuencia = 506000;
UPDATE RFOutGlobal SET Constelacion = 5, Code_Rate = NULL, Symbol_Rate = NULL
WHERE Frecuencia = 306000;
DELETE FROM RFOutGlobal WHERE Frecuencia = 514000;

-- Inputs: PLS modes (only 1 and 2 have a name of their own), bands, and a type that is none.
UPDATE NimGlobal SET ModoPLS = 1 WHERE fe = 12441;
UPDATE NimGlobal SET ModoPLS = 2, banda_FI = NULL WHERE fe = 12480;
UPDATE NimGlobal SET ModoPLS = 3, banda_FI = 2 WHERE fe = 10758;
UPDATE NimCOFDMGlobal SET Bandwidth = 3, Hierarchy = 2, PLP_ID = -1 WHERE Frequency = 698000;
UPDATE EntradasGlobal SET tipoEntrada = 3, ONID = NULL, TSID = NULL WHERE TSID = 14;

-- Inputs without the tuner of their type.
DELETE FROM NimGlobal WHERE fe = 11766;
DELETE FROM NimQAMGlobal WHERE Frequency = 370000;

-- Services.
UPDATE ServiciosSalidaGlobal SET NombreEntrada = NULL, NombreSalida = NULL WHERE SID = 2103;
UPDATE ServiciosSalidaGlobal SET LCN = 0, OLCN = NULL, idEPG = -1 WHERE SID = 2104;
UPDATE ServiciosSalidaGlobal SET fk_idSalidasLogicas = 3 WHERE SID = 2105;
UPDATE ServiciosSalidaGlobal SET OSID = 70000, SID = 0 WHERE SID = 2201;
UPDATE ServiciosSalidaGlobal SET SSU = NULL, EstadoBorrado = NULL WHERE SID = 2202;
DELETE FROM PIDsSalidaGlobal
WHERE fk_idSSG = (SELECT idSSG FROM ServiciosSalidaGlobal WHERE SID = 2203);
UPDATE PIDsSalidaGlobal SET AudioCode = NULL, Orden = NULL
WHERE fk_idSSG = (SELECT idSSG FROM ServiciosSalidaGlobal WHERE SID = 2204);

-- Headend-wide rows.
UPDATE RedesModulos SET LabelName = NULL, NumeroSerie = NULL, RED = NULL WHERE idRedMod = 3;
UPDATE RedesCabecera SET NombreRed = NULL, CellID = NULL, NID = NULL WHERE idRed = 3;
INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES (NULL), (''), ('ita & "eng"');
UPDATE DiSEqCGlobal SET Nombre = NULL, Polaridad = 2 WHERE idDiSEqCGlobal = 3;
UPDATE DiSEqCGlobal SET Posicion = NULL, Banda = 5 WHERE idDiSEqCGlobal = 4;
UPDATE ScramblingKeysGlobal SET Mode = 3, Odd = NULL, Frequency = NULL;
DELETE FROM ScramblingGlobal;
UPDATE configuracionWebGlobal SET valor = NULL
WHERE nombre IN ('identificacion_fecha', 'network_SecondaryDNS', 'LNB_fbandaC');
