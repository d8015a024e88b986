// A module's output services.
//
// A service that the document does not list is never deleted: its row is marked for removal, and
// the device's own software acts on the mark.
#include "mapping/services.h"

#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "device/device_identity.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::PIDsSalidaGlobal;
using tarvodb::Record;
using tarvodb::RemovalMark;
using tarvodb::StatusMark;
using Service = tarvodb::ServiciosSalidaGlobal;

namespace {

constexpr const Element& kOutputId = mapping::rowNamed(mapping::kService, "outputId");
constexpr const Element& kOutputSid = mapping::rowNamed(mapping::kService, "outputSid");
constexpr const Element& kLcn = mapping::rowNamed(mapping::kService, "lcn");
constexpr const Element& kDecrypt = mapping::rowNamed(mapping::kService, "decrypt");
constexpr const Element& kPidOrdersList = mapping::rowNamed(mapping::kService, "pidOrders");

// Of a service that has no row yet; newService adds what the element and its module tell.
struct Default {
    Service::Column column;
    int value;
};

constexpr Default kDefaults[] = {
    {Service::OSID, 0},         {Service::NombreForzado, 0}, {Service::Tipo, 1},
    {Service::VideoFormat, 0},  {Service::Service_Type, 0},  {Service::Video_peak_bitrate, 7000},
    {Service::fk_idEntrada, 0}, {Service::Seleccionado, 1},  {Service::Especial, 0},
    {Service::Orden, 2},        {Service::Descifrar, 0},     {Service::Transcoding, 0},
    {Service::OLCN, 0},         {Service::LCN, 0},           {Service::LCNForzado, 0},
    {Service::SimulcastLCN, 0}, {Service::idEPG, 0},         {Service::DuplicadoClonado, 0},
    {Service::SSU, 0},          {Service::PMT_pid, 0},
};

Record<Service> newService(const char* mac, int outputId, int outputSid) {
    Record<Service> service;
    service.set(Service::MAC, mac);
    service.set(Service::SID, outputSid);
    service.set(Service::NombreEntrada, "");
    service.set(Service::NombreSalida, "");
    service.set(Service::fk_idSalidasLogicas, outputId);
    for (const Default& each : kDefaults) {
        service.set(each.column, each.value);
    }
    return service;
}

// The stored services of a module, found by output and service id. An element can give its row
// another id, by which the elements after it find the row.
class StoredServices {
  public:
    explicit StoredServices(std::vector<Record<Service>>& services) : services_(services) {
        for (std::size_t row = 0; row < services.size(); ++row) {
            places_.insert(placeOf(row));
        }
    }

    // Calls change(row) on the first row with these ids and returns its result; nothing when there
    // is no such row.
    template <class Change>
    std::optional<bool> changeFirst(int outputId, int outputSid, Change change) {
        const auto found = places_.lower_bound({outputId, outputSid, 0});
        if (found == places_.end() || std::get<0>(*found) != outputId ||
            std::get<1>(*found) != outputSid) {
            return std::nullopt;
        }
        const std::size_t row = std::get<2>(*found);
        places_.erase(found);
        const bool result = change(services_[row]);
        places_.insert(placeOf(row));
        return result;
    }

  private:
    // Output, service id, and the row's place among the rows.
    using Place = std::tuple<int, int, std::size_t>;

    [[nodiscard]] Place placeOf(std::size_t row) const {
        const Record<Service>& service = services_[row];
        return {service[Service::fk_idSalidasLogicas].asInt(), service[Service::SID].asInt(), row};
    }

    std::vector<Record<Service>>& services_;
    std::set<Place> places_;
};

// Writes one `service` element.
class ServiceImport {
  public:
    ServiceImport(CmdSetConfiguration& command, Record<Service>& service, bool isNew)
        : command_(command), service_(service), isNew_(isNew) {}

    // A new row is inserted and the streams are written also when a child was refused: the caller
    // rolls everything back, and reports what else is wrong before.
    bool apply(const XmlNode& element) {
        bool applied = applyChildren(element);
        if (isNew_ || service_.changed) {
            service_.row.set(Service::EstadoServicio, StatusMark::changed);
        }
        service_.row.set(Service::EstadoBorrado, RemovalMark::listed);
        if (isNew_) {
            applied &= insertRecord(command_, service_.row, "Could not insert service");
        }
        if (pidOrders_ != nullptr) {
            applied &= apply::pidOrders(command_, service_.row.key().asInt(), *pidOrders_);
        }
        if (applied) {
            logChange("New SERVICE parameters: " + log_);
        }
        return applied;
    }

  private:
    bool applyChildren(const XmlNode& element) {
        for (const XmlNode& child : document::childrenOf(element)) {
            const Element* row = mapping::elementOf(mapping::kService, child);
            if (row == &kPidOrdersList) {
                pidOrders_ = &child;
            } else if (row != nullptr && !applyChild(*row, child)) {
                return false;
            }
        }
        return true;
    }

    bool applyChild(const Element& element, const XmlNode& child) {
        const int number = document::numberOf(child);
        if (!element.range.contains(number)) {
            return fail(command_, ErrorCode::invalidValue,
                        std::string(element.name) + " value cannot be greater than 65535");
        }
        if (&element == &kLcn && !applyLcn(number)) {
            return false;
        }
        if (&element == &kDecrypt) {
            applyDecrypt(number);
        }
        service_.take(element, child);
        appendToLog(log_, element.label, child);
        return true;
    }

    // What is descrambled comes first.
    void applyDecrypt(int decrypt) {
        service_.setNumber(Service::Orden, decrypt == 1 ? 1 : 2);
        service_.setNumber(Service::Descifrar, decrypt);
    }

    // On RNB-K408 another LCN is forced.
    bool applyLcn(int lcn) {
        if (service_.row[Service::LCN].asInt() == lcn) {
            return true;
        }
        if (lcn < kLcn.lowestOfOther) {
            // The one refusal of a configuration that is not logged.
            command_.addError(ErrorCode::invalidValue, "LCN value cannot be 0");
            return false;
        }
        if (DeviceIdentity::instance().isRNB()) {
            service_.setNumber(Service::LCNForzado, 1);
        }
        service_.setNumber(Service::LCN, lcn);
        return true;
    }

    CmdSetConfiguration& command_;
    Change<Service> service_;
    bool isNew_;
    const XmlNode* pidOrders_ = nullptr;
    std::string log_;
};

bool applyService(CmdSetConfiguration& command, const char* mac, StoredServices& services,
                  const XmlNode& element) {
    if (!document::hasName(element, mapping::kServices[0].name)) {
        return fail(command, ErrorCode::invalidCommand, "No service element found");
    }
    const auto outputId = requiredNumber(command, element, kOutputId, ErrorCode::invalidCommand);
    const auto outputSid =
        outputId ? requiredNumber(command, element, kOutputSid, ErrorCode::invalidCommand)
                 : std::nullopt;
    if (!outputSid) {
        return false;
    }
    const auto applied = services.changeFirst(*outputId, *outputSid, [&](Record<Service>& stored) {
        return ServiceImport(command, stored, false).apply(element);
    });
    if (applied) {
        return *applied;
    }
    Record<Service> added = newService(mac, *outputId, *outputSid);
    return ServiceImport(command, added, true).apply(element);
}

// Marks the streams of a service that is to be removed. The first failure ends it.
bool removeStreams(CmdSetConfiguration& command, const Record<Service>& service) {
    for (auto& pid : tarvodb::selectByFkIdSSG(command.db(), service.key())) {
        pid.set(PIDsSalidaGlobal::EstadoBorrado, RemovalMark::toBeRemoved);
        pid.set(PIDsSalidaGlobal::EstadoPID, StatusMark::changed);
        if (!updateRecord(command, pid, "Could not update pidIt")) {
            return false;
        }
    }
    return true;
}

// Writes the stored services back, the ones that the document did not list as to be removed.
bool saveServices(CmdSetConfiguration& command, std::vector<Record<Service>>& services) {
    bool saved = true;
    for (auto& service : services) {
        if (!holds(service[Service::EstadoBorrado], RemovalMark::listed)) {
            service.set(Service::Seleccionado, 0);
            service.set(Service::Orden, 0);
            service.set(Service::LCN, 0);
            service.set(Service::EstadoServicio, StatusMark::changed);
            saved &= removeStreams(command, service);
        }
        if (!updateRecord(command, service, "Could not update service")) {
            return false;
        }
    }
    return saved;
}

}  // namespace

bool apply::services(CmdSetConfiguration& command, const char* mac, const XmlNode& section) {
    reportProgress("Processing: Services");
    auto services = tarvodb::doSelect<Service>(command.db(), tarvodb::clause::kByMac, mac);
    for (auto& service : services) {
        service.set(Service::EstadoBorrado, RemovalMark::toBeRemoved);
    }
    StoredServices stored(services);
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!applyService(command, mac, stored, element)) {
            return false;
        }
    }
    return saveServices(command, services);
}

}  // namespace tarvo_remote_control
