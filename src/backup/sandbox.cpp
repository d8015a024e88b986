#include "backup/sandbox.h"

#include <algorithm>
#include <string_view>

#include "backup/database_copies.h"
#include "backup/device_files.h"
#include "command/error_line.h"
#include "db/database.h"
#include "document/xml.h"
#include "import/regional.h"
#include "platform/debug_log.h"
#include "platform/platform.h"
#include "text/to_int.h"

namespace tarvo_backup {

using document::XmlNode;

namespace {

Sandbox* current = nullptr;

std::optional<Place> placeOf(const XmlNode* node) {
    if (node == nullptr) {
        return std::nullopt;
    }
    Place place;
    for (; node->parent() != nullptr; node = node->parent()) {
        std::size_t index = 0;
        for (const XmlNode* before = node->previous_sibling(); before != nullptr;
             before = before->previous_sibling()) {
            ++index;
        }
        place.push_back(index);
    }
    std::reverse(place.begin(), place.end());
    return place;
}

}  // namespace

Sandbox::Sandbox() : earlierDebugMask_(platform::debugMask) {
    std::vector<CopyJob> jobs;
    for (const char* database : kDatabases) {
        jobs.push_back({database, mapped(database)});
    }
    copyFromDevice(jobs);
    platform::debugMask |= platform::kDebugLogBit;
    current = this;
}

Sandbox::~Sandbox() {
    current = nullptr;
    platform::debugMask = earlierDebugMask_;
}

Sandbox* Sandbox::active() { return current; }

void Sandbox::setDocument(const std::string& text) { traffic_.files[kDocument] = text; }

std::string Sandbox::mapped(const std::string& path) const {
    return folder_.path() + path.substr(path.rfind('/'));
}

void Sandbox::startAfresh() {
    Traffic fresh;
    fresh.files = std::move(traffic_.files);
    traffic_ = std::move(fresh);
    document::lastRead = nullptr;  // the tree of the run before is gone
}

// The debug log tells of each error as a command records it.
void Sandbox::noteLine(int priority, const std::string& text) {
    constexpr std::string_view kErrorLine = tarvo_remote_control::kErrorLine;
    if (!text.starts_with(kErrorLine)) {
        traffic_.log.push_back({priority, text});
        return;
    }
    const std::string error = text.substr(kErrorLine.size());
    traffic_.errors.push_back({.code = tarvo_remote_control::ErrorCode{text::toInt(error.c_str())},
                               .text = error.substr(std::min(error.find(' ') + 1, error.size())),
                               .place = placeOf(document::lastRead)});
}

void Sandbox::noteScript(const std::string& command) {
    traffic_.scripts.push_back(command);
    const auto inItsPlace = platform::fileStatus(tarvo_remote_control::kTimeOffsetsFile);
    if (command.starts_with(tarvo_remote_control::kTimeOffsetsScript) &&
        !(inItsPlace && inItsPlace->isFolder)) {
        // Where it succeeds it leaves a file, without which nothing further is done.
        traffic_.files.insert_or_assign(tarvo_remote_control::kTimeOffsetsFile, "");
    }
}

}  // namespace tarvo_backup
