// The import of a configuration.
#pragma once

#include <set>

#include "command/command.h"
#include "db/database.h"
#include "db/transaction.h"
#include "document/deferred_document.h"
#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// Writes the sections of a `configuration` element back into the configuration database, all or
// nothing, and then runs the system actions that the changes need.
//
// Progress goes to standard output, changes and errors to the system log. A section that fails
// records its own error, if it has one, and 202 after it; nothing of the import is in the database
// then. A post-action that fails (203, 911) leaves the configuration stored. The result document's
// `result` is 0 after a full success and 1 after a failed section or post-action.
class CmdSetConfiguration : public Command {
  public:
    using Command::Command;

    // The command form: applies the command element's child `configuration`.
    void execute() override;

    // Null records error 101. `document` is given when the element is of one, which outlives this.
    void apply(const document::XmlNode* configuration,
               document::DeferredDocument* document = nullptr);

    // Gives the import up and closes the database, whether or not the rollback succeeds; one that
    // does not is error 102. Returns SQLite's result of closing.
    int rollbackAndClose();

    // For the section handlers:

    // The configuration database, in the import's transaction.
    [[nodiscard]] sqlite3* db() const { return db_.get(); }
    // Gives an element its content, unless it has it: a handler of what an import defers calls this
    // before it reads. The element that was loaded before is empty then.
    void load(const document::XmlNode& element);
    // Has a post-action run once the import is stored.
    void request(mapping::PostAction action);

  private:
    bool applySections(const document::XmlNode& configuration);
    [[nodiscard]] tarvodb::Transaction transaction() const { return {db(), tarvodb::Tries::three}; }
    bool runPostActions();
    [[nodiscard]] bool isRequested(mapping::PostAction action) const {
        return postActions_.contains(action);
    }

    document::DeferredDocument* document_ = nullptr;
    tarvodb::Database db_;
    std::set<mapping::PostAction> postActions_;
};

}  // namespace tarvo_remote_control
