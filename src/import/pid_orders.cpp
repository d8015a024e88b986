// The elementary streams of an output service and their order.
//
// As with services, a stream that the document does not list is only marked for removal.
#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"
#include "mapping/services.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::Record;
using tarvodb::RemovalMark;
using tarvodb::StatusMark;
using Stream = tarvodb::PIDsSalidaGlobal;
using Service = tarvodb::ServiciosSalidaGlobal;

namespace {

constexpr const Element& kOrder = mapping::rowNamed(mapping::kPidOrder, "order");

// What one `pidOrder` element gives, by the rows of its children. The last child of a name counts;
// a missing one counts as the empty text.
class GivenStream {
  public:
    explicit GivenStream(const XmlNode& pidOrder) {
        texts_.fill("");
        for (const XmlNode& child : document::childrenOf(pidOrder)) {
            if (const Element* element = mapping::elementOf(mapping::kPidOrder, child)) {
                texts_[indexOf(*element)] = document::textOf(child);
                reportLanguage(*element, child);
            }
        }
    }

    [[nodiscard]] const char* text(const Element& element) const {
        return texts_[indexOf(element)];
    }

  private:
    static std::size_t indexOf(const Element& element) {
        return static_cast<std::size_t>(&element - mapping::kPidOrder);
    }
    static void reportLanguage(const Element& element, const XmlNode& child) {
        if (element.column.index == Stream::AudioCode) {
            reportProgress(std::string(element.name) + " node_value: " + document::textOf(child));
        }
    }

    std::array<const char*, std::size(mapping::kPidOrder)> texts_;
};

// What a stream is known by: the texts of its key columns, "" for the others.
using StreamKey = std::array<std::string_view, std::size(mapping::kPidOrder)>;

//   textOf(element) -> the text of that child or column
template <class TextOf>
StreamKey keyBy(TextOf textOf) {
    StreamKey key;
    std::transform(std::begin(mapping::kPidOrder), std::end(mapping::kPidOrder), key.begin(),
                   [&](const Element& element) {
                       return element.take == mapping::Take::key ? textOf(element) : "";
                   });
    return key;
}

// The stored streams of a service by their keys, which nothing changes here. Of equal ones the
// first counts.
class StoredStreams {
  public:
    explicit StoredStreams(std::vector<Record<Stream>>& streams) {
        for (auto& stream : streams) {
            const auto textOf = [&](const Element& element) {
                return stream.value(element.column.index).textOrEmpty();
            };
            streams_.emplace(keyBy(textOf), &stream);
        }
    }

    // Null when there is none.
    [[nodiscard]] Record<Stream>* find(const GivenStream& given) const {
        const auto found =
            streams_.find(keyBy([&](const Element& element) { return given.text(element); }));
        return found == streams_.end() ? nullptr : found->second;
    }

  private:
    std::map<StreamKey, Record<Stream>*> streams_;
};

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
    stream.set(Stream::MAC, service[Service::MAC]);
    stream.set(Stream::fk_idEntrada, service[Service::fk_idEntrada]);
    stream.set(Stream::fk_idSalidasLogicas, service[Service::fk_idSalidasLogicas]);
    stream.set(Stream::fk_idSSG, idSSG);
    for (const Element& element : mapping::kPidOrder) {
        stream.setValue(element.column.index, tarvodb::columnValue(given.text(element)));
    }
    stream.set(Stream::EstadoBorrado, RemovalMark::listed);
    stream.set(Stream::EstadoPID, StatusMark::changed);
    return insertRecord(command, stream, kMessage);
}

// The streams of a service, all to be removed until the document lists them.
std::vector<Record<Stream>> markedStreams(const CmdSetConfiguration& command,
                                          const tarvodb::tSqlite3int& idSSG) {
    auto streams = tarvodb::selectByFkIdSSG(command.db(), idSSG);
    for (auto& stream : streams) {
        stream.set(Stream::EstadoBorrado, RemovalMark::toBeRemoved);
        stream.set(Stream::EstadoPID, StatusMark::changed);
    }
    return streams;
}

// Lists a stored stream, or inserts a new one.
bool applyStream(CmdSetConfiguration& command, const tarvodb::tSqlite3int& idSSG,
                 const StoredStreams& streams, const GivenStream& given) {
    auto* stream = streams.find(given);
    if (stream == nullptr) {
        return insertStream(command, idSSG, given);
    }
    stream->setValue(kOrder.column.index, tarvodb::columnValue(given.text(kOrder)));
    stream->set(Stream::EstadoBorrado, RemovalMark::listed);
    return true;
}

bool updateStreams(CmdSetConfiguration& command, std::vector<Record<Stream>>& streams) {
    return std::all_of(streams.begin(), streams.end(), [&](Record<Stream>& stream) {
        return updateRecord(command, stream, "Could not update pidOrder");
    });
}

}  // namespace

bool apply::pidOrders(CmdSetConfiguration& command, int idSSG, const XmlNode& section) {
    const tarvodb::tSqlite3int key(long{idSSG});
    reportProgress("Processing: PIDs --->idSSG: " + std::to_string(idSSG));
    auto streams = markedStreams(command, key);
    const StoredStreams stored(streams);
    bool applied = true;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kPidOrders[0].name)) {
            return fail(command, ErrorCode::invalidCommand, "No pidOrder element found");
        }
        applied &= applyStream(command, key, stored, GivenStream(element));
    }
    return applied && updateStreams(command, streams);
}

}  // namespace tarvo_remote_control
