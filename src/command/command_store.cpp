// Command::save and Command::load.
#include <sqlite3.h>
#include <syslog.h>

#include "command/command.h"
#include "db/operations.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

namespace {

using tarvodb::RCCommand;

// Without the equals sign after `version`: stored rows carry the declaration like this.
constexpr const char* kStoredDeclaration = R"(<?xml version"1.0" encoding="utf-8"?>)";

}  // namespace

bool Command::save() {
    store_ = tarvodb::openDatabase(tarvodb::kCommandDatabase);
    if (!store_) {
        return false;
    }
    if (status_ == RunStatus::toBeRemoved) {
        if (rowId_ > 0) {
            platform::debugLog(LOG_DEBUG, "Deleting command from DB");
            tarvodb::Record<RCCommand> record;
            record.put(RCCommand::id, long{rowId_});
            tarvodb::deleteId(record, store_.get());
        }
        store_.reset();
        return true;
    }
    if (tarvodb::execWithRetries(store_.get(), "BEGIN TRANSACTION") != SQLITE_OK) {
        return false;
    }
    platform::debugLog(LOG_DEBUG, "Saving command to DB");
    bool saved = writeRow(store_.get());
    if (saved) {
        saved = tarvodb::execWithRetries(store_.get(), "COMMIT") == SQLITE_OK;
    } else {
        tarvodb::execWithRetries(store_.get(), "ROLLBACK");
    }
    store_.reset();
    return saved;
}

bool Command::writeRow(sqlite3* db) {
    tarvodb::Record<RCCommand> record;
    record.put(RCCommand::commandId, long{id_});
    record.put(RCCommand::command,
               kStoredDeclaration + document::printed(commandDocument_, document::kNoIndenting));
    record.put(RCCommand::result, result_.toXml(document::kNoIndenting));
    record.put(RCCommand::status, static_cast<int>(status_));
    record.put(RCCommand::nextTime, long{nextTime_});  // seconds: too long for the short form
    record.put(RCCommand::schedule, schedule_);
    if (rowId_ >= 1) {
        record.put(RCCommand::id, long{rowId_});
        return tarvodb::update(record, db);
    }
    if (!tarvodb::insert(record, db)) {
        return false;
    }
    rowId_ = record[RCCommand::id].asInt();
    return true;
}

void Command::load(const tarvodb::Record<RCCommand>& record) {
    rowId_ = record[RCCommand::id].asInt();
    nextTime_ = record[RCCommand::nextTime].asInt();
    schedule_ = record[RCCommand::schedule].asString();
    status_ = static_cast<RunStatus>(record[RCCommand::status].asInt());
    if (status_ == RunStatus::done) {
        result_.loadXml(record[RCCommand::result].asString());
    }
}

}  // namespace tarvo_remote_control
