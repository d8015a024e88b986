// Every table that the program reads or writes, one description each: the columns in stored order
// and the operations that the table has.
//
// The files are made and shared by other programs of the device; this program never creates a
// table. Cells are read by position, so the order is part of the contract, and a table that has
// further columns behind the listed ones is still read correctly.
//
// Names are the device's own. `fk_id` + a table's stem refers to a row of that table, `MAC` to the
// module (a row of RedesModulos) that the row belongs to.
#pragma once

#include <array>
#include <string_view>

#include "db/table.h"

namespace tarvodb {

// --- Configuration database (kConfigDatabase) ---

// Settings of the headend as key and value.
struct configuracionWebGlobal {
    TARVO_COLUMNS(idConfiguracionGlobal, nombre, valor, aplicarBackup);
    static constexpr TableInfo info{"configuracionWebGlobal", columns,
                                    Operation::select | Operation::insert | Operation::update};
};

// Home transponders used for maintenance.
struct MantenimientoHomeChannelsGlobal {
    TARVO_COLUMNS(idMantenimiento, Frequency, Orbita, Polaridad, Banda, SymbolRate, ONID, TSID,
                  Estado);
    static constexpr TableInfo info{"MantenimientoHomeChannelsGlobal", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// DVB networks that the outputs belong to.
struct RedesCabecera {
    TARVO_COLUMNS(idRed, NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron,
                  Auto_Service_List, LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName, NIT_Version,
                  NIT_Data_Source, TV_Type, CI_TV_Type, LG_comp_VSecure, Block_PIDs, Decrypt_PIDs,
                  CellID, NIT_Follow, estado);
    static constexpr TableInfo info{"RedesCabecera", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Modules of the headend.
struct RedesModulos {
    TARVO_COLUMNS(idRedMod, MAC, HostName, LabelName, RED, Familia, Modelo, Master, HWVersion,
                  NumeroSerie, PairedHost, Atenuacion, ResetFactory, NFS_Server, UpgradeCounter,
                  ModoSalidaRF, estado);
    static constexpr TableInfo info{"RedesModulos", columns, Operation::select | Operation::update};
};

// Positions of the satellite dish switch.
struct DiSEqCGlobal {
    TARVO_COLUMNS(idDiSEqCGlobal, Nombre, Posicion, Orbita, Polaridad, Banda, Estado);
    static constexpr TableInfo info{"DiSEqCGlobal", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Preferred audio languages.
struct AudioLanguageListGlobal {
    TARVO_COLUMNS(idALLG, AudioCode);
    static constexpr TableInfo info{"AudioLanguageListGlobal", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Output scrambling systems. Mode holds on (1) or off (0).
struct ScramblingGlobal {
    TARVO_COLUMNS(idScrambling, ScramblingName, Mode, Estado);
    static constexpr TableInfo info{"ScramblingGlobal", columns,
                                    Operation::select | Operation::insert | Operation::update};
};

// Control words of the scrambling systems. Mode says which one is in use.
struct ScramblingKeysGlobal {
    TARVO_COLUMNS(idScramblingKeys, Mode, Frequency, System, Odd, Even, K_Shared, EK_Odd, EK_Even,
                  Date, Estado);
    static constexpr TableInfo info{"ScramblingKeysGlobal", columns,
                                    Operation::select | Operation::insert | Operation::update};
};

// Satellite tuners. Frequency is the intermediate, fe the received frequency, both in MHz.
struct NimGlobal {
    TARVO_COLUMNS(idNimGlobal, MAC, Frequency, SymbolRate, banda_FI, fe, STANDBY, DiSEqC, RFIN_LOOP,
                  fk_idEntradasGlobal, fk_idNim, ModoPLS, ScramblingID, StreamID, Estado);
    static constexpr TableInfo info{"NimGlobal", columns, Operation::select | Operation::update};
};

// Terrestrial tuners.
struct NimCOFDMGlobal {
    TARVO_COLUMNS(idNimCOFDMGlobal, MAC, Frequency, Bandwidth, Hierarchy, trackingStatusEn,
                  TSID_Tracking, ONID_Tracking, STANDBY, fk_idEntradasGlobal, fk_idNimCOFDM, PLP_ID,
                  Estado);
    static constexpr TableInfo info{"NimCOFDMGlobal", columns,
                                    Operation::select | Operation::update};
};

// Cable tuners.
struct NimQAMGlobal {
    TARVO_COLUMNS(idNimQAMGlobal, MAC, Frequency, SymbolRate, Constelacion, STANDBY,
                  fk_idEntradasGlobal, fk_idNimQAM, Estado);
    static constexpr TableInfo info{"NimQAMGlobal", columns, Operation::select | Operation::update};
};

// Module inputs. fk_idEntrada is the input's number on its module.
struct EntradasGlobal {
    TARVO_COLUMNS(idEntradasGlobal, MAC, tipoEntrada, TSID, ONID, Activo, ResumenNIT, fk_idEntrada,
                  Estado);
    static constexpr TableInfo info{"EntradasGlobal", columns,
                                    Operation::select | Operation::update};
};

// Logical outputs. fk_idSalidasLogicas is the output's number on its module.
struct SalidasLogicasGlobal {
    TARVO_COLUMNS(idSalidasLogicasGlobal, MAC, TSID_Out, ONID_Out, tipoSalida, Activo,
                  fk_idSalidasLogicas, num_check_solapamientos, Estado);
    static constexpr TableInfo info{"SalidasLogicasGlobal", columns,
                                    Operation::select | Operation::update};
};

// RF modulators of the logical outputs.
struct RFOutGlobal {
    TARVO_COLUMNS(idRFOutGlobal, MAC, Frecuencia, Symbol_Rate, Ancho_Banda, Modo_OFDM,
                  Intervalo_Guarda, Constelacion, Code_Rate, Espectro_Salida,
                  Modo_Salida_Modulacion, fk_idSalidasLogicasGlobal, fk_idRFOut, Estado);
    static constexpr TableInfo info{"RFOutGlobal", columns, Operation::select | Operation::update};
};

// Output services. SID is the output's, OSID the input's service id.
struct ServiciosSalidaGlobal {
    TARVO_COLUMNS(idSSG, MAC, OSID, SID, NombreEntrada, NombreSalida, NombreForzado, Tipo,
                  VideoFormat, Service_Type, Video_peak_bitrate, fk_idEntrada, fk_idSalidasLogicas,
                  Seleccionado, Especial, Orden, Descifrar, Transcoding, OLCN, LCN, LCNForzado,
                  SimulcastLCN, idEPG, DuplicadoClonado, SSU, PMT_pid, EstadoBorrado,
                  EstadoServicio);
    static constexpr TableInfo info{"ServiciosSalidaGlobal", columns,
                                    Operation::select | Operation::insert | Operation::update};
};

// Elementary streams of the output services.
struct PIDsSalidaGlobal {
    TARVO_COLUMNS(idPSG, MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo, StreamId,
                  AudioCode, EstadoPID, EstadoBorrado);
    static constexpr TableInfo info{"PIDsSalidaGlobal", columns,
                                    Operation::select | Operation::insert | Operation::update};
};

// Services that the headend builds its programme guide for.
struct Service_EPG {
    TARVO_COLUMNS(idService_EPG, ONID, TSID, SID, EPG, LCN, fk_idService_EPG_Satellite, Video_Type,
                  Video_peak_bitrate, Service_type, Nombre, Proveedor);
    static constexpr TableInfo info{"Service_EPG", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Audio tracks of the programme guide's services.
struct Service_EPG_audios {
    TARVO_COLUMNS(idService_EPG_audios_EPG, fk_idService_EPG, Language_code, Audio_Type, Estado);
    static constexpr TableInfo info{"Service_EPG_audios", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Channels that a programme guide's service replaces.
struct Service_EPG_replacing {
    TARVO_COLUMNS(idService_EPG_replacing, fk_idService_EPG, replacing_epg_channel_id, Estado);
    static constexpr TableInfo info{"Service_EPG_replacing", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// Satellite transponders of the programme guide's services.
struct Service_EPG_Satellite {
    TARVO_COLUMNS(idService_EPG_Satellite, TSID, ONID, Frequency, SymbolRate, Polaridad, Orbita,
                  West_East_Flag, Estado);
    static constexpr TableInfo info{"Service_EPG_Satellite", columns,
                                    Operation::select | Operation::insert | Operation::deleteAll};
};

// --- State database (kStateDatabase), read by position ---
//
// Only the columns that are read have a name here, an enumerator that says what the column holds.

// Input services as the device received them.
struct ServiciosEntradaGlobal {
    enum Column { statusBits = 16 };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 19> columns{};
    static constexpr TableInfo info{"ServiciosEntradaGlobal", columns, Operation::select};
};

// Modules as they reported themselves.
struct ModulosCabecera {
    enum Column { softwareVersion = 11 };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 31> columns{};
    static constexpr TableInfo info{"ModulosCabecera", columns, Operation::select};
};

// Conditional-access modules and their smart cards.
struct CAMInfoGlobal {
    enum Column {
        cardStatus = 9,
        cardSerialNumber = 10,
        camSerialNumber = 11,
        camVersion = 12,
        rightsHours = 14
    };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 36> columns{};
    static constexpr TableInfo info{"CAMInfoGlobal", columns, Operation::select};
};

// Live signal state of the satellite tuners.
struct TempNIMGlobal {
    enum Column { inputNumber = 4, quality = 11, locked = 17 };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 19> columns{};
    static constexpr TableInfo info{"TempNIMGlobal", columns, Operation::select};
};

// Live signal state of the terrestrial tuners.
struct TempNIMCOFDMGlobal {
    enum Column { quality = 7, locked = 10 };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 12> columns{};
    static constexpr TableInfo info{"TempNIMCOFDMGlobal", columns, Operation::select};
};

// Live signal state of the cable tuners.
struct TempNIMQAMGlobal {
    enum Column { quality = 7, locked = 12 };
    friend constexpr const TableInfo& tableOf(Column) { return info; }
    static constexpr std::array<std::string_view, 14> columns{};
    static constexpr TableInfo info{"TempNIMQAMGlobal", columns, Operation::select};
};

// --- Conditional-access modules (kVsecureDatabase) ---

// Conditional-access modules with their key material.
struct VSecure {
    TARVO_COLUMNS(idVSecure, Fabricante, idCliente, K_Publica, EK_Shared, Alta, Reintentos, Error,
                  Descripcion, estado);
    static constexpr TableInfo info{
        "VSecure", columns,
        Operation::select | Operation::insert | Operation::update | Operation::deleteAll};
};

// --- Command store (kCommandDatabase) ---

// Stored commands of the remote-control server.
struct RCCommand {
    TARVO_COLUMNS(id, commandId, status, nextTime, schedule, command, result);
    static constexpr TableInfo info{"RCCommand", columns,
                                    Operation::select | Operation::insert | Operation::update |
                                        Operation::deleteAll | Operation::deleteId};
};

}  // namespace tarvodb
