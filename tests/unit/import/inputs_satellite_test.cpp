#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/input_rows.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kOutOfRange =
    "Resulting intermediate frequency is out of range. Please check frequency and "
    "diseqc/band/rfLoop values.";

// With oscillators of 9750 MHz for the low band and 10600 MHz for the high one. Both inputs
// receive 11000 MHz of the low band: an intermediate frequency of 1250 MHz.
class ImportedSatelliteInputs : public test::InputImportTest {
  protected:
    ImportedSatelliteInputs() {
        rows("INSERT INTO configuracionWebGlobal VALUES (1, 'LNB_fa', '10600', 1)");
        rows("INSERT INTO configuracionWebGlobal VALUES (2, 'LNB_fb', '9750', 1)");
    }

    static std::string frequency(int frequencyMHz) {
        return "<frequency>" + std::to_string(frequencyMHz) + "</frequency>";
    }

    // Frequency, band, received frequency, DiSEqC and status of an input's tuner.
    test::Row tuner(int input) {
        return stored(
                   "SELECT Frequency, banda_FI, fe, DiSEqC, Estado FROM NimGlobal WHERE "
                   "idNimGlobal = 1" +
                   std::to_string(input))
            .at(0);
    }

    void loopInput2() { rows("UPDATE NimGlobal SET RFIN_LOOP = 1 WHERE idNimGlobal = 12"); }

    void addPosition(int position, const char* band) {
        rows("INSERT INTO DiSEqCGlobal (Nombre, Posicion, Banda) VALUES ('', " +
             std::to_string(position) + ", " + band + ")");
    }

    // The import told of an unreceivable frequency, and was stored all the same.
    void expectOutOfRange() {
        EXPECT_THAT(errors(), ElementsAre("401 Invalid module input: " + std::string(kOutOfRange)));
        EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Error 401, " + std::string(kOutOfRange)));
        EXPECT_EQ(test::last(device.statements()), "COMMIT");
        EXPECT_EQ(result(), "0");
    }

    static std::string selectOscillator(const char* key) {
        return "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE '" + std::string(key) +
               "' ";
    }
};

// --- The intermediate frequency --------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, TheIntermediateFrequencyIsTheReceivedOneLessTheOscillator) {
    importInputs(input(1, 0, frequency(11500)));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  Frequency = '1750' , fe = '11500' , Estado = "
                            "'1'  WHERE idNimGlobal = '11'"));
}

TEST_F(ImportedSatelliteInputs, AnIntermediateFrequencyThatStaysIsNotWritten) {
    rows("UPDATE NimGlobal SET fe = 0");
    importInputs(input(1, 0, frequency(11000)));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  fe = '11000' , Estado = '1'  WHERE idNimGlobal "
                            "= '11'"));
}

TEST_F(ImportedSatelliteInputs, TheHighBandHasAnOscillatorOfItsOwn) {
    importInputs(input(1, 0, frequency(12000) + "<band>high</band>"));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("1400", "1", "12000", "0", "1"));
    EXPECT_THAT(device.statements(), Contains(selectOscillator("LNB_fa")));
    EXPECT_THAT(device.statements(), Not(Contains(selectOscillator("LNB_fb"))));
}

TEST_F(ImportedSatelliteInputs, BothBoundsOfTheIntermediateRangeAreReceived) {
    importInputs(input(1, 0, frequency(9750 + 950)));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("950", "0", "10700", "0", "1"));
    importInputs(input(1, 0, frequency(9750 + 2150)));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("2150", "0", "11900", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, OneMegahertzBeyondTheIntermediateRangeIsNotReceived) {
    for (const int beyond : {9750 + 949, 9750 + 2151}) {
        SCOPED_TRACE(beyond);
        importInputs(input(1, 0, frequency(beyond)));
        expectOutOfRange();
        EXPECT_THAT(writes(), IsEmpty());
        EXPECT_THAT(tuner(1), ElementsAre("1250", "0", "11000", "0", "0"));
    }
}

TEST_F(ImportedSatelliteInputs, AnEmptyFrequencyCountsAsGiven) {
    importInputs(input(1, 0, "<frequency/>"));
    expectOutOfRange();
}

TEST_F(ImportedSatelliteInputs, AFrequencyThatStaysIsNotChecked) {
    rows("UPDATE NimGlobal SET fe = 99000");
    importInputs(input(1, 0, frequency(99000)));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(device.statements(), Not(Contains(selectOscillator("LNB_fb"))));
}

TEST_F(ImportedSatelliteInputs, AFrequencyThatStaysIsCheckedWhenAnotherSettingChanges) {
    importInputs(input(1, 0, frequency(11000) + "<band>high</band>"));  // 400 MHz
    expectOutOfRange();
}

TEST_F(ImportedSatelliteInputs, WithoutAFrequencyTheReceivedOneFollowsTheOscillator) {
    importInputs(input(1, 0, "<band>high</band>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  banda_FI = '1' , fe = '11850' , Estado = '1'  "
                            "WHERE idNimGlobal = '11'"));
}

TEST_F(ImportedSatelliteInputs, WithoutAFrequencyNothingIsOutOfRange) {
    rows("UPDATE NimGlobal SET Frequency = 5000");
    importInputs(input(1, 0, "<streamID>4</streamID>"));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("5000", "0", "14750", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, WithoutAnOscillatorSettingTheFrequenciesStayAsTheyAre) {
    rows("DELETE FROM configuracionWebGlobal");
    importInputs(input(1, 0, frequency(99000)) + input(2, 0, "<band>high</band>"));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("1250", "0", "99000", "0", "1"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "1", "11000", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, AnOscillatorThatIsNotANumberIsZero) {
    rows("UPDATE configuracionWebGlobal SET valor = 'none' WHERE nombre = 'LNB_fb'");
    rows("UPDATE configuracionWebGlobal SET valor = NULL WHERE nombre = 'LNB_fa'");
    importInputs(input(1, 0, frequency(1000)) + input(2, 0, "<band>high</band>"));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("1000", "0", "1000", "0", "1"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "1", "1250", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, TheOscillatorKeyIsFoundWithoutLetterCase) {
    rows("UPDATE configuracionWebGlobal SET nombre = 'lnb_FB' WHERE nombre = 'LNB_fb'");
    importInputs(input(1, 0, frequency(11500)));
    EXPECT_THAT(tuner(1), ElementsAre("1750", "0", "11500", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, AnOscillatorOfTheSameImportCounts) {
    importConfiguration("<lnb><oscLowFreq>10000</oscLowFreq></lnb><modules>" +
                        moduleElement("<inputs>" + input(1, 0, frequency(11500)) + "</inputs>") +
                        "</modules>");
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("1500", "0", "11500", "0", "1"));
}

TEST_F(ImportedSatelliteInputs, ASatelliteTunerChangedOnAnotherTypeOfInputFollowsTheOscillator) {
    storeType(1);
    rows("UPDATE NimGlobal SET fe = 0");
    importInputs(input(1, 1, "<active>0</active>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT fe, STANDBY FROM NimGlobal WHERE idNimGlobal = 11"),
                ElementsAre(ElementsAre("11000", "1")));
}

TEST_F(ImportedSatelliteInputs, AFrequencyOfAnotherTypeOfInputChecksTheSatelliteTunersOwn) {
    storeType(1);
    rows("UPDATE NimGlobal SET fe = 0");
    importInputs(input(1, 1, "<active>0</active>" + frequency(506000)));
    expectOutOfRange();
    EXPECT_THAT(writes(), ElementsAre("UPDATE EntradasGlobal SET  Activo = '0' , Estado = '1'  "
                                      "WHERE idEntradasGlobal = '1'"));
}

TEST_F(ImportedSatelliteInputs, AFrequencyThatNoNumberCanHoldIsOutOfRange) {
    for (const char* huge : {"2147483647", "-2147483648", "99999999999999999999"}) {
        SCOPED_TRACE(huge);
        importInputs(input(1, 0, "<frequency>" + std::string(huge) + "</frequency>"));
        expectOutOfRange();
    }
}

// --- A frequency out of range ----------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, AFrequencyOutOfRangeEndsTheSectionAndTheImportIsStored) {
    importInputs(input(1, 0, "<tsid>5</tsid><active>0</active>" + frequency(12000)) +
                 input(2, 0, "<tsid>6</tsid>") + "<other/>");
    expectOutOfRange();
    EXPECT_THAT(writes(), ElementsAre("UPDATE EntradasGlobal SET  TSID = '5' , Activo = '0' , "
                                      "Estado = '1'  WHERE idEntradasGlobal = '1'"));
    EXPECT_THAT(stored("SELECT TSID, Activo FROM EntradasGlobal"),
                ElementsAre(ElementsAre("5", "0"), ElementsAre("1", "1")));
    EXPECT_THAT(changeLines(), ElementsAre(inputLine(" type: 0 tsid: 5STANDBY: 1 frequency: 12000"),
                                           "61: REMOTE_CONTROL::: New Module parameters: "));
}

TEST_F(ImportedSatelliteInputs, AFrequencyOutOfRangeDoesNotEndTheModule) {
    importModule("<inputs>" + input(1, 0, frequency(12000)) +
                 "</inputs><attenuation>9</attenuation>");
    expectOutOfRange();
    EXPECT_THAT(stored("SELECT Atenuacion FROM RedesModulos"), ElementsAre(ElementsAre("9")));
}

TEST_F(ImportedSatelliteInputs, AFrequencyOutOfRangeDoesNotEndTheConfiguration) {
    importConfiguration("<modules>" +
                        moduleElement("<inputs>" + input(1, 0, frequency(12000)) + "</inputs>") +
                        "</modules><network><ip>10.0.0.2</ip></network>");
    expectOutOfRange();
    EXPECT_THAT(stored("SELECT valor FROM configuracionWebGlobal WHERE nombre = 'network_IP'"),
                ElementsAre(ElementsAre("10.0.0.2")));
    EXPECT_THAT(device.shellCommands(), ElementsAre("/tarvo/script/WAN_from_DB.sh"));
}

TEST_F(ImportedSatelliteInputs, AFrequencyOutOfRangeIsInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importInputs(input(1, 0, frequency(12000)));
    EXPECT_THAT(device.logLines(), Contains("3: Error 401, " + std::string(kOutOfRange)));
}

TEST_F(ImportedSatelliteInputs, AFailedUpdateOfTheInputFailsASectionThatIsOutOfRange) {
    device.failStatements("UPDATE EntradasGlobal", 3, 5, "locked");
    importInputs(input(1, 0, "<tsid>5</tsid>" + frequency(12000)));
    expectFailures({{102, "Could not update eg"}, {401, kOutOfRange}});
}

// --- The DiSEqC positions --------------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, TheBandOfTheDiseqcPositionReplacesTheGivenOne) {
    addPosition(3, "1");
    importInputs(input(1, 0, "<diseqc>3</diseqc><band>low</band>" + frequency(12000)));
    expectSuccess();
    EXPECT_THAT(tuner(1), ElementsAre("1400", "1", "12000", "3", "1"));
}

TEST_F(ImportedSatelliteInputs, ADiseqcPositionCountsAlsoWhenAnotherSettingChanges) {
    addPosition(0, "1");
    importInputs(input(1, 0, "<streamID>4</streamID>"));
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  banda_FI = '1' , fe = '11850' , StreamID = '4' "
                            ", Estado = '1'  WHERE idNimGlobal = '11'"));
}

TEST_F(ImportedSatelliteInputs, TheFirstOfSeveralEqualDiseqcPositionsCounts) {
    addPosition(3, "1");
    addPosition(3, "0");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(tuner(1), ElementsAre("1250", "1", "11850", "3", "1"));
}

TEST_F(ImportedSatelliteInputs, WithoutADiseqcPositionTheBandStays) {
    addPosition(4, "1");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(tuner(1), ElementsAre("1250", "0", "11000", "3", "1"));
}

// --- The loop through input 1 ----------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, ALoopedInput2TakesDiseqcAndBandOfInput1) {
    rows("UPDATE NimGlobal SET DiSEqC = 3, banda_FI = 1 WHERE idNimGlobal = 11");
    importInputs(
        input(2, 0, "<rfLoop>1</rfLoop><diseqc>7</diseqc><band>low</band>" + frequency(12000)));
    expectSuccess();
    EXPECT_THAT(
        partStatements(),
        ElementsAre(selectInputs(), selectTuner("NimGlobal", 2), selectTuner("NimCOFDMGlobal", 2),
                    selectTuner("NimQAMGlobal", 2), selectTuner("NimGlobal", 1),
                    "SELECT * FROM DiSEqCGlobal  WHERE Posicion LIKE '3'",
                    selectOscillator("LNB_fa"),
                    "UPDATE NimGlobal SET  Frequency = '1400' , banda_FI = '1' , fe = "
                    "'12000' , DiSEqC = '3' , RFIN_LOOP = '1' , Estado = '1'  WHERE "
                    "idNimGlobal = '12'"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2TakesWhatTheSameDocumentStoredForInput1) {
    loopInput2();
    addPosition(3, "1");
    importInputs(input(1, 0, "<diseqc>3</diseqc>") + input(2, 0, "<streamID>4</streamID>"));
    expectSuccess();
    EXPECT_THAT(tuner(2), ElementsAre("1250", "1", "11850", "3", "1"));
}

TEST_F(ImportedSatelliteInputs, AnInput2OfItsOwnCableIsNotTouchedByInput1) {
    rows("UPDATE NimGlobal SET DiSEqC = 3, banda_FI = 1 WHERE idNimGlobal = 11");
    importInputs(input(2, 0, "<diseqc>7</diseqc>"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "7", "1"));
    EXPECT_THAT(device.statements(), Not(Contains(selectTuner("NimGlobal", 1))));
}

TEST_F(ImportedSatelliteInputs, Input1IsNotFedByItself) {
    rows("UPDATE NimGlobal SET RFIN_LOOP = 1 WHERE idNimGlobal = 11");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(tuner(1), ElementsAre("1250", "0", "11000", "3", "1"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2WithoutInput1KeepsItsOwn) {
    loopInput2();
    rows("DELETE FROM EntradasGlobal WHERE fk_idEntrada = 1");
    importInputs(input(2, 0, "<diseqc>7</diseqc>"));
    expectSuccess();
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "7", "1"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2WithoutATunerAtInput1KeepsItsOwn) {
    loopInput2();
    rows("DELETE FROM NimGlobal WHERE idNimGlobal = 11");
    importInputs(input(2, 0, "<diseqc>7</diseqc>"));
    expectSuccess();
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "7", "1"));
}

// --- After the inputs ------------------------------------------------------------------------

constexpr const char* kSecondFollows =
    "UPDATE NimGlobal SET  DiSEqC = '3' , Estado = '1'  WHERE idNimGlobal = '12'";
constexpr const char* kCheckLine = "7: input 1 changed, need to check input 2";

TEST_F(ImportedSatelliteInputs, ALoopedInput2ThatTheDocumentLeavesOutFollowsInput1) {
    loopInput2();
    addPosition(3, "1");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  banda_FI = '1' , fe = '11850' , DiSEqC = '3' , "
                            "Estado = '1'  WHERE idNimGlobal = '11'",
                            "UPDATE NimGlobal SET  banda_FI = '1' , DiSEqC = '3' , Estado = '1'  "
                            "WHERE idNimGlobal = '12'"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2BeforeInput1InTheDocumentFollowsItToo) {
    loopInput2();
    importInputs(input(2, 0, "<streamID>4</streamID>") + input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "3", "1"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2ThatAgreesIsNotWritten) {
    loopInput2();
    importInputs(input(1, 0, frequency(11500)));
    EXPECT_EQ(writes().size(), 1U);
}

TEST_F(ImportedSatelliteInputs, AnInput2OfItsOwnCableDoesNotFollow) {
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(writes(), Not(Contains(kSecondFollows)));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "0", "0"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2IsLeftAloneWhenOnlyItChanged) {
    loopInput2();
    rows("UPDATE NimGlobal SET DiSEqC = 3 WHERE idNimGlobal = 11");
    importInputs(input(2, 0, "<tsid>5</tsid>"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "0", "0"));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2IsLeftAloneWhenInput1sTunerStays) {
    loopInput2();
    rows("UPDATE NimGlobal SET DiSEqC = 3 WHERE idNimGlobal = 11");
    importInputs(input(1, 0, "<tsid>5</tsid>"));
    EXPECT_THAT(tuner(2), ElementsAre("1250", "0", "11000", "0", "0"));
}

TEST_F(ImportedSatelliteInputs, OnlyTheInputsBeforeTheFirstOtherTypeAreLookedAt) {
    loopInput2();
    rows("UPDATE EntradasGlobal SET tipoEntrada = 1 WHERE fk_idEntrada = 2");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(writes(), Not(Contains(kSecondFollows)));

    // A row of another type in front hides both.
    rows("UPDATE EntradasGlobal SET tipoEntrada = 0");
    rows("INSERT INTO EntradasGlobal VALUES (0, '02:00:00:00:00:11', 2, 1, 2, 1, NULL, 5, 0)");
    importInputs(input(1, 0, "<streamID>4</streamID>"));
    EXPECT_THAT(writes(), Not(Contains(kSecondFollows)));
}

TEST_F(ImportedSatelliteInputs, AnInputBesidesTheTwoDoesNotFollow) {
    loopInput2();
    rows("UPDATE EntradasGlobal SET fk_idEntrada = 3 WHERE fk_idEntrada = 2");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    expectSuccess();
    EXPECT_THAT(writes(), Not(Contains(kSecondFollows)));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2FollowsAlsoAfterAFrequencyOutOfRange) {
    loopInput2();
    importInputs(input(1, 0, "<diseqc>3</diseqc>") + input(2, 0, frequency(12000)));
    expectOutOfRange();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE NimGlobal SET  DiSEqC = '3' , Estado = '1'  WHERE idNimGlobal "
                            "= '11'",
                            kSecondFollows));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2FollowsWhatIsStoredWhenInput1IsOutOfRange) {
    loopInput2();
    rows("UPDATE NimGlobal SET DiSEqC = 3 WHERE idNimGlobal = 11");
    importInputs(input(1, 0, "<diseqc>4</diseqc>" + frequency(12000)));
    expectOutOfRange();
    EXPECT_THAT(writes(), ElementsAre(kSecondFollows));
}

TEST_F(ImportedSatelliteInputs, ALoopedInput2DoesNotFollowInAFailedSection) {
    loopInput2();
    device.failStatements("UPDATE EntradasGlobal", 3, 5, "locked");
    importInputs(input(1, 0, "<tsid>5</tsid><diseqc>4</diseqc>" + frequency(12000)));
    expectFailures({{102, "Could not update eg"}, {401, kOutOfRange}});
    EXPECT_THAT(device.statements(), Not(Contains(kSecondFollows)));
}

TEST_F(ImportedSatelliteInputs, TheCheckOfInput2IsInTheDebugLogAlone) {
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(device.logLines(), Not(Contains(kCheckLine)));
    platform::debugMask = 0x10;
    importInputs(input(1, 0, "<diseqc>4</diseqc>"));
    EXPECT_THAT(device.logLines(), Contains(kCheckLine));
    importInputs(input(2, 0, "<diseqc>5</diseqc>"));
    EXPECT_THAT(device.logLines(), Not(Contains(kCheckLine)));
}

// --- Updates that fail -----------------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, AFailedUpdateOfTheTunerStillWritesTheOthers) {
    device.failStatements("UPDATE NimGlobal", 3, 5, "locked");
    importInputs(input(1, 0, "<active>0</active>"));
    expectFailure(102, "Could not update nim");
    EXPECT_THAT(writes(), Contains("UPDATE NimCOFDMGlobal SET  STANDBY = '1' , Estado = '1'  "
                                   "WHERE idNimCOFDMGlobal = '21'"));
    EXPECT_THAT(writes(), Contains("UPDATE NimQAMGlobal SET  STANDBY = '1' , Estado = '1'  "
                                   "WHERE idNimQAMGlobal = '31'"));
}

TEST_F(ImportedSatelliteInputs, AFailedUpdateOfALoopedInput2IsReported) {
    loopInput2();
    device.failStatements(kSecondFollows, 3, 5, "locked");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    expectFailure(102, "Could not update nim2");
    EXPECT_THAT(tuner(1), ElementsAre("1250", "0", "11000", "0", "0"));
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedSatelliteInputs, StatementsComeInTheirOrder) {
    loopInput2();
    importInputs(input(2, 0, frequency(11500)) +
                 input(1, 0, frequency(11600) + "<onid>9</onid><diseqc>3</diseqc>"));
    expectSuccess();
    EXPECT_THAT(
        partStatements(),
        ElementsAre(
            selectInputs(), selectTuner("NimGlobal", 2), selectTuner("NimCOFDMGlobal", 2),
            selectTuner("NimQAMGlobal", 2), selectTuner("NimGlobal", 1),
            "SELECT * FROM DiSEqCGlobal  WHERE Posicion LIKE '0'", selectOscillator("LNB_fb"),
            "UPDATE NimGlobal SET  Frequency = '1750' , fe = '11500' , Estado = '1'  "
            "WHERE idNimGlobal = '12'",
            selectTuner("NimGlobal", 1), selectTuner("NimCOFDMGlobal", 1),
            selectTuner("NimQAMGlobal", 1),
            "UPDATE EntradasGlobal SET  ONID = '9' , Estado = '1'  WHERE "
            "idEntradasGlobal = '1'",
            "SELECT * FROM DiSEqCGlobal  WHERE Posicion LIKE '3'", selectOscillator("LNB_fb"),
            "UPDATE NimGlobal SET  Frequency = '1850' , fe = '11600' , DiSEqC = '3' , "
            "Estado = '1'  WHERE idNimGlobal = '11'",
            selectTuner("NimGlobal", 1), selectTuner("NimGlobal", 2),
            "UPDATE NimGlobal SET  DiSEqC = '3'  WHERE idNimGlobal = '12'"));
}

}  // namespace
