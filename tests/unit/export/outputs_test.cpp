#include <sqlite3.h>

#include <map>
#include <utility>

#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using Cases = std::vector<test::CodeCase>;

const Cases kConstellationDvbT = {{"0", "QPSK"}, {"1", "16 QAM"}, {"2", "64 QAM"},
                                  {"3", ""},     {"-1", ""},      {"NULL", "QPSK"}};
const Cases kConstellationDvbC = {{"0", "16 QAM"},  {"1", "32 QAM"},   {"2", "64 QAM"},
                                  {"3", "128 QAM"}, {"4", "256 QAM"},  {"5", ""},
                                  {"-1", ""},       {"NULL", "16 QAM"}};

// One module, M1, whose output row 21 is its output number 1.
class ExportedOutputs : public test::ExportTest {
  protected:
    ExportedOutputs() {
        insertConfig("RedesModulos", "MAC, Familia, Modelo, ModoSalidaRF", "'M1', 1, 1, 0");
    }

    void insertOutput(int rowId = 21, int number = 1, const std::string& mac = "M1") {
        insertConfig("SalidasLogicasGlobal", "idSalidasLogicasGlobal, MAC, fk_idSalidasLogicas",
                     std::to_string(rowId) + ", '" + mac + "', " + std::to_string(number));
    }

    // An RF row of output row 21.
    void insertRf(const std::string& columns = "MAC", const std::string& values = "'M1'") {
        insertConfig("RFOutGlobal", "fk_idSalidasLogicasGlobal, " + columns, "21, " + values);
    }

    [[nodiscard]] std::string leaf(const std::string& name) const {
        return element("modules/module/outputs/output/" + name);
    }
    std::string exportedOutputs() { return exported("modules/module/outputs"); }
    std::string exportedNames() {
        exportConfiguration();
        return childNames("modules/module/outputs/output");
    }

    // The texts of a column of the RF row.
    void expectTexts(const std::string& column, const std::string& name, const Cases& cases) {
        ExportTest::expectTexts("RFOutGlobal", column, "modules/module/outputs/output/" + name,
                                cases);
    }
};

}  // namespace

TEST_F(ExportedOutputs, ShowWhatIsStored) {
    insertConfig("SalidasLogicasGlobal",
                 "idSalidasLogicasGlobal, MAC, TSID_Out, ONID_Out, tipoSalida, Activo,"
                 " fk_idSalidasLogicas, num_check_solapamientos, Estado",
                 "21, 'M1', 103, 104, 105, 106, 107, 108, 109");
    insertConfig("RFOutGlobal",
                 "idRFOutGlobal, MAC, Frecuencia, Symbol_Rate, Ancho_Banda, Modo_OFDM,"
                 " Intervalo_Guarda, Constelacion, Code_Rate, Espectro_Salida,"
                 " Modo_Salida_Modulacion, fk_idSalidasLogicasGlobal, fk_idRFOut, Estado",
                 "201, 'M1', 203, 204, 1, 1, 2, 2, 3, 1, 211, 21, 213, 214");
    EXPECT_EQ(exportedOutputs(),
              "<outputs><output><outputId>107</outputId><type>105</type><onid>104</onid>"
              "<tsid>103</tsid><active>1</active><frequency>203</frequency>"
              "<symbolRate>204</symbolRate><modeOFDM>8K</modeOFDM><bandwidth>7 MHz</bandwidth>"
              "<guardInterval>1/8</guardInterval><constellation>64 QAM</constellation>"
              "<codeRate>5/6</codeRate><formatIQ>Reversed</formatIQ></output></outputs>");
}

TEST_F(ExportedOutputs, HaveTheChildrenOfTheModelInTheirOrder) {
    insertOutput();
    insertRf();
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(exportedNames(),
                  model == "RNB-K408"
                      ? "outputId onid tsid active frequency bandwidth guardInterval constellation "
                        "codeRate formatIQ"
                      : "outputId type onid tsid active frequency symbolRate modeOFDM bandwidth "
                        "guardInterval constellation codeRate formatIQ");
    }
}

TEST_F(ExportedOutputs, EndAfterTheirIdentityWithoutAnRfRow) {
    insertOutput();
    insertConfig("RFOutGlobal", "fk_idSalidasLogicasGlobal", "1");
    EXPECT_EQ(exportedNames(), "outputId type onid tsid");
    becomeModel("RNB-K408");
    EXPECT_EQ(exportedNames(), "outputId onid tsid");
}

TEST_F(ExportedOutputs, ShowSeveralRfRowsOneAfterTheOther) {
    insertOutput();
    insertRf("Frecuencia", "700");
    insertConfig("RFOutGlobal", "fk_idSalidasLogicasGlobal, Frecuencia", "22, 999");
    insertRf("Frecuencia", "600");
    const std::string rfNames =
        " active frequency symbolRate modeOFDM bandwidth guardInterval constellation codeRate "
        "formatIQ";
    EXPECT_EQ(exportedNames(), "outputId type onid tsid" + rfNames + rfNames);
    EXPECT_EQ(leaf("frequency[1]"), "<frequency>700</frequency>");
    EXPECT_EQ(leaf("frequency[2]"), "<frequency>600</frequency>");
}

TEST_F(ExportedOutputs, AreThoseOfTheModuleInTheOrderOfTheTable) {
    insertOutput(22, 2);
    insertOutput(23, 3, "M2");
    insertOutput(24, 1);
    exportConfiguration();
    EXPECT_EQ(childNames("modules/module/outputs"), "output output");
    EXPECT_EQ(element("modules/module/outputs/output[1]/outputId"), "<outputId>2</outputId>");
    EXPECT_EQ(element("modules/module/outputs/output[2]/outputId"), "<outputId>1</outputId>");
}

TEST_F(ExportedOutputs, AreAnEmptySectionWithoutRows) {
    EXPECT_EQ(exportedOutputs(), "<outputs/>");
}

TEST_F(ExportedOutputs, HaveEmptyElementsForNullColumns) {
    insertConfig("SalidasLogicasGlobal", "idSalidasLogicasGlobal, MAC", "21, 'M1'");
    insertConfig("RFOutGlobal", "fk_idSalidasLogicasGlobal", "21");
    EXPECT_EQ(exportedOutputs(),
              "<outputs><output><outputId/><type/><onid/><tsid/><active>0</active><frequency/>"
              "<symbolRate/><modeOFDM>2K</modeOFDM><bandwidth>8 MHz</bandwidth>"
              "<guardInterval>1/32</guardInterval><constellation>QPSK</constellation>"
              "<codeRate>1/2</codeRate><formatIQ>Normal</formatIQ></output></outputs>");
}

TEST_F(ExportedOutputs, ShowNumbersAsTheyAreStored) {
    insertOutput();
    insertRf("Frecuencia, Symbol_Rate", "'474 & up', ''");
    updateConfig("SalidasLogicasGlobal", "tipoSalida = 'dvb', ONID_Out = -1");
    exportConfiguration();
    EXPECT_EQ(leaf("type"), "<type>dvb</type>");
    EXPECT_EQ(leaf("onid"), "<onid>-1</onid>");
    EXPECT_EQ(leaf("frequency"), "<frequency>474 &amp; up</frequency>");
    EXPECT_EQ(leaf("symbolRate"), "<symbolRate/>");
}

TEST_F(ExportedOutputs, AreActiveWithAnyModulationMode) {
    insertOutput();
    insertRf();
    expectTexts("Modo_Salida_Modulacion", "active",
                {{"-1", "0"}, {"0", "0"}, {"1", "1"}, {"2", "1"}, {"NULL", "0"}, {"'on'", "0"}});
}

TEST_F(ExportedOutputs, AreNotActiveByTheirLogicalRow) {
    insertOutput();
    updateConfig("SalidasLogicasGlobal", "Activo = 1");
    insertRf("Modo_Salida_Modulacion", "0");
    exportConfiguration();
    EXPECT_EQ(leaf("active"), "<active>0</active>");
}

TEST_F(ExportedOutputs, NameTheOfdmMode) {
    insertOutput();
    insertRf();
    expectTexts("Modo_OFDM", "modeOFDM",
                {{"0", "2K"}, {"1", "8K"}, {"2", ""}, {"-1", ""}, {"NULL", "2K"}});
}

TEST_F(ExportedOutputs, NameTheBandwidthCountingDown) {
    insertOutput();
    insertRf();
    expectTexts("Ancho_Banda", "bandwidth",
                {{"0", "8 MHz"},
                 {"1", "7 MHz"},
                 {"2", "6 MHz"},
                 {"3", ""},
                 {"-1", ""},
                 {"NULL", "8 MHz"},
                 {"'wide'", "8 MHz"}});
}

TEST_F(ExportedOutputs, NameTheGuardInterval) {
    insertOutput();
    insertRf();
    expectTexts("Intervalo_Guarda", "guardInterval",
                {{"0", "1/32"},
                 {"1", "1/16"},
                 {"2", "1/8"},
                 {"3", "1/4"},
                 {"4", ""},
                 {"-1", ""},
                 {"NULL", "1/32"}});
}

TEST_F(ExportedOutputs, NameTheConstellationByTheRfModeOfTheModule) {
    insertOutput();
    insertRf();
    const std::map<std::string, Cases> textsOfMode = {
        {"0", kConstellationDvbT},  {"NULL", kConstellationDvbT}, {"'x'", kConstellationDvbT},
        {"1", kConstellationDvbC},  {"2", kConstellationDvbC},    {"-1", kConstellationDvbC},
        {"17", kConstellationDvbC},
    };
    for (const auto& [mode, texts] : textsOfMode) {
        SCOPED_TRACE("mode " + mode);
        updateConfig("RedesModulos", "ModoSalidaRF = " + mode);
        expectTexts("Constelacion", "constellation", texts);
    }
}

TEST_F(ExportedOutputs, NameTheConstellationByTheRfModeOfTheModuleOnAnRnb) {
    becomeModel("RNB-K408");
    insertOutput();
    insertRf("Constelacion", "1");
    exportConfiguration();
    EXPECT_EQ(leaf("constellation"), "<constellation>16 QAM</constellation>");
    updateConfig("RedesModulos", "ModoSalidaRF = 1");
    exportConfiguration();
    EXPECT_EQ(leaf("constellation"), "<constellation>32 QAM</constellation>");
}

TEST_F(ExportedOutputs, NameTheCodeRate) {
    insertOutput();
    insertRf();
    expectTexts("Code_Rate", "codeRate",
                {{"0", "1/2"},
                 {"1", "2/3"},
                 {"2", "3/4"},
                 {"3", "5/6"},
                 {"4", "7/8"},
                 {"5", ""},
                 {"-1", ""},
                 {"NULL", "1/2"}});
}

TEST_F(ExportedOutputs, NameTheSpectrum) {
    insertOutput();
    insertRf();
    expectTexts("Espectro_Salida", "formatIQ",
                {{"0", "Normal"}, {"1", "Reversed"}, {"2", ""}, {"-1", ""}, {"NULL", "Normal"}});
}

TEST_F(ExportedOutputs, AreAnEmptySectionWhenTheirSelectFails) {
    insertOutput();
    device.failStatements("SELECT * FROM SalidasLogicasGlobal", 3, SQLITE_BUSY);
    EXPECT_EQ(exportedOutputs(), "<outputs/>");
    EXPECT_TRUE(command().errors().empty());
}

TEST_F(ExportedOutputs, EndAfterTheirIdentityWhenTheSelectOfTheRfRowsFails) {
    insertOutput(21, 1);
    insertOutput(22, 2);
    insertRf();
    insertConfig("RFOutGlobal", "fk_idSalidasLogicasGlobal, Frecuencia", "22, 600");
    device.failStatements("SELECT * FROM RFOutGlobal", 3, SQLITE_BUSY);
    EXPECT_EQ(exportedNames(), "outputId type onid tsid");
    EXPECT_EQ(element("modules/module/outputs/output[2]/frequency"), "<frequency>600</frequency>");
    EXPECT_TRUE(command().errors().empty());
}

}  // namespace tarvo_remote_control
