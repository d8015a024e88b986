#include "device/device_identity.h"

#include "db/database.h"
#include "platform/debug_log.h"
#include "support/fake_device.h"

namespace tarvo_remote_control {

namespace {

using Lines = std::vector<std::string>;

const Lines kSettingsSelects = {
    "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'servidorZEN%' ",
    "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'identificacion_contrato' ",
};

class IdentityOfDevice : public test::DeviceTest {
  protected:
    IdentityOfDevice() {
        device.commandLines["/tarvo/script/SERIAL"] = {"A123\n", "OK\n"};
        device.commandLines["/tarvo/script/MAC"] = {"02:00:00:00:00:01\n", "OK\n"};
        device.commandLines["/tarvo/script/MODELO"] = {"QRA-310\n", "OK\n"};
        device.commandLines["hostname"] = {"headend\n"};
    }

    static DeviceIdentity& identity() { return DeviceIdentity::instance(); }

    void prints(const std::string& script, const Lines& lines) {
        device.commandLines[script] = lines;
    }

    // `value` is an SQL literal.
    void addSetting(const std::string& name, const std::string& value) {
        device.execute(
            tarvodb::kConfigDatabase,
            "INSERT INTO configuracionWebGlobal (nombre, valor, aplicarBackup) VALUES ('" + name +
                "', " + value + ", 0)");
    }
    void changeSetting(const std::string& name, const std::string& value) {
        device.execute(tarvodb::kConfigDatabase, "UPDATE configuracionWebGlobal SET valor = " +
                                                     value + " WHERE nombre = '" + name + "'");
    }

    // Loads an identity that fails, and returns why.
    static std::string loadError() {
        try {
            identity().load();
        } catch (const ReadConfigError& error) {
            return error.what();
        }
        return "";
    }
};

}  // namespace

TEST_F(IdentityOfDevice, IsEmptyBeforeItIsLoaded) {
    EXPECT_FALSE(identity().isRemoteControlActive());
    EXPECT_EQ(identity().getRemoteControlInterval(), 1);
    EXPECT_EQ(identity().getRemoteControlAddress(), "");
    EXPECT_EQ(identity().getRemoteControlUser(), "");
    EXPECT_EQ(identity().getRemoteControlPassword(), "");
    EXPECT_EQ(identity().getSerialNumber(), "");
    EXPECT_EQ(identity().getMac(), "");
    EXPECT_EQ(identity().getHostName(), "");
    EXPECT_EQ(identity().getModel(), "");
    EXPECT_EQ(identity().getContractId(), "");
    EXPECT_FALSE(identity().getSpareFlag());
    EXPECT_EQ(identity().getSpareText(), "");
    EXPECT_TRUE(device.events().empty());
}

TEST_F(IdentityOfDevice, ExistsOnceUntilItIsDestroyed) {
    DeviceIdentity& first = identity();
    first.setSpareText("kept");
    EXPECT_EQ(&identity(), &first);
    DeviceIdentity::destroyInstance();
    EXPECT_EQ(identity().getSpareText(), "");
}

TEST_F(IdentityOfDevice, KeepsTheTwoSpareValues) {
    identity().setSpareFlag(true);
    identity().setSpareText("spare");
    EXPECT_TRUE(identity().getSpareFlag());
    EXPECT_EQ(identity().getSpareText(), "spare");
}

TEST_F(IdentityOfDevice, IsReadFromTheScriptsAndThenFromTheDatabase) {
    EXPECT_TRUE(identity().load());
    EXPECT_EQ(device.events(),
              (Lines{"read: /tarvo/script/SERIAL", "read: /tarvo/script/MAC",
                     "read: /tarvo/script/MODELO", "read: hostname",
                     "open: /tarvo/DB/config_global.sqlite", "sql: " + kSettingsSelects[0],
                     "sql: " + kSettingsSelects[1], "close: /tarvo/DB/config_global.sqlite"}));
    EXPECT_EQ(identity().getSerialNumber(), "A123");
    EXPECT_EQ(identity().getMac(), "02:00:00:00:00:01");
    EXPECT_EQ(identity().getModel(), "QRA-310");
    EXPECT_EQ(identity().getHostName(), "headend");
    EXPECT_EQ(identity().getContractId(), "");
}

TEST_F(IdentityOfDevice, ReadsTheFirstLineOfAScriptWhoseSecondLineIsOk) {
    prints("/tarvo/script/SERIAL", {" A 123 \t\r\n", "OK \t\r\n", "more\n"});
    identity().load();
    EXPECT_EQ(identity().getSerialNumber(), " A 123");
}

TEST_F(IdentityOfDevice, RefusesAScriptThatIsNotOk) {
    const std::pair<const char*, const char*> scripts[] = {
        {"/tarvo/script/SERIAL", "Could not read Serial Number"},
        {"/tarvo/script/MAC", "Could not read MAC"},
        {"/tarvo/script/MODELO", "Could not read model"},
    };
    const Lines refused[] = {
        {},
        {"A123\n"},
        {"A123\n", "ERROR\n"},
        {"A123\n", "ok\n"},
        {"A123\n", " OK\n"},
        {"A123\n", "OKAY\n"},
        {"A123\n", "\n", "OK\n"},
        {"\n", "OK\n"},
        {" \t\r\n", "OK\n"},
        // A line longer than 127 characters arrives in pieces.
        {std::string(127, 'A'), "A\n", "OK\n"},
    };
    for (const auto& [script, error] : scripts) {
        for (const Lines& lines : refused) {
            SCOPED_TRACE(std::string(script) + " prints " + testing::PrintToString(lines));
            const Lines good = device.commandLines[script];
            DeviceIdentity::destroyInstance();
            prints(script, lines);
            EXPECT_EQ(loadError(), error);
            prints(script, good);
        }
    }
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(IdentityOfDevice, StopsAtTheFirstScriptThatFails) {
    prints("/tarvo/script/MAC", {});
    EXPECT_EQ(loadError(), "Could not read MAC");
    EXPECT_EQ(device.events(), (Lines{"read: /tarvo/script/SERIAL", "read: /tarvo/script/MAC"}));
}

TEST_F(IdentityOfDevice, HostNameIsTheFirstLineWithoutItsTrailingBlanks) {
    prints("hostname", {" head end \t\r\n", "other\n"});
    identity().load();
    EXPECT_EQ(identity().getHostName(), " head end");
}

TEST_F(IdentityOfDevice, RefusesAnEmptyHostName) {
    for (const Lines& lines : {Lines{}, Lines{"\n"}, Lines{" \t\r\n", "headend\n"}}) {
        SCOPED_TRACE(testing::PrintToString(lines));
        DeviceIdentity::destroyInstance();
        prints("hostname", lines);
        EXPECT_EQ(loadError(), "Could not read hostname");
    }
    EXPECT_TRUE(device.statements().empty());
}

TEST_F(IdentityOfDevice, LogsAReadFailureWithTheDebugBit) {
    platform::debugMask = platform::kDebugLogBit;
    const std::pair<const char*, const char*> reads[] = {
        {"hostname", "Could not read hostname"},
        {"/tarvo/script/MODELO", "Could not read model"},
        {"/tarvo/script/MAC", "Could not read MAC"},
        {"/tarvo/script/SERIAL", "Could not read Serial Number"},
    };
    for (const auto& [command, error] : reads) {
        device.forgetEvents();
        DeviceIdentity::destroyInstance();
        prints(command, {});
        EXPECT_EQ(loadError(), error);
        EXPECT_EQ(device.logLines(), Lines{std::string("3: ") + error});
    }
}

TEST_F(IdentityOfDevice, LoadedAgainReadsNoScriptAgain) {
    EXPECT_TRUE(identity().load());
    device.forgetEvents();
    prints("/tarvo/script/SERIAL", {"B456\n", "OK\n"});
    EXPECT_FALSE(identity().load());
    EXPECT_EQ(device.events(),
              (Lines{"open: /tarvo/DB/config_global.sqlite", "sql: " + kSettingsSelects[0],
                     "sql: " + kSettingsSelects[1], "close: /tarvo/DB/config_global.sqlite"}));
    EXPECT_EQ(identity().getSerialNumber(), "A123");
}

TEST_F(IdentityOfDevice, LoadedAgainAfterAFailureReadsWhatIsStillEmpty) {
    prints("/tarvo/script/MODELO", {});
    EXPECT_EQ(loadError(), "Could not read model");
    device.forgetEvents();
    prints("/tarvo/script/MODELO", {"QRA-310\n", "OK\n"});
    EXPECT_TRUE(identity().load());
    EXPECT_EQ(device.eventsOf("read: "), (Lines{"/tarvo/script/MODELO", "hostname"}));
}

TEST_F(IdentityOfDevice, TakesTheServerSettingsAndTheContract) {
    addSetting("servidorZEN_activo", "'1'");
    addSetting("servidorZEN_intervalo", "'15'");
    addSetting("servidorZEN_direccion", "'http://server/path'");
    addSetting("servidorZEN_usuario", "'us''er'");
    addSetting("servidorZEN_password", "'50% <&>\xff'");
    addSetting("identificacion_contrato", "'C-77'");
    EXPECT_TRUE(identity().load());
    EXPECT_TRUE(identity().isRemoteControlActive());
    EXPECT_EQ(identity().getRemoteControlInterval(), 15);
    EXPECT_EQ(identity().getRemoteControlAddress(), "http://server/path/");
    EXPECT_EQ(identity().getRemoteControlUser(), "us'er");
    EXPECT_EQ(identity().getRemoteControlPassword(), "50% <&>\xff");
    EXPECT_EQ(identity().getContractId(), "C-77");
}

TEST_F(IdentityOfDevice, ServerAddressEndsWithASlashUnlessItIsEmpty) {
    addSetting("servidorZEN_direccion", "NULL");
    const std::pair<const char*, const char*> addresses[] = {
        {"'http://server/path'", "http://server/path/"},
        {"'http://server/path/'", "http://server/path/"},
        {"'/'", "/"},
        {"''", ""},
        {"NULL", ""},
    };
    for (const auto& [stored, expected] : addresses) {
        SCOPED_TRACE(stored);
        DeviceIdentity::destroyInstance();
        changeSetting("servidorZEN_direccion", stored);
        identity().load();
        EXPECT_EQ(identity().getRemoteControlAddress(), expected);
    }
}

TEST_F(IdentityOfDevice, ServerIsActiveWithTheExactTextOne) {
    addSetting("servidorZEN_activo", "NULL");
    const std::pair<const char*, bool> values[] = {
        {"'1'", true}, {"'0'", false},  {"'01'", false},   {"'1 '", false},
        {"''", false}, {"NULL", false}, {"'true'", false},
    };
    for (const auto& [stored, expected] : values) {
        SCOPED_TRACE(stored);
        DeviceIdentity::destroyInstance();
        changeSetting("servidorZEN_activo", stored);
        identity().load();
        EXPECT_EQ(identity().isRemoteControlActive(), expected);
    }
}

TEST_F(IdentityOfDevice, ServerIntervalIsTheLeadingNumber) {
    addSetting("servidorZEN_intervalo", "NULL");
    const std::pair<const char*, int> values[] = {
        {"'15'", 15}, {"'15min'", 15}, {"'abc'", 0}, {"''", 0}, {"NULL", 0}, {"'-3'", -3},
    };
    for (const auto& [stored, expected] : values) {
        SCOPED_TRACE(stored);
        DeviceIdentity::destroyInstance();
        changeSetting("servidorZEN_intervalo", stored);
        identity().load();
        EXPECT_EQ(identity().getRemoteControlInterval(), expected);
    }
}

TEST_F(IdentityOfDevice, KeepsItsDefaultsWithoutServerSettings) {
    identity().load();
    EXPECT_FALSE(identity().isRemoteControlActive());
    EXPECT_EQ(identity().getRemoteControlInterval(), 1);
    EXPECT_EQ(identity().getRemoteControlAddress(), "");
}

TEST_F(IdentityOfDevice, IgnoresSettingsWithOtherNamesOrLetterCase) {
    addSetting("SERVIDORZEN_ACTIVO", "'1'");
    addSetting("servidorZEN_Usuario", "'user'");
    addSetting("servidorZEN_otro", "'x'");
    addSetting("servidorZEN", "'x'");
    EXPECT_TRUE(identity().load());
    EXPECT_FALSE(identity().isRemoteControlActive());
    EXPECT_EQ(identity().getRemoteControlUser(), "");
    EXPECT_FALSE(identity().load());
}

TEST_F(IdentityOfDevice, TheLastOfSeveralServerSettingsCounts) {
    addSetting("servidorZEN_usuario", "'first'");
    addSetting("servidorZEN_usuario", "'last'");
    identity().load();
    EXPECT_EQ(identity().getRemoteControlUser(), "last");
}

TEST_F(IdentityOfDevice, TheFirstMatchingContractCountsWhateverItsCase) {
    addSetting("IDENTIFICACION-contrato", "'first'");
    addSetting("identificacion_contrato", "'second'");
    identity().load();
    EXPECT_EQ(identity().getContractId(), "first");
}

TEST_F(IdentityOfDevice, ANullContractIsEmpty) {
    addSetting("identificacion_contrato", "NULL");
    identity().load();
    EXPECT_EQ(identity().getContractId(), "");
}

TEST_F(IdentityOfDevice, LoadedAgainSaysWhetherADatabaseValueChanged) {
    const char* names[] = {"servidorZEN_activo",    "servidorZEN_intervalo",
                           "servidorZEN_direccion", "servidorZEN_usuario",
                           "servidorZEN_password",  "identificacion_contrato"};
    for (const char* name : names) {
        addSetting(name, "'0'");
    }
    EXPECT_TRUE(identity().load());
    EXPECT_FALSE(identity().load());
    for (const char* name : names) {
        SCOPED_TRACE(name);
        changeSetting(name, "'1'");
        EXPECT_TRUE(identity().load());
        EXPECT_FALSE(identity().load());
    }
}

TEST_F(IdentityOfDevice, KeepsAContractWhoseRowIsGone) {
    addSetting("identificacion_contrato", "'C-77'");
    identity().load();
    device.execute(tarvodb::kConfigDatabase, "DELETE FROM configuracionWebGlobal");
    EXPECT_FALSE(identity().load());
    EXPECT_EQ(identity().getContractId(), "C-77");
}

TEST_F(IdentityOfDevice, KeepsItsValuesWhenTheTableIsMissing) {
    addSetting("servidorZEN_usuario", "'user'");
    addSetting("identificacion_contrato", "'C-77'");
    identity().load();
    device.execute(tarvodb::kConfigDatabase, "DROP TABLE configuracionWebGlobal");
    device.forgetEvents();
    EXPECT_FALSE(identity().load());
    EXPECT_EQ(identity().getRemoteControlUser(), "user");
    EXPECT_EQ(identity().getContractId(), "C-77");
    EXPECT_EQ(device.statements(),
              (Lines{kSettingsSelects[0], kSettingsSelects[0], kSettingsSelects[0],
                     kSettingsSelects[1], kSettingsSelects[1], kSettingsSelects[1]}));
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3", "1", "2", "3"}));
}

TEST_F(IdentityOfDevice, ReadsTheContractWhenTheServerSettingsFail) {
    addSetting("identificacion_contrato", "'C-77'");
    device.failStatements(kSettingsSelects[0], 3, 5);
    EXPECT_TRUE(identity().load());
    EXPECT_EQ(identity().getContractId(), "C-77");
}

TEST_F(IdentityOfDevice, IsReadFromAFailedOpenAllTheSame) {
    device.removeFile("/tarvo/DB");
    EXPECT_TRUE(identity().load());
    EXPECT_EQ(device.statements(),
              (Lines{kSettingsSelects[0], kSettingsSelects[0], kSettingsSelects[0],
                     kSettingsSelects[1], kSettingsSelects[1], kSettingsSelects[1]}));
    EXPECT_EQ(device.logLines().at(0),
              "3: [ERROR_DB]doSelect: Error leyendo datos tabla configuracionWebGlobal . intento: "
              "0\n");
    EXPECT_EQ(identity().getSerialNumber(), "A123");
}

TEST_F(IdentityOfDevice, IsLoadedFromAFileThatIsNotADatabase) {
    device.writeFile(tarvodb::kConfigDatabase, "this is not SQLite");
    EXPECT_TRUE(identity().load());
    EXPECT_EQ(device.logLines().at(1), "3: [ERROR_DB]doSelect: file is not a database\n");
    EXPECT_EQ(identity().getRemoteControlInterval(), 1);
}

TEST_F(IdentityOfDevice, ModelPredicatesNameTheirModelsExactly) {
    struct Case {
        const char* model;
        bool familyA, rnb, wvxa, lmv, pkd, wvxb;
    };
    const Case cases[] = {
        {"QRA-310", true, false, false, false, false, false},
        {"LMV-502", true, false, false, true, false, false},
        {"LMV-512", false, false, false, true, false, false},
        {"PKD-707", true, false, false, false, true, false},
        {"RNB-K408", false, true, false, false, false, false},
        {"WVX-AQ4", false, false, true, false, false, false},
        {"WVX-BQ4", false, false, false, false, false, true},
        {"qra-310", false, false, false, false, false, false},
        {"QRA-310X", false, false, false, false, false, false},
        {" RNB-K408", false, false, false, false, false, false},
        {"RNB", false, false, false, false, false, false},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.model);
        becomeModel(expected.model);
        EXPECT_EQ(identity().isFamilyA(), expected.familyA);
        EXPECT_EQ(identity().isRNB(), expected.rnb);
        EXPECT_EQ(identity().isWVXA(), expected.wvxa);
        EXPECT_EQ(identity().isLMV(), expected.lmv);
        EXPECT_EQ(identity().isPKD(), expected.pkd);
        EXPECT_EQ(identity().isWVXB(), expected.wvxb);
    }
}

TEST_F(IdentityOfDevice, IsOfNoModelBeforeItIsLoaded) {
    EXPECT_FALSE(identity().isFamilyA() || identity().isRNB() || identity().isWVXA() ||
                 identity().isLMV() || identity().isPKD() || identity().isWVXB());
}

}  // namespace tarvo_remote_control
