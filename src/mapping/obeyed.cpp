// Which section obeys what of its rows. The compiler refuses rows that say more to the import.
#include "mapping/obeyed.h"

#include "mapping/document_tree.h"

namespace mapping {

namespace {

// What import/elements.h takes by itself.
constexpr Takes kNumbers{Take::number, Take::numberStoredText, Take::numberUnlessZero,
                         Take::codeOrNumber};
constexpr Takes kColumns = kNumbers.with(Take::text);

constexpr std::string_view kById[] = {"id"};
constexpr std::string_view kByName[] = {"name"};
constexpr std::string_view kInputDemands[] = {"inputId", "type"};
constexpr std::string_view kOutputDemands[] = {"outputId"};
constexpr std::string_view kServiceDemands[] = {"outputId", "outputSid"};
constexpr std::string_view kCamDemands[] = {"serialNumber"};
constexpr std::string_view kMaintenanceDemands[] = {"hour", "min", "active"};

struct Section {
    Elements rows;
    Obeyed obeyed;
};

constexpr Obeyed kHolders{.takes = Take::children};
constexpr Obeyed kSettings{.takes = {Take::text, Take::children}, .settings = true};
constexpr Obeyed kReported{.takes = Take::ignored};

constexpr Obeyed kHomeChannelsObey{
    .takes = kColumns.with({Take::code, Take::codeExactly, Take::key, Take::ignored}),
    .derived = kColumns.with({Take::code, Take::codeExactly}),
    .otherTextsAreOne = true,
    .required = kById};
constexpr Obeyed kDvbNetworksObey{.takes = kColumns.with({Take::bits, Take::key, Take::ignored}),
                                  .labels = kColumns.with(Take::bits),
                                  .ranges = kNumbers,
                                  .required = kById,
                                  .conditions = When::fileExists};
constexpr Obeyed kDiseqcsObey{.takes = kColumns.with({Take::code, Take::key, Take::ignored}),
                              .labels = kColumns.with({Take::code, Take::key, Take::ignored}),
                              .derived = kColumns.with(Take::code),
                              .refusedCodes = Take::code,
                              .required = kById};
// Whatever is not a code is stored as it stands.
constexpr Obeyed kGuideObeys{.takes = {Take::text, Take::code, Take::codeExactly},
                             .otherTextsAreOne = true};
constexpr Obeyed kGuideServicesObey{.takes = kGuideObeys.takes.with(Take::children),
                                    .ranges = Take::text,
                                    .otherTextsAreOne = true,
                                    .toldRange = kIdentifier};
constexpr Obeyed kScramblingsObey{.takes = kColumns.with({Take::code, Take::ignored}),
                                  .ranges = kNumbers,
                                  .derived = kColumns.with(Take::code),
                                  .refusedCodes = Take::code,
                                  .toldRange = kBinary,
                                  .required = kByName};
constexpr Obeyed kModulesObey{.takes = kColumns.with({Take::key, Take::ignored, Take::children}),
                              .labels = kColumns.with({Take::key, Take::ignored}),
                              .conditions = When::moduleReportsCam};
constexpr Obeyed kInputsObey{.takes = kColumns.with({Take::key, Take::special}),
                             .labels = kColumns.with(Take::key),
                             .ranges = Take::special,
                             .required = kInputDemands,
                             .requiredRanges = true};
constexpr Obeyed kTunersObey{
    .takes = kColumns.with({Take::code, Take::codeExactly, Take::special, Take::ignored}),
    .labels = kColumns.with({Take::code, Take::codeExactly, Take::special, Take::ignored}),
    .ranges = Take::special,
    .refusedCodes = {Take::code, Take::codeExactly},
    .refusedAsOutput = true,
    .conditions = {When::noDiseqcPosition, When::secondTuner}};
constexpr Obeyed kOutputsObey{.takes = kColumns.with({Take::key, Take::ignored}),
                              .labels = kColumns.with({Take::key, Take::ignored}),
                              .required = kOutputDemands,
                              .requiredRanges = true};
constexpr Obeyed kRfOutputsObey{.takes = kColumns.with({Take::code, Take::special, Take::ignored}),
                                .labels = kColumns.with({Take::code, Take::special, Take::ignored}),
                                .ranges = Take::special,
                                .refusedCodes = Take::code,
                                .dvbCTexts = Take::code};
constexpr Obeyed kServicesObey{
    .takes = kColumns.with({Take::key, Take::special, Take::children, Take::ignored}),
    .labels = kColumns.with({Take::key, Take::special, Take::ignored}),
    .ranges = kNumbers.with(Take::special),
    .lowestOfOther = Take::special,
    .toldRange = Range{.highest = 65535},
    .required = kServiceDemands,
    .requiredRanges = true,
    .conditions = When::moduleDescrambles};
// Whatever is not a key is stored as it stands.
constexpr Obeyed kPidOrdersObey{.takes = {Take::key, Take::text}};
constexpr Obeyed kCamsObey{.takes = {Take::key, Take::text, Take::special, Take::ignored},
                           .derived = Take::special,
                           .required = kCamDemands,
                           .conditions = {When::publicKeysAskedFor, When::fullList}};

constexpr Section kObeyed[] = {
    {kBackupParts, kHolders},
    {kSections, kSettings},
    {kIdentification, kSettings},
    {kRegional, kSettings},
    {kMaintenance,
     [] {
         Obeyed obeyed = kSettings;
         obeyed.required = kMaintenanceDemands;
         return obeyed;
     }()},
    {kHomeChannel, kHomeChannelsObey},
    {kServiceEpg, kGuideServicesObey},
    {kSatelliteEpg, kGuideServicesObey},
    {kAudiosEpg, kGuideObeys},
    {kReplacingEpg, kGuideObeys},
    {kNetwork, kSettings},
    {kRemoteControl, kSettings},
    {kDvbNetwork, kDvbNetworksObey},
    {kPidMask, {.takes = Take::bits}},
    {kLnb, kSettings},
    {kDiseqc, kDiseqcsObey},
    {kScrambling, kScramblingsObey},
    {kPreferredLanguages, {.takes = Take::text}},
    {kModule, kModulesObey},
    {kInput, kInputsObey},
    {kSatelliteTuner, kTunersObey},
    {kTerrestrialTuner, kTunersObey},
    {kCableTuner, kTunersObey},
    {kInputStatus, kReported},
    {kOutput, kOutputsObey},
    {kRfOutput, kRfOutputsObey},
    {kService, kServicesObey},
    {kPidOrder, kPidOrdersObey},
    {kServiceStatus, kReported},
    {kCam, kCamsObey},
};

// The one entry of a list says nothing but what it holds.
constexpr bool isEntry(Elements rows) { return rows.size() == 1 && rows[0].kind == Kind::entry; }

// Told by their names: where pointers are instrumented, the compiler does not compare addresses.
constexpr bool areSame(Elements one, Elements other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const Element& row, const Element& match) {
                          return std::string_view(row.name) == match.name;
                      });
}

constexpr bool isListed(Elements rows) {
    return rows.empty() || (isEntry(rows) ? isObeyed(rows[0], kHolders)
                                          : std::any_of(std::begin(kObeyed), std::end(kObeyed),
                                                        [rows](const Section& section) {
                                                            return areSame(section.rows, rows);
                                                        }));
}

constexpr bool areListedBelow(const Element& parent) {
    bool listed = isListed(parent.children) &&
                  std::all_of(parent.childTables.begin(), parent.childTables.end(),
                              [](const ChildTable& table) { return isListed(table.rows); });
    forEachChild(parent, [&listed](const Element& child) { listed &= areListedBelow(child); });
    return listed;
}

static_assert(areListedBelow(kBackup));
static_assert(std::all_of(std::begin(kObeyed), std::end(kObeyed), [](const Section& section) {
    return areObeyed(section.rows, section.obeyed);
}));

}  // namespace

}  // namespace mapping
