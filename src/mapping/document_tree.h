// The document as a tree: every element once, in the order in which the export writes it.
#pragma once

#include "mapping/cam_list.h"
#include "mapping/diseqcs.h"
#include "mapping/dvb_networks.h"
#include "mapping/element.h"
#include "mapping/home_channels.h"
#include "mapping/modules.h"
#include "mapping/preferred_languages.h"
#include "mapping/scramblings.h"
#include "mapping/service_epgs.h"
#include "mapping/settings.h"

namespace mapping {

inline constexpr Element kSections[] = {
    section("identification", kIdentification),
    section("regional", kRegional),
    kMaturityRating,
    list("maintenances", kMaintenances, ExportedBy::familyA),
    list("homeChannels", kHomeChannels, ExportedBy::familyA),
    list("serviceEPGs", kServiceEpgs, ExportedBy::familyA),
    section("network", kNetwork),
    section("remoteControl", kRemoteControl, ExportedBy::rnb),
    list("dvbNetworks", kDvbNetworks),
    section("lnb", kLnb, ExportedBy::exceptWvxb),
    list("diseqcs", kDiseqcs, ExportedBy::exceptWvxb),
    list("scramblings", kScramblings, ExportedBy::exceptWvxb),
    ordered(list("preferredLanguages", kPreferredLanguages)),
    list("modules", kModules),
};

// The outermost element of a document, but for a backup's.
inline constexpr Element kConfiguration = section("configuration", kSections);

// RNB-K408 exports a backup, which adds the list of conditional-access modules.
inline constexpr Element kBackupCamList = camList("vsecureCAMList");
inline constexpr Element kBackupParts[] = {kConfiguration, kBackupCamList};
inline constexpr Element kBackup = section("backup", kBackupParts, ExportedBy::rnb);

}  // namespace mapping
