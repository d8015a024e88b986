// The positions of the satellite dish switch.
#include "mapping/diseqcs.h"

#include <string>
#include <vector>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "document/xml.h"
#include "import/elements.h"
#include "import/keyed_rows.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using mapping::Element;
using tarvodb::DiSEqCGlobal;
using tarvodb::Record;
using tarvodb::StatusMark;

namespace {

constexpr const Element& kId = mapping::rowNamed(mapping::kDiseqc, "id");

// Every coded text of the element must be one, not only the last of its name, which is stored.
bool validate(CmdSetConfiguration& command, const XmlNode& diseqc) {
    for (const XmlNode& child : document::childrenOf(diseqc)) {
        const Element* element = mapping::elementOf(mapping::kDiseqc, child);
        if (element != nullptr && element->take == mapping::Take::code &&
            !codeOf(*element, document::textOf(child))) {
            return fail(command, ErrorCode::invalidCommand,
                        std::string("Invalid value for diseqc/") + element->name);
        }
    }
    return true;
}

Record<DiSEqCGlobal> newDiseqc(const char* id) {
    Record<DiSEqCGlobal> diseqc;
    diseqc.set(DiSEqCGlobal::idDiSEqCGlobal, id);
    diseqc.set(DiSEqCGlobal::Posicion, 0);
    diseqc.set(DiSEqCGlobal::Nombre, "");
    diseqc.set(DiSEqCGlobal::Orbita, 0);
    diseqc.set(DiSEqCGlobal::Polaridad, 0);
    diseqc.set(DiSEqCGlobal::Banda, 0);
    diseqc.set(DiSEqCGlobal::Estado, StatusMark::changed);
    return diseqc;
}

std::string logText(const Record<DiSEqCGlobal>& diseqc) {
    std::string text;
    for (const Element& element : mapping::kDiseqc) {
        if (element.label != nullptr) {
            text += element.label + diseqc.value(element.column.index).asString();
        }
    }
    return text;
}

}  // namespace

bool apply::diseqcs(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<DiSEqCGlobal>> positions;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, mapping::kDiseqcs[0].name)) {
            return failOnElement(command, "No diseqc element found");
        }
        if (!validate(command, element)) {
            return false;
        }
        const char* id = document::lastText(element, kId.name);
        if (id == nullptr) {
            return fail(command, ErrorCode::invalidCommand, kId.required.missing);
        }
        positions.push_back(storedOrNew(command, tarvodb::clause::kByDiseqc, id, newDiseqc));
        takeAndMark(positions.back(), mapping::kDiseqc, element);
        logChange("New DISEqC parameters: " + logText(positions.back()));
    }
    return replaceTable(command, positions, "Could not delete diseqcs", "Could not insert diseqc");
}

}  // namespace tarvo_remote_control
