#include "backup/module_bindings.h"

#include <gmock/gmock.h>

#include <array>

#include "db/database.h"
#include "support/fake_device.h"
#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ModuleBindingsTest : public test::DeviceTest {
  protected:
    ModuleBindingsTest() {
        becomeModel("QRA-310");
        device.execute(tarvodb::kConfigDatabase,
                       "INSERT INTO RedesModulos (MAC, Familia, Modelo, Master) VALUES"
                       " ('02:01', 36, 7, 1), ('02:02', 36, 7, 0), ('02:03', 35, 2, 0)");
    }

    // "modules/module[mac=02:09]: 02:09 as 02:01 by kind"
    static std::vector<std::string> lines(const ModuleBindings& bindings) {
        constexpr std::array kKinds = {"address", "kind", "none"};
        std::vector<std::string> lines;
        for (const ModuleBinding& each : bindings.modules) {
            lines.push_back(each.element.path + ": " + each.documentMac + " as " + each.headendMac +
                            " by " + kKinds.at(static_cast<std::size_t>(each.how)));
        }
        return lines;
    }

    static std::string module(const std::string& mac, const std::string& family) {
        return "<module><mac>" + mac + "</mac><family>" + family +
               "</family><model>7</model><isMaster>0</isMaster></module>";
    }
};

}  // namespace

TEST_F(ModuleBindingsTest, AreByAddressThenByKindOfWhatIsLeft) {
    const ModuleBindings bindings =
        bindModules(configured("<modules>" + module("02:09", "36") + module("02:01", "36") +
                               module("02:08", "36") + module("02:03", "36") + "</modules>"));
    EXPECT_THAT(lines(bindings), ElementsAre("modules/module[mac=02:09]: 02:09 as 02:02 by kind",
                                             "modules/module[mac=02:01]: 02:01 as 02:01 by address",
                                             "modules/module[mac=02:08]: 02:08 as  by none",
                                             "modules/module[mac=02:03]: 02:03 as  by none"));
    EXPECT_THAT(bindings.leftOver, ElementsAre("02:03"));
}

TEST_F(ModuleBindingsTest, AreNoneWithoutModulesInTheDocument) {
    for (const Document& document : {configured("<network/>"), parsed("<backup/>")}) {
        const ModuleBindings bindings = bindModules(document);
        EXPECT_THAT(bindings.modules, IsEmpty());
        EXPECT_THAT(bindings.leftOver, IsEmpty());
    }
}

TEST_F(ModuleBindingsTest, AreNoneWithoutADatabase) {
    device.failOpens(tarvodb::kConfigDatabase);
    const ModuleBindings bindings =
        bindModules(configured("<modules>" + module("02:01", "36") + "</modules>"));
    EXPECT_THAT(bindings.modules, IsEmpty());
    EXPECT_THAT(bindings.leftOver, IsEmpty());
}

}  // namespace tarvo_backup
