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
        std::filesystem::copy_file(path, path + ".before");
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
