// The export of the headend's configuration.
#pragma once

#include <map>
#include <string>

#include "command/command.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/watched_database.h"
#include "document/writer.h"
#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// Reads the configuration and state databases and makes the `configuration` element: in the
// command's result document under `data` / `getConfigurationResult`, or for a writer.
//
// A database that cannot be opened is recorded as error 102. A select that fails gives a section
// without rows and no error.
class CmdGetConfiguration : public Command {
  public:
    using Command::Command;
    // The element goes to `writer` instead, which outlives the command. Nothing is written when a
    // database cannot be opened.
    explicit CmdGetConfiguration(document::Writer& writer) : writer_(&writer) {}

    void execute() override;

    // The element in the result document; it stays the command's. Null before execute, and after
    // one that could not open a database.
    [[nodiscard]] document::XmlNode* getConfigurationNode() const { return configurationNode_; }

    // Whether nobody else has changed one of the databases while the element was built from it. No
    // lock is held for that: the device's other programs go first.
    [[nodiscard]] bool isOfOneState() const { return isOfOneState_; }

    // For the section writers:

    // Open while the sections are built; asked for anew for each statement.
    sqlite3* configDb() { return configDb_.handle(); }
    sqlite3* stateDb() { return stateDb_.handle(); }

    // Where the elements go.
    [[nodiscard]] document::Writer& out() const { return *out_; }

  private:
    bool openDatabases();
    void loadGlobalSettings();
    void writeConfiguration(document::Writer& out);
    void writeSettings(const mapping::Element& element);
    void settingElement(const char* name, const char* key);

    tarvodb::WatchedDatabase configDb_;
    tarvodb::WatchedDatabase stateDb_;
    bool isOfOneState_ = true;
    std::map<std::string, tarvodb::Record<tarvodb::configuracionWebGlobal>> globalSettings_;
    document::Writer* writer_ = nullptr;  // null: the result document
    document::Writer* out_ = nullptr;
    document::XmlNode* configurationNode_ = nullptr;
};

}  // namespace tarvo_remote_control
