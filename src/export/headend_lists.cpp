// The headend-wide lists whose rows stand in one table each.
#include "db/clauses.h"
#include "export/leaves.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::AudioLanguageListGlobal;
using tarvodb::DiSEqCGlobal;
using tarvodb::doSelect;
using tarvodb::MantenimientoHomeChannelsGlobal;
using tarvodb::ScramblingGlobal;
using tarvodb::ScramblingKeysGlobal;

namespace {

using HomeChannels = MantenimientoHomeChannelsGlobal;

constexpr Leaf<HomeChannels> kHomeChannelLeaves[] = {
    {"id", HomeChannels::idMantenimiento},
    {"frequency", HomeChannels::Frequency},
    {"orbit", HomeChannels::Orbita},
    {"polarity", HomeChannels::Polaridad, document::kPolarity},
    {"band", HomeChannels::Banda, document::kBand},
    {"symbolrate", HomeChannels::SymbolRate},
    {"onid", HomeChannels::ONID},
    {"tsid", HomeChannels::TSID},
};

constexpr Leaf<DiSEqCGlobal> kDiseqcLeaves[] = {
    {"id", DiSEqCGlobal::idDiSEqCGlobal},
    {"position", DiSEqCGlobal::Posicion},
    {"name", DiSEqCGlobal::Nombre},
    {"orbit", DiSEqCGlobal::Orbita},
    {"polarity", DiSEqCGlobal::Polaridad, document::kPolarity},
    {"band", DiSEqCGlobal::Banda, document::kBand},
};

// The encrypted forms of the control words stay on the device.
constexpr Leaf<ScramblingKeysGlobal> kScramblingKeyLeaves[] = {
    {"mode", ScramblingKeysGlobal::Mode, document::kScramblingMode},
    {"frequency", ScramblingKeysGlobal::Frequency},
    {"oddKey", ScramblingKeysGlobal::Odd},
    {"evenKey", ScramblingKeysGlobal::Even},
    {"date", ScramblingKeysGlobal::Date},
};

}  // namespace

XmlNode* homeChannelsSection(CmdGetConfiguration& command) {
    return sectionOf(command, "homeChannels", "homechannel",
                     doSelect<HomeChannels>(command.configDb()), kHomeChannelLeaves);
}

XmlNode* diseqcsSection(CmdGetConfiguration& command) {
    return sectionOf(command, "diseqcs", "diseqc", doSelect<DiSEqCGlobal>(command.configDb()),
                     kDiseqcLeaves);
}

XmlNode* preferredLanguagesSection(CmdGetConfiguration& command) {
    XmlNode* section = command.createNode("preferredLanguages");
    for (const auto& language : doSelect<AudioLanguageListGlobal>(command.configDb())) {
        appendLeaf(command, section, language, {"language", AudioLanguageListGlobal::AudioCode});
    }
    return section;
}

XmlNode* scramblingsSection(CmdGetConfiguration& command) {
    XmlNode* section = command.createNode("scramblings");
    for (const auto& keys : doSelect<ScramblingKeysGlobal>(command.configDb())) {
        XmlNode* node = command.append(section, "scrambling");
        const char* name = keys[ScramblingKeysGlobal::System].textOrEmpty();
        command.append(node, "name", name);
        const auto systems = doSelect<ScramblingGlobal>(command.configDb(),
                                                        tarvodb::clause::kByScramblingName, name);
        command.append(
            node, "active",
            systems.empty() ? "0" : systems.front()[ScramblingGlobal::Mode].textOrEmpty());
        appendLeaves(command, node, keys, kScramblingKeyLeaves);
    }
    return section;
}

}  // namespace tarvo_remote_control
