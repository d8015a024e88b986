// The elementary streams of an output service and their order.
//
// As with services, a stream that the document does not list is only marked for removal.
#include <string>
#include <vector>

#include "db/clauses.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using Stream = tarvodb::PIDsSalidaGlobal;
using Service = tarvodb::ServiciosSalidaGlobal;

namespace {

// What one `pidOrder` element gives; a missing child counts as the empty text.
struct GivenStream {
    const char* languageCode = "";
    const char* streamId = "";
    const char* type = "";
    const char* order = "";
};

GivenStream read(const XmlNode& element) {
    GivenStream given;
    for (const XmlNode& child : document::childrenOf(element)) {
        const char* text = document::textOf(child);
        if (document::hasName(child, "languageCode")) {
            given.languageCode = text;
            reportProgress(std::string("languageCode node_value: ") + text);
        } else if (document::hasName(child, "streamId")) {
            given.streamId = text;
        } else if (document::hasName(child, "type")) {
            given.type = text;
        } else if (document::hasName(child, "order")) {
            given.order = text;
        }
    }
    return given;
}

Record<Stream>* streamOf(std::vector<Record<Stream>>& streams, const GivenStream& given) {
    for (auto& stream : streams) {
        if (given.languageCode == stream[Stream::AudioCode].asString() &&
            given.streamId == stream[Stream::StreamId].asString() &&
            given.type == stream[Stream::Tipo].asString()) {
            return &stream;
        }
    }
    return nullptr;
}

// Inserts a stream that has no row yet. It takes its module, input and output from its service.
bool insertStream(CmdSetConfiguration& command, const tarvodb::tSqlite3int& idSSG,
                  const GivenStream& given) {
    constexpr const char* kMessage = "Could not insert pidOrder";
    const auto services =
        tarvodb::doSelect<Service>(command.db(), tarvodb::clause::kByService, idSSG.text());
    if (services.empty()) {
        return fail(command, ErrorCode::database, kMessage);
    }
    const Record<Service>& service = services.front();
    Record<Stream> stream;
    stream.put(Stream::MAC, service[Service::MAC]);
    stream.put(Stream::fk_idEntrada, service[Service::fk_idEntrada]);
    stream.put(Stream::fk_idSalidasLogicas, service[Service::fk_idSalidasLogicas]);
    stream.put(Stream::AudioCode, given.languageCode);
    stream.put(Stream::StreamId, given.streamId);
    stream.put(Stream::fk_idSSG, idSSG);
    stream.put(Stream::Orden, given.order);
    stream.put(Stream::Tipo, given.type);
    stream.put(Stream::EstadoBorrado, RemovalMark::listed);
    stream.put(Stream::EstadoPID, StatusMark::changed);
    return insertRecord(command, stream, kMessage);
}

}  // namespace

bool applyPidOrders(CmdSetConfiguration& command, int idSSG, const XmlNode& section) {
    const tarvodb::tSqlite3int key(long{idSSG});
    reportProgress("Processing: PIDs --->idSSG: " + std::to_string(idSSG));
    auto streams = tarvodb::selectByFkIdSSG(command.db(), key);
    for (auto& stream : streams) {
        stream.set(Stream::EstadoBorrado, RemovalMark::toBeRemoved);
        stream.set(Stream::EstadoPID, StatusMark::changed);
    }
    bool inserted = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "pidOrder")) {
            return fail(command, ErrorCode::invalidCommand, "No pidOrder element found");
        }
        const GivenStream given = read(element);
        if (auto* stream = streamOf(streams, given)) {
            stream->set(Stream::Orden, given.order);
            stream->set(Stream::EstadoBorrado, RemovalMark::listed);
        } else {
            inserted &= insertStream(command, key, given);
        }
    }
    if (!inserted) {
        return false;
    }
    for (auto& stream : streams) {
        if (!updateRecord(command, stream, "Could not update pidOrder")) {
            return false;
        }
    }
    return true;
}

}  // namespace tarvo_remote_control
