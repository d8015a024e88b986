-- From the sheets to the device's tables.

UPDATE configuracionWebGlobal
SET valor = (SELECT value FROM setting WHERE name = nombre)
WHERE nombre IN (SELECT name FROM setting);

INSERT INTO RedesModulos
    (idRedMod, MAC, HostName, LabelName, RED, Familia, Modelo, Master, HWVersion, NumeroSerie,
     PairedHost, Atenuacion, ResetFactory, NFS_Server, UpgradeCounter, ModoSalidaRF, estado)
SELECT id, mac, host, label, network, family, model, master, hardware, serial, '', attenuation,
       0, 0, 1, rf_mode, 0
FROM rack
ORDER BY id;

CREATE TEMP VIEW reception AS
    SELECT module, input, 0 AS type, active, onid, tsid FROM satellite
    UNION ALL SELECT module, input, 1, active, onid, tsid FROM terrestrial
    UNION ALL SELECT module, input, 2, active, onid, tsid FROM cable;

INSERT INTO EntradasGlobal
    (MAC, tipoEntrada, TSID, ONID, Activo, ResumenNIT, fk_idEntrada, Estado)
SELECT MAC, type, tsid, onid, active, '', input, 0
FROM reception JOIN RedesModulos ON idRedMod = module
ORDER BY module, input;

-- Every input has all three tuners; those that its type does not use keep what they were last
-- tuned to.
CREATE TEMP VIEW tuner AS
    SELECT idEntradasGlobal AS id, MAC, fk_idEntrada AS number, 1 - Activo AS standby,
           idRedMod AS module
    FROM EntradasGlobal JOIN RedesModulos USING (MAC);

INSERT INTO NimGlobal
    (MAC, Frequency, SymbolRate, banda_FI, fe, STANDBY, DiSEqC, RFIN_LOOP, fk_idEntradasGlobal,
     fk_idNim, ModoPLS, ScramblingID, StreamID, Estado)
SELECT MAC,
       coalesce(mhz, 11856) - (SELECT valor FROM configuracionWebGlobal
                               WHERE nombre = iif(coalesce(band, 1), 'LNB_fa', 'LNB_fb')),
       coalesce(symbol_rate, 27500), coalesce(band, 1), coalesce(mhz, 11856), standby,
       coalesce(diseqc, 0), coalesce(loop, 0), id, number, 0, 0, -2, 0
FROM tuner LEFT JOIN satellite s ON s.module = tuner.module AND input = number
ORDER BY id;

INSERT INTO NimCOFDMGlobal
    (MAC, Frequency, Bandwidth, Hierarchy, trackingStatusEn, TSID_Tracking, ONID_Tracking, STANDBY,
     fk_idEntradasGlobal, fk_idNimCOFDM, PLP_ID, Estado)
SELECT MAC, coalesce(khz, 474000), coalesce(bandwidth, 2), coalesce(hierarchy, 0), 0,
       coalesce(tsid, 0), coalesce(onid, 0), standby, id, number, coalesce(plp, -2), 0
FROM tuner LEFT JOIN terrestrial t ON t.module = tuner.module AND input = number
ORDER BY id;

INSERT INTO NimQAMGlobal
    (MAC, Frequency, SymbolRate, Constelacion, STANDBY, fk_idEntradasGlobal, fk_idNimQAM, Estado)
SELECT MAC, coalesce(khz, 306000), coalesce(symbol_rate, 6900), coalesce(constellation, 4),
       standby, id, number, 0
FROM tuner LEFT JOIN cable c ON c.module = tuner.module AND input = number
ORDER BY id;

INSERT INTO SalidasLogicasGlobal
    (MAC, TSID_Out, ONID_Out, tipoSalida, Activo, fk_idSalidasLogicas, num_check_solapamientos,
     Estado)
SELECT MAC, tsid, onid, ModoSalidaRF, 1, output, 0, 0
FROM output JOIN RedesModulos ON idRedMod = module
ORDER BY module, output;

INSERT INTO RFOutGlobal
    (MAC, Frecuencia, Symbol_Rate, Ancho_Banda, Modo_OFDM, Intervalo_Guarda, Constelacion,
     Code_Rate, Espectro_Salida, Modo_Salida_Modulacion, fk_idSalidasLogicasGlobal, fk_idRFOut,
     Estado)
SELECT MAC, khz, 6900, bandwidth, 1, guard, constellation, code_rate, spectrum, 3 * on_air,
       idSalidasLogicasGlobal, output, 0
FROM SalidasLogicasGlobal
JOIN RedesModulos USING (MAC)
JOIN output ON module = idRedMod AND output = fk_idSalidasLogicas
ORDER BY idSalidasLogicasGlobal;

INSERT INTO ServiciosSalidaGlobal
    (MAC, OSID, SID, NombreEntrada, NombreSalida, NombreForzado, Tipo, VideoFormat, Service_Type,
     Video_peak_bitrate, fk_idEntrada, fk_idSalidasLogicas, Seleccionado, Especial, Orden,
     Descifrar, Transcoding, OLCN, LCN, LCNForzado, SimulcastLCN, idEPG, DuplicadoClonado, SSU,
     PMT_pid, EstadoBorrado, EstadoServicio)
SELECT MAC, osid, sid, name, name, 0, type,
       CASE type WHEN 25 THEN 2 WHEN 22 THEN 1 ELSE 0 END,
       CASE type WHEN 2 THEN 1 ELSE 0 END,
       CASE type WHEN 25 THEN 14000 WHEN 2 THEN 400 ELSE 7000 END,
       input, output, 1, 0, 2 - decrypt, decrypt, 0, lcn, lcn, 0, 0, 0, 0, 0,
       4096 + sid % 1000, 0, 0
FROM lineup JOIN RedesModulos ON idRedMod = module
ORDER BY lineup.rowid;

INSERT INTO PIDsSalidaGlobal
    (MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo, StreamId, AudioCode, EstadoPID,
     EstadoBorrado)
SELECT MAC, idSSG, fk_idEntrada, fk_idSalidasLogicas, ordering, stream.type,
       256 + lineup.osid % 400 * 16 + pid,
       coalesce(language, (SELECT AudioCode FROM AudioLanguageListGlobal ORDER BY idALLG LIMIT 1)),
       0, 0
FROM ServiciosSalidaGlobal
JOIN lineup USING (sid)
JOIN stream USING (streams)
ORDER BY idSSG, ordering;

-- From here on: what the running device has found.

INSERT INTO ModulosCabecera
    (MAC, HostName, IP, Netmask, Gateway, LabelName, Familia, Modelo, HWVersion, BootVersion,
     SWVersion, FPGAVersion, NumeroSerie, Uptime, UpgradeStatus, Temperatura, Presente, Master, RED,
     Estado)
SELECT MAC, HostName, '10.0.0.' || (10 + module), '255.255.255.0', '10.0.0.1', LabelName, Familia,
       Modelo, HWVersion, '1.04', version, '0x2107', NumeroSerie, 86400 * module, 0, 41 + module, 1,
       Master, RED, 0
FROM firmware JOIN RedesModulos ON idRedMod = module
ORDER BY firmware.rowid;

INSERT INTO CAMInfoGlobal
    (MAC, Slot, CAMPresente, CAMInicializada, ManufacturerID, AppType, NumCASystems, CASystemID,
     CardStatus, CardSerialNumber, CAMSerialNumber, CAMVersion, CardVersion, RightsHours,
     MaxServicios, ServiciosActivos, CIPlus, CIPlusVersion, NombreCAM, CASystems, Presente, Estado)
SELECT MAC, 1, 1, 1, 4951, 7, 2, 6144, card_status, card_serial, serial, version, 905, rights_hours,
       8, 6, 1, 14, 'CI+ CAM', '1800,1801', 1, 0
FROM cam JOIN RedesModulos ON idRedMod = module
ORDER BY cam.rowid;

-- The bits: 0x10 descrambling known, 0x20 descrambling fails, 0x40 transcoding known,
-- 0x80 transcoding fails.
INSERT INTO ServiciosEntradaGlobal
    (MAC, OSID, fk_idEntrada, Tipo, NombreEntrada, Proveedor, LCN, Presente, BitsEstado, Estado)
SELECT MAC, osid, input, type, name, '', lcn, 1, coalesce(bits, 16 * decrypt), 0
FROM lineup
JOIN RedesModulos ON idRedMod = module
LEFT JOIN service_state USING (sid)
ORDER BY lineup.rowid, service_state.rowid;

INSERT INTO TempNIMGlobal
    (MAC, Frequency, SymbolRate, fk_idEntrada, fe, banda_FI, DiSEqC, Potencia, CNR, BER, Calidad,
     Locked, Estado)
SELECT MAC, Frequency, symbol_rate, input, mhz, band, s.diseqc, -48, 12, 0, quality, locked, 0
FROM satellite s
JOIN RedesModulos ON idRedMod = module
JOIN NimGlobal USING (MAC)
WHERE fk_idNim = input
ORDER BY module, input;

INSERT INTO TempNIMCOFDMGlobal
    (MAC, Frequency, Bandwidth, fk_idEntrada, Potencia, CNR, Calidad, BER, Constelacion, Locked,
     Estado)
SELECT MAC, khz, bandwidth, input, -52, 26, quality, 0, 2, locked, 0
FROM terrestrial JOIN RedesModulos ON idRedMod = module
ORDER BY module, input;

INSERT INTO TempNIMQAMGlobal
    (MAC, Frequency, SymbolRate, fk_idEntrada, Potencia, CNR, Calidad, BER, Constelacion, Locked,
     Estado)
SELECT MAC, khz, symbol_rate, input, -45, 35, quality, 0, constellation, locked, 0
FROM cable JOIN RedesModulos ON idRedMod = module
ORDER BY module, input;
