#include <sqlite3.h>

#include "support/export_checks.h"
#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using test::leaf;
using test::selectsFrom;
using test::Texts;

const Texts kTables = {"ServiciosSalidaGlobal", "PIDsSalidaGlobal", "ServiciosEntradaGlobal"};
const std::string kServices = "modules/module/services";
const std::string kService = kServices + "/service";

// One CAM module with the MAC address M1, without services.
class ServicesExport : public test::ExportTest {
  protected:
    ServicesExport() { insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M1', 36, 1"); }

    // A module is a CAM module when its family is 36 and its model is not 2; SQL literals.
    void makeModule(const std::string& family, const std::string& model) {
        updateConfig("RedesModulos", "Familia = " + family + ", Modelo = " + model);
    }

    // A service of the module that has no other values than its key and these.
    void insertService(const std::string& id, const std::string& columns = "SSU",
                       const std::string& values = "0") {
        insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, " + columns, id + ", 'M1', " + values);
    }

    void insertPid(const std::string& values) {
        insertConfig("PIDsSalidaGlobal",
                     "idPSG, MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, Orden, Tipo,"
                     " StreamId, AudioCode, EstadoPID, EstadoBorrado",
                     values);
    }

    // The state of a received service; `bits` stands in column 17, the others have all bits set.
    void insertState(const std::string& mac, const std::string& osid, const std::string& input,
                     const std::string& bits) {
        device.execute(tarvodb::kStateDatabase,
                       "INSERT INTO ServiciosEntradaGlobal VALUES (NULL, " + mac + ", " + osid +
                           ", " + input +
                           ", 255, 'n', 'p', 255, 255, 255, 255, 255, 255, 255, 255, 255, " + bits +
                           ", 255, 255)");
    }
    // That of the service with the input identifier 700 on input 1.
    void insertState(const std::string& bits) { insertState("'M1'", "700", "1", bits); }

    // A service that is received as 700 on input 1; SQL literals.
    void insertReceivedService(const std::string& decrypt, const std::string& transcoding) {
        insertService("1", "OSID, fk_idEntrada, Descifrar, Transcoding",
                      "700, 1, " + decrypt + ", " + transcoding);
    }

    std::string exportedStatus() { return exported(kService + "/serviceStatus"); }
};

}  // namespace

// --- The service row -------------------------------------------------------------------------

TEST_F(ServicesExport, ARowGivesOneElementWithItsColumns) {
    insertConfig("ServiciosSalidaGlobal",
                 "idSSG, MAC, OSID, SID, NombreEntrada, NombreSalida, NombreForzado, Tipo,"
                 " VideoFormat, Service_Type, Video_peak_bitrate, fk_idEntrada,"
                 " fk_idSalidasLogicas, Seleccionado, Especial, Orden, Descifrar, Transcoding,"
                 " OLCN, LCN, LCNForzado, SimulcastLCN, idEPG, DuplicadoClonado, SSU, PMT_pid,"
                 " EstadoBorrado, EstadoServicio",
                 "11, 'M1', 12, 13, 'In', 'Out', 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,"
                 " 26, 27, 28, 29, 30, 31, 0, 32, 0, 33");
    EXPECT_EQ(exported(kServices),
              "<services><service><outputId>20</outputId><outputSid>13</outputSid>"
              "<inputId>19</inputId><inputSid>12</inputSid><inputName>In</inputName>"
              "<forcedName>14</forcedName><outputName>Out</outputName><lcn>27</lcn>"
              "<olcn>26</olcn><simulcastLcn>29</simulcastLcn><forcedLcn>28</forcedLcn>"
              "<idEPG>30</idEPG><serviceTypeDVB>15</serviceTypeDVB>"
              "<serviceTypeCanal>17</serviceTypeCanal><videoFormat>16</videoFormat>"
              "<cloned>31</cloned><decrypt>24</decrypt><transcoding>25</transcoding>"
              "<encrypt>0</encrypt><videoPeakBitrate>18</videoPeakBitrate><pidOrders/>"
              "<serviceStatus/></service></services>");
}

TEST_F(ServicesExport, TheModelsOfControllerAndModuleDecideWhichElementsAServiceHas) {
    const std::string ofAll =
        "outputId outputSid inputId inputSid inputName forcedName outputName lcn ";
    const std::string exceptRnb =
        "olcn simulcastLcn forcedLcn idEPG serviceTypeDVB serviceTypeCanal videoFormat ";
    const std::string usualOnCam =
        ofAll + exceptRnb +
        "cloned decrypt transcoding encrypt videoPeakBitrate pidOrders serviceStatus";
    const std::string usual = ofAll + exceptRnb + "transcoding encrypt videoPeakBitrate pidOrders";
    struct ModelCase {
        std::string model, onCamModule, onOther;
    };
    const std::vector<ModelCase> cases = {
        {"QRA-310", usualOnCam, usual},
        {"LMV-502", usualOnCam, usual},
        {"PKD-707", usualOnCam, usual},
        {"RNB-K408", ofAll + "decrypt encrypt pidOrders", ofAll + "encrypt pidOrders"},
        {"WVX-AQ4", usualOnCam, usual},
        {"LMV-512", usualOnCam, usual},
        {"WVX-BQ4",
         ofAll + exceptRnb + "cloned transcoding videoPeakBitrate pidOrders serviceStatus",
         ofAll + exceptRnb + "transcoding videoPeakBitrate pidOrders"},
        {"XYZ-1", usualOnCam, usual}};
    insertService("1");
    for (const ModelCase& each : cases) {
        SCOPED_TRACE(each.model);
        becomeModel(each.model);
        makeModule("36", "1");
        exportConfiguration();
        EXPECT_EQ(childNames(kService), each.onCamModule);
        makeModule("35", "1");
        exportConfiguration();
        EXPECT_EQ(childNames(kService), each.onOther);
    }
}

TEST_F(ServicesExport, ACamModuleIsOneOfFamily36ButNotItsModel2) {
    struct ModuleCase {
        std::string family, model;
        bool isCamModule;
    };
    const std::vector<ModuleCase> cases = {
        {"36", "1", true},    {"36", "2", false}, {"36", "0", true},    {"36", "3", true},
        {"36", "13", true},   {"35", "1", false}, {"37", "1", false},   {"0", "2", false},
        {"36", "NULL", true}, {"36", "-2", true}, {"NULL", "1", false}, {"'36x'", "'x2'", true},
        {"36", "'2x'", false}};
    insertService("1", "Descifrar", "5");
    for (const ModuleCase& each : cases) {
        SCOPED_TRACE(each.family + " " + each.model);
        makeModule(each.family, each.model);
        EXPECT_EQ(exported(kService + "/decrypt"), each.isCamModule ? "<decrypt>5</decrypt>" : "");
        EXPECT_EQ(element(kService + "/cloned"), each.isCamModule ? "<cloned/>" : "");
        EXPECT_EQ(element(kService + "/serviceStatus"), each.isCamModule ? "<serviceStatus/>" : "");
    }
}

TEST_F(ServicesExport, IsWrittenForEveryModuleOnAllModels) {
    insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M2', 35, 1");
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(exported("modules/module/services"), "<services/>");
        EXPECT_EQ(element("modules/module[2]/services"), "<services/>");
    }
}

TEST_F(ServicesExport, ARowThatIsDeletedOrSsuIsLeftOut) {
    struct RowCase {
        std::string ssu, deleted;
        bool isExported;
    };
    const std::vector<RowCase> cases = {
        {"0", "0", true},       {"1", "0", false},   {"0", "1", false},   {"1", "1", false},
        {"2", "0", false},      {"0", "2", false},   {"-1", "0", false},  {"0", "-1", false},
        {"NULL", "NULL", true}, {"'x'", "''", true}, {"'1x'", "0", false}};
    insertService("1", "SID", "5");
    for (const RowCase& each : cases) {
        SCOPED_TRACE(each.ssu + " " + each.deleted);
        updateConfig("ServiciosSalidaGlobal",
                     "SSU = " + each.ssu + ", EstadoBorrado = " + each.deleted);
        EXPECT_EQ(exported(kServices) == "<services/>", !each.isExported);
        EXPECT_EQ(element(kService + "/outputSid"),
                  each.isExported ? "<outputSid>5</outputSid>" : "");
    }
}

TEST_F(ServicesExport, AModuleHasItsOwnServicesInTheOrderReturned) {
    insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M2', 35, 1");
    insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, SID", "3, 'M1', 53");
    insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, SID", "2, 'M2', 52");
    insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, SID", "1, 'M1', 51");
    exportConfiguration();
    EXPECT_EQ(childNames("modules/module/services"), "service service");
    EXPECT_EQ(element("modules/module/services/service/outputSid"), "<outputSid>51</outputSid>");
    EXPECT_EQ(element("modules/module/services/service[2]/outputSid"), "<outputSid>53</outputSid>");
    EXPECT_EQ(childNames("modules/module[2]/services"), "service");
    EXPECT_EQ(element("modules/module[2]/services/service/outputSid"), "<outputSid>52</outputSid>");
}

TEST_F(ServicesExport, TheStreamsOfAServiceAreSelectedBeforeItsState) {
    insertService("8", "OSID, fk_idEntrada", "700, 1");
    insertService("9", "OSID, fk_idEntrada", "701, 2");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables),
              (Texts{"SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M1' ",
                     "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '8' ",
                     "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE 'M1'  and OSID LIKE"
                     " '700'  and fk_idEntrada LIKE '1' ",
                     "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '9' ",
                     "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE 'M1'  and OSID LIKE"
                     " '701'  and fk_idEntrada LIKE '2' "}));
}

TEST_F(ServicesExport, NothingIsSelectedForAServiceThatIsLeftOut) {
    insertService("1", "SSU, EstadoBorrado", "1, 0");
    insertService("2", "SSU, EstadoBorrado", "0, 1");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables),
              Texts{"SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M1' "});
}

TEST_F(ServicesExport, NoStateIsSelectedWhereNoneIsWritten) {
    insertReceivedService("1", "1");
    insertState("80");
    const Texts withoutState = {"SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M1' ",
                                "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '1' "};
    becomeModel("RNB-K408");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables), withoutState);
    becomeModel("QRA-310");
    makeModule("35", "1");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables), withoutState);
}

TEST_F(ServicesExport, ValuesAreWrittenAsStored) {
    insertService("1", "NombreEntrada, NombreSalida, LCN, SID, NombreForzado",
                  "' 24h & <M\xE1s> 50% ', '%s%n', 'none', -3, '01x'");
    exportConfiguration();
    EXPECT_EQ(element(kService + "/inputName"),
              "<inputName> 24h &amp; &lt;M\xE1s&gt; 50% </inputName>");
    EXPECT_EQ(element(kService + "/outputName"), "<outputName>%s%n</outputName>");
    EXPECT_EQ(element(kService + "/lcn"), "<lcn>none</lcn>");
    EXPECT_EQ(element(kService + "/outputSid"), "<outputSid>-3</outputSid>");
    EXPECT_EQ(element(kService + "/forcedName"), "<forcedName>01x</forcedName>");
}

TEST_F(ServicesExport, TheMacIsQuotedAndAWildcard) {
    updateConfig("RedesModulos", "MAC = 'm%Q''1'");
    insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, OSID, fk_idEntrada, SID",
                 "1, 'M-Q''1', 'a''%Q', '%s', 5");
    EXPECT_EQ(exported(kService + "/outputSid"), "<outputSid>5</outputSid>");
    EXPECT_EQ(selectsFrom(device, kTables),
              (Texts{"SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'm%Q''1' ",
                     "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '1' ",
                     "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE 'm%Q''1'  and OSID LIKE"
                     " 'a''%Q'  and fk_idEntrada LIKE '%s' "}));
}

TEST_F(ServicesExport, NullColumnsGiveEmptyElements) {
    test::addNullRow(device, tarvodb::kConfigDatabase, "ServiciosSalidaGlobal");
    updateConfig("ServiciosSalidaGlobal", "MAC = 'M1'");
    EXPECT_EQ(exported(kService),
              "<service><outputId/><outputSid/><inputId/><inputSid/><inputName/><forcedName/>"
              "<outputName/><lcn/><olcn/><simulcastLcn/><forcedLcn/><idEPG/><serviceTypeDVB/>"
              "<serviceTypeCanal/><videoFormat/><cloned/><decrypt/><transcoding/>"
              "<encrypt>0</encrypt><videoPeakBitrate/><pidOrders/><serviceStatus/></service>");
}

TEST_F(ServicesExport, ANullKeyIsAskedForAsNullOtherNullsAsTheEmptyText) {
    test::addNullRow(device, tarvodb::kConfigDatabase, "ServiciosSalidaGlobal");
    updateConfig("ServiciosSalidaGlobal", "MAC = ''");
    updateConfig("RedesModulos", "MAC = NULL");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables),
              (Texts{"SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE '' ",
                     "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE NULL ",
                     "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE ''  and OSID LIKE ''"
                     "  and fk_idEntrada LIKE '' "}));
}

TEST_F(ServicesExport, ARowWithoutMacBelongsToNoModule) {
    test::addNullRow(device, tarvodb::kConfigDatabase, "ServiciosSalidaGlobal");
    EXPECT_EQ(exported(kServices), "<services/>");
    updateConfig("RedesModulos", "MAC = NULL");
    EXPECT_EQ(exported(kServices), "<services/>");
}

TEST_F(ServicesExport, ColumnsBehindTheKnownOnesAreNotRead) {
    for (const char* table : {"ServiciosSalidaGlobal", "PIDsSalidaGlobal"}) {
        device.execute(tarvodb::kConfigDatabase,
                       std::string("ALTER TABLE ") + table + " ADD COLUMN Nuevo DEFAULT 'new'");
    }
    insertReceivedService("1", "0");
    insertPid("1, 'M1', 1, 2, 3, 4, 5, 6, 'spa', 7, 0");
    insertState("16");
    device.execute(tarvodb::kStateDatabase,
                   "ALTER TABLE ServiciosEntradaGlobal ADD COLUMN Nuevo DEFAULT 'new'");
    becomeModel("WVX-BQ4");
    EXPECT_EQ(exported(kService),
              "<service><outputId/><outputSid/><inputId>1</inputId><inputSid>700</inputSid>"
              "<inputName/><forcedName/><outputName/><lcn/><olcn/><simulcastLcn/><forcedLcn/>"
              "<idEPG/><serviceTypeDVB/><serviceTypeCanal/><videoFormat/><cloned/>"
              "<transcoding>0</transcoding><videoPeakBitrate/><pidOrders><pidOrder>"
              "<languageCode>spa</languageCode><streamId>6</streamId><type>5</type>"
              "<order>4</order></pidOrder></pidOrders><serviceStatus>"
              "<decrytStatus>OK</decrytStatus></serviceStatus></service>");
}

TEST_F(ServicesExport, IsEmptyWithoutItsTable) {
    insertService("1");
    device.failStatements("SELECT * FROM ServiciosSalidaGlobal ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exported(kServices), "<services/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("ServiciosSalidaGlobal"));
    EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));

    device.execute(tarvodb::kConfigDatabase, "DROP TABLE ServiciosSalidaGlobal");
    EXPECT_EQ(exported(kServices), "<services/>");
    EXPECT_TRUE(command().errors().empty());
}

// --- Elementary streams ----------------------------------------------------------------------

TEST_F(ServicesExport, AStreamRowGivesOnePidOrderWithItsColumns) {
    insertService("41");
    insertPid("11, 'M1', 41, 12, 13, 14, 15, 16, 'spa', 17, 0");
    EXPECT_EQ(exported(kService + "/pidOrders"),
              "<pidOrders><pidOrder><languageCode>spa</languageCode><streamId>16</streamId>"
              "<type>15</type><order>14</order></pidOrder></pidOrders>");
}

TEST_F(ServicesExport, StreamsStandInTheOrderReturnedNotInThatOfTheirNumber) {
    insertService("41");
    insertPid("1, '', 41, 0, 0, 3, 0, 101, '', 0, 0");
    insertPid("2, '', 41, 0, 0, 1, 0, 102, '', 0, 0");
    insertPid("3, '', 41, 0, 0, 2, 0, 103, '', 0, 0");
    exportConfiguration();
    EXPECT_EQ(childNames(kService + "/pidOrders"), "pidOrder pidOrder pidOrder");
    EXPECT_EQ(element(kService + "/pidOrders/pidOrder/streamId"), "<streamId>101</streamId>");
    EXPECT_EQ(element(kService + "/pidOrders/pidOrder[2]/streamId"), "<streamId>102</streamId>");
    EXPECT_EQ(element(kService + "/pidOrders/pidOrder[3]/streamId"), "<streamId>103</streamId>");
}

TEST_F(ServicesExport, StreamsAreWrittenWhateverTheirState) {
    insertService("41");
    insertPid("1, 'M1', 41, 0, 0, 0, 0, 101, '', 0, 1");
    insertPid("2, 'M1', 41, 0, 0, 0, 0, 102, '', 3, 0");
    exportConfiguration();
    EXPECT_EQ(childNames(kService + "/pidOrders"), "pidOrder pidOrder");
}

TEST_F(ServicesExport, StreamsBelongToTheirServiceWhateverTheirModule) {
    insertService("41");
    insertService("42");
    insertPid("1, 'M9', 42, 0, 0, 0, 0, 101, '', 0, 0");
    insertPid("2, 'M1', 4, 0, 0, 0, 0, 102, '', 0, 0");
    exportConfiguration();
    EXPECT_EQ(element(kService + "/pidOrders"), "<pidOrders/>");
    EXPECT_EQ(childNames(kService + "[2]/pidOrders"), "pidOrder");
    EXPECT_EQ(element(kService + "[2]/pidOrders/pidOrder/streamId"), "<streamId>101</streamId>");
}

TEST_F(ServicesExport, TheLanguageOfAStreamIsWrittenAsStored) {
    insertService("41");
    insertPid("1, '', 41, 0, 0, 'a', 'b', 'c', ' <q>&5% \xF1', 0, 0");
    EXPECT_EQ(exported(kService + "/pidOrders"),
              "<pidOrders><pidOrder><languageCode> &lt;q&gt;&amp;5% \xF1</languageCode>"
              "<streamId>c</streamId><type>b</type><order>a</order></pidOrder></pidOrders>");
}

TEST_F(ServicesExport, NullColumnsOfAStreamGiveEmptyElements) {
    insertService("41");
    test::addNullRow(device, tarvodb::kConfigDatabase, "PIDsSalidaGlobal");
    EXPECT_EQ(exported(kService + "/pidOrders"), "<pidOrders/>");
    updateConfig("PIDsSalidaGlobal", "fk_idSSG = 41");
    EXPECT_EQ(exported(kService + "/pidOrders"),
              "<pidOrders><pidOrder><languageCode/><streamId/><type/><order/></pidOrder>"
              "</pidOrders>");
}

TEST_F(ServicesExport, PidOrdersIsEmptyWhenTheStreamsCannotBeRead) {
    insertService("41");
    insertPid("1, 'M1', 41, 0, 0, 0, 0, 101, '', 0, 0");
    device.failStatements("SELECT * FROM PIDsSalidaGlobal ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exported(kService + "/pidOrders"), "<pidOrders/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("PIDsSalidaGlobal"));

    device.execute(tarvodb::kConfigDatabase, "DROP TABLE PIDsSalidaGlobal");
    EXPECT_EQ(exported(kService + "/pidOrders"), "<pidOrders/>");
    EXPECT_TRUE(command().errors().empty());
}

// --- Live state ------------------------------------------------------------------------------

TEST_F(ServicesExport, StatusBitsShowTheStateOfWhatIsSwitchedOn) {
    struct StatusCase {
        std::string decrypt, transcoding, bits;
        std::string decryptText, transcodingText;  // empty for no element
    };
    const std::vector<StatusCase> cases = {
        {"1", "0", "0x10", "OK", ""},         {"1", "0", "0x30", "ERROR", ""},
        {"1", "0", "0x20", "", ""},           {"1", "0", "0", "", ""},
        {"1", "0", "0x40", "", ""},           {"1", "0", "0xF0", "ERROR", ""},
        {"0", "1", "0x40", "", "OK"},         {"0", "1", "0xC0", "", "ERROR"},
        {"0", "1", "0x80", "", ""},           {"0", "1", "0x10", "", ""},
        {"0", "1", "0xF0", "", "ERROR"},      {"1", "1", "0x50", "OK", "OK"},
        {"1", "1", "0x70", "ERROR", "OK"},    {"1", "1", "0xD0", "OK", "ERROR"},
        {"1", "1", "0xF0", "ERROR", "ERROR"}, {"1", "1", "0xA0", "", ""},
        {"1", "1", "0x0F0F", "", ""},         {"1", "1", "0xFF0F", "", ""},
        {"1", "1", "0xFF5F", "OK", "OK"},     {"0", "0", "0xF0", "", ""},
        {"2", "2", "0xF0", "", ""},           {"-1", "-1", "0xF0", "", ""},
        {"NULL", "NULL", "0xF0", "", ""},     {"'1x'", "'x1'", "0x50", "OK", ""},
        {"1", "1", "NULL", "", ""},           {"1", "1", "'none'", "", ""},
        {"1", "1", "'16 of 17'", "OK", ""},
    };
    insertReceivedService("0", "0");
    insertState("0");
    for (const StatusCase& each : cases) {
        SCOPED_TRACE(each.decrypt + " " + each.transcoding + " " + each.bits);
        updateConfig("ServiciosSalidaGlobal",
                     "Descifrar = " + each.decrypt + ", Transcoding = " + each.transcoding);
        updateState("ServiciosEntradaGlobal", "BitsEstado = " + each.bits);
        std::string expected;
        if (!each.decryptText.empty()) {
            expected += leaf("decrytStatus", each.decryptText);
        }
        if (!each.transcodingText.empty()) {
            expected += leaf("transcodingStatus", each.transcodingText);
        }
        EXPECT_EQ(exportedStatus(), leaf("serviceStatus", expected));
    }
}

TEST_F(ServicesExport, EveryStateRowAddsItsElements) {
    insertReceivedService("1", "1");
    insertState("240");
    insertState("0");
    insertState("80");
    insertState("64");
    EXPECT_EQ(exportedStatus(),
              "<serviceStatus><decrytStatus>ERROR</decrytStatus>"
              "<transcodingStatus>ERROR</transcodingStatus><decrytStatus>OK</decrytStatus>"
              "<transcodingStatus>OK</transcodingStatus><transcodingStatus>OK</transcodingStatus>"
              "</serviceStatus>");
}

TEST_F(ServicesExport, TheStateIsThatOfTheModulesInputAndItsService) {
    insertReceivedService("1", "1");
    insertState("'M2'", "700", "1", "80");
    insertState("'M1'", "701", "1", "80");
    insertState("'M1'", "700", "2", "80");
    insertState("NULL", "NULL", "NULL", "80");
    EXPECT_EQ(exportedStatus(), "<serviceStatus/>");
    insertState("'m1'", "700", "1", "16");
    EXPECT_EQ(exportedStatus(), "<serviceStatus><decrytStatus>OK</decrytStatus></serviceStatus>");
}

TEST_F(ServicesExport, TheStateDoesNotDependOnTheOutputIdentifier) {
    insertService("1", "SID, OSID, fk_idEntrada, Descifrar", "800, 700, 1, 1");
    insertState("'M1'", "800", "1", "48");
    insertState("'M1'", "700", "1", "16");
    EXPECT_EQ(exportedStatus(), "<serviceStatus><decrytStatus>OK</decrytStatus></serviceStatus>");
}

TEST_F(ServicesExport, AStateTableInTheConfigurationDatabaseIsNotRead) {
    insertReceivedService("1", "0");
    device.execute(tarvodb::kConfigDatabase,
                   "CREATE TABLE ServiciosEntradaGlobal (a, MAC, OSID, fk_idEntrada)");
    insertState("16");
    EXPECT_EQ(exportedStatus(), "<serviceStatus><decrytStatus>OK</decrytStatus></serviceStatus>");
}

TEST_F(ServicesExport, ServiceStatusIsEmptyWhenTheStateCannotBeRead) {
    insertReceivedService("1", "1");
    insertState("80");
    device.failStatements("SELECT * FROM ServiciosEntradaGlobal ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exportedStatus(), "<serviceStatus/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("ServiciosEntradaGlobal"));

    device.execute(tarvodb::kStateDatabase, "DROP TABLE ServiciosEntradaGlobal");
    EXPECT_EQ(exportedStatus(), "<serviceStatus/>");
    EXPECT_TRUE(command().errors().empty());
}

}  // namespace tarvo_remote_control
