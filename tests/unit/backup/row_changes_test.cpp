#include "backup/row_changes.h"

#include <gmock/gmock.h>

#include <array>
#include <filesystem>

#include "db/database.h"
#include "support/fake_device.h"

namespace tarvo_backup {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string shown(const Cell& cell) { return cell.value_or("NULL"); }

// "changed RedesModulos 3 of 02:01: Atenuacion 5 -> 6"
std::string shown(const RowChange& change) {
    constexpr std::array kKinds = {"added ", "removed ", "changed "};
    std::string line = kKinds.at(static_cast<std::size_t>(change.kind)) + change.table + " " +
                       change.row + (change.mac.empty() ? "" : " of " + change.mac) + ":";
    for (const CellChange& cell : change.cells) {
        line += " " + cell.column + " " + shown(cell.before) + " -> " + shown(cell.after);
    }
    return line;
}

class RowChanges : public test::DeviceTest {
  protected:
    // What the statements change in the configuration database that others made.
    std::vector<RowChange> changesBy(const std::string& statements, const std::string& before) {
        device.execute(tarvodb::kConfigDatabase, before);
        const std::string path = device.path(tarvodb::kConfigDatabase);
        std::filesystem::copy_file(path, path + ".before",
                                   std::filesystem::copy_options::overwrite_existing);
        device.execute(tarvodb::kConfigDatabase, statements);
        return rowChanges(path + ".before", path);
    }

    std::vector<std::string> linesOf(const std::string& statements, const std::string& before) {
        std::vector<std::string> lines;
        for (const RowChange& change : changesBy(statements, before)) {
            lines.push_back(shown(change));
        }
        return lines;
    }
};

}  // namespace

TEST_F(RowChanges, AreOfTablesOfTheSameShapeOnly) {
    for (const char* change : {"ALTER TABLE DiSEqCGlobal ADD COLUMN more",
                               "DROP TABLE DiSEqCGlobal", "CREATE TABLE other (x)"}) {
        const std::string path = device.path(tarvodb::kConfigDatabase);
        std::filesystem::remove(path + ".before");
        EXPECT_THROW(changesBy(change, "SELECT 1"), Fault) << change;
    }
}

TEST_F(RowChanges, AreTheRowsThatCameWentOrAreOtherwise) {
    EXPECT_THAT(
        linesOf("DELETE FROM AudioLanguageListGlobal WHERE idALLG = 1;"
                "INSERT INTO AudioLanguageListGlobal VALUES (9, NULL);"
                "UPDATE AudioLanguageListGlobal SET AudioCode = 'eng' WHERE idALLG = 3",
                "INSERT INTO AudioLanguageListGlobal VALUES (1, 'spa'), (2, 'fra'), (3, NULL)"),
        ElementsAre("removed AudioLanguageListGlobal 1: idALLG 1 -> NULL AudioCode spa -> NULL",
                    "changed AudioLanguageListGlobal 3: AudioCode NULL -> eng",
                    "added AudioLanguageListGlobal 9: idALLG NULL -> 9 AudioCode NULL -> NULL"));
}

TEST_F(RowChanges, TellTheModuleOfARowThatHasOne) {
    EXPECT_THAT(
        linesOf("DELETE FROM NimQAMGlobal WHERE idNimQAMGlobal = 2;"
                "UPDATE RedesModulos SET Atenuacion = 6 WHERE idRedMod = 3;"
                "UPDATE RedesModulos SET Atenuacion = 6 WHERE idRedMod = 4",
                "INSERT INTO RedesModulos (idRedMod, MAC, Atenuacion) VALUES (3, '02:01', 5),"
                " (4, NULL, 5)"),
        ElementsAre("changed RedesModulos 3 of 02:01: Atenuacion 5 -> 6",
                    "changed RedesModulos 4: Atenuacion 5 -> 6"));
}

TEST_F(RowChanges, AreFoundInATableOfAnyName) {
    EXPECT_THAT(linesOf("UPDATE \"a\"\"b\" SET c = 2",
                        "CREATE TABLE \"a\"\"b\" (c); INSERT INTO \"a\"\"b\" VALUES (1)"),
                ElementsAre("changed a\"b 1: c 1 -> 2"));
}

TEST_F(RowChanges, AreFoundInATableWithoutRowIds) {
    EXPECT_THAT(linesOf("UPDATE t SET c = 3 WHERE a = 1; DELETE FROM t WHERE a = 'b''c';"
                        "INSERT INTO t VALUES (2, 'x', 4)",
                        "CREATE TABLE t (a, b, c, PRIMARY KEY (b, a)) WITHOUT ROWID;"
                        "INSERT INTO t VALUES (1, 'x', 2), ('b''c', 'x', 2), ('1', 'x', 7)"),
                ElementsAre("removed t 'x','b''c': a b'c -> NULL b x -> NULL c 2 -> NULL",
                            "changed t 'x',1: c 2 -> 3",
                            "added t 'x',2: a NULL -> 2 b NULL -> x c NULL -> 4"));
}

TEST_F(RowChanges, AreFoundWhereColumnsHaveTheNamesOfRowIds) {
    EXPECT_THAT(linesOf("UPDATE t SET OID = 'd' WHERE rowid = 'b'",
                        "CREATE TABLE t (RowId TEXT, oid TEXT);"
                        "INSERT INTO t VALUES ('a', 'c'), ('b', 'c')"),
                ElementsAre("changed t 2: oid c -> d"));
    EXPECT_THAT(
        linesOf("DELETE FROM t WHERE oid = 2; INSERT INTO t VALUES (1, 1, 'a')",
                "DROP TABLE t; CREATE TABLE t (oid, _rowid_, rowid);"
                "INSERT INTO t VALUES (1, 1, 'a'), (2, 2, NULL)"),
        ElementsAre("removed t 2,2,NULL: oid 2 -> NULL _rowid_ 2 -> NULL rowid NULL -> NULL",
                    "added t 1,1,'a' #2: oid NULL -> 1 _rowid_ NULL -> 1 rowid NULL -> a"));
}

TEST_F(RowChanges, WithAStatusThatTheDeviceActsOnAreMarks) {
    const auto changes = changesBy(
        "UPDATE RedesModulos SET estado = 1, Atenuacion = 1;"
        "UPDATE RedesCabecera SET estado = 2;"
        "UPDATE PIDsSalidaGlobal SET EstadoBorrado = 2, EstadoPID = 1;"
        "UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 1",
        "INSERT INTO RedesModulos (idRedMod, estado) VALUES (3, 0);"
        "INSERT INTO RedesCabecera (idRed, estado) VALUES (4, 0);"
        "INSERT INTO PIDsSalidaGlobal (idPSG) VALUES (5);"
        "INSERT INTO ServiciosSalidaGlobal (idSSG) VALUES (6)");
    std::vector<std::string> lines;
    for (const Mark& mark : marksIn(changes)) {
        lines.push_back(mark.meaning + (" " + mark.row->row) + " " + mark.cell->column);
    }
    EXPECT_THAT(lines, ElementsAre("stream to be applied 5 EstadoPID",
                                   "stream to be removed 5 EstadoBorrado",
                                   "module to be applied 3 estado"));
    EXPECT_THAT(marksIn({}), IsEmpty());
}

}  // namespace tarvo_backup
