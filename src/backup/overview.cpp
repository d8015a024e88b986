#include "backup/overview.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <span>

#include "backup/secrets.h"
#include "backup/tree.h"
#include "backup/utf8.h"
#include "document/input_type.h"

namespace tarvo_backup {

using document::childrenOf;
using document::numberOf;

namespace {

std::string textIn(const XmlNode& parent, const char* name) {
    const char* text = document::lastText(parent, name);
    return text == nullptr ? "" : text;
}

std::vector<const XmlNode*> entriesOf(const XmlNode& parent, const char* list) {
    std::vector<const XmlNode*> entries;
    const XmlNode* section = document::lastChildNamed(parent, list);
    for (const XmlNode* entry = section == nullptr ? nullptr : firstElement(*section);
         entry != nullptr; entry = nextElement(*entry)) {
        entries.push_back(entry);
    }
    return entries;
}

// A column of a table of entries: its title and the element that it shows.
struct Column {
    const char* title;
    const char* element;
};

// A section of settings, or a list with what is shown of its entries.
struct Part {
    const char* title;
    const char* element;
    std::span<const Column> columns = {};
};

constexpr Column kNetworkColumns[] = {{"Id", "id"},
                                      {"Name", "name"},
                                      {"Network id", "nid"},
                                      {"Original network id", "onidOut"},
                                      {"LCN mode", "lcnMode"},
                                      {"LCN offset", "lcnOffset"}};
constexpr Column kDiseqcColumns[] = {{"Position", "position"},
                                     {"Name", "name"},
                                     {"Orbit", "orbit"},
                                     {"Polarity", "polarity"},
                                     {"Band", "band"}};
constexpr Column kScramblingColumns[] = {
    {"System", "name"},    {"Active", "active"},    {"Mode", "mode"}, {"Frequency", "frequency"},
    {"Odd key", "oddKey"}, {"Even key", "evenKey"}, {"Date", "date"}};
constexpr Column kHomeChannelColumns[] = {{"Id", "id"},       {"Frequency", "frequency"},
                                          {"Orbit", "orbit"}, {"Polarity", "polarity"},
                                          {"Band", "band"},   {"Symbol rate", "symbolrate"}};
constexpr Column kMaintenanceColumns[] = {
    {"Hour", "hour"}, {"Minute", "min"}, {"Active", "active"}};
constexpr Column kCamColumns[] = {{"Serial number", "serialNumber"},
                                  {"Manufacturer", "manufacturer"},
                                  {"Registered", "registerDate"},
                                  {"Description", "description"},
                                  {"Encrypted key", "ekShared"}};

constexpr Part kParts[] = {
    {"Identification", "identification"},
    {"Region", "regional"},
    {"Network", "network"},
    {"Remote control", "remoteControl"},
    {"LNB", "lnb"},
    {"Maintenance", "maintenances", kMaintenanceColumns},
    {"Home channels", "homeChannels", kHomeChannelColumns},
    {"DVB networks", "dvbNetworks", kNetworkColumns},
    {"DiSEqC positions", "diseqcs", kDiseqcColumns},
    {"Scrambling", "scramblings", kScramblingColumns},
};

constexpr Column kModuleFields[] = {
    {"Address", "mac"},        {"Name", "name"},          {"Host", "id"},
    {"Family", "family"},      {"Model", "model"},        {"Serial number", "serialNumber"},
    {"Hardware", "hwVersion"}, {"Software", "swVersion"}, {"Attenuation", "attenuation"}};

constexpr Column kOutputColumns[] = {{"Output", "outputId"},
                                     {"Active", "active"},
                                     {"Frequency", "frequency"},
                                     {"Symbol rate", "symbolRate"},
                                     {"Constellation", "constellation"},
                                     {"Bandwidth", "bandwidth"},
                                     {"Original network id", "onid"},
                                     {"Transport stream id", "tsid"}};

class Making {
  public:
    Making(const Document& document, bool withSecrets)
        : document_(document), withSecrets_(withSecrets) {}

    Overview overview() {
        const XmlNode* configuration = document_.configuration();
        if (configuration == nullptr) {
            return {};
        }
        configuration_ = configuration;
        networks_ = numbered("dvbNetworks", "id");
        positions_ = numbered("diseqcs", "position");
        for (const Part& part : kParts) {
            addPart(*configuration, part);
        }
        addLanguages();
        addChannels();
        for (const XmlNode* module : entriesOf(*configuration, "modules")) {
            addModule(*module);
        }
        if (document_.camList() != nullptr) {
            addPart(*document_.camList()->parent(),
                    {"Conditional-access modules", "vsecureCAMList", kCamColumns});
        }
        overview_.title = headendName();
        return std::move(overview_);
    }

  private:
    [[nodiscard]] std::string withoutSecrets(const std::string& text) const {
        return withSecrets_ ? text : withoutCredentials(text);
    }

    [[nodiscard]] std::string shown(const XmlNode& parent, const char* name) const {
        std::string text = textIn(parent, name);
        return !text.empty() && !withSecrets_ && isSecret(name) ? kMask : withoutSecrets(text);
    }

    [[nodiscard]] std::string headendName() const {
        const XmlNode* identification = document::lastChildNamed(*configuration_, "identification");
        const std::string name =
            identification == nullptr ? "" : shown(*identification, "headendName");
        return name.empty() ? "Headend" : name;
    }

    Section& add(const std::string& title, const std::string& wantedAnchor) {
        const std::string wanted = anchorOf(wantedAnchor);
        std::string anchor = wanted;
        for (int& number = lastNumbers_[wanted]; !anchors_.insert(anchor).second;) {
            number = std::max(number, 1) + 1;
            anchor = wanted + "-" + std::to_string(number);
        }
        return overview_.sections.emplace_back(Section{title, anchor, {}, {}});
    }

    static std::string anchorOf(const std::string& text) {
        std::string anchor;
        for (const char character : text) {
            const auto byte = static_cast<unsigned char>(character);
            anchor += byte < 0x80 && std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte))
                                                             : '-';
        }
        return anchor;
    }

    void addPart(const XmlNode& parent, const Part& part) {
        const XmlNode* node = document::lastChildNamed(parent, part.element);
        if (node == nullptr || firstElement(*node) == nullptr) {
            return;
        }
        Section& section = add(part.title, part.title);
        if (!part.columns.empty()) {
            section.tables.push_back(table("", entriesOf(parent, part.element), part.columns));
            return;
        }
        for (const XmlNode* child = firstElement(*node); child != nullptr;
             child = nextElement(*child)) {
            section.fields.emplace_back(child->name(), shown(*node, child->name()));
        }
    }

    [[nodiscard]] Table table(const std::string& title, const std::vector<const XmlNode*>& entries,
                              std::span<const Column> columns) const {
        Table table{title, {}, {}};
        for (const Column& column : columns) {
            table.columns.emplace_back(column.title);
        }
        for (const XmlNode* entry : entries) {
            auto& row = table.rows.emplace_back();
            for (const Column& column : columns) {
                row.push_back(shown(*entry, column.element));
            }
        }
        return table;
    }

    void addLanguages() {
        std::string languages;
        for (const XmlNode* language : entriesOf(*configuration_, "preferredLanguages")) {
            languages +=
                (languages.empty() ? "" : ", ") + withoutSecrets(document::textOf(*language));
        }
        if (!languages.empty()) {
            add("Languages", "languages").fields.emplace_back("preferred", languages);
        }
    }

    // --- Channels ------------------------------------------------------------------------------

    [[nodiscard]] std::string serviceName(const XmlNode& service) const {
        const std::string name = shown(service, "outputName");
        return name.empty() ? shown(service, "inputName") : name;
    }

    [[nodiscard]] std::string moduleName(const XmlNode& module) const {
        const std::string name = shown(module, "name");
        return shortened(name.empty() ? shown(module, "mac") : name);
    }

    static std::string scrambling(const XmlNode& service) {
        const XmlNode* decrypt = document::lastChildNamed(service, "decrypt");
        return decrypt != nullptr && numberOf(*decrypt) == 1 ? "descrambled" : "";
    }

    // By LCN; channels without one come last.
    void addChannels() {
        struct Channel {
            int lcn;
            std::vector<std::string> row;
        };
        std::vector<Channel> channels;
        for (const XmlNode* module : entriesOf(*configuration_, "modules")) {
            for (const XmlNode* service : entriesOf(*module, "services")) {
                const XmlNode* node = document::lastChildNamed(*service, "lcn");
                const int lcn = node == nullptr ? 0 : numberOf(*node);
                channels.push_back(
                    {lcn,
                     {lcn > 0 ? std::to_string(lcn) : "", serviceName(*service),
                      shown(*service, "outputSid"), moduleName(*module), shown(*service, "inputId"),
                      shown(*service, "outputId"), scrambling(*service)}});
            }
        }
        if (channels.empty()) {
            return;
        }
        std::stable_sort(channels.begin(), channels.end(), [](const Channel& a, const Channel& b) {
            return std::pair(a.lcn < 1, a.lcn) < std::pair(b.lcn < 1, b.lcn);
        });
        Table table{
            "", {"LCN", "Name", "Service id", "Module", "Input", "Output", "Scrambling"}, {}};
        for (Channel& channel : channels) {
            table.rows.push_back(std::move(channel.row));
        }
        add("Channels", "channels").tables.push_back(std::move(table));
    }

    // --- Modules -------------------------------------------------------------------------------

    // The entries of a list by the number in their child `name`.
    using Numbered = std::map<int, const XmlNode*>;

    [[nodiscard]] Numbered numbered(const char* list, const char* name) const {
        Numbered entries;
        for (const XmlNode* entry : entriesOf(*configuration_, list)) {
            if (const XmlNode* child = document::lastChildNamed(*entry, name)) {
                entries.emplace(numberOf(*child), entry);  // the first of several
            }
        }
        return entries;
    }

    // What the child `name` refers to by its number.
    static const XmlNode* referred(const Numbered& entries, const XmlNode& parent,
                                   const char* name) {
        const XmlNode* child = document::lastChildNamed(parent, name);
        const auto found = child == nullptr ? entries.end() : entries.find(numberOf(*child));
        return found == entries.end() ? nullptr : found->second;
    }

    void addModule(const XmlNode& module) {
        const std::string mac = shown(module, "mac");
        Section& section = add("Module " + moduleName(module), "module-" + mac);
        for (const Column& field : kModuleFields) {
            if (const std::string text = shown(module, field.element); !text.empty()) {
                section.fields.emplace_back(field.title, text);
            }
        }
        if (const XmlNode* id = document::lastChildNamed(module, "dvbNetworkId")) {
            const XmlNode* network = referred(networks_, module, "dvbNetworkId");
            const std::string name =
                network == nullptr ? "" : " (" + shortened(shown(*network, "name")) + ")";
            section.fields.emplace_back("DVB network",
                                        withoutSecrets(document::textOf(*id)) + name);
        }
        addInputs(module, section);
        if (const auto outputs = entriesOf(module, "outputs"); !outputs.empty()) {
            section.tables.push_back(table("Outputs", outputs, kOutputColumns));
        }
        section.fields.emplace_back("Services",
                                    std::to_string(entriesOf(module, "services").size()));
    }

    static std::string typeOf(const XmlNode& input) {
        constexpr const char* kTypes[] = {"satellite", "terrestrial", "cable"};
        const XmlNode* type = document::lastChildNamed(input, "type");
        const int number = type == nullptr ? -1 : numberOf(*type);
        return number >= 0 && number < 3 ? kTypes[number] : "";
    }

    // Of a satellite input the DiSEqC position tells the polarity, and the band where it has none.
    [[nodiscard]] std::string reception(const XmlNode& input) const {
        std::string text = shown(input, "bandwidth");
        if (const XmlNode* position = referred(positions_, input, "diseqc")) {
            text = shortened(shown(*position, "polarity")) + ", " +
                   shortened(shown(*position, "band"));
        } else if (text.empty()) {
            text = shown(input, "band");
        }
        return text;
    }

    void addInputs(const XmlNode& module, Section& section) const {
        Table table{"Inputs",
                    {"Input", "Active", "Type", "Frequency", "Polarity or bandwidth",
                     "Original network id", "Transport stream id"},
                    {}};
        for (const XmlNode* input : entriesOf(module, "inputs")) {
            table.rows.push_back({shown(*input, "inputId"), shown(*input, "active"), typeOf(*input),
                                  shown(*input, "frequency"), reception(*input),
                                  shown(*input, "onid"), shown(*input, "tsid")});
        }
        if (!table.rows.empty()) {
            section.tables.push_back(std::move(table));
        }
    }

    const Document& document_;
    bool withSecrets_;
    const XmlNode* configuration_ = nullptr;
    Numbered networks_;
    Numbered positions_;
    Overview overview_;
    std::set<std::string> anchors_;
    std::map<std::string, int> lastNumbers_;  // behind each anchor that more than one wanted
};

}  // namespace

Overview overviewOf(const Document& document, bool withSecrets) {
    return Making(document, withSecrets).overview();
}

}  // namespace tarvo_backup
