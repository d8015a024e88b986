#include "backup/references_check.h"

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "mapping/document_tree.h"

namespace tarvo_backup {

using document::childrenOf;
using document::lastChildNamed;
using document::numberOf;
using document::textOf;
using mapping::Element;

namespace {

using Numbers = std::set<int>;

// Who has a number that only one may have, by the number and what else tells it from others.
template <class Key>
using Owners = std::map<Key, std::string>;

// The number that the import takes of several children of a name; 0 when there is none.
int numberIn(const XmlNode& parent, const char* name) {
    const XmlNode* child = lastChildNamed(parent, name);
    return child == nullptr ? 0 : numberOf(*child);
}

// The numbers of the entries of a list, which may be missing; `name` is the child that holds them.
Numbers numbersIn(const XmlNode* list, const char* name) {
    Numbers numbers;
    if (list == nullptr) {
        return numbers;
    }
    for (const XmlNode& entry : childrenOf(*list)) {
        if (const XmlNode* number = lastChildNamed(entry, name)) {
            numbers.insert(numberOf(*number));
        }
    }
    return numbers;
}

Numbers outputsSwitchedOff(const XmlNode& outputs) {
    Numbers numbers;
    for (const XmlNode& output : childrenOf(outputs)) {
        const XmlNode* active = lastChildNamed(output, "active");
        if (active != nullptr && numberOf(*active) == 0) {
            numbers.insert(numberIn(output, "outputId"));
        }
    }
    return numbers;
}

// TV sets number radio channels apart from the others.
bool isRadio(const XmlNode& service) {
    constexpr int kRadio = 2;
    constexpr int kAdvancedCodecRadio = 10;
    const int type = numberIn(service, "serviceTypeDVB");
    return type == kRadio || type == kAdvancedCodecRadio;
}

// By module or network, whether it is radio, and number.
using Channel = std::tuple<const XmlNode*, int, bool, int>;

class ReferencesCheck {
  public:
    ReferencesCheck(const XmlNode& configuration, Findings& findings)
        : walk_(findings),
          networks_(lastChildNamed(configuration, "dvbNetworks")),
          positions_(lastChildNamed(configuration, "diseqcs")),
          modules_(lastChildNamed(configuration, "modules")),
          knownNetworks_(numbersIn(networks_, "id")),
          knownPositions_(numbersIn(positions_, "position")) {}

    void run() {
        const auto section = [](const XmlNode& node) -> const Element& {
            return *rowOf(&mapping::kConfiguration, node);
        };
        if (positions_ != nullptr) {
            checkPositions(section(*positions_));
        }
        if (modules_ != nullptr) {
            walk_.entries(
                section(*modules_), *modules_,
                [&](const Element& row, const XmlNode& module) { checkModule(row, module); });
        }
    }

  private:
    // The band of the first one counts.
    void checkPositions(const Element& list) {
        Owners<int> owners;
        walk_.entries(list, *positions_, [&](const Element&, const XmlNode& entry) {
            const int position = numberIn(entry, "position");
            if (position != 0) {
                claim(owners, position, entry, "position");
            }
        });
    }

    void checkModule(const Element& row, const XmlNode& module) {
        if (networks_ != nullptr) {
            checkReference(module, "dvbNetworkId", knownNetworks_, "DVB network");
        }
        const XmlNode* inputs = lastChildNamed(module, "inputs");
        const XmlNode* outputs = lastChildNamed(module, "outputs");
        const XmlNode* services = lastChildNamed(module, "services");
        if (inputs != nullptr && positions_ != nullptr) {
            walk_.entries(*rowOf(&row, *inputs), *inputs,
                          [&](const Element&, const XmlNode& input) {
                              checkReference(input, "diseqc", knownPositions_, "DiSEqC position");
                          });
        }
        if (services == nullptr) {
            return;
        }
        const Numbers known = numbersIn(inputs, "inputId");
        const Numbers off = outputs == nullptr ? Numbers{} : outputsSwitchedOff(*outputs);
        const int network = numberIn(module, "dvbNetworkId");
        const XmlNode* ofModule = network == 0 ? &module : nullptr;
        std::set<std::string> seen;
        walk_.entries(*rowOf(&row, *services), *services,
                      [&](const Element& entry, const XmlNode& service) {
                          if (inputs != nullptr) {
                              checkReference(service, "inputId", known, "input");
                          }
                          // Given twice, a service is still one.
                          const bool isSeen = !seen.insert(identityOf(entry, service)).second;
                          if (!isSeen && !off.contains(numberIn(service, "outputId"))) {
                              checkChannel(ofModule, network, service);
                          }
                      });
    }

    // In a network, or in a module that is in none that is known.
    void checkChannel(const XmlNode* module, int network, const XmlNode& service) {
        const int lcn = numberIn(service, "lcn");
        if (lcn > 0) {
            claim(channels_, Channel(module, network, isRadio(service), lcn), service, "lcn");
        }
    }

    template <class Key>
    void claim(Owners<Key>& owners, const Key& key, const XmlNode& entry, const char* name) {
        const auto [owner, isFirst] = owners.emplace(key, walk_.place());
        if (!isFirst) {
            const XmlNode& number = *lastChildNamed(entry, name);
            walk_.add(Severity::warning, number, name,
                      inQuotes(textOf(number)) + " is that of " + owner->second + " too");
        }
    }

    // 0 refers to nothing.
    void checkReference(const XmlNode& parent, const char* name, const Numbers& known,
                        const char* what) {
        const XmlNode* node = lastChildNamed(parent, name);
        if (node != nullptr && numberOf(*node) != 0 && !known.contains(numberOf(*node))) {
            walk_.add(Severity::warning, *node, name,
                      std::string("there is no ") + what + " " + inQuotes(textOf(*node)));
        }
    }

    Walk walk_;
    const XmlNode* networks_;
    const XmlNode* positions_;
    const XmlNode* modules_;
    Numbers knownNetworks_;
    Numbers knownPositions_;
    Owners<Channel> channels_;
};

}  // namespace

void checkReferences(const XmlNode& configuration, Findings& findings) {
    ReferencesCheck(configuration, findings).run();
}

}  // namespace tarvo_backup
