// The export of the headend's configuration.
#pragma once

#include <map>
#include <string>

#include "command/command.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/watched_database.h"
#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// Reads the configuration and state databases and builds the `configuration` element, in the
// command's result document under `data` / `getConfigurationResult`.
//
// A database that cannot be opened is recorded as error 102. A select that fails gives a section
// without rows and no error.
class CmdGetConfiguration : public Command {
  public:
    using Command::Command;

    void execute() override;

    // The element that execute built; it stays the command's. Null before execute, and after one
    // that could not open a database.
    [[nodiscard]] document::XmlNode* getConfigurationNode() const { return configurationNode_; }

    // Whether nobody else has changed one of the databases while the element was built from it. No
    // lock is held for that: the device's other programs go first.
    [[nodiscard]] bool isOfOneState() const { return isOfOneState_; }

    // For the section writers:

    // Open while the sections are built; asked for anew for each statement.
    sqlite3* configDb() { return configDb_.handle(); }
    sqlite3* stateDb() { return stateDb_.handle(); }

    // A new element with the stored text of a setting; without text when the setting is missing.
    document::XmlNode* settingElement(const char* name, const char* key);

  private:
    bool openDatabases();
    void loadGlobalSettings();
    void appendSections();
    document::XmlNode* sectionElement(const mapping::Element& section);
    document::XmlNode* settings(const mapping::Element& element);

    tarvodb::WatchedDatabase configDb_;
    tarvodb::WatchedDatabase stateDb_;
    bool isOfOneState_ = true;
    std::map<std::string, tarvodb::Record<tarvodb::configuracionWebGlobal>> globalSettings_;
    document::XmlNode* configurationNode_ = nullptr;
};

}  // namespace tarvo_remote_control
