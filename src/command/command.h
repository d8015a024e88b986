// The base of all commands of the remote-control library.
#pragma once

#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>

#include "command/error_codes.h"
#include "command/result_document.h"
#include "db/database.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/xml.h"

namespace tarvo_remote_control {

// A command document is malformed; what() says how.
class CommandParsingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

enum class RunStatus : std::int32_t {
    created = 0,
    running = 1,
    done = 2,
    toBeRemoved = 3,  // from the command store; set from outside
};

// A command owns its result document and, when a server sent it, a copy of the command document.
// Errors are recorded in the result document, never thrown. Commands are large (each holds two XML
// pools) and are made as locals.
class Command {
  public:
    // `commandDocument` is the element that a server sent, with the children `id` and `data`, or
    // null. It is copied. Throws CommandParsingError when a child is missing.
    explicit Command(const document::XmlNode* commandDocument = nullptr);
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Executes the command, and again up to ten times, one second apart, while the database could
    // not be accessed. The outcome is in errors() and in the result document.
    virtual void run();
    virtual void execute() = 0;

    // The error codes recorded so far, ascending.
    [[nodiscard]] const std::set<ErrorCode>& errors() const { return result_.errors(); }
    void addError(ErrorCode code, const std::string& detail = "") {
        result_.addError(code, detail);
    }

    // See ResultDocument::createNode.
    document::XmlNode* createNode(const char* name, const char* value = nullptr) {
        return result_.createNode(name, value);
    }
    ResultDocument& result() { return result_; }
    std::string resultXml() { return result_.toXml(); }

    [[nodiscard]] std::int32_t id() const { return id_; }
    [[nodiscard]] RunStatus status() const { return status_; }
    void setStatus(RunStatus status) { status_ = status; }

    // The command store: one row of RCCommand in the command database (command_store.cpp).

    // The store's row of this command, 0 while it has none.
    [[nodiscard]] std::int32_t rowId() const { return rowId_; }
    // When the command is next due, and its schedule; kept for the server's scheduler.
    [[nodiscard]] std::int32_t nextTime() const { return nextTime_; }
    void setNextTime(std::int32_t time) { nextTime_ = time; }
    [[nodiscard]] const std::string& schedule() const { return schedule_; }
    void setSchedule(const std::string& schedule) { schedule_ = schedule; }

    // Inserts or updates the command's row, or removes it when the status is toBeRemoved. False
    // when nothing was stored; a removal counts as done whatever became of it.
    bool save();
    // Takes row id, due time, schedule and status from a stored row, and the result document when
    // the command is done; command id and command document stay. Throws document::ParseError when
    // the stored result is not XML.
    void load(const tarvodb::Record<tarvodb::RCCommand>& record);

  protected:
    // The element inside the command document's `data`, null when there is no document.
    [[nodiscard]] const document::XmlNode* commandNode() const { return commandNode_; }

  private:
    void parseCommandDocument(const document::XmlNode& commandDocument);
    tarvodb::Record<tarvodb::RCCommand> storedForm();

    std::int32_t id_ = 0;
    ResultDocument result_;
    RunStatus status_ = RunStatus::created;
    document::XmlDocument commandDocument_;
    const document::XmlNode* commandNode_ = nullptr;
    std::int32_t rowId_ = 0;
    std::int32_t nextTime_ = 0;
    std::string schedule_;
    // Stays open after a save that could not begin its transaction; otherwise closed.
    tarvodb::Database store_;
};

}  // namespace tarvo_remote_control
