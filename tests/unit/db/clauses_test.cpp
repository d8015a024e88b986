#include "db/clauses.h"

#include "db/database.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

using Lines = std::vector<std::string>;

class SelectClauses : public test::DeviceTest {
  protected:
    SelectClauses() : db_(openDatabase(kConfigDatabase)) { device.forgetEvents(); }

    void addSettings() {
        device.execute(kConfigDatabase,
                       "INSERT INTO configuracionWebGlobal VALUES"
                       " (1, 'network_IP', 'c', 0), (2, 'network-IP', 'b', 0),"
                       " (3, 'NETWORK_ip', 'a', 0), (4, 'network_IP2', 'd', 0)");
    }

    Lines keysOf(const tSqlite3parent& name, const char* orderBy = nullptr, unsigned limit = 0) {
        Lines keys;
        for (const auto& setting : selectByNombre(db_.get(), name, orderBy, limit)) {
            keys.push_back(setting.key().asString());
        }
        return keys;
    }

    template <class Table, class... Arguments>
    std::string statement(const Clause<sizeof...(Arguments)>& clause, Arguments... arguments) {
        device.forgetEvents();
        const Database db = openDatabase(kConfigDatabase);
        doSelect<Table>(db.get(), clause, arguments...);
        return device.statements().at(0);
    }

    sqlite3* db() { return db_.get(); }

  private:
    Database db_;
};

}  // namespace

// Whether a select takes these arguments with a clause.
template <const auto& clause, class... Arguments>
constexpr bool takes = requires(sqlite3* db, Arguments... arguments) {
    doSelect<ServiciosEntradaGlobal>(db, clause, arguments...);
};

static_assert(takes<clause::kByMac, const char*>);
static_assert(!takes<clause::kByMac>);
static_assert(!takes<clause::kByMac, const char*, const char*>);
static_assert(takes<clause::kByInputService, const char*, const char*, const char*>);
static_assert(!takes<clause::kByInputService>);
static_assert(!takes<clause::kByInputService, const char*, const char*>);

TEST_F(SelectClauses, SettingsAreSelectedByTheirName) {
    selectByNombre(db(), tSqlite3parent("x"));
    EXPECT_EQ(device.statements(),
              Lines{"SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'x' "});
}

TEST_F(SelectClauses, SatelliteTunersAreSelectedByTheirInput) {
    selectByFkIdEntradasGlobal(db(), tSqlite3parent("12"));
    EXPECT_EQ(device.statements(),
              Lines{"SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '12' "});
}

TEST_F(SelectClauses, StreamsAreSelectedByTheirService) {
    selectByFkIdSSG(db(), tSqlite3parent("12"));
    EXPECT_EQ(device.statements(),
              Lines{"SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '12' "});
}

TEST_F(SelectClauses, OrderAndLimitFollowTheCondition) {
    selectByNombre(db(), tSqlite3parent("x"), "nombre", 5);
    selectByNombre(db(), tSqlite3parent("x"), "nombre");
    selectByNombre(db(), tSqlite3parent("x"), nullptr, 5);
    selectByFkIdEntradasGlobal(db(), tSqlite3parent("1"), "fk_idNim", 2);
    selectByFkIdSSG(db(), tSqlite3parent("1"), "Orden", 4000000000U);
    EXPECT_EQ(device.statements(),
              (Lines{"SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'x' ORDER BY nombre"
                     " limit 0,5",
                     "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'x' ORDER BY nombre",
                     "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'x'  limit 0,5",
                     "SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '1' ORDER BY fk_idNim"
                     " limit 0,2",
                     "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '1' ORDER BY Orden"
                     " limit 0,4000000000"}));
}

TEST_F(SelectClauses, OrderAndLimitAreObeyed) {
    addSettings();
    EXPECT_EQ(keysOf(tSqlite3parent("network%")), (Lines{"1", "2", "3", "4"}));
    EXPECT_EQ(keysOf(tSqlite3parent("network%"), "valor"), (Lines{"3", "2", "1", "4"}));
    EXPECT_EQ(keysOf(tSqlite3parent("network%"), "valor", 2), (Lines{"3", "2"}));
    EXPECT_EQ(keysOf(tSqlite3parent("network%"), nullptr, 3), (Lines{"1", "2", "3"}));
}

TEST_F(SelectClauses, AnUnderscoreMatchesAnyCharacterAndLetterCaseDoesNotCount) {
    addSettings();
    EXPECT_EQ(keysOf(tSqlite3parent("network_IP")), (Lines{"1", "2", "3"}));
}

TEST_F(SelectClauses, ANullValueIsSqlNullAndMatchesNothing) {
    addSettings();
    device.execute(kConfigDatabase, "INSERT INTO configuracionWebGlobal VALUES (9, NULL, 'x', 0)");
    EXPECT_TRUE(keysOf(tSqlite3parent()).empty());
    EXPECT_EQ(device.statements(),
              Lines{"SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE NULL "});
}

TEST_F(SelectClauses, TheValueIsQuotedAndTheOrderEscapedWithoutQuotes) {
    selectByNombre(db(), tSqlite3parent("O'Neil 50%s"), "no''mbre", 0);
    EXPECT_EQ(device.statements().at(0),
              "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'O''Neil 50%s' ORDER BY "
              "no''''mbre");
}

TEST_F(SelectClauses, EveryConditionComparesWithLike) {
    EXPECT_EQ(statement<RedesModulos>(clause::kByMac, "02:00:00:00:00:01"),
              "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:01' ");
    EXPECT_EQ(statement<NimQAMGlobal>(clause::kByInput, "3"),
              "SELECT * FROM NimQAMGlobal  WHERE fk_idEntradasGlobal LIKE '3' ");
    EXPECT_EQ(statement<RFOutGlobal>(clause::kByLogicalOutput, "3"),
              "SELECT * FROM RFOutGlobal  WHERE fk_idSalidasLogicasGlobal LIKE '3' ");
    EXPECT_EQ(statement<Service_EPG_audios>(clause::kByServiceEpg, "3"),
              "SELECT * FROM Service_EPG_audios  WHERE fk_idService_EPG LIKE '3' ");
    EXPECT_EQ(statement<ServiciosSalidaGlobal>(clause::kByService, "3"),
              "SELECT * FROM ServiciosSalidaGlobal  WHERE idSSG LIKE '3' ");
    EXPECT_EQ(statement<RedesCabecera>(clause::kByNetwork, "3"),
              "SELECT * FROM RedesCabecera  WHERE idRed LIKE '3' ");
    EXPECT_EQ(statement<MantenimientoHomeChannelsGlobal>(clause::kByHomeChannel, "3"),
              "SELECT * FROM MantenimientoHomeChannelsGlobal  WHERE idMantenimiento LIKE '3' ");
    EXPECT_EQ(statement<DiSEqCGlobal>(clause::kByDiseqc, "3"),
              "SELECT * FROM DiSEqCGlobal  WHERE idDiSEqCGlobal LIKE '3'");
    EXPECT_EQ(statement<ScramblingGlobal>(clause::kByScramblingName, "DTV"),
              "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE 'DTV' ");
    EXPECT_EQ(statement<ScramblingKeysGlobal>(clause::kByScramblingSystem, "DTV"),
              "SELECT * FROM ScramblingKeysGlobal  WHERE System LIKE 'DTV'");
    EXPECT_EQ(statement<Service_EPG_Satellite>(clause::kByEpgSatellite, "3"),
              "SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '3' ");
    EXPECT_EQ(statement<VSecure>(clause::kByClient, "3"),
              "SELECT * FROM VSecure  WHERE idCliente LIKE '3' ");
}

TEST_F(SelectClauses, AConditionMayTakeSeveralValues) {
    EXPECT_EQ(statement<ServiciosEntradaGlobal>(clause::kByInputService, "02:00", "101", "1"),
              "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE '02:00'  and OSID LIKE '101'"
              "  and fk_idEntrada LIKE '1' ");
}

}  // namespace tarvodb
