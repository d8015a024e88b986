// Command::save and Command::load.
#include <syslog.h>

#include "command/command.h"
#include "db/operations.h"
#include "db/transaction.h"
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
            record.set(RCCommand::id, long{rowId_});
            tarvodb::deleteId(record, store_.get());
        }
        store_.reset();
        return true;
    }
    tarvodb::Transaction transaction(store_.get(), tarvodb::Tries::three);
    if (!transaction.begin()) {
        return false;
    }
    platform::debugLog(LOG_DEBUG, "Saving command to DB");
    tarvodb::Record<RCCommand> record = storedForm();
    const bool written =
        rowId_ >= 1 ? tarvodb::update(record, store_.get()) : tarvodb::insert(record, store_.get());
    if (!written) {
        transaction.rollback();
    }
    const bool saved = written && transaction.commit();
    if (saved) {
        rowId_ = record[RCCommand::id].asInt();
    }
    store_.reset();
    return saved;
}

tarvodb::Record<RCCommand> Command::storedForm() {
    tarvodb::Record<RCCommand> record;
    if (rowId_ >= 1) {
        record.set(RCCommand::id, long{rowId_});
    }
    record.set(RCCommand::commandId, long{id_});
    record.set(RCCommand::command,
               kStoredDeclaration + document::printed(commandDocument_, document::kNoIndenting));
    record.set(RCCommand::result, result_.toXml(document::kNoIndenting));
    record.set(RCCommand::status, static_cast<int>(status_));
    record.set(RCCommand::nextTime, long{nextTime_});  // seconds: too long for the short form
    record.set(RCCommand::schedule, schedule_);
    return record;
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
