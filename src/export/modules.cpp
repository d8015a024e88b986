// The modules of the headend with their hardware, CAM and firmware.
#include <string>

#include "db/clauses.h"
#include "export/leaves.h"
#include "export/module_kind.h"
#include "export/sections.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::CAMInfoGlobal;
using tarvodb::doSelect;
using tarvodb::ModulosCabecera;
using tarvodb::Record;
using tarvodb::RedesModulos;

namespace {

constexpr Leaf<RedesModulos> kIdentityLeaves[] = {
    {"id", RedesModulos::HostName},
    {"mac", RedesModulos::MAC},
    {"isMaster", RedesModulos::Master},
};

constexpr Leaf<RedesModulos> kIdentityLeavesExceptRnb[] = {
    {"name", RedesModulos::LabelName},
    {"family", RedesModulos::Familia},
    {"model", RedesModulos::Modelo},
    {"modoSalidaRF", RedesModulos::ModoSalidaRF},
};

// The text for the hours that a smart card's rights still last. Exactly 24 hours count as no
// rights.
const char* cardRightsText(int hours) {
    if (hours > 48) {
        return "Rights OK";
    }
    if (hours > 24) {
        return "Less than 48 hours";
    }
    if (hours == 24 || hours == 0) {
        return "KO. No rights";
    }
    return "Less than 24 hours";
}

// The last row of a module counts; without a row the CAM reads as all empty.
Record<CAMInfoGlobal> camInfo(const CmdGetConfiguration& command, const char* mac) {
    auto rows = doSelect<CAMInfoGlobal>(command.stateDb(), tarvodb::clause::kByMac, mac);
    return rows.empty() ? Record<CAMInfoGlobal>() : std::move(rows.back());
}

void appendCam(CmdGetConfiguration& command, XmlNode* node, const char* mac) {
    const DeviceIdentity& device = CmdGetConfiguration::device();
    const Record<CAMInfoGlobal> cam = camInfo(command, mac);
    appendLeaf(command, node, cam, {"CAMSerialNumber", CAMInfoGlobal::camSerialNumber});
    appendLeaf(command, node, cam, {"CAMVersion", CAMInfoGlobal::camVersion});
    std::string cardSerial = cam[CAMInfoGlobal::cardSerialNumber].asString();
    if (device.isRNB() && !cardSerial.empty()) {
        cardSerial.insert(0, "000");
    }
    command.append(node, "CardSerialNumber", cardSerial.c_str());
    if (device.isFamilyA() || device.isWVXA()) {
        command.append(node, "CardRights", cardRightsText(cam[CAMInfoGlobal::rightsHours].asInt()));
        appendLeaf(command, node, cam,
                   {"CardStatus", CAMInfoGlobal::cardStatus, document::kCardStatus,
                    document::kCardStatusOtherwise});
    }
}

XmlNode* moduleElement(CmdGetConfiguration& command, const Record<RedesModulos>& module) {
    const char* mac = module[RedesModulos::MAC].textOrEmpty();
    const int family = module[RedesModulos::Familia].asInt();
    const int model = module[RedesModulos::Modelo].asInt();
    XmlNode* node = command.createNode("module");
    appendLeaves(command, node, module, kIdentityLeaves);
    if (!CmdGetConfiguration::device().isRNB()) {
        appendLeaves(command, node, module, kIdentityLeavesExceptRnb);
    }
    appendLeaf(command, node, module, {"serialNumber", RedesModulos::NumeroSerie});
    if (tellsCam(family, model)) {
        appendCam(command, node, mac);
    }
    appendLeaf(command, node, module, {"hwVersion", RedesModulos::HWVersion});
    for (const auto& firmware :
         doSelect<ModulosCabecera>(command.stateDb(), tarvodb::clause::kByMac, mac)) {
        appendLeaf(command, node, firmware, {"swVersion", ModulosCabecera::softwareVersion});
    }
    appendLeaf(command, node, module, {"attenuation", RedesModulos::Atenuacion});
    appendLeaf(command, node, module, {"dvbNetworkId", RedesModulos::RED});
    node->append_node(inputsSection(command, mac));
    node->append_node(outputsSection(command, mac, module[RedesModulos::ModoSalidaRF].asInt()));
    node->append_node(servicesSection(command, mac, family, model));
    return node;
}

}  // namespace

XmlNode* modulesSection(CmdGetConfiguration& command) {
    XmlNode* section = command.createNode("modules");
    for (const auto& module : doSelect<RedesModulos>(command.configDb())) {
        section->append_node(moduleElement(command, module));
    }
    return section;
}

}  // namespace tarvo_remote_control
